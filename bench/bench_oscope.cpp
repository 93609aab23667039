// What the strip chart costs: sixteen curves recorded for eight simulated hours.
//
//   bench_oscope [folder]     with a folder, leaves pictures of three time scales there
//
// Memory beside the samples' own bytes; a sample beside a bare store of the same values; a paint of a widget
// as wide as the panel, at each time scale, beside a plain fill of the same widget. Then the limits of a
// drag, and the new record after eight hours.

#include "benchtools.h"
#include "mywinstyle.h"
#include "oscope.h"
#include "table.h"

#include <QApplication>
#include <QDateTime>
#include <QMouseEvent>
#include <QtMath>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int curves = 16;
constexpr double paintLimitMs = 5;
constexpr double sampleLimitUs = 1;
constexpr double memoryLimitMb = 4; // beyond the samples themselves

class SimulatedScope : public Oscope
{
public:
    using Oscope::Oscope;
    long time = QDateTime(QDate(2026, 5, 14), QTime(8, 0)).toMSecsSinceEpoch() / 10;

protected:
    long presentCentisec() const override { return time; }
};

struct Signal
{
    const char* name;
    const char* colour;
    int ordinate;
    double rest;   // of the scale
    double swing;  // of the scale
    double period; // s
    double noise;  // of the scale
};
// clang-format off
const Signal signalTable[curves] = {
    {"Ток луча", "#ff5c5c", 0, 0.62, 0.06, 47, 0.010}, {"Фокус", "#ffb347", 0, 0.45, 0.02, 300, 0.004},
    {"Накал", "#ffe45c", 0, 0.30, 0.01, 900, 0.002},    {"Бомбард.", "#c8ff5c", 0, 0.18, 0.03, 120, 0.006},
    {"Ускоряющее", "#5cff8a", 1, 0.92, 0.01, 600, 0.003}, {"Запирающее", "#5cffe0", 1, 0.55, 0.05, 75, 0.005},
    {"Камера", "#5cb8ff", 2, 0.50, 0.30, 5400, 0.002},  {"Пушка", "#8f8aff", 2, 0.25, 0.12, 3600, 0.002},
    {"Диффуз.", "#d08aff", 2, 0.75, 0.10, 7200, 0.003}, {"LX", "#ff8ae6", 3, 0.50, 0.40, 240, 0},
    {"LY", "#ffc9de", 3, 0.40, 0.25, 180, 0},           {"A", "#e6d5a8", 3, 0.35, 0.30, 95, 0},
    {"B", "#a8c8e6", 3, 0.70, 0.15, 60, 0},             {"U1", "#b0e6a8", 3, 0.15, 0.08, 36, 0},
    {"V", "#ffffff", 3, 0.85, 0.05, 20, 0},             {"Z", "#9aa4b4", 3, 0.08, 0.02, 1800, 0.003},
};
// clang-format on
const float scales[] = {250, 60, 0.05F, 1000};

double processorMs()
{
    return processorSeconds() * 1e3;
}

void addAll(Oscope& scope)
{
    const char* const names[] = {"Ток, мА", "Напряжение, кВ", "Давление, Па", "Положение, мм"};
    for (int i = 0; i < 4; ++i)
        scope.addOrdinate(QString::fromUtf8(names[i]), scales[i]);
    for (const Signal& s : signalTable)
        scope.addCurve(QString::fromUtf8(s.name), scales[s.ordinate], QColor(s.colour), s.ordinate);
}

// The values at a sample, in the order of the table; cheap, so that it is the record that is measured.
void compute(long number, quint32& random, float* values)
{
    const double seconds = double(number) / 100;
    for (int i = 0; i < curves; ++i) {
        const Signal& s = signalTable[i];
        random = random * 1664525U + 1013904223U;
        const double noise = (double(random >> 8) / (1 << 24) - 0.5) * s.noise;
        const double phase = seconds / s.period;
        const double wave = qFastSin((phase - std::floor(phase)) * 2 * M_PI);
        values[i] = float((s.rest + s.swing * wave + noise) * double(scales[s.ordinate]));
    }
}

// Eight hours of samples. Returns the processor time of the chart alone, ms.
double record(SimulatedScope& scope)
{
    QMap<QString, float> values;
    for (int i = 0; i < curves; ++i)
        values.insert(QString::fromUtf8(signalTable[i].name), 0);
    quint32 random = 1;
    float computed[curves];
    double used = 0;
    constexpr int block = 1000; // samples, so that the clock does not cost more than what it measures
    std::vector<QMap<QString, float>> prepared(block, values);
    for (long number = 0; number < Oscope::capacity; number += block) {
        for (int k = 0; k < block; ++k) {
            compute(number + k, random, computed);
            for (int i = 0; i < curves; ++i)
                prepared[size_t(k)][QString::fromUtf8(signalTable[i].name)] = computed[i];
        }
        const double start = processorMs();
        for (int k = 0; k < block; ++k) {
            scope.setValues(prepared[size_t(k)]);
            ++scope.time;
            scope.timeEvent();
        }
        used += processorMs() - start;
    }
    return used;
}

