#include "monkey.h"

#include "screen.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTabBar>
#include <QThread>

#include <algorithm>
#include <cmath>

namespace {

constexpr int patience = 2000;   // ms, for a place that another window covers
constexpr int longestStay = 300; // ms
constexpr int longestWork = 120; // touches on one page, or on a walk
const QString anywhere = QStringLiteral("anywhere");

// Touched by less than the others: what ends a life, after which the console starts anew.
const QStringList seldom = {QStringLiteral("pbCloseProgram"), QStringLiteral("sbShutdown"),
                            QStringLiteral("pbChangeUser")};

// What a window is there for: a number that is never entered shows nothing.
const QStringList deeds = {QStringLiteral("pbEnter"), QStringLiteral("pbAdd"), QStringLiteral("pbCreate"),
                           QStringLiteral("pbOn"), QStringLiteral("pbYes")};

struct TypedKey
{
    int key;
    const char* text;
};
constexpr TypedKey typedKeys[] = {
    {Qt::Key_0, "0"},        {Qt::Key_1, "1"},
    {Qt::Key_5, "5"},        {Qt::Key_9, "9"},
    {Qt::Key_Minus, "-"},    {Qt::Key_Comma, ","},
    {Qt::Key_Period, "."},   {Qt::Key_A, "a"},
    {Qt::Key_Z, "Z"},        {0, "ж"},
    {Qt::Key_Space, " "},    {Qt::Key_Return, "\r"},
    {Qt::Key_Enter, "\r"},   {Qt::Key_Escape, "\x1b"},
    {Qt::Key_Tab, "\t"},     {Qt::Key_Backtab, ""},
    {Qt::Key_Backspace, ""}, {Qt::Key_Delete, ""},
    {Qt::Key_Up, ""},        {Qt::Key_Down, ""},
    {Qt::Key_Left, ""},      {Qt::Key_Right, ""},
    {Qt::Key_Home, ""},      {Qt::Key_End, ""},
    {Qt::Key_PageUp, ""},    {Qt::Key_PageDown, ""},
    {Qt::Key_F1, ""},        {Qt::Key_F2, ""},
    {Qt::Key_F5, ""},        {Qt::Key_F10, ""},
    {Qt::Key_Menu, ""},
};

// The buttons by which a window is left, in the order in which they are tried.
const QStringList wayOutNames = {QStringLiteral("pbCancel"), QStringLiteral("pbNo"),
                                 QStringLiteral("pbClose")};
const QStringList wayOutTexts = {QStringLiteral("Отмена"), QStringLiteral("Нет"), QStringLiteral("Закрыть"),
                                 QStringLiteral("OK"), QStringLiteral("&OK")};

QString nameOf(const QWidget* widget)
{
    if (!widget->objectName().isEmpty() && !widget->objectName().startsWith(QLatin1String("qt_")))
        return widget->objectName();
    const QString kind = QLatin1String(widget->metaObject()->className());
    const QWidget* parent = widget->parentWidget();
    return parent ? QStringLiteral("%1.%2%3")
                        .arg(nameOf(parent), kind)
                        .arg(parent->children().indexOf(const_cast<QWidget*>(widget)))
                  : kind;
}

const QAbstractItemView* tableOf(const QWidget* cells)
{
    return qobject_cast<const QAbstractItemView*>(cells->parentWidget());
}

// On a page and in a dialog (`near`) labels are numbers to enter, and the rows what the buttons work on; of
// the whole panel they are lamps and readings by the hundred.
double weightOf(const QWidget* widget, const QString& name, bool near)
{
    if (seldom.contains(name))
        return 0.4;
    if (deeds.contains(name))
        return 6;
    if (near && tableOf(widget))
        return 8;
    return qobject_cast<const QLabel*>(widget) && !near ? 0.5 : 2;
}

// Whether a finger means this widget rather than what it lies on.
bool answersTouch(const QWidget* widget)
{
    return qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QLineEdit*>(widget) ||
           qobject_cast<const QTabBar*>(widget) || qobject_cast<const QMenu*>(widget) ||
           qobject_cast<const QAbstractScrollArea*>(widget->parentWidget()) ||
           widget->metaObject()->indexOfSignal("clicked()") >= 0 || widget->inherits("LockGroup");
}

// Whether the panel shows this point of it.
bool reachable(const QWidget* widget, const QPoint& at)
{
    const QWidget* window = widget->window();
    return windowAt(widget->mapToGlobal(at)) == window &&
           window->childAt(widget->mapTo(window, at)) == widget;
}

void onScreen(const std::function<void()>& function)
{
    QMetaObject::invokeMethod(qApp, function, Qt::BlockingQueuedConnection);
}

} // namespace

Monkey::Monkey(quint64 seed)
    : m_seed(seed)
{}

