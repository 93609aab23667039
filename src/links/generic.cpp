#include "generic.h"

#include <algorithm>
#include <cstring>

using comm::FrameHead;
using comm::Outlet;

namespace {

constexpr quint16 signature = 0x5153;

constexpr LinkManners manners = [] {
    LinkManners own;
    own.signature = signature;
    own.outlet = Outlet::StandardError;
    own.host = "COMM";
    own.refused = "comm.cpp connect() error:";
    own.stopped = "TCPthread stopped";
    own.peerGone = LinkManners::PeerGone::IsSilent;
    own.splitHead = LinkManners::SplitHead::IsAwaited;
    own.badFrame = LinkManners::BadFrame::IsSkipped;
    own.lostTelemetry = LinkManners::LostTelemetry::WaitsForTheFrame;
    own.longCommand = LinkManners::LongCommand::IsRefused;
    own.text = LinkManners::Text::Bare;
    return own;
}();

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
    , TcpLink(*this, manners)
{}

TCPthread::~TCPthread()
{
    end();
}

bool TCPthread::connect(const QString& host, int tcpPort, int udpPort, QMap<QString, Element*>* elements)
{
    m_elements = elements;
    if (!TcpLink::connect(host, tcpPort, udpPort))
        return false;
    command(m_subscription);
    return true;
}

std::unique_ptr<QThread> TCPthread::listen(int udpPort)
{
    m_subscription = subscribe(*m_elements, udpPort);
    return std::make_unique<UDPthread>(m_elements, udpPort, this);
}

UDPthread::UDPthread(QMap<QString, Element*>* elements, int port, TCPthread* owner)
    : m_elements(*elements)
    , m_port(port)
    , m_unit(owner->controller())
{
    // Direct, so that a loss is acted on even while the window's thread is busy.
    connect(this, &UDPthread::disconnected, owner, &TCPthread::UDPdisconnected, Qt::DirectConnection);
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

    comm::hearTelemetry(
        m_stop, [&](int ms) { return sock.await(ms); }, [&] { return takeBlock(sock); }, [] {},
        [this] { emit disconnected(); });
    for (Element* element : m_elements)
        element->setValid(false);
}

comm::Heard UDPthread::takeBlock(comm::TelemetrySocket& sock)
{
    const std::size_t bytes = receiveBlock(sock, static_cast<std::size_t>(sock.pendingDatagramSize()));
    if (bytes == 0) {
        // Deliberate: no more telemetry, and no report of its loss. The connection stays until it fails.
        comm::tell(Outlet::StandardError, "Bad signature of UDP packet");
        return comm::Heard::End;
    }
    writeElements(bytes);
    return comm::Heard::Life;
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
