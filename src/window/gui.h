#pragma once

#include "consolehost.h"
#include "drivecomm.h"
#include "elashare.h"
#include "lir940p.h"
#include "machinewords.h"
#include "pultshare.h"

#include <QList>
#include <QMap>
#include <QTimer>
#include <QWidget>

#include <array>
#include <memory>

class DumpCreator;
class JogHold;
class Journal;
class PoLabel;
class PoSprite;
class QLabel;
class QPushButton;

namespace Autorization {
class Manager;
}
namespace Ui {
class Gui;
}

// The operator's window, 1920 by 1200, and the one place where the console is wired together: it owns the
// link to the motion controller, the axes, the console's interlocks and the users manager, and it holds the
// contour tab and the vacuum panel. Everything here runs on the window's thread.
//
// Construction brings the whole console up, with the first attempts to reach the controllers; nothing of
// the window shows before the login. The destructor saves the settings and the users.
class Gui : public QWidget, public ConsoleHost
{
    Q_OBJECT

public:
    Gui();
    ~Gui() override;

    // Runs the login dialog. False when it was cancelled. The rights and the name that the screen shows
    // afterwards are what getUserName() tells for the rest of the run.
    bool autorizationAccepted();

    // Stops what a finger holds and writes the settings and the users, as the end does, before one that may
    // come too fast for that.
    void saveWork();

    Axis* axis(const QString& name) const override;
    float coord(const QString& name) const override;
    DriveTCPthread* drives() override { return &m_drives; }
    Lock* lock(const QString& key) const override;
    QString getUserName() const override;
    float pressure() const override;
    QString programName() const override { return m_programName; }
    void setProgramName(const QString& path, bool withoutCurrent) override;

    // Journal line of a numbered event of the motion controller, with what the axes tell at this moment.
    QString CNCMessage(uint number) const;

signals:
    void signalUserChange(int rights); // group id; -1 after a cancelled login
    void signalSecondXPanelShow(bool show);
    void signalSecondUPanelShow(bool show);
    void signalSystemStarted();

public slots:
    // A line of the journal; `isShow` false: the file only.
    void prgMessage(const QString& str, bool isShow);
    void messageToLog(const QString& time, const QString& str);

    // Link to the motion controller (gui.cpp).
    void connectDrives();
    void disconnectedDrives();
    void onTimeChanged();
    void onUserChanged(int state);

    // Connection labels (gui_status.cpp).
    void onChangedCNCConnected(bool connected);
    void onChangedKVSConnected(bool connected);
    void onChangedKVKConnected(bool connected);
    void onChangedELAConnected(bool connected);

    // What the motion controller tells (gui_status.cpp).
    void onChangedChannelState1(uint state);
    void onChangedChannelState2(uint state);
    void onChangedChannelState3(uint state);
    void onChangedChannelMode1(uint mode);
    void onChangedChannelMode2(uint mode);
    void onChangedChannelMode3(uint mode);
    void onChangedStateVirtual(uint value);
    void VirtualAxisStateChanged(uint state); // above 4: lamps stay as they are

    // What it tells in words and numbers (gui_messages.cpp). Called for changes only, but for the first
    // datagram of a connection, which tells everything.
    void onNewCNCMessage(uint number); // 0: no event
    void onNewCNCError(uint number) { m_words->controllerError(number); }
    void onDoorStateChanged(uint state) { m_words->door(state); }
    void onTrModuleStateChanged(uint state) { m_words->transportModule(state); }
    void onDrivePowerStateChanged(uint state) { m_words->breakers(state); }
    void onLightStateChanged(uint state);
    void onAlarmStateChanged(uint state) { m_words->alarms(state); }
    void onSpiralPowerOff(bool on) { m_words->spiralPower(on); } // true: healthy
    void onDrivesPowerOff(bool on) { m_words->drivesPower(on); } // true: healthy
    void onPhaseAlarm(bool on) { m_words->phases(on); }          // true: the phases are wrong

    // Virtual axes: coordinates and soft limits in mm or deg, end switches.
    void onChangedX(float value) { showVirtualCoord(X, value); }
    void onChangedZ(float value) { showVirtualCoord(Z, value); }
    void onChangedPHI(float value) { showVirtualCoord(Phi, value); }
    void onChangedMaxLimitX(float value) { m_virtual[X].maxLimit = value; }
    void onChangedMinLimitX(float value) { m_virtual[X].minLimit = value; }
    void onChangedMaxLimitZ(float value) { m_virtual[Z].maxLimit = value; }
    void onChangedMinLimitZ(float value) { m_virtual[Z].minLimit = value; }
    void onChangedMaxLimitPHI(float value) { m_virtual[Phi].maxLimit = value; }
    void onChangedMinLimitPHI(float value) { m_virtual[Phi].minLimit = value; }
    void onChangedEpX(bool state) { setVirtualEnd(X, true, state); }
    void onChangedEpZ(bool state) { setVirtualEnd(Z, true, state); }
    void onChangedEpPHI(bool state) { setVirtualEnd(Phi, true, state); }
    void onChangedNpX(bool state) { setVirtualEnd(X, false, state); }
    void onChangedNpZ(bool state) { setVirtualEnd(Z, false, state); }
    void onChangedNpPHI(bool state) { setVirtualEnd(Phi, false, state); }

