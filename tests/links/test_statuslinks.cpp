#include "comparetext.h"
#include "deathtest.h"
#include "drivecomm.h"
#include "drivecontroller.h"
#include "kvscomm.h"
#include "sitefixture.h"
#include "vacuumwire.h"

#include <QtTest>

#include <cmath>
#include <limits>
#include <netinet/tcp.h>

using statuswire::Field;
using statuswire::Wire;
using Entries = QVector<StatusRecorder::Entry>;

namespace {

enum Which { Drive, Kvs, Kvk };

// In what the links differ as far as a test can tell.
struct Custom
{
    QString tag; // of its lines
    const char* host;
    const char* text;
    QString stopped;
    const Wire& (*wire)();
    Endpoint Site::*at;
    const char* number;  // a field that may be no number
    const char* flag;    // a field of one byte
    QVector<int> unread; // bytes
};

// clang-format off
const Custom customs[] = {
    {"Drive", "DRIVE ", "Drive", "Drive TCP thread stopped", drivewire::drive, &Site::drive,
     "LY", "PhaseAlarm", {2, 3, 289, 290, 294, 295}},
    {"KVS", "KVS ", "Vacuum", "KVSTCPthread stopped", vacuumwire::kvs, &Site::kvs,
     "PT2", "EmStop", {2, 3, 306, 307}},
    {"KVK", "", "KVK", "KVKTCPthread stopped", vacuumwire::kvk, &Site::kvk,
     "PT5", "ShutdownLock", {2, 3, 100, 101, 102, 103}},
};
// clang-format on

int said(const QString& start) // how many debug lines begin so
{
    return DebugLines::count(start);
}

// A link to one of the controllers, the controller's side of it, and what a window would hear.
struct Station
{
    SiteFixture fixture;
    const Custom& own;
    const Wire& wire;
    const Endpoint at;
    LinkController controller;
    std::unique_ptr<QThread> thread;
    TcpLink* link = nullptr;
    VacuumLink* vacuum = nullptr; // null for the drives
    std::unique_ptr<StatusRecorder> recorder;
    QStringList messages;
    QVector<int> constants;
    int ends = 0;

    explicit Station(int which)
        : own(customs[which])
        , wire(own.wire())
        , at(site().*own.at)
        , controller(at)
    {
        which == Drive ? attach<DriveTCPthread, DriveStatus>()
        : which == Kvs ? attach<KVSTCPthread, KVSStatus>()
                       : attach<KVKTCPthread, KVKStatus>();
    }
    template <class Tcp, class Status>
    void attach()
    {
        auto made = std::make_unique<Tcp>();
        link = made.get();
        recorder = std::make_unique<StatusRecorder>(*made, Status::staticMetaObject);
        QObject::connect(made.get(), &Tcp::message, recorder.get(), [this](auto& t) { messages += t; });
        QObject::connect(made.get(), &Tcp::disconnected, recorder.get(), [this] { ++ends; });
        if constexpr (std::is_base_of_v<VacuumLink, Tcp>) {
            vacuum = made.get();
            QObject::connect(made.get(), &Tcp::constsReceived, recorder.get(),
                             [this](int n) { constants += n; });
        }
        thread = std::move(made);
    }
    bool connect() { return link->connect(at.host, at.tcpPort, at.udpPort); }
    bool open() { return connect() && controller.accept(); }
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
            return {{"no mark", {}}};
        recorder->entries.resize(recorder->entries.size() - 2);
        return recorder->entries;
    }
    QByteArray with(const char* name, double value) const
    {
        QByteArray datagram = wire.empty();
        wire.put(datagram, QString::fromLatin1(name), value);
        return datagram;
    }
    // The controller reads the same bytes, and they come in one by one.
    void sendInPieces(const QByteArray& bytes, int from)
    {
        controller.send(bytes.left(from));
        for (int i = from; i < bytes.size(); ++i) {
            QVERIFY(QTest::qWaitFor([&] { return controller.taken(); }));
            controller.datagram(wire.empty()); // so many steps may last longer than a link may be silent
            controller.send(bytes.mid(i, 1));
        }
    }
    QStringList texts() const // without their time stamps
    {
        QStringList all = messages;
        const QRegularExpression stamp("^\\[\\d\\d:\\d\\d:\\d\\d\\] ");
        for (QString& m : all)
            m = m.contains(stamp) ? m.mid(11) : "no stamp: " + m;
        return all;
    }
};

constexpr int recordSize = 92;

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

