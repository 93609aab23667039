#include "drivecomm.h"

#include "drivecontroller.h"
#include "sitefixture.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTimer>
#include <QtTest>

#include <cmath>
#include <limits>
#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace drivewire;

class TestDriveComm : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { DebugLines::collect(); }
    void cleanupTestCase() { qInstallMessageHandler(nullptr); }
    void init() { DebugLines::clear(); }

    void firstDatagramTellsEverythingInOrder();
    void everyFieldIsToldAlone();
    void fieldsThatCompareOddly();
    void badSignatureCountsAsLife();
    void strangersAreNotHeard();
    void wrongSizeEndsTheProcess_data();
    void wrongSizeEndsTheProcess();

    void commandBytes();
    void commandsGoOutAtOnce();
    void receivedFrames();
    void badFramesEndTheConnection_data();
    void badFramesEndTheConnection();
    void bodyCutShort();

    void connectRefusals();
    void silenceDropsTheLink();
    void reconnectTellsEverythingAgain();
    void reconnectAtOnce();
    void endsCleanly();

private:
    // A connected link, with the recorder that a window would be.
    struct Setup
    {
        SiteFixture fixture;
        DriveController controller;
        DriveTCPthread link;
        StatusRecorder recorder{link, DriveStatus::staticMetaObject};
        QStringList messages;
        int ends = 0;

        Setup()
        {
            QObject::connect(&link, &DriveTCPthread::message, &recorder,
                             [this](const QString& t) { messages += t; });
            QObject::connect(&link, &DriveTCPthread::disconnected, &recorder, [this] { ++ends; });
        }
        bool open()
        {
            return link.connect(site().drive.host, site().drive.tcpPort, site().drive.udpPort) &&
                   controller.accept();
        }
        // Sends until the telemetry thread listens and the whole datagram was told.
        bool prime(const QByteArray& datagram)
        {
            recorder.entries.clear();
            return QTest::qWaitFor([&] {
                controller.datagram(datagram);
                return recorder.entries.size() >= raised;
            });
        }
        // What the window hears of these datagrams: a mark behind them tells when all were taken.
        QVector<StatusRecorder::Entry> hear(const QList<QByteArray>& datagrams, const QByteArray& last)
        {
            recorder.entries.clear();
            for (const QByteArray& d : datagrams)
                controller.datagram(d);
            QByteArray mark = last;
            put(mark, fieldNamed("CNCError"), ++m_mark);
            controller.datagram(mark);
            const bool heard = QTest::qWaitFor([&] {
                return !recorder.entries.isEmpty() &&
                       recorder.entries.last().name == QLatin1String("CNCError") &&
                       recorder.entries.last().value.toUInt() == m_mark;
            });
            if (!heard)
                return {{QStringLiteral("no mark"), {}}};
            controller.datagram(last);
            if (!QTest::qWaitFor([&] { return recorder.entries.last().value.toUInt() == 0; }))
                return {{QStringLiteral("no second mark"), {}}};
            recorder.entries.resize(recorder.entries.size() - 2);
            return recorder.entries;
        }

    private:
        quint32 m_mark = 1000;
    };
};

