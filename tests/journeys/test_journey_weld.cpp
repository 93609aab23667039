#include "commandlog.h"
#include "journey.h"

// Welds from nothing to the end of their run, by touches alone, on the simulated installation.
class TestJourneyWeld : public QObject
{
    Q_OBJECT

private slots:
    void lineTaughtByJogging();
    void ringJointOfTwoPasses();
    void circularSeamOfThreePoints();
    void arcFrameInEachPlane_data();
    void arcFrameInEachPlane();
    void twoTechnologicalStops();
    void twoTechnologicalStopsInARing();
    void manualCurrentControl();

private:
    // A row of the technology table above the last: path, current.
    static void addTechRow(Operator& hand, const QString& path, const QString& current);
    static void addStop(Operator& hand);
    // A straight seam along LX from 0, the machine back at its start, the technology tab open.
    static void teachLine(Operator& hand, const QString& length);
    // The start button, until channel 1 has been seen to run: a short run may be over on the label already.
    static void press(Journey& journey);
    static void startAndWait(Journey& journey, bool withBeam = true);
    static void waitEnd(Journey& journey);
    static void expectNoErrors(Journey& journey);
};

void TestJourneyWeld::addTechRow(Operator& hand, const QString& path, const QString& current)
{
    const int last = hand.rows("twTechTab") - 1;
    hand.tapCell("twTechTab", last, 0);
    hand.tap("pbInsTechPoint");
    hand.tapCell("twTechTab", last, 0);
    hand.enterNumber(path);
    hand.tapCell("twTechTab", last, 1);
    hand.enterNumber(current);
    Hand::expect(hand.cell("twTechTab", last, 1) == QString::number(current.toDouble(), 'f', 1),
                 "current " + current + " in row " + QString::number(last));
}

void TestJourneyWeld::addStop(Operator& hand)
{
    hand.tap("pbTemplate");
    hand.tapMenu("Останов");
}

void TestJourneyWeld::teachLine(Operator& hand, const QString& length)
{
    hand.setSpeed("LX", "3000");
    for (const char* axis : {"LX", "LY", "Z"})
        hand.moveTo(axis, "0");
    hand.tap("pbNew");
    hand.tapMenu("Смешаная интерполяция");
    hand.tap("pbIns");
    hand.moveTo("LX", length);
    hand.tap("pbIns");
    hand.setNumber("contourSpeed", "1200");
    hand.tapCell("twContour", 0, 0);
    hand.waitText("coordLX", "0.00");
    hand.waitIdle();
    hand.tapTab("contour", 1);
    hand.setNumber("weldSpeed", "600");
}

void TestJourneyWeld::press(Journey& journey)
{
    const QString runs = "Канал 1: выполнение автоматической программы";
    const int before = journey.journal().count(runs);
    journey.hand.tap("pbGcode");
    journey.hand.waitFor("channel 1 runs", [&] { return journey.journal().count(runs) > before; });
}

void TestJourneyWeld::startAndWait(Journey& journey, bool withBeam)
{
    journey.hand.waitIdle();
    press(journey);
    if (withBeam)
        Hand::expect(journey.journal().contains("Канал 3: выполнение"), "channel 3 runs");
    waitEnd(journey);
}

