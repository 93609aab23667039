#include "tools/replay/replay.h"

#include "consoleapp.h"
#include "endsignals.h"
#include "mywinstyle.h"
#include "tools/replay/replaywindow.h"
#include "trainer/operator.h"
#include "trainer/screen.h"
#include "trainer/sitefolder.h"
#include "trainer/wheelcounters.h"

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <atomic>
#include <cstdio>

namespace replay {

namespace {

constexpr int failed = 2;

int refuse(const QString& why)
{
    std::fprintf(stderr, "mirta-trainer: %s\n", qPrintable(why));
    return failed;
}

QStringList portsOf(const Site& site)
{
    QStringList ports;
    for (const Endpoint& end : {site.drive, site.kvs, site.kvk})
        ports << QString::number(end.tcpPort) << QString::number(end.udpPort);
    return ports;
}

// In the process without a display: the console on the player's servers and on a folder that goes away with
// them. A hand of its own logs in.
int look(const QCommandLineParser& parser)
{
    const QStringList ports = parser.value("replay-ports").split(',');
    const auto end = [&](int i) {
        return Endpoint{QStringLiteral("127.0.0.1"), ports.value(i).toInt(), ports.value(i + 1).toInt()};
    };
    Site own;
    own.root = parser.value("replay-site");
    own.shmSuffix = QStringLiteral("_replay%1").arg(QCoreApplication::applicationPid());
    own.drive = end(0);
    own.kvs = end(2);
    own.kvk = end(4);
    setSite(own);
    WheelCounters wheels; // at rest
    LirDevice::replace(&wheels);
    const MirrorSource source(parser.value("mirror"), [](const QString&) {});
    int code = 0;
    std::atomic<bool> over{false};
    const QString trouble = runScript(
        [&] {
            code = runConsole();
            over = true;
        },
        [&] {
            Operator(60'000).logIn();
            while (!over)
                QThread::msleep(50);
        });
    return trouble.isEmpty() || over ? code : refuse(trouble);
}

} // namespace

void addOptions(QCommandLineParser* parser)
{
    parser->addOptions({
        {"replay", "Show what the console showed while this capture was taken; it only looks.", "file.pcap"},
        {"at", "Begin at this moment of the capture.", "HH:MM:SS"},
    });
    for (const char* name : {"replay-ports", "replay-site"}) {
        QCommandLineOption own(QLatin1String(name), QString(), QStringLiteral("of the player"));
        own.setFlags(QCommandLineOption::HiddenFromHelp);
        parser->addOption(own);
    }
}

bool isAsked(const QCommandLineParser& parser)
{
    return parser.isSet("replay") || parser.isSet("replay-ports");
}

int run(const QCommandLineParser& parser)
{
    if (parser.isSet("replay-ports"))
        return look(parser);

    bool isNumber = false;
    const double speed = parser.value("speed").toDouble(&isNumber);
    if (!isNumber || !(speed >= slowest && speed <= fastest))
        return refuse(QStringLiteral("скорость показа: от %1 до %2").arg(slowest).arg(fastest));
    const QString file = parser.value("replay");
    Capture capture;
    QString why;
    if (!capture.read(file, &why))
        return refuse(why);
    for (const QString& line : capture.remarks())
        std::fprintf(stderr, "%s: %s\n", qPrintable(file), qPrintable(line));
    constexpr qint64 second = 1'000'000; // within it all controllers have told their state
    const auto at = parser.isSet("at") ? capture.find(parser.value("at")) : capture.begin() + second;
    if (!at)
        return refuse(
            QStringLiteral("%1: момента «%2» в записи нет, она идёт с %3 до %4")
                .arg(file, parser.value("at"), clockText(capture.begin()), clockText(capture.end())));

    const QTemporaryDir scratch;
    Player player(capture);
    if (!scratch.isValid() || !laySiteFolder(scratch.path(), true) || !player.listen(&why))
        return refuse(scratch.isValid() ? why : scratch.errorString());
    // The example is not what the operator had; no capture holds his.
    QFile::remove(scratch.filePath(QStringLiteral("home/oper/bin/contours/contour.save")));
    player.setSpeed(speed);
    player.jump(*at);
    Site ends;
    player.setEndpoints(&ends);

    const EndSignals end;
    QApplication::setStyle(new MyWinStyle);
    ReplayWindow window(file, capture, player, QCoreApplication::applicationFilePath(),
                        {QStringLiteral("--replay-ports"), portsOf(ends).join(','),
                         QStringLiteral("--replay-site"), scratch.path()});
    window.showMaximized();
    return QApplication::exec();
}

} // namespace replay
