#pragma once

#include "kvscomm.h"
#include "lenzeelement.h"
#include "regime.h"
#include "retelling.h"

#include <QMap>
#include <QWidget>

#include <array>
#include <memory>

class DeviceDlg;
class Lock;
class StateButton;

namespace Ui {
class KVS;
}

// The mnemonic panel of the vacuum plant, 900 by 900 pixels. It owns the links to both vacuum controllers and
// begins to connect to them while it is built, before anyone can listen: onSystemStarted() tells once more
// what was told till then. What a controller reports becomes pictures, numbers, interlocks and journal lines;
// after a loss everything keeps its last look. All slots run in the window's thread.
class KVS : public QWidget
{
    Q_OBJECT

public:
    // What reports a state. NoDevice stands for a place in a table that is free.
    enum Device {
        NoDevice,
        NL1,
        NL2,
        NZ1,
        NZ2,
        ND1,
        NW2,
        VP1,
        VP2,
        VP3,
        VP4,
        VP5,
        VP6,
        VP7,
        VP8,
        NP1,
        NW1,
        Door,
        TMN,
        VPT,
        VE1,
        DeviceCount
    };

    explicit KVS(QWidget* parent = nullptr);
    ~KVS() override; // ends both links and waits for their threads

    // Named readings and named interlocks, owned by the panel. Adding asserts that the key is new, asking
    // that it exists.
    void addElement(const QString& name, LenzeElement::Type type, int dec);
    LenzeElement* element(const QString& name) const;
    void addLock(const QString& key, bool perm, const QString& textLocked, const QString& textFree);
    Lock* lock(const QString& key) const;

    KVSTCPthread* kvs() { return &m_kvs; }
    KVKTCPthread* kvk() { return &m_kvk; }

    // The unit of all six pressures: 0 pascal, 1 millimetres of mercury, anything else is ignored.
    void setPressUnit(int unit);

public slots:
    // Links (kvs.cpp). An attempt that fails and a link that falls are followed by another attempt in a
    // second.
    void connectKVS();
    void disconnectedKVS();
    void connectKVK();
    void disconnectedKVK();
    void messageTCP(const QString& text); // text of a controller, for the journal file
    // Repeats both connection signals with the present states, and the first time all else that was told
    // before it: a box about the user file lets datagrams in while the window is not yet listening.
    void onSystemStarted();

    // Lock words (kvs_model.cpp): the reasons that a controller has for refusing a command, one to a bit.
    // LockOn forbids switching on or opening, LockOff switching off or closing; the door counts as on when
    // it is released.
    void onChangedNL1LockOn(int word) { setLockWord("NL1:LockOn", word); }
    void onChangedNL1LockOff(int word) { setLockWord("NL1:LockOff", word); }
    void onChangedNL2LockOn(int word) { setLockWord("NL2:LockOn", word); }
    void onChangedNL2LockOff(int word) { setLockWord("NL2:LockOff", word); }
    void onChangedNZ1LockOn(int word) { setLockWord("NZ1:LockOn", word); }
    void onChangedNZ1LockOff(int word) { setLockWord("NZ1:LockOff", word); }
    void onChangedNZ2LockOn(int word) { setLockWord("NZ2:LockOn", word); }
    void onChangedNZ2LockOff(int word) { setLockWord("NZ2:LockOff", word); }
    void onChangedND1LockOn(int word) { setLockWord("ND1:LockOn", word); }
    void onChangedND1LockOff(int word) { setLockWord("ND1:LockOff", word); }
    void onChangedVP1LockOn(int word) { setLockWord("VP1:LockOn", word); }
    void onChangedVP2LockOn(int word) { setLockWord("VP2:LockOn", word); }
    void onChangedVP2LockOff(int word) { setLockWord("VP2:LockOff", word); }
    void onChangedVP3LockOn(int word) { setLockWord("VP3:LockOn", word); }
    void onChangedVP4LockOn(int word) { setLockWord("VP4:LockOn", word); }
    void onChangedVP5LockOn(int word) { setLockWord("VP5:LockOn", word); }
    void onChangedVP6LockOn(int word) { setLockWord("VP6:LockOn", word); }
    void onChangedVP7LockOn(int word) { setLockWord("VP7:LockOn", word); }
    void onChangedVP8LockOn(int word) { setLockWord("VP8:LockOn", word); }
    void onChangedDoorLockOn(int word) { setLockWord("DOOR:LockOn", word); }
    void onChangedDoorLockOff(int word) { setLockWord("DOOR:LockOff", word); }
    // These words have no reasons that could be told, so the console never refuses what they forbid: the
    // controller does.
    void onChangedNW2LockOn(int) {}
    void onChangedNW2LockOff(int) {}
    void onChangedVP1LockOff(int) {}
    void onChangedVP3LockOff(int) {}
    void onChangedVP4LockOff(int) {}
    void onChangedVP5LockOff(int) {}
    void onChangedVP6LockOff(int) {}
    void onChangedVP7LockOff(int) {}
    void onChangedVP8LockOff(int) {}
    void changedLocksELA(unsigned int word); // the one word of TMN, VPT and VE1

