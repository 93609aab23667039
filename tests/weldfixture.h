#pragma once

#include "schema.h"
#include "weldgeometry.h"
#include "weldtables.h"

#include <QtTest>

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

// A ring of 100 mm in four points, the manipulator at rest.
inline Weld ring(int nrings)
{
    Weld weld(new SchemaCircle(100, 4));
    for (float angle : {0.0f, 90.0f, 180.0f, 270.0f})
        weld.point({angle, 10, 20, 30});
    weld.closed(nrings).measure();
    return weld;
}

// A half circle of 100 mm in three points.
inline Weld halfCircle(int plane = 0)
{
    Weld weld(new SchemaXYZr(100, 0, plane));
    const PlaneColumns columns = planeColumns(plane);
    for (const auto& [first, second] :
         {std::pair(50.0f, 0.0f), std::pair(0.0f, 50.0f), std::pair(-50.0f, 0.0f)}) {
        QList<float> c{5, 5, 5};
        c[columns.first] = first;
        c[columns.second] = second;
        weld.point(c);
    }
    weld.measure();
    return weld;
}

// Compares line by line, so that a failure shows the first line that differs.
inline void compare(const QString& program, const QStringList& expected)
{
    const QStringList lines = program.split('\n');
    for (int i = 0; i < qMin(lines.size(), expected.size()); ++i)
        QCOMPARE(lines[i], expected[i]);
    QCOMPARE(program, expected.join('\n'));
}
