#include "nctesthost.h"

#include <QtTest>

using plant::ChannelState;

namespace {

// The program of a channel with `lines` between its head and its end.
QString program(int channel, const QStringList& lines)
{
    return QStringLiteral("N1 $%1\n").arg(channel) + lines.join('\n') + "\nN99 M30";
}

bool near(double a, double b, double tolerance)
{
    return std::abs(a - b) <= tolerance;
}

const char* const lineWeldBeam = R"(N1 $3
N2 GAX(IR)
N3 GAX(IW)
N4 G0 IR=0.0
N5 G0 IW=700
N6 REV(ALL)
N7 WAIT
N8 G4 F0.5
N9 SEV(3)
N10 WAIT
N11 WEV(1)
N12 WAIT
N13 G0 IR=0.0
N14 G90 G01 IR=20.0 IW=700 F1200.000
N15 G4 F8.000
N16 G90 G01 IR=0.0 IW=700 F1200.000
N17 G0 IR=0.0
N18 G4 F1.0
N19 RAX(IR)
N20 RAX(IW)
N21 M30)";

const char* const lineWeldMotion = R"(N1 $1
N2 COORD(1)
N3 G4 F0.2
N4 COORD(2)
N5 GOTO N6
N6 WREV(3)
N7 WAIT
N8 SEV(1)
1 @AXISMOVING?=FALSE
N9 WAIT
N10 G90 G01 x=10.00 y=0.00 z=0.00 F600.000
N11 G90 G01 x=90.00 y=0.00 z=0.00 F600.000
N12 G90 G01 x=100.00 y=0.00 z=0.00 F600.000
N13 REV(ALL)
WAIT
1 @1=1
N14 G4 F0.2
N15 COORD(0,2)
N16 M30)";

// A ring joint of one turn at 90 deg a second with a stop after a quarter: head, part up to the stop, the
// re-entry with its rendezvous, rest. Entered at the head or at the re-entry.
QString ringManipulator(int entry)
{
    return QStringLiteral("N1 $1\nN2 COORD(1)\nN3 G4 F0.2\nN4 COORD(2)\nN5 GOTO N%1\nN8 G4 F0.5\n"
                          "N9 WREV(3)\nN10 WAIT\nN11 WREV(2)\nN16 WAIT\nN17 SEV(1)\n"
                          "1 @AXISMOVING?=FALSE\nN18 WAIT\nN19 G4 F1.000\nN21 REV(ALL)\nN22 M30\n"
                          "N23 WREV(4)\nN24 WAIT\nN25 SEV(5)\n2 @AXISMOVING?=TRUE\nN26 WAIT\n"
                          "N33 G4 F3.000\nN35 REV(ALL)\nWAIT\n3 @1=0\nN36 G4 F0.2\nN37 COORD(0,2)\nN38 M30")
        .arg(entry);
}

QString ringTurn(int entry)
{
    return QStringLiteral("N1 $2\nN6 ARF(V=2.00)\nN7 GOTO N%1\nN12 SEV(2)\nN13 WAIT\nN14 WEV(1)\nN15 WAIT\n"
                          "N20 G90 G01 V=90.00 F10800.000\nN27 ARF()\nN28 M30\n"
                          "N29 G90 G01 V=90.00 F10800.000\nN30 SEV(4)\nN31 WAIT\nN32 WEV(5)\n"
                          "N34 G90 G01 V=359.00 F10800.000\nN39 ARF()\nN40 M30")
        .arg(entry);
}

const char* const ringBeam = R"(N1 $3
N2 GAX(IR)
N3 GAX(IW)
N4 G0 IR=10.0
N5 G0 IW=700
N6 REV(ALL)
N7 WAIT
N8 G4 F0.5
N9 SEV(3)
N10 WAIT
N11 WEV(1)
N12 WAIT
N14 G4 F1.000
N15 WEV(5)
N16 WAIT
N17 G4 F3.000
N18 G0 IR=0.0
N19 RAX(IR)
N20 RAX(IW)
N21 M30)";

} // namespace

// The channels of the simulated controller: what they accept, how long it takes, how they meet.
class TestNc : public QObject
{
    Q_OBJECT

private slots:
    void refusesAtLoading_data();
    void refusesAtLoading();
    void refusesWholePrograms_data();
    void refusesWholePrograms();
    void stopsAtTheLineAtFault_data();
    void stopsAtTheLineAtFault();
    void readsEveryWayOfWriting_data();
    void readsEveryWayOfWriting();
    void takesItsTime_data();
    void takesItsTime();
    void followsArcs_data();
    void followsArcs();
    void halfCirclesAndLongArcs();
    void fullTurnOfArcs();
    void keepsExactTimeWhateverTheStep();
    void partTurnsTheShorterWay_data();
    void partTurnsTheShorterWay();
    void weldsALine();
    void ringStopsAndGoesOn();
    void eventStandsUntilSeen();
    void eventIsTakenOnce();
    void tellsDeadlockOnce();
    void stopAllEndsWhereItStands();
    void statesOneAfterTheOther();
    void limitInsideAnArc();
    void drivesOffInMotion();
    void hostStopsAllUponAnError();
    void endlessCircleDoesNotHang();
    void cutAndGarbledPrograms();
    void hugeProgram();
    void writesVariables();
    void beamAxesAreGivenBack();
};

