#include "contour.h"
#include "numpad.h"
#include "schema.h"
#include "techsettings.h"
#include "trselect.h"
#include "ui_contour.h"
#include "weldgeometry.h"
#include "weldwarning.h"

// --- rows ---

void CONTOUR::addPointToTech(float path)
{
    m_tech.addPoints({path}, ui->weldSpeed->value());
}

void CONTOUR::setParamValueInTable(int column, float value, int decimals)
{
    m_tech.setParamValueInTable(column, value, decimals);
}

void CONTOUR::addContourPoint(bool all, bool everyPass, int point, int pass)
{
    const auto rotate = static_cast<float>(pass);
    const PoLabel* nrings = ui->nrings;
    Q_ASSERT(rotate <= nrings->value());
    const float length = ui->length->value();
    const int passes = everyPass ? static_cast<int>(nrings->value()) : 1;
    const WeldContour contour = contourValues();
    const qint64 added = qint64(all ? contour.rows.size() : 1) * passes;
    if (refused(tooManyRowsText(m_tech.rowCount() + added)))
        return;
    QVector<float> paths;
    if (all) {
        const QVector<double> lengths = pointLengths(contour);
        for (int turn = 0; turn < passes; ++turn) {
            for (const double way : lengths)
                paths.append(static_cast<float>(way) + length * static_cast<float>(turn));
        }
    } else if (everyPass) {
        auto path = static_cast<float>(::calcLength(contour, point));
        for (int turn = 0; turn < passes; ++turn) {
            // The step grows with each pass (0, 1, 3, 6 ... lengths): tables made this way are in use, and
            // the same entry has to give the same rows.
            path += length * static_cast<float>(turn);
            paths.append(path);
        }
    } else {
        auto path = static_cast<float>(::calcLength(contour, point));
        if (pass > 1 && contour.closed)
            path += length * (rotate - 1);
        paths.append(path);
    }
    m_tech.addPoints(paths, ui->weldSpeed->value());
    updateTechTab();
    updateValidDistance();
}

// --- state of the table ---

void CONTOUR::updateTechTab()
{
    const int row = ui->twTechTab->currentRow();
    ui->pbDelTechPoint->setEnabled(row > 0 && row < m_tech.last());
    ui->pbInsTechPoint->setEnabled(row >= 1);
    ui->pbAddTechPoint->setEnabled(schema() != nullptr);
}

// A failed check is told and marked in red; it forbids nothing.
void CONTOUR::updateValidDistance()
{
    if (!m_tech.markValidity())
        emit message(QStringLiteral("[A]Ошибка заполнения технологической таблицы!"), true);
}

// --- the operator's hand ---

void CONTOUR::on_pbInsTechPoint_clicked()
{
    emit message(QStringLiteral("[I]Нажата кнопка 'Вставить точку' панели Технология"), false);
    const int row = ui->twTechTab->currentRow();
    Q_ASSERT(row >= 0);
    TechRow values = m_tech.restRow(ui->weldSpeed->value());
    // Both deflections start from the X default in a row put in by hand, unlike the rows of the templates:
    // setters know this button so and correct Y where they need it.
    values.Iy = values.Ix;
    m_tech.insert(row, values);
    updateTechTab();
    updateValidDistance();
}

void CONTOUR::on_pbDelTechPoint_clicked()
{
    emit message(QStringLiteral("[I]Нажата кнопка 'Удалить точку' панели Технология"), false);
    m_tech.remove(ui->twTechTab->currentRow());
    updateTechTab();
    updateValidDistance();
}

void CONTOUR::onTechTabCellClicked(int row, int column)
{
    if (m_tech.isFixed(row) && column == TechTable::Path)
        return;
    if (m_tech.isComment(row))
        m_tech.toggleBlock(row);
    else if (column < TechTable::RasterCell)
        askTechValue(row, column);
    else
        askRaster(row);
}

void CONTOUR::askTechValue(int row, int column)
{
    const TechTable::Number& form = TechTable::numbers[column];
    Numpad numpad(QString::fromUtf8(form.title), this, m_tech.number(row, column), form.decimals == 0,
                  form.noSign, false);
    if (numpad.exec() != QDialog::Accepted)
        return;
    m_tech.setNumber(row, column, static_cast<float>(numpad.value()));
    updateValidDistance();
    updateGcode();
}

// --- raster ---

void CONTOUR::askRaster(int row)
{
    Raster values = m_tech.raster(row);
    TRSelect dialog(this);
    dialog.setRaster(values);
    if (dialog.exec() != QDialog::Accepted || row >= m_tech.rowCount())
        return;
    switch (dialog.choice()) {
    case TRSelect::On:
        values = dialog.raster();
        values.kind = Raster::On;
        break;
    case TRSelect::Off:
        values.kind = Raster::Off;
        break;
    case TRSelect::Leave:
        values.kind = Raster::Keep;
        break;
    }
    m_tech.setRaster(row, values);
}

// --- settings ---

void CONTOUR::on_pbSettings_clicked()
{
    TechSettings dialog(this, ui->pbSettings);
    connect(&dialog, &TechSettings::message, this, &CONTOUR::message);
    const Schema* scheme = schema();
    dialog.setCurrents(m_testMode, m_tech.defaults());
    dialog.setRoundParams(scheme ? scheme->D() : -1, m_points.centerX(), m_points.centerY(),
                          scheme ? scheme->Aux() : -1);
    dialog.setRoundEnabled(scheme && scheme->rotate());
    dialog.exec();
}

void CONTOUR::setTechSettings(bool test, bool focus, bool yokeX, bool yokeY, float If, float Ix, float Iy,
                              float D, int plane)
{
    m_testMode = test;
    Schema* scheme = m_points.schema();
    const bool turned = scheme && scheme->Aux() != plane;
    if (scheme) {
        scheme->setD(D);
        scheme->setAux(plane);
    }
    setProgramName(m_programName);
    m_tech.setDefaults({focus, yokeX, yokeY, If, Ix, Iy});
    updatePlane(plane);
    if (turned) { // the way between the points is another one in another plane
        updateLength();
        updateValidDistance();
    }
}
