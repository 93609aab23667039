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

    void channelStates();
    void events();
    void aLinkThatComesBackIsNoNews();
    void virtualLamps();
    void regimes();
    void pressures();

private:
    QStringList since(); // lines of the list since the last time
    QList<int> shown() const;
    int m_seen = 0;
};

QStringList TestGuiMessages::since()
{
    const QStringList all = list();
    return all.mid(std::exchange(m_seen, all.size()));
}

QList<int> TestGuiMessages::shown() const
{
    QList<int> numbers;
    for (int number = 0; number <= 30; ++number) {
        if (w<CMessageStack>(QString())->getMessageIndex(number) >= 0)
            numbers << number;
    }
    return numbers;
}

void TestGuiMessages::channelStates()
{
    const struct
    {
        const char* text;
        const char* line;
    } states[] = {{"неопределено\n(0)", "состояние неопределено - ошибка связи"},
                  {"бездействие", "бездействие"},
                  {"готов", "готовность"},
                  {"выполнение", "выполнение автоматической программы"},
                  {"резервное", nullptr},
                  {"резервное", nullptr},
                  {"ошибка", "ошибка в канале"},
                  {"резервное", nullptr},
                  {"сброс", "сброс состояния канала"},
                  {"загрузка\nпрограммы", "загрузка программы"},
                  {"cancel distance to go\nPreparation", nullptr},
                  {"cancel distance to go\nRunning", nullptr},
                  {"готовность", "готовность к старту программы"},
                  {"ожидание\nпродолжения", "готовность к продолжению программы"},
                  {"неопределено\n(14)", "состояние неопределено - ошибка связи"}};
    const std::pair<uint, const char*> modes[] = {
        {1, "ручной"}, {4, "MDI"}, {5, "автомат"}, {14, "WCS"}, {0xFFFFFFFF, "4294967295"}, {0, "0"}};
    for (int channel = 1; channel <= 3; ++channel) {
        const QByteArray word = "ChannelState" + QByteArray::number(channel);
        const QString label = QStringLiteral("channel%1State").arg(channel);
        for (uint i = 1; i <= std::size(states); ++i) {
            const auto state = uint(i % std::size(states)); // 0 last: it stands in the first datagram
            since();
            tell({{word.constData(), state}});
            QCOMPARE(w<QLabel>(label)->text(), QString::fromUtf8(states[state].text));
            QCOMPARE(colour(label), state == 3 ? QColor(0, 255, 128) : QColor(189, 255, 180));
            QStringList expected;
            if (states[state].line)
                expected << QStringLiteral("Канал %1: ").arg(channel) + states[state].line;
            QCOMPARE(since(), expected);
        }
        for (const auto& [mode, text] : modes) {
            tell({{("ChannelMode" + QByteArray::number(channel)).constData(), mode}});
            QCOMPARE(w<QLabel>(QStringLiteral("channel%1Mode").arg(channel))->text(),
                     QString::fromUtf8(text));
        }
        QCOMPARE(since(), QStringList());
    }
}

void TestGuiMessages::events()
{
    tell({{"MinLimLX", -10.25}, {"MinLimU", -20.5}, {"MaxLimV", 30.125}, {"LY", 40.006}, {"U1", 50.5}});
    m_gui->onChangedMinLimitX(-1.5F);
    m_gui->onChangedMaxLimitX(1.5F);
    m_gui->onChangedMinLimitZ(-2.5F);
    m_gui->onChangedMaxLimitZ(2.5F);
    m_gui->onChangedMinLimitPHI(-3.5F);
    m_gui->onChangedMaxLimitPHI(3.5F);
    const std::pair<uint, const char*> values[] = {
        {161, "LX, новое значение -10.25"}, {167, "U, новое значение -20.50"},
        {188, "V, новое значение 30.13"},   {203, "LY, новая координата 40.01"},
        {208, "U, новая координата 50.50"}, {169, "X, новое значение -1.50"},
        {170, "Z, новое значение -2.50"},   {171, "PHI, новое значение -3.50"},
        {189, "X, новое значение 1.50"},    {190, "Z, новое значение 2.50"},
        {191, "PHI, новое значение 3.50"},
    };
    for (const auto& [number, end] : values)
        QVERIFY2(m_gui->CNCMessage(number).endsWith(QString::fromUtf8(end)),
                 qPrintable(m_gui->CNCMessage(number)));
    for (uint number = 0; number <= 260; ++number)
        QVERIFY(m_gui->CNCMessage(number).startsWith('[')); // every axis that an event names exists

    // A number that goes is no event; one that comes stands after the values of its own datagram.
    since();
    tell({{"Message", 201}, {"LX1", -7.5}});
    QCOMPARE(since(), QStringList{"CML75: Выполнено референцирование оси LX, новая координата -7.50"});
    tell({{"Message", 0}});
    QCOMPARE(since(), QStringList());
    tell({{"Message", 202}});
    QCOMPARE(since(), QStringList{"CML75: Неизвестное сообщение (202)"});
    QCOMPARE(shown(), QList<int>());
}

