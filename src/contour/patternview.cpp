#include "patternview.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace {

constexpr int side = 14;            // px beside the seam
constexpr int head = 26;            // px above the current, for the numbers
constexpr int foot = 26;            // px below the seam, for the lengths
constexpr double sameLength = 0.01; // mm, less shows in no row
constexpr int mostMarks = 50;       // of passes, more would run together
const QColor ink(0x1c, 0x24, 0x3c);
const QColor beamColour(0x00, 0xb4, 0xd8);
const QColor fault(0xd0, 0x10, 0x20);

} // namespace

PatternView::PatternView(QWidget* parent)
    : QWidget(parent)
{}

void PatternView::setPattern(const QVector<Beam>& beams, double length, int passes, bool possible,
                             const QString& warning)
{
    m_beams = beams;
    m_length = length;
    m_passes = passes;
    m_possible = possible;
    m_warning = warning;
    update();
}

void PatternView::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(0x3c, 0x4a, 0x6b), 2));
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 4, 4);

    m_end = m_length;
    for (const Beam& beam : qAsConst(m_beams))
        m_end = std::max(m_end, beam.end());
    if (!(m_end > 0) || !std::isfinite(m_end))
        return;
    QFont font = painter.font();
    font.setPointSize(12);
    painter.setFont(font);
    paintBeams(&painter);
    paintSeam(&painter);
    if (!m_warning.isEmpty())
        paintWarning(&painter);
}

double PatternView::x(double mm) const
{
    return side + mm / m_end * (width() - 2 * side);
}

void PatternView::paintBeams(QPainter* painter) const
{
    const double base = height() - foot;
    const double narrowest = painter->fontMetrics().horizontalAdvance(QString::number(m_beams.size())) + 6;
    const bool numbered = m_beams.size() > 1 && (x(m_end) - x(0)) / m_beams.size() >= narrowest;
    for (int i = 0; i < m_beams.size(); ++i) {
        const Beam& beam = m_beams[i];
        const bool good = m_possible && beam.peak >= 0 && beam.end() <= m_length * m_passes + sameLength;
        const double rise = beam.start + beam.ascend, fall = rise + std::max(0.0, beam.peak);
        QPainterPath path(QPointF(x(beam.start), base));
        path.lineTo(x(rise), head);
        path.lineTo(x(fall), head);
        path.lineTo(x(fall + beam.descend), base);
        painter->setPen(QPen(good ? ink : fault, 1.5));
        painter->setBrush(QBrush(good ? beamColour : fault, good ? Qt::SolidPattern : Qt::BDiagPattern));
        painter->drawPath(path);
        if (numbered) // its turn, in the middle above it
            painter->drawText(QRectF(x((beam.start + beam.end()) / 2) - 30, 2, 60, head - 4), Qt::AlignCenter,
                              QString::number(i + 1));
    }
}

// The passes along the seam, and its length.
void PatternView::paintSeam(QPainter* painter) const
{
    const double base = height() - foot;
    painter->setPen(QPen(ink, 2));
    painter->drawLine(QPointF(side, base), QPointF(x(m_end), base));
    const double begun = m_length > 0 ? (m_end + sameLength) / m_length : 0;
    const int marks = int(std::min({begun, double(m_passes), double(mostMarks)}));
    for (int pass = 0; pass <= marks; ++pass) {
        const double mark = x(pass * m_length);
        painter->drawLine(QPointF(mark, base - 4), QPointF(mark, base + 6));
    }
    const QRectF texts(side + 6, base + 2, width() - 2 * side - 12, foot - 4);
    painter->drawText(texts, Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("0"));
    const QString length = QString::number(m_length, 'f', 1) + QStringLiteral(" мм");
    const double room = painter->fontMetrics().horizontalAdvance(length) + 8;
    painter->drawText(QRectF(std::max(side + 24.0, x(m_length) - room - 4), base + 2, room, foot - 4),
                      Qt::AlignRight | Qt::AlignVCenter, length);
}

void PatternView::paintWarning(QPainter* painter) const
{
    QFont font = painter->font();
    font.setBold(true);
    painter->setFont(font);
    const QRect place(side, head + 4, width() - 2 * side, height() - head - foot - 8);
    painter->fillRect(place, QColor(255, 255, 255, 230));
    painter->setPen(fault);
    painter->drawText(place, Qt::AlignCenter | Qt::TextWordWrap, m_warning);
}
