#include "commandlog.h"
#include "journey.h"

// Welds from nothing to the end of their run, by touches alone, on the simulated installation.
class TestJourneyWeld : public QObject
{
    Q_OBJECT

private slots:
    void linesTaughtByJogging()
    {
        Journey journey(20);
        const CommandLog log;
        play(journey, [&](Operator& hand) {
            teachLine();
            backToStart();
            hand.setNumber("weldSpeed", "600");

            // A pass without control of the current.
            const auto testMode = [&] {
                hand.tap("pbSettings");
                hand.tap("cbTestMode");
                hand.tap("pbSettingsDone");
                hand.waitGone("pbSettingsDone");
            };
            testMode();
            Hand::expect(hand.text("lblContour").endsWith("(без управления током)"), hand.text("lblContour"));
            press();
            waitEnd("LX", "100.00");
            Hand::expect(CommandLog::count("EXEC_3(") == 0 && journey.program(3).isEmpty(), "no channel 3");
            testMode();

            backToStart();
            addTechRow("10", "20");
            addTechRow("40", "20");
            press();
            Hand::expect(journey.journal().contains("Канал 3: выполнение"), "channel 3 runs");
            waitEnd("LX", "100.00");
            expect(
                3,
                "N14 G90 G01 IR=20.0 IW=700 F1200.000\nN15 G4 F3.000\nN16 G90 G01 IR=0.0 IW=700 F200.000\n");
            expect(1,
                   "N10 G90 G01 x=10.00 y=0.00 z=0.00 F600.000\nN11 G90 G01 x=40.00 y=0.00 z=0.00 F600.000\n"
                   "N12 G90 G01 x=100.00 y=0.00 z=0.00 F600.000\n");
            Hand::expect(journey.program(2).isEmpty(), "no channel 2");
            hand.tapTab("contour", 0);
            Hand::expect(hand.currentRow("twContour") == 1, "the highlight stands on the last point");

            backToStart();
            addStops("70", "90");
            for (const char* x : {"40.00", "70.00"}) {
                press();
                expectStop();
                expectAt("LX", x);
            }
            press();
            waitEnd("LX", "100.00");
            expect(3, "WREV(4)");
            expect(3, "WREV(6)");
        });
    }

    void ringJoints()
    {
        Journey journey(60);
        play(journey, [&](Operator& hand) {
            const auto ring = [&](const char* diameter, const char* points) {
                newContour("Кольцевой стык");
                hand.enterNumber(diameter);
                hand.enterNumber(points);
                Hand::expect(hand.rows("twContour") == QString(points).toInt(), "points of the ring");
                hand.tap("pbRing");
                hand.waitText("pbRing", "Контур\nзамкнут");
            };
            ring("229.18", "4");
            hand.setNumber("nrings", "2");
            hand.tapTab("contour", 1);
            hand.setNumber("weldSpeed", "1200");
            addTechRow("30", "50");
            addTechRow("1400", "50");
            press();
            waitEnd("V", "0.00");
            expect(1, "REV(ALL)\nWAIT\n1 @1=0\n");
            expect(2, "ARF(V=2.00)");
            Hand::expect(journey.program(2).count(" V=0.00 ") == 2, "both passes end at the seam's start");

            ring("100", "3");
            hand.setNumber("nrings", "1");
            hand.tapTab("contour", 1);
            addTechRow("60", "20");
            addStops("160", "250");
            for (int stop = 0; stop < 2; ++stop) {
                press();
                expectStop();
            }
            press();
            waitEnd("V", "0.00");
            expect(3, "WEV(5)");
            expect(3, "WEV(7)");
        });
    }

