#include "tools/replay/capture.h"

#include <QDateTime>
#include <QFile>
#include <QtEndian>

#include <pcap/pcap.h>

#include <algorithm>
#include <memory>

namespace replay {

namespace {

using plant::Controller;

struct Wire
{
    int tcp;
    int udp;
    int status; // bytes of the datagram
};
constexpr Wire wires[plant::controllerCount] = {{5190, 5191, 296}, {5196, 5197, 404}, {5198, 5199, 144}};

constexpr quint16 textSignature = 0x5650;
constexpr quint16 kvkConstants = 0x5651;
constexpr quint16 kvsConstants = 0x5652;
constexpr int frameHead = 4;

std::optional<Controller> whoHas(int Wire::*port, int number)
{
    const auto* const wire =
        std::find_if(std::begin(wires), std::end(wires), [&](const Wire& w) { return w.*port == number; });
    if (wire == std::end(wires))
        return {};
    return static_cast<Controller>(wire - std::begin(wires));
}

std::size_t index(Controller who)
{
    return static_cast<std::size_t>(who);
}

int big16(const std::uint8_t* at)
{
    return qFromBigEndian<quint16>(at);
}

// Where the IPv4 packet begins; -1 for another protocol or a packet that is too short.
int networkLayer(int linkType, const std::uint8_t* data, int size)
{
    int at = 0;
    int typeAt = -1; // of the protocol's number; -1: IPv4 is all there is
    switch (linkType) {
    case DLT_RAW:
    case DLT_IPV4:
        break;
    case DLT_EN10MB:
        at = 14;
        typeAt = 12;
        break;
    case DLT_LINUX_SLL:
        at = 16;
        typeAt = 14;
        break;
    case DLT_LINUX_SLL2:
        at = 20;
        typeAt = 0;
        break;
    default:
        return -1;
    }
    constexpr int ipv4 = 0x0800;
    constexpr int vlanTags[] = {0x8100, 0x88A8};
    while (typeAt >= 0 && at <= size) {
        const int type = big16(data + typeAt);
        if (type == ipv4)
            break;
        if (type != vlanTags[0] && type != vlanTags[1])
            return -1;
        typeAt = at + 2;
        at += 4;
    }
    return at + 20 <= size && data[at] >> 4 == 4 ? at : -1;
}

} // namespace

QString clockText(qint64 at)
{
    return QDateTime::fromMSecsSinceEpoch(at / 1000).toString(QStringLiteral("HH:mm:ss.zzz"));
}

bool Capture::read(const QString& fileName, QString* why, qint64 room)
{
    *this = {};
    m_room = room;
    char error[PCAP_ERRBUF_SIZE] = "";
    const std::unique_ptr<pcap_t, decltype(&pcap_close)> file(
        pcap_open_offline(QFile::encodeName(fileName).constData(), error), &pcap_close);
    if (!file) {
        *why = QStringLiteral("%1: это не запись tcpdump или её нельзя прочитать (%2)")
                   .arg(fileName, QString::fromLocal8Bit(error));
        return false;
    }
    const int linkType = pcap_datalink(file.get());
    pcap_pkthdr* head = nullptr;
    const u_char* data = nullptr;
    int got = 0;
    while ((got = pcap_next_ex(file.get(), &head, &data)) == 1 && m_room > 0) {
        const qint64 at = qint64(head->ts.tv_sec) * 1'000'000 + head->ts.tv_usec;
        if (at < m_now)
            note(TimeBack);
        m_now = std::max(m_now, at);
        takePacket(linkType, {data, static_cast<int>(head->caplen)}, head->caplen >= head->len);
    }
    if (got == PCAP_ERROR)
        note(Cut);
    if (got == 1)
        note(TooMuch);
    if (m_events.empty()) {
        *why = QStringLiteral("%1: в записи нет обмена с контроллерами CML75, KVS, KVK").arg(fileName);
        return false;
    }
    return true;
}

void Capture::takePacket(int linkType, Bytes packet, bool whole)
{
    const int at = networkLayer(linkType, packet.data, packet.size);
    if (at < 0)
        return;
    const std::uint8_t* const ip = packet.data + at;
    const int headBytes = (ip[0] & 15) * 4;
    int total = big16(ip + 2);
    const int captured = packet.size - at;
    if (total == 0) // left to the network card
        total = captured;
    if (headBytes < 20 || total < headBytes + 8 || captured < headBytes + 8)
        return;
    const Bytes rest{ip + headBytes, std::min(total, captured) - headBytes};
    const bool fragment = (big16(ip + 6) & 0x3FFF) != 0;
    constexpr int tcp = 6;
    constexpr int udp = 17;
    if (ip[9] != tcp && ip[9] != udp)
        return;
    if (fragment && (whoHas(&Wire::tcp, big16(rest.data)) || whoHas(&Wire::udp, big16(rest.data + 2))))
        note(Fragment);
    else if (!fragment && ip[9] == udp)
        takeDatagram(rest, whole || captured >= total);
    else if (!fragment)
        takeSegment(rest); // what is missing of it is a gap for the next one
}

void Capture::takeDatagram(Bytes udp, bool whole)
{
    const auto who = whoHas(&Wire::udp, big16(udp.data + 2));
    if (!who)
        return;
    if (!whole)
        return note(Short);
    const int size = udp.size - 8;
    // The console would end at a size that is not the controller's, and passes over a signature that is not.
    if (size != wires[index(*who)].status || qFromLittleEndian<quint16>(udp.data + 8) != textSignature)
        return note(Strange);
    const QByteArray bytes(reinterpret_cast<const char*>(udp.data) + 8, size);
    QByteArray& last = m_lastStatus[index(*who)];
    if (bytes != last) {
        last = bytes;
        m_room -= bytes.size();
    }
    append(*who, Event::Status, last);
}

void Capture::takeSegment(Bytes tcp)
{
    if (tcp.size < 20)
        return;
    const int from = big16(tcp.data);
    const int to = big16(tcp.data + 2);
    const auto server = whoHas(&Wire::tcp, from);
    const auto who = server ? server : whoHas(&Wire::tcp, to);
    if (!who)
        return;
    const bool toConsole = server.has_value();
    const int consolePort = toConsole ? to : from;
    const int headBytes = (tcp.data[12] >> 4) * 4;
    const int flags = tcp.data[13];
    enum { Fin = 1, Syn = 2, Reset = 4 };
    Connection& connection = m_connections[index(*who)];
    if (headBytes < 20 || headBytes > tcp.size)
        return;

    std::uint32_t sequence = qFromBigEndian<quint32>(tcp.data + 4);
    if ((flags & Syn) && !toConsole) {
        if (connection.consolePort == consolePort && connection.streams[0].next == sequence + 1)
            return; // told again
        connection = {};
        connection.consolePort = consolePort;
    } else if (connection.consolePort == 0 && !(flags & (Fin | Reset))) {
        connection = {}; // one that stood before the capture began
        connection.consolePort = consolePort;
    }
    if (connection.consolePort != consolePort)
        return; // the end of a former one
    if (flags & Syn)
        sequence += 1;
    takeStream(*who, toConsole, sequence, {tcp.data + headBytes, tcp.size - headBytes});
    if (flags & (Fin | Reset)) {
        connection = {};
        append(*who, Event::Closed);
    }
}

void Capture::takeStream(Controller who, bool toConsole, std::uint32_t sequence, Bytes data)
{
    Stream& stream = m_connections[index(who)].streams[toConsole ? 1 : 0];
    if (!stream.known)
        stream.next = sequence;
    stream.known = true;
    const auto ahead = static_cast<qint32>(sequence - stream.next);
    if (ahead > 0) {
        note(Gap);
        stream.pending.clear();
    } else if (ahead < 0) { // sent again
        if (data.size <= -ahead)
            return;
        data = {data.data - ahead, data.size + ahead};
    }
    stream.next = sequence + static_cast<quint32>(std::max(0, -ahead)) + static_cast<quint32>(data.size);
    stream.pending.append(reinterpret_cast<const char*>(data.data), data.size);
    takeFrames(who, toConsole, &stream.pending);
}

void Capture::takeFrames(Controller who, bool toConsole, QByteArray* pending)
{
    while (pending->size() >= frameHead) {
        const auto signature = qFromLittleEndian<quint16>(pending->constData());
        const int size = frameHead + qFromLittleEndian<quint16>(pending->constData() + 2);
        const bool constants = toConsole && ((signature == kvsConstants && who == Controller::Kvs) ||
                                             (signature == kvkConstants && who == Controller::Kvk));
        if (signature != textSignature && !constants) {
            note(Foreign); // the next packet may begin with a head again
            pending->clear();
            return;
        }
        if (pending->size() < size)
            return;
        append(who, toConsole ? Event::Frame : Event::Command,
               toConsole ? pending->left(size) : pending->mid(frameHead, size - frameHead));
        m_room -= size;
        pending->remove(0, size);
    }
}

void Capture::append(Controller who, Event::Kind kind, const QByteArray& bytes)
{
    m_events.push_back({m_now, who, kind, bytes});
    m_room -= qint64(sizeof(Event));
}

void Capture::note(Trouble trouble)
{
    Count& count = m_troubles[trouble];
    if (count.times++ == 0)
        count.first = m_now;
}

std::optional<qint64> Capture::find(const QString& time) const
{
    QTime wanted;
    for (const char* format : {"H:m", "H:m:s", "H:m:s.z"}) {
        if (!wanted.isValid())
            wanted = QTime::fromString(time, QLatin1String(format));
    }
    const QDateTime first = QDateTime::fromMSecsSinceEpoch(begin() / 1000);
    if (!wanted.isValid())
        return {};
    for (QDate day = first.date(); day <= first.date().addDays(366); day = day.addDays(1)) {
        const qint64 at = QDateTime(day, wanted).toMSecsSinceEpoch() * 1000;
        if (at > end())
            return {};
        if (at >= begin() / 1'000'000 * 1'000'000) // within the second in which it begins
            return std::max(at, begin());
    }
    return {};
}

QStringList Capture::remarks() const
{
    static const char* const texts[troubleCount] = {
        "разрывы в потоке TCP, текст утерян",
        "непонятные байты в потоке TCP, пропущены",
        "датаграммы чужого размера или с чужой подписью, пропущены",
        "датаграммы, записанные не целиком (tcpdump без «-s 0»), пропущены",
        "части IP-пакетов, пропущены",
        "часы компьютера шли назад, время стоит",
        "файл обрывается, прочитано до места обрыва",
        "запись не помещается в память, остаток не прочитан",
    };
    QStringList lines;
    for (std::size_t i = 0; i < troubleCount; ++i) {
        if (m_troubles[i].times > 0)
            lines << QStringLiteral("%1: %2, впервые %3")
                         .arg(QString::fromUtf8(texts[i]))
                         .arg(m_troubles[i].times)
                         .arg(clockText(m_troubles[i].first));
    }
    return lines;
}

} // namespace replay
