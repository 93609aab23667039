#include "guifixture.h"
#include "journey.h"
#include "lir940p.h"
#include "pultshare.h"
#include "trainer/wheelcounters.h"

#include <QMenu>
#include <QProcess>
#include <QSettings>
#include <QSharedMemory>
#include <QtTest>

#include <cstdio>

namespace {

const QString kSettings = QStringLiteral("/home/oper/bin/settings.ini");
const QStringList kSteps{QStringLiteral("x0.01"), QStringLiteral("x0.05"), QStringLiteral("x0.1"),
                         QStringLiteral("x1")};

// The segment as the remote panel's own program sees it: this program, started a second time.
int printWords(const QString& key)
{
    QSharedMemory segment(key);
    if (!segment.attach(QSharedMemory::ReadOnly))
        return 1;
    segment.lock();
    quint32 words[4];
    memcpy(words, segment.constData(), sizeof words);
    segment.unlock();
    std::printf("%u %u %u %u", words[0], words[1], words[2], words[3]);
    return 0;
}

QString shareKey()
{
    return QStringLiteral("PULT_SHARE_KEY") + site().shmSuffix;
}

QString wordsElsewhere()
{
    QProcess reader;
    reader.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--words"), shareKey()});
    reader.waitForFinished();
    return reader.exitCode() == 0 ? QString::fromUtf8(reader.readAllStandardOutput())
                                  : QStringLiteral("no segment");
}

} // namespace

// From the counts of a wheel to the command that the controller gets.
class TestHandwheels : public GuiFixture
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        LirDevice::replace(&m_wheels);
        connect(&m_alive, &QTimer::timeout, this, [this] { m_controller->datagram(m_datagram); });
    }
    void cleanupTestCase() { LirDevice::replace(nullptr); }
    void init();
    void cleanup()
    {
        m_alive.stop();
        end();
    }

    void stepsOfTheAxes_data();
    void stepsOfTheAxes();
    void menuOfAFreeWheel();
    void menuOfAnAxis();
    void menuLeftWithoutAChoice();
    void theStepBelongsToTheAxis();
    void aStepThatNoMenuWrote();
    void eachWheelForItself();
    void panelRegimes_data();
    void panelRegimes();
    void panelTakesTheRemoteWheel();
    void panelTakesTheWheelUnderAnOpenMenu();
    void keySwitchStopsAllWheels();
    void shareSeenByAnotherProcess();
    void shareThatStoodBefore();
    void shareThatIsTooSmall();
    void wheelMovesTheMachine();

private:
    using Entries = QStringList; // of a menu; a ticked one with "* " in front, a separator as "-"

    // Turns a wheel and waits until the window has been told.
    void turn(WheelCounters::Wheel wheel, int detents);
    // Touches a label and, in the menu that opens, the entry; returns what the menu shows. Nothing is
    // touched for an empty entry: the menu is left with Escape. `before` runs while it is open.
    Entries choose(const char* label, const QString& entry, const std::function<void()>& before = {});
    QString use(int wheel) const { return w<QLabel>(QStringLiteral("lblLir%1Use").arg(wheel))->text(); }
    QStringList takeLines()
    {
        const QStringList lines = list();
        w<QListWidget>(QStringLiteral("lwLog"))->clear();
        return lines;
    }

    WheelCounters m_wheels{1000}; // any turn is one reading
    QTimer m_alive;               // a controller that says nothing for a second is given up
};

void TestHandwheels::init()
{
    begin();
    m_alive.start(100);
    QTRY_VERIFY(m_wheels.readings() > 9); // the counters have settled
    takeCommands();
    takeLines();
}

void TestHandwheels::turn(WheelCounters::Wheel wheel, int detents)
{
    m_wheels.turn(wheel, detents);
    const int now = m_wheels.readings();
    QTRY_VERIFY(m_wheels.readings() > now + 6); // two rounds
    QCoreApplication::sendPostedEvents(m_gui.get());
}

