#include "oscope.h"

#include <QDateTime>
#include <QPainter>
#include <QPushButton>

#include <algorithm>
#include <cmath>

namespace {

constexpr int gridStep = 100;   // px between two lines of time
constexpr int axisStep = 8;     // px between two value axes
constexpr int tick = 6;         // px
constexpr float markReach = 2;  // px, of the bar at the end of a curve
constexpr int legendInset = 14; // px from the plot

const QColor console(46, 52, 64);
const QColor ground(20, 23, 29);
const QColor faint(62, 70, 86); // lines of value
const QColor grid(150, 150, 150);

QString clockText(long centisec)
{
    return QDateTime::fromMSecsSinceEpoch(qint64(centisec) * 10).toString(QStringLiteral("hh:mm:ss"));
}

// Decimals with which all multiples of a step are told apart.
int decimalsFor(double step)
{
    for (int decimals = 0; decimals < 4; ++decimals) {
        const double units = step * std::pow(10, decimals);
        if (std::abs(units - std::round(units)) < 1e-4 * units)
            return decimals;
    }
    return 4;
}

// Whether numbers up to this one are easier to read with an exponent.
bool needsExponent(double max)
{
    return !(std::abs(max) >= 0.01 && std::abs(max) < 100000);
}

// A value of an axis that has this step between its ticks.
QString tickText(double value, double max, double step)
{
    if (value == 0)
        return QStringLiteral("0");
    return needsExponent(max) ? QString::number(value, 'E', 1)
                              : QString::number(value, 'f', decimalsFor(std::abs(step)));
}

// A sample, told as finely as the plot shows it.
QString sampleText(double value, double scale)
{
    if (needsExponent(scale))
        return QString::number(value, 'E', 2);
    return QString::number(value, 'f', std::max(0, int(std::ceil(-std::log10(std::abs(scale) / 2000)))));
}

} // namespace

void Oscope::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    for (const QRect& part : QRegion(rect()) - plot()) // the plot has a ground of its own
        painter.fillRect(part, console);
    if (m_width > 0 && m_height > 0) {
        const QVector<int> ordinates = visibleOrdinates();
        const int steps = divisions(ordinates.size());
        paintPlot(painter, steps);
        paintTimes(painter);
        paintOrdinates(painter, ordinates, steps);
        paintOrdinateNames(painter, ordinates);
        paintLegend(painter);
        painter.setPen(Qt::black);
        painter.drawRect(m_leftMargin - 1, -1, m_width + 2, m_height + 1);
    }
    m_pbCurrent->setChecked(following());
    const QString time = clockText(presentCentisec());
    if (m_pbCurrent->text() != time)
        m_pbCurrent->setText(time);
}

// The grid and the curves upon it.
void Oscope::paintPlot(QPainter& painter, int steps)
{
    if (m_strip.rows() != m_height)
        m_strip.resize(m_height);
    std::vector<std::pair<QRgb, std::vector<float>>> curves;
    for (const auto& [name, curve] : m_curves) {
        if (!curve.hidden)
            curves.emplace_back(curve.colour.rgb(), heightsOf(curve));
    }

    QVector<QRgb> plain(m_height, ground.rgb());
    plain[0] = QColor(Qt::black).rgb(); // the frame's upper side: a curve at full scale stands upon it
    for (int i = 1; i < steps; ++i)
        plain[m_height * i / steps] = faint.rgb();
    QVector<QRgb> line = plain;
    for (int y = 1; y < m_height; ++y) {
        if (y % 4 < 2)
            line[y] = grid.rgb();
    }
    const long step = long(gridStep) * zoom();
    const int firstLine = int((step - m_offset % step) / zoom());
    for (int first = 0; first <= m_width; first += TraceStrip::columns) {
        const int width = std::min(TraceStrip::columns, m_width + 1 - first);
        for (int x = 0; x < width; ++x) {
            const int beyond = first + x - firstLine;
            m_strip.setGround(x, beyond >= 0 && beyond % gridStep == 0 ? line : plain);
        }
        for (const auto& [colour, heights] : curves)
            paintCurve(first, heights, colour);
        m_strip.paint(painter, plot().topLeft() + QPoint(first, 0), width);
    }
}

std::vector<float> Oscope::heightsOf(const Curve& curve) const
{
    const long columns = std::min(long(m_width) + 1, (m_now - m_offset + zoom() - 1) / zoom());
    std::vector<float> heights(size_t(std::max(0L, columns)));
    const float* const samples = curve.samples.data();
    const float height = float(m_height);
    long number = m_offset;
    for (float& y : heights) {
        y = (1 - samples[number % capacity] / curve.scale) * height;
        number += zoom();
    }
    return heights;
}

// The part of a curve in the present strip, and its mark at the newest sample.
void Oscope::paintCurve(int firstColumn, const std::vector<float>& heights, QRgb colour)
{
    m_strip.drawCurve(heights, firstColumn, colour);
    if (!heights.empty())
        m_strip.drawBar(int(heights.size()) - 1 - firstColumn, heights.back(), markReach, colour);
}

