#pragma once

#include "schema.h"
#include "weldgeometry.h"
#include "weldtables.h"

#include <QString>
#include <QtMath>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>

// The same numbers on every machine.
class Dice
{
public:
    explicit Dice(unsigned seed)
        : m_source(seed)
    {}

    double between(double from, double to)
    {
        return from + (to - from) * (double(m_source()) / 4294967295.0);
    }
    int whole(int from, int to) { return from + int(m_source() % unsigned(to - from + 1)); }
    bool one(int of) { return whole(1, of) == 1; } // true once in `of` throws

    // As table cells keep it.
    float decimal(double from, double to, int decimals)
    {
        return QString::number(between(from, to), 'f', decimals).toFloat();
    }

private:
    std::mt19937 m_source;
};

inline float twoDecimals(double value)
{
    return QString::number(value, 'f', 2).toFloat();
}

// What a failed run was made from.
inline QString describe(const WeldTables& tables)
{
    const WeldContour& contour = tables.contour;
    QString text = QString("\n%1 D=%2 Aux=%3 closed=%4 nrings=%5 length=%6 center=%7, %8")
                       .arg(contour.schema->id())
                       .arg(double(contour.schema->D()))
                       .arg(contour.schema->Aux())
                       .arg(contour.closed)
                       .arg(contour.nrings)
                       .arg(double(contour.length))
                       .arg(double(contour.centerX))
                       .arg(double(contour.centerY));
    for (const ContourRow& row : contour.rows) {
        text += "\npoint";
        for (const float c : row.coords)
            text += ' ' + QString::number(double(c), 'f', 2);
        text += QString(" type=%1 r=%2 dir=%3 plane=%4")
                    .arg(row.frame.type)
                    .arg(double(row.frame.radius))
                    .arg(row.frame.direction)
                    .arg(row.frame.plane);
    }
    for (const TechRow& row : tables.tech) {
        text += row.stop ? QString("\nstop")
                         : QString("\nrow on=%1 path=%2 Ir=%3 If=%4 speed=%5")
                               .arg(row.on)
                               .arg(double(row.path))
                               .arg(double(row.Ir))
                               .arg(double(row.If))
                               .arg(double(row.speed));
    }
    return text;
}

// Random contours and technology tables of one scheme. What the installation could not run in step by its
// own rules is left out where it says so.
class WeldMaker
{
public:
    WeldMaker(const QString& scheme, unsigned seed)
        : m_dice(seed)
        , m_kind(scheme)
    {}

    bool anyDirection = false; // frames along y and z too
    bool mayStop = true;
    bool oneSpeed = false; // set by chance otherwise
    bool goesBack = false; // rows in any order, on a seam that is straight by chance

    WeldTables make()
    {
        WeldContour& contour = m_tables.contour;
        contour.closed = m_dice.one(2);
        contour.nrings = m_dice.one(3) ? m_dice.whole(4, 7) : m_dice.whole(1, 3);
        if (m_kind == "XYZ")
            makeLines();
        else if (m_kind == "XYZr")
            makeCircle();
        else
            makeRing();
        contour.schema = m_schema.get();
        contour.length = float(passLength(contour));
        makeTable();
        return m_tables;
    }

private:
    // Every frame moves x unless told otherwise: a cut where x stands still is dropped by rule, and with it
    // the change of feed.
    void makeLines()
    {
        m_schema = std::make_unique<SchemaXYZ>();
        WeldContour& contour = m_tables.contour;
        const int count = m_dice.whole(2, 8);
        double x = m_dice.between(-300, 0);
        for (int i = 0; i < count; ++i) {
            x = anyDirection ? (m_dice.one(2) ? x : m_dice.between(-100, 100)) : x + m_dice.between(20, 90);
            contour.rows.append(
                {{twoDecimals(x), m_dice.decimal(-80, 80, 2), m_dice.decimal(-80, 80, 2)}, {}});
        }
        for (int i = 0; i + 1 < count; ++i)
            contour.rows[i].frame = makeFrame(contour.rows[i].coords, contour.rows[i + 1].coords);
        if (goesBack && m_dice.one(2)) {
            contour.closed = false;
            for (ContourRow& row : contour.rows) { // all numbers end at two decimals
                const float along = std::round(row.coords[0]);
                row = {{0.6f * along, 0.8f * along, 5}, {}};
            }
        }
        contour.rows.last().frame.type = Frame::End;
        if (contour.closed)
            contour.rows.last().frame = makeFrame(contour.rows.last().coords, contour.rows.first().coords);
    }