TestHandwheels::Entries TestHandwheels::choose(const char* label, const QString& entry,
                                               const std::function<void()>& before)
{
    Entries entries;
    QTimer::singleShot(0, this, [&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu)
            return;
        QAction* wanted = nullptr;
        for (QAction* action : menu->actions()) {
            entries << (action->isSeparator()     ? QStringLiteral("-")
                        : action->icon().isNull() ? action->text()
                                                  : QStringLiteral("* ") + action->text());
            if (!entry.isEmpty() && action->text().trimmed() == entry)
                wanted = action;
        }
        if (before)
            before();
        if (wanted && menu->isVisible())
            QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier, menu->actionGeometry(wanted).center());
        if (menu->isVisible())
            menu->close();
    });
    touch(QLatin1String(label));
    return entries;
}

void TestHandwheels::stepsOfTheAxes_data()
{
    QTest::addColumn<QString>("axis");
    QTest::addColumn<int>("speed");
    const std::pair<const char*, int> axes[] = {{"LX", 3000}, {"LY", 3000}, {"A", 360}, {"B", 720},
                                                {"C", 900},   {"D", 900},   {"U", 0},   {"V", 2160}};
    for (const auto& [axis, speed] : axes)
        QTest::newRow(axis) << axis << speed;
}

void TestHandwheels::stepsOfTheAxes()
{
    QFETCH(QString, axis);
    QFETCH(int, speed);
    const int distances[] = {10, 50, 100, 1000};
    choose("lblLir1", QStringLiteral("Ось ") + axis);
    QCOMPARE(use(1), QStringLiteral("Ось %1\nx0.01").arg(axis));
    for (int i = 0; i < kSteps.size(); ++i) {
        choose("lblLir1", kSteps[i]);
        QCOMPARE(use(1), QStringLiteral("Ось %1\n%2").arg(axis, kSteps[i]));
        turn(WheelCounters::Left, 3);
        SENT(QStringLiteral("LIR(%1,%2,%3)").arg(axis).arg(3 * distances[i]).arg(speed));
        turn(WheelCounters::Left, -1);
        SENT(QStringLiteral("LIR(%1,%2,%3)").arg(axis).arg(-distances[i]).arg(speed));
    }
    const QString line = QStringLiteral("На штурвал 'Левый' установлен параметр Ось %1 с шагом %2");
    QCOMPARE(takeLines(),
             (QStringList{line.arg(axis, kSteps[0]), line.arg(axis, kSteps[0]), line.arg(axis, kSteps[1]),
                          line.arg(axis, kSteps[2]), line.arg(axis, kSteps[3])}));
    m_gui.reset();
    QCOMPARE(QSettings(site().path(kSettings), QSettings::IniFormat).value("LIR/" + axis).toInt(), 3);
}

void TestHandwheels::menuOfAFreeWheel()
{
    Entries expected{"Ось LX     ",
                     "Ось LY     ",
                     "Ось A     ",
                     "Ось B     ",
                     "Ось C     ",
                     "Ось D     ",
                     "Ось U     ",
                     "Ось V     ",
                     "ЭЛА     ",
                     "-",
                     "* Не использовать     ",
                     "-"};
    QCOMPARE(choose("lblLir1", QStringLiteral("ЭЛА")), expected);
    QCOMPARE(use(1), QStringLiteral("ЭЛА"));
    expected[8] = "* ЭЛА     ";
    expected[10] = "Не использовать     ";
    QCOMPARE(choose("lblLir1", QStringLiteral("Не использовать")), expected);
    QCOMPARE(use(1), QStringLiteral("Отключен"));

    QCOMPARE(choose("lblLir3", QStringLiteral("ЭЛА")), (Entries{"ЭЛА     ", "* Не использовать     ", "-"}));
    QCOMPARE(use(3), QStringLiteral("ЭЛА"));
    QCOMPARE(choose("lblLir3", QStringLiteral("Не использовать")),
             (Entries{"* ЭЛА     ", "Не использовать     ", "-"}));
    QCOMPARE(use(3), QStringLiteral("Отключен"));
    QCOMPARE(takeLines(), (QStringList{"Штурвал 'Левый' передан в ЭЛА", "Штурвал 'Левый' отключен",
                                       "Штурвал 'Выносной' передан в ЭЛА", "Штурвал 'Выносной' отключен"}));
}

