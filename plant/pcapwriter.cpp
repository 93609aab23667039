#include "plant/pcapwriter.h"

#include <QtEndian>

#include <chrono>

namespace plant {

namespace {

constexpr std::uint16_t tcpPorts[] = {5190, 5196, 5198}; // by Link
constexpr std::uint16_t udpPorts[] = {5191, 5197, 5199};
constexpr std::uint16_t firstConsolePort = 40'000;
constexpr std::uint32_t loopback = 0x7F000001;
constexpr std::uint32_t rawPackets = 101; // LINKTYPE_RAW
constexpr std::uint32_t longestPacket = 65'535;
constexpr int segmentBytes = 1460; // what goes into a packet of the machine's network
constexpr std::uint8_t tcp = 6;
constexpr std::uint8_t udp = 17;
enum Flag : std::uint8_t { Fin = 1, Syn = 2, Push = 8, Ack = 16 };

// Fields of headers one behind the other: of packets big-endian, of the file in the order of this computer.
template <class Value>
void put(QByteArray& to, Value value)
{
    const Value wire = qToBigEndian(value);
    to.append(reinterpret_cast<const char*>(&wire), sizeof wire);
}
template <class Value>
void putHost(QByteArray& to, Value value)
{
    to.append(reinterpret_cast<const char*>(&value), sizeof value);
}

std::uint32_t sumOf(const QByteArray& bytes)
{
    std::uint32_t sum = 0;
    for (int i = 0; i < bytes.size(); ++i)
        sum += static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << (i % 2 == 0 ? 8 : 0);
    return sum;
}

void putChecksum(QByteArray& bytes, int at, std::uint32_t sum)
{
    while (sum > 0xFFFF)
        sum = (sum & 0xFFFF) + (sum >> 16);
    // A sum of zero reads as "none" in UDP; its other form is all ones.
    const auto checksum = static_cast<std::uint16_t>(sum == 0xFFFF ? 0xFFFF : ~sum);
    qToBigEndian(checksum, bytes.data() + at);
}

} // namespace

bool PcapWriter::open(const QString& fileName, QString* error)
{
    m_file.setFileName(fileName);
    QByteArray head;
    putHost(head, std::uint32_t(0xA1B2C3D4)); // times in microseconds
    putHost(head, std::uint16_t(2));
    putHost(head, std::uint16_t(4));
    putHost(head, std::uint32_t(0));
    putHost(head, std::uint32_t(0));
    putHost(head, longestPacket);
    putHost(head, rawPackets);
    if (m_file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && m_file.write(head) == head.size())
        return true;
    *error = QStringLiteral("%1: %2").arg(fileName, m_file.errorString());
    m_file.close();
    return false;
}

void PcapWriter::datagram(Link link, const QByteArray& bytes)
{
    QByteArray transport;
    put(transport, tcpPorts[link]);
    put(transport, udpPorts[link]);
    put(transport, static_cast<std::uint16_t>(8 + bytes.size()));
    put(transport, std::uint16_t(0));
    packet(udp, transport + bytes, 6);
}

void PcapWriter::connected(Link link)
{
    disconnected(link);
    Stream& stream = m_streams[link];
    stream = {true, static_cast<std::uint16_t>(firstConsolePort + m_connections++ % 20'000), {1000, 2000}};
    segment(link, false, Syn);
    segment(link, true, Syn | Ack);
    segment(link, false, Ack);
}

void PcapWriter::stream(Link link, bool toConsole, const QByteArray& bytes)
{
    for (int at = 0; at < bytes.size() && m_streams[link].open; at += segmentBytes)
        segment(link, toConsole, Push | Ack, bytes.mid(at, segmentBytes));
}

void PcapWriter::disconnected(Link link)
{
    if (!m_streams[link].open)
        return;
    segment(link, false, Fin | Ack);
    segment(link, true, Fin | Ack);
    segment(link, false, Ack);
    m_streams[link].open = false;
}

void PcapWriter::segment(Link link, bool toConsole, std::uint8_t flags, const QByteArray& bytes)
{
    Stream& stream = m_streams[link];
    std::uint32_t& sequence = stream.sequence[toConsole ? 1 : 0];
    QByteArray transport;
    put(transport, toConsole ? tcpPorts[link] : stream.consolePort);
    put(transport, toConsole ? stream.consolePort : tcpPorts[link]);
    put(transport, sequence);
    put(transport, (flags & Ack) ? stream.sequence[toConsole ? 0 : 1] : std::uint32_t(0));
    put(transport, static_cast<std::uint16_t>(5 << 12 | flags)); // a head of five words
    put(transport, std::uint16_t(0xFFFF));                       // window
    put(transport, std::uint32_t(0));                            // checksum, no urgent data
    packet(tcp, transport + bytes, 16);
    sequence += static_cast<std::uint32_t>(bytes.size()) + ((flags & (Syn | Fin)) ? 1 : 0);
}

void PcapWriter::packet(std::uint8_t protocol, QByteArray transport, int checksumAt)
{
    if (!m_file.isOpen())
        return;
    const auto length = static_cast<std::uint16_t>(transport.size());
    // Of the addresses, which are the same, the protocol and the length, besides the packet itself.
    const std::uint32_t pseudo = 2 * ((loopback >> 16) + (loopback & 0xFFFF)) + protocol + length;
    putChecksum(transport, checksumAt, pseudo + sumOf(transport));

    QByteArray head;
    put(head, std::uint16_t(0x4500)); // version 4, a head of five words
    put(head, static_cast<std::uint16_t>(20 + length));
    put(head, m_packets++);
    put(head, std::uint16_t(0x4000)); // not to be cut up
    put(head, static_cast<std::uint16_t>(64 << 8 | protocol));
    put(head, std::uint16_t(0));
    put(head, loopback);
    put(head, loopback);
    putChecksum(head, 10, sumOf(head));

    using namespace std::chrono;
    const auto now = duration_cast<microseconds>(system_clock::now().time_since_epoch()).count();
    QByteArray record;
    putHost(record, static_cast<std::uint32_t>(now / 1'000'000));
    putHost(record, static_cast<std::uint32_t>(now % 1'000'000));
    putHost(record, static_cast<std::uint32_t>(head.size() + length));
    putHost(record, static_cast<std::uint32_t>(head.size() + length));
    record += head + transport;
    const qint64 whole = m_file.pos();
    if (m_file.write(record) == record.size())
        return;
    qWarning("%s: %s: no more is recorded", qPrintable(m_file.fileName()), qPrintable(m_file.errorString()));
    m_file.resize(whole);
    m_file.close();
}

} // namespace plant
