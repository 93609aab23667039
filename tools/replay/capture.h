#pragma once

#include "plant/installation.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <array>
#include <optional>
#include <vector>

namespace replay {

// What one packet brought, or the last of those that made up a frame.
struct Event
{
    enum Kind : std::uint8_t {
        Status,  // a datagram of the controller's own size
        Frame,   // from the controller, with its head
        Command, // from the console, the text
        Closed,  // the connection
    };
    qint64 at; // microseconds since 1970, never less than that of the event before
    plant::Controller who;
    Kind kind;
    QByteArray bytes; // shared with the datagram before when that was the same
};

// "14:32:05.120" on this computer's clock.
QString clockText(qint64 at);

// A capture of the links, taken by tcpdump on the machine or by the simulated installation, whole in memory:
// the controllers are known by their ports, as docs/protocols.md gives them. Ethernet (with VLAN tags), raw
// IPv4 and "any" (Linux cooked, both forms) are understood; of TCP what comes in order.
class Capture
{
public:
    // Bytes of different datagrams and frames that are kept at most; what is beyond is not read, with a
    // remark.
    static constexpr qint64 roomForAll = 2'000'000'000;

    // False with a reason in Russian: the file is none, or holds nothing of the controllers. A file that is
    // cut off is read to where it ends.
    bool read(const QString& fileName, QString* why, qint64 room = roomForAll);

    const std::vector<Event>& events() const { return m_events; } // at least one
    qint64 begin() const { return m_events.front().at; }
    qint64 end() const { return m_events.back().at; }

    // The first moment at which a clock on the wall showed "HH:MM[:SS[.zzz]]"; nothing when it never did, or
    // for another text.
    std::optional<qint64> find(const QString& time) const;

    // What is missing or strange, in Russian, one line for each kind with its count and the first time.
    QStringList remarks() const;

private:
    struct Bytes
    {
        const std::uint8_t* data;
        int size;
    };
    enum Trouble { Gap, Foreign, Strange, Short, Fragment, TimeBack, Cut, TooMuch, troubleCount };
    struct Stream // one direction of a controller's connection
    {
        bool known = false;
        std::uint32_t next = 0; // sequence number of the byte that is to come
        QByteArray pending;     // of a frame
    };
    struct Connection
    {
        int consolePort = 0;           // 0: none
        std::array<Stream, 2> streams; // to the controller, to the console
    };

    void takePacket(int linkType, Bytes packet, bool whole);
    void takeDatagram(Bytes udp, bool whole);
    void takeSegment(Bytes tcp);
    void takeStream(plant::Controller who, bool toConsole, std::uint32_t sequence, Bytes data);
    void takeFrames(plant::Controller who, bool toConsole, QByteArray* pending);
    void append(plant::Controller who, Event::Kind kind, const QByteArray& bytes = {});
    void note(Trouble trouble);

    std::vector<Event> m_events;
    std::array<Connection, plant::controllerCount> m_connections;
    std::array<QByteArray, plant::controllerCount> m_lastStatus;
    struct Count
    {
        int times = 0;
        qint64 first = 0;
    };
    std::array<Count, troubleCount> m_troubles;
    qint64 m_now = 0;
    qint64 m_room = 0;
};

} // namespace replay
