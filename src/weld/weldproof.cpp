#include "weldproof.h"

#include "schema.h"
#include "weldgeometry.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double noSeamShows = 0.1;  // mm, by which the beam may be beside its place
constexpr double standsShort = 0.25; // s that the beam may burn on one place
constexpr double steep = 10;         // times the arc
constexpr double smooth = 0.02;      // rad, between two frames that pass into one another
constexpr double kink = 0.09;        // rad, that nobody takes for smooth

// Which way a frame leaves its first point and comes to its last, rad, in the plane of an arc.
struct Direction
{
    double out = 0;
    double in = 0;
};

class Proof
{
public:
    explicit Proof(const WeldTables& tables)
        : m_contour(tables.contour)
        , m_tech(tables.tech)
        , m_frames(!m_contour.schema->circle() && !m_contour.schema->rotate())
    {}

    QVector<WeldDoubt> found(const MotionPrograms& programs)
    {
        geometry();
        rows();
        if (m_contour.closed && !m_contour.closedForward && m_frames)
            backward();
        ring();
        if (programLines({m_contour, m_tech}) > maxProgramLines)
            add(WeldDoubt::TooLong, 0, -1);
        return m_doubts + programs.doubts;
    }

private:
    void geometry();
    void rows();
    void backward();
    void ring();
    double across(int row) const // mm, the way of an arc's third coordinate
    {
        const int third = planeColumns(m_contour.rows[row].frame.plane).third;
        return std::fabs(double(end(row)[third]) - double(m_contour.rows[row].coords[third]));
    }
    bool turned(int row) const;
    bool counts(int row) const { return row + 1 < m_contour.rows.size() || closesByFrame(m_contour); }
    const QList<float>& end(int row) const
    {
        return m_contour.rows[(row + 1) % m_contour.rows.size()].coords;
    }
    Direction direction(int row, const PlaneColumns& plane, bool otherSide) const;
    void add(WeldDoubt::Kind kind, double path, int row) { m_doubts.append({kind, float(path), row}); }

    const WeldContour& m_contour;
    const QVector<TechRow>& m_tech;
    const bool m_frames;
    QVector<WeldDoubt> m_doubts;
};

void Proof::geometry()
{
    double path = 0;
    for (int row = 0; row < m_contour.rows.size() && m_contour.rows.size() > 1; ++row) {
        if (!counts(row))
            continue;
        const QList<float>& from = m_contour.rows[row].coords;
        if (!m_frames) {
            if (!m_contour.schema->validDistance(from, end(row)))
                add(WeldDoubt::NoArc, path, row);
            continue;
        }
        const double length = frameLength(m_contour, row, from, end(row));
        const int type = m_contour.rows[row].frame.type;
        if (!std::isfinite(length) || (type == Frame::Arc && !(m_contour.rows[row].frame.radius > 0)))
            add(WeldDoubt::NoArc, path, row);
        else if (type == Frame::Arc && turned(row))
            add(WeldDoubt::ArcTurned, path, row);
        else if (type == Frame::Arc && across(row) > steep * length)
            add(WeldDoubt::SteepArc, path, row);
        else if (!(length > 0) && m_contour.schema->distance(from, end(row)) > noSeamShows)
            add(WeldDoubt::NoWay, path, row);
        path += std::isfinite(length) ? length : 0;
    }
}

void Proof::rows()
{
    int before = -1;
    int last = m_tech.size() - 1;
    while (last > 0 && !m_tech[last].on)
        --last;
    for (int i = 0; i <= last; ++i) {
        const TechRow& row = m_tech[i];
        if (i > 0 && !row.on)
            continue;
        if (before >= 0) {
            const TechRow& p = m_tech[before];
            const bool way = std::fabs(double(row.path - p.path)) > 0;
            if (way && !(p.speed > 0))
                add(WeldDoubt::NoSpeed, double(p.path), before);
            if (!way && i < last && (row.Ir != p.Ir || row.If != p.If))
                add(WeldDoubt::CurrentSteps, double(row.path), i);
        }
        before = i;
    }
}

// The table counts the way out and back. Once the machine is out, it goes straight to the second point.
void Proof::backward()
{
    const double out = passLength(m_contour) / 2;
    const auto burns = [&](int i) {
        return m_tech[i].on && double(m_tech[i].path) > out + noSeamShows &&
               (m_tech[i].Ir > 0 || m_tech[i - 1].Ir > 0);
    };
    for (int i = 1; i < m_tech.size(); ++i) {
        if (burns(i))
            return add(WeldDoubt::Backward, out, i);
    }
}

