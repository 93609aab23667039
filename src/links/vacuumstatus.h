#pragma once

#include <QString>
#include <QThread>

// The 107 signals of KVS, common to its two threads. A field that is not a number is raised with every
// datagram.
class KVSStatus : public QThread
{
    Q_OBJECT
public:
    using QThread::QThread;

signals:
    void message(const QString& text); // a text packet came: time stamp and text
    // Pumps: state, power, overheat, the lock words for switching on and off, error.
    void changedNL1State(int state);
    void changedNL1Power(int on);
    void changedNL1Thermal(int hot);
    void changedNL1LockOn(int reasons);
    void changedNL1LockOff(int reasons);
    void changedNL1Error(int code);
    void changedNL2State(int state);
    void changedNL2Power(int on);
    void changedNL2Thermal(int hot);
    void changedNL2LockOn(int reasons);
    void changedNL2LockOff(int reasons);
    void changedNL2Error(int code);
    void changedNZ1State(int state);
    void changedNZ1Power(int on);
    void changedNZ1Thermal(int hot);
    void changedNZ1LockOn(int reasons);
    void changedNZ1LockOff(int reasons);
    void changedNZ1Error(int code);
    void changedNZ2State(int state);
    void changedNZ2Power(int on);
    void changedNZ2Thermal(int hot);
    void changedNZ2LockOn(int reasons);
    void changedNZ2LockOff(int reasons);
    void changedNZ2Error(int code);
    void changedND1State(int state);
    void changedND1Power(int on);
    void changedND1Thermal(int hot);
    void changedND1LockOn(int reasons);
    void changedND1LockOff(int reasons);
    void changedND1Error(int code);
    void changedNW2State(int state);
    void changedNW2Power(int on);
    void changedNW2Thermal(int hot);
    void changedNW2LockOn(int reasons);
    void changedNW2LockOff(int reasons);
    void changedNW2Error(int code);
    // Valves and gates: state, both limits, the lock words for opening and closing.
    void changedVP1State(int state);
    void changedVP1Opened(int on);
    void changedVP1Closed(int on);
    void changedVP1LockOn(int reasons);
    void changedVP1LockOff(int reasons);
    void changedVP2State(int state);
    void changedVP2Opened(int on);
    void changedVP2Closed(int on);
    void changedVP2LockOn(int reasons);
    void changedVP2LockOff(int reasons);
    void changedVP3State(int state);
    void changedVP3Opened(int on);
    void changedVP3Closed(int on);
    void changedVP3LockOn(int reasons);
    void changedVP3LockOff(int reasons);
    void changedVP5State(int state);
    void changedVP5Opened(int on);
    void changedVP5Closed(int on);
    void changedVP5LockOn(int reasons);
    void changedVP5LockOff(int reasons);
    void changedVP6State(int state);
    void changedVP6Opened(int on);
    void changedVP6Closed(int on);
    void changedVP6LockOn(int reasons);
    void changedVP6LockOff(int reasons);
    void changedVP7State(int state);
    void changedVP7Opened(int on);
    void changedVP7Closed(int on);
    void changedVP7LockOn(int reasons);
    void changedVP7LockOff(int reasons);
    // Gauge unit, indicator, spiral, and the algorithm of this controller.
    void changedPTState(int state);
    void changedLEDState(int state);
    void changedSpiralState(int state);
    void changedAlgNumber(int number);
    void changedAlgState(int state);
    void changedAlgTime(int time);
    // Flags.
    void changedPT1Valid(bool valid);
    void changedPT2Valid(bool valid);
    void changedPT3Valid(bool valid);
    void changedPowerPT(bool on);
    void changedPower380V(bool on);
    void changedPower110V(bool on);
    void changedPower24V(bool on);
    void changedPowerDischarge(bool on);
    void changedPowerFan(bool on);
    void changedEmStop(bool pressed);
    void changedRopeAlarm(bool pulled);
    void changedPowerSHUK(bool on);
    void changedPowerKVK(bool on);
    void changedDoorClosed(bool closed);
    // Pressures, Pa.
    void changedPT1(double pascal);
    void changedPT2(double pascal);
    void changedPT3(double pascal);
    // Temperatures of pump ND1, °C: its case and its oil.
    void changedTempCorpND(float celsius);
    void changedTempOilND(float celsius);
    // Cooling water by circuit: temperature, °C, and flow, l/min.
    void changedTemp1(float celsius);
    void changedTemp2(float celsius);
    void changedTemp3(float celsius);
    void changedTemp4(float celsius);
    void changedTemp5(float celsius);
    void changedTemp6(float celsius);
    void changedTemp7(float celsius);
    void changedTemp8(float celsius);
    void changedDisch1(float litres);
    void changedDisch2(float litres);
    void changedDisch3(float litres);
    void changedDisch4(float litres);
    void changedDisch5(float litres);
    void changedDisch6(float litres);
    void changedDisch7(float litres);
    void changedDisch8(float litres);
};

// The 38 signals of KVK, raised as those of KVS.
class KVKStatus : public QThread
{
    Q_OBJECT
public:
    using QThread::QThread;

signals:
    void message(const QString& text); // a text packet came: time stamp and text
    // Bleed valves: state, both limits, the lock words for opening and closing.
    void changedVP4State(int state);
    void changedVP4Opened(int on);
    void changedVP4Closed(int on);
    void changedVP4LockOn(int reasons);
    void changedVP4LockOff(int reasons);
    void changedVP8State(int state);
    void changedVP8Opened(int on);
    void changedVP8Closed(int on);
    void changedVP8LockOn(int reasons);
    void changedVP8LockOff(int reasons);
    // The door's pressing: state, both limits, the lock words for releasing (on) and pressing (off).
    void changedDoorState(int state);
    void changedDoorUnpressed(int on);
    void changedDoorPressed(int on);
    void changedDoorLockOn(int reasons);
    void changedDoorLockOff(int reasons);
    // Pressures, Pa; PT5 is the chamber.
    void changedPT4(double pascal);
    void changedPT5(double pascal);
    // Flags. The locks of drives, spiral and shutdown forbid them to the main window.
    void changedPT4Valid(bool valid);
    void changedPT5Valid(bool valid);
    void changedPressureOK(bool ok);
    void changedNP1Power(bool on);
    void changedNW1Power(bool on);
    void changedDrivesLock(bool locked);
    void changedSpiralLock(bool locked);
    void changedShutdownLock(bool locked);
    // The automatic algorithm; time in seconds.
    void changedAlgRun(unsigned int state);
    void changedAlgNumber(unsigned int number);
    void changedAlgTime(unsigned int seconds);
    // The unit BKU; its validity, not zero for valid, is also that of PT6.
    void changedBKUValid(int valid);
    void changedStateVPT(int state);
    void changedStateVE(int state);
    void changedStateTMN(int state);
    void changedStateACC(unsigned int state);
    void changedStateNET(unsigned int state);
    void changedStateMP(unsigned int state);
    void changedStateLocks(unsigned int reasons);
    void changedPT6(float pascal); // the gun
    void changedTMNFreq(float frequency);
};
