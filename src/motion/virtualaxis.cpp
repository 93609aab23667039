#include "virtualaxis.h"

#include "axisinfo.h"
#include "axisprogram.h"
#include "drivecomm.h"
#include "fixedmove.h"
#include "joghold.h"
#include "selector.h"
#include "widgets.h"

#include <QPushButton>

#include <iterator>

VirtualAxis::VirtualAxis(const QString& name, const QString& unit, int maxSpeed, const Row& row,
                         DriveTCPthread* drive, QObject* parent)
    : QObject(parent)
    , m_name(name)
    , m_unit(unit)
    , m_maxSpeed(maxSpeed)
    , m_row(row)
    , m_drive(drive)
{
    row.lamp->addPixmap(0, QStringLiteral(":/images/indicator_gray.png"));
    row.lamp->addPixmap(1, QStringLiteral(":/images/indicator_green.png"));
    row.lamp->addPixmap(2, QStringLiteral(":/images/indicator_yellow.png"));
    row.lamp->addPixmap(4, QStringLiteral(":/images/indicator_red.png"));
    // The buttons' own released() comes early when a limit switch disables a held button; the hold follows
    // the finger. Names and directions cross: the controller counts these axes against the arrows on the
    // machine.
    auto* minus = new JogHold(row.minus, this);
    connect(minus, &JogHold::pressed, this, &VirtualAxis::jogForward);
    connect(minus, &JogHold::released, this, &VirtualAxis::endJog);
    auto* plus = new JogHold(row.plus, this);
    connect(plus, &JogHold::pressed, this, &VirtualAxis::jogBack);
    connect(plus, &JogHold::released, this, &VirtualAxis::endJog);
}

void VirtualAxis::setCoord(float value)
{
    m_coord = value;
    m_row.coord->setValue(value, 2);
    emit coordChanged(value);
}

void VirtualAxis::setMaxLimit(float value)
{
    m_maxLimit = value;
    emit maxLimitChanged(value);
}

void VirtualAxis::setMinLimit(float value)
{
    m_minLimit = value;
    emit minLimitChanged(value);
}

void VirtualAxis::setMaxSwitch(bool on)
{
    m_atMax = on;
    m_row.plus->setDisabled(on);
}

void VirtualAxis::setMinSwitch(bool on)
{
    m_atMin = on;
    m_row.minus->setDisabled(on);
}

void VirtualAxis::setState(uint state)
{
    m_state = state;
    showState(state);
}

void VirtualAxis::showState(uint state)
{
    static constexpr int lamps[] = {0, 2, 1, 4, 2}; // gray, yellow, green, red, yellow
    if (state < std::size(lamps))
        m_row.lamp->setSprite(lamps[state]);
}

void VirtualAxis::modeChanged()
{
    m_row.coord->setValue(m_coord, 2);
    // Green whatever the drives say: operators know each change of the mode by it. Only the next change of
    // the virtual axes' state puts the lamp right.
    m_row.lamp->setSprite(1);
}

void VirtualAxis::jogForward()
{
    startJog(QString::number(double(m_row.speed->value())), QStringLiteral("положительном"));
}

void VirtualAxis::jogBack()
{
    const double speed = double(m_row.speed->value());
    // PHI is slow enough in the negative direction for one decimal; the controller is used to it.
    const QString number =
        m_name == QLatin1String("PHI") ? QString::number(speed, 'f', 1) : QString::number(speed);
    startJog(QLatin1Char('-') + number, QStringLiteral("отрицательном"));
}

void VirtualAxis::startJog(const QString& speed, const QString& direction)
{
    m_drive->command(moveCommand(m_name, speed));
    emit message(QStringLiteral("[C]Выполнение ручного перемещение по виртуальной оси %1 в %2 направлении...")
                     .arg(m_name, direction),
                 true);
}

void VirtualAxis::endJog()
{
    m_drive->command(moveCommand(m_name, QStringLiteral("0")));
    emit message(QStringLiteral("[I]Завершено ручное перемещение по виртуальной оси %1").arg(m_name), true);
}

// What is chosen for a virtual axis shows on its label and nowhere else: the journal tells of its moves
// alone.
void VirtualAxis::chooseSpeed()
{
    Selector selector(m_name, m_unit, m_maxSpeed, m_row.speed);
    if (selector.exec() == QDialog::Accepted)
        m_row.speed->setValue(selector.value(), 0);
}

void VirtualAxis::moveFixed(bool ready)
{
    emit message(QStringLiteral("[I]Открыто окно фиксированного перемещения по оси %1").arg(m_name), false);
    FixedMove dialog(m_name, m_unit, m_drive, m_row.speed->whole(), 1, m_row.coord);
    connect(m_drive, &DriveTCPthread::changedDrivesOn, &dialog, &FixedMove::onDriveState);
    connect(m_drive, &DriveTCPthread::changedChannelState1, &dialog, &FixedMove::onChannelState);
    dialog.onDriveState(ready);
    dialog.exec();
}

// What the dialog shows is of the moment of its opening; only the limits of Z and PHI stay live. These axes
// have no drive of their own: nothing hears the parking and the clearing of errors.
void VirtualAxis::showInfo()
{
    AxisInfo dialog(m_name, m_drive, m_row.info);
    connect(&dialog, &AxisInfo::message, this, &VirtualAxis::message);
    dialog.onVirtualStateChanged(m_state);
    dialog.onCoordChanged(m_coord);
    dialog.onSpeedChanged(m_row.speed->whole());
    dialog.onEpPlusChanged(m_atMax);
    dialog.onEpMinusChanged(m_atMin);
    dialog.onMaxLimChanged(m_maxLimit);
    dialog.onMinLimChanged(m_minLimit);
    if (m_name != QLatin1String("X")) {
        connect(this, &VirtualAxis::maxLimitChanged, &dialog, &AxisInfo::onMaxLimChanged);
        connect(this, &VirtualAxis::minLimitChanged, &dialog, &AxisInfo::onMinLimChanged);
    }
    dialog.exec();
}