void TestHandwheels::menuOfAnAxis()
{
    choose("lblLir2", QStringLiteral("Ось C"));
    choose("lblLir2", QStringLiteral("x0.1"));
    const Entries entries = choose("lblLir2", QStringLiteral("Ось D"));
    QCOMPARE(entries.filter("* "), (QStringList{"* Ось C     ", "* x0.1"}));
    QCOMPARE(entries.mid(11), (Entries{"-", "x0.01", "x0.05", "* x0.1", "x1"}));
    QCOMPARE(use(2), QStringLiteral("Ось D\nx0.01")); // each axis with the step that it had
    choose("lblLir2", QStringLiteral("Ось C"));
    QCOMPARE(use(2), QStringLiteral("Ось C\nx0.1"));
    QCOMPARE(takeLines().last(),
             QStringLiteral("На штурвал 'Правый' установлен параметр Ось C с шагом x0.1"));
}

void TestHandwheels::menuLeftWithoutAChoice()
{
    choose("lblLir1", QStringLiteral("Ось B"));
    takeLines();
    QCOMPARE(choose("lblLir1", QString()).size(), 16);
    QCOMPARE(choose("lblLir3", QString()).size(), 3);
    QCOMPARE(use(1), QStringLiteral("Ось B\nx0.01"));
    QCOMPARE(takeLines(), QStringList());
}

void TestHandwheels::theStepBelongsToTheAxis()
{
    choose("lblLir1", QStringLiteral("Ось A"));
    choose("lblLir2", QStringLiteral("Ось A"));
    choose("lblLir1", QStringLiteral("x1"));
    QCOMPARE(use(1), QStringLiteral("Ось A\nx1"));
    QCOMPARE(use(2), QStringLiteral("Ось A\nx1")); // the screen tells the step that the wheel has
    turn(WheelCounters::Right, 1);
    SENT("LIR(A,1000,360)");
}

void TestHandwheels::aStepThatNoMenuWrote()
{
    m_gui.reset();
    {
        QSettings settings(site().path(kSettings), QSettings::IniFormat);
        settings.setValue("LIR/A", 4);
        settings.setValue("LIR/B", -1);
        settings.setValue("LIR/C", 3);
    }
    start();
    QTRY_VERIFY(m_wheels.readings() > 9);
    takeCommands();
    for (const QString& axis : {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}) {
        choose("lblLir1", QStringLiteral("Ось ") + axis);
        turn(WheelCounters::Left, 1);
    }
    SENT("LIR(A,10,360)", "LIR(B,10,720)", "LIR(C,1000,900)"); // the finest instead
}

void TestHandwheels::eachWheelForItself()
{
    for (const auto wheel : {WheelCounters::Left, WheelCounters::Right, WheelCounters::Remote})
        turn(wheel, 2);
    QCOMPARE(takeCommands(), QStringList()); // all are free at the start
    choose("lblLir1", QStringLiteral("Ось LX"));
    choose("lblLir2", QStringLiteral("Ось LY"));
    choose("lblLir3", QStringLiteral("ЭЛА"));
    turn(WheelCounters::Left, 2);
    turn(WheelCounters::Right, -2);
    turn(WheelCounters::Remote, 2);
    SENT("LIR(LX,20,3000)", "LIR(LY,-20,3000)");
    choose("lblLir1", QStringLiteral("ЭЛА"));
    choose("lblLir2", QStringLiteral("Не использовать"));
    turn(WheelCounters::Left, 2);
    turn(WheelCounters::Right, 2);
    QCOMPARE(takeCommands(), QStringList());
}

