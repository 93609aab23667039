#include "lir940p.h"
#include "sitefixture.h"
#include "trainer/wheelcounters.h"

#include <QtTest>

#include <numeric>

namespace {

constexpr int kFailed = -1;            // the read itself fails
using Readings = QList<QList<qint64>>; // a list for each channel

// A card that plays, for each channel, the readings written down for it and then repeats the last one.
class ScriptedCard : public LirDevice
{
public:
    explicit ScriptedCard(Readings readings = {{0}, {0}, {0}})
        : m_readings(std::move(readings))
    {}

    int open() override { return opens ? 7 : -1; }
    void close(int descriptor) override { closed = descriptor; }
    int read(int descriptor, quint32* word) override
    {
        const int channel = int(*word) - 1;
        if (descriptor != 7 || channel < 0 || channel > 2)
            wrong = true;
        const QList<qint64>& readings = m_readings.at(channel);
        const qint64 reading = readings[std::min(m_next[channel]++, readings.size() - 1)];
        if (channel == 2)
            rounds = m_next[channel];
        *word = reading == kFailed ? 400 : quint32(reading); // whatever stands there then
        return reading == kFailed ? -1 : 0;
    }

    bool opens = true;
    std::atomic<int> closed{-1};
    std::atomic<int> rounds{0}; // that the last channel has been read
    std::atomic<bool> wrong{false};

private:
    const Readings m_readings;
    int m_next[3] = {0, 0, 0};
};

} // namespace

class TestLir940p : public QObject
{
    Q_OBJECT

private slots:
    void countsBecomeDetents()
    {
        // The first counter is where it settled; then a reading for each number of detents.
        const std::tuple<const char*, QList<quint32>, QList<int>> rows[] = {
            {"a detent up", {100, 104}, {1}},
            {"over the end", {0xFFFFFE, 0x000002}, {1}},
            {"back over the end, and what is left of it", {3, 0xFFFFFE, 0xFFFFFB}, {-1, -1}},
            {"three counts wait for the next reading", {100, 103, 105, 108}, {0, 1, 1}},
            {"three counts forth and back", {100, 103, 100, 97, 100}, {0, 0, 0, 0}},
            {"towards zero, the remainder with its sign", {1000, 993, 992, 991, 988}, {-1, -1, 0, -1}},
            {"a remainder against the new direction", {100, 107, 103, 101, 100}, {1, 0, 0, -1}},
            {"the longest way that is taken as it is", {0, 8'000'000}, {2'000'000}},
            {"one count more went the other way", {0, 8'000'001}, {-2'194'303}},
            {"the longest way down", {8'000'000, 0}, {-2'000'000}},
            {"one count more down went the other way", {8'000'001, 0}, {2'194'303}},
        };
        for (const auto& [name, counters, steps] : rows) {
            LirDecoder decoder;
            for (int i = 0; i < 8; ++i)
                QCOMPARE(decoder.take(1, counters.first() + 40 * (i % 2 ? 0 : 1)), 0);
            QList<int> told;
            for (int i = 1; i < counters.size(); ++i)
                told << decoder.take(1, counters[i]);
            QVERIFY2(told == steps, name);
            QCOMPARE(decoder.position(1), std::accumulate(steps.begin(), steps.end(), qint64(0)));
            QCOMPARE(decoder.position(0), qint64(0));
        }
    }

    void wheelsThatTurnEachForItself()
    {
        LirDecoder decoder;
        for (int i = 0; i < 8; ++i)
            decoder.take(i % 3, 1000);
        QCOMPARE(decoder.take(0, 1007), 1); // three counts left over
        QCOMPARE(decoder.take(1, 1001), 0); // would be a detent with them
        QCOMPARE(decoder.take(2, 988), -3);
        QCOMPARE(decoder.take(0, 1008), 1);
    }