    // An arc that in XY and XZ keeps x going one way: less than a half circle lies to both sides of x.
    Frame makeFrame(const QList<float>& from, const QList<float>& to)
    {
        Frame frame;
        if (m_dice.one(2))
            return frame;
        frame.type = Frame::Arc;
        frame.plane = m_dice.whole(0, 2);
        frame.direction = m_dice.whole(0, 1);
        const PlaneColumns plane = planeColumns(frame.plane);
        const double chord = std::hypot(double(to[plane.first] - from[plane.first]),
                                        double(to[plane.second] - from[plane.second]));
        const double across = std::abs(double(to[plane.first] - from[plane.first]));
        const double least = frame.plane == 2 || anyDirection ? chord * 0.55 : chord * chord / (1.9 * across);
        frame.radius = float(std::ceil(std::max(least, 2.0) + m_dice.between(0, 60)));
        return frame;
    }

    void makeCircle()
    {
        const double D = double(m_dice.decimal(30, 400, 2));
        const int plane = m_dice.whole(0, 2);
        m_schema = std::make_unique<SchemaXYZr>(float(D), 0.0f, plane);
        WeldContour& contour = m_tables.contour;
        contour.centerX = m_dice.decimal(-200, 200, 2);
        contour.centerY = m_dice.decimal(-200, 200, 2);
        const int count = m_dice.whole(4, 9);
        const double turn = m_dice.one(2) ? 360.0 / count : -360.0 / count;
        const double first = m_dice.one(4) ? 90 * m_dice.whole(0, 3) : m_dice.between(0, 360);
        const double tilt = m_dice.one(2) ? 0 : m_dice.between(0, 20);
        const double across = m_dice.between(-100, 100);
        const PlaneColumns columns = planeColumns(plane);
        for (int i = 0; i < count; ++i) {
            const double jitter = i == 0 ? 0 : m_dice.between(-0.2, 0.2);
            const double angle = qDegreesToRadians(first + turn * (i + jitter));
            QList<float> point{0, 0, 0};
            point[columns.first] = twoDecimals(double(contour.centerX) + D / 2 * std::cos(angle));
            point[columns.second] = twoDecimals(double(contour.centerY) + D / 2 * std::sin(angle));
            point[columns.third] =
                twoDecimals(across + tilt / 2 * (1 - std::cos(angle - qDegreesToRadians(first))));
            contour.rows.append({point, {}});
        }
    }

    void makeRing()
    {
        m_schema = std::make_unique<SchemaCircle>(m_dice.decimal(50, 900, 2), 0.0f);
        WeldContour& contour = m_tables.contour;
        const int count = m_dice.whole(3, 9);
        const double turn = 360.0 / count;
        const double first = m_dice.one(2) ? 0 : m_dice.between(0, turn / 2);
        const bool follows = m_dice.one(2);
        QList<float> place{m_dice.decimal(-100, 100, 2), m_dice.decimal(-100, 100, 2),
                           m_dice.decimal(-100, 100, 2)};
        for (int i = 0; i < count; ++i) {
            const double jitter = i == 0 ? 0 : m_dice.between(-0.2, 0.2);
            if (follows && m_dice.one(2)) {
                for (float& c : place)
                    c = twoDecimals(double(c) + m_dice.between(-8, 8));
            }
            contour.rows.append(
                {{twoDecimals(first + turn * (i + jitter)), place[0], place[1], place[2]}, {}});
        }
        if (m_dice.one(3))
            std::reverse(contour.rows.begin() + 1, contour.rows.end());
    }

