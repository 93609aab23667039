#include "comparetext.h"
#include "nctesthost.h"

#include <QtTest>

namespace {

// The program of a channel with `lines`, as "N2 WAIT | N3 G17", between its head and its end.
QString program(int channel, const QString& lines)
{
    return QString("N1 $%1\n%2\nN99 M30").arg(channel).arg(QString(lines).replace(" | ", "\n"));
}

bool near(double a, double b, double tolerance)
{
    return std::abs(a - b) <= tolerance;
}

struct Bench : NcBench
{
    using NcBench::NcBench;
    bool load(int channel, const QString& lines) { return nc.start(channel, program(channel, lines)); }
    bool begin(int channel, const QString& lines) { return start(channel, program(channel, lines)); }
    bool runs(int channel, const QString& lines) { return begin(channel, lines) && untilDone(); }
    // As the datagram has them: 1 idle, 3 running, 6 error, 8 reset, 9 loading.
    QString states() const
    {
        return QString("%1%2%3").arg(int(nc.state(1))).arg(int(nc.state(2))).arg(int(nc.state(3)));
    }
};

} // namespace

// The channels of the simulated controller: what they accept, how long it takes, how they meet.
class TestNc : public QObject
{
    Q_OBJECT

private slots:
    void refusesAtLoading()
    {
        // Channel, line, and what is told of it.
        const QString rows =
            "1 N2 G5 x=1 F60: unknown statement 'G5'; 1 N2 WAIT now: 'now' is too much; "
            "1 N2 G01 Q=1 F60: no axis 'Q'; 2 N2 G01 x=1 F60: no axis 'X'; 3 N2 GAX(IR: ')' expected; "
            "1 N2 G01 x=inf F60: number expected before 'inf; 1 N2 G01 x=1 x=2 F60: 'X' stands twice; "
            "1 N2 G01 F60: motion without an axis; 1 N2 G01 x=1 F-60: F below 0; "
            "1 N2 G02 x=1 y=1 F60: arc without R; 1 N2 G02 x=1 A=1 R5 F60: axis 'A' in an arc; "
            "3 N2 G01 IR=1 x=1 F60: beam axes and others; 1 N2 G4: dwell without F; "
            "1 N2 SEV(0): events count from 1; 2 N2 ARF(V=0.00): ratio of V must be above 0; "
            "1 N2 GOTO N7: no block N7; 1 N1 G17: block N1 stands twice; "
            "1 G4 F1: without a block number; 1 1 @RASTERAMPX=-inf: without a value";
        for (const QString& row : rows.split("; ")) {
            Bench bench;
            const int channel = row.leftRef(1).toInt();
            QVERIFY2(!bench.begin(channel, "WAIT | " + row.section(": ", 0, 0).mid(2)), qPrintable(row));
            QCOMPARE(bench.nc.state(channel), plant::ChannelState::Error);
            const QString error = bench.nc.error(channel);
            QVERIFY2(error.startsWith("line 3: ") && error.contains(row.section(": ", 1)), qPrintable(error));
            QCOMPARE(bench.nc.currentLine(channel), 3);
            QCOMPARE(bench.host.reports, QStringList(QString("channel %1: %2").arg(channel).arg(error)));
            QVERIFY(bench.host.variables.isEmpty());
        }
        for (const auto& [text, error] : {std::pair{"\n \n", "line 1: program is empty"},
                                          {"\nN1 G17\nN2 M30", "line 2: program begins without its channel"},
                                          {"N1 $2\nN2 M30", "line 1: program is for channel 2"}}) {
            Bench bench;
            QVERIFY2(!bench.nc.start(1, text), error);
            QVERIFY2(bench.nc.error(1).startsWith(error), qPrintable(bench.nc.error(1)));
        }
    }