void TestDriveComm::firstDatagramTellsEverythingInOrder()
{
    Setup s;
    QCOMPARE(s.recorder.count(), 93);
    QVERIFY(s.open());

    // Each field holds a value found nowhere else, as far as its type allows.
    QByteArray datagram = emptyDatagram();
    QMultiHash<QString, QVariant> expected;
    int n = 0;
    for (const Field& field : fields) {
        ++n;
        const double value = field.kind == U   ? 4000000000.0 + n
                             : field.kind == I ? -n
                             : field.kind == F ? n + 0.5
                                               : n % 2;
        put(datagram, field, value);
        expected.insert(QString::fromLatin1(field.name), field.kind == U   ? QVariant(uint(value))
                                                         : field.kind == I ? QVariant(int(value))
                                                         : field.kind == F ? QVariant(float(value))
                                                                           : QVariant(value != 0));
    }
    QVERIFY(s.prime(datagram));

    QCOMPARE(s.recorder.names().join(' '), QString::fromLatin1(order));
    for (const StatusRecorder::Entry& entry : s.recorder.entries) {
        if (entry.name != QLatin1String("Message"))
            QVERIFY2(entry.value == expected.value(entry.name), qPrintable(entry.name));
    }
    // The four slots in turn.
    for (int slot = 0; slot < 4; ++slot)
        QCOMPARE(s.recorder.entries[raised - 5 + slot].value.toUInt(),
                 qFromLittleEndian<quint32>(datagram.constData() + 212 + 4 * slot));
    QCOMPARE(s.link.channelState(), expected.value(QStringLiteral("ChannelState1")).toUInt());
}

void TestDriveComm::everyFieldIsToldAlone()
{
    Setup s;
    QVERIFY(s.open());
    QByteArray datagram = emptyDatagram();
    QVERIFY(s.prime(datagram)); // all zero, and still told
    QCOMPARE(s.recorder.entries.size(), raised);

    for (const Field& field : fields) {
        if (!qstrcmp(field.name, "CNCError"))
            continue; // the mark itself
        put(datagram, field, 1);
        const auto heard = s.hear({datagram, datagram}, datagram);
        QVERIFY2(heard.size() == 1, field.name);
        QCOMPARE(heard[0].name, QString::fromLatin1(field.name));
        QCOMPARE(heard[0].value.toDouble(), 1.0);
    }
}

void TestDriveComm::fieldsThatCompareOddly()
{
    Setup s;
    QVERIFY(s.open());
    const QByteArray zero = emptyDatagram();
    QVERIFY(s.prime(zero));

    // A position that is no number is told with every datagram: twice here, then by the mark, then as 0.
    QByteArray nan = zero;
    put(nan, fieldNamed("LY"), std::numeric_limits<double>::quiet_NaN());
    const auto heard = s.hear({nan, nan}, zero);
    QCOMPARE(heard.size(), 3);
    QVERIFY(std::isnan(heard[0].value.toFloat()) && std::isnan(heard[1].value.toFloat()));
    QCOMPARE(heard[2].value.toFloat(), 0.f);

    // Bytes that nobody reads.
    QByteArray padded = zero;
    for (int i : {2, 3, 289, 290, 294, 295})
        padded[i] = char(0xee);
    QCOMPARE(s.hear({padded, zero, padded}, padded).size(), 0);
}

void TestDriveComm::badSignatureCountsAsLife()
{
    Setup s;
    QVERIFY(s.open());
    QTimer beat;
    connect(&beat, &QTimer::timeout, this, [&] { s.controller.datagram(QByteArray(296, 'x')); });
    beat.start(100);
    QTRY_VERIFY(DebugLines::count(QStringLiteral("Bad signature of drive UDP packet")) >= 16);
    QVERIFY(s.link.connected());
    QCOMPARE(s.recorder.entries.size(), 0);
}

void TestDriveComm::strangersAreNotHeard()
{
    // The controller may be known by a name.
    Setup s;
    QVERIFY(s.link.connect(QStringLiteral("localhost"), site().drive.tcpPort, site().drive.udpPort) &&
            s.controller.accept());
    const QByteArray good = emptyDatagram();
    QVERIFY(s.prime(good));
    QByteArray forged = good;
    put(forged, fieldNamed("X"), 5);
    for (const QByteArray& datagram : {forged, QByteArray(), QByteArray(1000, 'x')})
        s.controller.stray(datagram);
    QCOMPARE(s.hear({}, good).size(), 0);
    QCOMPARE(DebugLines::count(QStringLiteral("Dropped a datagram from")), 1);
    // Many of them between two datagrams of the controller are no silence of the controller.
    for (int i = 0; i < 50; ++i)
        s.controller.stray(forged);
    QCOMPARE(s.hear({}, good).size(), 0);
    QVERIFY(s.link.connected());
}

