#include "consolehost.h"
#include "contour.h"
#include "schema.h"
#include "ui_contour.h"
#include "weldgeometry.h"

namespace {

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

} // namespace

// --- cells and values ---

QList<float> CONTOUR::coords() const
{
    Q_ASSERT(m_schema);
    QList<float> live;
    const ConsoleHost* window = host();
    const QStringList names = m_schema->axisNames();
    for (const QString& name : names)
        live << (window ? window->coord(name) : 0.0f);
    return live;
}

QList<float> CONTOUR::coords(int row) const
{
    Q_ASSERT(m_schema);
    QList<float> cells;
    const int axes = m_schema->axisNames().size();
    for (int column = 0; column < axes; ++column) {
        const QTableWidgetItem* twi = ui->twContour->item(row, column);
        Q_ASSERT(twi);
        cells << twi->text().toFloat();
    }
    return cells;
}

void CONTOUR::writeCoords(int row, const QList<float>& coords)
{
    for (int column = 0; column < coords.size(); ++column) {
        QTableWidgetItem* item = ui->twContour->item(row, column);
        if (!item) {
            item = new QTableWidgetItem;
            ui->twContour->setItem(row, column, item);
        }
        item->setText(QString::number(double(coords[column]), 'f', 2));
    }
}

void CONTOUR::insertContourRow(int row, const QList<float>& coords)
{
    ui->twContour->insertRow(row);
    writeCoords(row, coords);
}

int CONTOUR::frameColumn() const
{
    return isXYZ() ? m_schema->axisNames().size() : -1;
}

Frame CONTOUR::frame(int row) const
{
    Frame frame;
    const QTableWidgetItem* item = isXYZ() ? ui->twContour->item(row, frameColumn()) : nullptr;
    if (!item)
        return frame;
    frame.type = item->data(RowTypeRole).toInt();
    frame.radius = item->data(RowRadiusRole).toFloat();
    frame.direction = item->data(RowDirRole).toInt();
    frame.plane = item->data(RowPlaneRole).toInt();
    return frame;
}

void CONTOUR::writeFrame(int row, const Frame& frame)
{
    QTableWidgetItem* item = ui->twContour->item(row, frameColumn());
    if (!item) {
        item = new QTableWidgetItem;
        QFont font = ui->twContour->font();
        font.setPointSize(9);
        item->setFont(font);
        ui->twContour->setItem(row, frameColumn(), item);
    }
    item->setData(RowTypeRole, frame.type);
    item->setData(RowRadiusRole, frame.radius);
    item->setData(RowDirRole, frame.direction);
    item->setData(RowPlaneRole, frame.plane);
    item->setText(frameText(frame));
}

WeldContour CONTOUR::contourValues() const
{
    WeldContour contour;
    contour.schema = m_schema.get();
    for (int row = 0; row < ui->twContour->rowCount(); ++row)
        contour.rows.append({coords(row), frame(row)});
    contour.closed = m_closed;
    contour.closedForward = m_closedForward;
    contour.moveForward = m_moveForward;
    contour.nrings = static_cast<int>(ui->nrings->value());
    contour.length = ui->length->value();
    contour.centerX = m_centerX;
    contour.centerY = m_centerY;
    return contour;
}

void CONTOUR::setCurrentPoint(int row)
{
    m_currentPoint = row;
    // The table takes no selection of its own: only the point that the machine stands at is marked.
    ui->twContour->selectionModel()->setCurrentIndex(ui->twContour->model()->index(row, 0),
                                                     QItemSelectionModel::ClearAndSelect |
                                                         QItemSelectionModel::Rows);
    if (row < 0)
        ui->twContour->clearSelection();
}

void CONTOUR::setColor(int row, bool valid)
{
    for (int column = 0; column < ui->twContour->columnCount(); ++column) {
        if (QTableWidgetItem* item = ui->twContour->item(row, column))
            item->setForeground(QColor(valid ? Qt::black : Qt::red));
    }
}

