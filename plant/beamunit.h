#pragma once

#include <QSharedMemory>
#include <QString>

#include <cstddef>
#include <cstdint>

namespace plant {

class MotionController;

// The block that the beam unit publishes, in host byte order. Only the named fields are read by others.
#pragma pack(push, 1)
struct BeamBlock
{
    std::uint64_t heartbeat;
    std::uint8_t own1[44];
    float gunPressure; // Pa
    std::uint8_t own2[72];
    float focusActual; // mA
    float focusSet;    // mA
    std::uint8_t own3[8];
    float deflectionX; // mA
    std::uint8_t own4[4];
    float deflectionY; // mA
    std::uint8_t own5[56];
    float acceleratingVoltage; // kV
    float lockingVoltage;      // kV
    float bombardmentVoltage;  // kV
    float bombardmentCurrent;  // mA
    std::uint8_t own6[8];
    float beamActual; // mA
    std::uint8_t own7[28];
    float beamSet; // mA
    std::uint8_t own8[48];
    std::int32_t rasterOn;
    std::uint8_t own9[40];
    std::int32_t rasterType;
    float rasterAmpX;  // %
    float rasterAmpY;  // %
    float rasterParam; // by raster type
    std::int32_t rasterRotation;
    float rasterAngle;  // deg
    float rasterShiftX; // %
    float rasterShiftY; // %
    float rasterFreq;   // Hz
    std::uint8_t own10[112];
};
#pragma pack(pop)

static_assert(sizeof(BeamBlock) == 512);
static_assert(offsetof(BeamBlock, heartbeat) == 0);
static_assert(offsetof(BeamBlock, gunPressure) == 52);
static_assert(offsetof(BeamBlock, focusActual) == 128);
static_assert(offsetof(BeamBlock, focusSet) == 132);
static_assert(offsetof(BeamBlock, deflectionX) == 144);
static_assert(offsetof(BeamBlock, deflectionY) == 152);
static_assert(offsetof(BeamBlock, acceleratingVoltage) == 212);
static_assert(offsetof(BeamBlock, lockingVoltage) == 216);
static_assert(offsetof(BeamBlock, bombardmentVoltage) == 220);
static_assert(offsetof(BeamBlock, bombardmentCurrent) == 224);
static_assert(offsetof(BeamBlock, beamActual) == 236);
static_assert(offsetof(BeamBlock, beamSet) == 268);
static_assert(offsetof(BeamBlock, rasterOn) == 320);
static_assert(offsetof(BeamBlock, rasterType) == 364);
static_assert(offsetof(BeamBlock, rasterAmpX) == 368);
static_assert(offsetof(BeamBlock, rasterAmpY) == 372);
static_assert(offsetof(BeamBlock, rasterParam) == 376);
static_assert(offsetof(BeamBlock, rasterRotation) == 380);
static_assert(offsetof(BeamBlock, rasterAngle) == 384);
static_assert(offsetof(BeamBlock, rasterShiftX) == 388);
static_assert(offsetof(BeamBlock, rasterShiftY) == 392);
static_assert(offsetof(BeamBlock, rasterFreq) == 396);

// The beam unit: makes the current that channel 3 asks for, with the raster that programs have set, while
// there is vacuum in the gun, and publishes its state ten times a second of real time in the segment
// "ELA_SHM_KEY" and a suffix.
class BeamUnit
{
public:
    // The controller outlives the unit. A segment that cannot be had leaves the unit without a voice.
    BeamUnit(const MotionController& controller, const QString& suffix);

    void step(double realSeconds);
    bool running() const { return m_running; }
    void setRunning(bool on) { m_running = on; } // false: the program hangs, its block stands still
    void setGunPressure(double pascal) { m_gunPressure = static_cast<float>(pascal); } // first: air
    bool speaks() const { return m_shared.data() != nullptr; }

private:
    void publish();
    float raster(const char* variable) const;

    const MotionController& m_controller;
    QSharedMemory m_shared;
    BeamBlock m_block{};
    double m_waited = 0;        // s since the last write
    float m_gunPressure = 1e5F; // Pa
    bool m_running = true;
};

} // namespace plant
