#pragma once

#include "finger.h"

#include <QHash>
#include <QTabWidget>
#include <QVector>

// A hand that touches whatever can be touched: buttons, numbers, tables, tabs, menus, any place of the panel;
// taps, quick double touches, fingers that stay and slide away, keys. Between walks over the whole panel it
// turns to a tab and works on that page for a while, as whoever teaches a contour does. What it does at a
// touch follows from the seed, the number of the touch and what it touched before. It chooses by name: of
// what is on the screen the one that the seed ranks first, so that it still takes the same one when a button
// beside it is disabled this time.
//
// All calls belong to a thread of its own (see `runScript`), never to the window's.
class Monkey
{
public:
    struct Touch
    {
        enum Gesture { Tap, Twice, Hold, Drag, Key };

        QString words; // what is touched and how, for a record
        Gesture gesture = Tap;
        Spot spot;
        QVector<QPoint> road; // where the finger slides before it lifts, px of the panel
        int stay = 0;         // time on the screen, ms
        int key = 0;          // Qt's number; of a Hold the key that is touched meanwhile, 0 for none
        QString text;         // what the key types
    };

    explicit Monkey(quint64 seed);

    Touch touch(int number); // the one of that number, on the screen as it is now
    Touch wayOut(const QWidget* window, int attempt) const; // its own buttons, one an attempt; then Escape
    void make(const Touch& touch);                          // until the finger is up and the console rests
    void type(const QString& text);                         // on the hardware keyboard

    // A number from 0 to below 1 for this touch and purpose.
    double chance(int number, const QString& purpose) const;

    // What stands before all others, null for none: the open popup, then the modal window. On the window's
    // thread.
    static QWidget* front();

private:
    struct Target
    {
        QString name;
        QWidget* widget;
        double weight;
    };
    QVector<Target> targets(const QWidget* page) const; // of all that can be touched where `page` is null; on
                                                        // the window's thread, as the next three
    Touch choose(int number);
    Touch keyFor(int number) const;
    Touch moveOn(int number); // to a tab, or with no spot to the panel as a whole; and for how long
    Finger& finger();
    bool reach(const Spot& spot, bool stay);
    QPoint placeOn(const QWidget* widget, int number) const;

    const quint64 m_seed;
    QHash<QString, int> m_touched;    // how often, by name
    QPointer<QTabWidget> m_workedOn;  // to whose page the hand keeps, null while it walks
    int m_until = 0;                  // touch at which it moves on
    std::unique_ptr<Finger> m_finger; // null until the first touch
};
