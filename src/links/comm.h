#pragma once

#include "element.h"

#include <QByteArray>
#include <QDebug>
#include <QHostAddress>
#include <QMap>
#include <QString>
#include <QThread>
#include <QUdpSocket>

#include <array>
#include <atomic>
#include <cstring>
#include <mutex>

// What the links to the controllers share, and below it the generic link. Each link keeps what it does with a
// bad frame, a loss or a field to itself.
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
void tell(Outlet outlet, const char* what, const QString& why = QString());

// A non-blocking TCP connection that sends small frames at once, or -1 with the reason told. `link`, if not
// empty, leads the line about an unknown host, `refused` the one about a peer that is not there. A peer that
// has not answered after one millisecond counts as absent: the caller runs in the window's thread and tries
// again a second later.
int openStream(const QString& host, int port, const char* link,
               const char* refused = "tcp connect() error:", Outlet outlet = Outlet::Debug);

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
    bool send(quint16 signature, const QString& text, Outlet outlet = Outlet::Debug);

    void close(); // by the thread that reads; after the send under way

private:
    std::mutex m_inUse;
    std::atomic<int> m_socket{-1};
};

enum class Wait { Ready, Silent, Failed };
Wait waitForInput(int socket, Outlet outlet = Outlet::Debug); // at most pollMs; a failure is told

// One read of at most 4 bytes. The number of bytes read, 0 or less when the peer is gone, with the reason in
// the debug output. What did not come is zero.
int receiveHead(int socket, FrameHead& head);

// The `length` bytes behind a head. Fewer when the peer goes away or `stop` is set meanwhile, which is told,
// with `stopText` for the latter in the debug output.
QByteArray receiveBody(int socket, int length, const std::atomic<bool>& stop, const char* stopText,
                       Outlet outlet = Outlet::Debug);

// The socket on which a controller's datagrams come, on all addresses of this computer. What anybody else
// sends there is dropped before its size is looked at, and told once.
class TelemetrySocket : public QUdpSocket
{
public:
    TelemetrySocket(int port, const QHostAddress& controller, Outlet outlet = Outlet::Debug);

    // Waits at most `ms` for a datagram of the controller, which is then the pending one.
    bool await(int ms);

private:
    bool pendingIsStrange();

    const QHostAddress m_controller;
    const Outlet m_outlet;
    bool m_told = false; // of a stranger
};

// Receives the status datagrams that `controller` sends to `port`, until `stop` is set. `onPack` gets each
// one with the right signature. A wrong signature drops the datagram but counts as a sign of life.
// `onSilence` is called from the eleventh empty wait on, at each, until something comes. A datagram of a size
// other than `Size` ends the process.
template <int Size, class OnPack, class OnSilence>
void receiveTelemetry(int port, const QHostAddress& controller, quint16 signature,
                      const std::atomic<bool>& stop, OnPack onPack, OnSilence onSilence)
{
    TelemetrySocket socket(port, controller);

    std::array<char, Size> pack;
    int waits = 0;
    while (!stop) {
        if (++waits > silentWaits)
            onSilence();
        if (!socket.await(pollMs))
            continue;
        const qint64 s = socket.pendingDatagramSize();
        // The text of this assertion is known to those who look after the machine; it stands as it is.
        // clang-format off
        Q_ASSERT(s == (((int)sizeof(pack)+3)/4)*4);
        // clang-format on
        if (socket.readDatagram(pack.data(), Size) != Size)
            continue;
        waits = 0;
        if (quint16 found; std::memcpy(&found, pack.data(), sizeof found), found != signature)
            qDebug("Bad signature of drive UDP packet");
        else
            onPack(pack);
    }
}

} // namespace comm

class UDPthread;

// The generic link: a client subscribes to named values, and the unit sends them back at a fixed period in
// one block. Nothing in the console builds one yet; it stands ready for a further unit.
//
// Owns the TCP connection, and the telemetry thread as long as the connection stands. It lives in the
// window's thread. Nothing is retried: the owner connects again after `disconnected`.
class TCPthread : public QThread
{
    Q_OBJECT
public:
    explicit TCPthread(QObject* parent = nullptr);
    ~TCPthread() override; // ends an open connection; waits without limit

    // Opens the connection, gives each element its place in the block, in ascending order of the keys, and
    // subscribes to them by name. Map and elements stay the owner's; the elements outlive the connection. The
    // peer has one millisecond to answer. False when already open or on any failure, told on standard error.
    // Asserts when an element would move: console and unit would disagree about the block.
    bool connect(const QString& host, int tcpPort, int udpPort, QMap<QString, Element*>* elements);

    // Sends one frame: u16 0x5153, u16 length, UTF-8 without terminator. True says that the system took it.
    // Only one thread may send. False on a closed link, and for a text that no frame can carry.
    bool command(const QString& text);

    bool connected() const;

    // Ends the connection and waits for the thread, without limit. False when there was none.
    bool disconnect();

public slots:
    void UDPdisconnected(); // telemetry is lost: asks the thread to end, from any thread

signals:
    void disconnected();               // the connection is over, both threads' work is done
    void message(const QString& text); // a text frame came

protected:
    void run() override;

private:
    enum class Turn { Go, End };
    Turn receiveFrame(int socket);
    // Waits for the bytes of a head that are missing behind the first `have`.
    Turn receiveHead(int socket, comm::FrameHead& head, std::size_t have);

    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_lost{false};
    comm::Connection m_connection;
    UDPthread* m_telemetry = nullptr;
};

// Receives the blocks and writes the elements. It starts itself. A block is u16 0x5153, u16 number of data
// bytes, the elements without gaps; it may come in several datagrams.
class UDPthread final : public QThread
{
    Q_OBJECT
public:
    // The elements of the map at this moment, their offsets set; they outlive the thread. Only what comes
    // from the address of the unit is heard.
    UDPthread(QMap<QString, Element*>* elements, int port, const QHostAddress& unit);
    ~UDPthread() override; // may be called from another thread; waits without limit

signals:
    // Nothing came for a second; raised again every further 100 ms until the thread is ended.
    void disconnected();

protected:
    void run() override;

private:
    std::size_t receiveBlock(comm::TelemetrySocket& sock, std::size_t s);
    void writeElements(std::size_t bytes);

    static constexpr std::size_t largestDatagram = 65507;

    std::atomic<bool> m_stop{false};
    const QMap<QString, Element*> m_elements;
    const int m_port;
    const QHostAddress m_unit;
    bool m_warned = false; // of a block that is too short
    std::array<char, largestDatagram> m_packet{};
};