    void stopsAtTheLineAtFault()
    {
        const std::tuple<int, QString, const char*> rows[] = {
            {1, "N2 G90 G01 x=1", "motion without feed"},
            {1, "N2 G90 G01 x=1 F0.000", "motion without feed"},
            {1, "N2 G01 x=1 F600 | N3 G01 x=2", "motion without feed"},
            {1, "N2 G17 | N3 G02 x=1 y=1 R1 F0", "motion without feed"},
            {1, "N2 G90 G01 x=0 F0.000", ""}, // it stands there: sound
            {3, "N2 GAX(IW) | N3 G0 IR=5.0", "IR was not taken"},
            {3, "N2 GAX(IR) | N3 RAX(IR) | N4 G01 IR=5.0 F5", "IR was not taken"},
            {3, "N2 GAX(IR) | N3 RAX(IW)", "IW was not taken"},
            {1, "N2 G17 | N3 G16 | N4 G02 x=1 y=1 R5 F60", "arc without a plane"},
            {1, "N2 G17 | N3 G02 x=10.03 y=0 R5 F60",
             "points 10.030 mm apart on a circle of radius 5.000 mm"},
            {1, "N2 G01 x=999 F60000 | N3 G01 x=1001 F60000", "X is at its limit"},
            {1, "N2 G0 x=1001", "X is at its limit"},
        };
        for (const auto& [channel, lines, reason] : rows) { // the last line is at fault
            Bench bench;
            bench.host.mayMove = [](const QString& axis, double target) {
                return std::abs(target) > 1000 ? axis + " is at its limit" : QString();
            };
            QVERIFY(bench.runs(channel, lines));
            const bool sound = !*reason;
            QCOMPARE(bench.nc.error(channel),
                     sound ? QString() : QString("line %1: %2").arg(lines.count('|') + 2).arg(reason));
            QCOMPARE(int(bench.nc.state(channel)), sound ? 1 : 6);
            QCOMPARE(bench.nc.mode(channel), 1U);
            QCOMPARE(bench.host.told("line ").size(), sound ? 0 : 1);
        }
    }

    void readsEveryWayOfWriting()
    {
        for (const char* line :
             {"N2 G90 G01 x=3.00 y=4.00 F300.000", "N2G90G1x=3.00y=4.00F300.000",
              "N0002 G90 G01 x=3.00 y=4.00 F300.000", "n2 g90 g01 x=3.00 Y=4.00 f300",
              "  N2   G 90  G 01\tx = 3.00  y=+4.00 F 300  ", "N2 F300 x=3 G01 y=4 G90",
              "N2 G90 G01 x=3e+00 y=0.4E1 F3e+02", "N2 G90 G01 x=3.00 y=4.00 F300\r",
              "N2 G91 G01 x=2.00 y=4.00 F300\nN3 G90 G01 y=4.00", "N03 G90 G01 X=3 Y=4 F300\n\n"}) {
            Bench bench;
            bench.host.at("X") = strstr(line, "G91") ? 1 : 0;
            QVERIFY2(bench.runs(1, line) && bench.nc.error(1).isEmpty(), line);
            QVERIFY2(bench.host.at("X") == 3 && bench.host.at("Y") == 4, line);
        }
    }

    void takesItsTime()
    {
        const std::tuple<int, const char*, double, const char*, double> rows[] = {
            {1, "N2 G90 G01 x=3 y=4 z=12 F130", 6, "Z", 12}, // mm/min over the vector
            {1, "N2 G01 LX=-20 F600", 2, "LX", -20},
            {1, "N2 G01 D=90 F360", 15, "D", 90}, // deg/min
            // mA/min over both beam axes
            {3, "N2 GAX(IR) | N3 GAX(IW) | N4 G90 G01 IR=30.0 IW=40 F1000.000", 3, "IR", 30},
            {2, "N2 ARF() | N3 G90 G01 V=90 F360", 15, "V", 90},
            // 2 mm of the circumference are one degree of F.
            {2, "N2 ARF(V=2.00) | N3 G90 G01 V=90 F360", 30, "V", 90},
            {2, "N2 ARF(V=2.00) | N3 ARF() | N4 G01 V=90 F360", 15, "V", 90},
            {1, "N2 G91 G01 x=5 F300 | N3 G91 G01 x=5 F300", 2, "X", 10},
            {2, "N2 G91 G01 V=730 F36500", 1.2, "V", 10},     // turns add up
            {2, "N2 G90 G01 V=350 F360", 10 / 6.0, "V", 350}, // the shorter way, over 0
            {1, "N2 G4 F1.234", 1.234, "X", 0},
            {3, "N2 GAX(IR) | N3 G0 IR=55.5", 0, "IR", 55.5},
            // A helix has its feed in the plane.
            {1, "N2 G17 | N3 G3 x=10 y=10 R10 z=500 F314.159265", 3, "Z", 500},
            {1, "N2 G17 | N3 G3 x=0 y=0 R10 z=5 F300", 1, "Z", 5}, // an arc that only climbs
            {1, "N2 G17 | N3 G3 x=0 y=0 R10 z=0 F300", 0, "X", 0},
            {1, "N2 GOTO N4 | N3 G4 F100 | N4 G4 F1.0", 1, "X", 0},
            {1, "N2 G4 F1.0 | N3 M30 | N4 G4 F100", 1, "X", 0}, // text behind the end is not run
        };
        for (const auto& [channel, lines, seconds, axis, ends] : rows) {
            Bench bench;
            QVERIFY2(bench.runs(channel, lines) && bench.nc.error(channel).isEmpty(), lines);
            QVERIFY2(near(bench.host.time, seconds, 0.0101), lines);
            QVERIFY2(near(bench.host.at(axis), ends, 1e-9), lines);
        }
    }

