#pragma once

#include <QPointF>
#include <QString>

namespace plant {

// Circular path in one plane, in the plane's two coordinates (mm).
struct NcArc
{
    QPointF center;
    double radius = 0; // mm, 0 for an arc between equal points
    double from = 0;   // rad, direction of the first point as seen from the centre
    double sweep = 0;  // rad, above 0 counter-clockwise (from the plane's first axis to its second)

    double length() const; // mm

    // The point after `part` (0 to 1) of the length.
    QPointF at(double part) const;
};

// Points that stand further apart than two radii by no more than this are the ends of a half circle, mm:
// coordinates and radius are printed with two decimals.
constexpr double halfCircleTolerance = 0.02;

// The arc from `a` to `b` with radius `r`: the one not longer than a half circle, for a negative `r` the
// other one. When there is none, `error` is set and the result is of no use.
NcArc arcByRadius(QPointF a, QPointF b, double r, bool clockwise, QString* error);

} // namespace plant
