#include "axis.h"

#include "axisinfo.h"
#include "axisprogram.h"
#include "drivecomm.h"
#include "drivestate.h"
#include "fixedmove.h"
#include "joghold.h"
#include "selector.h"
#include "settings.h"
#include "storedspeed.h"
#include "widgets.h"

#include <QPushButton>

namespace {

constexpr int parkedCode = 0xC1600;

enum Lamp { Gray = 0, Green = 1, Yellow = 2, Red = 4 };

struct StateLook
{
    Lamp lamp;
    const char* mark; // class of the journal line
};

// The first digit of a code is its class: E a warning, F a fault.
StateLook lookOf(int code)
{
    if (code > 0xEFFFF)
        return {Red, "[A]"};
    if (code >= 0xE0000)
        return {Yellow, "[W]"};
    if (code >= 0xA0101 && code <= 0xA0103) // in operation
        return {Green, "[I]"};
    if (code == 0xA0012) // power on
        return {Yellow, "[I]"};
    return {Gray, "[I]"};
}

} // namespace

Axis::Axis(const QString& name, const QString& unit, int number, int channel, int maxSpeed,
           DriveTCPthread* drive, PoSprite* sprite, PoLabel* coordLabel, PoLabel* speedLabel,
           QPushButton* plusButton, QPushButton* minusButton, QPushButton* infoButton, bool endless,
           bool secondAxis)
    : m_name(name)
    , m_unit(unit)
    , m_number(number)
    , m_channel(channel)
    , m_maxSpeed(maxSpeed)
    , m_drive(drive)
    , m_endless(endless)
    , m_secondAxis(secondAxis)
    , m_sprite(sprite)
    , m_coordLabel(coordLabel)
    , m_speedLabel(speedLabel)
    , m_plusButton(plusButton)
    , m_minusButton(minusButton)
    , m_infoButton(infoButton)
{
    // The buttons' own released() comes early when a limit switch disables a held button; the hold follows
    // the finger.
    auto* plus = new JogHold(plusButton, this);
    connect(plus, &JogHold::pressed, this, &Axis::onPlusPressed);
    connect(plus, &JogHold::released, this, &Axis::onPlusReleased);
    auto* minus = new JogHold(minusButton, this);
    connect(minus, &JogHold::pressed, this, &Axis::onMinusPressed);
    connect(minus, &JogHold::released, this, &Axis::onMinusReleased);
    connect(coordLabel, &PoLabel::clicked, this, &Axis::onCoordClicked);
    connect(speedLabel, &PoLabel::clicked, this, &Axis::onSpeedClicked);
    connect(infoButton, &QPushButton::clicked, this, &Axis::onInfoClicked);

    const Settings settings;
    const int speed = settings.value(m_name + QStringLiteral("/Speed"), 0).toInt();
    speedLabel->setValue(storedSpeed(float(speed)), 0);

    sprite->addPixmap(Gray, QStringLiteral(":/images/indicator_gray"));
    sprite->addPixmap(Green, QStringLiteral(":/images/indicator_green"));
    sprite->addPixmap(Yellow, QStringLiteral(":/images/indicator_yellow"));
    sprite->addPixmap(Red, QStringLiteral(":/images/indicator_red"));
    sprite->setSprite(Gray);
}

Axis::~Axis()
{
    Settings settings;
    settings.setValue(m_name + QStringLiteral("/Speed"), speed());
}

int Axis::speed() const
{
    return m_speedLabel->whole();
}

void Axis::onPlusPressed()
{
    startJog(m_plusButton, QString(),
             QStringLiteral("[C]Выполнение ручного перемещение по оси %1 в положительном направлении..."));
}

void Axis::onPlusReleased()
{
    endJog(m_plusButton);
}

void Axis::onMinusPressed()
{
    startJog(m_minusButton, QStringLiteral("-"),
             QStringLiteral("[C]Выполнение ручного перемещение по оси %1 в отрицательном направлении..."));
}

void Axis::onMinusReleased()
{
    endJog(m_minusButton);
}

void Axis::startJog(const QPushButton* button, const QString& sign, const QString& line)
{
    if (button->isCheckable())
        return;
    move(sign + QString::number(speed()));
    emit axisMessage(line.arg(m_name), true);
}

void Axis::endJog(const QPushButton* button)
{
    if (button->isCheckable() || m_endless)
        return;
    move(QStringLiteral("0"));
    emit axisMessage(QStringLiteral("[I]Завершено ручное перемещение по оси %1").arg(m_name), true);
}

void Axis::move(const QString& speed)
{
    m_drive->command(moveCommand(m_name, speed));
}

void Axis::onPlusToggled(bool checked)
{
    m_minusButton->setDisabled(checked || m_epMinus);
    move(checked ? QString::number(speed()) : QStringLiteral("0"));
}

void Axis::onMinusToggled(bool checked)
{
    m_plusButton->setDisabled(checked || m_epPlus);
    move(checked ? QStringLiteral("-") + QString::number(speed()) : QStringLiteral("0"));
}

