#include "instructorwindow.h"
#include "journey.h"
#include "statebutton.h"
#include "trainer/journaltail.h"

#include <QPushButton>

#include <algorithm>

namespace {

constexpr int kWait = 1000; // seconds of the day in one, while nothing but an end is awaited
constexpr int kWork = 20;   // while the hand works

// What the hand does: words of TestLessons::act, parted by ";".
const char weld[] = "tab 0; tap pbLoad; item contour; tap pbLoad; virtual; tab 1; tap pbGcode; ";
const char newContour[] = "virtual; tap pbNew; menu Смешаная; point; step 3; ";

struct Play
{
    const char* file;
    QString fails;
    const char* reason;
    QString passes;
};

const Play plays[] = {
    {"01-pervaya-otkachka", "speed 1000", "шаг 1 не выполнен за 900 с",
     "run sbVacPrepare; is door closed; switch Door; step 4; run sbVacPumping"},
    {"02-privody", "on; step 2; tap sbDrives", "приводы выключены до конца перемещения",
     "on; move LX 50; step 3; tap sbDrives"},
    {"03-kontur", newContour + QString("move LY 5"), "ось LY сдвинута",
     newContour + QString("move LX 60; step 4; point; step 5; tap pbSave; item contour; tap pbClose")},
    {"04-pervaya-svarka", weld + QString("step 4; tap sbDrives"), "приводы выключены во время",
     weld + QString("step 5; tap sbDrives")},
    {"05-stop-vo-vremya-svarki", weld, "шаг 2 не выполнен за 8 с",
     "speed 4; " + QString(weld) + "step 2; tap pbStop; step 3; tap sbDrives"},
    {"06-konec-smeny", "on", "приводы включены во время напуска",
     "run sbVacFilling; switch Door; step 5; run sbVacShutdown"},
    {"07-avariynaya-knopka", "on; slow LX; press pbPlusLX; step 4; release; speed 1000",
     "шаг 4 не выполнен за 60 с", "on; slow LX; press pbPlusLX; step 4; release; rest; on; move LX 50"},
    {"08-peregrev-privoda", "on; step 3; tap sbDrives; speed 1000", "шаг 3 не выполнен за 120 с",
     "on; step 3; tap pbInfoLY; tap pbClearError; tap pbClose; step 4; on"},
    {"09-net-vody", "speed 1000", "шаг 2 не выполнен за 180 с",
     "step 2; tap sbVacManual; step 3; rest; run sbVacPrepare; run sbVacPumping"},
    {"10-zaklinil-zatvor", "start sbVacShutdown", "запущено «Завершение работы»",
     "run sbVacFilling; start sbVacPumping; step 3; speed 1000; step 4; tap sbVacManual; step 5; run "
     "sbVacPumping"},
    {"11-otkaz-datchika", "on; step 3; speed 1000", "шаг 3 не выполнен за 120 с",
     "on; step 3; tap sbVacManual; step 4; run sbVacPumping; on"},
    {"12-tros-vo-vremya-svarki", weld, "шаг 3 не выполнен за 30 с",
     weld + QString("step 3; tap pbStop; step 4; rest; virtual; step 5; tap pbGcode")},
};

} // namespace

// The lessons that come with the trainer, each led by the instructor's window and played by the scripted hand
// on the whole console: first so that it fails, then, on the installation as that has left it, passed.
class TestLessons : public QObject
{
    Q_OBJECT

private slots:
    void played_data()
    {
        QTest::addColumn<int>("index");
        QCOMPARE(int(std::size(plays)), suppliedLessons().size());
        for (int i = 0; i < int(std::size(plays)); ++i)
            QTest::newRow(plays[i].file) << i;
    }

    void played()
    {
        QFETCH(int, index);
        const Play& row = plays[index];
        Lesson lesson;
        QString why;
        QVERIFY2(readLesson(QString(":/lessons/%1.lesson").arg(row.file), &lesson, &why), qPrintable(why));
        Journey journey(kWork);
        m_journey = &journey;
        const QString pages = journey.files().root() + "/lessons";
        InstructorWindow window([&](const QString& line) { journey.plant().instruct(line); }, pages, 20);
        m_window = &window;
        const JournalTail tail(site().path("/log"), 20);
        connect(&tail, &JournalTail::line, &window, &InstructorWindow::readJournal);
        connect(&journey.plant(), &PlantProcess::said, &window, &InstructorWindow::hear);
        window.choose(lesson);

        LessonResult failed;
        const QString trouble = journey.runLoggedIn([&] {
            play(row.fails);
            journey.hand.onScreen([&] { failed = window.run().result(); });
            play(row.passes);
        });
        const LessonResult& passed = window.run().result();
        QVERIFY2(trouble.isEmpty(), qPrintable(QString("%1; step %2; %3; before: %4")
                                                   .arg(trouble)
                                                   .arg(window.run().step() + 1)
                                                   .arg(passed.reason, failed.reason)));
        QVERIFY2(failed.end == LessonResult::End::Failed && failed.reason.contains(row.reason),
                 qPrintable(failed.reason));
        QVERIFY2(passed.end == LessonResult::End::Passed, qPrintable(passed.reason));
        double before = 0;
        for (const LessonResult::Step& step : passed.steps) {
            QVERIFY(step.done && step.began == before && step.ended - step.began <= step.within);
            before = step.ended;
        }
        QCOMPARE(before, passed.length);
        QCOMPARE(QDir(pages).entryList({"*.pdf"}).size(), 2);
        QVERIFY(QFileInfo(window.lastPage()).size() > 5000);
    }

