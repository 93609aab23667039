#include "weldfixture.h"
#include "weldprogram.h"

#include <QtTest>

namespace {

MotionPrograms generate(const Weld& weld)
{
    WeldStage stage;
    return contourPrograms(weld.tables, stage);
}

QStringList unnumbered(QStringList lines)
{
    for (QString& line : lines) {
        if (line.startsWith('N'))
            line = line.section(' ', 1);
    }
    return lines;
}

// Channel 1 between the meeting at the head and the tail that every weld has.
QStringList moves(const Weld& weld)
{
    const QStringList lines = unnumbered(generate(weld).channel1.split('\n'));
    const int begin = lines.indexOf("SEV(1)") + 3;
    return lines.mid(begin, lines.lastIndexOf("REV(ALL)") - begin);
}

// The angles to which channel 2 turns the part.
QStringList angles(const QString& channel2)
{
    QStringList list = channel2.split('\n').filter("G01 V=");
    for (QString& line : list)
        line = line.section("V=", 1).section(' ', 0, 0);
    return list;
}

} // namespace

class TestWeldProgram : public QObject
{
    Q_OBJECT

private slots:
    // Rows as the table is created: nothing to ramp, nothing to cut.
    void tableAsCreated()
    {
        Weld weld(new SchemaXYZ);
        weld.row(0, 0, 600).end();
        compare(technologyProgram(weld.tables),
                "N1 $3 | N2 GAX(IR) | N3 GAX(IW) | N4 G0 IR=0.0 | N5 G0 IW=700 | N6 REV(ALL) | N7 WAIT | "
                "N8 G4 F0.5 | N9 SEV(3) | N10 WAIT | N11 WEV(1) | N12 WAIT | N13 G0 IR=0.0 | N14 G0 IR=0.0 | "
                "N15 G4 F1.0 | N16 RAX(IR) | N17 RAX(IW) | N18 M30");
        compare(moves(weld), "");
        QVERIFY(generate(weld).channel1.contains("\n1 @1=0\n"));
    }

    void rampsPausesAndSteps()
    {
        Weld weld(new SchemaXYZ);
        weld.row(0, 0, 600).row(10, 3, 600, 704); // both axes: 3 and 4 mA in a second
        weld.row(10, 9, 300, 704);                // a step is taken by no ramp
        weld.row(15, 9, 0, 704);                  // a second at the speed of the row before; then speed 0
        weld.row(20, 12, 600, 704);               // nothing passes a stretch at speed 0
        weld.row(30, 10, 600, 704);               // from 12 mA, the row's own value
        weld.row(35, 99, 600).row(40, 10, 600, 704).row(50, 0, 600, 704);
        weld.tables.tech[6].on = false; // a row switched off leaves the program
        const QStringList lines = technologyProgram(weld.tables).split('\n');
        compare(unnumbered(lines.mid(13, 5)),
                "G90 G01 IR=3.0 IW=704 F300.000 | G4 F1.000 | G90 G01 IR=10.0 IW=704 F120.000 | G4 F1.000 | "
                "G90 G01 IR=0.0 IW=704 F600.000");
    }

    void rasterBlocks()
    {
        Weld weld(new SchemaXYZ);
        weld.row(0, 0, 600).row(10, 0, 600).row(20, 0, 600).row(30, 0, 600);
        Raster on;
        on.kind = Raster::On;
        on.type = 17;
        on.ampX = -33.3f;
        on.ampY = 0.1f;
        on.angle = 45;
        on.freq = 1000;
        on.shiftX = 12.345678f;
        on.param = 1e-7f;
        on.cw = 1;
        weld.tables.tech[0].raster = on;
        weld.tables.tech[1].raster.kind = Raster::Off;
        weld.tables.tech[3].raster.kind = Raster::Off; // the last row is honoured like any other
        const QStringList lines = technologyProgram(weld.tables).split('\n');
        compare(lines.mid(12, 20),
                "N13 G0 IR=0.0 | WAIT | 1 @RASTERTYPE%=17 | 2 @RASTERAMPX=-33.3 | 3 @RASTERAMPY=0.1 | "
                "4 @RASTERANGLE=45 | 5 @RASTERFREQ=1000 | 6 @RASTERSHIFTX=12.3457 | 7 @RASTERSHIFTY=0 | "
                "8 @RASTERPARAM=1e-07 | 9 @RASTERCW%=1 | 10 @RASTERON%=1 | N14 G4 F1.000 | WAIT | "
                "11 @RASTERON%=0 | N15 G4 F1.000 | N16 G4 F1.000 | WAIT | 12 @RASTERON%=0 | N17 G0 IR=0.0");
    }

