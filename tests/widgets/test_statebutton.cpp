#include "comparetext.h"
#include "deathtest.h"
#include "statebutton.h"
#include "unibutton.h"
#include "widgets.h"

#include <QDialog>
#include <QLabel>
#include <QSignalSpy>
#include <QtTest>

#include <functional>

namespace {

const QColor restFace(158, 172, 255);
const QColor motionFace(224, 224, 0);

struct Drives : StateButton
{
    explicit Drives(bool oneWay = false, bool faultLock = true)
    {
        resize(200, 80);
        init("Приводы", oneWay, "[включены]", "[выключены]", "[выключаются]", "[включаются]", "[ошибка]",
             faultLock);
    }
    // With a lock that decides in one direction and is its reason.
    void lockBy(bool on, Lock* lock)
    {
        setLock(on, lock);
        addLock(on, lock);
    }
    QColor face() const { return palette().color(QPalette::Button); }
    void paintEvent(QPaintEvent* event) override
    {
        ++painted;
        StateButton::paintEvent(event);
    }
    int painted = 0;
};

QList<LockView*> reasons()
{
    QList<LockView*> lines;
    for (const QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && window->windowType() == Qt::ToolTip)
            lines += window->findChildren<LockView*>();
    }
    return lines;
}

int hatchedPixels(QWidget& widget, const QColor& hatch)
{
    const QImage image = widget.grab().toImage();
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += image.pixelColor(x, y) == hatch;
    }
    return count;
}

} // namespace

