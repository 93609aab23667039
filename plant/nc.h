#pragma once

#include <QString>
#include <QStringList>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

namespace plant {

// What the three channels act upon: the axes, the variables and the event list of the controller.
// Implemented by the motion controller and by tests.
class NcHost
{
public:
    virtual ~NcHost() = default;

    // Present position of the axis that a program word names in this channel: mm, deg, or mA for the
    // beam axes IR and IW. Words are taken without regard to case. Empty when the channel has no such axis.
    virtual std::optional<double> position(int channel, const QString& word) const = 0;

    // Why the axis may not move now (drives off, fault, limit ...); empty when it may.
    virtual QString refusal(int channel, const QString& word, double target) const = 0;

    // Commanded position of this step.
    virtual void setPosition(int channel, const QString& word, double value) = 0;

    // A program wrote a controller variable, such as "@1", "@AXISMOVING?" or "@RASTERON%", as text.
    virtual void setVariable(int channel, const QString& name, const QString& value) = 0;

    // A line for the instructor's log: program errors with their line, ends, deadlocks.
    virtual void report(const QString& text) = 0;

    // The coordinate systems that a program switched to, as COORD names them: "1", "2", or "0,2" for none,
    // which is also in force when a program starts and after it has ended in whatever way. Called before any
    // word of a later block is looked up, so a word may mean another axis from here on.
    virtual void coordinateSystems(int /*channel*/, const QString& /*systems*/) {}

    // Rate of rapid positioning in mm, deg or mA per minute; 0 for an axis that is there at once.
    virtual double rapidRate(int /*channel*/, const QString& /*word*/) const { return 0; }

    // Whether the axis counts 0 to 360 and turns without end: an absolute move then goes the shorter way
    // round, and commanded positions are kept in 0 up to 360.
    virtual bool cyclic(int /*channel*/, const QString& word) const
    {
        return word.compare(QLatin1String("V"), Qt::CaseInsensitive) == 0;
    }
};

// Codes of the status datagram.
enum class ChannelState : std::uint32_t { Idle = 1, Running = 3, Error = 6, Reset = 8, Loading = 9 };

// Three NC channels with their common numbered events. Not thread safe; advanced by `step` alone.
//
// Within a step each channel has its own clock: a block may end in the middle of a step, the next one begins
// right there, and a channel that waited for an event goes on at the moment it was set. So programs keep
// exact time and keep in step with one another whatever dt is. The host may call `stopAll` from within its
// own functions.
class NcMachine
{
public:
    explicit NcMachine(NcHost& host);
    ~NcMachine();
    NcMachine(const NcMachine&) = delete;
    NcMachine& operator=(const NcMachine&) = delete;

    // Loads and starts a program in a channel, 1 to 3. A running channel refuses. A program that is
    // malformed puts its channel into the error state and tells the line. True when it runs.
    bool start(int channel, const QString& text);

    // Ends all programs where they stand; events are reset. A channel that is not idle is in state Reset for
    // the step that follows.
    void stopAll();

    // Advances all channels by dt seconds (above 0). A program that was started is being loaded during the
    // first step and runs from the second.
    void step(double dt);

    ChannelState state(int channel) const;
    std::uint32_t mode(int channel) const; // 5 automatic while a program runs, 1 manual otherwise
    bool moving(int channel) const;        // an axis of the channel is being interpolated
    bool event(int number) const;
    int waitingFor(int channel) const;  // event that the channel waits for, 0 when it does not
    QString error(int channel) const;   // text of the last error, with its line; empty when none
    int currentLine(int channel) const; // 1-based line of the statement being executed or at fault, else 0

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace plant
