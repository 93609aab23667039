#include "mywinstyle.h"

#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStyleOptionButton>

namespace {

constexpr int corner = 10;        // px, side of every image
constexpr double round = 8;       // px, rounding that the images are drawn for
constexpr int metricOfTouch = 65; // QStyle::PM_SmallIconSize

const QColor plainFace(158, 172, 255);
const QColor alarmFace(255, 32, 32);
const QColor accent(0, 214, 255);
const QColor disabledText(92, 98, 112); // of what could be touched, on the grounds of window and dialogs

bool isAlarm(const QWidget* button)
{
    static const QStringList names = {QStringLiteral("sbShutdown"), QStringLiteral("pbStop"),
                                      QStringLiteral("pbStopGoPoint")};
    return names.contains(button->objectName());
}

QColor washedOut(const QColor& colour)
{
    constexpr int paper = 222;
    return QColor((colour.red() + 3 * paper) / 4, (colour.green() + 3 * paper) / 4,
                  (colour.blue() + 3 * paper) / 4);
}

} // namespace

MyWinStyle::MyWinStyle()
    : QProxyStyle(QStringLiteral("windows"))
    , m_up(loadSlices(QStringLiteral("up")))
    , m_down(loadSlices(QStringLiteral("down")))
{}

MyWinStyle::NineSlice MyWinStyle::loadSlices(const QString& state)
{
    static const std::array<const char*, 9> places = {
        "top_left", "top", "top_right", "left", "mid", "right", "bottom_left", "bottom", "bottom_right"};
    NineSlice slices;
    for (size_t i = 0; i < places.size(); ++i)
        slices[i].load(QStringLiteral(":/images/style/%1_%2.png").arg(state, QLatin1String(places[i])));
    return slices;
}

QPainterPath MyWinStyle::getRoundRect(const QRect& rect)
{
    QPainterPath path;
    path.addRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), round - 0.5, round - 0.5);
    return path;
}

void MyWinStyle::drawBevel(QPainter* painter, const QRect& rect, const NineSlice& slices,
                           const QColor& face) const
{
    const int left = rect.left();
    const int top = rect.top();
    const int right = rect.right() + 1 - corner;
    const int bottom = rect.bottom() + 1 - corner;
    const int wide = rect.width() - 2 * corner;
    const int high = rect.height() - 2 * corner;

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->fillPath(getRoundRect(rect), face);

    painter->drawPixmap(left, top, slices[0]);
    painter->drawPixmap(right, top, slices[2]);
    painter->drawPixmap(left, bottom, slices[6]);
    painter->drawPixmap(right, bottom, slices[8]);
    if (wide > 0) {
        painter->drawTiledPixmap(left + corner, top, wide, corner, slices[1]);
        painter->drawTiledPixmap(left + corner, bottom, wide, corner, slices[7]);
    }
    if (high > 0) {
        painter->drawTiledPixmap(left, top + corner, corner, high, slices[3]);
        painter->drawTiledPixmap(right, top + corner, corner, high, slices[5]);
    }
    if (wide > 0 && high > 0)
        painter->drawTiledPixmap(left + corner, top + corner, wide, high, slices[4]);
    painter->restore();
}

void MyWinStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const
{
    switch (element) {
    case PE_PanelButtonCommand:
    case PE_PanelButtonBevel: {
        const bool on = option->state.testFlag(State_On);
        const bool down = on || option->state.testFlag(State_Sunken);
        const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
        if (!down && button && button->features.testFlag(QStyleOptionButton::Flat))
            return;
        // The accent tells "on"; a finger that is merely down leaves a button its own colour.
        const bool enabled = option->state.testFlag(State_Enabled);
        const QColor lit = enabled ? option->palette.highlight().color()
                                   : washedOut(option->palette.color(QPalette::Active, QPalette::Highlight));
        drawBevel(painter, option->rect, down ? m_down : m_up, on ? lit : option->palette.button().color());
        return;
    }
    case PE_FrameDefaultButton: // would stand square round a rounded face
        return;
    case PE_FrameFocusRect: // nobody walks over the buttons of a touch panel by keyboard
        if (qobject_cast<const QPushButton*>(widget))
            return;
        break;
    default:
        break;
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void MyWinStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                             const QWidget* widget) const
{
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    if (element == CE_PushButtonLabel && button && button->state.testFlag(State_On) &&
        button->state.testFlag(State_Enabled)) {
        QStyleOptionButton lit(*button);
        lit.palette.setColor(QPalette::ButtonText, button->palette.highlightedText().color());
        QProxyStyle::drawControl(element, &lit, painter, widget);
        return;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

int MyWinStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const
{
    return int(metric) == metricOfTouch ? 50 : QProxyStyle::pixelMetric(metric, option, widget);
}

int MyWinStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                          QStyleHintReturn* data) const
{
    if (hint == SH_EtchDisabledText) // a white shadow makes the text twice as hard to read
        return 0;
    return QProxyStyle::styleHint(hint, option, widget, data);
}

QPixmap MyWinStyle::generatedIconPixmap(QIcon::Mode mode, const QPixmap& pixmap,
                                        const QStyleOption* option) const
{
    if (mode == QIcon::Disabled && option && qobject_cast<const QLabel*>(option->styleObject))
        return pixmap;
    return QProxyStyle::generatedIconPixmap(mode, pixmap, option);
}

QColor MyWinStyle::restFace(const QWidget* button)
{
    return isAlarm(button) ? alarmFace : plainFace;
}

void MyWinStyle::setFace(QPalette& palette, const QColor& face)
{
    palette.setColor(QPalette::Button, face);
    palette.setColor(QPalette::Disabled, QPalette::Button, washedOut(face));
}

void MyWinStyle::polish(QPalette& palette)
{
    QProxyStyle::polish(palette);
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, Qt::black);
    palette.setColor(QPalette::Disabled, QPalette::Text, disabledText);
    palette.setColor(QPalette::Disabled, QPalette::WindowText,
                     palette.color(QPalette::Active, QPalette::WindowText));
}

void MyWinStyle::polish(QWidget* widget)
{
    QProxyStyle::polish(widget);
    if (!qobject_cast<QAbstractButton*>(widget))
        return;
    QPalette palette = widget->palette();
    if (!qobject_cast<QPushButton*>(widget)) { // a box to tick: its words stand on the dialog's ground
        palette.setColor(QPalette::Disabled, QPalette::WindowText, disabledText);
        widget->setPalette(palette);
        return;
    }
    setFace(palette, restFace(widget));
    palette.setColor(QPalette::ButtonText, isAlarm(widget) ? Qt::white : Qt::black);
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(52, 54, 66));
    palette.setColor(QPalette::Highlight, accent);
    palette.setColor(QPalette::HighlightedText, Qt::black);
    widget->setPalette(palette);
}
