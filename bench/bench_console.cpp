// What the console costs on the simulated installation.
//
//   bench_console [seconds at work, 600] [seconds of idling, 30]
//
// 1. From the start of the process to the login dialog on the screen.
// 2. Processor time of the console that idles at 20 datagrams a second of each controller.
// 3. Memory after a time at work, an axis being jogged there and back, and how it grows meanwhile.

#include "benchsite.h"
#include "benchtools.h"
#include "consoleapp.h"
#include "table.h"
#include "trainer/operator.h"
#include "trainer/plantprocess.h"
#include "trainer/screen.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QThread>
#include <QTimer>

namespace {

constexpr double startLimit = 1;       // s
constexpr double idleLimit = 2;        // % of a core
constexpr double memoryLimit = 2.5;    // times an empty window
constexpr double growthLimitMb = 0.05; // a minute: 72 MB in a day

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

// Processor time, % of a core, of an event loop with a clock of one second and nothing else.
double bareLoop(int seconds)
{
    const double before = processorSeconds();
    QTimer clock;
    clock.start(1000);
    QEventLoop loop;
    QTimer::singleShot(seconds * 1000, &loop, &QEventLoop::quit);
    loop.exec();
    return 100 * (processorSeconds() - before) / seconds;
}

// Of this process with an empty window of the panel's size on the screen, MB.
double emptyWindowMb()
{
    QWidget window;
    window.resize(panelSize);
    window.show();
    QCoreApplication::processEvents();
    window.repaint();
    return memoryMb();
}

// The slope of values that were taken once a second, a minute. By least squares, without the first tenth.
double slope(const std::vector<double>& values)
{
    const std::size_t first = values.size() / 10;
    const double count = double(values.size() - first);
    const double middle = double(first) + (count - 1) / 2;
    double above = 0;
    double below = 0;
    for (std::size_t i = first; i < values.size(); ++i) {
        above += (double(i) - middle) * values[i];
        below += (double(i) - middle) * (double(i) - middle);
    }
    return below > 0 ? 60 * above / below : std::nan("");
}

struct Life
{
    double toLogin = 0;         // s
    double idle = 0;            // % of a core
    std::vector<double> memory; // MB, each second at work
};

// The axis goes there and back; each way is held for some seconds.
void work(Operator& hand, int seconds, std::vector<double>& memory)
{
    constexpr int hold = 3;
    hand.switchOn(false);
    hand.setSpeed("LX", "600");
    while (int(memory.size()) < seconds) {
        const bool there = memory.size() / hold % 2 == 0;
        hand.press(there ? "pbPlusLX" : "pbMinusLX");
        for (int i = 0; i < hold; ++i) {
            QThread::sleep(1);
            memory.push_back(memoryMb());
        }
        hand.release();
    }
}

void live(Operator& hand, const QElapsedTimer& start, int workSeconds, int idleSeconds, Life& life)
{
    hand.waitVisible("leLogin");
    life.toLogin = double(start.elapsed()) / 1000;
    hand.logIn();
    QThread::sleep(2);
    const double before = processorSeconds();
    QThread::sleep(static_cast<unsigned long>(idleSeconds));
    life.idle = 100 * (processorSeconds() - before) / idleSeconds;
    work(hand, workSeconds, life.memory);
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const int workSeconds = argc > 1 ? std::atoi(argv[1]) : 600;
    const int idleSeconds = argc > 2 ? std::atoi(argv[2]) : 30;
    QApplication app(argc, argv);
    const double toApplication = processAge();
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const double bare = bareLoop(idleSeconds);
    const double empty = emptyWindowMb(); // before the console has left its own

    BenchSite place;
    PlantProcess plant(
        {PlantProcess::besideThisProgram(), place.own.root, 1, QString(), place.own.shmSuffix, false});
    Table table;
    QString why;
    if (!plant.start(&why)) {
        table.missing("console", why.toUtf8());
        return table.result();
    }
    plant.setEndpoints(&place.own);
    setSite(place.own);

    Life life;
    Operator hand;
    QElapsedTimer start;
    start.start();
    why = runScript([] { runConsole(); }, [&] { live(hand, start, workSeconds, idleSeconds, life); });
    if (!why.isEmpty())
        table.missing("console", why.toUtf8());
    table.row("start of the process to the login dialog", toApplication + life.toLogin, "s",
              {"to a bare application object", toApplication}, atMost(startLimit));
    table.row("idle console, 3 x 20 datagrams a second", life.idle, "%", {"a bare event loop", bare},
              atMost(idleLimit));
    const QByteArray after = QByteArray::number(workSeconds) + " s at work";
    table.row("memory after " + after, life.memory.empty() ? std::nan("") : life.memory.back(), "MB",
              {"an empty window of that size", empty}, atMostTimes(memoryLimit));
    table.row("its growth in " + after, slope(life.memory), "MB/min", {"an empty window", 0},
              atMost(growthLimitMb));
    return table.result();
}
