#include "deathtest.h"
#include "statebutton.h"
#include "unibutton.h"
#include "widgets.h"

#include <QDialog>
#include <QLabel>
#include <QSignalSpy>
#include <QtTest>

#include <functional>

Q_DECLARE_METATYPE(std::function<void(QWidget*)>)

namespace {

const QColor restFace(158, 172, 255);
const QColor motionFace(224, 224, 0);

struct Drives : StateButton
{
    explicit Drives(bool oneWay = false, bool faultLock = true)
    {
        resize(200, 80);
        init(QStringLiteral("Приводы"), oneWay, QStringLiteral("[включены]"), QStringLiteral("[выключены]"),
             QStringLiteral("[выключаются]"), QStringLiteral("[включаются]"), QStringLiteral("[ошибка]"),
             faultLock);
    }
    QColor face() const { return palette().color(QPalette::Button); }
    QString stateText() const { return findChild<QLabel*>(QStringLiteral("lblState"))->text(); }
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
    void initTestCase();
    void states_data();
    void states();
    void titleAlone();
    void pressInEveryState_data();
    void pressInEveryState();
    void forcedLock();
    void reasonsOfTheRightDirection();
    void reasonsEndWhenTheLiftMayBeLost_data();
    void reasonsEndWhenTheLiftMayBeLost();
    void theReasonsStayOnThePanel();
    void theHatchFollowsTheLock();
    void aLockThatIsGoneDoesNotHold();
    void namedLocks();
    void stylingKeepsTheColourOfTheState();

    void uniPushButton();
    void uniLooks();
    void uniToggle();
};

void TestStateButton::initTestCase()
{
    QApplication::setStyle(new MyWinStyle);
}

void TestStateButton::states_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("checked");
    QTest::addColumn<QColor>("face");

    QTest::newRow("off") << 0 << "[выключены]" << false << restFace;
    QTest::newRow("on") << 1 << "[включены]" << true << restFace;
    QTest::newRow("going on") << 2 << "[включаются]" << false << motionFace;
    QTest::newRow("going off") << 3 << "[выключаются]" << false << motionFace;
    QTest::newRow("fault") << 4 << "[ошибка]" << false << restFace;
}

void TestStateButton::states()
{
    QFETCH(int, state);
    QFETCH(QString, text);
    QFETCH(bool, checked);
    QFETCH(QColor, face);

    // The look of a state does not depend on the one before it.
    for (int former = 0; former < 5; ++former) {
        Drives button;
        button.setState(StateButton::State(former));
        button.setState(StateButton::State(state));
        QCOMPARE(int(button.state()), state);
        QCOMPARE(button.stateText(), text);
        QCOMPARE(button.isChecked(), checked);
        QCOMPARE(button.face(), face);
        QCOMPARE(hatchedPixels(button, Qt::red) > 1000, state == 4);

        // The text steps aside with a button that is pressed in.
        const QWidget* frame = button.findChild<QLabel*>(QStringLiteral("lblState"))->parentWidget();
        QCOMPARE(frame->pos(), checked ? QPoint(2, 2) : QPoint(1, 1));
    }
}

void TestStateButton::titleAlone()
{
    StateButton button;
    button.setObjectName(QStringLiteral("sbShutdown"));
    button.init(QStringLiteral("Выключение\nсистемы"), true, QString(), QStringLiteral("[нет]"), QString(),
                QString(), QStringLiteral("[ошибка]"), true);
    QVERIFY(!button.findChild<QLabel*>(QStringLiteral("lblState")));
    button.setState(StateButton::Fault); // and none is missed
    button.setText1(QStringLiteral("Другое"));
    QCOMPARE(button.findChild<QLabel*>(QStringLiteral("lblTitle"))->text(), QStringLiteral("Другое"));

    // The alarm button returns to red, whatever it went through.
    button.setState(StateButton::Off);
    button.show();
    button.setEnabled(false);
    button.setEnabled(true);
    QCOMPARE(button.palette().color(QPalette::Button), QColor(255, 32, 32));
}

void TestStateButton::pressInEveryState_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<bool>("oneWay");
    QTest::addColumn<bool>("faultLock");
    QTest::addColumn<bool>("acts");

    QTest::newRow("off") << 0 << false << true << true;
    QTest::newRow("on") << 1 << false << true << true;
    QTest::newRow("going on") << 2 << false << true << true;
    QTest::newRow("going off") << 3 << false << true << true;
    QTest::newRow("one way, off") << 0 << true << true << true;
    QTest::newRow("one way, on") << 1 << true << true << false;
    QTest::newRow("one way, going off") << 3 << true << true << true;
    QTest::newRow("fault, locked") << 4 << false << true << false;
    QTest::newRow("fault, to be acknowledged") << 4 << false << false << true;
}

