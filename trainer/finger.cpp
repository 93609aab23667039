#include "finger.h"

#include "screen.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QCursor>
#include <QWindow>
#include <QtTest/qtestkeyboard.h>
#include <qpa/qwindowsysteminterface.h>

#include <chrono>
#include <future>

namespace {

constexpr std::chrono::seconds longestWork{10}; // of the console, upon one touch

// Posted, not awaited: what a touch opens may run its own loop until the script closes it.
void post(const std::function<void()>& function)
{
    QMetaObject::invokeMethod(qApp, function, Qt::QueuedConnection);
}

// Until the console has taken what was posted and what that has posted in turn, and rests: out of the loops
// of menus and dialogs that this has ended.
void settle()
{
    for (int round = 0; round < 2; ++round)
        QMetaObject::invokeMethod(
            qApp, [] {}, Qt::BlockingQueuedConnection);
    const auto rests = std::make_shared<std::promise<void>>();
    post([rests] {
        const auto once = std::make_shared<QMetaObject::Connection>();
        *once = QObject::connect(QAbstractEventDispatcher::instance(),
                                 &QAbstractEventDispatcher::aboutToBlock, [rests, once] {
                                     rests->set_value();
                                     QObject::disconnect(*once);
                                 });
    });
    rests->get_future().wait_for(longestWork);
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
        settle();
    }

    void slideTo(QPoint panel) override
    {
        post([panel] {
            if (!last.widget)
                return;
            last.at = last.widget->mapFromGlobal(panel);
            send(QEvent::MouseMove);
        });
        settle();
    }

    void lift() override
    {
        post([] { send(QEvent::MouseButtonRelease); });
        settle();
    }

    void key(int key, const QString& text) override
    {
        post([key, text] {
            if (QWindow* window = keyWindow())
                QTest::sendKeyEvent(QTest::Click, window, Qt::Key(key), text, Qt::NoModifier);
        });
        settle();
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