    // Device states (kvs_panel.cpp): 0 off or closed, 1 on or open, 2 going off or closing, 3 going on or
    // opening, anything else an error. The sprites hear the same signals by themselves.
    void onChangedNL1State(int state) { setPumpState(NL1, state); }
    void onChangedNL2State(int state) { setPumpState(NL2, state); }
    void onChangedNZ1State(int state) { setPumpState(NZ1, state); }
    void onChangedNZ2State(int state) { setPumpState(NZ2, state); }
    void onChangedND1State(int state) { setPumpState(ND1, state); }
    void onChangedNW2State(int state) { setPumpState(NW2, state); }
    void onChangedVP1State(int state) { setValveState(VP1, state); }
    void onChangedVP2State(int state) { setValveState(VP2, state); }
    void onChangedVP3State(int state) { setValveState(VP3, state); }
    void onChangedVP4State(int state) { setValveState(VP4, state); }
    void onChangedVP5State(int state) { setValveState(VP5, state); }
    void onChangedVP6State(int state) { setValveState(VP6, state); }
    void onChangedVP7State(int state) { setValveState(VP7, state); }
    void onChangedVP8State(int state) { setValveState(VP8, state); }
    void onChangedNP1State(int state) { m_states[NP1] = state; }
    void onChangedNW1State(int state) { m_states[NW1] = state; }
    void onChangedDoorState(int state) { m_states[Door] = state; }
    void changedTMN(int state); // these three are silent below 0: no data
    void changedVPT(int state);
    void changedVE1(int state);
    void changedNP1(bool on);
    void changedNW1(bool on);

    // Readings (kvs_panel.cpp): pressures in Pa, flows in l/min, temperatures in °C.
    void onChangedPT1(double pascal) { showPressure(0, float(pascal)); }
    void onChangedPT2(double pascal) { showPressure(1, float(pascal)); }
    void onChangedPT3(double pascal) { showPressure(2, float(pascal)); }
    void onChangedPT4(double pascal) { showPressure(3, float(pascal)); }
    void onChangedPT5(double pascal) { showPressure(4, float(pascal)); }
    void onChangedPT6(float pascal) { showPressure(5, pascal); }
    void onChangedPT1Valid(bool valid) { showValid(0, valid); }
    void onChangedPT2Valid(bool valid) { showValid(1, valid); }
    void onChangedPT3Valid(bool valid) { showValid(2, valid); }
    void onChangedPT4Valid(bool valid) { showValid(3, valid); }
    void onChangedPT5Valid(bool valid) { showValid(4, valid); }
    void onChangedPT6Valid(int valid) { showValid(5, valid != 0); }
    void changePressUnit(); // the other of the two units
    void changedW1(float flow) { showFlow(0, flow); }
    void changedW2(float flow) { showFlow(1, flow); }
    void changedW3(float flow) { showFlow(2, flow); }
    void changedW4(float flow) { showFlow(3, flow); }
    void changedW5(float flow) { showFlow(4, flow); }
    void changedW6(float flow) { showFlow(5, flow); }
    void changedW7(float flow) { showFlow(6, flow); }
    void changedT1(float celsius) { showTemperature(0, celsius); }
    void changedT2(float celsius) { showTemperature(1, celsius); }
    void changedT3(float celsius) { showTemperature(2, celsius); }
    void changedT4(float celsius) { showTemperature(3, celsius); }
    void changedT5(float celsius) { showTemperature(4, celsius); }
    void changedT6(float celsius) { showTemperature(5, celsius); }
    void changedT7(float celsius) { showTemperature(6, celsius); }
    int getTemperatureState(float celsius) const; // picture of a temperature: 0 error, 1 normal, 2 warning
    void onChangedND1Temp(float celsius);         // oil
    void onChangedND1CorpTemp(float celsius);     // case
    void changedTMNFreq(float frequency);

