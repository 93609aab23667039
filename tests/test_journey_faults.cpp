#include "journey.h"

#include <QRandomGenerator>

// An hour of the machine with faults drawn at random, seeded: whatever the instructor does, the console goes
// on, and its journal tells each fault.
class TestJourneyFaults : public QObject
{
    Q_OBJECT

private slots:
    void anHourOfFaults();
};

namespace {

constexpr double kSpeed = 90;         // seconds of the machine in one real second
constexpr int kHour = 3600 * 1000;    // ms of the machine
constexpr unsigned kSeed = 20261122U; // the same hour each time

struct Fault
{
    const char* inject; // instructor's lines
    const char* mend;
    const char* line; // what the journal tells
};

const Fault kFaults[] = {
    {"breaker qf33 off", "breaker qf33 on", "QF33 питания привода координаты LY"},
    {"breaker qf18 off", "breaker qf18 on", "QF18 питания всех приводов"},
    {"breaker qf28 off", "breaker qf28 on", "(QF28)!"},
    {"phase off", "phase on", "Ошибка фаз 380 Вольт"},
    {"emergency console on", "emergency console off", "аварийного останова на пульте оператора"},
    {"emergency pendant on", "emergency pendant off", "аварийного останова на пульте переносном"},
    {"rope left on", "rope left off", "левый тросовый выключатель"},
    {"rope right on", "rope right off", "правый тросовый выключатель"},
    {"trip A F2019", "clear A", "[A]Ось A: Превышение максимально-допустимой температуры двигателя"},
    {"trip V F8060", "clear V", "[A]Ось V: Превышение максимально-допустимого тока"},
    {"message 131", "", "положительный программный конечник координаты LX"},
    {"cncerror 4711", "cncerror 0", "номер 4711!"},
    {"light led on", "light led off", "светодиодными лентами включено"},
    {"module 1", "module 0", "на загрузочной платформе"},
    {"frame bad", "", ""},
    {"frame badtcp", "", ""},
    {"link drop 1", "", ""},
    {"link silence 2", "", ""},
    {"key off", "key on", ""},
};

int count(const QString& journal, const char* line)
{
    return journal.count(QString::fromUtf8(line));
}

} // namespace

void TestJourneyFaults::anHourOfFaults()
{
    Journey journey(kSpeed);
    Operator& hand = journey.hand;
    QRandomGenerator dice(kSeed);
    int injected = 0;
    const QString trouble = journey.runLoggedIn([&] {
        QElapsedTimer clock;
        clock.start();
        while (double(clock.elapsed()) * kSpeed < kHour) {
            const Fault& fault = kFaults[dice.bounded(int(std::size(kFaults)))];
            const int before = count(journey.journal(), fault.line);
            journey.plant().instruct(fault.inject);
            if (*fault.line) {
                // A link that has just fallen may be away for some seconds before it tells.
                hand.waitFor(
                    QString("the journal's line for ") + fault.inject,
                    [&] { return count(journey.journal(), fault.line) > before; }, 30'000);
            } else {
                QThread::msleep(static_cast<unsigned long>(dice.bounded(300)));
            }
            journey.plant().instruct(fault.mend);
            // Long enough for the mended state to be told: datagrams come every 50 ms.
            QThread::msleep(static_cast<unsigned long>(150 + dice.bounded(100)));
            ++injected;
        }
        // After all of it the machine can be put to work again, once the last loss of the link is over.
        QThread::sleep(4);
        hand.waitColour("lblCNC", Qt::green);
        hand.waitEnabled("frameHead");
        hand.switchOn(true);
    });
    QCOMPARE(trouble, QString());
    QVERIFY2(injected > 50, qPrintable(QString::number(injected)));
}

QTEST_MAIN(TestJourneyFaults)
#include "test_journey_faults.moc"
