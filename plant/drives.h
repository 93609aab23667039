#pragma once

#include "plant/axes.h"

#include <array>
#include <cstdint>
#include <random>

namespace plant {

// Diagnostic numbers of the drives as the status datagram carries them.
namespace diagnostic {
constexpr std::int32_t none = 0; // the drive's electronics have no supply
constexpr std::int32_t readyForPower = 0xA0013;
constexpr std::int32_t powerReady = 0xA0012;
constexpr std::int32_t speedMode = 0xA0101;
constexpr std::int32_t positionMode = 0xA0102;
constexpr std::int32_t parked = 0xC1600;
constexpr std::int32_t clearing = 0xC0500;
constexpr std::int32_t homing = 0xC0600;
constexpr std::int32_t firstWarning = 0xE0000;
constexpr std::int32_t firstFault = 0xF0000;
constexpr std::int32_t motorTooHot = 0xF2019;
constexpr std::int32_t underVoltage = 0xF2026;
constexpr std::int32_t overCurrent = 0xF8060;
} // namespace diagnostic

// Power and diagnosis of the ten drives. They are switched together; a parked drive stays without power.
class Drives
{
public:
    explicit Drives(std::uint32_t seed);

    void switchOn();        // takes about a second; which drive is ready first varies with the seed
    void switchOff();       // torque is gone at once, the power section follows within a second
    bool on() const;        // all drives that are not parked are in operation
    bool switching() const; // asked to go on and not yet there

    void park(AxisId axis, bool on);
    bool parked(AxisId axis) const { return at(axis).parked; }

    // A code from 0xF0000 is a fault, one from 0xE0000 a warning; it stands until cleared.
    void setTrouble(AxisId axis, std::int32_t code) { at(axis).trouble = code; }
    std::int32_t trouble(AxisId axis) const { return at(axis).trouble; }
    bool faulted(AxisId axis) const { return at(axis).trouble >= diagnostic::firstFault; }
    bool warned(AxisId axis) const;

    // Shows a command in progress for a moment.
    void showCommand(AxisId axis, std::int32_t code, double seconds);

    std::int32_t code(AxisId axis, bool jogging) const;

    void step(double dt);

private:
    struct Drive
    {
        bool parked = false;
        std::int32_t trouble = 0;
        std::int32_t command = 0;
        double commandTime = 0; // s left
        double settle = 0;      // s until the power section has followed
    };
    Drive& at(AxisId axis) { return m_drives[static_cast<std::size_t>(axis)]; }
    const Drive& at(AxisId axis) const { return m_drives[static_cast<std::size_t>(axis)]; }

    std::array<Drive, driveCount> m_drives{};
    bool m_wanted = false;
    std::mt19937 m_random;
};

} // namespace plant