// The lag grows with time and is nothing again behind each stop.
void Proof::ring()
{
    const double error = ringRatioError(m_contour);
    double seconds = 0;
    TechRow before = m_tech.value(0);
    before.path = 0;
    for (int i = 1; i < m_tech.size() && error != 0; ++i) {
        const TechRow& row = m_tech[i];
        const bool ends = row.stop || i + 1 == m_tech.size() || m_tech[i + 1].stop;
        seconds = row.stop ? 0 : seconds;
        if (!row.on)
            continue;
        const double way = std::fabs(double(row.path) - double(before.path));
        const bool burns = row.Ir > 0 || before.Ir > 0;
        const int passes = burns || row.If != before.If ? 0 : passesLeftOut(way, double(m_contour.length));
        seconds +=
            before.speed > 0 ? 60 * (way - passes * double(m_contour.length)) / double(before.speed) : 0;
        const double lag = error * seconds; // s, above 0 where the part is ahead
        const double fastest = double(std::max(before.speed, i + 1 < m_tech.size() ? row.speed : 0));
        if (burns && (std::fabs(lag) * fastest / 60 > noRingShows || (ends && lag > standsShort)))
            return add(WeldDoubt::RingRatio, double(row.path), i);
        before = row;
    }
}

Direction Proof::direction(int row, const PlaneColumns& plane, bool otherSide) const
{
    const Frame& frame = m_contour.rows[row].frame;
    const QList<float>& a = m_contour.rows[row].coords;
    const QList<float>& b = end(row);
    const double dx = double(b[plane.first]) - double(a[plane.first]);
    const double dy = double(b[plane.second]) - double(a[plane.second]);
    const double along = std::atan2(dy, dx);
    if (frame.type != Frame::Arc)
        return {along, along};
    // A counter-clockwise arc leaves to the right of its chord.
    const double half = std::asin(std::min(1.0, std::hypot(dx, dy) / (2 * double(frame.radius))));
    const bool left = ((frame.direction == 1) == m_contour.moveForward) != otherSide;
    return left ? Direction{along - half, along + half} : Direction{along + half, along - half};
}

// The machine turns every arc around after a walk backward, and an inversion leaves the direction as it was
// stored. Which side was meant shows where the arc passes smoothly into its neighbours: turned around it
// would, and as it runs it has a kink there. An arc that runs the way its row says is doubted for nothing
// else.
bool Proof::turned(int row) const
{
    const int count = m_contour.rows.size();
    const Frame& frame = m_contour.rows[row].frame;
    const PlaneColumns plane = planeColumns(frame.plane);
    int wellAsItIs = 0, betterTurned = 0;
    const auto see = [&](int first, int second) {
        for (const int neighbour : {first, second}) {
            const Frame& other = m_contour.rows[neighbour].frame;
            if (neighbour != row && other.type == Frame::Arc && other.plane != frame.plane)
                return;
        }
        // A neighbour that was stored with this arc turns with it.
        const int neighbour = first == row ? second : first;
        const Frame& other = m_contour.rows[neighbour].frame;
        const bool both = other.type == Frame::Arc;
        const auto angle = [&](bool otherSide) {
            return std::fabs(
                std::remainder(direction(second, plane, otherSide && (second == row || both)).out -
                                   direction(first, plane, otherSide && (first == row || both)).in,
                               2 * M_PI));
        };
        wellAsItIs += angle(false) < kink ? 1 : 0;
        betterTurned += angle(false) > kink && angle(true) < smooth ? 1 : 0;
    };
    const bool closes = closesByFrame(m_contour);
    if (count > 2 && (row > 0 || closes))
        see((row + count - 1) % count, row);
    if (count > 2 && (row + 2 < count || closes))
        see(row, (row + 1) % count);
    return m_contour.moveForward ? betterTurned > 0 && wellAsItIs == 0 : betterTurned > 0 || wellAsItIs == 0;
}

} // namespace

QVector<WeldDoubt> weldProof(const WeldTables& tables, const MotionPrograms& programs)
{
    return Proof(tables).found(programs);
}

QStringList proofLines(const QVector<WeldDoubt>& doubts)
{
    QStringList lines;
    QVector<int> seen(WeldDoubt::TooLong + 1);
    for (const WeldDoubt& doubt : doubts) {
        if (seen[doubt.kind]++ > 0)
            continue;
        // Of rows that are cut the first place has always been told alone.
        const auto others = std::count_if(doubts.begin(), doubts.end(),
                                          [&](const WeldDoubt& other) { return other.kind == doubt.kind; }) -
                            1;
        const bool alone = others == 0 || doubt.kind <= WeldDoubt::OutOfStep;
        lines.append(doubtText(doubt) +
                     (alone ? QString() : QStringLiteral(" (и ещё мест: %1)").arg(others)));
    }
    return lines;
}
