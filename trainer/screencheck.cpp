#include "screencheck.h"

#include "screen.h"
#include "textrecorder.h"

#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMetaMethod>
#include <QScrollBar>
#include <QTabBar>

#include <algorithm>
#include <cmath>
#include <private/qmetaobject_p.h>
#include <private/qobject_p.h>

namespace {

constexpr int leastLetters = 16; // px
constexpr double leastContrast = 4.5;
constexpr int leastTarget = 48; // px
constexpr int leastGap = 4;     // px
constexpr double slack = 1.5;   // px by which hinting moves the edge of a letter

struct Target
{
    const QWidget* widget;
    QRect place; // px of the window
    QString name;
};

double luminance(const QColor& colour)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
           0.0722 * linear(colour.blueF());
}

double contrast(const QColor& a, const QColor& b)
{
    const double light = luminance(a);
    const double dark = luminance(b);
    return (std::max(light, dark) + 0.05) / (std::min(light, dark) + 0.05);
}

QColor over(const QColor& ground, const QColor& colour)
{
    const double share = colour.alphaF();
    const auto mix = [share](int below, int above) {
        return int(std::lround(below + (above - below) * share));
    };
    return {mix(ground.red(), colour.red()), mix(ground.green(), colour.green()),
            mix(ground.blue(), colour.blue())};
}

// The least contrast of the letters against the colours that make up their ground: the commonest one and
// those, as of a pattern, that are at least a third as common. Smoothed edges of letters are neither.
double contrastOn(const QImage& picture, const QRect& place, const QColor& letters)
{
    QHash<QRgb, int> pixels;
    const QRect seen = place.adjusted(-2, -2, 2, 2) & picture.rect();
    for (int y = seen.top(); y <= seen.bottom(); ++y) {
        for (int x = seen.left(); x <= seen.right(); ++x)
            ++pixels[picture.pixel(x, y)];
    }
    int commonest = 0;
    for (auto each = pixels.cbegin(); each != pixels.cend(); ++each) {
        if (QColor(each.key()) != over(QColor(each.key()), letters))
            commonest = std::max(commonest, each.value());
    }
    double least = commonest ? 21 : 1;
    for (auto each = pixels.cbegin(); each != pixels.cend(); ++each) {
        const QColor ground(each.key());
        const QColor shown = over(ground, letters);
        if (ground != shown && each.value() * 3 >= commonest)
            least = std::min(least, contrast(ground, shown));
    }
    return least;
}

bool isConnected(const QWidget* widget, const char* signal)
{
    const int method = widget->metaObject()->indexOfSignal(signal);
    return method >= 0 && QObjectPrivate::get(const_cast<QWidget*>(widget))
                              ->isSignalConnected(uint(
                                  QMetaObjectPrivate::signalIndex(widget->metaObject()->method(method))));
}

// What the widgets around it leave of a widget, px of the window.
QRect shownPart(const QWidget* widget)
{
    const QWidget* window = widget->window();
    QRect shown(widget->mapTo(window, QPoint()), widget->size());
    for (const QWidget* around = widget->parentWidget(); around && widget != window;
         around = around->parentWidget()) {
        shown &= QRect(around->mapTo(window, QPoint()), around->size());
        if (around == window)
            break;
    }
    return shown;
}

const QAbstractScrollArea* viewOf(const QWidget* widget)
{
    const auto* area = qobject_cast<const QAbstractScrollArea*>(widget->parentWidget());
    return area && area->viewport() == widget ? area : nullptr;
}

class Measurer
{
public:
    explicit Measurer(QWidget* part)
        : m_window(part->window())
        , m_picture(m_window->size(), QImage::Format_RGB32)
    {
        m_picture.fill(Qt::black);
        const QRect place(part->mapTo(m_window, QPoint()), part->size());
        m_window->render(&m_picture, place.topLeft(), place);
        const QRect panel(QPoint(), panelSize);
        if (!panel.contains(QRect(m_window->pos(), m_window->size())))
            add("outside", m_window,
                QStringLiteral("the panel: %1 x %2 at %3, %4")
                    .arg(m_window->width())
                    .arg(m_window->height())
                    .arg(m_window->x())
                    .arg(m_window->y()),
                m_window->rect());
        take(part);
        measureGaps();
    }

    ScreenMeasure result;

private:
    void add(const char* rule, const QWidget* widget, const QString& what, const QRect& place)
    {
        result.findings.append({QString::fromLatin1(rule), screenPath(widget), what, place});
    }

