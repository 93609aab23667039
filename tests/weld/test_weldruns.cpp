#include "weldprogram.h"

#include "nctesthost.h"
#include "weldcheck.h"
#include "weldmaker.h"

#include <QRegularExpression>
#include <QtTest>

#include <algorithm>
#include <cmath>
#include <functional>

using plant::ChannelState;

namespace {

constexpr double step = 0.05; // s

// Starts programs as the console does and watches the axes.
class WeldRun
{
public:
    explicit WeldRun(const WeldTables& tables)
        : bench(step)
        , m_tables(tables)
        , m_check(tables, step)
    {
        place(tables.contour.rows.first().coords);
        bench.host.onPosition = [this](int channel) { measure(channel); };
    }

    void place(const QList<float>& coords)
    {
        for (int i = 0; i < coords.size(); ++i)
            bench.host.at(axes()[i]) = double(coords[i]);
    }

    bool standsAt(const QList<float>& coords)
    {
        for (int i = 0; i < coords.size(); ++i) {
            const double off = bench.host.at(axes()[i]) - double(coords[i]);
            if (std::abs(axes()[i] == "V" ? std::remainder(off, 360.0) : off) >= 0.006)
                return false;
        }
        return true;
    }

    void fail(const QString& text)
    {
        if (m_trouble.isEmpty())
            m_trouble = text;
    }

    bool start(int channel, const QString& text)
    {
        if (text.contains("inf") || text.contains("nan"))
            fail(QString("channel %1: a number is none").arg(channel));
        m_text[channel] = text;
        if (!bench.start(channel, text))
            fail(QString("channel %1 refused: %2").arg(channel).arg(bench.nc.error(channel)));
        return m_trouble.isEmpty();
    }

    void moveTo(const MotionPrograms& programs)
    {
        if (ring() && start(2, programs.channel2))
            bench.forSeconds(0.5);
        if (start(1, programs.channel1) && !bench.untilDone(20000))
            fail("does not end");
        noErrors();
    }

    void noErrors()
    {
        for (int channel = 1; channel <= 3; ++channel) {
            if (!bench.nc.error(channel).isEmpty())
                fail(QString("channel %1: %2").arg(channel).arg(bench.nc.error(channel)));
        }
        const QStringList deadlocks = bench.host.told("deadlock");
        if (!deadlocks.isEmpty())
            fail(deadlocks.first());
        for (int event = 1; event < 30; ++event) {
            if (bench.nc.event(event) && bench.nc.state(3) == ChannelState::Idle)
                fail(QString("event %1 is left set").arg(event));
        }
    }

    // How closely a weld is looked at: that it runs; that it keeps to the contour; that its channels take the
    // same time; that besides the beam has the current of the path, counted from the start.
    enum Look { Runs = 0, OnContour = 1, InTime = 2, InStep = 7 };

    // A whole weld with all its stages.
    void weld(int lookAt)
    {
        m_lookAt = lookAt;
        start(3, technologyProgram(m_tables));
        bench.forSeconds(1);
        for (WeldStage stage; m_trouble.isEmpty(); ++stage.stage) {
            runStage(stage);
            if (bench.nc.state(3) == ChannelState::Idle)
                break;
            if (stage.stopsSeen < stage.stage)
                fail(QString("channel 3 waits for event %1 after the end").arg(bench.nc.waitingFor(3)));
        }
        noErrors();
        // A pause of whole passes may leave out the rest of the program: the machine then stays where it was.
        if (!m_check.passesAreLeftOut())
            expectAtEnd(closesByFrame(m_tables.contour));
        if (m_off > 0.06 && lookAt & OnContour)
            fail(QString("leaves the contour by %1 mm").arg(m_off));
    }

    void expectAtEnd(bool atFirst)
    {
        const QVector<ContourRow>& rows = m_tables.contour.rows;
        if (!standsAt(atFirst ? rows.first().coords : rows.last().coords))
            fail("does not stand at its end");
    }

    QString trouble() const
    {
        if (m_trouble.isEmpty())
            return {};
        return m_trouble + "\n--- channel 1\n" + m_text[1] + "\n--- channel 2\n" + m_text[2] +
               "\n--- channel 3\n" + m_text[3];
    }

    NcBench bench;

private:
    bool ring() const { return m_tables.contour.schema->circle(); }
    QStringList axes() const { return ring() ? QStringList{"V", "X", "Y", "Z"} : QStringList{"X", "Y", "Z"}; }

