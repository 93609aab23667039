#pragma once

#include "weldtables.h"

#include <QList>
#include <QVector>

#include <limits>

// The geometry of a weld on plain values: lengths in mm, angles in degrees unless said otherwise.

// Rows of the tables and points nearer than this coincide, mm or deg: two decimals round them.
inline constexpr double samePlace = 0.01;

// The same for a path, mm: a cell holds it in single precision, whose steps are wider than that on a long
// way.
inline double samePlaceAt(double path)
{
    return samePlace + path * double(std::numeric_limits<float>::epsilon());
}

// Length of the frame that leaves `row`. 0 for a row outside the contour and for the frame of the contour's
// end; not a number for an arc whose radius cannot reach from one point to the other.
double frameLength(const WeldContour& contour, int row, const QList<float>& from, const QList<float>& to);

// How far a point is beside the arc that leaves `row`, mm in its plane. The arc must span its chord.
double besideArc(const WeldContour& contour, int row, const QList<float>& point);

// Way through the first `count` points by the scheme's distance; 0 for fewer than two.
double calcLength(const WeldContour& contour, int count);

// The same for each point.
QVector<double> pointLengths(const WeldContour& contour);

// One pass, and the whole program with all its passes. They are computed from the rows; the field `length`
// of the contour is not read.
double passLength(const WeldContour& contour);
double totalLength(const WeldContour& contour);

// Whether the path closes with a frame of its own, from the last row to the first.
bool closesByFrame(const WeldContour& contour);

// How many times the path is run: one for an open contour.
int passCount(const WeldContour& contour);

// Polar angle in radians, 0 to 2 pi; 3/2 pi for the origin.
double getPolarAngle(double x, double y);

struct Circle
{
    double diameter = 0;
    double centerX = 0;
    double centerY = 0;

    bool exists() const; // false when the points lie on a straight line
};

// Through three points.
Circle calcCircle(double x1, double y1, double x2, double y2, double x3, double y3);

// Of an XYZr contour with at least three points, from the first two coordinates of each whatever the plane:
// the mean of the circles through all neighbouring triples.
Circle calcD(const WeldContour& contour);

// Diameter of the circle through `row` and the two rows before it, in the plane 0 XY, 1 XZ, 2 YZ; the number
// behind the last row stands for the first, where a closing frame ends. 0 on a straight line.
double calcDiameter(const WeldContour& contour, int row, int plane);

// Moves every point of an XYZr contour along its ray from the centre, from the circle of diameter `oldD` to
// that of `newD`.
void recalcPointsForNewDiameter(WeldContour& contour, float oldD, float newD);

// What the operator is told of the technology table.
struct TableValidity
{
    enum Mark { None, Valid, Invalid }; // of a path cell: leave its colour, black, red

    QVector<Mark> rows;
    bool valid = true;
};
TableValidity tableValidity(const QVector<TechRow>& tech);

// Where the program's path begins on an XYZr contour and how the circle is tilted.
struct CircleStart
{
    double angle = 0;       // of row 0 about the centre; coordinate 0 of row 0 for the other schemes
    double height = 0;      // mm across the plane, half a turn away from row 0
    bool increasing = true; // counter-clockwise, by the first three rows
};
CircleStart circleStart(const WeldContour& contour);

// Coordinates by path, with the lengths of the frames summed once. Reads `length` of the contour, which must
// outlive it unchanged.
class WeldPath
{
public:
    enum Arcs { AsCut, AsDrawn }; // cuts take the radius in whole millimetres

    explicit WeldPath(const WeldContour& contour, Arcs arcs = AsCut);

    // Length of the frame that ends at `row`; row 0 means the closing frame.
    double frame(int row) const;

    // The point at `path` mm from the start of the program, on the frame that ends at `row`. Path counts
    // across passes.
    QList<float> interCoords(int row, double path, const CircleStart& start) const;

    // The point of the seam at `path`, on whichever frame it lies; its first where the path is negative.
    QList<float> place(double path, const CircleStart& start) const;

private:
    QList<float> onLine(int row, double part) const;
    QList<float> onRing(int row, double part) const;
    QList<float> onArc(int row, double part, double rest) const;
    QList<float> onCircle(double path, const CircleStart& start) const;
    const QList<float>& from(int row) const;
    const QList<float>& to(int row) const;
    double folded(double path, double end) const;

    const WeldContour& m_contour;
    const Arcs m_arcs;
    QVector<double> m_sums; // of the frames before each row
};

// The part by which a ring turns faster than its beam counts: the controller is given the way of a degree
// with two decimals. So much of it shows on no seam, mm.
double ringRatioError(const WeldContour& contour);
inline constexpr double noRingShows = 5;

// How many whole passes of `length` mm a stretch without beam is shorter, so that what is left is at most
// one pass and `samePlace`. The beam's pause and the motion both leave out this number.
int passesLeftOut(double stretch, double length);
