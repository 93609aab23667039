#pragma once

#include "plant/axes.h"
#include "plant/drives.h"
#include "plant/nc.h"
#include "plant/statuspack.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <array>
#include <cstdint>
#include <deque>
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

enum class Door : std::uint32_t { Closed = 0, Open = 1, Closing = 2, Opening = 3 };

// Circuit breakers in the control cabinet: bits of the drive power word, then the two on lines of their own.
enum class Breaker { QF31, QF32, QF33, QF34, QF35, QF36, QF37, QF38, QF39, QF40, QF18, QF28, QF23 };

enum class Light { Led, Spots, Spiral }; // bits of the light word

enum class AlarmButton { Console, Pendant, LeftRope, RightRope }; // bits of the alarm word

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
    void stepMessages(double realSeconds);

    StatusPack status() const;

    // The console's connection has gone: what it held by hand stops, programs go on.
    void consoleLost();

    // What happens to the plant from outside. Those that can be refused return the reason, empty when done.
    QString setDoor(bool open); // takes its time
    void putDoor(bool open);    // at once
    QString setVacuum(bool present);
    void setDoorHold(const char* reason) { m_doorHold = reason; } // why the door cannot open; null: it can
    void setKey(bool on);
    void setPhases(bool healthy);
    void setBreaker(Breaker breaker, bool closed);
    void setAlarm(AlarmButton button, bool pressed);
    void setLight(Light light, bool on);
    void setTransportModule(std::uint32_t state) { m_module = state; }
    void setPult(std::uint32_t regime, int selector); // regime 1..3; selector 0..4: X Y Z 4 5
    QString trip(AxisId axis, std::int32_t code);
    QString clear(AxisId axis);
    QString placeAxis(AxisId axis, double value);
    void raiseMessage(std::uint32_t number);
    void raiseError(std::uint32_t number);

    const Axes& axes() const { return m_axes; }
    const NcMachine& nc() const { return m_nc; }
    ChannelState channelState(int channel) const;
    bool drivesOn() const { return m_drives.on(); }
    Door door() const { return m_door; }
    bool drivesLive() const { return m_drives.on() || m_drives.switching(); }
    bool phases() const { return m_phases; }
    bool breakerClosed(Breaker breaker) const
    {
        return m_breakers & (1u << static_cast<std::uint32_t>(breaker));
    }
    bool alarmed(AlarmButton button) const { return m_alarm & (1u << static_cast<std::uint32_t>(button)); }
    bool lit(Light light) const { return m_light & (1u << static_cast<std::uint32_t>(light)); }
    // The cabinet has nothing against the beam: no button or rope pulled, phases and supply in order.
    bool healthy() const { return !m_alarm && m_phases && breakerClosed(Breaker::QF28); }
    bool drivesAllowed() const { return m_vacuum || m_door == Door::Open; }
    // Raster settings as the programs last wrote them, by variable name such as "@RASTERTYPE%".
    QString variable(const QString& name) const { return m_variables.value(name); }
    double beamCurrent() const { return m_beamCurrent; }   // mA
    double focusCurrent() const { return m_focusCurrent; } // mA
    QString summary() const;                               // one line on everything

private:
    struct Shown
    {
        std::uint32_t number = 0;
        double left = 0; // s of real time
        void show(std::uint32_t value);
        void pass(double seconds);
    };
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
    void stepDoor(double dt);
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
    Door m_door = Door::Open;
    double m_doorTime = 0; // s left of its travel
    const char* m_doorHold = nullptr;
    bool m_key = true;
    bool m_vacuum = false;
    bool m_phases = true;
    std::uint32_t m_breakers = (1u << 13) - 1; // bit by Breaker
    std::uint32_t m_alarm = 0;
    std::uint32_t m_light = 0;
    std::uint32_t m_module = 0;
    bool m_pultOn = false;
    std::uint32_t m_pultRegime = 1;
    int m_pultSelector = 0;
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

    std::array<Shown, 4> m_messages;
    std::size_t m_nextSlot = 0;
    std::deque<std::uint32_t> m_waitingMessages;
    Shown m_error;
};

} // namespace plant
