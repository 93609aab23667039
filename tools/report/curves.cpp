#include "curves.h"

#include <QEvent>
#include <QMouseEvent>
#include <QTouchEvent>
#include <QVBoxLayout>

#include <qwt_curve_fitter.h>
#include <qwt_legend.h>
#include <qwt_plot.h>
#include <qwt_plot_canvas.h>
#include <qwt_plot_curve.h>
#include <qwt_plot_grid.h>
#include <qwt_plot_intervalcurve.h>
#include <qwt_plot_zoneitem.h>
#include <qwt_scale_draw.h>
#include <qwt_scale_engine.h>

#include <cmath>
#include <limits>

namespace {

constexpr int mostPieces = 200;  // of a curve with holes; with more of them it is drawn through
constexpr double nearest = 1e-3; // a thousandth of the whole is the closest view

const QColor outside(200, 0, 0);
const QColor setColour(60, 60, 60);
const QString path = QStringLiteral("Путь");

const QVector<double>& abscissa(const RecordFile& run, const View& view)
{
    return view.overPath ? *run.column(path) : run.columns[0];
}

struct Drawer
{
    QwtPlot* plot;
    const View& view;
    bool logarithmic;
    bool printed;

    // A hole ends a piece; the legend tells of the curve once.
    void curve(const RecordFile& run, const QString& column, const QPen& pen, const QString& title) const
    {
        const QVector<double>& x = abscissa(run, view);
        const QVector<double>& y = *run.column(column);
        QVector<QPointF> points;
        int pieces = 0;
        for (int i = 0; i <= run.samples(); ++i) {
            const bool seen =
                i < run.samples() && std::isfinite(x[i]) && std::isfinite(y[i]) && (!logarithmic || y[i] > 0);
            if (seen)
                points.append({x[i], y[i]});
            else if (!points.isEmpty() && (pieces < mostPieces || i == run.samples()))
                piece(&points, pen, title, pieces++ == 0);
        }
    }
    void piece(QVector<QPointF>* points, const QPen& pen, const QString& title, bool named) const
    {
        auto* curve = new QwtPlotCurve(title);
        curve->setSamples(*points);
        if (printed) { // no point that paper cannot show
            curve->setCurveFitter(new QwtWeedingCurveFitter(0.5));
            curve->setCurveAttribute(QwtPlotCurve::Fitted);
        }
        curve->setPen(pen);
        curve->setPaintAttribute(QwtPlotCurve::FilterPoints, !printed);
        curve->setItemAttribute(QwtPlotItem::Legend, named);
        curve->setRenderHint(QwtPlotItem::RenderAntialiased, true);
        curve->attach(plot);
        points->clear();
    }
    void band(const RecordFile& run, const Pair& pair) const
    {
        const QVector<double>& x = abscissa(run, view);
        QVector<QwtIntervalSample> samples;
        for (int i = 0; i < run.samples(); ++i) {
            const double set = (*run.column(pair.set))[i];
            const double free = allowed(pair, set, view.percent);
            if (std::isfinite(set) && std::isfinite(x[i]))
                samples.append({x[i], set - free, set + free});
        }
        auto* band = new QwtPlotIntervalCurve(QStringLiteral("Допуск ±%1 %").arg(view.percent));
        band->setSamples(samples);
        band->setPen(QPen(Qt::NoPen));
        band->setBrush(QColor(0, 150, 0, 50));
        band->attach(plot);
    }
    // Also where the path stands a line is seen.
    void zones(const RecordFile& run, int pair) const
    {
        const QVector<double>& x = abscissa(run, view);
        for (const Deviation& span : deviations(run, view.percent)) {
            if (span.pair != pair || !std::isfinite(x[span.first]) || !std::isfinite(x[span.last]))
                continue;
            auto* zone = new QwtPlotZoneItem;
            zone->setOrientation(Qt::Vertical);
            zone->setInterval(x[span.first], x[span.last]);
            zone->setBrush(QColor(outside.red(), 0, 0, 60));
            zone->setPen(outside, 1);
            zone->attach(plot);
        }
    }
    void runs(const ChartKind& kind) const
    {
        static const Qt::PenStyle dashes[] = {Qt::SolidLine, Qt::DashLine, Qt::DotLine, Qt::DashDotLine,
                                              Qt::DashDotDotLine};
        const bool one = view.runs.size() == 1;
        for (int r = 0; r < view.runs.size(); ++r) {
            const RecordFile& run = view.runs[r];
            if (view.overPath && !run.hasPath())
                continue;
            if (kind.pair >= 0 && run.column(pairs()[kind.pair].set)) {
                if (one)
                    band(run, pairs()[kind.pair]);
                zones(run, kind.pair);
            }
            for (int c = 0; c < kind.columns.size(); ++c) {
                if (!run.column(kind.columns[c]))
                    continue;
                const bool set = kind.pair >= 0 && c == 0;
                const QColor colour = !one ? runColour(r) : set ? setColour : runColour(c);
                const Qt::PenStyle dash = set   ? Qt::DashLine
                                          : one ? Qt::SolidLine
                                                : dashes[kind.pair >= 0 ? 0 : c % 5];
                const QString title =
                    one ? kind.columns[c] : QStringLiteral("%1: %2").arg(r + 1).arg(kind.columns[c]);
                curve(run, kind.columns[c], QPen(colour, set ? 1.5 : 2, dash), title);
            }
        }
    }
};

} // namespace