    // Regimes (kvs_regimes.cpp).
    void changedMode(unsigned int value);        // regime number; an unknown one releases all buttons
    void onUserChanged(int rights);              // group id; 2 and above may not enter the setup regime
    void onDoorStateChanged(unsigned int state); // 0 closed, 1 open, other: on the way
    void onDoorPressChanged(int state);          // 0 pressed, 1 released, 2 and 3 on the way, other: error
    void hideDialogs();

signals:
    void onKVSConnected(bool connected);
    void onKVKConnected(bool connected);
    void message(const QString& line, bool isShow); // a journal line
    void turnSystemOff(bool off);                   // the beam unit's affair; nothing here raises it
    void onChangedPressUnit(bool unit);             // true: millimetres of mercury, false: pascal
    void signalChangedSpiralLock(bool locked);
    void signalChangedShutdownLock(bool locked);
    void signalChangedMode(unsigned int mode);
    void signalChangedModeTime(unsigned int seconds);
    void signalChangedModeState(unsigned int state);
    void changedChamberPressure(double pascal);
    void changedChamberPressureValid(bool valid);
    void changedGunPressure(float pascal);
    void changedGunPressureValid(int valid);

private slots:
    // Touched devices and buttons, bound by name (kvs_regimes.cpp).
    void on_NL1_clicked() { showDialog("NL1"); }
    void on_NL2_clicked() { showDialog("NL2"); }
    void on_NZ1_clicked() { showDialog("NZ1"); }
    void on_NZ2_clicked() { showDialog("NZ2"); }
    void on_NW2_clicked() { showDialog("NW2"); }
    void on_ND1_clicked() { showDialog("ND1"); }
    void on_lblND1_clicked() { showDialog("ND1"); }
    void on_VP1_clicked() { showDialog("VP1"); }
    void on_VP2_clicked() { showDialog("VP2"); }
    void on_VP3_clicked() { showDialog("VP3"); }
    void on_VP4_clicked() { showDialog("VP4"); }
    void on_VP5_clicked() { showDialog("VP5"); }
    void on_VP6_clicked() { showDialog("VP6"); }
    void on_VP7_clicked() { showDialog("VP7"); }
    void on_VP8_clicked() { showDialog("VP8"); }
    void on_Door_clicked() { showDialog("DOOR"); }
    void on_TMN_clicked() { showDialog("TMN"); }
    void on_VPT_clicked() { showDialog("VPT"); }
    void on_VE1_clicked() { showDialog("VE1"); }
    void on_sbVacAdjust_clicked();
    void on_sbVacManual_clicked();
    void on_sbVacPrepare_clicked();
    void on_sbVacForepump_clicked();
    void on_sbVacPumping_clicked();
    void on_sbVacFilling_clicked();
    void on_sbVacShutdown_clicked();
    void hideByKeys();

private:
    // Construction, in the order of the calls.
    void initSprites();
    void initElements();
    void initLocks();
    void initStateButtons();
    void initSensors();
    void initDialogs();
    void keepForStart();
    void loadLimits();

    void connectStates();
    void connectLockWords();
    void connectPressures();
    void connectWater();
    void setLockWord(const char* key, int word);
    QList<Lock*> reasons(const QString& key) const; // the cause locks of a word, by rising bit

    void setPumpState(Device pump, int state);
    void setValveState(Device valve, int state);
    void setPumpStateText(int state, const QString& kind, const QString& tag);
    void setValveTextState(int state, const QString& kind, const QString& tag);
    bool lit(Device valve) const { return m_states[valve] != 0; }
    void lightPipes(Device valve);
    void showJacket(bool shown);
    void changedChamberState();
    static void setBackground(QWidget* widget, const QColor& colour);

    void showPressure(int gauge, float pascal);
    void showValid(int gauge, bool valid);
    void showFlow(int circuit, float flow);
    void showTemperature(int circuit, float celsius);

    void initHiding();
    void showDialog(const char* device);
    void startAlgorithm(regime::Number number); // once the operator has said yes
    void enterRegime(regime::Number number);

    std::unique_ptr<Ui::KVS> ui;
    QMap<QString, LenzeElement*> m_Elements;
    QMap<QString, Lock*> m_locks;
    QMap<QString, DeviceDlg*> m_dialogs; // by device, children of the devices' sprites
    bool m_kvsConnected = false;
    bool m_kvkConnected = false;
    int m_pressUnit = 0; // as in setPressUnit
    std::array<int, DeviceCount> m_states{};
    int m_doorX = 42;
    int m_doorY = 215;
    bool m_chamberConnected = false;          // one of the valves at the chamber is open
    float m_tempWarning = 0, m_tempError = 0; // °C
    std::array<float, 7> m_minDischW{};       // l/min by circuit
    Retelling<KVS> m_early{this};
    KVSTCPthread m_kvs;
    KVKTCPthread m_kvk;
};
