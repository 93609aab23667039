#pragma once

#include "lockview.h"

#include <QPushButton>
#include <QTimer>
#include <QVector>

#include <array>
#include <map>
#include <memory>

// A button for something that has a state on a controller. It shows what the controller reports, not what
// was pressed last; it refuses to act while an interlock holds and tells the reasons instead.
// `clicked(false)` comes at the press, not at the release.
class StateButton : public QPushButton
{
    Q_OBJECT

public:
    enum State { Off = 0, On = 1, GoingOn = 2, GoingOff = 3, Fault = 4 };
    Q_ENUM(State)

    explicit StateButton(QWidget* parent = nullptr);
    ~StateButton() override;

    // Puts the button to work, in the state Off. `oneWay`: cannot be pressed while it is on.
    // `faultLock`: cannot be pressed in a fault. The state is shown below the title if `textOn` is not
    // empty.
    void init(const QString& title, bool oneWay, const QString& textOn, const QString& textOff,
              const QString& textGoingOff, const QString& textGoingOn, const QString& textFault,
              bool faultLock);

    State state() const { return m_state; }
    bool locked() const;         // whether a press would be refused now
    void setLocked(bool locked); // true forces the locked condition, whatever the locks say
    void setText1(const QString& title);

    // `on` chooses the direction: switching on or switching off. The first names the one lock that
    // decides (null for none), the second adds a lock to the reasons on view. Neither is owned.
    void setLock(bool on, Lock* lock);
    void addLock(bool on, Lock* lock);

    // Locks of the button's own, by name. `state` true is locked. Both assert: the first on a name that
    // is taken, the second on one that is not known.
    void addLock(const QString& name, bool state, const QString& textOn, const QString& textOff);
    void setLock(const QString& name, bool state);
    Lock* lock(const QString& name) const; // owned by the button; asserts on an unknown name

public slots:
    void setState(StateButton::State state);
    void setState(bool on);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void followLocks(); // redraws if the locks have changed since the last picture
    void placeFrame();
    void showFace();
    void press();
    void showReasons();

    std::array<QString, 5> m_texts; // by state
    bool m_oneWay = false;
    State m_state = Off;
    std::unique_ptr<QFrame> m_frame; // null until init
    QLabel* m_title = nullptr;
    QLabel* m_stateText = nullptr; // null if no state is shown
    QPointer<Lock> m_lockOn;
    QPointer<Lock> m_lockOff;
    QVector<QPointer<Lock>> m_reasonsOn;
    QVector<QPointer<Lock>> m_reasonsOff;
    std::map<QString, std::unique_ptr<Lock>> m_locks;
    std::unique_ptr<QFrame> m_popup; // null when not shown
    bool m_faultLock = false;
    bool m_drawnLocked = false;
    bool m_forcedLock = false;
    QTimer m_timer;
};
