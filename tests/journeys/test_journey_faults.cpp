#include "journey.h"

#include <QRandomGenerator>

#include <algorithm>

namespace {

constexpr int kRounds = 2; // each fault comes once in a round

struct Fault
{
    const char* inject; // instructor's lines, parted by ";"
    const char* mend;
    const char* line; // what the journal tells, empty for nothing
    bool buzzer;
};

const Fault kFaults[] = {
    {"breaker qf33 off", "breaker qf33 on;clear LY", "QF33 питания привода координаты LY", false},
    {"breaker qf18 off",
     "breaker qf18 on;clear LX;clear LX2;clear LY;clear A;clear B;clear C;clear D;clear U1;clear U2;clear V",
     "QF18 питания всех приводов", true},
    {"breaker qf23 off", "breaker qf23 on", "(QF23 или QF24)!", false},
    {"breaker qf28 off", "breaker qf28 on", "(QF28)!", true},
    {"phase off", "phase on", "Ошибка фаз 380 Вольт", true},
    {"emergency console on", "emergency console off", "аварийного останова на пульте оператора", true},
    {"emergency pendant on", "emergency pendant off", "аварийного останова на пульте переносном", true},
    {"rope left on", "rope left off", "левый тросовый выключатель", true},
    {"rope right on", "rope right off", "правый тросовый выключатель", true},
    {"trip A F2019", "clear A", "[A]Ось A: Превышение максимально-допустимой температуры двигателя", false},
    {"trip V F8060", "clear V", "[A]Ось V: Превышение максимально-допустимого тока", false},
    {"message 131", "", "положительный программный конечник координаты LX", false},
    {"cncerror 4711", "", "номер 4711!", false},
    {"light led on", "light led off", "светодиодными лентами включено", false},
    {"module 1", "module 0", "на загрузочной платформе", false},
    {"frame bad", "", "", false},
    {"frame badtcp", "", "", false},
    {"link drop 1", "", "", false},
    {"link silence 2", "", "", false},
    {"link kvs drop 1", "", "", false},
    {"link kvk silence 2", "", "", false},
    {"frame kvs bad", "", "", false},
    {"frame kvk badtcp", "", "", false},
    {"key off", "key on", "", false},
};

} // namespace

// A machine at work with faults in a random order, seeded: whatever the instructor does, the console goes on,
// and its journal tells each fault as often as it came and nothing else.
class TestJourneyFaults : public QObject
{
    Q_OBJECT

private slots:
    void everyFaultTwice()
    {
        Journey journey(60);
        m_journey = &journey;
        journey.files().write("/programs/ch1/long.npg",
                              "N1 $1\nN2 G90 G01 LY=50 F600\nN3 G4 F120\nN4 G90 G01 LY=0 F600\nN5 M30");
        QVector<const Fault*> drawn;
        for (const Fault& fault : kFaults)
            drawn += QVector<const Fault*>(kRounds, &fault);
        std::shuffle(drawn.begin(), drawn.end(), m_dice);
        const QString trouble = journey.runLoggedIn([&] {
            loadProgram();
            for (const Fault* fault : qAsConst(drawn)) {
                if (m_dice.bounded(2) && journey.hand.text("channel1State") == "бездействие")
                    startRun();
                bring(*fault);
            }
            for (const char* link : {"lblCNC", "lblKVS", "lblKVK"})
                journey.hand.waitColour(link, Qt::green);
        });
        QCOMPARE(trouble, QString());
        int buzzes = 0;
        for (const Fault& fault : kFaults) {
            if (*fault.line)
                QVERIFY2(count(fault.line) == kRounds, fault.inject);
            buzzes += fault.buzzer ? kRounds : 0;
        }
        QCOMPARE(journey.plant().lines().filter("buzzer").size(), buzzes);
        QVERIFY(m_runs > 5);
    }

private:
    void loadProgram()
    {
        Operator& hand = m_journey->hand;
        hand.tapTab("contour", 2);
        hand.tap("pbPrgOpen_1");
        hand.tapItem("listWidget_prog", "long");
        hand.tap("pbLoad");
    }

    // Parted by ";".
    void instruct(const QString& lines)
    {
        for (const QString& line : lines.split(';', Qt::SkipEmptyParts))
            m_journey->plant().instruct(line);
    }

    void bring(const Fault& fault)
    {
        Operator& hand = m_journey->hand;
        const int before = count(fault.line);
        instruct(fault.inject);
        if (*fault.line)
            hand.waitFor(QString("the journal's line for ") + fault.inject,
                         [&] { return count(fault.line) > before; });
        else
            QThread::msleep(static_cast<unsigned long>(m_dice.bounded(300)));
        instruct(fault.mend);
        // The place of the transport module marks a datagram: once it is told, all before it has been taken.
        m_braking = !m_braking;
        const QString mark = QString("торможения ") + (m_braking ? "камеры" : "загрузочной платформы");
        const int marks = count(mark);
        instruct(m_braking ? "module 2" : "module 3");
        // A link that has just fallen may be away for some seconds before it tells.
        hand.waitFor(
            "the module's line", [&] { return count(mark) > marks; }, 30'000);
        // An event and an error stand for a second, and a link that falls meanwhile tells them again.
        if (!*fault.mend && *fault.line)
            QThread::msleep(1200);
    }

    void startRun()
    {
        Operator& hand = m_journey->hand;
        if (!hand.enabled("sbTrans"))
            hand.switchOn(false);
        QThread::msleep(300); // the record of the run before is closed
        hand.tap("pbRun");
        hand.waitText("channel1State", "выполнение");
        ++m_runs;
    }

    int count(const QString& line) const { return m_journey->journal().count(line); }

    Journey* m_journey = nullptr;
    QRandomGenerator m_dice{20261122U}; // the same draws each time
    bool m_braking = false;
    int m_runs = 0;
};

QTEST_MAIN(TestJourneyFaults)
#include "test_journey_faults.moc"
