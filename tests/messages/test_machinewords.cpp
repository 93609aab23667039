#include "cmessageserver.h"
#include "comparetext.h"
#include "machinewords.h"

#include <QtTest>

// What becomes of the motion controller's words: lines of the journal, messages on the stack, the buzzer.
class TestMachineWords : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_words.reset();
        m_server = std::make_unique<CMessageServer>();
        m_words = std::make_unique<MachineWords>(m_server.get(), nullptr);
        connect(m_words.get(), &MachineWords::message, this, [this](const QString& line, bool shown) {
            QVERIFY(shown);
            m_told << line;
        });
        connect(m_words.get(), &MachineWords::command, this, [this](const QString& text) { m_told << text; });
        m_told.clear();
    }

    void placesByTheirNumber()
    {
        for (const uint state : {4U, 0xFFFFFFFFU}) {
            m_words->door(state);
            m_words->transportModule(state);
        }
        m_words->controllerError(0);
        QCOMPARE(told(), "");
        m_words->controllerError(4'000'000'000);
        m_words->door(0);
        m_words->door(1);
        m_words->transportModule(3);
        QCOMPARE(told(), "[A]CML75: Ошибка контроллера ЧПУ номер 4000000000!|"
                         "[I]Дверь закрыта|[I]Дверь открыта|"
                         "[I]Транспортный модуль в зоне торможения загрузочной платформы|");
    }

    void breakers()
    {
        constexpr uint allClosed = 0x7FF;
        const QStringList drives = QString("LX1 LX2 LY A B C D U1 U2 V").split(' ');
        QString all;
        for (int bit = 0; bit < 10; ++bit) {
            const QString line = QString("[W]Сработал автомат QF%1 питания привода координаты %2 в ШУК!|")
                                     .arg(QString::number(31 + bit), drives[bit]);
            m_words->breakers(allClosed);
            m_words->breakers(allClosed & ~(1U << bit));
            QCOMPARE(told(), line);
            all += line;
        }
        m_words->breakers(allClosed);
        m_words->breakers(0xFFFFF800U); // all at once, in order of the bits; those above are not told
        QCOMPARE(told(), all + "[W]Сработал автомат QF18 питания всех приводов в ШУК!|ZOOMMER|0");
        m_words->breakers(0xFFFFF800U); // the same word says nothing
        QCOMPARE(told(), "0");
        m_words->breakers(allClosed);
        QCOMPARE(told(), "");

        m_words->breakers(0x3FF);
        m_words->breakers(0x3F7); // another takes the common one off the stack
        QVERIFY(told().endsWith("координаты A в ШУК!|"));
    }

    void cabinet()
    {
        for (int time = 0; time < 2; ++time) {
            m_words->drivesPower(false);
            m_words->phases(true);
            m_words->spiralPower(false);
            QCOMPARE(told(), "[A]Сработал автомат питания приводов 24В в ШУК (QF28)!|ZOOMMER|"
                             "[A]Ошибка фаз 380 Вольт в ШУК!|ZOOMMER|"
                             "[W]Сработал автомат питания спиралей в ШУК (QF23 или QF24)!|7,8,20");
            m_words->phases(false);
            QCOMPARE(told(), "8,20");
            m_words->drivesPower(true);
            m_words->spiralPower(true);
            QCOMPARE(told(), "");
        }
    }

    // A button that stays pressed while a rope is pulled is told and raised again, and each release takes
    // one.
    void alarms()
    {
        const QString console = "[A]Нажата кнопка аварийного останова на пульте оператора!|ZOOMMER|";
        m_words->alarms(0x11); // no bit but the first four is known
        QCOMPARE(told(), console + '3');
        m_words->alarms(0xF);
        QCOMPARE(told(), console + "[A]Нажата кнопка аварийного останова на пульте переносном!|ZOOMMER|"
                                   "[A]Сработал левый тросовый выключатель в камере!|ZOOMMER|"
                                   "[A]Сработал правый тросовый выключатель в камере!|ZOOMMER|3,4,5,6");
        m_words->alarms(0);
        QCOMPARE(told(), "3");
        m_words->alarms(8);
        QVERIFY(told().endsWith("|6"));
    }

    void lights()
    {
        const QString led = "[I]Освещение камеры светодиодными лентами ",
                      spot = "[I]Освещение камеры светодиодными прожекторами ",
                      spiral = "[I]Освещение зоны сварки спиралями ", on = "включено|", off = "выключено|";
        const std::pair<uint, QString> words[] = {
            {0, ""},
            {1, led + on},
            {7, spot + on + spiral + on},
            {0xFFFFFFFF, ""},
            {2, led + off + spiral + off},
            {5, led + on + spot + off + spiral + on},
            {0xFFFFFFF8, led + off + spiral + off},
        };
        for (const auto& [word, lines] : words) {
            m_words->lights(word);
            QCOMPARE(told(), lines);
        }
    }

private:
    // Everything since the last time: the lines, the buzzes as "ZOOMMER", then what stands on the stack.
    QString told()
    {
        QStringList numbers;
        for (int number = 0; number <= 30; ++number) {
            if (m_server->getMessageIndex(number) >= 0)
                numbers << QString::number(number);
        }
        return (std::exchange(m_told, {}) << numbers.join(',')).join('|');
    }

    std::unique_ptr<CMessageServer> m_server;
    std::unique_ptr<MachineWords> m_words;
    QStringList m_told;
};

QTEST_MAIN(TestMachineWords)
#include "test_machinewords.moc"
