#pragma once

#include "consolehost.h"
#include "drivecomm.h"
#include "elashare.h"
#include "handwheels.h"
#include "interlocks.h"
#include "keyswitch.h"
#include "lir940p.h"
#include "machinewords.h"
#include "pultshare.h"
#include "remotepanel.h"
#include "virtualaxis.h"

#include <QMap>
#include <QWidget>

#include <memory>

class DumpCreator;
class Journal;
class PoLabel;

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

    // Runs the login dialog; false when it was cancelled. getUserName() tells of it for the rest of the run.
    bool autorizationAccepted();

    // Stops what a finger holds and saves all work, as the end does, before one that may come too fast.
    void saveWork();

    Axis* axis(const QString& name) const override;
    float coord(const QString& name) const override;
    DriveTCPthread* drives() override { return &m_drives; }
    Lock* lock(const QString& key) const override { return m_interlocks->lock(key); }
    QString getUserName() const override { return m_userName; }
    float pressure() const override;
    QString programName() const override { return m_programName; }
    void setProgramName(const QString& path, bool withoutCurrent) override;
    QString CNCMessage(uint number) const; // journal line of an event, with what the axes tell just now

signals:
    void signalUserChange(int rights); // group id; -1 after a cancelled login
    void signalSecondXPanelShow(bool show);
    void signalSecondUPanelShow(bool show);
    void signalSystemStarted();

public slots:
    // A line of the journal; `isShow` false: the file only.
    void prgMessage(const QString& str, bool isShow);
    void messageToLog(const QString& time, const QString& str);
    void connectDrives(); // tries again each second until the motion controller is there
    void disconnectedDrives();
    void onTimeChanged(); // each second
    void onUserChanged(int state);

    // What the top bar tells: links, channels, virtual axes' lamps (gui_status.cpp).
    void onChangedCNCConnected(bool connected);
    void onChangedKVSConnected(bool connected);
    void onChangedKVKConnected(bool connected);
    void onChangedELAConnected(bool connected);
    void onChangedChannelState1(uint state);
    void onChangedChannelState2(uint state);
    void onChangedChannelState3(uint state);
    void onChangedChannelMode1(uint mode);
    void onChangedChannelMode2(uint mode);
    void onChangedChannelMode3(uint mode);
    void onChangedStateVirtual(uint value);
    void VirtualAxisStateChanged(uint state); // above 4: lamps stay as they are

    // What the motion controller tells in words (gui_messages.cpp). For changes only.
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
    void onChangedX(float value) { m_x->setCoord(value); }
    void onChangedZ(float value) { m_z->setCoord(value); }
    void onChangedPHI(float value) { m_phi->setCoord(value); }
    void onChangedMaxLimitX(float value) { m_x->setMaxLimit(value); }
    void onChangedMinLimitX(float value) { m_x->setMinLimit(value); }
    void onChangedMaxLimitZ(float value) { m_z->setMaxLimit(value); }
    void onChangedMinLimitZ(float value) { m_z->setMinLimit(value); }
    void onChangedMaxLimitPHI(float value) { m_phi->setMaxLimit(value); }
    void onChangedMinLimitPHI(float value) { m_phi->setMinLimit(value); }
    void onChangedEpX(bool state) { m_x->setMaxSwitch(state); }
    void onChangedEpZ(bool state) { m_z->setMaxSwitch(state); }
    void onChangedEpPHI(bool state) { m_phi->setMaxSwitch(state); }
    void onChangedNpX(bool state) { m_x->setMinSwitch(state); }
    void onChangedNpZ(bool state) { m_z->setMinSwitch(state); }
    void onChangedNpPHI(bool state) { m_phi->setMinSwitch(state); }

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

    // Interlocks and modes of the console (gui_modes.cpp).
    void changedDrivesLock(bool on) { m_interlocks->set(Interlocks::Drives, on); }
    void onChangedSpiralLock(bool on) { m_interlocks->set(Interlocks::Spiral, on); }
    void onChangedShutdownLock(bool on) { m_interlocks->set(Interlocks::Shutdown, on); }
    void onChangedDrivesState(bool state) { m_interlocks->setDrivesOn(state); }
    void onChangedTransOn(bool value); // virtual axes instead of A, B, C
    void showSecondLXAxis(bool state);
    void showSecondUAxis(bool state);
    void onAccessChanged(bool value) { m_keySwitch.setAccess(value); } // false: blocks the console
    void onSu(bool su);
    void onSystemShutdown();
    void onEndAsked(); // by a signal of the system

    // Handwheels and remote panel. `delta` is in detents, `mult` the index of the step, 0 to 3.
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
    void on_speedX_clicked() { m_x->chooseSpeed(); }
    void on_speedZ_clicked() { m_z->chooseSpeed(); }
    void on_speedPHI_clicked() { m_phi->chooseSpeed(); }
    void on_coordX_clicked() { m_x->moveFixed(m_interlocks->readyToMove()); }
    void on_coordZ_clicked() { m_z->moveFixed(m_interlocks->readyToMove()); }
    void on_coordPHI_clicked() { m_phi->moveFixed(m_interlocks->readyToMove()); }
    void on_pbInfoX_clicked() { m_x->showInfo(); }
    void on_pbInfoZ_clicked() { m_z->showInfo(); }
    void on_pbInfoPHI_clicked() { m_phi->showInfo(); }
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

private:
    // Construction, in the order of the calls.
    void initVirtualAxes();
    void initWheels();
    void initDrives();
    void loadIni();
    void initMessages();

    void send(const QString& command) { m_drives.command(command); } // to the motion controller
    void stopJogs();                                                 // those that a finger still holds
    void saveIni();

    std::unique_ptr<Ui::Gui> ui;
    std::unique_ptr<Journal> m_journal;
    Autorization::Manager* m_manager = nullptr;
    QString m_programName;
    QString m_userName = QStringLiteral(" "); // rights and name, as they stood after the first login
    float m_dumpValues[10] = {};              // positions of the drives, for the flight recorder
    DumpCreator* m_dump = nullptr;
    DriveTCPthread m_drives;
    QMap<QString, Axis*> m_axis;
    QMap<QString, PoLabel*> m_coord;                              // coordinate labels by axis name
    VirtualAxis *m_x = nullptr, *m_z = nullptr, *m_phi = nullptr; // children, like those below
    Handwheels* m_wheels = nullptr;
    RemotePanel* m_pult = nullptr;
    MachineWords* m_words = nullptr;
    Lir940p m_lir;
    uint m_modeTime = 0; // of the vacuum algorithm, s
    ElaSharedMemory m_elaShare;
    PultShare m_pultShare;
    KeySwitch m_keySwitch{this};
    std::unique_ptr<Interlocks> m_interlocks;
};
