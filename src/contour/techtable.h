#pragma once

#include "weldtables.h"

#include <QString>
#include <QVector>

class QTableWidget;
class SaveFile;

// What a row takes that is put in without currents of its own, and which of their columns are shown.
struct TechDefaults
{
    bool focusOn = false;
    bool yokeXOn = false;
    bool yokeYOn = false;
    float If = 700; // mA
    float Ix = 0;
    float Iy = 0;
};

// The technology table of a weld: what the beam does along the path of the contour. The cells are the data:
// every operation reads its numbers back from them. Paths are in mm from the start of the program across all
// passes, currents in mA, speeds in mm/min.
//
// After `reset` there are always a first and a last row, whose paths are fixed; rows come in between. A
// comment is one text over the whole row and switches the rows below it, up to the next one.
class TechTable
{
public:
    enum Column { Path, Ir, If, Ix, Iy, Speed, RasterCell, ColumnCount };

    // The columns before the raster: how their numbers are asked for and written.
    struct Number
    {
        const char* title;
        int decimals;
        bool noSign;
    };
    static const Number numbers[RasterCell];

    explicit TechTable(QTableWidget* table); // not owned; its seven columns are there

    // The rows as the cells show them.
    int rowCount() const;
    int last() const { return rowCount() - 1; }
    bool isFixed(int row) const { return row == 0 || row == last(); }
    bool isComment(int row) const;
    bool isOn(int row) const;                // false for comments and for rows switched off
    bool isStop(int row) const;              // the comment that is a technological stop
    float prevDistance(int row) const;       // path of the nearest row above that is no comment
    QString text(int row, int column) const; // empty for a missing cell
    float number(int row, int column) const;
    Raster raster(int row) const;
    TechRow row(int row) const;
    QVector<TechRow> rows() const;

    // A row without beam, everything else at its default.
    TechRow restRow(float speed) const;
    const TechDefaults& defaults() const { return m_defaults; }
    void setDefaults(const TechDefaults& defaults); // those shown go into every row

    // Rows come in. A current outside 0 to 800 asserts.
    void reset(float speed); // the two fixed rows alone
    void insert(int row, const TechRow& values);
    // Before the last one, by an interval from the path above or by a path from the start.
    void addTechPoint(float interval, float IrVal, float speed);
    void addLinearTackPoint(float interval, float IrVal, float speed);
    // As if one after the other, each before the first row that lies not below it.
    void addPoints(QVector<float> paths, float speed);
    void addComment(const QString& text);
    void addStop();
    void remove(int row); // asserts on a fixed one

    // Cells change. The settings of a raster outlive its text.
    void setNumber(int row, int column, float value);
    void setParamValueInTable(int column, float value, int decimals); // in all rows, comments included
    void setRaster(int row, const Raster& values);
    void setWholePath(double path);
    void toggleBlock(int comment);
    bool markValidity(); // paths that cannot be gone are red; false when there are some

    // The rows as contour files have them, with all numbers, and the record of a run with some.
    QString line(int row, const QVector<Column>& columns = {Path, Ir, If, Ix, Iy, Speed}) const;
    void load(SaveFile& file);

private:
    void write(int row, const TechRow& values);
    void markFixed(int row);
    void showColumn(int column, bool visible, float value);
    void addBeforeLast(float path, float IrVal, float speed);

    QTableWidget* const m_table;
    TechDefaults m_defaults;
};
