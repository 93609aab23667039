#include "numpad.h"

#include "framed.h"
#include "ui_numpad.h"

#include <QCursor>
#include <QFile>
#include <QKeyEvent>

namespace {

constexpr int fullLength = 7;

int signLength(const QString& text)
{
    return text.startsWith(QLatin1Char('-')) ? 1 : 0;
}

} // namespace

Numpad::Numpad(const QString& title, QWidget* parent, float value, bool noDecimal, bool noSign, bool password)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::Numpad>())
    , m_noDecimal(noDecimal)
    , m_noSign(noSign)
    , m_password(password)
{
    m_ui->setupUi(this);
    drawSigns();
    for (QPushButton* key : findChildren<QPushButton*>()) // a style sheet above would leave them small
        key->setFont(font());
    m_ui->pbDecimal->setDisabled(m_noDecimal || m_password);
    m_ui->pbSign->setDisabled(m_noSign || m_password);

    QFont digits = font();
    digits.setPointSize(m_password ? 24 : 30);
    m_ui->leValue->setFont(digits);
    m_ui->leValue->setEchoMode(m_password ? QLineEdit::Password : QLineEdit::Normal);
    m_ui->leValue->clear();

    frameAt(QCursor::pos(), title, this, parent);

    if (value > 0)
        setValue(QString::number(double(value), 'g', 6));
}

Numpad::~Numpad() = default;

void Numpad::drawSigns()
{
    const std::pair<QPushButton*, const char*> keys[] = {{m_ui->pbDecimal, "decimal"},
                                                         {m_ui->pbSign, "sign"},
                                                         {m_ui->pbDelete, "delete"},
                                                         {m_ui->pbClear, "clear"},
                                                         {m_ui->pbEnter, "enter"}};
    for (const auto& [key, name] : keys) {
        const QString image = QStringLiteral(":/images/numpad/%1.png").arg(QLatin1String(name));
        if (!QFile::exists(image))
            continue; // the text of the form stays
        key->setText(QString());
        key->setIcon(QIcon(image));
    }
}

QString Numpad::getValue() const
{
    return m_ui->leValue->text();
}

void Numpad::setValue(QString text)
{
    m_ui->leValue->setText(text);
}

void Numpad::numPressed(QString digit)
{
    const QString text = getValue();
    const int comma = text.contains(QLatin1Char(',')) ? 1 : 0;
    if (text.length() - signLength(text) - comma >= fullLength)
        return;
    setValue(text == QLatin1String("0") ? digit : text + digit);
}

void Numpad::on_pb0_clicked()
{
    numPressed(QStringLiteral("0"));
}

void Numpad::on_pb1_clicked()
{
    numPressed(QStringLiteral("1"));
}

void Numpad::on_pb2_clicked()
{
    numPressed(QStringLiteral("2"));
}

void Numpad::on_pb3_clicked()
{
    numPressed(QStringLiteral("3"));
}

void Numpad::on_pb4_clicked()
{
    numPressed(QStringLiteral("4"));
}

void Numpad::on_pb5_clicked()
{
    numPressed(QStringLiteral("5"));
}

void Numpad::on_pb6_clicked()
{
    numPressed(QStringLiteral("6"));
}

void Numpad::on_pb7_clicked()
{
    numPressed(QStringLiteral("7"));
}

void Numpad::on_pb8_clicked()
{
    numPressed(QStringLiteral("8"));
}

void Numpad::on_pb9_clicked()
{
    numPressed(QStringLiteral("9"));
}

void Numpad::on_pbDecimal_clicked()
{
    // The key looks for a comma and types a point: a slip that puts in a second point must give 0 and so
    // be seen, not turn into another number. The point counts among the digits for the same reason.
    const QString text = getValue();
    if (text.contains(QLatin1Char(',')) || text.length() > fullLength - 1 + signLength(text))
        return;
    setValue(text + QLatin1Char('.'));
}

void Numpad::on_pbSign_clicked()
{
    const QString text = getValue();
    if (signLength(text))
        setValue(text.mid(1));
    else if (text != QLatin1String("0"))
        setValue(QLatin1Char('-') + text);
}

void Numpad::on_pbDelete_clicked()
{
    QString text = getValue();
    text.chop(1);
    if (text.isEmpty() || text == QLatin1String("-"))
        text = QStringLiteral("0");
    setValue(text);
}

void Numpad::on_pbClear_clicked()
{
    setValue(QStringLiteral("0"));
}

void Numpad::on_pbEnter_clicked()
{
    m_value = getValue().toDouble(); // 0 for what is no number
    accept();
}

void Numpad::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    if (key >= Qt::Key_0 && key <= Qt::Key_9) {
        numPressed(QString(QChar(key)));
        return;
    }
    switch (key) {
    case Qt::Key_Minus:
        return on_pbSign_clicked();
    case Qt::Key_Period:
    case Qt::Key_Comma:
        return on_pbDecimal_clicked();
    case Qt::Key_Backspace:
        return on_pbDelete_clicked();
    case Qt::Key_Delete:
        return on_pbClear_clicked();
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return on_pbEnter_clicked();
    case Qt::Key_Escape:
        return reject();
    default:
        event->ignore();
    }
}
