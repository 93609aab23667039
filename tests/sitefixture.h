#pragma once

#include "site.h"

#include <QDir>
#include <QTemporaryDir>
#include <QUdpSocket>

#include <chrono>
#include <vector>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

// A site of its own for one test: a temporary root with the folders that the machine has, ports on loopback
// that no other test gets meanwhile, and pauses short enough for a test.
class SiteFixture
{
public:
    SiteFixture()
    {
        Site own;
        own.root = m_root.path();
        own.shmSuffix = QStringLiteral("_") + QFileInfo(m_root.path()).fileName();
        own.drive = ownEndpoint();
        own.kvs = ownEndpoint();
        own.kvk = ownEndpoint();
        own.pauses = {std::chrono::milliseconds(20), std::chrono::milliseconds(20),
                      std::chrono::milliseconds(20), std::chrono::milliseconds(1)};
        for (const char* folder : {"/home/oper/bin/contours", "/home/oper/bin/passports", "/programs/ch1",
                                   "/programs/ch2", "/programs/ch3", "/points", "/log", "/var/tmp"})
            QDir().mkpath(own.root + QLatin1String(folder));
        setSite(own);
    }
    ~SiteFixture()
    {
        leaveSite();
        for (int held : m_held)
            ::close(held);
    }
    SiteFixture(const SiteFixture&) = delete;
    SiteFixture& operator=(const SiteFixture&) = delete;

    QString root() const { return m_root.path(); }

    // The file as the console reaches it, whole; empty when there is none.
    QByteArray read(const QString& absolute) const
    {
        QFile file(site().path(absolute));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    // The number is held by a socket that never listens: the system gives it to nobody who asks for any port,
    // while a controller of this test can listen on it. UDP takes the same number.
    Endpoint ownEndpoint()
    {
        for (;;) {
            const int held = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
            const int shared = 1;
            sockaddr_in at{};
            socklen_t size = sizeof at;
            at.sin_family = AF_INET;
            at.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
            auto* const address = reinterpret_cast<sockaddr*>(&at);
            ::setsockopt(held, SOL_SOCKET, SO_REUSEADDR, &shared, sizeof shared);
            if (::bind(held, address, size) != 0 || ::getsockname(held, address, &size) != 0)
                qFatal("no port on loopback");
            m_held.push_back(held);
            const int port = ntohs(at.sin_port);
            if (QUdpSocket().bind(QHostAddress(QHostAddress::LocalHost), quint16(port)))
                return {QStringLiteral("127.0.0.1"), port, port};
        }
    }

    QTemporaryDir m_root;
    std::vector<int> m_held;
};
