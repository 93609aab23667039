#pragma once

#include "comm.h"

#include <QString>
#include <QThread>

#include <atomic>
#include <memory>

// What a link writes to the debug output. A null stands for no line.
struct LinkTexts
{
    const char* host;    // leads the line about an unknown host, if not empty
    const char* opening; // at each try to connect
    const char* opened;
    const char* sent; // leads the line of each command
    const char* started;
    const char* stopped;  // a stop was seen in the middle of a frame
    const char* ended[2]; // behind the last frame of a connection
};

// The TCP side of a link to a controller: the connection, the commands, the life of the telemetry thread that
// goes with it. The links to the motion controller and to both vacuum controllers are threads that inherit
// it; what a frame means is theirs. The thread object lives in the window's thread.
class TcpLink
{
public:
    TcpLink(const TcpLink&) = delete;
    TcpLink& operator=(const TcpLink&) = delete;

    // Opens the connection and starts both threads. The peer has one millisecond to answer; a slower one is
    // met by the next try. False when already open or on any failure, told in the debug output.
    bool connect(const QString& host, int tcpPort, int udpPort);

    // Sends one command as one frame: u16 0x5650, u16 length, UTF-8 without terminator. Fire and forget: true
    // says that the system took it. Only one thread may send. False on a closed link.
    bool command(const QString& text);

    bool connected() const;

    // The address of the controller that the last connection was made with; only it is listened to. For the
    // window's thread.
    const QHostAddress& controller() const { return m_controller; }

    // Ends the connection and waits for the thread, without limit. False when there was none.
    bool disconnect();

    static QString timeStamp(); // local time, "[hh:mm:ss] "

protected:
    static constexpr quint16 textSignature = 0x5650; // of text frames and of status datagrams

    // `thread` is the object that inherits this one.
    TcpLink(QThread& thread, const LinkTexts& texts);
    ~TcpLink();

    void stop() { m_stop = true; } // asks the thread to end, from any thread
    void end();                    // for the destructor of the thread: stop, and wait without limit

    // The thread's run(): takes frames until the link is lost or a stop is seen.
    void serve();

    // The text of a frame up to its first zero byte; told with `label` in the debug output.
    QString receiveText(int socket, int length, const char* label);
    QByteArray receiveBody(int socket, int length); // what came of it until a loss or a stop

    enum class Turn { Go, End };
    virtual Turn receiveFrame(int socket) = 0; // called when there is something to read
    // A running telemetry thread on `udpPort` whose loss stops this link.
    virtual std::unique_ptr<QThread> listen(int udpPort) = 0;
    virtual void tellDisconnected() = 0; // the last act of a connection

private:
    QThread& m_thread;
    const LinkTexts& m_texts;
    std::atomic<bool> m_stop{false};
    comm::Connection m_connection;
    QHostAddress m_controller;
    std::unique_ptr<QThread> m_telemetry;
};