void TestNc::refusesAtLoading_data()
{
    QTest::addColumn<int>("channel");
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("reason");

    const auto row = [](int channel, const char* line, const char* reason) {
        QTest::newRow(line) << channel << QString(line) << QString(reason);
    };
    row(1, "N2 G5 x=1 F60", "unknown statement 'G5'");
    row(1, "N2 M31", "unknown statement 'M31'");
    row(1, "N2 WAIT now", "'now' is too much");
    row(1, "N2 Q=1", "axis 'Q' without a motion");
    row(1, "N2 G01 Q=1 F60", "no axis 'Q'");
    row(1, "N2 G01 V=1 F60", "no axis 'V'");
    row(2, "N2 G01 x=1 F60", "no axis 'X'");
    row(1, "N2 GAX(IR)", "no axis 'IR'");
    row(3, "N2 GAX(IX)", "no beam axis 'IX'");
    row(3, "N2 GAX(IR", "')' expected");
    row(1, "N2 G01 x=inf F60", "number expected before 'inf");
    row(1, "N2 G01 x=1 F nan", "number expected before 'nan");
    row(1, "N2 G01 x= y=1 F60", "number expected before 'y=1");
    row(1, "N2 G01 x=1e999 F60", "is no number");
    row(1, "N2 G01 x=1,5 F60", "unknown statement ',5");
    row(1, "N2 G01 x=1 x=2 F60", "'X' stands twice");
    row(1, "N2 G01 x=1 F1 F2", "'F' stands twice");
    row(1, "N2 G01 G02 x=1 R5 F1", "G1 and G2 in one block");
    row(1, "N2 G90 G91", "exclude");
    row(1, "N2 G01 F60", "motion without an axis");
    row(1, "N2 G01 x=1 F-60", "F below 0");
    row(1, "N2 G01 x=1 R5 F60", "R without an arc");
    row(1, "N2 G02 x=1 y=1 F60", "arc without R");
    row(1, "N2 G02 x=1 y=1 R0.00 F60", "arc of radius 0");
    row(1, "N2 G02 x=1 A=1 R5 F60", "axis 'A' in an arc");
    row(3, "N2 G01 IR=1 x=1 F60", "beam axes and others");
    row(1, "N2 G4", "dwell without F");
    row(1, "N2 G17 F5", "F without a motion");
    row(1, "N2 COORD(3)", "no coordinate system '3'");
    row(1, "N2 REV(3)", "only all events");
    row(1, "N2 SEV(0)", "events count from 1");
    row(1, "N2 WEV(x)", "whole number expected");
    row(2, "N2 ARF(V=0.00)", "ratio of V must be above 0");
    row(2, "N2 ARF(A=1)", "ratio of V expected");
    row(1, "N2 GOTO N7", "no block N7");
    row(1, "N2 GOTO 1", "block number expected");
    row(1, "N1 G17", "block N1 stands twice");
    row(1, "N01 G17", "block N1 stands twice");
    row(1, "N2 $1", "channel stands twice");
    row(1, "N2", "block without a statement");
    row(1, "N0 G17", "blocks count from 1");
    row(1, "N123456789 G17", "whole number expected");
    row(1, "G4 F1", "without a block number");
    row(1, "@1=3", "unknown statement '@1=3'");
    row(1, "1 @=3", "variable without a name");
    row(1, "1 @A B=3", "is no variable");
    row(1, "1 @1", "'=' expected");
    row(1, "1 @1=", "without a value");
    row(1, "1 @RASTERAMPX=-inf", "without a value");
}

void TestNc::refusesAtLoading()
{
    QFETCH(int, channel);
    QFETCH(QString, line);
    QFETCH(QString, reason);

    NcBench bench;
    QVERIFY(!bench.start(channel, program(channel, {"WAIT", line})));
    QCOMPARE(bench.nc.state(channel), ChannelState::Error);
    QCOMPARE(bench.nc.currentLine(channel), 3);
    QVERIFY2(bench.nc.error(channel).startsWith("line 3: "), qPrintable(bench.nc.error(channel)));
    QVERIFY2(bench.nc.error(channel).contains(reason), qPrintable(bench.nc.error(channel)));
    QCOMPARE(bench.host.reports,
             QStringList(QString("channel %1: %2").arg(channel).arg(bench.nc.error(channel))));
    QVERIFY(bench.host.variables.isEmpty());
}

void TestNc::refusesWholePrograms_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("error");
    QTest::newRow("empty") << ""
                           << "line 1: program is empty";
    QTest::newRow("blank lines") << "\n \n"
                                 << "line 1: program is empty";
    QTest::newRow("no head") << "\nN1 G17\nN2 M30"
                             << "line 2: program begins without its channel";
    QTest::newRow("other channel") << "N1 $2\nN2 M30"
                                   << "line 1: program is for channel 2";
    QTest::newRow("noise") << QString::fromUtf8("\x01\x02ы\xff") << "line 1: unknown statement";
}

