#include "oscope.h"

#include "widgets.h"

#include <QDateTime>
#include <QDebug>
#include <QMouseEvent>
#include <QPushButton>
#include <QScrollBar>

#include <algorithm>
#include <cmath>

namespace {

constexpr int period = 10;         // ms between two samples
constexpr int marginInHeights = 7; // of the font: room for the values of the axes, the legend, a finger
constexpr int gap = 8;             // px between the things below the plot

// A bar for a finger: its ends step by one scale, its handle is as wide as a fingertip.
const char* const barLook =
    "QScrollBar:horizontal { background: #5b6376; border: none; border-radius: 8px; margin: 0 68px 0 68px; }"
    "QScrollBar::handle:horizontal { background: #9eacff; min-width: 66px; border-radius: 8px; }"
    "QScrollBar::sub-line:horizontal { width: 66px; subcontrol-position: left; subcontrol-origin: margin;"
    "  background: #9eacff; border-radius: 8px; }"
    "QScrollBar::add-line:horizontal { width: 66px; subcontrol-position: right; subcontrol-origin: margin;"
    "  background: #9eacff; border-radius: 8px; }"
    "QScrollBar::left-arrow { image: url(:/images/arrows/left.png); width: 40px; height: 40px; }"
    "QScrollBar::right-arrow { image: url(:/images/arrows/right.png); width: 40px; height: 40px; }"
    "QScrollBar::add-page, QScrollBar::sub-page { background: none; }";

} // namespace

Oscope::Oscope(QWidget* parent)
    : QWidget(parent)
    , m_pbCurrent(new QPushButton(this))
    , m_scrollZoom(new QScrollBar(Qt::Horizontal, this))
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_timer.setInterval(period);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &Oscope::timeEvent);

    m_pbCurrent->setObjectName(QStringLiteral("pbCurrent"));
    m_pbCurrent->resize(m_leftMargin / 2, m_leftMargin / 2);
    QFont font(QStringLiteral("Cantarell"));
    font.setFamilies({QStringLiteral("Cantarell"), QStringLiteral("DejaVu Sans")});
    font.setPointSize(14);
    m_pbCurrent->setFont(font);
    m_pbCurrent->setFocusPolicy(Qt::NoFocus);
    m_pbCurrent->setCheckable(true); // lit while the view follows the present
    connect(m_pbCurrent, &QPushButton::clicked, this, &Oscope::pbCurrentClicked);

    m_scrollZoom->setObjectName(QStringLiteral("scrollZoom"));
    m_scrollZoom->setStyleSheet(QString::fromLatin1(barLook));
    m_scrollZoom->setRange(0, int(m_zooms.size()) - 1);
    m_scrollZoom->setPageStep(1);
    m_scrollZoom->setValue(m_zoomIndex);
    m_scrollZoom->setFocusPolicy(Qt::NoFocus);
    connect(m_scrollZoom, &QScrollBar::valueChanged, this, &Oscope::m_scrollZoomValueChanged);
}

Oscope::~Oscope() = default;

void Oscope::addCurve(const QString& name, float scale, QColor colour, int ordinate)
{
    if (scale == 0 || !std::isfinite(scale))
        qWarning().noquote() << "Oscope: nothing can be drawn of curve" << name << "on the scale" << scale;
    Curve& curve = m_curves[name];
    curve.scale = scale;
    curve.colour = colour;
    curve.ordinate = ordinate;
    curve.hidden = false;
    curve.samples.resize(capacity);
    update();
}

void Oscope::addOrdinate(const QString& name, float max)
{
    m_ordinates.append({name, max});
    update();
}

void Oscope::setVisible(QString name, bool on)
{
    const auto i = m_curves.find(name);
    if (i == m_curves.end()) {
        qWarning().noquote() << "Oscope: no curve" << name;
        return;
    }
    i->second.hidden = !on;
    update();
}

void Oscope::setValues(const QMap<QString, float>& values)
{
    m_values = values;
}

