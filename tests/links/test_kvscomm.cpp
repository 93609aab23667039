#include "kvscomm.h"

#include "sitefixture.h"
#include "vacuumwire.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTextCodec>
#include <QTimer>
#include <QtTest>

#include <cmath>
#include <limits>
#include <memory>

using vacuumwire::Field;
using vacuumwire::Wire;
using Entries = QVector<StatusRecorder::Entry>;

namespace {

constexpr int recordSize = 92;

// A link to either controller, the controller's side of it, and what a window would hear.
struct Station
{
    SiteFixture fixture;
    const Wire& wire;
    const Endpoint at;
    LinkController controller;
    std::unique_ptr<QThread> thread;
    VacuumLink* link;
    std::unique_ptr<StatusRecorder> recorder;
    QStringList messages;
    QVector<int> constants;
    int ends = 0;

    explicit Station(bool kvs)
        : wire(kvs ? vacuumwire::kvs() : vacuumwire::kvk())
        , at(kvs ? site().kvs : site().kvk)
        , controller(at)
    {
        kvs ? attach<KVSTCPthread, KVSStatus>() : attach<KVKTCPthread, KVKStatus>();
    }
    template <class Tcp, class Status>
    void attach()
    {
        auto own = std::make_unique<Tcp>();
        link = own.get();
        recorder = std::make_unique<StatusRecorder>(*own, Status::staticMetaObject);
        QObject::connect(own.get(), &Tcp::message, recorder.get(), [this](auto& t) { messages += t; });
        QObject::connect(own.get(), &Tcp::constsReceived, recorder.get(), [this](int n) { constants += n; });
        QObject::connect(own.get(), &Tcp::disconnected, recorder.get(), [this] { ++ends; });
        thread = std::move(own);
    }
    bool open() { return link->connect(at.host, at.tcpPort, at.udpPort) && controller.accept(); }
    // Sends until the telemetry thread listens and the whole datagram was told.
    bool prime(const QByteArray& datagram)
    {
        recorder->entries.clear();
        return QTest::qWaitFor([&] {
            controller.datagram(datagram);
            return recorder->entries.size() >= wire.fields.size();
        });
    }
    // What the window hears of these datagrams, `rest` coming behind them. The last field of all, otherwise
    // left alone, marks where it ends.
    Entries hear(const QList<QByteArray>& datagrams, const QByteArray& rest)
    {
        recorder->entries.clear();
        QByteArray mark = rest;
        wire.put(mark, wire.order.last(), 7);
        for (const QByteArray& d : datagrams + QList<QByteArray>{mark, rest})
            controller.datagram(d);
        const auto ended = [&] {
            const int n = recorder->entries.size();
            return n >= 2 && recorder->entries[n - 2].name == wire.order.last();
        };
        if (!QTest::qWaitFor(ended))
            return {{QStringLiteral("no mark"), {}}};
        recorder->entries.resize(recorder->entries.size() - 2);
        return recorder->entries;
    }
};

QByteArray record(int id, float value, const QByteArray& text)
{
    QByteArray bytes(recordSize, '\0');
    qToLittleEndian(id, bytes.data());
    qToLittleEndian(value, bytes.data() + 4);
    return bytes.replace(8, text.size(), text);
}

QByteArray records(int count)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i)
        bytes += record(1000 + i, float(i) / 4, "text " + QByteArray::number(i));
    return bytes;
}

void bothLinks()
{
    QTest::addColumn<bool>("kvs");
    QTest::newRow("KVS") << true;
    QTest::newRow("KVK") << false;
}

} // namespace

