#include "weldprogram.h"

#include "programwriter.h"
#include "ringmove.h"
#include "schema.h"
#include "weldgeometry.h"

namespace {

// Moves along a contour without beam: one speed, no cuts, and no meeting with channel 3.
class MoveBuilder
{
public:
    MoveBuilder(const WeldContour& contour, double speed, const QString& feed, bool direction)
        : m_rows(contour.rows)
        , m_schema(*contour.schema)
        , m_ring(m_schema.circle())
        , m_speed(speed)
        , m_feed(feed)
        , m_direction(direction)
        , ch1(1, &m_block)
        , ch2(2, &m_block)
    {
        ch1.lines(m_schema.gCodeInitChan1(&m_block));
        if (m_ring)
            ch2.lines(m_schema.gCodeInitChan2(&m_block));
    }

    bool ring() const { return m_ring; }

    void frame(const QList<float>& from, int row)
    {
        const QList<float>& to = m_rows[row].coords;
        if (!m_ring) {
            ch1.block("G90 " + m_schema.gCodePoint(to, m_direction) + " F" + m_feed);
            return;
        }
        const RingMove ring = ringMove(m_schema, to, from, m_speed, m_feed);
        ch2.block(ring.turn);
        if (!ring.manipulator.isEmpty())
            ch1.block(ring.manipulator);
    }

    void frame(int fromRow, int row) { frame(m_rows[fromRow].coords, row); }

    void end1()
    {
        ch1.lines(m_schema.gCodeUninitChan1(&m_block));
        ch1.block("M30");
    }

    void end2()
    {
        if (!m_ring)
            return;
        ch2.lines(m_schema.gCodeUninitChan2(&m_block));
        ch2.block("M30");
    }

    MotionPrograms programs() const { return {ch1.text(), m_ring ? ch2.text() : QString()}; }

private:
    const QVector<ContourRow>& m_rows;
    const Schema& m_schema;
    const bool m_ring;
    const double m_speed; // mm/min
    const QString m_feed; // the same as the programs show it
    const bool m_direction;
    int m_block = 2;

public:
    ProgramWriter ch1;
    ProgramWriter ch2;
};

} // namespace

MotionPrograms testMovePrograms(const WeldContour& contour, float speed)
{
    MoveBuilder move(contour, double(speed), feedText(double(speed)), circleStart(contour).increasing);
    if (move.ring()) {
        // The blank at the end is part of the text that the controller has always been given.
        for (const char* statement : {"REV(ALL)", "WAIT", "G4 F0.5 "})
            move.ch2.block(statement);
        for (const char* statement : {"WREV(2)", "WAIT", "SEV(1)", "WAIT"})
            move.ch1.block(statement);
        for (const char* statement : {"SEV(2)", "WAIT", "WEV(1)", "WAIT"})
            move.ch2.block(statement);
    }

    const int count = contour.rows.size();
    for (int pass = 0; pass < passCount(contour); ++pass) {
        for (int row = 1; row < count; ++row)
            move.frame(row - 1, row);
        if (closesByFrame(contour) && count > 0)
            move.frame(count - 1, 0);
    }

    move.ch1.block("REV(ALL)");
    move.ch1.wait();
    move.end1();
    move.end2();
    return move.programs();
}

MotionPrograms navigationPrograms(const WeldContour& contour, int currentPoint, int target,
                                  const QList<float>& position, const QString& speedText)
{
    MoveBuilder move(contour, double(speedText.toFloat()), speedText, !contour.moveForward);
    if (move.ring())
        move.ch2.block("G4 F0.5 ");

    int count = 0;
    const auto reached = [&](int row) {
        move.ch1.wait();
        move.ch1.variable(++count, "1", QString::number(row));
    };
    const int last = contour.rows.size() - 1;
    if (contour.closed && last > 0 && currentPoint == last && target == 0) {
        move.frame(last, 0);
        reached(0);
    } else if (target >= 0 && target <= last) {
        const int step = contour.moveForward ? 1 : -1;
        const int from = currentPoint >= 0 && currentPoint <= last ? currentPoint : target;
        move.frame(position, from);
        reached(from);
        for (int row = from; row != target && row + step >= 0 && row + step <= last; row += step) {
            move.frame(row, row + step);
            reached(row + step);
        }
    }

    move.end2();
    move.end1();
    return move.programs();
}