const QVector<ChartKind>& chartKinds()
{
    static const auto list = [](const char* names) {
        return QString::fromUtf8(names).split(QLatin1Char('|'));
    };
    static const QVector<ChartKind> kinds{
        {QStringLiteral("Ток луча, мА"), list("Уст. I луча|I луча"), 0, false},
        {QStringLiteral("Ток фокуса, мА"), list("Уст. I фок.|I фок."), 1, false},
        {QStringLiteral("Оси, мм"), list("LX|LX1|LX2|LY"), -1, false},
        {QStringLiteral("Оси, град"), list("A|B|C|D|U1|U2|V"), -1, false},
        {QStringLiteral("Отклонение, мА"), list("I откл.X|I откл.Y"), -1, false},
        {QStringLiteral("Высокое, кВ"), list("U уск.|U зап."), -1, false},
        {QStringLiteral("Бомбардировка"), list("Ub бомб.|Ib бомб."), -1, false},
        {QStringLiteral("Давление, Па"), list("P пушк.|P кам."), -1, true},
        {QStringLiteral("Развёртка, %"), list("Ампл.X|Ампл.Y|Смещ.X|Смещ.Y"), -1, false},
        {QStringLiteral("Развёртка, прочее"), list("ТР|Тип ТР|Угол|Час-та|Д.пар.|По ч.с."), -1, false},
        {QStringLiteral("Путь, мм"), list("Путь"), -1, false},
    };
    return kinds;
}

QColor runColour(int run)
{
    static const QColor colours[] = {{0, 80, 190},  {230, 130, 0}, {120, 50, 150},
                                     {0, 140, 140}, {130, 90, 40}, {90, 90, 90}};
    return colours[run % 6];
}

bool View::hasPath() const
{
    return std::any_of(runs.begin(), runs.end(), [](const RecordFile& run) { return run.hasPath(); });
}

bool isDrawable(const ChartKind& kind, const View& view)
{
    for (const RecordFile& run : view.runs) {
        for (const QString& name : kind.columns) {
            const QVector<double>* column = run.column(name);
            if (column && (!view.overPath || run.hasPath()) &&
                std::any_of(column->begin(), column->end(),
                            [&](double y) { return kind.logarithmic ? y > 0 : std::isfinite(y); }))
                return true;
        }
    }
    return false;
}

QwtPlot* makeChart(const ChartKind& kind, const View& view, int letters, bool printed, QWidget* parent)
{
    auto* plot = new QwtPlot(parent);
    QFont font = plot->font();
    font.setPixelSize(letters);
    const auto text = [&font](const QString& words) {
        QwtText title(words);
        title.setFont(font);
        return title;
    };
    plot->setCanvasBackground(Qt::white);
    plot->setAxisTitle(QwtPlot::yLeft, text(kind.title));
    plot->setAxisTitle(QwtPlot::xBottom,
                       text(view.overPath ? QStringLiteral("Путь, мм") : QStringLiteral("Время, с")));
    for (const int axis : {QwtPlot::yLeft, QwtPlot::xBottom})
        plot->setAxisFont(axis, font);
    plot->axisScaleDraw(QwtPlot::yLeft)->setMinimumExtent(5 * letters); // all charts begin on one line
    if (kind.logarithmic)
        plot->setAxisScaleEngine(QwtPlot::yLeft, new QwtLogScaleEngine);
    auto* legend = new QwtLegend;
    legend->setFont(font);
    plot->insertLegend(legend, QwtPlot::TopLegend);
    auto* grid = new QwtPlotGrid;
    grid->setPen(QColor(215, 215, 215), 1);
    grid->attach(plot);
    Drawer{plot, view, kind.logarithmic, printed}.runs(kind);
    plot->updateAxes();
    plot->updateLegend();
    return plot;
}

Charts::Charts(QWidget* parent)
    : QWidget(parent)
{
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
}

