#include "axisinfo.h"

#include "drivecomm.h"
#include "drivestate.h"
#include "framed.h"
#include "numpad.h"
#include "ui_axisinfo.h"
#include "widgets.h"

#include <cmath>

namespace {

constexpr int positioning1 = 0xA0102; // holds its position by encoder 1
constexpr int positioning2 = 0xA0103;
constexpr int parkedCode = 0xC1600;

// Keeps a stray finger from moving the zero of an axis; no credential of a user.
constexpr double referenceCode = 305729;
constexpr float referencePerUnit = 10000; // the controller counts ten-thousandths
constexpr float intEdge = 2147483648.0F;
constexpr int confirmTime = 5; // s

enum Lamp { Gray = 0, Red = 1 };

const QString drivesLock = QStringLiteral("drives");

bool isSecond(const QString& name)
{
    return name == QLatin1String("LX2") || name == QLatin1String("U2");
}

bool leadsPair(const QString& name)
{
    return name == QLatin1String("LX") || name == QLatin1String("U1");
}

} // namespace

AxisInfo::AxisInfo(const QString& name, DriveTCPthread* drive, QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::AxisInfo>())
    , m_name(name)
    , m_drive(drive)
{
    m_ui->setupUi(this);
    for (PoSprite* lamp : {m_ui->indEPmin, m_ui->indEPmax}) {
        lamp->addPixmap(Gray, QStringLiteral(":/images/indicator_gray.png"));
        lamp->addPixmap(Red, QStringLiteral(":/images/indicator_red.png"));
        lamp->setSprite(Gray);
    }
    QFont capitals = m_ui->lblStateCode->font(); // as the drive's own display shows the code
    capitals.setCapitalization(QFont::AllUppercase);
    m_ui->lblStateCode->setFont(capitals);
    for (PoLabel* limit : {m_ui->lblSEPmin, m_ui->lblSEPmax})
        limit->setValue(0, 1);
    m_ui->lblReferValue->setValue(0, 2);
    initParking();
    m_ui->pbSecondAxis->setVisible(leadsPair(name));
    m_ui->frmPark->setHidden(isSecond(name)); // these follow their partners
    m_ui->frmReference->setHidden(isSecond(name));
    resize(width(), layout()->minimumSize().height());

    frameBelow(parent, QStringLiteral("Ось ") + name, this);
}

AxisInfo::~AxisInfo()
{
    emit message(QStringLiteral("[I]Закрыто окно дополнительных параметров оси %1").arg(m_name), false);
}

void AxisInfo::initParking()
{
    StateButton* button = m_ui->sbPark;
    button->init(QStringLiteral("Ось ") + m_name, false, QStringLiteral("[запаркована]"),
                 QStringLiteral("[распаркована]"), QString(), QString(), QStringLiteral("[ошибка]"), true);
    button->addLock(drivesLock, false, QStringLiteral("Приводы включены"),
                    QStringLiteral("Приводы выключены"));
    for (const bool on : {true, false}) {
        button->setLock(on, button->lock(drivesLock));
        button->addLock(on, button->lock(drivesLock));
    }
}

void AxisInfo::onDrivesOn(bool on)
{
    m_ui->sbPark->setLock(drivesLock, on);
}

void AxisInfo::onStateChanged(int code)
{
    m_ui->lblStateCode->setText(QString::number(unsigned(code), 16));
    m_ui->lblDriveState->setText(stateDesc(code));
    // The zero of an axis cannot move under a drive that holds its position.
    m_ui->pbReference->setDisabled(code == positioning1 || code == positioning2);
    m_ui->pbClearError->setDisabled(code == parkedCode);
}

void AxisInfo::onVirtualStateChanged(unsigned int state)
{
    m_ui->lblStateCode->setText(QString::number(state));
    m_ui->lblDriveState->setText(virtualStateDesc(int(state)));
}

void AxisInfo::onCoordChanged(float value)
{
    m_ui->lblCoord->setText(QString::number(double(value), 'f', 4));
}

