#include "joghold.h"

#include <QDialog>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QWindow>
#include <QtTest>

#include <functional>

// How often the machine has been told to start and to stop.
#define TOLD(starts, stops)                                                                                  \
    do {                                                                                                     \
        QCOMPARE(m_starts->count(), starts);                                                                 \
        QCOMPARE(m_stops->count(), stops);                                                                   \
    } while (false)

// What a jog button tells the machine, whatever happens between finger down and finger up.
class TestJogHold : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_window.reset(new QWidget);
        m_window->setGeometry(0, 0, 300, 200);
        m_row = new QWidget(m_window.data());
        m_row->setGeometry(0, 0, 300, 100);
        m_button = new QPushButton(m_row);
        m_button->setGeometry(20, 20, 80, 60);
        hold();
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.data()));
    }
    void cleanup()
    {
        m_hold.reset();
        m_window.reset();
    }

    void oneStartAndOneStop()
    {
        press();
        TOLD(1, 0);
        lift();
        TOLD(1, 1);
        QTest::mouseClick(m_window->windowHandle(), Qt::RightButton, {}, at());
        QTest::keyClick(m_window.data(), Qt::Key_Space); // no key jogs
        QVERIFY(!m_button->hasFocus());
        TOLD(1, 1);
    }

    void quickSecondPress()
    {
        QTest::mouseClick(m_button, Qt::LeftButton);
        QTest::mouseDClick(m_button, Qt::LeftButton);
        QTest::mouseRelease(m_button, Qt::LeftButton);
        TOLD(2, 2);
        // A window hands out the second press as a press and a double click.
        QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, {}, at());
        QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, {}, at());
        TOLD(4, 4);
    }

    void limitSwitchLeavesTheJogRunning()
    {
        press();
        m_button->setEnabled(false);
        TOLD(1, 0);
        lift();
        TOLD(1, 1);
        press(); // on the disabled button
        lift();
        TOLD(1, 1);

        m_button->setEnabled(true);
        press();
        m_button->setEnabled(false);
        m_button->setEnabled(true);
        TOLD(2, 1);
        m_button->setEnabled(false);
        m_window->setEnabled(false); // the key switch behind it
        TOLD(2, 2);
        lift();
        TOLD(2, 2);
    }

    void stopsAtOnce()
    {
        QWidget other;
        QMenu menu(m_window.data());
        menu.addAction("x");
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
            {"another window sees the lift",
             [&] { QTest::mouseRelease(other.windowHandle(), Qt::LeftButton, {}, QPoint(5, 5)); }},
            {"a menu swallows the lift",
             [&] {
                 menu.popup(m_window->mapToGlobal(QPoint(150, 120)));
                 lift();
                 menu.close();
             }},
            {"window hidden", [&] { m_window->hide(); }},
        };
        int jogs = 0;
        for (const auto& [name, happens] : troubles) {
            m_window->activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(m_window.data()));
            press();
            ++jogs;
            TOLD(jogs, jogs - 1);
            happens();
            QVERIFY2(m_stops->count() == jogs, name);
            m_row->show();
            m_row->setEnabled(true);
            m_window->setEnabled(true);
            m_window->show();
            lift();
            TOLD(jogs, jogs);
        }
    }

    void dialogSwallowsTheLift()
    {
        press();
        QDialog dialog(m_window.data());
        QTimer::singleShot(0, &dialog, [&] {
            TOLD(1, 1);
            lift();
            dialog.reject();
        });
        dialog.exec();
        TOLD(1, 1);
        press(); // although the lift was never seen
        TOLD(2, 1);
        lift();
        TOLD(2, 2);
    }

    void slidesOff()
    {
        const auto slide = [this](QPoint to) {
            QMouseEvent move(QEvent::MouseMove, to, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(m_button, &move);
        };
        press();
        slide(QPoint(40, 20));
        TOLD(1, 0);
        slide(QPoint(200, 20));
        TOLD(1, 1);
        slide(QPoint(40, 20));
        TOLD(1, 1);
        QVERIFY2(!m_button->isDown(), "a button that moves nothing must not look pressed");
        lift();
        TOLD(1, 1);
    }

    void endsWhileHeld()
    {
        press();
        m_hold.reset();
        TOLD(1, 1);
        hold();
        press();
        delete m_button;
        TOLD(1, 1);
    }

private:
    void hold()
    {
        m_hold.reset(new JogHold(m_button));
        m_starts.reset(new QSignalSpy(m_hold.data(), &JogHold::pressed));
        m_stops.reset(new QSignalSpy(m_hold.data(), &JogHold::released));
    }
    void press() { QTest::mousePress(m_window->windowHandle(), Qt::LeftButton, {}, at()); }
    void lift() { QTest::mouseRelease(m_window->windowHandle(), Qt::LeftButton, {}, at()); }
    QPoint at() const { return m_button->mapTo(m_window.data(), m_button->rect().center()); }

    QScopedPointer<QWidget> m_window;
    QWidget* m_row = nullptr;
    QPushButton* m_button = nullptr;
    QScopedPointer<JogHold> m_hold;
    QScopedPointer<QSignalSpy> m_starts, m_stops;
};

QTEST_MAIN(TestJogHold)
#include "test_joghold.moc"