void TestNc::refusesWholePrograms()
{
    QFETCH(QString, text);
    QFETCH(QString, error);
    NcBench bench;
    QVERIFY(!bench.nc.start(1, text));
    QVERIFY2(bench.nc.error(1).startsWith(error), qPrintable(bench.nc.error(1)));
}

void TestNc::stopsAtTheLineAtFault_data()
{
    QTest::addColumn<int>("channel");
    QTest::addColumn<QStringList>("lines"); // the last one is at fault
    QTest::addColumn<QString>("reason");    // empty: the program is sound

    QTest::newRow("no feed") << 1 << QStringList{"N2 G90 G01 x=1"} << "motion without feed";
    QTest::newRow("feed 0") << 1 << QStringList{"N2 G90 G01 x=1 F0.000"} << "motion without feed";
    QTest::newRow("feed does not last")
        << 1 << QStringList{"N2 G01 x=1 F600", "N3 G01 x=2"} << "motion without feed";
    QTest::newRow("feed 0 where it stands") << 1 << QStringList{"N2 G90 G01 x=0 F0.000"} << "";
    QTest::newRow("arc of feed 0") << 1 << QStringList{"N2 G17", "N3 G02 x=1 y=1 R1 F0"}
                                   << "motion without feed";
    QTest::newRow("beam not taken") << 3 << QStringList{"N2 GAX(IW)", "N3 G0 IR=5.0"} << "IR was not taken";
    QTest::newRow("beam given back") << 3 << QStringList{"N2 GAX(IR)", "N3 RAX(IR)", "N4 G01 IR=5.0 F5"}
                                     << "IR was not taken";
    QTest::newRow("release untaken") << 3 << QStringList{"N2 GAX(IR)", "N3 RAX(IW)"} << "IW was not taken";
    QTest::newRow("no plane") << 1 << QStringList{"N2 G02 x=1 y=1 R5 F60"} << "arc without a plane";
    QTest::newRow("plane ended") << 1 << QStringList{"N2 G17", "N3 G16", "N4 G02 x=1 y=1 R5 F60"}
                                 << "arc without a plane";
    QTest::newRow("too far") << 1 << QStringList{"N2 G17", "N3 G02 x=10.03 y=0 R5 F60"}
                             << "points 10.030 mm apart on a circle of radius 5.000 mm";
    QTest::newRow("limit") << 1 << QStringList{"N2 G01 x=999 F60000", "N3 G01 x=1001 F60000"}
                           << "X is at its limit";
    QTest::newRow("limit for rapid") << 1 << QStringList{"N2 G0 x=1001"} << "X is at its limit";
}

void TestNc::stopsAtTheLineAtFault()
{
    QFETCH(int, channel);
    QFETCH(QStringList, lines);
    QFETCH(QString, reason);

    NcBench bench;
    bench.host.mayMove = [](const QString& axis, double target) {
        return std::abs(target) > 1000 ? axis + " is at its limit" : QString();
    };
    QVERIFY(bench.start(channel, program(channel, lines)));
    QVERIFY(bench.untilDone());
    if (reason.isEmpty()) {
        QCOMPARE(bench.nc.error(channel), QString());
        QCOMPARE(bench.nc.state(channel), ChannelState::Idle);
        return;
    }
    QCOMPARE(bench.nc.state(channel), ChannelState::Error);
    QCOMPARE(bench.nc.mode(channel), 1U);
    QCOMPARE(bench.nc.error(channel), QString("line %1: %2").arg(lines.size() + 1).arg(reason));
    QCOMPARE(bench.host.told(reason).size(), 1);
}

void TestNc::readsEveryWayOfWriting_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("as generated") << "N2 G90 G01 x=3.00 y=4.00 F300.000";
    QTest::newRow("glued") << "N2G90G1x=3.00y=4.00F300.000";
    QTest::newRow("padded number") << "N0002 G90 G01 x=3.00 y=4.00 F300.000";
    QTest::newRow("small letters") << "n2 g90 g01 x=3.00 Y=4.00 f300";
    QTest::newRow("blanks") << "  N2   G 90  G 01\tx = 3.00  y=+4.00 F 300  ";
    QTest::newRow("order") << "N2 F300 x=3 G01 y=4 G90";
    QTest::newRow("exponents") << "N2 G90 G01 x=3e+00 y=0.4E1 F3e+02";
    QTest::newRow("line ends of another system") << "N2 G90 G01 x=3.00 y=4.00 F300\r";
    QTest::newRow("relative") << "N2 G91 G01 x=2.00 y=4.00 F300\nN3 G90 G01 y=4.00";
    QTest::newRow("fixed move") << "N03 G90 G01 X=3 Y=4 F300\n\n";
}

void TestNc::readsEveryWayOfWriting()
{
    QFETCH(QString, line);
    NcBench bench;
    bench.host.at("X") = line.contains("G91") ? 1 : 0;
    QVERIFY2(bench.start(1, program(1, {line})), qPrintable(bench.nc.error(1)));
    QVERIFY(bench.untilDone());
    QCOMPARE(bench.nc.error(1), QString());
    QCOMPARE(bench.host.at("X"), 3.0);
    QCOMPARE(bench.host.at("Y"), 4.0);
}

