#include "commandlog.h"
#include "journey.h"

#include <QLabel>

// What happens around a weld: the login, the key switch, the walk along a contour, files, a lost link.
class TestJourneyOperate : public QObject
{
    Q_OBJECT

private slots:
    void firstLoginAndKeySwitch();
    void aContourAndARestart();

private:
    void teachTriangle();                                             // in the plane XY, with the fixed moves
    void walk();                                                      // by touching its points
    void goTo(int row, const char* x, const char* y, int column = 0); // until it stands there
    void saveAndLoad();
    void loseTheLink(); // in the middle of a run

    Operator& hand() { return m_journey->hand; }

    Journey* m_journey = nullptr;
};

void TestJourneyOperate::firstLoginAndKeySwitch()
{
    Journey journey(20, false);
    Operator& hand = journey.hand;
    const CommandLog log;

    // No user file: the console says so, and a cancelled login ends it without a window.
    QString trouble = journey.run([&] {
        hand.closeBox();
        hand.waitVisible("leLogin");
        Hand::expect(!hand.visible("frameHead"), "no window before the login");
        hand.key(Qt::Key_Escape);
        hand.waitGone("leLogin");
    });
    QCOMPARE(trouble, QString());
    QCOMPARE(journey.exitCode(), 0);
    QVERIFY(journey.journal().contains("[I]Регистрация пользователя - "));
    QCOMPARE(journey.files().read("/home/oper/bin/users.bin"), QByteArray("\xA0\xF4\0\0", 4));
    QVERIFY(!journey.files().read("/home/oper/bin/settings.ini").isEmpty());

    // The second start finds the file; a wrong password is told and asked for again.
    trouble = journey.run([&] {
        hand.waitVisible("leLogin");
        hand.type("su");
        hand.tap("lePassword");
        hand.type("1234");
        hand.tap("pbEnter");
        hand.closeBox();
        hand.waitText("lePassword", "");
        Hand::expect(hand.text("leLogin") == "su", "the login stays");
        hand.tap("lePassword");
        hand.type("46920137");
        hand.tap("pbEnter");
        hand.waitVisible("frameHead");
        Hand::expect(hand.text("lblUserName") == "Администратор", "the name in the head");
        hand.waitVisible("pbUsers");

        hand.waitColour("lblCNC", Qt::green);
        journey.plant().instruct("key off");
        hand.waitFor("the console disabled", [] { return !Operator::console()->isEnabled(); });
        hand.tap("sbDrives");
        Hand::expect(CommandLog::count("DRIVE") == 0, "a locked console sends nothing");
        journey.plant().instruct("key on");
        hand.waitEnabled("frameHead");
        hand.tap("sbDrives");
        hand.waitFor("the command", [] { return CommandLog::count("DRIVE ON") == 1; });
        hand.waitEnabled("sbTrans");

        hand.tap("pbCloseProgram");
        hand.tap("pbYes");
        hand.waitGone("frameHead");
    });
    QCOMPARE(trouble, QString());
    QVERIFY(journey.journal().contains("[I]Выполнен выход из программы автоматической сварки по кнопке"));
}

void TestJourneyOperate::goTo(int row, const char* x, const char* y, int column)
{
    const auto ends = [this] {
        return m_journey->plant().lines().filter("channel 1: end of program").size();
    };
    hand().waitIdle();
    const int before = ends();
    hand().tapCell("twContour", row, column);
    hand().waitFor("the end of the walk", [&] { return ends() > before; });
    hand().waitText("coordLX", x);
    hand().waitText("coordLY", y);
    hand().waitIdle();
    Hand::expect(hand().currentRow("twContour") == row, QString("highlight on row %1").arg(row));
}

void TestJourneyOperate::teachTriangle()
{
    hand().switchOn(true);
    hand().setSpeed("LX", "3000");
    hand().setSpeed("LY", "3000");
    hand().tap("pbNew");
    hand().tapMenu("Смешаная интерполяция");
    for (const auto& [x, y] : {std::pair("0", "0"), std::pair("40", "0"), std::pair("0", "30")}) {
        hand().moveTo("LX", x);
        hand().moveTo("LY", y);
        hand().teachPoint();
    }
    Hand::expect(hand().rows("twContour") == 3, "three points");
    hand().setNumber("contourSpeed", "1200");
}

