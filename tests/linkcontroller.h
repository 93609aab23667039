#pragma once

#include "site.h"

#include <QFile>
#include <QMetaMethod>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUdpSocket>
#include <QVector>

#include <algorithm>
#include <memory>
#include <mutex>
#include <netinet/in.h>
#include <sys/socket.h>

// A controller's side of a link, as far as the sockets go.
struct LinkController
{
    explicit LinkController(const Endpoint& at)
        : udpPort(quint16(at.udpPort))
    {
        server.listen(QHostAddress::LocalHost, quint16(at.tcpPort));
        stranger.bind(QHostAddress(QStringLiteral("127.0.0.2")));
    }
    bool accept()
    {
        if (!server.hasPendingConnections())
            server.waitForNewConnection(5000);
        peer.reset(server.nextPendingConnection());
        return peer != nullptr;
    }
    void send(const QByteArray& bytes)
    {
        peer->write(bytes);
        peer->flush();
    }
    void datagram(const QByteArray& bytes) { udp.writeDatagram(bytes, QHostAddress::LocalHost, udpPort); }
    // From an address that is not the controller's.
    void stray(const QByteArray& bytes) { stranger.writeDatagram(bytes, QHostAddress::LocalHost, udpPort); }
    // The console's end of the connection among the descriptors of this process, -1 if it is not here.
    int consoleEnd() const
    {
        for (int descriptor = 3; descriptor < 1024; ++descriptor) {
            sockaddr_in own{};
            socklen_t size = sizeof own;
            if (::getsockname(descriptor, reinterpret_cast<sockaddr*>(&own), &size) == 0 &&
                own.sin_family == AF_INET && ntohs(own.sin_port) == peer->peerPort())
                return descriptor;
        }
        return -1;
    }
    // True when the console has taken all that was sent over TCP.
    bool taken() const
    {
        QFile table(QStringLiteral("/proc/net/tcp"));
        if (!table.open(QIODevice::ReadOnly))
            return false;
        const QByteArray local = QByteArray::number(peer->peerPort(), 16).toUpper().rightJustified(4, '0');
        const QByteArray remote = QByteArray::number(peer->localPort(), 16).toUpper().rightJustified(4, '0');
        for (const QByteArray& line : table.readAll().split('\n')) {
            const QList<QByteArray> columns = line.simplified().split(' ');
            if (columns.size() > 4 && columns[1].endsWith(":" + local) && columns[2].endsWith(":" + remote))
                return columns[4].endsWith(":00000000");
        }
        return true; // the console's end is gone
    }

    QTcpServer server;
    std::unique_ptr<QTcpSocket> peer;
    QUdpSocket udp;
    QUdpSocket stranger;
    quint16 udpPort;
};

// Text as a frame of any of the links, or bytes under another signature.
inline QByteArray frame(const QByteArray& body, quint16 signature = 0x5650)
{
    QByteArray bytes;
    for (const int part : {int(signature), body.size()}) {
        bytes += char(part & 0xff);
        bytes += char(part >> 8);
    }
    return bytes + body;
}

// Writes down every signal `changed...` that a class of statuses declares, in the order of their coming.
class StatusRecorder : public QObject
{
public:
    struct Entry
    {
        QString name; // without "changed"
        QVariant value;
    };

    StatusRecorder(const QObject& link, const QMetaObject& status)
    {
        for (int i = status.methodOffset(); i < status.methodCount(); ++i) {
            const QMetaMethod method = status.method(i);
            if (!method.name().startsWith("changed"))
                continue;
            QMetaObject::connect(&link, i, this, QObject::staticMetaObject.methodCount() + m_signals.size());
            m_signals += method;
        }
    }
    int count() const { return m_signals.size(); }
    QStringList names() const
    {
        QStringList all;
        for (const Entry& entry : entries)
            all += entry.name;
        return all;
    }

    QVector<Entry> entries;

    int qt_metacall(QMetaObject::Call call, int id, void** arguments) override
    {
        id = QObject::qt_metacall(call, id, arguments);
        if (id < 0 || call != QMetaObject::InvokeMetaMethod)
            return id;
        const QMetaMethod& method = m_signals[id];
        entries.append({QString::fromLatin1(method.name().mid(int(qstrlen("changed")))),
                        QVariant(method.parameterType(0), arguments[1])});
        return -1;
    }

private:
    QVector<QMetaMethod> m_signals;
};

// What goes to the debug output, from all threads.
class DebugLines
{
public:
    static void collect() // from initTestCase() on
    {
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) {
            const std::lock_guard<std::mutex> guard(s_mutex);
            s_lines += text;
        });
    }
    static void clear()
    {
        const std::lock_guard<std::mutex> guard(s_mutex);
        s_lines.clear();
    }
    static int count(const QString& start)
    {
        const std::lock_guard<std::mutex> guard(s_mutex);
        return int(std::count_if(s_lines.cbegin(), s_lines.cend(),
                                 [&](const QString& line) { return line.startsWith(start); }));
    }

private:
    static inline std::mutex s_mutex;
    static inline QStringList s_lines;
};