Finger& Monkey::finger()
{
    if (!m_finger)
        m_finger = Finger::ofPlatform(patience);
    return *m_finger;
}

// FNV-1a over the purpose, then a finaliser that makes neighbouring numbers strangers: Qt's own hash differs
// from process to process.
double Monkey::chance(int number, const QString& purpose) const
{
    quint64 hash = 0xCBF29CE484222325U;
    for (const char byte : purpose.toUtf8())
        hash = (hash ^ quint8(byte)) * 0x100000001B3U;
    hash ^= m_seed * 0x9E3779B97F4A7C15U + quint64(number) * 0xD1B54A32D192ED03U;
    for (const quint64 factor : {0xBF58476D1CE4E5B9U, 0x94D049BB133111EBU})
        hash = (hash ^ (hash >> 30)) * factor;
    return double((hash ^ (hash >> 31)) >> 11) * 0x1p-53;
}

QWidget* Monkey::front()
{
    QWidget* popup = QApplication::activePopupWidget();
    return popup ? popup : QApplication::activeModalWidget();
}

QVector<Monkey::Target> Monkey::targets(const QWidget* page) const
{
    QVector<Target> found;
    QWidget* const first = front();
    for (QWidget* window : windowsFromTop()) {
        // What stands behind a question or a menu is covered by it; a touch anywhere reaches it all the same.
        if (first && window != first && !first->isAncestorOf(window))
            continue;
        found.append({anywhere, window, first ? 0.5 : 1.0});
        for (QWidget* widget : window->findChildren<QWidget*>()) {
            if (!widget->isVisible() || !widget->isEnabled() || widget->window() != window ||
                !answersTouch(widget) || (page && !page->isAncestorOf(widget)))
                continue;
            const QString name = nameOf(widget);
            found.append(
                {name, widget,
                 weightOf(widget, name, page || first) / std::pow(1.0 + m_touched.value(name), 0.75)});
        }
    }
    return found;
}

Monkey::Touch Monkey::keyFor(int number) const
{
    TypedKey key = typedKeys[int(chance(number, QStringLiteral("key")) * double(std::size(typedKeys)))];
    if (!key.key && QGuiApplication::platformName() == QLatin1String("xcb"))
        key = typedKeys[0]; // the server's keyboard has Latin letters alone
    Touch touch;
    touch.gesture = Touch::Key;
    touch.key = key.key;
    touch.text = QString::fromUtf8(key.text);
    touch.words = QStringLiteral("key 0x%1 \"%2\"").arg(key.key, 0, 16).arg(touch.text.trimmed());
    return touch;
}

Monkey::Touch Monkey::moveOn(int number)
{
    m_until = number + 1 + int(chance(number, QStringLiteral("until")) * longestWork);
    m_workedOn = nullptr;
    Touch touch;
    double highest = 0.8; // of the ranks; at first a walk's own
    for (QWidget* window : windowsFromTop()) {
        for (auto* tabs : window->findChildren<QTabWidget*>()) {
            for (int i = 0; i < tabs->count() && tabs->isVisible() && tabs->isEnabled(); ++i) {
                const auto buttons = double(tabs->widget(i)->findChildren<QAbstractButton*>().size());
                const double rank = std::pow(chance(number, tabs->tabText(i)), 10 / (buttons + 1));
                if (rank <= highest)
                    continue;
                highest = rank;
                m_workedOn = tabs;
                touch.spot = {tabs->tabBar(), tabs->tabBar()->tabRect(i).center()};
                touch.words = QStringLiteral("tap tab %1").arg(tabs->tabText(i));
            }
        }
    }
    return touch;
}

// Of a table a place on its rows, not on the empty ground below them.
QPoint Monkey::placeOn(const QWidget* widget, int number) const
{
    QSize size = widget->size();
    const auto* table = tableOf(widget);
    if (const int rows = table && table->viewport() == widget ? table->model()->rowCount() : 0)
        size.setHeight(
            qBound(1, table->visualRect(table->model()->index(rows - 1, 0)).bottom(), size.height()));
    return {int(chance(number, QStringLiteral("at x")) * size.width()),
            int(chance(number, QStringLiteral("at y")) * size.height())};
}

