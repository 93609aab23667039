#pragma once

#include "plant/nc.h"
#include "plant/ncgeometry.h"
#include "plant/ncparser.h"

#include <QHash>
#include <QSet>

namespace plant {

class NcChannel;

// What the channels have in common: the numbered events and who holds the beam axes. Times are seconds on
// the clock of the machine.
class NcCommon
{
public:
    bool isSet(int event) const { return m_set.contains(event); }

    // Sets the event and lets every channel go on that waits for it. When one of them takes the event with
    // it, the event is reset again.
    void set(int event, double time);
    void reset(int event) { m_set.remove(event); }
    void resetAll() { m_set.clear(); }

    void wait(NcChannel* channel, int event, bool take);
    void forget(NcChannel* channel) { m_waiting.remove(channel); }

    // The channel that holds the axis, 0 when it is free.
    int owner(const QString& axis) const { return m_owner.value(axis); }
    void take(const QString& axis, int channel) { m_owner.insert(axis, channel); }
    void release(const QString& axis) { m_owner.remove(axis); }
    void releaseAll(int channel);

private:
    struct Waiting
    {
        int event;
        bool take;
    };

    QSet<int> m_set;
    QHash<NcChannel*, Waiting> m_waiting;
    QHash<QString, int> m_owner;
};

// One channel: its program, the block in work and its own clock, which runs ahead of the other channels by
// no more than the step.
class NcChannel
{
public:
    NcChannel(int number, NcHost& host, NcCommon& common);

    bool load(const QString& text);
    void stop();

    // Begins a step that ends at `end` and is `dt` long.
    void beginStep(double end, double dt);

    // Whether there is something to do before the step ends.
    bool ready() const;

    // The next piece of the program: the block in work up to the end of the step, or one new block.
    void run();

    // The event that the channel waited for was set.
    void goOn(double time);

    bool running() const { return m_state == ChannelState::Running; }
    ChannelState state() const { return m_state; }
    double clock() const { return m_clock; }
    bool moving() const { return m_moved; }
    int waitingFor() const { return m_waitingFor; }
    double waitingSince() const { return m_clock; }
    int line() const { return m_line; }
    const QString& error() const { return m_error; }
    int number() const { return m_number; }

private:
    struct AxisMove
    {
        QString word;
        double start;
        double delta;
        double target;
        bool cyclic;
        int arcCoordinate; // 0 or 1: follows the arc; -1: goes linearly
    };

    // A motion or a dwell (no axes).
    struct Work
    {
        bool active = false;
        QVector<AxisMove> axes;
        NcArc arc;
        double since = 0;    // s
        double duration = 0; // s
    };

    using Kind = NcStatement::Kind;

    bool checkAxes();
    void execute(const NcStatement& statement);
    void executeEvent(const NcStatement& statement);
    void executeBeamAxis(const NcStatement& statement);
    void resetEvents();
    void startMotion(const NcStatement& statement);
    bool prepareAxis(const NcWord& word);
    bool prepareArc(const NcStatement& statement);
    void completePlane(const QStringList& plane);
    bool pathLength(const NcStatement& statement, double* length);
    bool mayStart();
    double rapidTime() const;
    void work();
    double positionAt(const AxisMove& axis, double part) const;
    void begin(double duration);
    void leave(ChannelState state);
    void fail(int line, const QString& text);

    const int m_number;
    NcHost& m_host;
    NcCommon& m_common;

    ChannelState m_state = ChannelState::Idle;
    QVector<NcStatement> m_program;
    int m_next = 0; // index of the statement to execute next
    int m_line = 0;
    QString m_error;

    double m_clock = 0;
    double m_stepEnd = 0;
    double m_stepLength = 0;
    double m_eventsSeenAt = 0; // until then a reset of all events waits
    int m_statements = 0;      // executed in this step
    int m_waitingFor = 0;
    bool m_moved = false;

    bool m_relative = false;
    int m_plane = -1;      // 0 XY, 1 XZ, 2 YZ, -1 none
    double m_ratioOfV = 0; // mm of circumference per degree of F, 0 when cleared
    Work m_work;
};

} // namespace plant
