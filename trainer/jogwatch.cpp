#include "jogwatch.h"

#include "drivecomm.h"
#include "gui.h"
#include "operator.h"

#include <QAbstractButton>
#include <QRegularExpression>

void JogWatch::follow()
{
    m_moving.clear();
    auto* window = qobject_cast<Gui*>(Operator::console());
    if (!window)
        return;
    DriveTCPthread* drives = window->drives();
    disconnect(drives, nullptr, this, nullptr);
    connect(drives, &DriveTCPthread::message, this, [this](const QString& text) { take(text); });
    // What the controller moves by a jog it stops by itself then.
    connect(drives, &DriveTCPthread::disconnected, this, [this] { m_moving.clear(); });
}

QStringList JogWatch::moving() const
{
    const auto* window = Operator::console();
    if (!window)
        return {};
    QStringList names = m_moving.values();
    const auto* endless = window->findChild<QAbstractButton*>(QStringLiteral("pbEndlessV"));
    if (endless && endless->isChecked())
        names.removeAll(QStringLiteral("V"));
    return names;
}

void JogWatch::take(const QString& text)
{
    if (text.contains(QLatin1String("OK STOP_PRG"))) // stops everything
        m_moving.clear();
    static const QRegularExpression move(QStringLiteral(R"((?:OK|REFUSED) MOVE\((\w+),([^)]*)\))"));
    const auto match = move.match(text);
    if (!match.hasMatch())
        return;
    const bool starts = match.captured(2).toDouble() != 0;
    starts ? void(m_moving.insert(match.captured(1))) : void(m_moving.remove(match.captured(1)));
    m_starts += starts;
}
