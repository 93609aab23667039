#include "confirm.h"
#include "eldlg.h"
#include "lockview.h"
#include "statebutton.h"
#include "vacuumcontroller.h"
#include "widgets.h"

#include <QSignalSpy>

namespace {

// By the number of the regime.
const char* const buttons[] = {"sbVacAdjust",  "sbVacManual",  "sbVacPrepare", "sbVacForepump",
                               "sbVacPumping", "sbVacFilling", "sbVacShutdown"};
const char* const titles[] = {
    "Наладка",         "Ручное\nуправление", "Подготовка",        "Форвакуумная\nоткачка",
    "Откачка\nкамеры", "Напуск\nв камеру",   "Завершение\nработы"};

} // namespace

// The row of regimes and the door.
class TestRegimes : public PanelFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }
    void pressedButton();
    void confirmations();
    void unansweredQuestion();
    void manualControl();
    void setupCode();
    void rights();
    void doorDoesNotForbidPumping();
    void door();
    void labelOfThePump();

private:
    void answer(const QString& button, const QString& question)
    {
        whenOpen<Confirm>([=](Confirm* dialog) {
            QCOMPARE(dialog->findChild<QLabel*>("lblText")->text(), question);
            QCOMPARE(dialog->window()->windowTitle(), QStringLiteral("Подтверждение"));
            QTest::mouseClick(dialog->findChild<QPushButton*>(button), Qt::LeftButton);
        });
    }
    QStringList pressed() const
    {
        QStringList names;
        for (const char* button : buttons) {
            if (w<StateButton>(button)->state() == StateButton::On)
                names << button;
        }
        return names;
    }
};

void TestRegimes::pressedButton()
{
    for (int i = 0; i < 7; ++i)
        QCOMPARE(w(buttons[i])->findChild<QLabel*>("lblTitle")->text(), QString::fromUtf8(titles[i]));
    QSignalSpy mode(m_panel.get(), &KVS::signalChangedMode);
    QSignalSpy time(m_panel.get(), &KVS::signalChangedModeTime);
    QSignalSpy state(m_panel.get(), &KVS::signalChangedModeState);
    for (uint number : {3U, 0U, 1U, 2U, 4U, 5U, 6U, 7U, 0U, 0xFFFFFFFFU}) {
        tellKvk({{"AlgNumber", number}, {"AlgTime", 100 + number % 8}, {"AlgRun", number % 3}});
        QCOMPARE(pressed(), number < 7 ? QStringList(buttons[number]) : QStringList());
        QCOMPARE(mode.last()[0].toUInt(), number);
        QCOMPARE(time.last()[0].toUInt(), 100 + number % 8);
        QCOMPARE(state.last()[0].toUInt(), number % 3);
    }
    tellKvk({{"AlgNumber", 4}});
    m_kvk->peer->close(); // the last regime stays on the row
    QTRY_COMPARE(colour("Door"), QColor(255, 192, 192));
    QCOMPARE(pressed(), QStringList("sbVacPumping"));
}

void TestRegimes::confirmations()
{
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"sbVacPrepare", "Подготовка", "ALG(2)"},         {"sbVacForepump", "Форвакуумная откачка", "ALG(3)"},
        {"sbVacPumping", "Откачка камеры", "ALG(4)"},     {"sbVacFilling", "Напуск в камеру", "ALG(5)"},
        {"sbVacShutdown", "Завершение работы", "ALG(6)"},
    };
    for (const auto& [button, name, command] : rows) {
        const QString question = QStringLiteral("Запустить автоматический алгоритм '%1'?").arg(name);
        answer("pbNo", question);
        touch(button);
        answer("pbYes", question);
        touch(button);
        QCOMPARE(m_kvk->takeCommands(1), QStringList(command));
        QVERIFY(takeLines().isEmpty()); // the journal waits for the controller's report
    }
    // The row changes under the open question; the yes still counts.
    whenOpen<Confirm>([this](Confirm* dialog) {
        tellKvk({{"AlgNumber", 4}});
        QCOMPARE(pressed(), QStringList("sbVacPumping"));
        dialog->accept();
    });
    touch("sbVacPumping");
    QCOMPARE(m_kvk->takeCommands(1), QStringList("ALG(4)"));
    // A running regime can be asked for again; on a lost link nobody complains.
    m_kvk->peer->close();
    QTRY_COMPARE(colour("Door"), QColor(255, 192, 192));
    whenOpen<Confirm>([](Confirm* dialog) { dialog->accept(); });
    touch("sbVacPumping");
    QVERIFY(m_kvs->takeCommands().isEmpty());
}

void TestRegimes::unansweredQuestion()
{
    m_kvk->keepTelling();
    QElapsedTimer time;
    time.start();
    touch("sbVacFilling");
    QVERIFY(time.elapsed() > 4700 && time.elapsed() < 7000);
    touch("sbVacManual"); // marks the end of what was sent
    QCOMPARE(m_kvk->takeCommands(1), QStringList("ALG(1)"));
}

