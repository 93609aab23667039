#pragma once

#include <QFrame>

// The mnemonic panel of the vacuum plant, 900 by 900 pixels, and the owner of the links to both vacuum
// controllers. So far the empty panel: without those links both controllers count as not connected and no
// signal but onKVSConnected(false), onKVKConnected(false) is raised.
class KVS : public QFrame
{
    Q_OBJECT

public:
    explicit KVS(QWidget* parent = nullptr);

public slots:
    void onSystemStarted();                      // repeats both connection signals with the present states
    void onUserChanged(int rights);              // group id, 0 and 1 may enter the setup regime
    void onDoorStateChanged(unsigned int state); // 0 closed, 1 open, other: on the way

signals:
    void onKVSConnected(bool connected);
    void onKVKConnected(bool connected);
    void message(const QString& line, bool isShow); // a journal line
    void turnSystemOff(bool off);
    void onChangedPressUnit(bool unit); // true: millimetres of mercury, false: pascal
    void signalChangedSpiralLock(bool locked);
    void signalChangedShutdownLock(bool locked);
    void signalChangedMode(unsigned int mode);
    void signalChangedModeTime(unsigned int seconds);
    void signalChangedModeState(unsigned int state);
    void changedChamberPressure(double pascal);
    void changedChamberPressureValid(bool valid);
    void changedGunPressure(float pascal);
    void changedGunPressureValid(int valid);
};