class TestKvsComm : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { DebugLines::collect(); }
    void cleanupTestCase() { qInstallMessageHandler(nullptr); }
    void init() { DebugLines::clear(); }

    void datagramsTellEachFieldInOrder_data() { bothLinks(); }
    void datagramsTellEachFieldInOrder();
    void oddDatagrams_data() { bothLinks(); }
    void oddDatagrams();
    void wrongSizeEndsTheProcess_data();
    void wrongSizeEndsTheProcess();
    void commandsAndTexts_data() { bothLinks(); }
    void commandsAndTexts();
    void badHeadsEndTheConnection_data();
    void badHeadsEndTheConnection();
    void constants_data();
    void constants();
    void constantsCutAnywhere_data() { bothLinks(); }
    void constantsCutAnywhere();
    void lossAndReturn_data() { bothLinks(); }
    void lossAndReturn();
};

void TestKvsComm::datagramsTellEachFieldInOrder()
{
    QFETCH(bool, kvs);
    Station s(kvs);
    QCOMPARE(s.recorder->count(), kvs ? 107 : 38);
    QCOMPARE(s.wire.fields.last().offset + 4, s.wire.size);
    QVERIFY(s.open());

    // Each field holds a value found nowhere else, as far as its type allows.
    QByteArray datagram = s.wire.empty();
    QHash<QString, QVariant> expected;
    int n = 0;
    for (const Field& field : s.wire.fields) {
        ++n;
        const double values[] = {-1.0 * n, 4e9 + n, double(n % 2), n + 0.5, n + 1e-9}; // by kind
        const double value = values[field.kind];
        s.wire.put(datagram, field, value);
        const QVariant variants[] = {int(value), field.kind == vacuumwire::U ? uint(value) : 0u, value != 0,
                                     float(value), value};
        expected.insert(field.name, variants[field.kind]);
    }
    QVERIFY(s.prime(datagram));
    QCOMPARE(s.recorder->names(), s.wire.order);
    for (const auto& entry : qAsConst(s.recorder->entries)) {
        QVERIFY2(entry.value == expected[entry.name] &&
                     entry.value.userType() == expected[entry.name].userType(),
                 qPrintable(entry.name));
    }

    // Each alone, and only when it changes.
    datagram = s.wire.empty();
    s.hear({}, datagram);
    for (const Field& field : s.wire.fields) {
        if (field.name == s.wire.order.last())
            continue; // the mark itself
        s.wire.put(datagram, field, 1);
        const Entries heard = s.hear({datagram, datagram}, datagram);
        QVERIFY2(heard.size() == 1 && heard[0].name == field.name, qPrintable(field.name));
        QCOMPARE(heard[0].value.toDouble(), 1.0);
    }
}

void TestKvsComm::oddDatagrams()
{
    QFETCH(bool, kvs);
    Station s(kvs);
    QVERIFY(s.open());
    const QByteArray zero = s.wire.empty();
    QVERIFY(s.prime(zero)); // all zero, and still told

    const auto with = [&](const char* name, double value) {
        QByteArray datagram = zero;
        s.wire.put(datagram, QString::fromLatin1(name), value);
        return datagram;
    };
    // A pressure that is no number is told with every datagram, then as what follows.
    const char* const pressure = kvs ? "PT2" : "PT5";
    const QByteArray nan = with(pressure, std::numeric_limits<double>::quiet_NaN());
    Entries heard = s.hear({nan, nan}, zero);
    QCOMPARE(heard.size(), 3);
    QVERIFY(std::isnan(heard[0].value.toDouble()) && std::isnan(heard[1].value.toDouble()));
    QCOMPARE(s.hear({with(pressure, -0.0)}, zero).size(), 0);

    // Flags: raw bytes compared, a clean truth told.
    const char* const flag = kvs ? "EmStop" : "ShutdownLock";
    heard = s.hear({with(flag, 1), with(flag, 2)}, zero);
    QCOMPARE(heard.size(), 3);
    QCOMPARE(heard[0].value, QVariant(true));
    QCOMPARE(heard[1].value, QVariant(true));
    QCOMPARE(heard[2].value, QVariant(false));

    // Bytes that nobody reads.
    QByteArray padded = zero;
    for (int i : kvs ? QVector<int>{2, 3, 306, 307} : QVector<int>{2, 3, 100, 101, 102, 103})
        padded[i] = char(0xee);
    QCOMPARE(s.hear({padded}, zero).size(), 0);

    // From elsewhere, of any size.
    s.controller.stray(with(pressure, 5));
    s.controller.stray(zero.left(100));
    QCOMPARE(s.hear({}, zero).size(), 0);

    // A wrong signature is neither told nor remembered.
    QByteArray foreign = with(pressure, 5);
    foreign[0] = 0x52;
    QCOMPARE(s.hear({foreign, zero}, zero).size(), 0);
    QCOMPARE(DebugLines::count(QStringLiteral("Bad signature of drive UDP packet")), 1);
    QVERIFY(s.link->connected());
}

