#include "contouredit.h"

#include "schema.h"

#include <algorithm>

void invertContour(WeldContour& contour)
{
    QVector<ContourRow>& rows = contour.rows;
    if (rows.size() < 2)
        return;
    const bool startStays = contour.closed || contour.schema->circle() || contour.schema->rotate();
    QVector<Frame> frames;
    for (const ContourRow& row : qAsConst(rows))
        frames.append(row.frame);
    std::reverse(rows.begin() + (startStays ? 1 : 0), rows.end());

    // The frame between two points belongs to whichever of them now comes first. An open contour ends with
    // the frame that is none. The direction of an arc is kept as stored: the setter sees it in the table
    // and turns it where the arc has to keep its side.
    const int count = rows.size();
    const int turned = contour.closed ? count : count - 1;
    for (int row = 0; row < turned; ++row)
        rows[row].frame = frames[turned - 1 - row];
    for (int row = turned; row < count; ++row)
        rows[row].frame = frames[row];
}
