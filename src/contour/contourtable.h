#pragma once

#include "weldtables.h"

#include <QStringList>

#include <memory>

class QTableWidget;
class SaveFile;

// The contour table of a weld: its points in the order of the path, with the scheme that says how they are
// read. The cells are the data: every operation reads its numbers back from them. Coordinates are in mm,
// those of a turning part in degrees, one for each axis of the scheme.
//
// The current point is the one that the machine stands at; the table marks it and takes no other selection.
// Only the scheme XYZ has frames of its own, one for each row, described in a column behind the axes.
class ContourTable
{
public:
    explicit ContourTable(QTableWidget* table); // not owned
    ~ContourTable();

    // Takes a scheme, whose axes become the columns, and empties the table. The centre of the circle stays.
    void init(std::unique_ptr<Schema> schema);
    Schema* schema() const { return m_schema.get(); } // null until the first `init`
    QStringList axisNames() const;                    // asserts without a scheme
    bool isXYZ() const;
    int frameColumn() const; // -1 without one

    // The points as the cells show them. A row that is not there asserts.
    int rowCount() const;
    int last() const { return rowCount() - 1; }
    QList<float> coords(int row) const;
    Frame frame(int row) const;
    WeldContour values() const; // of one pass; how many there are and their length is not the table's
    void markReach(const WeldContour& values); // points that the scheme cannot come to are red

    int current() const { return m_current; } // -1 when there is none
    void setCurrent(int row);
    void setMovesForward(bool forward) { m_movesForward = forward; } // the last walk went to a higher row

    // The points change.
    void addPoint(const QList<float>& point); // asserts unless it fills the columns
    void movePoint(int row, const QList<float>& delta);
    void setFrame(int row, const Frame& frame);
    bool teach(const QList<float>& live); // beside the current one; false where that is the same place
    void moveCurrentTo(const QList<float>& live);
    void moveAllTo(const QList<float>& live); // by as much as the current point
    void removeCurrent();
    void layRing(int count, QList<float> live); // the first at 0 degrees
    void invert();

    bool closed() const { return m_closed; }
    bool closedForward() const { return m_closedForward; }
    void setClosed(bool closed, bool forward);

    // The circle of an XYZr contour: the scheme has the diameter, the table the centre in the plane.
    float centerX() const { return m_centerX; }
    float centerY() const { return m_centerY; }
    void setCenter(float x, float y);
    bool fitCircle();                            // through the points; false where the former one stands
    void changeDiameter(float oldD, float newD); // moves the points

    // The rows of a contour file.
    QString line(int row) const;
    void load(SaveFile& file);

private:
    void insert(int row, const QList<float>& coords);
    void writeCoords(int row, const QList<float>& coords);
    void write(const WeldContour& contour);

    QTableWidget* const m_table;
    std::unique_ptr<Schema> m_schema;
    bool m_closed = false;
    bool m_closedForward = true;
    bool m_movesForward = true;
    int m_current = -1;
    float m_centerX = 0;
    float m_centerY = 0;
};