void Oscope::paintTimes(QPainter& painter) const
{
    painter.setPen(Qt::white);
    const long step = long(gridStep) * zoom();
    const int line = fontMetrics().height();
    for (long sample = m_offset + step - m_offset % step; sample <= m_offset + long(m_width) * zoom();
         sample += step) {
        const int x = m_leftMargin + int((sample - m_offset) / zoom());
        painter.drawText(QRect(x - gridStep / 2, m_height + 3, gridStep, line), Qt::AlignCenter,
                         clockText(m_origin + sample));
    }
    // What a step of the grid is worth, beside the zoom bar.
    const QRect strip(m_leftMargin + m_width / 4 + legendInset, m_height + line, m_width / 2,
                      m_leftMargin - line);
    const int seconds = zoom() * gridStep / 100;
    painter.drawText(strip, Qt::AlignVCenter,
                     seconds < 120 ? QStringLiteral("клетка %1 с").arg(seconds)
                                   : QStringLiteral("клетка %1 мин").arg(seconds / 60));
}

QVector<int> Oscope::visibleOrdinates() const
{
    QVector<int> visible;
    for (int i = 0; i < m_ordinates.size(); ++i) {
        if (std::any_of(m_curves.cbegin(), m_curves.cend(), [i](const auto& entry) {
                return entry.second.ordinate == i && !entry.second.hidden;
            }))
            visible.append(i);
    }
    return visible;
}

// That of its first curve, which may be hidden.
QColor Oscope::colourOf(int ordinate) const
{
    const auto first = std::find_if(m_curves.cbegin(), m_curves.cend(), [ordinate](const auto& entry) {
        return entry.second.ordinate == ordinate;
    });
    return first != m_curves.cend() ? first->second.colour : grid;
}

int Oscope::divisions(int ordinates) const
{
    const int stack = (ordinates + 1) * fontMetrics().height();
    for (const int steps : {10, 5, 2}) {
        if (steps * stack <= m_height)
            return steps;
    }
    return 1;
}

// The axes stand side by side at the plot's left edge and share their ticks; the values of a tick stand one
// above the other, each in the colour of its axis.
void Oscope::paintOrdinates(QPainter& painter, const QVector<int>& ordinates, int steps) const
{
    const int line = fontMetrics().height();
    const int stack = ordinates.size() * line;
    const int right = m_leftMargin - ordinates.size() * axisStep - tick;
    for (int i = 0; i < ordinates.size(); ++i) {
        const double max = double(m_ordinates[ordinates[i]].max);
        const QColor colour = colourOf(ordinates[i]);
        const int x = m_leftMargin - 2 - i * axisStep;
        painter.setPen(grid);
        painter.drawLine(x, 0, x, m_height - 1);
        painter.setPen(colour);
        for (int k = 0; k <= steps; ++k) {
            const int y = std::min(m_height * (steps - k) / steps, m_height - 1);
            painter.fillRect(x - tick, y - 1, tick, 2, colour);
            const int top = std::clamp(y - stack / 2, 0, std::max(0, m_height - stack));
            painter.drawText(QRect(0, top + i * line, right, line), Qt::AlignRight | Qt::AlignVCenter,
                             tickText(max * k / steps, max, max / steps));
        }
    }
}

// From the bottom up along the left edge, turned.
void Oscope::paintOrdinateNames(QPainter& painter, const QVector<int>& ordinates) const
{
    const int line = fontMetrics().height();
    painter.save();
    painter.rotate(-90);
    int at = -m_height;
    for (const int ordinate : ordinates) {
        const QString& name = m_ordinates[ordinate].name;
        const int length = fontMetrics().horizontalAdvance(name);
        painter.setPen(colourOf(ordinate));
        painter.drawText(QRect(at, 2, length, line), Qt::AlignCenter, name);
        at += length + line;
    }
    painter.restore();
}

// The visible curves by axis, each with its value at the right end of what is shown.
void Oscope::paintLegend(QPainter& painter) const
{
    const int line = fontMetrics().height();
    const int left = m_leftMargin + m_width + legendInset;
    const int wide = width() - left - tick;
    const long shown = lastShown();
    QFont bold = font();
    bold.setBold(true);
    QFont small = font();
    small.setPointSizeF(small.pointSizeF() * 0.8);
    int y = 0;
    const auto put = [&](const QString& text, const QFont& font, const QColor& colour) {
        painter.setFont(font);
        painter.setPen(colour);
        painter.drawText(QRect(left, y, wide, line), Qt::AlignVCenter,
                         painter.fontMetrics().elidedText(text, Qt::ElideRight, wide));
        y += line;
    };
    for (int ordinate = 0; ordinate <= m_ordinates.size(); ++ordinate) {
        const int group = y;
        for (const auto& [name, curve] : m_curves) {
            const bool stray = curve.ordinate < 0 || curve.ordinate >= m_ordinates.size();
            if (curve.hidden || (stray ? m_ordinates.size() : curve.ordinate) != ordinate)
                continue;
            if (y + 3 * line > m_height)
                break;
            if (y == group && !stray)
                put(m_ordinates[ordinate].name, small, colourOf(ordinate));
            painter.fillRect(left - 8, y + 1, 4, 2 * line - 2, curve.colour);
            put(name, font(), QColor(214, 218, 226));
            put(shown < 0 ? QString()
                          : sampleText(double(curve.samples[size_t(shown % capacity)]), double(curve.scale)),
                bold, curve.colour);
            y += 3;
        }
        if (y != group)
            y += line / 2;
    }
}

long Oscope::lastShown() const
{
    if (m_now <= m_offset)
        return -1;
    const long columns = std::min(long(m_width), (m_now - 1 - m_offset) / zoom());
    return m_offset + columns * zoom();
}