void TestJourneyWeld::waitEnd(Journey& journey)
{
    journey.hand.waitText("channel3State", "бездействие", 60'000);
    journey.hand.waitIdle();
    expectNoErrors(journey);
}

void TestJourneyWeld::expectNoErrors(Journey& journey)
{
    const QString journal = journey.journal();
    Hand::expect(!journal.contains("ошибка в канале"), "no channel reports an error:\n" + journal);
}

void TestJourneyWeld::lineTaughtByJogging()
{
    Journey journey;
    Operator& hand = journey.hand;
    const QString trouble = journey.runLoggedIn([&] {
        hand.switchOn(true);
        hand.setSpeed("LX", "1500");
        hand.setSpeed("LY", "1500");
        hand.setSpeed("Z", "1500");
        for (const char* axis : {"LX", "LY", "Z"})
            hand.moveTo(axis, "0");
        hand.tap("pbNew");
        hand.tapMenu("Смешаная интерполяция");
        hand.tap("pbIns");
        hand.jog("pbMinusZ", "Z", 5); // the button of this name jogs towards positive Z
        Hand::expect(hand.text("coordZ").toDouble() > 4, "Z went up");
        hand.moveTo("Z", "0");
        hand.jog("pbPlusLX", "LX", 20);
        Hand::expect(hand.text("coordLX").toDouble() > 19, "LX went forth");
        hand.moveTo("LX", "100");
        hand.tap("pbIns");
        Hand::expect(hand.rows("twContour") == 2, "two points");
        hand.waitText("length", "100.00");
        hand.setNumber("contourSpeed", "1200");

        hand.tapCell("twContour", 0, 0); // back to the start of the seam
        hand.waitText("coordLX", "0.00");

        hand.tapTab("contour", 1);
        hand.setNumber("weldSpeed", "600");
        addTechRow(hand, "10", "20");
        addTechRow(hand, "90", "20");
        startAndWait(journey);
        Hand::expect(hand.text("coordLX") == "100.00", "the seam ends at 100 mm");
        hand.tapTab("contour", 0);
        Hand::expect(hand.currentRow("twContour") == 1, "the highlight stands on the last point");
    });
    QCOMPARE(trouble, QString());
    QCOMPARE(QString(journey.program(3)),
             QString("N1 $3\nN2 GAX(IR)\nN3 GAX(IW)\nN4 G0 IR=0.0\nN5 G0 IW=700\n"
                     "N6 REV(ALL)\nN7 WAIT\nN8 G4 F0.5\nN9 SEV(3)\nN10 WAIT\n"
                     "N11 WEV(1)\nN12 WAIT\nN13 G0 IR=0.0\n"
                     "N14 G90 G01 IR=20.0 IW=700 F1200.000\nN15 G4 F8.000\n"
                     "N16 G90 G01 IR=0.0 IW=700 F1200.000\nN17 G0 IR=0.0\n"
                     "N18 G4 F1.0\nN19 RAX(IR)\nN20 RAX(IW)\nN21 M30"));
    QCOMPARE(
        QString(journey.program(1)),
        QString("N1 $1\nN2 COORD(1)\nN3 G4 F0.2\nN4 COORD(2)\nN5 GOTO N6\nN6 WREV(3)\nN7 WAIT\nN8 SEV(1)\n"
                "1 @AXISMOVING?=FALSE\nN9 WAIT\nN10 G90 G01 x=10.00 y=0.00 z=0.00 F600.000\n"
                "N11 G90 G01 x=90.00 y=0.00 z=0.00 F600.000\nN12 G90 G01 x=100.00 y=0.00 z=0.00 F600.000\n"
                "N13 REV(ALL)\nWAIT\n1 @1=1\nN14 G4 F0.2\nN15 COORD(0,2)\nN16 M30"));
    QVERIFY(journey.program(2).isEmpty());
}

void TestJourneyWeld::ringJointOfTwoPasses()
{
    Journey journey(60);
    Operator& hand = journey.hand;
    const QString trouble = journey.runLoggedIn([&] {
        hand.switchOn(true);
        hand.tap("pbNew");
        hand.tapMenu("Кольцевой стык");
        hand.enterNumber("229.18");
        hand.enterNumber("4");
        Hand::expect(hand.rows("twContour") == 4, "four points");
        hand.tap("pbRing");
        hand.waitText("pbRing", "Контур\nзамкнут");
        hand.setNumber("nrings", "2");
        hand.tapTab("contour", 1);
        hand.setNumber("weldSpeed", "1200");
        addTechRow(hand, "30", "50");
        addTechRow(hand, "1400", "50");
        startAndWait(journey);
        Hand::expect(hand.text("coordV") == "0.00" || hand.text("coordV") == "360.00", "the ring is closed");
    });
    QCOMPARE(trouble, QString());
    QVERIFY(
        journey.program(1).startsWith("N1 $1\nN2 COORD(1)\nN3 G4 F0.2\nN4 COORD(2)\nN5 GOTO N9\nN8 G4 F0.5\n"
                                      "N9 WREV(3)\nN10 WAIT\nN11 WREV(2)\nN16 WAIT\nN17 SEV(1)\n"
                                      "1 @AXISMOVING?=FALSE\nN18 WAIT\n"));
    QVERIFY(
        journey.program(2).startsWith("N1 $2\nN6 ARF(V=2.00)\nN7 GOTO N12\nN12 SEV(2)\nN13 WAIT\nN14 WEV(1)\n"
                                      "N15 WAIT\n"));
    QVERIFY(journey.program(1).contains("REV(ALL)\nWAIT\n1 @1=0\n"));
    QCOMPARE(journey.program(2).count(" V=0.00 "), 2); // both passes end at the seam's start
}

void TestJourneyWeld::circularSeamOfThreePoints()
{
    Journey journey(60);
    Operator& hand = journey.hand;
    const QString trouble = journey.runLoggedIn([&] {
        hand.switchOn(true);
        hand.setSpeed("LX", "3000");
        hand.setSpeed("LY", "3000");
        hand.tap("pbNew");
        hand.tapMenu("Круговая интерполяция");
        hand.enterNumber("80");
        const char* points[][2] = {{"150", "100"}, {"100", "150"}, {"50", "100"}};
        for (const auto& point : points) {
            hand.moveTo("LX", point[0]);
            hand.moveTo("LY", point[1]);
            hand.tap("pbIns");
        }
        Hand::expect(hand.rows("twContour") == 3, "three points");
        hand.tap("pbRing");
        hand.waitText("pbRing", "Контур\nзамкнут");
        hand.setNumber("contourSpeed", "1200");
        hand.tapCell("twContour", 0, 0);
        hand.waitText("coordLX", "150.00");
        hand.waitText("coordLY", "100.00");
        hand.tapTab("contour", 1);
        Hand::expect(hand.text("diameter") == "100.00",
                     "diameter from three points: " + hand.text("diameter"));
        Hand::expect(hand.text("centerX") == "100.00" && hand.text("centerY") == "100.00", "centre");
        hand.setNumber("weldSpeed", "900");
        addTechRow(hand, "20", "30");
        startAndWait(journey);
        Hand::expect(hand.text("coordLX") == "150.00" && hand.text("coordLY") == "100.00",
                     "the seam ends where it began");
    });
    QCOMPARE(trouble, QString());
    QVERIFY(journey.program(1).contains("G90 G03 x=100.00 y=150.00 R50.00 z=0.00 F900.000"));
}

void TestJourneyWeld::arcFrameInEachPlane_data()
{
    QTest::addColumn<int>("plane");
    QTest::addColumn<QString>("secondPoint");
    QTest::addColumn<QByteArray>("block");
    QTest::newRow("XY") << 0 << "40 20 0" << QByteArray("G90 G3 x=40.00 y=20.00 R20.00 z=0.00 F600.000");
    QTest::newRow("XZ") << 1 << "40 0 20" << QByteArray("G90 G3 x=40.00 z=20.00 R20.00 y=0.00 F600.000");
    QTest::newRow("YZ") << 2 << "20 40 20" << QByteArray("G90 G3 y=40.00 z=20.00 R20.00 x=20.00 F600.000");
}

void TestJourneyWeld::arcFrameInEachPlane()
{
    QFETCH(int, plane);
    QFETCH(QString, secondPoint);
    QFETCH(QByteArray, block);
    Journey journey(40);
    Operator& hand = journey.hand;
    // A quarter circle from (20, 0) to (40, 20) in the plane, kept in a file as another day left it.
    const QString first = plane == 2 ? "20 20 0" : "20 0 0";
    QFile file(site().programDir() + "/contours/arc.save");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QStringLiteral("arc\nXYZ\n-1 0 0\n-1 -1\n0 1\n600\n2\n%1 2 1 %2 20 \n%3 0 \n2\n"
                              "+ 0.00 0.0 700 0.0 0.0 600.0 2 \n+ 31.42 0.0 700 0.0 0.0 600.0 2 \n")
                   .arg(first)
                   .arg(plane)
                   .arg(secondPoint)
                   .toUtf8());
    file.close();
    const QString trouble = journey.runLoggedIn([&] {
        hand.switchOn(true);
        hand.tap("pbLoad");
        hand.tapItem("listWidget_prog", "arc");
        hand.tap("pbLoad");
        hand.waitGone("listWidget_prog");
        hand.waitText("length", "31.42");
        hand.setNumber("contourSpeed", "1200");
        hand.tapCell("twContour", 0, 0);
        hand.waitText("coordLX", "20.00");
        hand.tapTab("contour", 1);
        addTechRow(hand, "10", "25");
        startAndWait(journey);
        const QStringList end = secondPoint.split(' ');
        Hand::expect(hand.text("coordLX").toDouble() == end[0].toDouble() &&
                         hand.text("coordLY").toDouble() == end[1].toDouble() &&
                         hand.text("coordZ").toDouble() == end[2].toDouble(),
                     "the arc ends at its second point");
    });
    QCOMPARE(trouble, QString());
    QVERIFY2(journey.program(1).contains(block), journey.program(1));
}

