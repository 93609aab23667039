#pragma once

#include "sharedsegment.h"

#include <array>

// Where the beam unit's values stand in its block, in bytes. Currents in mA unless said otherwise.
namespace ela {
enum Real { // 32-bit floats
    GunPressure = 52,
    FocusCurrent = 128,
    FocusCurrentSet = 132,
    DeflectionX = 144,
    DeflectionY = 152,
    AcceleratingVoltage = 212,
    LockingVoltage = 216,
    BombardmentVoltage = 220,
    BombardmentCurrent = 224,
    BeamCurrent = 236,
    BeamCurrentSet = 268,
    RasterAmpX = 368, // %
    RasterAmpY = 372,
    RasterParam = 376,
    RasterAngle = 384,  // deg
    RasterShiftX = 388, // %
    RasterShiftY = 392,
    RasterFreq = 396, // Hz
};
enum Integer { // 32 bits
    RasterOn = 320,
    RasterType = 364,
    RasterRotation = 380,
};
} // namespace ela

// The block that the beam unit's own program publishes on this computer: 512 bytes of shared memory in host
// byte order, whose first 64-bit word the writer keeps changing. Key "ELA_SHM_KEY" and the site's suffix.
// The cross-process lock of the segment guards each copy; nobody here waits for a unit that does not give it
// back.
class ElaSharedMemory
{
public:
    // Attaches to the segment or makes it, and zeroes it: a beam unit that already runs restores it with its
    // next write. Without the segment, told in the debug output, the unit counts as silent for good.
    ElaSharedMemory();
    ElaSharedMemory(const ElaSharedMemory&) = delete;
    ElaSharedMemory& operator=(const ElaSharedMemory&) = delete;

    // Takes the block over into `m_copy`. The unit counts as alive when the first word has changed since the
    // call before, so it has to change once per period of the caller. While the unit holds the block locked
    // the last copy stays; from the second such call on the unit counts as silent.
    void updateStatusEla();
    bool status() const { return m_status; }

    // Values of the last copy.
    float value(ela::Real offset) const;
    qint32 value(ela::Integer offset) const;

private:
    using Block = std::array<quint64, 64>;

    SharedSegment m_segment;

public:
    Block m_copy{}; // the last block read

private:
    bool m_status = false;
    bool m_missed = false; // the last call got no block
};
