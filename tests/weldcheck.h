#pragma once

#include "schema.h"
#include "weldgeometry.h"
#include "weldtables.h"

#include <QVector>
#include <QtMath>

#include <algorithm>
#include <cmath>

// What must hold of one run; it walks the table itself, without the generator's eyes.
class WeldCheck
{
public:
    // `step` of the run is in seconds; `tables` must outlive the check.
    WeldCheck(const WeldTables& tables, double step)
        : m_tables(tables)
        , m_step(step)
    {
        for (const TechRow& row : tables.tech) {
            if (row.on)
                m_rows.append(row);
        }
    }

    bool passesAreLeftOut() const
    {
        if (!m_tables.contour.schema->round())
            return false;
        for (int i = 1; i < m_rows.size(); ++i) {
            if (m_rows[i].Ir == 0.0f && m_rows[i - 1].Ir == 0.0f &&
                passesLeftOut(double(m_rows[i].path - m_rows[i - 1].path), double(m_tables.contour.length)) >
                    0)
                return true;
        }
        return false;
    }

    // How far two decimals and three of a feed may put the channels apart, s.
    double timeTolerance(int blocks) const
    {
        return feedRounding() + 60 * (0.02 + 0.01 * blocks + startError()) / slowest() + 2 * m_step;
    }

    // The same as a way, mm, where the motion is fastest.
    double pathTolerance() const
    {
        return 1 + feedRounding() * fastest() / 60 + startError() * fastest() / slowest();
    }

    // The start angle of a circle comes from a cosine, which near 0 and 180 degrees sees the rounding of the
    // first point many times over, mm.
    double startError() const
    {
        const WeldContour& contour = m_tables.contour;
        if (!contour.schema->rotate())
            return 0;
        const PlaneColumns plane = planeColumns(contour.schema->Aux());
        const QList<float>& first = contour.rows.first().coords;
        const double angle = qRadiansToDegrees(std::atan2(double(first[plane.second] - contour.centerY),
                                                          double(first[plane.first] - contour.centerX)));
        const double off = std::remainder(circleStart(contour).angle - angle, 360.0);
        return double(contour.schema->R()) * std::abs(qDegreesToRadians(off));
    }

    // Whether the beam current is one that the table has within `tolerance` mm of `path`.
    bool beamFits(double current, double path, double tolerance) const
    {
        double least = 1e9;
        double most = -1e9;
        const auto see = [&](double value) {
            least = std::min(least, value);
            most = std::max(most, value);
        };
        see(currentAt(path - tolerance));
        see(currentAt(path + tolerance));
        if (path + tolerance > double(m_rows.last().path))
            see(0); // the weld is over
        for (const TechRow& row : m_rows) {
            if (std::abs(double(row.path) - path) <= tolerance)
                see(double(row.Ir));
        }
        return current > least - 0.11 && current < most + 0.11;
    }

    // How far a position of the manipulator is from the contour, mm.
    double distance(double x, double y, double z) const
    {
        const WeldContour& contour = m_tables.contour;
        const QVector<double> p{x, y, z};
        if (contour.schema->rotate()) {
            const PlaneColumns plane = planeColumns(contour.schema->Aux());
            return std::abs(std::hypot(p[plane.first] - double(contour.centerX),
                                       p[plane.second] - double(contour.centerY)) -
                            double(contour.schema->R()));
        }
        double nearest = 1e9;
        const int count = contour.rows.size();
        for (int i = 0; i < (contour.closed ? count : count - 1); ++i)
            nearest = std::min(nearest, fromFrame(i, p));
        return nearest;
    }

private:
    // Three decimals of a rate are coarse for a small change over a long way.
    double feedRounding() const
    {
        double seconds = 0;
        for (int i = 1; i < m_rows.size(); ++i) {
            const TechRow& a = m_rows[i - 1];
            const TechRow& b = m_rows[i];
            const double minutes = std::abs(double(b.path - a.path)) / double(a.speed);
            const double change = std::hypot(double(b.Ir - a.Ir), double(b.If - a.If));
            seconds += change > 0 && minutes > 0 ? 60 * minutes * 0.0005 / (change / minutes) : 0.0005;
        }
        return seconds;
    }

