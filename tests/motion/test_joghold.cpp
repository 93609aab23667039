#include "joghold.h"

#include "comparetext.h"

#include <QDialog>
#include <QMenu>
#include <QPushButton>
#include <QWindow>
#include <QtTest>

#include <functional>

// What a jog button tells the machine, whatever happens between finger down and finger up. A test is a story:
// what the finger does, and in capitals what the machine has been told meanwhile.
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
        QVERIFY(QTest::qWaitForWindowActive(m_window.data()));
    }
    void cleanup()
    {
        m_hold.reset();
        m_window.reset();
    }

    void quickSecondPress()
    {
        QTest::mouseClick(m_window->windowHandle(), Qt::RightButton, {}, at());
        QTest::keyClick(m_window.data(), Qt::Key_Space); // no key jogs
        QVERIFY(!m_button->hasFocus());
        QTest::mouseClick(m_button, Qt::LeftButton);
        QTest::mouseDClick(m_button, Qt::LeftButton);
        QTest::mouseRelease(m_button, Qt::LeftButton);
        // A window hands out the second press as a press and a double click.
        press();
        lift();
        press();
        lift();
        QCOMPARE(story(), "START STOP START STOP down START up STOP down START up STOP");
    }

    void limitSwitchLeavesTheJogRunning()
    {
        press();
        m_button->setEnabled(false);
        lift();
        press(); // on the disabled button
        lift();
        QCOMPARE(story(), "down START up STOP down up");

        m_button->setEnabled(true);
        press();
        m_button->setEnabled(false);
        m_button->setEnabled(true);
        m_button->setEnabled(false);
        QCOMPARE(story(), "down START");
        m_window->setEnabled(false); // the key switch behind it
        lift();
        QCOMPARE(story(), "STOP up");
    }

    void stopsAtOnce()
    {
        QWidget other;
        QMenu menu(m_window.data());
        menu.addAction("x");
        const auto focus = [](QWidget* window) {
            window->show();
            window->activateWindow();
            QVERIFY(QTest::qWaitForWindowActive(window));
        };
        const std::pair<const char*, std::function<void()>> troubles[] = {
            {"transformed mode hides the row", [&] { m_row->hide(); }},
            {"parking disables the row", [&] { m_row->setEnabled(false); }},
            {"asked to", [&] { m_hold->letGo(); }},
            {"another window takes the focus", [&] { focus(&other); }},
            {"another window sees the lift",
             [&] { QTest::mouseRelease(other.windowHandle(), Qt::LeftButton, {}, QPoint(5, 5)); }},
            {"a menu comes", [&] { menu.popup(m_window->mapToGlobal(QPoint(150, 120))); }},
            {"window hidden", [&] { m_window->hide(); }},
        };
        for (const auto& [name, happens] : troubles) {
            focus(m_window.data());
            press();
            happens();
            if (menu.isVisible())
                lift(); // is swallowed
            menu.close();
            QVERIFY2(story().remove(" up").endsWith("down START STOP"), name);
            m_row->show();
            m_row->setEnabled(true);
            m_window->show();
            lift();
            QCOMPARE(story(), "up");
        }
    }

    void dialogSwallowsTheLift()
    {
        press();
        QDialog dialog(m_window.data());
        QTimer::singleShot(0, &dialog, [&] {
            QCOMPARE(story(), "down START STOP");
            lift();
            dialog.reject();
        });
        dialog.exec();
        press(); // although the lift was never seen
        lift();
        QCOMPARE(story(), "up down START up STOP");
    }

    void slidesOff()
    {
        press();
        for (const int x : {40, 200, 40}) {
            m_story << "slide";
            QMouseEvent move(QEvent::MouseMove, QPoint(x, 20), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
            QCoreApplication::sendEvent(m_button, &move);
        }
        QVERIFY2(!m_button->isDown(), "a button that moves nothing must not look pressed");
        lift();
        QCOMPARE(story(), "down START slide slide STOP slide up");
    }

    void endsWhileHeld()
    {
        press();
        m_hold.reset();
        hold();
        press();
        delete m_button;
        QCOMPARE(story(), "down START STOP down START STOP");
    }

private:
    void hold()
    {
        m_hold.reset(new JogHold(m_button));
        connect(m_hold.data(), &JogHold::pressed, this, [this] { m_story << "START"; });
        connect(m_hold.data(), &JogHold::released, this, [this] { m_story << "STOP"; });
    }
    void press()
    {
        m_story << "down";
        QTest::mousePress(m_window->windowHandle(), Qt::LeftButton, {}, at());
    }
    void lift()
    {
        m_story << "up";
        QTest::mouseRelease(m_window->windowHandle(), Qt::LeftButton, {}, at());
    }
    QString story() { return std::exchange(m_story, {}).join(' '); } // since the last time
    QPoint at() const { return m_button->mapTo(m_window.data(), m_button->rect().center()); }

    QScopedPointer<QWidget> m_window;
    QWidget* m_row = nullptr;
    QPushButton* m_button = nullptr;
    QScopedPointer<JogHold> m_hold;
    QStringList m_story;
};

QTEST_MAIN(TestJogHold)
#include "test_joghold.moc"
