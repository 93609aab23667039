#pragma once

#include "lir940p.h"

#include <QString>

#include <array>
#include <atomic>
#include <optional>

// Three handwheels without a card: counters in the card's place, turned by lines of the trainer's terminal.
// They begin just below their end, so that every run goes over it. Turning may come from any thread.
class WheelCounters : public LirDevice
{
public:
    enum Wheel { Left, Right, Remote };

    // A wheel turns at most so many detents between two readings, as a hand would.
    explicit WheelCounters(int pace = 2)
        : m_pace(pace)
    {}

    void turn(Wheel wheel, int detents); // further than it still has to turn
    void setBad(Wheel wheel, bool bad);  // a bad counter answers with an error status, and counts on

    int readings() const { return m_readings; } // of all counters, since the card was opened

    int open() override
    {
        m_readings = 0;
        return 0;
    }
    void close(int) override {}
    int read(int descriptor, quint32* word) override;

private:
    struct Counter
    {
        std::atomic<int> left{0}; // counts that the wheel still has to turn
        std::atomic<bool> bad{false};
        quint32 value = 0xFFFFF0; // the reader's
    };

    const int m_pace;
    std::atomic<int> m_readings{0};
    std::array<Counter, LirDecoder::channels> m_counters;
};

// Carries out `wheel left|right|remote N|bad|good`, N detents. Returns the answer, nothing for a line that
// is for somebody else.
std::optional<QString> wheelLine(WheelCounters* wheels, const QString& line);
