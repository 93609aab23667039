#include "commandlog.h"
#include "journey.h"

#include <QtWidgets>

// A jog under trouble: a press that sent a move is followed by exactly one stop, at the latest when the
// finger lifts, whatever came between.
class TestJourneyJog : public QObject
{
    Q_OBJECT

private slots:
    void realAxis() { oneStopForEachMove("LX", "pbPlusLX"); }
    void virtualAxis() { oneStopForEachMove("Z", "pbMinusZ"); }

private:
    using Step = std::function<void()>;

    void oneStopForEachMove(const QString& axis, const QString& button)
    {
        m_axis = axis;
        m_button = button;
        Journey journey(5);
        m_journey = &journey;
        Operator& hand = journey.hand;
        const CommandLog log;
        QMenu menu;
        menu.addAction("entry");
        QWidget other;
        other.setObjectName("other");
        const QString failure = journey.run([&] {
            hand.release(); // it may still lie where a console has ended
            hand.logIn();
            hand.switchOn(axis == "Z");
            hand.setSpeed(axis, "200");
            jog();

            otherWindows(&menu, &other);
            modeChangedElsewhere();
            troubleOfTheMachine();
            press(); // and the console ends
        });
        QCOMPARE(failure, QString());
        QCOMPARE(CommandLog::count("MOVE("), 2);
        QCOMPARE(stops(), 1);
    }

    void otherWindows(QMenu* menu, QWidget* other)
    {
        Operator& hand = m_journey->hand;
        hand.tap("NL1");
        hand.waitVisible("pbHide"); // lifted over the dialog of a device
        jog([&] { hand.slide(QPoint(200, 830)); }, [&] { hand.tap("pbHide"); });

        const auto box = [&] {
            onScreen(
                [] { QTimer::singleShot(0, qApp, [] { QMessageBox::information(nullptr, "?", "!"); }); });
            hand.waitFor("the box", [] { return QApplication::activeModalWidget() != nullptr; });
        };
        jog(box, [&] { hand.closeBox(); });

        jog([&] { onScreen([&] { menu->popup(QPoint(500, 500)); }); },
            [&] { onScreen([&] { menu->close(); }); });

        const auto takeFocus = [&] {
            onScreen([&] {
                other->show();
                other->activateWindow();
            });
            hand.waitVisible("other");
        };
        jog(takeFocus, [&] { onScreen([&] { other->close(); }); });
    }

    // It hides A on the one side, the virtual axes on the other.
    void modeChangedElsewhere()
    {
        Operator& hand = m_journey->hand;
        const bool transformed = m_axis == "Z";
        const auto [axis, button] = std::pair(m_axis, m_button);
        if (!transformed) {
            m_axis = "A";
            m_button = "pbPlusA";
            hand.setSpeed("A", "200");
        }
        const auto change = [&] {
            tell("onChangedTransOn", !transformed);
            hand.waitGone(m_button);
        };
        jog(change, [&] { tell("onChangedTransOn", transformed); });
        m_axis = axis;
        m_button = button;
    }

    void troubleOfTheMachine()
    {
        Operator& hand = m_journey->hand;
        const bool transformed = m_axis == "Z";
        const auto keyOff = [&] {
            instruct("key off");
            hand.waitFor("the console disabled", [] { return !Operator::console()->isEnabled(); });
        };
        jog(keyOff, [&] { instruct("key on"); });

        // The carriage runs into its end. A virtual jog runs away from the end whose switch guards its
        // button, so there the switch is closed by hand. From the console's side the switch itself stops
        // nothing.
        if (!transformed) {
            hand.waitFor("the carriage near its end", [&] {
                instruct("axis LX 1490");
                return Operator::console()->findChild<QLabel*>("coordLX")->text() == "1490.00";
            });
        }
        hand.waitEnabled(m_button);
        const auto limit = [&] {
            if (transformed)
                tell("onChangedNpZ", true);
            hand.waitFor("the button disabled",
                         [&] { return !Operator::console()->findChild<QWidget*>(m_button)->isEnabled(); });
            Hand::expect(stops() == 0, "the switch stops nothing");
        };
        jog(limit, [&] {
            instruct("axis LX 0");
            tell("onChangedNpZ", false);
        });
        hand.waitEnabled(m_button);

        jog([&] {
            instruct("link drop 1");
            hand.waitColour("lblCNC", Qt::red);
            hand.waitColour("lblCNC", Qt::green);
        });
    }

    void press()
    {
        CommandLog::clear();
        m_journey->hand.press(m_button);
        m_journey->hand.waitFor("the move", [&] { return CommandLog::count("MOVE(" + m_axis + ",") == 1; });
        Hand::expect(stops() == 0, "no stop yet");
    }

    // Presses the button, lets the trouble come and lifts the finger; then all is mended for the next one.
    void jog(const Step& trouble = {}, const Step& mend = {})
    {
        press();
        if (trouble)
            trouble();
        m_journey->hand.release();
        m_journey->hand.waitFor("the stop", [&] { return stops() == 1; });
        if (mend)
            mend();
        Hand::expect(CommandLog::count("MOVE(") == 2 && stops() == 1, "one move and one stop");
    }

    int stops() const { return CommandLog::count("MOVE(" + m_axis + ",0)"); }
    void onScreen(const Step& step) { m_journey->hand.onScreen(step); }
    void instruct(const char* line) { m_journey->plant().instruct(line); }
    void tell(const char* slot, bool value) // as when the controller reports it
    {
        onScreen([&] { QMetaObject::invokeMethod(Operator::console(), slot, Q_ARG(bool, value)); });
    }

    Journey* m_journey = nullptr;
    QString m_axis, m_button;
};

QTEST_MAIN(TestJourneyJog)
#include "test_journey_jog.moc"