    // Two passes: the turn and the wait of each quarter, a cut, whole turns kept. 392.70 is the end of a
    // frame of the second pass: the faster feed begins after it.
    void ringOfTwoPasses()
    {
        Weld weld = ring(2);
        weld.row(0, 10, 600).row(39.27f, 10, 300).row(392.70f, 10, 1200).end(10);
        const MotionPrograms programs = generate(weld);
        compare(programs.channel1,
                "N1 $1 | N2 COORD(1) | N3 G4 F0.2 | N4 COORD(2) | N5 GOTO N9 | N8 G4 F0.5 | N9 WREV(3) | "
                "N10 WAIT | N11 WREV(2) | N16 WAIT | N17 SEV(1) | 1 @AXISMOVING?=FALSE | N18 WAIT | "
                "N19 G4 F3.927 | N21 G4 F7.854 | N23 G4 F15.708 | N25 G4 F15.708 | N27 G4 F15.708 | "
                "N29 G4 F15.708 | N31 G4 F3.927 | N33 G4 F3.927 | N35 G4 F3.927 | N37 REV(ALL) | WAIT | "
                "1 @1=0 | N38 G4 F0.2 | N39 COORD(0,2) | N40 M30");
        compare(programs.channel2,
                "N1 $2 | N6 ARF(V=0.87) | N7 GOTO N12 | N12 SEV(2) | N13 WAIT | N14 WEV(1) | N15 WAIT | "
                "N20 G90 G01 V=45.00 F600.000 | N22 G90 G01 V=90.00 F300.000 | "
                "N24 G90 G01 V=180.00 F300.000 | N26 G90 G01 V=270.00 F300.000 | "
                "N28 G90 G01 V=0.00 F300.000 | N30 G90 G01 V=90.00 F300.000 | "
                "N32 G90 G01 V=180.00 F1200.000 | N34 G90 G01 V=270.00 F1200.000 | "
                "N36 G90 G01 V=0.00 F1200.000 | N41 ARF() | N42 M30");
    }

    void zeroSpeedWritesNoInfinity()
    {
        Weld weld(new SchemaCircle(100, 2));
        weld.point({0, 10, 20, 30}).point({90, 13, 24, 30}).point({180, 13, 24, 30}).point({180, 13, 24, 31});
        weld.closed().measure().row(0, 5, 0).row(100, 5, 600).end(5, 0);
        // The first move takes nobody knows how long, no wait stands before the row at 100; where the part
        // stands still the manipulator has the table's speed.
        compare(moves(weld),
                "G90 G01 x=13.00 y=24.00 z=30.00 F0.000 | G4 F5.708 | "
                "G90 G01 x=13.00 y=24.00 z=31.00 F600.000 | G90 G01 x=10.00 y=20.00 z=30.00 F19.477");
        Weld circle = halfCircle();
        circle.row(0, 0, 0).row(50, 10, 0).end(0, 0);
        Weld line(new SchemaXYZ);
        line.point({0, 0, 0}, arc(20, 1, 0)).point({100, 0, 0}); // cannot reach: no length
        line.row(0, 0, 600).row(10, 20, 600).end();
        line.tables.tech.last().path = std::numeric_limits<float>::quiet_NaN();
        Weld straight = halfCircle(); // three points on a line have no circle
        straight.tables.contour.rows[1].coords = {0, 0, 5};
        straight.schema->setD(std::numeric_limits<float>::infinity());
        straight.tables.contour.centerX = std::numeric_limits<float>::quiet_NaN();
        straight.row(0, 0, 600).row(50, 10, 600).end();
        Weld still(new SchemaCircle(100, 1));
        still.point({0, 1, 2, 3}).closed().row(0, 0, 600).row(0, 0, 600).end();

        for (const Weld* w : {&weld, &circle, &line, &straight, &still}) {
            const WeldContour& contour = w->tables.contour;
            QString all = technologyProgram(w->tables);
            for (const MotionPrograms& programs :
                 {generate(*w), testMovePrograms(contour, 0),
                  navigationPrograms(contour, 0, 1, contour.rows[0].coords, "0.0")})
                all += programs.channel1 + programs.channel2;
            QVERIFY2(!all.contains("inf", Qt::CaseInsensitive) && !all.contains("nan", Qt::CaseInsensitive),
                     qPrintable(all));
        }
    }

