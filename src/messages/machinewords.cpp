#include "machinewords.h"

#include "cmessageserver.h"

#include <array>

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

constexpr bool bitOf(uint word, std::size_t bit)
{
    return word >> bit & 1U;
}

} // namespace

MachineWords::MachineWords(CMessageServer* server, QObject* parent)
    : QObject(parent)
    , m_server(server)
{}

void MachineWords::tell(const char* line)
{
    emit message(QString::fromUtf8(line), true);
}

void MachineWords::controllerError(uint number)
{
    if (number)
        emit message(QStringLiteral("[A]CML75: Ошибка контроллера ЧПУ номер %1!").arg(number), true);
}

void MachineWords::door(uint state)
{
    if (state < std::size(kDoorLines))
        tell(kDoorLines[state]);
}

void MachineWords::transportModule(uint state)
{
    if (state < std::size(kTrModuleLines))
        tell(kTrModuleLines[state]);
}

void MachineWords::raiseAlarm(int numId)
{
    m_server->slotAddMessage(alarmMessage, numId, 0);
    emit command(QStringLiteral("ZOOMMER"));
}

void MachineWords::showAlarm(bool on, int numId, const char* line)
{
    if (!on) {
        m_server->slotDeleteMessage(numId);
        return;
    }
    tell(line);
    raiseAlarm(numId);
}

// The alarm of QF18 tells that it has just tripped. The next change of the word takes it off the stack even
// if the breaker is still open, as when a second breaker trips; the journal keeps both.
void MachineWords::breakers(uint word)
{
    if (word == m_breakers)
        return;
    const uint fell = m_breakers & ~word;
    for (std::size_t bit = 0; bit < std::size(kBreakerLines); ++bit) {
        if (bitOf(fell, bit))
            tell(kBreakerLines[bit]);
    }
    if (fell & kCommonBreakerBit)
        raiseAlarm(CommonBreaker);
    else
        m_server->slotDeleteMessage(CommonBreaker);
    m_breakers = word;
}

// Not compared with the word before: each change of the word tells again, and sounds again, all that is
// still pressed or pulled.
void MachineWords::alarms(uint word)
{
    for (std::size_t bit = 0; bit < std::size(kAlarms); ++bit)
        showAlarm(bitOf(word, bit), kAlarms[bit].numId, kAlarms[bit].line);
}

void MachineWords::drivesPower(bool healthy)
{
    showAlarm(!healthy, ControlBreaker, "[A]Сработал автомат питания приводов 24В в ШУК (QF28)!");
}

void MachineWords::phases(bool wrong)
{
    showAlarm(wrong, Phases, "[A]Ошибка фаз 380 Вольт в ШУК!");
}

void MachineWords::spiralPower(bool healthy)
{
    if (healthy) {
        m_server->slotDeleteMessage(SpiralBreaker);
        return;
    }
    tell("[W]Сработал автомат питания спиралей в ШУК (QF23 или QF24)!");
    m_server->slotAddMessage(warningMessage, SpiralBreaker, 0);
}

void MachineWords::lights(uint word)
{
    const uint changed = word ^ m_lights;
    for (std::size_t bit = 0; bit < std::size(kLights); ++bit) {
        if (bitOf(changed, bit))
            tell(bitOf(word, bit) ? kLights[bit].on : kLights[bit].off);
    }
    m_lights = word;
}
