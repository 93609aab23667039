#include "endsignals.h"

#include <QCoreApplication>

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace {

constexpr int kAgain = 500; // ms

// A signal may come to any thread at any place: all that its handler does is to write a byte into this pipe.
// It is made once and stays, so that no handler can find it closed.
int wakeUp[2] = {-1, -1};

int readEnd()
{
    if (wakeUp[0] < 0 && ::pipe2(wakeUp, O_CLOEXEC | O_NONBLOCK) != 0)
        qFatal("no pipe for the signals");
    return wakeUp[0];
}

void wake(int)
{
    const int kept = errno;
    const char byte = 0;
    (void)!::write(wakeUp[1], &byte, 1); // a full pipe wakes as well
    errno = kept;
}

} // namespace

EndSignals::EndSignals()
    : m_notifier(readEnd(), QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &EndSignals::onSignal);
    // Whatever opens a loop on the way down, such as a message that a file could not be written, has nobody
    // to close it.
    connect(&m_again, &QTimer::timeout, this, [] { QCoreApplication::exit(0); });
    struct sigaction action = {};
    action.sa_handler = wake;
    action.sa_flags = SA_RESTART;
    ::sigemptyset(&action.sa_mask);
    for (std::size_t i = 0; i < kSignals.size(); ++i)
        ::sigaction(kSignals[i], &action, &m_former[i]);
}

EndSignals::~EndSignals()
{
    for (std::size_t i = 0; i < kSignals.size(); ++i)
        ::sigaction(kSignals[i], &m_former[i], nullptr);
}

void EndSignals::onSignal()
{
    char bytes[64];
    while (::read(readEnd(), bytes, sizeof bytes) > 0) {
    }
    if (!m_again.isActive()) {
        m_again.start(kAgain);
        emit asked();
    }
    QCoreApplication::exit(0);
}