// The same stores with nothing around them, ms.
double bareStores()
{
    std::vector<std::vector<float>> rings(curves, std::vector<float>(Oscope::capacity, 1));
    volatile float value = 1;
    const double start = processorMs();
    for (size_t number = 0; number < size_t(Oscope::capacity); ++number) {
        for (auto& ring : rings)
            ring[number] = value;
    }
    return processorMs() - start;
}

// Processor time of the middle one of many, ms.
template <class Act>
double middle(Act act)
{
    std::vector<double> all;
    for (int i = 0; i < 21; ++i) {
        const double start = processorMs();
        act();
        all.push_back(processorMs() - start);
    }
    return median(all);
}

void drag(QWidget& scope, int from, int to)
{
    const auto send = [&](QEvent::Type type, int x) {
        QMouseEvent event(type, QPointF(x, 300), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&scope, &event);
    };
    send(QEvent::MouseButtonPress, from);
    send(QEvent::MouseMove, to);
    send(QEvent::MouseButtonRelease, to);
}

// How many limits of a drag, and of the record, do not hold.
int broken(SimulatedScope& scope)
{
    int count = 0;
    const auto expect = [&](bool holds, const char* what) {
        if (!holds)
            std::fprintf(stderr, "strip chart: not so: %s\n", what);
        count += !holds;
    };
    scope.setZoomIndex(12);
    scope.setOffsetCentisec(1000000);
    drag(scope, 1500, 1490);
    expect(scope.offset() == 1000000 + 10 * 600, "a drag moves by six seconds a pixel at index 12");
    drag(scope, 1700, 200);
    drag(scope, 1700, 200);
    drag(scope, 1700, 200);
    expect(scope.offset() == scope.now(), "a drag past the newest sample stops at it");
    for (int i = 0; i < 5; ++i)
        drag(scope, 200, 1700);
    expect(scope.offset() == 0, "a drag past the oldest sample stops at it");
    scope.setZoomIndex(99);
    expect(scope.zoomIndex() == 12, "index 99 selects index 12");
    const long started = scope.time;
    scope.time += 1;
    scope.timeEvent();
    expect(scope.now() == 0 && scope.offset() == 0, "after eight hours the record begins anew");
    scope.time += 5;
    scope.timeEvent();
    expect(scope.now() == 5 && scope.time == started + 6, "and goes on");
    return count;
}

// At each time scale; with a folder, pictures of three of them.
void paint(Table& table, SimulatedScope& scope, const QString& folder)
{
    QImage screen(scope.size(), QImage::Format_RGB32);
    const double fill = middle([&] { screen.fill(Qt::darkGray); });
    for (int zoom = 0; zoom < int(Oscope::m_zooms.size()); ++zoom) {
        scope.setZoomIndex(zoom);
        scope.setCurrent();
        const double time = middle([&] { scope.render(&screen, QPoint(), QRegion(), {}); });
        const int scale = Oscope::m_zooms[size_t(zoom)];
        table.row("strip chart, paint at " + QByteArray::number(scale) + " cs a pixel", time, "ms",
                  {"a plain fill", fill}, atMost(paintLimitMs));
        if (!folder.isEmpty() && (zoom == 0 || zoom == 4 || zoom == 12))
            scope.grab().save(QStringLiteral("%1/oscope-%2.png").arg(folder).arg(scale), nullptr, 0);
    }
}

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setStyle(new MyWinStyle);
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPointSize(12);
    QApplication::setFont(font);

    SimulatedScope scope;
    scope.resize(1920, 1000);
    scope.show();
    QApplication::processEvents();
    const double before = memoryMb();
    addAll(scope);
    const double own = double(curves) * Oscope::capacity * sizeof(float) / (1024 * 1024);
    const double taken = memoryMb() - before;
    Table table;
    table.row("strip chart, memory beyond the samples", taken - own, "MB", {"16 x 2,880,000 samples", own},
              atMost(memoryLimitMb));

    scope.start();
    const double samples = double(Oscope::capacity) * curves;
    const double used = record(scope) * 1000 / samples;
    table.row("strip chart, a sample of a curve", used, "us", {"a bare store", bareStores() * 1000 / samples},
              atMost(sampleLimitUs));
    paint(table, scope, argc > 1 ? QString::fromLocal8Bit(argv[1]) : QString());
    table.row("strip chart, limits of a drag and a record broken", broken(scope), "", {"of", 6}, atMost(0));
    return table.result();
}
