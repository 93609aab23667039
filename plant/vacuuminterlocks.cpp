#include "plant/vacuuminterlocks.h"

#include "plant/vacuumplant.h"

#include <cmath>

namespace plant {

namespace {

using P = const VacuumPlant&;
using D = Device;

template <Device device>
bool notOff(P plant)
{
    return !plant.is(device, DeviceState::Off);
}

template <Device device>
bool notOn(P plant)
{
    return !plant.is(device, DeviceState::On);
}

template <int gauge, KvsConst limit>
bool notBelow(P plant)
{
    return !plant.below(gauge, plant.constants()(limit));
}

template <int a, int b, KvsConst limit>
bool unequal(P plant)
{
    return !plant.valid(a) || !plant.valid(b) ||
           std::abs(plant.reading(a) - plant.reading(b)) > plant.constants()(limit);
}

template <Device device>
bool notCooled(P plant)
{
    return !plant.cooled(device);
}

bool drivesOn(P plant)
{
    return !plant.surroundings().drivesOff;
}

bool gateOpen(P plant)
{
    return notOff<D::VP1>(plant) || notOff<D::VP3>(plant);
}

bool noAtmosphere(P plant)
{
    return !plant.above(5, plant.constants()(KvkConst::Atmosphere));
}

bool doorOpen(P plant)
{
    return !plant.surroundings().doorClosed;
}

bool cabinetForbids(P plant)
{
    return !plant.surroundings().cabinetReady;
}

bool accelerating(P plant)
{
    return plant.surroundings().accelerating;
}

bool gunPressure(P plant)
{
    return !plant.below(6, plant.constants()(KvkConst::TurboPressure));
}

} // namespace

const std::vector<Interlock>& interlocks()
{
    using C = KvsConst;
    static const std::vector<Interlock> table = {
        {D::NL1, true, 0, notOff<D::VP7>, "VP7 is not closed"},
        {D::NL1, true, 1, notCooled<D::NL1>, "not enough cooling water"},
        {D::NL1, false, 0, notOff<D::VP2>, "VP2 is not closed"},
        {D::NL1, false, 1, notOff<D::NZ1>, "NZ1 is not off"},
        {D::NL2, true, 0, notOff<D::VP6>, "VP6 is not closed"},
        {D::NL2, false, 0, notOff<D::VP3>, "VP3 is not closed"},
        {D::NL2, false, 1, notOff<D::VP5>, "VP5 is not closed"},
        {D::NL2, false, 2, notOff<D::NZ2>, "NZ2 is not off"},
        {D::NZ1, true, 0, notBelow<1, C::NZ1Pressure>, "the pressure in the foreline is too high"},
        {D::NZ1, false, 0, notOff<D::VP2>, "VP2 is not closed"},
        {D::NZ2, true, 0, notBelow<3, C::NZ2Pressure>, "the pressure in the roughing line is too high"},
        {D::NZ2, true, 1, notCooled<D::NZ2>, "not enough cooling water"},
        {D::NZ2, false, 0, notOff<D::VP3>, "VP3 is not closed"},
        {D::NZ2, false, 1, notOff<D::VP5>, "VP5 is not closed"},
        {D::ND1, true, 0, notBelow<2, C::ND1Pressure>, "the pressure in the pump is too high"},
        {D::ND1, true, 1, notOn<D::VP2>, "VP2 is not open"},
        {D::ND1, true, 2, notOn<D::NL1>, "NL1 is not on"},
        {D::ND1, true, 3, notCooled<D::ND1>, "not enough cooling water"},
        {D::ND1, false, 0, notOff<D::VP1>, "VP1 is not closed"},
        {D::VP1, true, 0, notBelow<5, C::VP1Pressure>, "the pressure in the chamber is too high"},
        {D::VP1, true, 1, notOn<D::ND1>, "ND1 is not on"},
        {D::VP2, true, 0, unequal<2, 1, C::VP2Difference>, "the pressures in pump and foreline differ"},
        {D::VP2, false, 0, notOff<D::ND1>, "ND1 is not off"},
        {D::VP3, true, 0, unequal<5, 3, C::VP3Difference>, "the pressures in chamber and line differ"},
        {D::VP4, true, 0, drivesOn, "the drives are not off"},
        {D::VP4, true, 1, gateOpen, "VP1 or VP3 is not closed"},
        {D::VP5, true, 0, unequal<4, 3, C::VP5Difference>, "the pressures in jacket and line differ"},
        {D::VP6, true, 0, notOff<D::NL2>, "NL2 is not off"},
        {D::VP7, true, 0, notOff<D::NL1>, "NL1 is not off"},
        {D::VP8, true, 0, drivesOn, "the drives are not off"},
        {D::VP8, true, 1, gateOpen, "VP1 or VP3 is not closed"},
        {D::Door, true, 0, noAtmosphere, "no atmosphere in the chamber"},
        {D::Door, false, 0, doorOpen, "the door is not closed"},
        {D::VPT, false, 0, notOff<D::TMN>, "TMN is not off"},
        {D::VE1, true, 1, cabinetForbids, "the cabinet does not permit it"},
        {D::VE1, false, 2, accelerating, "the accelerating voltage is not off"},
        {D::TMN, true, 3, notOn<D::VPT>, "VPT is not open"},
        {D::TMN, true, 4, gunPressure, "the pressure in the gun is too high"},
    };
    return table;
}

std::uint32_t lockWord(const VacuumPlant& plant, Device device, bool on)
{
    std::uint32_t word = 0;
    for (const Interlock& lock : interlocks())
        if (lock.device == device && lock.on == on && lock.holds(plant))
            word |= 1u << lock.bit;
    return word;
}

std::uint32_t bkuLockWord(const VacuumPlant& plant)
{
    std::uint32_t word = 0;
    for (const Device device : {Device::VPT, Device::VE1, Device::TMN})
        word |= lockWord(plant, device, true) | lockWord(plant, device, false);
    return word;
}

const char* refusalOf(const VacuumPlant& plant, Device device, bool on)
{
    for (const Interlock& lock : interlocks())
        if (lock.device == device && lock.on == on && lock.holds(plant))
            return lock.reason;
    return nullptr;
}

} // namespace plant
