#include "lir940p.h"

#include "site.h"

#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr unsigned long kReadCounter = _IOWR('k', 1, quint32);
static_assert(kReadCounter == 0xC0046B01);

constexpr quint32 kCounterMask = 0xFFFFFF;
constexpr quint32 kBadStatus = 0x4F; // bits of the status byte that spoil a reading
constexpr int kCounterSpan = 1 << 24;
constexpr int kFarthest = 8'000'000;      // counts; a longer way round went over the counter's end
constexpr int kDetent = 4;                // counts
constexpr unsigned long kPeriod = 20'000; // us

class LirCard : public LirDevice
{
public:
    int open() override
    {
        return ::open(site().path(QStringLiteral("/dev/lirpci")).toLocal8Bit().constData(),
                      O_RDONLY | O_CLOEXEC);
    }
    void close(int descriptor) override { ::close(descriptor); }
    int read(int descriptor, quint32* word) override { return ::ioctl(descriptor, kReadCounter, word); }
};

LirDevice* s_source = nullptr;

} // namespace

LirDevice& LirDevice::current()
{
    static LirCard card;
    return s_source ? *s_source : card;
}

void LirDevice::replace(LirDevice* source)
{
    s_source = source;
}

int LirDecoder::take(int channel, quint32 counter)
{
    Channel& c = m_channels[channel];
    // A counter that was silent while the others settled settles now: its first reading is no motion.
    if (m_settling > 0 || !c.known) {
        m_settling -= m_settling > 0;
        c.last = counter;
        c.known = true;
        return 0;
    }
    int change = int(counter) - int(c.last);
    if (change > kFarthest)
        change -= kCounterSpan;
    else if (change < -kFarthest)
        change += kCounterSpan;

    const int sum = change + c.remainder;
    if (std::abs(sum) < kDetent)
        return 0; // less than a detent is seen again, whole, with the next reading
    const int steps = sum / kDetent;
    c.last = counter;
    c.remainder = sum % kDetent;
    c.position += steps;
    return steps;
}

Lir940p::Lir940p(LirDevice& device)
    : m_device(device)
    , m_descriptor(device.open())
{
    if (m_descriptor < 0) {
        std::fputs("open(/dev/lirpci) failed\n", stderr);
        return;
    }
    start(QThread::InheritPriority);
}

Lir940p::~Lir940p()
{
    if (m_descriptor < 0)
        return;
    m_stop = true;
    wait();
    m_device.close(m_descriptor);
}

void Lir940p::run()
{
    while (!m_stop) {
        for (int channel = 0; channel < LirDecoder::channels; ++channel) {
            auto word = quint32(channel + 1);
            if (m_device.read(m_descriptor, &word) < 0 || (word >> 24 & kBadStatus))
                continue;
            if (const int steps = m_decoder.take(channel, word & kCounterMask))
                emit valueChanged(channel, steps);
        }
        usleep(kPeriod);
    }
}
