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

// A program of more lines is not made, those of all channels counted together: the window would stand still
// meanwhile. Of the slowest scheme so many are made and shown in less than 100 ms.
constexpr int maxProgramLines = 15'000;

// As many lines as the programs of a weld can have.
qint64 programLines(const WeldTables& tables);
QString tooLongText(qint64 lines);

// The same for the rows of a technology table that points are added to.
constexpr int maxTechRows = 4'000;
QString tooManyRowsText(qint64 rows);
