#include "cmessagestack.h"

#include "repaintpace.h"
#include "unibutton.h"

#include <QPainter>

#include <algorithm>

namespace {

constexpr int kAlarmPeriod = 3000; // ms
constexpr int kPeriod = 2000;      // ms
constexpr int kGuard = 1001;       // ms in which a press may be meant for the message before
constexpr int kRadius = 7;
constexpr int kLetters = 16;    // px, legible from where the operator stands
constexpr int kButtonRoom = 50; // px at the right end

QColor fillOf(int type)
{
    switch (type) {
    case alarmMessage:
        return {229, 102, 102};
    case warningMessage:
        return {221, 167, 90};
    default:
        return {125, 188, 134};
    }
}

// Narrow enough for the longest message to stand whole below its time.
void setBoldFont(QPainter& painter, int pixels)
{
    QFont font = painter.font();
    font.setBold(true);
    font.setPixelSize(pixels);
    font.setStretch(QFont::SemiCondensed);
    painter.setFont(font);
}

} // namespace

CMessageStack::CMessageStack(QWidget* parent)
    : QWidget(parent)
    , m_closeButton(new CUniButton(13, this))
{
    setFixedSize(290, 57);
    m_closeButton->move(250, 13);
    m_closeButton->hide();
    connect(m_closeButton, &CUniButton::clicked, this, &CMessageStack::slotCloseButton);
    connect(&m_timer, &QTimer::timeout, this, &CMessageStack::slotTimer);
}

// Not a binary search: the vector is sorted by time, and an entry that is not found when its message ends
// would stay on view without a message.
int CMessageStack::getMessageIndex(int numId) const
{
    const auto found = std::find_if(m_messages.cbegin(), m_messages.cend(),
                                    [numId](const CMessage* m) { return m->numId() == numId; });
    return found == m_messages.cend() ? -1 : int(found - m_messages.cbegin());
}

const CMessage* CMessageStack::current() const
{
    return m_messages.isEmpty() ? nullptr : m_messages[m_current];
}

void CMessageStack::restartPeriod()
{
    m_timer.start(current()->getMessageType() == alarmMessage ? kAlarmPeriod : kPeriod);
    m_shown.start();
}

void CMessageStack::slotAddMessage(CMessage* m)
{
    m_messages.append(m);
    std::stable_sort(m_messages.begin(), m_messages.end(), sortStackMessagesAsc);
    m_current = m_messages.size() - 1;
    present();
    restartPeriod();
}

void CMessageStack::slotTimer()
{
    m_timer.stop();
    if (m_messages.size() < 2)
        return;
    m_current = m_current > 0 ? m_current - 1 : m_messages.size() - 1;
    restartPeriod();
    present();
}

void CMessageStack::slotCloseButton()
{
    if (m_messages.isEmpty() || m_shown.elapsed() < kGuard)
        return;
    emit sigConfirmMessage(current()->numId());
}

// One message is confirmed at a time, so that one pass, which passes over the entry after a removed one,
// finds it.
void CMessageStack::slotUpdateMessage()
{
    const CMessage* shown = current();
    for (int i = 0; i < m_messages.size(); ++i) {
        if (m_messages[i]->confirmTime().isValid())
            m_messages.remove(i);
    }
    keepCurrent(shown);
    present();
}

void CMessageStack::slotDeleteMessage(int numId)
{
    const int index = getMessageIndex(numId);
    if (index < 0)
        return;
    const CMessage* shown = current();
    m_messages.remove(index);
    keepCurrent(shown);
    present();
}

void CMessageStack::keepCurrent(const CMessage* shown)
{
    m_current = qMin(m_current, m_messages.size() - 1);
    if (current() && current() != shown)
        restartPeriod();
}

void CMessageStack::present()
{
    m_closeButton->setVisible(current() && current()->getMessageType() != alarmMessage);
    RepaintPace::repaintNow(this);
}

void CMessageStack::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
    const CMessage* message = current();
    if (!message) {
        painter.setPen(QColor(80, 80, 80));
        painter.setBrush(QColor(189, 255, 180));
        painter.drawRoundedRect(rect(), kRadius, kRadius);
        setBoldFont(painter, kLetters);
        painter.drawText(rect(), Qt::AlignCenter, QStringLiteral("Сообщений нет"));
        return;
    }
    painter.setPen(QPen(QColor(243, 143, 143), 2));
    painter.setBrush(fillOf(message->getMessageType()));
    painter.drawRoundedRect(rect(), kRadius, kRadius);
    painter.setPen(QPen(QColor(255, 192, 192), 1));
    setBoldFont(painter, kLetters);
    painter.drawText(QRect(0, 0, width() - kButtonRoom, height()), Qt::AlignCenter | Qt::TextWordWrap,
                     message->time().toString(QStringLiteral("dd.MM.yy hh:mm:ss")) + QStringLiteral(" \n ") +
                         message->text());
}
