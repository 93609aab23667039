#include "contourtable.h"

#include "contouredit.h"
#include "savefile.h"
#include "schema.h"
#include "weldgeometry.h"
#include "weldroles.h"

#include <QHeaderView>
#include <QTableWidget>

namespace {

constexpr int smallLetters = 9; // pt

QString frameText(const Frame& frame)
{
    switch (frame.type) {
    case Frame::End:
        return QStringLiteral("Конец");
    case Frame::Line:
        return QStringLiteral("Прямая");
    default:
        break;
    }
    const QString plane = frame.plane == 1   ? QStringLiteral("пл-XZ")
                          : frame.plane == 2 ? QStringLiteral("пл-YZ")
                                             : QStringLiteral("пл-XY");
    return QStringLiteral("Дуга, r=") + QString::number(double(frame.radius), 'f', 1) + QStringLiteral(", ") +
           (frame.direction == 1 ? QStringLiteral("пр. ч.с., ") : QStringLiteral("по ч.с., ")) + plane;
}

Frame frameOf(Frame::Type type)
{
    Frame frame;
    frame.type = type;
    return frame;
}

QList<float> difference(const QList<float>& to, const QList<float>& from)
{
    QList<float> delta;
    for (int i = 0; i < to.size() && i < from.size(); ++i)
        delta << to[i] - from[i];
    return delta;
}

Frame readFrame(SaveFile& file)
{
    Frame frame;
    const QString type = file.word();
    frame.type = type.toInt();
    if (type != QLatin1String("0")) {
        frame.direction = file.integer();
        frame.plane = file.integer();
        frame.radius = file.number();
    }
    return frame;
}

} // namespace

ContourTable::ContourTable(QTableWidget* table)
    : m_table(table)
{}

ContourTable::~ContourTable() = default;

void ContourTable::init(std::unique_ptr<Schema> schema)
{
    m_schema = std::move(schema);
    m_closed = false;
    m_movesForward = true;
    QStringList headers = axisNames();
    if (isXYZ())
        headers << QStringLiteral("Параметры");
    m_table->clear();
    m_table->setRowCount(0);
    m_table->setColumnCount(headers.size());
    m_table->setHorizontalHeaderLabels(headers);
    m_table->horizontalHeader()->setStretchLastSection(isXYZ());
    setCurrent(-1);
}

QStringList ContourTable::axisNames() const
{
    Q_ASSERT(m_schema);
    return m_schema->axisNames();
}

bool ContourTable::isXYZ() const
{
    return m_schema && !m_schema->circle() && !m_schema->rotate();
}

int ContourTable::frameColumn() const
{
    return isXYZ() ? axisNames().size() : -1;
}

// --- the points as the cells show them ---

int ContourTable::rowCount() const
{
    return m_table->rowCount();
}

QList<float> ContourTable::coords(int row) const
{
    QList<float> cells;
    const int axes = axisNames().size();
    for (int column = 0; column < axes; ++column) {
        const QTableWidgetItem* twi = m_table->item(row, column);
        Q_ASSERT(twi);
        cells << twi->text().toFloat();
    }
    return cells;
}

Frame ContourTable::frame(int row) const
{
    Frame frame;
    const QTableWidgetItem* item = isXYZ() ? m_table->item(row, frameColumn()) : nullptr;
    if (!item)
        return frame;
    frame.type = item->data(RowTypeRole).toInt();
    frame.radius = item->data(RowRadiusRole).toFloat();
    frame.direction = item->data(RowDirRole).toInt();
    frame.plane = item->data(RowPlaneRole).toInt();
    return frame;
}

WeldContour ContourTable::values() const
{
    WeldContour contour;
    contour.schema = m_schema.get();
    for (int row = 0; row < rowCount(); ++row)
        contour.rows.append({coords(row), frame(row)});
    contour.closed = m_closed;
    contour.closedForward = m_closedForward;
    contour.moveForward = m_movesForward;
    contour.centerX = m_centerX;
    contour.centerY = m_centerY;
    return contour;
}

void ContourTable::markReach(const WeldContour& values)
{
    const QVector<ContourRow>& rows = values.rows;
    for (int row = 0; row < rows.size(); ++row) {
        const bool valid = row == 0 || m_schema->validDistance(rows[row - 1].coords, rows[row].coords);
        for (int column = 0; column < m_table->columnCount(); ++column) {
            if (QTableWidgetItem* item = m_table->item(row, column))
                item->setForeground(QColor(valid ? Qt::black : Qt::red));
        }
    }
}

