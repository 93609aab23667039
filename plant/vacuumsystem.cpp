#include "plant/vacuumsystem.h"

#include "plant/controller.h"
#include "plant/vacuuminterlocks.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

namespace plant {

namespace {

constexpr Device kvsPumps[] = {Device::NL1, Device::NL2, Device::NZ1, Device::NZ2, Device::ND1, Device::NW2};
constexpr Device kvsValves[] = {Device::VP1, Device::VP2, Device::VP3, Device::VP5, Device::VP6, Device::VP7};
constexpr Device bkuUnits[] = {Device::VPT, Device::VE1, Device::TMN}; // units 1 to 3

constexpr double turboFull = 833;      // Hz
constexpr double pumpedForTime = 1500; // s that the regime of the start took

template <class List>
bool holds(const List& list, Device device)
{
    return std::find(std::begin(list), std::end(list), device) != std::end(list);
}

template <class Pack>
QByteArray bytes(const Pack& pack)
{
    return QByteArray(reinterpret_cast<const char*>(&pack), sizeof pack);
}

} // namespace

VacuumSystem::VacuumSystem(std::uint32_t seed)
    : m_plant(m_constants, seed)
    , m_regimes(m_plant)
{}

void VacuumSystem::setLog(const std::function<void(const QString&)>& log)
{
    m_log = log;
    m_regimes.setLog(log);
}

void VacuumSystem::step(double dt)
{
    m_regimes.step(dt);
    m_plant.step(dt);
}

QString VacuumSystem::refused(const char* controller, const QString& text, const QString& reason) const
{
    if (!reason.isEmpty() && m_log)
        m_log(QStringLiteral("%1 refused %2: %3").arg(QLatin1String(controller), text.left(200), reason));
    return reason;
}

QString VacuumSystem::commandKvs(const QString& text)
{
    return refused("KVS", text, executeKvs(text));
}

QString VacuumSystem::commandKvk(const QString& text)
{
    return refused("KVK", text, executeKvk(text));
}

QString VacuumSystem::executeKvs(const QString& text)
{
    static const QRegularExpression device(QStringLiteral("\\A([A-Z0-9]+) (ON|OFF)\\z"));
    static const QRegularExpression set(QStringLiteral("\\ASET\\(([^()]*)\\)\\z"));
    if (const auto match = set.match(text); match.hasMatch())
        return m_constants.set(VacuumConstants::Owner::Kvs, match.captured(1));
    if (const auto match = device.match(text); match.hasMatch()) {
        const auto named = deviceByName(match.captured(1));
        if (named && (holds(kvsPumps, *named) || holds(kvsValves, *named)))
            return switchDevice(*named, match.captured(2) == QLatin1String("ON"));
    }
    return QStringLiteral("unknown command");
}

QString VacuumSystem::executeKvk(const QString& text)
{
    static const QRegularExpression device(QStringLiteral("\\A(VP[48]) (ON|OFF)\\z"));
    static const QRegularExpression door(QStringLiteral("\\ADOOR (UN)?PRESS\\z"));
    static const QRegularExpression regime(QStringLiteral("\\AALG\\((\\d{1,9})\\)\\z"));
    static const QRegularExpression bku(QStringLiteral("\\ABKU\\(([123]),([01])\\)\\z"));
    static const QRegularExpression set(QStringLiteral("\\ASET\\(([^()]*)\\)\\z"));
    if (const auto match = set.match(text); match.hasMatch())
        return m_constants.set(VacuumConstants::Owner::Kvk, match.captured(1));
    if (const auto match = regime.match(text); match.hasMatch())
        return m_regimes.start(match.captured(1).toUInt());
    if (const auto match = bku.match(text); match.hasMatch())
        return switchDevice(bkuUnits[match.captured(1).toInt() - 1], match.captured(2) == QLatin1String("1"));
    if (const auto match = door.match(text); match.hasMatch())
        return switchDevice(Device::Door, !match.captured(1).isEmpty());
    if (const auto match = device.match(text); match.hasMatch())
        return switchDevice(*deviceByName(match.captured(1)), match.captured(2) == QLatin1String("ON"));
    return QStringLiteral("unknown command");
}

QString VacuumSystem::switchDevice(Device device, bool on)
{
    if (m_regimes.automatic())
        return QStringLiteral("an automatic regime is at work");
    if (!m_plant.reachable(device))
        return QStringLiteral("BKU does not answer");
    if (const char* reason = refusalOf(m_plant, device, on))
        return QLatin1String(reason);
    m_plant.command(device, on);
    return {};
}

bool VacuumSystem::put(Start start)
{
    if (start == Start::Pumped && !m_plant.surroundings().doorClosed)
        return false;
    if (start == Start::Pumped) {
        m_plant.putPumped();
        m_regimes.put(regime::pumping, pumpedForTime);
    } else {
        m_plant.putAir();
        m_regimes.put(regime::manual, 0);
    }
    return true;
}

bool VacuumSystem::vacuumReached() const
{
    return m_plant.below(5, m_constants(KvkConst::DrivesPressure));
}

bool VacuumSystem::stopped() const
{
    const auto off = [this](Device device) { return m_plant.is(device, DeviceState::Off); };
    return std::all_of(std::begin(kvsPumps), std::end(kvsPumps), off) && off(Device::TMN);
}

PumpBlock VacuumSystem::pumpBlock(Device device) const
{
    const DeviceState state = m_plant.state(device);
    return {static_cast<std::int32_t>(state),
            m_plant.powered(device),
            m_plant.overheated(device),
            static_cast<std::int32_t>(lockWord(m_plant, device, true)),
            static_cast<std::int32_t>(lockWord(m_plant, device, false)),
            state == DeviceState::Error};
}

ValveBlock VacuumSystem::valveBlock(Device device) const
{
    return {static_cast<std::int32_t>(m_plant.state(device)), m_plant.place(device) >= 1,
            m_plant.place(device) <= 0, static_cast<std::int32_t>(lockWord(m_plant, device, true)),
            static_cast<std::int32_t>(lockWord(m_plant, device, false))};
}

KvsPack VacuumSystem::kvsStatus() const
{
    const Surroundings& around = m_plant.surroundings();
    KvsPack pack{};
    pack.signature = vacuumSignature;
    for (std::size_t i = 0; i < std::size(kvsPumps); ++i)
        pack.pump[i] = pumpBlock(kvsPumps[i]);
    for (std::size_t i = 0; i < std::size(kvsValves); ++i)
        pack.valve[i] = valveBlock(kvsValves[i]);
    pack.gaugeUnit = 1;
    pack.indicator = vacuumReached();
    pack.spiral = around.spiral;
    pack.algNumber = static_cast<std::int32_t>(m_regimes.number());
    pack.algState = static_cast<std::int32_t>(m_regimes.state());
    pack.algTime = static_cast<std::int32_t>(m_regimes.time());
    for (int i = 0; i < 3; ++i) {
        pack.gaugeValid[i] = m_plant.valid(i + 1);
        pack.gauge[i] = m_plant.reading(i + 1);
    }
    pack.gaugePower = pack.power110V = pack.power24V = pack.flowSensorPower = pack.fanPower = pack.kvkPower =
        1;
    pack.power380V = around.phases;
    pack.emergencyStop = around.emergency;
    pack.ropeAlarm = around.rope;
    pack.cabinetPower = around.cabinetPower;
    pack.doorClosed = around.doorClosed;
    pack.caseTemperature = static_cast<float>(m_plant.caseTemperature());
    pack.oilTemperature = static_cast<float>(m_plant.oilTemperature());
    for (int i = 0; i < circuitCount; ++i) {
        pack.waterTemperature[i] = static_cast<float>(m_plant.waterTemperature(i + 1));
        pack.waterFlow[i] = static_cast<float>(m_plant.flow(i + 1));
    }
    return pack;
}

KvkPack VacuumSystem::kvkStatus() const
{
    const Surroundings& around = m_plant.surroundings();
    KvkPack pack{};
    pack.signature = vacuumSignature;
    pack.valve[0] = valveBlock(Device::VP4);
    pack.valve[1] = valveBlock(Device::VP8);
    pack.door = valveBlock(Device::Door);
    for (int i = 0; i < 2; ++i) {
        pack.gaugeValid[i] = m_plant.valid(i + 4);
        pack.gauge[i] = m_plant.reading(i + 4);
    }
    pack.airPressureOk = pack.np1Power = m_plant.compressor();
    pack.nw1Power = 1;
    pack.drivesLock = !vacuumReached() && around.doorClosed;
    pack.spiralLock = !vacuumReached();
    pack.shutdownLock = !stopped();
    pack.algNumber = m_regimes.number();
    pack.algTime = static_cast<std::uint32_t>(m_regimes.time());
    pack.algState = static_cast<std::uint32_t>(m_regimes.state());
    const auto bku = [this](Device device) {
        return static_cast<std::int32_t>(m_plant.reachable(device) ? m_plant.state(device)
                                                                   : DeviceState::NoData);
    };
    pack.bkuValid = m_plant.valid(6);
    pack.vpt = bku(Device::VPT);
    pack.ve1 = bku(Device::VE1);
    pack.tmn = bku(Device::TMN);
    pack.net = m_plant.valid(6);
    pack.acc = around.accelerating;
    pack.mp = m_plant.is(Device::TMN, DeviceState::On);
    pack.locks = bkuLockWord(m_plant);
    pack.gunPressure = static_cast<float>(m_plant.reading(6));
    pack.turboFrequency = static_cast<float>(m_plant.place(Device::TMN) * turboFull);
    return pack;
}

ControllerPort VacuumSystem::kvsPort()
{
    return {QStringLiteral("KVS: "),
            [this](const QString& text) -> Frame {
                if (text == QLatin1String("CONST"))
                    return {kvsConstantsSignature, m_constants.records(VacuumConstants::Owner::Kvs)};
                return {vacuumSignature, answerText(text, commandKvs(text))};
            },
            [this] { return bytes(kvsStatus()); }, [] {}};
}

ControllerPort VacuumSystem::kvkPort()
{
    return {QStringLiteral("KVK: "),
            [this](const QString& text) -> Frame {
                if (text == QLatin1String("CONST"))
                    return {kvkConstantsSignature, m_constants.records(VacuumConstants::Owner::Kvk)};
                return {vacuumSignature, answerText(text, commandKvk(text))};
            },
            [this] { return bytes(kvkStatus()); }, [] {}};
}

QString VacuumSystem::summary() const
{
    static const char* const states[] = {"no data", "off", "on", "going off", "going on", "error"};
    const std::uint32_t number = m_regimes.number();
    QStringList parts = {number == regime::abnormal
                             ? QStringLiteral("abnormal end")
                             : QStringLiteral("regime %1 %2")
                                   .arg(number)
                                   .arg(m_regimes.state() == RegimeState::Done ? QStringLiteral("done")
                                                                               : QStringLiteral("running")),
                         QStringLiteral("%1 s").arg(m_regimes.time(), 0, 'f', 0)};
    for (int gauge = 1; gauge <= gaugeCount; ++gauge)
        parts << QStringLiteral("PT%1 %2").arg(gauge).arg(m_plant.reading(gauge), 0, 'e', 1) +
                     (m_plant.valid(gauge) ? QString() : QStringLiteral(" invalid"));
    for (int i = 0; i < deviceCount; ++i) {
        const auto device = static_cast<Device>(i);
        parts << QStringLiteral("%1 %2").arg(
            QLatin1String(traits(device).name),
            QLatin1String(states[static_cast<std::int32_t>(m_plant.state(device)) + 1]));
    }
    parts << QStringLiteral("oil %1").arg(m_plant.oilTemperature(), 0, 'f', 0);
    return parts.join(QStringLiteral(", "));
}

void couple(MotionController& motion, VacuumSystem& vacuum)
{
    const Cabinet& cabinet = motion.cabinet();
    const auto& alarm = cabinet.alarm;
    Surroundings now;
    now.doorClosed = cabinet.door == Door::Closed;
    now.drivesOff = !motion.drivesLive();
    now.accelerating = motion.channelState(3) == ChannelState::Running;
    now.cabinetReady = cabinet.healthy();
    now.cabinetPower = cabinet.breakers.has(Breaker::QF28);
    now.phases = cabinet.phases;
    now.spiral = cabinet.light.has(Light::Spiral);
    now.emergency = alarm.has(AlarmButton::Console) || alarm.has(AlarmButton::Pendant);
    now.rope = alarm.has(AlarmButton::LeftRope) || alarm.has(AlarmButton::RightRope);
    vacuum.plant().setSurroundings(now);
    motion.setVacuum(vacuum.vacuumReached() && now.doorClosed);
    motion.setDoorHold(!vacuum.plant().is(Device::Door, DeviceState::On)
                           ? "the door is pressed"
                           : refusalOf(vacuum.plant(), Device::Door, true));
}

} // namespace plant
