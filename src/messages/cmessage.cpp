#include "cmessage.h"

namespace {

struct Text
{
    int numId;
    const char* text;
};

const Text kWarnings[] = {
    {20, "Выключен автомат питания спиралей (QF23 или QF24)"},
};

const Text kAlarms[] = {
    {0, "Выключен автомат QF18 в ШУК"},
    {1, "Выключен автомат QF19 в ШУК"},
    {2, "Выключен автомат QF40 в ШУК"},
    {3, "Нажата аварийная кнопка на пульте оператора"},
    {4, "Нажата аварийная кнопка на пульте переносном"},
    {5, "Сработан тросовый выключатель (левый)"},
    {6, "Сработан тросовый выключатель (правый)"},
    {7, "Авария фаз 380 Вольт в ШУК"},
    {8, "Выключен автомат QF28 в ШУК"},
};

template <std::size_t N>
QString textOf(const Text (&table)[N], int devId, int numId)
{
    for (const Text& row : table) {
        if (devId == 0 && row.numId == numId)
            return QString::fromUtf8(row.text);
    }
    return {};
}

} // namespace

CMessage::CMessage(int devId, int numId)
    : m_devId(devId)
    , m_numId(numId)
    , m_time(QDateTime::currentDateTime())
{}

CMessage& CMessage::operator=(const CMessage& other)
{
    m_numId = other.m_numId;
    m_time = other.m_time;
    m_confirmTime = other.m_confirmTime;
    m_devId = other.m_devId;
    return *this;
}

void CMessage::loadTime(const QDateTime& time, const QDateTime& confirmTime)
{
    m_time = time;
    m_confirmTime = confirmTime;
}

CWarningMessage::CWarningMessage(int devId, int numId)
    : CMessage(devId, numId)
{
    m_text = textOf(kWarnings, devId, numId);
}

CAlarmMessage::CAlarmMessage(int devId, int numId)
    : CMessage(devId, numId)
{
    m_text = textOf(kAlarms, devId, numId);
}

void destroyMessage(CMessage* message)
{
    switch (message->getMessageType()) {
    case infoMessage:
        delete static_cast<CInfoMessage*>(message);
        break;
    case warningMessage:
        delete static_cast<CWarningMessage*>(message);
        break;
    case alarmMessage:
        delete static_cast<CAlarmMessage*>(message);
        break;
    }
}

bool sortMessagesAsc(const CMessage* a, const CMessage* b)
{
    return a->numId() < b->numId();
}

bool sortStackMessagesAsc(const CMessage* a, const CMessage* b)
{
    return a->time() < b->time();
}

CMessage* CMessageCreator::create(int msgId, int numId, int devId) const
{
    switch (msgId) {
    case infoMessage:
        return new CInfoMessage(devId, numId);
    case warningMessage:
        return new CWarningMessage(devId, numId);
    case alarmMessage:
        return new CAlarmMessage(devId, numId);
    default:
        return nullptr;
    }
}
