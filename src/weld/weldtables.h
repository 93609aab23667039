#pragma once

#include <QList>
#include <QVector>

class Schema;

// The two tables of a weld as plain values. They are read once from the table cells at the start of an
// operation; what the cells show (two decimals, single precision) is all there is.

// How the path leaves a contour row. Only the scheme XYZ knows frames other than its own interpolation.
struct Frame
{
    enum Type { End = 0, Line = 1, Arc = 2 };

    int type = Line;
    float radius = 0;  // mm, arcs only
    int direction = 0; // 1 counter-clockwise, 0 clockwise
    int plane = 0;     // 0 XY, 1 XZ, 2 YZ
};

struct ContourRow
{
    QList<float> coords; // mm or deg, one for each axis of the scheme
    Frame frame;
};

struct WeldContour
{
    const Schema* schema = nullptr; // not owned
    QVector<ContourRow> rows;
    bool closed = false;
    bool closedForward = true; // closed by a frame of its own from the last row to the first
    bool moveForward = true;   // last navigation went to a higher row
    int nrings = 1;            // passes over a closed contour
    float length = 0;          // mm, one pass
    float centerX = 0;         // mm, centre of an XYZr contour in its plane
    float centerY = 0;
};

// Beam raster of a technology row.
struct Raster
{
    enum Kind { Off = 0, On = 1, Keep = 2 }; // as kept in files; Keep leaves the raster in force

    Kind kind = Keep;
    int type = 0;
    float ampX = 0, ampY = 0;     // %
    int angle = 0;                // deg
    int freq = 0;                 // Hz
    float shiftX = 0, shiftY = 0; // %
    float param = 0;
    int cw = 0; // reverse rotation
};

struct TechRow
{
    bool comment = false; // one text over the whole row
    bool stop = false;    // the comment that is a technological stop
    bool on = true;       // false for comments and for rows switched off
    float path = 0;       // mm from the start of the program, across all passes
    float Ir = 0;         // beam current, mA
    float If = 0;         // focus current, mA
    float Ix = 0, Iy = 0; // deflection, mA
    float speed = 0;      // mm/min on the stretch that begins at this row
    Raster raster;
};

struct WeldTables
{
    WeldContour contour;
    QVector<TechRow> tech;
};
