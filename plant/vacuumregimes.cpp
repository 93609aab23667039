#include "plant/vacuumregimes.h"

#include "plant/vacuuminterlocks.h"
#include "plant/vacuumplant.h"

#include <algorithm>

namespace plant {

namespace {

using D = Device;

constexpr double fineBleedEnd = 2000; // Pa: then the large bleed valve opens
constexpr double bledShare = 1.01;    // of the pressure that lets the door go
constexpr double ventedShare = 0.95;  // of the atmosphere, in the lines at the end of work
constexpr double almostGun = 1.5;     // the shutter opens when the chamber has come down to so many times PT6
constexpr double burstShare = 2;      // times the pressure for opening VP1: air has come in

} // namespace

VacuumRegimes::VacuumRegimes(VacuumPlant& plant)
    : m_plant(plant)
{}

QString VacuumRegimes::refusal(std::uint32_t number) const
{
    if (number > regime::shutdown)
        return QStringLiteral("no regime %1").arg(number);
    if (number != regime::forepump && number != regime::pumping)
        return {};
    if (!m_plant.surroundings().doorClosed)
        return QStringLiteral("the door is not closed");
    if (!m_plant.is(Device::Door, DeviceState::Off))
        return QStringLiteral("the door is not pressed");
    if (number == regime::pumping && !m_plant.powered(Device::ND1))
        return QStringLiteral("ND1 is not on: prepare first");
    return {};
}

QString VacuumRegimes::start(std::uint32_t number)
{
    const QString reason = refusal(number);
    if (!reason.isEmpty())
        return reason;
    Steps steps;
    switch (number) {
    case regime::prepare:
        steps = prepareSteps();
        break;
    case regime::forepump:
        steps = roughSteps();
        break;
    case regime::pumping:
        if (!m_plant.below(5, limit(KvsConst::VP1Pressure)))
            steps = roughSteps();
        steps.insert(steps.end(), pumpingSteps().begin(), pumpingSteps().end());
        break;
    case regime::filling:
        steps = fillingSteps();
        break;
    case regime::shutdown:
        steps = shutdownSteps();
        break;
    default:
        break;
    }
    begin(number, std::move(steps));
    return {};
}

void VacuumRegimes::begin(std::uint32_t number, Steps steps)
{
    m_number = number;
    m_state = RegimeState::Running;
    m_steps = std::move(steps);
    m_current = 0;
    m_stepTime = m_time = 0;
    m_asked = 0;
    m_trouble = nullptr;
    m_closing.clear();
}

void VacuumRegimes::put(std::uint32_t number, double time)
{
    begin(number, {});
    m_time = time;
    if (number >= regime::prepare)
        m_state = RegimeState::Done;
}

void VacuumRegimes::step(double dt)
{
    if (m_number == regime::abnormal)
        return stepAbnormal();
    if (m_state == RegimeState::Running)
        m_time += dt;
    if (m_number != regime::setup)
        watch(dt);
    if (automatic())
        stepSequence(dt);
}

void VacuumRegimes::stepSequence(double dt)
{
    const Step now = m_steps[m_current]; // a copy: an abnormal end takes the steps away
    if (m_log && m_stepTime <= 0)
        m_log(QStringLiteral("regime %1: %2").arg(m_number).arg(QLatin1String(now.what)));
    m_stepTime += dt;
    const bool done = now.done(*this);
    if (m_number == regime::abnormal)
        return;
    for (int i = 0; i < deviceCount; ++i) {
        const auto device = static_cast<Device>(i);
        if ((m_asked & (1u << i)) && m_plant.is(device, DeviceState::Error))
            return end(QStringLiteral("%1 has an error").arg(QLatin1String(traits(device).name)));
    }
    if (!done && m_stepTime > now.limit)
        return end(
            QStringLiteral("%1: not done in %2 s").arg(QLatin1String(now.what)).arg(m_stepTime, 0, 'f', 0));
    if (!done)
        return;
    m_stepTime = 0;
    if (++m_current < m_steps.size())
        return;
    m_state = RegimeState::Done;
    if (m_log)
        m_log(QStringLiteral("regime %1: done in %2 s").arg(m_number).arg(m_time, 0, 'f', 0));
}

void VacuumRegimes::end(const QString& why)
{
    const QString former = QString::number(m_number);
    const double time = m_time;
    const bool danger = m_plant.powered(Device::ND1) && trouble();
    begin(regime::abnormal, {});
    m_state = RegimeState::NotStarted;
    m_time = time;
    m_closing = {D::VP1, D::VP3, D::VP5, D::VP4, D::VP8, D::VE1};
    if (danger)
        m_closing.push_back(D::ND1);
    if (m_log)
        m_log(QStringLiteral("regime %1: abnormal end: %2").arg(former, why));
    if (m_alarm)
        m_alarm(QStringLiteral("ENDED ALG(%1): %2").arg(former, why));
}

// Everything is asked once and not waited for: what does not close now is the operator's to deal with. Only
// an interlock is waited for, as the diffusion pump waits for its gate.
void VacuumRegimes::stepAbnormal()
{
    const auto dealtWith = [this](Device device) {
        return off(device) || (m_asked & (1u << static_cast<std::uint32_t>(device)));
    };
    m_closing.erase(std::remove_if(m_closing.begin(), m_closing.end(), dealtWith), m_closing.end());
}

void VacuumRegimes::watch(double dt)
{
    const char* now = trouble();
    m_troubleTime = now && now == m_trouble ? m_troubleTime + dt : 0;
    m_trouble = now;
    if (now && m_troubleTime > limit(KvkConst::WatchTime))
        end(QLatin1String(now));
}

const char* VacuumRegimes::trouble() const
{
    if (m_plant.is(D::ND1, DeviceState::Error))
        return "ND1 has an error";
    if (!m_plant.is(D::VP1, DeviceState::Off) && !m_plant.below(5, burstShare * limit(KvsConst::VP1Pressure)))
        return "the pressure in the chamber is too high for the open VP1";
    if (m_plant.wanted(D::ND1)) {
        if (!m_plant.is(D::NL1, DeviceState::On) || !m_plant.is(D::VP2, DeviceState::On))
            return "nothing pumps behind ND1";
        if (!m_plant.cooled(D::ND1))
            return "ND1 has not enough cooling water";
        if (!m_plant.below(1, limit(KvsConst::BackingMost)))
            return "the pressure behind ND1 is too high";
    }
    return nullptr;
}

bool VacuumRegimes::ask(Device device, bool on)
{
    if (!m_plant.reachable(device))
        return false;
    const DeviceState state = m_plant.state(device);
    if (state == (on ? DeviceState::On : DeviceState::Off))
        return true;
    const std::uint32_t bit = 1u << static_cast<std::uint32_t>(device);
    const bool failed = state == DeviceState::Error;
    if (failed && (m_asked & bit))
        return false;
    // A refused command is repeated until the interlock is gone or the step's time is up.
    if ((m_plant.wanted(device) != on || failed) && !refusalOf(m_plant, device, on)) {
        m_plant.command(device, on);
        m_asked |= bit;
    }
    return false;
}

double VacuumRegimes::limit(KvsConst id) const
{
    return m_plant.constants()(id);
}

double VacuumRegimes::limit(KvkConst id) const
{
    return m_plant.constants()(id);
}

// Opens a valve between a line and a volume. A line under vacuum first gets air when the volume is full of
// it; a volume under vacuum waits until the line has been pumped.
bool VacuumRegimes::join(Device valve, Device vent, Device pump, int far, int line)
{
    if (m_plant.wanted(valve) || !refusalOf(m_plant, valve, true))
        return off(vent) && on(valve);
    if (m_plant.reading(line) > m_plant.reading(far)) {
        if (off(vent))
            on(pump);
        return false;
    }
    const bool booster = pump == D::NL2 ? off(D::VP5) && off(D::NZ2) : off(D::NZ1);
    if (booster && off(pump))
        on(vent);
    return false;
}

bool VacuumRegimes::bleedShut()
{
    const bool small = off(D::VP8);
    return off(D::VP4) && small;
}

bool VacuumRegimes::gatesShut()
{
    const bool high = off(D::VP1);
    return off(D::VP3) && high;
}

bool VacuumRegimes::vented(Device vent, int gauge)
{
    if (m_plant.above(gauge, ventedShare * atmosphere))
        return off(vent);
    on(vent);
    return false;
}

// While the chamber is roughed: the jacket is joined as soon as its pressure allows it. The gun is emptied
// through the chamber, so that its air does not burst into the foreline.
void VacuumRegimes::alongRoughing()
{
    on(D::VP5);
    const double gun = m_plant.reading(6);
    if (gun > limit(KvkConst::TurboPressure) && m_plant.below(5, almostGun * gun))
        on(D::VE1);
}

bool VacuumRegimes::flowsEnough() const
{
    for (int circuit = 1; circuit <= measuredCircuits; ++circuit)
        if (!m_plant.flowEnough(circuit))
            return false;
    return true;
}

bool VacuumRegimes::drivesOff()
{
    const bool off = m_plant.surroundings().drivesOff;
    if (!off && m_stepTime > limit(KvkConst::DrivesWait))
        end(QStringLiteral("the drives are not off"));
    return off;
}

const VacuumRegimes::Steps& VacuumRegimes::prepareSteps()
{
    using R = VacuumRegimes;
    static const Steps steps = {
        {"water flows", 60, [](R& r) { return r.on(D::NW2) && r.flowsEnough(); }},
        {"VP2 open", 600, [](R& r) { return r.joinForeline(); }},
        {"NL1 on", 60, [](R& r) { return r.on(D::NL1); }},
        {"NZ1 on", 300, [](R& r) { return r.on(D::NZ1); }},
        {"vacuum in ND1", 300, [](R& r) { return r.m_plant.below(2, r.limit(KvsConst::ND1Pressure)); }},
        {"oil hot", 3600, [](R& r) { return r.on(D::ND1); }},
    };
    return steps;
}

const VacuumRegimes::Steps& VacuumRegimes::roughSteps()
{
    using R = VacuumRegimes;
    static const Steps steps = {
        {"chamber closed", 60, [](R& r) { return r.off(D::VP1) && r.bleedShut(); }},
        {"VP3 open", 600, [](R& r) { return r.joinRoughing(); }},
        {"NL2 on", 60, [](R& r) { return r.alongRoughing(), r.on(D::NL2); }},
        {"NZ2 on", 1800, [](R& r) { return r.alongRoughing(), r.on(D::NZ2); }},
        {"rough vacuum", 1200,
         [](R& r) { return r.alongRoughing(), r.m_plant.below(5, r.limit(KvkConst::RoughVacuum)); }},
    };
    return steps;
}

const VacuumRegimes::Steps& VacuumRegimes::pumpingSteps()
{
    using R = VacuumRegimes;
    static const Steps steps = {
        {"VP3 closed", 60, [](R& r) { return r.off(D::VP3); }},
        {"oil hot", 3600, [](R& r) { return r.on(D::ND1); }},
        {"VP1 open", 120, [](R& r) { return r.on(D::VP1); }},
        {"TMN on", 300, [](R& r) { return r.on(D::VPT) && r.on(D::TMN); }},
        {"working vacuum", 3600, [](R& r) { return r.m_plant.below(5, r.limit(KvkConst::WorkingVacuum)); }},
        {"VE1 open", 60, [](R& r) { return r.on(D::VE1); }},
    };
    return steps;
}

const VacuumRegimes::Steps& VacuumRegimes::fillingSteps()
{
    using R = VacuumRegimes;
    static const Steps steps = {
        {"VE1 closed", 60, [](R& r) { return r.off(D::VE1); }},
        {"VP1 and VP3 closed", 60, [](R& r) { return r.gatesShut(); }},
        {"drives off", 3600, [](R& r) { return r.drivesOff(); }},
        {"air through VP8", 300, [](R& r) { return r.on(D::VP8) && r.m_plant.above(5, fineBleedEnd); }},
        {"air through VP4", 900,
         [](R& r) { return r.on(D::VP4) && r.m_plant.above(5, bledShare * r.limit(KvkConst::Atmosphere)); }},
        {"VP4 and VP8 closed", 30, [](R& r) { return r.bleedShut(); }},
    };
    return steps;
}

const VacuumRegimes::Steps& VacuumRegimes::shutdownSteps()
{
    using R = VacuumRegimes;
    static const Steps steps = {
        {"TMN off", 300, [](R& r) { return r.off(D::VE1) && r.off(D::TMN) && r.off(D::VPT); }},
        {"gates closed", 60, [](R& r) { return r.gatesShut() && r.bleedShut() && r.off(D::VP5); }},
        {"oil cold", 5400, [](R& r) { return r.off(D::ND1); }},
        {"VP2 closed", 30, [](R& r) { return r.off(D::VP2); }},
        {"NZ1 and NZ2 off", 120, [](R& r) { return r.off(D::NZ1) && r.off(D::NZ2); }},
        {"NL1 and NL2 off", 60, [](R& r) { return r.off(D::NL1) && r.off(D::NL2); }},
        {"air in the lines", 120, [](R& r) { return r.vented(D::VP7, 1) && r.vented(D::VP6, 3); }},
        {"NW2 off", 30, [](R& r) { return r.off(D::NW2); }},
    };
    return steps;
}

} // namespace plant
