#include "axis.h"
#include "cmessagestack.h"
#include "guifixture.h"

// What the window makes of the words and numbers of the motion controller: journal lines, the stack's
// messages, the buzzer.
class TestGuiMessages : public GuiFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void channelStates()
    {
        const std::tuple<uint, const char*, const char*> states[] = {
            {1, "бездействие", "бездействие"},
            {2, "готов", "готовность"},
            {3, "выполнение", "выполнение автоматической программы"},
            {5, "резервное", ""},
            {6, "ошибка", "ошибка в канале"},
            {11, "cancel distance to go\nRunning", ""},
            {13, "ожидание\nпродолжения", "готовность к продолжению программы"},
            {14, "неопределено\n(14)", "состояние неопределено - ошибка связи"},
            {0, "неопределено\n(0)", "состояние неопределено - ошибка связи"}};
        const std::pair<uint, const char*> modes[] = {
            {1, "ручной"}, {4, "MDI"}, {5, "автомат"}, {14, "WCS"}, {0xFFFFFFFF, "4294967295"}, {0, "0"}};
        for (int channel = 1; channel <= 3; ++channel) {
            const QString digit = QString::number(channel), label = "channel" + digit + "State";
            for (const auto& [state, shown, line] : states) {
                since();
                tell({{"ChannelState" + digit, state}});
                QCOMPARE(text(label), shown);
                QCOMPARE(colour(label), state == 3 ? QColor(0, 255, 128) : QColor(189, 255, 180));
                QCOMPARE(since(), *line ? QString("Канал %1: %2").arg(digit, line) : QString());
            }
            for (const auto& [mode, shown] : modes) {
                tell({{"ChannelMode" + digit, mode}});
                QCOMPARE(text("channel" + digit + "Mode"), shown);
            }
            QCOMPARE(since(), "");
        }
    }

    void events()
    {
        tell({{"MinLimLX", -10.25}, {"MinLimU", -20.5}, {"MaxLimV", 30.125}, {"LY", 40.006}, {"U1", 50.5}});
        tell({{"MinLimX", -1.5}, {"MaxLimX", 1.5}, {"MinLimZ", -2.5}, {"MaxLimZ", 2.5}, {"MaxLimPHI", 3.5}});
        const std::pair<uint, const char*> values[] = {
            {161, "LX, новое значение -10.25"}, {167, "U, новое значение -20.50"},
            {188, "V, новое значение 30.13"},   {203, "LY, новая координата 40.01"},
            {208, "U, новая координата 50.50"}, {169, "X, новое значение -1.50"},
            {170, "Z, новое значение -2.50"},   {189, "X, новое значение 1.50"},
            {190, "Z, новое значение 2.50"},    {191, "PHI, новое значение 3.50"},
        };
        for (const auto& [number, end] : values)
            QVERIFY2(m_gui->CNCMessage(number).endsWith(end), end);
        m_gui->onChangedMinLimitPHI(-3.5F);
        QVERIFY(m_gui->CNCMessage(171).endsWith("PHI, новое значение -3.50"));
        for (uint number = 0; number <= 260; ++number)
            QVERIFY(m_gui->CNCMessage(number).startsWith('[')); // every axis that an event names exists

        // A number that goes is no event; one that comes stands after the values of its own datagram.
        since();
        tell({{"Message", 201}, {"LX1", -7.5}});
        QCOMPARE(since(), "CML75: Выполнено референцирование оси LX, новая координата -7.50");
        tell({{"Message", 0}});
        QCOMPARE(since(), "");
        tell({{"Message", 202}});
        QCOMPARE(since(), "CML75: Неизвестное сообщение (202)");
        QCOMPARE(shown(), "");
    }

    // Each word reaches the journal, the stack and the buzzer, once. The first datagram of a connection tells
    // all words again; those that are as they were raise nothing.
    void aLinkThatComesBackIsNoNews()
    {
        const auto linkFalls = [this] {
            m_controller->peer->close();
            QTRY_COMPARE(colour("lblCNC"), QColor(Qt::red));
            QCOMPARE(text("coordLX"), "7.50");
            QVERIFY(m_gui->isEnabled());
            touch("pbStop"); // lost, and nobody complains
            QTRY_VERIFY(m_controller->server.hasPendingConnections());
            QVERIFY(m_controller->accept());
            QTRY_COMPARE(colour("lblCNC"), QColor(Qt::green));
            m_received.clear();
            since();
        };
        since();
        tell(
            {{"AlarmState", 1}, {"DrivesPower", 0}, {"PhaseAlarm", 1}, {"SpiralPower", 0}, {"DoorState", 1}});
        tell({{"ChannelState1", 6}, {"CNCError", 5}, {"TrModuleState", 1}, {"LightState", 2}, {"LX1", 7.5}});
        tell({{"DrivePowerState", 0x400}});
        tell({{"DrivePowerState", 0}});
        QCOMPARE(since().count('|'), 9);
        tell({{"PultOn", 1}});
        QCOMPARE(shown(), "0 3 7 8 20");
        SENT("ZOOMMER", "ZOOMMER", "ZOOMMER", "ZOOMMER");
        linkFalls();
        tell({});
        // Only the drives tell where they stand after each connect.
        QVERIFY(!since().contains(QRegularExpression("(^|\\|)(?!Ось)[^|]")));
        QCOMPARE(takeCommands(), QStringList());

        linkFalls();
        tell({{"AlarmState", 8}, {"DrivesPower", 1}, {"PhaseAlarm", 0}, {"SpiralPower", 1}, {"LX1", 8.25}});
        SENT("ZOOMMER");
        QCOMPARE(shown(), "0 6");
        QCOMPARE(text("coordLX"), "8.25");
    }

    void virtualLamps()
    {
        const auto picture = [this](const char* name) {
            return w<PoSprite>(name)->pixmap(Qt::ReturnByValue).toImage();
        };
        const QString files[] = {"gray", "yellow", "green", "red", "yellow"};
        for (uint state : {3U, 2U, 1U, 0U, 4U, 5U, 0xFFFFFFFFU}) {
            tell({{"VirtualState", state}});
            const QImage lamp(":/images/indicator_" + files[qMin(state, 4U)] + ".png");
            for (const char* name : {"indX", "indZ", "indPHI"})
                QCOMPARE(picture(name), lamp.convertToFormat(picture(name).format()));
        }
    }

    void regimes()
    {
        const std::tuple<uint, const char*, const char*> regimes[] = {
            {1, "Ручной режим", "Выполнено переключение в Ручной режим работы вакуумной системы"},
            {0, "Режим наладки", "Выполнено переключение в Наладочный режим работы вакуумной системы"},
            {0xFFFFFFFF, "Аварийное завершение", ""},
            {2, "Подготовка", "Запущен алгоритм 'Подготовка' вакуумной системы"},
            {3, "Форвакуумная откачка", "Запущен алгоритм 'Форвакуумная откачка' вакуумной системы"},
            {5, "Напуск в камеру", "Запущен алгоритм 'Напуск в камеру' вакуумной системы"},
            {6, "Завершение работы", "Запущен алгоритм 'Завершение работы' вакуумной системы"},
            {7, "Wrong mode", ""},
        };
        for (const auto& [regime, told, line] : regimes) {
            since();
            m_gui->changedMode(regime);
            QCOMPARE(text("lblVacuumState"), told);
            QCOMPARE(since(), line);
            QCOMPARE(colour("lblVacuumState"), regime ? QColor(189, 255, 180) : QColor(255, 128, 128));
            QCOMPARE(w("lblVacuumState")->palette().color(QPalette::WindowText),
                     QColor(regime ? Qt::black : Qt::white));
        }
        since();
        const std::tuple<uint, const char*, const char*> states[] = {{3661, "01:01:01", "Не запущен"},
                                                                     {360'000, "100:00:00", "Выполняется"},
                                                                     {3661, "01:01:01", "Выполнен"},
                                                                     {0, "00:00:00", "Не запущен"}};
        for (uint state = 0; state < 4; ++state) {
            const auto& [time, shown, told] = states[state];
            m_gui->changedModeTime(time);
            m_gui->changedModeState(state);
            QCOMPARE(text("lblVacuumTime") + ' ' + text("lblVacuumActive"), QString(shown) + ' ' + told);
            QCOMPARE(colour("lblVacuumTime"), time ? QColor(0, 255, 128) : QColor(189, 255, 180));
            QCOMPARE(colour("lblVacuumActive"), state % 3 ? QColor(0, 255, 128) : QColor(189, 255, 180));
        }
        QCOMPARE(since(), "Автоматический алгоритм выполнен, время выполнения - 61 минут 1 секунд");
    }

    void pressures()
    {
        const QColor good(189, 255, 180), bad(255, 192, 192);
        m_gui->onChangedPressUnit(true);
        for (const char* name : {"VacuumChamber", "VacuumGun"}) {
            QCOMPARE(colour(name), bad); // nothing measured yet
            QCOMPARE(text(name), "");    // nor any vacuum told in the other unit
        }
        m_gui->onChangedChamberPressure(133.322);
        m_gui->onChangedGunPressure(0.25F);
        m_gui->onChangedChamberValid(true);
        m_gui->onChangedGunValid(1);
        const char* const texts[] = {"1.0E+00|1.9E-03|Камера, мм.рт.ст.|Пушка, мм.рт.ст.",
                                     "1.3E+02|2.5E-01|Камера, Па|Пушка, Па"};
        for (const bool pascal : {false, true}) {
            m_gui->onChangedPressUnit(!pascal);
            const QStringList shown{text("VacuumChamber"), text("VacuumGun"), text("lblVacuumChamber"),
                                    text("lblVacuumGun")};
            QCOMPARE(shown.join('|'), texts[pascal]);
            QCOMPARE(m_gui->pressure(), 133.322F); // Pa, whatever is shown
        }
        QCOMPARE(colour("VacuumChamber"), good);
        m_gui->onChangedChamberValid(false);
        QCOMPARE(colour("VacuumChamber"), bad);
        QCOMPARE(colour("VacuumGun"), good);
        m_gui->onChangedGunValid(0);
        QCOMPARE(colour("VacuumGun"), bad);
    }

private:
    QString since() // lines of the list since the last time
    {
        const QStringList all = list();
        return all.mid(std::exchange(m_seen, all.size())).join('|');
    }
    QString shown() const // numbers of the stack
    {
        QStringList numbers;
        for (int number = 0; number <= 30; ++number) {
            if (w<CMessageStack>({})->getMessageIndex(number) >= 0)
                numbers << QString::number(number);
        }
        return numbers.join(' ');
    }
    int m_seen = 0;
};

QTEST_MAIN(TestGuiMessages)
#include "test_guimessages.moc"