    // In each plane (first, second and third axis), by the sweep in deg, above 0 counter-clockwise.
    void followsArcs()
    {
        const QStringList planes[] = {{"G17", "x", "y", "z"}, {"G18", "x", "z", "y"}, {"G19", "y", "z", "x"}};
        for (const QStringList& axes : planes) {
            for (const double sweep : {20.0, 90.0, 179.0, -20.0, -90.0, -179.0, 200.0, -300.0}) {
                const double radius = 25;
                const auto point = [&](double part) {
                    const double angle = qDegreesToRadians(130 + sweep * part);
                    return QPointF(40 + radius * std::cos(angle), -15 + radius * std::sin(angle));
                };
                Bench bench(0.013);
                const auto at = [&](int i) -> double& { return bench.host.at(axes[i].toUpper()); };
                at(1) = point(0).x();
                at(2) = point(0).y();
                at(3) = 2;
                // A negative radius asks for the arc beyond the half circle.
                const QString block = QString("N3 G90 %1 %2=%3 %4=%5 R%6 %7=8.00 F600.000")
                                          .arg(sweep > 0 ? "G03" : "G02", axes[1])
                                          .arg(point(1).x(), 0, 'f', 9)
                                          .arg(axes[2])
                                          .arg(point(1).y(), 0, 'f', 9)
                                          .arg(std::abs(sweep) > 180 ? -radius : radius, 0, 'f', 2)
                                          .arg(axes[3]);
                const double seconds = radius * std::abs(qDegreesToRadians(sweep)) / 600 * 60;
                QVERIFY2(bench.begin(1, "N2 " + axes[0] + " | " + block), qPrintable(bench.nc.error(1)));
                int moments = 0;
                QVERIFY(bench.untilDone(100, {1}, [&] {
                    const double part = std::min(1.0, bench.host.time / seconds);
                    const QPointF wanted = point(part);
                    moments += near(at(1), wanted.x(), 1e-4) && near(at(2), wanted.y(), 1e-4) &&
                               near(at(3), 2 + 6 * part, 1e-4);
                }));
                QVERIFY2(moments == static_cast<int>(std::ceil(seconds / 0.013)), qPrintable(block));
            }
        }
    }

    // 2,000 blocks, none of them as long as a multiple of the step: what is left of a step is not lost.
    void keepsExactTimeWhateverTheStep()
    {
        QStringList lines;
        for (int i = 0; i < 2000; ++i)
            lines.append(QString("N%1 G90 G01 x=%2 y=0 F600").arg(i + 100).arg(i % 2 == 0 ? 1.37 : 0.0));
        for (const double step : {0.01, 0.25, 5.0}) {
            Bench bench(step);
            QVERIFY(bench.runs(1, lines.join(" | ")));
            QVERIFY2(near(bench.host.time, 274, step), qPrintable(QString::number(bench.host.time)));
        }
    }