    // What the vacuum panel tells (gui_status.cpp).
    void changedMode(uint value);     // regime number; 0xFFFFFFFF is the abnormal end
    void changedModeTime(uint value); // s
    void changedModeState(uint state);
    void onChangedChamberPressure(double value); // Pa
    void onChangedGunPressure(float value);      // Pa
    void onChangedChamberValid(bool valid);
    void onChangedGunValid(int valid);
    void onChangedPressUnit(bool unit); // true: millimetres of mercury
    void onTurnSystemOff(bool value);

    // Interlocks and modes of the console (gui_interlocks.cpp).
    void changedDrivesLock(bool on);
    void onChangedSpiralLock(bool on);
    void onChangedShutdownLock(bool on);
    void onChangedDrivesState(bool state);
    void onChangedTransOn(bool value); // virtual axes instead of A, B, C
    void showSecondLXAxis(bool state);
    void showSecondUAxis(bool state);
    void onAccessChanged(bool value); // false: the key switch blocks the console
    void onSu(bool su);
    void onSystemShutdown();
    void onEndAsked(); // by a signal of the system

    // Handwheels (gui_handwheels.cpp). `delta` is in detents, `mult` the index of the step, 0 to 3. Each
    // increment is one command: the axis of the controller, the distance, and the axis's maximum speed.
    void onLirChanged(int channel, int delta);
    void lirChangedX(int delta, int mult)
    {
        lirStep(QStringLiteral("LX"), QStringLiteral("LX"), delta, mult);
    }
    void lirChangedY(int delta, int mult)
    {
        lirStep(QStringLiteral("LY"), QStringLiteral("LY"), delta, mult);
    }
    void lirChangedA(int delta, int mult) { lirStep(QStringLiteral("A"), QStringLiteral("A"), delta, mult); }
    void lirChangedB(int delta, int mult) { lirStep(QStringLiteral("B"), QStringLiteral("B"), delta, mult); }
    void lirChangedC(int delta, int mult) { lirStep(QStringLiteral("C"), QStringLiteral("C"), delta, mult); }
    void lirChangedD(int delta, int mult) { lirStep(QStringLiteral("D"), QStringLiteral("D"), delta, mult); }
    // The maximum of the pair stands under "U1", so the speed sent is 0: the controller's programs have never
    // seen another.
    void lirChangedU(int delta, int mult) { lirStep(QStringLiteral("U"), QStringLiteral("U"), delta, mult); }
    void lirChangedV(int delta, int mult) { lirStep(QStringLiteral("V"), QStringLiteral("V"), delta, mult); }
    void lirChangedPult(int delta);

    // Remote panel (gui_handwheels.cpp). While it is on it has the third wheel to itself.
    void onChangedPultState(bool state);
    void onChangedPultRegime(uint regime); // 2: F2, 3: F3, any other: F1

private slots:
    // Buttons of the form, bound by name (gui_commands.cpp).
    void on_sbDrives_clicked();
    void on_sbTrans_clicked();
    void on_pbStop_clicked();
    void on_sbDistPult_clicked();
    void on_sbLightSpiral_clicked();
    void on_pbEndlessV_clicked();
    void on_speedX_clicked() { speedSelector(X); }
    void on_speedZ_clicked() { speedSelector(Z); }
    void on_speedPHI_clicked() { speedSelector(Phi); }
    void on_coordX_clicked() { fixedMove(X); }
    void on_coordZ_clicked() { fixedMove(Z); }
    void on_coordPHI_clicked() { fixedMove(Phi); }
    void on_pbInfoX_clicked() { axisInfo(X); }
    void on_pbInfoZ_clicked() { axisInfo(Z); }
    void on_pbInfoPHI_clicked() { axisInfo(Phi); }
    void on_lblLir1_clicked(); // gui_handwheels.cpp
    void on_lblLir2_clicked();
    void on_lblLir3_clicked();
    void on_pbPoint_clicked();
    void on_pbConstants_clicked();
    void on_pbCalc_clicked();
    void on_pbInformation_clicked();
    void on_pbChangeUser_clicked();
    void on_pbCloseProgram_clicked();
    void on_sbShutdown_clicked();
    void on_actExit_triggered();

protected:
    void showEvent(QShowEvent* event) override;

private:
    enum VirtualIndex { X, Z, Phi };

    // A virtual axis: the controller computes it from several drives, so it is no Axis.
    struct VirtualAxis
    {
        QString name; // as in commands
        QString unit;
        PoLabel* coordLabel;
        PoLabel* speedLabel;
        PoSprite* lamp;
        QPushButton* plus;  // jogs in the negative direction
        QPushButton* minus; // jogs in the positive direction
        QPushButton* info;
        float value = 0;    // mm or deg
        float maxLimit = 0; // soft limits as last told
        float minLimit = 0;
        bool atMax = false; // end switches
        bool atMin = false;
    };

