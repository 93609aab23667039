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
// Ends with 1 when the loop stalled for more than 100 ms or memory grew.

#include "drivecomm.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTcpServer>
#include <QTimer>
#include <QUdpSocket>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <limits>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

constexpr int datagramSize = 296;
constexpr int firstPosition = 28; // byte of LX1
constexpr int positions = 13;
constexpr int errorCode = 232;       // byte of the controller's error code, used as a mark
constexpr double stallLimitMs = 100; // of the event loop
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

sockaddr_in loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(quint16(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

// A process of its own that sends `count` datagrams, `burst` at a time, and then marked ones until it is
// ended. With `moving` all positions change from one to the next.
class Sender
{
public:
    Sender(int port, int count, int burst, std::chrono::microseconds period, bool moving)
        : m_child(fork())
    {
        if (m_child == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            run(port, count, burst, period, moving);
        }
    }
    ~Sender()
    {
        kill(m_child, SIGKILL);
        waitpid(m_child, nullptr, 0);
    }
    Sender(const Sender&) = delete;
    Sender& operator=(const Sender&) = delete;

private:
    [[noreturn]] static void run(int port, int count, int burst, std::chrono::microseconds period,
                                 bool moving)
    {
        const int out = socket(AF_INET, SOCK_DGRAM, 0);
        const sockaddr_in to = loopback(port);
        Datagram bytes = plainDatagram();
        auto next = std::chrono::steady_clock::now();
        float value = 0;
        for (int sent = 0;; ++sent) {
            if (moving) {
                for (int i = 0; i < positions; ++i) {
                    const float position = value += 0.25F;
                    std::memcpy(bytes.data() + firstPosition + 4 * i, &position, sizeof position);
                }
                if (value > 1e6F)
                    value = 0;
            }
            if (sent >= count)
                mark(bytes, 1);
            sendto(out, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
            if (sent % burst == burst - 1) {
                next += period;
                std::this_thread::sleep_until(next);
            }
        }
    }

    pid_t m_child;
};

double processorSeconds()
{
    timespec used{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return double(used.tv_sec) + double(used.tv_nsec) / 1e9;
}

double memoryMb()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return double(file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE)) / (1024 * 1024);
}

// Datagrams that the system threw away because nobody took them in time; -1 when it does not tell.
qint64 drops(int port)
{
    const QByteArray wanted = ":" + QByteArray::number(port, 16).toUpper().rightJustified(4, '0');
    for (const char* name : {"/proc/net/udp", "/proc/net/udp6"}) {
        QFile file(QString::fromLatin1(name));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        for (const QByteArray& line : file.readAll().split('\n')) {
            const QList<QByteArray> columns = line.simplified().split(' ');
            if (columns.size() > 12 && columns[1].endsWith(wanted))
                return columns[12].toLongLong();
        }
    }
    return -1;
}

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

constexpr int unchangedCount = 100'000;
constexpr int unchangedBurst = 10;
constexpr std::chrono::microseconds unchangedPeriod{1000};

// Microseconds of processor time for each datagram.
double bareReceive()
{
    const int in = socket(AF_INET, SOCK_DGRAM, 0);
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    if (bind(in, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        getsockname(in, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        return -1;
    const Sender sender(ntohs(address.sin_port), unchangedCount, unchangedBurst, unchangedPeriod, false);
    Datagram last{};
    Datagram now{};
    int different = 0;
    const double start = processorSeconds();
    while (different < 2) { // the first, and the mark
        if (recv(in, now.data(), now.size(), 0) != datagramSize)
            return -1;
        if (std::memcmp(now.data(), last.data(), now.size()) != 0) {
            ++different;
            last = now;
        }
    }
    const double used = processorSeconds() - start;
    close(in);
    return used * 1e6 / unchangedCount;
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
    const Sender sender(setup.port, unchangedCount, unchangedBurst, unchangedPeriod, false);
    const double start = processorSeconds();
    loop.exec();
    const double used = processorSeconds() - start;
    lost = drops(setup.port);
    return used * 1e6 / unchangedCount;
}

// The longest time that the loop of this thread kept a timer of 5 ms waiting beyond its time, ms.
struct Stalls
{
    Stalls()
    {
        timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer, &QTimer::timeout, &timer, [this] {
            worst = std::max(worst, double(since.nsecsElapsed()) / 1e6 - timer.interval());
            since.restart();
        });
        since.start();
        timer.start(5);
    }
    QTimer timer;
    QElapsedTimer since;
    double worst = 0;
};

// A process that does nothing but sleep in steps of 5 ms, and tells the longest delay, ms.
class IdleProcess
{
public:
    explicit IdleProcess(int seconds)
    {
        if (pipe(m_pipe) != 0)
            return;
        m_child = fork();
        if (m_child == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            const double worst = longestDelay(std::chrono::seconds(seconds));
            _exit(write(m_pipe[1], &worst, sizeof worst) == sizeof worst ? 0 : 1);
        }
    }
    ~IdleProcess()
    {
        close(m_pipe[0]);
        close(m_pipe[1]);
    }
    IdleProcess(const IdleProcess&) = delete;
    IdleProcess& operator=(const IdleProcess&) = delete;

    // Waits for the end of its time.
    double worst()
    {
        double result = -1;
        if (read(m_pipe[0], &result, sizeof result) != sizeof result)
            result = -1;
        waitpid(m_child, nullptr, 0);
        return result;
    }

private:
    static double longestDelay(std::chrono::seconds time)
    {
        using Clock = std::chrono::steady_clock;
        double worst = 0;
        const Clock::time_point end = Clock::now() + time;
        for (Clock::time_point last = Clock::now(); last < end;) {
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
            const Clock::time_point now = Clock::now();
            worst = std::max(worst, std::chrono::duration<double, std::milli>(now - last).count() - 5);
            last = now;
        }
        return worst;
    }

    int m_pipe[2] = {-1, -1};
    pid_t m_child = -1;
};

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

    const Sender sender(setup.port, std::numeric_limits<int>::max(), 1, std::chrono::microseconds(500), true);
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
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const QCoreApplication app(argc, argv);
    const int seconds = std::max(1, argc > 1 ? std::atoi(argv[1]) : 120);

    qint64 lost = 0;
    const double bare = bareReceive();
    const double thread = throughTelemetryThread(lost);
    if (bare <= 0 || thread <= 0) {
        std::fprintf(stderr, "no sockets on loopback\n");
        return 1;
    }
    std::printf("unchanged datagram, processor time of %d:\n", unchangedCount);
    std::printf("  recv + memcmp     %6.2f us each\n", bare);
    std::printf("  telemetry thread  %6.2f us each  (%.1f times, %lld lost)\n", thread, thread / bare,
                static_cast<long long>(lost));

    Load load;
    if (!runLoad(seconds, load)) {
        std::fprintf(stderr, "the link fell during the run\n");
        return 1;
    }
    const double growth = load.memoryEnd - load.memoryStart;
    std::printf("2000 datagrams a second, all positions changing, %d s:\n", seconds);
    std::printf("  datagrams told    %.0f a second, %lld lost\n", double(load.received) / positions / seconds,
                static_cast<long long>(load.lost));
    std::printf("  processor         %.1f %% of one core\n", load.processor * 100);
    std::printf("  worst stall       %.1f ms  (an idle process at the same time: %.1f ms)\n", load.stallMs,
                load.idleStallMs);
    std::printf("  memory            %.1f MB -> %.1f MB, %+.1f MB\n", load.memoryStart, load.memoryEnd,
                growth);
    return load.stallMs <= stallLimitMs && growth <= growthLimitMb ? 0 : 1;
}
