#include "journey.h"
#include "trainer/screen.h"

#include <QScrollBar>
#include <QTableWidget>

namespace {

const char* const kConsoleOf = "--console-of";

QWidget* console(const char* name) // also when disabled or beneath another; null when it is not there
{
    return Operator::console()->findChild<QWidget*>(name);
}

QWidget* shownOfKind(Qt::WindowType type) // null for none
{
    for (QWidget* top : QApplication::topLevelWidgets()) {
        if (top->windowType() == type && top->isVisible())
            return top;
    }
    return nullptr;
}

} // namespace

// The console as it stands on the machine: full screen on a real X server, among the windows of a window
// manager. What popups, grabs and the order of windows do is seen only here.
class TestPanel : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_journey = std::make_unique<Journey>(5); }
    void cleanup() { m_journey.reset(); }

    void popupsCloseBesideThem()
    {
        live([](Operator& hand) {
            hand.waitFor("the whole panel", [] {
                return Operator::console()->isActiveWindow() &&
                       Operator::console()->geometry() == QRect(QPoint(), panelSize);
            });
            const QString speed = hand.text("speedLX");
            for (const char* opener : {"speedLX", "lblLir1"}) {
                const bool menu = opener[0] == 'l';
                hand.tap(opener);
                hand.waitFor(opener, [menu] {
                    return (menu ? QApplication::activePopupWidget() : console("lblFree")) != nullptr;
                });
                hand.tap("pbInformation"); // beside it, and on something that answers touches
                hand.waitFor(QString("nothing of ") + opener,
                             [] { return !QApplication::activePopupWidget() && !console("lblFree"); });
                Hand::expect(!hand.visible("pbManual"), "the touch only closes");
            }
            Hand::expect(hand.text("speedLX") == speed, "the speed as it was");

            // It opens below its label, and an entry chosen counts; so does the free one.
            hand.tap("speedLX");
            const QString third = hand.text("lblSpeed3");
            hand.tap("lblSpeed3");
            hand.waitText("speedLX", third);
            hand.setSpeed("LX", "123");
            hand.tap("pbInformation"); // the panel answers again
            hand.tap("pbClose");
            hand.waitGone("pbManual");
        });
    }

    void dialogsOutliveTheirPlace()
    {
        // What is touched, what stands on the panel then, and what leads away; nothing: a place beside.
        const std::tuple<const char*, const char*, const char*> dialogs[] = {
            {"coordLX", "rbAbsolute", "pbClose"},
            {"coordLX lblCoord", "pbEnter", "pbEnter"},
            {"pbInfoLX", "lblReferValue", "pbClose"},
            {"pbInfoLX lblReferValue", "pbEnter", "pbEnter"},
            {"speedLX", "lblFree", ""},
            {"speedLX lblFree", "pbEnter", "pbEnter"},
            {"pbCloseProgram", "pbYes", "pbNo"},
        };
        live([&](Operator& hand) {
            hand.switchOn(false);
            // The drives' side is disabled by the remote panel, the whole console by the key.
            for (const auto& [touches, open, away] : dialogs) {
                hand.tap("sbDistPult");
                hand.waitVisible("pultRegime");
                openAll(hand, touches, open);
                instruct("pult f2 x");
                hand.waitFor(touches, [] { return !console("frmDrives")->isEnabled(); });
                leave(hand, touches, open, away);
                hand.tap("sbDistPult");
                hand.waitEnabled("frmDrives");
                instruct("pult f1 x");
            }
            for (const auto& [touches, open, away] : dialogs) {
                openAll(hand, touches, open);
                instruct("key off");
                hand.waitFor(touches, [] { return !Operator::console()->isEnabled(); });
                if (*away) // a popup would close, as at any touch beside it
                    hand.tap(open);
                Hand::expect(hand.visible(open), "a locked console answers nothing");
                instruct("key on");
                hand.waitEnabled("frameHead");
                leave(hand, touches, open, away);
            }
            answersOutliveTheirButton(hand);
        });
    }

    void answersLieAboveDevices()
    {
        live([](Operator& hand) {
            hand.tap("NL1");
            hand.waitVisible("pbHide");
            const auto place = [&hand] {
                QRect geometry;
                hand.onScreen([&] { geometry = shownOfKind(Qt::Tool)->geometry(); });
                return geometry;
            };
            const auto touchIfInSight = [&hand] {
                if (hand.visible("lblId"))
                    hand.tap("lblId", QPoint(20, 20)); // a touch brings a window to the front
            };
            QRect before = place();
            hand.tap("pbConstants");
            hand.waitVisible("twConst");
            touchIfInSight();
            hand.tap("twConst", QPoint(5, 750)); // where the device's dialog was; covered, it takes no touch
            hand.tap("pbClose");
            hand.waitGone("twConst");
            hand.tap("lblId");
            Hand::expect(place() == before, "back in its place");

            // Laid by hand where a question will stand.
            hand.press("lblId");
            hand.slide(QPoint(700, 700));
            hand.release();
            before = place();
            hand.tap("sbVacForepump");
            hand.waitVisible("pbNo");
            touchIfInSight();
            hand.tap("pbClose");
            hand.waitGone("pbNo");
            hand.waitVisible("pbHide");
            Hand::expect(place() == before, "again in its place");
            hand.tap("pbHide");
            hand.waitGone("pbHide");
        });
    }

    void reasonsStayOnThePanel()
    {
        const auto reasons = [] { return shownOfKind(Qt::ToolTip); };
        live([&](Operator& hand) {
            for (const char* button : {"sbShutdown", "sbDistPult"}) {
                hand.press(button);
                hand.waitFor("the reasons",
                             [&] { return reasons() && reasons()->windowHandle()->isExposed(); });
                QThread::msleep(300);
                bool whole = false;
                hand.onScreen([&] { // as long as the finger stays
                    whole = reasons() && QRect(QPoint(), panelSize).contains(reasons()->frameGeometry());
                });
                Hand::expect(whole, "all of them on the panel");
                hand.release();
                hand.waitFor("no reasons", [&] { return !reasons(); });
            }
        });
    }

    void silenceIsNo()
    {
        live([](Operator& hand) {
            hand.tap("pbCloseProgram");
            hand.waitVisible("pbYes");
            QElapsedTimer timer;
            timer.start();
            // Nothing beneath a question answers, and nothing that is touched there comes to lie above it.
            for (const char* beneath : {"pbInformation", "coordLX", "NL1"})
                hand.tap(beneath);
            Hand::expect(!hand.visible("pbManual") && !hand.visible("rbAbsolute") && !hand.visible("pbHide"),
                         "only the question");
            hand.tap("lblTitle");
            hand.waitGone("pbYes", 8000);
            Hand::expect(timer.elapsed() > 4000, "five seconds to answer");
            hand.tap("pbInformation");
            hand.tap("pbClose");
            hand.waitGone("pbManual");
        });
    }

    void tableUnderTheFinger()
    {
        QByteArray rows;
        for (int row = 0; row <= 60; ++row)
            rows += "+ " + QByteArray::number(row) + ".00 20.0 700 0.0 0.0 600.0 2 \n";
        m_journey->files().write("/home/oper/bin/contours/contour.save",
                                 "contour\nXYZ\n-1 0 0\n2 -1\n0 1\n600\n2\n0.00 0.00 0.00 1 0 0 0 \n"
                                 "60.00 0.00 0.00 0 \n61\n" +
                                     rows);
        live([](Operator& hand) {
            hand.tapTab("contour", 1);
            hand.waitVisible("twTechTab");
            QRect bar;
            const auto first = [&hand, &bar] {
                int row = -1;
                hand.onScreen([&] {
                    auto* table = qobject_cast<QTableWidget*>(console("twTechTab"));
                    const QScrollBar* handle = table->verticalScrollBar();
                    bar = QRect(handle->mapTo(table, QPoint()), handle->size());
                    row = table->rowAt(0);
                });
                return row;
            };
            Hand::expect(first() == 0, "the first row on top");
            hand.press("twTechTab", bar.topLeft() + QPoint(bar.width() / 2, 20));
            hand.slide(QPoint(1390, 700)); // beside the bar a little, as fingers go
            Hand::expect(first() > 10, "the rows follow");
            hand.release();
            const int there = first();
            hand.slide(QPoint(1390, 300));
            Hand::expect(first() == there, "nothing follows a finger in the air");
            hand.tap("twTechTab", QPoint(100, 150)); // the keypad of a cell
            hand.enterNumber("21");
        });
    }

    void oneConsole()
    {
        live([this](Operator& hand) {
            QProcess second;
            second.start(QCoreApplication::applicationFilePath(), {kConsoleOf, m_journey->files().root()});
            Hand::expect(second.waitForFinished(20'000), "the second console ends");
            Hand::expect(second.exitCode() == 255, "its exit code");
            Hand::expect(second.readAllStandardError().contains("poMIRTA already running\n"), "its reason");
            hand.tap("pbInformation"); // nothing came to lie above the first
            hand.tap("pbClose");
            hand.waitGone("pbManual");
        });
    }

private:
    void live(const std::function<void(Operator& hand)>& script)
    {
        QCOMPARE(m_journey->runLoggedIn([&] { script(m_journey->hand); }), QString());
    }
    void instruct(const char* line) { m_journey->plant().instruct(line); }
    static void openAll(Operator& hand, const QString& touches, const char* open)
    {
        for (const QString& touch : touches.split(' '))
            hand.tap(touch);
        hand.waitVisible(open);
    }
    static void leave(Operator& hand, const QString& touches, const char* open, const char* away)
    {
        Hand::expect(hand.enabled(open), touches + ": dead");
        *away ? hand.tap(away) : hand.tap("frameHead", QPoint(5, 5));
        hand.waitGone(open);
        if (touches.contains(' ') && hand.visible("pbClose"))
            hand.tap("pbClose");
        hand.waitFor("the panel free", [] { return !QApplication::activeModalWidget(); });
    }
    // A keypad and a question above a button that the drive's report disables.
    static void answersOutliveTheirButton(Operator& hand)
    {
        hand.tap("pbInfoLX");
        const auto report = [&](int code) {
            hand.onScreen(
                [&] { QMetaObject::invokeMethod(console("AxisInfo"), "onStateChanged", Q_ARG(int, code)); });
        };
        report(0xA0101); // waiting
        hand.tap("pbReference");
        hand.waitVisible("pbEnter");
        report(0xA0102); // positioning
        hand.enterNumber("305729");
        hand.waitVisible("pbNo");
        Hand::expect(hand.enabled("pbNo"), "the question below a disabled button");
        hand.tap("pbNo");
        hand.waitGone("pbNo");
        hand.tap("pbClose");
    }

    std::unique_ptr<Journey> m_journey;
};

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], kConsoleOf) == 0) {
        Site own;
        own.root = QString::fromLocal8Bit(argv[2]);
        own.shmSuffix = "_second";
        setSite(own);
        return runConsole();
    }
    TestPanel test;
    return QTest::qExec(&test, argc, argv);
}
#include "test_panel.moc"