void TestHandwheels::panelRegimes_data()
{
    QTest::addColumn<int>("regime");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("takesTheDrives");
    const QString f1 = QStringLiteral("Режим пульта F1:\n\n"
                                      "Положение X - ось LX    Положение 4 - ось B\n"
                                      "Положение Y - ось LY    Положение 5 - ось C\n"
                                      "Положение Z - ось A");
    QTest::newRow("none") << 0 << f1 << false;
    QTest::newRow("F1") << 1 << f1 << false;
    QTest::newRow("F2") << 2
                        << QStringLiteral("Режим пульта F2:\n\n"
                                          "Положение X - ось LX    Положение 4 - ось PHI\n"
                                          "Положение Y - ось LY    Положение 5 - ось D\n"
                                          "Положение Z - ось Z")
                        << true;
    QTest::newRow("F3") << 3
                        << QStringLiteral("Режим пульта F3:\n\n"
                                          "Положение X - ось LX    Положение 4 - ось U\n"
                                          "Положение Y - ось LY    Положение 5 - ось V\n"
                                          "Положение Z - резерв")
                        << true;
    QTest::newRow("unknown") << 4 << f1 << false;
}

void TestHandwheels::panelRegimes()
{
    QFETCH(int, regime);
    QFETCH(QString, text);
    QFETCH(bool, takesTheDrives);
    tell({{"PortPultRegime", regime}});
    QVERIFY(!w("pultRegime")->isVisible());
    QVERIFY(w("frmDrives")->isEnabled());
    tell({{"PultOn", 1}});
    QVERIFY(w("pultRegime")->isVisible());
    QCOMPARE(w<QLabel>("pultRegime")->text(), text);
    QCOMPARE(w<StateButton>("sbDistPult")->state(), int(StateButton::On));
    QCOMPARE(!w("frmDrives")->isEnabled(), takesTheDrives);
    QVERIFY(!w("frmLir3")->isEnabled());

    // Back to F1 with the panel on the frame stays as it was, and so when the panel goes off there.
    tell({{"PortPultRegime", 1}});
    QVERIFY(w<QLabel>("pultRegime")->text().startsWith(QStringLiteral("Режим пульта F1:")));
    QCOMPARE(!w("frmDrives")->isEnabled(), takesTheDrives);
    tell({{"PultOn", 0}});
    QVERIFY(!w("pultRegime")->isVisible());
    QVERIFY(w("frmLir3")->isEnabled());
    QCOMPARE(!w("frmDrives")->isEnabled(), takesTheDrives);
    tell({{"PortPultRegime", 2}});
    QVERIFY(w("frmDrives")->isEnabled());
}

void TestHandwheels::panelTakesTheRemoteWheel()
{
    choose("lblLir3", QStringLiteral("ЭЛА"));
    takeLines();
    tell({{"PultOn", 1}});
    QCOMPARE(use(3), QStringLiteral("Отключен"));
    const QString freed = QStringLiteral("Штурвал 'Выносной' отключен");
    QCOMPARE(takeLines(), QStringList{freed});
    turn(WheelCounters::Remote, 4);
    turn(WheelCounters::Remote, -1);
    SENT("HANDWHEEL(400)", "HANDWHEEL(-100)");
    tell({{"PortPultRegime", 3}});
    QCOMPARE(takeLines(), QStringList{freed}); // again at each change of the regime
    tell({{"PultOn", 0}});
    QCOMPARE(takeLines(), QStringList());
    turn(WheelCounters::Remote, 4);
    QCOMPARE(takeCommands(), QStringList());
}

void TestHandwheels::panelTakesTheWheelUnderAnOpenMenu()
{
    bool open = true;
    choose("lblLir3", QStringLiteral("ЭЛА"), [&] {
        tell({{"PultOn", 1}});
        open = QApplication::activePopupWidget() != nullptr; // it would hold every touch
    });
    QVERIFY(!open);
    QCOMPARE(use(3), QStringLiteral("Отключен"));
    m_gui->onTimeChanged();
    QTRY_COMPARE(wordsElsewhere(), QStringLiteral("0 0 0 0"));
}

void TestHandwheels::keySwitchStopsAllWheels()
{
    choose("lblLir1", QStringLiteral("Ось V"));
    tell({{"PultOn", 1}, {"KeyAccess", 0}});
    turn(WheelCounters::Left, 1);
    turn(WheelCounters::Remote, 1);
    QCOMPARE(takeCommands(), QStringList());
    tell({{"KeyAccess", 1}});
    turn(WheelCounters::Left, 1);
    turn(WheelCounters::Remote, 1);
    SENT("LIR(V,10,2160)", "HANDWHEEL(100)");
}

