#include "plant/controllerlink.h"

#include "plant/controller.h"

#include <QTcpSocket>

#include <chrono>
#include <cmath>
#include <cstring>

namespace plant {

namespace {

constexpr std::chrono::milliseconds statusPeriod{50};
constexpr std::chrono::milliseconds listenRetry{100};
constexpr qint64 maxUnread = 64 * 1024; // bytes of answers kept for a console that does not read

int milliseconds(double seconds)
{
    return static_cast<int>(std::lround(seconds * 1000));
}

} // namespace

QByteArray answerText(const QString& command, const QString& reason)
{
    return (reason.isEmpty() ? QStringLiteral("OK %1").arg(command)
                             : QStringLiteral("REFUSED %1: %2").arg(command, reason))
        .toUtf8();
}

ControllerPort portOf(MotionController& controller)
{
    return {QString(),
            [&controller](const QString& command) -> std::optional<Frame> {
                return Frame{frameSignature, answerText(command, controller.command(command))};
            },
            [&controller] {
                const StatusPack pack = controller.status();
                return QByteArray(reinterpret_cast<const char*>(&pack), sizeof pack);
            },
            [&controller] { controller.consoleLost(); }};
}

ControllerPort watchOnly(const ControllerPort& port)
{
    const auto answer = [answer = port.answer](const QString& command) -> std::optional<Frame> {
        if (command == QLatin1String("CONST"))
            return answer(command);
        return Frame{frameSignature, answerText(command, QStringLiteral("this console only watches"))};
    };
    return {port.name + QStringLiteral("watching "), answer, port.datagram, [] {}};
}

ControllerLink::ControllerLink(ControllerPort port, QObject* parent)
    : QObject(parent)
    , m_port(std::move(port))
{
    m_statusTimer.setTimerType(Qt::PreciseTimer);
    m_dropTimer.setSingleShot(true);
    m_silenceTimer.setSingleShot(true);
    connect(&m_server, &QTcpServer::newConnection, this, &ControllerLink::accept);
    connect(&m_statusTimer, &QTimer::timeout, this, [this] {
        if (!m_silenceTimer.isActive())
            sendStatus(true);
    });
    connect(&m_dropTimer, &QTimer::timeout, this, &ControllerLink::listenAgain);
}

ControllerLink::~ControllerLink()
{
    if (m_console)
        m_console->disconnect(this);
}

bool ControllerLink::listen(std::uint16_t tcpPort, std::uint16_t udpPort, QString* error)
{
    if (udpPort == 0 && tcpPort == 0)
        tcpPort = holdFreePort();
    if (!m_server.listen(QHostAddress::LocalHost, tcpPort)) {
        if (error)
            *error = QStringLiteral("TCP port %1: %2").arg(tcpPort).arg(m_server.errorString());
        return false;
    }
    m_tcpPort = m_server.serverPort();
    m_udpPort = udpPort != 0 ? udpPort : m_tcpPort;
    return true;
}

// A UDP port that is free now may be another installation's a moment later, and its datagrams would end the
// console that listens there. A TCP port stays held, and UDP takes the same number.
std::uint16_t ControllerLink::holdFreePort()
{
    for (;;) {
        m_held = std::make_unique<QTcpSocket>();
        if (!m_held->bind(QHostAddress::LocalHost, 0, QAbstractSocket::ReuseAddressHint))
            return 0;
        if (QUdpSocket().bind(QHostAddress(QHostAddress::LocalHost), m_held->localPort()))
            return m_held->localPort();
    }
}

void ControllerLink::drop(double seconds)
{
    cut();
    m_dropTimer.start(milliseconds(seconds));
}

void ControllerLink::cut()
{
    m_dropTimer.stop();
    m_server.close();
    if (m_console)
        m_console->abort();
}

void ControllerLink::silence(double seconds)
{
    m_silenceTimer.start(milliseconds(seconds));
}

bool ControllerLink::sendBadDatagram()
{
    if (m_console)
        sendStatus(false);
    return m_console != nullptr;
}

bool ControllerLink::sendBadFrame()
{
    const QByteArray bad = "no frame at all";
    if (m_console && m_console->write(bad) >= 0)
        emit wentOut(bad);
    return m_console != nullptr;
}

void ControllerLink::accept()
{
    while (QTcpSocket* next = m_server.nextPendingConnection()) {
        if (m_console)
            m_console->abort();
        m_console = next;
        m_input.clear();
        connect(next, &QTcpSocket::readyRead, this, &ControllerLink::read);
        connect(next, &QTcpSocket::disconnected, this, [this] { forget(QStringLiteral("console gone")); });
        m_statusTimer.start(statusPeriod);
        log(QStringLiteral("console connected"));
        emit consoleCame();
        sendStatus(true);
    }
}

void ControllerLink::read()
{
    const QByteArray came = m_console->readAll();
    emit cameIn(came);
    m_input += came;
    // A frame may bring the connection down, so look at it anew each time.
    while (m_console && m_input.size() >= static_cast<int>(sizeof(FrameHead))) {
        FrameHead head{};
        std::memcpy(&head, m_input.constData(), sizeof head);
        if (head.signature != frameSignature) {
            log(QStringLiteral("bad frame from the console: connection closed"));
            m_console->abort();
            return;
        }
        const int size = static_cast<int>(sizeof head) + head.length;
        if (m_input.size() < size)
            return;
        const QString text = QString::fromUtf8(m_input.constData() + sizeof head, head.length);
        m_input.remove(0, size);
        if (const std::optional<Frame> frame = m_port.answer(text))
            answer(*frame);
    }
}

void ControllerLink::answer(const Frame& frame)
{
    if (!m_console || m_console->bytesToWrite() > maxUnread)
        return;
    const QByteArray body = frame.body.left(0xFFFF);
    const FrameHead head{frame.signature, static_cast<std::uint16_t>(body.size())};
    const QByteArray whole = QByteArray(reinterpret_cast<const char*>(&head), sizeof head) + body;
    m_console->write(whole);
    emit wentOut(whole);
}

void ControllerLink::sendStatus(bool sound)
{
    if (!m_console)
        return;
    QByteArray datagram = m_port.datagram();
    if (datagram.isEmpty())
        return;
    for (int i = 0; !sound && i < 2; ++i)
        datagram[i] = static_cast<char>(~datagram[i]);
    m_udp.writeDatagram(datagram, m_console->peerAddress(), m_udpPort);
    emit datagramSent(datagram);
}

void ControllerLink::log(const QString& line)
{
    emit logged(m_port.name + line);
}

void ControllerLink::forget(const QString& why)
{
    m_console->disconnect(this);
    m_console->deleteLater();
    m_console = nullptr;
    m_input.clear();
    m_statusTimer.stop();
    emit consoleWent();
    m_port.consoleLost();
    log(why);
}

void ControllerLink::listenAgain()
{
    if (!m_server.isListening() && !m_server.listen(QHostAddress::LocalHost, m_tcpPort))
        m_dropTimer.start(listenRetry);
}

} // namespace plant
