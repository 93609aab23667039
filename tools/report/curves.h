#pragma once

#include "deviations.h"

#include <QWidget>

class QwtPlot;
class QwtPlotCurve;

// What is looked at: runs laid over each other, all from their start.
struct View
{
    QVector<RecordFile> runs;
    bool overPath = false; // otherwise over time; a run without a path is then not drawn
    double percent = 5;    // tolerance of the actual values

    bool hasPath() const; // some run has one
};

struct ChartKind
{
    QString title; // with the unit
    QStringList columns;
    int pair = -1; // index into pairs(): set value and tolerance are shown
    bool logarithmic = false;
};

const QVector<ChartKind>& chartKinds();
QColor runColour(int run);
bool isDrawable(const ChartKind& kind, const View& view); // some run has a value to show

// A chart of all runs, with letters of so many pixels; spans outside the tolerance are red. A curve that is
// to be printed has no more points than paper can show.
QwtPlot* makeChart(const ChartKind& kind, const View& view, int letters, bool printed,
                   QWidget* parent = nullptr);

// The chosen charts one under the other with one common range. A finger moves it, two fingers or the wheel
// zoom it, two clicks show the whole.
class Charts : public QWidget
{
    Q_OBJECT

public:
    explicit Charts(QWidget* parent = nullptr);

    void show(const View& view,
              const QVector<int>& kinds); // indices into chartKinds(); the range is kept if it can be
    void showWhole();
    void showRange(double from, double to); // s or mm
    double from() const { return m_from; }
    double to() const { return m_to; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool touch(class QTouchEvent* event, QWidget* canvas);
    void zoom(double factor, double x, double width); // x: pixel of the canvas that stays where it is
    void move(double pixels, double width);
    void fit(QwtPlot* plot); // values to what is seen of them

    QVector<QwtPlot*> m_plots;    // owned as children
    double m_low = 0, m_high = 1; // of all runs
    double m_from = 0, m_to = 1;
    bool m_overPath = false;
    double m_dragged = -1; // pixel, negative when no finger is down
};
