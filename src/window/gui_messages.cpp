#include "gui.h"

#include "axis.h"
#include "cmessageserver.h"
#include "cmessagestack.h"
#include "cncmessages.h"
#include "statebutton.h"
#include "ui_gui.h"
#include "wordchange.h"

#include <QCoreApplication>

// What the motion controller tells in words and numbers: events, errors, breakers, alarms, doors and lights.
// Each word becomes journal lines; what lasts also becomes a message of the stack.

namespace {

// Numbers of the messages that the stack shows.
enum MessageNumber {
    CommonBreaker = 0, // QF18
    ConsoleButton = 3,
    PendantButton,
    LeftRope,
    RightRope,
    Phases,
    ControlBreaker,     // QF28
    SpiralBreaker = 20, // QF23 or QF24, a warning
};

// By the value of the word.
const char* const kDoorLines[] = {
    "[I]Дверь закрыта",
    "[I]Дверь открыта",
    "[I]Дверь в зоне торможения закрытия",
    "[I]Дверь в зоне торможения открытия",
};
const char* const kTrModuleLines[] = {
    "[I]Транспортный модуль в камере",
    "[I]Транспортный модуль на загрузочной платформе",
    "[I]Транспортный модуль в зоне торможения камеры",
    "[I]Транспортный модуль в зоне торможения загрузочной платформы",
};

// By the bit of the drive power word, which is set while the breaker is closed.
const char* const kBreakerLines[] = {
    "[W]Сработал автомат QF31 питания привода координаты LX1 в ШУК!",
    "[W]Сработал автомат QF32 питания привода координаты LX2 в ШУК!",
    "[W]Сработал автомат QF33 питания привода координаты LY в ШУК!",
    "[W]Сработал автомат QF34 питания привода координаты A в ШУК!",
    "[W]Сработал автомат QF35 питания привода координаты B в ШУК!",
    "[W]Сработал автомат QF36 питания привода координаты C в ШУК!",
    "[W]Сработал автомат QF37 питания привода координаты D в ШУК!",
    "[W]Сработал автомат QF38 питания привода координаты U1 в ШУК!",
    "[W]Сработал автомат QF39 питания привода координаты U2 в ШУК!",
    "[W]Сработал автомат QF40 питания привода координаты V в ШУК!",
    "[W]Сработал автомат QF18 питания всех приводов в ШУК!",
};
constexpr uint kCommonBreakerBit = 1U << 10;

struct AlarmRow
{
    int numId;
    const char* line;
};

// By the bit of the alarm word.
const AlarmRow kAlarms[] = {
    {ConsoleButton, "[A]Нажата кнопка аварийного останова на пульте оператора!"},
    {PendantButton, "[A]Нажата кнопка аварийного останова на пульте переносном!"},
    {LeftRope, "[A]Сработал левый тросовый выключатель в камере!"},
    {RightRope, "[A]Сработал правый тросовый выключатель в камере!"},
};

struct LightLines
{
    const char* on;
    const char* off;
};

// By the bit of the light word.
const LightLines kLights[] = {
    {"[I]Освещение камеры светодиодными лентами включено",
     "[I]Освещение камеры светодиодными лентами выключено"},
    {"[I]Освещение камеры светодиодными прожекторами включено",
     "[I]Освещение камеры светодиодными прожекторами выключено"},
    {"[I]Освещение зоны сварки спиралями включено", "[I]Освещение зоны сварки спиралями выключено"},
};
constexpr uint kSpiralBit = 1U << 2;

constexpr bool bitOf(uint word, std::size_t bit)
{
    return word >> bit & 1U;
}

} // namespace

void Gui::initMessages()
{
    m_stack = new CMessageStack(ui->frErrorDiagnostic);
    m_stack->move(5, 24);
    // The server lives to the end of the process, so that no message ends before the stack that shows it.
    m_server = new CMessageServer(QCoreApplication::instance());
    connect(m_server, &CMessageServer::sigAddMessage, m_stack, &CMessageStack::slotAddMessage);
    connect(m_server, &CMessageServer::sigUpdateMessage, m_stack, &CMessageStack::slotUpdateMessage);
    connect(m_server, &CMessageServer::sigDeleteMessage, m_stack, &CMessageStack::slotDeleteMessage);
    connect(m_stack, &CMessageStack::sigConfirmMessage, m_server, &CMessageServer::slotConfirmMessage);
}

