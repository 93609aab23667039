#pragma once

#include "cmessage.h"

#include <QElapsedTimer>
#include <QTimer>
#include <QVector>
#include <QWidget>

class CUniButton;

// The field in the head of the screen that tells what is the case now: the messages one after the other
// from the latest to the earliest, an alarm for 3 s, anything else for 2 s, or that there are none. What is
// not an alarm can be confirmed with the button in it. It paints at once, since the window's thread may go
// on to a long operation. The messages belong to the server.
class CMessageStack : public QWidget
{
    Q_OBJECT

public:
    explicit CMessageStack(QWidget* parent = nullptr);

    // Place of the earliest message of that number, -1 when there is none.
    int getMessageIndex(int numId) const;

public slots:
    void slotTimer();
    void slotCloseButton(); // without effect in the first second of a message
    void slotAddMessage(CMessage* m);
    void slotUpdateMessage();          // lets go of a confirmed message
    void slotDeleteMessage(int numId); // lets go of the earliest message of that number, if there is one

signals:
    void sigConfirmMessage(int id);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const CMessage* current() const; // null when there are none
    void restartPeriod();
    void keepCurrent(const CMessage* shown); // after a removal; what comes on view instead has its own time
    void present();

    QVector<CMessage*> m_messages; // by time of creation
    CUniButton* m_closeButton;
    QTimer m_timer;
    QElapsedTimer m_shown; // since the current message came on view
    int m_current = -1;
};
