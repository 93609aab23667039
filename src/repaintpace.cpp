#include "repaintpace.h"

#include <QCoreApplication>
#include <QEvent>
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

bool RepaintPace::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() != QEvent::UpdateRequest)
        return QObject::eventFilter(watched, event);
    if (m_later.isActive())
        return true;
    const qint64 since = m_sincePainted.isValid() ? m_sincePainted.elapsed() : periodMs;
    if (since < periodMs) {
        m_later.start(int(periodMs - since));
        return true;
    }
    m_sincePainted.start();
    return false;
}
