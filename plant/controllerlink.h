#pragma once

#include "plant/statuspack.h"

#include <QByteArray>
#include <QObject>
#include <QTcpServer>
#include <QTimer>
#include <QUdpSocket>

#include <cstdint>

class QTcpSocket;

namespace plant {

class MotionController;

// The motion controller's network side, on loopback only: commands in framed text over TCP, the status
// datagram to the console's address twenty times a second of real time while a console is connected. One
// console at a time: a newer connection takes the place of the older one. Each command is answered with a
// line of text: "OK " or "REFUSED " and the command, after a refusal the reason.
class ControllerLink : public QObject
{
    Q_OBJECT

public:
    // `controller` outlives the link.
    explicit ControllerLink(MotionController& controller, QObject* parent = nullptr);
    ~ControllerLink() override;

    // Port 0 takes a free one. False with the reason when the TCP port cannot be had.
    bool listen(std::uint16_t tcpPort, std::uint16_t udpPort, QString* error);
    std::uint16_t tcpPort() const { return m_tcpPort; }
    std::uint16_t udpPort() const { return m_udpPort; } // where the console listens
    bool connected() const { return m_console != nullptr; }

    // Faults, in seconds of real time.
    void drop(double seconds);    // the connection falls and none is taken for a while
    void silence(double seconds); // the connection stays, no datagrams go out
    bool sendBadDatagram();       // one with a wrong signature; false without a console
    bool sendBadFrame();          // text without a frame; false without a console

signals:
    void logged(const QString& line);

private:
    void accept();
    void read();
    void answer(const QString& text);
    void sendStatus(std::uint16_t signature);
    void forget(const QString& why); // the console is gone
    void listenAgain();

    MotionController& m_controller;
    QTcpServer m_server;
    QUdpSocket m_udp;
    QTimer m_statusTimer;
    QTimer m_dropTimer;
    QTimer m_silenceTimer;
    QTcpSocket* m_console = nullptr; // owned by the server
    QByteArray m_input;              // received and not yet a whole frame
    std::uint16_t m_tcpPort = 0;
    std::uint16_t m_udpPort = 0;
};

} // namespace plant
