#pragma once

#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <ctime>
#include <netinet/in.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

// What the benchmarks of the links measure with.

inline sockaddr_in loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(quint16(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

// A process of its own. It calls `send(n)` for n = 0, 1, 2... at each `period`, until it is ended.
class Sender
{
public:
    template <class Send>
    Sender(std::chrono::microseconds period, Send send)
        : m_child(fork())
    {
        if (m_child != 0)
            return;
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        auto next = std::chrono::steady_clock::now();
        for (int n = 0;; ++n) {
            send(n);
            next += period;
            std::this_thread::sleep_until(next);
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
    pid_t m_child;
};

// A socket for datagrams to a port of this machine.
class Datagrams
{
public:
    explicit Datagrams(int port)
        : m_socket(socket(AF_INET, SOCK_DGRAM, 0))
        , m_to(loopback(port))
    {}
    ~Datagrams() { close(m_socket); }
    Datagrams(const Datagrams&) = delete;
    Datagrams& operator=(const Datagrams&) = delete;

    template <class Bytes>
    void send(const Bytes& bytes) const
    {
        sendto(m_socket, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&m_to),
               sizeof m_to);
    }

private:
    int m_socket;
    sockaddr_in m_to;
};

inline double processorSeconds()
{
    timespec used{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
    return double(used.tv_sec) + double(used.tv_nsec) / 1e9;
}

inline double memoryMb()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    return double(file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE)) / (1024 * 1024);
}

// Datagrams that the system threw away because nobody took them in time; -1 when it does not tell.
inline qint64 drops(int port)
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

// The longest time that the loop of this thread kept a timer of `intervalMs` waiting beyond its time, ms.
struct Stalls
{
    explicit Stalls(int intervalMs = 5)
    {
        timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer, &QTimer::timeout, &timer, [this] {
            worst = std::max(worst, double(since.nsecsElapsed()) / 1e6 - timer.interval());
            since.restart();
        });
        since.start();
        timer.start(intervalMs);
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