void TestNc::takesItsTime_data()
{
    QTest::addColumn<int>("channel");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<double>("seconds");
    QTest::addColumn<QString>("axis");
    QTest::addColumn<double>("ends");

    QTest::newRow("mm/min over the vector")
        << 1 << QStringList{"N2 G90 G01 x=3 y=4 z=12 F130"} << 6.0 << "Z" << 12.0;
    QTest::newRow("one axis") << 1 << QStringList{"N2 G01 LX=-20 F600"} << 2.0 << "LX" << -20.0;
    QTest::newRow("deg/min") << 1 << QStringList{"N2 G01 D=90 F360"} << 15.0 << "D" << 90.0;
    QTest::newRow("mA/min over both beam axes")
        << 3 << QStringList{"N2 GAX(IR)", "N3 GAX(IW)", "N4 G90 G01 IR=30.0 IW=40 F1000.000"} << 3.0 << "IR"
        << 30.0;
    QTest::newRow("part, deg/min") << 2 << QStringList{"N2 ARF()", "N3 G90 G01 V=90 F360"} << 15.0 << "V"
                                   << 90.0;
    // 90 deg of a circle of which 2 mm are one degree of F.
    QTest::newRow("part, circumference")
        << 2 << QStringList{"N2 ARF(V=2.00)", "N3 G90 G01 V=90 F360"} << 30.0 << "V" << 90.0;
    QTest::newRow("ratio cleared") << 2 << QStringList{"N2 ARF(V=2.00)", "N3 ARF()", "N4 G01 V=90 F360"}
                                   << 15.0 << "V" << 90.0;
    QTest::newRow("relative twice") << 1 << QStringList{"N2 G91 G01 x=5 F300", "N3 G91 G01 x=5 F300"} << 2.0
                                    << "X" << 10.0;
    QTest::newRow("relative turns add up")
        << 2 << QStringList{"N2 G91 G01 V=730 F36500"} << 1.2 << "V" << 10.0;
    QTest::newRow("dwell") << 1 << QStringList{"N2 G4 F1.234"} << 1.234 << "X" << 0.0;
    QTest::newRow("rapid is at once")
        << 3 << QStringList{"N2 GAX(IR)", "N3 G0 IR=55.5"} << 0.0 << "IR" << 55.5;
    QTest::newRow("helix: feed in the plane")
        << 1 << QStringList{"N2 G17", "N3 G3 x=10 y=10 R10 z=500 F314.159265"} << 3.0 << "Z" << 500.0;
    QTest::newRow("arc that only climbs")
        << 1 << QStringList{"N2 G17", "N3 G3 x=0 y=0 R10 z=5 F300"} << 1.0 << "Z" << 5.0;
    QTest::newRow("arc of no length")
        << 1 << QStringList{"N2 G17", "N3 G3 x=0 y=0 R10 z=0 F300"} << 0.0 << "X" << 0.0;
    QTest::newRow("jump over") << 1 << QStringList{"N2 GOTO N4", "N3 G4 F100", "N4 G4 F1.0"} << 1.0 << "X"
                               << 0.0;
    QTest::newRow("text behind the end is not run")
        << 1 << QStringList{"N2 G4 F1.0", "N3 M30", "N4 G4 F100"} << 1.0 << "X" << 0.0;
}

void TestNc::takesItsTime()
{
    QFETCH(int, channel);
    QFETCH(QStringList, lines);
    QFETCH(double, seconds);
    QFETCH(QString, axis);
    QFETCH(double, ends);

    NcBench bench(0.01);
    QVERIFY2(bench.start(channel, program(channel, lines)), qPrintable(bench.nc.error(channel)));
    QVERIFY(bench.untilDone());
    QCOMPARE(bench.nc.error(channel), QString());
    QVERIFY2(near(bench.host.time, seconds, 0.0101), qPrintable(QString::number(bench.host.time)));
    QVERIFY2(near(bench.host.at(axis), ends, 1e-9), qPrintable(QString::number(bench.host.at(axis))));
}

void TestNc::followsArcs_data()
{
    QTest::addColumn<QString>("plane");
    QTest::addColumn<QStringList>("axes"); // first, second and third of the plane
    QTest::addColumn<double>("sweep");     // deg, above 0 counter-clockwise

    const QVector<QPair<QString, QStringList>> planes = {
        {"G17", {"x", "y", "z"}}, {"G18", {"x", "z", "y"}}, {"G19", {"y", "z", "x"}}};
    for (const auto& plane : planes) {
        for (const double sweep : {20.0, 90.0, 179.0, -20.0, -90.0, -179.0, 200.0, -300.0}) {
            QTest::newRow(qPrintable(QString("%1 %2").arg(plane.first).arg(sweep)))
                << plane.first << plane.second << sweep;
        }
    }
}

