// What telemetry of the motion controller costs.
//
//   bench_telemetry [seconds]     seconds of the load run, 120 by default
//
// 1. An unchanged datagram: processor time through the telemetry thread, beside a bare recv and memcmp of the
//    same 296 bytes in the same run.
// 2. 2,000 datagrams a second in which all positions change: the worst stall of the event loop that receives
//    them and the growth of memory, beside the worst stall of an idle process at the same time: what the
//    machine itself does to a timer.
//
// At most 1.5 times the bare receipt, 100 ms, and no growth.

#include "benchtools.h"
#include "drivecomm.h"
#include "table.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QTcpServer>
#include <QUdpSocket>

#include <array>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {

constexpr int datagramSize = 296;
constexpr int firstPosition = 28; // byte of LX1
constexpr int positions = 13;
constexpr int errorCode = 232;         // byte of the controller's error code, used as a mark
constexpr double unchangedLimit = 1.5; // times the bare receipt
constexpr double stallLimitMs = 100;   // of the event loop
constexpr double growthLimitMb = 4;

using Datagram = std::array<char, datagramSize>;

Datagram plainDatagram()
{
    Datagram bytes{};
    bytes[0] = 0x50;
    bytes[1] = 0x56;
    return bytes;
}

void mark(Datagram& bytes, quint32 number)
{
    std::memcpy(bytes.data() + errorCode, &number, sizeof number);
}

constexpr int unchangedCount = 100'000;
constexpr int unchangedBurst = 10;
constexpr std::chrono::microseconds unchangedPeriod{1000};

// Datagrams without a change, `unchangedBurst` at a time, and behind `unchangedCount` of them marked ones.
class SteadySender : public Sender
{
public:
    explicit SteadySender(int port)
        : Sender(unchangedPeriod, [out = std::make_shared<Datagrams>(port)](int n) {
            Datagram bytes = plainDatagram();
            if (n * unchangedBurst >= unchangedCount)
                mark(bytes, 1);
            for (int i = 0; i < unchangedBurst; ++i)
                out->send(bytes);
        })
    {}
};

// 2,000 a second, all positions changing from one to the next.
class MovingSender : public Sender
{
public:
    explicit MovingSender(int port)
        : Sender(std::chrono::microseconds(500),
                 [out = std::make_shared<Datagrams>(port), value = 0.F](int) mutable {
                     Datagram bytes = plainDatagram();
                     for (int i = 0; i < positions; ++i) {
                         value += 0.25F;
                         std::memcpy(bytes.data() + firstPosition + 4 * i, &value, sizeof value);
                     }
                     if (value > 1e6F)
                         value = 0;
                     out->send(bytes);
                 })
    {}
};

// A link that is open to a controller of which only the TCP side is here.
struct Link
{
    Link()
    {
        server.listen(QHostAddress::LocalHost);
        QUdpSocket probe;
        probe.bind(QHostAddress::LocalHost);
        port = probe.localPort();
    }
    bool open() { return link.connect(QStringLiteral("127.0.0.1"), server.serverPort(), port); }

    QTcpServer server;
    int port = 0;
    DriveTCPthread link;
};

// Microseconds of processor time for each datagram.
double bareReceive()
{
    const int in = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    if (bind(in, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        getsockname(in, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        return -1;
    const SteadySender sender(ntohs(address.sin_port));
    Datagram last{};
    Datagram now{};
    int different = 0;
    int received = 0;
    const double start = processorSeconds();
    for (; different < 2; ++received) { // the first, and the mark
        if (recv(in, now.data(), now.size(), 0) != datagramSize)
            return -1;
        if (std::memcmp(now.data(), last.data(), now.size()) != 0) {
            ++different;
            last = now;
        }
    }
    const double used = processorSeconds() - start;
    close(in);
    return used * 1e6 / received;
}

double throughTelemetryThread(qint64& lost)
{
    Link setup;
    if (!setup.open())
        return -1;
    QEventLoop loop;
    QObject::connect(&setup.link, &DriveTCPthread::changedCNCError, &loop, [&](unsigned int code) {
        if (code != 0)
            loop.quit();
    });
    const SteadySender sender(setup.port);
    const double start = processorSeconds();
    loop.exec();
    const double used = processorSeconds() - start;
    lost = drops(setup.port);
    return used * 1e6 / double(unchangedCount - std::max(qint64(0), lost));
}

struct Load
{
    double stallMs = 0;
    double idleStallMs = 0; // of the idle process at the same time
    double memoryStart = 0; // after the first tenth, when all is warm
    double memoryEnd = 0;
    qint64 received = 0; // signals
    qint64 lost = 0;
    double processor = 0; // share of one core
};

bool runLoad(int seconds, Load& load)
{
    Link setup;
    if (!setup.open())
        return false;
    float shown = 0;
    const auto show = [&](float value) {
        shown = value;
        ++load.received;
    };
    using D = DriveTCPthread;
    QObject here;
    for (const auto position : {&D::changedLX1, &D::changedLX2, &D::changedLY, &D::changedA, &D::changedB,
                                &D::changedC, &D::changedD, &D::changedU1, &D::changedU2, &D::changedV,
                                &D::changedX, &D::changedZ, &D::changedPHI})
        QObject::connect(&setup.link, position, &here, show);

    const MovingSender sender(setup.port);
    IdleProcess idle(seconds);
    QEventLoop loop;
    const Stalls stalls;
    QTimer::singleShot(seconds * 100, &loop, [&] { load.memoryStart = memoryMb(); });
    QTimer::singleShot(seconds * 1000, &loop, &QEventLoop::quit);
    const double start = processorSeconds();
    loop.exec();
    load.processor = (processorSeconds() - start) / seconds;
    load.stallMs = stalls.worst;
    load.memoryEnd = memoryMb();
    load.lost = drops(setup.port);
    load.idleStallMs = idle.worst();
    return setup.link.connected();
}

} // namespace

int main(int argc, char* argv[])
{
    Table table;
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const QCoreApplication app(argc, argv);
    const int seconds = std::max(1, argc > 1 ? std::atoi(argv[1]) : 120);

    qint64 lost = 0;
    const double bare = bareReceive();
    const double thread = throughTelemetryThread(lost);
    if (bare <= 0 || thread <= 0) {
        table.missing("telemetry of the motion controller", "no sockets on loopback");
        return table.result();
    }
    table.row("unchanged datagram through the telemetry thread", thread, "us", {"recv + memcmp", bare},
              atMostTimes(unchangedLimit));
    table.row("unchanged datagrams lost", double(lost), "", {"sent", unchangedCount}, noLimit);

    Load load;
    if (!runLoad(seconds, load)) {
        table.missing("telemetry of the motion controller", "the link fell during the run");
        return table.result();
    }
    const QByteArray under = "2000 moving datagrams a second, " + QByteArray::number(seconds) + " s: ";
    table.row(under + "told", double(load.received) / positions / seconds, "1/s", {"sent", 2000}, noLimit);
    table.row(under + "processor", load.processor * 100, "%", {"a core", 100}, noLimit);
    table.row(under + "worst stall", load.stallMs, "ms", {"an idle process meanwhile", load.idleStallMs},
              atMost(stallLimitMs));
    table.row(under + "memory grown", load.memoryEnd - load.memoryStart, "MB",
              {"at its start", load.memoryStart}, atMost(growthLimitMb));
    return table.result();
}