    void eventsStandUntilSeenAndAreTakenOnce()
    {
        // Even an event that its own channel resets at once is seen by all the others.
        Bench bench;
        QVERIFY(bench.load(2, "N2 G4 F0.013 | N3 WEV(7)"));
        QVERIFY(bench.begin(1, "N2 G4 F0.005 | N3 SEV(7) | N4 REV(ALL)"));
        bench.step();
        QVERIFY(bench.nc.event(7));
        QCOMPARE(bench.states(), "331");
        bench.step();
        QVERIFY(!bench.nc.event(7));
        QCOMPARE(bench.states(), "111");

        // WREV takes the event with it, WEV leaves it; who already waits is let go in any case.
        QVERIFY(bench.load(2, "N2 WREV(5)") && bench.load(3, "N2 WEV(5) | N3 SEV(6)"));
        QVERIFY(bench.begin(1, "N2 G4 F0.1 | N3 SEV(5) | N4 WEV(6) | N5 WREV(6)") && bench.untilDone(1));
        QVERIFY(!bench.nc.event(5) && !bench.nc.event(6));
        QVERIFY(bench.begin(1, "N2 SEV(5) | N3 WREV(5) | N4 WREV(5)") && !bench.untilDone(1));
        QCOMPARE(bench.nc.currentLine(1), 4);
    }

    void tellsDeadlockOnce()
    {
        Bench bench(0.05);
        QVERIFY(bench.begin(3, "N2 WREV(5)")); // alone it may wait: the operator goes on some day
        bench.forSeconds(20);
        QCOMPARE(bench.host.reports, QStringList("channel 3 waits for event 5"));
        bench.nc.stopAll();
        bench.step();
        bench.host.reports.clear();

        QVERIFY(bench.begin(1, "N2 WREV(6)") && bench.begin(3, "N2 G4 F2.0 | N3 WREV(8)"));
        bench.forSeconds(6.9);
        QVERIFY(bench.host.reports.isEmpty());
        bench.forSeconds(60);
        QCOMPARE(bench.host.reports,
                 QStringList("deadlock: channel 1 waits for event 6, channel 3 waits for event 8"));

        // Something that moves is no deadlock; standing still again is told again.
        QVERIFY(bench.begin(2, "N2 G4 F20"));
        bench.forSeconds(19);
        QCOMPARE(bench.host.reports.size(), 1);
        bench.forSeconds(8);
        QCOMPARE(bench.host.told("deadlock").size(), 2);
    }

    void stopAllEndsWhereItStands()
    {
        Bench bench;
        QVERIFY(bench.load(3, "N2 GAX(IR) | N3 SEV(9) | N4 G01 IR=60 F600") && bench.load(2, "N2 WEV(8)"));
        QVERIFY(bench.begin(1, "N2 G90 G01 x=100 F600"));
        bench.forSeconds(2);
        bench.nc.stopAll();
        QCOMPARE(bench.states(), "888");
        QVERIFY(!bench.nc.event(9));
        QCOMPARE(bench.host.told("stopped at line").size(), 3);
        bench.step();
        QCOMPARE(bench.states(), "111");
        for (int channel = 1; channel <= 3; ++channel)
            QVERIFY(bench.nc.currentLine(channel) == 0 && !bench.nc.moving(channel));
        bench.forSeconds(10);
        QVERIFY(near(bench.host.at("X"), 20, 1e-9) && near(bench.host.at("IR"), 20, 1e-9));

        // The axes are free again, and a program goes on from where they stand.
        const double started = bench.host.time;
        QVERIFY(bench.runs(3, "N2 GAX(IR) | N3 G01 IR=0 F600 | N4 RAX(IR)"));
        QCOMPARE(bench.nc.error(3), QString());
        QVERIFY(near(bench.host.time - started, 2, 0.0101));
        // However a program ends, the beam axes are free for the next one.
        QVERIFY(bench.runs(3, "N2 GAX(IR)") && bench.runs(3, "N2 G0 IR=1"));
        QCOMPARE(bench.nc.error(3), "line 2: IR was not taken");
    }

