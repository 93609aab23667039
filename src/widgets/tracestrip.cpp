#include "tracestrip.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

constexpr float halfWidth = 1; // of a curve, px
constexpr float beyond = 8;    // px outside the picture at which a height is as good as any further one
constexpr quint64 noLowBits = 0xfefefefefefefefeULL;

// `share` 0 to 256 of the colour over what is there.
void blend(QRgb& pixel, QRgb colour, unsigned share)
{
    constexpr quint32 redAndBlue = 0x00ff00ff;
    const quint32 rest = 256 - share;
    const quint32 rb = ((pixel & redAndBlue) * rest + (colour & redAndBlue) * share) >> 8;
    const quint32 ag = ((pixel >> 8) & redAndBlue) * rest + ((colour >> 8) & redAndBlue) * share;
    pixel = (rb & redAndBlue) | (ag & ~redAndBlue);
}

// Half of the colour over each of the pixels, two at a time.
void blendHalf(QRgb* pixels, int count, QRgb colour)
{
    const quint64 half = (((quint64(colour) << 32) | colour) & noLowBits) >> 1;
    int i = 0;
    for (; i + 1 < count; i += 2) {
        quint64 pair;
        std::memcpy(&pair, pixels + i, sizeof pair);
        pair = ((pair & noLowBits) >> 1) + half;
        std::memcpy(pixels + i, &pair, sizeof pair);
    }
    if (i < count)
        blend(pixels[i], colour, 128);
}

// One column of the picture and the run of a colour that fills it.
struct Column
{
    QRgb* pixels;
    int rows;
    const QRgb* run;

    // The colour from `top` to `bottom`, the ends by the part of the pixel that they cover.
    void fill(float top, float bottom) const
    {
        top = std::max(top, 0.0F);
        bottom = std::min(bottom, float(rows));
        if (top >= bottom)
            return;
        const int first = int(top);
        const int last = int(bottom);
        if (first == last) {
            blend(pixels[first], *run, unsigned((bottom - top) * 256));
            return;
        }
        blend(pixels[first], *run, unsigned((float(first + 1) - top) * 256));
        std::memcpy(pixels + first + 1, run, size_t(last - first - 1) * sizeof(QRgb));
        if (last < rows)
            blend(pixels[last], *run, unsigned((bottom - float(last)) * 256));
    }

    // Half of the colour over the whole pixels between.
    void veil(float top, float bottom) const
    {
        const int first = int(std::max(top, 0.0F) + 1);
        const int end = int(std::min(bottom, float(rows)));
        if (first < end)
            blendHalf(pixels + first, end - first, *run);
    }
};

} // namespace

void TraceStrip::resize(int rows)
{
    m_picture = QImage(rows, columns, QImage::Format_RGB32);
    m_pixels = reinterpret_cast<QRgb*>(m_picture.bits());
    m_stride = m_picture.bytesPerLine() / std::ptrdiff_t(sizeof(QRgb));
    m_run.resize(size_t(rows));
}

void TraceStrip::setGround(int column, const QVector<QRgb>& colours)
{
    std::memcpy(line(column), colours.constData(), size_t(rows()) * sizeof(QRgb));
}

void TraceStrip::drawCurve(const std::vector<float>& heights, int first, QRgb colour)
{
    const int count = int(heights.size());
    const int end = std::min(count, first + columns);
    if (first >= end)
        return;
    std::fill(m_run.begin(), m_run.end(), colour);
    const float lowest = float(rows()) + beyond;
    const auto height = [&](int x) { return std::min(std::max(heights[size_t(x)], -beyond), lowest); };
    const auto orElse = [](float value, float other) { return std::isnan(value) ? other : value; };

    float here = height(first);
    float before = first > 0 ? height(first - 1) : here;
    for (int x = first; x < end; ++x) {
        const float next = x + 1 < count ? height(x + 1) : here;
        if (!std::isnan(here)) {
            const float left = orElse(before, here);
            const float right = orElse(next, here);
            // The column itself has the curve from halfway to its neighbours; the width of the pen brings
            // half a column more of it on either side.
            const float top = std::min(left, right);
            const float bottom = std::max(left, right);
            const float innerTop = std::min(here, (here + top) / 2) - halfWidth;
            const float innerBottom = std::max(here, (here + bottom) / 2) + halfWidth;
            const Column column{line(x - first), rows(), m_run.data()};
            column.veil(top - halfWidth, innerTop);
            column.fill(innerTop, innerBottom);
            column.veil(innerBottom, bottom + halfWidth);
        }
        before = here;
        here = next;
    }
}

void TraceStrip::drawBar(int x, float height, float reach, QRgb colour)
{
    if (x < 0 || x >= columns || !std::isfinite(height))
        return;
    std::fill(m_run.begin(), m_run.end(), colour);
    Column{line(x), rows(), m_run.data()}.fill(height - reach, height + reach);
}

void TraceStrip::paint(QPainter& painter, QPoint topLeft, int width) const
{
    painter.save();
    painter.translate(topLeft.x() + width, topLeft.y());
    painter.rotate(90);
    painter.drawImage(QPoint(), m_picture, QRect(0, columns - width, rows(), width));
    painter.restore();
}