void TestKvsComm::wrongSizeEndsTheProcess_data()
{
    QTest::addColumn<bool>("kvs");
    QTest::addColumn<int>("size");
    for (int size : {0, 144, 403, 408})
        QTest::addRow("KVS %d bytes", size) << true << size;
    for (int size : {143, 296, 404})
        QTest::addRow("KVK %d bytes", size) << false << size;
}

void TestKvsComm::wrongSizeEndsTheProcess()
{
    QFETCH(bool, kvs);
    QFETCH(int, size);
    Station s(kvs);
    QProcess console;
    console.start(QCoreApplication::applicationFilePath(),
                  {kvs ? QStringLiteral("--kvs") : QStringLiteral("--kvk"), QString::number(s.at.tcpPort),
                   QString::number(s.at.udpPort)});
    QVERIFY(s.controller.accept());
    QTRY_VERIFY_WITH_TIMEOUT((s.controller.datagram(s.wire.empty().leftJustified(size, '\0', true)),
                              console.state() == QProcess::NotRunning),
                             30000);
    QCOMPARE(console.exitStatus(), QProcess::CrashExit);
    const QByteArray last = console.readAllStandardError();
    QVERIFY2(last.contains("ASSERT: \"s == (((int)sizeof(pack)+3)/4)*4\""), last.constData());
}

void TestKvsComm::commandsAndTexts()
{
    QFETCH(bool, kvs);
    Station s(kvs);
    const QString name = kvs ? QStringLiteral("KVS") : QStringLiteral("KVK");
    QVERIFY(!s.link->command(QStringLiteral("VP4 ON")));
    QCOMPARE(DebugLines::count(name + QStringLiteral("TCPthread: > \"VP4 ON\"")), 1);

    QVERIFY(s.open());
    QByteArray expected;
    for (const QString& text : {QStringLiteral("BKU(3,1)"), QStringLiteral("Дверь"), QString(1200, 'z')}) {
        QVERIFY(s.link->command(text));
        expected += frame(text.toUtf8());
    }
    QTRY_COMPARE(s.controller.peer->bytesAvailable(), qint64(expected.size()));
    QCOMPARE(s.controller.peer->readAll(), expected);

    // Two bytes of a head count as a head; what is missing is zero.
    s.controller.send("\x50\x56");
    QTRY_COMPARE(s.messages.size(), 1);
    s.controller.send(frame("") + frame("Насос включен") + frame(QByteArray("seen\0unseen", 11)));
    QTRY_COMPARE(s.messages.size(), 4);
    const QByteArray split = frame("in pieces");
    for (int i = 4; i <= split.size(); ++i) {
        s.controller.send(i == 4 ? split.left(4) : split.mid(i - 1, 1));
        QTRY_VERIFY(s.controller.taken());
    }
    QTRY_COMPARE(s.messages.size(), 5);
    const QRegularExpression stamp(QStringLiteral("^\\[\\d\\d:\\d\\d:\\d\\d\\] (.*)$"));
    QStringList texts;
    for (const QString& m : qAsConst(s.messages))
        texts += stamp.match(m).captured(1);
    QCOMPARE(
        texts,
        QStringList(
            {{}, {}, QStringLiteral("Насос включен"), QStringLiteral("seen"), QStringLiteral("in pieces")}));
    QCOMPARE(DebugLines::count((kvs ? QStringLiteral("Vacuum") : name) + QStringLiteral("TCPthread: < in")),
             1);
    QVERIFY(s.link->connected());
}

