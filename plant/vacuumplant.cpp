#include "plant/vacuumplant.h"

#include <algorithm>
#include <cmath>

namespace plant {

namespace {

constexpr double roomTemperature = 20; // deg C
constexpr double inletWater = 18;
constexpr double boilingWater = 95;

constexpr double oilHottest = 230;
constexpr double oilTime = 15 * 60; // s, of heating and of cooling
constexpr double oilBoils = 150;    // the vapour begins to carry
constexpr double oilFull = 175;
constexpr double caseTime = 60;

constexpr double nominalFlow[circuitCount] = {32, 8, 8, 8, 8, 6, 5, 2}; // l/min with NW2
constexpr double mainsShare = 0.2;                                      // without NW2
constexpr double flowTime = 1.5;                                        // s
constexpr double waterTime = 20;
constexpr double standingWaterTime = 90;
constexpr double noFlow = 0.3;              // l/min: the water stands
constexpr double relayHysteresis = 15;      // deg C of the overheat protection
constexpr double degreesPerKilowatt = 14.3; // of 1 l/min

constexpr double lowest[gaugeCount] = {0.1, 1e-4, 0.1, 0.1, 1e-4, 1e-4}; // Pa that a gauge still shows
constexpr double noiseShare = 0.002;
constexpr double noisePeriod = 0.5; // s

constexpr Node gaugeNodes[gaugeCount] = {Node::Foreline, Node::Diffusion, Node::Roughing,
                                         Node::Jacket,   Node::Chamber,   Node::Gun};

// Which pump a circuit cools, and the heat of the running pump in kW.
struct Cooling
{
    Device pump;
    double heat;
};
constexpr Cooling cooling[circuitCount] = {{Device::NW2, 1.5}, {Device::ND1, 2.5}, {Device::ND1, 2.5},
                                           {Device::ND1, 2.5}, {Device::ND1, 2.5}, {Device::NZ2, 2.5},
                                           {Device::NL1, 1},   {Device::NW2, 0}};

void approach(double& value, double target, double dt, double time)
{
    value += (target - value) * -std::expm1(-dt / time);
}

} // namespace

VacuumPlant::VacuumPlant(const VacuumConstants& constants, std::uint32_t seed)
    : m_constants(constants)
    , m_random(seed)
{
    for (int i = 0; i < deviceCount; ++i)
        m_devices.emplace_back(traits(static_cast<Device>(i)));
    putAir();
}

void VacuumPlant::step(double dt)
{
    for (int i = 0; i < deviceCount; ++i) {
        const auto device = static_cast<Device>(i);
        if (device != Device::ND1)
            actuator(device).step(dt, m_compressor);
    }
    stepOil(dt);
    stepWater(dt);
    m_gas.step(paths(), dt);
    readGauges(dt);
}

void VacuumPlant::command(Device device, bool on)
{
    actuator(device).command(on);
}

// The diffusion pump is on when its oil is hot and off when it has cooled down.
DeviceState VacuumPlant::state(Device device) const
{
    const Actuator& a = actuator(device);
    if (device != Device::ND1)
        return a.state();
    if (a.failed())
        return DeviceState::Error;
    if (a.wanted())
        return m_oil >= m_constants(KvsConst::OilHot) ? DeviceState::On : DeviceState::GoingOn;
    return m_oil <= m_constants(KvsConst::OilCold) ? DeviceState::Off : DeviceState::GoingOff;
}

bool VacuumPlant::overheated(Device device) const
{
    for (std::size_t i = 0; i < circuitCount; ++i)
        if (cooling[i].pump == device && m_hot[i])
            return true;
    return false;
}

bool VacuumPlant::flowEnough(int circuit) const
{
    return flow(circuit) >= m_constants.flowLeast(circuit);
}

bool VacuumPlant::cooled(Device device) const
{
    for (int circuit = 1; circuit <= measuredCircuits; ++circuit)
        if (cooling[index(circuit)].pump == device && !flowEnough(circuit))
            return false;
    return true;
}

void VacuumPlant::put(std::initializer_list<Device> on)
{
    for (int i = 0; i < deviceCount; ++i) {
        const auto device = static_cast<Device>(i);
        actuator(device).put(std::find(on.begin(), on.end(), device) != on.end());
    }
}

void VacuumPlant::putPumped()
{
    put({Device::NL1, Device::NL2, Device::NZ1, Device::NZ2, Device::ND1, Device::NW2, Device::VP1,
         Device::VP2, Device::VP5, Device::VPT, Device::VE1, Device::TMN});
    const double pressures[nodeCount] = {3e-3, 0.8, 2e-3, 1, 0.5, 1.2e-3};
    for (std::size_t i = 0; i < nodeCount; ++i)
        m_gas.setPressure(static_cast<Node>(i), pressures[i]);
    m_gas.setWetness(0.03);
    m_oil = 220;
    m_case = 42;
    for (std::size_t i = 0; i < circuitCount; ++i) {
        m_flows[i] = m_noWater[i] ? 0 : nominalFlow[i];
        m_water[i] = inletWater + cooling[i].heat * degreesPerKilowatt / nominalFlow[i];
    }
    readGauges(noisePeriod);
}

void VacuumPlant::putAir()
{
    put({Device::Door});
    for (std::size_t i = 0; i < nodeCount; ++i)
        m_gas.setPressure(static_cast<Node>(i), atmosphere);
    m_gas.setWetness(1);
    m_oil = m_case = roomTemperature;
    m_flows.fill(0);
    m_water.fill(roomTemperature);
    readGauges(noisePeriod);
}

GasPaths VacuumPlant::paths() const
{
    GasPaths g;
    g.vp1 = place(Device::VP1);
    g.vp2 = place(Device::VP2);
    g.vp3 = place(Device::VP3);
    g.vp4 = place(Device::VP4);
    g.vp5 = place(Device::VP5);
    g.vp6 = place(Device::VP6);
    g.vp7 = place(Device::VP7);
    g.vp8 = place(Device::VP8);
    g.vpt = place(Device::VPT);
    g.ve1 = place(Device::VE1);
    g.doorGap = place(Device::Door);
    g.doorOpen = m_surroundings.doorClosed ? 0 : 1;
    g.nl1 = place(Device::NL1);
    g.nl2 = place(Device::NL2);
    g.nz1 = place(Device::NZ1);
    g.nz2 = place(Device::NZ2);
    g.turbo = place(Device::TMN);
    g.diffusion = std::clamp((m_oil - oilBoils) / (oilFull - oilBoils), 0.0, 1.0);
    return g;
}

void VacuumPlant::stepOil(double dt)
{
    const bool heating = powered(Device::ND1);
    approach(m_oil, heating ? oilHottest : roomTemperature, dt, oilTime);
    const double share = cooled(Device::ND1) ? 0.12 : 0.6;
    approach(m_case, roomTemperature + share * (m_oil - roomTemperature), dt, caseTime);
}

void VacuumPlant::stepWater(double dt)
{
    const double pressure = mainsShare + (1 - mainsShare) * place(Device::NW2);
    for (std::size_t i = 0; i < circuitCount; ++i) {
        approach(m_flows[i], m_noWater[i] ? 0 : nominalFlow[i] * pressure, dt, flowTime);
        const double flow = std::max(m_flows[i], noFlow);
        const double heat = powered(cooling[i].pump) ? cooling[i].heat : 0;
        const double target = std::min(boilingWater, inletWater + heat * degreesPerKilowatt / flow);
        approach(m_water[i], target, dt, m_flows[i] > noFlow ? waterTime : standingWaterTime);
        const double most = m_constants(KvsConst::WaterMost) - (m_hot[i] ? relayHysteresis : 0);
        m_hot[i] = m_water[i] > most;
    }
    for (const Device pump : {Device::NL1, Device::NZ2, Device::ND1})
        if (powered(pump) && overheated(pump))
            actuator(pump).fail();
}

void VacuumPlant::readGauges(double dt)
{
    m_untilNoise -= dt;
    const bool fresh = m_untilNoise <= 0;
    if (fresh)
        m_untilNoise += noisePeriod;
    for (std::size_t i = 0; i < gaugeCount; ++i) {
        if (fresh)
            m_noise[i] = noise() * noiseShare;
        if (m_gaugeFaults[i] == GaugeFault::None)
            m_readings[i] = std::max(lowest[i], m_gas.pressure(gaugeNodes[i])) * (1 + m_noise[i]);
    }
}

// The library's distributions differ from one to the next; this is the same everywhere.
double VacuumPlant::noise()
{
    return static_cast<double>(m_random()) / static_cast<double>(std::mt19937::max()) * 2 - 1;
}

} // namespace plant