void TestStateButton::pressInEveryState()
{
    QFETCH(int, state);
    QFETCH(bool, oneWay);
    QFETCH(bool, faultLock);
    QFETCH(bool, acts);

    Drives button(oneWay, faultLock);
    button.show();
    button.setState(StateButton::State(state));
    const bool checked = button.isChecked();
    QSignalSpy clicked(&button, &StateButton::clicked);

    QTest::mousePress(&button, Qt::LeftButton);
    QCOMPARE(clicked.size(), acts ? 1 : 0); // at the press
    if (acts)
        QCOMPARE(clicked.first().first().toBool(), false);
    QVERIFY(!button.isDown());
    QTest::mouseRelease(&button, Qt::LeftButton);
    QCOMPARE(clicked.size(), acts ? 1 : 0); // and not again
    QCOMPARE(button.isChecked(), checked);
    QVERIFY(reasons().isEmpty());
}

void TestStateButton::forcedLock()
{
    Drives button(false, false);
    button.setLocked(true);
    button.show();
    QSignalSpy clicked(&button, &StateButton::clicked);
    for (bool on : {false, true}) {
        button.setState(on);
        QVERIFY(button.locked());
        QTest::mousePress(&button, Qt::LeftButton);
        QVERIFY(clicked.isEmpty());
        QVERIFY(reasons().isEmpty()); // no list, nothing to show
        QTest::mouseRelease(&button, Qt::LeftButton);
    }
    button.setState(StateButton::Fault); // a fault is acknowledged whatever the locks say
    QTest::mouseClick(&button, Qt::LeftButton);
    QCOMPARE(clicked.size(), 1);
    button.setLocked(false);
    button.setState(false);
    QVERIFY(!button.locked());
}

