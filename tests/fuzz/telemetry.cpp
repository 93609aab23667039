#include "constants.h"
#include "drivecontroller.h"
#include "fuzz.h"
#include "generic.h"
#include "kvs.h"
#include "passport.h"
#include "plant/beamunit.h"
#include "plant/controller.h"
#include "pultshare.h"
#include "vacuumwire.h"

#include <QSharedMemory>
#include <QTableWidget>

#include <sys/ioctl.h>

namespace {

// Datagrams of all three controllers as their tables tell them, and texts, on to the window and its panels: a
// byte that says whose, then as many as its datagram has behind the head.
//
// A datagram of another size than its controller's ends the console on purpose: it would run with a
// controller of another make. For the same reason a device of the vacuum plant has only the states for which
// there is a picture, -1 to 4. The target gives none of these.
struct Status : FuzzTarget
{
    void take(const QByteArray& input) override
    {
        if (m_inputs++ % inputsOfAConsole == 0)
            m_gui.reset(), m_gui = console();
        auto* const panel = m_gui->findChild<KVS*>();
        wire::LastPack<DriveWire::packSize> drive;
        wire::LastPack<KvsWire::packSize> kvs;
        wire::LastPack<KvkWire::packSize> kvk;
        for (int at = 0, packs = 0; at < input.size() && packs < mostPacks; ++packs) {
            const int whose = uchar(input[at++]) % 4;
            if (whose == 0)
                tell<DriveWire>(*m_gui->drives(), drive, input, at, {});
            else if (whose == 1)
                tell<KvsWire>(*panel->kvs(), kvs, input, at, vacuumwire::kvs().fields);
            else if (whose == 2)
                tell<KvkWire>(*panel->kvk(), kvk, input, at, vacuumwire::kvk().fields);
            else {
                const QString text = QString::fromUtf8(input.mid(at, longestText));
                at += longestText;
                emit m_gui->drives()->message(text);
                emit panel->kvk()->message(text);
            }
            QCoreApplication::processEvents();
        }
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

private:
    static constexpr int inputsOfAConsole = 300; // its journal would grow without end
    static constexpr int longestText = 100;
    static constexpr int mostPacks = 12;

    template <class Wire>
    static void tell(typename Wire::Status& status, wire::LastPack<Wire::packSize>& last,
                     const QByteArray& input, int& at, const QVector<statuswire::Field>& fields)
    {
        static const QRegularExpression device(
            QStringLiteral("^(NL\\d|NZ\\d|ND1|NW2|VP\\d)State$|^State(VPT|VE|TMN)$"));
        QByteArray bytes = QByteArray(4, '\0') + input.mid(at, Wire::packSize - 4);
        bytes = bytes.leftJustified(Wire::packSize, '\0');
        at += Wire::packSize - 4;
        for (const statuswire::Field& field : fields) {
            const auto state = qFromLittleEndian<qint32>(bytes.constData() + field.offset);
            if ((state < -1 || state > 4) && device.match(field.name).hasMatch())
                statuswire::Wire::put(bytes, field, double(quint32(state) % 6) - 1);
        }
        std::array<char, Wire::packSize> pack;
        std::copy(bytes.cbegin(), bytes.cend(), pack.begin());
        last.take(Wire::table, status, pack);
    }

    std::unique_ptr<Gui> m_gui;
    int m_inputs = 0;
};
const FuzzName<Status> status("status");

// The reading side of a link without its telemetry.
template <class Link>
struct Reader : Link
{
    ~Reader() override { this->end(); }
    std::unique_ptr<QThread> listen(int) override { return std::make_unique<QThread>(); }
};

// What a controller sends over TCP: a byte that says which link, one that says in pieces of how many bytes
// its beginning comes (0: all at once), and the stream.
// The generic link looks for the next head behind a bad frame byte by byte, with two calls of the system
// each.
struct Frames : FuzzTarget
{
    Frames() { longest = 3; }
    void take(const QByteArray& input) override
    {
        QMap<QString, Element*> none;
        const QByteArray stream = input.mid(2);
        const int piece = input.size() > 1 ? uchar(input[1]) : 0;
        switch (input.isEmpty() ? 0 : uchar(input[0]) % 4) {
        case 0:
            return read(Reader<DriveTCPthread>(), stream, piece);
        case 1:
            return read(Reader<KVSTCPthread>(), stream, piece);
        case 2:
            return read(Reader<KVKTCPthread>(), stream, piece);
        default:
            return read(Reader<TCPthread>(), stream, piece, &none);
        }
    }

protected:
    template <class Link, class... More>
    void read(Link&& link, const QByteArray& stream, int piece, More... more)
    {
        const Endpoint& to = site().drive;
        for (int i = 0; i < 50 && !link.connect(to.host, to.tcpPort, to.udpPort, more...); ++i)
            QThread::msleep(10); // a millisecond may be too short for a computer that has much to do
        fuzzCheck(link.connected() && m_controller.accept(), "no connection");
        m_controller.peer->setSocketOption(QAbstractSocket::LowDelayOption, 1);
        const int reader = m_controller.consoleEnd();
        int at = 0;
        for (; piece > 0 && at < qMin(inPieces, stream.size()); at += piece) {
            m_controller.send(stream.mid(at, piece));
            for (int waiting = 1; waiting > 0 && link.isRunning(); QThread::yieldCurrentThread()) {
                if (::ioctl(reader, FIONREAD, &waiting) != 0)
                    break;
            }
        }
        m_controller.send(stream.mid(at));
        ::shutdown(int(m_controller.peer->socketDescriptor()), SHUT_WR);
        fuzzCheck(link.wait(10'000), "a link does not end with its connection");
        fuzzCheck(!link.connected(), "a link outlives its connection");
    }

private:
    static constexpr int inPieces = 100; // bytes
    DriveController m_controller;
};
const FuzzName<Frames> frames("frames");

// Packets of constants through a link to their table: a byte that says of which controller, then the packet's
// body.
struct ConstantPackets : Frames
{
    void take(const QByteArray& input) override
    {
        Reader<KVKTCPthread> kvk;
        Reader<KVSTCPthread> kvs;
        Constants dialog(&kvk, &kvs, &m_window);
        QObject::connect(&kvk, &KVKTCPthread::constsReceived, &dialog, &Constants::onConstsReceivedKVK);
        QObject::connect(&kvs, &KVSTCPthread::constsReceived, &dialog, &Constants::onConstsReceivedKVS);
        const QByteArray packet = input.mid(1, 0xffff);
        if (input.startsWith('s'))
            read(kvs, frame(packet, KvsWire::consts), 0);
        else
            read(kvk, frame(packet, KvkWire::consts), 0);
        QCoreApplication::processEvents();
        auto* const table = dialog.findChild<QTableWidget*>();
        fuzzCheck(table->rowCount() == qMin(packet.size() / 92, VacuumLink::maxConsts), "constants got lost");
        table->setCurrentCell(table->rowCount() - 1, 0);
        dialog.on_pbChange_clicked();
    }
    QWidget m_window;
};
const FuzzName<ConstantPackets> constants("constants");

// A segment as another program has made it, of any size: two bytes that say how large, one that says whose,
// and what stands in it. Both sides join it.
struct Segments : FuzzTarget
{
    void take(const QByteArray& input) override
    {
        if (input.size() < 3)
            return;
        const int size = 1 + uchar(input[0]) + 4 * uchar(input[1]);
        const QByteArray content = input.mid(3, size);
        QSharedMemory other(QLatin1String(input[2] & 1 ? "ELA_SHM_KEY" : "PULT_SHARE_KEY") +
                            site().shmSuffix);
        fuzzCheck(other.create(size), "no segment");
        other.lock();
        std::copy(content.cbegin(), content.cend(), static_cast<char*>(other.data()));
        other.unlock();
        PultShare panel;
        panel.setFuncLeftEncoder(1);
        panel.getBlockGui();
        ElaSharedMemory().updateStatusEla();
        record();
        plant::MotionController motion(m_site.root());
        plant::BeamUnit(motion, site().shmSuffix).step(0.1);
    }

private:
    static void record()
    {
        Passport passport;
        Passport::Head head;
        head.start = QDateTime::currentDateTime();
        head.programs = QStringList{QString(), QString(), QString()};
        fuzzCheck(passport.open(head, 600), "no record");
        Passport::Moment moment;
        moment.runs = true;
        for (int axis = 0; axis < Passport::axes().size(); ++axis)
            moment.coords.append(0);
        passport.sample(moment, false);
        moment.runs = false;
        fuzzCheck(!passport.sample(moment, true), "a record does not end");
        empty(QStringLiteral("/home/oper/bin/passports"));
    }
};
const FuzzName<Segments> segments("segments");

} // namespace
