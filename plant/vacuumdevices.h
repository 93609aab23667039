#pragma once

#include <QString>

#include <array>
#include <cstdint>
#include <optional>

namespace plant {

// Everything in the vacuum plant that is commanded by name. On means running, open, and for the pressing of
// the door: released.
enum class Device {
    NL1,
    NL2,
    NZ1,
    NZ2,
    ND1,
    NW2,
    VP1,
    VP2,
    VP3,
    VP4,
    VP5,
    VP6,
    VP7,
    VP8,
    Door,
    VPT,
    VE1,
    TMN
};
constexpr int deviceCount = 18;

// As the datagrams carry it.
enum class DeviceState : std::int32_t { NoData = -1, Off = 0, On = 1, GoingOff = 2, GoingOn = 3, Error = 4 };

struct DeviceTraits
{
    const char* name; // as commands have it
    bool pump;        // has a motor; all others are moved by compressed air
    double onTime;    // s from off to on
    double offTime;
};

const DeviceTraits& traits(Device device);
std::optional<Device> deviceByName(const QString& name); // "VP1"; the door is "DOOR"; no case

// One drive between its two ends: a pump that runs up and down, a valve that travels.
class Actuator
{
public:
    explicit Actuator(const DeviceTraits& traits)
        : m_traits(&traits)
    {}

    void command(bool on);          // a device in its error state tries once more
    void step(double dt, bool air); // without compressed air nothing but a pump moves
    void put(bool on);              // stands there at once; broken stays broken, an error is forgotten

    // A broken valve stays where it is, and has an error when it has not arrived in three times its travel;
    // mended, it goes on. A broken pump runs down with an error at once, until it is mended and commanded
    // anew.
    void setBroken(bool broken);
    bool broken() const { return m_broken; }
    void fail(); // stops with an error; a pump only
    bool failed() const { return m_failed; }

    DeviceState state() const;
    double place() const { return m_place; } // 0 off or closed, 1 on or open
    bool wanted() const { return m_wanted; }
    bool powered() const { return m_wanted && !m_failed; }

private:
    const DeviceTraits* m_traits;
    double m_place = 0;
    double m_late = 0; // s since the command, while not arrived
    bool m_wanted = false;
    bool m_broken = false;
    bool m_failed = false;
};

} // namespace plant
