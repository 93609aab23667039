#pragma once

#include "tracestrip.h"

#include <QColor>
#include <QMap>
#include <QTimer>
#include <QVector>
#include <QWidget>

#include <array>
#include <map>
#include <vector>

class QPushButton;
class QScrollBar;

// A strip chart: samples named values a hundred times a second, keeps eight hours of them, and draws any part
// of that history at one of thirteen time scales. The owner gives it curves and value axes once, then keeps
// it supplied with current values. Nothing is sampled before `start`. Times are in centiseconds.
//
// The view follows the present for as long as its right edge has not been moved away from it. After eight
// hours the history is dropped and recording begins anew.
class Oscope : public QWidget
{
    Q_OBJECT

public:
    static constexpr int capacity = 2880000; // samples of a curve, eight hours
    // Centiseconds that one pixel covers, by zoom index.
    static constexpr std::array<int, 13> m_zooms = {1, 2, 3, 5, 10, 15, 20, 30, 60, 120, 180, 300, 600};

    explicit Oscope(QWidget* parent = nullptr);
    ~Oscope() override;

    // Adds a curve; 11520000 bytes from here on. `scale`: the value that reaches the top of the plot.
    // `ordinate`: index of its value axis, in the order in which these are added. A name that is there
    // already keeps its history and takes the new looks.
    void addCurve(const QString& name, float scale, QColor colour, int ordinate);
    // Adds a value axis that ends at `max`. It stands as long as one of its curves is visible.
    void addOrdinate(const QString& name, float max);

    using QWidget::setVisible;
    void setVisible(QString name, bool on); // a hidden curve is recorded all the same

    // The values that count from now on, by curve. What is missing counts as 0.
    void setValues(const QMap<QString, float>& values);

    void start(); // empties the record and begins a new one

    void setOffsetCentisec(long t); // sample at the left edge; kept within the record
    void setZoomIndex(int i);       // kept within the table
    void setCurrent();              // the present at the right edge

    long now() const { return m_now; } // samples taken since the start
    long offset() const { return m_offset; }
    int zoomIndex() const { return m_zoomIndex; }
    QRect plot() const;                                   // px, of the widget
    float sample(const QString& name, long number) const; // 0 for what was not recorded

public slots:
    void timeEvent(); // takes the samples that are due
    void pbCurrentClicked(bool checked);
    void m_scrollZoomValueChanged(int value);

protected:
    virtual long presentCentisec() const; // since the epoch

    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    struct Curve
    {
        float scale;
        QColor colour;
        int ordinate;
        bool hidden;
        std::vector<float> samples; // a ring, by sample number
    };
    struct Ordinate
    {
        QString name;
        float max;
    };
    int zoom() const { return m_zooms[size_t(m_zoomIndex)]; }
    void place();
    bool following() const;
    void recordUpTo(long wanted);

    QVector<int> visibleOrdinates() const;
    QColor colourOf(int ordinate) const;
    int divisions(int ordinates) const; // of the value axes
    void paintPlot(QPainter& painter, int divisions);
    std::vector<float> heightsOf(const Curve& curve) const; // px from the top, for each column that has one
    void paintCurve(int firstColumn, const std::vector<float>& heights, QRgb colour);
    void paintTimes(QPainter& painter) const;
    void paintOrdinates(QPainter& painter, const QVector<int>& ordinates, int divisions) const;
    void paintOrdinateNames(QPainter& painter, const QVector<int>& ordinates) const;
    void paintLegend(QPainter& painter) const;
    long lastShown() const; // number of the last sample that the plot shows, -1 for none

    std::map<QString, Curve> m_curves;
    QVector<Ordinate> m_ordinates;
    QMap<QString, float> m_values;
    long m_origin = 0; // the time of the first sample
    int m_width = 0;   // of the plot, px
    int m_height = 0;
    int m_leftMargin = 50; // px
    int m_zoomIndex = 4;
    long m_now = 0;
    long m_offset = 0;
    bool m_dragging = false;
    int m_dragStartX = 0;
    long m_dragStartOffset = 0;
    QTimer m_timer;
    QPushButton* m_pbCurrent;
    QScrollBar* m_scrollZoom;

    TraceStrip m_strip; // of the plot, while it is painted
};
