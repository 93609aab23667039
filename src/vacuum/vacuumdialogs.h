#pragma once

#include <QList>
#include <QMap>
#include <QString>

#include <functional>

class DeviceDlg;
class KVKTCPthread;
class KVSTCPthread;
class LenzeElement;
class Lock;
class QWidget;

// What the dialogs of the vacuum plant need of its panel. Nothing is owned; all of it outlives the dialogs.
struct VacuumPlant
{
    KVSTCPthread* kvs;
    KVKTCPthread* kvk;
    std::function<LenzeElement*(const QString& name)> element; // "NL1:Power"
    std::function<Lock*(const QString& key)> lock;             // summary lock of a word: "NL1:LockOn"
    std::function<QList<Lock*>(const QString& key)> reasons;   // its cause locks, by rising bit
};

// The eighteen dialogs, by device: "NL1" to "VE1", the door is "DOOR". Each is a child of the panel's widget
// that is named like the device ("Door" for the door), hidden, and follows its device's state from here on.
QMap<QString, DeviceDlg*> makeVacuumDialogs(const VacuumPlant& plant, const QWidget* panel);
