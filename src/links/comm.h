#pragma once

#include <QByteArray>
#include <QDebug>
#include <QHostAddress>
#include <QString>
#include <QUdpSocket>

#include <array>
#include <atomic>
#include <cstring>
#include <mutex>
#include <sys/socket.h>

// What the links to the controllers share. Each link keeps what it does with a bad frame, a loss or a field
// to itself.
namespace comm {

constexpr int pollMs = 100;          // no wait lasts longer, so that a stop is seen within it
constexpr int silentWaits = 10;      // empty waits that telemetry may have; the next is a loss
constexpr int plainFrameText = 1000; // bytes of text that a frame carries without allocating

// Head of every TCP frame, in both directions; `length` bytes follow.
struct FrameHead
{
    quint16 signature;
    quint16 length;
};
static_assert(sizeof(FrameHead) == 4);

// Where a link tells its troubles; never to the operator.
enum class Outlet { Debug, StandardError };
void tell(Outlet outlet, const char* what);
void tell(Outlet outlet, const char* what, const QString& why);

// A non-blocking TCP connection that sends small frames at once, or -1 with the reason told. `link`, if not
// empty, leads the line about an unknown host, `refused` the one about a peer that is not there. A peer that
// has not answered after one millisecond counts as absent: the caller runs in the window's thread and tries
// again a second later.
int openStream(const QString& host, int port, const char* link, const char* refused, Outlet outlet);

// The address that the controller's name stood for when the connection was made.
QHostAddress peerOf(int socket);

// A connection on which one thread sends while another one reads, and closes it in the end. The descriptor is
// never closed under the sender's hands, and the sender waits for nobody.
class Connection
{
public:
    void open(int socket) { m_socket = socket; }
    bool isOpen() const { return m_socket >= 0; } // any thread
    int socket() const { return m_socket; }       // for the thread that reads; -1 while closed

    // One frame with the UTF-8 text in a single send; the head carries the low 16 bits of the length. False
    // on a closed connection and when the system refuses the frame, which is told. A frame of which only a
    // part was taken is told and counts as sent: there is no second try.
    bool send(quint16 signature, const QString& text, Outlet outlet);

    void close(); // by the thread that reads; after the send under way

private:
    std::mutex m_inUse;
    std::atomic<int> m_socket{-1};
};

enum class Wait { Ready, Silent, Failed };
Wait waitForInput(int socket, Outlet outlet); // at most pollMs; a failure is told

// The socket on which a controller's datagrams come, on all addresses of this computer. What anybody else
// sends there is dropped before its size is looked at, and told once.
class TelemetrySocket : public QUdpSocket
{
public:
    TelemetrySocket(int port, const QHostAddress& controller, Outlet outlet = Outlet::Debug);

    // Waits at most `ms` for a datagram of the controller, which is then the pending one.
    bool await(int ms);

    // The same, and takes it: a datagram that waits already costs one call of the system. Returns its size,
    // of which as much as there is room for is at `to`, or -1 for none.
    qint64 take(char* to, std::size_t room, int ms);

private:
    qint64 receive(char* to, std::size_t room, int flags, int ms);
    bool isStrange(const sockaddr_storage& sender);

    const Q_IPV6ADDR m_controller; // as the system tells a sender
    const Outlet m_outlet;
    bool m_told = false; // of a stranger
};

// What a datagram was to its receiver: a sign of the controller's life, none, or the last one to be heard.
enum class Heard { Life, Nothing, End };

// Lets `await(pollMs)` bring a datagram of the controller and hands each to `onDatagram`, until that says End
// or `stop` is set. `onPause` is called after each empty wait; `onSilence` from the eleventh on, at each,
// until there is a sign of life.
template <class Await, class OnDatagram, class OnPause, class OnSilence>
void hearTelemetry(const std::atomic<bool>& stop, Await await, OnDatagram onDatagram, OnPause onPause,
                   OnSilence onSilence)
{
    int waits = 0;
    while (!stop) {
        if (++waits > silentWaits)
            onSilence();
        if (!await(pollMs)) {
            onPause();
            continue;
        }
        const Heard heard = onDatagram();
        if (heard == Heard::End)
            return;
        if (heard == Heard::Life)
            waits = 0;
    }
}

// Receives the status datagrams that `controller` sends to `port`, until `stop` is set. `onPack` gets each
// one with the right signature. A wrong signature drops the datagram but counts as a sign of life. A datagram
// of a size other than `Size` ends the process.
template <int Size, class OnPack, class OnPause, class OnSilence>
void receiveTelemetry(int port, const QHostAddress& controller, quint16 signature,
                      const std::atomic<bool>& stop, OnPack onPack, OnPause onPause, OnSilence onSilence)
{
    TelemetrySocket socket(port, controller);
    std::array<char, Size> pack;
    qint64 s = -1;
    const auto await = [&](int ms) { return (s = socket.take(pack.data(), Size, ms)) >= 0; };
    const auto onDatagram = [&] {
        // The text of this assertion is known to those who look after the machine; it stands as it is.
        // clang-format off
        Q_ASSERT(s == (((int)sizeof(pack)+3)/4)*4);
        // clang-format on
        if (quint16 found; std::memcpy(&found, pack.data(), sizeof found), found != signature)
            qDebug("Bad signature of drive UDP packet");
        else
            onPack(pack);
        return Heard::Life;
    };
    hearTelemetry(stop, await, onDatagram, onPause, onSilence);
}

} // namespace comm
