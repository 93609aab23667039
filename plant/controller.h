#pragma once

#include "plant/axes.h"
#include "plant/cabinet.h"
#include "plant/drives.h"
#include "plant/messageslots.h"
#include "plant/nc.h"
#include "plant/statuspack.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace plant {

// Numbers of the events that the controller tells on its own account. The families by axis add the axis's
// place in the order LX, LY, A, B, C, D, U, V (from 1), or X, Z, PHI (from 0).
namespace event {
constexpr std::uint32_t noVacuum = 101;
constexpr std::uint32_t vacuumCommand = 102;
constexpr std::uint32_t emergency = 103;
constexpr std::uint32_t doorCloses = 104;
constexpr std::uint32_t programWithoutDrives = 111;
constexpr std::uint32_t overload = 120;
} // namespace event

// Controller errors, numbers of this simulation.
namespace cncerror {
constexpr std::uint32_t noProgramFile = 2001;  // cannot be read
constexpr std::uint32_t programStopped = 2002; // a channel went into its error state
} // namespace cncerror

// The motion controller CML75 with the drives, the interlocks of the cabinet and three NC channels. Not
// thread safe. Time passes in `step` alone.
class MotionController final : private NcHost
{
public:
    // `root` stands in front of the program paths that arrive in commands. `seed` sets what varies by chance.
    explicit MotionController(const QString& root = {}, std::uint32_t seed = 1);

    // Receives what the instructor should read: refusals, program errors, changes of the plant.
    void setLog(std::function<void(const QString&)> log) { m_log = std::move(log); }

    // One command of the console. Empty when it was carried out, otherwise why not; a refused command
    // changes nothing and is told to the log.
    QString command(const QString& text);

    // Advances by dt seconds (10 ms are meant).
    void step(double dt);
    // Message numbers stand in the datagram for a second of real time, however fast the plant runs.
    void stepMessages(double realSeconds) { m_messages.pass(realSeconds); }

    StatusPack status() const;

    // The console's connection has gone: what it held by hand stops, programs go on.
    void consoleLost();

    // What happens to the plant from outside. Those that can be refused return the reason, empty when done.
    QString setDoor(bool open);                          // takes its time
    void putDoor(bool open) { m_cabinet.putDoor(open); } // at once
    QString setVacuum(bool present);
    // Why the door cannot open; null: it can.
    void setDoorHold(const char* reason) { m_cabinet.doorHold = reason; }
    void setKey(bool on) { m_cabinet.key = on; }
    void setPhases(bool healthy);
    void setBreaker(Breaker breaker, bool closed);
    void setAlarm(AlarmButton button, bool pressed);
    void setLight(Light light, bool on) { m_cabinet.light.set(light, on); }
    void setTransportModule(std::uint32_t state) { m_cabinet.module = state; }
    void setPult(std::uint32_t regime, int selector); // regime 1..3; selector 0..4: X Y Z 4 5
    QString trip(AxisId axis, std::int32_t code);
    QString clear(AxisId axis);
    QString placeAxis(AxisId axis, double value);
    void raiseMessage(std::uint32_t number);
    void raiseError(std::uint32_t number) { m_messages.raiseError(number); }

    const Axes& axes() const { return m_axes; }
    const NcMachine& nc() const { return m_nc; }
    ChannelState channelState(int channel) const;
    bool drivesOn() const { return m_drives.on(); }
    const Cabinet& cabinet() const { return m_cabinet; }
    bool drivesLive() const { return m_drives.on() || m_drives.switching(); }
    // Raster settings as the programs last wrote them, by variable name such as "@RASTERTYPE%".
    QString variable(const QString& name) const { return m_variables.value(name); }
    double beamCurrent() const { return m_beamCurrent; }   // mA
    double focusCurrent() const { return m_focusCurrent; } // mA
    double time() const { return m_time; }                 // s of the machine since it began
    // The drive's fault or warning, 0 for none; an axis that has a drive.
    std::int32_t trouble(AxisId axis) const { return m_drives.trouble(axis); }
    QString summary() const; // one line on everything

private:
    struct Start
    {
        QString path;
        QString text;
    };
    using Arguments = QStringList;
    using Handler = QString (MotionController::*)(const Arguments&);
    struct Entry
    {
        const char* name;
        int arguments;
        Handler handler;
    };

