#include "journey.h"
#include "statebutton.h"

#include <algorithm>

// The vacuum plant from the operator's chair: regimes by their buttons, devices by their dialogs, on the
// simulated installation with the day running fast.
class TestJourneyVacuum : public QObject
{
    Q_OBJECT

private slots:
    void fromTheAirToAWeldAndHome();
    void aValveJamsInTheMiddle();

private:
    // A regime by its button, confirmed; until the chamber's controller reports it.
    static void start(Journey& journey, const QString& button, const QString& shown);
    static void waitDone(Journey& journey);
    // The one button of a device's dialog, then its line in the journal.
    static void command(Journey& journey, const QString& device, const QString& line);
    static void waitLine(Journey& journey, const QString& line);
    static double chamber(Hand& hand) { return hand.text("PT5").toDouble(); }
};

namespace {

constexpr int kLongWait = 60'000; // ms: half an hour of the plant takes ten seconds

} // namespace

void TestJourneyVacuum::start(Journey& journey, const QString& button, const QString& shown)
{
    journey.hand.tap(button);
    journey.hand.tap("pbYes");
    journey.hand.waitText("lblVacuumState", shown);
}

void TestJourneyVacuum::waitDone(Journey& journey)
{
    journey.hand.waitText("lblVacuumActive", "Выполнен", kLongWait);
}

void TestJourneyVacuum::command(Journey& journey, const QString& device, const QString& line)
{
    journey.hand.tap(device);
    // What the journal told of one controller, the lock of another may hear of a moment later.
    journey.hand.waitFor(device + " may be switched", [] {
        const QWidgetList all = QApplication::allWidgets();
        return std::any_of(all.cbegin(), all.cend(), [](const QWidget* widget) {
            const auto* button = qobject_cast<const StateButton*>(widget);
            return button && button->isVisible() && button->objectName() == "sbSwitch" && !button->locked();
        });
    });
    journey.hand.tap("sbSwitch");
    waitLine(journey, line);
}

void TestJourneyVacuum::waitLine(Journey& journey, const QString& line)
{
    journey.hand.waitFor(line, [&] { return journey.journal().contains(line); });
}

void TestJourneyVacuum::fromTheAirToAWeldAndHome()
{
    Journey journey(200, true, true);
    Operator& hand = journey.hand;
    const QString trouble = journey.runLoggedIn([&] {
        waitLine(journey, "[I]Дверь камеры отжата");
        hand.waitText("PT5", "1.0E+05");
        start(journey, "sbVacPrepare", "Подготовка");
        waitDone(journey);
        waitLine(journey, "[I]Диффузионный насос ND1 включен");
        Hand::expect(hand.text("ND1temp").toDouble() > 170, "hot oil: " + hand.text("ND1temp"));

        // With the door open the chamber's controller does not rough; closed and pressed it does.
        hand.tap("sbVacForepump");
        hand.tap("pbYes");
        waitLine(journey, "REFUSED ALG(3): the door is not closed");
        journey.plant().instruct("door close");
        waitLine(journey, "[I]Дверь закрыта");
        command(journey, "Door", "[I]Дверь камеры прижата");
        start(journey, "sbVacForepump", "Форвакуумная откачка");
        waitDone(journey);
        Hand::expect(chamber(hand) < 5.1, "rough vacuum: " + hand.text("PT5"));

        // No drives yet, and VP4 stays closed: VP3 is open.
        hand.tap("sbDrives");
        hand.tap("VP4");
        hand.waitVisible("sbSwitch");
        hand.tap("sbSwitch");
        Hand::expect(hand.visible("sbSwitch"), "a locked button does not hide its dialog");
        hand.tap("pbHide");
        start(journey, "sbVacPumping", "Откачка камеры");
        waitDone(journey);
        Hand::expect(chamber(hand) < 1.05e-2, "welding vacuum: " + hand.text("PT5"));
        Hand::expect(!journey.journal().contains("'Включить питание приводов'"), "the drives were locked");

        journey.plant().instruct("speed 20");
        hand.switchOn(true);
        hand.tap("pbLoad");
        hand.tapItem("listWidget_prog", "contour");
        hand.tap("pbLoad");
        hand.waitGone("listWidget_prog");
        hand.tapTab("contour", 1);
        hand.tap("pbGcode");
        waitLine(journey, "Канал 3: выполнение автоматической программы");
        hand.waitText("channel3State", "бездействие", kLongWait);
        hand.waitIdle();
        Hand::expect(hand.text("coordLX") == "100.00", "the seam ends at 100 mm");

        // Bleeding waits for the drives.
        journey.plant().instruct("speed 100");
        start(journey, "sbVacFilling", "Напуск в камеру");
        waitLine(journey, "[I]Затвор VP1 закрыт");
        hand.tap("sbDrives");
        waitDone(journey);
        Hand::expect(chamber(hand) > 9.5e4, "air: " + hand.text("PT5"));
        command(journey, "Door", "[I]Дверь камеры отжимается");
        journey.plant().instruct("speed 200");
        hand.waitFor("the door comes loose",
                     [&] { return journey.journal().count("[I]Дверь камеры отжата") == 2; });
        journey.plant().instruct("door open");
        waitLine(journey, "[I]Дверь открыта");

        start(journey, "sbVacShutdown", "Завершение работы");
        waitDone(journey);
        waitLine(journey, "[I]Повысительный насос NW2 выключен");
    });
    QCOMPARE(trouble, QString());
    QVERIFY(!journey.journal().contains("ошибка"));
}

void TestJourneyVacuum::aValveJamsInTheMiddle()
{
    Journey journey(100); // pumped down
    Operator& hand = journey.hand;
    const QString trouble = journey.runLoggedIn([&] {
        hand.waitText("lblVacuumState", "Откачка камеры");
        start(journey, "sbVacFilling", "Напуск в камеру");
        waitDone(journey);
        start(journey, "sbVacPumping", "Откачка камеры");
        waitLine(journey, "[I]Двухроторный насос NZ2 включается"); // roughing goes on to its end
        journey.plant().instruct("valve vp3 jam");
        waitLine(journey, "[W]Затвор VP3 - ошибка!");
        hand.waitText("lblVacuumState", "Аварийное завершение");
        hand.waitText("lblVacuumActive", "Не запущен");
        waitLine(journey, "ENDED ALG(4): VP3 has an error");
        Hand::expect(!journey.journal().contains("Затвор VP1 открывается"), "the gate stays closed");

        journey.plant().instruct("valve vp3 free");
        waitLine(journey, "[I]Затвор VP3 закрыт");
        hand.tap("sbVacManual");
        hand.waitText("lblVacuumState", "Ручной режим");
        start(journey, "sbVacPumping", "Откачка камеры");
        waitDone(journey);
        Hand::expect(chamber(hand) < 1.05e-2, "welding vacuum: " + hand.text("PT5"));
        hand.switchOn(false);
    });
    QCOMPARE(trouble, QString());
}

QTEST_MAIN(TestJourneyVacuum)
#include "test_journey_vacuum.moc"
