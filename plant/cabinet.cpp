#include "plant/cabinet.h"

namespace plant {

namespace {

constexpr double doorTravel = 3; // s

} // namespace

bool Cabinet::doorStandsOrGoes(bool open) const
{
    return open ? door == Door::Open || door == Door::Opening : door == Door::Closed || door == Door::Closing;
}

void Cabinet::startDoor(bool open)
{
    door = open ? Door::Opening : Door::Closing;
    doorTime = doorTravel;
}

void Cabinet::putDoor(bool open)
{
    door = open ? Door::Open : Door::Closed;
    doorTime = 0;
}

void Cabinet::step(double dt)
{
    if (doorTime <= 0)
        return;
    doorTime -= dt;
    if (doorTime <= 0)
        door = door == Door::Opening ? Door::Open : Door::Closed;
}

void Cabinet::fill(StatusPack& pack) const
{
    pack.doorState = static_cast<std::uint32_t>(door);
    pack.trModuleState = module;
    pack.drivePower = breakers.word() & (BitWord<Breaker>::mask(Breaker::QF28) - 1);
    pack.light = light.word();
    pack.pultRegime = pultRegime;
    pack.alarm = alarm.word();
    pack.pultOn = pultOn;
    pack.keyAccess = key;
    pack.drivesLock = !drivesAllowed();
    pack.spiralLock = !vacuum;
    pack.spiralPower = breakers.has(Breaker::QF23);
    pack.drivesPower = breakers.has(Breaker::QF28);
    pack.phaseAlarm = !phases;
}

} // namespace plant
