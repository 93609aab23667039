#include "comm.h"

#include <QDeadlineTimer>
#include <QThread>
#include <QVarLengthArray>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

namespace comm {

void tell(Outlet outlet, const char* what)
{
    if (outlet == Outlet::Debug)
        qDebug("%s", what);
    else
        std::fprintf(stderr, "%s\n", what);
}

void tell(Outlet outlet, const char* what, const QString& why)
{
    if (outlet == Outlet::Debug)
        qDebug().noquote() << what << why;
    else
        std::fprintf(stderr, "%s%s%s\n", what, why.isEmpty() ? "" : " ", qPrintable(why));
}

namespace {

// False when the name means nothing to the resolver.
bool resolve(const QString& host, int port, const char* link, Outlet outlet, sockaddr_in& address)
{
    const hostent* found = gethostbyname(host.toUtf8().constData());
    if (!found || found->h_addrtype != AF_INET) {
        const QByteArray what = QByteArray(link) + (*link ? " " : "") + "gethostbyname() error:";
        tell(outlet, what.constData(), QString::fromLocal8Bit(hstrerror(h_errno)));
        return false;
    }
    address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<quint16>(port));
    std::memcpy(&address.sin_addr, found->h_addr_list[0], sizeof address.sin_addr);
    return true;
}

} // namespace

int openStream(const QString& host, int port, const char* link, const char* refused, Outlet outlet)
{
    sockaddr_in address;
    if (!resolve(host, port, link, outlet, address))
        return -1;

    const int stream = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (stream < 0) {
        tell(outlet, "socket() error:", qt_error_string(errno));
        return -1;
    }
    ::fcntl(stream, F_SETFL, ::fcntl(stream, F_GETFL) | O_NONBLOCK);
    // A stop must not wait in the sender's queue for the acknowledgement of the command before it.
    const int noDelay = 1;
    ::setsockopt(stream, IPPROTO_TCP, TCP_NODELAY, &noDelay, sizeof noDelay);

    while (::connect(stream, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        // A peer that is still pending after the pause answers EALREADY and is given up. This short patience
        // is deliberate: the window's thread stands still here.
        if (errno != EINPROGRESS) {
            tell(outlet, refused, qt_error_string(errno));
            ::close(stream);
            return -1;
        }
        QThread::usleep(1000);
    }
    return stream;
}

QHostAddress peerOf(int socket)
{
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    if (::getpeername(socket, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        return {};
    return QHostAddress(reinterpret_cast<const sockaddr*>(&address));
}

bool Connection::send(quint16 signature, const QString& text, Outlet outlet)
{
    // Only close() takes the lock besides: where it is taken the connection has ended.
    const std::unique_lock<std::mutex> use(m_inUse, std::try_to_lock);
    const int socket = m_socket;
    if (!use || socket < 0)
        return false;
    const QByteArray utf8 = text.toUtf8();
    const FrameHead head{signature, static_cast<quint16>(utf8.size())};
    QVarLengthArray<char, sizeof(FrameHead) + plainFrameText> frame;
    frame.append(reinterpret_cast<const char*>(&head), sizeof head);
    frame.append(utf8.constData(), utf8.size());
    const ssize_t sent = ::send(socket, frame.constData(), static_cast<size_t>(frame.size()), MSG_NOSIGNAL);
    if (sent < 0)
        tell(outlet, "send() error:", qt_error_string(errno));
    else if (sent < frame.size())
        tell(outlet, "send() took only",
             QStringLiteral("%1 of %2 bytes").arg(qint64(sent)).arg(frame.size()));
    // A part counts, for the links have always had it so: the controller finds the next frame broken and ends
    // the connection, and the console makes a new one.
    return sent >= 0;
}

void Connection::close()
{
    const std::lock_guard<std::mutex> use(m_inUse);
    ::close(m_socket.exchange(-1));
}

Wait waitForInput(int socket, Outlet outlet)
{
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(socket, &readable);
    timeval limit{0, pollMs * 1000};
    const int count = ::select(socket + 1, &readable, nullptr, nullptr, &limit);
    if (count < 0) {
        tell(outlet, "select() error:", qt_error_string(errno));
        return Wait::Failed;
    }
    return count > 0 ? Wait::Ready : Wait::Silent;
}

namespace {

// An address of the older kind as the newer one writes it.
Q_IPV6ADDR wireAddress(const sockaddr_storage& address)
{
    Q_IPV6ADDR bytes{};
    if (address.ss_family == AF_INET6) {
        std::memcpy(&bytes, &reinterpret_cast<const sockaddr_in6&>(address).sin6_addr, sizeof bytes);
    } else if (address.ss_family == AF_INET) {
        bytes[10] = bytes[11] = 0xFF;
        std::memcpy(&bytes[12], &reinterpret_cast<const sockaddr_in&>(address).sin_addr, 4);
    }
    return bytes;
}

} // namespace

TelemetrySocket::TelemetrySocket(int port, const QHostAddress& controller, Outlet outlet)
    : m_controller(controller.toIPv6Address())
    , m_outlet(outlet)
{
    if (!bind(static_cast<quint16>(port)))
        tell(outlet, "udp bind() error:", errorString());
}

bool TelemetrySocket::await(int ms)
{
    char first;
    return receive(&first, sizeof first, MSG_PEEK, ms) >= 0;
}

qint64 TelemetrySocket::take(char* to, std::size_t room, int ms)
{
    return receive(to, room, 0, ms);
}

// What waits is looked for before anything is waited for. Strangers make the wait neither longer nor shorter.
qint64 TelemetrySocket::receive(char* to, std::size_t room, int flags, int ms)
{
    // Without a port there is nothing to wait on; the silence that follows drops the link.
    if (state() != BoundState) {
        QThread::msleep(static_cast<unsigned long>(ms));
        return -1;
    }
    const QDeadlineTimer end(ms);
    do {
        sockaddr_storage sender{};
        socklen_t size = sizeof sender;
        const ssize_t got =
            ::recvfrom(static_cast<int>(socketDescriptor()), to, room, flags | MSG_DONTWAIT | MSG_TRUNC,
                       reinterpret_cast<sockaddr*>(&sender), &size);
        if (got < 0) {
            if (!waitForReadyRead(int(end.remainingTime())))
                return -1;
        } else if (!isStrange(sender)) {
            return got;
        } else if (flags & MSG_PEEK) {
            readDatagram(nullptr, 0);
        }
    } while (!end.hasExpired());
    return -1;
}

bool TelemetrySocket::isStrange(const sockaddr_storage& sender)
{
    const Q_IPV6ADDR address = wireAddress(sender);
    if (std::memcmp(&address, &m_controller, sizeof address) == 0)
        return false;
    if (!m_told)
        tell(m_outlet, "Dropped a datagram from",
             QHostAddress(reinterpret_cast<const sockaddr*>(&sender)).toString());
    m_told = true;
    return true;
}

} // namespace comm
