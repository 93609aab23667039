#include "plant/nc.h"

#include "plant/ncchannel.h"

#include <algorithm>

namespace plant {

namespace {

constexpr int channelCount = 3;

// So long all channels must have stood waiting before it is told, s.
constexpr double standstill = 5;

} // namespace

struct NcMachine::Private
{
    explicit Private(NcHost& nchost)
        : host(nchost)
        , channels{NcChannel(1, nchost, common), NcChannel(2, nchost, common), NcChannel(3, nchost, common)}
    {}

    NcChannel& channel(int number)
    {
        Q_ASSERT(number >= 1 && number <= channelCount);
        return channels[static_cast<std::size_t>(number - 1)];
    }

    NcChannel* nextReady();
    void watchStandstill();

    NcHost& host;
    NcCommon common;
    std::array<NcChannel, channelCount> channels;
    double now = 0; // s
    bool standstillTold = false;
};

// The channel whose clock is furthest behind, so that no event comes too late for another channel.
NcChannel* NcMachine::Private::nextReady()
{
    NcChannel* next = nullptr;
    for (NcChannel& candidate : channels) {
        if (candidate.ready() && (next == nullptr || candidate.clock() < next->clock()))
            next = &candidate;
    }
    return next;
}

void NcMachine::Private::watchStandstill()
{
    QStringList waiting;
    double since = 0;
    bool stands = true;
    for (const NcChannel& one : channels) {
        if (one.state() == ChannelState::Loading || (one.running() && one.waitingFor() == 0))
            stands = false;
        if (!one.running())
            continue;
        waiting.append(
            QStringLiteral("channel %1 waits for event %2").arg(one.number()).arg(one.waitingFor()));
        since = std::max(since, one.waitingSince());
    }
    if (!stands || waiting.isEmpty()) {
        standstillTold = false;
        return;
    }
    if (standstillTold || now - since < standstill)
        return;
    standstillTold = true;
    // Channel 3 alone stands at a stop until the operator goes on with the weld.
    const bool atStop = waiting.size() == 1 && channel(3).running();
    host.report(atStop ? waiting.first() : QStringLiteral("deadlock: ") + waiting.join(QStringLiteral(", ")));
}

NcMachine::NcMachine(NcHost& host)
    : d(std::make_unique<Private>(host))
{}

NcMachine::~NcMachine() = default;

bool NcMachine::start(int channel, const QString& text)
{
    NcChannel& target = d->channel(channel);
    if (target.running() || target.state() == ChannelState::Loading) {
        d->host.report(QStringLiteral("channel %1: start refused, a program is running").arg(channel));
        return false;
    }
    return target.load(text);
}

void NcMachine::stopAll()
{
    for (NcChannel& channel : d->channels)
        channel.stop();
    d->common.resetAll();
}

void NcMachine::step(double dt)
{
    Q_ASSERT(dt > 0);
    d->now += dt;
    for (NcChannel& channel : d->channels)
        channel.beginStep(d->now, dt);
    while (NcChannel* channel = d->nextReady())
        channel->run();
    d->watchStandstill();
}

ChannelState NcMachine::state(int channel) const
{
    return d->channel(channel).state();
}

std::uint32_t NcMachine::mode(int channel) const
{
    const ChannelState now = state(channel);
    return now == ChannelState::Running || now == ChannelState::Loading ? 5 : 1;
}

bool NcMachine::moving(int channel) const
{
    return d->channel(channel).moving();
}

bool NcMachine::event(int number) const
{
    return d->common.isSet(number);
}

int NcMachine::waitingFor(int channel) const
{
    return d->channel(channel).waitingFor();
}

QString NcMachine::error(int channel) const
{
    return d->channel(channel).error();
}

int NcMachine::currentLine(int channel) const
{
    return d->channel(channel).line();
}

} // namespace plant