void TestKvsComm::badHeadsEndTheConnection_data()
{
    QTest::addColumn<bool>("kvs");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("constants of KVK at KVS") << true << frame(records(1), 0x5651);
    QTest::newRow("constants of KVS at KVK") << false << frame(records(1), 0x5652);
    QTest::newRow("bytes in wrong order") << true << frame("", 0x5056);
    QTest::newRow("one byte") << false << QByteArray("\x50");
}

void TestKvsComm::badHeadsEndTheConnection()
{
    QFETCH(bool, kvs);
    QFETCH(QByteArray, bytes);
    Station s(kvs);
    QVERIFY(s.open());
    s.controller.send(bytes);
    QTRY_COMPARE(s.ends, 1);
    QVERIFY(!s.link->connected());
    QCOMPARE(DebugLines::count(QStringLiteral("Bad packet signature")), 1);
    QVERIFY(s.messages.isEmpty() && s.constants.isEmpty());
}

void TestKvsComm::constants_data()
{
    QTest::addColumn<bool>("kvs");
    QTest::addColumn<QByteArray>("payload");
    QTest::addColumn<int>("count");
    for (const bool kvs : {true, false}) {
        const char* const name = kvs ? "KVS" : "KVK";
        QTest::addRow("%s none", name) << kvs << QByteArray() << 0;
        QTest::addRow("%s three", name) << kvs << records(3) << 3;
        QTest::addRow("%s less than one", name) << kvs << records(1).left(91) << 0;
        QTest::addRow("%s a broken tail", name) << kvs << records(3) + records(1).left(50) << 3;
        QTest::addRow("%s as many as there is room for", name) << kvs << records(100) << 100;
        QTest::addRow("%s one too many", name) << kvs << records(101) << 100;
        QTest::addRow("%s the longest packet", name) << kvs << records(712) << 100;
    }
}

void TestKvsComm::constants()
{
    QFETCH(bool, kvs);
    QFETCH(QByteArray, payload);
    QFETCH(int, count);
    Station s(kvs);
    QVERIFY(s.open());
    s.controller.send(frame(records(5), s.wire.constants)); // an earlier table does not show through
    QTRY_COMPARE(s.constants, QVector<int>({5}));
    s.controller.send(frame(payload, s.wire.constants) + frame("behind"));
    QTRY_COMPARE(s.messages.size(), 1); // the packet was read to its end
    QCOMPARE(s.constants, QVector<int>({5, count}));

    int stored = -1;
    const void* buffer = s.link->getVacConsts(stored);
    QCOMPARE(stored, count);
    QVERIFY(std::equal(payload.cbegin(), payload.cbegin() + count * recordSize,
                       static_cast<const char*>(buffer)));
    const int came = payload.size() / recordSize;
    QCOMPARE(DebugLines::count(QStringLiteral("%1 constants came, the first 100 are kept").arg(came)),
             came > 100 ? 1 : 0);
    QCOMPARE(DebugLines::count(QStringLiteral("1002 \"0.5\" text 2")), count > 2 ? 2 : 1);
}

