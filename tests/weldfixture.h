#pragma once

#include "schema.h"
#include "weldgeometry.h"
#include "weldtables.h"

#include <memory>

// Weld tables for tests, with the schema that they point to.
struct Weld
{
    std::unique_ptr<Schema> schema;
    WeldTables tables;

    explicit Weld(Schema* s)
        : schema(s)
    {
        tables.contour.schema = s;
    }

    Weld& point(const QList<float>& coords, const Frame& frame = Frame())
    {
        tables.contour.rows.append({coords, frame});
        return *this;
    }

    Weld& closed(int nrings = 1, bool forward = true)
    {
        tables.contour.closed = true;
        tables.contour.closedForward = forward;
        tables.contour.nrings = nrings;
        return *this;
    }

    Weld& row(float path, float Ir, float speed, float If = 700)
    {
        TechRow r;
        r.path = path;
        r.Ir = Ir;
        r.If = If;
        r.speed = speed;
        tables.tech.append(r);
        return *this;
    }

    Weld& stop()
    {
        TechRow r;
        r.comment = r.stop = true;
        r.on = false;
        tables.tech.append(r);
        return *this;
    }

    // The last row, at the whole path as its cell shows it; the contour's length as its label holds it.
    Weld& end(float Ir = 0, float speed = 600, float If = 700)
    {
        measure();
        return row(QString::number(totalLength(tables.contour), 'f', 2).toFloat(), Ir, speed, If);
    }

    Weld& measure()
    {
        tables.contour.length = float(passLength(tables.contour));
        return *this;
    }
};

inline Frame arc(float radius, int direction, int plane)
{
    Frame frame;
    frame.type = Frame::Arc;
    frame.radius = radius;
    frame.direction = direction;
    frame.plane = plane;
    return frame;
}