    // After a navigation backward arcs turn the other way.
    void arcAfterAStepBackward()
    {
        Weld weld(new SchemaXYZ);
        weld.point({50, 0, 7}, arc(50, 1, 0)).point({0, 50, 7});
        weld.tables.contour.moveForward = false;
        weld.row(0, 5, 600).row(float(50 * M_PI / 6), 5, 300).end(5);
        compare(moves(weld), "G17 | G90 G2 x=43.30 y=25.00 R50.00 z=7.00 F600.000 | "
                             "G17 | G90 G2 x=0.00 y=50.00 R50.00 z=7.00 F300.000");
    }

    void circleOfThreePoints()
    {
        Weld weld = halfCircle();
        weld.row(0, 0, 600).row(26.18f, 20, 600).row(130.90f, 20, 300).end();
        const MotionPrograms programs = generate(weld);
        compare(programs.channel1,
                "N1 $1 | N2 COORD(2) | N3 G17 | N4 GOTO N5 | N5 WREV(3) | N6 WAIT | N7 SEV(1) | "
                "1 @AXISMOVING?=FALSE | N8 WAIT | N9 G90 G03 x=43.30 y=25.00 R50.00 z=5.00 F600.000 | "
                "N10 G90 G03 x=0.00 y=50.00 R50.00 z=5.00 F600.000 | "
                "N11 G90 G03 x=-43.30 y=25.00 R50.00 z=5.00 F600.000 | "
                "N12 G90 G03 x=-50.00 y=0.00 R50.00 z=5.00 F300.000 | N13 REV(ALL) | WAIT | 1 @1=2 | "
                "N14 G16 | N15 COORD(0,2) | N16 M30");
        QCOMPARE(programs.channel2, QString());

        std::swap(weld.tables.contour.rows[0], weld.tables.contour.rows[2]);
        QVERIFY(generate(weld).channel1.contains("G90 G02 x=-43.30 y=25.00 R50.00 z=5.00 F600.000"));
        QVERIFY(!generate(weld).channel1.contains("G03"));
    }

    // Closed forward: the closing frame is cut whatever its first coordinate does, and ends the pass.
    void closedForward()
    {
        Weld weld(new SchemaXYZ);
        weld.point({0, 0, 0}).point({30, 40, 0}).point({0, 40, 0}).closed(2).measure();
        weld.row(0, 5, 600).row(100, 5, 300).row(220, 5, 1200).end(5);
        compare(moves(weld),
                "G90 G01 x=30.00 y=40.00 z=0.00 F600.000 | G90 G01 x=0.00 y=40.00 z=0.00 F600.000 | "
                "G90 G01 x=0.00 y=20.00 z=0.00 F600.000 | G90 G01 x=0.00 y=0.00 z=0.00 F300.000 | "
                "G90 G01 x=30.00 y=40.00 z=0.00 F300.000 | G90 G01 x=0.00 y=40.00 z=0.00 F300.000 | "
                "G90 G01 x=0.00 y=20.00 z=0.00 F300.000 | G90 G01 x=0.00 y=0.00 z=0.00 F1200.000");
        QVERIFY(generate(weld).channel1.contains("\n1 @1=0\n"));
    }