void CONTOUR::addPoint(const QList<float>& point)
{
    const QTableWidget* twContour = ui->twContour;
    Q_ASSERT(point.size() == twContour->columnCount());
    insertContourRow(twContour->rowCount(), point);
}

void CONTOUR::movePoint(int row, const QList<float>& delta)
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

void CONTOUR::addParameters(int row, int type, int dir, int plane, float radius, bool update)
{
    Q_ASSERT(isXYZ());
    Frame frame;
    frame.type = type;
    frame.direction = dir;
    frame.plane = plane;
    frame.radius = radius;
    writeFrame(row, frame);
    if (update)
        updateLength();
}

double CONTOUR::calcDistance(int row, const QList<float>& from, const QList<float>& to) const
{
    return frameLength(contourValues(), row, from, to);
}

double CONTOUR::calcLength(int count) const
{
    return ::calcLength(contourValues(), count);
}

double CONTOUR::calcDiameter(int row, int plane) const
{
    return ::calcDiameter(contourValues(), row, plane);
}

void CONTOUR::recalcPointsForNewDiameter(float oldD, float newD)
{
    m_schema->setD(newD);
    updateHeader();
    ui->diameter->setValue(newD, 2);
    WeldContour contour = contourValues();
    ::recalcPointsForNewDiameter(contour, oldD, newD);
    writeContour(contour);
    updateLength();
    updateValidDistance();
    updateGcode();
}

void CONTOUR::writeContour(const WeldContour& contour)
{
    for (int row = 0; row < contour.rows.size(); ++row) {
        writeCoords(row, contour.rows[row].coords);
        if (isXYZ())
            writeFrame(row, contour.rows[row].frame);
    }
}

// --- what follows from the points ---

void CONTOUR::updateLength()
{
    const WeldContour contour = contourValues();
    ui->lblLength->setText(m_closed ? QStringLiteral("Длина прохода,\nмм")
                                    : QStringLiteral("Длина шва,\nмм"));
    for (int row = 0; row < contour.rows.size(); ++row)
        setColor(row,
                 row == 0 || m_schema->validDistance(contour.rows[row - 1].coords, contour.rows[row].coords));
    ui->length->setValue(static_cast<float>(passLength(contour)), 2);
    // The last technology row always carries the whole path of the program.
    const int last = ui->twTechTab->rowCount() - 1;
    if (QTableWidgetItem* item = ui->twTechTab->item(last, 0))
        item->setText(QString::number(totalLength(contour), 'f', 2));
    edited();
}

void CONTOUR::updateD()
{
    if (!m_schema->rotate() || ui->twContour->rowCount() < 3)
        return;
    const Circle circle = calcD(contourValues());
    if (!circle.exists())
        return; // points on a straight line: the circle known so far stands
    m_schema->setD(static_cast<float>(circle.diameter));
    showCircle(static_cast<float>(circle.centerX), static_cast<float>(circle.centerY));
}

void CONTOUR::showCircle(float centerX, float centerY)
{
    ui->centerX->setValue(centerX, 2);
    ui->centerY->setValue(centerY, 2);
    ui->diameter->setValue(m_schema->D(), 2);
    m_centerX = ui->centerX->value();
    m_centerY = ui->centerY->value();
    updateHeader();
    updatePlane(m_schema->Aux());
}

void CONTOUR::updateHeader()
{
    ui->lblConsts->setText(m_schema->header());
}

void CONTOUR::updatePlane(int plane)
{
    ui->plane->setText(plane == 1   ? QStringLiteral("XZ")
                       : plane == 2 ? QStringLiteral("YZ")
                                    : QStringLiteral("XY"));
}

void CONTOUR::updateAfterEdit()
{
    ui->points->setValue(static_cast<float>(ui->twContour->rowCount()), 0);
    updateLength();
    updateValidDistance();
    updateEnables();
}