void TestRegimes::manualControl()
{
    m_panel->onUserChanged(2);
    touch("sbVacManual");
    QCOMPARE(m_kvk->takeCommands(1), QStringList("ALG(1)"));
    QVERIFY(pressed().isEmpty()); // shown when the controller reports it
}

void TestRegimes::setupCode()
{
    const QString title = QStringLiteral("Пароль");
    const QString wrong = QStringLiteral("[W]Введён неправильный пароль для перехода в режим 'Наладка'");
    const std::pair<const char*, bool> attempts[] = {
        {"305728", true}, {"", true}, {"3057290", true}, {"305729", false}};
    for (const auto& [digits, enter] : attempts) {
        typeNext(digits, enter, title);
        touch("sbVacAdjust");
        QCOMPARE(takeLines(), QStringList(wrong));
    }
    typeNext("305729", true, title);
    touch("sbVacAdjust");
    QCOMPARE(takeLines(),
             QStringList(QStringLiteral("[I]Введён правильный пароль для перехода в режим 'Наладка'")));
    QCOMPARE(m_kvk->takeCommands(1), QStringList("ALG(0)"));
}

void TestRegimes::rights()
{
    for (int group : {-1, 0, 1, 2, 3}) {
        m_panel->onUserChanged(group);
        QCOMPARE(w<StateButton>("sbVacAdjust")->locked(), group >= 2);
    }
    QTest::mousePress(w("sbVacAdjust"), Qt::LeftButton);
    const auto reasons = w("sbVacAdjust")->findChildren<LockView*>();
    QCOMPARE(reasons.size(), 1);
    QStringList texts;
    for (const QLabel* label : reasons[0]->findChildren<QLabel*>())
        texts << label->text();
    QVERIFY(texts.contains(QStringLiteral("Нет прав на включение  ")));
    QTest::mouseRelease(w("sbVacAdjust"), Qt::LeftButton);
    QVERIFY(takeLines().isEmpty()); // no keypad, so no word about a code
}

// Whether the door stands in the way of pumping is the controller's to say.
void TestRegimes::doorDoesNotForbidPumping()
{
    m_panel->onDoorStateChanged(1);
    m_panel->onDoorPressChanged(0);
    QVERIFY(m_panel->lock("REGIME:LockDoorPress")->state() && m_panel->lock("REGIME:LockDoorState")->state());
    m_panel->onUserChanged(2);
    for (const char* button : buttons)
        QCOMPARE(w<StateButton>(button)->locked(), button == buttons[0]);
    const std::tuple<const char*, const char*, const char*> locks[] = {
        {"REGIME:LockUser", "Нет прав на включение", "Права есть"},
        {"REGIME:LockDoorPress", "Дверь камеры не прижата", "Дверь камеры прижата"},
        {"REGIME:LockDoorState", "Дверь камеры не закрыта", "Дверь камеры закрыта"},
        {"REGIME:LockPump", "", ""}};
    for (const auto& [key, locked, free] : locks) {
        QCOMPARE(m_panel->lock(key)->text(true), QString::fromUtf8(locked));
        QCOMPARE(m_panel->lock(key)->text(false), QString::fromUtf8(free));
    }
}

// The motion controller moves the picture up and down, the chamber controller to and fro.
void TestRegimes::door()
{
    QCOMPARE(w("Door")->pos(), QPoint(42, 215));
    const struct
    {
        int press;
        int x;
        bool locked;
        const char* line;
    } presses[] = {
        {1, 30, false, "[I]Дверь камеры отжата"},          {2, 30, true, "[I]Дверь камеры прижимается"},
        {3, 30, true, "[I]Дверь камеры отжимается"},       {4, 30, true, "[W]Ошибка прижима/отжима двери!"},
        {-1, 30, true, "[W]Ошибка прижима/отжима двери!"}, {0, 42, true, "[I]Дверь камеры прижата"},
    };
    const std::tuple<uint, int, bool> places[] = {
        {0, 90, false}, {1, 340, true}, {2, 215, true}, {9, 215, true}};
    tellKvk({{"DoorState", 3}});
    takeLines();
    for (const auto& press : presses) {
        tellKvk({{"DoorState", press.press}});
        QCOMPARE(takeLines(), QStringList(QString::fromUtf8(press.line)));
        QCOMPARE(m_panel->lock("REGIME:LockDoorPress")->state(), press.locked);
        for (const auto& [state, y, locked] : places) {
            m_panel->onDoorStateChanged(state);
            QCOMPARE(w("Door")->pos(), QPoint(press.x, y));
            QCOMPARE(m_panel->lock("REGIME:LockDoorState")->state(), locked);
            QVERIFY(takeLines().isEmpty());
        }
    }
}

// The name of the pump opens its dialog as the pump does.
void TestRegimes::labelOfThePump()
{
    touch("lblND1");
    QVERIFY(w("ND1")->findChild<DeviceDlg*>()->isVisible());
}

QTEST_MAIN(TestRegimes)
#include "test_regimes.moc"