    double slowest() const
    {
        double speed = 1e9;
        for (const TechRow& row : m_rows)
            speed = std::min(speed, double(row.speed));
        return speed;
    }

    double fastest() const
    {
        double speed = 0;
        for (const TechRow& row : m_rows)
            speed = std::max(speed, double(row.speed));
        return speed;
    }

    double currentAt(double path) const
    {
        for (int i = 1; i < m_rows.size(); ++i) {
            const TechRow& a = m_rows[i - 1];
            const TechRow& b = m_rows[i];
            if (path < double(b.path) && b.path > a.path) {
                const double part = std::max(0.0, (path - double(a.path)) / double(b.path - a.path));
                return double(a.Ir) + part * double(b.Ir - a.Ir);
            }
        }
        return double(m_rows.last().Ir);
    }

    double fromFrame(int row, const QVector<double>& p) const
    {
        const WeldContour& contour = m_tables.contour;
        const int offset = contour.schema->circle() ? 1 : 0;
        QVector<double> a, b;
        for (int i = 0; i < 3; ++i) {
            a.append(double(contour.rows[row].coords[i + offset]));
            b.append(double(contour.rows[(row + 1) % contour.rows.size()].coords[i + offset]));
        }
        const Frame& frame = contour.rows[row].frame;
        if (frame.type != Frame::Arc || contour.schema->circle())
            return fromLine(a, b, p);
        return fromArc(frame, a, b, p);
    }

    static double fromLine(const QVector<double>& a, const QVector<double>& b, const QVector<double>& p)
    {
        double along = 0;
        double length = 0;
        for (int i = 0; i < 3; ++i) {
            along += (p[i] - a[i]) * (b[i] - a[i]);
            length += (b[i] - a[i]) * (b[i] - a[i]);
        }
        const double part = length > 0 ? std::clamp(along / length, 0.0, 1.0) : 0.0;
        double squares = 0;
        for (int i = 0; i < 3; ++i)
            squares += std::pow(a[i] + part * (b[i] - a[i]) - p[i], 2);
        return std::sqrt(squares);
    }

    // The arc lies to the right of its chord when it turns counter-clockwise; its height over the chord
    // gives the centre.
    static double fromArc(const Frame& frame, const QVector<double>& a, const QVector<double>& b,
                          const QVector<double>& p)
    {
        const PlaneColumns c = planeColumns(frame.plane);
        const double ux = b[c.first] - a[c.first], uy = b[c.second] - a[c.second];
        const double chord = std::hypot(ux, uy);
        const double r = double(frame.radius);
        const double side = (frame.direction == 1 ? 1 : -1) * std::sqrt(r * r - chord * chord / 4) / chord;
        const double cx = (a[c.first] + b[c.first]) / 2 - side * uy;
        const double cy = (a[c.second] + b[c.second]) / 2 + side * ux;
        const double px = p[c.first] - cx, py = p[c.second] - cy;
        const double half = std::asin(chord / (2 * r));
        const double begin = std::atan2(a[c.second] - cy, a[c.first] - cx);
        const double turned =
            std::remainder(std::atan2(py, px) - begin, 2 * M_PI) * (frame.direction == 1 ? 1 : -1);
        const double part = std::clamp(turned / (2 * half), 0.0, 1.0);
        const double angle = begin + (frame.direction == 1 ? 1 : -1) * part * 2 * half;
        return std::sqrt(std::pow(px - r * std::cos(angle), 2) + std::pow(py - r * std::sin(angle), 2) +
                         std::pow(a[c.third] + part * (b[c.third] - a[c.third]) - p[c.third], 2));
    }

    const WeldTables& m_tables;
    double m_step;
    QVector<TechRow> m_rows;
};
