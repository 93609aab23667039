// What the simulated installation costs.
//
// 1. The reader of NC programs, beside a plain split of the same text into lines and words.
// 2. The installation at its fastest beside the clock: a program run at both speeds; what the controller
// tells at its end must be the same to the byte.

#include "benchsite.h"
#include "benchtools.h"
#include "plant/controller.h"
#include "plant/installation.h"
#include "plant/instructor.h"
#include "plant/ncparser.h"
#include "table.h"

#include <QCoreApplication>
#include <QDir>
#include <QThread>

namespace {

constexpr double readerLimit = 4;  // times the split
constexpr double fasterLimit = 50; // times the clock

// A long program of channel 1: straight moves, arcs, feeds, as welds have them.
QString longProgram(int lines)
{
    QString text = QStringLiteral("N1 $1\n");
    for (int n = 2; n < lines; ++n) {
        const double x = 0.01 * (n % 5000);
        if (n % 5 == 0)
            text += QStringLiteral("N%1 G2 X=%2 Y=%3 R500.00 F600.00\n")
                        .arg(n)
                        .arg(x, 0, 'f', 2)
                        .arg(-x, 0, 'f', 2);
        else
            text += QStringLiteral("N%1 G1 X=%2 Y=%3 Z=10.00 F%4.00\n")
                        .arg(n)
                        .arg(x, 0, 'f', 2)
                        .arg(-x, 0, 'f', 2)
                        .arg(600 + n % 100);
    }
    return text + QStringLiteral("N%1 M30\n").arg(lines);
}

// Processor time of the best of five, s.
template <class Act>
double best(Act act)
{
    double least = 1e9;
    for (int i = 0; i < 5; ++i) {
        const double start = processorSeconds();
        act();
        least = std::min(least, processorSeconds() - start);
    }
    return least;
}

void reader(Table& table)
{
    constexpr int lines = 100'000;
    const QString text = longProgram(lines);
    int words = 0;
    const double split = best([&] {
        words = 0;
        for (const QString& line : text.split('\n'))
            words += line.split(' ').size();
    });
    const double lineSplit = best([&] { words = text.split('\n').size(); });
    plant::NcProgram program;
    const double read = best([&] { program = plant::parseNcProgram(text, 1); });
    if (!program.error.isEmpty())
        table.missing("NC reader",
                      program.error.toUtf8() + " in line " + QByteArray::number(program.errorLine));
    table.row("NC reader, time of 100,000 lines", read * 1e3, "ms",
              {"split into lines and words", split * 1e3}, atMostTimes(readerLimit));
    table.row("the same", read * 1e3, "ms", {"split into lines alone", lineSplit * 1e3}, noLimit);
    table.row("NC reader", lines / read, "1/s", {"split into lines and words", lines / split}, noLimit);
}

// The program whose run is timed: about 25 seconds of axis LX at 10 mm/s, to a place it does not start from.
constexpr float endOfRun = 50;
const char* const timedProgram = "N1 $1\nN2 G90 G01 LX=150.00 F600\nN3 G01 LX=50.00 F600\nN4 M30\n";

struct Run
{
    QString trouble;    // empty: it came to its end
    double seconds = 0; // of the clock
    plant::StatusPack end{};
};

Run runAt(double speed, const QString& root)
{
    plant::InstallationOptions options;
    options.root = root;
    options.speed = speed;
    plant::Installation installation(options);
    Run run;
    if (!installation.start(&run.trouble))
        return run;
    const auto until = [&](auto holds) { // 90 s at most
        QElapsedTimer patience;
        patience.start();
        while (!holds(run.end = installation.status()) && patience.elapsed() < 90'000)
            QThread::usleep(500);
        return holds(run.end);
    };
    const auto command = [&](const char* text) {
        installation.inside([&](plant::MotionController& motion) {
            run.trouble = motion.command(QString::fromLatin1(text));
        });
        return run.trouble.isEmpty();
    };
    if (!command("DRIVE ON") || !until([](const plant::StatusPack& now) { return now.drivesOn != 0; }))
        return run;
    const std::uint32_t rest = run.end.channelState[0];
    QElapsedTimer clock;
    clock.start();
    if (!command("EXEC_1(/programs/bench.npg)"))
        return run;
    const bool ended = until([rest](const plant::StatusPack& now) {
        return now.channelState[0] == rest && now.position[0] == endOfRun;
    });
    run.seconds = double(clock.nsecsElapsed()) / 1e9;
    // What is told stands for a second of the clock, whatever the speed.
    const bool quiet = ended && until([](const plant::StatusPack& now) {
                           return now.message[0] + now.message[1] + now.message[2] + now.message[3] == 0;
                       });
    if (!quiet)
        run.trouble = QStringLiteral("the program did not come to its end");
    return run;
}

void faster(Table& table)
{
    BenchSite place;
    QFile program(place.own.path(QStringLiteral("/programs/bench.npg")));
    QDir().mkpath(place.own.path(QStringLiteral("/programs")));
    if (!program.open(QIODevice::WriteOnly) || program.write(timedProgram) < 0)
        return table.missing("the plant beside the clock", program.errorString().toUtf8());
    program.close();

    const Run clock = runAt(1, place.own.root);
    const Run fast = runAt(plant::fastestTime, place.own.root);
    for (const Run* run : {&clock, &fast}) {
        if (!run->trouble.isEmpty())
            table.missing("the plant beside the clock", run->trouble.toUtf8());
    }
    table.row("program runs on the fastest plant", clock.seconds / fast.seconds, "runs", {"by the clock", 1},
              atLeastTimes(fasterLimit));
    const char* const a = reinterpret_cast<const char*>(&clock.end);
    const char* const b = reinterpret_cast<const char*>(&fast.end);
    int different = 0;
    for (std::size_t i = 0; i < sizeof clock.end; ++i)
        different += a[i] != b[i];
    table.row("bytes in which their last datagrams differ", different, "", {"bytes", sizeof clock.end},
              atMost(0));
}

} // namespace

int main(int argc, char* argv[])
{
    const QCoreApplication app(argc, argv);
    Table table;
    reader(table);
    faster(table);
    return table.result();
}
