#include "lir940p.h"
#include "sitefixture.h"
#include "trainer/wheelcounters.h"

#include <QSignalSpy>
#include <QtTest>

#include <mutex>
#include <utility>
#include <vector>

namespace {

constexpr int kFailed = -1; // the read itself fails

// A card that plays, for each channel, the readings written down for it and then repeats the last one.
class ScriptedCard : public LirDevice
{
public:
    ScriptedCard() = default;
    explicit ScriptedCard(std::vector<std::vector<qint64>> readings)
        : m_readings(std::move(readings))
    {}

    int open() override { return opens ? 7 : -1; }
    void close(int descriptor) override { closed = descriptor; }
    int read(int descriptor, quint32* word) override
    {
        wrongDescriptor = wrongDescriptor || descriptor != 7;
        const quint32 channel = *word - 1;
        if (channel >= m_readings.size())
            return -1;
        size_t& next = m_next[channel];
        const std::vector<qint64>& readings = m_readings[channel];
        const qint64 reading = readings[std::min(next++, readings.size() - 1)];
        if (channel == m_readings.size() - 1)
            rounds = int(next);
        if (reading == kFailed)
            return -1;
        *word = quint32(reading);
        return 0;
    }

    bool opens = true;
    std::atomic<int> closed{-1};
    std::atomic<int> rounds{0}; // that the last channel has been read
    std::atomic<bool> wrongDescriptor{false};

private:
    std::vector<std::vector<qint64>> m_readings{{0}, {0}, {0}};
    std::array<size_t, 3> m_next{};
};

using Moves = QList<QPair<int, int>>; // channel, detents

} // namespace

class TestLir940p : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { m_site = std::make_unique<SiteFixture>(); }
    void cleanupTestCase() { m_site.reset(); }

    void countsBecomeDetents_data();
    void countsBecomeDetents();
    void nothingIsLostOverManyReadings();
    void wheelsThatTurnEachForItself();
    void readingsOfTheThread_data();
    void readingsOfTheThread();
    void noCardNoThread();
    void theThreadEndsInTime();
    void linesOfTheTerminal_data();
    void linesOfTheTerminal();

private:
    std::unique_ptr<SiteFixture> m_site;
};

void TestLir940p::countsBecomeDetents_data()
{
    QTest::addColumn<QList<quint32>>("counters"); // the first one is where the counter settled
    QTest::addColumn<QList<int>>("steps");
    const auto row = [](const char* name, QList<quint32> counters, QList<int> steps) {
        QTest::newRow(name) << counters << steps;
    };
    row("a detent up", {100, 104}, {1});
    row("over the end", {0xFFFFFE, 0x000002}, {1});
    row("three counts wait for the next reading", {100, 103, 105, 108}, {0, 1, 1});
    row("three counts forth and back", {100, 103, 100, 97, 100}, {0, 0, 0, 0});
    row("truncated towards zero, the remainder with its sign", {1000, 993, 992, 991, 988}, {-1, -1, 0, -1});
    row("a remainder against the new direction", {100, 107, 103, 101, 100}, {1, 0, 0, -1});
    row("the longest way that is taken as it is", {0, 8'000'000}, {2'000'000});
    row("one count more went the other way", {0, 8'000'001}, {-2'194'303});
    row("the longest way down", {8'000'000, 0}, {-2'000'000});
    row("one count more down went the other way", {8'000'001, 0}, {2'194'303});
}

void TestLir940p::countsBecomeDetents()
{
    QFETCH(QList<quint32>, counters);
    QFETCH(QList<int>, steps);
    LirDecoder decoder;
    for (int i = 0; i < 8; ++i)
        QCOMPARE(decoder.take(1, counters.first() + 40 * (i % 2 ? 0 : 1)), 0);
    QList<int> told;
    for (int i = 1; i < counters.size(); ++i)
        told << decoder.take(1, counters[i]);
    QCOMPARE(told, steps);
    qint64 position = 0;
    for (int step : steps)
        position += step;
    QCOMPARE(decoder.position(1), position);
    QCOMPARE(decoder.position(0), qint64(0));
}

