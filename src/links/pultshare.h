#pragma once

#include "sharedsegment.h"

// The segment through which the program of the remote panel learns which handwheels belong to the beam unit
// and whether the console is blocked: four words of 32 bits in host order, each read and written under the
// segment's lock. The console writes all of them each second. Any thread may call, and none waits for a panel
// that does not give the lock back: a word is written once it does, and read as 0 meanwhile. Where there is
// no segment, words are written nowhere and read as 0.
class PultShare
{
public:
    PultShare(); // joins or creates the segment and clears it
    PultShare(const PultShare&) = delete;
    PultShare& operator=(const PultShare&) = delete;

    // 1: the wheel is given to the beam unit.
    void setFuncLeftEncoder(unsigned int given) { setWord(LeftEncoder, given); }
    unsigned int getFuncLeftEncoder() { return word(LeftEncoder); }
    void setFuncRightEncoder(unsigned int given) { setWord(RightEncoder, given); }
    unsigned int getFuncRightEncoder() { return word(RightEncoder); }
    void setFuncDistEncoder(unsigned int given) { setWord(DistEncoder, given); }
    unsigned int getFuncDistEncoder() { return word(DistEncoder); }

    // The key switch blocks the console.
    void setBlockGui(bool blocked) { setWord(BlockGui, blocked); }
    bool getBlockGui() { return word(BlockGui) != 0; }

private:
    enum Word { LeftEncoder, RightEncoder, DistEncoder, BlockGui }; // in the order of the segment
    static constexpr int wordCount = 4;

    void setWord(Word index, quint32 value) { m_segment.write(index, value); }
    quint32 word(Word index);

    SharedSegment m_segment;
};
