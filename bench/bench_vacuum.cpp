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
// Ends with 1 when the panel needed more than 5 % of a core or its loop stalled for more than 50 ms.

#include "benchtools.h"
#include "kvs.h"
#include "mywinstyle.h"
#include "repaintpace.h"
#include "site.h"

#include <QApplication>
#include <QEventLoop>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QUdpSocket>

#include <array>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>

namespace {

constexpr int rate = 100; // datagrams of each controller, a second
constexpr double processorLimit = 5;
constexpr double stallLimitMs = 50;

using KvsPack = std::array<char, 404>;
using KvkPack = std::array<char, 144>;

template <class Value, class Pack>
void put(Pack& pack, int offset, Value value)
{
    std::memcpy(pack.data() + offset, &value, sizeof value);
}

// A plant at work: all devices on, all gauges valid, every measured value another than the time before.
template <class Pack>
Pack plantAtWork(int lastWord, int flagsFrom, int flags)
{
    Pack pack{};
    put(pack, 0, quint16(0x5650));
    for (int offset = 4; offset <= lastWord; offset += 4)
        put(pack, offset, 0);
    for (int i = 0; i < flags; ++i)
        put(pack, flagsFrom + i, char(1));
    return pack;
}

KvsPack kvsDatagram(int n)
{
    KvsPack pack = plantAtWork<KvsPack>(288, 292, 14);
    for (int pump = 0; pump < 6; ++pump)
        put(pack, 4 + 24 * pump, 1);
    for (int valve = 0; valve < 6; ++valve)
        put(pack, 148 + 20 * valve, valve % 2);
    for (int gauge = 0; gauge < 3; ++gauge)
        put(pack, 308 + 8 * gauge, 10 * std::exp(std::sin(0.01 * n + gauge)));
    for (int sensor = 0; sensor < 18; ++sensor)
        put(pack, 332 + 4 * sensor, 22.F + 4 * float(std::sin(0.13 * n + sensor)));
    return pack;
}

KvkPack kvkDatagram(int n)
{
    KvkPack pack = plantAtWork<KvkPack>(60, 80, 5);
    put(pack, 64, 100 * std::exp(std::sin(0.02 * n)));
    put(pack, 72, 0.01 * std::exp(std::sin(0.03 * n)));
    put(pack, 88, 4U);
    put(pack, 92, unsigned(n / rate));
    put(pack, 96, 1U);
    put(pack, 104, 1);
    put(pack, 116, 1);
    put(pack, 136, 0.001F * float(std::exp(std::sin(0.05 * n))));
    put(pack, 140, 700.F + float(n % 2));
    return pack;
}

class PlantSender : public Sender
{
public:
    PlantSender(int kvsPort, int kvkPort)
        : Sender(std::chrono::microseconds(1'000'000 / rate),
                 [kvs = std::make_shared<Datagrams>(kvsPort),
                  kvk = std::make_shared<Datagrams>(kvkPort)](int n) {
                     kvs->send(kvsDatagram(n));
                     kvk->send(kvkDatagram(n));
                 })
    {}
};

// The TCP sides of both controllers, and a site that leads to them.
struct Controllers
{
    Controllers()
    {
        Site own;
        own.root = folder.path();
        own.shmSuffix = QStringLiteral("_bench");
        int i = 0;
        for (Endpoint* end : {&own.kvs, &own.kvk}) {
            QTcpServer& server = servers[size_t(i++)];
            server.listen(QHostAddress::LocalHost);
            QUdpSocket probe;
            probe.bind(QHostAddress(QHostAddress::LocalHost));
            *end = {QStringLiteral("127.0.0.1"), server.serverPort(), probe.localPort()};
        }
        setSite(own);
    }
    QTemporaryDir folder;
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
    const Stalls stalls(10);
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
            std::fprintf(stderr, "no sockets on loopback\n");
            return 1;
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
    std::printf("2 x %d datagrams a second, all measured values changing, %d s:\n", rate, seconds);
    std::printf("                     processor     worst stall\n");
    std::printf("  bare recv          %5.2f %%\n", bare);
    std::printf(
        "  links              %5.2f %%       %5.1f ms  (an idle process: %.1f ms)  %.0f told a second\n",
        links.processor, links.stallMs, links.idleStallMs, links.datagrams);
    std::printf(
        "  panel on screen    %5.2f %%       %5.1f ms  (an idle process: %.1f ms)  %.0f told a second\n",
        panel.processor, panel.stallMs, panel.idleStallMs, panel.datagrams);
    std::printf("  at most            %5.2f %%       %5.1f ms\n", processorLimit, stallLimitMs);
    return panel.processor <= processorLimit && panel.stallMs <= stallLimitMs ? 0 : 1;
}
