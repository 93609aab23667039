#include "repaintpace.h"

#include <QCoreApplication>
#include <QEvent>
#include <QScopedValueRollback>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <ctime>

namespace {

// Processor time of this thread, ms: what others make it wait is no cost of its painting.
double spentMs()
{
    timespec time;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) * 1e3 + double(time.tv_nsec) / 1e6;
}

} // namespace

RepaintPace::RepaintPace(QWidget* window)
    : QObject(window)
    , m_window(window)
{
    m_later.setSingleShot(true);
    m_later.setTimerType(Qt::PreciseTimer);
    connect(&m_later, &QTimer::timeout, window,
            [window] { QCoreApplication::postEvent(window, new QEvent(QEvent::UpdateRequest)); });
    window->installEventFilter(this);
}

void RepaintPace::repaintNow(QWidget* widget)
{
    auto* pace = widget->window()->findChild<RepaintPace*>(QString(), Qt::FindDirectChildrenOnly);
    if (!pace) {
        widget->repaint();
        return;
    }
    const QScopedValueRollback<bool> urgent(pace->m_urgent, true);
    widget->repaint();
}

int RepaintPace::wait() const
{
    if (m_urgent || !m_sincePainted.isValid())
        return 0;
    const double until = std::min(double(periodMs), m_owed / share);
    return std::max(0, int(std::ceil(until)) - int(m_sincePainted.elapsed()));
}

bool RepaintPace::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::UpdateRequest || m_painting)
        return QObject::eventFilter(watched, event);
    if (const int ms = wait(); ms > 0) {
        if (!m_later.isActive())
            m_later.start(ms);
        return true;
    }
    m_later.stop();
    paint(event);
    return true;
}

// What was spent is owed; time pays it back by the share.
void RepaintPace::paint(QEvent* request)
{
    constexpr double savedMs = 3; // several controllers may tell something at the same moment
    const QScopedValueRollback<bool> painting(m_painting, true);
    const double paidBack = m_sincePainted.isValid() ? share * double(m_sincePainted.elapsed()) : savedMs;
    const double start = spentMs();
    QCoreApplication::sendEvent(m_window, request);
    const double owed = std::max(-savedMs, m_owed - paidBack) + spentMs() - start;
    m_owed = std::min(owed, 2 * share * periodMs); // beyond a period nothing waits, so it is not owed either
    m_sincePainted.start();
}
