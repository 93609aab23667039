#include "plant/installation.h"

#include "plant/beamunit.h"
#include "plant/controller.h"
#include "plant/controllerlink.h"
#include "plant/instructor.h"
#include "plant/pcapwriter.h"
#include "plant/vacuumsystem.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <deque>
#include <future>
#include <mutex>
#include <thread>

#include <sys/eventfd.h>
#include <unistd.h>

namespace plant {

namespace {

constexpr double stepTime = 0.01;     // s of simulated time
constexpr double longestStall = 0.25; // s of real time made up for after the process stood still
constexpr double noticedStall = 0.8;  // s; a console takes a little more for the loss of its controller
constexpr std::chrono::milliseconds tickPeriod{10};

} // namespace

// Everything that lives in the installation's thread.
class Installation::Core : public QObject
{
public:
    Core(Installation& owner, const InstallationOptions& options)
        : m_owner(owner)
        , m_controller(options.root, options.seed)
        , m_vacuum(options.seed)
        , m_link(portOf(m_controller))
        , m_kvsLink(m_vacuum.kvsPort())
        , m_kvkLink(m_vacuum.kvkPort())
        , m_instructor(m_controller, m_vacuum, {&m_link, &m_kvsLink, &m_kvkLink})
        , m_speed(options.speed)
    {
        m_controller.putDoor(options.air);
        couple(m_controller, m_vacuum);
        m_vacuum.put(options.air ? VacuumSystem::Start::Air : VacuumSystem::Start::Pumped);
        couple(m_controller, m_vacuum);
        if (options.shmSuffix)
            m_beamUnit = std::make_unique<BeamUnit>(m_controller, *options.shmSuffix);
        m_instructor.setBeamUnit(m_beamUnit.get());
        m_instructor.setHouse({[this] { return observe(); }, [this] { return m_time; }});
        const auto log = [this](const QString& line) { emit m_owner.logged(line); };
        m_controller.setLog(log);
        m_vacuum.setLog(log);
        m_vacuum.setAlarm([this](const QString& text) { m_kvkLink.tell(text); });
        for (const ControllerLink* link : {&m_link, &m_kvsLink, &m_kvkLink})
            connect(link, &ControllerLink::logged, this, log);
        connect(&m_instructor, &Instructor::speedWanted, this, [this](double factor) { m_speed = factor; });
        connect(&m_instructor, &Instructor::quitWanted, this, [this] { emit m_owner.quitRequested(); });
        m_tick.setTimerType(Qt::PreciseTimer);
        connect(&m_tick, &QTimer::timeout, this, &Core::tick);
        m_scriptWait.setSingleShot(true);
        connect(&m_scriptWait, &QTimer::timeout, this, &Core::continueScript);
        m_clock.start();
        m_tick.start(tickPeriod);
    }

    void runScript(const QStringList& lines)
    {
        m_script += lines;
        if (!m_scriptWait.isActive())
            m_scriptWait.start(0);
    }

    bool listen(std::array<Ports, controllerCount>& ports, QString* error)
    {
        ControllerLink* const links[controllerCount] = {&m_link, &m_kvsLink, &m_kvkLink};
        for (std::size_t i = 0; i < controllerCount; ++i) {
            if (!links[i]->listen(ports[i].tcp, ports[i].udp, error))
                return false;
            ports[i] = {links[i]->tcpPort(), links[i]->udpPort()};
        }
        return true;
    }

    bool record(const QString& fileName, QString* error)
    {
        return fileName.isEmpty() || (m_pcap.open(fileName, error) && recordLinks());
    }

