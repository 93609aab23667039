#include "lockview.h"

#include "widgets.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

Lock::Lock(bool perm, const QString& textLocked, const QString& textFree)
    : m_textLocked(textLocked)
    , m_textFree(textFree)
    , m_perm(perm)
{}

void Lock::setState(bool value)
{
    m_state = value != m_perm;
    emit stateChanged(m_state);
}

LockLine::LockLine(const QString& tail, QWidget* parent)
    : QFrame(parent)
    , m_pixmapLocked(QStringLiteral(":/images/no.png"))
    , m_pixmapFree(QStringLiteral(":/images/ok.png"))
    , m_picture(new QLabel(this))
    , m_text(new QLabel(this))
    , m_tail(tail)
{
    // A missing image has the size 0, which the wording of this assertion would let pass: a refusal must
    // never come without its sign.
    if (m_pixmapLocked.isNull())
        qt_assert("m_pixmapLocked.size().width() >= 0", __FILE__, __LINE__);

    setAutoFillBackground(true);
    m_picture->setFixedSize(m_pixmapLocked.size());
    m_text->setTextFormat(Qt::PlainText);

    auto* line = new QHBoxLayout(this);
    line->setSpacing(4);
    line->setContentsMargins(4, 0, 0, 0);
    line->addWidget(m_picture);
    line->addWidget(m_text, 1);
}

void LockLine::setLock(Lock* lock)
{
    Q_ASSERT(!m_lock);
    m_lock = lock;
    update(lock->state());
    connect(lock, &Lock::stateChanged, this, qOverload<bool>(&LockLine::update));
}

void LockLine::update(bool locked)
{
    if (!m_lock)
        return;
    QPalette colours = palette();
    colours.setBrush(QPalette::Window, locked ? Qt::red : Qt::green);
    setPalette(colours);
    m_picture->setPixmap(locked ? m_pixmapLocked : m_pixmapFree);
    m_text->setText(m_lock->text(locked) + m_tail);
}

LockView::LockView(QWidget* parent)
    : LockLine(QStringLiteral("  "), parent)
{
    QFont own = font();
    own.setPointSize(14);
    setFont(own);
    setFixedHeight(40);
}

LockGroup::LockGroup(QWidget* parent)
    : LockLine(QString(), parent)
{}

LockGroup::~LockGroup()
{
    removePopup();
}

void LockGroup::addLock(Lock* lock)
{
    m_locks.append(lock);
}

void LockGroup::mousePressEvent(QMouseEvent*)
{
    removePopup();
    m_popup = new QFrame(parentWidget());
    m_popup->setFrameStyle(QFrame::Panel | QFrame::Raised);
    m_popup->setMinimumWidth(width());
    m_popup->setAutoFillBackground(true);
    fillWithLocks(m_popup, m_locks);
    m_popup->adjustSize();
    m_popup->move(pos() + QPoint(20, 30));
    m_popup->show();
    m_popup->raise();
}

void LockGroup::mouseReleaseEvent(QMouseEvent*)
{
    removePopup();
}

bool LockGroup::event(QEvent* event)
{
    if (liftMayBeLost(*this, *event))
        removePopup();
    return LockLine::event(event);
}

void LockGroup::removePopup()
{
    delete m_popup.data();
}

void fillWithLocks(QFrame* popup, const QVector<QPointer<Lock>>& locks)
{
    auto* lines = new QVBoxLayout(popup);
    lines->setSpacing(0);
    lines->setContentsMargins(0, 0, 0, 0);
    for (const QPointer<Lock>& lock : locks) {
        if (!lock)
            continue;
        auto* view = new LockView(popup);
        view->setLock(lock);
        lines->addWidget(view);
    }
}