    void readingsOfTheThread()
    {
        const SiteFixture place;
        const auto status = [](qint64 bits, qint64 counter) { return bits << 24 | counter; };
        const qint64 bad = status(1, 0);
        // The first eight good readings are three of the first two channels and two of the third. What is
        // told: channel and detents.
        const std::tuple<const char*, Readings, const char*> rows[] = {
            {"the counters settle first",
             {{0, 4000, 9000, 9004}, {50, 10, 0, 8}, {700, 900, 900 - 12}},
             "2 -3, 0 1, 1 2"},
            {"a failed read and a bad status are no motion, and none is lost by them",
             {{0, 0, 0, kFailed, 99 | bad, 8}, {0, 0, 0, 4 | bad, 4}, {0}},
             "1 1, 0 2"},
            {"each of the status bits spoils a reading",
             {{0, 0, 0, status(1, 400), status(2, 400), status(4, 400), status(8, 400), status(0x40, 400), 4},
              {0},
              {0}},
             "0 1"},
            {"the other status bits do not",
             {{0, 0, 0, status(0x10, 4), status(0x20, 8), status(0x80, 12)}, {0}, {0}},
             "0 1, 0 1, 0 1"},
            {"bad readings do not count among the eight",
             {{0, 400, 800, 1200, 1600, 1604}, {kFailed, kFailed, 0, 40, 80, 84}, {bad, bad, bad, bad, 0}},
             "0 1, 1 1"},
            {"a counter that comes late settles then",
             {{0}, {0}, {kFailed, kFailed, kFailed, kFailed, kFailed, 5000, 5004}},
             "2 1"},
        };
        for (const auto& [name, readings, moves] : rows) {
            ScriptedCard card(readings);
            QStringList told;
            {
                Lir940p reader(card);
                connect(&reader, &Lir940p::valueChanged, this, [&](int channel, int delta) {
                    QCOMPARE(QThread::currentThread(), thread());
                    told << QString("%1 %2").arg(channel).arg(delta);
                });
                QTRY_VERIFY(card.rounds >= 12); // behind the longest script
                QTRY_VERIFY(told.size() > QString(moves).count(','));
            }
            QCoreApplication::sendPostedEvents(this);
            QVERIFY2(told.join(", ") == moves, name);
            QVERIFY(!card.wrong);
        }
    }

    void theThreadLivesWithItsCard()
    {
        const SiteFixture place;
        ScriptedCard none;
        none.opens = false;
        QVERIFY(!Lir940p(none).isRunning());
        QVERIFY(none.rounds == 0 && none.closed == -1);

        // The real device of a site that has none, and a file that is no card: opened, but every call fails.
        LirDevice& device = LirDevice::current();
        QCOMPARE(device.open(), -1);
        QVERIFY(QDir().mkpath(site().path("/dev")));
        place.write("/dev/lirpci", "");
        const int descriptor = device.open();
        QVERIFY(descriptor >= 0);
        quint32 word = 1;
        QVERIFY(device.read(descriptor, &word) < 0);
        device.close(descriptor);

        ScriptedCard card;
        auto reader = std::make_unique<Lir940p>(card);
        QVERIFY(reader->isRunning());
        QTRY_VERIFY(card.rounds >= 2);
        QElapsedTimer timer;
        timer.start();
        reader.reset();
        QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(card.closed.exchange(-1), 7);
        { // an end right behind the start
            Lir940p brief(card);
        }
        QCOMPARE(card.closed.load(), 7);
    }

    void linesOfTheTerminal()
    {
        // The line, how its answer begins ("-": it is not the wheels'), detents of the right wheel.
        for (const auto& [line, answer, detents] : {std::tuple{"wheel right +25", "ok", 25},
                                                    {"  Wheel  RIGHT  -3 ", "ok", -3},
                                                    {"wheel left 4", "ok", 0},
                                                    {"wheel middle 1", "error:", 0},
                                                    {"wheel right 10001", "error:", 0},
                                                    {"wheel right 99999999999", "error:", 0},
                                                    {"door open", "-", 0}}) {
            WheelCounters wheels(100);
            quint32 before = 2;
            wheels.read(0, &before);
            QVERIFY2(wheelLine(&wheels, line).value_or("-").startsWith(answer), line);
            quint32 after = 2;
            wheels.read(0, &after);
            QCOMPARE(after, (before + quint32(4 * detents)) & 0xFFFFFF);
        }
    }
};

QTEST_GUILESS_MAIN(TestLir940p)
#include "test_lir940p.moc"
