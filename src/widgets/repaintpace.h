#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

class QWidget;

// Repaints a window at most twenty-five times a second, however often its contents change: both vacuum
// controllers and the motion controller bring new numbers every few milliseconds, and painting numbers that
// nobody can read is most of what they would cost. The first change after a pause is painted at once, any
// other within a period; QWidget::repaint() waits as well, repaintNow() does not. What a widget holds, and
// grab(), are not held up. Owned by the window.
class RepaintPace : public QObject
{
    Q_OBJECT

public:
    static constexpr int periodMs = 40;

    explicit RepaintPace(QWidget* window);

    // Paints a widget before it returns, in a window with or without a pace: for what must be seen although
    // the window's thread may be about to stand still.
    static void repaintNow(QWidget* widget);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QElapsedTimer m_sincePainted; // not valid before the first
    QTimer m_later;               // runs while a repaint is held back
    bool m_urgent = false;
};
