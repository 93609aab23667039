#include "screenwalk.h"

#include "screen.h"
#include "screencheck.h"

#include <QCheckBox>
#include <QCursor>
#include <QListWidget>
#include <QMenu>
#include <QPainter>
#include <QPointer>
#include <QTabBar>
#include <QTableWidget>
#include <QTest>
#include <QTimer>

#include <algorithm>

namespace {

constexpr int firstPicture = 20; // ms until a window has its place
constexpr int answer = 8;        // ms until a touch has done its work
constexpr int mostOpenings = 40; // of one dialog
constexpr int columns = 4;
constexpr QSize small(640, 400);
constexpr int captionHeight = 24;

int onView(const QWidget* window)
{
    const auto widgets = window->findChildren<QWidget*>();
    return int(
        std::count_if(widgets.begin(), widgets.end(), [](QWidget* widget) { return widget->isVisible(); }));
}

} // namespace

bool ScreenWalk::visitNew(const QString& road, int depth)
{
    bool found = false;
    for (QWidget* window : windowsFromTop()) {
        if (m_open.contains(window) || !window->isVisible())
            continue;
        found = true;
        m_open.insert(window);
        const QPointer<QWidget> there(window);
        QTest::qWait(firstPicture);
        const QString name = window->windowTitle().isEmpty() ? screenPath(window) : window->windowTitle();
        m_look(window, road + " > " + name);
        if (depth > 0 && there && there->isVisible() && window->windowType() != Qt::ToolTip)
            touchAll(window, road + " > " + name, depth);
        m_open.remove(window);
        if (there && there->isVisible() && there->windowType() != Qt::ToolTip)
            there->close();
    }
    return found;
}

// Of a menu each entry; of a table each column of the second row, of a list the second row and the last.
QVector<QPair<QWidget*, QPoint>> ScreenWalk::places(QWidget* window) const
{
    QVector<QPair<QWidget*, QPoint>> found;
    if (auto* menu = qobject_cast<QMenu*>(window)) {
        for (QAction* action : menu->actions())
            found.append({menu, menu->actionGeometry(action).center()});
    }
    for (QWidget* widget : window->findChildren<QWidget*>()) {
        if (widget->window() != window->window() || !widget->isVisible())
            continue;
        if (auto* view = qobject_cast<QAbstractItemView*>(widget); view && view->model()) {
            const int last = view->model()->rowCount() - 1;
            for (int column = 0; column < view->model()->columnCount(); ++column)
                found.append({view->viewport(),
                              view->visualRect(view->model()->index(qMin(1, last), column)).center()});
            if (qobject_cast<QListWidget*>(widget))
                found.append({view->viewport(), view->visualRect(view->model()->index(last, 0)).center()});
        } else if (canBeTouched(widget) && !qobject_cast<QTabBar*>(widget) &&
                   !m_notTouched.contains(widget->objectName())) {
            const QPoint middle = widget->rect().center();
            const bool check = qobject_cast<QCheckBox*>(widget); // answers on its mark and its text
            found.append({widget, check ? QPoint(middle.y(), middle.y()) : middle});
        }
    }
    return found;
}

void ScreenWalk::touchAll(QWidget* window, const QString& road, int depth)
{
    const QPointer<QWidget> there(window);
    QVector<QPair<QPointer<QWidget>, QPoint>> all;
    for (const auto& place : places(window))
        all.append({place.first, place.second});
    for (const auto& place : qAsConst(all)) {
        if (!place.first || !place.first->isVisible() || !place.first->isEnabled())
            continue;
        const bool menu = qobject_cast<QMenu*>(window); // bears no name of its own
        const QString name = QStringLiteral("%1 %2 %3 %4")
                                 .arg(menu ? road : window->windowTitle(), screenPath(place.first))
                                 .arg(place.second.x())
                                 .arg(place.second.y());
        if (m_touched.contains(name))
            continue;
        m_touched.insert(name);
        const int before = onView(window);
        touch(place.first, place.second, road, depth);
        if (!there || !there->isVisible())
            return;
        if (onView(window) != before) { // the touch has changed the window itself
            m_look(window, road + " > " + screenPath(window));
            return touchAll(window, road, depth);
        }
    }
}

void ScreenWalk::touch(QWidget* widget, QPoint at, const QString& road, int depth)
{
    const QPointer<QWidget> there(widget);
    const QString name = widget->objectName().isEmpty() ? screenPath(widget) : widget->objectName();
    int before = -1;
    for (int time = 0; time < mostOpenings && before != m_touched.size() && there && there->isVisible();
         ++time) {
        before = m_touched.size();
        ++m_touches;
        bool opened = false;
        const auto visit = [&] { opened = visitNew(road + " > " + name, depth - 1) || opened; };
        QTimer watch; // a modal window holds up the touch that opened it
        QObject::connect(&watch, &QTimer::timeout, visit);
        watch.start(5);
        QCursor::setPos(widget->mapToGlobal(at)); // some windows open there
        QTest::mousePress(widget, Qt::LeftButton, Qt::NoModifier, at);
        QTest::qWait(answer);
        if (there)
            QTest::mouseRelease(there, Qt::LeftButton, Qt::NoModifier, at);
        QTest::qWait(answer);
        visit();
        if (there && !opened && qobject_cast<QTableWidget*>(there->parentWidget())) {
            QTest::mouseDClick(there, Qt::LeftButton, Qt::NoModifier, at);
            visit();
        }
        if (!opened)
            return;
    }
}

void ContactSheet::add(const QString& name, const QImage& picture)
{
    m_pictures.append({name, picture.scaled(small, Qt::KeepAspectRatio, Qt::SmoothTransformation)});
}

void ContactSheet::save(const QString& file)
{
    if (m_pictures.isEmpty())
        return;
    const QSize cell = small + QSize(10, captionHeight);
    const int rows = (m_pictures.size() + columns - 1) / columns;
    QImage sheet(columns * cell.width(), rows * cell.height(), QImage::Format_RGB32);
    sheet.fill(Qt::white);
    QPainter painter(&sheet);
    for (int i = 0; i < m_pictures.size(); ++i) {
        const QPoint corner(i % columns * cell.width(), i / columns * cell.height());
        painter.drawText(QRect(corner, QSize(small.width(), captionHeight)), Qt::AlignVCenter,
                         m_pictures[i].first);
        painter.drawImage(corner + QPoint(0, captionHeight), m_pictures[i].second);
    }
    painter.end();
    sheet.save(file);
    m_pictures.clear();
}