class TestStateButton : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setStyle(new MyWinStyle); }

    // The look of a state does not depend on the one before it.
    void states()
    {
        const char* const texts[] = {"[выключены]", "[включены]", "[включаются]", "[выключаются]",
                                     "[ошибка]"};
        for (int state = 0; state < 5; ++state) {
            for (int former = 0; former < 5; ++former) {
                Drives button;
                button.setState(StateButton::State(former));
                button.setState(StateButton::State(state));
                const auto* label = button.findChild<QLabel*>("lblState");
                QCOMPARE(int(button.state()), state);
                QCOMPARE(label->text(), texts[state]);
                QCOMPARE(button.isChecked(), state == 1);
                QCOMPARE(button.face(), state == 2 || state == 3 ? motionFace : restFace);
                QCOMPARE(hatchedPixels(button, Qt::red) > 1000, state == 4);
                // The text steps aside with a button that is pressed in.
                QCOMPARE(label->parentWidget()->pos(), state == 1 ? QPoint(2, 2) : QPoint(1, 1));
            }
        }
    }

    void titleAlone()
    {
        StateButton button;
        button.setObjectName("sbShutdown");
        button.init("Выключение\nсистемы", true, {}, "[нет]", {}, {}, "[ошибка]", true);
        QVERIFY(!button.findChild<QLabel*>("lblState"));
        button.setState(StateButton::Fault); // and none is missed
        button.setText1("Другое");
        QCOMPARE(button.findChild<QLabel*>("lblTitle")->text(), "Другое");
        button.show();
        button.setEnabled(false);
        button.setEnabled(true); // the alarm button returns to red
        QCOMPARE(button.palette().color(QPalette::Button), QColor(255, 32, 32));
    }

    void pressInEveryState()
    {
        // One way, a fault that locks, and whether a press acts.
        const std::tuple<int, bool, bool, bool> rows[] = {
            {0, false, true, true}, {1, false, true, true},  {2, false, true, true},
            {3, false, true, true}, {0, true, true, true},   {1, true, true, false},
            {3, true, true, true},  {4, false, true, false}, {4, false, false, true}};
        for (const auto& [state, oneWay, faultLock, acts] : rows) {
            Drives button(oneWay, faultLock);
            button.show();
            button.setState(StateButton::State(state));
            const bool checked = button.isChecked();
            const QSignalSpy clicked(&button, &StateButton::clicked);
            QTest::mousePress(&button, Qt::LeftButton);
            QCOMPARE(clicked.size(), acts ? 1 : 0); // at the press
            QVERIFY(!acts || !clicked[0][0].toBool());
            QVERIFY(!button.isDown());
            QTest::mouseRelease(&button, Qt::LeftButton);
            QCOMPARE(clicked.size(), acts ? 1 : 0); // and not again
            QCOMPARE(button.isChecked(), checked);
            QVERIFY(reasons().isEmpty());
        }
    }

    void forcedLock()
    {
        Drives button(false, false);
        button.setLocked(true);
        button.show();
        const QSignalSpy clicked(&button, &StateButton::clicked);
        for (bool on : {false, true}) {
            button.setState(on);
            QVERIFY(button.locked());
            QTest::mousePress(&button, Qt::LeftButton);
            QVERIFY(clicked.isEmpty());
            QVERIFY(reasons().isEmpty()); // no list, nothing to show
        }
        button.setState(StateButton::Fault); // a fault is acknowledged whatever the locks say
        QTest::mouseClick(&button, Qt::LeftButton);
        QCOMPARE(clicked.size(), 1);
        button.setLocked(false);
        button.setState(false);
        QVERIFY(!button.locked());
    }

    void reasonsOfTheRightDirection()
    {
        Lock noOn(false, "не включить", "включить");
        Lock noOff(false, "не выключить", "выключить");
        Drives button;
        button.lockBy(true, &noOn);
        button.addLock(true, &noOff);
        button.lockBy(false, &noOff);
        button.show();
        const QSignalSpy clicked(&button, &StateButton::clicked);

        for (int state : {0, 1, 2, 3}) {
            const bool forOn = state == 0 || state == 2;
            button.setState(StateButton::State(state));
            noOn.setState(forOn);
            noOff.setState(!forOn);
            QVERIFY(button.locked());
            QTest::mousePress(&button, Qt::LeftButton);
            const QList<LockView*> lines = reasons();
            QCOMPARE(lines.size(), forOn ? 2 : 1);
            QVERIFY(lines.first()->findChildren<QLabel*>().at(1)->text().startsWith("не "));
            QVERIFY(lines.first()->window()->width() >= button.width());
            QTest::mouseRelease(&button, Qt::LeftButton);
            QVERIFY(reasons().isEmpty());

            // The lock of the other direction holds nothing.
            noOn.setState(!forOn);
            noOff.setState(forOn);
            QVERIFY(!button.locked());
        }
        QVERIFY(clicked.isEmpty());
    }

    void reasonsEndWhenTheLiftMayBeLost()
    {
        const std::function<void(QWidget*)> troubles[] = {
            [](QWidget* window) { window->hide(); },
            [](QWidget* window) { window->setEnabled(false); },
            [](QWidget* window) { (new QDialog(window))->open(); },
            [](QWidget* window) { delete window->findChild<StateButton*>(); },
        };
        for (const auto& happens : troubles) {
            Lock lock(false, "нельзя", QString());
            lock.setState(true);
            QWidget window;
            auto* button = new Drives;
            button->setParent(&window);
            button->lockBy(true, &lock);
            window.show();
            QTest::mousePress(button, Qt::LeftButton);
            QCOMPARE(reasons().size(), 1);
            happens(&window);
            QVERIFY(reasons().isEmpty());
        }
    }

    void theLockShowsAndItsReasonsStayOnThePanel()
    {
        auto lock = std::make_unique<Lock>(false, "Насос не готов к включению", QString());
        lock->setState(true);
        Drives button;
        button.lockBy(true, lock.get());
        button.show();
        QVERIFY(QTest::qWaitForWindowExposed(&button));
        QVERIFY(hatchedPixels(button, Qt::darkGray) > 1000);
        const int before = button.painted;
        lock->setState(false); // nobody tells the button
        QTRY_VERIFY_WITH_TIMEOUT(button.painted > before, 1000);
        QCOMPARE(hatchedPixels(button, Qt::darkGray), 0);

        lock->setState(true);
        const auto place = [&](const QPoint& pointer) {
            QCursor::setPos(pointer);
            QTest::mousePress(&button, Qt::LeftButton);
            const QRect shown = reasons().first()->window()->geometry();
            QTest::mouseRelease(&button, Qt::LeftButton);
            return shown;
        };
        QCOMPARE(place({100, 120}).topLeft(), QPoint(100, 120));
        QVERIFY(QRect(0, 0, panelWidth, panelHeight).contains(place({panelWidth - 10, panelHeight - 10})));

        // A lock that is gone holds nothing.
        QVERIFY(button.locked());
        lock.reset();
        QVERIFY(!button.locked());
        button.setLocked(true);
        QTest::mouseClick(&button, Qt::LeftButton);
    }

    void namedLocks()
    {
        Drives button;
        button.addLock("door", true, "открыта", "закрыта");
        QVERIFY(button.lock("door")->state());
        QCOMPARE(button.lock("door")->text(true), "открыта");
        button.setLock("door", false);
        QVERIFY(!button.lock("door")->state());

        QVERIFY(deathOf([&] { button.addLock("door", true, {}, {}); }).contains("i == m_locks.end()"));
        QVERIFY(deathOf([&] { button.setLock("window", true); }).contains("i != m_locks.end()"));
        const QByteArray told = deathOf([&] {
            button.setState(StateButton::State(7));
            button.setLocked(true);
            QTest::mousePress(&button, Qt::LeftButton);
        });
        QVERIFY2(told.contains("\"0\""), told);
    }

    void stylingKeepsTheColourOfTheState()
    {
        Drives button;
        button.setState(StateButton::GoingOn);
        button.show(); // the style comes to a button with the first show
        QCOMPARE(button.face(), motionFace);
        qApp->setStyleSheet("QLabel { margin: 0px; }");
        QCOMPARE(button.face(), motionFace);
        qApp->setStyleSheet(QString());
        QApplication::setStyle(new MyWinStyle);
        QCOMPARE(button.face(), motionFace);
    }

    // The small buttons: each type has its looks, under a pointer, pressed and disabled.
    void uniLooks()
    {
        QVector<QImage> looks;
        for (int type = 0; type < 15; ++type) {
            CUniButton button(type);
            const int side = type == 13 ? 30 : type >= 9 && type <= 12 ? 37 : 19;
            QCOMPARE(button.size(), QSize(side, side));
            const std::function<void()> steps[] = {
                [] {},
                [&] { QCoreApplication::sendEvent(&button, std::make_unique<QEvent>(QEvent::Enter).get()); },
                [&] { QTest::mousePress(&button, Qt::LeftButton); }, [&] { button.setEnabled(false); }};
            for (const auto& step : steps) {
                step();
                const QImage look = button.grab().toImage();
                QVERIFY2(!looks.contains(look), qPrintable(QString::number(type)));
                looks << look;
            }
        }
    }

    void uniClicks()
    {
        for (int type : {6, 7, 13}) {
            const bool toggle = type != 13;
            CUniButton button(type);
            const auto pixel = [&](int y) { return button.grab().toImage().pixelColor(15, y); };
            const QSignalSpy clicked(&button, &CUniButton::clicked);
            QTest::mouseClick(&button, Qt::RightButton);
            QCOMPARE(clicked.size(), 0);
            QTest::mousePress(&button, Qt::LeftButton);
            QCOMPARE(clicked.size(), toggle ? 1 : 0);
            QVERIFY(toggle || pixel(1) != pixel(3)); // shrunk under the finger
            QTest::mouseRelease(&button, Qt::LeftButton);
            QCOMPARE(clicked.size(), 1);
            button.setChecked(true); // means nothing to a push button
            QCOMPARE(clicked.size(), 1);
            button.setChecked(false);
            QCOMPARE(clicked.size(), toggle ? 2 : 1);
            const QColor face = pixel(10);
            button.setAlpha(0);
            QVERIFY(pixel(10) != face);
        }
    }
};

QTEST_MAIN(TestStateButton)
#include "test_statebutton.moc"
