// A frame of the strip chart beside those of other charts, where they are installed: the same curves, all of
// their points in sight, in a picture of the same size. Processor time of the middle frame.

#include "benchtools.h"
#include "mywinstyle.h"
#include "oscope.h"
#include "table.h"

#ifdef BENCH_QWT
#include <qwt_plot.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>
#endif
#ifdef BENCH_QCUSTOMPLOT
#include <qcustomplot.h>
#endif

#include <QApplication>
#include <QImage>

namespace {

constexpr int curves = 8;
constexpr int points = 60'000; // of a curve, a hundredth of a second apart
constexpr int frames = 31;
constexpr double limit = 0.5; // times the fastest of the others
const QColor colours[curves] = {"#ff5c5c", "#ffb347", "#ffe45c", "#c8ff5c",
                                "#5cff8a", "#5cffe0", "#5cb8ff", "#8f8aff"};

// Of a curve at a point, 0 to 1: a wave with noise on it, as gauges tell it.
double value(int curve, int point)
{
    const quint32 noise = (quint32(point) * 1664525U + quint32(curve) * 1013904223U) * 2654435761U;
    return 0.5 + 0.3 * std::sin(point * 0.0004 * (curve + 1)) + 0.05 * (double(noise >> 8) / (1 << 24) - 0.5);
}

// Processor time, ms. A frame paints all anew into `picture`.
template <class Frame>
double middleFrame(Frame frame)
{
    std::vector<double> all;
    for (int i = 0; i < frames; ++i) {
        const double start = processorSeconds();
        frame();
        all.push_back((processorSeconds() - start) * 1e3);
    }
    return median(all);
}

void paint(QWidget& widget, QImage& picture)
{
    widget.render(&picture, QPoint(), QRegion(), QWidget::DrawChildren);
}

class RecordedScope : public Oscope
{
public:
    RecordedScope()
    {
        addOrdinate(QStringLiteral("Ток, мА"), 1);
        for (int curve = 0; curve < curves; ++curve)
            addCurve(QString::number(curve), 1, colours[curve], 0);
        start();
        QMap<QString, float> values;
        for (int point = 0; point < points; ++point) {
            for (int curve = 0; curve < curves; ++curve)
                values[QString::number(curve)] = float(value(curve, point));
            setValues(values);
            ++m_time;
            timeEvent();
        }
    }

protected:
    long presentCentisec() const override { return m_time; }

private:
    long m_time = 1;
};

// The narrowest picture that shows all points at one of the scope's time scales.
constexpr int zoomIndex = 7; // 30 points a pixel
constexpr QSize plotSize(points / 30, 900);

double scopeFrame(QSize& size)
{
    RecordedScope scope;
    scope.resize(plotSize);
    scope.show();
    scope.setZoomIndex(zoomIndex);
    scope.resize(scope.size() + plotSize - scope.plot().size()); // the axes stand beside the plot
    scope.setOffsetCentisec(0);
    size = scope.size();
    QImage picture(size, QImage::Format_RGB32);
    return middleFrame([&] { paint(scope, picture); });
}

#ifdef BENCH_QWT
double qwtFrame(QSize size)
{
    QwtPlot plot;
    plot.resize(size);
    plot.setAutoReplot(false);
    qobject_cast<QwtPlotCanvas*>(plot.canvas())->setPaintAttribute(QwtPlotCanvas::BackingStore, false);
    QVector<double> x(points);
    QVector<double> y(points);
    for (int curve = 0; curve < curves; ++curve) {
        for (int point = 0; point < points; ++point) {
            x[point] = point / 100.0;
            y[point] = value(curve, point);
        }
        auto* line = new QwtPlotCurve; // the plot's
        line->setPen(colours[curve]);
        line->setPaintAttribute(QwtPlotCurve::FilterPoints);
        line->setSamples(x, y);
        line->attach(&plot);
    }
    plot.show();
    QImage picture(size, QImage::Format_RGB32);
    return middleFrame([&] {
        plot.replot();
        paint(plot, picture);
    });
}
#endif

#ifdef BENCH_QCUSTOMPLOT
double customPlotFrame(QSize size)
{
    QCustomPlot plot;
    plot.resize(size);
    plot.setNotAntialiasedElements(QCP::aeAll);
    for (int curve = 0; curve < curves; ++curve) {
        QVector<QCPGraphData> data(points);
        for (int point = 0; point < points; ++point)
            data[point] = {point / 100.0, value(curve, point)};
        QCPGraph* graph = plot.addGraph();
        graph->setPen(colours[curve]);
        graph->data()->set(data, true);
    }
    plot.xAxis->setRange(0, points / 100.0);
    plot.yAxis->setRange(0, 1);
    plot.show();
    QImage picture(size, QImage::Format_RGB32);
    return middleFrame([&] {
        plot.replot(QCustomPlot::rpImmediateRefresh);
        paint(plot, picture);
    });
}
#endif

} // namespace

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setStyle(new MyWinStyle);
    QSize size;
    const double own = scopeFrame(size);
    const QByteArray measure = "strip chart, a frame of 8 x 60,000 points";
    Table table;
    std::vector<Yardstick> others;
#ifdef BENCH_QWT
    others.push_back({"Qwt", qwtFrame(size)});
#endif
#ifdef BENCH_QCUSTOMPLOT
    others.push_back({"QCustomPlot", customPlotFrame(size)});
#endif
    if (others.empty())
        table.missing(measure, "no other chart is installed");
    for (const Yardstick& other : others)
        table.row(measure, own, "ms", other, atMostTimes(limit));
    return table.result();
}