void TestHandwheels::shareSeenByAnotherProcess()
{
    QTRY_COMPARE(wordsElsewhere(), QStringLiteral("0 0 0 0"));
    choose("lblLir1", QStringLiteral("ЭЛА"));
    QTRY_COMPARE(wordsElsewhere(), QStringLiteral("1 0 0 0")); // by the tick, within a second
    choose("lblLir1", QStringLiteral("Ось LX"));
    choose("lblLir2", QStringLiteral("ЭЛА"));
    m_gui->onTimeChanged();
    QTRY_COMPARE(wordsElsewhere(), QStringLiteral("0 1 0 0"));
    choose("lblLir3", QStringLiteral("ЭЛА"));
    tell({{"KeyAccess", 0}});
    m_gui->onTimeChanged();
    QTRY_COMPARE(wordsElsewhere(), QStringLiteral("0 1 1 1"));
    tell({{"KeyAccess", 1}, {"PultOn", 1}});
    m_gui->onTimeChanged();
    QTRY_COMPARE(wordsElsewhere(), QStringLiteral("0 1 0 0"));
    m_gui.reset();
    QTRY_COMPARE(wordsElsewhere(), QStringLiteral("no segment")); // the last one takes it away
}

void TestHandwheels::shareThatStoodBefore()
{
    m_gui.reset();
    QSharedMemory panel(shareKey());
    QVERIFY(panel.create(16));
    memset(panel.data(), 0x55, 16);
    PultShare share;
    QTRY_COMPARE(wordsElsewhere(), QStringLiteral("0 0 0 0"));
    share.setFuncLeftEncoder(2);
    share.setFuncRightEncoder(3);
    share.setFuncDistEncoder(4);
    share.setBlockGui(true);
    QTRY_COMPARE(wordsElsewhere(), QStringLiteral("2 3 4 1"));
    quint32 words[] = {5, 6, 7, 8};
    panel.lock();
    memcpy(panel.data(), words, sizeof words);
    panel.unlock();
    QCOMPARE(share.getFuncLeftEncoder(), 5U);
    QCOMPARE(share.getFuncRightEncoder(), 6U);
    QCOMPARE(share.getFuncDistEncoder(), 7U);
    QVERIFY(share.getBlockGui());
}

void TestHandwheels::shareThatIsTooSmall()
{
    m_gui.reset();
    QSharedMemory foreign(shareKey());
    QVERIFY(foreign.create(8));
    memset(foreign.data(), 0x55, 8);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^PultShare: the segment has 8 bytes"));
    PultShare share;
    share.setBlockGui(true);
    QVERIFY(!share.getBlockGui());
    QCOMPARE(QByteArray(static_cast<const char*>(foreign.constData()), 8), QByteArray(8, 0x55));
}

void TestHandwheels::wheelMovesTheMachine()
{
    cleanup();
    auto journey = std::make_unique<Journey>();
    Operator& hand = journey->hand;
    const QString trouble = journey->runLoggedIn([&] {
        hand.switchOn(false);
        hand.tap("lblLir1");
        hand.tapMenu("Ось A");
        hand.tap("lblLir1");
        hand.tapMenu("x0.1");
        hand.waitText("lblLir1Use", "Ось A\nx0.1");
        m_wheels.turn(WheelCounters::Left, 25);
        hand.waitText("coordA", "2.50");
        m_wheels.turn(WheelCounters::Left, -5);
        hand.waitText("coordA", "2.00");

        journey->plant().instruct("pult f1 z");
        hand.waitEnabled("sbDistPult");
        hand.tap("sbDistPult");
        hand.waitVisible("pultRegime");
        m_wheels.turn(WheelCounters::Remote, 10);
        hand.waitText("coordA", "3.00");
        Hand::expect(!hand.enabled("frmLir3"), "the panel has its wheel");
    });
    journey.reset(); // two sites never stand at once
    QCOMPARE(trouble, QString());
    begin();
}

int main(int argc, char* argv[])
{
    if (argc == 3 && qstrcmp(argv[1], "--words") == 0)
        return printWords(QString::fromUtf8(argv[2]));
    QApplication app(argc, argv);
    TestHandwheels test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "test_handwheels.moc"