    void take(QWidget* widget)
    {
        if (!widget->isVisible() || widget->size().isEmpty())
            return;
        ++result.widgets;
        result.seen.insert(widget->objectName());
        for (const QMetaObject* kind = widget->metaObject(); kind; kind = kind->superClass())
            result.seen.insert(QString::fromLatin1(kind->className()));
        for (const PaintedText& text : paintedTexts(widget))
            measureText(widget, text);
        if (canBeTouched(widget))
            measureTarget(widget);
        else
            measureDisabled(widget);
        for (QObject* child : widget->children()) {
            auto* inner = qobject_cast<QWidget*>(child);
            if (inner && !inner->isWindow())
                take(inner);
        }
    }

    void measureText(QWidget* widget, const PaintedText& painted)
    {
        const QPoint corner = widget->mapTo(m_window, QPoint());
        const QRectF ink = painted.ink.translated(corner);
        const QRectF part = shownPart(widget);
        const QRectF seen = part & painted.clip.translated(corner);
        if (!ink.intersects(seen))
            return measureLost(widget, painted, ink);
        ++result.texts;
        const QString words = QStringLiteral("\"%1\"").arg(painted.text.trimmed());
        const QRect place = (ink & seen).toAlignedRect();
        if (painted.text.contains(QChar(0x2026)))
            add("elided", widget, words, place);
        if (isCut(widget, ink, seen))
            add("clipped", widget,
                QStringLiteral("%1 needs %2 x %3, has %4 x %5")
                    .arg(words)
                    .arg(std::ceil(ink.width()))
                    .arg(std::ceil(ink.height()))
                    .arg((ink & seen).width())
                    .arg((ink & seen).height()),
                place);
        if (const int pixels = QFontInfo(painted.font).pixelSize(); pixels < leastLetters)
            add("small letters", widget, QStringLiteral("%1 px: %2").arg(pixels).arg(words), place);
        const int middle = place.center().y();
        for (const int x : {place.left() + 2, place.center().x(), place.right() - 2}) {
            const QWidget* above = m_window->childAt(x, middle);
            if (above && above != widget && !widget->isAncestorOf(above) && !above->isAncestorOf(widget))
                return add("covered", widget, QStringLiteral("%1 by %2").arg(words, screenPath(above)),
                           place);
        }
        if (place.height() * 2 < ink.height()) // most of the line is behind the edge of its view
            return;
        const double ratio = contrastOn(m_picture, place, painted.colour);
        if (ratio < leastContrast)
            add("contrast", widget,
                QStringLiteral("%1%2: %3, letters %4")
                    .arg(ratio, 0, 'f', 1)
                    .arg(widget->isEnabled() ? QString() : QStringLiteral(" disabled"), words,
                         painted.colour.name()),
                place);
    }

    // A line of which nothing is left. Views paint more than they show.
    void measureLost(const QWidget* widget, const PaintedText& painted, const QRectF& ink)
    {
        if (!viewOf(widget) && !qobject_cast<const QAbstractScrollArea*>(widget->parentWidget()))
            add("clipped", widget, QStringLiteral("\"%1\" is not on view").arg(painted.text.trimmed()),
                ink.toAlignedRect() & m_window->rect());
    }

    static bool isCut(const QWidget* widget, const QRectF& ink, const QRectF& seen)
    {
        const QAbstractScrollArea* view = viewOf(widget);
        const bool upAndDown = !view || view->verticalScrollBar()->maximum() == 0;
        const auto* table = qobject_cast<const QAbstractScrollArea*>(view ? view->parentWidget() : nullptr);
        const auto* scrolled = table ? table : view; // a header goes with its table
        const bool sideways = !scrolled || scrolled->horizontalScrollBar()->maximum() == 0;
        return (sideways && (ink.left() < seen.left() - slack || ink.right() > seen.right() + slack)) ||
               (upAndDown && (ink.top() < seen.top() - slack || ink.bottom() > seen.bottom() + slack));
    }

    void measureTarget(const QWidget* widget)
    {
        const QPoint corner = widget->mapTo(m_window, QPoint());
        const QRect whole(corner, widget->size());
        if (shownPart(widget) != whole)
            add("outside", widget, QStringLiteral("what surrounds it"), whole);
        if (const auto* bar = qobject_cast<const QTabBar*>(widget)) {
            for (int i = 0; i < bar->count(); ++i)
                addTarget(widget, bar->tabRect(i).translated(corner), bar->tabText(i));
        } else if (const auto* menu = qobject_cast<const QMenu*>(widget)) {
            for (QAction* action : menu->actions()) {
                if (action->isEnabled() && !action->isSeparator())
                    addTarget(widget, menu->actionGeometry(action).translated(corner), action->text());
            }
        } else {
            addTarget(widget, whole, QString());
        }
    }

