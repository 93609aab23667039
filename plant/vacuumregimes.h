#pragma once

#include "plant/vacuumconstants.h"
#include "plant/vacuumdevices.h"

#include <QString>

#include <cstdint>
#include <functional>
#include <vector>

namespace plant {

class VacuumPlant;

// Numbers of the regimes as "ALG(" and the datagrams carry them.
namespace regime {
constexpr std::uint32_t setup = 0;
constexpr std::uint32_t manual = 1;
constexpr std::uint32_t prepare = 2;  // the diffusion pump becomes hot
constexpr std::uint32_t forepump = 3; // the chamber to a rough vacuum
constexpr std::uint32_t pumping = 4;  // the chamber to the working vacuum
constexpr std::uint32_t filling = 5;  // air into the chamber
constexpr std::uint32_t shutdown = 6; // everything off
constexpr std::uint32_t abnormal = 0xFFFFFFFF;
} // namespace regime

enum class RegimeState : std::uint32_t { NotStarted = 0, Running = 1, Done = 2 };

// The automatic algorithms of KVK: sequences of steps, each of which commands its devices and waits, for a
// limited time, until they have done what it wants. A step that takes too long, a device with an error or a
// trouble of the plant that lasts is the abnormal end: the gates and bleed valves of the chamber are closed
// and a diffusion pump in danger is switched off. In setup nothing is watched.
class VacuumRegimes
{
public:
    explicit VacuumRegimes(VacuumPlant& plant); // outlives the regimes

    // Receives each step that begins and why a regime ended.
    void setLog(std::function<void(const QString&)> log) { m_log = std::move(log); }
    // Receives each abnormal end with its reason, as the console is to be told.
    void setAlarm(std::function<void(const QString&)> alarm) { m_alarm = std::move(alarm); }

    QString start(std::uint32_t number);         // empty when started, otherwise why not
    void put(std::uint32_t number, double time); // as if it had run for so long; from prepare on: to its end
    void step(double dt);

    std::uint32_t number() const { return m_number; }
    RegimeState state() const { return m_state; }
    double time() const { return m_time; } // s, stands still at the end
    // An automatic regime is at work: the devices are its own.
    bool automatic() const { return m_number >= regime::prepare && m_state == RegimeState::Running; }

private:
    struct Step
    {
        const char* what;
        double limit;                   // s
        bool (*done)(VacuumRegimes& r); // asks its devices, tells whether all is as it wants
    };
    using Steps = std::vector<Step>;

    static const Steps& prepareSteps();
    static const Steps& roughSteps();
    static const Steps& pumpingSteps();
    static const Steps& fillingSteps();
    static const Steps& shutdownSteps();
    QString refusal(std::uint32_t number) const;
    void begin(std::uint32_t number, Steps steps);
    void stepSequence(double dt);
    void stepAbnormal();
    void watch(double dt);
    const char* trouble() const; // null for none
    void end(const QString& why);

    // For steps: whether the device has arrived; commands it when need be.
    bool on(Device device) { return ask(device, true); }
    bool off(Device device) { return ask(device, false); }
    bool ask(Device device, bool on);
    bool joinForeline() { return join(Device::VP2, Device::VP7, Device::NL1, 2, 1); }
    bool joinRoughing() { return join(Device::VP3, Device::VP6, Device::NL2, 5, 3); }
    // Opens a valve between two gauges' volumes once their pressures are near each other, and sees to that.
    bool join(Device valve, Device vent, Device pump, int far, int line);
    bool bleedShut();
    bool gatesShut();
    bool vented(Device vent, int gauge);
    void alongRoughing();
    bool flowsEnough() const;
    bool drivesOff();
    double limit(KvsConst id) const;
    double limit(KvkConst id) const;

    VacuumPlant& m_plant;
    std::function<void(const QString&)> m_log;
    std::function<void(const QString&)> m_alarm;
    Steps m_steps;
    std::size_t m_current = 0;
    double m_stepTime = 0;
    std::uint32_t m_asked = 0; // bit by device: commanded in this regime
    std::uint32_t m_number = regime::manual;
    RegimeState m_state = RegimeState::Running;
    double m_time = 0;
    const char* m_trouble = nullptr;
    double m_troubleTime = 0;
    std::vector<Device> m_closing; // what the abnormal end still has to switch off
};

} // namespace plant
