#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>

#include <array>
#include <cstdint>

namespace plant {

// Writes what goes over the links as a capture that tcpdump could have taken on the machine: a classic pcap
// file of raw IPv4 packets (LINKTYPE_RAW), with headers made up for the purpose, both ends 127.0.0.1 and the
// machine's own ports, whichever are in use. A record goes out in one write behind the one before, so
// whatever ends the process leaves a file that can be read. A disk that takes no more ends the recording,
// with a file of whole records.
class PcapWriter
{
public:
    enum Link { Drive, Kvs, Kvk };

    // Empties the file or makes it. False with the reason when that cannot be done.
    bool open(const QString& fileName, QString* error);
    bool isOpen() const { return m_file.isOpen(); }

    void datagram(Link link, const QByteArray& bytes); // to the console
    void connected(Link link);                         // one that is open is closed first
    void stream(Link link, bool toConsole, const QByteArray& bytes);
    void disconnected(Link link);

private:
    // One TCP connection, as its packets count it.
    struct Stream
    {
        bool open = false;
        std::uint16_t consolePort = 0;
        std::uint32_t sequence[2] = {0, 0}; // the next byte from the console, and from the controller
    };
    void segment(Link link, bool toConsole, std::uint8_t flags, const QByteArray& bytes = {});
    void packet(std::uint8_t protocol, QByteArray transport, int checksumAt);

    QFile m_file;
    std::array<Stream, 3> m_streams;
    std::uint16_t m_connections = 0; // so far
    std::uint16_t m_packets = 0;     // so far; the low bits of the count
};

} // namespace plant