    void runStage(WeldStage& stage)
    {
        const MotionPrograms programs = contourPrograms(m_tables, stage);
        if (ring()) {
            start(2, programs.channel2);
            bench.forSeconds(1);
        }
        if (!start(1, programs.channel1))
            return;
        m_motionEnd = m_turnEnd = m_beamEnd = 0;
        m_at = {bench.host.at("X"), bench.host.at("Y"), bench.host.at("Z")};
        m_lines = programs.channel1.split('\n');
        m_stoppedFor = bench.nc.waitingFor(3);
        const double begun = bench.host.time;
        if (!bench.untilDone(20000, {1, 2}, [this] { look(); }))
            fail("does not end");
        while (bench.nc.state(3) == ChannelState::Running && bench.nc.waitingFor(3) == 0) {
            bench.step();
            look();
        }
        if (bench.nc.state(3) == ChannelState::Running && !beamWaits())
            fail(QString("channel 3 still waits for event %1").arg(m_stoppedFor));
        compareTimes(programs, begun);
    }

    // At the next stop, not at the one from which this stage begins.
    bool beamWaits() const { return bench.nc.waitingFor(3) != 0 && bench.nc.waitingFor(3) != m_stoppedFor; }

    void look()
    {
        NcTestHost& host = bench.host;
        const double x = host.at("X"), y = host.at("Y"), z = host.at("Z");
        m_off = std::max(m_off, m_check.distance(x, y, z));

        const bool ends1 = bench.nc.state(1) != ChannelState::Running;
        const bool ends2 = bench.nc.state(2) != ChannelState::Running;
        const bool ends3 = bench.nc.state(3) != ChannelState::Running || beamWaits();
        for (const auto& [ends, at] :
             {std::pair(ends1, &m_motionEnd), {ends2, &m_turnEnd}, {ends3, &m_beamEnd}}) {
            if (ends && *at == 0)
                *at = host.time;
        }
        if (m_lookAt == InStep && !ring() && !m_check.passesAreLeftOut() && !ends1 && !ends3 &&
            bench.nc.moving(1) && !m_check.beamFits(host.at("IR"), m_path, m_check.pathTolerance()))
            fail(QString("beam is %1 mA at path %2 mm").arg(host.at("IR")).arg(m_path));
    }

    // Every block of the manipulator sets its three axes, at its end too: no corner is cut off the path.
    // Along an arc only the way in its plane counts.
    void measure(int channel)
    {
        if (channel != 1 || ++m_axesSet % 3 != 0)
            return;
        const QVector<double> now{bench.host.at("X"), bench.host.at("Y"), bench.host.at("Z")};
        const QStringList& lines = m_lines;
        const int at = bench.nc.currentLine(1) - 1;
        static const QRegularExpression radius(" R([0-9.]+)");
        const QRegularExpressionMatch arc = radius.match(lines.value(at));
        if (!arc.hasMatch()) {
            m_path += std::hypot(now[0] - m_at[0], now[1] - m_at[1], now[2] - m_at[2]);
        } else {
            int plane = m_tables.contour.schema->Aux();
            if (plane < 0)
                plane = QStringList{"G17", "G18", "G19"}.indexOf(lines.value(at - 1).right(3));
            const PlaneColumns c = planeColumns(plane);
            const double r = arc.captured(1).toDouble();
            const double chord = std::hypot(now[c.first] - m_at[c.first], now[c.second] - m_at[c.second]);
            m_path += 2 * r * std::asin(std::min(1.0, chord / (2 * r)));
        }
        m_at = now;
    }

    void compareTimes(const MotionPrograms& programs, double begun)
    {
        if (!(m_lookAt & InTime) || !m_trouble.isEmpty())
            return;
        const double tolerance = m_check.timeTolerance(programs.channel1.count('\n'));
        const bool last = bench.nc.state(3) == ChannelState::Idle;
        // The tail of channel 1 takes 0.2 s except on a circle, that of channel 3 a second.
        const double motion = m_motionEnd - (last && !m_tables.contour.schema->rotate() ? 0.2 : 0);
        const double beam = m_beamEnd - (last ? 1 : 0);
        if (std::abs(motion - beam) > tolerance)
            fail(QString("motion ends at %1 s, beam at %2 s").arg(motion).arg(beam));
        if (!ring())
            return;
        // Circumference per degree is given to the controller with two decimals.
        const double ratio = double(m_tables.contour.schema->D()) * M_PI / 360;
        const double rounding = (motion - begun) * 0.0051 / ratio;
        if (std::abs(m_turnEnd - motion) > tolerance + rounding)
            fail(QString("part turns until %1 s, manipulator until %2 s").arg(m_turnEnd).arg(motion));
    }

