#include "finger.h"

#include <QAbstractNativeEventFilter>
#include <QApplication>
#include <QElapsedTimer>
#include <QHash>
#include <QThread>
#include <QWindow>

#include <xcb/xcb_keysyms.h>
#include <xcb/xtest.h>

#include <atomic>
#include <cstdlib>

namespace {

constexpr int kPollPeriod = 10;    // ms
constexpr int kTouchTime = 20;     // ms that a finger stays down at least
constexpr int kArrivalTime = 1000; // ms
constexpr int kSlideSteps = 8;
constexpr std::uint8_t kLeft = 1; // the button of a finger

template <class T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

xcb_keysym_t symbolOf(int key, const QString& text)
{
    if (text.size() == 1 && text[0].unicode() > 0x20 && text[0].unicode() < 0x7f)
        return text[0].unicode(); // the code of a letter is its symbol
    if (key > 0x20 && key < 0x7f)
        return xcb_keysym_t(QChar(key).toLower().unicode());
    if (key >= Qt::Key_F1 && key <= Qt::Key_F12)
        return xcb_keysym_t(0xffbe + key - Qt::Key_F1);
    static const QHash<int, xcb_keysym_t> others = {
        {Qt::Key_Space, 0x20},    {Qt::Key_Escape, 0xff1b},   {Qt::Key_Return, 0xff0d},
        {Qt::Key_Enter, 0xff8d},  {Qt::Key_Tab, 0xff09},      {Qt::Key_Backspace, 0xff08},
        {Qt::Key_Delete, 0xffff}, {Qt::Key_Home, 0xff50},     {Qt::Key_Left, 0xff51},
        {Qt::Key_Up, 0xff52},     {Qt::Key_Right, 0xff53},    {Qt::Key_Down, 0xff54},
        {Qt::Key_PageUp, 0xff55}, {Qt::Key_PageDown, 0xff56}, {Qt::Key_End, 0xff57},
        {Qt::Key_Menu, 0xff67},   {Qt::Key_Backtab, 0xff09},
    };
    return others.value(key);
}

// Counts the touches and keys that have come from the X server, also those that a modal window will keep from
// their window. A window manager may hold a touch back for a while, and keys would overtake it.
class Arrivals : public QAbstractNativeEventFilter
{
public:
    std::atomic<int> count{0};

    bool nativeEventFilter(const QByteArray&, void* message, long*) override
    {
        constexpr int touchDown = 4; // XInput2's numbers
        constexpr int touchUp = 5;
        const auto* event = static_cast<xcb_ge_generic_event_t*>(message);
        const int type = event->response_type & 0x7f;
        if (type == XCB_BUTTON_PRESS || type == XCB_BUTTON_RELEASE || type == XCB_KEY_PRESS ||
            (type == XCB_GE_GENERIC && (event->event_type == touchDown || event->event_type == touchUp)))
            ++count;
        return false;
    }
};

class XServerFinger : public Finger
{
public:
    explicit XServerFinger(int patience)
        : m_patience(patience)
        , m_server(xcb_connect(nullptr, nullptr))
        , m_keys(xcb_key_symbols_alloc(m_server))
    {
        if (xcb_connection_has_error(m_server))
            throw HandError("no way to the X server");
        m_root = xcb_setup_roots_iterator(xcb_get_setup(m_server)).data->root;
        onScreen([this] { qApp->installNativeEventFilter(&m_arrivals); });
    }

    ~XServerFinger() override
    {
        xcb_key_symbols_free(m_keys);
        xcb_disconnect(m_server);
    }

    void touch(const Where& where, bool stay) override
    {
        QPoint panel;
        if (!reach(where, &panel))
            return;
        pointer(panel);
        button(XCB_BUTTON_PRESS);
        QThread::msleep(kTouchTime);
        if (!stay)
            lift();
    }

    void slideTo(QPoint panel) override
    {
        const QPoint start = m_at;
        for (int step = 1; step <= kSlideSteps; ++step) {
            pointer(start + (panel - start) * step / kSlideSteps);
            QThread::msleep(kPollPeriod);
        }
    }

    void lift() override { button(XCB_BUTTON_RELEASE); }

