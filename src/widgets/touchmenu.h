#pragma once

#include <QStringList>

class QWidget;

// The style sheet of a menu for fingers.
QString touchMenuLook();

// A menu for fingers: entries at least 50 px high, opened under `button` and kept on the screen.
// Blocks until the operator answers; the index of the entry chosen, -1 when the menu was dismissed.
int touchMenu(QWidget* button, const QString& title, const QStringList& entries);