void TestLir940p::nothingIsLostOverManyReadings()
{
    LirDecoder decoder;
    const qint64 start = 0xFFFF00;
    for (int i = 0; i < 8; ++i)
        decoder.take(0, quint32(start));
    qint64 travelled = 0;
    qint64 told = 0;
    quint32 random = 12345;
    for (int i = 0; i < 20'000; ++i) {
        random = random * 1664525U + 1013904223U;
        travelled += int(random >> 16) % 41 - (i < 10'000 ? 15 : 25);
        told += decoder.take(0, quint32((start + travelled) & 0xFFFFFF));
        QVERIFY2(std::abs(travelled - 4 * told) < 8, qPrintable(QString::number(i)));
    }
    QCOMPARE(decoder.position(0), told);
}

void TestLir940p::wheelsThatTurnEachForItself()
{
    LirDecoder decoder;
    for (int i = 0; i < 8; ++i)
        decoder.take(i % 3, 1000);
    QCOMPARE(decoder.take(0, 1007), 1); // three counts left over
    QCOMPARE(decoder.take(1, 1001), 0); // would be a detent with them
    QCOMPARE(decoder.take(2, 988), -3);
    QCOMPARE(decoder.take(0, 1008), 1);
}

void TestLir940p::readingsOfTheThread_data()
{
    QTest::addColumn<QList<QList<qint64>>>("readings"); // a list for each channel
    QTest::addColumn<QList<QPair<int, int>>>("moves");
    using Readings = QList<QList<qint64>>;
    const qint64 bad = 0x01000000;
    // The first eight good readings are three of the first two channels and two of the third.
    QTest::newRow("the counters settle first")
        << Readings{{0, 4000, 9000, 9004}, {50, 10, 0, 8}, {700, 900, 900 - 12}}
        << Moves{{2, -3}, {0, 1}, {1, 2}};
    QTest::newRow("a failed read and a bad status are no motion, and none is lost by them")
        << Readings{{0, 0, 0, kFailed, 99 | bad, 8}, {0, 0, 0, 4 | bad, 4}, {0}} << Moves{{1, 1}, {0, 2}};
    QTest::newRow("each of the status bits spoils a reading")
        << Readings{{0, 0, 0, 400 | 1LL << 24, 400 | 2LL << 24, 400 | 4LL << 24, 400 | 8LL << 24,
                     400 | 0x40LL << 24, 4},
                    {0},
                    {0}}
        << Moves{{0, 1}};
    QTest::newRow("the other status bits do not")
        << Readings{{0, 0, 0, 4 | 0x10LL << 24, 8 | 0x20LL << 24, 12 | 0x80LL << 24}, {0}, {0}}
        << Moves{{0, 1}, {0, 1}, {0, 1}};
    QTest::newRow("bad readings do not count among the eight") << Readings{{0, 400, 800, 1200, 1600, 1604},
                                                                           {kFailed, kFailed, 0, 40, 80, 84},
                                                                           {bad, bad, bad, bad, 0}}
                                                               << Moves{{0, 1}, {1, 1}};
    QTest::newRow("a counter that comes late settles then")
        << Readings{{0}, {0}, {kFailed, kFailed, kFailed, kFailed, kFailed, 5000, 5004}} << Moves{{2, 1}};
}

void TestLir940p::readingsOfTheThread()
{
    QFETCH(QList<QList<qint64>>, readings);
    QFETCH(Moves, moves);
    std::vector<std::vector<qint64>> script;
    for (const QList<qint64>& channel : readings)
        script.emplace_back(channel.begin(), channel.end());
    ScriptedCard card(script);
    Moves told;
    {
        Lir940p reader(card);
        connect(&reader, &Lir940p::valueChanged, this, [&](int channel, int delta) {
            QCOMPARE(QThread::currentThread(), thread());
            told << qMakePair(channel, delta);
        });
        QTRY_VERIFY(card.rounds >= 12); // behind the longest script
        QTRY_VERIFY(told.size() >= moves.size());
    }
    QCoreApplication::sendPostedEvents(this);
    QCOMPARE(told, moves);
    QVERIFY(!card.wrongDescriptor);
}

void TestLir940p::noCardNoThread()
{
    ScriptedCard card;
    card.opens = false;
    {
        Lir940p reader(card);
        QVERIFY(!reader.isRunning());
    }
    QCOMPARE(card.rounds.load(), 0);
    QCOMPARE(card.closed.load(), -1);

    // The real device of a site that has none, and a file that is no card: opened, but every call fails.
    LirDevice& device = LirDevice::current();
    QCOMPARE(device.open(), -1);
    QVERIFY(QDir().mkpath(site().path("/dev")));
    QFile file(site().path("/dev/lirpci"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    const int descriptor = device.open();
    QVERIFY(descriptor >= 0);
    quint32 word = 1;
    QVERIFY(device.read(descriptor, &word) < 0);
    device.close(descriptor);
}

void TestLir940p::theThreadEndsInTime()
{
    ScriptedCard card;
    auto reader = std::make_unique<Lir940p>(card);
    QVERIFY(reader->isRunning());
    QTRY_VERIFY(card.rounds >= 2);
    QElapsedTimer timer;
    timer.start();
    reader.reset();
    QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(card.closed.load(), 7);

    { // an end right behind the start
        Lir940p brief(card);
    }
    QCOMPARE(card.closed.load(), 7);
}

void TestLir940p::linesOfTheTerminal_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("answer"); // its beginning; "-" for a line that is not the wheels'
    QTest::addColumn<int>("detents");    // of the right wheel
    const auto row = [](const char* line, const char* answer, int detents) {
        QTest::newRow(line) << line << answer << detents;
    };
    row("wheel right +25", "ok", 25);
    row("  Wheel  RIGHT  -3 ", "ok", -3);
    row("wheel left 4", "ok", 0);
    row("wheel middle 1", "error:", 0);
    row("wheel right 10001", "error:", 0);
    row("wheel right 99999999999", "error:", 0);
    row("door open", "-", 0);
}

void TestLir940p::linesOfTheTerminal()
{
    QFETCH(QString, line);
    QFETCH(QString, answer);
    QFETCH(int, detents);
    WheelCounters wheels(100);
    quint32 before = 2;
    wheels.read(0, &before);
    QVERIFY(wheelLine(&wheels, line).value_or("-").startsWith(answer));
    quint32 after = 2;
    wheels.read(0, &after);
    QCOMPARE(after, (before + quint32(4 * detents)) & 0xFFFFFF);
}

QTEST_GUILESS_MAIN(TestLir940p)
#include "test_lir940p.moc"
