#include "keyswitch.h"

#include <QLabel>

void KeySwitch::setAccess(bool on)
{
    m_window->setEnabled(on);
    if (on) {
        if (m_notice) {
            m_notice->releaseKeyboard();
            delete m_notice;
        }
        return;
    }
    if (m_notice)
        return;
    m_notice = new QLabel(QStringLiteral("Панель управления заблокирована"), m_window);
    QFont font = m_notice->font();
    font.setPixelSize(30);
    font.setBold(true);
    m_notice->setFont(font);
    m_notice->setAlignment(Qt::AlignCenter);
    m_notice->setFrameStyle(QFrame::Panel | QFrame::Raised);
    m_notice->setLineWidth(3);
    QPalette colours = m_notice->palette();
    colours.setColor(QPalette::Window, Qt::red);
    colours.setColor(QPalette::WindowText, Qt::white);
    m_notice->setPalette(colours);
    m_notice->setAutoFillBackground(true);
    m_notice->setGeometry(QRect(QPoint(600, 460), QPoint(1319, 739)));
    m_notice->show();
    m_notice->grabKeyboard();
}
