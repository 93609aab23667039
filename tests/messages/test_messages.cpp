#include "alarmdialog.h"
#include "cmessageserver.h"
#include "cmessagestack.h"
#include "comparetext.h"
#include "deathtest.h"
#include "nextdialog.h"
#include "unibutton.h"
#include "widgets.h"

#include <QLabel>
#include <QRandomGenerator>

namespace {

const QColor fills[] = {{125, 188, 134}, {221, 167, 90}, {229, 102, 102}, {189, 255, 180}};
enum Shown { Info, Warning, Alarm, Nothing };

// The stack and its server joined as the window joins them.
struct Messages : QObject
{
    Messages()
    {
        connect(&server, &CMessageServer::sigAddMessage, &stack, &CMessageStack::slotAddMessage);
        connect(&server, &CMessageServer::sigUpdateMessage, &stack, &CMessageStack::slotUpdateMessage);
        connect(&server, &CMessageServer::sigDeleteMessage, &stack, &CMessageStack::slotDeleteMessage);
        connect(&stack, &CMessageStack::sigConfirmMessage, &server, &CMessageServer::slotConfirmMessage);
        stack.installEventFilter(this);
        stack.show();
    }
    bool eventFilter(QObject*, QEvent* event) override
    {
        paints += event->type() == QEvent::Paint;
        return false;
    }
    void raise(int type, int numId) { server.slotAddMessage(type, numId, 0); }
    bool shows(Shown shown)
    {
        return stack.grab().toImage().pixelColor(3, stack.height() / 2) == fills[shown] &&
               button()->isVisible() == (shown < Alarm);
    }
    CUniButton* button() const { return stack.findChild<CUniButton*>(); }
    void press() { QTest::mouseClick(button(), Qt::LeftButton); }

    CMessageServer server;
    CMessageStack stack;
    int paints = 0;
};

} // namespace

