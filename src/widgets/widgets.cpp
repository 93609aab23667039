#include "widgets.h"

#include "element.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QMouseEvent>
#include <QPushButton>

#include <cmath>
#include <limits>

namespace {

const QColor titleColour(58, 70, 118);

class OneTouch : public QObject
{
public:
    OneTouch(QObject* parent, std::function<bool()> unanswered)
        : QObject(parent)
        , m_unanswered(std::move(unanswered))
    {}

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        return event->type() == QEvent::MouseButtonDblClick &&
               m_unanswered(); // the press of the second touch
    }

private:
    std::function<bool()> m_unanswered;
};

} // namespace

void takeOneTouch(QAbstractButton* button, const std::function<bool()>& unanswered)
{
    button->installEventFilter(new OneTouch(button, unanswered));
}

bool liftMayBeLost(const QWidget& widget, const QEvent& event)
{
    return event.type() == QEvent::Hide || event.type() == QEvent::WindowBlocked ||
           (event.type() == QEvent::EnabledChange && !widget.isEnabled());
}

PoSprite::PoSprite(QWidget* parent)
    : QLabel(parent)
{}

void PoSprite::addPixmap(int index, const QString& file)
{
    m_mapPixmaps.insert(index, QPixmap(file));
}

void PoSprite::setSprite(int index)
{
    const auto i = m_mapPixmaps.constFind(index);
    Q_ASSERT(i != m_mapPixmaps.end());
    // Telemetry names the state again and again; the same picture is not drawn anew.
    if (i->isNull() || i->cacheKey() != pixmap(Qt::ReturnByValue).cacheKey())
        setPixmap(*i);
}

void PoSprite::changedState(int state)
{
    setSprite(state);
}

void PoSprite::changedState(float state)
{
    constexpr float edge = 2147483648.0F; // not a number compares false, too
    setSprite(state >= -edge && state < edge ? int(state) : std::numeric_limits<int>::min());
}

void PoSprite::mousePressEvent(QMouseEvent*)
{
    emit clicked();
}

PoLabel::PoLabel(QWidget* parent)
    : QLabel(parent)
{}

void PoLabel::setValue(float value, int decimals)
{
    m_value = value;
    m_told = true;
    const double shown = double(value * m_coeff);
    setText(decimals > 2 ? QString::number(shown, 'E', 1) : QString::number(shown, 'f', qMax(decimals, 0)));
}

int PoLabel::whole() const
{
    using Int = std::numeric_limits<int>;
    if (std::isnan(m_value))
        return 0;
    return int(qBound(double(Int::min()), double(m_value), double(Int::max())));
}

void PoLabel::setDepth(int decimals)
{
    m_depth = decimals;
}

void PoLabel::setCoeff(float coeff)
{
    m_coeff = coeff;
    if (m_told)
        setValue(m_value, m_depth);
}

void PoLabel::changedValue(float value)
{
    setValue(value, m_depth);
}

void PoLabel::setElement(Element* element)
{
    setDepth(element->dec());
    // A variable turns invalid when its unit falls silent, but nothing would ever call it valid again.
    if (!element->isVariable())
        connect(element, qOverload<bool>(&Element::validChanged), this, &PoLabel::changedValid);
    connect(element, qOverload<float>(&Element::numberValChanged), this, &PoLabel::changedValue);
}

void PoLabel::changedValid(bool valid)
{
    QPalette colours = palette();
    if (!m_paletteSaved) {
        m_paletteSaved = true;
        m_savedText = colours.color(foregroundRole());
        m_savedBackground = colours.color(backgroundRole());
        m_savedFill = autoFillBackground();
    }
    colours.setColor(foregroundRole(), valid ? m_savedText : QColor(Qt::black));
    colours.setColor(backgroundRole(), valid ? m_savedBackground : invalidGround);
    setPalette(colours);
    setAutoFillBackground(!valid || m_savedFill);
}

void PoLabel::mousePressEvent(QMouseEvent*)
{
    emit clicked();
}

MyLabel::MyLabel(QWidget* parent)
    : QLabel(parent)
{}

void MyLabel::setButton(bool button)
{
    m_button = button;
}

void MyLabel::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    // First the step, then the signal: what it starts may wait for the finger to lift.
    if (m_button && !m_moved) {
        m_moved = true;
        move(pos() + QPoint(1, 1));
    }
    emit clicked();
}

void MyLabel::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !m_moved)
        return;
    m_moved = false;
    move(pos() - QPoint(1, 1));
}

MyListView::MyListView(QWidget* parent)
    : QListView(parent)
{}

void MyListView::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    QListView::currentChanged(current, previous);
    emit signal_currentChanged(current.row());
}

MyFrame::MyFrame(QString title, int x, int y, int margin, QDialog* dialog, QWidget* parent, bool modal,
                 bool show)
    : QFrame(parent ? parent->window() : nullptr, Qt::Dialog | Qt::FramelessWindowHint)
    , m_dialog(dialog)
    , m_margin(margin)
{
    setAttribute(Qt::WA_QuitOnClose, false);
    if (modal)
        setWindowModality(Qt::WindowModal);
    setFrameStyle(QFrame::Panel | QFrame::Raised);
    setLineWidth(2);
    setWindowTitle(title);
    buildTitle(title);
    followWindow();
    // What is disabled loses the focus, and does not get it back by itself.
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget* from) {
        if (from && isAncestorOf(from))
            m_lastFocus = from;
    });

    if (!dialog->testAttribute(Qt::WA_Resized))
        dialog->adjustSize();
    dialog->setParent(this);
    dialog->move(frameWidth() + margin, frameWidth() + title_height() + margin);
    fit();
    placeOnPanel(x, y);

    dialog->installEventFilter(this);
    connect(dialog, &QObject::destroyed, this, [this] {
        m_dialog = nullptr;
        hide();
        deleteLater();
    });

    if (show) {
        dialog->show();
        QFrame::show();
        activateWindow();
    }
    dialog->setFocus();
}

