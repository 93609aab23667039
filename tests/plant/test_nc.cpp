#include "nctesthost.h"

#include <QtTest>

using plant::ChannelState;

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

} // namespace

// The channels of the simulated controller: what they accept, how long it takes, how they meet.
class TestNc : public QObject
{
    Q_OBJECT

private slots:
    void refusesAtLoading()
    {
        const struct
        {
            int channel;
            const char* line;
            const char* reason;
        } rows[] = {
            {1, "N2 G5 x=1 F60", "unknown statement 'G5'"},
            {1, "N2 WAIT now", "'now' is too much"},
            {1, "N2 G01 Q=1 F60", "no axis 'Q'"},
            {2, "N2 G01 x=1 F60", "no axis 'X'"},
            {3, "N2 GAX(IR", "')' expected"},
            {1, "N2 G01 x=inf F60", "number expected before 'inf"},
            {1, "N2 G01 x=1 x=2 F60", "'X' stands twice"},
            {1, "N2 G01 F60", "motion without an axis"},
            {1, "N2 G01 x=1 F-60", "F below 0"},
            {1, "N2 G02 x=1 y=1 F60", "arc without R"},
            {1, "N2 G02 x=1 A=1 R5 F60", "axis 'A' in an arc"},
            {3, "N2 G01 IR=1 x=1 F60", "beam axes and others"},
            {1, "N2 G4", "dwell without F"},
            {1, "N2 SEV(0)", "events count from 1"},
            {2, "N2 ARF(V=0.00)", "ratio of V must be above 0"},
            {1, "N2 GOTO N7", "no block N7"},
            {1, "N1 G17", "block N1 stands twice"},
            {1, "G4 F1", "without a block number"},
            {1, "1 @RASTERAMPX=-inf", "without a value"},
        };
        for (const auto& [channel, line, reason] : rows) {
            NcBench bench;
            QVERIFY2(!bench.start(channel, program(channel, QString("WAIT | ") + line)), line);
            QCOMPARE(bench.nc.state(channel), ChannelState::Error);
            const QString error = bench.nc.error(channel);
            QVERIFY2(error.startsWith("line 3: ") && error.contains(reason), qPrintable(error));
            QCOMPARE(bench.nc.currentLine(channel), 3);
            QCOMPARE(bench.host.reports, QStringList(QString("channel %1: %2").arg(channel).arg(error)));
            QVERIFY(bench.host.variables.isEmpty());
        }
    }

    void refusesWholePrograms()
    {
        for (const auto& [text, error] :
             {std::pair<QString, const char*>{"\n \n", "line 1: program is empty"},
              {"\nN1 G17\nN2 M30", "line 2: program begins without its channel"},
              {"N1 $2\nN2 M30", "line 1: program is for channel 2"}}) {
            NcBench bench;
            QVERIFY2(!bench.nc.start(1, text), error);
            QVERIFY2(bench.nc.error(1).startsWith(error), qPrintable(bench.nc.error(1)));
        }
    }

