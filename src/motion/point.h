#pragma once

#include <QDialog>
#include <QList>
#include <QStringList>

#include <memory>

class DriveTCPthread;

namespace Ui {
class Point;
}

// Keeps where the mechanics stand in small text files, and sends any one axis back to a coordinate of the
// table. Eight fixed rows, LX, LY, A, B, C, D, U1, V, each with its own speed; no row is selected at first.
class Point : public QDialog
{
    Q_OBJECT

public:
    static QStringList axes(); // in the order of the rows

    // `coords` in that order, mm or deg; what is missing counts as 0.
    Point(DriveTCPthread* drive, const QList<float>& coords, QWidget* parent);
    ~Point() override; // keeps the widths of the columns in the settings

    // A point file has a line for each row: the axis, a blank, the coordinate with two decimals. `dir` with
    // its final "/" and without the site's root, `name` without extension. A file that cannot be read
    // changes nothing; of a spoiled one the rows show what can be read, 0.00 for what is no number. One that
    // cannot be written stays as it was, and the journal tells so.
    void loadFile(const QString& dir, const QString& name);
    void saveFile(const QString& dir, const QString& name);

public slots:
    void onTableCellClicked(int row, int column); // selects the row

    void on_pbOpenFile_clicked();
    void on_pbSaveFile_clicked();
    void on_pbGoToPoint_clicked(); // nothing without a selected row
    void on_pbStopGoPoint_clicked();

signals:
    void message(const QString& line, bool shown); // journal line; shown in the list too

private:
    void setRow(int row, const QString& axis, float coord);

    std::unique_ptr<Ui::Point> m_ui;
    DriveTCPthread* m_drive;
    int m_row = -1; // selected
};
