#pragma once

#include "weldtables.h"

#include <QString>

// What the operator is told of a weld before it starts. All texts are journal lines, empty where there is
// nothing to tell.

// Where the motion does not do what the technology table says. Such a weld is started all the same.
struct WeldDoubt
{
    enum Kind { // of a row that is cut: from the least to the worst
        None,
        SpeedKept, // the feed does not change at the row: beam and motion part
        OffSeam,   // the row goes back on a straight way, beside the seam
        OutOfStep, // the row goes back, the machine does not, or not so far
        // of the others, in no order
        OffArc,        // the row cuts an arc beside it
        StopShort,     // the machine stands before the place of the stop
        StopWithBeam,  // the beam burns while the operator looks
        StopInClosing, // the stop behind this one is never gone on from
        StopNotMet,    // the motion ends before it, and the beam waits
        EndsEarly,     // the beam goes on when the motion has ended
        NoMotion,      // the only pass is left out
        Backward,      // a backward closure counts a way that is not gone
        NoSpeed,       // under way
        CurrentSteps,  // the step is taken by no ramp and never reaches the beam
        NoArc,         // the radius does not span the chord
        NoWay,         // the frame counts nothing and is gone all the same
        SteepArc,      // its feed counts in the plane alone, and the coordinate across it flies
        RingRatio,     // its two decimals let the part run away from the beam
        ArcTurned,     // an arc bulges to the other side
        TooLong        // the console does not make such programs
    };

    Kind kind = None;
    float path = 0; // mm
    int row = -1;   // of the technology table; of the contour where the geometry is doubted; -1 for the weld
};
// The journal line.
QString doubtText(const WeldDoubt& doubt);

// A program of more lines is not made, those of all channels counted together: the window would stand still
// meanwhile. Of the slowest scheme so many are made and shown in less than 100 ms.
constexpr int maxProgramLines = 15'000;

// As many lines as the programs of a weld can have.
qint64 programLines(const WeldTables& tables);
QString tooLongText(qint64 lines);

// The same for the rows of a technology table that points are added to.
constexpr int maxTechRows = 4'000;
QString tooManyRowsText(qint64 rows);