void allLinks()
{
    QTest::addColumn<int>("which");
    for (const int which : {Drive, Kvs, Kvk})
        QTest::newRow(qPrintable(customs[which].tag)) << which;
}

} // namespace

// The links to the three controllers that tell their state by datagram.
class TestStatusLinks : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { DebugLines::collect(); }
    void cleanupTestCase() { DebugLines::leave(); }
    void init() { DebugLines::clear(); }

    void datagramsTellEachFieldInOrder_data() { allLinks(); }
    void datagramsTellEachFieldInOrder()
    {
        QFETCH(int, which);
        Station s(which);
        QCOMPARE(s.recorder->count(), which == Drive ? 93 : which == Kvs ? 107 : 38);
        QVERIFY(s.open());

        // Each field holds a value found nowhere else, as far as its type allows.
        QByteArray datagram = s.wire.empty();
        QHash<QString, QVariantList> expected; // of a name that several fields have, one after the other
        int n = 0;
        for (const Field& field : s.wire.fields) {
            ++n;
            const double values[] = {-1.0 * n, 4e9 + n, double(n % 2), n + 0.5, n + 1e-9}; // by kind
            const double value = values[field.kind];
            s.wire.put(datagram, field, value);
            const QVariant variants[] = {int(value), field.kind == statuswire::U ? uint(value) : 0u,
                                         value != 0, float(value), value};
            expected[field.name] += variants[field.kind];
        }
        QVERIFY(s.prime(datagram));
        QCOMPARE(s.recorder->names(), s.wire.order);
        if (const auto* drives = qobject_cast<DriveTCPthread*>(s.thread.get()))
            QCOMPARE(drives->channelState(), expected["ChannelState1"].first().toUInt());
        for (const auto& entry : qAsConst(s.recorder->entries)) {
            const QVariant value = expected[entry.name].takeFirst();
            QVERIFY2(entry.value == value && entry.value.userType() == value.userType(),
                     qPrintable(entry.name));
        }

        // Each alone, and only when it changes; so many at once as the system keeps for a slow receiver.
        datagram = s.wire.empty();
        s.hear({}, datagram);
        QList<QByteArray> sent;
        QStringList told;
        for (const Field& field : s.wire.fields) {
            if (field.name != s.wire.order.last()) { // the mark itself
                s.wire.put(datagram, field, 1);
                sent << datagram << datagram;
                told << field.name;
            }
            if (sent.size() >= 40 || &field == &s.wire.fields.last()) {
                for (const auto& entry : s.hear(std::exchange(sent, {}), datagram)) {
                    QCOMPARE(entry.name, told.isEmpty() ? "nothing more" : told.takeFirst());
                    QCOMPARE(entry.value.toDouble(), 1.0);
                }
                QCOMPARE(told, QStringList());
            }
        }
    }

    // A flood is thinned out for a window that stands still, and the last state comes all the same; what
    // comes at the controller's own pace is told whole.
    void aWindowThatFallsBehind_data() { allLinks(); }
    void aWindowThatFallsBehind()
    {
        QFETCH(int, which);
        Station s(which);
        QVERIFY(s.open() && s.prime(s.wire.empty()));
        s.recorder->entries.clear();
        QElapsedTimer flood;
        flood.start();
        for (int n = 1; n <= 400; ++n) {
            s.controller.datagram(s.with(s.own.number, n));
            QThread::msleep(1);
        }
        const auto& told = s.recorder->entries;
        const int most = 34 + int(flood.elapsed()) / 40;
        QTRY_COMPARE(told.isEmpty() ? 0 : told.last().value.toInt(), 400);
        QVERIFY2(told.size() > 32 && told.size() <= most, qPrintable(QString::number(told.size())));
        s.recorder->entries.clear();
        for (int n = 1; n <= 40; ++n) {
            s.controller.datagram(s.with(s.own.number, n));
            QThread::msleep(50);
        }
        QTRY_COMPARE(told.size(), 40);
    }

    void oddDatagrams_data() { allLinks(); }
    void oddDatagrams()
    {
        QFETCH(int, which);
        Station s(which);
        // The controller may be known by a name.
        QVERIFY(s.link->connect("localhost", s.at.tcpPort, s.at.udpPort) && s.controller.accept());
        const QByteArray zero = s.wire.empty();
        QVERIFY(s.prime(zero)); // all zero, and still told

        // What is no number is told with every datagram, then as what follows.
        const QByteArray nan = s.with(s.own.number, std::numeric_limits<double>::quiet_NaN());
        Entries heard = s.hear({nan, nan}, zero);
        QCOMPARE(heard.size(), 3);
        QVERIFY(std::isnan(heard[0].value.toDouble()) && std::isnan(heard[1].value.toDouble()));
        QCOMPARE(s.hear({s.with(s.own.number, -0.0)}, zero).size(), 0);

        // Flags: raw bytes compared, a clean truth told.
        heard = s.hear({s.with(s.own.flag, 1), s.with(s.own.flag, 2)}, zero);
        QCOMPARE(heard.size(), 3);
        QVERIFY(heard[0].value == true && heard[1].value == true && heard[2].value == false);

        // Bytes that nobody reads.
        QByteArray padded = zero;
        for (int i : s.own.unread)
            padded[i] = char(0xee);
        QCOMPARE(s.hear({padded}, zero).size(), 0);

        // From elsewhere, of any size; many of them are no silence of the controller.
        const QByteArray forged = s.with(s.own.number, 5);
        for (const QByteArray& datagram : {QByteArray(), QByteArray(1000, 'x')})
            s.controller.stray(datagram);
        for (int i = 0; i < 50; ++i)
            s.controller.stray(forged);
        QCOMPARE(s.hear({}, zero).size(), 0);
        QCOMPARE(said("Dropped a datagram from"), 1);

        // A wrong signature is neither told nor remembered, but a sign of life: more of them than silent
        // waits.
        QByteArray foreign = forged;
        foreign[0] = 0x52;
        QCOMPARE(s.hear(QVector<QByteArray>(15, foreign).toList() << zero, zero).size(), 0);
        QCOMPARE(said("Bad signature of drive UDP packet"), 15);
        QTest::qWait(150); // a link that counts as lost would end within 100 ms
        QVERIFY(s.link->connected() && s.ends == 0);
    }

    void wrongSizeEndsTheProcess()
    {
        for (const auto& [which, size] : {std::pair{Drive, 0}, {Drive, 294}, {Kvs, 144}, {Kvk, 404}}) {
            Station s(which);
            QVERIFY(deathOf([&] {
                        s.connect();
                        for (int i = 0; i < 500; ++i) { // the telemetry thread may not listen yet
                            s.controller.datagram(s.wire.empty().leftJustified(size, '\0', true));
                            QThread::msleep(10);
                        }
                    }).contains("ASSERT: \"s == (((int)sizeof(pack)+3)/4)*4\""));
        }
    }

    void commandsAndTexts_data() { allLinks(); }
    void commandsAndTexts()
    {
        QFETCH(int, which);
        Station s(which);
        // Closed: a debug line and nothing else.
        QVERIFY(!s.link->command("VP4 ON"));
        QCOMPARE(said(s.own.tag + "TCPthread: > \"VP4 ON\""), 1);

        QVERIFY(s.open());
        QByteArray expected;
        for (const QString& text :
             QStringList{"BKU(3,1)", {}, "Дверь", QString(1000, 'z'), QString(1500, 'y')}) {
            QVERIFY(s.link->command(text));
            expected += frame(text.toUtf8());
        }
        QTRY_COMPARE(s.controller.peer->bytesAvailable(), qint64(expected.size()));
        QCOMPARE(s.controller.peer->readAll(), expected);

        s.controller.send(frame("") + frame("Насос включен") + frame(QByteArray("seen\0unseen", 11)));
        s.sendInPieces(frame("in pieces"), 4);
        QTRY_COMPARE(s.messages.size(), 4);
        QCOMPARE(s.texts(), QStringList({{}, "Насос включен", "seen", "in pieces"}));
        QCOMPARE(said(s.own.text + QString("TCPthread: < in pieces")), 1);
        s.controller.send(frame(QByteArray(65535, 'q')));
        QTRY_COMPARE(s.messages.size(), 5);
        QCOMPARE(s.texts().last().size(), 65535);
        QVERIFY(s.link->connected());
    }

    void commandsGoOutAtOnce()
    {
        Station s(Drive);
        QVERIFY(s.open());
        int noDelay = 0;
        socklen_t size = sizeof noDelay;
        QCOMPARE(::getsockopt(s.controller.consoleEnd(), IPPROTO_TCP, TCP_NODELAY, &noDelay, &size), 0);
        QVERIFY(noDelay != 0);

        // A controller that does not read: what the system takes no more is told, and refused at once.
        for (int i = 0; i < 1'000'000 && s.link->command(QString(900, 'z')); ++i) {
        }
        QCOMPARE(said("send() error: Resource temporarily unavailable"), 1);
        QVERIFY(s.link->connected());
    }

    void badHeadsEndTheConnection()
    {
        const QByteArray half("\x50\x56", 2);
        for (const auto& [which, bytes] : {std::pair{Drive, frame(records(1), 0x5652)},
                                           {Drive, half},
                                           {Kvs, frame("", 0x5056)},
                                           {Kvs, frame(records(1), 0x5651)}, // constants of the other one
                                           {Kvk, frame(records(1), 0x5652)},
                                           {Kvk, half.left(1)}}) {
            Station s(which);
            DebugLines::clear();
            QVERIFY(s.open());
            if (which != Drive) { // here half a head counts as a head; what is missing is zero
                s.controller.send(half);
                QTRY_COMPARE(s.texts(), QStringList(QString()));
            }
            s.controller.send(bytes);
            QTRY_COMPARE(s.ends, 1);
            QVERIFY(!s.link->connected());
            QCOMPARE(said("Bad packet signature"), 1);
            QVERIFY(s.messages.size() == (which != Drive) && s.constants.isEmpty());
        }
    }

    void constants()
    {
        Station s(Kvk);
        QVERIFY(s.open());
        const QPair<QByteArray, int> tables[] = {{records(5), 5},
                                                 {{}, 0}, // an earlier table does not show through
                                                 {records(3) + records(1).left(91), 3},
                                                 {records(100), 100},
                                                 {records(101), 100},
                                                 {records(712), 100}}; // the longest packet
        for (const auto& [payload, count] : tables) {
            DebugLines::clear();
            s.constants.clear();
            s.messages.clear();
            s.controller.send(frame(payload, s.wire.constants) + frame("behind"));
            QTRY_COMPARE(s.messages.size(), 1); // the packet was read to its end
            QCOMPARE(s.constants, QVector<int>({count}));
            int stored = -1;
            const auto* buffer = static_cast<const char*>(s.vacuum->getVacConsts(stored));
            QCOMPARE(stored, count);
            QCOMPARE(QByteArray(buffer, count * recordSize), payload.left(count * recordSize));
            const int all = payload.size() / recordSize;
            QCOMPARE(said(QString("%1 constants came, the first 100 are kept").arg(all)), all > 100 ? 1 : 0);
            QCOMPARE(said("1002 \"0.5\" text 2"), count > 2 ? 1 : 0);
        }
    }

    void constantsCutShort()
    {
        Station s(Kvs);
        const QByteArray text = QTextCodec::codecForName("Windows-1251")->fromUnicode("Порог, Па");
        const QByteArray full = QByteArray(84, '\xdf'); // the field to its last byte
        const QByteArray payload = record(-7, 12345678, text) + record(8, 1e-3F, full) + records(2);
        for (int cut : {0, 91, 276}) {
            s.constants.clear();
            QVERIFY(s.open());
            s.controller.send(frame(payload, s.wire.constants).left(4 + cut));
            QTRY_VERIFY(s.controller.taken());
            s.link->disconnect();
            QTRY_COMPARE(s.constants, QVector<int>({cut / recordSize}));
        }
        QCOMPARE(said(s.own.stopped), 3);
        int count = 0;
        const auto* list = static_cast<const VacuumConst*>(s.vacuum->getVacConsts(count));
        QCOMPARE(count, 3);
        QCOMPARE(list[0].id, -7);
        QCOMPARE(list[0].description(), "Порог, Па");
        QCOMPARE(list[1].description(), QString(84, QChar(0x42f)));
        QCOMPARE(said("-7 \"1.23457e+07\" Порог, Па"), 1);
    }

    void refusedConnections_data() { allLinks(); }
    void refusedConnections()
    {
        QFETCH(int, which);
        Station s(which);
        QVERIFY(!s.link->disconnect());
        QVERIFY(s.open());
        QVERIFY(!s.connect()); // and leaves the open link alone
        QVERIFY(s.link->connected());
        QVERIFY(s.prime(s.wire.empty()));
        QVERIFY(s.link->disconnect() && !s.link->connected());
        QTRY_COMPARE(s.ends, 1);
        QVERIFY(s.open());
        QVERIFY(QMetaObject::invokeMethod(s.thread.get(), "UDPdisconnected"));
        QTRY_COMPARE(s.ends, 2);

        s.controller.server.close();
        QVERIFY(!s.connect());
        QVERIFY(!s.link->connect(QString(), s.at.tcpPort, s.at.udpPort));
        QVERIFY(!s.link->connected() && !s.link->disconnect());
        QCOMPARE(said("tcp connect() error: Connection refused"), 1);
        QCOMPARE(said(s.own.host + QString("gethostbyname() error: ")), 1);
        QCOMPARE(said("KVS connect"), which == Kvs ? 5 : 0);
        QCOMPARE(said("KVS tcp connect() done"), which == Kvs ? 2 : 0);
        QCOMPARE(said(s.own.tag + "TCPthread started"), 2);
    }

    void aSlowPeerIsGivenUp()
    {
        // A peer that does not answer within a millisecond: here one whose queue is full.
        Station s(Drive);
        const int busy = ::socket(AF_INET, SOCK_STREAM, 0);
        sockaddr_in address{};
        socklen_t size = sizeof address;
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        auto* const at = reinterpret_cast<sockaddr*>(&address);
        QVERIFY(::bind(busy, at, size) == 0 && ::listen(busy, 0) == 0 && ::getsockname(busy, at, &size) == 0);
        QList<int> queue{busy};
        for (int i = 0; i < 4; ++i) {
            queue += ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
            ::connect(queue.last(), at, size);
        }
        QElapsedTimer timer;
        timer.start();
        QVERIFY(!s.link->connect(s.at.host, ntohs(address.sin_port), s.at.udpPort));
        QVERIFY(timer.elapsed() < 500);
        QCOMPARE(said("tcp connect() error: Operation already in progress"), 1);
        QVERIFY(!s.link->connected());
        for (int end : qAsConst(queue))
            ::close(end);
    }

    void lossAndReturn_data() { allLinks(); }
    void lossAndReturn()
    {
        QFETCH(int, which);
        Station s(which);
        QVERIFY(s.open());
        QByteArray datagram = s.wire.empty();
        s.wire.put(datagram, s.wire.fields[0], 3);
        QVERIFY(s.prime(datagram));

        // Alive on TCP, silent on UDP; strangers are no sign of the controller's life. What has come of a
        // text is still told.
        const QByteArray half = frame("12345678").left(4 + 5);
        s.controller.send(half);
        QElapsedTimer silence;
        silence.start();
        QTimer strangers;
        connect(&strangers, &QTimer::timeout, this, [&] { s.controller.stray(datagram); });
        strangers.start(20);
        QTRY_COMPARE(s.ends, 1);
        QVERIFY2(silence.elapsed() >= 950, qPrintable(QString::number(silence.elapsed())));
        QVERIFY(!s.link->connected());
        QCOMPARE(s.recorder->entries.size(), s.wire.fields.size()); // a loss tells nothing of the fields
        QTRY_COMPARE(s.controller.peer->state(), QAbstractSocket::UnconnectedState);

        // TCP falls while datagrams keep coming; each return tells everything once.
        QTimer beat;
        connect(&beat, &QTimer::timeout, this, [&] { s.controller.datagram(datagram); });
        beat.start(10);
        for (int round = 2; round <= 3; ++round) {
            QVERIFY(s.open());
            QTRY_COMPARE(s.recorder->entries.size(), round * s.wire.fields.size());
            s.controller.send(half);
            s.controller.peer->close();
            QTRY_COMPARE(s.ends, round);
        }
        QCOMPARE(s.recorder->entries.size(), 3 * s.wire.fields.size());
        QCOMPARE(s.texts(), QStringList({"12345", "12345", "12345"}));
        QCOMPARE(said(s.own.stopped), which == Drive ? 4 : 1); // these tell it of each end, too
        QCOMPARE(said("DriveTCPthread finished"), which == Drive ? 3 : 0);
        QVERIFY(!s.link->command("MOVE(A,0)"));
    }

    void reconnectAtOnce()
    {
        // Whoever connects again straight from disconnected() gets a whole link each time.
        Station s(Drive);
        int opened = 0;
        connect(static_cast<DriveTCPthread*>(s.thread.get()), &DriveTCPthread::disconnected, this, [&] {
            if (opened < 10) {
                QVERIFY(s.open());
                ++opened;
                s.controller.peer->close();
                // Another thread closes the connection than the one that sends.
                while (s.link->connected())
                    s.link->command("STOP_PRG");
            }
        });
        QVERIFY(s.open());
        s.controller.peer->close();
        QTRY_COMPARE(s.ends, 11);
        QVERIFY(!s.link->connected() && s.open());
        s.thread.reset(); // with the connection open
        QTRY_COMPARE(s.controller.peer->state(), QAbstractSocket::UnconnectedState);
    }
};

QTEST_GUILESS_MAIN(TestStatusLinks)
#include "test_statuslinks.moc"
