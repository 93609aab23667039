// How long the programs of a large weld take to generate, beside a straight pass over the same tables, and
// how the time grows with points, rows and passes.

#include "schema.h"
#include "weldgeometry.h"
#include "weldprogram.h"

#include <QtMath>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>
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

double generate(const WeldTables& tables, int* characters)
{
    const double begin = now();
    WeldStage stage;
    const QString beam = technologyProgram(tables);
    const MotionPrograms motion = contourPrograms(tables, stage);
    const double seconds = now() - begin;
    *characters = beam.size() + motion.channel1.size() + motion.channel2.size();
    return seconds;
}

double best(const WeldTables& tables, int* characters)
{
    double least = generate(tables, characters);
    for (int i = 0; i < 4; ++i)
        least = std::min(least, generate(tables, characters));
    return least;
}

} // namespace

int main()
{
    bool good = true;
    std::printf("%-7s %7s %6s %7s %11s %11s %14s %10s\n", "scheme", "points", "rows", "passes", "generation",
                "bare pass", "ns/(pt+row)/pass", "text");
    for (const char* scheme : {"XYZ", "XYZr", "Circle"}) {
        double firstUnit = 0;
        for (int size : {500, 1000, 2000, 4000, 8000}) {
            const Large large = weld(scheme, size, size, 4);
            int characters = 0;
            const double seconds = best(large.tables, &characters);
            const double begin = now();
            volatile double sum = straightPass(large.tables);
            (void)sum;
            const double bare = now() - begin;
            const double unit = seconds * 1e9 / (2.0 * size * 4);
            firstUnit = firstUnit > 0 ? firstUnit : unit;
            std::printf("%-7s %7d %6d %7d %8.2f ms %8.3f ms %13.0f %7d kB\n", scheme, size, size, 4,
                        seconds * 1e3, bare * 1e3, unit, characters / 1024);
            if (size == 2000 && seconds > limitSeconds)
                good = false;
            if (unit > 2 * firstUnit)
                good = false;
        }
    }
    // The largest that the console takes: few points on many passes, and many rows.
    for (const char* scheme : {"XYZ", "XYZr", "Circle"}) {
        for (int rows : {2, maxTechRows}) {
            int passes = 1;
            while (programLines(weld(scheme, 50, rows, passes + 1).tables) <= maxProgramLines)
                ++passes;
            int characters = 0;
            const double seconds = best(weld(scheme, 50, rows, passes).tables, &characters);
            std::printf("%-7s %7d %6d %7d %8.2f ms, the most that is made\n", scheme, 50, rows, passes,
                        seconds * 1e3);
            good = good && seconds < largestSeconds;
        }
    }
    std::printf("%s\n", good ? "within 1 s for 2000 points, 2000 rows, 4 passes; growth linear" : "TOO SLOW");
    return good ? 0 : 1;
}
