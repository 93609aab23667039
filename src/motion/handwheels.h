#pragma once

#include <QMap>
#include <QObject>

#include <array>
#include <functional>

class PoLabel;
class QLabel;
class QSettings;

// What the handwheels turn. The left and the right one take an axis, in one of four steps, or are given to
// the beam unit, which reads such a wheel by itself; the remote one is given to the beam unit or to nobody.
// Each has a menu for fingers. Every run begins with all wheels free. A step belongs to its axis: two wheels
// on one axis turn it with the same. Window's thread.
class Handwheels : public QObject
{
    Q_OBJECT

public:
    enum Wheel { Left, Right, Remote };

    struct Labels
    {
        PoLabel* menu; // touched for the menu
        QLabel* use;   // tells what the wheel turns
    };

    // The labels, by wheel, are the window's. `maxSpeed`: of an axis of the window, units a minute; 0 for an
    // unknown name.
    Handwheels(const std::array<Labels, 3>& labels, std::function<int(const QString&)> maxSpeed,
               QObject* parent);

    static QStringList axes(); // that a wheel can take, as commands name them

    // Detents that a wheel has turned. Each telling is one command, none for a wheel without an axis.
    void turn(Wheel wheel, int detents);
    void step(const QString& axis, int detents, int multiplier); // `multiplier`: index of the step, 0 to 3
    void turnPanel(int detents);                                 // the remote wheel in the panel's hands

    void openMenu(Wheel wheel); // at the finger; blocks until the operator answers
    void takeRemote();          // for the panel: the wheel becomes free, its open menu closes
    bool isElas(Wheel wheel) const;

    // The steps of the axes.
    void load(const QSettings& settings);
    void save(QSettings& settings) const;

signals:
    void message(const QString& line, bool shown); // journal line; shown in the list too
    void command(const QString& text);             // for the motion controller

private:
    struct State
    {
        Labels labels;
        QString turns; // an axis or the beam unit; empty for nothing
    };

    void free(Wheel wheel);
    void giveToEla(Wheel wheel);
    void showAxes();

    std::array<State, 3> m_wheels;
    const std::function<int(const QString&)> m_maxSpeed;
    QMap<QString, int> m_multipliers; // index of the step by axis
};