    void key(int key, const QString& text) override
    {
        const xcb_keysym_t symbol = symbolOf(key, text);
        const Reply<xcb_keycode_t> code(xcb_key_symbols_get_keycode(m_keys, symbol), &std::free);
        if (!symbol || !code)
            throw HandError("no such key on the keyboard: " + text.toStdString());
        awaitFocus();
        const int before = m_arrivals.count;
        fake(XCB_KEY_PRESS, *code, {});
        fake(XCB_KEY_RELEASE, *code, {});
        awaitArrival(before);
    }

private:
    static void onScreen(const std::function<void()>& function)
    {
        QMetaObject::invokeMethod(qApp, function, Qt::BlockingQueuedConnection);
    }

    // Waits until the keys go where the toolkit and the server both say that they do: a window that has just
    // come is given them by the window manager.
    void awaitFocus() const
    {
        QElapsedTimer timer;
        timer.start();
        while (true) {
            xcb_window_t wanted = XCB_NONE;
            onScreen([&] {
                const QWidget* modal = QApplication::activeModalWidget();
                const QWindow* window = QGuiApplication::focusWindow();
                if (window && (!modal || (modal->isActiveWindow() && QApplication::focusWidget())))
                    wanted = static_cast<xcb_window_t>(window->winId());
            });
            const Reply<xcb_get_input_focus_reply_t> focus(
                xcb_get_input_focus_reply(m_server, xcb_get_input_focus(m_server), nullptr), &std::free);
            if (wanted != XCB_NONE && focus && focus->focus == wanted)
                return;
            if (timer.elapsed() > m_patience)
                throw HandError("no window of the console has the keys");
            QThread::msleep(kPollPeriod);
        }
    }

    // Waits until the window of the spot lies on top there; false when there is nothing to touch.
    bool reach(const Where& where, QPoint* panel) const
    {
        QElapsedTimer timer;
        timer.start();
        while (true) {
            QString name;
            xcb_window_t wanted = XCB_NONE;
            onScreen([&] {
                const Spot spot = where();
                if (!spot.widget)
                    return;
                name = spot.widget->objectName();
                *panel = spot.widget->mapToGlobal(spot.at);
                if (const QWindow* window = spot.widget->window()->windowHandle())
                    wanted = static_cast<xcb_window_t>(window->winId());
            });
            if (wanted == XCB_NONE)
                return false;
            if (windowAt(*panel) == wanted)
                return true;
            if (timer.elapsed() > m_patience)
                throw HandError("another window covers " + name.toStdString());
            QThread::msleep(kPollPeriod);
        }
    }

    // The innermost window at the point; the outer ones are the window manager's.
    xcb_window_t windowAt(QPoint panel) const
    {
        xcb_window_t window = m_root;
        while (true) {
            const Reply<xcb_translate_coordinates_reply_t> inner(
                xcb_translate_coordinates_reply(m_server,
                                                xcb_translate_coordinates(m_server, m_root, window,
                                                                          std::int16_t(panel.x()),
                                                                          std::int16_t(panel.y())),
                                                nullptr),
                &std::free);
            if (!inner || inner->child == XCB_NONE)
                return window;
            window = inner->child;
        }
    }

    void pointer(QPoint panel)
    {
        m_at = panel;
        fake(XCB_MOTION_NOTIFY, 0, panel);
    }

    void button(std::uint8_t type)
    {
        const int before = m_arrivals.count;
        fake(type, kLeft, {});
        awaitArrival(before);
    }

    void fake(std::uint8_t type, std::uint8_t detail, QPoint at)
    {
        xcb_test_fake_input(m_server, type, detail, XCB_CURRENT_TIME, m_root, std::int16_t(at.x()),
                            std::int16_t(at.y()), 0);
        // The server has done it when this returns.
        std::free(xcb_get_input_focus_reply(m_server, xcb_get_input_focus(m_server), nullptr));
    }

    void awaitArrival(int before) const
    {
        QElapsedTimer timer;
        timer.start();
        while (m_arrivals.count == before && timer.elapsed() < kArrivalTime)
            QThread::msleep(1);
    }

    int m_patience; // ms
    xcb_connection_t* m_server;
    xcb_key_symbols_t* m_keys;
    xcb_window_t m_root = XCB_NONE;
    QPoint m_at;
    Arrivals m_arrivals;
};

} // namespace

std::unique_ptr<Finger> xServerFinger(int patience)
{
    return std::make_unique<XServerFinger>(patience);
}