    const WeldTables& m_tables;
    WeldCheck m_check;
    QHash<int, QString> m_text;
    QString m_trouble;
    int m_lookAt = Runs;
    double m_path = 0;
    double m_off = 0;
    QVector<double> m_at{0, 0, 0};
    QStringList m_lines; // of channel 1
    int m_axesSet = 0;
    int m_stoppedFor = 0; // event at which the beam stands when a stage begins
    double m_motionEnd = 0, m_turnEnd = 0, m_beamEnd = 0;
};

QString weldTrouble(const WeldTables& tables, int lookAt)
{
    WeldRun run(tables);
    run.weld(lookAt);
    return run.trouble();
}

// Numbers of the events by which channel 1 (on a ring: and 2) goes on after its stops.
QStringList stopEvents(const QString& channel1, bool ring)
{
    QStringList events;
    const QRegularExpression pattern(ring ? " WREV\\((\\d+)\\)" : " SEV\\((\\d+)\\)");
    for (auto i = pattern.globalMatch(channel1); i.hasNext();) {
        const QString event = i.next().captured(1);
        if (event.toInt() >= 4)
            events.append(event);
    }
    return events;
}

// On a circle in the plane YZ the first coordinate hardly changes, so cuts are dropped by rule: the change of
// feed and the place of a stop with them.
bool keepsStep(const WeldTables& tables, int stops)
{
    if (!tables.contour.schema->rotate() || tables.contour.schema->Aux() != 2)
        return true;
    return stops == 0 && std::all_of(tables.tech.begin(), tables.tech.end(), [&](const TechRow& row) {
               return !row.on || row.speed == tables.tech.first().speed;
           });
}

// The first trouble among the seeds, nothing when all is well.
QString firstTrouble(unsigned from, unsigned to, const std::function<QString(unsigned)>& run)
{
    for (unsigned seed = from; seed <= to; ++seed) {
        const QString trouble = run(seed);
        if (!trouble.isEmpty())
            return QString("%1: %2").arg(seed).arg(trouble);
    }
    return {};
}

} // namespace

// Every program made from some table runs on the controller, and its channels stay in step.
class TestWeldRuns : public QObject
{
    Q_OBJECT

private slots:
    void welds_data() { schemes(); }

    void welds()
    {
        QFETCH(QString, scheme);
        int stops = 0, turnsLeftOut = 0, runs = 0;
        const auto weld = [&](unsigned seed) -> QString {
            WeldMaker maker(scheme, seed);
            const WeldTables tables = maker.make();
            WeldStage stage;
            const MotionPrograms programs = contourPrograms(tables, stage);
            const QStringList events = stopEvents(programs.channel1, scheme == "Circle");
            // By rule a stop in the closing frame takes one event and the beam counts two: the stops behind
            // it do not meet.
            for (int i = 0; i < events.size(); ++i) {
                if (events[i].toInt() != 4 + 2 * i)
                    return {};
            }
            ++runs;
            stops += events.size();
            turnsLeftOut += WeldCheck(tables, step).passesAreLeftOut() ? 1 : 0;

            WeldRun run(tables);
            const bool inStep = keepsStep(tables, events.size());
            if (inStep && programs.doubt.kind != WeldDoubt::None)
                run.fail("a good weld is doubted: " + doubtText(programs.doubt));
            run.weld(inStep ? WeldRun::InStep : WeldRun::OnContour);
            return run.trouble();
        };
        QCOMPARE(firstTrouble(1, 120, weld), QString());
        for (const unsigned seed : {1197U, 1253U}) // the last row a hair before the end of a ring's last pass
            QCOMPARE(weld(seed), QString());
        QVERIFY(runs > 90 && stops > 50);
        QVERIFY(scheme == "XYZ" || turnsLeftOut > 5);
    }