class TestMessages : public QObject
{
    Q_OBJECT

private slots:
    void texts()
    {
        const QString alarms = "Выключен автомат QF18 в ШУК|Выключен автомат QF19 в ШУК|"
                               "Выключен автомат QF40 в ШУК|Нажата аварийная кнопка на пульте оператора|"
                               "Нажата аварийная кнопка на пульте переносном|"
                               "Сработан тросовый выключатель (левый)|Сработан тросовый выключатель (правый)|"
                               "Авария фаз 380 Вольт в ШУК|Выключен автомат QF28 в ШУК";
        const CMessageCreator creator;
        for (int type : {0, 1, 2}) {
            QMap<int, QString> texts; // by number
            for (int number = 0; type == 2 && number < 9; ++number)
                texts[number] = alarms.section('|', number, number);
            if (type == 1)
                texts[20] = "Выключен автомат питания спиралей (QF23 или QF24)";
            for (int number = -1; number <= 21; ++number) {
                for (int device : {0, 1}) {
                    CMessage* message = creator.create(type, number, device);
                    QVERIFY(message->getMessageType() == type && message->numId() == number);
                    QCOMPARE(message->devId(), device);
                    QCOMPARE(message->text(), device ? QString() : texts.value(number));
                    QVERIFY(qAbs(message->time().msecsTo(QDateTime::currentDateTime())) < 10'000);
                    QVERIFY(!message->confirmTime().isValid());
                    destroyMessage(message);
                }
            }
        }
        for (int unknown : {-1, 3})
            QVERIFY(!creator.create(unknown, 0, 0));

        // An assignment keeps the text.
        CAlarmMessage rope(0, 5);
        CAlarmMessage other(3, 77);
        const QDateTime raised(QDate(2024, 2, 29), QTime(23, 59, 58));
        other.loadTime(raised, raised.addSecs(7));
        static_cast<CMessage&>(rope) = other;
        QVERIFY(rope.devId() == 3 && rope.numId() == 77);
        QVERIFY(rope.time() == raised && rope.confirmTime() == raised.addSecs(7));
        QCOMPARE(rope.text(), "Сработан тросовый выключатель (левый)");
    }

    // Every set of up to six numbers, raised in a shuffled order: each is found where it stands, and a new
    // one gets the lowest that is free.
    void searchByNumber()
    {
        QRandomGenerator chance(7);
        for (uint set = 0; set < 64; ++set) {
            QVector<int> numbers;
            for (int number = 0; number < 6; ++number) {
                if (set >> number & 1U)
                    numbers << number;
            }
            CMessageServer server;
            QVector<int> shuffled = numbers;
            std::shuffle(shuffled.begin(), shuffled.end(), chance);
            for (int number : shuffled)
                server.slotAddMessage(2, number, 0);
            int lowest = 0;
            while (numbers.contains(lowest))
                ++lowest;
            QCOMPARE(server.getNumberId(), lowest);
            for (int number = -1; number <= 6; ++number)
                QCOMPARE(server.getMessageIndex(number), numbers.indexOf(number));
        }
    }

    void nothingToTell()
    {
        Messages m;
        QCOMPARE(m.stack.size(), QSize(290, 57));
        QCOMPARE(m.button()->geometry(), QRect(250, 13, 30, 30));
        QVERIFY(m.shows(Nothing));
        const QSignalSpy deleted(&m.server, &CMessageServer::sigDeleteMessage);
        m.server.slotDeleteMessage(3);
        m.stack.slotDeleteMessage(3);
        m.stack.slotCloseButton();
        m.stack.slotTimer();
        QVERIFY(deleted.isEmpty());
        QVERIFY(m.shows(Nothing));
        QVERIFY(!deathOf([&] { m.server.slotConfirmMessage(3); }).isEmpty());

        m.raise(1, 99); // has no text
        const QImage image = m.stack.grab().toImage();
        int inked = 0;
        for (int at = 0; at < 210 * 50; ++at)
            inked += image.pixelColor(20 + at % 210, 4 + at / 210) != fills[Warning];
        QVERIFY2(inked > 100, "its time is told");
    }

    // Words that happen one after the other, and "-alarm", "-warning", "-info" or "-nothing" for what is on
    // view; painted each time at once, before the window's thread goes on.
    void whatIsShown()
    {
        const std::pair<const char*, const char*> rows[] = {
            {"a lone message stays", "alarm3 -alarm turn -alarm info1 -info"},
            {"the latest first", "alarm8 info3 warning5 -warning turn -info turn -alarm turn -warning"},
            {"confirmed", "warning20 confirm20 -nothing"},
            {"one of two confirmed", "alarm3 warning20 confirm20 -alarm turn -alarm"},
            {"confirmed, then ended", "warning20 confirm20 alarm3 end20 -alarm warning20 -warning"},
            {"ended out of order",
             "alarm7 alarm8 alarm3 alarm5 warning20 end3 end7 end20 -alarm end5 -alarm end8 "
             "-nothing"},
            {"ended while shown", "warning20 alarm3 end3 -warning end20 -nothing"},
            {"a miss", "warning20 end3 -warning end20 end20 -nothing"},
            {"raised twice, each end takes one", "alarm3 alarm3 end3 -alarm end3 -nothing"},
            {"each confirmation too",
             "warning20 warning20 confirm20 -warning confirm20 -nothing end20 end20"},
            {"confirmed once, ended twice",
             "warning20 warning20 confirm20 end20 -nothing end20 warning20 -warning"},
        };
        for (const auto& [name, words] : rows) {
            Messages m;
            QVERIFY(QTest::qWaitForWindowExposed(&m.stack));
            for (const QString& each : QString(words).split(' ')) {
                const QString word = QString(each).remove(QRegularExpression("\\d"));
                const int number = QString(each).remove(QRegularExpression("\\D")).toInt();
                const int type = QStringList({"info", "warning", "alarm"}).indexOf(word);
                const int shown = QStringList({"-info", "-warning", "-alarm", "-nothing"}).indexOf(word);
                m.paints = 0;
                if (type >= 0) {
                    m.raise(type, number);
                    QCOMPARE(m.paints, 1);
                } else if (word == "turn") {
                    m.stack.slotTimer();
                } else if (word == "confirm") {
                    m.server.slotConfirmMessage(number);
                    QCOMPARE(m.paints, 1);
                    QVERIFY(m.server.getMessageIndex(number) >= 0); // the condition lasts
                } else if (word == "end") {
                    const int paints = m.stack.getMessageIndex(number) >= 0;
                    m.server.slotDeleteMessage(number);
                    QCOMPARE(m.paints, paints);
                } else {
                    QVERIFY2(m.shows(Shown(shown)), name);
                }
            }
        }
    }

    // How long each is shown: two stacks at once, one that shows its warning at first and one its alarm.
    void rotation()
    {
        Messages first, second;
        first.raise(2, 7);
        first.raise(1, 20);
        second.raise(1, 20);
        second.raise(2, 7);
        QElapsedTimer time;
        time.start();
        const auto ends = [&](Messages& m, Shown shown) {
            while (m.shows(shown) && time.elapsed() < 10'000)
                QTest::qWait(10);
            return int(time.elapsed());
        };
        const int warning = ends(first, Warning);
        QVERIFY2(warning > 1900 && warning < 2800, qPrintable(QString::number(warning)));
        QVERIFY(first.shows(Alarm));
        const int alarm = ends(second, Alarm);
        QVERIFY2(alarm > 2850 && alarm < 3800, qPrintable(QString::number(alarm)));
        QVERIFY(second.shows(Warning));
    }

    // A press in the first second of a message may be meant for another: it confirms nothing. A message comes
    // on view new, with its turn, or in the place of one that was confirmed or has ended.
    void closeButtonIsGuarded()
    {
        Messages fresh, turned, confirmed, ended;
        for (Messages* m : {&turned, &confirmed, &ended}) {
            m->raise(1, 21);
            m->raise(1, 22);
        }
        fresh.raise(1, 20);
        QElapsedTimer time;
        time.start();
        fresh.press();
        QVERIFY(fresh.shows(Warning));
        QTest::qWait(1010);
        turned.stack.slotTimer();
        confirmed.press();
        ended.server.slotDeleteMessage(22);
        QVERIFY(confirmed.stack.getMessageIndex(22) < 0 && ended.stack.getMessageIndex(22) < 0);
        for (Messages* m : {&turned, &confirmed, &ended}) {
            m->press();
            QVERIFY(m->stack.getMessageIndex(21) >= 0);
        }
        fresh.press();
        QVERIFY(fresh.shows(Nothing));
    }

    void alarmDialog()
    {
        QImage picture;
        QPoint centre;
        whenOpen<AlarmDialog>([&](AlarmDialog* dialog) {
            picture = dialog->window()->grab().toImage();
            centre = dialog->window()->geometry().center();
            QVERIFY(QApplication::activeModalWidget());
            QTest::mouseClick(dialog->window()->findChild<QPushButton*>(), Qt::LeftButton);
        });
        QWidget window;
        window.show();
        const std::unique_ptr<QDialog> dialog = std::make_unique<AlarmDialog>("Пожар", &window);
        QVERIFY((centre - QPoint(panelWidth / 2, panelHeight / 2)).manhattanLength() <= 2);
        QCOMPARE(dialog->size(), QSize(300, 300));
        QCOMPARE(picture.pixelColor(picture.width() / 2, picture.height() - 20), QColor(Qt::red));
        QCOMPARE(dialog->findChild<QLabel*>()->text(), "Пожар");
    }
};

QTEST_MAIN(TestMessages)
#include "test_messages.moc"
