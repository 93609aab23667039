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
};

// Codes of the status datagram.
enum class ChannelState : std::uint32_t { Idle = 1, Running = 3, Error = 6, Reset = 8, Loading = 9 };

// Three NC channels with their common numbered events. Not thread safe; advanced by `step` alone.
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

    // Ends all three programs where they stand; events are reset.
    void stopAll();

    // Advances all channels by dt seconds.
    void step(double dt);

    ChannelState state(int channel) const;
    std::uint32_t mode(int channel) const; // 5 automatic while a program runs, 1 manual otherwise
    bool moving(int channel) const;        // an axis of the channel is being interpolated
    bool event(int number) const;
    QString error(int channel) const;   // text of the last error, with its line; empty when none
    int currentLine(int channel) const; // 1-based line of the statement being executed, 0 when idle

private:
    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace plant