    void addTarget(const QWidget* widget, const QRect& place, const QString& name)
    {
        if (std::min(place.width(), place.height()) < leastTarget)
            add("small target", widget,
                QStringLiteral("%1 x %2 %3").arg(place.width()).arg(place.height()).arg(name).trimmed(),
                place);
        m_targets.append({widget, place, name});
    }

    // Neighbours within one bar or menu share their border.
    void measureGaps()
    {
        for (int i = 0; i < m_targets.size(); ++i) {
            const Target& one = m_targets[i];
            for (int j = i + 1; j < m_targets.size(); ++j) {
                const Target& other = m_targets[j];
                const int across =
                    std::max(other.place.left() - one.place.right(), one.place.left() - other.place.right()) -
                    1;
                const int down =
                    std::max(other.place.top() - one.place.bottom(), one.place.top() - other.place.bottom()) -
                    1;
                if (one.widget == other.widget || std::max(across, down) >= leastGap ||
                    one.widget->isAncestorOf(other.widget) || other.widget->isAncestorOf(one.widget))
                    continue;
                add("targets too close", one.widget,
                    QStringLiteral("%1 px to %2").arg(std::max(across, down)).arg(screenPath(other.widget)),
                    one.place | other.place);
            }
        }
    }

    // What tells of the machine, painted as it is and as it would be if it were enabled.
    void measureDisabled(QWidget* widget)
    {
        bool ofButton = false;
        for (const QWidget* around = widget; around && !ofButton; around = around->parentWidget())
            ofButton = canBeTouched(around);
        if (widget->isEnabled() || !qobject_cast<QLabel*>(widget) || ofButton)
            return;
        const auto painted = [widget] {
            QImage image(widget->size(), QImage::Format_ARGB32_Premultiplied);
            image.fill(Qt::transparent);
            widget->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
            return image.copy(widget->contentsRect()); // its frame tells nothing
        };
        const QImage dull = painted();
        widget->setAttribute(Qt::WA_Disabled, false);
        const QImage bright = painted();
        widget->setAttribute(Qt::WA_Disabled, true);
        if (dull != bright)
            add("dull when disabled", widget, QString(), shownPart(widget));
    }

    QWidget* m_window;
    QImage m_picture;
    QVector<Target> m_targets;
};

} // namespace

bool canBeTouched(const QWidget* widget)
{
    const auto* line = qobject_cast<const QLineEdit*>(widget);
    if (qobject_cast<const QScrollBar*>(widget) || (line && line->isReadOnly()))
        return false;
    if (const auto* bar = qobject_cast<const QTabBar*>(widget))
        return bar->count() > 0;
    return qobject_cast<const QAbstractButton*>(widget) || line || qobject_cast<const QMenu*>(widget) ||
           widget->inherits("QComboBox") || widget->inherits("LockGroup") || isConnected(widget, "clicked()");
}

ScreenMeasure measureScreen(QWidget* part)
{
    return Measurer(part).result;
}

QVector<ScreenFinding> coveredByWindows(QWidget* window, const QStringList& names)
{
    QVector<ScreenFinding> found;
    for (const QString& name : names) {
        const auto* widget = window->findChild<QWidget*>(name);
        if (!widget || !widget->isVisible())
            continue;
        const QRect place(widget->mapToGlobal(QPoint()), widget->size());
        const QWidgetList windows = windowsFromTop();
        for (const QWidget* above : windows) {
            if (above == window)
                break;
            if (above->geometry().intersects(place))
                found.append({QStringLiteral("covered"), screenPath(widget),
                              QStringLiteral("by \"%1\" %2").arg(above->windowTitle(), screenPath(above)),
                              place.translated(-window->pos())});
        }
    }
    return found;
}

QString screenPath(const QWidget* widget)
{
    const QString own = widget->objectName().isEmpty()
                            ? QString::fromLatin1(widget->metaObject()->className())
                            : widget->objectName();
    return widget->isWindow() || !widget->parentWidget()
               ? own
               : screenPath(widget->parentWidget()) + QLatin1Char('/') + own;
}
