#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

class QWidget;

// Keeps the painting of a window to a share of its thread's time, however often its contents change: both
// vacuum controllers and the motion controller bring new numbers every few milliseconds, and painting numbers
// that nobody can read is most of what they would cost. A change is painted at once as long as what was
// painted lately has cost little; otherwise it waits, never longer than a period. QWidget::repaint() waits as
// well, repaintNow() does not. What a widget holds, and grab(), are not held up. Owned by the window.
class RepaintPace : public QObject
{
    Q_OBJECT

public:
    static constexpr int periodMs = 50;
    static constexpr double share = 0.015; // of the time

    explicit RepaintPace(QWidget* window);

    // Paints a widget before it returns, in a window with or without a pace: for what must be seen although
    // the window's thread may be about to stand still.
    static void repaintNow(QWidget* widget);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    int wait() const; // ms until the next repaint
    void paint(QEvent* request);

    QWidget* const m_window;
    QElapsedTimer m_sincePainted; // not valid before the first
    double m_owed = 0;            // ms by which painting was over its share, when it was last painted
    QTimer m_later;               // runs while a repaint is held back
    bool m_urgent = false;
    bool m_painting = false;
};
