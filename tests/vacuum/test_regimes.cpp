#include "confirm.h"
#include "lockview.h"
#include "statebutton.h"
#include "vacuumcontroller.h"

#include <QSignalSpy>

namespace {

// By the number of the regime; those with a name in their question are asked for.
const struct
{
    const char* button;
    const char* title;
    const char* name;
} regimes[] = {{"sbVacAdjust", "Наладка", nullptr},
               {"sbVacManual", "Ручное\nуправление", nullptr},
               {"sbVacPrepare", "Подготовка", "Подготовка"},
               {"sbVacForepump", "Форвакуумная\nоткачка", "Форвакуумная откачка"},
               {"sbVacPumping", "Откачка\nкамеры", "Откачка камеры"},
               {"sbVacFilling", "Напуск\nв камеру", "Напуск в камеру"},
               {"sbVacShutdown", "Завершение\nработы", "Завершение работы"}};

} // namespace

// The row of regimes and the door.
class TestRegimes : public PanelFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void pressedButton()
    {
        const QSignalSpy mode(m_panel.get(), &KVS::signalChangedMode);
        const QSignalSpy time(m_panel.get(), &KVS::signalChangedModeTime);
        const QSignalSpy state(m_panel.get(), &KVS::signalChangedModeState);
        for (uint number : {3U, 0U, 1U, 2U, 4U, 5U, 6U, 7U, 0U, 0xFFFFFFFFU}) {
            tellKvk({{"AlgNumber", number}, {"AlgTime", 100 + number % 8}, {"AlgRun", number % 3}});
            QCOMPARE(pressed(), number < 7 ? regimes[number].title : "");
            QCOMPARE(mode.last()[0].toUInt(), number);
            QCOMPARE(time.last()[0].toUInt(), 100 + number % 8);
            QCOMPARE(state.last()[0].toUInt(), number % 3);
        }
    }

    void questions()
    {
        for (int number = 2; number < 7; ++number) {
            const char* const button = regimes[number].button;
            for (const char* answer : {"pbNo", "pbYes", ""}) {
                whenOpen<Confirm>([=](Confirm* dialog) {
                    QCOMPARE(dialog->findChild<QLabel*>("lblText")->text(),
                             QString("Запустить автоматический алгоритм '%1'?").arg(regimes[number].name));
                    QCOMPARE(dialog->window()->windowTitle(), "Подтверждение");
                    if (*answer)
                        QTest::mouseClick(dialog->findChild<QPushButton*>(answer), Qt::LeftButton);
                    else
                        QVERIFY(passTime(5000)); // nobody answers
                });
                touch(button);
            }
            touch("sbVacManual"); // is not asked for, and marks the end of what was sent
            QCOMPARE(m_kvk->takeCommands(2), (QStringList{QString("ALG(%1)").arg(number), "ALG(1)"}));
        }
        QVERIFY(takeLines().isEmpty() && pressed().isEmpty()); // both wait for the controller's report

        // The row changes under the open question; the yes still counts.
        whenOpen<Confirm>([this](Confirm* dialog) {
            tellKvk({{"AlgNumber", 4}});
            QCOMPARE(pressed(), "Откачка\nкамеры");
            dialog->accept();
        });
        touch("sbVacPumping");
        QCOMPARE(m_kvk->takeCommands(1), QStringList("ALG(4)"));
        // A running regime can be asked for again, and stays on the row when the link is lost; on a lost link
        // nobody complains.
        m_kvk->peer->close();
        QTRY_COMPARE(colour("Door"), QColor(255, 192, 192));
        whenOpen<Confirm>([](Confirm* dialog) { dialog->accept(); });
        touch("sbVacPumping");
        QVERIFY(m_kvs->takeCommands().isEmpty());
        QCOMPARE(pressed(), "Откачка\nкамеры");
    }

    void setupCode()
    {
        const QString wrong = "[W]Введён неправильный пароль для перехода в режим 'Наладка'";
        const QString right = "[I]Введён правильный пароль для перехода в режим 'Наладка'";
        const std::tuple<const char*, bool, QString> attempts[] = {
            {"305728", true, wrong}, {"", true, wrong}, {"305729", false, wrong}, {"305729", true, right}};
        for (const auto& [digits, enter, line] : attempts) {
            typeNext(digits, enter, "Пароль");
            touch("sbVacAdjust");
            QCOMPARE(takeLines(), QStringList(line));
        }
        QCOMPARE(m_kvk->takeCommands(1), QStringList("ALG(0)"));
    }

    void rights()
    {
        // Whether the door stands in the way of pumping is the controller's to say.
        m_panel->onDoorStateChanged(1);
        m_panel->onDoorPressChanged(0);
        takeLines();
        for (int group : {-1, 0, 1, 2, 3}) {
            m_panel->onUserChanged(group);
            for (const auto& regime : regimes)
                QCOMPARE(w<StateButton>(regime.button)->locked(), &regime == regimes && group >= 2);
        }
        QTest::mousePress(w("sbVacAdjust"), Qt::LeftButton);
        const auto reasons = w("sbVacAdjust")->findChildren<LockView*>();
        QCOMPARE(reasons.size(), 1);
        QCOMPARE(reasons[0]->findChildren<QLabel*>().last()->text(), "Нет прав на включение  ");
        QTest::mouseRelease(w("sbVacAdjust"), Qt::LeftButton);
        QVERIFY(takeLines().isEmpty()); // no keypad, so no word about a code
    }

    // The motion controller moves the picture up and down, the chamber controller to and fro.
    void door()
    {
        QCOMPARE(w("Door")->pos(), QPoint(42, 215));
        const struct
        {
            int press;
            int x;
            bool locked;
            const char* line;
        } presses[] = {
            {1, 30, false, "[I]Дверь камеры отжата"},
            {2, 30, true, "[I]Дверь камеры прижимается"},
            {3, 30, true, "[I]Дверь камеры отжимается"},
            {4, 30, true, "[W]Ошибка прижима/отжима двери!"},
            {-1, 30, true, "[W]Ошибка прижима/отжима двери!"},
            {0, 42, true, "[I]Дверь камеры прижата"},
        };
        const std::tuple<uint, int, bool> places[] = {{0, 90, false}, {1, 340, true}, {2, 215, true}};
        tellKvk({{"DoorState", 3}});
        takeLines();
        for (const auto& press : presses) {
            tellKvk({{"DoorState", press.press}});
            QCOMPARE(takeLines(), QStringList(press.line));
            QCOMPARE(m_panel->lock("REGIME:LockDoorPress")->state(), press.locked);
            for (const auto& [state, y, locked] : places) {
                m_panel->onDoorStateChanged(state);
                QCOMPARE(w("Door")->pos(), QPoint(press.x, y));
                QCOMPARE(m_panel->lock("REGIME:LockDoorState")->state(), locked);
                QVERIFY(takeLines().isEmpty());
            }
        }
    }

private:
    // The titles of what is pressed on the row.
    QString pressed() const
    {
        QStringList titles;
        for (const auto& regime : regimes) {
            if (w<StateButton>(regime.button)->state() == StateButton::On)
                titles << w(regime.button)->findChild<QLabel*>("lblTitle")->text();
        }
        return titles.join('|');
    }
};

QTEST_MAIN(TestRegimes)
#include "test_regimes.moc"
