#pragma once

#include <QByteArray>
#include <QDebug>
#include <QString>
#include <QUdpSocket>

#include <array>
#include <atomic>
#include <cstring>

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

// A non-blocking TCP connection, or -1 with the reason in the debug output. `link` leads the line about an
// unknown host, if not empty. A peer that has not answered after one millisecond counts as absent: the
// caller runs in the window's thread and tries again a second later.
int openStream(const QString& host, int port, const char* link);

// One frame with the UTF-8 text in a single send. False when the send reports an error; a partial send is
// not noticed. The head carries the low 16 bits of the length.
bool sendText(int socket, quint16 signature, const QString& text);

enum class Wait { Ready, Silent, Failed };
Wait waitForInput(int socket); // at most pollMs; a failure is told in the debug output

// One read of at most 4 bytes. The number of bytes read, 0 or less when the peer is gone, with the reason in
// the debug output. What did not come is zero.
int receiveHead(int socket, FrameHead& head);

// The `length` bytes behind a head. Fewer when the peer goes away or `stop` is set meanwhile; the debug
// output tells which, with `stopText` for the latter.
QByteArray receiveBody(int socket, int length, const std::atomic<bool>& stop, const char* stopText);

// Receives status datagrams on `port`, from any address, until `stop` is set. `onPack` gets each one with the
// right signature. A wrong signature drops the datagram but counts as a sign of life. `onSilence` is called
// from the eleventh empty wait on, at each, until something comes. A datagram of a size other than `Size`
// ends the process.
template <int Size, class OnPack, class OnSilence>
void receiveTelemetry(int port, quint16 signature, const std::atomic<bool>& stop, OnPack onPack,
                      OnSilence onSilence);

namespace detail {

void bindTelemetry(QUdpSocket& socket, int port);
qint64 nextDatagramSize(QUdpSocket& socket); // waits at most pollMs; -1 when none came

} // namespace detail

template <int Size, class OnPack, class OnSilence>
void receiveTelemetry(int port, quint16 signature, const std::atomic<bool>& stop, OnPack onPack,
                      OnSilence onSilence)
{
    QUdpSocket socket;
    detail::bindTelemetry(socket, port);

    std::array<char, Size> pack;
    int waits = 0;
    while (!stop) {
        if (++waits > silentWaits)
            onSilence();
        const qint64 s = detail::nextDatagramSize(socket);
        if (s < 0)
            continue;
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
