#pragma once

#include <QStringList>

class QWidget;

// What a window shows, as text, so that two windows can be compared wherever they are: one line for each
// widget of the window, sorted. A line holds
//
//   path | class | seen | place | text | ground | letters | picture | rows
//
// The path is that of object names from the window down; a widget without a name is called by its class and
// its number among its like. "seen" tells what is hidden and disabled; what is not on view has no place.
// Pictures, and what a widget of the console's own paints while it is seen, stand as checksums of their
// pixels. A table or list has all its cells as rows. The window's thread only.
QStringList screenState(const QWidget* window);

// The lines in which a state differs from the one expected: "-" in front of what was expected, "+" of what is
// there. Empty when they are equal. What `except` names, as patterns over paths in which "*" stands for
// anything, is not compared, nor is what lies within it.
QStringList screenDifference(const QStringList& expected, const QStringList& there,
                             const QStringList& except = {});