void TestNc::followsArcs()
{
    QFETCH(QString, plane);
    QFETCH(QStringList, axes);
    QFETCH(double, sweep);

    const double radius = 25;
    const double first = qDegreesToRadians(130.0);
    const auto point = [&](double part) {
        const double angle = first + qDegreesToRadians(sweep) * part;
        return QPointF(40 + radius * std::cos(angle), -15 + radius * std::sin(angle));
    };
    NcBench bench(0.013);
    bench.host.at(axes[0].toUpper()) = point(0).x();
    bench.host.at(axes[1].toUpper()) = point(0).y();
    bench.host.at(axes[2].toUpper()) = 2;

    // A negative radius asks for the arc beyond the half circle.
    const QString block = QString("N3 G90 %1 %2=%3 %4=%5 R%6 %7=8.00 F600.000")
                              .arg(sweep > 0 ? "G03" : "G02", axes[0])
                              .arg(point(1).x(), 0, 'f', 9)
                              .arg(axes[1])
                              .arg(point(1).y(), 0, 'f', 9)
                              .arg(std::abs(sweep) > 180 ? -radius : radius, 0, 'f', 2)
                              .arg(axes[2]);
    const double seconds = radius * std::abs(qDegreesToRadians(sweep)) / 600 * 60;
    QVERIFY2(bench.start(1, program(1, {"N2 " + plane, block})), qPrintable(bench.nc.error(1)));

    int moments = 0;
    QVERIFY(bench.untilDone(100, {1}, [&] {
        const double part = std::min(1.0, bench.host.time / seconds);
        const QPointF wanted = point(part);
        if (near(bench.host.at(axes[0].toUpper()), wanted.x(), 1e-4) &&
            near(bench.host.at(axes[1].toUpper()), wanted.y(), 1e-4) &&
            near(bench.host.at(axes[2].toUpper()), 2 + 6 * part, 1e-4))
            ++moments;
    }));
    QCOMPARE(moments, static_cast<int>(std::ceil(seconds / 0.013)));
}

void TestNc::halfCirclesAndLongArcs()
{
    NcBench bench(0.01);
    // Rounded ends 10.02 mm apart still count as a half circle of radius 5.
    QVERIFY(bench.start(1, program(1, {"N2 G17", "N3 G03 x=10.02 y=0.00 R5.00 F600"})));
    double lowest = 0;
    QVERIFY(bench.untilDone(10, {1}, [&] { lowest = std::min(lowest, bench.host.at("Y")); }));
    QCOMPARE(bench.nc.error(1), QString());
    QVERIFY2(near(lowest, -5.01, 0.01), qPrintable(QString::number(lowest)));

    // A coordinate of the plane that is not named keeps its value.
    QVERIFY(bench.start(1, program(1, {"N2 G17", "N3 G02 x=0.02 R5.00 F600"})));
    double highest = 0;
    QVERIFY(bench.untilDone(10, {1}, [&] {
        lowest = std::min(lowest, bench.host.at("Y"));
        highest = std::max(highest, bench.host.at("Y"));
    }));
    QCOMPARE(bench.nc.error(1), QString());
    QVERIFY(near(lowest, -5.01, 0.01) && near(highest, 0, 0.01));
    QCOMPARE(bench.host.at("Y"), 0.0);
}

void TestNc::fullTurnOfArcs()
{
    NcBench bench(0.01);
    bench.host.at("X") = 50;
    QStringList lines{"N2 COORD(2)", "N3 G18"};
    for (int i = 1; i <= 6; ++i) {
        const double angle = qDegreesToRadians(60.0 * i);
        lines.append(QString("N%1 G90 G03 x=%2 z=%3 R50.00 y=0.00 F3000.000")
                         .arg(10 + i)
                         .arg(50 * std::cos(angle), 0, 'f', 2)
                         .arg(50 * std::sin(angle), 0, 'f', 2));
    }
    QVERIFY(bench.start(1, program(1, lines)));
    double worst = 0;
    double turned = 0;
    QPointF last(50, 0);
    QVERIFY(bench.untilDone(60, {1}, [&] {
        const QPointF now(bench.host.at("X"), bench.host.at("Z"));
        worst = std::max(worst, std::abs(std::hypot(now.x(), now.y()) - 50));
        turned += std::asin((last.x() * now.y() - last.y() * now.x()) / 2500);
        last = now;
    }));
    QVERIFY2(worst < 0.02, qPrintable(QString::number(worst)));
    QVERIFY(near(turned, 2 * M_PI, 0.01));
    QVERIFY2(near(bench.host.time, 100 * M_PI / 3000 * 60, 0.02),
             qPrintable(QString::number(bench.host.time)));
}

// 2,000 blocks, none of them as long as a multiple of the step: what is left of a step is not lost.
void TestNc::keepsExactTimeWhateverTheStep()
{
    QStringList lines;
    for (int i = 0; i < 2000; ++i)
        lines.append(QString("N%1 G90 G01 x=%2 y=0 F600").arg(i + 100).arg(i % 2 == 0 ? 1.37 : 0.0));
    const double seconds = 2000 * 0.137;
    for (const double step : {0.01, 0.25, 5.0}) {
        NcBench bench(step);
        QVERIFY(bench.start(1, program(1, lines)));
        QVERIFY(bench.untilDone());
        QVERIFY2(near(bench.host.time, seconds, step), qPrintable(QString::number(bench.host.time)));
    }
}

