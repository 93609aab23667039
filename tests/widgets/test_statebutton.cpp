#include "comparetext.h"
#include "deathtest.h"
#include "lockview.h"
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

// What the operator sees of a line: its picture stands before its text.
QLabel* part(const LockLine& line, int number)
{
    return line.findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly).at(number);
}
QString text(const LockLine& line)
{
    return part(line, 1)->text();
}
QColor ground(const LockLine& line, QPalette::ColorGroup group = QPalette::Active)
{
    return line.palette().color(group, QPalette::Window);
}

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
    for (int i = 0; i < image.width() * image.height(); ++i)
        count += image.pixelColor(i % image.width(), i / image.width()) == hatch;
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
        const QStringList texts =
            QString("[выключены] [включены] [включаются] [выключаются] [ошибка]").split(' ');
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
            QVERIFY((!acts || !clicked[0][0].toBool()) && !button.isDown());
            QTest::mouseRelease(&button, Qt::LeftButton);
            QCOMPARE(clicked.size(), acts ? 1 : 0); // and not again
            QVERIFY(button.isChecked() == checked && reasons().isEmpty());
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
            QTest::mousePress(&button, Qt::LeftButton);
            QVERIFY(button.locked() && clicked.isEmpty() && reasons().isEmpty()); // no list, nothing to show
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
            QVERIFY(text(*lines.first()).startsWith("не "));
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
            QTest::mousePress(&button, Qt::LeftButton);
            QCOMPARE(clicked.size(), toggle ? 1 : 0);
            QVERIFY(toggle || pixel(1) != pixel(3)); // shrunk under the finger
            QTest::mouseRelease(&button, Qt::LeftButton);
            QCOMPARE(clicked.size(), 1);
            for (const bool on : {true, false}) // means nothing to a push button, and no change to the other
                button.setChecked(on);
            QCOMPARE(clicked.size(), toggle ? 2 : 1);
            const QColor face = pixel(10);
            button.setAlpha(0);
            QVERIFY(pixel(10) != face);
        }
    }

    void viewFollowsItsLock()
    {
        Lock lock(true, "Дверь открыта", QString()); // written are conditions that permit
        QVERIFY(!lock.state());
        const QSignalSpy told(&lock, &Lock::stateChanged); // of every write: the state, not the value written
        for (bool permits : {true, true, false})
            lock.setState(permits);
        QCOMPARE(told, (QList<QVariantList>{{false}, {false}, {true}}));
        LockView view(nullptr);
        view.update(true); // nothing to show yet
        QCOMPARE(text(view), "");

        view.setLock(&lock);
        QCOMPARE(view.height(), 40);
        QCOMPARE(view.font().pointSize(), 14);
        QCOMPARE(ground(view), QColor(Qt::red));
        QCOMPARE(text(view), "Дверь открыта  ");
        const qint64 locked = part(view, 0)->pixmap(Qt::ReturnByValue).cacheKey();

        lock.setState(true);
        QCOMPARE(ground(view), QColor(Qt::green));
        QCOMPARE(ground(view, QPalette::Disabled), QColor(Qt::green));
        QCOMPARE(text(view), "  "); // a lock without this sentence: the picture alone
        QVERIFY(part(view, 0)->pixmap(Qt::ReturnByValue).cacheKey() != locked);
        QVERIFY(deathOf([&] { view.setLock(&lock); }).contains("!m_lock")); // bound once
    }

    void groupShowsItsListWhileTheFingerIsDown()
    {
        Lock own(false, "не готов", "готов"), first(false, "1 нет", "1 да"), second(false, "2 нет", "2 да");
        second.setState(true);
        QWidget panel;
        panel.resize(600, 400);
        LockGroup group(&panel);
        group.setGeometry(50, 60, 300, 40);
        group.setLock(&own);
        QCOMPARE(text(group), "готов");
        group.addLock(&second);
        group.addLock(&first);
        panel.show();

        QTest::mousePress(&group, Qt::LeftButton);
        const QList<LockView*> lines = panel.findChildren<LockView*>();
        QCOMPARE(lines.size(), 2);
        QCOMPARE(text(*lines[0]), "2 нет  ");
        QCOMPARE(text(*lines[1]), "1 да  ");
        QVERIFY(lines[0]->mapTo(&panel, QPoint()).y() < lines[1]->mapTo(&panel, QPoint()).y());
        const QWidget* popup = lines[0]->parentWidget();
        QCOMPARE(popup->parentWidget(), &panel);
        QCOMPARE(popup->pos(), QPoint(70, 90));
        QVERIFY(popup->isVisible() && popup->width() >= group.width());
        first.setState(true); // live while shown
        QCOMPARE(text(*lines[1]), "1 нет  ");
        QTest::mouseRelease(&group, Qt::LeftButton);
        QVERIFY(panel.findChildren<LockView*>().isEmpty());
        QTest::mousePress(&group, Qt::LeftButton);
        group.setEnabled(false); // the release will never come
        QVERIFY(panel.findChildren<LockView*>().isEmpty());
    }
};

QTEST_MAIN(TestStateButton)
#include "test_statebutton.moc"