MyFrame::~MyFrame()
{
    disconnect(qApp, nullptr, this, nullptr); // children that go behind this may still lose the focus
    if (!m_dialog)
        return;
    // A frame that goes first takes the dialog along, and must not hear of it any more.
    m_dialog->removeEventFilter(this);
    disconnect(m_dialog, nullptr, this, nullptr);
}

void MyFrame::buildTitle(const QString& title)
{
    m_titleBar = new QFrame(this);
    m_titleBar->setObjectName(QStringLiteral("frmTitle"));
    m_titleBar->setFrameStyle(QFrame::Panel | QFrame::Raised);
    m_titleBar->setAutoFillBackground(true);

    m_title = new QLabel(title, m_titleBar);
    m_title->setObjectName(QStringLiteral("lblTitle"));
    m_title->setTextFormat(Qt::PlainText);
    m_title->setAlignment(Qt::AlignCenter);
    m_title->setWordWrap(true);
    QFont font = m_title->font();
    font.setPointSize(15);
    m_title->setFont(font);
    colourTitle(titleColour);

    m_closeButton = new QPushButton(m_titleBar);
    m_closeButton->setObjectName(QStringLiteral("pbClose"));
    m_closeButton->setFocusPolicy(Qt::NoFocus);
    m_closeButton->setIcon(QIcon(QStringLiteral(":/images/close.png")));
    m_closeButton->setIconSize(QSize(40, 40));
    connect(m_closeButton, &QPushButton::clicked, this, [this] {
        if (m_dialog)
            m_dialog->reject();
        close();
    });
}

void MyFrame::colourTitle(const QColor& colour)
{
    QPalette colours = m_titleBar->palette();
    colours.setColor(QPalette::Window, colour);
    colours.setColor(QPalette::WindowText, Qt::white);
    m_titleBar->setPalette(colours);
    m_title->setPalette(colours); // a style sheet above would keep the bar's colours from it
}

// A dialog that stands before the window, or without it at the login, says itself why it does not answer.
void MyFrame::followWindow()
{
    const QWidget* window = this;
    while (window->parentWidget())
        window = window->parentWidget();
    const bool locked = window != this && !window->isEnabled();
    if (locked == m_locked)
        return;
    m_locked = locked;
    m_title->setText(locked ? QStringLiteral("Панель управления заблокирована") : windowTitle());
    colourTitle(locked ? QColor(Qt::red) : titleColour);
    if (!locked && m_lastFocus)
        m_lastFocus->setFocus();
}

void MyFrame::fit()
{
    const int around = 2 * (frameWidth() + m_margin);
    setFixedSize(m_dialog->width() + around, m_dialog->height() + title_height() + around);

    const int barWidth = width() - 2 * frameWidth();
    m_titleBar->setGeometry(frameWidth(), frameWidth(), barWidth, title_height());
    m_closeButton->setGeometry(barWidth - title_height(), 0, title_height(), title_height());
    // The same place is kept free on the left, so that the title stands in the middle of the bar.
    m_title->setGeometry(title_height(), 0, barWidth - 2 * title_height(), title_height());
}

void MyFrame::placeOnPanel(int x, int y)
{
    if (x + width() > panelWidth)
        x = panelWidth - 1 - width();
    if (y < 0)
        y = 0;
    if (y + height() > panelHeight)
        y = panelHeight - 1 - height();
    move(x, y);
}

bool MyFrame::eventFilter(QObject* watched, QEvent* event)
{
    if (m_dialog && watched == m_dialog) {
        switch (event->type()) {
        case QEvent::ShowToParent:
            if (isHidden()) {
                show();
                m_dialog->setFocus();
            }
            break;
        case QEvent::HideToParent: // answered: no empty frame stays behind
            hide();
            break;
        case QEvent::Resize:
            fit();
            break;
        default:
            break;
        }
    }
    return QFrame::eventFilter(watched, event);
}

void MyFrame::closeEvent(QCloseEvent* event)
{
    if (m_dialog && !m_dialog->isHidden())
        m_dialog->reject();
    QFrame::closeEvent(event);
}

bool MyFrame::event(QEvent* event)
{
    // A grab that outlived its finger would keep every press from the rest of the panel.
    if (liftMayBeLost(*this, *event))
        endDrag();
    if (event->type() == QEvent::EnabledChange)
        followWindow();
    return QFrame::event(event);
}

void MyFrame::mousePressEvent(QMouseEvent* event)
{
    if (m_dragging || !m_titleBar->geometry().contains(event->pos()))
        return;
    m_dragging = true;
    m_dragOffset = event->globalPos() - pos();
    grabMouse();
}

void MyFrame::mouseMoveEvent(QMouseEvent* event)
{
    if (m_dragging)
        move(event->globalPos() - m_dragOffset);
}

void MyFrame::mouseReleaseEvent(QMouseEvent*)
{
    endDrag();
}

void MyFrame::endDrag()
{
    if (!m_dragging)
        return;
    m_dragging = false;
    releaseMouse();
}