// Each word reaches the journal, the stack and the buzzer, once. The first datagram of a connection tells all
// words again; those that are as they were raise nothing.
void TestGuiMessages::aLinkThatComesBackIsNoNews()
{
    const auto linkFalls = [this] {
        m_controller->peer->close();
        QTRY_COMPARE(colour("lblCNC"), QColor(Qt::red));
        QTRY_VERIFY(m_controller->server.hasPendingConnections());
        QVERIFY(m_controller->accept());
        QTRY_COMPARE(colour("lblCNC"), QColor(Qt::green));
        m_received.clear();
        since();
    };
    since();
    tell({{"AlarmState", 1}, {"DrivesPower", 0}, {"PhaseAlarm", 1}, {"SpiralPower", 0}, {"DoorState", 1}});
    tell({{"ChannelState1", 6}, {"CNCError", 5}, {"TrModuleState", 1}, {"LightState", 2}});
    tell({{"DrivePowerState", 0x400}});
    tell({{"DrivePowerState", 0}});
    QCOMPARE(since().size(), 10);
    tell({{"PultOn", 1}});
    QCOMPARE(shown(), QList<int>({0, 3, 7, 8, 20}));
    QCOMPARE(takeCommands(), QStringList({"ZOOMMER", "ZOOMMER", "ZOOMMER", "ZOOMMER"}));
    linkFalls();
    tell({});
    QStringList news = since();
    news.erase(std::remove_if(news.begin(), news.end(), [](const QString& l) { return l.startsWith("Ось"); }),
               news.end()); // the drives tell where they stand after each connect
    QCOMPARE(news, QStringList());
    QCOMPARE(takeCommands(), QStringList());

    linkFalls();
    tell({{"AlarmState", 8}, {"DrivesPower", 1}, {"PhaseAlarm", 0}, {"SpiralPower", 1}});
    QCOMPARE(takeCommands(), QStringList("ZOOMMER"));
    QCOMPARE(shown(), QList<int>({0, 6}));
}

void TestGuiMessages::virtualLamps()
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

