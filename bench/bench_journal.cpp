// What a line of the journal costs when the list holds those of weeks.
//
//   bench_journal [rows, 100000]
//
// A line told to the list on the screen and written to the file, and the paint that follows, beside the same
// in a short list. Processor time, the middle of many.

#include "benchsite.h"
#include "benchtools.h"
#include "journal.h"
#include "journallist.h"
#include "table.h"

#include <QApplication>
#include <QDir>
#include <QTextStream>

namespace {

constexpr double limitMs = 0.5;     // of a line
constexpr double growthLimit = 1.5; // times, of its paint: a long list costs what a short one does
constexpr int times = 301;

// Of a call, the middle of many, ms; behind each the window paints, and what that takes goes to `paintMs`.
template <class Act>
double middleMs(Act act, double* paintMs = nullptr)
{
    std::vector<double> all;
    std::vector<double> paints;
    for (int i = 0; i < times; ++i) {
        const double start = processorSeconds();
        act();
        const double done = processorSeconds();
        QCoreApplication::processEvents();
        all.push_back((done - start) * 1e3);
        paints.push_back((processorSeconds() - done) * 1e3);
    }
    if (paintMs)
        *paintMs = median(paints);
    return median(all);
}

QString line(int n)
{
    // As long as most are; every tenth wraps.
    const QString text = QStringLiteral("[I]Выполнение ручного перемещения по оси LX, строка %1").arg(n);
    return n % 10 ? text : text + QStringLiteral(": подробности, для которых одной строки не хватит");
}

double bareLine(const QString& folder)
{
    QFile file(folder + QStringLiteral("/bare.log"));
    if (!file.open(QIODevice::WriteOnly))
        return std::nan("");
    int n = 0;
    return middleMs([&] {
        QTextStream stream(&file);
        stream << QStringLiteral("[12:00:00] ") << line(++n) << '\n';
        stream.flush();
        file.flush();
    });
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const int rows = std::max(1, argc > 1 ? std::atoi(argv[1]) : 100'000);
    QApplication app(argc, argv);
    BenchSite place;
    setSite(place.own);
    QDir().mkpath(site().path(QStringLiteral("/log")));

    JournalList list;
    list.resize(800, 195);
    list.show();
    Journal journal(&list);
    journal.open();
    int n = 0;
    const auto tell = [&] { journal.write(line(++n), true); };
    double earlyPaint = 0;
    double latePaint = 0;
    middleMs(tell); // glyphs and icons are there from now on
    const double early = middleMs(tell, &earlyPaint);
    while (list.count() < rows)
        tell();
    QCoreApplication::processEvents();
    const double late = middleMs(tell, &latePaint);
    const double bare = bareLine(place.own.root);

    Table table;
    const QByteArray behind = "behind " + QByteArray::number(rows) + " rows";
    table.row("journal line in a short list", early, "ms", {"a bare line to a file", bare}, noLimit);
    table.row("journal line " + behind, late, "ms", {"in a short list", early}, atMost(limitMs));
    table.row("its paint " + behind, latePaint, "ms", {"in a short list", earlyPaint},
              atMostTimes(growthLimit));
    return table.result();
}
