#include "plant/present.h"

#include "plant/beamunit.h"
#include "plant/controller.h"
#include "plant/vacuumsystem.h"

#include <QStringList>

namespace plant {

namespace {

class Values
{
public:
    void add(const QString& name, const QString& value) { m_parts << name.toLower() + '=' + value; }
    void add(const char* name, const char* value) { add(QLatin1String(name), QLatin1String(value)); }
    void add(const char* name, bool on) { add(name, on ? "on" : "off"); }
    void add(const QString& name, double value, char format = 'f', int digits = 2)
    {
        add(name, QString::number(value, format, digits));
    }
    QString line() const { return QStringLiteral("state ") + m_parts.join(' '); }

private:
    QStringList m_parts;
};

const char* doorWord(Door door)
{
    static const char* const words[] = {"closed", "open", "closing", "opening"};
    return words[static_cast<std::size_t>(door)];
}

const char* channelWord(ChannelState state)
{
    switch (state) {
    case ChannelState::Idle:
        return "idle";
    case ChannelState::Running:
    case ChannelState::Loading:
        return "running";
    default:
        return "error";
    }
}

const char* deviceWord(DeviceState state, bool door)
{
    static const char* const words[] = {"nodata", "off", "on", "goingoff", "goingon", "error"};
    static const char* const presses[] = {"nodata", "pressed", "released", "pressing", "releasing", "error"};
    return (door ? presses : words)[static_cast<std::int32_t>(state) + 1];
}

void addVacuum(Values* values, const VacuumSystem& vacuum)
{
    const VacuumRegimes& regimes = vacuum.regimes();
    static const char* const states[] = {"idle", "running", "done"};
    values->add(QStringLiteral("regime"), regimes.number() == regime::abnormal
                                              ? QStringLiteral("abnormal")
                                              : QString::number(regimes.number()));
    values->add("progress", states[static_cast<std::size_t>(regimes.state())]);
    const VacuumPlant& plant = vacuum.plant();
    for (int gauge = 1; gauge <= gaugeCount; ++gauge)
        values->add(QStringLiteral("pt%1").arg(gauge), plant.reading(gauge), 'e', 1);
    for (int i = 0; i < deviceCount; ++i) {
        const auto device = static_cast<Device>(i);
        const bool door = device == Device::Door;
        values->add(door ? QStringLiteral("pressing") : QString(QLatin1String(traits(device).name)),
                    QLatin1String(deviceWord(plant.state(device), door)));
    }
    values->add(QStringLiteral("oil"), plant.oilTemperature(), 'f', 0);
}

} // namespace

QString presentState(const MotionController& motion, const VacuumSystem& vacuum)
{
    const Cabinet& cabinet = motion.cabinet();
    Values values;
    values.add(QStringLiteral("time"), motion.time());
    values.add("key", cabinet.key);
    values.add("door", doorWord(cabinet.door));
    values.add("vacuum", cabinet.vacuum);
    values.add("alarm", cabinet.alarm.word() != 0);
    values.add("drives", motion.drivesOn());
    values.add("virtual", motion.axes().transformed());
    for (int channel = 1; channel <= 3; ++channel)
        values.add(QStringLiteral("channel%1").arg(channel),
                   QLatin1String(channelWord(motion.channelState(channel))));
    for (const AxisId axis : allAxes)
        values.add(QLatin1String(traits(axis).name), motion.axes().position(axis));
    values.add(QStringLiteral("ir"), motion.beamCurrent());
    values.add(QStringLiteral("iw"), motion.focusCurrent());
    addVacuum(&values, vacuum);
    return values.line();
}

QString presentFaults(const MotionController& motion, const VacuumSystem& vacuum, const BeamUnit* beam)
{
    QStringList faults;
    const auto note = [&](bool stands, const QString& line) {
        if (stands)
            faults << line.toLower();
    };
    const Cabinet& cabinet = motion.cabinet();
    note(!cabinet.key, QStringLiteral("key off"));
    note(!cabinet.phases, QStringLiteral("phase off"));
    const std::pair<const char*, AlarmButton> buttons[] = {{"emergency console on", AlarmButton::Console},
                                                           {"emergency pendant on", AlarmButton::Pendant},
                                                           {"rope left on", AlarmButton::LeftRope},
                                                           {"rope right on", AlarmButton::RightRope}};
    for (const auto& [line, button] : buttons)
        note(cabinet.alarm.has(button), QLatin1String(line));
    for (const auto& [name, breaker] : breakerNames)
        note(!cabinet.breakers.has(breaker), QStringLiteral("breaker %1 off").arg(QLatin1String(name)));
    for (const AxisId axis : allAxes)
        if (const std::int32_t code = isVirtual(axis) ? 0 : motion.trouble(axis))
            note(true, QStringLiteral("trip %1 %2").arg(QLatin1String(traits(axis).name)).arg(code, 0, 16));

    const VacuumPlant& plant = vacuum.plant();
    for (int i = 0; i < deviceCount; ++i) {
        const auto device = static_cast<Device>(i);
        const DeviceTraits& known = traits(device);
        note(plant.broken(device),
             (known.pump ? QStringLiteral("pump %1 stop") : QStringLiteral("valve %1 jam"))
                 .arg(QLatin1String(known.name)));
    }
    for (int gauge = 1; gauge <= gaugeCount; ++gauge) {
        const GaugeFault fault = plant.gaugeFault(gauge);
        note(fault != GaugeFault::None,
             QStringLiteral("gauge pt%1 %2")
                 .arg(gauge)
                 .arg(QLatin1String(fault == GaugeFault::Frozen ? "freeze" : "invalid")));
    }
    for (int circuit = 1; circuit <= circuitCount; ++circuit)
        note(!plant.water(circuit), QStringLiteral("water %1 off").arg(circuit));
    for (std::size_t i = 0; i < nodeCount; ++i)
        if (const double rate = plant.leak(static_cast<Node>(i)); rate > 0)
            note(true, QStringLiteral("leak %1 %2").arg(QLatin1String(nodeNames[i])).arg(rate));
    note(!plant.compressor(), QStringLiteral("air off"));
    note(beam && !beam->running(), QStringLiteral("beam off"));
    return faults.isEmpty() ? QStringLiteral("faults") : QStringLiteral("faults ") + faults.join("; ");
}

} // namespace plant
