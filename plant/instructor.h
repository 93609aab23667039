#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace plant {

class BeamUnit;
class ControllerLink;
class MotionController;
class VacuumSystem;

// Simulated seconds for each real one; the instructor may let time stand still as well, with 0.
constexpr double slowestTime = 0.1;
constexpr double fastestTime = 1000;

// What the instructor can do to the installation, one line at a time. Words are separated by blanks and
// carry no case. Every line is answered with one line; an answer that begins with "error:" changed nothing.
class Instructor : public QObject
{
    Q_OBJECT

public:
    struct Links
    {
        ControllerLink* drive;
        ControllerLink* kvs;
        ControllerLink* kvk;
    };
    // All outlive the instructor.
    Instructor(MotionController& controller, VacuumSystem& vacuum, const Links& links,
               QObject* parent = nullptr);

    // What belongs to the installation as a whole.
    struct House
    {
        std::function<QString()> observe; // opens the ports of a console that only watches and tells them
        std::function<double()> time;     // simulated seconds since the start
    };
    void setHouse(House house) { m_house = std::move(house); }

    void setBeamUnit(BeamUnit* unit) { m_beamUnit = unit; } // null for none; outlives the instructor

    QString execute(const QString& line); // an empty line and a comment (#) have an empty answer

    // What is wrong with the line as such, its word or how many follow; empty for nothing. What the words
    // themselves say, and whether the installation allows it, only `execute` knows.
    static QString misspelt(const QString& line);

signals:
    void speedWanted(double factor); // simulated seconds for each real one
    void quitWanted();

private:
    using Words = QStringList;
    using Handler = QString (Instructor::*)(const Words&); // empty: done; otherwise the answer
    struct Entry
    {
        const char* word;
        const char* usage;
        const char* meaning;
        int least; // words after the first
        int most;
        Handler handler;
    };
    static const std::vector<Entry>& entries();
    static const Entry* entryOf(const Words& words, QString* why); // null with the reason; words: not empty

    QString help(const Words& w);
    QString status(const Words& w);
    QString state(const Words& w);
    QString faults(const Words& w);
    QString door(const Words& w);
    QString vacuum(const Words& w);
    QString key(const Words& w);
    QString breaker(const Words& w);
    QString phase(const Words& w);
    QString emergency(const Words& w);
    QString rope(const Words& w);
    QString trip(const Words& w);
    QString clear(const Words& w);
    QString axis(const Words& w);
    QString pult(const Words& w);
    QString module(const Words& w);
    QString light(const Words& w);
    QString message(const Words& w);
    QString cncError(const Words& w);
    QString program(const Words& w);
    QString variable(const Words& w);
    QString link(const Words& w);
    QString frame(const Words& w);
    QString speed(const Words& w);
    QString time(const Words& w);
    QString observe(const Words& w);
    QString beam(const Words& w);
    QString quit(const Words& w);

    // Of the vacuum plant.
    QString valve(const Words& w);
    QString pump(const Words& w);
    QString gauge(const Words& w);
    QString water(const Words& w);
    QString leak(const Words& w);
    QString air(const Words& w);

    // The link that the first word names and takes away; that of the motion controller without a name.
    ControllerLink& named(Words* w) const;

    MotionController& m_controller;
    VacuumSystem& m_vacuum;
    Links m_links;
    House m_house;
    BeamUnit* m_beamUnit = nullptr;
};

} // namespace plant