    MotionController& controller() { return m_controller; }
    Instructor& instructor() { return m_instructor; }

private:
    bool recordLinks()
    {
        for (const auto& [link, as] : {std::pair{&m_link, PcapWriter::Drive},
                                       {&m_kvsLink, PcapWriter::Kvs},
                                       {&m_kvkLink, PcapWriter::Kvk}}) {
            const auto to = as;
            connect(link, &ControllerLink::consoleCame, this, [this, to] { m_pcap.connected(to); });
            connect(link, &ControllerLink::consoleWent, this, [this, to] { m_pcap.disconnected(to); });
            connect(link, &ControllerLink::wentOut, this,
                    [this, to](const QByteArray& bytes) { m_pcap.stream(to, true, bytes); });
            connect(link, &ControllerLink::cameIn, this,
                    [this, to](const QByteArray& bytes) { m_pcap.stream(to, false, bytes); });
            connect(link, &ControllerLink::datagramSent, this,
                    [this, to](const QByteArray& bytes) { m_pcap.datagram(to, bytes); });
        }
        return true;
    }

    void tick()
    {
        const double elapsed = static_cast<double>(m_clock.nsecsElapsed()) / 1e9;
        m_clock.restart();
        const double real = std::min(elapsed, longestStall);
        if (elapsed > noticedStall)
            emit m_owner.logged(QStringLiteral("this computer stood still for %1 s").arg(elapsed, 0, 'f', 1));
        m_carry += real * m_speed;
        while (m_carry >= stepTime) {
            m_controller.step(stepTime);
            m_vacuum.step(stepTime);
            couple(m_controller, m_vacuum);
            m_carry -= stepTime;
            m_time += stepTime;
        }
        m_controller.stepMessages(real);
        if (!m_beamUnit)
            return;
        m_beamUnit->setGunPressure(m_vacuum.plant().reading(6));
        m_beamUnit->step(real);
    }

    // The same ports once more, for whoever only looks: datagrams as the console gets them, no command.
    QString observe()
    {
        const std::pair<const char*, ControllerPort> ports[controllerCount] = {
            {"drive", portOf(m_controller)}, {"kvs", m_vacuum.kvsPort()}, {"kvk", m_vacuum.kvkPort()}};
        QString answer = QStringLiteral("observed");
        for (std::size_t i = 0; i < controllerCount; ++i) {
            std::unique_ptr<ControllerLink>& link = m_observed[i];
            if (!link) {
                link = std::make_unique<ControllerLink>(watchOnly(ports[i].second));
                QString error;
                if (!link->listen(0, 0, &error)) {
                    link.reset();
                    return QStringLiteral("error: ") + error;
                }
            }
            answer += QStringLiteral(" %1=%2").arg(QLatin1String(ports[i].first)).arg(link->tcpPort());
        }
        return answer;
    }

    void continueScript()
    {
        while (!m_script.isEmpty()) {
            const QString line = m_script.takeFirst().simplified();
            if (line.startsWith(QLatin1String("wait "), Qt::CaseInsensitive)) {
                bool ok = false;
                const double seconds = line.mid(5).toDouble(&ok);
                if (ok && seconds >= 0 && seconds < 1e6) {
                    m_scriptWait.start(static_cast<int>(std::lround(seconds * 1000)));
                    return;
                }
            }
            const QString answer = m_instructor.execute(line);
            if (!answer.isEmpty())
                emit m_owner.logged(QStringLiteral("script: %1: %2").arg(line, answer));
        }
    }

    Installation& m_owner;
    MotionController m_controller;
    VacuumSystem m_vacuum;
    PcapWriter m_pcap;
    ControllerLink m_link;
    ControllerLink m_kvsLink;
    ControllerLink m_kvkLink;
    std::unique_ptr<BeamUnit> m_beamUnit; // null without a segment
    Instructor m_instructor;
    QTimer m_tick;
    QElapsedTimer m_clock;
    double m_speed;
    double m_carry = 0; // s of simulated time not yet stepped
    double m_time = 0;  // s of simulated time since the start
    std::array<std::unique_ptr<ControllerLink>, controllerCount> m_observed; // null until wanted
    QStringList m_script;
    QTimer m_scriptWait;
};

// What waits to be done in the installation's thread. Outlives the thread, so that a caller may still be
// letting go of it while the thread ends.
struct Installation::Jobs
{
    struct Job
    {
        const std::function<void()>* action;
        bool done = false;
    };

