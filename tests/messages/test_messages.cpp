#include "alarmdialog.h"
#include "cmessageserver.h"
#include "cmessagestack.h"
#include "deathtest.h"
#include "unibutton.h"
#include "widgets.h"

#include <QLabel>
#include <QPushButton>
#include <QRandomGenerator>
#include <QtTest>

namespace {

const QColor alarmFill(229, 102, 102);
const QColor warningFill(221, 167, 90);
const QColor infoFill(125, 188, 134);
const QColor emptyFill(189, 255, 180);

// The stack and its server joined as the window joins them.
struct Messages
{
    Messages()
    {
        QObject::connect(&server, &CMessageServer::sigAddMessage, &stack, &CMessageStack::slotAddMessage);
        QObject::connect(&server, &CMessageServer::sigUpdateMessage, &stack,
                         &CMessageStack::slotUpdateMessage);
        QObject::connect(&server, &CMessageServer::sigDeleteMessage, &stack,
                         &CMessageStack::slotDeleteMessage);
        QObject::connect(&stack, &CMessageStack::sigConfirmMessage, &server,
                         &CMessageServer::slotConfirmMessage);
        stack.show();
    }
    void raise(int type, int numId) { server.slotAddMessage(type, numId, 0); }
    QColor fill() { return stack.grab().toImage().pixelColor(3, stack.height() / 2); }
    CUniButton* button() const { return stack.findChild<CUniButton*>(); }
    // Presses until the first second of the message is over.
    void close()
    {
        const QSignalSpy confirmed(&stack, &CMessageStack::sigConfirmMessage);
        const auto press = [&] {
            if (confirmed.isEmpty())
                QTest::mouseClick(button(), Qt::LeftButton);
            return !confirmed.isEmpty();
        };
        QTRY_VERIFY(press());
    }

    CMessageServer server;
    CMessageStack stack;
};

struct PaintCounter : QObject
{
    bool eventFilter(QObject*, QEvent* event) override
    {
        paints += event->type() == QEvent::Paint;
        return false;
    }
    int paints = 0;
};

} // namespace

class TestMessages : public QObject
{
    Q_OBJECT

private slots:
    void texts_data();
    void texts();
    void assignmentKeepsTheText();
    void searchByNumber();
    void lowestFreeNumber();

    void nothingToTell();
    void whatIsShown_data();
    void whatIsShown();
    void paintedAtOnce();
    void rotation();
    void closeButtonIsGuarded();
    void confirmingWhatIsNotThere();
    void anyOrderOfEvents();
    void aMessageWithoutText();

    void alarmDialog();
};

void TestMessages::texts_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("numId");
    QTest::addColumn<QString>("text");
    const char* alarms[] = {"Выключен автомат QF18 в ШУК",
                            "Выключен автомат QF19 в ШУК",
                            "Выключен автомат QF40 в ШУК",
                            "Нажата аварийная кнопка на пульте оператора",
                            "Нажата аварийная кнопка на пульте переносном",
                            "Сработан тросовый выключатель (левый)",
                            "Сработан тросовый выключатель (правый)",
                            "Авария фаз 380 Вольт в ШУК",
                            "Выключен автомат QF28 в ШУК",
                            ""};
    for (int i = 0; i < 10; ++i)
        QTest::addRow("alarm %d", i) << 2 << i << QString::fromUtf8(alarms[i]);
    QTest::newRow("warning 20") << 1 << 20 << "Выключен автомат питания спиралей (QF23 или QF24)";
    QTest::newRow("warning 0") << 1 << 0 << "";
    QTest::newRow("alarm 20") << 2 << 20 << "";
    QTest::newRow("info 0") << 0 << 0 << "";
    QTest::newRow("alarm -1") << 2 << -1 << "";
}

