#include "joghold.h"

#include <QDialog>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>
#include <QtTest>

#include <functional>

// What a jog button tells the machine, whatever happens between finger down and finger up.
class TestJogHold : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void oneStartAndOneStop();
    void quickSecondPress();
    void limitSwitchLeavesTheJogRunning();
    void stopsAtOnce();
    void keySwitchAfterLimitSwitch();
    void dialogSwallowsTheLift();
    void menuSwallowsTheLift();
    void liftSeenByAnotherWindow();
    void slidesOff();
    void keyboardDoesNotJog();
    void endsWhileHeld();

private:
    void press() { QTest::mousePress(m_window->windowHandle(), Qt::LeftButton, {}, at()); }
    void lift() { QTest::mouseRelease(m_window->windowHandle(), Qt::LeftButton, {}, at()); }
    QPoint at() const { return m_button->mapTo(m_window.data(), m_button->rect().center()); }

    QScopedPointer<QWidget> m_window;
    QWidget* m_row = nullptr;
    QPushButton* m_button = nullptr;
    QScopedPointer<JogHold> m_hold;
    QScopedPointer<QSignalSpy> m_starts, m_stops;
};

void TestJogHold::init()
{
    m_window.reset(new QWidget);
    m_window->setGeometry(0, 0, 300, 200);
    m_row = new QWidget(m_window.data());
    m_row->setGeometry(0, 0, 300, 100);
    m_button = new QPushButton(m_row);
    m_button->setGeometry(20, 20, 80, 60);
    m_hold.reset(new JogHold(m_button));
    m_starts.reset(new QSignalSpy(m_hold.data(), &JogHold::pressed));
    m_stops.reset(new QSignalSpy(m_hold.data(), &JogHold::released));
    m_window->show();
    m_window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_window.data()));
}

void TestJogHold::cleanup()
{
    m_hold.reset();
    m_window.reset();
}

void TestJogHold::oneStartAndOneStop()
{
    press();
    QCOMPARE(m_starts->count(), 1);
    QCOMPARE(m_stops->count(), 0);
    lift();
    QCOMPARE(m_starts->count(), 1);
    QCOMPARE(m_stops->count(), 1);
    QTest::mousePress(m_window->windowHandle(), Qt::RightButton, {}, at());
    QTest::mouseRelease(m_window->windowHandle(), Qt::RightButton, {}, at());
    QCOMPARE(m_starts->count(), 1);
}

void TestJogHold::quickSecondPress()
{
    QTest::mouseClick(m_button, Qt::LeftButton);
    QTest::mouseDClick(m_button, Qt::LeftButton);
    QTest::mouseRelease(m_button, Qt::LeftButton);
    QCOMPARE(m_starts->count(), 2);
    QCOMPARE(m_stops->count(), 2);

    // A window hands out the second press as a press and a double click.
    QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, {}, at());
    QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, {}, at());
    QCOMPARE(m_starts->count(), 4);
    QCOMPARE(m_stops->count(), 4);
}

void TestJogHold::limitSwitchLeavesTheJogRunning()
{
    press();
    m_button->setEnabled(false);
    QCOMPARE(m_stops->count(), 0);
    lift();
    QCOMPARE(m_stops->count(), 1);
    press(); // on the disabled button
    lift();
    QCOMPARE(m_starts->count(), 1);
    QCOMPARE(m_stops->count(), 1);

    m_button->setEnabled(true);
    press();
    m_button->setEnabled(false);
    m_button->setEnabled(true);
    QCOMPARE(m_stops->count(), 1);
    lift();
    QCOMPARE(m_starts->count(), 2);
    QCOMPARE(m_stops->count(), 2);
}

void TestJogHold::stopsAtOnce()
{
    QWidget other;
    const std::pair<const char*, std::function<void()>> troubles[] = {
        {"transformed mode hides the row", [&] { m_row->hide(); }},
        {"parking disables the row", [&] { m_row->setEnabled(false); }},
        {"key switch disables the window", [&] { m_window->setEnabled(false); }},
        {"asked to", [&] { m_hold->letGo(); }},
        {"another window takes the focus",
         [&] {
             other.show();
             other.activateWindow();
             QVERIFY(QTest::qWaitForWindowActive(&other));
         }},
        {"window hidden", [&] { m_window->hide(); }},
    };
    int jogs = 0;
    for (const auto& trouble : troubles) {
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.data()));
        press();
        QCOMPARE(m_starts->count(), ++jogs);
        trouble.second();
        QVERIFY2(m_stops->count() == jogs, trouble.first);
        m_row->show();
        m_row->setEnabled(true);
        m_window->setEnabled(true);
        m_window->show();
        lift();
        QCOMPARE(m_starts->count(), jogs);
        QVERIFY2(m_stops->count() == jogs, trouble.first);
    }
}

void TestJogHold::keySwitchAfterLimitSwitch()
{
    press();
    m_button->setEnabled(false);
    m_window->setEnabled(false);
    QCOMPARE(m_stops->count(), 1);
    lift();
    QCOMPARE(m_stops->count(), 1);
}

void TestJogHold::dialogSwallowsTheLift()
{
    press();
    QDialog dialog(m_window.data());
    QTimer::singleShot(0, &dialog, [&] {
        QCOMPARE(m_stops->count(), 1);
        lift();
        dialog.reject();
    });
    dialog.exec();
    QCOMPARE(m_stops->count(), 1);
    press(); // although the lift was never seen
    QCOMPARE(m_starts->count(), 2);
    lift();
    QCOMPARE(m_stops->count(), 2);
}

void TestJogHold::menuSwallowsTheLift()
{
    press();
    QMenu menu(m_window.data());
    menu.addAction(QStringLiteral("x"));
    menu.popup(m_window->mapToGlobal(QPoint(150, 120)));
    lift();
    QCOMPARE(m_stops->count(), 1);
}

void TestJogHold::liftSeenByAnotherWindow()
{
    QWidget other;
    other.setAttribute(Qt::WA_ShowWithoutActivating);
    other.show();
    press();
    QTest::mouseRelease(other.windowHandle(), Qt::LeftButton, {}, QPoint(5, 5));
    QCOMPARE(m_stops->count(), 1);
    QCOMPARE(m_starts->count(), 1);
}

void TestJogHold::slidesOff()
{
    const auto slide = [this](QPoint to) {
        QMouseEvent move(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(m_button, &move);
    };
    press();
    slide(QPoint(40, 20));
    QCOMPARE(m_stops->count(), 0);
    slide(QPoint(200, 20));
    QCOMPARE(m_stops->count(), 1);
    slide(QPoint(40, 20));
    QCOMPARE(m_starts->count(), 1);
    QVERIFY2(!m_button->isDown(), "a button that moves nothing must not look pressed");
    lift();
    QCOMPARE(m_stops->count(), 1);
}

void TestJogHold::keyboardDoesNotJog()
{
    QTest::keyPress(m_window.data(), Qt::Key_Space);
    QTest::keyRelease(m_window.data(), Qt::Key_Space);
    QVERIFY(!m_button->hasFocus());
    QCOMPARE(m_starts->count(), 0);
}

void TestJogHold::endsWhileHeld()
{
    press();
    m_hold.reset();
    QCOMPARE(m_stops->count(), 1);

    m_hold.reset(new JogHold(m_button));
    QSignalSpy stops(m_hold.data(), &JogHold::released);
    press();
    delete m_button;
    QCOMPARE(stops.count(), 1);
}

QTEST_MAIN(TestJogHold)
#include "test_joghold.moc"