    void closedBackward()
    {
        Weld weld(new SchemaXYZ);
        weld.point({0, 0, 0}).point({60, 0, 0}).point({100, 0, 0}).closed(2, false).measure();
        weld.row(0, 5, 600).row(130, 5, 300).end(5);
        compare(moves(weld),
                "G90 G01 x=60.00 y=0.00 z=0.00 F600.000 | G90 G01 x=100.00 y=0.00 z=0.00 F600.000 | "
                "G90 G01 x=30.00 y=0.00 z=0.00 F600.000 | G90 G01 x=60.00 y=0.00 z=0.00 F300.000 | "
                "G90 G01 x=100.00 y=0.00 z=0.00 F300.000");
    }

    // Two decimals put the end of the table before or behind the end of the pass: a ring as it is created
    // turns once either way, and stops there.
    void ringOfTheFixedRowsTurns()
    {
        QVector<QPair<int, int>> rings{{146, 300}}; // the way counts in steps of 0.0156 mm there
        for (int D = 50; D <= 150; D += 5)
            rings.append({D, D % 2 + 1});
        for (const auto& [D, passes] : qAsConst(rings)) {
            Weld weld = ring(passes);
            weld.schema->setD(float(D));
            weld.tables.contour.rows[0].coords[0] = 360; // is written as 0
            weld.row(0, 0, 600).end();
            QCOMPARE(angles(generate(weld).channel2).join(' '), QString("90.00 180.00 270.00 0.00"));
            const double pause =
                technologyProgram(weld.tables).section("N14 G4 F", 1).section('\n', 0, 0).toDouble();
            QVERIFY2(qAbs(pause - D * M_PI / 10) < (passes > 2 ? 0.003 : 0.0011),
                     qPrintable(QString::number(pause)));
        }
    }

    // Three stages of a line with two stops: the same text, entered further on each time.
    void stopsOfALine()
    {
        Weld weld(new SchemaXYZ);
        weld.point({0, 0, 0}).point({50, 0, 0}).point({100, 0, 0});
        weld.row(0, 5, 600).row(20, 5, 600).stop().row(70, 5, 300).stop().end(5);
        WeldStage stage;
        const QString first = contourPrograms(weld.tables, stage).channel1;
        compare(first,
                "N1 $1 | N2 COORD(1) | N3 G4 F0.2 | N4 COORD(2) | N5 GOTO N6 | N6 WREV(3) | N7 WAIT | "
                "N8 SEV(1) | 1 @AXISMOVING?=FALSE | N9 WAIT | N10 G90 G01 x=20.00 y=0.00 z=0.00 F600.000 | "
                "N11 REV(ALL) | N12 M30 | N13 WAIT | 2 @AXISMOVING?=TRUE | "
                "N14 G90 G01 x=20.00 y=0.00 z=0.00 F600.000 | WAIT | 3 @AXISMOVING?=FALSE | N15 SEV(4) | "
                "4 @AXISMOVING?=TRUE | N16 WAIT | N17 G90 G01 x=50.00 y=0.00 z=0.00 F600.000 | "
                "N18 G90 G01 x=70.00 y=0.00 z=0.00 F600.000 | WAIT | 5 @AXISMOVING?=FALSE | N19 REV(ALL) | "
                "N20 M30 | N21 WAIT | 6 @AXISMOVING?=TRUE | N22 G90 G01 x=70.00 y=0.00 z=0.00 F600.000 | "
                "WAIT | 7 @AXISMOVING?=FALSE | N23 SEV(6) | 8 @AXISMOVING?=TRUE | N24 WAIT | "
                "N25 G90 G01 x=100.00 y=0.00 z=0.00 F300.000 | N26 REV(ALL) | WAIT | 1 @1=2 | N27 G4 F0.2 | "
                "N28 COORD(0,2) | N29 M30");
        QCOMPARE(stage.stopsSeen, 2);
        QCOMPARE(stage.restartBlock1, 13);

        for (int entry : {13, 21}) {
            ++stage.stage;
            QCOMPARE(contourPrograms(weld.tables, stage).channel1,
                     QString(first).replace("GOTO N6", QString("GOTO N%1").arg(entry)));
            QCOMPARE(stage.stopsSeen, 2);
        }
        QCOMPARE(stage.restartBlock1, 21); // no third stop: the entry stays

        const QStringList beam = unnumbered(technologyProgram(weld.tables).split('\n'));
        compare(beam.mid(13, 7), "G4 F2.000 | WREV(4) | WAIT | G4 F5.000 | WREV(6) | WAIT | G4 F6.000");
    }