void TestJourneyOperate::walk()
{
    goTo(0, "0.00", "0.00");  // back over point 1
    goTo(2, "0.00", "30.00"); // forth over point 1
    QByteArray walk = m_journey->program(1);
    Hand::expect(walk.contains("x=40.00 y=0.00 z=0.00 F1200") && walk.contains("1 @1=0") &&
                     walk.contains("2 @1=1") && walk.contains("3 @1=2"),
                 "the walk passes each point: " + walk);
    hand().tap("pbRing");
    hand().tapMenu("Прямым ходом");
    hand().waitText("pbRing", "Замкнут\nпрямым\nходом");
    goTo(0, "0.00", "0.00"); // over the closing frame
    walk = m_journey->program(1);
    Hand::expect(walk.count("G01") == 1 && walk.contains("1 @1=0"), "one closing frame: " + walk);
    // Touching the point where the machine stands sends it there again; a little beside, since a second quick
    // touch of one place is a double one.
    goTo(0, "0.00", "0.00", 1);
    goTo(1, "40.00", "0.00");
}

void TestJourneyOperate::saveAndLoad()
{
    hand().tap("pbRing"); // open again
    hand().tap("pbRing");
    hand().tapMenu("Обратным ходом");
    hand().waitText("pbRing", "Замкнут\nобратным\nходом");
    hand().tap("pbSave");
    hand().tap("pbSave_as");
    hand().waitVisible("leSaveAsNewProgName");
    hand().type("contour");
    hand().key(Qt::Key_Return);
    hand().waitGone("listWidget_prog");
    Hand::expect(hand().text("lblContour") == "contour",
                 "the name in the head: " + hand().text("lblContour"));
    hand().tap("pbNew");
    hand().tapMenu("Смешаная интерполяция");
    Hand::expect(hand().rows("twContour") == 0, "a new contour is empty");
    hand().loadContour("contour");
    Hand::expect(hand().rows("twContour") == 3, "three points loaded");
}

void TestJourneyOperate::loseTheLink()
{
    hand().waitVisible("frmVirtual"); // as the console before has left the machine
    goTo(0, "0.00", "0.00");
    m_journey->plant().instruct("speed 10");
    hand().tapTab("contour", 1);
    hand().setNumber("weldSpeed", "60"); // two minutes of the machine
    hand().tap("pbGcode");
    hand().waitText("channel1State", "выполнение");
    hand().waitFor("motion",
                   [] { return Operator::console()->findChild<QLabel*>("coordLX")->text() != "0.00"; });
    m_journey->plant().instruct("link drop 2");
    hand().waitColour("lblCNC", Qt::red);
    Hand::expect(hand().text("coordLX") != "0.00", "on the way");
    hand().waitColour("lblCNC", Qt::green);
    m_journey->plant().instruct("speed 60");
    hand().waitText("channel1State", "бездействие", 60'000);
    Hand::expect(hand().text("coordLX") == "0.00" && hand().text("coordLY") == "0.00", "the run has ended");
    Hand::expect(!m_journey->journal().contains("ошибка в канале"), "no channel reports an error");
}

void TestJourneyOperate::aContourAndARestart()
{
    Journey journey(40);
    m_journey = &journey;
    QString trouble = journey.runLoggedIn([&] {
        teachTriangle();
        walk();
        saveAndLoad();
        hand().key(Qt::Key_Q);
    });
    QCOMPARE(trouble, QString());
    const QByteArray saved = journey.files().read("/home/oper/bin/contours/contour.save");
    QVERIFY2(saved.startsWith("contour\nXYZ\n-1 0 0\n"), saved);
    QVERIFY(saved.contains("0.00 30.00 0.00 "));
    trouble = journey.runLoggedIn([&] {
        Hand::expect(hand().rows("twContour") == 3, "three points after the restart");
        Hand::expect(hand().cell("twContour", 1, 0) == "40.00", "the second point");
        Hand::expect(hand().text("pbRing") == "Замкнут\nпрямым\nходом", "closed forward after a load");
        Hand::expect(hand().text("lblContour") == "contour", "the name in the head");
        loseTheLink();
    });
    QCOMPARE(trouble, QString());
    // Each of the ten drives tells its state again after the link has returned.
    QVERIFY(journey.journal().count("Ось LX: ") >= 2);
}

QTEST_MAIN(TestJourneyOperate)
#include "test_journey_operate.moc"
