// How long the operator waits.
//
//   bench_latency [times, 300]
//
// 1. From a datagram sent to its value painted: the whole console at work on the simulated installation, an
//    axis moving, beside a window of the same size with one label.
// 2. From the finger's lifting on a jog button to the bytes of the stop on the wire, under a hundred times
// the
//    telemetry of all three controllers, beside a bare send and recv meanwhile.

#include "benchsite.h"
#include "benchtools.h"
#include "consoleapp.h"
#include "plant/controller.h"
#include "plant/installation.h"
#include "table.h"
#include "trainer/operator.h"
#include "trainer/screen.h"
#include "vacuumpacks.h"
#include "wire.h"

#include <QApplication>
#include <QEventLoop>
#include <QLabel>
#include <QTcpServer>
#include <QUdpSocket>

#include <atomic>
#include <cstring>
#include <memory>
#include <random>
#include <thread>

namespace {

constexpr double paintedLimit = 3;     // times, the median
constexpr double releasedLimitMs = 10; // 99 of 100
constexpr int telemetryRate = 2000;    // datagrams of each controller, a second; 20 on the machine

using Clock = std::chrono::steady_clock;

double msBetween(Clock::time_point from, Clock::time_point to)
{
    return std::chrono::duration<double, std::milli>(to - from).count();
}

// At no fixed beat with anything else.
void pause()
{
    static std::mt19937 random(1);
    std::this_thread::sleep_for(std::chrono::milliseconds(30 + int(random() % 100)));
}

// Waits, on another thread than the window's, until a label has been painted with a text.
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(QLabel* label) { label->installEventFilter(this); }

    // False when it is not seen within two seconds.
    template <class Send>
    bool seen(const QString& text, Send send)
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_wanted = text;
        }
        send();
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_seen.wait_for(lock, std::chrono::seconds(2), [&] { return m_wanted.isNull(); });
    }

    Clock::time_point when() const { return m_when; } // after it was seen

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() != QEvent::Paint)
            return false;
        watched->event(event);
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (static_cast<QLabel*>(watched)->text() == m_wanted) {
            m_when = Clock::now();
            m_wanted = QString();
            m_seen.notify_all();
        }
        return true;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_seen;
    QString m_wanted; // null: seen
    Clock::time_point m_when;
};

// Stands between a sender of the motion controller's datagrams and their receiver, and puts a position of V
// of its own into them.
class Relay
{
public:
    using Pack = std::array<char, sizeof(plant::StatusPack)>;

    explicit Relay(int to)
        : m_out(to)
        , m_in(socket(AF_INET, SOCK_DGRAM, 0))
    {
        sockaddr_in own = loopback(0);
        socklen_t size = sizeof own;
        bind(m_in, reinterpret_cast<const sockaddr*>(&own), size);
        getsockname(m_in, reinterpret_cast<sockaddr*>(&own), &size);
        m_port = ntohs(own.sin_port);
        m_thread = std::thread([this] { pass(); });
    }
    ~Relay()
    {
        m_ends = true;
        Datagrams(m_port).send(Pack{}); // wakes it
        m_thread.join();
        close(m_in);
    }
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;

    int port() const { return m_port; } // where the sender sends to
    // From the next datagram on; returns when that was sent.
    Clock::time_point put(float v)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_v = v;
        m_fresh = true;
        m_sent.wait(lock, [this] { return !m_fresh; });
        return m_when;
    }

private:
    void pass()
    {
        for (Pack pack; recv(m_in, pack.data(), pack.size(), 0) > 0 && !m_ends;) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            constexpr std::size_t v = offsetof(plant::StatusPack, position) + 9 * sizeof(float);
            std::memcpy(pack.data() + v, &m_v, sizeof m_v);
            if (m_fresh)
                m_when = Clock::now();
            m_out.send(pack);
            m_fresh = false;
            m_sent.notify_all();
        }
    }

    const Datagrams m_out;
    const int m_in;
    int m_port = 0;
    std::atomic<bool> m_ends{false};
    std::mutex m_mutex;
    std::condition_variable m_sent;
    float m_v = 0;
    bool m_fresh = false; // m_v has not been sent yet
    Clock::time_point m_when;
    std::thread m_thread;
};

