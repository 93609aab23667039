#pragma once

#include <QImage>
#include <QSize>
#include <QWidgetList>

class QWindow;

// The machine's panel where there is no screen of its size: Qt's windows without a display, put together as
// the panel would show them. All functions belong to the window's thread.

constexpr QSize panelSize(1920, 1200); // pixels

// Whether the window system shows the whole panel, so that the console can be left as it is.
bool screenHoldsPanel();

// Makes menus and dialogs keep to the panel instead of the platform's own small screen, and gives the
// full-screen window of the console the panel's size, where the screen does not hold it. Once, before the
// first window; lives with `parent`.
void takePanel(QObject* parent);

// Visible windows from the topmost down: the open popup, the modal window, then the rest.
QWidgetList windowsFromTop();

// The topmost window that a touch at a point of the panel reaches, null for none.
QWidget* windowAt(const QPoint& point);

// The window that takes the keys: the open popup, the modal window, then the active one. Null for none.
QWindow* keyWindow();

// All visible windows in their places.
QImage screenImage();
