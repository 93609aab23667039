#include "weldprogram.h"

#include "programwriter.h"
#include "ringmove.h"
#include "schema.h"
#include "weldgeometry.h"

namespace {

// Moves along a contour without beam: one speed, no cuts, and no meeting with channel 3. One program each.
class MoveBuilder
{
public:
    // `speed` in mm/min, `feed` the same as the programs show it.
    MoveBuilder(const WeldContour& contour, double speed, const QString& feed, bool direction)
        : m_contour(contour)
        , m_rows(contour.rows)
        , m_schema(*contour.schema)
        , m_ring(m_schema.circle())
        , m_speed(speed)
        , m_feed(feed)
        , m_direction(direction)
        , m_ch1(1, &m_block)
        , m_ch2(2, &m_block)
    {
        m_ch1.lines(m_schema.gCodeInitChan1(&m_block));
        if (m_ring)
            m_ch2.lines(m_schema.gCodeInitChan2(&m_block));
    }

    MotionPrograms testMove()
    {
        if (m_ring) {
            // The blank at the end is part of the text that the controller has always been given.
            for (const char* statement : {"REV(ALL)", "WAIT", "G4 F0.5 "})
                m_ch2.block(statement);
            for (const char* statement : {"WREV(2)", "WAIT", "SEV(1)", "WAIT"})
                m_ch1.block(statement);
            for (const char* statement : {"SEV(2)", "WAIT", "WEV(1)", "WAIT"})
                m_ch2.block(statement);
        }

        const int count = m_rows.size();
        for (int pass = 0; pass < passCount(m_contour); ++pass) {
            for (int row = 1; row < count; ++row)
                frame(row - 1, row);
            if (closesByFrame(m_contour) && count > 0)
                frame(count - 1, 0);
        }

        m_ch1.block("REV(ALL)");
        m_ch1.wait();
        end1();
        end2();
        return programs();
    }

    MotionPrograms navigation(int currentPoint, int target, const QList<float>& position)
    {
        if (m_ring)
            m_ch2.block("G4 F0.5 ");

        const int last = m_rows.size() - 1;
        if (m_contour.closed && last > 0 && currentPoint == last && target == 0) {
            frame(last, 0);
            reached(0);
        } else if (target >= 0 && target <= last) {
            const int step = m_contour.moveForward ? 1 : -1;
            const int from = currentPoint >= 0 && currentPoint <= last ? currentPoint : target;
            frame(position, from);
            reached(from);
            for (int row = from; row != target && row + step >= 0 && row + step <= last; row += step) {
                frame(row, row + step);
                reached(row + step);
            }
        }

        end2();
        end1();
        return programs();
    }

private:
    void frame(const QList<float>& from, int row)
    {
        const QList<float>& to = m_rows[row].coords;
        if (!m_ring) {
            m_ch1.block("G90 " + m_schema.gCodePoint(to, m_direction) + " F" + m_feed);
            return;
        }
        const RingMove ring = ringMove(m_schema, to, from, m_speed, m_feed);
        m_ch2.block(ring.turn);
        if (!ring.manipulator.isEmpty())
            m_ch1.block(ring.manipulator);
    }

    void frame(int fromRow, int row) { frame(m_rows[fromRow].coords, row); }

    void reached(int row)
    {
        m_ch1.wait();
        m_ch1.variable(++m_reached, "1", QString::number(row));
    }

    void end1()
    {
        m_ch1.lines(m_schema.gCodeUninitChan1(&m_block));
        m_ch1.block("M30");
    }

    void end2()
    {
        if (!m_ring)
            return;
        m_ch2.lines(m_schema.gCodeUninitChan2(&m_block));
        m_ch2.block("M30");
    }

    MotionPrograms programs() const { return {m_ch1.text(), m_ring ? m_ch2.text() : QString()}; }

    const WeldContour& m_contour;
    const QVector<ContourRow>& m_rows;
    const Schema& m_schema;
    const bool m_ring;
    const double m_speed;
    const QString m_feed;
    const bool m_direction;
    int m_block = 2;
    int m_reached = 0; // points that have told that they are reached
    ProgramWriter m_ch1;
    ProgramWriter m_ch2;
};

} // namespace

MotionPrograms testMovePrograms(const WeldContour& contour, float speed)
{
    return MoveBuilder(contour, double(speed), feedText(double(speed)), circleStart(contour).increasing)
        .testMove();
}

MotionPrograms navigationPrograms(const WeldContour& contour, int currentPoint, int target,
                                  const QList<float>& position, const QString& speedText)
{
    return MoveBuilder(contour, double(speedText.toFloat()), speedText, !contour.moveForward)
        .navigation(currentPoint, target, position);
}
