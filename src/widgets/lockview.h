#pragma once

#include <QFrame>
#include <QPixmap>
#include <QPointer>
#include <QVector>

class QLabel;

// A condition that forbids one command, with a sentence for each case. It belongs to whoever made it and
// to the window's thread. A new lock is free.
class Lock : public QObject
{
    Q_OBJECT

public:
    // With `perm` the values written are conditions under which the command is permitted.
    Lock(bool perm, const QString& textLocked, const QString& textFree);

    bool state() const { return m_state; } // true: the command is forbidden
    bool perm() const { return m_perm; }
    const QString& text(bool locked) const { return locked ? m_textLocked : m_textFree; }

public slots:
    void setState(bool value); // with `perm` the negation is stored

signals:
    void stateChanged(bool state); // after every write, of the same state too

private:
    QString m_textLocked;
    QString m_textFree;
    const bool m_perm;
    bool m_state = false;
};

// What both lines of a lock share: picture and text on red while it is locked, on green while it is free.
class LockLine : public QFrame
{
    Q_OBJECT

public:
    void setLock(Lock* lock); // once; asserts on a second lock. Follows the lock from then on.

    using QFrame::update;

public slots:
    void update(bool locked); // without a lock nothing happens

protected:
    // `tail` is put behind every text. Asserts when the image of a locked line is missing.
    LockLine(const QString& tail, QWidget* parent);

private:
    QPixmap m_pixmapLocked;
    QPixmap m_pixmapFree;
    QPointer<Lock> m_lock;
    QLabel* m_picture;
    QLabel* m_text;
    QString m_tail;
};

// One line of a list of reasons, 40 px high.
class LockView : public LockLine
{
    Q_OBJECT

public:
    explicit LockView(QWidget* parent);
};

// A line with a lock of its own that shows a list of further locks while a finger is on it.
class LockGroup : public LockLine
{
    Q_OBJECT

public:
    explicit LockGroup(QWidget* parent);
    ~LockGroup() override;

    void addLock(Lock* lock); // shown in the order of adding; not owned

protected:
    bool event(QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void removePopup();

    QVector<QPointer<Lock>> m_locks;
    QPointer<QFrame> m_popup; // a child of the parent
};

// Makes `popup` a list with one live LockView for each lock, top to bottom, without spacing.
void fillWithLocks(QFrame* popup, const QVector<QPointer<Lock>>& locks);
