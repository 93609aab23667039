#pragma once

#include <QDateTime>
#include <QObject>
#include <QString>

// What a message is, as its class tells it and as CMessageCreator takes it.
constexpr int infoMessage = 0;
constexpr int warningMessage = 1;
constexpr int alarmMessage = 2;

// A condition that lasts: it is raised when the condition begins and deleted when it ends.
// There is no virtual destructor: destroyMessage() ends one whose class is not known.
class CMessage
{
public:
    // `devId` is the source, 0 for this console; `numId` the key by which it is confirmed and deleted.
    // The text is chosen by number, for source 0 only; an unlisted number has an empty one.
    CMessage(int devId, int numId);
    CMessage(const CMessage&) = delete;
    CMessage& operator=(const CMessage& other); // all but the text

    virtual int getMessageType() const = 0;

    int devId() const { return m_devId; }
    int numId() const { return m_numId; }
    QString text() const { return m_text; }
    QDateTime time() const { return m_time; }               // of creation
    QDateTime confirmTime() const { return m_confirmTime; } // invalid until confirmed

    void confirm() { m_confirmTime = QDateTime::currentDateTime(); }
    void loadTime(const QDateTime& time, const QDateTime& confirmTime);

protected:
    ~CMessage() = default;

    int m_devId;
    int m_numId;
    QString m_text;
    QDateTime m_time;
    QDateTime m_confirmTime;
};
Q_DECLARE_METATYPE(CMessage*)

class CInfoMessage final : public CMessage
{
public:
    using CMessage::CMessage;
    int getMessageType() const override { return infoMessage; }
};

class CWarningMessage final : public CMessage
{
public:
    CWarningMessage(int devId, int numId);
    int getMessageType() const override { return warningMessage; }
};

class CAlarmMessage final : public CMessage
{
public:
    CAlarmMessage(int devId, int numId);
    int getMessageType() const override { return alarmMessage; }
};

void destroyMessage(CMessage* message);

bool sortMessagesAsc(const CMessage* a, const CMessage* b);      // by number
bool sortStackMessagesAsc(const CMessage* a, const CMessage* b); // by time of creation

class CMessageCreator : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // A new message of the type `msgId`, owned by the caller; null for an unknown type.
    CMessage* create(int msgId, int numId, int devId) const;
};
