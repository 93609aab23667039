#include "repaintpace.h"

#include <QCoreApplication>
#include <QEvent>
#include <QScopedValueRollback>
#include <QWidget>

RepaintPace::RepaintPace(QWidget* window)
    : QObject(window)
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

bool RepaintPace::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::UpdateRequest)
        return QObject::eventFilter(watched, event);
    const qint64 since = m_sincePainted.isValid() && !m_urgent ? m_sincePainted.elapsed() : periodMs;
    if (since < periodMs) {
        if (!m_later.isActive())
            m_later.start(int(periodMs - since));
        return true;
    }
    m_later.stop();
    m_sincePainted.start();
    return false;
}