void TestNc::partTurnsTheShorterWay_data()
{
    QTest::addColumn<double>("from");
    QTest::addColumn<double>("to");
    QTest::addColumn<double>("way"); // deg, with its direction
    QTest::newRow("plain") << 10.0 << 100.0 << 90.0;
    QTest::newRow("over the zero forward") << 350.0 << 10.0 << 20.0;
    QTest::newRow("over the zero back") << 10.0 << 350.0 << -20.0;
    QTest::newRow("to the zero") << 270.0 << 0.0 << 90.0;
    QTest::newRow("half a turn as the numbers go") << 180.0 << 0.0 << -180.0;
    QTest::newRow("360 is 0") << 0.0 << 360.0 << 0.0;
}

void TestNc::partTurnsTheShorterWay()
{
    QFETCH(double, from);
    QFETCH(double, to);
    QFETCH(double, way);

    NcBench bench(0.01);
    bench.host.at("V") = from;
    QVERIFY(bench.start(2, program(2, {QString("N2 G90 G01 V=%1 F600.000").arg(to, 0, 'f', 2)})));
    double turned = 0;
    double last = from;
    QVERIFY(bench.untilDone(60, {2}, [&] {
        const double now = bench.host.at("V");
        QVERIFY(now >= 0 && now < 360);
        turned += std::remainder(now - last, 360.0);
        last = now;
    }));
    QVERIFY2(near(turned, way, 1e-6), qPrintable(QString::number(turned)));
    QVERIFY(near(bench.host.time, std::abs(way) / 10, 0.0101));
    QCOMPARE(bench.host.at("V"), to == 360.0 ? 0.0 : to);
}

// The beam follows the table over the path: 0 to 20 mA on the first 10 mm, held for 80, down on the last 10.
void TestNc::weldsALine()
{
    NcBench bench(0.01);
    QVERIFY(bench.start(3, lineWeldBeam));
    bench.forSeconds(1);
    QCOMPARE(bench.nc.waitingFor(3), 1);
    QVERIFY(bench.nc.event(3));
    QVERIFY(bench.start(1, lineWeldMotion));
    const double started = bench.host.time;

    const auto current = [](double path) {
        return path < 10 ? 2 * path : path > 90 ? 2 * (100 - path) : 20.0;
    };
    double worst = 0;
    double arrived = 0;
    QVERIFY(bench.untilDone(60, {1, 2, 3}, [&] {
        const double path = bench.host.at("X");
        worst = std::max(worst, std::abs(bench.host.at("IR") - current(path)));
        if (arrived == 0 && path == 100.0)
            arrived = bench.host.time;
        if (bench.nc.moving(1))
            QCOMPARE(bench.nc.mode(1), 5U);
    }));
    QVERIFY2(worst < 1e-6, qPrintable(QString::number(worst)));
    QVERIFY2(near(arrived - started, 0.2 + 10, 0.0101), qPrintable(QString::number(arrived)));
    QVERIFY2(near(bench.host.time - started, 0.2 + 10 + 1, 0.0101),
             qPrintable(QString::number(bench.host.time)));

    QCOMPARE(bench.host.at("IW"), 700.0);
    QCOMPARE(bench.host.written("@AXISMOVING?"), QStringList("FALSE"));
    QCOMPARE(bench.host.written("@1"), QStringList("1"));
    QCOMPARE(bench.host.systems.value(1), QStringList({"0,2", "1", "2", "0,2", "0,2"}));
    for (int event = 1; event < 10; ++event)
        QVERIFY(!bench.nc.event(event));
    QCOMPARE(bench.host.reports, QStringList({"channel 1: end of program", "channel 3: end of program"}));
}

void TestNc::ringStopsAndGoesOn()
{
    NcBench bench(0.01);
    bench.start(3, ringBeam);
    bench.forSeconds(1);
    bench.start(2, ringTurn(12));
    bench.forSeconds(1);
    bench.start(1, ringManipulator(9));
    QVERIFY(bench.untilDone(60, {1, 2}));
    QCOMPARE(bench.host.at("V"), 90.0);
    bench.forSeconds(20);
    QCOMPARE(bench.nc.state(1), ChannelState::Idle);
    QCOMPARE(bench.nc.state(3), ChannelState::Running);
    QCOMPARE(bench.host.at("IR"), 10.0);
    QCOMPARE(bench.host.told("waits"), QStringList("channel 3 waits for event 5"));

    // The operator goes on: the same programs, entered behind the stop.
    bench.start(2, ringTurn(29));
    bench.forSeconds(1);
    QCOMPARE(bench.nc.waitingFor(2), 5);
    QVERIFY(bench.nc.event(4));
    bench.start(1, ringManipulator(23));
    const double entered = bench.host.time + 0.2;
    double beamOff = 0;
    double turned = 0;
    QVERIFY(bench.untilDone(60, {1, 2, 3}, [&] {
        if (beamOff == 0 && bench.host.at("IR") == 0.0)
            beamOff = bench.host.time;
        if (turned == 0 && bench.host.at("V") == 359.0)
            turned = bench.host.time;
    }));
    QVERIFY(near(beamOff - entered, 3, 0.0201));
    // From 90 to 359 the shorter way, over the zero.
    QVERIFY(near(turned - entered, 91.0 / 90, 0.0201));
    QVERIFY(bench.host.told("deadlock").isEmpty());
    for (int channel = 1; channel <= 3; ++channel)
        QCOMPARE(bench.nc.error(channel), QString());
    QVERIFY(!bench.nc.event(4) && !bench.nc.event(5));
}

