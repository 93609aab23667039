#pragma once

#include <array>
#include <cstddef>

namespace plant {

constexpr double atmosphere = 1.013e5; // Pa

// The volumes of the plant. The foreline lies between the diffusion pump and NZ1, the roughing line between
// chamber, jacket and NZ2.
enum class Node { Chamber, Jacket, Diffusion, Foreline, Roughing, Gun };
constexpr std::size_t nodeCount = 6;
constexpr const char* nodeNames[nodeCount] = {"chamber", "jacket", "nd1", "foreline", "roughing", "gun"};

// How far everything stands open or runs, 0 to 1.
struct GasPaths
{
    double vp1 = 0, vp2 = 0, vp3 = 0, vp4 = 0, vp5 = 0, vp6 = 0, vp7 = 0, vp8 = 0, vpt = 0, ve1 = 0;
    double doorGap = 0;  // 1: the pressing is released
    double doorOpen = 0; // 1: the door stands open
    double nl1 = 0, nl2 = 0, nz1 = 0, nz2 = 0, turbo = 0;
    double diffusion = 0; // how hard the oil boils
};

// Lumped model of the gas: six volumes, the conductances between them, pumps with a speed and an ultimate
// pressure, outgassing walls. A closed chamber full of air reaches 1e-2 Pa in some 20 minutes; walls that
// stay under vacuum give less gas from hour to hour.
class VacuumGas
{
public:
    VacuumGas(); // full of air

    double pressure(Node node) const { return m_pressure[static_cast<std::size_t>(node)]; } // Pa
    void setPressure(Node node, double pascal) { p(node) = pascal; }
    void setWetness(double share) { m_wet = share; } // of the chamber's walls, 1: as after a night in air
    double leak(Node node) const { return m_leak[static_cast<std::size_t>(node)]; }         // Pa m3/s
    void setLeak(Node node, double rate) { m_leak[static_cast<std::size_t>(node)] = rate; } // Pa m3/s

    void step(const GasPaths& paths, double dt);

private:
    double& p(Node node) { return m_pressure[static_cast<std::size_t>(node)]; }
    void join(Node a, Node b, double conductance, double dt); // m3/s
    void admit(Node node, double conductance, double dt);     // air
    void pump(Node node, double speed, double ultimate, double dt);
    void carry(Node from, Node to, double amount); // Pa m3
    void stepDiffusion(const GasPaths& paths, double dt);
    void stepSources(double dt);

    std::array<double, nodeCount> m_pressure;
    std::array<double, nodeCount> m_leak{};
    double m_wet = 1;
};

} // namespace plant
