#pragma once

#include <QList>
#include <QString>

class Schema;

// One frame of a ring joint: the part turns (channel 2) while the manipulator waits or follows (channel 1).
struct RingMove
{
    QString turn;        // statement of channel 2
    QString manipulator; // statement of channel 1; empty when it neither waits nor follows
    bool follows = false;
};

// `speed` in mm/min on the circumference; `feed` is the same as the program shows it. At speed 0 nobody
// knows how long the turn takes: the manipulator has nothing to wait for and follows with feed 0.
RingMove ringMove(const Schema& schema, const QList<float>& to, const QList<float>& from, double speed,
                  const QString& feed);

// "F" values of moves and dwells.
QString feedText(double value);