    std::mutex mutex;
    std::condition_variable done;
    std::deque<Job*> waiting; // live on the stacks of those who wait
};

// The door to the installation's thread, in which it lives. A file descriptor wakes the thread.
class Installation::Gate : public QObject
{
public:
    QEventLoop loop; // runs only in a thread of the installation's own

    explicit Gate(Jobs& jobs)
        : m_jobs(jobs)
        , m_bell(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
        , m_notifier(m_bell, QSocketNotifier::Read)
    {
        connect(&m_notifier, &QSocketNotifier::activated, this, &Gate::work);
    }
    ~Gate() override
    {
        m_notifier.setEnabled(false);
        close(m_bell);
    }

    void pass(const std::function<void()>& action)
    {
        if (QThread::currentThread() == thread())
            return action();
        Jobs& jobs = m_jobs;
        Jobs::Job job{&action};
        std::unique_lock lock(jobs.mutex);
        jobs.waiting.push_back(&job);
        eventfd_write(m_bell, 1);
        jobs.done.wait(lock, [&] { return job.done; });
    }

private:
    void work()
    {
        eventfd_t rings = 0;
        eventfd_read(m_bell, &rings);
        std::unique_lock lock(m_jobs.mutex);
        while (!m_jobs.waiting.empty()) {
            Jobs::Job* job = m_jobs.waiting.front();
            m_jobs.waiting.pop_front();
            lock.unlock();
            (*job->action)();
            lock.lock();
            job->done = true;
            m_jobs.done.notify_all();
        }
    }

    Jobs& m_jobs;
    int m_bell;
    QSocketNotifier m_notifier;
};

struct Installation::Private
{
    InstallationOptions options;
    Jobs jobs;
    std::thread thread; // runs an event loop of its own when the options ask for it
    std::unique_ptr<Gate> ownGate;
    Gate* gate = nullptr; // null while stopped
    std::unique_ptr<Core> core;
    std::array<Ports, controllerCount> ports; // in use
};

Installation::Installation(const InstallationOptions& options, QObject* parent)
    : QObject(parent)
    , d(std::make_unique<Private>())
{
    d->options = options;
}

Installation::~Installation()
{
    stop();
}

bool Installation::start(QString* error)
{
    stop();
    if (d->options.ownThread)
        startThread();
    else
        d->gate = (d->ownGate = std::make_unique<Gate>(d->jobs)).get();
    bool listening = false;
    call([&] {
        d->core = std::make_unique<Core>(*this, d->options);
        d->ports = d->options.ports;
        listening = d->core->record(d->options.pcap, error) && d->core->listen(d->ports, error);
    });
    if (!listening)
        stop();
    return listening;
}

void Installation::startThread()
{
    std::promise<Gate*> ready;
    std::future<Gate*> gate = ready.get_future();
    d->thread = std::thread([this, ready = std::move(ready)]() mutable {
        Gate own(d->jobs);
        ready.set_value(&own);
        own.loop.exec();
    });
    d->gate = gate.get();
}

void Installation::stop()
{
    if (!d->gate)
        return;
    call([this] {
        d->core.reset();
        d->gate->loop.exit();
    });
    if (d->thread.joinable())
        d->thread.join();
    d->gate = nullptr;
    d->ownGate.reset();
    d->ports = {};
}

Ports Installation::ports(Controller controller) const
{
    return d->ports[static_cast<std::size_t>(controller)];
}

QString Installation::instruct(const QString& line)
{
    QString answer;
    call([&] { answer = d->core->instructor().execute(line); });
    return answer;
}

bool Installation::runScript(const QString& fileName, QString* error)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(fileName, file.errorString());
        return false;
    }
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    call([&] { d->core->runScript(lines); });
    return true;
}

StatusPack Installation::status()
{
    StatusPack pack{};
    call([&] { pack = d->core->controller().status(); });
    return pack;
}

void Installation::inside(const std::function<void(MotionController&)>& action)
{
    call([&] { action(d->core->controller()); });
}

void Installation::call(const std::function<void()>& action)
{
    Q_ASSERT(d->gate);
    d->gate->pass(action);
}

} // namespace plant