// Even an event that its own channel resets at once is seen by all the others.
void TestNc::eventStandsUntilSeen()
{
    NcBench bench(0.01);
    QVERIFY(bench.nc.start(2, program(2, {"N2 G4 F0.013", "N3 WEV(7)"})));
    QVERIFY(bench.nc.start(1, program(1, {"N2 G4 F0.005", "N3 SEV(7)", "N4 REV(ALL)"})));
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
void TestNc::eventIsTakenOnce()
{
    NcBench bench(0.01);
    QVERIFY(bench.nc.start(2, program(2, {"N2 WREV(5)"})));
    QVERIFY(bench.nc.start(3, program(3, {"N2 WEV(5)", "N3 SEV(6)"})));
    QVERIFY(bench.start(1, program(1, {"N2 G4 F0.1", "N3 SEV(5)", "N4 WEV(6)", "N5 WREV(6)"})));
    QVERIFY(bench.untilDone(1));
    QVERIFY(!bench.nc.event(5));
    QVERIFY(!bench.nc.event(6));

    QVERIFY(bench.start(1, program(1, {"N2 SEV(5)", "N3 WREV(5)", "N4 WREV(5)"})));
    QVERIFY(!bench.untilDone(1));
    QCOMPARE(bench.nc.currentLine(1), 4);
    bench.nc.stopAll();
}

void TestNc::tellsDeadlockOnce()
{
    NcBench bench(0.05);
    QVERIFY(bench.start(1, program(1, {"N2 WREV(6)"})));
    QVERIFY(bench.start(3, program(3, {"N2 G4 F2.0", "N3 WREV(8)"})));
    bench.forSeconds(6.9);
    QVERIFY(bench.host.reports.isEmpty());
    bench.forSeconds(60);
    QCOMPARE(bench.host.reports,
             QStringList("deadlock: channel 1 waits for event 6, channel 3 waits for event 8"));

    // Something that moves is no deadlock; standing still again is told again.
    QVERIFY(bench.start(2, program(2, {"N2 G4 F20"})));
    bench.forSeconds(19);
    QCOMPARE(bench.host.reports.size(), 1);
    bench.forSeconds(8);
    QCOMPARE(bench.host.told("deadlock").size(), 2);
}

void TestNc::stopAllEndsWhereItStands()
{
    NcBench bench(0.01);
    QVERIFY(bench.nc.start(3, program(3, {"N2 GAX(IR)", "N3 SEV(9)", "N4 G01 IR=60 F600"})));
    QVERIFY(bench.nc.start(2, program(2, {"N2 WEV(8)"})));
    QVERIFY(bench.start(1, program(1, {"N2 G90 G01 x=100 F600"})));
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
    QVERIFY(bench.start(3, program(3, {"N2 GAX(IR)", "N3 G01 IR=0 F600", "N4 RAX(IR)"})));
    const double started = bench.host.time;
    QVERIFY(bench.untilDone());
    QCOMPARE(bench.nc.error(3), QString());
    QVERIFY(near(bench.host.time - started, 2, 0.0101));
}

void TestNc::statesOneAfterTheOther()
{
    NcBench bench(0.01);
    QCOMPARE(bench.nc.state(1), ChannelState::Idle);
    QCOMPARE(bench.nc.mode(1), 1U);
    QVERIFY(bench.nc.start(1, program(1, {"N2 G90 G01 x=1 F600"})));
    QCOMPARE(bench.nc.state(1), ChannelState::Loading);
    QCOMPARE(bench.nc.mode(1), 5U);
    QVERIFY(!bench.nc.start(1, program(1, {})));
    bench.nc.step(0.01);
    QCOMPARE(bench.nc.state(1), ChannelState::Running);
    QCOMPARE(bench.host.at("X"), 0.0);
    bench.nc.step(0.01);
    QVERIFY(bench.nc.moving(1));
    QCOMPARE(bench.nc.currentLine(1), 2);
    QVERIFY(near(bench.host.at("X"), 0.1, 1e-9));
    QVERIFY(!bench.nc.start(1, program(1, {})));
    QCOMPARE(bench.host.told("start refused").size(), 2);
    QVERIFY(bench.untilDone(1));
    QVERIFY(!bench.nc.moving(1));

    // An error stays until the next start or the next stop.
    QVERIFY(!bench.nc.start(1, "nonsense"));
    bench.forSeconds(1);
    QCOMPARE(bench.nc.state(1), ChannelState::Error);
    QVERIFY(bench.start(1, program(1, {})));
    QCOMPARE(bench.nc.error(1), QString());
    QVERIFY(bench.untilDone(1));
    QVERIFY(!bench.nc.start(1, "nonsense"));
    bench.nc.stopAll();
    bench.step();
    QCOMPARE(bench.nc.state(1), ChannelState::Idle);
}

// Both ends lie within the limits, the crown of the arc does not.
void TestNc::limitInsideAnArc()
{
    NcBench bench(0.01);
    bench.host.mayMove = [](const QString& axis, double target) {
        return axis == "Y" && target > 4 ? QString("Y is at its limit") : QString();
    };
    QVERIFY(bench.start(1, program(1, {"N2 G17", "N3 G02 x=10 y=0 R5 F600"})));
    QVERIFY(bench.untilDone());
    QCOMPARE(bench.nc.error(1), QString("line 3: Y is at its limit"));
    QVERIFY(near(bench.host.at("Y"), 4, 0.1));
    QVERIFY(near(bench.host.at("X"), 2, 0.1));
}

void TestNc::drivesOffInMotion()
{
    NcBench bench(0.01);
    bool on = true;
    bench.host.mayMove = [&](const QString&, double) { return on ? QString() : QString("drives are off"); };
    QVERIFY(bench.start(1, program(1, {"N2 G90 G01 x=100 F600", "N3 G4 F1"})));
    bench.forSeconds(3);
    on = false;
    bench.step();
    QCOMPARE(bench.nc.error(1), QString("line 2: drives are off"));
    QVERIFY(near(bench.host.at("X"), 30, 1e-9));
    // A dwell needs no drive.
    QVERIFY(bench.start(1, program(1, {"N2 G4 F1"})));
    QVERIFY(bench.untilDone());
    QCOMPARE(bench.nc.error(1), QString());
}

void TestNc::hostStopsAllUponAnError()
{
    NcBench bench(0.01);
    bench.host.onReport = [&](const QString& text) {
        if (text.contains("without feed"))
            bench.nc.stopAll();
    };
    QVERIFY(bench.nc.start(3, program(3, {"N2 GAX(IR)", "N3 G01 IR=60 F600"})));
    QVERIFY(bench.start(1, program(1, {"N2 G4 F1", "N3 G01 x=1"})));
    bench.forSeconds(2);
    QCOMPARE(bench.nc.state(3), ChannelState::Idle);
    QVERIFY(near(bench.host.at("IR"), 10, 0.2));
    QCOMPARE(bench.nc.error(1), QString("line 3: motion without feed"));
}

void TestNc::endlessCircleDoesNotHang()
{
    NcBench bench(0.01);
    QVERIFY(bench.start(1, program(1, {"N2 WAIT", "N3 GOTO N2"})));
    QVERIFY(bench.start(2, program(2, {"N2 G4 F0.000000000001", "N3 GOTO N2"})));
    bench.forSeconds(0.1);
    QCOMPARE(bench.nc.state(1), ChannelState::Running);
    QCOMPARE(bench.nc.state(2), ChannelState::Running);
    bench.nc.stopAll();
    bench.step();
    QCOMPARE(bench.nc.state(1), ChannelState::Idle);
}

// A file cut at any byte, or with any one byte wrong, is refused or runs into an error with its line; when it
// still makes sense it ends. Nothing else happens.
void TestNc::cutAndGarbledPrograms()
{
    const QString whole = QString(lineWeldMotion).remove("N6 WREV(3)\n").replace("GOTO N6", "GOTO N7");
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

void TestNc::hugeProgram()
{
    QStringList lines;
    for (int i = 0; i < 200000; ++i)
        lines.append(QString("N%1 G90 G01 x=%2 F60000").arg(i + 100).arg(i % 10));
    NcBench bench(1);
    QElapsedTimer timer;
    timer.start();
    QVERIFY(bench.start(1, program(1, lines)));
    QVERIFY2(timer.elapsed() < 30000, qPrintable(QString::number(timer.elapsed())));
    bench.forSeconds(5);
    QCOMPARE(bench.nc.state(1), ChannelState::Running);
}

void TestNc::writesVariables()
{
    NcBench bench(0.01);
    const QStringList lines{"1 @AXISMOVING?=FALSE", "N2 G4 F0.5",        "2 @1=12",
                            "1 @RASTERAMPX=1e-05",  "7 @RASTERTYPE%=17", "8 @RASTERON% = 1"};
    QVERIFY2(bench.start(1, program(1, lines)), qPrintable(bench.nc.error(1)));
    QVERIFY(bench.untilDone());
    QStringList seen;
    for (const auto& one : bench.host.variables)
        seen.append(one.name + '=' + one.value);
    QCOMPARE(seen, QStringList({"@AXISMOVING?=FALSE", "@1=12", "@RASTERAMPX=1e-05", "@RASTERTYPE%=17",
                                "@RASTERON%=1"}));
    QVERIFY(bench.host.variables.first().time < 0.02);
    QVERIFY(near(bench.host.variables.at(1).time, 0.5, 0.0101));
}

// However a program ends, the beam axes are free for the next one.
void TestNc::beamAxesAreGivenBack()
{
    NcBench bench(0.01);
    QVERIFY(bench.start(3, program(3, {"N2 GAX(IR)"})));
    QVERIFY(bench.untilDone());
    QVERIFY(bench.start(3, program(3, {"N2 G0 IR=1"})));
    QVERIFY(bench.untilDone());
    QCOMPARE(bench.nc.error(3), QString("line 2: IR was not taken"));
}

QTEST_GUILESS_MAIN(TestNc)
#include "test_nc.moc"
