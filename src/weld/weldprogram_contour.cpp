#include "weldprogram.h"

#include "programwriter.h"
#include "ringmove.h"
#include "schema.h"
#include "weldgeometry.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double noSeamShows = 0.1; // mm, by which the beam may be beside its place

bool finite(const QList<float>& point)
{
    return std::all_of(point.begin(), point.end(), [](float c) { return std::isfinite(c); });
}

// Walks the contour frame by frame, pass by pass, and cuts each frame where a technology row falls on it,
// so that every change of speed and every stop comes at its path.
class ContourBuilder
{
public:
    ContourBuilder(const WeldTables& tables, WeldStage& stage)
        : m_contour(tables.contour)
        , m_rows(tables.contour.rows)
        , m_tech(tables.tech)
        , m_schema(*tables.contour.schema)
        , m_ring(m_schema.circle())
        , m_round(m_ring || m_schema.rotate())
        , m_stage(stage)
        , m_ch1(1, &m_block)
        , m_ch2(2, &m_block)
        , m_path(tables.contour)
        , m_start(circleStart(tables.contour))
        , m_passes(passCount(tables.contour))
        , m_taken(m_tech.value(0))
    {}

    MotionPrograms build()
    {
        m_stage.stopsSeen = 0;
        head();
        walk();
        doubtRest();
        tail();
        return {m_ch1.text(), m_ring ? m_ch2.text() : QString(), m_doubt, m_doubts};
    }

private:
    struct Stretch
    {
        int row;     // the contour row that the frame leads to; 0 for the closing frame
        int leaving; // the row that describes the frame
        QList<float> from;
        QList<float> to;
        double speed;    // of the way from `from` on
        double path = 0; // at `from`
        // Moves left out before `from`, which run with the feed of the next one: their way, mm, and its time
        // by the table, min, up to the row at `cutPath`.
        double leftOutWay = 0, leftOutTime = 0, cutPath = 0;
        int cutRow = -1;
        int backRow = -1; // the row that went back
    };

    void head();
    void walk();
    void tail();

    void runFrame(int row);
    void advance(int row);
    void takeRows(Stretch& frame);
    void cut(Stretch& frame, const TechRow& row);
    void doubtCut(Stretch& frame, const TechRow& row, const QList<float>& mid, bool cuts);
    void doubtMove(Stretch& frame, const QList<float>& to, double path, int row);
    void doubtStop(const Stretch& frame);
    void doubtRest();
    void doubt(WeldDoubt::Kind kind, double path, int row);
    void leaveOutPasses(const TechRow& row);

    void move(const Stretch& frame, const QList<float>& to);
    void moveArc(const QList<float>& to, const Frame& frame, const QString& feed);
    void synchronize();
    void axisMoving(bool moving) { m_ch1.variable(++m_variables, "AXISMOVING?", moving ? "TRUE" : "FALSE"); }

    const WeldContour& m_contour;
    const QVector<ContourRow>& m_rows;
    const QVector<TechRow>& m_tech;
    const Schema& m_schema;
    const bool m_ring;
    const bool m_round;
    WeldStage& m_stage;

    int m_block = 2;
    int m_variables = 0;
    ProgramWriter m_ch1;
    ProgramWriter m_ch2;

    const WeldPath m_path;
    const CircleStart m_start;
    const int m_passes;
    int m_pass = 0;
    double m_dist = 0;   // path at the end of the frame being written
    TechRow m_taken;     // technology row in force
    int m_techRow = 1;   // next technology row to look at
    int m_leftOut = 0;   // the row that passes were left out for, each row once
    int m_event = 4;     // of the next stop
    bool m_hold = false; // a stop was written, its next row not yet reached
    QString m_repeat1;   // last move of each channel, to stand in its place again after a stop
    QString m_repeat2;
    WeldDoubt m_doubt; // the worst so far
    QVector<WeldDoubt> m_doubts;
    WeldDoubt m_closingStop; // the last stop in a closing frame
};

// The channels meet here: channel 3 reports its beam axes, channel 2 its part, then event 1 starts all. A
// program of a later stage has the same text and jumps over the meeting.
void ContourBuilder::head()
{
    const bool fromStart = m_stage.stage == 1;
    const auto jump = [&](int ahead, int restart) {
        return QString("GOTO N%1").arg(fromStart ? m_block + ahead : restart);
    };
    m_ch1.lines(m_schema.gCodeInitChan1(&m_block));
    if (m_ring) {
        m_ch1.block(jump(4, m_stage.restartBlock1));
        m_ch2.lines(m_schema.gCodeInitChan2(&m_block));
        m_ch2.block(jump(5, m_stage.restartBlock2));
        for (const char* statement : {"G4 F0.5", "WREV(3)", "WAIT", "WREV(2)"})
            m_ch1.block(statement);
        for (const char* statement : {"SEV(2)", "WAIT", "WEV(1)", "WAIT"})
            m_ch2.block(statement);
    } else {
        m_ch1.block(jump(1, m_stage.restartBlock1));
        m_ch1.block("WREV(3)");
    }
    m_ch1.block("WAIT");
    m_ch1.block("SEV(1)");
    axisMoving(false);
    m_ch1.block("WAIT");
}

