#include "generic.h"

#include <algorithm>
#include <limits>
#include <sys/socket.h>

using comm::FrameHead;
using comm::Outlet;

namespace {

constexpr quint16 signature = 0x5153;
constexpr int restOfBlockMs = 3000;

template <class T>
T load(const char* at)
{
    T value;
    std::memcpy(&value, at, sizeof value);
    return value;
}

// Gives the elements their places and returns the text that asks for them. 50 is the period wanted, ms.
QString subscribe(const QMap<QString, Element*>& elements, int udpPort)
{
    QString text = QStringLiteral("SUBSCRIBE PORT %1 DELAY 50 ").arg(udpPort);
    int offset = 0;
    for (auto i = elements.cbegin(); i != elements.cend(); ++i) {
        Element* element = i.value();
        element->setOffset(offset);
        offset += Element::size(element->type());
        text += element->name();
        if (std::next(i) != elements.cend())
            text += QStringLiteral(", ");
    }
    return text;
}

} // namespace

TCPthread::TCPthread(QObject* parent)
    : QThread(parent)
{}

TCPthread::~TCPthread()
{
    m_stop = true;
    wait();
}

bool TCPthread::connect(const QString& host, int tcpPort, int udpPort, QMap<QString, Element*>* elements)
{
    if (connected())
        return false;
    wait(); // the former connection may still be giving up its telemetry

    const int stream =
        comm::openStream(host, tcpPort, "COMM", "comm.cpp connect() error:", Outlet::StandardError);
    if (stream < 0)
        return false;

    const QString subscription = subscribe(*elements, udpPort);
    m_stop = false;
    m_lost = false;
    m_connection.open(stream);
    m_telemetry = new UDPthread(elements, udpPort, comm::peerOf(stream));
    // Direct, so that a loss is acted on even while the window's thread is busy.
    QObject::connect(m_telemetry, &UDPthread::disconnected, this, &TCPthread::UDPdisconnected,
                     Qt::DirectConnection);
    start();
    command(subscription);
    return true;
}

bool TCPthread::command(const QString& text)
{
    qDebug().noquote() << text;
    if (!connected())
        return false;
    if (text.toUtf8().size() > std::numeric_limits<quint16>::max()) {
        qWarning("TCPthread: a text of more bytes than a frame can count was not sent");
        return false;
    }
    return m_connection.send(signature, text, Outlet::StandardError);
}

bool TCPthread::connected() const
{
    return m_connection.isOpen();
}

bool TCPthread::disconnect()
{
    if (!connected())
        return false;
    m_stop = true;
    return wait();
}

void TCPthread::UDPdisconnected()
{
    m_lost = true;
}

void TCPthread::run()
{
    const int stream = m_connection.socket();
    while (!m_stop && !m_lost && receiveFrame(stream) == Turn::Go) {
    }

    m_connection.close();
    delete m_telemetry;
    m_telemetry = nullptr;
    emit disconnected();
}

TCPthread::Turn TCPthread::receiveFrame(int stream)
{
    FrameHead head{};
    if (receiveHead(stream, head, 0) == Turn::End)
        return Turn::End;
    // On this link a bad frame does not end the connection. Its length means nothing, so the next head is
    // looked for byte by byte.
    if (head.signature != signature)
        comm::tell(Outlet::StandardError, "Bad packet signature");
    while (head.signature != signature) {
        char* const bytes = reinterpret_cast<char*>(&head);
        std::copy(bytes + 1, bytes + sizeof head, bytes);
        if (receiveHead(stream, head, sizeof head - 1) == Turn::End)
            return Turn::End;
    }
    const QByteArray body =
        comm::receiveBody(stream, head.length, m_stop, "TCPthread stopped", Outlet::StandardError);
    emit message(QString::fromLatin1(body.constData())); // up to the first zero byte
    return Turn::Go;
}

