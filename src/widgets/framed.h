#pragma once

#include <QPoint>
#include <QString>

class QDialog;
class QWidget;

// How most dialogs come: in a title window on the panel, modal over the window of `parent`, visible at once.
// The corner is corrected so that all of it stays on the panel.
void frameAt(const QPoint& corner, const QString& title, QDialog* dialog, QWidget* parent);

// Right under what was touched; `parent` may be null.
void frameBelow(QWidget* parent, const QString& title, QDialog* dialog);