void TestDriveComm::wrongSizeEndsTheProcess_data()
{
    QTest::addColumn<int>("size");
    for (int size : {0, 294, 297, 404})
        QTest::addRow("%d bytes", size) << size;
}

void TestDriveComm::wrongSizeEndsTheProcess()
{
    QFETCH(int, size);
    SiteFixture fixture;
    DriveController controller;
    QProcess console;
    console.start(QCoreApplication::applicationFilePath(),
                  {QStringLiteral("--console"), QString::number(site().drive.tcpPort),
                   QString::number(site().drive.udpPort)});
    QVERIFY(controller.accept());
    QTRY_VERIFY_WITH_TIMEOUT((controller.datagram(emptyDatagram().leftJustified(size, '\0', true)),
                              console.state() == QProcess::NotRunning),
                             30000);
    QCOMPARE(console.exitStatus(), QProcess::CrashExit);
    const QByteArray last = console.readAllStandardError();
    QVERIFY2(last.contains("ASSERT: \"s == (((int)sizeof(pack)+3)/4)*4\""), last.constData());
}

void TestDriveComm::commandBytes()
{
    Setup s;
    // Closed: a debug line and nothing else.
    QVERIFY(!s.link.command(QStringLiteral("MOVE(A,0)")));
    QCOMPARE(DebugLines::count(QStringLiteral("DriveTCPthread: > \"MOVE(A,0)\"")), 1);

    QVERIFY(s.open());
    const QString longest(1000, QLatin1Char('z'));
    const QString beyond(1500, QLatin1Char('y'));
    QByteArray expected;
    for (const QString& text :
         {QStringLiteral("MOVE(LX,-300)"), QString(), QStringLiteral("Ось"), longest, beyond}) {
        QVERIFY(s.link.command(text));
        expected += frame(text.toUtf8());
    }
    QTRY_COMPARE(s.controller.peer->bytesAvailable(), qint64(expected.size()));
    QCOMPARE(s.controller.peer->readAll(), expected);
}

void TestDriveComm::commandsGoOutAtOnce()
{
    Setup s;
    QVERIFY(s.open());
    const int console = s.controller.consoleEnd();
    int noDelay = 0;
    socklen_t size = sizeof noDelay;
    QCOMPARE(::getsockopt(console, IPPROTO_TCP, TCP_NODELAY, &noDelay, &size), 0);
    QVERIFY(noDelay != 0);

    // A controller that does not read: what the system takes no more is told, and refused at once.
    for (int i = 0; i < 1'000'000 && s.link.command(QString(900, 'z')); ++i) {
    }
    QCOMPARE(DebugLines::count(QStringLiteral("send() error: Resource temporarily unavailable")), 1);
    QVERIFY(s.link.connected());
}

void TestDriveComm::receivedFrames()
{
    Setup s;
    QVERIFY(s.open());

    const QByteArray three = frame("one") + frame("") + frame("Ось два");
    s.controller.send(three);
    QTRY_COMPARE(s.messages.size(), 3);
    const QRegularExpression stamp(QStringLiteral("^\\[\\d\\d:\\d\\d:\\d\\d\\] (.*)$"));
    QStringList texts;
    for (const QString& m : qAsConst(s.messages)) {
        QVERIFY(stamp.match(m).hasMatch());
        texts += stamp.match(m).captured(1);
    }
    QCOMPARE(texts, QStringList({QStringLiteral("one"), QString(), QStringLiteral("Ось два")}));

    // The body in many segments, each taken before the next is sent.
    const QByteArray split = frame("split to pieces");
    s.messages.clear();
    s.controller.send(split.left(4));
    for (int i = 4; i < split.size(); ++i) {
        QTRY_VERIFY(s.controller.taken());
        QCOMPARE(s.messages.size(), 0);
        s.controller.datagram(emptyDatagram()); // so many steps may last longer than a link may be silent
        s.controller.send(split.mid(i, 1));
    }
    QTRY_COMPARE(s.messages.size(), 1);
    QVERIFY(s.messages[0].endsWith(QStringLiteral("] split to pieces")));

    // The longest frame there is.
    s.controller.send(frame(QByteArray(65535, 'q')));
    QTRY_COMPARE(s.messages.size(), 2);
    QCOMPARE(s.messages[1].size(), 11 + 65535);
    QVERIFY(s.link.connected());
}

