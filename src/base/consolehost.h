#pragma once

#include <QString>

class Axis;
class DriveTCPthread;
class Lock;
class QWidget;

// What panels and dialogs may ask of the window that holds them. `Gui` is the one implementation of the
// console; a test may bring its own. All calls belong to the window's thread.
class ConsoleHost
{
public:
    virtual ~ConsoleHost() = default;

    virtual Axis* axis(const QString& name) const = 0;  // asserts on an unknown name
    virtual float coord(const QString& name) const = 0; // mm or deg; 0.0 for an unknown name
    virtual DriveTCPthread* drives() = 0;               // the link to the motion controller
    virtual Lock* lock(const QString& key) const = 0;   // asserts on an unknown key
    virtual QString getUserName() const = 0;            // rights and name of the first login
    virtual float pressure() const = 0;                 // chamber pressure, Pa
    virtual QString programName() const = 0;            // short name of the loaded program
    virtual void setProgramName(const QString& path, bool withoutCurrent) = 0;

    // The host above `widget`: the nearest ancestor that is one, null when there is none. Works while the
    // window is still being set up.
    static ConsoleHost* of(const QWidget* widget);
};
