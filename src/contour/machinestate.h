#pragma once

#include "drivecomm.h"

#include <array>

// What the motion controller said last, as far as the weld's panel goes by it.
struct MachineState
{
    std::array<unsigned int, 3> channels{}; // states of the channels 1 to 3
    bool drivesOn = false;
    bool virtualMode = false;     // the axes are those of the part
    bool axisMoving = false;      // along the seam, as the running program says
    bool startUnanswered = false; // no channel has told of another state since the last start

    bool runs(int channel) const { return channels[std::size_t(channel) - 1] == DriveStatus::channelRuns; }
    bool canTeach() const { return drivesOn && virtualMode && !runs(1); }
    void channelTold(int channel, unsigned int state)
    {
        channels[std::size_t(channel) - 1] = state;
        startUnanswered = false;
    }
};
