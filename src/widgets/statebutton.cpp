#include "statebutton.h"

#include "widgets.h"

#include <QCursor>
#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

namespace {

constexpr int lockPeriod = 200; // ms
const QColor motionFace(224, 224, 0);

QLabel* makeLabel(const QString& name, const QString& text, QFrame* frame)
{
    auto* label = new QLabel(text, frame);
    label->setObjectName(name);
    label->setAlignment(Qt::AlignCenter);
    label->setWordWrap(true);
    frame->layout()->addWidget(label);
    return label;
}

} // namespace

StateButton::StateButton(QWidget* parent)
    : QPushButton(parent)
{
    m_timer.setInterval(lockPeriod);
    connect(&m_timer, &QTimer::timeout, this, &StateButton::followLocks);
}

StateButton::~StateButton() = default;

void StateButton::init(const QString& title, bool oneWay, const QString& textOn, const QString& textOff,
                       const QString& textGoingOff, const QString& textGoingOn, const QString& textFault,
                       bool faultLock)
{
    m_texts[Off] = textOff;
    m_texts[On] = textOn;
    m_texts[GoingOn] = textGoingOn;
    m_texts[GoingOff] = textGoingOff;
    m_texts[Fault] = textFault;
    m_oneWay = oneWay;
    m_faultLock = faultLock;
    setText(QString());
    setFocusPolicy(Qt::NoFocus);

    m_frame = std::make_unique<QFrame>(this);
    m_frame->setAttribute(Qt::WA_TransparentForMouseEvents);
    auto* lines = new QVBoxLayout(m_frame.get());
    lines->setSpacing(0);
    lines->setContentsMargins(0, 0, 0, 0);
    lines->setAlignment(Qt::AlignVCenter);
    m_title = makeLabel(QStringLiteral("lblTitle"), title, m_frame.get());
    m_stateText = nullptr;
    if (!textOn.isEmpty()) {
        m_stateText = makeLabel(QStringLiteral("lblState"), QString(), m_frame.get());
        QFont font = m_stateText->font();
        font.setPointSize(11);
        font.setWeight(QFont::Normal);
        m_stateText->setFont(font);
    }
    placeFrame();
    m_frame->show();

    setState(Off);
    m_timer.start();
}

void StateButton::setState(State state)
{
    m_state = state;
    if (m_stateText)
        m_stateText->setText(state >= Off && state <= Fault ? m_texts[size_t(state)] : QString());
    setCheckable(state == On);
    setChecked(state == On);
    showFace();
    update();
}

void StateButton::setState(bool on)
{
    setState(on ? On : Off);
}

void StateButton::showFace()
{
    const bool moving = m_state == GoingOn || m_state == GoingOff;
    QPalette colours = palette();
    MyWinStyle::setFace(colours, moving ? motionFace : MyWinStyle::restFace(this));
    setPalette(colours);
    if (!m_frame)
        return;
    const QPalette::ColorRole role = m_state == On ? QPalette::HighlightedText : QPalette::ButtonText;
    m_title->setForegroundRole(isEnabled() ? role : QPalette::ButtonText);
    if (m_stateText)
        m_stateText->setForegroundRole(isEnabled() ? role : QPalette::ButtonText);
}

void StateButton::setText1(const QString& title)
{
    if (m_title)
        m_title->setText(title);
}

bool StateButton::locked() const
{
    if (m_forcedLock)
        return true;
    switch (m_state) {
    case Off:
    case GoingOn:
        return m_lockOn && m_lockOn->state();
    case On:
    case GoingOff:
        return m_lockOff && m_lockOff->state();
    case Fault:
        return m_faultLock;
    }
    return false;
}

void StateButton::setLocked(bool locked)
{
    m_forcedLock = locked;
    followLocks();
}

void StateButton::setLock(bool on, Lock* lock)
{
    (on ? m_lockOn : m_lockOff) = lock;
}

void StateButton::addLock(bool on, Lock* lock)
{
    (on ? m_reasonsOn : m_reasonsOff).append(lock);
}

void StateButton::addLock(const QString& name, bool state, const QString& textOn, const QString& textOff)
{
    const auto i = m_locks.find(name);
    Q_ASSERT(i == m_locks.end());
    auto own = std::make_unique<Lock>(false, textOn, textOff);
    own->setState(state);
    m_locks.emplace_hint(i, name, std::move(own));
}

void StateButton::setLock(const QString& name, bool state)
{
    lock(name)->setState(state);
}

Lock* StateButton::lock(const QString& name) const
{
    const auto i = m_locks.find(name);
    Q_ASSERT(i != m_locks.end());
    return i->second.get();
}

bool StateButton::event(QEvent* event)
{
    const bool handled = QPushButton::event(event);
    // The style gives a button the colours of rest, also when the button has left it.
    if (event->type() == QEvent::Polish || event->type() == QEvent::StyleChange ||
        event->type() == QEvent::EnabledChange)
        showFace();
    if (liftMayBeLost(*this, *event))
        m_popup.reset();
    return handled;
}

void StateButton::followLocks()
{
    if (locked() != m_drawnLocked)
        update();
}

void StateButton::placeFrame()
{
    if (!m_frame)
        return;
    const int step = isChecked() ? 2 : 1;
    m_frame->setGeometry(step, step, width() - 2, height() - 2);
}

void StateButton::paintEvent(QPaintEvent* event)
{
    placeFrame();
    QPushButton::paintEvent(event);

    m_drawnLocked = locked();
    if (!m_drawnLocked && m_state != Fault)
        return;
    QPainter painter(this);
    painter.setOpacity(isEnabled() ? 1 : 0.4);
    painter.fillPath(MyWinStyle::getRoundRect(rect()),
                     QBrush(m_state == Fault ? Qt::red : Qt::darkGray, Qt::Dense4Pattern));
}

void StateButton::resizeEvent(QResizeEvent* event)
{
    QPushButton::resizeEvent(event);
    placeFrame();
}

void StateButton::mousePressEvent(QMouseEvent*)
{
    if (locked() && m_state != Fault)
        showReasons();
    else
        press();
}

void StateButton::press()
{
    if (m_state == Fault && m_faultLock)
        return;
    if (m_oneWay && m_state == On)
        return;
    emit clicked(false);
}

void StateButton::showReasons()
{
    const QVector<QPointer<Lock>>* reasons = nullptr;
    switch (m_state) {
    case Off:
    case GoingOn:
        reasons = &m_reasonsOn;
        break;
    case On:
    case GoingOff:
        reasons = &m_reasonsOff;
        break;
    default:
        Q_ASSERT(0);
        return;
    }
    if (reasons->isEmpty())
        return;

    m_popup = std::make_unique<QFrame>(this, Qt::ToolTip | Qt::FramelessWindowHint);
    m_popup->setAttribute(Qt::WA_ShowWithoutActivating);
    m_popup->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_popup->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    m_popup->setMinimumWidth(width());
    fillWithLocks(m_popup.get(), *reasons);
    m_popup->adjustSize();
    // At the pointer, but never so that a reason ends beyond the panel's edge.
    const QPoint pointer = QCursor::pos();
    m_popup->move(qMax(0, qMin(pointer.x(), panelWidth - m_popup->width())),
                  qMax(0, qMin(pointer.y(), panelHeight - m_popup->height())));
    m_popup->show();
}

void StateButton::mouseReleaseEvent(QMouseEvent*)
{
    m_popup.reset();
}
