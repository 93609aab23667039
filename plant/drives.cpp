#include "plant/drives.h"

#include <algorithm>

namespace plant {

namespace {

constexpr double shortestSwitching = 0.8; // s
constexpr double longestSwitching = 1.1;

} // namespace

Drives::Drives(std::uint32_t seed)
    : m_random(seed)
{}

void Drives::switchOn()
{
    if (m_wanted)
        return;
    m_wanted = true;
    for (Drive& drive : m_drives) {
        // The generator's own numbers, as distributions differ between libraries.
        const double chance = static_cast<double>(m_random()) / static_cast<double>(std::mt19937::max());
        drive.settle = shortestSwitching + chance * (longestSwitching - shortestSwitching);
    }
}

void Drives::switchOff()
{
    if (!m_wanted)
        return;
    m_wanted = false;
    for (Drive& drive : m_drives)
        drive.settle = shortestSwitching;
}

bool Drives::on() const
{
    return m_wanted && std::all_of(m_drives.begin(), m_drives.end(),
                                   [](const Drive& drive) { return drive.parked || drive.settle <= 0; });
}

bool Drives::switching() const
{
    return m_wanted && !on();
}

void Drives::park(AxisId axis, bool on)
{
    at(axis).parked = on;
    if (const auto second = follower(axis))
        at(*second).parked = on;
}

bool Drives::warned(AxisId axis) const
{
    return at(axis).trouble >= diagnostic::firstWarning && !faulted(axis);
}

void Drives::showCommand(AxisId axis, std::int32_t code, double seconds)
{
    at(axis).command = code;
    at(axis).commandTime = seconds;
}

std::int32_t Drives::code(AxisId axis, bool jogging) const
{
    const Drive& drive = at(axis);
    if (drive.commandTime > 0)
        return drive.command;
    if (drive.trouble)
        return drive.trouble;
    if (drive.parked)
        return diagnostic::parked;
    if (drive.settle > 0)
        return diagnostic::powerReady;
    if (!m_wanted)
        return diagnostic::readyForPower;
    return jogging ? diagnostic::speedMode : diagnostic::positionMode;
}

void Drives::step(double dt)
{
    for (Drive& drive : m_drives) {
        drive.settle = std::max(0.0, drive.settle - dt);
        drive.commandTime = std::max(0.0, drive.commandTime - dt);
    }
}

} // namespace plant
