#pragma once

#include "element.h"
#include "tcplink.h"

#include <QMap>
#include <QThread>

#include <array>
#include <atomic>
#include <cstddef>

// The generic link: a client subscribes to named values, and the unit sends them back at a fixed period in
// one block. Nothing in the console builds one yet; it stands ready for a further unit. It tells its troubles
// on standard error.
//
// Owns the TCP connection, and the telemetry thread as long as the connection stands. It lives in the
// window's thread. Nothing is retried: the owner connects again after `disconnected`.
class TCPthread : public QThread, public TcpLink
{
    Q_OBJECT
public:
    explicit TCPthread(QObject* parent = nullptr);
    ~TCPthread() override; // ends an open connection; waits without limit

    // Opens the connection, gives each element its place in the block, in ascending order of the keys, and
    // subscribes to them by name. Map and elements stay the owner's; the elements outlive the connection. The
    // peer has one millisecond to answer. False when already open or on any failure.
    // Asserts when an element would move: console and unit would disagree about the block.
    bool connect(const QString& host, int tcpPort, int udpPort, QMap<QString, Element*>* elements);
    using TcpLink::disconnect;

public slots:
    void UDPdisconnected() { telemetryLost(); } // asks the thread to end, from any thread

signals:
    void disconnected();               // the connection is over, both threads' work is done
    void message(const QString& text); // a text frame came

protected:
    void run() override { serve(); }
    std::unique_ptr<QThread> listen(int udpPort) override;
    void tellText(const QString& text) override { emit message(text); }
    void tellDisconnected() override { emit disconnected(); }

private:
    QMap<QString, Element*>* m_elements = nullptr;
    QString m_subscription;
};

// Receives the blocks and writes the elements. It starts itself. A block is u16 0x5153, u16 number of data
// bytes, the elements without gaps; it may come in several datagrams.
class UDPthread final : public QThread
{
    Q_OBJECT
public:
    // The elements of the map at this moment, their offsets set; they outlive the thread. The owner hears of
    // a loss, and only what comes from the address of its unit is heard.
    UDPthread(QMap<QString, Element*>* elements, int port, TCPthread* owner);
    ~UDPthread() override; // may be called from another thread; waits without limit

signals:
    // Nothing came for a second; raised again every further 100 ms until the thread is ended.
    void disconnected();

protected:
    void run() override;

private:
    comm::Heard takeBlock(comm::TelemetrySocket& sock);
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
