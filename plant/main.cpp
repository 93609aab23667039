#include "plant/installation.h"

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

bool readOptions(const QCommandLineParser& parser, plant::InstallationOptions* options)
{
    bool tcp = true;
    bool udp = true;
    bool speed = true;
    bool seed = true;
    options->root = parser.value(QStringLiteral("root"));
    options->tcpPort = parser.value(QStringLiteral("tcp")).toUShort(&tcp);
    options->udpPort = parser.value(QStringLiteral("udp")).toUShort(&udp);
    options->shmSuffix = parser.value(QStringLiteral("shm-suffix"));
    options->speed = parser.value(QStringLiteral("speed")).toDouble(&speed);
    options->seed = parser.value(QStringLiteral("seed")).toUInt(&seed);
    options->ownThread = false;
    return tcp && udp && seed && speed && options->speed >= 0.1 && options->speed <= 200;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("The simulated installation. Instructor's lines on standard "
                       "input, answers on standard output, events on standard error."));
    parser.addHelpOption();
    parser.addOptions({
        {QStringLiteral("root"), QStringLiteral("folder that holds programs/"), QStringLiteral("dir")},
        {QStringLiteral("tcp"), QStringLiteral("TCP port, 0 for a free one"), QStringLiteral("port"),
         QStringLiteral("5190")},
        {QStringLiteral("udp"), QStringLiteral("UDP port of the console, 0 for a free one"),
         QStringLiteral("port"), QStringLiteral("5191")},
        {QStringLiteral("speed"), QStringLiteral("simulated seconds for each real one, 0.1 to 200"),
         QStringLiteral("n"), QStringLiteral("1")},
        {QStringLiteral("shm-suffix"), QStringLiteral("end of the shared segments' keys"),
         QStringLiteral("s")},
        {QStringLiteral("script"), QStringLiteral("file of instructor's lines"), QStringLiteral("file")},
        {QStringLiteral("seed"), QStringLiteral("seed of all that varies by chance"), QStringLiteral("n"),
         QStringLiteral("1")},
        {QStringLiteral("quit-on-eof"), QStringLiteral("end when standard input ends")},
    });
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
    print(
        stdout,
        QStringLiteral("plant ready tcp=%1 udp=%2").arg(installation.tcpPort()).arg(installation.udpPort()));

    QByteArray input;
    QSocketNotifier inputNotifier(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&inputNotifier, &QSocketNotifier::activated, &app, [&] {
        char buffer[4096];
        const auto size = read(STDIN_FILENO, buffer, sizeof buffer);
        if (size <= 0) {
            inputNotifier.setEnabled(false);
            if (parser.isSet(QStringLiteral("quit-on-eof")))
                QCoreApplication::quit();
            return;
        }
        input.append(buffer, static_cast<int>(size));
        for (int end = input.indexOf('\n'); end >= 0; end = input.indexOf('\n')) {
            const QString answer = installation.instruct(QString::fromUtf8(input.left(end)));
            input.remove(0, end + 1);
            if (!answer.isEmpty())
                print(stdout, answer);
        }
    });
    return QCoreApplication::exec();
}
