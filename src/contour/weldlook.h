#pragma once

#include <QObject>
#include <QStringList>

class QSettings;
class QTableWidget;
class QTabWidget;

// The look of the weld's panel that its form cannot say: tabs, tables, program texts, scroll bars.
void dressWeldPanel(QTabWidget* panel);

// Keys of the column widths in the settings, in the order of the columns.
QStringList contourWidthKeys(const QStringList& axes);
QStringList techWidthKeys();

// Column widths in pixels. A stored one that would hide its column, or push the others off the screen, is not
// taken over; that of a hidden column stays in the settings as it was.
void restoreWidths(QTableWidget* table, const QSettings& settings, const QStringList& keys, int otherwise);
void keepWidths(const QTableWidget* table, QSettings& settings, const QStringList& keys);

// A column that takes the room which those before it leave in its table, but never less than its own width.
// That is the one it has at first, later what a hand drags it to.
class FittedColumn : public QObject
{
    Q_OBJECT
public:
    FittedColumn(QTableWidget* table, int column); // belongs to the table

    int ownWidth() const { return m_ownWidth; } // px

private:
    void fit();

    const int m_column;
    int m_ownWidth;
    bool m_fitting = false; // the column is being sized by the console itself
};
