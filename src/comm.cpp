#include "comm.h"

#include <QThread>
#include <QVarLengthArray>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>

namespace comm {

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

bool sendText(int socket, quint16 signature, const QString& text)
{
    const QByteArray utf8 = text.toUtf8();
    const FrameHead head{signature, static_cast<quint16>(utf8.size())};
    QVarLengthArray<char, sizeof(FrameHead) + plainFrameText> frame;
    frame.append(reinterpret_cast<const char*>(&head), sizeof head);
    frame.append(utf8.constData(), utf8.size());
    return ::send(socket, frame.constData(), static_cast<size_t>(frame.size()), MSG_NOSIGNAL) >= 0;
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

int receiveHead(int socket, FrameHead& head)
{
    head = {};
    const ssize_t got = ::recv(socket, &head, sizeof head, 0);
    if (got <= 0)
        tell(Outlet::Debug, "recv() error:", qt_error_string(got < 0 ? errno : 0));
    return static_cast<int>(got);
}

QByteArray receiveBody(int socket, int length, const std::atomic<bool>& stop, const char* stopText,
                       Outlet outlet)
{
    QByteArray body(length, Qt::Uninitialized);
    int have = 0;
    while (have < length) {
        if (stop) {
            qDebug("%s", stopText);
            break;
        }
        const Wait wait = waitForInput(socket, outlet);
        if (wait == Wait::Silent)
            continue;
        if (wait == Wait::Failed)
            break;
        const ssize_t got = ::recv(socket, body.data() + have, static_cast<size_t>(length - have), 0);
        if (got <= 0) {
            tell(outlet, "recv() error:", qt_error_string(got < 0 ? errno : 0));
            break;
        }
        have += static_cast<int>(got);
    }
    body.truncate(have);
    return body;
}

void bindTelemetry(QUdpSocket& socket, int port, Outlet outlet)
{
    if (!socket.bind(static_cast<quint16>(port)))
        tell(outlet, "udp bind() error:", socket.errorString());
}

qint64 nextDatagramSize(QUdpSocket& socket)
{
    // Without a port there is nothing to wait on; the silence that follows drops the link.
    if (socket.state() != QAbstractSocket::BoundState) {
        QThread::msleep(pollMs);
        return -1;
    }
    return socket.waitForReadyRead(pollMs) ? socket.pendingDatagramSize() : -1;
}

} // namespace comm