void TestDriveComm::badFramesEndTheConnection_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("another signature") << QByteArray("\x52\x56\x03\x00one", 7);
    QTest::newRow("signature in wrong byte order") << QByteArray("\x56\x50\x00\x00", 4);
    QTest::newRow("noise") << QByteArray("GET / HTTP/1.0\r\n\r\n");
    QTest::newRow("half a head") << QByteArray("\x50\x56", 2);
    QTest::newRow("three quarters of a head") << QByteArray("\x50\x56\x03", 3);
}

void TestDriveComm::badFramesEndTheConnection()
{
    QFETCH(QByteArray, bytes);
    Setup s;
    QVERIFY(s.open());
    s.controller.send(bytes);
    QTRY_COMPARE(s.ends, 1);
    QVERIFY(!s.link.connected());
    QCOMPARE(DebugLines::count(QStringLiteral("Bad packet signature")), 1);
    QCOMPARE(s.messages.size(), 0);
}

void TestDriveComm::bodyCutShort()
{
    // What has come of a text is still told, whether the controller goes away or the console ends.
    for (const bool byConsole : {false, true}) {
        Setup s;
        QVERIFY(s.open());
        s.controller.send(frame("12345678").left(4 + 5));
        QTRY_VERIFY(s.controller.taken());
        if (byConsole)
            QVERIFY(s.link.disconnect());
        else
            s.controller.peer->close();
        QTRY_COMPARE(s.ends, 1);
        QCOMPARE(s.messages.size(), 1);
        QVERIFY(s.messages[0].endsWith(QStringLiteral("] 12345")));
    }
}

