#include "plant/messageslots.h"

#include <algorithm>

namespace plant {

namespace {

constexpr double messageTime = 1; // s of real time that a number stands in its slot
constexpr std::size_t maxWaiting = 200;

} // namespace

void MessageSlots::Shown::show(std::uint32_t value)
{
    number = value;
    left = messageTime;
}

void MessageSlots::Shown::pass(double seconds)
{
    left = std::max(0.0, left - seconds);
    if (left <= 0)
        number = 0;
}

bool MessageSlots::raise(std::uint32_t number)
{
    const bool room = m_waiting.size() < maxWaiting;
    if (room)
        m_waiting.push_back(number);
    pass(0);
    return room;
}

void MessageSlots::pass(double realSeconds)
{
    m_error.pass(realSeconds);
    for (Shown& slot : m_slots)
        slot.pass(realSeconds);
    // A number is never taken off early for the next one.
    while (!m_waiting.empty() && m_slots[m_next].number == 0) {
        m_slots[m_next].show(m_waiting.front());
        m_next = (m_next + 1) % m_slots.size();
        m_waiting.pop_front();
    }
}

void MessageSlots::fill(StatusPack& pack) const
{
    for (std::size_t i = 0; i < m_slots.size(); ++i)
        pack.message[i] = m_slots[i].number;
    pack.cncError = m_error.number;
}

} // namespace plant