    void aBadFileIsRefusedByLineAndReason_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("why");
        const QByteArray head = "lesson A\ntell B\n";
        const QByteArray step = "step C\nuntil drives=on\nwithin 5\n";
        const QByteArray end = "passed drives=on\n";
        const auto row = [](const char* name, const QByteArray& text, const char* why) {
            QTest::newRow(name) << text << QString(why);
        };
        row("empty", "", "line 1: the file is empty");
        row("foreign", QByteArray("\x89PNG\r\n\x1a\n\0\0", 10), "no UTF-8 text");
        row("huge", head + QByteArray(200'000, '#'), "longer than");
        row("another first line", "# x\ntell B\n", "line 2: the first line is");
        row("cut", head + step, "line 5: nothing says what counts as passed");
        row("unknown word", head + "stepp C\n", "line 3: unknown word \"stepp\"");
        row("no time", head + "step C\nuntil drives=on\n" + end, "line 3: step \"C\" has no time");
        row("waits for nothing", head + "step C\nwithin 5\n" + end, "line 3: step \"C\" waits for nothing");
        row("unknown name", head + "step C\nuntil drive=on\n", "line 4: the installation tells nothing");
        row("impossible word", head + "step C\nuntil drives=yes\n", "line 4: drives is never \"yes\"");
        row("no number", head + "step C\nuntil pt5<low\n", "line 4: pt5 is a number");
        row("time", head + "step C\nwithin -5\n", "line 4: \"-5\" is no number");
        row("instructor's line", head + "do rope\n", "line 3: rope left|right on|off");
        row("outside a step", head + "until drives=on\n", "line 3: until belongs to a step");
        row("behind the end", head + step + end + "tell more\n", "line 7: behind \"passed\"");
    }

    void aBadFileIsRefusedByLineAndReason()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, why);
        Lesson lesson;
        QString told;
        QVERIFY(!parseLesson(text, &lesson, &told));
        QVERIFY2(told.contains(why), qPrintable(told));
    }

private:
    void play(const QString& script)
    {
        hand().onScreen([&] { m_window->findChild<QPushButton*>("pbBegin")->click(); });
        speed(kWait); // the door
        hand().waitFor(
            "the lesson's first step", [&] { return !m_window->run().preparing(); }, 30'000);
        speed(kWork);
        for (const QString& part : script.split("; ", Qt::SkipEmptyParts))
            act(part.section(' ', 0, 0), part.section(' ', 1, 1), part.section(' ', 2));
        hand().waitFor("the lesson's end", [&] { return !m_window->run().running(); });
    }

    void act(const QString& verb, const QString& what, const QString& value)
    {
        if (verb == "tap")
            hand().tap(what);
        else if (verb == "press")
            hand().press(what);
        else if (verb == "release")
            hand().release();
        else if (verb == "on" || verb == "virtual") {
            unlocked("sbDrives");
            hand().switchOn(verb == "virtual");
        } else if (verb == "menu")
            hand().tapMenu(what);
        else if (verb == "item")
            hand().tapItem("listWidget_prog", what);
        else if (verb == "tab")
            hand().tapTab("contour", what.toInt());
        else if (verb == "point")
            hand().teachPoint();
        else if (verb == "slow")
            hand().setSpeed(what, "600");
        else if (verb == "move") {
            hand().setSpeed(what, "1500");
            hand().moveTo(what, value);
        } else if (verb == "speed")
            speed(what.toInt());
        else if (verb == "rest")
            QThread::msleep(300); // what the lesson has mended, the installation has
        else if (verb == "is")
            waitState(what, value);
        else if (verb == "step")
            waitStep(what.toInt() - 1);
        else if (verb == "switch")
            switchDevice(what);
        else
            startRegime(what, verb == "run");
    }

    // The one button of a device's dialog, once it may be pressed.
    void switchDevice(const QString& device)
    {
        hand().tap(device);
        unlocked("sbSwitch");
        hand().tap("sbSwitch");
    }

    // What the installation allows, the console hears of a moment later.
    void unlocked(const char* button)
    {
        hand().waitFor(QString("%1 unlocked").arg(button), [button] {
            const QWidgetList all = QApplication::allWidgets();
            return std::any_of(all.cbegin(), all.cend(), [button](const QWidget* widget) {
                const auto* found = qobject_cast<const StateButton*>(widget);
                return found && found->isVisible() && found->objectName() == button && !found->locked();
            });
        });
    }

    // A regime by its button, confirmed; if wanted to its end.
    void startRegime(const QString& button, bool toItsEnd)
    {
        QString before;
        hand().onScreen([&] { before = m_window->run().state().value("regime"); });
        hand().tap(button);
        hand().tap("pbYes");
        hand().waitFor(button, [&] { return m_window->run().state().value("regime") != before; });
        if (!toItsEnd)
            return;
        speed(kWait);
        waitState("progress", "done");
        speed(kWork);
    }

    void waitState(const QString& name, const QString& value)
    {
        hand().waitFor(
            name + " " + value, [&] { return m_window->run().state().value(name) == value; }, 30'000);
    }

    // Or its end.
    void waitStep(int step)
    {
        hand().waitFor(QString("step %1").arg(step + 1),
                       [&] { return m_window->run().step() == step || !m_window->run().running(); });
    }

    Operator& hand() { return m_journey->hand; }
    void speed(int factor) { m_journey->plant().instruct(QString("speed %1").arg(factor)); }

    InstructorWindow* m_window = nullptr;
    Journey* m_journey = nullptr;
};

QTEST_MAIN(TestLessons)
#include "test_lessons.moc"
