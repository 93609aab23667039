#include "plant/vacuumdevices.h"

#include <algorithm>

namespace plant {

namespace {

constexpr DeviceTraits table[deviceCount] = {
    {"NL1", true, 5, 8},  {"NL2", true, 8, 15},   {"NZ1", true, 10, 20},  {"NZ2", true, 15, 40},
    {"ND1", true, 0, 0},  {"NW2", true, 3, 3},    {"VP1", false, 12, 12}, {"VP2", false, 2, 2},
    {"VP3", false, 6, 6}, {"VP4", false, 2, 2},   {"VP5", false, 2, 2},   {"VP6", false, 1, 1},
    {"VP7", false, 1, 1}, {"VP8", false, 1, 1},   {"DOOR", false, 5, 5},  {"VPT", false, 2, 2},
    {"VE1", false, 3, 3}, {"TMN", true, 90, 150},
};
constexpr double patience = 3; // times the travel

} // namespace

const DeviceTraits& traits(Device device)
{
    return table[static_cast<std::size_t>(device)];
}

std::optional<Device> deviceByName(const QString& name)
{
    for (int i = 0; i < deviceCount; ++i)
        if (name.compare(QLatin1String(table[i].name), Qt::CaseInsensitive) == 0)
            return static_cast<Device>(i);
    return std::nullopt;
}

void Actuator::command(bool on)
{
    m_wanted = on;
    m_late = 0;
    m_failed = m_broken && m_traits->pump && on;
}

void Actuator::put(bool on)
{
    const bool broken = m_broken;
    *this = Actuator(*m_traits);
    m_wanted = on;
    m_place = on ? 1 : 0;
    setBroken(broken);
}

void Actuator::setBroken(bool broken)
{
    m_broken = broken;
    if (broken && m_traits->pump && m_wanted)
        fail();
}

void Actuator::fail()
{
    m_failed = true;
    m_wanted = false;
}

void Actuator::step(double dt, bool air)
{
    const double end = m_wanted ? 1 : 0;
    if (m_place == end) {
        m_late = 0;
        return;
    }
    const double time = m_wanted ? m_traits->onTime : m_traits->offTime;
    const bool pump = m_traits->pump;
    if (pump || (air && !m_broken)) {
        const double way = dt / time;
        m_place = m_wanted ? std::min(1.0, m_place + way) : std::max(0.0, m_place - way);
    }
    m_late += dt;
    if (!pump && m_place != end && m_late > patience * time)
        m_failed = true;
    else if (!pump && m_place == end)
        m_failed = false;
}

DeviceState Actuator::state() const
{
    if (m_failed)
        return DeviceState::Error;
    if (m_wanted)
        return m_place >= 1 ? DeviceState::On : DeviceState::GoingOn;
    return m_place <= 0 ? DeviceState::Off : DeviceState::GoingOff;
}

} // namespace plant
