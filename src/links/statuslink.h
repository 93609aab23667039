#pragma once

#include "tcplink.h"
#include "wiretable.h"

#include <QElapsedTimer>
#include <QThread>

#include <array>
#include <atomic>
#include <memory>
#include <optional>

// A link whose controller tells its whole state by datagram: the thread that reads the TCP connection and the
// one that receives telemetry. Both are of one class of signals, and what the second raises the first tells
// on.
//
// What a controller has of its own stands in a struct `Wire`:
//   Status      the class of the signals, a QThread
//   Reader      the thread of the connection: StatusLink<Wire, ...>, with the signal `disconnected()`, the
//   signal
//               `message(const QString&)` and the slot `UDPdisconnected()`
//   Receiver    the thread of the telemetry: StatusReceiver<Wire>, with the signal `UDPdisconnected()`
//   packSize    bytes of its datagram
//   table       what stands where in it
//   manners     of its TCP side

// The reading thread, on top of `Link`, which is a TcpLink. The class that inherits ends it: with end(), in
// its destructor.
template <class Wire, class Link>
class StatusLink : public Wire::Status, public Link
{
public:
    using Link::connect;
    using Link::disconnect;

protected:
    explicit StatusLink(QObject* parent)
        : Wire::Status(parent)
        , Link(static_cast<QThread&>(*this), Wire::manners)
    {}

    void run() override { Link::serve(); }
    std::unique_ptr<QThread> listen(int udpPort) override
    {
        return std::make_unique<typename Wire::Receiver>(&self(), udpPort);
    }
    void tellText(const QString& text) override { emit self().message(text); }
    void tellDisconnected() override { emit self().disconnected(); }

    auto& self() { return static_cast<typename Wire::Reader&>(*this); }
};

// The receiving thread. A signal of the status comes when its field differs from the datagram before; the
// first datagram after a connect raises all of them, whatever their values. A datagram of another size than
// the controller's ends the process: console and controller would disagree on the layout.
template <class Wire>
class StatusReceiver : public Wire::Status
{
protected:
    using Pack = std::array<char, Wire::packSize>;

    StatusReceiver(typename Wire::Reader* owner, int port)
        : m_owner(owner)
        , m_port(port)
        , m_controller(owner->controller())
    {}

    // The last act of the constructor of the class that inherits.
    void begin()
    {
        wire::forward(Wire::Status::staticMetaObject, *this, *m_owner);
        // Direct, so that a loss is acted on even while the window's thread is busy.
        QObject::connect(&self(), &Wire::Receiver::UDPdisconnected, m_owner, &Wire::Reader::UDPdisconnected,
                         Qt::DirectConnection);
        this->start();
    }
    // The only act of its destructor, which another thread may call; waits without limit.
    void halt()
    {
        QObject::disconnect(this, nullptr, m_owner, nullptr);
        m_stop = true;
        this->wait();
    }

    void run() override
    {
        comm::receiveTelemetry<Wire::packSize>(
            m_port, m_controller, Wire::manners.signature, m_stop, [this](const Pack& pack) { take(pack); },
            [this] { tellHeld(); }, [this] { emit self().UDPdisconnected(); });
    }
    // What a datagram tells stands in the window's queue, and touches stand behind it. While the window has
    // `unheard` of them before it, no more are told than the controller sends by itself at its own pace: a
    // flood is thinned out, a window that stands still misses nothing. What is passed over is held until the
    // next one, or until the line is quiet, so that the last state is always told.
    virtual void take(const Pack& pack)
    {
        if (*m_before >= unheard && !m_sinceTold.hasExpired(ownPaceMs)) {
            m_held = pack;
            return;
        }
        tell(pack);
    }

    typename Wire::Reader* const m_owner;

private:
    auto& self() { return static_cast<typename Wire::Receiver&>(*this); }

    void tellHeld()
    {
        if (m_held)
            tell(Pack(*m_held));
    }
    void tell(const Pack& pack)
    {
        m_held.reset();
        if (!m_last.take(Wire::table, static_cast<typename Wire::Status&>(*this), pack))
            return;
        m_sinceTold.start();
        ++*m_before;
        QMetaObject::invokeMethod(
            m_owner, [before = m_before] { --*before; }, Qt::QueuedConnection);
    }

    static constexpr int unheard = 32;
    static constexpr int ownPaceMs = 40; // the controllers send each 50 ms
    const std::shared_ptr<std::atomic<int>> m_before = std::make_shared<std::atomic<int>>(0);
    QElapsedTimer m_sinceTold;
    std::optional<Pack> m_held;
    const int m_port;
    const QHostAddress m_controller;
    std::atomic<bool> m_stop{false};
    wire::LastPack<Wire::packSize> m_last;
};
