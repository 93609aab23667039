#pragma once

#include <QThread>

#include <array>
#include <atomic>

// The card with the handwheels' counters, as far as the operating system shows it. The process has one: the
// character device of the card's driver, unless the trainer or a test has put a source of its own there.
class LirDevice
{
public:
    virtual ~LirDevice() = default;

    virtual int open() = 0; // a descriptor, -1 on failure
    virtual void close(int descriptor) = 0;

    // On entry `word` holds the channel, 1 to 3; on return the counter in the low 24 bits and the status in
    // the high byte. Negative on failure. Called on the reader's thread.
    virtual int read(int descriptor, quint32* word) = 0;

    static LirDevice& current();

    // Takes the card's place for readers that are built from now on; null gives it back. The source stays
    // its owner's and outlives those readers.
    static void replace(LirDevice* source);
};

// Turns counter readings into detents of the handwheels. Four counts make one detent; what is left over is
// kept for the next one.
class LirDecoder
{
public:
    static constexpr int channels = 3;

    // One good reading of a channel, 0 to 2: the detents since the last result that was not 0, signed.
    // The first readings after the start only tell where the counters stand.
    int take(int channel, quint32 counter);

    qint64 position(int channel) const { return m_channels[channel].position; } // detents since the start

private:
    struct Channel
    {
        quint32 last = 0;   // the reading that the next change is counted from
        bool known = false; // `last` has been read
        int remainder = 0;  // counts, -3 to 3
        qint64 position = 0;
    };

    std::array<Channel, channels> m_channels;
    int m_settling = 8; // readings that are still left to the counters to settle
};

// The handwheel reader: a thread that polls the three counters of the LIR-940P card each 20 ms, from
// construction to destruction. Without a card it says so on standard error and never raises anything.
class Lir940p : public QThread
{
    Q_OBJECT

public:
    explicit Lir940p(LirDevice& device = LirDevice::current());
    ~Lir940p() override; // waits for the thread, a round at most

signals:
    // Detents that wheel 0, 1 or 2 has turned since the last signal, signed. Raised on the reader's thread.
    void valueChanged(int channel, int delta);

protected:
    void run() override;

private:
    LirDevice& m_device;
    int m_descriptor = -1; // -1: closed
    std::atomic<bool> m_stop{false};
    LirDecoder m_decoder; // the thread's alone
};
