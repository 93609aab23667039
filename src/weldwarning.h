#pragma once

#include "weldtables.h"

#include <QString>

// What the operator is told of a weld before it starts. All texts are journal lines, empty where there is
// nothing to tell.

// Where the motion does not do what the technology table says. Such a weld is started all the same.
struct WeldDoubt
{
    enum Kind { // from the least to the worst
        None,
        SpeedKept, // the feed does not change at the row: beam and motion part
        OffSeam,   // the row goes back on a straight way, beside the seam
        OutOfStep  // the row goes back, the machine does not, or not so far
    };

    Kind kind = None;
    float path = 0; // mm, of the first row of this kind
};
QString doubtText(const WeldDoubt& doubt);

// A weld is not started when its programs have more lines, all channels together: the window would stand
// still while they are made. The slowest scheme makes these in less than 100 ms.
constexpr int maxProgramLines = 20'000;

// As many lines as the programs of a weld can have. Without a technology table: those of a test move.
qint64 programLines(const WeldContour& contour, const QVector<TechRow>& tech = {});

// Why programs of so many lines are not made.
QString tooLongText(qint64 lines);