// A backward closure has no frame of its own: the next pass begins with the absolute move to row 1.
void ContourBuilder::walk()
{
    for (m_pass = 0; m_pass < m_passes; ++m_pass) {
        for (int row = 1; row < m_rows.size() && m_pass < m_passes; ++row)
            runFrame(row);
        if (closesByFrame(m_contour) && !m_rows.isEmpty() && m_pass < m_passes)
            runFrame(0);
    }
}

void ContourBuilder::tail()
{
    m_ch1.block("REV(ALL)");
    m_ch1.wait();
    m_ch1.variable(1, "1", QString::number(m_contour.closed ? 0 : std::max(0, m_rows.size() - 1)));
    m_ch1.lines(m_schema.gCodeUninitChan1(&m_block));
    m_ch1.block("M30");
    if (m_ring) {
        m_ch2.lines(m_schema.gCodeUninitChan2(&m_block));
        m_ch2.block("M30");
    }
}

void ContourBuilder::runFrame(int row)
{
    const int leaving = row == 0 ? m_rows.size() - 1 : row - 1;
    Stretch frame{row, leaving, m_rows[leaving].coords, m_rows[row].coords, double(m_taken.speed), m_dist};
    advance(row);
    takeRows(frame);
    if (m_pass >= m_passes)
        return;
    if (m_ring && frame.to[0] >= 360.0f)
        frame.to[0] = std::fmod(frame.to[0], 360.0f);
    move(frame, frame.to);
    doubtMove(frame, frame.to, m_dist, frame.backRow);
}

// The closing frame of a round contour ends at whole turns, so that passes do not add up rounding, and a ring
// whose row 0 stands at 360 instead of 0 counts no pass more.
void ContourBuilder::advance(int row)
{
    if (m_round && row == 0)
        m_dist = (m_ring ? double(m_schema.D()) * M_PI : double(m_contour.length)) * (m_pass + 1);
    else
        m_dist += m_path.frame(row);
}

void ContourBuilder::takeRows(Stretch& frame)
{
    const bool closing = frame.row == 0;
    for (; m_techRow < m_tech.size(); ++m_techRow) {
        const TechRow& row = m_tech[m_techRow];
        if (!row.on) {
            if (row.stop) {
                doubtStop(frame);
                synchronize();
                m_hold = true;
                // A stop in the closing frame takes one event only: the numbers of seams already proved on
                // the machine depend on it.
                m_event += closing ? 1 : 2;
            }
            continue;
        }
        leaveOutPasses(row);
        if (m_pass >= m_passes)
            return;
        const double p = double(row.path);
        if (std::fabs(p - m_dist) < samePlaceAt(p)) {
            m_taken = row; // its speed holds from the next frame
            ++m_techRow;
            return;
        }
        if (!(m_dist > p))
            return;
        cut(frame, row);
    }
}

// Coordinate 0 alone decides whether the cut is a move of its own. Where it stands still the move is left
// out and its stretch runs with the feed of the next: seams along one axis have always been written so. A row
// at 0, where every table starts, cuts nothing either, in whatever frame it is met.
void ContourBuilder::cut(Stretch& frame, const TechRow& row)
{
    const double p = double(row.path);
    const QList<float> mid = std::fabs(p) > 0 ? m_path.interCoords(frame.row, p, m_start) : frame.from;
    if (finite(mid)) {
        const bool cuts = frame.row == 0 || std::fabs(double(mid[0]) - double(frame.from[0])) > samePlace;
        if (cuts)
            move(frame, mid);
        if (p < frame.path - samePlace)
            frame.backRow = m_techRow;
        doubtCut(frame, row, mid, cuts);
        frame.path = p;
        frame.from = mid;
    }
    if (m_hold) {
        m_ch1.wait();
        axisMoving(false);
        m_hold = false;
    }
    m_taken = row;
    frame.speed = double(row.speed);
}

