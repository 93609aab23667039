#pragma once

#include "plant/statuspack.h"

#include <QByteArray>
#include <QObject>
#include <QTcpServer>
#include <QTimer>
#include <QUdpSocket>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

class QTcpSocket;

namespace plant {

class MotionController;

// What goes back over TCP.
struct Frame
{
    std::uint16_t signature;
    QByteArray body;
};

// What a link needs of its controller. All are called in the link's thread.
struct ControllerPort
{
    QString name; // in front of the lines that the link logs
    std::function<std::optional<Frame>(const QString& command)> answer; // nothing: none goes back
    std::function<QByteArray()> datagram; // with its signature in front; empty: none goes out
    std::function<void()> consoleLost;
};

// The answer to a command: "OK " or "REFUSED " and the command, after a refusal the reason.
QByteArray answerText(const QString& command, const QString& reason);

ControllerPort portOf(MotionController& controller); // outlives the link

// The port of a console that only looks: the same datagrams and constants; its commands are refused and its
// going is no loss.
ControllerPort watchOnly(const ControllerPort& port);

// A controller's network side, on loopback only: commands in framed text over TCP, the status datagram to the
// console's address twenty times a second of real time while a console is connected. One console at a time: a
// newer connection takes the place of the older one.
class ControllerLink : public QObject
{
    Q_OBJECT

public:
    explicit ControllerLink(ControllerPort port, QObject* parent = nullptr);
    ~ControllerLink() override;

    // Port 0 takes a free one, for UDP the number of the TCP port. False with the reason when the TCP port
    // cannot be had.
    bool listen(std::uint16_t tcpPort, std::uint16_t udpPort, QString* error);
    std::uint16_t tcpPort() const { return m_tcpPort; }
    std::uint16_t udpPort() const { return m_udpPort; } // where the console listens
    bool connected() const { return m_console != nullptr; }

    // Faults, in seconds of real time.
    void drop(double seconds);    // the connection falls and none is taken for a while
    void silence(double seconds); // the connection stays, no datagrams go out
    bool sendBadDatagram();       // one with a wrong signature; false without a console
    bool sendBadFrame();          // text without a frame; false without a console

    // What nothing has asked for; lost without a console.
    void tell(const QString& text) { answer({frameSignature, text.toUtf8()}); }
    void tell(const Frame& frame) { answer(frame); }
    void tellStatus() { sendStatus(true); } // at once, beside those of the period

    void cut();         // the connection falls and none is taken
    void listenAgain(); // until it succeeds, and at once when nothing stands against it

signals:
    void logged(const QString& line);
    // What the network sees, in its order.
    void consoleCame();
    void consoleWent();
    void wentOut(const QByteArray& bytes); // over TCP
    void cameIn(const QByteArray& bytes);
    void datagramSent(const QByteArray& datagram);

private:
    std::uint16_t holdFreePort(); // 0 when there is none
    void accept();
    void read();
    void answer(const Frame& frame);
    void sendStatus(bool sound);
    void log(const QString& line);
    void forget(const QString& why); // the console is gone

    ControllerPort m_port;
    std::unique_ptr<QTcpSocket> m_held; // never listens: keeps the number while the server is closed
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
