#include "tcplink.h"

#include <QTime>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <sys/socket.h>

using comm::FrameHead;
using comm::Wait;

namespace {

void tell(const char* line)
{
    if (line)
        qDebug("%s", line);
}

} // namespace

TcpLink::TcpLink(QThread& thread, const LinkManners& manners)
    : m_thread(thread)
    , m_manners(manners)
{}

TcpLink::~TcpLink() = default;

bool TcpLink::connect(const QString& host, int tcpPort, int udpPort)
{
    tell(m_manners.opening);
    if (connected())
        return false;
    m_thread.wait(); // the former connection may still be giving up its telemetry

    const int stream = comm::openStream(host, tcpPort, m_manners.host, m_manners.refused, m_manners.outlet);
    if (stream < 0)
        return false;

    m_connection.open(stream);
    m_controller = comm::peerOf(stream);
    m_stop = false;
    m_lost = false;
    m_telemetry = listen(udpPort);
    tell(m_manners.opened);
    m_thread.start();
    return true;
}

bool TcpLink::command(const QString& text)
{
    if (m_manners.sent)
        qDebug() << m_manners.sent << text;
    else
        qDebug().noquote() << text;
    if (!connected())
        return false;
    if (m_manners.longCommand == LinkManners::LongCommand::IsRefused &&
        text.toUtf8().size() > std::numeric_limits<quint16>::max()) {
        qWarning("TCPthread: a text of more bytes than a frame can count was not sent");
        return false;
    }
    return m_connection.send(m_manners.signature, text, m_manners.outlet);
}

bool TcpLink::connected() const
{
    return m_connection.isOpen();
}

bool TcpLink::disconnect()
{
    if (!connected())
        return false;
    m_stop = true;
    return m_thread.wait();
}

QString TcpLink::timeStamp()
{
    return QTime::currentTime().toString(QStringLiteral("[hh:mm:ss] "));
}

void TcpLink::telemetryLost()
{
    (m_manners.lostTelemetry == LinkManners::LostTelemetry::CutsTheFrame ? m_stop : m_lost) = true;
}

void TcpLink::end()
{
    m_stop = true;
    m_thread.wait();
}

void TcpLink::serve()
{
    tell(m_manners.started);
    const int stream = m_connection.socket();
    while (!ending()) {
        const Wait wait = waitForInput(stream);
        if (wait == Wait::Failed)
            break;
        if (wait == Wait::Ready && receiveFrame(stream) == Turn::End)
            break;
    }
    for (const char* line : m_manners.ended)
        tell(line);

    m_connection.close();
    m_telemetry.reset();
    tellDisconnected();
}

Wait TcpLink::waitForInput(int socket) const
{
    return comm::waitForInput(socket, m_manners.outlet);
}

TcpLink::Turn TcpLink::receiveFrame(int socket)
{
    FrameHead head{};
    const std::size_t have = receiveHead(socket, head, 0);
    if (have == 0)
        return Turn::End;
    const bool whole = have == sizeof head || m_manners.splitHead != LinkManners::SplitHead::IsBad;
    if (whole && takeFrame(socket, head))
        return Turn::Go;
    comm::tell(m_manners.outlet, "Bad packet signature");
    if (m_manners.badFrame == LinkManners::BadFrame::EndsTheLink)
        return Turn::End;
    do {
        char* const bytes = reinterpret_cast<char*>(&head);
        std::copy(bytes + 1, bytes + sizeof head, bytes);
        if (receiveHead(socket, head, sizeof head - 1) == 0)
            return Turn::End;
    } while (!takeFrame(socket, head));
    return Turn::Go;
}

// Reads on behind the first `have` bytes of a head: once, or until it is whole where that is awaited. Returns
// the bytes that are there then, 0 when the connection is over.
std::size_t TcpLink::receiveHead(int socket, FrameHead& head, std::size_t have)
{
    do {
        Wait wait = have > 0 ? Wait::Silent : Wait::Ready; // for its first byte serve() has waited
        while (wait == Wait::Silent && !ending())
            wait = waitForInput(socket);
        if (wait != Wait::Ready)
            return 0;
        const ssize_t got = ::recv(socket, reinterpret_cast<char*>(&head) + have, sizeof head - have, 0);
        if (got < 0 || (got == 0 && m_manners.peerGone == LinkManners::PeerGone::IsTold))
            comm::tell(m_manners.outlet, "recv() error:", qt_error_string(got < 0 ? errno : 0));
        if (got <= 0)
            return 0;
        have += static_cast<std::size_t>(got);
    } while (have < sizeof head && m_manners.splitHead == LinkManners::SplitHead::IsAwaited);
    return have;
}

bool TcpLink::takeFrame(int socket, const FrameHead& head)
{
    if (head.signature != m_manners.signature)
        return false;
    const QByteArray body = receiveBody(socket, head.length);
    const char* const text = body.constData(); // up to its first zero byte
    if (m_manners.text == LinkManners::Text::Bare) {
        tellText(QString::fromLatin1(text));
        return true;
    }
    qDebug().noquote() << m_manners.received << QString::fromUtf8(text);
    tellText(timeStamp() + QString::fromUtf8(text));
    return true;
}

QByteArray TcpLink::receiveBody(int socket, int length)
{
    QByteArray body(length, Qt::Uninitialized);
    int have = 0;
    while (have < length) {
        if (m_stop) {
            tell(m_manners.stopped);
            break;
        }
        const Wait wait = waitForInput(socket);
        if (wait == Wait::Silent)
            continue;
        if (wait == Wait::Failed)
            break;
        const ssize_t got = ::recv(socket, body.data() + have, static_cast<size_t>(length - have), 0);
        if (got <= 0) {
            comm::tell(m_manners.outlet, "recv() error:", qt_error_string(got < 0 ? errno : 0));
            break;
        }
        have += static_cast<int>(got);
    }
    body.truncate(have);
    return body;
}