void Gui::connectMessages()
{
    // Four places in the datagram share this signal, and it does not say which: what they hold is told anew
    // with each connection rather than an event be lost.
    connect(&m_drives, &DriveTCPthread::changedMessage, this, &Gui::onNewCNCMessage);
    connectChanges(&m_drives, &DriveTCPthread::changedCNCError, this, &Gui::onNewCNCError);
    connectChanges(&m_drives, &DriveTCPthread::changedDoorState, this, &Gui::onDoorStateChanged);
    connectChanges(&m_drives, &DriveTCPthread::changedTrModuleState, this, &Gui::onTrModuleStateChanged);
    connect(&m_drives, &DriveTCPthread::changedDrivePowerState, this, &Gui::onDrivePowerStateChanged);
    connect(&m_drives, &DriveTCPthread::changedLightState, this, &Gui::onLightStateChanged);
    connectChanges(&m_drives, &DriveTCPthread::changedAlarmState, this, &Gui::onAlarmStateChanged);
    connectChanges(&m_drives, &DriveTCPthread::changedSpiralPower, this, &Gui::onSpiralPowerOff);
    connectChanges(&m_drives, &DriveTCPthread::changedDrivesPower, this, &Gui::onDrivesPowerOff);
    connectChanges(&m_drives, &DriveTCPthread::changedPhaseAlarm, this, &Gui::onPhaseAlarm);
}

QString Gui::CNCMessage(uint number) const
{
    return cncMessage(number, [this](CNCValue value, const QString& name) -> double {
        for (const VirtualAxis& axis : m_virtual) {
            if (axis.name == name)
                return double(value == CNCValue::MinLimit ? axis.minLimit : axis.maxLimit);
        }
        const Axis* drive = axis(name);
        switch (value) {
        case CNCValue::MinLimit:
            return double(drive->minLimit());
        case CNCValue::MaxLimit:
            return double(drive->maxLimit());
        default:
            return double(drive->coord());
        }
    });
}

void Gui::onNewCNCMessage(uint number)
{
    if (number)
        prgMessage(CNCMessage(number), true);
}

void Gui::onNewCNCError(uint number)
{
    if (number)
        prgMessage(QStringLiteral("[A]CML75: Ошибка контроллера ЧПУ номер %1!").arg(number), true);
}

void Gui::onDoorStateChanged(uint state)
{
    if (state < std::size(kDoorLines))
        prgMessage(QString::fromUtf8(kDoorLines[state]), true);
}

void Gui::onTrModuleStateChanged(uint state)
{
    if (state < std::size(kTrModuleLines))
        prgMessage(QString::fromUtf8(kTrModuleLines[state]), true);
}

void Gui::raiseAlarm(int numId)
{
    m_server->slotAddMessage(alarmMessage, numId, 0);
    m_drives.command(QStringLiteral("ZOOMMER"));
}

void Gui::showAlarm(bool on, int numId, const char* line)
{
    if (!on) {
        m_server->slotDeleteMessage(numId);
        return;
    }
    prgMessage(QString::fromUtf8(line), true);
    raiseAlarm(numId);
}

// The alarm of QF18 tells that it has just tripped. The next change of the word takes it off the stack even
// if the breaker is still open, as when a second breaker trips; the journal keeps both.
void Gui::onDrivePowerStateChanged(uint state)
{
    if (state == m_drivePower)
        return;
    const uint fell = m_drivePower & ~state;
    for (std::size_t bit = 0; bit < std::size(kBreakerLines); ++bit) {
        if (bitOf(fell, bit))
            prgMessage(QString::fromUtf8(kBreakerLines[bit]), true);
    }
    if (fell & kCommonBreakerBit)
        raiseAlarm(CommonBreaker);
    else
        m_server->slotDeleteMessage(CommonBreaker);
    m_drivePower = state;
}

// Not compared with the word before: each change of the word tells again, and sounds again, all that is
// still pressed or pulled.
void Gui::onAlarmStateChanged(uint state)
{
    for (std::size_t bit = 0; bit < std::size(kAlarms); ++bit)
        showAlarm(bitOf(state, bit), kAlarms[bit].numId, kAlarms[bit].line);
}

void Gui::onDrivesPowerOff(bool on)
{
    showAlarm(!on, ControlBreaker, "[A]Сработал автомат питания приводов 24В в ШУК (QF28)!");
}

void Gui::onPhaseAlarm(bool on)
{
    showAlarm(on, Phases, "[A]Ошибка фаз 380 Вольт в ШУК!");
}

void Gui::onSpiralPowerOff(bool on)
{
    if (on) {
        m_server->slotDeleteMessage(SpiralBreaker);
        return;
    }
    prgMessage(QStringLiteral("[W]Сработал автомат питания спиралей в ШУК (QF23 или QF24)!"), true);
    m_server->slotAddMessage(warningMessage, SpiralBreaker, 0);
}

void Gui::onLightStateChanged(uint state)
{
    const uint changed = state ^ m_lightState;
    for (std::size_t bit = 0; bit < std::size(kLights); ++bit) {
        if (bitOf(changed, bit))
            prgMessage(QString::fromUtf8(bitOf(state, bit) ? kLights[bit].on : kLights[bit].off), true);
    }
    m_lightState = state;
    ui->sbLightSpiral->setState(bool(state & kSpiralBit));
}