Monkey::Touch Monkey::choose(int number)
{
    if (number >= m_until && !front()) {
        const Touch tab = moveOn(number);
        if (tab.spot.widget)
            return tab;
    }
    const bool typing = qobject_cast<QLineEdit*>(QApplication::focusWidget());
    if (chance(number, QStringLiteral("keyboard")) < (typing ? 0.3 : 0.06))
        return keyFor(number);
    const bool astray = front() || chance(number, QStringLiteral("astray")) < 0.1;
    const QWidget* page =
        m_workedOn && m_workedOn->isVisible() && !astray ? m_workedOn->currentWidget() : nullptr;
    QVector<Target> ranked = targets(page);
    const auto rank = [&](const Target& target) {
        return std::log(1 - chance(number, target.name)) / target.weight; // at most 0, the highest is first
    };
    std::stable_sort(ranked.begin(), ranked.end(),
                     [&](const Target& a, const Target& b) { return rank(a) > rank(b); });
    Touch touch;
    QString name = QStringLiteral("nothing");
    for (const Target& target : qAsConst(ranked)) {
        const QPoint place = placeOn(target.widget, number);
        if (target.name != anywhere && !reachable(target.widget, place))
            continue;
        QWidget* const hit = target.name == anywhere ? target.widget->childAt(place) : nullptr;
        touch.spot = {hit ? hit : target.widget, hit ? hit->mapFrom(target.widget, place) : place};
        ++m_touched[target.name];
        name = nameOf(touch.spot.widget) + (hit ? QStringLiteral(" (anywhere)") : QString());
        break;
    }
    const double gesture = chance(number, QStringLiteral("gesture"));
    touch.gesture = gesture < 0.7    ? Touch::Tap
                    : gesture < 0.78 ? Touch::Twice
                    : gesture < 0.92 ? Touch::Hold
                                     : Touch::Drag;
    if (touch.gesture >= Touch::Hold) {
        const double stay = chance(number, QStringLiteral("stay"));
        touch.stay = int(stay * stay * stay * longestStay);
    }
    if (touch.gesture == Touch::Hold && chance(number, QStringLiteral("meanwhile")) < 0.3)
        touch.key = keyFor(number).key;
    const auto at = [&](const QSize& size, const QString& leg) {
        return QPoint(int(chance(number, leg + QStringLiteral(" x")) * size.width()),
                      int(chance(number, leg + QStringLiteral(" y")) * size.height()));
    };
    for (const QString& leg : {QStringLiteral("first"), QStringLiteral("second"), QStringLiteral("third")}) {
        if (touch.gesture == Touch::Drag && chance(number, leg) < 0.7 && touch.spot.widget)
            touch.road.append(touch.road.isEmpty() ? touch.spot.widget->mapToGlobal(at(QSize(300, 300), leg))
                                                   : at(panelSize, leg));
    }
    static const char* const gestures[] = {"tap", "twice", "hold", "drag"};
    touch.words = QStringLiteral("%1 %2 at %3,%4")
                      .arg(QLatin1String(gestures[touch.gesture]), name)
                      .arg(touch.spot.at.x())
                      .arg(touch.spot.at.y());
    if (touch.stay || touch.key)
        touch.words += QStringLiteral(", %1 ms, key 0x%2").arg(touch.stay).arg(touch.key, 0, 16);
    return touch;
}

Monkey::Touch Monkey::touch(int number)
{
    Touch result;
    onScreen([&] { result = choose(number); });
    return result;
}

Monkey::Touch Monkey::wayOut(const QWidget* window, int attempt) const
{
    Touch touch;
    touch.gesture = Touch::Key;
    touch.key = Qt::Key_Escape;
    touch.text = QStringLiteral("\x1b");
    touch.words = QStringLiteral("key Escape");
    for (QAbstractButton* button : window->findChildren<QAbstractButton*>()) {
        const bool out = wayOutNames.contains(button->objectName()) || wayOutTexts.contains(button->text());
        if (!out || !button->isEnabled() || !reachable(button, button->rect().center()) || attempt-- > 0)
            continue;
        touch.gesture = Touch::Tap;
        touch.spot = {button, button->rect().center()};
        touch.words = QStringLiteral("tap ") + nameOf(button);
        break;
    }
    return touch;
}

// A place that has come under another window is out of a finger's reach (X server only): no touch, then.
bool Monkey::reach(const Spot& spot, bool stay)
{
    try {
        finger().touch([spot] { return spot; }, stay);
        return true;
    } catch (const HandError&) {
        return false;
    }
}

void Monkey::make(const Touch& touch)
{
    const bool stays = touch.gesture == Touch::Hold || touch.gesture == Touch::Drag;
    if (touch.gesture == Touch::Key)
        return finger().key(touch.key, touch.text);
    if (!reach(touch.spot, stays))
        return;
    if (touch.gesture == Touch::Twice)
        reach(touch.spot, false);
    if (!stays)
        return;
    QThread::msleep(quint32(touch.stay));
    if (touch.key)
        finger().key(touch.key, QString());
    for (const QPoint& leg : touch.road)
        finger().slideTo(leg);
    finger().lift();
}

void Monkey::type(const QString& text)
{
    for (const QChar c : text)
        finger().key(c.toUpper().unicode() < 0x80 ? c.toUpper().unicode() : 0, QString(c));
}
