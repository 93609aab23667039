#include "framed.h"

#include "widgets.h"

void frameAt(const QPoint& corner, const QString& title, QDialog* dialog, QWidget* parent)
{
    new MyFrame(title, corner.x(), corner.y(), 1, dialog, parent, true, true);
}

void frameBelow(QWidget* parent, const QString& title, QDialog* dialog)
{
    frameAt(parent ? parent->mapToGlobal(QPoint(0, parent->height() + 1)) : QPoint(), title, dialog, parent);
}
