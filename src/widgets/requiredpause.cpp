#include "requiredpause.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEventLoop>
#include <QMouseEvent>
#include <QPointer>
#include <QSet>
#include <QTimer>

namespace {

// Stands before the whole application, from the first button that acts always to the end, so that the
// filters of a jog in hand, which come later, see each event before it is dropped.
class Gate : public QObject
{
public:
    static Gate& instance()
    {
        static QPointer<Gate> gate;
        if (!gate) {
            gate = new Gate;
            gate->setParent(qApp);
            qApp->installEventFilter(gate);
        }
        return *gate;
    }

    bool run(std::chrono::microseconds length);
    bool running() const { return m_loop; }
    void actsAlways(QAbstractButton* button) { m_always.append(button); }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool drops(QObject* watched, QEvent* event);
    bool dropsPress(QObject* watched, const QMouseEvent& event);
    bool dropsMove(const QMouseEvent& event);
    bool dropsKey(const QKeyEvent& event);
    bool dropsTouch(QEvent::Type type);
    void act(QObject* watched);

    QVector<QPointer<QAbstractButton>> m_always;
    QEventLoop* m_loop = nullptr; // of the pause that runs
    bool m_stopped = false;       // the pause, by a button that acts always
    // What was pressed in a pause and has not been seen to lift.
    Qt::MouseButtons m_dropped;
    QSet<int> m_droppedKeys;
    bool m_touchDropped = false;
};

bool Gate::run(std::chrono::microseconds length)
{
    using namespace std::chrono;
    if (m_loop)
        return false;
    QEventLoop loop;
    m_loop = &loop;
    m_stopped = false;
    QTimer timer;
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    // Any other result: a button that acts always, or the end of the program with a code of its own.
    constexpr int timeOver = -1000;
    QObject::connect(&timer, &QTimer::timeout, &loop, [&loop] { loop.exit(timeOver); });

    const auto end = steady_clock::now() + length;
    bool last = false;
    int result = timeOver;
    while (result == timeOver && !last) {
        // The last round has no length: touches of the last moment are touches of the pause.
        const auto now = steady_clock::now();
        last = now >= end;
        timer.start(last ? milliseconds::zero() : ceil<milliseconds>(end - now));
        result = loop.exec();
    }
    m_loop = nullptr;
    return result == timeOver && !m_stopped;
}

bool Gate::eventFilter(QObject* watched, QEvent* event)
{
    if (!drops(watched, event))
        return false;
    event->accept(); // nor is it offered to the parents
    return true;
}

bool Gate::drops(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::Shortcut: // goes to an action
        return running();
    case QEvent::ShortcutOverride:
    case QEvent::InputMethod:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
        return running() && watched->isWidgetType();
    default:
        break;
    }
    // The window of the window system keeps its own account of what is pressed: it sees everything.
    if (!watched->isWidgetType())
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick: // the second of two quick presses
        return dropsPress(watched, static_cast<const QMouseEvent&>(*event));
    case QEvent::MouseMove:
        return dropsMove(static_cast<const QMouseEvent&>(*event));
    case QEvent::MouseButtonRelease: {
        const Qt::MouseButton button = static_cast<const QMouseEvent*>(event)->button();
        const bool dropped = m_dropped.testFlag(button);
        m_dropped.setFlag(button, false);
        return dropped;
    }
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
        return dropsKey(static_cast<const QKeyEvent&>(*event));
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
        return dropsTouch(event->type());
    default:
        return false;
    }
}

bool Gate::dropsPress(QObject* watched, const QMouseEvent& event)
{
    m_dropped.setFlag(event.button(), running());
    if (running() && event.button() == Qt::LeftButton)
        act(watched);
    return m_dropped.testFlag(event.button());
}

bool Gate::dropsMove(const QMouseEvent& event)
{
    m_dropped &= event.buttons(); // lifted where nobody told us
    return m_dropped;
}

bool Gate::dropsKey(const QKeyEvent& event)
{
    const bool before = m_droppedKeys.contains(event.key());
    if (event.isAutoRepeat())
        return before || running();
    if (event.type() == QEvent::KeyRelease)
        return m_droppedKeys.remove(event.key());
    if (running())
        m_droppedKeys.insert(event.key());
    else
        m_droppedKeys.remove(event.key());
    return running();
}

bool Gate::dropsTouch(QEvent::Type type)
{
    if (type == QEvent::TouchBegin)
        m_touchDropped = running();
    const bool dropped = m_touchDropped;
    if (type == QEvent::TouchEnd || type == QEvent::TouchCancel)
        m_touchDropped = false;
    return dropped;
}

void Gate::act(QObject* watched)
{
    for (const QPointer<QAbstractButton>& button : qAsConst(m_always)) {
        if (button != watched || !button->isEnabled())
            continue;
        m_stopped = true;
        button->click();
        m_loop->quit();
        return;
    }
}

} // namespace

bool RequiredPause::wait(std::chrono::microseconds length)
{
    return Gate::instance().run(length);
}

void RequiredPause::actsAlways(QAbstractButton* button)
{
    Gate::instance().actsAlways(button);
}
