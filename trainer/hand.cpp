#include "hand.h"

#include "screen.h"

#include <QAbstractButton>
#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QMessageBox>
#include <QScreen>
#include <QTabWidget>
#include <QTableWidget>
#include <QThread>

#include <thread>

namespace {

constexpr int kPollPeriod = 10; // ms

QPoint centre(QWidget* widget)
{
    return widget->rect().center();
}

QString textOf(QWidget* widget)
{
    if (auto* label = qobject_cast<QLabel*>(widget))
        return label->text();
    if (auto* button = qobject_cast<QAbstractButton*>(widget))
        return button->text();
    if (auto* edit = qobject_cast<QLineEdit*>(widget))
        return edit->text();
    return widget->property("plainText").toString();
}

} // namespace

void Hand::expect(bool condition, const QString& what)
{
    if (!condition)
        throw HandError(what.toStdString());
}

QWidget* Hand::find(const QString& name) const
{
    for (QWidget* top : windowsFromTop()) {
        if (top->objectName() == name)
            return top;
        for (QWidget* child : top->findChildren<QWidget*>(name)) {
            if (child->isVisible())
                return child;
        }
    }
    return nullptr;
}

void Hand::onScreen(const std::function<void()>& function)
{
    QMetaObject::invokeMethod(qApp, function, Qt::BlockingQueuedConnection);
}

void Hand::waitFor(const QString& what, const std::function<bool()>& condition, int ms)
{
    QElapsedTimer timer;
    timer.start();
    bool holds = false;
    while (true) {
        onScreen([&] { holds = condition(); });
        if (holds)
            return;
        expect(timer.elapsed() < (ms ? ms : m_patience), QStringLiteral("no sign of: ") + what);
        QThread::msleep(kPollPeriod);
    }
}

void Hand::waitVisible(const QString& name, int ms)
{
    waitFor(
        name + QStringLiteral(" on the screen"), [&] { return find(name) != nullptr; }, ms);
}

void Hand::waitGone(const QString& name, int ms)
{
    waitFor(
        name + QStringLiteral(" gone"), [&] { return find(name) == nullptr; }, ms);
}

void Hand::waitEnabled(const QString& name, int ms)
{
    waitFor(
        name + QStringLiteral(" enabled"),
        [&] {
            QWidget* widget = find(name);
            return widget && widget->isEnabled();
        },
        ms);
}

void Hand::waitText(const QString& name, const QString& text, int ms)
{
    waitFor(
        QStringLiteral("\"%1\" in %2").arg(text, name),
        [&] {
            QWidget* widget = find(name);
            return widget && textOf(widget) == text;
        },
        ms);
}

void Hand::waitColour(const QString& name, const QColor& colour, int ms)
{
    waitFor(
        QStringLiteral("%1 in %2").arg(name, colour.name()),
        [&] {
            QWidget* widget = find(name);
            return widget && widget->palette().color(QPalette::Window) == colour;
        },
        ms);
}

Finger& Hand::finger()
{
    if (!m_finger)
        m_finger = Finger::ofPlatform(m_patience);
    return *m_finger;
}

Finger::Where Hand::spot(const QString& name, const std::function<QPoint(QWidget*)>& where) const
{
    return [this, name, where] {
        QWidget* widget = find(name);
        return Spot{widget, widget ? where(widget) : QPoint()};
    };
}

void Hand::tap(const QString& name)
{
    waitVisible(name);
    finger().touch(spot(name, centre), false);
}

void Hand::tap(const QString& name, QPoint at)
{
    waitVisible(name);
    finger().touch(spot(name, [at](QWidget*) { return at; }), false);
}

void Hand::press(const QString& name)
{
    waitVisible(name);
    finger().touch(spot(name, centre), true);
}

void Hand::press(const QString& name, QPoint at)
{
    waitVisible(name);
    finger().touch(spot(name, [at](QWidget*) { return at; }), true);
}

void Hand::slide(QPoint panel)
{
    finger().slideTo(panel);
}

void Hand::release()
{
    finger().lift();
}

void Hand::tapCell(const QString& table, int row, int column)
{
    waitVisible(table);
    QString port;
    QPoint at;
    onScreen([&] {
        auto* widget = qobject_cast<QTableWidget*>(find(table));
        if (!widget || !widget->item(row, 0))
            return;
        widget->scrollTo(widget->model()->index(row, column));
        at = widget->visualRect(widget->model()->index(row, column)).center() +
             widget->viewport()->mapTo(widget, QPoint());
        port = table;
    });
    expect(!port.isEmpty(), QStringLiteral("row %1 in %2").arg(row).arg(table));
    tap(table, at);
}

namespace {

QPoint itemPoint(QWidget* widget, const QString& text)
{
    auto* list = qobject_cast<QListWidget*>(widget);
    if (!list)
        return {};
    for (QListWidgetItem* item : list->findItems(text, Qt::MatchExactly)) {
        list->scrollToItem(item);
        return list->visualItemRect(item).center() + list->viewport()->mapTo(list, QPoint());
    }
    return {};
}

} // namespace

void Hand::tapItem(const QString& list, const QString& text)
{
    waitVisible(list);
    finger().touch(spot(list, [text](QWidget* widget) { return itemPoint(widget, text); }), false);
}

void Hand::tapMenu(const QString& text)
{
    QPoint at;
    waitFor(QStringLiteral("menu entry ") + text, [&] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (!menu)
            return false;
        for (QAction* action : menu->actions()) {
            if (action->text().startsWith(text)) {
                at = menu->actionGeometry(action).center();
                return true;
            }
        }
        return false;
    });
    finger().touch([at] { return Spot{QApplication::activePopupWidget(), at}; }, false);
}

