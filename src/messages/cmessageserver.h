#pragma once

#include "cmessage.h"

#include <QVector>

// Owns the messages. A condition that is raised twice gives two messages of one number, and each deletion
// takes one of them. Window's thread; the slots are called as functions too.
class CMessageServer : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;
    ~CMessageServer() override;

    // Place of a message of that number in the vector sorted by number, -1 when there is none.
    int getMessageIndex(int numId) const;
    // Lowest number that no message has, as long as each number stands once.
    int getNumberId() const;

public slots:
    void slotAddMessage(int msgId, int numId, int devId); // asserts on an unknown type
    void slotConfirmMessage(int id);                      // the number must be there
    void slotDeleteMessage(int numId);                    // a number that is not there changes nothing

signals:
    void sigAddMessage(CMessage* m);
    void sigUpdateMessage();
    void sigDeleteMessage(int numId); // the earliest message of that number is about to be destroyed
    void sigLoad(CMessage** begin, CMessage** end);

private:
    QVector<CMessage*> m_messages; // by number; of one number the latest first
    CMessageCreator m_creator;
};
