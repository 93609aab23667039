#pragma once

#include "consolehost.h"
#include "drivecomm.h"
#include "elashare.h"
#include "handwheels.h"
#include "lir940p.h"
#include "machinewords.h"
#include "pultshare.h"
#include "remotepanel.h"
#include "virtualaxis.h"

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
    void onChangedX(float value) { m_virtual[X]->setCoord(value); }
    void onChangedZ(float value) { m_virtual[Z]->setCoord(value); }
    void onChangedPHI(float value) { m_virtual[Phi]->setCoord(value); }
    void onChangedMaxLimitX(float value) { m_virtual[X]->setMaxLimit(value); }
    void onChangedMinLimitX(float value) { m_virtual[X]->setMinLimit(value); }
    void onChangedMaxLimitZ(float value) { m_virtual[Z]->setMaxLimit(value); }
    void onChangedMinLimitZ(float value) { m_virtual[Z]->setMinLimit(value); }
    void onChangedMaxLimitPHI(float value) { m_virtual[Phi]->setMaxLimit(value); }
    void onChangedMinLimitPHI(float value) { m_virtual[Phi]->setMinLimit(value); }
    void onChangedEpX(bool state) { m_virtual[X]->setMaxSwitch(state); }
    void onChangedEpZ(bool state) { m_virtual[Z]->setMaxSwitch(state); }
    void onChangedEpPHI(bool state) { m_virtual[Phi]->setMaxSwitch(state); }
    void onChangedNpX(bool state) { m_virtual[X]->setMinSwitch(state); }
    void onChangedNpZ(bool state) { m_virtual[Z]->setMinSwitch(state); }
    void onChangedNpPHI(bool state) { m_virtual[Phi]->setMinSwitch(state); }

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

    // Handwheels. `delta` is in detents, `mult` the index of the step, 0 to 3.
    void onLirChanged(int channel, int delta);
    void lirChangedX(int delta, int mult) { m_wheels->step(QStringLiteral("LX"), delta, mult); }
    void lirChangedY(int delta, int mult) { m_wheels->step(QStringLiteral("LY"), delta, mult); }
    void lirChangedA(int delta, int mult) { m_wheels->step(QStringLiteral("A"), delta, mult); }
    void lirChangedB(int delta, int mult) { m_wheels->step(QStringLiteral("B"), delta, mult); }
    void lirChangedC(int delta, int mult) { m_wheels->step(QStringLiteral("C"), delta, mult); }
    void lirChangedD(int delta, int mult) { m_wheels->step(QStringLiteral("D"), delta, mult); }
    void lirChangedU(int delta, int mult) { m_wheels->step(QStringLiteral("U"), delta, mult); }
    void lirChangedV(int delta, int mult) { m_wheels->step(QStringLiteral("V"), delta, mult); }
    void lirChangedPult(int delta) { m_wheels->turnPanel(delta); }

    // Remote panel.
    void onChangedPultState(bool state) { m_pult->setOn(state); }
    void onChangedPultRegime(uint regime) { m_pult->setRegime(regime); }

private slots:
    // Buttons of the form, bound by name (gui_commands.cpp).
    void on_sbDrives_clicked();
    void on_sbTrans_clicked();
    void on_pbStop_clicked();
    void on_sbDistPult_clicked() { m_pult->press(); }
    void on_sbLightSpiral_clicked();
    void on_pbEndlessV_clicked();
    void on_speedX_clicked() { m_virtual[X]->chooseSpeed(); }
    void on_speedZ_clicked() { m_virtual[Z]->chooseSpeed(); }
    void on_speedPHI_clicked() { m_virtual[Phi]->chooseSpeed(); }
    void on_coordX_clicked() { m_virtual[X]->moveFixed(readyToMove()); }
    void on_coordZ_clicked() { m_virtual[Z]->moveFixed(readyToMove()); }
    void on_coordPHI_clicked() { m_virtual[Phi]->moveFixed(readyToMove()); }
    void on_pbInfoX_clicked() { m_virtual[X]->showInfo(); }
    void on_pbInfoZ_clicked() { m_virtual[Z]->showInfo(); }
    void on_pbInfoPHI_clicked() { m_virtual[Phi]->showInfo(); }
    void on_lblLir1_clicked() { m_wheels->openMenu(Handwheels::Left); }
    void on_lblLir2_clicked() { m_wheels->openMenu(Handwheels::Right); }
    void on_lblLir3_clicked() { m_wheels->openMenu(Handwheels::Remote); }
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

    // Fingers on the jog buttons of the virtual axes (gui_commands.cpp). No slots: bound by name they would
    // follow the button, which a limit switch releases under the finger. Names and directions cross:
    // the controller counts these axes against the arrows on the machine.
    void on_pbMinusX_pressed() { m_virtual[X]->jogForward(); }
    void on_pbMinusX_released() { m_virtual[X]->endJog(); }
    void on_pbPlusX_pressed() { m_virtual[X]->jogBack(); }
    void on_pbPlusX_released() { m_virtual[X]->endJog(); }
    void on_pbMinusZ_pressed() { m_virtual[Z]->jogForward(); }
    void on_pbMinusZ_released() { m_virtual[Z]->endJog(); }
    void on_pbPlusZ_pressed() { m_virtual[Z]->jogBack(); }
    void on_pbPlusZ_released() { m_virtual[Z]->endJog(); }
    void on_pbMinusPHI_pressed() { m_virtual[Phi]->jogForward(); }
    void on_pbMinusPHI_released() { m_virtual[Phi]->endJog(); }
    void on_pbPlusPHI_pressed() { m_virtual[Phi]->jogBack(); }
    void on_pbPlusPHI_released() { m_virtual[Phi]->endJog(); }

    // Construction, in the order of the calls.
    void initManager();
    void initVirtualAxes();
    void initLocks();
    void initStateButtons();
    void initDrives();
    void loadIni();
    void connectPanels();
    void initMessages();
    void initWheels();
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
    bool readyToMove() const;
    void closeWithLine(const QString& line);

    std::unique_ptr<Ui::Gui> ui;
    Autorization::Manager* m_manager = nullptr;
    QString m_programName;
    int m_userGroup = -1;
    std::unique_ptr<Journal> m_journal;
    float m_dumpValues[10] = {}; // positions of the drives, for the flight recorder
    DumpCreator* m_dump = nullptr;
    DriveTCPthread m_drives;
    QMap<QString, Axis*> m_axis;
    QMap<QString, PoLabel*> m_coord; // coordinate labels by axis name
    QMap<QString, Lock*> m_locks;
    QString m_userRights, m_userName; // as they stood after the first login
    MachineWords* m_words = nullptr;  // child of the window
    QTimer m_timer;
    Lir940p m_lir;
    Handwheels* m_wheels = nullptr;           // child of the window
    RemotePanel* m_pult = nullptr;            // child of the window
    QLabel* m_blockLabel = nullptr;           // the overlay of the key switch, null when there is none
    int m_modeMinutes = 0, m_modeSeconds = 0; // time of the vacuum algorithm
    ElaSharedMemory m_elaShare;
    PultShare m_pultShare;
    bool m_drivesConnected = false;
    uint m_channel1State = 0;
    bool m_drivesOn = false;
    std::array<VirtualAxis*, 3> m_virtual{}; // in the order of VirtualIndex, children of the window
};
