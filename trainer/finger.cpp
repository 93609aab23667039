#include "finger.h"

#include "screen.h"

#include <QApplication>
#include <QCursor>
#include <QThread>
#include <QWindow>
#include <QtTest/qtestkeyboard.h>
#include <qpa/qwindowsysteminterface.h>

namespace {

constexpr int kRest = 10; // ms

// Posted, not awaited: what a touch opens may run its own loop until the script closes it.
void post(const std::function<void()>& function)
{
    QMetaObject::invokeMethod(qApp, function, Qt::QueuedConnection);
}

// Touches enter the toolkit where those of a window system would.
class ToolkitFinger : public Finger
{
public:
    void touch(const Where& where, bool stay) override
    {
        post([where, stay] {
            const Spot spot = where();
            if (!spot.widget)
                return;
            last = spot;
            // The lifting is queued before the press, whose handling may block in a dialog.
            if (!stay)
                post([] { send(QEvent::MouseButtonRelease); });
            send(QEvent::MouseButtonPress);
        });
        // The queue has been run through once when this returns.
        QThread::msleep(kRest);
    }

    void slideTo(QPoint panel) override
    {
        post([panel] {
            if (!last.widget)
                return;
            last.at = last.widget->mapFromGlobal(panel);
            send(QEvent::MouseMove);
        });
        QThread::msleep(kRest);
    }

    void lift() override
    {
        post([] { send(QEvent::MouseButtonRelease); });
        QThread::msleep(kRest);
    }

    void key(int key, const QString& text) override
    {
        post([key, text] {
            if (QWindow* window = keyWindow())
                QTest::sendKeyEvent(QTest::Click, window, Qt::Key(key), text, Qt::NoModifier);
        });
        QThread::msleep(kRest);
    }

private:
    static void send(QEvent::Type type)
    {
        QWindow* window = last.widget ? last.widget->window()->windowHandle() : nullptr;
        if (!window)
            return;
        const QPoint local = last.widget->mapTo(last.widget->window(), last.at);
        const bool down = type != QEvent::MouseButtonRelease;
        QCursor::setPos(window->mapToGlobal(local)); // dialogs open where the finger is
        // Delivered within the call: a press and its lifting can then not change places in a queue.
        QWindowSystemInterface::handleMouseEvent<QWindowSystemInterface::SynchronousDelivery>(
            window, local, window->mapToGlobal(local), down ? Qt::LeftButton : Qt::NoButton,
            type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, type);
    }

    inline static Spot last; // window's thread; one finger for all hands
};

} // namespace

std::unique_ptr<Finger> Finger::ofPlatform(int patience)
{
    if (QGuiApplication::platformName() == QLatin1String("xcb"))
        return xServerFinger(patience);
    return std::make_unique<ToolkitFinger>();
}
