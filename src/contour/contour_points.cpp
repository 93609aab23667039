#include "consolehost.h"
#include "contour.h"
#include "schema.h"
#include "ui_contour.h"
#include "weldgeometry.h"

// --- the points ---

QList<float> CONTOUR::coords() const
{
    QList<float> live;
    const ConsoleHost* window = host();
    const QStringList names = m_points.axisNames();
    for (const QString& name : names)
        live << (window ? window->coord(name) : 0.0f);
    return live;
}

WeldContour CONTOUR::contourValues() const
{
    WeldContour contour = m_points.values();
    contour.nrings = static_cast<int>(ui->nrings->value());
    contour.length = ui->length->value();
    return contour;
}

WeldTables CONTOUR::tables() const
{
    return {contourValues(), m_tech.rows()};
}

void CONTOUR::addParameters(int row, int type, int dir, int plane, float radius, bool update)
{
    Frame frame;
    frame.type = type;
    frame.direction = dir;
    frame.plane = plane;
    frame.radius = radius;
    m_points.setFrame(row, frame);
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
    m_points.changeDiameter(oldD, newD);
    updateHeader();
    ui->diameter->setValue(newD, 2);
    updateLength();
    updateValidDistance();
    updateGcode();
}

// --- what follows from the points ---

void CONTOUR::updateLength()
{
    const WeldContour contour = contourValues();
    ui->lblLength->setText(contour.closed ? QStringLiteral("Длина прохода,\nмм")
                                          : QStringLiteral("Длина шва,\nмм"));
    m_points.markReach(contour);
    ui->length->setValue(static_cast<float>(passLength(contour)), 2);
    // The last technology row always carries the whole path of the program.
    m_tech.setWholePath(totalLength(contour));
    edited();
}

void CONTOUR::updateD()
{
    if (m_points.fitCircle())
        showCircle();
}

void CONTOUR::showCircle()
{
    ui->centerX->setValue(m_points.centerX(), 2);
    ui->centerY->setValue(m_points.centerY(), 2);
    ui->diameter->setValue(schema()->D(), 2);
    updateHeader();
    updatePlane(schema()->Aux());
}

void CONTOUR::updateHeader()
{
    ui->lblConsts->setText(schema()->header());
}

void CONTOUR::updatePlane(int plane)
{
    ui->plane->setText(plane == 1   ? QStringLiteral("XZ")
                       : plane == 2 ? QStringLiteral("YZ")
                                    : QStringLiteral("XY"));
}

void CONTOUR::updateAfterEdit()
{
    ui->points->setValue(static_cast<float>(m_points.rowCount()), 0);
    updateLength();
    updateValidDistance();
    updateEnables();
}
