#pragma once

#include "site.h"

#include <QDir>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QUdpSocket>

#include <chrono>

// A site of its own for one test: a temporary root with the folders that the machine has, free ports on
// loopback, and pauses short enough for a test. The former site comes back at the end.
class SiteFixture
{
public:
    SiteFixture()
        : m_former(site())
    {
        Site own;
        own.root = m_root.path();
        own.shmSuffix = QStringLiteral("_") + QFileInfo(m_root.path()).fileName();
        own.drive = freeEndpoint();
        own.kvs = freeEndpoint();
        own.kvk = freeEndpoint();
        own.pauses = {std::chrono::milliseconds(20), std::chrono::milliseconds(20),
                      std::chrono::milliseconds(20), std::chrono::milliseconds(1)};
        for (const char* folder : {"/home/oper/bin/contours", "/home/oper/bin/passports", "/programs/ch1",
                                   "/programs/ch2", "/programs/ch3", "/points", "/log", "/var/tmp"})
            QDir().mkpath(own.root + QLatin1String(folder));
        setSite(own);
    }
    ~SiteFixture() { setSite(m_former); }
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
    static Endpoint freeEndpoint()
    {
        QTcpServer tcp;
        tcp.listen(QHostAddress::LocalHost);
        QUdpSocket udp;
        udp.bind(QHostAddress(QHostAddress::LocalHost)); // the bare word would be taken for a port
        return {QStringLiteral("127.0.0.1"), tcp.serverPort(), udp.localPort()};
    }

    QTemporaryDir m_root;
    Site m_former;
};