void TestDriveComm::connectRefusals()
{
    Setup s;
    QVERIFY(s.open());
    QVERIFY(!s.link.connect(site().drive.host, site().drive.tcpPort, site().drive.udpPort));
    QVERIFY(s.link.connected()); // the open link is untouched
    QVERIFY(s.prime(emptyDatagram()));
    QVERIFY(s.link.disconnect());

    s.controller.server.close();
    QVERIFY(!s.link.connect(site().drive.host, site().drive.tcpPort, site().drive.udpPort));
    QCOMPARE(DebugLines::count(QStringLiteral("tcp connect() error: Connection refused")), 1);
    QVERIFY(!s.link.connect(QString(), site().drive.tcpPort, site().drive.udpPort));
    QCOMPARE(DebugLines::count(QStringLiteral("DRIVE gethostbyname() error: ")), 1);
    QVERIFY(!s.link.connected());

    // A peer that does not answer is given up after a millisecond: here one whose queue is full.
    const int busy = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    QCOMPARE(::bind(busy, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    QCOMPARE(::listen(busy, 0), 0);
    socklen_t size = sizeof address;
    QCOMPARE(::getsockname(busy, reinterpret_cast<sockaddr*>(&address), &size), 0);
    QList<int> queue;
    for (int i = 0; i < 4; ++i) {
        queue += ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0);
        ::connect(queue.last(), reinterpret_cast<sockaddr*>(&address), sizeof address);
    }
    QElapsedTimer timer;
    timer.start();
    QVERIFY(!s.link.connect(site().drive.host, ntohs(address.sin_port), site().drive.udpPort));
    QVERIFY(timer.elapsed() < 500);
    QCOMPARE(DebugLines::count(QStringLiteral("tcp connect() error: Operation already in progress")), 1);
    QVERIFY(!s.link.connected());
    for (int client : qAsConst(queue))
        ::close(client);
    ::close(busy);
}

void TestDriveComm::silenceDropsTheLink()
{
    Setup s;
    QVERIFY(s.open());
    QVERIFY(s.prime(emptyDatagram()));
    QElapsedTimer timer;
    timer.start();
    QTimer strangers; // no sign of the controller's life
    connect(&strangers, &QTimer::timeout, this, [&] { s.controller.stray(emptyDatagram()); });
    strangers.start(20);
    QTRY_COMPARE(s.ends, 1);
    QVERIFY2(timer.elapsed() >= 950, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(!s.link.connected());
    QCOMPARE(s.recorder.entries.size(), raised); // a loss tells nothing of the fields
    QTRY_COMPARE(s.controller.peer->state(), QAbstractSocket::UnconnectedState);
}

void TestDriveComm::reconnectTellsEverythingAgain()
{
    Setup s;
    QVERIFY(s.open());
    QByteArray datagram = emptyDatagram();
    put(datagram, fieldNamed("ChannelState1"), 3);
    QVERIFY(s.prime(datagram));
    QCOMPARE(s.link.channelState(), 3u);

    // TCP falls while datagrams keep coming.
    QTimer beat;
    connect(&beat, &QTimer::timeout, this, [&] { s.controller.datagram(datagram); });
    beat.start(10);
    s.controller.peer->close();
    QTRY_COMPARE(s.ends, 1);
    QVERIFY(!s.link.command(QStringLiteral("MOVE(A,0)")));
    QCOMPARE(s.recorder.entries.size(), raised);

    QVERIFY(s.open());
    QTRY_COMPARE(s.recorder.entries.size(), 2 * raised);
    QCOMPARE(s.link.channelState(), 3u);
    // Once, not once for each connection so far.
    QVERIFY(!QTest::qWaitFor([&] { return s.recorder.entries.size() != 2 * raised; }, 50));
}

void TestDriveComm::reconnectAtOnce()
{
    // Whoever connects again straight from disconnected() gets a whole link each time.
    Setup s;
    int opened = 0;
    connect(&s.link, &DriveTCPthread::disconnected, this, [&] {
        if (opened < 20) {
            QVERIFY(s.open());
            ++opened;
            s.controller.peer->close();
            // Another thread closes the connection than the one that sends.
            while (s.link.connected())
                s.link.command(QStringLiteral("STOP_PRG"));
        }
    });
    QVERIFY(s.open());
    s.controller.peer->close();
    QTRY_COMPARE(s.ends, 21);
    QVERIFY(!s.link.connected());
}

void TestDriveComm::endsCleanly()
{
    Setup s;
    QVERIFY(!s.link.disconnect());
    QVERIFY(s.open());
    QVERIFY(s.link.disconnect());
    QVERIFY(!s.link.connected());
    QTRY_COMPARE(s.ends, 1);
    QVERIFY(!s.link.disconnect());

    QVERIFY(s.open());
    s.link.UDPdisconnected();
    QTRY_COMPARE(s.ends, 2);

    auto second = std::make_unique<DriveTCPthread>();
    QVERIFY(second->connect(site().drive.host, site().drive.tcpPort, site().drive.udpPort));
    QVERIFY(s.controller.accept());
    second.reset(); // with the connection open
    QTRY_COMPARE(s.controller.peer->state(), QAbstractSocket::UnconnectedState);
}

// With "--console" the program is a bare console that waits for its controller.
int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.value(1) == QLatin1String("--console")) {
        DriveTCPthread link;
        return link.connect(QStringLiteral("127.0.0.1"), arguments.value(2).toInt(),
                            arguments.value(3).toInt())
                   ? app.exec()
                   : 1;
    }
    TestDriveComm test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_drivecomm.moc"