void Charts::show(const View& view, const QVector<int>& kinds)
{
    qDeleteAll(m_plots);
    m_plots.clear();
    const bool wasWhole = m_from <= m_low && m_to >= m_high;
    m_low = std::numeric_limits<double>::max();
    m_high = std::numeric_limits<double>::lowest();
    for (const RecordFile& run : view.runs) {
        if (view.overPath && !run.hasPath())
            continue;
        for (const double x : abscissa(run, view)) {
            m_low = std::isfinite(x) ? qMin(m_low, x) : m_low;
            m_high = std::isfinite(x) ? qMax(m_high, x) : m_high;
        }
    }
    if (!(m_low < m_high)) {
        m_low = m_low <= m_high ? m_low : 0;
        m_high = m_low + 1; // a single sample
    }
    for (const int kind : kinds) {
        if (!isDrawable(chartKinds()[kind], view))
            continue;
        QwtPlot* plot = makeChart(chartKinds()[kind], view, 16, false, this);
        plot->setMinimumSize(200, 150); // many of them share the height
        plot->canvas()->setAttribute(Qt::WA_AcceptTouchEvents);
        plot->canvas()->installEventFilter(this);
        if (!m_plots.isEmpty())
            m_plots.last()->setAxisTitle(QwtPlot::xBottom, QString()); // the lowest tells it for all
        static_cast<QVBoxLayout*>(layout())->addWidget(plot, 1);
        m_plots << plot;
    }
    const bool keep = !wasWhole && m_overPath == view.overPath;
    m_overPath = view.overPath;
    keep ? showRange(m_from, m_to) : showWhole();
}

void Charts::showWhole()
{
    showRange(m_low, m_high);
}

void Charts::showRange(double from, double to)
{
    const double all = m_high - m_low;
    const double width = qBound(all * nearest, to - from, all);
    m_from = qBound(m_low, (from + to - width) / 2, m_high - width);
    m_to = m_from + width;
    for (QwtPlot* plot : qAsConst(m_plots)) {
        plot->setAxisScale(QwtPlot::xBottom, m_from, m_to);
        fit(plot);
        plot->replot();
    }
}

void Charts::fit(QwtPlot* plot)
{
    double least = std::numeric_limits<double>::max();
    double most = std::numeric_limits<double>::lowest();
    for (const QwtPlotItem* item : plot->itemList(QwtPlotItem::Rtti_PlotCurve)) {
        const auto* curve = static_cast<const QwtPlotCurve*>(item);
        for (size_t i = 0; i < curve->dataSize(); ++i) {
            const QPointF point = curve->sample(int(i));
            if (point.x() < m_from || point.x() > m_to)
                continue;
            least = qMin(least, point.y());
            most = qMax(most, point.y());
        }
    }
    if (least > most)
        return; // nothing is seen: the scale stays
    const bool logarithmic = dynamic_cast<const QwtLogScaleEngine*>(plot->axisScaleEngine(QwtPlot::yLeft));
    const double margin = qMax(0.05 * (most - least), 0.02 * std::abs(most) + 0.05);
    if (logarithmic)
        plot->setAxisScale(QwtPlot::yLeft, least / 1.5, most * 1.5);
    else
        plot->setAxisScale(QwtPlot::yLeft, least - margin, most + margin);
}

void Charts::zoom(double factor, double x, double width)
{
    const double at = m_from + (m_to - m_from) * x / width;
    showRange(at - (at - m_from) * factor, at + (m_to - at) * factor);
}

void Charts::move(double pixels, double width)
{
    const double by = (m_to - m_from) * pixels / width;
    showRange(m_from - by, m_to - by);
}

bool Charts::eventFilter(QObject* watched, QEvent* event)
{
    auto* canvas = static_cast<QWidget*>(watched);
    const double width = qMax(1, canvas->width());
    switch (event->type()) {
    case QEvent::Wheel: {
        auto* wheel = static_cast<QWheelEvent*>(event);
        zoom(std::pow(0.8, wheel->angleDelta().y() / 120.0), wheel->position().x(), width);
        return true;
    }
    case QEvent::MouseButtonDblClick:
        showWhole();
        return true;
    case QEvent::MouseButtonPress:
        m_dragged = static_cast<QMouseEvent*>(event)->x();
        return true;
    case QEvent::MouseMove:
        if (m_dragged >= 0) {
            const double x = static_cast<QMouseEvent*>(event)->x();
            move(x - m_dragged, width);
            m_dragged = x;
        }
        return true;
    case QEvent::MouseButtonRelease:
        m_dragged = -1;
        return true;
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
        return touch(static_cast<QTouchEvent*>(event), canvas);
    default:
        return QWidget::eventFilter(watched, event);
    }
}

// What lies under the fingers stays under them.
bool Charts::touch(QTouchEvent* event, QWidget* canvas)
{
    const double width = qMax(1, canvas->width());
    const QList<QTouchEvent::TouchPoint> points = event->touchPoints();
    event->accept();
    if (event->type() != QEvent::TouchUpdate || points.isEmpty())
        return true;
    if (points.size() == 1) {
        move(points[0].pos().x() - points[0].lastPos().x(), width);
        return true;
    }
    const double before = std::abs(points[0].lastPos().x() - points[1].lastPos().x());
    const double now = std::abs(points[0].pos().x() - points[1].pos().x());
    const double middle = (points[0].pos().x() + points[1].pos().x()) / 2;
    move(middle - (points[0].lastPos().x() + points[1].lastPos().x()) / 2, width);
    if (before > 1 && now > 1)
        zoom(before / now, middle, width);
    return true;
}