void TestGuiMessages::regimes()
{
    const std::pair<const char*, const char*> regimes[] = {
        {"Режим наладки", "Выполнено переключение в Наладочный режим работы вакуумной системы"},
        {"Ручной режим", "Выполнено переключение в Ручной режим работы вакуумной системы"},
        {"Подготовка", "Запущен алгоритм 'Подготовка' вакуумной системы"},
        {"Форвакуумная откачка", "Запущен алгоритм 'Форвакуумная откачка' вакуумной системы"},
        {"Откачка камеры", "Запущен алгоритм 'Откачка камеры' вакуумной системы"},
        {"Напуск в камеру", "Запущен алгоритм 'Напуск в камеру' вакуумной системы"},
        {"Завершение работы", "Запущен алгоритм 'Завершение работы' вакуумной системы"},
    };
    for (uint regime = 0; regime < 7; ++regime) {
        since();
        m_gui->changedMode(regime);
        QCOMPARE(w<QLabel>("lblVacuumState")->text(), QString::fromUtf8(regimes[regime].first));
        QCOMPARE(since(), QStringList{QString::fromUtf8(regimes[regime].second)});
        QCOMPARE(colour("lblVacuumState"), regime ? QColor(189, 255, 180) : QColor(255, 128, 128));
        QCOMPARE(w("lblVacuumState")->palette().color(QPalette::WindowText),
                 QColor(regime ? Qt::black : Qt::white));
    }
    const std::pair<uint, const char*> others[] = {{0xFFFFFFFF, "Аварийное завершение"}, {7, "Wrong mode"}};
    for (const auto& [regime, text] : others) {
        m_gui->changedMode(0);
        since();
        m_gui->changedMode(regime);
        QCOMPARE(w<QLabel>("lblVacuumState")->text(), QString::fromUtf8(text));
        QCOMPARE(colour("lblVacuumState"), QColor(189, 255, 180));
        QCOMPARE(since(), QStringList());
    }
    m_gui->changedModeTime(3661);
    QCOMPARE(w<QLabel>("lblVacuumTime")->text(), QStringLiteral("01:01:01"));
    const std::pair<const char*, QColor> states[] = {{"Не запущен", QColor(189, 255, 180)},
                                                     {"Выполняется", QColor(0, 255, 128)},
                                                     {"Выполнен", QColor(0, 255, 128)},
                                                     {"Не запущен", QColor(189, 255, 180)}};
    for (uint state = 0; state < 4; ++state) {
        m_gui->changedModeState(state);
        QCOMPARE(w<QLabel>("lblVacuumActive")->text(), QString::fromUtf8(states[state].first));
        QCOMPARE(colour("lblVacuumActive"), states[state].second);
    }
    QCOMPARE(since(), QStringList{"Автоматический алгоритм выполнен, время выполнения - 61 минут 1 секунд"});
    m_gui->changedModeTime(360'000);
    QCOMPARE(w<QLabel>("lblVacuumTime")->text(), QStringLiteral("100:00:00"));
    QCOMPARE(colour("lblVacuumTime"), QColor(0, 255, 128));
    m_gui->changedModeTime(0);
    QCOMPARE(w<QLabel>("lblVacuumTime")->text(), QStringLiteral("00:00:00"));
    QCOMPARE(colour("lblVacuumTime"), QColor(189, 255, 180));
}

void TestGuiMessages::pressures()
{
    for (const char* name : {"VacuumChamber", "VacuumGun"})
        QCOMPARE(colour(name), QColor(255, 192, 192)); // nothing measured yet
    m_gui->onChangedPressUnit(true);
    for (const char* name : {"VacuumChamber", "VacuumGun"})
        QCOMPARE(w<QLabel>(name)->text(), QString()); // nor any vacuum told in the other unit
    m_gui->onChangedChamberPressure(133.322);
    m_gui->onChangedGunPressure(0.25F);
    m_gui->onChangedChamberValid(true);
    m_gui->onChangedGunValid(1);
    const char* texts[][4] = {{"1.0E+00", "1.9E-03", "Камера, мм.рт.ст.", "Пушка, мм.рт.ст."},
                              {"1.3E+02", "2.5E-01", "Камера, Па", "Пушка, Па"}};
    for (const bool pascal : {false, true}) {
        m_gui->onChangedPressUnit(!pascal);
        const char* names[] = {"VacuumChamber", "VacuumGun", "lblVacuumChamber", "lblVacuumGun"};
        for (int i = 0; i < 4; ++i)
            QCOMPARE(w<QLabel>(names[i])->text(), QString::fromUtf8(texts[pascal][i]));
        QCOMPARE(m_gui->pressure(), 133.322F); // Pa, whatever is shown
    }
    QCOMPARE(colour("VacuumChamber"), QColor(189, 255, 180));
    m_gui->onChangedChamberValid(false);
    QCOMPARE(colour("VacuumChamber"), QColor(255, 192, 192));
    QCOMPARE(colour("VacuumGun"), QColor(189, 255, 180));
    m_gui->onChangedGunValid(0);
    QCOMPARE(colour("VacuumGun"), QColor(255, 192, 192));
}

QTEST_MAIN(TestGuiMessages)
#include "test_guimessages.moc"
