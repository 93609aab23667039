#pragma once

#include <cstddef>
#include <cstdint>

namespace plant {

// First two bytes of every datagram and of every text frame of the motion controller.
constexpr std::uint16_t frameSignature = 0x5650;

// The status datagram of the motion controller as it lies on the wire: little-endian, no gaps but the
// named ones. Order of `position`: LX1 LX2 LY A B C D U1 U2 V X Z PHI; of `driveState` its first ten;
// of limits and flags: LX LY A B C D U V X Z PHI. Flags are one byte, 0 or 1.
#pragma pack(push, 1)
struct StatusPack
{
    std::uint16_t signature;
    std::uint8_t unused2[2];
    std::uint32_t channelState[3];
    std::uint32_t channelMode[3];
    float position[13]; // mm, deg
    std::int32_t driveState[10];
    std::uint32_t virtualState;
    float minLimit[11];
    float maxLimit[11];
    std::uint32_t message[4];
    std::uint32_t pointNo;
    std::uint32_t cncError;
    std::uint32_t doorState;
    std::uint32_t trModuleState;
    std::uint32_t drivePower; // bit set: the breaker is closed
    std::uint32_t light;
    std::uint32_t pultRegime;
    std::uint32_t alarm;
    std::uint8_t minFlag[11];
    std::uint8_t maxFlag[11];
    std::uint8_t drivesOn;
    std::uint8_t transOn;
    std::uint8_t axisMoving;
    std::uint8_t pultOn;
    std::uint8_t keyAccess;
    std::uint8_t drivesLock;
    std::uint8_t spiralLock;
    std::uint8_t unused289[2];
    std::uint8_t spiralPower; // 1: healthy
    std::uint8_t drivesPower; // 1: healthy
    std::uint8_t phaseAlarm;
    std::uint8_t padding[2];
};
#pragma pack(pop)

static_assert(sizeof(StatusPack) == 296);
static_assert(offsetof(StatusPack, signature) == 0);
static_assert(offsetof(StatusPack, channelState) == 4);
static_assert(offsetof(StatusPack, channelMode) == 16);
static_assert(offsetof(StatusPack, position) == 28);
static_assert(offsetof(StatusPack, driveState) == 80);
static_assert(offsetof(StatusPack, virtualState) == 120);
static_assert(offsetof(StatusPack, minLimit) == 124);
static_assert(offsetof(StatusPack, maxLimit) == 168);
static_assert(offsetof(StatusPack, message) == 212);
static_assert(offsetof(StatusPack, pointNo) == 228);
static_assert(offsetof(StatusPack, cncError) == 232);
static_assert(offsetof(StatusPack, doorState) == 236);
static_assert(offsetof(StatusPack, trModuleState) == 240);
static_assert(offsetof(StatusPack, drivePower) == 244);
static_assert(offsetof(StatusPack, light) == 248);
static_assert(offsetof(StatusPack, pultRegime) == 252);
static_assert(offsetof(StatusPack, alarm) == 256);
static_assert(offsetof(StatusPack, minFlag) == 260);
static_assert(offsetof(StatusPack, maxFlag) == 271);
static_assert(offsetof(StatusPack, drivesOn) == 282);
static_assert(offsetof(StatusPack, transOn) == 283);
static_assert(offsetof(StatusPack, axisMoving) == 284);
static_assert(offsetof(StatusPack, pultOn) == 285);
static_assert(offsetof(StatusPack, keyAccess) == 286);
static_assert(offsetof(StatusPack, drivesLock) == 287);
static_assert(offsetof(StatusPack, spiralLock) == 288);
static_assert(offsetof(StatusPack, spiralPower) == 291);
static_assert(offsetof(StatusPack, drivesPower) == 292);
static_assert(offsetof(StatusPack, phaseAlarm) == 293);

// Head of a text frame on the TCP side, in both directions; `length` bytes of UTF-8 follow.
#pragma pack(push, 1)
struct FrameHead
{
    std::uint16_t signature;
    std::uint16_t length;
};
#pragma pack(pop)

static_assert(sizeof(FrameHead) == 4);
static_assert(offsetof(FrameHead, length) == 2);

} // namespace plant