void Axis::onCoordClicked()
{
    emit axisMessage(QStringLiteral("[I]Открыто окно фиксированного перемещения по оси %1").arg(m_name),
                     false);
    FixedMove dialog(m_name, m_unit, m_drive, speed(), m_channel, m_coordLabel);
    connect(&dialog, &FixedMove::message, this, &Axis::axisMessage);
    connect(m_drive, &DriveTCPthread::changedDrivesOn, &dialog, &FixedMove::onDriveState);
    dialog.onChannelState(m_drive->channelState());
    connect(m_drive, &DriveTCPthread::changedChannelState1, &dialog, &FixedMove::onChannelState);
    dialog.exec();
}

void Axis::onSpeedClicked()
{
    Selector selector(m_name, m_unit, m_maxSpeed, m_speedLabel);
    connect(&selector, &Selector::message, this, &Axis::axisMessage);
    if (selector.exec() != QDialog::Accepted)
        return;
    m_speedLabel->setValue(selector.value(), 0);
    emit speedChanged(int(selector.value()));
}

void Axis::onInfoClicked()
{
    emit axisMessage(QStringLiteral("[I]Открыто окно дополнительных параметров оси %1").arg(m_name), false);
    AxisInfo dialog(m_name, m_drive, m_infoButton);
    connect(&dialog, &AxisInfo::message, this, &Axis::axisMessage);

    connect(this, &Axis::stateChanged, &dialog, &AxisInfo::onStateChanged);
    dialog.onStateChanged(m_state);
    connect(this, &Axis::coordChanged, &dialog, &AxisInfo::onCoordChanged);
    dialog.onCoordChanged(m_coord);
    connect(this, &Axis::speedChanged, &dialog, &AxisInfo::onSpeedChanged);
    dialog.onSpeedChanged(speed());
    connect(this, &Axis::epPlusChanged, &dialog, &AxisInfo::onEpPlusChanged);
    dialog.onEpPlusChanged(m_epPlus);
    connect(this, &Axis::epMinusChanged, &dialog, &AxisInfo::onEpMinusChanged);
    dialog.onEpMinusChanged(m_epMinus);
    connect(this, &Axis::epPlusValueChanged, &dialog, &AxisInfo::onMaxLimChanged);
    dialog.onMaxLimChanged(m_maxLimit);
    connect(this, &Axis::epMinusValueChanged, &dialog, &AxisInfo::onMinLimChanged);
    dialog.onMinLimChanged(m_minLimit);

    if (m_name == QLatin1String("LX") || m_name == QLatin1String("U1")) {
        connect(&dialog, &AxisInfo::showSecondAxis, this, &Axis::secondAxis);
        dialog.onSecondAxisShowButton(m_secondAxis);
    }
    connect(this, &Axis::parked, &dialog, &AxisInfo::onParked);
    dialog.onParked(m_state == parkedCode);
    connect(&dialog, &AxisInfo::park, this, &Axis::onPark);
    connect(&dialog, &AxisInfo::clearError, this, &Axis::onClearError);
    connect(m_drive, &DriveTCPthread::changedDrivesOn, &dialog, &AxisInfo::onDrivesOn);
    dialog.onDrivesOn(m_drivesOn);
    dialog.exec();
}

void Axis::onEndlessClicked(bool on)
{
    m_endless = on;
}

void Axis::onDrivesPowerChanged(bool on)
{
    m_drivesOn = on;
}

void Axis::onStateChanged(int code)
{
    const StateLook look = lookOf(code);
    m_sprite->setSprite(look.lamp);

    if ((m_state == parkedCode) != (code == parkedCode))
        emit parked(code == parkedCode);
    m_state = code;
    emit stateChanged(code);
    emit axisMessage(QString::fromLatin1(look.mark) + QStringLiteral("Ось ") + m_name + QStringLiteral(": ") +
                         stateDesc(code),
                     true);
}

void Axis::onCoordChanged(float value)
{
    m_coord = value;
    m_coordLabel->setValue(value, 2);
    emit coordChanged(value);
}

void Axis::onEpPlusChanged(bool on)
{
    m_epPlus = on;
    m_plusButton->setDisabled(on);
    emit epPlusChanged(on);
}

void Axis::onEpMinusChanged(bool on)
{
    m_epMinus = on;
    m_minusButton->setDisabled(on);
    emit epMinusChanged(on);
}

void Axis::onEpPlusValueChanged(float limit)
{
    m_maxLimit = limit;
    emit epPlusValueChanged(limit);
}

void Axis::onEpMinusValueChanged(float limit)
{
    m_minLimit = limit;
    emit epMinusValueChanged(limit);
}

void Axis::onSecondAxisShow(bool show)
{
    m_secondAxis = show;
}

void Axis::onPark(bool on)
{
    m_drive->command((on ? QStringLiteral("PARK(%1)") : QStringLiteral("DEPARK(%1)")).arg(m_name));
}

void Axis::onClearError()
{
    m_drive->command(QStringLiteral("CLEAR_ERROR(%1)").arg(m_name));
}
