#include "loopwatch.h"

#include <QFile>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <utility>

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

LoopWatch::Stall LoopWatch::takeLongest()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_longest, {});
}

LoopWatch::Account LoopWatch::account() const
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    QFile file(QStringLiteral("/proc/self/task/%1/schedstat").arg(m_thread));
    QList<QByteArray>
        words; // run, waited for a processor, turns: ns, ns, number; none where no account is kept
    if (file.open(QIODevice::ReadOnly))
        words = file.readAll().split(' ');
    return {words.value(0).toDouble() * 1e-9,
            std::chrono::duration<double>(now).count() - words.value(1).toDouble() * 1e-9};
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
                const Account answered = account(); // the watcher may be held up with the lock in its hand
                const std::lock_guard<std::mutex> answering(m_mutex);
                if (m_asked) {
                    const double busy = answered.busy - m_asking.busy;
                    m_longest.busy = qMax(m_longest.busy, int(busy * 1000));
                    m_longest.asleep =
                        qMax(m_longest.asleep, int((answered.own - m_asking.own - busy) * 1000));
                }
                m_asked = false;
                m_turn.notify_all();
            },
            Qt::QueuedConnection);
        m_asking = account(); // after the question: what holds up the watcher is no time of the window's
        while (m_asked && !m_over) {
            if (m_turn.wait_for(lock, look) == std::cv_status::timeout && m_asked &&
                account().own - m_asking.own > dead) {
                std::fputs("the window's thread answers no more\n", stderr);
                std::abort();
            }
        }
    }
}