    // Commands of the console.
    static const std::vector<Entry>& vocabulary();
    QString execute(const QString& text);
    QString move(const Arguments& a);
    QString park(const Arguments& a);
    QString depark(const Arguments& a);
    QString clearError(const Arguments& a);
    QString limitMax(const Arguments& a);
    QString limitMin(const Arguments& a);
    QString reference(const Arguments& a);
    QString lir(const Arguments& a);
    QString handwheel(const Arguments& a);
    QString exec1(const Arguments& a) { return exec(1, a.first()); }
    QString exec2(const Arguments& a) { return exec(2, a.first()); }
    QString exec3(const Arguments& a) { return exec(3, a.first()); }
    QString stopEverything(const Arguments&);
    QString driveOn(const Arguments&);
    QString driveOff(const Arguments&);
    QString transOn(const Arguments&);
    QString transOff(const Arguments&);
    QString pultOnCommand(const Arguments&);
    QString pultOff(const Arguments&);
    QString spiralOn(const Arguments&);
    QString spiralOff(const Arguments&);
    QString buzzer(const Arguments&);

    QString exec(int channel, const QString& path);
    QString setLimit(const Arguments& a, bool max);
    QString setParked(const Arguments& a, bool on);
    QString increment(AxisId axis, double distance, double speed);
    QString switchTransformed(bool on);
    QString ownDrive(const QString& name, std::optional<AxisId>* axis) const; // no follower, no virtual axis
    QString movable(AxisId axis) const; // why the axis may not move by hand
    QString powered(AxisId axis) const; // why its drives do not turn
    QString switchOnRefusal() const;    // why the drives may not go on
    bool breakersClosed(AxisId axis) const;
    std::uint32_t virtualState() const;
    void cutDrives(const QString& why); // at once, with programs and motion
    void stopPrograms();
    void tellLimit(const LimitHit& hit);
    bool busy(int channel) const;     // runs a program or is about to
    bool standing(int channel) const; // none of the channel's axes is moved by hand
    void startPending();
    void watchChannels();

    // NcHost
    std::optional<double> position(int channel, const QString& word) const override;
    QString refusal(int channel, const QString& word, double target) const override;
    void setPosition(int channel, const QString& word, double value) override;
    void setVariable(int channel, const QString& name, const QString& value) override;
    void report(const QString& text) override { log(text); }
    void coordinateSystems(int channel, const QString& systems) override;
    double rapidRate(int channel, const QString& word) const override;
    std::optional<AxisId> axisOfWord(int channel, const QString& word) const;
    const double* beamAxis(int channel, const QString& word) const;
    bool claimedByOther(int channel, AxisId axis) const;

    void log(const QString& text) const;

    QString m_root;
    std::function<void(const QString&)> m_log;
    Axes m_axes;
    Drives m_drives;
    NcMachine m_nc;

    double m_time = 0; // s of the machine since it began
    Cabinet m_cabinet;
    MessageSlots m_messages;
    std::optional<bool> m_transPending; // waits for the axes to stand

    std::array<std::optional<Start>, 3> m_pending; // programs that wait for their axes to stand
    std::array<bool, 3> m_inSpace{};               // the channel's program speaks of the seam in space
    std::array<ChannelState, 3> m_lastState{};
    std::array<int, axisCount> m_owner{};           // channel that moved the axis last, 0 none
    std::optional<LimitHit> m_overtravel;           // a program left the limits in this step
    mutable std::optional<LimitHit> m_refusedLimit; // noted where a program asks, told after the step

    QHash<QString, QString> m_variables;
    std::uint32_t m_pointNo = 0;
    bool m_axisMoving = false;
    double m_beamCurrent = 0;
    double m_focusCurrent = 0;
};

} // namespace plant
