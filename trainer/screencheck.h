#pragma once

#include <QImage>
#include <QRect>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QVector>

class QWidget;

// What is wrong with the picture of a widget, for an operator in gloves two metres away.
struct ScreenFinding
{
    // "clipped", "elided", "covered", "small letters", "contrast", "small target", "targets too close",
    // "dull when disabled", "outside"
    QString rule;
    QString path; // object names from the window down; a widget without one by its class
    QString what; // text and figures
    QRect place;  // px of the window
};

struct ScreenMeasure
{
    int widgets = 0;    // on view
    int texts = 0;      // pieces of text that were painted
    QSet<QString> seen; // names and classes of the widgets
    QVector<ScreenFinding> findings;
};

// Measures all that `part` and the widgets in it have on view, as their own painting shows it: every piece of
// text as the widgets hand it to the painter (font, colour, place and clip), and the pixels behind it.
//
// A text is clipped when its ink leaves what may be seen of its widget; where a view scrolls, its edge may
// cut what the finger can bring on view. Letters are at least 16 px high and stand out from their
// ground by 4.5 (WCAG 2). What can be touched is at least 48 px wide and high, 4 px from the next. What
// cannot be touched paints the same when it is disabled. The window's thread only.
ScreenMeasure measureScreen(QWidget* part);

// Whether a finger means this widget rather than what it lies on.
bool canBeTouched(const QWidget* widget);

// Of these widgets of `window`, by their names, each that another window hides in part.
QVector<ScreenFinding> coveredByWindows(QWidget* window, const QStringList& names);

// Object names from the window down, joined with "/".
QString screenPath(const QWidget* widget);
