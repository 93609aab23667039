#include "cmessageserver.h"

#include <algorithm>

CMessageServer::~CMessageServer()
{
    std::for_each(m_messages.cbegin(), m_messages.cend(), destroyMessage);
}

int CMessageServer::getMessageIndex(int numId) const
{
    if (m_messages.isEmpty())
        return -1;
    if (m_messages.first()->numId() == numId)
        return 0;
    if (m_messages.last()->numId() == numId)
        return m_messages.size() - 1;
    int low = 0;
    int high = m_messages.size() - 1;
    while (high - low > 1) {
        const int middle = (low + high) / 2;
        const int found = m_messages[middle]->numId();
        if (found == numId)
            return middle;
        (numId > found ? low : high) = middle;
    }
    return -1;
}

int CMessageServer::getNumberId() const
{
    for (int i = 0; i < m_messages.size(); ++i) {
        if (m_messages[i]->numId() != i)
            return i;
    }
    return m_messages.size();
}

void CMessageServer::slotAddMessage(int msgId, int numId, int devId)
{
    CMessage* message = m_creator.create(msgId, numId, devId);
    Q_ASSERT(message);
    m_messages.prepend(message);
    emit sigAddMessage(message);
    std::stable_sort(m_messages.begin(), m_messages.end(), sortMessagesAsc);
}

// Of several messages of one number the operator sees and confirms the latest that is not confirmed yet.
void CMessageServer::slotConfirmMessage(int id)
{
    const auto open = std::find_if(m_messages.cbegin(), m_messages.cend(), [id](const CMessage* m) {
        return m->numId() == id && !m->confirmTime().isValid();
    });
    CMessage* message = open != m_messages.cend() ? *open : m_messages[getMessageIndex(id)];
    message->confirm();
    emit sigUpdateMessage();
}

// Whoever shows the messages lets go of the earliest of the number first; that one is then destroyed.
void CMessageServer::slotDeleteMessage(int numId)
{
    if (getMessageIndex(numId) < 0)
        return;
    const auto ofNumber = [numId](const CMessage* m) { return m->numId() == numId; };
    const auto begin = std::find_if(m_messages.begin(), m_messages.end(), ofNumber);
    const auto end = std::find_if_not(begin, m_messages.end(), ofNumber);
    // From the back, since of equal times the first raised stands last.
    const auto earliest = std::min_element(std::make_reverse_iterator(end), std::make_reverse_iterator(begin),
                                           sortStackMessagesAsc);
    CMessage* message = *earliest;
    m_messages.erase(std::prev(earliest.base()));
    emit sigDeleteMessage(numId);
    destroyMessage(message);
}
