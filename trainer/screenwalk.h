#pragma once

#include <QImage>
#include <QPair>
#include <QPoint>
#include <QSet>
#include <QStringList>
#include <QVector>
#include <QWidgetList>

#include <functional>

// Touches all that can be touched in a window, visits what that opens (dialogs, keypads, menus, popups, the
// reasons under a finger), and closes it again. A place is touched once in a group of states, so that a
// dialog that a touch closes is opened again by its own opener as long as something in it is left. The
// window's thread.
class ScreenWalk
{
public:
    // `look` sees each window that opens, with the road of touches that led there.
    using Look = std::function<void(QWidget* window, const QString& road)>;

    // What bears a name of `notTouched` is left alone.
    ScreenWalk(Look look, const QStringList& notTouched)
        : m_look(std::move(look))
        , m_notTouched(notTouched)
    {}

    void stays(QWidget* window) { m_open.insert(window); } // is there and is not visited
    void forget() { m_touched.clear(); }                   // a new group of states begins

    // `depth`: how many windows may open one over the other.
    void touchAll(QWidget* window, const QString& road, int depth);
    // Touches one place, until nothing new is left in what that opens.
    void touch(QWidget* widget, QPoint at, const QString& road, int depth);
    // Visits and closes the windows that are new.
    bool visitNew(const QString& road, int depth);

    int touches() const { return m_touches; }

private:
    QVector<QPair<QWidget*, QPoint>> places(QWidget* window) const;

    Look m_look;
    QStringList m_notTouched;
    QSet<QWidget*> m_open;
    QSet<QString> m_touched;
    int m_touches = 0;
};

// Pictures of states in one picture, each with its name.
class ContactSheet
{
public:
    void add(const QString& name, const QImage& picture);
    void save(const QString& file); // and begins anew; nothing is written without pictures

private:
    QVector<QPair<QString, QImage>> m_pictures;
};