void TestStateButton::reasonsOfTheRightDirection()
{
    Lock noOn(false, QStringLiteral("не включить"), QStringLiteral("включить"));
    Lock noOff(false, QStringLiteral("не выключить"), QStringLiteral("выключить"));
    Drives button;
    button.setLock(true, &noOn);
    button.addLock(true, &noOn);
    button.addLock(true, &noOff);
    button.setLock(false, &noOff);
    button.addLock(false, &noOff);
    button.show();
    QSignalSpy clicked(&button, &StateButton::clicked);

    for (int state : {0, 1, 2, 3}) {
        const bool forOn = state == 0 || state == 2;
        button.setState(StateButton::State(state));
        noOn.setState(forOn);
        noOff.setState(!forOn);
        QVERIFY(button.locked());
        QTest::mousePress(&button, Qt::LeftButton);
        const QList<LockView*> lines = reasons();
        QCOMPARE(lines.size(), forOn ? 2 : 1);
        QVERIFY(lines.first()->findChildren<QLabel*>().at(1)->text().startsWith(QStringLiteral("не ")));
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

void TestStateButton::reasonsEndWhenTheLiftMayBeLost_data()
{
    QTest::addColumn<std::function<void(QWidget*)>>("happens");
    const auto row = [](const char* name, const std::function<void(QWidget*)>& happens) {
        QTest::newRow(name) << happens;
    };
    row("hidden", [](QWidget* window) { window->hide(); });
    row("disabled", [](QWidget* window) { window->setEnabled(false); });
    row("a question comes", [](QWidget* window) { (new QDialog(window))->open(); });
    row("deleted", [](QWidget* window) { delete window->findChild<StateButton*>(); });
}

void TestStateButton::reasonsEndWhenTheLiftMayBeLost()
{
    QFETCH(std::function<void(QWidget*)>, happens);
    Lock lock(false, QStringLiteral("нельзя"), QString());
    lock.setState(true);
    QWidget window;
    auto* button = new Drives;
    button->setParent(&window);
    button->setLock(true, &lock);
    button->addLock(true, &lock);
    window.show();
    QTest::mousePress(button, Qt::LeftButton);
    QCOMPARE(reasons().size(), 1);
    happens(&window);
    QVERIFY(reasons().isEmpty());
}

void TestStateButton::theReasonsStayOnThePanel()
{
    Lock lock(false, QStringLiteral("Насос не готов к включению"), QString());
    lock.setState(true);
    Drives button;
    button.setLock(true, &lock);
    button.addLock(true, &lock);
    button.show();

    QCursor::setPos(100, 120);
    QTest::mousePress(&button, Qt::LeftButton);
    QCOMPARE(reasons().first()->window()->pos(), QCursor::pos());
    QTest::mouseRelease(&button, Qt::LeftButton);

    QCursor::setPos(panelWidth - 10, panelHeight - 10);
    QTest::mousePress(&button, Qt::LeftButton);
    const QRect place = reasons().first()->window()->geometry();
    QVERIFY(QRect(0, 0, panelWidth, panelHeight).contains(place));
    QTest::mouseRelease(&button, Qt::LeftButton);
}

void TestStateButton::theHatchFollowsTheLock()
{
    struct Counting : Drives
    {
        int painted = 0;
        void paintEvent(QPaintEvent* event) override
        {
            ++painted;
            Drives::paintEvent(event);
        }
    };
    Lock lock(false, QString(), QString());
    lock.setState(true);
    Counting button;
    button.setLock(true, &lock);
    button.show();
    QVERIFY(QTest::qWaitForWindowExposed(&button));
    QVERIFY(hatchedPixels(button, Qt::darkGray) > 1000);

    const int before = button.painted;
    lock.setState(false); // nobody tells the button
    QTRY_VERIFY_WITH_TIMEOUT(button.painted > before, 1000);
    QCOMPARE(hatchedPixels(button, Qt::darkGray), 0);
}

void TestStateButton::aLockThatIsGoneDoesNotHold()
{
    auto lock = std::make_unique<Lock>(false, QString(), QString());
    lock->setState(true);
    Drives button;
    button.setLock(true, lock.get());
    button.addLock(true, lock.get());
    QVERIFY(button.locked());
    lock.reset();
    QVERIFY(!button.locked());
    button.setLocked(true);
    QTest::mouseClick(&button, Qt::LeftButton);
}

void TestStateButton::namedLocks()
{
    Drives button;
    const QString door = QStringLiteral("door");
    button.addLock(door, true, QStringLiteral("открыта"), QStringLiteral("закрыта"));
    QVERIFY(button.lock(door)->state());
    QCOMPARE(button.lock(door)->text(true), QStringLiteral("открыта"));
    button.setLock(door, false);
    QVERIFY(!button.lock(door)->state());

    QByteArray told = deathOf([&] { button.addLock(door, true, QString(), QString()); });
    QVERIFY2(told.contains("i == m_locks.end()"), told);
    told = deathOf([&] { button.setLock(QStringLiteral("window"), true); });
    QVERIFY2(told.contains("i != m_locks.end()"), told);
    told = deathOf([&] {
        button.setState(StateButton::State(7));
        button.setLocked(true);
        QTest::mousePress(&button, Qt::LeftButton);
    });
    QVERIFY2(told.contains("\"0\""), told);
}

void TestStateButton::stylingKeepsTheColourOfTheState()
{
    Drives button;
    button.setState(StateButton::GoingOn);
    button.show(); // the style comes to a button with the first show
    QCOMPARE(button.face(), motionFace);
    qApp->setStyleSheet(QStringLiteral("QLabel { margin: 0px; }"));
    QCOMPARE(button.face(), motionFace);
    qApp->setStyleSheet(QString());
    QApplication::setStyle(new MyWinStyle);
    QCOMPARE(button.face(), motionFace);
}

void TestStateButton::uniPushButton()
{
    CUniButton button(13);
    QCOMPARE(button.size(), QSize(30, 30));
    const auto pixel = [&](int x, int y) { return button.grab().toImage().pixelColor(x, y); };
    const QColor ground = pixel(0, 0);
    QVERIFY(pixel(15, 1) != ground);
    QSignalSpy clicked(&button, &CUniButton::clicked);
    QTest::mouseClick(&button, Qt::RightButton);
    QTest::mousePress(&button, Qt::LeftButton);
    QCOMPARE(clicked.size(), 0);
    QCOMPARE(pixel(15, 1), ground); // shrunk under the finger
    QVERIFY(pixel(15, 3) != ground);
    QTest::mouseRelease(&button, Qt::LeftButton);
    QCOMPARE(clicked.size(), 1);
    button.setChecked(true); // means nothing to a push button
    QCOMPARE(clicked.size(), 1);
    button.setAlpha(0);
    QCOMPARE(pixel(15, 15), ground);
}

void TestStateButton::uniLooks()
{
    QVector<QImage> looks;
    for (int type = 0; type < 15; ++type) {
        CUniButton button(type);
        const int side = type == 13 ? 30 : type >= 9 && type <= 12 ? 37 : 19;
        QCOMPARE(button.size(), QSize(side, side));
        const auto nextIsNew = [&] {
            looks << button.grab().toImage();
            return looks.indexOf(looks.last()) == looks.size() - 1;
        };
        QVERIFY2(nextIsNew(), qPrintable(QString::number(type)));
        QEvent enter(QEvent::Enter);
        QApplication::sendEvent(&button, &enter);
        QVERIFY(nextIsNew());
        QTest::mousePress(&button, Qt::LeftButton);
        QVERIFY(nextIsNew());
        button.setEnabled(false);
        QVERIFY(nextIsNew());
    }
}

void TestStateButton::uniToggle()
{
    for (int type : {6, 7}) {
        CUniButton button(type);
        QSignalSpy clicked(&button, &CUniButton::clicked);
        QTest::mousePress(&button, Qt::LeftButton);
        QCOMPARE(clicked.size(), 1);
        QTest::mouseRelease(&button, Qt::LeftButton);
        QCOMPARE(clicked.size(), 1);
        button.setChecked(true);
        QCOMPARE(clicked.size(), 1);
        button.setChecked(false);
        QCOMPARE(clicked.size(), 2);
    }
}

QTEST_MAIN(TestStateButton)
#include "test_statebutton.moc"