    void statesOneAfterTheOther()
    {
        Bench bench;
        QCOMPARE(bench.nc.mode(1), 1U);
        QVERIFY(bench.load(1, "N2 G90 G01 x=1 F600"));
        QCOMPARE(bench.states(), "911");
        QCOMPARE(bench.nc.mode(1), 5U);
        QVERIFY(!bench.load(1, ""));
        bench.step();
        QCOMPARE(bench.states(), "311");
        QCOMPARE(bench.host.at("X"), 0.0);
        bench.step();
        QVERIFY(bench.nc.moving(1));
        QCOMPARE(bench.nc.currentLine(1), 2);
        QVERIFY(near(bench.host.at("X"), 0.1, 1e-9));
        QVERIFY(!bench.load(1, ""));
        QCOMPARE(bench.host.told("start refused").size(), 2);
        QVERIFY(bench.untilDone(1));
        QVERIFY(!bench.nc.moving(1));
        QCOMPARE(bench.host.reports.last(), "channel 1: end of program");
        QVERIFY(bench.runs(1, "N2 COORD(1) | N3 COORD(2)"));
        QCOMPARE(bench.host.systems.value(1).mid(2), QStringList({"0,2", "1", "2", "0,2"}));

        // An error stays until the next start or the next stop.
        QVERIFY(!bench.nc.start(1, "nonsense"));
        bench.forSeconds(1);
        QCOMPARE(bench.states(), "611");
        QVERIFY(bench.begin(1, ""));
        QCOMPARE(bench.nc.error(1), QString());
        QVERIFY(bench.untilDone(1) && !bench.nc.start(1, "nonsense"));
        bench.nc.stopAll();
        bench.step();
        QCOMPARE(bench.states(), "111");
    }

    void hostStopsAllUponAnError()
    {
        Bench bench;
        // Upon each report, that of a stop among them: by then the channel has stopped.
        bench.host.onReport = [&](const QString&) { bench.nc.stopAll(); };
        QVERIFY(bench.load(3, "N2 GAX(IR) | N3 G01 IR=60 F600") && bench.begin(1, "N2 G4 F1 | N3 G01 x=1"));
        bench.forSeconds(2);
        QCOMPARE(bench.states().right(1), "1");
        QVERIFY(near(bench.host.at("IR"), 10, 0.2));
        QCOMPARE(bench.nc.error(1), "line 3: motion without feed");
        QCOMPARE(bench.host.told("stopped"), QStringList("channel 3: stopped at line 3"));
    }

    void endlessCircleDoesNotHang()
    {
        Bench bench;
        QVERIFY(bench.begin(1, "N2 WAIT | N3 GOTO N2"));
        QVERIFY(bench.begin(2, "N2 G4 F0.000000000001 | N3 GOTO N2"));
        bench.forSeconds(0.1);
        QCOMPARE(bench.states(), "331");
        bench.nc.stopAll();
        bench.step();
        QCOMPARE(bench.states(), "111");
    }

    // A file cut at any byte, or with any one byte wrong, is refused or runs into an error with its line;
    // when it still makes sense it ends. Nothing else happens.
    void cutAndGarbledPrograms()
    {
        const QString whole =
            "N1 $1\nN2 COORD(1)\nN3 G4 F0.2\nN4 COORD(2)\nN5 GOTO N7\nN7 WAIT\nN8 SEV(1)\n"
            "1 @AXISMOVING?=FALSE\nN9 WREV(1)\nN10 G90 G01 x=10.00 y=0.00 F600.000\nN11 G17\n"
            "N12 G03 x=20.00 y=0.00 R5.00 z=0.00 F600.000\nN13 REV(ALL)\nN15 COORD(0,2)\nN16 M30";
        QVector<QString> texts;
        for (int at = 0; at < whole.size(); ++at) {
            texts.append(whole.left(at));
            for (const char wrong : {'\0', '\n', '=', '(', 'N', '9', '-', '.'})
                texts.append(QString(whole).replace(at, 1, QLatin1Char(wrong)));
        }
        for (const QString& text : qAsConst(texts)) {
            Bench bench(1);
            if (bench.start(1, text))
                bench.untilDone(1000);
            if (bench.nc.state(1) == plant::ChannelState::Running)
                continue; // a feed or a dwell that has become very long
            const bool failed = bench.nc.state(1) == plant::ChannelState::Error;
            QCOMPARE(bench.nc.error(1).startsWith("line "), failed);
            QVERIFY2(failed || text.size() == whole.size(), qPrintable(text));
        }
    }
};

QTEST_GUILESS_MAIN(TestNc)
#include "test_nc.moc"
