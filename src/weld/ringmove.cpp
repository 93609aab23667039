#include "ringmove.h"

#include "programwriter.h"
#include "schema.h"

#include <cmath>

QString feedText(double value)
{
    return ncFixed(value, 3);
}

RingMove ringMove(const Schema& schema, const QList<float>& to, const QList<float>& from, double speed,
                  const QString& feed)
{
    RingMove move;
    move.turn = "G90 " + schema.gCodePoint(to, true) + " F" + feed;

    const bool timed = std::fabs(speed) > 0;
    const double minutes = timed ? schema.distance(to, from) / speed : 0;
    double way = 0;
    for (int i = 1; i <= 3; ++i)
        way = std::hypot(way, double(to[i]) - double(from[i]));

    move.follows = way > 0;
    if (!move.follows) {
        if (timed)
            move.manipulator = "G4 F" + feedText(60 * minutes);
        return move;
    }
    // Where the part does not turn there is nothing to keep pace with.
    const double follow = std::fabs(minutes) > 0 ? way / minutes : speed;
    move.manipulator = "G90 " + schema.gCodePoint(to, false) + " F" + feedText(follow);
    return move;
}
