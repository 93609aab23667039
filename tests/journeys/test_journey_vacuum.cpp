#include "journey.h"
#include "statebutton.h"

#include <algorithm>

namespace {

constexpr int kWork = 100; // seconds of the day in one real second; what lasts five shows in a datagram still
constexpr int kPump = 800; // while nothing but an end is awaited: half an hour takes three seconds

} // namespace

// The vacuum plant from the operator's chair: regimes by their buttons, devices by their dialogs, on the
// simulated installation with the day running fast.
class TestJourneyVacuum : public QObject
{
    Q_OBJECT

private slots:
    void fromTheAirToAWeldAndHome()
    {
        Journey journey(kWork, true, true);
        m_journey = &journey;
        const QString trouble = journey.runLoggedIn([&] {
            pumpDown();
            weldAndGoHome();
        });
        QCOMPARE(trouble, QString());
        QVERIFY(!journey.journal().contains("ошибка"));
    }

    void aValveJamsInTheMiddle()
    {
        Journey journey(kWork); // pumped down
        m_journey = &journey;
        Operator& hand = journey.hand;
        const QString trouble = journey.runLoggedIn([&] {
            hand.waitText("lblVacuumState", "Откачка камеры");
            run("sbVacFilling", "Напуск в камеру");
            hand.startRegime("sbVacPumping", "Откачка камеры");
            waitLine("[I]Затвор VP3 открыт"); // roughing goes on to its end
            journey.plant().instruct("valve vp3 jam");
            speed(kPump);
            waitLine("[W]Затвор VP3 - ошибка!");
            hand.waitText("lblVacuumState", "Аварийное завершение");
            hand.waitText("lblVacuumActive", "Не запущен");
            waitLine("ENDED ALG(4): VP3 has an error");
            Hand::expect(!journey.journal().contains("Затвор VP1 открывается"), "the gate stays closed");

            speed(kWork);
            journey.plant().instruct("valve vp3 free");
            waitLine("[I]Затвор VP3 закрыт");
            hand.tap("sbVacManual");
            hand.waitText("lblVacuumState", "Ручной режим");
            run("sbVacPumping", "Откачка камеры");
            expectChamber(0, 1.05e-2);
            hand.switchOn(false);
        });
        QCOMPARE(trouble, QString());
    }

private:
    void pumpDown()
    {
        Operator& hand = m_journey->hand;
        waitLine("[I]Дверь камеры отжата");
        hand.waitText("PT5", "1.0E+05");
        run("sbVacPrepare", "Подготовка");
        waitLine("[I]Диффузионный насос ND1 включен");
        Hand::expect(hand.text("ND1temp").toDouble() > 170, "hot oil: " + hand.text("ND1temp"));

        // With the door open the chamber's controller does not rough; closed and pressed it does.
        hand.tap("sbVacForepump");
        hand.tap("pbYes");
        waitLine("REFUSED ALG(3): the door is not closed");
        m_journey->plant().instruct("door close");
        waitLine("[I]Дверь закрыта");
        command("Door", "[I]Дверь камеры прижата");
        run("sbVacForepump", "Форвакуумная откачка");
        expectChamber(1, 5.1);

        // No drives yet, and VP4 stays closed: VP3 is open.
        hand.tap("sbDrives");
        hand.tap("VP4");
        hand.waitVisible("sbSwitch");
        hand.tap("sbSwitch");
        Hand::expect(hand.visible("sbSwitch"), "a locked button does not hide its dialog");
        hand.tap("pbHide");
        run("sbVacPumping", "Откачка камеры");
        expectChamber(0, 1.05e-2);
        Hand::expect(!m_journey->journal().contains("'Включить питание приводов'"), "the drives were locked");
    }

    void weldAndGoHome()
    {
        Operator& hand = m_journey->hand;
        speed(20);
        hand.switchOn(true);
        hand.loadContour("contour");
        hand.tapTab("contour", 1);
        hand.tap("pbGcode");
        waitLine("Канал 3: выполнение автоматической программы");
        hand.waitText("channel3State", "бездействие", 60'000);
        hand.waitIdle();
        Hand::expect(hand.text("coordLX") == "100.00", "the seam ends at 100 mm");

        // Bleeding waits for the drives.
        speed(kWork);
        hand.startRegime("sbVacFilling", "Напуск в камеру");
        waitLine("[I]Затвор VP1 закрыт");
        hand.tap("sbDrives");
        waitDone();
        expectChamber(9.5e4, 1.1e5);
        command("Door", "[I]Дверь камеры отжата");
        m_journey->plant().instruct("door open");
        waitLine("[I]Дверь открыта");

        run("sbVacShutdown", "Завершение работы");
        waitLine("[I]Повысительный насос NW2 выключен");
    }

    // A regime to its end, while the day runs faster.
    void run(const QString& button, const QString& shown)
    {
        m_journey->hand.startRegime(button, shown);
        waitDone();
    }

    void waitDone()
    {
        speed(kPump);
        m_journey->hand.waitText("lblVacuumActive", "Выполнен", 60'000);
        speed(kWork);
    }

    // The one button of a device's dialog, then its line in the journal.
    void command(const QString& device, const QString& line)
    {
        m_journey->hand.tap(device);
        // What the journal told of one controller, the lock of another may hear of a moment later.
        m_journey->hand.waitFor(device + " may be switched", [] {
            const QWidgetList all = QApplication::allWidgets();
            return std::any_of(all.cbegin(), all.cend(), [](const QWidget* widget) {
                const auto* button = qobject_cast<const StateButton*>(widget);
                return button && button->isVisible() && button->objectName() == "sbSwitch" &&
                       !button->locked();
            });
        });
        const int before = m_journey->journal().count(line);
        m_journey->hand.tap("sbSwitch");
        waitLine(line, before + 1);
    }

    void waitLine(const QString& line, int times = 1)
    {
        m_journey->hand.waitFor(line, [&] { return m_journey->journal().count(line) >= times; });
    }

    // Pa.
    void expectChamber(double from, double to)
    {
        const QString shown = m_journey->hand.text("PT5");
        Hand::expect(shown.toDouble() > from && shown.toDouble() < to, "pressure in the chamber: " + shown);
    }

    void speed(int factor) { m_journey->plant().instruct(QString("speed %1").arg(factor)); }

    Journey* m_journey = nullptr;
};

QTEST_MAIN(TestJourneyVacuum)
#include "test_journey_vacuum.moc"