void TestMessages::texts()
{
    QFETCH(int, type);
    QFETCH(int, numId);
    const CMessageCreator creator;
    for (int device : {0, 1}) {
        CMessage* message = creator.create(type, numId, device);
        QCOMPARE(message->getMessageType(), type);
        QCOMPARE(message->numId(), numId);
        QCOMPARE(message->devId(), device);
        QFETCH(QString, text);
        QCOMPARE(message->text(), device ? QString() : text);
        QVERIFY(qAbs(message->time().msecsTo(QDateTime::currentDateTime())) < 10'000);
        QVERIFY(!message->confirmTime().isValid());
        destroyMessage(message);
    }
    for (int unknown : {-1, 3})
        QVERIFY(!creator.create(unknown, 0, 0));
}

void TestMessages::assignmentKeepsTheText()
{
    CAlarmMessage rope(0, 5);
    CAlarmMessage other(3, 77);
    const QDateTime raised(QDate(2024, 2, 29), QTime(23, 59, 58));
    other.loadTime(raised, raised.addSecs(7));
    static_cast<CMessage&>(rope) = other;
    QCOMPARE(rope.devId(), 3);
    QCOMPARE(rope.numId(), 77);
    QCOMPARE(rope.time(), raised);
    QCOMPARE(rope.confirmTime(), raised.addSecs(7));
    QCOMPARE(rope.text(), QStringLiteral("Сработан тросовый выключатель (левый)"));
}

// Every set of up to six numbers, raised in a shuffled order: each is found where it stands.
void TestMessages::searchByNumber()
{
    QRandomGenerator chance(7);
    for (uint set = 0; set < 64; ++set) {
        QVector<int> numbers;
        for (int number = 0; number < 6; ++number) {
            if (set >> number & 1U)
                numbers << number * 2;
        }
        CMessageServer server;
        QVector<int> shuffled = numbers;
        std::shuffle(shuffled.begin(), shuffled.end(), chance);
        for (int number : shuffled)
            server.slotAddMessage(2, number, 0);
        for (int number = -1; number <= 12; ++number)
            QCOMPARE(server.getMessageIndex(number), numbers.indexOf(number));
    }
}

void TestMessages::lowestFreeNumber()
{
    CMessageServer server;
    QCOMPARE(server.getNumberId(), 0);
    for (int number : {2, 0, 1, 5})
        server.slotAddMessage(2, number, 0);
    QCOMPARE(server.getNumberId(), 3);
    server.slotDeleteMessage(5);
    QCOMPARE(server.getNumberId(), 3);
    server.slotDeleteMessage(0);
    QCOMPARE(server.getNumberId(), 0);
}

void TestMessages::nothingToTell()
{
    Messages m;
    QCOMPARE(m.stack.size(), QSize(290, 57));
    QCOMPARE(m.button()->geometry(), QRect(250, 13, 30, 30));
    QVERIFY(!m.button()->isVisible());
    QCOMPARE(m.fill(), emptyFill);
    const QSignalSpy deleted(&m.server, &CMessageServer::sigDeleteMessage);
    m.server.slotDeleteMessage(3);
    m.stack.slotDeleteMessage(3);
    m.stack.slotCloseButton();
    m.stack.slotTimer();
    QVERIFY(deleted.isEmpty());
    QCOMPARE(m.fill(), emptyFill);
}

// Words that happen one after the other, and "-alarm", "-warning", "-info" or "-nothing" for what is on view.
void TestMessages::whatIsShown_data()
{
    QTest::addColumn<QString>("words");
    const auto row = [](const char* name, const char* words) { QTest::newRow(name) << QString(words); };
    row("a lone message stays", "alarm3 -alarm turn -alarm info1 -info");
    row("the latest first", "alarm8 info3 warning5 -warning turn -info turn -alarm turn -warning");
    row("confirmed", "warning20 confirm20 -nothing");
    row("one of two confirmed", "alarm3 warning20 confirm20 -alarm turn -alarm");
    row("confirmed, then ended", "warning20 confirm20 alarm3 end20 -alarm warning20 -warning");
    row("ended out of order", "alarm7 alarm8 alarm3 alarm5 warning20 end3 end7 end20 -alarm end5 -alarm end8 "
                              "-nothing");
    row("ended while shown", "warning20 alarm3 end3 -warning end20 -nothing");
    row("a miss", "warning20 end3 -warning end20 end20 -nothing");
    row("raised twice, each end takes one", "alarm3 alarm3 end3 -alarm end3 -nothing");
    row("each confirmation too", "warning20 warning20 confirm20 -warning confirm20 -nothing end20 end20");
    row("confirmed once, ended twice",
        "warning20 warning20 confirm20 end20 -nothing end20 warning20 -warning");
}

void TestMessages::whatIsShown()
{
    QFETCH(QString, words);
    Messages m;
    for (const QString& each : words.split(' ')) {
        const QString word = QString(each).remove(QRegularExpression("\\d"));
        const int number = QString(each).remove(QRegularExpression("\\D")).toInt();
        const int type = QStringList({"info", "warning", "alarm"}).indexOf(word);
        const int shown = QStringList({"-info", "-warning", "-alarm", "-nothing"}).indexOf(word);
        if (type >= 0) {
            m.raise(type, number);
        } else if (word == "turn") {
            m.stack.slotTimer();
        } else if (word == "confirm") {
            m.server.slotConfirmMessage(number);
            QVERIFY(m.server.getMessageIndex(number) >= 0); // the condition lasts
        } else if (word == "end") {
            m.server.slotDeleteMessage(number);
        } else {
            const QColor fills[] = {infoFill, warningFill, alarmFill, emptyFill};
            QCOMPARE(m.fill(), fills[shown]);
            QCOMPARE(m.button()->isVisible(), shown < 2);
        }
    }
}

// Whatever the window's thread does next, the operator already sees it.
void TestMessages::paintedAtOnce()
{
    Messages m;
    QVERIFY(QTest::qWaitForWindowExposed(&m.stack));
    PaintCounter counter;
    m.stack.installEventFilter(&counter);
    m.raise(2, 3);
    QCOMPARE(counter.paints, 1);
    m.raise(1, 20);
    QCOMPARE(counter.paints, 2);
    m.stack.slotTimer();
    QCOMPARE(counter.paints, 3);
    m.server.slotConfirmMessage(20);
    QCOMPARE(counter.paints, 4);
    m.server.slotDeleteMessage(3);
    QCOMPARE(counter.paints, 5);
}

void TestMessages::rotation()
{
    Messages m;
    m.raise(2, 7);
    m.raise(1, 20);
    const auto lasts = [&](const QColor& colour) {
        QElapsedTimer time;
        time.start();
        while (m.fill() == colour && time.elapsed() < 10'000)
            QTest::qWait(10);
        return time.elapsed();
    };
    QCOMPARE(m.fill(), warningFill);
    QVERIFY(m.button()->isVisible());
    const qint64 warning = lasts(warningFill);
    QVERIFY2(warning > 1900 && warning < 2800, qPrintable(QString::number(warning)));
    QCOMPARE(m.fill(), alarmFill);
    QVERIFY(!m.button()->isVisible());
    const qint64 alarm = lasts(alarmFill);
    QVERIFY2(alarm > 2850 && alarm < 3900, qPrintable(QString::number(alarm)));
    QCOMPARE(m.fill(), warningFill);
    QVERIFY(m.button()->isVisible());
}

void TestMessages::closeButtonIsGuarded()
{
    Messages m;
    QElapsedTimer time;
    m.raise(1, 20);
    time.start();
    QTest::mouseClick(m.button(), Qt::LeftButton);
    QCOMPARE(m.fill(), warningFill);
    m.close();
    QVERIFY2(time.elapsed() >= 1000, qPrintable(QString::number(time.elapsed())));
    QCOMPARE(m.fill(), emptyFill);

    // A message that comes into the place of another is guarded anew.
    m.raise(1, 21);
    m.raise(1, 22);
    m.close();
    QCOMPARE(m.stack.getMessageIndex(22), -1);
    m.raise(1, 23);
    m.stack.slotTimer();
    m.stack.slotCloseButton();
    QVERIFY(m.stack.getMessageIndex(21) >= 0);
    // So is one that comes on view because another was confirmed, or ended.
    for (const bool confirmed : {true, false}) {
        m.raise(1, 24);
        QTest::qWait(1100);
        if (confirmed)
            m.stack.slotCloseButton();
        else
            m.server.slotDeleteMessage(24);
        QCOMPARE(m.stack.getMessageIndex(24), -1);
        m.stack.slotCloseButton();
        QVERIFY(m.stack.getMessageIndex(21) >= 0 && m.stack.getMessageIndex(23) >= 0);
        m.server.slotDeleteMessage(24);
    }
}

void TestMessages::confirmingWhatIsNotThere()
{
    QVERIFY(!deathOf([] {
                 CMessageServer server;
                 server.slotConfirmMessage(3);
             }).isEmpty());
}

// A few thousand random events: what is shown is always one that the server still has.
void TestMessages::anyOrderOfEvents()
{
    QRandomGenerator chance(11);
    Messages m;
    for (int i = 0; i < 3000; ++i) {
        const int number = chance.bounded(6);
        switch (chance.bounded(5)) {
        case 0:
        case 1:
            m.raise(number < 4 ? 2 : 1, number);
            break;
        case 2:
            m.server.slotDeleteMessage(number);
            break;
        case 3:
            if (m.server.getMessageIndex(number) >= 0)
                m.server.slotConfirmMessage(number);
            break;
        default:
            m.stack.slotTimer();
        }
        for (int each = 0; each < 6; ++each)
            QVERIFY(m.stack.getMessageIndex(each) < 0 || m.server.getMessageIndex(each) >= 0);
        if (i % 50 == 0)
            m.stack.grab();
    }
    for (int number = 0; number < 6; ++number) {
        while (m.server.getMessageIndex(number) >= 0)
            m.server.slotDeleteMessage(number);
        QCOMPARE(m.stack.getMessageIndex(number), -1);
    }
    QCOMPARE(m.fill(), emptyFill);
}

void TestMessages::aMessageWithoutText()
{
    Messages m;
    m.raise(1, 99);
    const QImage image = m.stack.grab().toImage();
    int inked = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 20; x < 230; ++x)
            inked += y > 3 && y < 54 && image.pixelColor(x, y) != warningFill;
    }
    QVERIFY2(inked > 100, "its time is told");
}

void TestMessages::alarmDialog()
{
    QImage picture;
    QPoint centre;
    bool modal = false;
    QTimer::singleShot(0, this, [&] {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (!qobject_cast<MyFrame*>(window) || !window->isVisible())
                continue;
            picture = window->grab().toImage();
            centre = window->geometry().center();
            modal = QApplication::activeModalWidget() != nullptr;
            QTest::mouseClick(window->findChild<QPushButton*>(), Qt::LeftButton);
        }
    });
    QWidget window;
    window.show();
    auto* dialog = new AlarmDialog(QStringLiteral("Пожар"), &window);
    QVERIFY(modal);
    QVERIFY((centre - QPoint(panelWidth / 2, panelHeight / 2)).manhattanLength() <= 2);
    QCOMPARE(dialog->size(), QSize(300, 300));
    QCOMPARE(picture.pixelColor(picture.width() / 2, picture.height() - 20), QColor(Qt::red));
    QCOMPARE(dialog->findChild<QLabel*>()->text(), QStringLiteral("Пожар"));
    delete dialog;
}

QTEST_MAIN(TestMessages)
#include "test_messages.moc"