// Times from a new value's datagram until `watch` has seen it painted with two decimals, ms.
std::vector<double> paintTimes(PaintWatch& watch, Relay& relay, int times)
{
    std::vector<double> all;
    for (int n = 1; n <= times; ++n) {
        pause();
        const float value = 100 + float(n) / 4;
        Clock::time_point sent;
        if (!watch.seen(QString::number(double(value), 'f', 2), [&] { sent = relay.put(value); }))
            return {};
        all.push_back(msBetween(sent, watch.when()));
    }
    return all;
}

plant::InstallationOptions optionsOf(const BenchSite& place)
{
    plant::InstallationOptions options;
    options.root = place.own.root;
    options.shmSuffix = place.own.shmSuffix;
    return options;
}

int freeUdpPort()
{
    QUdpSocket probe;
    probe.bind(QHostAddress(QHostAddress::LocalHost));
    return probe.localPort();
}

// A window with one label, on the datagrams alone.
std::vector<double> plainLabel(int times)
{
    QWidget window;
    window.resize(panelSize);
    QLabel label(&window);
    label.setGeometry(1000, 600, 160, 40);
    QUdpSocket socket;
    socket.bind(QHostAddress(QHostAddress::LocalHost));
    QObject::connect(&socket, &QUdpSocket::readyRead, &label, [&] {
        plant::StatusPack pack;
        socket.readDatagram(reinterpret_cast<char*>(&pack), sizeof pack);
        label.setText(QString::number(double(pack.position[9]), 'f', 2));
    });
    window.show();
    QCoreApplication::processEvents();
    PaintWatch watch(&label);
    Relay relay(socket.localPort());
    const Sender controller(
        std::chrono::microseconds(50'000),
        [out = std::make_shared<Datagrams>(relay.port())](int) { out->send(Relay::Pack{}); });
    std::vector<double> all;
    QEventLoop loop;
    std::thread script([&] {
        all = paintTimes(watch, relay, times);
        QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
    });
    loop.exec();
    script.join();
    return all;
}

// The whole console, an axis moving.
std::vector<double> consoleLabel(int times, BenchSite& place, QString* why)
{
    const int telemetry = freeUdpPort();
    Relay relay(telemetry);
    plant::InstallationOptions options = optionsOf(place);
    options.ports[0].udp = std::uint16_t(relay.port());
    plant::Installation installation(options);
    if (!installation.start(why))
        return {};
    const auto at = [&](plant::Controller controller) {
        const plant::Ports ports = installation.ports(controller);
        return Endpoint{QStringLiteral("127.0.0.1"), ports.tcp, ports.udp};
    };
    place.own.drive = at(plant::Controller::Drive);
    place.own.drive.udpPort = telemetry;
    place.own.kvs = at(plant::Controller::Kvs);
    place.own.kvk = at(plant::Controller::Kvk);
    setSite(place.own);

    std::vector<double> all;
    Operator hand;
    *why = runScript([] { runConsole(); },
                     [&] {
                         hand.logIn();
                         hand.switchOn(false);
                         hand.setSpeed("LX", "600");
                         std::unique_ptr<PaintWatch> watch;
                         hand.onScreen([&] {
                             watch = std::make_unique<PaintWatch>(
                                 Operator::console()->findChild<QLabel*>("coordV"));
                         });
                         hand.press("pbPlusLX");
                         all = paintTimes(*watch, relay, times);
                         hand.release();
                         hand.onScreen([&] { watch.reset(); });
                     });
    return all;
}

// The motion controller's datagrams with the drives on and every position another than the time before, and
// those of both vacuum controllers.
class FloodSender : public Sender
{
public:
    explicit FloodSender(const Site& to)
        : Sender(std::chrono::microseconds(1'000'000 / telemetryRate),
                 [drive = std::make_shared<Datagrams>(to.drive.udpPort),
                  kvs = std::make_shared<Datagrams>(to.kvs.udpPort),
                  kvk = std::make_shared<Datagrams>(to.kvk.udpPort), status = drivesOn()](int n) {
                     plant::StatusPack pack = status;
                     for (float& position : pack.position)
                         position += float(n % 1000) / 4;
                     std::array<char, sizeof pack> bytes;
                     std::memcpy(bytes.data(), &pack, sizeof pack);
                     drive->send(bytes);
                     kvs->send(kvsDatagram(n));
                     kvk->send(kvkDatagram(n, telemetryRate));
                 })
    {}

private:
    static plant::StatusPack drivesOn()
    {
        plant::MotionController controller;
        controller.command(QStringLiteral("DRIVE ON"));
        for (int i = 0; i < 1000; ++i)
            controller.step(0.01);
        return controller.status();
    }
};

struct Releases
{
    std::vector<double> finger; // ms, to the stop on the wire
    std::vector<double> bare;   // ms, of the same bytes
};

void release(Operator& hand, int times, Wire& wire, Releases& all)
{
    const QByteArray stop = "MOVE(LX,0)";
    Wire plain;
    const int out = plain.connected();
    hand.logIn();
    hand.waitEnabled("pbPlusLX");
    hand.setSpeed("LX", "60");
    for (int n = 0; n < times; ++n) {
        wire.forget();
        hand.press("pbPlusLX");
        Clock::time_point came;
        Hand::expect(wire.heard("MOVE(LX,60)", &came), "the move");
        pause();
        const Clock::time_point lifted = Clock::now();
        hand.release();
        Hand::expect(wire.heard(stop, &came), "the stop");
        all.finger.push_back(msBetween(lifted, came));

        plain.forget();
        const Clock::time_point sent = Clock::now();
        send(out, stop.constData(), size_t(stop.size()), 0);
        Hand::expect(plain.heard(stop, &came), "a bare send");
        all.bare.push_back(msBetween(sent, came));
    }
    close(out);
}

Releases releaseTimes(int times, BenchSite& place, QString* why)
{
    const QString host = QStringLiteral("127.0.0.1");
    Wire wire;
    std::array<QTcpServer, 2> vacuum;
    for (QTcpServer& server : vacuum)
        server.listen(QHostAddress::LocalHost);
    place.own.drive = {host, wire.port(), freeUdpPort()};
    place.own.kvs = {host, vacuum[0].serverPort(), freeUdpPort()};
    place.own.kvk = {host, vacuum[1].serverPort(), freeUdpPort()};
    setSite(place.own);

    const FloodSender sender(place.own);
    Releases all;
    Operator hand;
    *why = runScript([] { runConsole(); }, [&] { release(hand, times, wire, all); });
    return all;
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const int times = argc > 1 ? std::atoi(argv[1]) : 300;
    QApplication app(argc, argv);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    BenchSite place;
    Table table;
    QString why;

    const std::vector<double> plain = plainLabel(times);
    const std::vector<double> console = consoleLabel(times, place, &why);
    if (!why.isEmpty())
        table.missing("datagram sent to value painted", why.toUtf8());
    table.row("datagram sent to value painted, median", median(console), "ms",
              {"a window with one label", median(plain)}, atMostTimes(paintedLimit));
    table.row("the same, 99 of 100", quantile(console, 0.99), "ms",
              {"a window with one label", quantile(plain, 0.99)}, noLimit);

    const Releases released = releaseTimes(times, place, &why);
    if (!why.isEmpty())
        table.missing("release of a jog to the wire", why.toUtf8());
    table.row("release of a jog to the wire at 3 x 2000, 99 of 100", quantile(released.finger, 0.99), "ms",
              {"a bare send and recv meanwhile", quantile(released.bare, 0.99)}, atMost(releasedLimitMs));
    table.row("the same, median", median(released.finger), "ms",
              {"a bare send and recv meanwhile", median(released.bare)}, noLimit);
    return table.result();
}
