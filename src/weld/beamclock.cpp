#include "beamclock.h"

#include "schema.h"

#include <QtMath>

#include <algorithm>
#include <cmath>

BeamClock::BeamClock(const WeldTables& tables)
    : m_tables(tables)
    , m_path(tables.contour, WeldPath::AsDrawn)
    , m_start(circleStart(tables.contour))
{
    TechRow before = tables.tech.first();
    before.path = 0;
    m_knots.append({0, 0, double(before.Ir), 0, 0});
    int stage = 0;
    double time = 0;
    for (int i = 1; i < tables.tech.size(); ++i) {
        const TechRow& row = tables.tech[i];
        if (row.stop)
            m_knots.append({time, double(before.path), double(before.Ir), i, ++stage});
        if (!row.on)
            continue;
        double way = std::fabs(double(row.path) - double(before.path));
        const double whole = way;
        const bool rests = row.Ir == before.Ir && row.If == before.If && !(row.Ir > 0);
        if (tables.contour.schema->round() && rests)
            way -= passesLeftOut(way, double(tables.contour.length)) * double(tables.contour.length);
        const double change = std::hypot(double(row.Ir - before.Ir), double(row.If - before.If));
        if (before.speed > 0) {
            const double seconds = 60 * way / double(before.speed);
            // Three decimals of a rate are coarse for a small change over a long way.
            m_rounded += change > 0 && seconds > 0 ? seconds * seconds / 60 * 0.0005 / change : 0.0005;
            time += seconds;
            m_fastest = std::max(m_fastest, double(before.speed));
            m_slowest = std::min(m_slowest, double(before.speed));
        }
        // Passes that are left out: the beam is where it was, whole turns later.
        if (way < whole)
            m_knots.append({time - 60 * way / double(before.speed), double(row.path) - way, 0, i, stage});
        m_knots.append({time, double(row.path), double(row.Ir), i, stage});
        before = row;
    }
}

int BeamClock::before(double time) const
{
    const auto next = std::upper_bound(m_knots.begin(), m_knots.end(), time,
                                       [](double t, const Knot& knot) { return t < knot.time; });
    return std::max(0, int(next - m_knots.begin()) - 1);
}

BeamClock::Now BeamClock::at(double time) const
{
    const int i = before(time);
    const Knot& a = m_knots[i];
    if (i + 1 >= m_knots.size())
        return {a.path, a.Ir, a.row};
    const Knot& b = m_knots[i + 1];
    const double part = b.time > a.time ? std::clamp((time - a.time) / (b.time - a.time), 0.0, 1.0) : 1;
    return {a.path + part * (b.path - a.path), a.Ir + part * (b.Ir - a.Ir), b.row};
}

void BeamClock::span(double time, double margin, double* least, double* most) const
{
    *least = *most = at(time).Ir;
    const auto see = [&](double Ir) {
        *least = std::min(*least, Ir);
        *most = std::max(*most, Ir);
    };
    see(at(time - margin).Ir);
    see(at(time + margin).Ir);
    for (int i = before(time - margin); i < m_knots.size() && m_knots[i].time <= time + margin; ++i) {
        if (m_knots[i].time >= time - margin)
            see(m_knots[i].Ir);
    }
    if (time + margin >= end() || time <= margin) // before and behind the weld there is none
        see(0);
}

double BeamClock::stageBegin(int stage) const
{
    for (const Knot& knot : m_knots) {
        if (knot.stage == stage)
            return knot.time;
    }
    return end();
}

// The start angle of a circle comes from a cosine, which near 0 and 180 degrees sees the rounding of the
// first point many times over. What lags a little where the motion is slow lags more where it is fast.
double BeamClock::roundedWay() const
{
    const WeldContour& contour = m_tables.contour;
    double way = 0.01 * std::sqrt(double(contour.rows.size() * passCount(contour) + m_tables.tech.size()));
    if (contour.schema->rotate()) {
        const PlaneColumns plane = planeColumns(contour.schema->Aux());
        const QList<float>& first = contour.rows.first().coords;
        const double angle = qRadiansToDegrees(std::atan2(double(first[plane.second] - contour.centerY),
                                                          double(first[plane.first] - contour.centerX)));
        // A row close behind a point may even be cut before it: there and back.
        way += 2 * double(contour.schema->R()) *
               std::fabs(qDegreesToRadians(std::remainder(m_start.angle - angle, 360.0)));
    }
    return way * std::max(1.0, m_fastest / m_slowest) + m_rounded * m_fastest / 60 +
           (contour.schema->circle() ? noRingShows : 0);
}
