#pragma once

#include "plant/vacuumconstants.h"
#include "plant/vacuumdevices.h"
#include "plant/vacuumgas.h"

#include <array>
#include <cstdint>
#include <random>
#include <vector>

namespace plant {

// Gauges: PT1 in the foreline, PT2 in the diffusion pump, PT3 in the roughing line, PT4 in the jacket, PT5 in
// the chamber, PT6 in the gun.
constexpr int gaugeCount = 6;
// Circuits of the cooling water: 1 NW2, 2 to 5 ND1, 6 NZ2, 7 NL1, 8 spare.
constexpr int circuitCount = 8;
constexpr int measuredCircuits = 7; // the constants name the least flow of these

enum class GaugeFault { None, Frozen, Invalid };

// What the rest of the installation tells the vacuum plant.
struct Surroundings
{
    bool doorClosed = false;
    bool drivesOff = true;
    bool accelerating = false; // the beam unit's high voltage
    bool cabinetReady = true;  // the cabinet lets the shutter open
    bool cabinetPower = true;
    bool phases = true;
    bool spiral = false;
    bool emergency = false;
    bool rope = false;
};

// The vacuum plant itself: devices, gas, water, oil and gauges. It obeys every command; who may give one is
// the controllers' business. Not thread safe. Time passes in `step` alone.
class VacuumPlant
{
public:
    // `constants` outlive the plant. `seed` sets the noise of the instruments.
    VacuumPlant(const VacuumConstants& constants, std::uint32_t seed);

    void step(double dt); // s
    void command(Device device, bool on);

    DeviceState state(Device device) const;
    bool is(Device device, DeviceState value) const { return state(device) == value; }
    double place(Device device) const { return actuator(device).place(); }
    bool wanted(Device device) const { return actuator(device).wanted(); }
    bool powered(Device device) const { return actuator(device).powered(); }
    // BKU, which switches VPT, VE1 and TMN, is as silent as its gauge PT6.
    bool reachable(Device device) const { return device < Device::VPT || valid(6); }
    bool overheated(Device device) const; // pumps with a water circuit only
    bool cooled(Device device) const;     // there is water enough in each of its circuits

    // Gauges 1 to 6: Pa as shown, and whether to be believed.
    double reading(int gauge) const { return m_readings[index(gauge)]; }
    bool valid(int gauge) const { return m_gaugeFaults[index(gauge)] != GaugeFault::Invalid; }
    bool below(int gauge, double pascal) const { return valid(gauge) && reading(gauge) < pascal; }
    bool above(int gauge, double pascal) const { return valid(gauge) && reading(gauge) > pascal; }

    double flow(int circuit) const { return m_flows[index(circuit)]; }             // l/min, circuits 1 to 8
    bool flowEnough(int circuit) const;                                            // measured circuits
    double waterTemperature(int circuit) const { return m_water[index(circuit)]; } // deg C
    double oilTemperature() const { return m_oil; }
    double caseTemperature() const { return m_case; }
    bool compressor() const { return m_compressor; }

    const VacuumConstants& constants() const { return m_constants; }
    const Surroundings& surroundings() const { return m_surroundings; }
    void setSurroundings(const Surroundings& now) { m_surroundings = now; }

    // What can go wrong.
    void setBroken(Device device, bool broken) { actuator(device).setBroken(broken); }
    void setGauge(int gauge, GaugeFault fault) { m_gaugeFaults[index(gauge)] = fault; }
    void setWater(int circuit, bool flows) { m_noWater[index(circuit)] = !flows; }
    void setLeak(Node node, double rate) { m_gas.setLeak(node, rate); } // Pa m3/s
    void setCompressor(bool on) { m_compressor = on; }
    bool broken(Device device) const { return actuator(device).broken(); }
    GaugeFault gaugeFault(int gauge) const { return m_gaugeFaults[index(gauge)]; }
    bool water(int circuit) const { return !m_noWater[index(circuit)]; }
    double leak(Node node) const { return m_gas.leak(node); } // Pa m3/s

    // At once: pumped down to welding vacuum with the pumps at work, or everything off and full of air with
    // the pressing released. Faults stay.
    void putPumped();
    void putAir();

private:
    static std::size_t index(int fromOne) { return static_cast<std::size_t>(fromOne - 1); }
    Actuator& actuator(Device device) { return m_devices[static_cast<std::size_t>(device)]; }
    const Actuator& actuator(Device device) const { return m_devices[static_cast<std::size_t>(device)]; }
    void put(std::initializer_list<Device> on);
    GasPaths paths() const;
    void stepOil(double dt);
    void stepWater(double dt);
    void readGauges(double dt);
    double noise(); // -1 to 1

    const VacuumConstants& m_constants;
    Surroundings m_surroundings;
    std::vector<Actuator> m_devices;
    VacuumGas m_gas;
    std::array<double, circuitCount> m_flows{};
    std::array<double, circuitCount> m_water{};
    std::array<bool, circuitCount> m_noWater{};
    std::array<bool, circuitCount> m_hot{}; // the overheat protection has tripped
    std::array<double, gaugeCount> m_readings{};
    std::array<double, gaugeCount> m_noise{};
    std::array<GaugeFault, gaugeCount> m_gaugeFaults{};
    double m_untilNoise = 0; // s
    double m_oil;            // deg C
    double m_case;
    bool m_compressor = true;
    std::mt19937 m_random;
};

} // namespace plant
