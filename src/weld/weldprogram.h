#pragma once

#include "weldtables.h"
#include "weldwarning.h"

#include <QString>
#include <QVector>

// Where a weld with technological stops stands between two presses of the start button.
struct WeldStage
{
    int stopsSeen = 0;     // stops passed by the last generation
    int stage = 1;         // 1 at rest, one more for each continuation
    int restartBlock1 = 0; // block at which channel 1 enters after the stop
    int restartBlock2 = 0; // the same for channel 2
};

// Programs of the motion channels. `channel2` is empty unless the scheme turns the part.
struct MotionPrograms
{
    QString channel1;
    QString channel2;
    WeldDoubt doubt{};           // of a weld, the worst of the rows that are cut
    QVector<WeldDoubt> doubts{}; // all that the walk has met, in its order
};

// Channel 3: beam current, focus and raster along the technology table.
QString technologyProgram(const WeldTables& tables);

// Channels 1 and 2 of a weld. `stage` is read and advanced: stops counted anew, the restart blocks of this
// stage's stop marked.
MotionPrograms contourPrograms(const WeldTables& tables, WeldStage& stage);

// Channels 1 and 2 of a pass without beam and stops, at one speed (mm/min) throughout.
MotionPrograms testMovePrograms(const WeldContour& contour, float speed);

// Channels 1 and 2 of a walk by rows from the row the machine stands at to `target`.
// `position` is where the axes of the scheme are now: the first step goes from there. `speedText` is the
// feed as its label shows it; `contour.moveForward` gives the direction.
MotionPrograms navigationPrograms(const WeldContour& contour, int currentPoint, int target,
                                  const QList<float>& position, const QString& speedText);