void TestJourneyWeld::twoTechnologicalStops()
{
    Journey journey(40);
    Operator& hand = journey.hand;
    const QString trouble = journey.runLoggedIn([&] {
        hand.switchOn(true);
        teachLine(hand, "90");
        addTechRow(hand, "30", "20");
        for (const char* path : {"60", "80"}) {
            addStop(hand);
            addTechRow(hand, path, "20");
        }
        for (const char* x : {"30.00", "60.00"}) {
            press(journey);
            hand.waitText("coordLX", x);
            hand.waitIdle(); // the program ends a moment after its last move
            hand.waitText("pbGcode", "ДАЛЕЕ");
            Hand::expect(hand.text("channel3State") == "выполнение", "channel 3 waits with the beam");
        }
        hand.tap("pbGcode");
        hand.waitText("coordLX", "90.00", 30'000);
        waitEnd(journey);
        hand.waitText("pbGcode", "ПУСК");
    });
    QCOMPARE(trouble, QString());
    QVERIFY(journey.program(3).contains("WREV(4)"));
    QVERIFY(journey.program(3).contains("WREV(6)"));
}

void TestJourneyWeld::twoTechnologicalStopsInARing()
{
    Journey journey(60);
    Operator& hand = journey.hand;
    const QString trouble = journey.runLoggedIn([&] {
        hand.switchOn(true);
        hand.tap("pbNew");
        hand.tapMenu("Кольцевой стык");
        hand.enterNumber("100");
        hand.enterNumber("3");
        hand.tap("pbRing");
        hand.waitText("pbRing", "Контур\nзамкнут");
        hand.tapTab("contour", 1);
        hand.setNumber("weldSpeed", "900");
        addTechRow(hand, "60", "20");
        for (const char* path : {"160", "250"}) {
            addStop(hand);
            addTechRow(hand, path, "20");
        }
        for (int stop = 0; stop < 2; ++stop) {
            press(journey);
            hand.waitText("pbGcode", "ДАЛЕЕ", 30'000);
            hand.waitText("channel1State", "бездействие");
            hand.waitText("channel2State", "бездействие");
        }
        press(journey);
        waitEnd(journey);
        hand.waitText("pbGcode", "ПУСК");
    });
    QCOMPARE(trouble, QString());
    QVERIFY(journey.program(3).contains("WEV(5)"));
    QVERIFY(journey.program(3).contains("WEV(7)"));
}

void TestJourneyWeld::manualCurrentControl()
{
    Journey journey(40);
    Operator& hand = journey.hand;
    const CommandLog log;
    const QString trouble = journey.runLoggedIn([&] {
        hand.switchOn(true);
        teachLine(hand, "50");
        hand.tap("pbSettings");
        hand.tap("cbTestMode");
        hand.tap("pbSettingsDone");
        hand.waitGone("pbSettingsDone");
        Hand::expect(hand.text("lblContour").endsWith("(без управления током)"), hand.text("lblContour"));
        startAndWait(journey, false);
        Hand::expect(hand.text("coordLX") == "50.00", "the pass ends at the last point");
    });
    QCOMPARE(trouble, QString());
    QCOMPARE(CommandLog::count("EXEC_3("), 0);
    QVERIFY(journey.program(3).isEmpty());
}

QTEST_MAIN(TestJourneyWeld)
#include "test_journey_weld.moc"
