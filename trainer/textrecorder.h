#pragma once

#include <QColor>
#include <QFont>
#include <QRectF>
#include <QString>
#include <QVector>

class QWidget;

// One piece of text, as a widget hands it to the painter. Rectangles in px of the widget.
struct PaintedText
{
    QString text;
    QFont font;
    QColor colour;
    QRectF ink;  // what the letters cover
    QRectF clip; // what the painter lets through
};

// The texts that the widget itself paints, without its children, in order.
QVector<PaintedText> paintedTexts(QWidget* widget);