void ContourTable::setCurrent(int row)
{
    m_current = row;
    m_table->selectionModel()->setCurrentIndex(
        m_table->model()->index(row, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    if (row < 0)
        m_table->clearSelection();
}

// --- the points change ---

void ContourTable::writeCoords(int row, const QList<float>& coords)
{
    for (int column = 0; column < coords.size(); ++column) {
        QTableWidgetItem* item = m_table->item(row, column);
        if (!item) {
            item = new QTableWidgetItem;
            m_table->setItem(row, column, item);
        }
        item->setText(QString::number(double(coords[column]), 'f', 2));
    }
}

void ContourTable::insert(int row, const QList<float>& coords)
{
    m_table->insertRow(row);
    writeCoords(row, coords);
}

void ContourTable::setFrame(int row, const Frame& frame)
{
    Q_ASSERT(isXYZ());
    QTableWidgetItem* item = m_table->item(row, frameColumn());
    if (!item) {
        item = new QTableWidgetItem;
        QFont font = m_table->font();
        font.setPointSize(smallLetters);
        item->setFont(font);
        m_table->setItem(row, frameColumn(), item);
    }
    item->setData(RowTypeRole, frame.type);
    item->setData(RowRadiusRole, frame.radius);
    item->setData(RowDirRole, frame.direction);
    item->setData(RowPlaneRole, frame.plane);
    item->setText(frameText(frame));
}

void ContourTable::write(const WeldContour& contour)
{
    for (int row = 0; row < contour.rows.size(); ++row) {
        writeCoords(row, contour.rows[row].coords);
        if (isXYZ())
            setFrame(row, contour.rows[row].frame);
    }
}

void ContourTable::addPoint(const QList<float>& point)
{
    const QTableWidget* twContour = m_table;
    Q_ASSERT(point.size() == twContour->columnCount());
    insert(rowCount(), point);
}

void ContourTable::movePoint(int row, const QList<float>& delta)
{
    QList<float> point = coords(row);
    for (int i = 0; i < point.size() && i < delta.size(); ++i)
        point[i] += delta[i];
    if (m_schema->circle()) {
        if (point[0] < 0)
            point[0] += 360;
        else if (point[0] > 360)
            point[0] -= 360;
    }
    writeCoords(row, point);
}

bool ContourTable::teach(const QList<float>& live)
{
    const int row = m_movesForward + m_current;
    Q_ASSERT(row >= 0);
    if (m_current >= 0 && m_schema->distance(live, coords(m_current)) < samePlace)
        return false;
    insert(row, live);
    if (isXYZ()) {
        if (row > 0)
            setFrame(row - 1, frameOf(Frame::Line));
        // Only the last point of an open contour has no frame of its own: a point taught in between is
        // travelled through, and its way on must count in the length that the beam is laid along.
        const bool end = row > 0 && row == last() && !m_closed;
        setFrame(row, frameOf(end ? Frame::End : Frame::Line));
    }
    setCurrent(row);
    return true;
}

void ContourTable::moveCurrentTo(const QList<float>& live)
{
    movePoint(m_current, difference(live, coords(m_current)));
}

void ContourTable::moveAllTo(const QList<float>& live)
{
    const QList<float> delta = difference(live, coords(m_current));
    for (int row = 0; row < rowCount(); ++row)
        movePoint(row, delta);
}

void ContourTable::removeCurrent()
{
    m_table->removeRow(m_current);
    // Nothing leads on from the point that is the last now, nor may an arc to the deleted one stay in it.
    if (isXYZ() && last() >= 0 && !m_closed)
        setFrame(last(), frameOf(last() > 0 ? Frame::End : Frame::Line));
    if (last() < 0)
        m_movesForward = true;
    const int before = m_movesForward ? qMax(0, m_current - 1) : 0;
    setCurrent(qMin(before, last()));
}

void ContourTable::layRing(int count, QList<float> live)
{
    for (int i = 0; i < count; ++i) {
        live[0] = static_cast<float>(double(i) / count * 360);
        addPoint(live);
    }
    setCurrent(0);
}

void ContourTable::invert()
{
    WeldContour contour = values();
    invertContour(contour);
    write(contour);
}

void ContourTable::setClosed(bool closed, bool forward)
{
    m_closed = closed;
    m_closedForward = forward;
    if (isXYZ() && rowCount() > 0)
        setFrame(last(), frameOf(closed ? Frame::Line : Frame::End));
}

// --- the circle ---

void ContourTable::setCenter(float x, float y)
{
    m_centerX = x;
    m_centerY = y;
}

bool ContourTable::fitCircle()
{
    if (!m_schema->rotate() || rowCount() < 3)
        return false;
    const Circle circle = calcD(values());
    if (!circle.exists())
        return false; // points on a straight line
    m_schema->setD(static_cast<float>(circle.diameter));
    setCenter(static_cast<float>(circle.centerX), static_cast<float>(circle.centerY));
    return true;
}

void ContourTable::changeDiameter(float oldD, float newD)
{
    m_schema->setD(newD);
    WeldContour contour = values();
    recalcPointsForNewDiameter(contour, oldD, newD);
    write(contour);
}

// --- files ---

QString ContourTable::line(int row) const
{
    QStringList cells;
    for (int column = 0; column < axisNames().size(); ++column)
        cells << m_table->item(row, column)->text();
    return contourLine(cells, isXYZ(), frame(row));
}

// All rows that are announced: those that a cut file lost stand in the table as zeros, for the setter to see.
void ContourTable::load(SaveFile& file)
{
    const int rows = file.rowCount();
    const int axes = axisNames().size();
    for (int row = 0; row < rows; ++row) {
        QList<float> point;
        for (int axis = 0; axis < axes; ++axis)
            point << file.number();
        insert(row, point);
        if (isXYZ())
            setFrame(row, readFrame(file));
    }
}