    void stopsAtTheLineAtFault()
    {
        const struct
        {
            int channel;
            QString lines; // the last one is at fault
            const char* reason;
        } rows[] = {
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
        for (const auto& [channel, lines, reason] : rows) {
            NcBench bench;
            bench.host.mayMove = [](const QString& axis, double target) {
                return std::abs(target) > 1000 ? axis + " is at its limit" : QString();
            };
            QVERIFY(bench.start(channel, program(channel, lines)) && bench.untilDone());
            const QString error =
                *reason ? QString("line %1: %2").arg(lines.count('|') + 2).arg(reason) : QString();
            QCOMPARE(bench.nc.error(channel), error);
            QCOMPARE(bench.nc.state(channel), *reason ? ChannelState::Error : ChannelState::Idle);
            QCOMPARE(bench.nc.mode(channel), 1U);
            QCOMPARE(bench.host.told("line ").size(), *reason ? 1 : 0);
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
            NcBench bench;
            bench.host.at("X") = strstr(line, "G91") ? 1 : 0;
            QVERIFY2(bench.start(1, program(1, line)), qPrintable(bench.nc.error(1)));
            QVERIFY2(bench.untilDone() && bench.nc.error(1).isEmpty(), line);
            QVERIFY2(bench.host.at("X") == 3 && bench.host.at("Y") == 4, line);
        }
    }

    void takesItsTime()
    {
        const struct
        {
            int channel;
            const char* lines;
            double seconds;
            const char* axis;
            double ends;
        } rows[] = {
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
            NcBench bench(0.01);
            QVERIFY2(bench.start(channel, program(channel, lines)), qPrintable(bench.nc.error(channel)));
            QVERIFY(bench.untilDone());
            QVERIFY2(bench.nc.error(channel).isEmpty(), lines);
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
                NcBench bench(0.013);
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
                QVERIFY2(bench.start(1, program(1, "N2 " + axes[0] + " | " + block)),
                         qPrintable(bench.nc.error(1)));
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
        const double seconds = 2000 * 0.137;
        for (const double step : {0.01, 0.25, 5.0}) {
            NcBench bench(step);
            QVERIFY(bench.start(1, program(1, lines.join(" | "))));
            QVERIFY(bench.untilDone());
            QVERIFY2(near(bench.host.time, seconds, step), qPrintable(QString::number(bench.host.time)));
        }
    }

    // Even an event that its own channel resets at once is seen by all the others.
    void eventStandsUntilSeen()
    {
        NcBench bench(0.01);
        QVERIFY(bench.nc.start(2, program(2, "N2 G4 F0.013 | N3 WEV(7)")));
        QVERIFY(bench.nc.start(1, program(1, "N2 G4 F0.005 | N3 SEV(7) | N4 REV(ALL)")));
        bench.nc.step(0.01); // loading
        bench.step();
        QVERIFY(bench.nc.event(7));
        QCOMPARE(bench.nc.state(1), ChannelState::Running);
        bench.step();
        QVERIFY(!bench.nc.event(7));
        QCOMPARE(bench.nc.state(1), ChannelState::Idle);
        QCOMPARE(bench.nc.state(2), ChannelState::Idle);
    }

    // WREV takes the event with it, WEV leaves it; who already waits is let go in any case.
    void eventIsTakenOnce()
    {
        NcBench bench(0.01);
        QVERIFY(bench.nc.start(2, program(2, "N2 WREV(5)")));
        QVERIFY(bench.nc.start(3, program(3, "N2 WEV(5) | N3 SEV(6)")));
        QVERIFY(bench.start(1, program(1, "N2 G4 F0.1 | N3 SEV(5) | N4 WEV(6) | N5 WREV(6)")));
        QVERIFY(bench.untilDone(1));
        QVERIFY(!bench.nc.event(5));
        QVERIFY(!bench.nc.event(6));

        QVERIFY(bench.start(1, program(1, "N2 SEV(5) | N3 WREV(5) | N4 WREV(5)")));
        QVERIFY(!bench.untilDone(1));
        QCOMPARE(bench.nc.currentLine(1), 4);
        bench.nc.stopAll();
    }

    void tellsDeadlockOnce()
    {
        NcBench bench(0.05);
        QVERIFY(bench.start(3, program(3, "N2 WREV(5)"))); // alone it may wait: the operator goes on some day
        bench.forSeconds(20);
        QCOMPARE(bench.host.reports, QStringList("channel 3 waits for event 5"));
        bench.nc.stopAll();
        bench.step();
        bench.host.reports.clear();

        QVERIFY(bench.start(1, program(1, "N2 WREV(6)")));
        QVERIFY(bench.start(3, program(3, "N2 G4 F2.0 | N3 WREV(8)")));
        bench.forSeconds(6.9);
        QVERIFY(bench.host.reports.isEmpty());
        bench.forSeconds(60);
        QCOMPARE(bench.host.reports,
                 QStringList("deadlock: channel 1 waits for event 6, channel 3 waits for event 8"));

        // Something that moves is no deadlock; standing still again is told again.
        QVERIFY(bench.start(2, program(2, "N2 G4 F20")));
        bench.forSeconds(19);
        QCOMPARE(bench.host.reports.size(), 1);
        bench.forSeconds(8);
        QCOMPARE(bench.host.told("deadlock").size(), 2);
    }

    void stopAllEndsWhereItStands()
    {
        NcBench bench(0.01);
        QVERIFY(bench.nc.start(3, program(3, "N2 GAX(IR) | N3 SEV(9) | N4 G01 IR=60 F600")));
        QVERIFY(bench.nc.start(2, program(2, "N2 WEV(8)")));
        QVERIFY(bench.start(1, program(1, "N2 G90 G01 x=100 F600")));
        bench.forSeconds(2);
        bench.nc.stopAll();
        QCOMPARE(bench.nc.state(1), ChannelState::Reset);
        QCOMPARE(bench.nc.state(2), ChannelState::Reset);
        QVERIFY(!bench.nc.event(9));
        QCOMPARE(bench.host.told("stopped at line").size(), 3);
        bench.step();
        for (int channel = 1; channel <= 3; ++channel) {
            QCOMPARE(bench.nc.state(channel), ChannelState::Idle);
            QCOMPARE(bench.nc.currentLine(channel), 0);
            QVERIFY(!bench.nc.moving(channel));
        }
        bench.forSeconds(10);
        QVERIFY(near(bench.host.at("X"), 20, 1e-9));
        QVERIFY(near(bench.host.at("IR"), 20, 1e-9));

        // The axes are free again, and a program goes on from where they stand.
        QVERIFY(bench.start(3, program(3, "N2 GAX(IR) | N3 G01 IR=0 F600 | N4 RAX(IR)")));
        const double started = bench.host.time;
        QVERIFY(bench.untilDone());
        QCOMPARE(bench.nc.error(3), QString());
        QVERIFY(near(bench.host.time - started, 2, 0.0101));
        // However a program ends, the beam axes are free for the next one.
        QVERIFY(bench.start(3, program(3, "N2 GAX(IR)")) && bench.untilDone());
        QVERIFY(bench.start(3, program(3, "N2 G0 IR=1")) && bench.untilDone());
        QCOMPARE(bench.nc.error(3), QString("line 2: IR was not taken"));
    }

    void statesOneAfterTheOther()
    {
        NcBench bench(0.01);
        QCOMPARE(bench.nc.state(1), ChannelState::Idle);
        QCOMPARE(bench.nc.mode(1), 1U);
        QVERIFY(bench.nc.start(1, program(1, "N2 G90 G01 x=1 F600")));
        QCOMPARE(bench.nc.state(1), ChannelState::Loading);
        QCOMPARE(bench.nc.mode(1), 5U);
        QVERIFY(!bench.nc.start(1, program(1, "")));
        bench.nc.step(0.01);
        QCOMPARE(bench.nc.state(1), ChannelState::Running);
        QCOMPARE(bench.host.at("X"), 0.0);
        bench.nc.step(0.01);
        QVERIFY(bench.nc.moving(1));
        QCOMPARE(bench.nc.currentLine(1), 2);
        QVERIFY(near(bench.host.at("X"), 0.1, 1e-9));
        QVERIFY(!bench.nc.start(1, program(1, "")));
        QCOMPARE(bench.host.told("start refused").size(), 2);
        QVERIFY(bench.untilDone(1));
        QVERIFY(!bench.nc.moving(1));
        QCOMPARE(bench.host.reports.last(), QString("channel 1: end of program"));
        QVERIFY(bench.start(1, program(1, "N2 COORD(1) | N3 COORD(2)")));
        QVERIFY(bench.untilDone(1));
        QCOMPARE(bench.host.systems.value(1).mid(2), QStringList({"0,2", "1", "2", "0,2"}));

        // An error stays until the next start or the next stop.
        QVERIFY(!bench.nc.start(1, "nonsense"));
        bench.forSeconds(1);
        QCOMPARE(bench.nc.state(1), ChannelState::Error);
        QVERIFY(bench.start(1, program(1, "")));
        QCOMPARE(bench.nc.error(1), QString());
        QVERIFY(bench.untilDone(1));
        QVERIFY(!bench.nc.start(1, "nonsense"));
        bench.nc.stopAll();
        bench.step();
        QCOMPARE(bench.nc.state(1), ChannelState::Idle);
    }

    void hostStopsAllUponAnError()
    {
        NcBench bench(0.01);
        // Upon each report, that of a stop among them: by then the channel has stopped.
        bench.host.onReport = [&](const QString&) { bench.nc.stopAll(); };
        QVERIFY(bench.nc.start(3, program(3, "N2 GAX(IR) | N3 G01 IR=60 F600")));
        QVERIFY(bench.start(1, program(1, "N2 G4 F1 | N3 G01 x=1")));
        bench.forSeconds(2);
        QCOMPARE(bench.nc.state(3), ChannelState::Idle);
        QVERIFY(near(bench.host.at("IR"), 10, 0.2));
        QCOMPARE(bench.nc.error(1), QString("line 3: motion without feed"));
        QCOMPARE(bench.host.told("stopped"), QStringList("channel 3: stopped at line 3"));
    }

    void endlessCircleDoesNotHang()
    {
        NcBench bench(0.01);
        QVERIFY(bench.start(1, program(1, "N2 WAIT | N3 GOTO N2")));
        QVERIFY(bench.start(2, program(2, "N2 G4 F0.000000000001 | N3 GOTO N2")));
        bench.forSeconds(0.1);
        QCOMPARE(bench.nc.state(1), ChannelState::Running);
        QCOMPARE(bench.nc.state(2), ChannelState::Running);
        bench.nc.stopAll();
        bench.step();
        QCOMPARE(bench.nc.state(1), ChannelState::Idle);
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
        for (int length = 0; length < whole.size(); ++length)
            texts.append(whole.left(length));
        for (int at = 0; at < whole.size(); ++at) {
            for (const char wrong : {'\0', '\n', '=', '(', 'N', '9', '-', '.'}) {
                texts.append(whole);
                texts.last()[at] = QLatin1Char(wrong);
            }
        }
        for (const QString& text : qAsConst(texts)) {
            NcBench bench(1);
            if (bench.start(1, text))
                bench.untilDone(1000);
            if (bench.nc.state(1) == ChannelState::Running)
                continue; // a feed or a dwell that has become very long
            const bool failed = bench.nc.state(1) == ChannelState::Error;
            QCOMPARE(bench.nc.error(1).startsWith("line "), failed);
            QVERIFY2(failed || text.size() == whole.size(), qPrintable(text));
        }
    }

    void hugeProgram()
    {
        QStringList lines;
        for (int i = 0; i < 200000; ++i)
            lines.append(QString("N%1 G90 G01 x=%2 F60000").arg(i + 100).arg(i % 10));
        NcBench bench(1);
        QElapsedTimer timer;
        timer.start();
        QVERIFY(bench.start(1, program(1, lines.join(" | "))));
        QVERIFY2(timer.elapsed() < 30000, qPrintable(QString::number(timer.elapsed())));
        bench.forSeconds(5);
        QCOMPARE(bench.nc.state(1), ChannelState::Running);
    }
};

QTEST_GUILESS_MAIN(TestNc)
#include "test_nc.moc"
