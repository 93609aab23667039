#pragma once

#include "statuslink.h"

#include <QThread>

#include <atomic>

class DriveTCPthread;
class DriveUDPthread;

// The connection to the motion controller, in two threads: `DriveTCPthread` carries text commands and text
// answers, `DriveUDPthread` turns the status datagram into one typed signal for each field that changed.
// The link interprets nothing.

// The 93 signals of the status datagram, common to both threads. A field that is not a number is raised with
// every datagram.
class DriveStatus : public QThread
{
    Q_OBJECT
public:
    using QThread::QThread;

    static constexpr unsigned int channelRuns = 3; // state of a channel that executes a program

signals:
    // Channels.
    void changedChannelState1(unsigned int state);
    void changedChannelState2(unsigned int state);
    void changedChannelState3(unsigned int state);
    void changedChannelMode1(unsigned int mode);
    void changedChannelMode2(unsigned int mode);
    void changedChannelMode3(unsigned int mode);
    // Positions, mm or deg.
    void changedLX1(float value);
    void changedLX2(float value);
    void changedLY(float value);
    void changedA(float value);
    void changedB(float value);
    void changedC(float value);
    void changedD(float value);
    void changedU1(float value);
    void changedU2(float value);
    void changedV(float value);
    void changedX(float value);
    void changedZ(float value);
    void changedPHI(float value);
    // Lower soft limits; LX1 and LX2 share one, so do U1 and U2.
    void changedMinLimLX(float value);
    void changedMinLimLY(float value);
    void changedMinLimA(float value);
    void changedMinLimB(float value);
    void changedMinLimC(float value);
    void changedMinLimD(float value);
    void changedMinLimU(float value);
    void changedMinLimV(float value);
    void changedMinLimX(float value);
    void changedMinLimZ(float value);
    void changedMinLimPHI(float value);
    // Upper soft limits.
    void changedMaxLimLX(float value);
    void changedMaxLimLY(float value);
    void changedMaxLimA(float value);
    void changedMaxLimB(float value);
    void changedMaxLimC(float value);
    void changedMaxLimD(float value);
    void changedMaxLimU(float value);
    void changedMaxLimV(float value);
    void changedMaxLimX(float value);
    void changedMaxLimZ(float value);
    void changedMaxLimPHI(float value);
    // Diagnostic codes of the drives; one state for the virtual axes together.
    void changedStateLX1(int code);
    void changedStateLX2(int code);
    void changedStateLY(int code);
    void changedStateA(int code);
    void changedStateB(int code);
    void changedStateC(int code);
    void changedStateD(int code);
    void changedStateU1(int code);
    void changedStateU2(int code);
    void changedStateV(int code);
    void changedVirtualState(unsigned int state);
    // Lower limit switches.
    void changedLXmin(bool on);
    void changedLYmin(bool on);
    void changedAmin(bool on);
    void changedBmin(bool on);
    void changedCmin(bool on);
    void changedDmin(bool on);
    void changedUmin(bool on);
    void changedVmin(bool on);
    void changedXmin(bool on);
    void changedZmin(bool on);
    void changedPHImin(bool on);
    // Upper limit switches.
    void changedLXmax(bool on);
    void changedLYmax(bool on);
    void changedAmax(bool on);
    void changedBmax(bool on);
    void changedCmax(bool on);
    void changedDmax(bool on);
    void changedUmax(bool on);
    void changedVmax(bool on);
    void changedXmax(bool on);
    void changedZmax(bool on);
    void changedPHImax(bool on);
    // Machine.
    void changedDoorState(unsigned int state);
    void changedTrModuleState(unsigned int state);
    void changedDrivePowerState(unsigned int state);
    void changedLightState(unsigned int state);
    void changedPointNo(unsigned int number);
    void changedPortPultRegime(unsigned int state);
    void changedAlarmState(unsigned int state);
    // Switches and powers; SpiralPower, DrivesPower: true is the healthy state.
    void changedDrivesOn(bool on);
    void changedTransOn(bool on);
    void changedPultOn(bool on);
    void changedAxisMoving(bool on);
    void changedKeyAccess(bool on);
    void changedDrivesLock(bool on);
    void changedSpiralLock(bool on);
    void changedSpiralPower(bool on);
    void changedDrivesPower(bool on);
    void changedPhaseAlarm(bool on);
    // Messages.
    void changedMessage(unsigned int code);
    void changedCNCError(unsigned int code);
};

struct DriveWire
{
    using Status = DriveStatus;
    using Reader = DriveTCPthread;
    using Receiver = DriveUDPthread;
    static constexpr int packSize = 296; // 294 bytes of fields, rounded up to a multiple of four
    static const wire::Table<DriveStatus> table;
    static const LinkManners manners;
};

// Owns the TCP connection, and the telemetry thread as long as the connection stands. The same object is
// connected again and again; consumers connect to its status signals once. It lives in the window's thread,
// where the status signals arrive.
class DriveTCPthread : public StatusLink<DriveWire, TcpLink>
{
    Q_OBJECT
public:
    explicit DriveTCPthread(QObject* parent = nullptr);
    ~DriveTCPthread() override; // ends an open connection; waits without limit

    // Where each good datagram leaves the positions of the ten drives, LX1 to V, in mm or deg: ten floats
    // that outlive the link, written by the telemetry thread, each as a whole. Before the first connect.
    void setDumpValues(float* values) { m_dumpValues = values; }

    // Channel 1 as last told by telemetry, 0 before the first datagram of a connection. Any thread.
    unsigned int channelState() const { return m_channelState; }

public slots:
    void UDPdisconnected() { telemetryLost(); } // asks the thread to end, from any thread

signals:
    void disconnected();               // the connection is over, both threads' work is done
    void message(const QString& text); // a text frame came: time stamp and text

private:
    friend class DriveUDPthread;

    float* m_dumpValues = nullptr;
    // Kept here for the telemetry thread, which may be ending while the window reads it.
    std::atomic<unsigned int> m_channelState{0};
};

// Receives the status datagram on the port, and forwards all signals to its owner. It starts itself.
class DriveUDPthread final : public StatusReceiver<DriveWire>
{
    Q_OBJECT
public:
    DriveUDPthread(DriveTCPthread* owner, int port);
    ~DriveUDPthread() override;

    unsigned int channelState() const;

signals:
    // Nothing came for a second; raised again every further 100 ms until the thread is ended.
    void UDPdisconnected();

protected:
    void take(const Pack& pack) override;

private:
    void storePositions(const Pack& pack);
};