    void makeTable()
    {
        const float total = twoDecimals(totalLength(m_tables.contour));
        oneSpeed = oneSpeed || m_dice.one(4);
        const float speed = m_dice.decimal(400, 3000, 1);
        QVector<float> paths;
        for (int rows = m_dice.whole(0, m_dice.one(2) ? 3 : 10); rows > 0; --rows)
            paths.append(m_dice.one(4) ? frameEnd() : m_dice.decimal(0, double(total), 2));
        std::sort(paths.begin(), paths.end());
        if (goesBack && !paths.isEmpty())
            std::rotate(paths.begin(), paths.begin() + m_dice.whole(0, paths.size() - 1), paths.end());

        TechRow row;
        row.If = 700;
        row.speed = speed;
        if (m_dice.one(2))
            row.Ir = m_dice.decimal(5, 60, 1);
        m_tables.tech.append(row);
        for (const float path : paths) {
            // Nearer rows are ramps that the beam could not follow.
            const float way = path - m_tables.tech.last().path;
            if ((goesBack ? std::abs(way) : way) < 1 || path > total - 1)
                continue;
            row = nextRow(path);
            m_tables.tech.append(row);
            if (m_dice.one(12)) {
                row.speed = oneSpeed ? speed : m_dice.decimal(400, 3000, 1);
                m_tables.tech.append(row); // only the speed changes
            }
        }
        row.path = total;
        if (m_dice.one(2))
            row.Ir = 0;
        m_tables.tech.append(row);
        addComments();
    }

    float frameEnd()
    {
        const WeldContour& contour = m_tables.contour;
        const WeldPath path(contour);
        double end = double(contour.length) * m_dice.whole(0, passCount(contour) - 1);
        for (int row = m_dice.whole(1, contour.rows.size() - 1); row > 0; --row)
            end += path.frame(row);
        return twoDecimals(end);
    }

    TechRow nextRow(float path)
    {
        TechRow row = m_tables.tech.last();
        row.path = path;
        row.raster = {};
        if (m_dice.one(3))
            row.Ir = 0;
        else if (m_dice.one(2))
            row.Ir = m_dice.decimal(5, 60, 1);
        if (m_dice.one(6))
            row.If = m_dice.decimal(500, 800, 0);
        if (!oneSpeed && m_dice.one(2))
            row.speed = m_dice.decimal(400, 3000, 1);
        if (m_dice.one(6)) {
            row.raster.kind = m_dice.one(3) ? Raster::Off : Raster::On;
            row.raster.type = m_dice.whole(0, 17);
            row.raster.ampX = m_dice.decimal(-100, 100, 2);
            row.raster.param = m_dice.decimal(-1, 1, 6);
        }
        return row;
    }

    void addComments()
    {
        QVector<TechRow>& tech = m_tables.tech;
        TechRow comment;
        comment.comment = true;
        comment.on = false;
        if (m_dice.one(3))
            tech.insert(m_dice.whole(1, tech.size() - 1), comment);
        if (m_dice.one(3)) {
            TechRow off = tech[m_dice.whole(0, tech.size() - 1)];
            off.on = false;
            off.Ir = 33;
            tech.insert(m_dice.whole(1, tech.size() - 1), off);
        }
        comment.stop = true;
        for (int stops = mayStop && m_dice.one(2) ? m_dice.whole(1, 3) : 0; stops > 0; --stops)
            tech.insert(m_dice.whole(1, tech.size() - 1), comment);
    }

    Dice m_dice;
    QString m_kind;
    std::unique_ptr<Schema> m_schema;
    WeldTables m_tables;
};