void Hand::tapTab(const QString& tabWidget, int index)
{
    waitVisible(tabWidget);
    const auto tab = [index](QWidget* widget) {
        auto* tabs = qobject_cast<QTabWidget*>(widget);
        QTabBar* bar = tabs ? tabs->tabBar() : nullptr;
        return bar ? bar->mapTo(widget, bar->tabRect(index).center()) : QPoint();
    };
    finger().touch(spot(tabWidget, tab), false);
}

void Hand::key(int key, const QString& text)
{
    finger().key(key, text);
}

void Hand::type(const QString& text)
{
    for (const QChar c : text) {
        const ushort code = c.toUpper().unicode();
        key(code < 0x80 ? code : 0, QString(c));
    }
}

void Hand::enterNumber(const QString& number)
{
    waitVisible(QStringLiteral("pbEnter"));
    QPointer<QWidget> enter;
    onScreen([&] { enter = find(QStringLiteral("pbEnter")); });
    tap(QStringLiteral("pbClear"));
    const bool negative = number.startsWith('-');
    for (const QChar c : negative ? number.mid(1) : number)
        tap(c == '.' ? QStringLiteral("pbDecimal") : QStringLiteral("pb") + c);
    if (negative)
        tap(QStringLiteral("pbSign"));
    tap(QStringLiteral("pbEnter"));
    // Another keypad may follow at once.
    waitFor(QStringLiteral("keypad gone"), [&] { return !enter || !enter->isVisible(); });
}

void Hand::closeBox()
{
    waitFor(QStringLiteral("message box"),
            [] { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()) != nullptr; });
    const auto button = [] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        QAbstractButton* first = box ? box->buttons().value(0) : nullptr;
        return Spot{first, first ? centre(first) : QPoint()};
    };
    finger().touch(button, false);
}

QString Hand::text(const QString& name)
{
    QString result;
    waitVisible(name);
    onScreen([&] {
        if (QWidget* widget = find(name))
            result = textOf(widget);
    });
    return result;
}

QColor Hand::colour(const QString& name)
{
    QColor result;
    onScreen([&] {
        if (const QWidget* widget = find(name))
            result = widget->palette().color(QPalette::Window);
    });
    return result;
}

bool Hand::visible(const QString& name)
{
    bool result = false;
    onScreen([&] { result = find(name) != nullptr; });
    return result;
}

bool Hand::enabled(const QString& name)
{
    bool result = false;
    onScreen([&] {
        QWidget* widget = find(name);
        result = widget && widget->isEnabled();
    });
    return result;
}

QString Hand::cell(const QString& table, int row, int column)
{
    QString result;
    onScreen([&] {
        auto* widget = qobject_cast<QTableWidget*>(find(table));
        if (widget && widget->item(row, column))
            result = widget->item(row, column)->text();
    });
    return result;
}

int Hand::rows(const QString& table)
{
    int result = -1;
    onScreen([&] {
        if (auto* widget = qobject_cast<QTableWidget*>(find(table)))
            result = widget->rowCount();
    });
    return result;
}

int Hand::currentRow(const QString& table)
{
    int result = -1;
    onScreen([&] {
        if (auto* widget = qobject_cast<QTableWidget*>(find(table)))
            result = widget->currentRow();
    });
    return result;
}

void Hand::grab(const QString& file)
{
    onScreen([&] {
        if (screenHoldsPanel())
            QGuiApplication::primaryScreen()->grabWindow(0).save(file);
        else
            screenImage().save(file);
    });
}

namespace {

// Closes whatever is still open, until the last loop has ended.
void endConsole()
{
    for (QWidget* top : QApplication::topLevelWidgets()) {
        if (auto* dialog = qobject_cast<QDialog*>(top))
            dialog->reject();
    }
    while (QWidget* modal = QApplication::activeModalWidget()) {
        const auto dialogs = modal->findChildren<QDialog*>();
        for (QDialog* dialog : dialogs)
            dialog->reject();
        modal->close();
        if (modal == QApplication::activeModalWidget())
            break;
    }
    while (QWidget* popup = QApplication::activePopupWidget())
        popup->close();
    QCoreApplication::exit(0);
}

} // namespace

QString runScript(const std::function<void()>& console, const std::function<void()>& script)
{
    QString trouble;
    std::atomic<bool> over{false};
    bool consoleOver = false; // window's thread
    QObject panel;
    takePanel(&panel);
    // The thread starts with the console's first event loop, so that windows exist to be touched.
    std::thread operatorThread;
    QMetaObject::invokeMethod(
        qApp,
        [&] {
            if (consoleOver)
                return;
            operatorThread = std::thread([&] {
                try {
                    script();
                } catch (const HandError& error) {
                    trouble = QString::fromStdString(error.what());
                }
                over = true;
                QMetaObject::invokeMethod(
                    qApp,
                    [&] {
                        // An exit without a loop to end would end the first loop of the next console.
                        if (!consoleOver)
                            endConsole();
                    },
                    Qt::QueuedConnection);
            });
        },
        Qt::QueuedConnection);
    console();
    consoleOver = true;
    if (operatorThread.joinable()) {
        // The console may have ended first; the script's last questions still want an answer.
        while (!over)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        operatorThread.join();
    } else {
        trouble = QStringLiteral("the console did not come up");
    }
    // What was meant for this console must not reach the next one.
    QCoreApplication::sendPostedEvents();
    return trouble;
}
