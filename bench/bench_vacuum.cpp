// What telemetry of the vacuum plant costs.
//
//   bench_vacuum [seconds]     seconds of each run, 60 by default
//
// Both controllers at 100 datagrams a second each, in which every pressure, temperature and flow changes:
//
// 1. through the links alone, beside a bare recv of the same datagrams: processor time;
// 2. with the whole vacuum panel on the screen: processor time and the worst stall of the window's event
//    loop, beside the worst stall of an idle process at the same time: what the machine itself does to a
//    timer.
//
// At most 5 % of a core and 50 ms.

#include "benchsite.h"
#include "benchtools.h"
#include "kvs.h"
#include "mywinstyle.h"
#include "repaintpace.h"
#include "table.h"
#include "vacuumpacks.h"

#include <QApplication>
#include <QEventLoop>
#include <QTcpServer>
#include <QUdpSocket>

#include <array>
#include <cstdio>
#include <memory>

namespace {

constexpr int rate = 100; // datagrams of each controller, a second
constexpr double processorLimit = 5;
constexpr double stallLimitMs = 50;

class PlantSender : public Sender
{
public:
    PlantSender(int kvsPort, int kvkPort)
        : Sender(std::chrono::microseconds(1'000'000 / rate),
                 [kvs = std::make_shared<Datagrams>(kvsPort),
                  kvk = std::make_shared<Datagrams>(kvkPort)](int n) {
                     kvs->send(kvsDatagram(n));
                     kvk->send(kvkDatagram(n, rate));
                 })
    {}
};

// The TCP sides of both controllers, and a site that leads to them.
struct Controllers
{
    Controllers()
    {
        int i = 0;
        for (Endpoint* end : {&place.own.kvs, &place.own.kvk}) {
            QTcpServer& server = servers[size_t(i++)];
            server.listen(QHostAddress::LocalHost);
            QUdpSocket probe;
            probe.bind(QHostAddress(QHostAddress::LocalHost));
            *end = {QStringLiteral("127.0.0.1"), server.serverPort(), probe.localPort()};
        }
        setSite(place.own);
    }
    BenchSite place;
    std::array<QTcpServer, 2> servers;
};

struct Load
{
    double processor = 0; // % of one core
    double stallMs = 0;
    double idleStallMs = 0;
    double datagrams = 0; // of each controller, a second, as far as they were told
};

// Share of a core that a bare recv of the same datagrams takes.
double bareReceive(int seconds)
{
    const int in = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    if (bind(in, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        getsockname(in, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        return -1;
    const PlantSender sender(ntohs(address.sin_port), ntohs(address.sin_port));
    KvsPack pack{};
    const double start = processorSeconds();
    for (int i = 0; i < seconds * rate * 2; ++i) {
        if (recv(in, pack.data(), pack.size(), 0) < 0)
            return -1;
    }
    const double used = processorSeconds() - start;
    close(in);
    return 100 * used / seconds;
}

Load run(int seconds, const KVSStatus& kvs, const KVKStatus& kvk)
{
    const PlantSender sender(site().kvs.udpPort, site().kvk.udpPort);
    QObject here;
    int told = 0;
    QObject::connect(&kvs, &KVSStatus::changedDisch8, &here, [&] { ++told; });
    QObject::connect(&kvk, &KVKStatus::changedPT6, &here, [&] { ++told; });

    // The first picture is not what is measured.
    QEventLoop warm;
    QTimer::singleShot(1000, &warm, &QEventLoop::quit);
    warm.exec();

    told = 0;
    IdleProcess idle(seconds);
    QEventLoop loop;
    const Stalls stalls(25); // its own wake-ups are in the figure, so few of them
    QTimer::singleShot(seconds * 1000, &loop, &QEventLoop::quit);
    const double start = processorSeconds();
    loop.exec();
    Load load;
    load.processor = 100 * (processorSeconds() - start) / seconds;
    load.stallMs = stalls.worst;
    load.idleStallMs = idle.worst();
    load.datagrams = double(told) / 2 / seconds;
    return load;
}

} // namespace

int main(int argc, char* argv[])
{
    Table table;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    QApplication app(argc, argv);
    QApplication::setStyle(new MyWinStyle);
    const int seconds = std::max(1, argc > 1 ? std::atoi(argv[1]) : 60);
    const Controllers controllers;

    const double bare = bareReceive(seconds);
    Load links;
    {
        KVSTCPthread kvs;
        KVKTCPthread kvk;
        const Site& at = site();
        if (!kvs.connect(at.kvs.host, at.kvs.tcpPort, at.kvs.udpPort) ||
            !kvk.connect(at.kvk.host, at.kvk.tcpPort, at.kvk.udpPort)) {
            table.missing("telemetry of the vacuum plant", "no sockets on loopback");
            return table.result();
        }
        links = run(seconds, kvs, kvk);
    }
    Load panel;
    {
        KVS shown;
        new RepaintPace(&shown); // as the console's window has
        shown.resize(900, 900);
        shown.show();
        panel = run(seconds, *shown.kvs(), *shown.kvk());
    }
    const QByteArray at = "2 x " + QByteArray::number(rate) + " changing datagrams a second, ";
    table.row(at + "links", links.processor, "%", {"bare recv of the same", bare}, noLimit);
    table.row(at + "panel", panel.processor, "%", {"bare recv of the same", bare}, atMost(processorLimit));
    table.row("worst stall of its loop", panel.stallMs, "ms",
              {"an idle process meanwhile", panel.idleStallMs}, atMost(stallLimitMs));
    table.row("datagrams told of each controller", panel.datagrams, "1/s", {"sent", rate}, noLimit);
    return table.result();
}
