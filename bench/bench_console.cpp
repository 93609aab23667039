#include "consoleapp.h"
#include "trainer/operator.h"
#include "trainer/plantprocess.h"
#include "trainer/sitefolder.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>

#include <cstdio>
#include <sys/resource.h>
#include <unistd.h>

// What the console costs: the time from the start of the process to the login dialog on the screen, and the
// processor time of the idle console at 20 datagrams a second, each beside a yardstick of the same run.
//   bench_console [seconds of idling, 30]

namespace {

double cpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval& t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Seconds since the kernel started this process.
double processAge()
{
    QFile stat(QStringLiteral("/proc/self/stat"));
    QFile uptime(QStringLiteral("/proc/uptime"));
    if (!stat.open(QIODevice::ReadOnly) || !uptime.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray all = stat.readAll();
    const QList<QByteArray> fields = all.mid(all.lastIndexOf(')') + 2).split(' ');
    const double started = fields.at(19).toDouble() / double(sysconf(_SC_CLK_TCK));
    return uptime.readAll().split(' ').first().toDouble() - started;
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const int seconds = argc > 1 ? atoi(argv[1]) : 30;
    QApplication app(argc, argv);
    const double toApplication = processAge();
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});

    // The yardstick of idling: an event loop with a clock of one second and nothing else.
    double bare = cpuSeconds();
    {
        QTimer clock;
        clock.start(1000);
        QEventLoop loop;
        QTimer::singleShot(seconds * 1000, &loop, &QEventLoop::quit);
        loop.exec();
    }
    bare = cpuSeconds() - bare;

    QTemporaryDir folder;
    Site own;
    own.root = folder.path();
    own.shmSuffix = QStringLiteral("_bench");
    laySiteFolder(own.root, true);
    PlantProcess plant({PlantProcess::besideThisProgram(), own.root, 1, QString(), own.shmSuffix, false});
    QString why;
    if (!plant.start(&why)) {
        std::fprintf(stderr, "%s\n", qPrintable(why));
        return 1;
    }
    plant.setEndpoints(&own);
    setSite(own);

    QElapsedTimer start;
    start.start();
    double toLogin = 0;
    double idle = 0;
    Operator hand;
    const QString trouble = runScript([] { runConsole(); },
                                      [&] {
                                          hand.waitVisible("leLogin");
                                          toLogin = double(start.elapsed()) / 1000;
                                          hand.logIn();
                                          QThread::sleep(2);
                                          idle = cpuSeconds();
                                          QThread::sleep(static_cast<unsigned long>(seconds));
                                          idle = cpuSeconds() - idle;
                                      });
    if (!trouble.isEmpty()) {
        std::fprintf(stderr, "%s\n", qPrintable(trouble));
        return 1;
    }
    std::printf(
        "start to login dialog: %.2f s (of it %.2f s until the application object stands); at most 1 s\n",
        toApplication + toLogin, toApplication);
    std::printf(
        "idle console, 20 datagrams a second: %.2f %% of a core; a bare event loop: %.2f %%; at most 2 %%\n",
        100 * idle / seconds, 100 * bare / seconds);
    return 0;
}