// The beam counts the way by time and table; here is what the machine makes of it.
void ContourBuilder::doubtCut(Stretch& frame, const TechRow& row, const QList<float>& mid, bool cuts)
{
    const double p = double(row.path);
    if (m_rows[frame.leaving].frame.type == Frame::Arc && !m_round && cuts &&
        besideArc(m_contour, frame.leaving, mid) > noSeamShows)
        doubt(WeldDoubt::OffArc, p, m_techRow);
    if (cuts) {
        doubtMove(frame, mid, p, m_techRow);
    } else if (p < frame.path - samePlace) {
        doubt(WeldDoubt::OutOfStep, p, m_techRow);
    } else if (const double way = m_schema.distance(frame.from, mid); way > 0) {
        frame.leftOutWay += way;
        frame.leftOutTime += way / frame.speed;
        frame.cutPath = p;
        frame.cutRow = m_techRow;
    }
}

// Back goes a straight line, or an arc that bulges to the other side. Prolonged, a frame may pass half a
// turn, and the machine takes the shorter way.
void ContourBuilder::doubtMove(Stretch& frame, const QList<float>& to, double path, int row)
{
    if (std::fabs(frame.leftOutTime * frame.speed - frame.leftOutWay) > noSeamShows)
        doubt(WeldDoubt::SpeedKept, frame.cutPath, frame.cutRow);
    frame.leftOutWay = frame.leftOutTime = 0;
    if (frame.backRow < 0)
        return;
    const Frame& leaving = m_rows[frame.leaving].frame;
    double way = m_schema.distance(frame.from, to);
    double beside = 0;
    if (m_schema.rotate() || leaving.type == Frame::Arc) {
        const double r = double(m_schema.rotate() ? m_schema.R() : leaving.radius);
        const PlaneColumns plane = planeColumns(m_schema.rotate() ? m_schema.Aux() : leaving.plane);
        const double chord = std::hypot(double(to[plane.first]) - double(frame.from[plane.first]),
                                        double(to[plane.second]) - double(frame.from[plane.second]));
        way = arcOverChord(chord, float(2 * r));
        beside = 2 * (r - std::sqrt(std::max(0.0, r * r - chord * chord / 4)));
    }
    if (!(std::fabs(std::fabs(path - frame.path) - way) < noSeamShows))
        return doubt(WeldDoubt::OutOfStep, path, row);
    if (path > frame.path)
        return;
    const QList<float> place = m_path.place(path, m_start);
    if (m_ring)
        beside = m_schema.distance(to, place);
    for (int i = m_ring ? 1 : 0; i < place.size(); ++i)
        beside = std::max(beside, std::fabs(double(to[i]) - double(place[i])));
    if (beside > noSeamShows)
        doubt(WeldDoubt::OffSeam, path, row);
}

// The machine stands where the row before the stop was cut, and channel 3 where it was told to wait.
void ContourBuilder::doubtStop(const Stretch& frame)
{
    const double p = double(m_taken.path);
    if (m_taken.Ir > 0)
        doubt(WeldDoubt::StopWithBeam, p, m_techRow);
    if (frame.leftOutWay > noSeamShows)
        doubt(WeldDoubt::StopShort, p, m_techRow);
    if (m_closingStop.kind != WeldDoubt::None)
        doubt(m_closingStop.kind, double(m_closingStop.path), m_closingStop.row);
    m_closingStop = {};
    if (frame.row == 0)
        m_closingStop = {WeldDoubt::StopInClosing, m_taken.path, m_techRow};
}

// The seam is at its end, and rows are left: some go back, others come when nothing moves any more.
void ContourBuilder::doubtRest()
{
    const bool passOver = m_leftOut > 0 && m_pass >= m_passes;
    const bool moved = !m_repeat1.isEmpty() || !m_repeat2.isEmpty();
    if (passOver && !moved)
        doubt(WeldDoubt::NoMotion, double(m_tech[m_leftOut].path), m_leftOut);
    TechRow before = m_taken;
    bool ended = false;
    for (int i = m_techRow; i < m_tech.size(); ++i) {
        const TechRow& row = m_tech[i];
        if (row.stop)
            doubt(WeldDoubt::StopNotMet, double(before.path), i);
        if (!row.on)
            continue;
        const double p = double(row.path);
        if (p < double(before.path) - samePlace)
            doubt(WeldDoubt::OutOfStep, p, i);
        const bool behind = passOver ? i > m_leftOut : p > m_dist + noSeamShows;
        if (behind && (row.Ir > 0 || before.Ir > 0) && !ended) {
            doubt(WeldDoubt::EndsEarly, passOver ? double(before.path) : m_dist, i);
            ended = true;
        }
        before = row;
    }
}

void ContourBuilder::doubt(WeldDoubt::Kind kind, double path, int row)
{
    m_doubts.append({kind, float(path), row});
    if (kind <= WeldDoubt::OutOfStep && kind > m_doubt.kind)
        m_doubt = m_doubts.last();
}