    void stopsOfARing()
    {
        Weld weld = ring(2);
        weld.row(0, 5, 600).stop().row(39.27f, 5, 300).stop().end(5);
        WeldStage stage;
        const MotionPrograms first = contourPrograms(weld.tables, stage);
        // At N21 nothing was run yet: nothing to repeat.
        compare(first.channel1.split('\n').mid(13, 30),
                "N19 REV(ALL) | N20 M30 | N21 WREV(4) | N22 WAIT | N23 SEV(5) | 2 @AXISMOVING?=TRUE | "
                "N24 WAIT | N30 G4 F3.927 | WAIT | 3 @AXISMOVING?=FALSE | N32 REV(ALL) | N33 M30 | "
                "N34 WREV(6) | N35 WAIT | N36 SEV(7) | 4 @AXISMOVING?=TRUE | N37 WAIT | N44 G4 F7.854 | "
                "N46 G4 F15.708 | N48 G4 F15.708 | N50 G4 F15.708 | N52 G4 F15.708 | N54 G4 F15.708 | "
                "N56 G4 F15.708 | N58 G4 F15.708 | N60 REV(ALL) | WAIT | 1 @1=0 | N61 G4 F0.2 | "
                "N62 COORD(0,2)");
        compare(first.channel2.split('\n').mid(7, 16),
                "N25 ARF() | N26 M30 | N27 SEV(4) | N28 WAIT | N29 WEV(5) | N31 G90 G01 V=45.00 F600.000 | "
                "N38 ARF() | N39 M30 | N40 G90 G01 V=45.00 F600.000 | N41 SEV(6) | N42 WAIT | N43 WEV(7) | "
                "N45 G90 G01 V=90.00 F300.000 | N47 G90 G01 V=180.00 F300.000 | "
                "N49 G90 G01 V=270.00 F300.000 | N51 G90 G01 V=0.00 F300.000");
        QCOMPARE(stage.restartBlock1, 21);
        QCOMPARE(stage.restartBlock2, 27);
        ++stage.stage;
        const MotionPrograms second = contourPrograms(weld.tables, stage);
        QCOMPARE(second.channel1, QString(first.channel1).replace("GOTO N9", "GOTO N21"));
        QCOMPARE(second.channel2, QString(first.channel2).replace("GOTO N12", "GOTO N27"));
        QCOMPARE(stage.restartBlock1, 34);
        QCOMPARE(stage.restartBlock2, 40);

        const QString beam = technologyProgram(weld.tables);
        QVERIFY(beam.contains("N14 WEV(5)\nN15 WAIT\n") && beam.contains("WEV(7)\n"));
    }

    // The moving flag falls at the first row after the stop, also when its cut is dropped.
    void stopBeforeADroppedCut()
    {
        Weld weld(new SchemaXYZ);
        weld.point({0, 0, 0}).point({0, 100, 0});
        weld.row(0, 5, 600).row(20, 5, 600).stop().row(50, 5, 300).end(5);
        const QStringList lines = moves(weld);
        compare(lines.mid(lines.size() - 5), "2 @AXISMOVING?=TRUE | WAIT | WAIT | 3 @AXISMOVING?=FALSE | "
                                             "G90 G01 x=0.00 y=100.00 z=0.00 F300.000");
    }

    // A stop in the closing frame takes one event, so the next one is 5 here.
    void stopInTheClosingFrame()
    {
        Weld weld(new SchemaXYZ);
        weld.point({0, 0, 0}).point({30, 40, 0}).point({0, 40, 0}).closed(2).measure();
        weld.row(0, 5, 600).row(100, 5, 600).stop().row(130, 5, 600).stop().end(5);
        const QString text = generate(weld).channel1;
        QVERIFY(text.contains("SEV(4)") && text.contains("SEV(5)") && !text.contains("SEV(6)"));
    }
};

QTEST_GUILESS_MAIN(TestWeldProgram)
#include "test_weldprogram.moc"
