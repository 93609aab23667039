#include "plant/vacuumgas.h"

#include <algorithm>
#include <cmath>

namespace plant {

namespace {

constexpr double volumes[nodeCount] = {30, 2, 0.8, 0.15, 0.25, 0.05}; // m3

constexpr double volume(Node node)
{
    return volumes[static_cast<std::size_t>(node)];
}

// Conductances when open, m3/s.
constexpr double openDoor = 20;
constexpr double unpressedSeal = 0.02;
constexpr double gateOfMetre = 40;     // VP1
constexpr double angleOfHundred = 1.5; // VP2
constexpr double gateOf250 = 5;        // VP3
constexpr double valveOf63 = 0.62;     // VP4, VP5
constexpr double valveOf25 = 0.1;      // VP6, VP7, VP8
constexpr double shutter = 0.02;       // VE1: the bore for the beam
constexpr double turboBacking = 0.02;  // VPT
constexpr double jacketSeams = 2e-7;

// Pumps: speeds in m3/s, ultimate pressures in Pa.
constexpr double speedNL1 = 0.06;
constexpr double speedNZ1 = 0.11; // on top of NL1
constexpr double speedNL2 = 0.2;
constexpr double speedNZ2 = 1.0; // on top of NL2
constexpr double ultimateOil = 2;
constexpr double ultimateRoots = 0.2;
constexpr double rootsBypass = 3000; // Pa: above it a two-rotor pump idles through its bypass
constexpr double speedDiffusion = 15;
constexpr double mostDiffusion = 5; // Pa m3/s that the vapour carries
constexpr double backingMost = 60;  // Pa behind the vapour, where it collapses
constexpr double backingSlope = 20; // Pa below that, where it begins to
constexpr double speedTurbo = 0.3;
constexpr double turboInletMost = 100; // Pa

// Sources.
constexpr double wallGas = 1;      // Pa m3/s of wet walls
constexpr double dryingTime = 60;  // s until half the gas is gone
constexpr double wettingTime = 30; // s in air
constexpr double dryBelow = 100;   // Pa
constexpr double wetAbove = 1e4;   // Pa
constexpr double gunGas = 3e-4;    // Pa m3/s
constexpr double oilVapour = 1e-4; // Pa m3/s
constexpr double lineGas = 2e-3;   // Pa m3/s

} // namespace

VacuumGas::VacuumGas()
{
    m_pressure.fill(atmosphere);
}

void VacuumGas::step(const GasPaths& paths, double dt)
{
    const double doorConductance = openDoor * paths.doorOpen + unpressedSeal * paths.doorGap;
    admit(Node::Chamber, doorConductance + valveOf63 * paths.vp4 + valveOf25 * paths.vp8, dt);
    admit(Node::Roughing, valveOf25 * paths.vp6, dt);
    admit(Node::Foreline, valveOf25 * paths.vp7, dt);
    join(Node::Chamber, Node::Diffusion, gateOfMetre * paths.vp1, dt);
    join(Node::Chamber, Node::Roughing, gateOf250 * paths.vp3, dt);
    join(Node::Jacket, Node::Roughing, valveOf63 * paths.vp5, dt);
    join(Node::Jacket, Node::Chamber, jacketSeams, dt);
    join(Node::Gun, Node::Chamber, shutter * paths.ve1, dt);
    stepSources(dt);

    const auto roots = [](double inlet) { return std::min(1.0, rootsBypass / inlet); };
    pump(Node::Foreline, paths.nl1 * (speedNL1 + speedNZ1 * paths.nz1 * roots(p(Node::Foreline))),
         paths.nz1 > 0.5 ? ultimateRoots : ultimateOil, dt);
    pump(Node::Roughing, paths.nl2 * (speedNL2 + speedNZ2 * paths.nz2 * roots(p(Node::Roughing))),
         paths.nz2 > 0.5 ? ultimateRoots : ultimateOil, dt);
    stepDiffusion(paths, dt);

    // A turbopump at rest is a pipe; a running one is a valve for gas that comes back, while its backing
    // holds.
    join(Node::Gun, Node::Foreline, turboBacking * paths.vpt * (1 - paths.turbo), dt);
    if (p(Node::Gun) < turboInletMost)
        carry(Node::Gun, Node::Foreline, speedTurbo * paths.turbo * paths.vpt * p(Node::Gun) * dt);
}

void VacuumGas::stepDiffusion(const GasPaths& paths, double dt)
{
    const double backing = std::clamp((backingMost - p(Node::Foreline)) / backingSlope, 0.0, 1.0);
    const double working = paths.diffusion * backing * paths.vp2;
    carry(Node::Diffusion, Node::Foreline,
          working * std::min(speedDiffusion * p(Node::Diffusion), mostDiffusion) * dt);
    join(Node::Diffusion, Node::Foreline, angleOfHundred * paths.vp2 * (1 - working), dt);
}

void VacuumGas::stepSources(double dt)
{
    const double chamber = p(Node::Chamber);
    if (chamber < dryBelow)
        m_wet -= m_wet * m_wet * dt / dryingTime;
    else if (chamber > wetAbove)
        m_wet += (1 - m_wet) * dt / wettingTime;
    const double own[nodeCount] = {wallGas * m_wet, lineGas, oilVapour, lineGas, lineGas, gunGas};
    for (std::size_t i = 0; i < nodeCount; ++i)
        m_pressure[i] = std::min(atmosphere, m_pressure[i] + (own[i] + m_leak[i]) * dt / volumes[i]);
}

// The exact exchange of two volumes, so that no conductance is too large for the step.
void VacuumGas::join(Node a, Node b, double conductance, double dt)
{
    if (conductance <= 0)
        return;
    const double both = 1 / volume(a) + 1 / volume(b);
    carry(a, b, (p(a) - p(b)) / both * -std::expm1(-conductance * both * dt));
}

void VacuumGas::admit(Node node, double conductance, double dt)
{
    if (conductance > 0)
        p(node) += (atmosphere - p(node)) * -std::expm1(-conductance * dt / volume(node));
}

void VacuumGas::pump(Node node, double speed, double ultimate, double dt)
{
    if (speed > 0 && p(node) > ultimate)
        p(node) += (p(node) - ultimate) * std::expm1(-speed * dt / volume(node));
}

void VacuumGas::carry(Node from, Node to, double amount)
{
    p(from) -= amount / volume(from);
    p(to) += amount / volume(to);
}

} // namespace plant
