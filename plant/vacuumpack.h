#pragma once

#include <cstddef>
#include <cstdint>

namespace plant {

// What both vacuum controllers send: little-endian, no gaps but the named ones. A state is 0 off or closed,
// 1 on or open, 2 and 3 on the way there, 4 error, -1 no data. A lock word is 0 when the command is allowed.
constexpr std::uint16_t vacuumSignature = 0x5650;       // of datagrams and texts
constexpr std::uint16_t kvsConstantsSignature = 0x5652; // of the answer to "CONST"
constexpr std::uint16_t kvkConstantsSignature = 0x5651;

#pragma pack(push, 1)
struct PumpBlock
{
    std::int32_t state;
    std::int32_t power;   // 1: energised
    std::int32_t thermal; // 1: overheated
    std::int32_t lockOn;
    std::int32_t lockOff;
    std::int32_t error; // 1: stopped by a fault
};

struct ValveBlock
{
    std::int32_t state;
    std::int32_t opened; // limit switches, 0 or 1
    std::int32_t closed;
    std::int32_t lockOn; // for opening
    std::int32_t lockOff;
};

struct KvsPack
{
    std::uint16_t signature;
    std::uint8_t unused2[2];
    PumpBlock pump[6];   // NL1 NL2 NZ1 NZ2 ND1 NW2
    ValveBlock valve[6]; // VP1 VP2 VP3 VP5 VP6 VP7
    std::int32_t gaugeUnit;
    std::int32_t indicator;
    std::int32_t spiral;
    std::int32_t algNumber;
    std::int32_t algState;
    std::int32_t algTime; // s
    std::uint8_t gaugeValid[3];
    std::uint8_t gaugePower;
    std::uint8_t power380V;
    std::uint8_t power110V;
    std::uint8_t power24V;
    std::uint8_t flowSensorPower;
    std::uint8_t fanPower;
    std::uint8_t emergencyStop;
    std::uint8_t ropeAlarm;
    std::uint8_t cabinetPower;
    std::uint8_t kvkPower;
    std::uint8_t doorClosed;
    std::uint8_t padding306[2];
    double gauge[3];       // PT1 PT2 PT3, Pa
    float caseTemperature; // ND1, deg C
    float oilTemperature;  // ND1
    float waterTemperature[8];
    float waterFlow[8]; // l/min
};

struct KvkPack
{
    std::uint16_t signature;
    std::uint8_t unused2[2];
    ValveBlock valve[2]; // VP4 VP8
    ValveBlock door;     // 0 pressed, 1 released; "opened" is the released end, lockOn for releasing
    double gauge[2];     // PT4 PT5, Pa
    std::uint8_t gaugeValid[2];
    std::uint8_t airPressureOk;
    std::uint8_t np1Power;
    std::uint8_t nw1Power;
    std::uint8_t drivesLock;
    std::uint8_t spiralLock;
    std::uint8_t shutdownLock; // 1: the vacuum system is not stopped
    std::uint32_t algNumber;
    std::uint32_t algTime; // s
    std::uint32_t algState;
    std::uint8_t unused100[4];
    std::int32_t bkuValid;
    std::int32_t vpt;
    std::int32_t ve1;
    std::int32_t tmn;
    std::uint32_t net;
    std::uint32_t acc;
    std::uint32_t mp;
    std::uint32_t locks;  // of VPT, VE1, TMN
    float gunPressure;    // PT6, Pa
    float turboFrequency; // Hz
};

// One record of a constants packet.
struct ConstantRecord
{
    std::int32_t id;
    float value;
    char text[84]; // CP1251, with a NUL at the end
};
#pragma pack(pop)

static_assert(sizeof(PumpBlock) == 24);
static_assert(offsetof(PumpBlock, power) == 4);
static_assert(offsetof(PumpBlock, thermal) == 8);
static_assert(offsetof(PumpBlock, lockOn) == 12);
static_assert(offsetof(PumpBlock, lockOff) == 16);
static_assert(offsetof(PumpBlock, error) == 20);
static_assert(sizeof(ValveBlock) == 20);
static_assert(offsetof(ValveBlock, opened) == 4);
static_assert(offsetof(ValveBlock, closed) == 8);
static_assert(offsetof(ValveBlock, lockOn) == 12);
static_assert(offsetof(ValveBlock, lockOff) == 16);

static_assert(sizeof(KvsPack) == 404);
static_assert(offsetof(KvsPack, pump) == 4);
static_assert(offsetof(KvsPack, valve) == 148);
static_assert(offsetof(KvsPack, gaugeUnit) == 268);
static_assert(offsetof(KvsPack, indicator) == 272);
static_assert(offsetof(KvsPack, spiral) == 276);
static_assert(offsetof(KvsPack, algNumber) == 280);
static_assert(offsetof(KvsPack, algState) == 284);
static_assert(offsetof(KvsPack, algTime) == 288);
static_assert(offsetof(KvsPack, gaugeValid) == 292);
static_assert(offsetof(KvsPack, gaugePower) == 295);
static_assert(offsetof(KvsPack, power380V) == 296);
static_assert(offsetof(KvsPack, power110V) == 297);
static_assert(offsetof(KvsPack, power24V) == 298);
static_assert(offsetof(KvsPack, flowSensorPower) == 299);
static_assert(offsetof(KvsPack, fanPower) == 300);
static_assert(offsetof(KvsPack, emergencyStop) == 301);
static_assert(offsetof(KvsPack, ropeAlarm) == 302);
static_assert(offsetof(KvsPack, cabinetPower) == 303);
static_assert(offsetof(KvsPack, kvkPower) == 304);
static_assert(offsetof(KvsPack, doorClosed) == 305);
static_assert(offsetof(KvsPack, gauge) == 308);
static_assert(offsetof(KvsPack, caseTemperature) == 332);
static_assert(offsetof(KvsPack, oilTemperature) == 336);
static_assert(offsetof(KvsPack, waterTemperature) == 340);
static_assert(offsetof(KvsPack, waterFlow) == 372);

static_assert(sizeof(KvkPack) == 144);
static_assert(offsetof(KvkPack, valve) == 4);
static_assert(offsetof(KvkPack, door) == 44);
static_assert(offsetof(KvkPack, gauge) == 64);
static_assert(offsetof(KvkPack, gaugeValid) == 80);
static_assert(offsetof(KvkPack, airPressureOk) == 82);
static_assert(offsetof(KvkPack, np1Power) == 83);
static_assert(offsetof(KvkPack, nw1Power) == 84);
static_assert(offsetof(KvkPack, drivesLock) == 85);
static_assert(offsetof(KvkPack, spiralLock) == 86);
static_assert(offsetof(KvkPack, shutdownLock) == 87);
static_assert(offsetof(KvkPack, algNumber) == 88);
static_assert(offsetof(KvkPack, algTime) == 92);
static_assert(offsetof(KvkPack, algState) == 96);
static_assert(offsetof(KvkPack, bkuValid) == 104);
static_assert(offsetof(KvkPack, vpt) == 108);
static_assert(offsetof(KvkPack, ve1) == 112);
static_assert(offsetof(KvkPack, tmn) == 116);
static_assert(offsetof(KvkPack, net) == 120);
static_assert(offsetof(KvkPack, acc) == 124);
static_assert(offsetof(KvkPack, mp) == 128);
static_assert(offsetof(KvkPack, locks) == 132);
static_assert(offsetof(KvkPack, gunPressure) == 136);
static_assert(offsetof(KvkPack, turboFrequency) == 140);

static_assert(sizeof(ConstantRecord) == 92);
static_assert(offsetof(ConstantRecord, value) == 4);
static_assert(offsetof(ConstantRecord, text) == 8);

} // namespace plant
