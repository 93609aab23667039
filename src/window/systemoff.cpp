#include "systemoff.h"

#include "generic.h"
#include "ui_systemoff.h"
#include "widgets.h"

#include <QKeyEvent>

namespace {

constexpr int countFrom = 60; // s

} // namespace

SystemOff::SystemOff(TCPthread* link, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , ui(std::make_unique<Ui::SystemOff>())
    , m_link(link)
    , m_seconds(countFrom)
{
    ui->setupUi(this);
    ui->lblSeconds->setText(QString::number(m_seconds));
    adjustSize();
    const QPoint corner = parent ? parent->mapToGlobal(QPoint()) : QPoint();
    move(corner + QPoint((panelWidth - width()) / 2, (panelHeight - height()) / 2));
    connect(&m_timer, &QTimer::timeout, this, &SystemOff::timeChanged);
    m_timer.start(1000);
}

SystemOff::~SystemOff() = default;

void SystemOff::timeChanged()
{
    ui->lblSeconds->setText(QString::number(--m_seconds));
    if (m_seconds > 0)
        return;
    m_timer.stop();
    emit turnOff();
    reject();
}

void SystemOff::on_pbCancel_clicked()
{
    emit message(QStringLiteral("[I]Автоматическое завершение работы отменено пользователем"), true);
    if (m_link)
        m_link->command(QStringLiteral("SET turnSystemOff := off;"));
    reject();
}

void SystemOff::reject()
{
    m_timer.stop();
    QDialog::reject();
}

// Escape would leave the unit that asked without an answer.
void SystemOff::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape)
        on_pbCancel_clicked();
    else
        QDialog::keyPressEvent(event);
}
