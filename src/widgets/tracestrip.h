#pragma once

#include <QImage>
#include <QPoint>
#include <QVector>

#include <vector>

class QPainter;

// A strip of a picture with curves that have one height for each column. It lies on its side: a column of the
// screen is a line in memory, so that the steep parts of a noisy curve, which make up most of its pixels, are
// straight copies. A plot is painted strip by strip, each small enough to stay close to the processor.
class TraceStrip
{
public:
    static constexpr int columns = 64;

    TraceStrip() = default;
    TraceStrip(const TraceStrip&) = delete; // its pixels are written past the picture's own sharing
    TraceStrip& operator=(const TraceStrip&) = delete;

    void resize(int rows); // the content is undefined until each column has its ground
    int rows() const { return m_picture.width(); }

    // What stands behind the curves in this column of the strip: `rows()` opaque colours from the top.
    void setGround(int column, const QVector<QRgb>& colours);

    // The part of a curve that falls into the strip, two pixels wide with soft edges. `heights`: px from the
    // top, one for each column of the plot; what is outside is cut off, one that is not a number leaves a
    // gap. `first`: the column of the plot with which the strip begins.
    void drawCurve(const std::vector<float>& heights, int first, QRgb colour);

    // A bar in one column of the strip, `reach` px up and down from a height.
    void drawBar(int column, float height, float reach, QRgb colour);

    void paint(QPainter& painter, QPoint topLeft, int width) const; // the first `width` columns

private:
    QRgb* line(int column) { return m_pixels + (columns - 1 - column) * m_stride; }

    QImage m_picture; // its line 0 is the strip's last column
    QRgb* m_pixels = nullptr;
    std::ptrdiff_t m_stride = 0;
    std::vector<QRgb> m_run; // of one colour, as long as a column
};
