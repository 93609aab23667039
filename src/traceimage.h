#pragma once

#include <QImage>
#include <QPoint>
#include <QVector>

#include <vector>

class QPainter;

// A picture for curves that have one height for each column. It lies on its side: a column of the screen is a
// line in memory, so that the steep parts of a noisy curve, which make up most of its pixels, are straight
// copies. Sixteen curves of pure noise cost no more than a few milliseconds this way.
class TraceImage
{
public:
    void resize(int columns, int rows); // the content is undefined until each column has its ground
    int columns() const { return m_picture.height(); }
    int rows() const { return m_picture.width(); }

    // What stands behind the curves in this column: opaque colours, `rows()` of them from the top.
    void setGround(int column, const QVector<QRgb>& colours);

    // A curve two pixels wide with soft edges, from column 0 on. `heights`: px from the top, one for each
    // column; one outside the picture is cut off, one that is not a number leaves a gap.
    void drawCurve(const std::vector<float>& heights, QRgb colour);

    // A bar in one column, `reach` px up and down from a height.
    void drawBar(int column, float height, float reach, QRgb colour);

    void paint(QPainter& painter, QPoint topLeft) const;

private:
    QRgb* line(int column) { return m_pixels + (columns() - 1 - column) * m_stride; }

    QImage m_picture; // its line 0 is the last column
    QRgb* m_pixels = nullptr;
    std::ptrdiff_t m_stride = 0;
    std::vector<QRgb> m_run; // of one colour, as long as a column
};
