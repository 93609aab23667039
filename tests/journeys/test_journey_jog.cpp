#include "commandlog.h"
#include "journey.h"

#include <QtWidgets>

// A jog under trouble: a press that sent a move is followed by exactly one stop, at the latest when the
// finger lifts, whatever came between.
class TestJourneyJog : public QObject
{
    Q_OBJECT

private slots:
    void oneStopForEachMove_data();
    void oneStopForEachMove();
};

void TestJourneyJog::oneStopForEachMove_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("axis");
    QTest::addColumn<QString>("trouble");
    const char* troubles[] = {"none",       "lifted outside",   "a dialog",   "a menu",
                              "focus lost", "transformed mode", "key switch", "limit switch",
                              "link falls", "console ends"};
    for (const char* trouble : troubles) {
        QTest::addRow("real axis, %s", trouble) << "pbPlusLX"
                                                << "LX" << trouble;
        QTest::addRow("virtual axis, %s", trouble) << "pbMinusZ"
                                                   << "Z" << trouble;
    }
}

void TestJourneyJog::oneStopForEachMove()
{
    QFETCH(QString, button);
    QFETCH(QString, axis);
    QFETCH(QString, trouble);
    if (trouble == "transformed mode") {
        // The rows that the mode hides: A on the one side, the virtual axes on the other.
        if (axis == "LX") {
            button = "pbPlusA";
            axis = "A";
        }
    }
    const bool startVirtual = axis == "Z";
    const QString move = "MOVE(" + axis + ",";
    const QString stop = move + "0)";

    Journey journey(5);
    Operator& hand = journey.hand;
    const CommandLog log;
    const QString failure = journey.runLoggedIn([&] {
        hand.switchOn(startVirtual);
        hand.setSpeed(axis, "200");
        if (trouble == "limit switch" && !startVirtual) {
            journey.plant().instruct("axis LX 1490");
            hand.waitText("coordLX", "1490.00");
        }
        if (trouble == "lifted outside") {
            hand.tap("NL1");
            hand.waitVisible("pbHide");
        }
        CommandLog::clear();
        hand.press(button);
        hand.waitFor("the move", [&] { return CommandLog::count(move) == 1; });
        Hand::expect(CommandLog::count(stop) == 0, "no stop yet");

        if (trouble == "lifted outside") {
            hand.slide(QPoint(200, 830)); // over the dialog of a device
        } else if (trouble == "a dialog") {
            hand.onScreen(
                [] { QTimer::singleShot(0, qApp, [] { QMessageBox::information(nullptr, "?", "!"); }); });
            hand.waitFor("the box", [] { return QApplication::activeModalWidget() != nullptr; });
        } else if (trouble == "a menu") {
            hand.onScreen([] {
                QTimer::singleShot(0, qApp, [] {
                    QMenu menu;
                    menu.addAction("entry");
                    menu.exec(QPoint(500, 500));
                });
            });
            hand.waitFor("the menu", [] { return QApplication::activePopupWidget() != nullptr; });
        } else if (trouble == "focus lost") {
            hand.onScreen([] {
                auto* other = new QWidget;
                other->setAttribute(Qt::WA_DeleteOnClose);
                other->setObjectName("other");
                other->show();
                other->activateWindow();
            });
            hand.waitVisible("other");
        } else if (trouble == "transformed mode") {
            // As when the controller reports that the mode was changed elsewhere.
            hand.onScreen([&] {
                QMetaObject::invokeMethod(Operator::console(), "onChangedTransOn",
                                          Q_ARG(bool, !startVirtual));
            });
            hand.waitGone(button);
        } else if (trouble == "key switch") {
            journey.plant().instruct("key off");
            hand.waitFor("the console disabled", [] { return !Operator::console()->isEnabled(); });
        } else if (trouble == "limit switch") {
            // The carriage runs into its end. A virtual jog runs away from the end whose switch guards its
            // button, so there the switch is closed by hand.
            if (startVirtual) {
                hand.onScreen([] {
                    QMetaObject::invokeMethod(Operator::console(), "onChangedNpZ", Q_ARG(bool, true));
                });
            }
            hand.waitFor("the button disabled",
                         [&] { return !Operator::console()->findChild<QWidget*>(button)->isEnabled(); });
            Hand::expect(CommandLog::count(stop) == 0,
                         "the switch itself stops nothing from the console's side");
        } else if (trouble == "link falls") {
            journey.plant().instruct("link drop 1");
            hand.waitColour("lblCNC", Qt::red);
            hand.waitColour("lblCNC", Qt::green);
        }
        hand.release();
        if (trouble == "console ends")
            return;
        hand.waitFor("the stop", [&] { return CommandLog::count(stop) == 1; });
        journey.plant().instruct("key on");
    });
    QCOMPARE(failure, QString());
    QCOMPARE(CommandLog::count(move) - CommandLog::count(stop), 1);
    QCOMPARE(CommandLog::count(stop), 1);
}

QTEST_MAIN(TestJourneyJog)
#include "test_journey_jog.moc"
