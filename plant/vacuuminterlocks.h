#pragma once

#include "plant/vacuumdevices.h"

#include <cstdint>
#include <vector>

namespace plant {

class VacuumPlant;

// One reason to refuse a command. Pumps, valves and the door have a word of their own for each direction;
// VPT, VE1 and TMN share one word for both.
struct Interlock
{
    Device device;
    bool on; // forbids to switch on, open, release; otherwise the opposite
    int bit;
    bool (*holds)(const VacuumPlant& plant);
    const char* reason;
};

const std::vector<Interlock>& interlocks();

std::uint32_t lockWord(const VacuumPlant& plant, Device device, bool on); // of this direction alone
std::uint32_t bkuLockWord(const VacuumPlant& plant);                      // of VPT, VE1 and TMN together
// Why the command is refused, the first reason; null when it is allowed.
const char* refusalOf(const VacuumPlant& plant, Device device, bool on);

} // namespace plant
