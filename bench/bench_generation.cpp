// How long the programs of a large weld take to generate, beside a straight pass over the same tables, and
// how the time grows with points, rows and passes.

#include "benchtools.h"
#include "schema.h"
#include "table.h"
#include "trainer/proofrun.h"
#include "weldgeometry.h"
#include "weldprogram.h"
#include "weldproof.h"

#include <QtMath>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

namespace {

constexpr double limitSeconds = 1.0;    // for 2000 points, 2000 rows, 4 passes
constexpr double largestSeconds = 0.06; // the rest of 100 ms is for showing them

// Processor time, s: other tenants of the machine do not count.
double now()
{
    timespec time;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) * 1e-9;
}

struct Large
{
    std::unique_ptr<Schema> schema;
    WeldTables tables;
};

Large weld(const QString& scheme, int points, int rows, int passes)
{
    Large large;
    if (scheme == "XYZ")
        large.schema = std::make_unique<SchemaXYZ>();
    else if (scheme == "XYZr")
        large.schema = std::make_unique<SchemaXYZr>(1000.0f, 0.0f, 0);
    else
        large.schema = std::make_unique<SchemaCircle>(1000.0f, float(points));
    WeldContour& contour = large.tables.contour;
    contour.schema = large.schema.get();
    contour.closed = true;
    contour.nrings = passes;
    for (int i = 0; i < points; ++i) {
        const double turned = 360.0 * i / points;
        const double a = qDegreesToRadians(turned);
        ContourRow row;
        row.coords = {float(500 * std::cos(a)), float(500 * std::sin(a)), 10.0f};
        if (scheme == "Circle")
            row.coords = {float(turned), 1.0f, 2.0f, float(i % 7)};
        if (scheme == "XYZ" && i % 3 == 0) {
            row.frame.type = Frame::Arc;
            row.frame.radius = 500;
            row.frame.direction = 1;
        }
        contour.rows.append(row);
    }
    contour.length = float(passLength(contour));

    const double total = totalLength(contour);
    for (int i = 0; i < rows; ++i) {
        TechRow row;
        row.path = float(total * i / (rows - 1));
        row.Ir = float(i % 40);
        row.If = 700;
        row.speed = float(600 + i % 100);
        large.tables.tech.append(row);
    }
    return large;
}

// Reads every value of the tables once for each pass.
double straightPass(const WeldTables& tables)
{
    double sum = 0;
    for (int pass = 0; pass < passCount(tables.contour); ++pass) {
        for (const ContourRow& row : tables.contour.rows) {
            for (float c : row.coords)
                sum += double(c);
        }
        for (const TechRow& row : tables.tech)
            sum += double(row.path + row.Ir + row.If + row.speed);
    }
    return sum;
}

double generate(const WeldTables& tables)
{
    const double begin = now();
    WeldStage stage;
    const QString beam = technologyProgram(tables);
    const MotionPrograms motion = contourPrograms(tables, stage);
    return now() - begin;
}

double best(const WeldTables& tables)
{
    double least = generate(tables);
    for (int i = 0; i < 4; ++i)
        least = std::min(least, generate(tables));
    return least;
}

QByteArray sizes(const char* scheme, int points, int rows, qint64 passes)
{
    return QByteArray(scheme) + ", " + QByteArray::number(points) + " points, " + QByteArray::number(rows) +
           " rows, " + QByteArray::number(passes) + " passes";
}

// Time grows with the points, the rows and the passes, and not faster.
void growth(Table& table, const char* scheme)
{
    constexpr int passes = 4;
    double firstUnit = 0;
    for (int size : {500, 1000, 2000, 4000, 8000}) {
        const Large large = weld(scheme, size, size, passes);
        const double seconds = best(large.tables);
        const double begin = now();
        volatile double sum = straightPass(large.tables);
        (void)sum;
        const double bare = now() - begin;
        const double unit = seconds * 1e9 / (2.0 * size * passes);
        firstUnit = firstUnit > 0 ? firstUnit : unit;
        table.row(sizes(scheme, size, size, passes), seconds * 1e3, "ms", {"reading the tables", bare * 1e3},
                  size == 2000 ? atMost(limitSeconds * 1e3) : noLimit);
        if (size == 8000)
            table.row(QByteArray(scheme) + ", ns for a point or row and a pass", unit, "ns",
                      {"the same at 500 points", firstUnit}, atMostTimes(2));
    }
}

// The largest that the console takes: few points on many passes, without rows and with many.
void largest(Table& table, const char* scheme)
{
    for (int rows : {2, maxTechRows}) {
        int passes = 1;
        while (programLines(weld(scheme, 50, rows, passes + 1).tables) <= maxProgramLines)
            ++passes;
        const Large large = weld(scheme, 50, rows, passes);
        table.row(sizes(scheme, 50, rows, passes) + ", the most", best(large.tables) * 1e3, "ms",
                  {"a window may stand still", 100}, atMost(largestSeconds * 1e3));
    }
}

// What is beyond is told before anything is made.
void refusal(Table& table)
{
    constexpr qint64 wanted = 4'000'000; // lines
    Large large = weld("XYZ", 2000, 2000, 1);
    large.tables.contour.nrings = int(wanted / programLines(large.tables)) + 1;
    while (programLines(large.tables) < wanted)
        ++large.tables.contour.nrings;
    QString told;
    const double begin = now();
    told = tooLongText(programLines(large.tables));
    const double seconds = now() - begin;
    if (told.isEmpty())
        table.missing("4,000,000 lines", "they would be made, and the window would stand");
    table.row("4,000,000 lines: told that they are too many", seconds * 1e3, "ms",
              {"a window may stand still", 100}, atMostTimes(1));
}

// The whole weld executed on the simulated channels.
void proved(Table& table, const char* scheme)
{
    const Large large = weld(scheme, 2000, 2000, 4);
    const double begin = now();
    WeldStage stage;
    const int found = weldProof(large.tables, contourPrograms(large.tables, stage)).size();
    const ProofRun run = runWeld(large.tables, {});
    table.row(sizes(scheme, 2000, 2000, 4) + ", proved: " + QByteArray::number(found), now() - begin, "s",
              {"the weld", run.seconds}, atMost(5));
}

} // namespace

int main()
{
    Table table;
    for (const char* scheme : {"XYZ", "XYZr", "Circle"})
        growth(table, scheme);
    for (const char* scheme : {"XYZ", "XYZr", "Circle"})
        largest(table, scheme);
    for (const char* scheme : {"XYZ", "XYZr", "Circle"})
        proved(table, scheme);
    refusal(table);
    return table.result();
}
