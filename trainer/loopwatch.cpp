#include "loopwatch.h"

#include <QFile>

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr std::chrono::milliseconds period{5};
constexpr std::chrono::seconds look{1};
constexpr double dead = 30; // s

} // namespace

LoopWatch::LoopWatch()
    : m_thread(int(::syscall(SYS_gettid)))
    , m_watcher([this] { watch(); })
{}

LoopWatch::~LoopWatch()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_over = true;
    }
    m_turn.notify_all();
    m_watcher.join();
}

void LoopWatch::start()
{
    m_running = true;
}

void LoopWatch::stop()
{
    m_running = false;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_asked = false;
    m_turn.notify_all();
}

int LoopWatch::takeLongest()
{
    return m_longest.exchange(0);
}

double LoopWatch::ownTime() const
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    QFile file(QStringLiteral("/proc/self/task/%1/schedstat").arg(m_thread));
    double waited = 0; // where the kernel keeps no account, nothing is taken off
    if (file.open(QIODevice::ReadOnly))
        waited = file.readAll().split(' ').value(1).toDouble() * 1e-9; // run, waited, turns: ns, ns, number
    return std::chrono::duration<double>(now).count() - waited;
}

void LoopWatch::watch()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_over) {
        m_turn.wait_for(lock, period);
        if (!m_running || m_over)
            continue;
        m_asked = true;
        QMetaObject::invokeMethod(
            &m_window,
            [this] {
                const double answered = ownTime(); // the watcher may be held up with the lock in its hand
                const std::lock_guard<std::mutex> answering(m_mutex);
                if (m_asked)
                    m_longest = qMax(m_longest.load(), int((answered - m_asking) * 1000));
                m_asked = false;
                m_turn.notify_all();
            },
            Qt::QueuedConnection);
        m_asking = ownTime(); // after the question: what holds up the watcher is no time of the window's
        while (m_asked && !m_over) {
            if (m_turn.wait_for(lock, look) == std::cv_status::timeout && m_asked &&
                ownTime() - m_asking > dead) {
                std::fputs("the window's thread answers no more\n", stderr);
                std::abort();
            }
        }
    }
}
