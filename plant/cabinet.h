#pragma once

#include "plant/statuspack.h"

#include <cstdint>
#include <utility>

namespace plant {

enum class Door : std::uint32_t { Closed = 0, Open = 1, Closing = 2, Opening = 3 };

// Circuit breakers in the control cabinet: bits of the drive power word, then the two on lines of their own.
enum class Breaker { QF31, QF32, QF33, QF34, QF35, QF36, QF37, QF38, QF39, QF40, QF18, QF28, QF23 };

// As the instructor calls them.
constexpr std::pair<const char*, Breaker> breakerNames[] = {
    {"qf31", Breaker::QF31}, {"qf32", Breaker::QF32}, {"qf33", Breaker::QF33}, {"qf34", Breaker::QF34},
    {"qf35", Breaker::QF35}, {"qf36", Breaker::QF36}, {"qf37", Breaker::QF37}, {"qf38", Breaker::QF38},
    {"qf39", Breaker::QF39}, {"qf40", Breaker::QF40}, {"qf18", Breaker::QF18}, {"qf28", Breaker::QF28},
    {"qf23", Breaker::QF23}};

enum class Light { Led, Spots, Spiral }; // bits of the light word

enum class AlarmButton { Console, Pendant, LeftRope, RightRope }; // bits of the alarm word

// A word whose bits are told by an enumeration.
template <class Bit>
class BitWord
{
public:
    explicit constexpr BitWord(std::uint32_t word = 0)
        : m_word(word)
    {}

    static constexpr std::uint32_t mask(Bit bit) { return 1u << static_cast<std::uint32_t>(bit); }
    constexpr bool has(Bit bit) const { return m_word & mask(bit); }
    constexpr void set(Bit bit, bool on) { m_word = on ? m_word | mask(bit) : m_word & ~mask(bit); }
    constexpr std::uint32_t word() const { return m_word; }

private:
    std::uint32_t m_word;
};

// What the control cabinet knows of the chamber, of its own supply and of the buttons around the machine. A
// value: it tells what stands and decides nothing for the drives.
struct Cabinet
{
    Door door = Door::Open;
    double doorTime = 0;            // s left of its travel
    const char* doorHold = nullptr; // why the door cannot open; null: it can
    bool key = true;
    bool vacuum = false;
    bool phases = true;
    BitWord<Breaker> breakers{(1u << 13) - 1}; // set: closed
    BitWord<AlarmButton> alarm;
    BitWord<Light> light;
    std::uint32_t module = 0; // state of the transport module
    bool pultOn = false;
    std::uint32_t pultRegime = 1; // 1..3
    int pultSelector = 0;         // 0..4: X Y Z 4 5

    // Nothing against the beam: no button or rope pulled, phases and supply in order.
    bool healthy() const { return !alarm.word() && phases && breakers.has(Breaker::QF28); }
    bool drivesAllowed() const { return vacuum || door == Door::Open; }
    bool doorStandsOrGoes(bool open) const;
    void startDoor(bool open); // takes its time
    void putDoor(bool open);   // at once
    void step(double dt);      // s

    // Writes the cabinet's words into the datagram.
    void fill(StatusPack& pack) const;
};

} // namespace plant
