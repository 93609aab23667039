#include "weldfixture.h"
#include "weldprogram.h"

#include <QtTest>

// Moves without beam: the test move over the whole contour, and the walk from point to point.
class TestWeldMoves : public QObject
{
    Q_OBJECT

private slots:
    void testMoveOfALineAndACircle()
    {
        Weld weld(new SchemaXYZ);
        weld.point({0, 0, 0}, arc(50, 1, 0)).point({50, 50, 0}).point({0, 50, 0}).closed();
        compare(testMovePrograms(weld.tables.contour, 600).channel1,
                "N1 $1 | N2 COORD(1) | N3 G4 F0.2 | N4 COORD(2) | "
                "N5 G90 G01 x=50.00 y=50.00 z=0.00 F600.000 | N6 G90 G01 x=0.00 y=50.00 z=0.00 F600.000 | "
                "N7 G90 G01 x=0.00 y=0.00 z=0.00 F600.000 | N8 REV(ALL) | WAIT | N9 G4 F0.2 | "
                "N10 COORD(0,2) | N11 M30");
        weld.closed(2, false);
        QCOMPARE(testMovePrograms(weld.tables.contour, 600).channel1.count("G01"), 4);

        const QString circle = testMovePrograms(halfCircle(2).tables.contour, 600).channel1;
        compare(circle.split('\n').mid(0, 4),
                "N1 $1 | N2 COORD(2) | N3 G19 | N4 G90 G03 y=0.00 z=50.00 R50.00 x=5.00 F600.000");
    }

    void testMoveOfARing()
    {
        Weld weld(new SchemaCircle(100, 2));
        weld.point({0, 10, 20, 30}).point({90, 13, 24, 30}).point({180, 13, 24, 30});
        const MotionPrograms programs = testMovePrograms(weld.tables.contour, 600);
        compare(programs.channel1,
                "N1 $1 | N2 COORD(1) | N3 G4 F0.2 | N4 COORD(2) | N9 WREV(2) | N10 WAIT | N11 SEV(1) | "
                "N12 WAIT | N18 G90 G01 x=13.00 y=24.00 z=30.00 F38.197 | N20 G4 F7.854 | N21 REV(ALL) | "
                "WAIT | N22 G4 F0.2 | N23 COORD(0,2) | N24 M30");
        compare(programs.channel2,
                "N1 $2 | N5 ARF(V=0.87) | N6 REV(ALL) | N7 WAIT | N8 G4 F0.5  | N13 SEV(2) | N14 WAIT | "
                "N15 WEV(1) | N16 WAIT | N17 G90 G01 V=90.00 F600.000 | N19 G90 G01 V=180.00 F600.000 | "
                "N25 ARF() | N26 M30");
    }

    void navigationByRows()
    {
        Weld weld(new SchemaXYZ);
        weld.point({0, 0, 0}).point({10, 0, 0}).point({20, 0, 0}).closed();
        WeldContour& contour = weld.tables.contour;
        const QList<float> live{1, 1, 1};
        compare(navigationPrograms(contour, 0, 2, live, "600.0").channel1,
                "N1 $1 | N2 COORD(1) | N3 G4 F0.2 | N4 COORD(2) | N5 G90 G01 x=0.00 y=0.00 z=0.00 F600.0 | "
                "WAIT | 1 @1=0 | N6 G90 G01 x=10.00 y=0.00 z=0.00 F600.0 | WAIT | 2 @1=1 | "
                "N7 G90 G01 x=20.00 y=0.00 z=0.00 F600.0 | WAIT | 3 @1=2 | N8 G4 F0.2 | N9 COORD(0,2) | "
                "N10 M30");
        // The current point once more: one frame, the return to it.
        QCOMPARE(navigationPrograms(contour, 1, 1, live, "600.0").channel1.count("G90"), 1);

        contour.moveForward = false;
        const QStringList back = navigationPrograms(contour, 2, 1, live, "600.0").channel1.split('\n');
        compare(back.mid(4, 6), "N5 G90 G01 x=20.00 y=0.00 z=0.00 F600.0 | WAIT | 1 @1=2 | "
                                "N6 G90 G01 x=10.00 y=0.00 z=0.00 F600.0 | WAIT | 2 @1=1");
        // From the last point of a closed contour to the first: the closing frame alone.
        const QStringList closing = navigationPrograms(contour, 2, 0, live, "600.0").channel1.split('\n');
        compare(closing.mid(4, 4), "N5 G90 G01 x=0.00 y=0.00 z=0.00 F600.0 | WAIT | 1 @1=0 | N6 G4 F0.2");
        contour.closed = false;
        QCOMPARE(navigationPrograms(contour, 2, 0, live, "600.0").channel1.count("G90"), 3);
    }

    void navigationTurnsArcsRound()
    {
        Weld weld = halfCircle();
        const QList<float> live{50, 0, 5};
        QVERIFY(navigationPrograms(weld.tables.contour, 0, 1, live, "600")
                    .channel1.contains("N5 G90 G02 x=0.00 y=50.00 R50.00 z=5.00 F600\n"));
        weld.tables.contour.moveForward = false;
        QVERIFY(navigationPrograms(weld.tables.contour, 1, 0, live, "600")
                    .channel1.contains("N5 G90 G03 x=50.00 y=0.00 R50.00 z=5.00 F600\n"));
    }

    void navigationOfARing()
    {
        Weld weld = ring(1);
        weld.tables.contour.rows[1].coords = {90, 13, 24, 30};
        // From a live position 18 degrees short of row 0, over 0.
        const MotionPrograms programs =
            navigationPrograms(weld.tables.contour, 0, 1, {342, 10, 20, 30}, "600.0");
        compare(programs.channel1,
                "N1 $1 | N2 COORD(1) | N3 G4 F0.2 | N4 COORD(2) | N8 G4 F1.571 | WAIT | 1 @1=0 | "
                "N10 G90 G01 x=13.00 y=24.00 z=30.00 F38.197 | WAIT | 2 @1=1 | N13 G4 F0.2 | "
                "N14 COORD(0,2) | N15 M30");
        compare(programs.channel2, "N1 $2 | N5 ARF(V=0.87) | N6 G4 F0.5  | N7 G90 G01 V=0.00 F600.0 | "
                                   "N9 G90 G01 V=90.00 F600.0 | N11 ARF() | N12 M30");

        // The closing step is timed from the last row, wherever the axes stand.
        weld.tables.contour.moveForward = false;
        const MotionPrograms closing =
            navigationPrograms(weld.tables.contour, 3, 0, {123, 10, 20, 30}, "600.0");
        QVERIFY(closing.channel1.contains("G4 F7.854\nWAIT\n1 @1=0\n"));
        QVERIFY(closing.channel2.contains("V=0.00 F600.0\nN9 ARF()"));
    }
};

QTEST_GUILESS_MAIN(TestWeldMoves)
#include "test_weldmoves.moc"
