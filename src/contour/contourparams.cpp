#include "contourparams.h"

#include "asklength.h"
#include "contour.h"
#include "framed.h"
#include "schema.h"
#include "ui_contourparams.h"

#include <QCursor>

#include <cmath>

namespace {

constexpr int radiusDecimals = 2; // as programs write it

} // namespace

ContourParams::ContourParams(CONTOUR* contour, int row, QWidget* parent)
    : QDialog(parent)
    , ui(std::make_unique<Ui::ContourParams>())
    , m_contour(contour)
    , m_row(row)
{
    ui->setupUi(this);
    QSizePolicy kept = ui->lblNoArc->sizePolicy();
    kept.setRetainSizeWhenHidden(true);
    ui->lblNoArc->setSizePolicy(kept);
    ui->lblNoArc->hide();
    setFrame(Frame());
    const QPoint at = QCursor::pos();
    frameAt(at, QStringLiteral("Параметры кадра №") + QString::number(row), this, parent);
}

ContourParams::~ContourParams() = default;

void ContourParams::setFrame(const Frame& frame)
{
    ui->pbType->setChecked(frame.type == Frame::Arc);
    ui->cbClockWise->setChecked(frame.direction == 1);
    ui->radius->setValue(frame.radius, radiusDecimals);
    (frame.plane == 1 ? ui->pbXZ : frame.plane == 2 ? ui->pbYZ : ui->pbXY)->setChecked(true);
    updateEnables();
}

Frame ContourParams::frame() const
{
    Frame frame;
    frame.type = ui->pbType->isChecked() ? Frame::Arc : Frame::Line;
    frame.direction = ui->cbClockWise->isChecked() ? 1 : 0;
    frame.plane = ui->pbXZ->isChecked() ? 1 : ui->pbYZ->isChecked() ? 2 : 0;
    frame.radius = ui->radius->value();
    return frame;
}

void ContourParams::updateEnables()
{
    const bool arc = ui->pbType->isChecked();
    const bool round = m_contour->schema() && m_contour->schema()->round();
    ui->pbType->setText(arc ? QStringLiteral("Дуга") : QStringLiteral("Прямая"));
    ui->pbType->setEnabled(!round);
    ui->frmArc->setEnabled(arc && !round);
    ui->cbCalc->setEnabled(m_row >= 2);
}

void ContourParams::on_pbType_clicked()
{
    updateEnables();
}

void ContourParams::on_radius_clicked()
{
    const auto radius = askLength(ui->radiusTitle->text(), this, ui->radius->value(),
                                  [this](const QString& line) { emit message(line, true); });
    if (radius)
        ui->radius->setValue(*radius, radiusDecimals);
}

void ContourParams::on_cbCalc_clicked()
{
    ui->lblNoArc->hide();
    if (!ui->cbCalc->isChecked())
        return;
    const double radius = m_contour->calcDiameter(m_row, frame().plane) * 0.5;
    const bool found = std::isfinite(radius) && radius > 0;
    ui->lblNoArc->setVisible(!found);
    ui->cbCalc->setChecked(found);
    if (found)
        ui->radius->setValue(float(radius), radiusDecimals);
}

// The three points lie on another circle in another plane.
void ContourParams::on_pbXY_clicked()
{
    on_cbCalc_clicked();
}

void ContourParams::on_pbXZ_clicked()
{
    on_cbCalc_clicked();
}

void ContourParams::on_pbYZ_clicked()
{
    on_cbCalc_clicked();
}

void ContourParams::on_pbOn_clicked()
{
    const Frame chosen = frame();
    const auto refusal = lengthRefusal(ui->radiusTitle->text(), chosen.radius);
    if (chosen.type == Frame::Arc && refusal) {
        emit message(*refusal, true);
        return;
    }
    const auto write = [&](int row) {
        m_contour->addParameters(row, chosen.type, chosen.direction, chosen.plane, chosen.radius, true);
    };
    write(m_row - 1);
    if (ui->cbCalc->isChecked()) // the two frames between the three points become one arc
        write(m_row - 2);
    accept();
}

void ContourParams::on_pbCancel_clicked()
{
    reject();
}