    // Fingers on the jog buttons of the virtual axes (gui_commands.cpp). No slots: bound by name they would
    // follow the button, which a limit switch releases under the finger. Names and directions cross:
    // the controller counts these axes against the arrows on the machine.
    void on_pbMinusX_pressed() { jogForward(X); }
    void on_pbMinusX_released() { endJog(X); }
    void on_pbPlusX_pressed() { jogBack(X); }
    void on_pbPlusX_released() { endJog(X); }
    void on_pbMinusZ_pressed() { jogForward(Z); }
    void on_pbMinusZ_released() { endJog(Z); }
    void on_pbPlusZ_pressed() { jogBack(Z); }
    void on_pbPlusZ_released() { endJog(Z); }
    void on_pbMinusPHI_pressed() { jogForward(Phi); }
    void on_pbMinusPHI_released() { endJog(Phi); }
    void on_pbPlusPHI_pressed() { jogBack(Phi); }
    void on_pbPlusPHI_released() { endJog(Phi); }
    void jogForward(VirtualIndex index);
    void jogBack(VirtualIndex index);
    void startJog(VirtualIndex index, const QString& speed, const QString& direction);
    void endJog(VirtualIndex index);

    // Construction, in the order of the calls.
    void initManager();
    void initSprites();
    void initLocks();
    void initStateButtons();
    void initDrives();
    void loadIni();
    void connectPanels();
    void initMessages();
    void initGeometry();
    void initPresets();
    void startClock();
    void startDump();

    void connectMachine();
    void connectMessages();
    void connectAxes();
    void connectVirtualAxes();
    void connectVirtualJog();

    void send(const QString& command) { m_drives.command(command); } // to the motion controller
    void stopJogs();                                                 // those that a finger still holds
    void saveIni();
    void addLock(const QString& key, bool perm, const QString& textLocked, const QString& textFree);
    void drawChannelState(int channel, PoLabel* label, uint state);
    void drawChannelMode(PoLabel* label, uint mode);
    void updateTrans();
    void showVirtualCoord(VirtualIndex index, float value);
    void setVirtualEnd(VirtualIndex index, bool maximum, bool on);
    void speedSelector(VirtualIndex index);
    void fixedMove(VirtualIndex index);
    void axisInfo(VirtualIndex index);
    void closeWithLine(const QString& line);

    // `name` is the wheel's in the journal, `parameter` its assignment, `use` the label that tells it.
    void lirMenu(const QString& name, QString* parameter, PoLabel* label, QLabel* use);
    void lirMenuEla(const QString& name, QString* parameter, PoLabel* label, QLabel* use);
    void freeWheel(const QString& name, QString* parameter, QLabel* use);
    void giveWheelToEla(const QString& name, QString* parameter, QLabel* use);
    void showWheel(const QString& parameter, QLabel* use); // a wheel without an axis stays as it is
    void lirStep(const QString& axis, const QString& speedKey, int delta, int mult);
    void shareWheels();

    std::unique_ptr<Ui::Gui> ui;
    Autorization::Manager* m_manager = nullptr;
    QString m_programName;
    int m_userGroup = -1;
    std::unique_ptr<Journal> m_journal;
    float m_dumpValues[10] = {}; // positions of the drives, for the flight recorder
    DumpCreator* m_dump = nullptr;
    DriveTCPthread m_drives;
    QList<QString> m_lirAxes; // axes that a handwheel can take
    QMap<QString, Axis*> m_axis;
    QMap<QString, int> m_maxSpeed;   // mm/min or deg/min by axis name
    QMap<QString, PoLabel*> m_coord; // coordinate labels by axis name
    QMap<QString, Lock*> m_locks;
    QString m_userRights, m_userName; // as they stood after the first login
    MachineWords* m_words = nullptr;  // child of the window
    QTimer m_timer;
    Lir940p m_lir;
    QMap<QString, int> m_lirMult;             // handwheel multiplier index by axis, 0 to 3
    QMap<QString, QList<float>> m_presets;    // handwheel steps of beam parameters
    QString m_lirLeft, m_lirRight, m_lirDist; // what each handwheel drives, empty for nothing
    QLabel* m_blockLabel = nullptr;           // the overlay of the key switch, null when there is none
    int m_modeMinutes = 0, m_modeSeconds = 0; // time of the vacuum algorithm
    ElaSharedMemory m_elaShare;
    PultShare m_pultShare;
    bool m_secondLX = false, m_secondU = false; // the second axis of the pair is shown
    bool m_drivesConnected = false;
    uint m_channel1State = 0;
    uint m_virtualState = 0; // of the virtual axes together
    bool m_drivesOn = false;
    bool m_pultOn = false;
    uint m_pultRegime = 0;
    std::array<VirtualAxis, 3> m_virtual; // in the order of VirtualIndex
};