TCPthread::Turn TCPthread::receiveHead(int stream, FrameHead& head, std::size_t have)
{
    while (have < sizeof head) {
        comm::Wait wait = comm::Wait::Silent;
        while (wait == comm::Wait::Silent && !m_stop && !m_lost)
            wait = comm::waitForInput(stream, Outlet::StandardError);
        if (wait != comm::Wait::Ready)
            return Turn::End;
        const ssize_t got = ::recv(stream, reinterpret_cast<char*>(&head) + have, sizeof head - have, 0);
        if (got < 0)
            comm::tell(Outlet::StandardError, "recv() error:", qt_error_string(errno));
        if (got <= 0)
            return Turn::End;
        have += static_cast<std::size_t>(got);
    }
    return Turn::Go;
}

UDPthread::UDPthread(QMap<QString, Element*>* elements, int port, const QHostAddress& unit)
    : m_elements(*elements)
    , m_port(port)
    , m_unit(unit)
{
    start();
}

UDPthread::~UDPthread()
{
    m_stop = true;
    wait();
}

void UDPthread::run()
{
    comm::TelemetrySocket sock(m_port, m_unit, Outlet::StandardError);

    int waits = 0;
    while (!m_stop) {
        if (++waits > comm::silentWaits)
            emit disconnected();
        if (!sock.await(comm::pollMs))
            continue;
        const std::size_t bytes = receiveBlock(sock, static_cast<std::size_t>(sock.pendingDatagramSize()));
        if (bytes == 0) {
            // Deliberate: no more telemetry, and no report of its loss. The connection stays until it fails.
            comm::tell(Outlet::StandardError, "Bad signature of UDP packet");
            break;
        }
        writeElements(bytes);
        waits = 0;
    }

    for (Element* element : m_elements)
        element->setValid(false);
}

// The whole block of which a datagram of `s` bytes waits. Returns the bytes that came, the head among them,
// or 0 for a wrong signature.
std::size_t UDPthread::receiveBlock(comm::TelemetrySocket& sock, std::size_t s)
{
    auto& packet = m_packet;
    // The texts of the assertions are known to those who look after the machine; they stand as they are.
    Q_ASSERT(s <= (int)sizeof(packet));
    std::fill_n(packet.begin(), sizeof(FrameHead), '\0'); // a datagram cut short shows no former head
    sock.readDatagram(packet.data(), sizeof(packet));
    if (load<quint16>(packet.data()) != signature)
        return 0;

    // Part of a block is worth nothing, and it is the unit's to complete what it began: this wait has no end
    // and does not look at the stop flag.
    while (s < sizeof(FrameHead) + load<quint16>(packet.data() + sizeof signature)) {
        if (!sock.await(restOfBlockMs))
            continue;
        Q_ASSERT(s + sock.pendingDatagramSize() <= sizeof(packet));
        const qint64 got = sock.readDatagram(packet.data() + s, qint64(sizeof(packet) - s));
        s += static_cast<std::size_t>(qMax(qint64(0), got));
    }
    return s;
}

void UDPthread::writeElements(std::size_t bytes)
{
    const char* const data = m_packet.data() + sizeof(FrameHead);
    const int held = static_cast<int>(bytes - sizeof(FrameHead));
    for (Element* element : m_elements) {
        const int offset = element->offset();
        if (offset < 0 || offset + Element::size(element->type()) > held) {
            if (!m_warned)
                qWarning("UDPthread: the block ends before element %s", qPrintable(element->name()));
            m_warned = true;
            element->setValid(false);
            continue;
        }
        const char* const at = data + offset;
        switch (element->type()) {
        case Element::CheckedFlagA:
        case Element::CheckedFlagB:
            element->setValid(at[0] != 0);
            element->setBoolVal(at[1] != 0);
            break;
        case Element::CheckedNumberA:
        case Element::CheckedNumberB:
            element->setValid(at[0] != 0);
            element->setRawNumberVal(load<float>(at + 5));
            element->setNumberVal(load<float>(at + 1));
            break;
        case Element::FlagA:
        case Element::FlagB:
            element->setBoolVal(at[0] != 0);
            break;
        case Element::Number:
            element->setNumberVal(load<float>(at));
            break;
        }
    }
}
