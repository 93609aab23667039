#include "journey.h"
#include "trainer/screen.h"

#include <QScrollBar>
#include <QTableWidget>

// The console as it stands on the machine: full screen on a real X server, among the windows of a window
// manager. What popups, grabs and the order of windows do is seen only here.
class TestPanel : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void popupsCloseBesideThem();
    void dialogsOutliveTheirPlace();
    void answersLieAboveDevices();
    void reasonsStayOnThePanel();
    void silenceIsNo();
    void tableUnderTheFinger();
    void oneConsole();

private:
    void live(const std::function<void(Operator& hand)>& script);
    void instruct(const char* line) { m_journey->plant().instruct(line); }

    std::unique_ptr<Journey> m_journey;
};

namespace {

const char* const kConsoleOf = "--console-of";

bool present(const char* name) // also when disabled or beneath another
{
    return Operator::console()->findChild<QWidget*>(name) != nullptr;
}

} // namespace

void TestPanel::init()
{
    m_journey = std::make_unique<Journey>(5);
}

void TestPanel::cleanup()
{
    m_journey.reset();
}

void TestPanel::live(const std::function<void(Operator& hand)>& script)
{
    QCOMPARE(m_journey->runLoggedIn([&] { script(m_journey->hand); }), QString());
}

void TestPanel::popupsCloseBesideThem()
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
                QWidget* popup = QApplication::activePopupWidget();
                return menu ? popup != nullptr : present("lblFree");
            });
            hand.tap("pbInformation"); // beside it, and on something that answers touches
            hand.waitFor(QString("nothing of ") + opener,
                         [] { return !QApplication::activePopupWidget() && !present("lblFree"); });
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

void TestPanel::dialogsOutliveTheirPlace()
{
    const struct
    {
        QStringList touches;
        const char* open; // what stands on the panel then
        const char* away; // what is touched to leave, empty for a place beside
    } dialogs[] = {
        {{"coordLX"}, "rbAbsolute", "pbClose"},
        {{"coordLX", "lblCoord"}, "pbEnter", "pbEnter"},
        {{"pbInfoLX"}, "lblReferValue", "pbClose"},
        {{"pbInfoLX", "lblReferValue"}, "pbEnter", "pbEnter"},
        {{"speedLX"}, "lblFree", ""},
        {{"speedLX", "lblFree"}, "pbEnter", "pbEnter"},
        {{"pbCloseProgram"}, "pbYes", "pbNo"},
    };
    live([&](Operator& hand) {
        hand.switchOn(false);
        for (const char* trouble : {"pult f2 x", "key off"}) {
            const bool key = trouble[0] == 'k';
            for (const auto& dialog : dialogs) {
                const QString what = dialog.touches.join(" ") + " under " + trouble;
                if (!key) {
                    hand.tap("sbDistPult");
                    hand.waitVisible("pultRegime");
                }
                for (const QString& touch : dialog.touches)
                    hand.tap(touch);
                hand.waitVisible(dialog.open);
                instruct(trouble);
                hand.waitFor(what, [key] {
                    return key ? !Operator::console()->isEnabled()
                               : !Operator::console()->findChild<QWidget*>("frmDrives")->isEnabled();
                });
                if (key) {
                    if (*dialog.away) // a popup would close, as at any touch beside it
                        hand.tap(dialog.open);
                    Hand::expect(hand.visible(dialog.open), what + ": a locked console answers nothing");
                    instruct("key on");
                    hand.waitEnabled("frameHead");
                }
                Hand::expect(hand.enabled(dialog.open), what + ": dead");
                if (*dialog.away)
                    hand.tap(dialog.away);
                else
                    hand.tap("frameHead", QPoint(5, 5));
                hand.waitGone(dialog.open);
                if (dialog.touches.size() > 1 && hand.visible("pbClose"))
                    hand.tap("pbClose");
                hand.waitFor("the panel free", [] { return !QApplication::activeModalWidget(); });
                if (!key) {
                    hand.tap("sbDistPult");
                    hand.waitEnabled("frmDrives");
                    instruct("pult f1 x");
                }
            }
        }

        // A keypad and a question above a button that the drive's report disables.
        hand.tap("pbInfoLX");
        const auto report = [&](int code) {
            hand.onScreen([&] {
                QMetaObject::invokeMethod(Operator::console()->findChild<QWidget*>("AxisInfo"),
                                          "onStateChanged", Q_ARG(int, code));
            });
        };
        constexpr int waiting = 0xA0101;
        constexpr int positioning = 0xA0102;
        report(waiting);
        hand.tap("pbReference");
        hand.waitVisible("pbEnter");
        report(positioning);
        hand.enterNumber("305729");
        hand.waitVisible("pbNo");
        Hand::expect(hand.enabled("pbNo"), "the question below a disabled button");
        hand.tap("pbNo");
        hand.waitGone("pbNo");
        hand.tap("pbClose");
    });
}

void TestPanel::answersLieAboveDevices()
{
    live([](Operator& hand) {
        hand.tap("NL1");
        hand.waitVisible("pbHide");
        const auto place = [&hand] {
            QRect geometry;
            hand.onScreen([&] {
                for (QWidget* top : QApplication::topLevelWidgets()) {
                    if (top->windowType() == Qt::Tool && top->isVisible())
                        geometry = top->geometry();
                }
            });
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

void TestPanel::reasonsStayOnThePanel()
{
    const auto reasons = []() -> QWidget* {
        for (QWidget* top : QApplication::topLevelWidgets()) {
            if (top->windowType() == Qt::ToolTip && top->isVisible())
                return top;
        }
        return nullptr;
    };
    live([&](Operator& hand) {
        for (const char* button : {"sbShutdown", "sbDistPult"}) {
            hand.press(button);
            hand.waitFor("the reasons", [&] { return reasons() && reasons()->windowHandle()->isExposed(); });
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

void TestPanel::silenceIsNo()
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

void TestPanel::tableUnderTheFinger()
{
    QByteArray rows;
    for (int row = 0; row <= 60; ++row)
        rows += "+ " + QByteArray::number(row) + ".00 20.0 700 0.0 0.0 600.0 2 \n";
    QFile file(site().path("/home/oper/bin/contours/contour.save"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("contour\nXYZ\n-1 0 0\n2 -1\n0 1\n600\n2\n0.00 0.00 0.00 1 0 0 0 \n60.00 0.00 0.00 0 \n61\n" +
               rows);
    file.close();
    live([](Operator& hand) {
        hand.tapTab("contour", 1);
        hand.waitVisible("twTechTab");
        QRect bar;
        const auto first = [&hand, &bar] {
            int row = -1;
            hand.onScreen([&] {
                auto* table = Operator::console()->findChild<QTableWidget*>("twTechTab");
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

void TestPanel::oneConsole()
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

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    if (argc == 3 && qstrcmp(argv[1], kConsoleOf) == 0) {
        Site own;
        own.root = QString::fromLocal8Bit(argv[2]);
        own.shmSuffix = QStringLiteral("_second");
        setSite(own);
        return runConsole();
    }
    TestPanel test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_panel.moc"
