#pragma once

#include "plant/statuspack.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>

namespace plant {

// The four message numbers and the error number of the datagram. A number stands for a second of real time,
// however fast the machine's own runs; what comes thicker than the slots waits its turn.
class MessageSlots
{
public:
    bool raise(std::uint32_t number); // false: too many wait, this one is lost
    void raiseError(std::uint32_t number) { m_error.show(number); }
    void pass(double realSeconds);
    void fill(StatusPack& pack) const;

private:
    struct Shown
    {
        std::uint32_t number = 0;
        double left = 0; // s of real time
        void show(std::uint32_t value);
        void pass(double seconds);
    };

    std::array<Shown, 4> m_slots;
    std::size_t m_next = 0;
    std::deque<std::uint32_t> m_waiting;
    Shown m_error;
};

} // namespace plant
