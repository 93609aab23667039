#include "plant/inputlines.h"
#include "plant/installation.h"
#include "plant/instructor.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSocketNotifier>
#include <QTime>

#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace {

int signalPipe[2];

void onSignal(int)
{
    const char byte = 0;
    // The pipe only wakes the event loop; a full one has already done so.
    [[maybe_unused]] const auto written = write(signalPipe[1], &byte, 1);
}

// SIGINT and SIGTERM end the event loop, as "quit" does. A reader of the output that has gone is no reason
// to end.
bool catchSignals()
{
    if (pipe(signalPipe) != 0)
        return false;
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, nullptr);
    return true;
}

void print(std::FILE* stream, const QString& line)
{
    std::fputs(line.toUtf8().constData(), stream);
    std::fputc('\n', stream);
    std::fflush(stream);
}

// By plant::Controller: the names of the options and the ports of the machine.
constexpr struct
{
    const char* who;
    const char* tcp;
    const char* tcpPort;
    const char* udp;
    const char* udpPort;
} portOptions[plant::controllerCount] = {
    {"the motion controller", "tcp", "5190", "udp", "5191"},
    {"KVS", "kvs-tcp", "5196", "kvs-udp", "5197"},
    {"KVK", "kvk-tcp", "5198", "kvk-udp", "5199"},
};

bool readOptions(const QCommandLineParser& parser, plant::InstallationOptions* options)
{
    bool speed = true;
    bool seed = true;
    options->root = parser.value(QStringLiteral("root"));
    for (std::size_t i = 0; i < options->ports.size(); ++i) {
        bool tcp = false;
        bool udp = false;
        const auto port = [&](const char* name, bool* ok) {
            const QString option = QLatin1String(name);
            const bool any = !parser.isSet(option) && parser.isSet(QStringLiteral("free-ports"));
            return any ? (*ok = true, std::uint16_t(0)) : parser.value(option).toUShort(ok);
        };
        options->ports[i].tcp = port(portOptions[i].tcp, &tcp);
        options->ports[i].udp = port(portOptions[i].udp, &udp);
        if (!tcp || !udp)
            return false;
    }
    options->air = parser.isSet(QStringLiteral("air"));
    options->pcap = parser.value(QStringLiteral("pcap"));
    options->shmSuffix = parser.value(QStringLiteral("shm-suffix"));
    options->speed = parser.value(QStringLiteral("speed")).toDouble(&speed);
    options->seed = parser.value(QStringLiteral("seed")).toUInt(&seed);
    options->ownThread = false;
    return seed && speed && options->speed >= plant::slowestTime && options->speed <= plant::fastestTime;
}

void addOptions(QCommandLineParser* parser)
{
    parser->addHelpOption();
    parser->addOptions({
        {QStringLiteral("root"), QStringLiteral("folder that holds programs/"), QStringLiteral("dir")},
        {QStringLiteral("free-ports"), QStringLiteral("a free port wherever none is given")},
        {QStringLiteral("air"),
         QStringLiteral("start with the vacuum plant off, air in the chamber, the door open")},
        {QStringLiteral("speed"), QStringLiteral("simulated seconds for each real one, 0.1 to 1000"),
         QStringLiteral("n"), QStringLiteral("1")},
        {QStringLiteral("shm-suffix"), QStringLiteral("end of the shared segments' keys"),
         QStringLiteral("s")},
        {QStringLiteral("script"), QStringLiteral("file of instructor's lines"), QStringLiteral("file")},
        {QStringLiteral("pcap"), QStringLiteral("capture of the links, as tcpdump would take it"),
         QStringLiteral("file")},
        {QStringLiteral("seed"), QStringLiteral("seed of all that varies by chance"), QStringLiteral("n"),
         QStringLiteral("1")},
        {QStringLiteral("quit-on-eof"), QStringLiteral("end when standard input ends")},
    });
    for (const auto& port : portOptions) {
        const QString who = QLatin1String(port.who);
        parser->addOption({QLatin1String(port.tcp),
                           QStringLiteral("TCP port of %1, 0 for a free one").arg(who),
                           QStringLiteral("port"), QLatin1String(port.tcpPort)});
        parser->addOption({QLatin1String(port.udp),
                           QStringLiteral("UDP port of the console for %1, 0 for a free one").arg(who),
                           QStringLiteral("port"), QLatin1String(port.udpPort)});
    }
}

// By which whoever started the plant learns the ports.
QString readyLine(const plant::Installation& installation)
{
    QString ready = QStringLiteral("plant ready");
    for (int i = 0; i < plant::controllerCount; ++i) {
        const plant::Ports ports = installation.ports(static_cast<plant::Controller>(i));
        ready += QStringLiteral(" %1=%2 %3=%4")
                     .arg(QLatin1String(portOptions[i].tcp))
                     .arg(ports.tcp)
                     .arg(QLatin1String(portOptions[i].udp))
                     .arg(ports.udp);
    }
    return ready;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("The simulated installation. Instructor's lines on standard "
                       "input, answers on standard output, events on standard error."));
    addOptions(&parser);
    parser.process(app);

    plant::InstallationOptions options;
    if (!readOptions(parser, &options)) {
        print(stderr, QStringLiteral("plant: a number on the command line is wrong; try --help"));
        return 2;
    }
    if (!catchSignals())
        return 1;
    QSocketNotifier signalNotifier(signalPipe[0], QSocketNotifier::Read);
    QObject::connect(&signalNotifier, &QSocketNotifier::activated, &app, [] { QCoreApplication::quit(); });

    plant::Installation installation(options);
    QObject::connect(&installation, &plant::Installation::logged, &app, [](const QString& line) {
        print(stderr, QTime::currentTime().toString(QStringLiteral("HH:mm:ss ")) + line);
    });
    QObject::connect(&installation, &plant::Installation::quitRequested, &app, &QCoreApplication::quit,
                     Qt::QueuedConnection);
    QString error;
    if (!installation.start(&error) ||
        (parser.isSet(QStringLiteral("script")) &&
         !installation.runScript(parser.value(QStringLiteral("script")), &error))) {
        print(stderr, QStringLiteral("plant: ") + error);
        return 1;
    }
    print(stdout, readyLine(installation));

    const InputLines input(
        [&](const QByteArray& line) {
            const QString answer = installation.instruct(QString::fromUtf8(line));
            if (!answer.isEmpty())
                print(stdout, answer);
        },
        [&] {
            if (parser.isSet(QStringLiteral("quit-on-eof")))
                QCoreApplication::quit();
            return true;
        });
    return QCoreApplication::exec();
}