    // Frames along y and z, where cuts are dropped, at one speed: still in time and on the contour.
    void anyDirection()
    {
        const QString trouble = firstTrouble(3001, 3060, [](unsigned seed) {
            WeldMaker maker("XYZ", seed);
            maker.anyDirection = maker.oneSpeed = true;
            maker.mayStop = false;
            return weldTrouble(maker.make(), WeldRun::InStep);
        });
        QCOMPARE(trouble, QString());
    }

    // A contour closed by a backward stroke counts its way twice, and after a walk backward arcs turn the
    // other way: such programs leave the step of the beam by rule, and are run all the same.
    void outOfStep()
    {
        const QString trouble = firstTrouble(4001, 4060, [](unsigned seed) {
            WeldMaker maker("XYZ", seed);
            maker.mayStop = false;
            WeldTables tables = maker.make();
            tables.contour.closedForward = seed % 2 == 0 || !tables.contour.closed;
            // The second pass goes from the last row straight to row 1, which an arc cannot do.
            if (!tables.contour.closedForward)
                tables.contour.rows.first().frame.type = Frame::Line;
            tables.contour.moveForward = seed % 3 == 0;
            tables.contour.length = float(passLength(tables.contour));
            tables.tech.last().path = float(totalLength(tables.contour));
            return weldTrouble(tables, WeldRun::Runs);
        });
        QCOMPARE(trouble, QString());
    }

    void rowsThatGoBack_data() { schemes(); }

    // Where nothing is told of such a table, or only that it leaves the seam, its channels stay in time.
    void rowsThatGoBack()
    {
        QFETCH(QString, scheme);
        QHash<int, int> told;
        const QString trouble = firstTrouble(5001, 5200, [&](unsigned seed) {
            WeldMaker maker(scheme, seed);
            maker.goesBack = true;
            maker.mayStop = false;
            const WeldTables tables = maker.make();
            WeldStage stage;
            const WeldDoubt::Kind doubt = contourPrograms(tables, stage).doubt.kind;
            const bool inTime = doubt == WeldDoubt::None || doubt == WeldDoubt::OffSeam;
            ++told[doubt];
            return weldTrouble(tables, (inTime ? WeldRun::InTime : 0) |
                                           (doubt == WeldDoubt::None ? WeldRun::OnContour : 0));
        });
        QCOMPARE(trouble, QString());
        QVERIFY(told[WeldDoubt::None] > 20 && told[WeldDoubt::OffSeam] > 4 && told[WeldDoubt::OutOfStep] > 5);
    }

    void moves_data() { schemes(); }

    // Without beam: the test move over the whole contour, then a walk between two of its points.
    void moves()
    {
        QFETCH(QString, scheme);
        const QString trouble = firstTrouble(1001, 1060, [&](unsigned seed) {
            WeldMaker maker(scheme, seed);
            WeldTables tables = maker.make();
            WeldRun run(tables);
            run.moveTo(testMovePrograms(tables.contour, 1234.5f));
            run.expectAtEnd(tables.contour.closed);

            Dice dice(seed);
            const int last = tables.contour.rows.size() - 1;
            const int current = dice.one(4) ? last : dice.whole(0, last);
            const int target = dice.one(4) ? 0 : dice.whole(0, last);
            tables.contour.moveForward = current < target || (current == target && dice.one(2));
            run.place(tables.contour.rows[current].coords);
            QList<float> live = tables.contour.rows[current].coords;
            // The closing step is timed from the last row, wherever the machine stands.
            if (!(tables.contour.closed && current == last && target == 0)) {
                run.bench.host.at("X") += 0.5;
                live[scheme == "Circle" ? 1 : 0] += 0.5f;
            }
            run.moveTo(navigationPrograms(tables.contour, current, target, live, "600.0"));
            if (!run.standsAt(tables.contour.rows[target].coords))
                run.fail("does not stand at the point touched");
            const QStringList points = run.bench.host.written("@1");
            if (points.isEmpty() || points.last() != QString::number(target))
                run.fail("tells other points: " + points.join(' '));
            return run.trouble();
        });
        QCOMPARE(trouble, QString());
    }

private:
    static void schemes()
    {
        QTest::addColumn<QString>("scheme");
        for (const char* scheme : {"XYZ", "XYZr", "Circle"})
            QTest::newRow(scheme) << QString(scheme);
    }
};

QTEST_GUILESS_MAIN(TestWeldRuns)
#include "test_weldruns.moc"