    void circularSeamAndArc()
    {
        Journey journey(60);
        // A quarter circle in the plane YZ, kept in a file as another day left it.
        journey.files().write("/home/oper/bin/contours/arc.save",
                              "arc\nXYZ\n-1 0 0\n-1 -1\n0 1\n600\n2\n20 20 0 2 1 2 20 \n20 40 20 0 \n2\n"
                              "+ 0.00 0.0 700 0.0 0.0 600.0 2 \n+ 31.42 0.0 700 0.0 0.0 600.0 2 \n");
        play(journey, [&](Operator& hand) {
            newContour("Круговая интерполяция");
            hand.enterNumber("80");
            for (const auto& [x, y] :
                 {std::pair("150", "100"), std::pair("100", "150"), std::pair("50", "100")}) {
                hand.moveTo("LX", x);
                hand.moveTo("LY", y);
                hand.teachPoint();
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
            addTechRow("20", "30");
            press();
            waitEnd("LX", "150.00");
            expectAt("LY", "100.00");
            expect(1, "G90 G03 x=100.00 y=150.00 R50.00 z=0.00 F900.000");

            hand.tapTab("contour", 0);
            hand.loadContour("arc");
            hand.waitText("length", "31.42");
            hand.setNumber("contourSpeed", "1200");
            hand.tapCell("twContour", 0, 0);
            hand.waitText("coordLX", "20.00");
            hand.tapTab("contour", 1);
            addTechRow("10", "25");
            press();
            waitEnd("LX", "20.00");
            expectAt("LY", "40.00");
            expectAt("Z", "20.00");
            expect(1, "G90 G3 y=40.00 z=20.00 R20.00 x=20.00 F600.000");
        });
    }

private:
    // A row of the technology table above the last: path, current.
    void addTechRow(const QString& path, const QString& current)
    {
        const int last = m_hand->rows("twTechTab") - 1;
        m_hand->tapCell("twTechTab", last, 0);
        m_hand->tap("pbInsTechPoint");
        m_hand->tapCell("twTechTab", last, 0);
        m_hand->enterNumber(path);
        m_hand->tapCell("twTechTab", last, 1);
        m_hand->enterNumber(current);
        Hand::expect(m_hand->cell("twTechTab", last, 1) == QString::number(current.toDouble(), 'f', 1),
                     "current " + current + " in row " + QString::number(last));
    }

    // Two stops in front of rows at these paths.
    void addStops(const QString& first, const QString& second)
    {
        for (const QString& path : {first, second}) {
            m_hand->tap("pbTemplate");
            m_hand->tapMenu("Останов");
            addTechRow(path, "20");
        }
    }

    // The start button, until channel 1 has been seen to run: a short run may be over on the label already.
    void press()
    {
        const QString runs = "Канал 1: выполнение автоматической программы";
        const int before = m_journey->journal().count(runs);
        m_hand->waitIdle();
        m_hand->tap("pbGcode");
        m_hand->waitFor("channel 1 runs", [&] { return m_journey->journal().count(runs) > before; });
    }

    // Until the weld is at its end, at this place.
    void waitEnd(const QString& axis, const QString& coordinate)
    {
        m_hand->waitText("channel3State", "бездействие", 60'000);
        m_hand->waitIdle();
        m_hand->waitText("pbGcode", "ПУСК");
        expectAt(axis, coordinate);
        const QString journal = m_journey->journal();
        Hand::expect(!journal.contains("ошибка в канале"), "no channel reports an error:\n" + journal);
    }

    // The machine rests, and the beam waits for the operator.
    void expectStop()
    {
        m_hand->waitText("pbGcode", "ДАЛЕЕ", 30'000);
        m_hand->waitIdle();
        Hand::expect(m_hand->text("channel3State") == "выполнение", "channel 3 waits with the beam");
    }

    void expectAt(const QString& axis, const QString& coordinate)
    {
        const QString shown = m_hand->text("coord" + axis);
        Hand::expect(shown == coordinate, axis + " at " + shown + ", not " + coordinate);
    }

    void expect(int channel, const QByteArray& part)
    {
        const QByteArray program = m_journey->program(channel);
        Hand::expect(program.contains(part), part + " in " + program);
    }

    void newContour(const QString& scheme)
    {
        m_hand->tapTab("contour", 0);
        m_hand->tap("pbNew");
        m_hand->tapMenu(scheme);
    }

    // Of 100 mm along LX.
    void teachLine()
    {
        Operator& hand = *m_hand;
        newContour("Смешаная интерполяция");
        hand.teachPoint();
        hand.jog("pbMinusZ", "Z", 5); // the button of this name jogs towards positive Z
        Hand::expect(hand.text("coordZ").toDouble() > 4, "Z went up");
        hand.moveTo("Z", "0");
        hand.jog("pbPlusLX", "LX", 20);
        Hand::expect(hand.text("coordLX").toDouble() > 19, "LX went forth");
        hand.moveTo("LX", "100");
        hand.teachPoint();
        Hand::expect(hand.rows("twContour") == 2, "two points");
        hand.waitText("length", "100.00");
        hand.setNumber("contourSpeed", "1200");
    }

    void backToStart()
    {
        m_hand->tapTab("contour", 0);
        m_hand->tapCell("twContour", 0, 0);
        m_hand->waitText("coordLX", "0.00");
        m_hand->waitIdle();
        m_hand->tapTab("contour", 1);
    }

    Journey* m_journey = nullptr;
    Operator* m_hand = nullptr;

    void play(Journey& journey, const std::function<void(Operator&)>& script)
    {
        m_journey = &journey;
        m_hand = &journey.hand;
        const QString trouble = journey.runLoggedIn([&] {
            m_hand->switchOn(true);
            for (const char* axis : {"LX", "LY", "Z"})
                m_hand->setSpeed(axis, "3000");
            script(*m_hand);
        });
        QCOMPARE(trouble, QString());
    }
};

QTEST_MAIN(TestJourneyWeld)
#include "test_journey_weld.moc"