void TestKvsComm::constantsCutAnywhere()
{
    QFETCH(bool, kvs);
    Station s(kvs);
    const QByteArray text =
        QTextCodec::codecForName("Windows-1251")->fromUnicode(QStringLiteral("Порог, Па"));
    const QByteArray full = QByteArray(84, '\xdf'); // the field to its last byte
    const QByteArray payload = record(-7, 12345678, text) + record(8, 1e-3F, full) + records(2);

    for (int cut : {0, 1, 91, 92, 93, 275, 276, 367}) {
        DebugLines::clear();
        s.constants.clear();
        s.ends = 0;
        QVERIFY(s.open());
        s.controller.send(frame(payload, s.wire.constants).left(4 + cut));
        const bool byConsole = cut % 2 == 1;
        if (byConsole) {
            QTRY_VERIFY(s.controller.taken());
            QVERIFY(s.link->disconnect());
        } else {
            s.controller.peer->close();
        }
        QTRY_COMPARE(s.ends, 1);
        QCOMPARE(s.constants, QVector<int>({cut / recordSize}));
        QCOMPARE(DebugLines::count(kvs ? QStringLiteral("KVSTCPthread stopped")
                                       : QStringLiteral("KVKTCPthread stopped")),
                 byConsole ? 1 : 0);
    }
    int count = 0;
    const auto* list = static_cast<const VacuumConst*>(s.link->getVacConsts(count));
    QCOMPARE(count, 3);
    QCOMPARE(list[0].id, -7);
    QCOMPARE(list[0].description(), QStringLiteral("Порог, Па"));
    QCOMPARE(list[1].description(), QString(84, QChar(0x42f)));
    QCOMPARE(DebugLines::count(QStringLiteral("-7 \"1.23457e+07\" Порог, Па")), 1);
}

void TestKvsComm::lossAndReturn()
{
    QFETCH(bool, kvs);
    Station s(kvs);
    QVERIFY(s.open());
    QByteArray datagram = s.wire.empty();
    s.wire.put(datagram, s.wire.fields[0], 3);
    QVERIFY(s.prime(datagram));
    QVERIFY(!s.link->connect(s.at.host, s.at.tcpPort, s.at.udpPort)); // and leaves the open link alone
    QVERIFY(s.link->connected());

    // Alive on TCP, silent on UDP.
    QElapsedTimer silence;
    silence.start();
    QTRY_COMPARE(s.ends, 1);
    QVERIFY2(silence.elapsed() >= 950, qPrintable(QString::number(silence.elapsed())));
    QVERIFY(!s.link->connected());
    QCOMPARE(s.recorder->entries.size(), s.wire.fields.size()); // a loss tells nothing of the fields

    // TCP falls while datagrams keep coming; each return tells everything once.
    QTimer beat;
    connect(&beat, &QTimer::timeout, this, [&] { s.controller.datagram(datagram); });
    beat.start(10);
    for (int round = 2; round <= 4; ++round) {
        QVERIFY(s.open());
        QTRY_COMPARE(s.recorder->entries.size(), round * s.wire.fields.size());
        s.controller.peer->close();
        QTRY_COMPARE(s.ends, round);
    }
    beat.stop();
    QCOMPARE(s.recorder->entries.size(), 4 * s.wire.fields.size());

    s.controller.server.close();
    QVERIFY(!s.open());
    QVERIFY(!s.link->connect(QString(), s.at.tcpPort, s.at.udpPort));
    QCOMPARE(DebugLines::count(QStringLiteral("tcp connect() error: Connection refused")), 1);
    QCOMPARE(DebugLines::count(kvs ? QStringLiteral("KVS gethostbyname() error: ")
                                   : QStringLiteral("gethostbyname() error: ")),
             1);
    QCOMPARE(DebugLines::count(QStringLiteral("KVS connect")), kvs ? 7 : 0);
    QCOMPARE(DebugLines::count(QStringLiteral("KVS tcp connect() done")), kvs ? 4 : 0);
    QCOMPARE(DebugLines::count(kvs ? QStringLiteral("KVSTCPthread started")
                                   : QStringLiteral("KVKTCPthread started")),
             4);
    QVERIFY(!s.link->disconnect());
}

// With "--kvs" or "--kvk" the program is a bare console that waits for its controller.
template <class Link>
int console(QCoreApplication& app)
{
    const QStringList arguments = app.arguments();
    Link link;
    return link.connect(QStringLiteral("127.0.0.1"), arguments[2].toInt(), arguments[3].toInt()) ? app.exec()
                                                                                                 : 1;
}

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QString role = app.arguments().value(1);
    if (role == QLatin1String("--kvs"))
        return console<KVSTCPthread>(app);
    if (role == QLatin1String("--kvk"))
        return console<KVKTCPthread>(app);
    TestKvsComm test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_kvscomm.moc"