void AxisInfo::onSpeedChanged(int speed)
{
    m_ui->lblSpeed->setText(QString::number(speed));
}

void AxisInfo::onParked(bool on)
{
    m_ui->sbPark->setState(on);
}

void AxisInfo::onMaxLimChanged(float limit)
{
    m_ui->lblSEPmax->setValue(limit, 1);
}

void AxisInfo::onMinLimChanged(float limit)
{
    m_ui->lblSEPmin->setValue(limit, 1);
}

void AxisInfo::onEpPlusChanged(bool on)
{
    m_ui->indEPmax->setSprite(on ? Red : Gray);
}

void AxisInfo::onEpMinusChanged(bool on)
{
    m_ui->indEPmin->setSprite(on ? Red : Gray);
}

void AxisInfo::onSecondAxisShowButton(bool shown)
{
    m_ui->pbSecondAxis->setChecked(shown);
    m_ui->pbSecondAxis->setText(shown ? QStringLiteral("Скрыть\nдополн.\nось")
                                      : QStringLiteral("Показать\nдополн.\nось"));
}

void AxisInfo::on_pbSecondAxis_clicked()
{
    const bool show = m_ui->pbSecondAxis->isChecked();
    onSecondAxisShowButton(show);
    emit showSecondAxis(show);
}

// The button changes only when the drive tells its new state.
void AxisInfo::on_sbPark_clicked()
{
    emit message(QStringLiteral("[I]Нажата кнопка 'Парковка оси'"), false);
    emit park(m_ui->sbPark->state() != StateButton::On);
}

void AxisInfo::on_pbClearError_clicked()
{
    emit message(QStringLiteral("[I]Нажата кнопка 'Сброс ошибки оси'"), false);
    emit clearError();
}

void AxisInfo::on_lblSEPmax_clicked()
{
    sendLimit(QStringLiteral("LIMIT_MAX(%1,%2)"), QStringLiteral("Максимум"), m_ui->lblSEPmax);
}

void AxisInfo::on_lblSEPmin_clicked()
{
    sendLimit(QStringLiteral("LIMIT_MIN(%1,%2)"), QStringLiteral("Минимум"), m_ui->lblSEPmin);
}

// The keypad offers the present position: a setter mostly drives to a limit and stores it. Whether the limit
// fits is the controller's affair; the label shows what the controller reports.
void AxisInfo::sendLimit(const QString& command, const QString& title, QWidget* label)
{
    Numpad numpad(title, label, m_ui->lblCoord->text().toFloat(), false, false, false);
    if (numpad.exec() == QDialog::Accepted)
        m_drive->command(command.arg(m_name, QString::number(numpad.value(), 'f', 1)));
}

void AxisInfo::on_lblReferValue_clicked()
{
    Numpad numpad(QStringLiteral("Значение"), m_ui->lblReferValue, 0, false, false, false);
    if (numpad.exec() == QDialog::Accepted)
        m_ui->lblReferValue->setValue(float(numpad.value()), 2);
}

void AxisInfo::on_pbReference_clicked()
{
    Numpad code(QStringLiteral("Пароль:"), m_ui->pbReference, 0, true, true, true);
    if (code.exec() != QDialog::Accepted || code.value() != referenceCode)
        return;
    Confirm question(QStringLiteral("Подтверждение"), QStringLiteral("Выполнить референцирование оси?"),
                     m_ui->pbReference, confirmTime);
    if (question.exec() != QDialog::Accepted)
        return;
    emit message(QStringLiteral("[I]Нажата кнопка 'Референцирование оси'"), false);
    sendReference();
}

void AxisInfo::sendReference()
{
    const float count = m_ui->lblReferValue->value() * referencePerUnit;
    if (!(std::abs(count) < intEdge)) { // no number that the command could carry
        emit message(QStringLiteral("[W]Референцирование оси %1: недопустимое значение").arg(m_name), true);
        return;
    }
    m_drive->command(QStringLiteral("REFERENCE(%1,%2)").arg(m_name).arg(int(count)));
}
