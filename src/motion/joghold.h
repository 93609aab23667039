#pragma once

#include <QObject>

class QEvent;
class QMouseEvent;
class QPushButton;

// The finger on a jog button. QPushButton raises released() as soon as a held button is disabled, and may
// raise none at all when a dialog takes the mouse; a machine needs one stop for each start. JogHold
// follows the finger itself: each pressed() is followed by exactly one released().
//
// pressed() comes when a finger goes down on the button while it can be pressed. released() comes
//  - when the finger lifts, wherever that is seen, or slides off the button;
//  - at once when the row is hidden or disabled around the button (transformed mode, parked axis, key
//    switch), when a dialog blocks the window or another window takes the focus, since the lift may then
//    reach nobody;
//  - at once from letGo() and when this object ends.
// A limit switch disables the button alone: the hold goes on until the finger lifts.
// After an early end nothing starts again before the finger has left the screen.
class JogHold : public QObject
{
    Q_OBJECT

public:
    // Watches `button`, which is not owned and takes no keyboard focus from now on.
    explicit JogHold(QPushButton* button, QObject* parent = nullptr);
    ~JogHold() override;

public slots:
    void letGo(); // ends a hold early; nothing when there is none

signals:
    void pressed();
    void released();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool filterButton(QEvent* event);
    bool endsHold(QObject* watched, QEvent* event) const;
    bool isOnButton(const QMouseEvent& event) const;
    void fingerDown();
    void fingerUp();

    QPushButton* m_button; // null once the button is gone
    bool m_held = false;
    bool m_down = false; // finger on the screen since it went down on the button
};
