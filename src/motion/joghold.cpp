#include "joghold.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPushButton>
#include <QWindow>

namespace {

bool isLeftButton(const QEvent* event, QEvent::Type type)
{
    return event->type() == type && static_cast<const QMouseEvent*>(event)->button() == Qt::LeftButton;
}

} // namespace

JogHold::JogHold(QPushButton* button, QObject* parent)
    : QObject(parent)
    , m_button(button)
{
    m_button->setFocusPolicy(Qt::NoFocus);
    m_button->installEventFilter(this);
    connect(m_button, &QObject::destroyed, this, [this] {
        m_button = nullptr;
        fingerUp();
    });
}

JogHold::~JogHold()
{
    letGo();
}

void JogHold::letGo()
{
    if (!m_held)
        return;
    m_held = false;
    if (m_button)
        m_button->setDown(false);
    emit released();
}

bool JogHold::eventFilter(QObject* watched, QEvent* event)
{
    // While the finger is down this filter stands on the application too, where a lift is seen even when
    // it goes to another window. The button's own events then pass twice, and the application comes first.
    if (m_down) {
        if (isLeftButton(event, QEvent::MouseButtonPress)) {
            fingerUp(); // the former lift got lost; the button's own filter begins anew
            return false;
        }
        if (endsHold(watched, event))
            letGo();
        if (event->type() == QEvent::TouchCancel || isLeftButton(event, QEvent::MouseButtonRelease))
            fingerUp();
    }
    return watched == m_button && filterButton(event);
}

bool JogHold::filterButton(QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick: { // the second of two quick presses
        const auto& mouse = static_cast<const QMouseEvent&>(*event);
        if (mouse.button() == Qt::LeftButton && !m_down && m_button->isEnabled() && isOnButton(mouse))
            fingerDown();
        return false;
    }
    case QEvent::MouseMove: {
        if (!m_down)
            return false;
        const auto& mouse = static_cast<const QMouseEvent&>(*event);
        if (!(mouse.buttons() & Qt::LeftButton))
            fingerUp(); // lifted where nobody told us
        else if (!isOnButton(mouse))
            letGo();
        // A button that no longer moves anything must not look pressed when the finger slides back.
        return m_down && !m_held;
    }
    default:
        return false;
    }
}

// Conditions under which the coming lift may be lost, or the press no longer means what it did.
bool JogHold::endsHold(QObject* watched, QEvent* event) const
{
    const QWidget* window = m_button->window();
    switch (event->type()) {
    case QEvent::Hide:
        return watched == m_button || !m_button->isVisible();
    case QEvent::EnabledChange:
        return m_button->parentWidget() && !m_button->parentWidget()->isEnabled();
    case QEvent::WindowBlocked:
        return watched == window || watched == window->windowHandle();
    case QEvent::WindowDeactivate:
        return watched == window;
    case QEvent::ApplicationStateChange:
        return QGuiApplication::applicationState() != Qt::ApplicationActive;
    case QEvent::TouchCancel:
        return true;
    default:
        return false;
    }
}

bool JogHold::isOnButton(const QMouseEvent& event) const
{
    return m_button->rect().contains(event.pos());
}

void JogHold::fingerDown()
{
    m_down = true;
    m_held = true;
    qApp->installEventFilter(this);
    emit pressed();
}

void JogHold::fingerUp()
{
    if (!m_down)
        return;
    m_down = false;
    if (qApp)
        qApp->removeEventFilter(this);
    letGo();
}