// A long pause without beam costs no idle turns. What is left out here is what the pause of channel 3 is
// shortened by, and it is left out only where that channel pauses: a ramp of the current or the focus down to
// the row takes its whole way. The machine stands meanwhile and goes on in the same frame of a later pass.
void ContourBuilder::leaveOutPasses(const TechRow& row)
{
    if (!m_round || row.Ir != 0.0f || m_taken.Ir != 0.0f || row.If != m_taken.If || m_leftOut == m_techRow)
        return;
    const double length = double(m_contour.length);
    const int passes = passesLeftOut(double(row.path) - double(m_taken.path), length);
    if (passes == 0)
        return;
    m_leftOut = m_techRow;
    m_pass += passes;
    m_dist += passes * length;
}

void ContourBuilder::move(const Stretch& stretch, const QList<float>& to)
{
    const QString feed = feedText(stretch.speed);
    if (m_ring) {
        const RingMove ring = ringMove(m_schema, to, stretch.from, stretch.speed, feed);
        if (!ring.manipulator.isEmpty())
            m_ch1.block(ring.manipulator);
        if (ring.follows)
            m_repeat1 = ring.manipulator;
        m_ch2.block(ring.turn);
        m_repeat2 = ring.turn;
        return;
    }
    const Frame& frame = m_rows[stretch.leaving].frame;
    if (m_schema.rotate())
        m_ch1.block("G90 " + m_schema.gCodePoint(to, m_start.increasing) + " F" + feed);
    else if (frame.type < Frame::Arc)
        m_ch1.block("G90 " + m_schema.gCodePoint(to, false) + " F" + feed);
    else
        moveArc(to, frame, feed);
    // After a stop the machine stands in this place already: the way to it does not matter.
    m_repeat1 = "G90 " + m_schema.gCodePoint(to, m_schema.rotate()) + " F" + feed;
}

// After a navigation backward the arcs turn the other way: the flag stays as the operator's last step left
// it.
void ContourBuilder::moveArc(const QList<float>& to, const Frame& frame, const QString& feed)
{
    const auto word = [&](const char* letter, float value) {
        return QLatin1String(letter) + ncFixed(double(value), 2);
    };
    const QString radius = word(" R", frame.radius);
    const bool counterClockwise = (frame.direction == 1) == m_contour.moveForward;
    QString plane, words;
    switch (frame.plane) {
    case 1:
        plane = "G18";
        words = word("x=", to[0]) + word(" z=", to[2]) + radius + word(" y=", to[1]);
        break;
    case 2:
        plane = "G19";
        words = word("y=", to[1]) + word(" z=", to[2]) + radius + word(" x=", to[0]);
        break;
    default:
        plane = "G17";
        words = word("x=", to[0]) + word(" y=", to[1]) + radius + word(" z=", to[2]);
        break;
    }
    m_ch1.block(plane);
    m_ch1.block((counterClockwise ? "G90 G3 " : "G90 G2 ") + words + " F" + feed);
}

// A technological stop ends the programs here. What follows is reached only by the jump of a later stage,
// whose event then lets channel 3 go on.
void ContourBuilder::synchronize()
{
    const bool entry = ++m_stage.stopsSeen == m_stage.stage;
    const QString first = QString::number(m_event);
    const QString second = QString::number(m_event + 1);

    m_ch1.block("REV(ALL)");
    m_ch1.block("M30");
    if (entry)
        m_stage.restartBlock1 = m_block;
    if (!m_repeat1.isEmpty()) {
        m_ch1.block("WAIT");
        axisMoving(true);
        m_ch1.block(m_repeat1);
        m_ch1.wait();
        axisMoving(false);
    }
    if (m_ring) {
        m_ch1.block("WREV(" + first + ')');
        m_ch1.block("WAIT");
        m_ch1.block("SEV(" + second + ')');
    } else {
        m_ch1.block("SEV(" + first + ')');
    }
    axisMoving(true);
    m_ch1.block("WAIT");

    if (!m_ring)
        return;
    m_ch2.lines(m_schema.gCodeUninitChan2(&m_block));
    m_ch2.block("M30");
    if (entry)
        m_stage.restartBlock2 = m_block;
    if (!m_repeat2.isEmpty())
        m_ch2.block(m_repeat2);
    m_ch2.block("SEV(" + first + ')');
    m_ch2.block("WAIT");
    m_ch2.block("WEV(" + second + ')');
}

} // namespace

MotionPrograms contourPrograms(const WeldTables& tables, WeldStage& stage)
{
    return ContourBuilder(tables, stage).build();
}
