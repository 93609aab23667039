#pragma once

#include "comm.h"

#include <QString>
#include <QThread>

#include <atomic>
#include <cstddef>
#include <memory>

// In what the links differ on purpose; what stands here is what most of them do. The texts lead or are lines
// of the debug output, null for none.
struct LinkManners
{
    quint16 signature = 0x5650; // of text frames, both ways
    comm::Outlet outlet = comm::Outlet::Debug;

    const char* host = ""; // leads the line about an unknown host, if not empty
    const char* refused = "tcp connect() error:";
    const char* opening = nullptr; // at each try to connect
    const char* opened = nullptr;
    const char* sent = nullptr;     // leads the line of each command; without it the bare text is the line
    const char* received = nullptr; // leads the line of each text that comes
    const char* started = nullptr;
    const char* stopped = nullptr;             // a stop was seen in the middle of a frame
    const char* ended[2] = {nullptr, nullptr}; // behind the last frame of a connection

    // Of a peer that closes between two frames.
    enum class PeerGone { IsTold, IsSilent } peerGone = PeerGone::IsTold;

    // A head that comes in pieces: what is missing of it is zero, or is waited for.
    enum class SplitHead { IsBad, PassesForWhole, IsAwaited } splitHead = SplitHead::IsBad;

    // Behind a bad frame its length means nothing: it ends the connection, or the next head is looked for
    // byte by byte.
    enum class BadFrame { EndsTheLink, IsSkipped } badFrame = BadFrame::EndsTheLink;

    // A frame that is under way when telemetry is lost: what came of it is told, or it is waited for, without
    // limit.
    enum class LostTelemetry { CutsTheFrame, WaitsForTheFrame } lostTelemetry = LostTelemetry::CutsTheFrame;

    // A command longer than a head can count: it goes out with the low 16 bits of its length, or is refused
    // with a warning.
    enum class LongCommand { IsSent, IsRefused } longCommand = LongCommand::IsSent;

    // A text that came: UTF-8, told behind a time stamp, or Latin 1 told as it is.
    enum class Text { Stamped, Bare } text = Text::Stamped;
};

// The life of a link to a controller: the connection, the commands, the frames that come, the telemetry
// thread that goes with the connection. All links are threads that inherit it; the thread object lives in the
// window's thread. Nothing is retried: the owner connects again after the end was told.
class TcpLink
{
public:
    TcpLink(const TcpLink&) = delete;
    TcpLink& operator=(const TcpLink&) = delete;

    // Opens the connection and starts both threads. The peer has one millisecond to answer; a slower one is
    // met by the next try. False when already open or on any failure, told.
    bool connect(const QString& host, int tcpPort, int udpPort);

    // Sends one command as one frame: u16 signature, u16 length, UTF-8 without terminator. Fire and forget:
    // true says that the system took it. Only one thread may send. False on a closed link.
    bool command(const QString& text);

    bool connected() const;

    // The address of the controller that the last connection was made with; only it is listened to. For the
    // window's thread.
    const QHostAddress& controller() const { return m_controller; }

    // Ends the connection and waits for the thread, without limit. False when there was none.
    bool disconnect();

    static QString timeStamp(); // local time, "[hh:mm:ss] "

protected:
    // `thread` is the object that inherits this one; `manners` outlive it.
    TcpLink(QThread& thread, const LinkManners& manners);
    ~TcpLink();

    void telemetryLost(); // asks the thread to end, from any thread
    void end();           // for the destructor of the thread: stop, and wait without limit

    // The thread's run(): takes frames until the link is lost or a stop is seen.
    void serve();

    // Reads and tells the frame that has this head; false when it is none of this link.
    virtual bool takeFrame(int socket, const comm::FrameHead& head);
    // The `length` bytes behind a head; fewer when the peer goes away or a stop is seen meanwhile, which is
    // told.
    QByteArray receiveBody(int socket, int length);

    // A telemetry thread that runs, on `udpPort`, and whose loss is wired to telemetryLost(). In the window's
    // thread, with the connection open.
    virtual std::unique_ptr<QThread> listen(int udpPort) = 0;
    virtual void tellText(const QString& text) = 0;
    virtual void tellDisconnected() = 0; // the last act of a connection

private:
    enum class Turn { Go, End };
    Turn receiveFrame(int socket);
    std::size_t receiveHead(int socket, comm::FrameHead& head, std::size_t have);
    comm::Wait waitForInput(int socket) const;
    bool ending() const { return m_stop || m_lost; }

    QThread& m_thread;
    const LinkManners& m_manners;
    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_lost{false};
    comm::Connection m_connection;
    QHostAddress m_controller;
    std::unique_ptr<QThread> m_telemetry;
};