void Oscope::start()
{
    m_now = 0;
    m_offset = 0;
    m_origin = presentCentisec();
    m_timer.start();
}

void Oscope::setOffsetCentisec(long t)
{
    m_offset = std::clamp(t, std::max(0L, m_now - capacity), m_now);
}

void Oscope::setZoomIndex(int i)
{
    const bool follow = following();
    m_zoomIndex = std::clamp(i, 0, int(m_zooms.size()) - 1);
    m_scrollZoom->setValue(m_zoomIndex);
    if (follow)
        setCurrent();
    update();
}

void Oscope::setCurrent()
{
    setOffsetCentisec(m_now - long(zoom()) * m_width);
}

float Oscope::sample(const QString& name, long number) const
{
    const auto i = m_curves.find(name);
    return i != m_curves.end() && number >= 0 && number < m_now ? i->second.samples[size_t(number % capacity)]
                                                                : 0;
}

bool Oscope::following() const
{
    return m_offset + long(zoom()) * m_width >= m_now;
}

long Oscope::presentCentisec() const
{
    return long(QDateTime::currentMSecsSinceEpoch() / 10);
}

void Oscope::timeEvent()
{
    long wanted = presentCentisec() - m_origin;
    if (m_now < 0 || wanted > capacity) {
        m_now = 0;
        m_offset = 0;
        m_origin += wanted;
        wanted = 0;
        setCurrent();
    }
    const bool follow = following();
    recordUpTo(wanted);
    if (follow)
        setCurrent();
    setOffsetCentisec(m_offset);
    update();
}

// A pause of the clock is filled with the values known at its end.
void Oscope::recordUpTo(long wanted)
{
    if (m_now >= wanted)
        return;
    for (auto& [name, curve] : m_curves) {
        auto value = m_values.constFind(name);
        if (value == m_values.constEnd())
            value = m_values.insert(name, 0);
        float* const samples = curve.samples.data();
        for (long number = m_now; number < wanted; ++number)
            samples[number % capacity] = *value;
    }
    m_now = wanted;
}

void Oscope::pbCurrentClicked(bool)
{
    setCurrent();
    update();
}

void Oscope::m_scrollZoomValueChanged(int value)
{
    setZoomIndex(value);
}

QRect Oscope::plot() const
{
    return {m_leftMargin, 0, m_width, m_height};
}

bool Oscope::event(QEvent* event)
{
    if (liftMayBeLost(*this, *event))
        m_dragging = false;
    if (event->type() == QEvent::FontChange)
        place();
    return QWidget::event(event);
}

void Oscope::resizeEvent(QResizeEvent*)
{
    place();
}

// All measures come from the font.
void Oscope::place()
{
    const bool follow = following();
    const int line = fontMetrics().height();
    m_leftMargin = marginInHeights * line;
    m_width = std::max(0, width() - 2 * m_leftMargin);
    m_height = std::max(0, height() - m_leftMargin);

    // The controls stand below the times, as high as half a margin; the button is as wide as its text needs.
    const int side = m_leftMargin / 2;
    const int top = m_height + line + (m_leftMargin - line - side) / 2;
    m_scrollZoom->setGeometry(m_leftMargin, top, m_width / 4, side);
    const int text = m_pbCurrent->fontMetrics().horizontalAdvance(QStringLiteral("00:00:00"));
    const int wide = std::max(side, text + 3 * gap);
    m_pbCurrent->setGeometry(m_leftMargin + m_width - wide, top, wide, side);

    if (follow)
        setCurrent();
}

void Oscope::mousePressEvent(QMouseEvent* event)
{
    if (event->x() <= m_leftMargin)
        return;
    m_dragging = true;
    m_dragStartX = event->x();
    m_dragStartOffset = m_offset;
}

void Oscope::mouseMoveEvent(QMouseEvent* event)
{
    if (m_dragging)
        setOffsetCentisec(m_dragStartOffset - long(event->x() - m_dragStartX) * zoom());
}

void Oscope::mouseReleaseEvent(QMouseEvent*)
{
    m_dragging = false;
}
