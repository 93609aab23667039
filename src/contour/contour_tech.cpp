#include "contour.h"
#include "numpad.h"
#include "schema.h"
#include "techsettings.h"
#include "trselect.h"
#include "ui_contour.h"
#include "weldgeometry.h"
#include "weldpattern.h"
#include "weldwarning.h"

namespace {

constexpr int columns = 7;
constexpr int rasterColumn = 6;
constexpr int shownWidth = 80; // px, of a column that comes into view

const QString stopText = QStringLiteral("Технол.останов");
const QString rasterOffText = QStringLiteral("ВЫКЛ");

const QColor commentColor(160, 160, 160);
const QColor offColor(192, 192, 192);

// The number columns: how they are asked for and how they are written.
struct TechColumn
{
    const char* title;
    int decimals;
    bool noSign;
};
constexpr TechColumn techColumns[] = {
    {"Дистанция, мм", 2, true},       {"Ток луча, мА", 1, true},        {"Ток фокусировки, мА", 0, true},
    {"Ток откл. по X, мА", 1, false}, {"Ток откл. по Y, мА", 1, false}, {"Скорость, мм/мин", 1, true},
};

QString number(float value, int decimals)
{
    return QString::number(double(value), 'f', decimals);
}

} // namespace

// --- rows as they stand in the cells ---

bool CONTOUR::isComment(int row) const
{
    return ui->twTechTab->columnSpan(row, 0) > 1;
}

bool CONTOUR::isOn(int row) const
{
    const QTableWidgetItem* item = ui->twTechTab->item(row, 0);
    return item && item->data(OnRole).toBool();
}

bool CONTOUR::isStop(int row) const
{
    return techText(row, 0) == stopText;
}

QString CONTOUR::techText(int row, int column) const
{
    const QTableWidgetItem* item = ui->twTechTab->item(row, column);
    return item ? item->text() : QString();
}

float CONTOUR::prevDistance(int row) const
{
    int above = qMax(0, row - 1);
    while (above > 0 && isComment(above))
        --above;
    return techText(above, 0).toFloat();
}

float CONTOUR::nextDistance(int row) const
{
    const int last = ui->twTechTab->rowCount() - 1;
    int below = qMin(last, row + 1);
    while (below < last && isComment(below))
        ++below;
    return techText(below, 0).toFloat();
}

Raster CONTOUR::raster(int row) const
{
    Raster raster;
    const QTableWidgetItem* item = ui->twTechTab->item(row, rasterColumn);
    if (!item || item->text().isEmpty())
        return raster;
    if (item->text() == rasterOffText) {
        raster.kind = Raster::Off;
        return raster;
    }
    raster.kind = Raster::On;
    raster.type = item->data(RasterTypeRole).toInt();
    raster.ampX = item->data(RasterAmpXRole).toFloat();
    raster.ampY = item->data(RasterAmpYRole).toFloat();
    raster.angle = item->data(RasterAngleRole).toInt();
    raster.freq = item->data(RasterFreqRole).toInt();
    raster.shiftX = item->data(RasterShiftXRole).toFloat();
    raster.shiftY = item->data(RasterShiftYRole).toFloat();
    raster.param = item->data(RasterParamRole).toFloat();
    raster.cw = item->data(RasterCwRole).toInt();
    return raster;
}

TechRow CONTOUR::techRow(int row) const
{
    TechRow values;
    values.comment = isComment(row);
    values.stop = isStop(row);
    values.on = isOn(row);
    if (values.comment)
        return values;
    values.path = techText(row, 0).toFloat();
    values.Ir = techText(row, 1).toFloat();
    values.If = techText(row, 2).toFloat();
    values.Ix = techText(row, 3).toFloat();
    values.Iy = techText(row, 4).toFloat();
    values.speed = techText(row, 5).toFloat();
    values.raster = raster(row);
    return values;
}

QVector<TechRow> CONTOUR::techRows() const
{
    QVector<TechRow> rows;
    rows.reserve(ui->twTechTab->rowCount());
    for (int row = 0; row < ui->twTechTab->rowCount(); ++row)
        rows.append(techRow(row));
    return rows;
}

WeldTables CONTOUR::tables() const
{
    return {contourValues(), techRows()};
}

// --- writing rows ---

void CONTOUR::writeTechRow(int row, const TechRow& values)
{
    const float cells[] = {values.path, values.Ir, values.If, values.Ix, values.Iy, values.speed};
    for (int column = 0; column < rasterColumn; ++column) {
        auto* item = new QTableWidgetItem(number(cells[column], techColumns[column].decimals));
        ui->twTechTab->setItem(row, column, item);
    }
    ui->twTechTab->setItem(row, rasterColumn, new QTableWidgetItem);
    ui->twTechTab->item(row, 0)->setData(OnRole, true);
    writeRaster(row, values.raster);
}

void CONTOUR::insertTechRow(int row, const TechRow& values)
{
    ui->twTechTab->insertRow(row);
    writeTechRow(row, values);
}

void CONTOUR::markFixedRow(int row)
{
    for (int column = 0; column < columns; ++column)
        ui->twTechTab->item(row, column)->setBackground(ui->twTechTab->palette().alternateBase());
    QFont font = ui->twTechTab->font();
    font.setWeight(75);
    font.setItalic(true);
    ui->twTechTab->item(row, 0)->setFont(font);
}

TechRow CONTOUR::restRow() const
{
    TechRow row;
    row.If = m_defaultIf;
    row.Ix = m_defaultIx;
    row.Iy = m_defaultIy;
    row.speed = ui->weldSpeed->value();
    return row;
}

void CONTOUR::resetTechTable()
{
    ui->twTechTab->clearSpans();
    ui->twTechTab->setRowCount(0);
    for (int row = 0; row < 2; ++row) {
        insertTechRow(row, restRow());
        markFixedRow(row);
    }
}

void CONTOUR::addTechPoint(float interval, float IrVal, float speed)
{
    const int row = ui->twTechTab->rowCount() - 1;
    Q_ASSERT(row > 0);
    Q_ASSERT(interval >= 0);
    addTechRow(prevDistance(row) + interval, IrVal, speed);
}

void CONTOUR::addLinearTackPoint(float interval, float IrVal, float speed)
{
    const int row = ui->twTechTab->rowCount() - 1;
    Q_ASSERT(row > 0);
    Q_ASSERT(interval >= 0);
    addTechRow(interval, IrVal, speed);
}

// The path is taken as it comes: a file or a keyboard may have brought a negative one into the row before.
void CONTOUR::addTechRow(float path, float IrVal, float speed)
{
    const int row = ui->twTechTab->rowCount() - 1;
    Q_ASSERT((IrVal >= 0) && (IrVal <= 800));
    TechRow values = restRow();
    values.path = path;
    values.Ir = IrVal;
    values.speed = speed;
    insertTechRow(row, values);
}

void CONTOUR::addPointToTech(float path)
{
    addPointsToTech({path});
}

// One after the other they would shift the rows below each time: all are put in their places at once.
void CONTOUR::addPointsToTech(QVector<float> paths)
{
    for (float& path : paths)
        path = number(path, techColumns[0].decimals).toFloat(); // as the table will show it
    QVector<float> table;
    for (int row = 1; row < ui->twTechTab->rowCount(); ++row)
        table.append(techText(row, 0).toFloat());
    const QVector<int> order = mergedOrder(table, paths);
    for (int last = order.size() - 1, before = table.size(); last >= 0; --last) {
        if (order[last] < table.size()) {
            --before;
            continue;
        }
        const int end = last + 1;
        while (last > 0 && order[last - 1] >= table.size())
            --last;
        ui->twTechTab->model()->insertRows(before + 1, end - last);
    }
    TechRow values = restRow();
    for (int i = 0; i < order.size(); ++i) {
        if (order[i] < table.size())
            continue;
        values.path = paths[order[i] - table.size()];
        writeTechRow(i + 1, values);
    }
}

void CONTOUR::addComment(const QString& text)
{
    const int row = ui->twTechTab->rowCount() - 1;
    Q_ASSERT(row > 0);
    ui->twTechTab->insertRow(row);
    auto* item = new QTableWidgetItem(text);
    item->setBackground(commentColor);
    item->setTextAlignment(8);
    item->setData(OnRole, false);
    ui->twTechTab->setItem(row, 0, item);
    ui->twTechTab->setSpan(row, 0, 1, columns);
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
    if (refused(tooManyRowsText(ui->twTechTab->rowCount() + added)))
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
        if (pass > 1 && m_closed)
            path += length * (rotate - 1);
        paths.append(path);
    }
    addPointsToTech(paths);
    updateTechTab();
    updateValidDistance();
}

void CONTOUR::setParamValueInTable(int column, float value, int decimals)
{
    for (int row = 0; row < ui->twTechTab->rowCount(); ++row) {
        QTableWidgetItem* item = ui->twTechTab->item(row, column);
        if (!item) {
            item = new QTableWidgetItem; // under the span of a comment
            ui->twTechTab->setItem(row, column, item);
        }
        item->setText(number(value, decimals));
    }
}

// --- state of the table ---

void CONTOUR::updateTechTab()
{
    const int row = ui->twTechTab->currentRow();
    const int last = ui->twTechTab->rowCount() - 1;
    ui->pbDelTechPoint->setEnabled(row > 0 && row < last);
    ui->pbInsTechPoint->setEnabled(row >= 1);
    ui->pbAddTechPoint->setEnabled(m_schema != nullptr);
}

// A failed check is told and marked in red; it forbids nothing.
void CONTOUR::updateValidDistance()
{
    const TableValidity validity = tableValidity(techRows());
    for (int row = 0; row < validity.rows.size(); ++row) {
        if (validity.rows[row] != TableValidity::None)
            ui->twTechTab->item(row, 0)->setForeground(
                QColor(validity.rows[row] == TableValidity::Valid ? Qt::black : Qt::red));
    }
    m_tableValid = validity.valid;
    if (!m_tableValid)
        emit message(QStringLiteral("[A]Ошибка заполнения технологической таблицы!"), true);
}

// --- the operator's hand ---

void CONTOUR::on_pbInsTechPoint_clicked()
{
    emit message(QStringLiteral("[I]Нажата кнопка 'Вставить точку' панели Технология"), false);
    const int row = ui->twTechTab->currentRow();
    Q_ASSERT(row >= 0);
    TechRow values = restRow();
    // Both deflections start from the X default in a row put in by hand, unlike the rows of the templates:
    // setters know this button so and correct Y where they need it.
    values.Iy = m_defaultIx;
    insertTechRow(row, values);
    updateTechTab();
    updateValidDistance();
}

void CONTOUR::on_pbDelTechPoint_clicked()
{
    emit message(QStringLiteral("[I]Нажата кнопка 'Удалить точку' панели Технология"), false);
    QTableWidget* twTechTab = ui->twTechTab;
    const int row = twTechTab->currentRow();
    Q_ASSERT(row > 0);
    // clang-format off
    Q_ASSERT(row < twTechTab->rowCount()-1);
    // clang-format on
    twTechTab->removeRow(row);
    updateTechTab();
    updateValidDistance();
}

void CONTOUR::on_weldSpeed_clicked()
{
    if (!askNumber(QStringLiteral("Скорость сварки, мм/мин"), ui->weldSpeed, 1, 0, maxSpeed))
        return;
    emit message(
        QStringLiteral("[I]Задана новая скорость сварки - %1 мм/мин").arg(double(ui->weldSpeed->value())),
        false);
    setParamValueInTable(5, ui->weldSpeed->value(), techColumns[5].decimals);
    edited(); // also where all rows have it already
}

void CONTOUR::onTechTabCellClicked(int row, int column)
{
    const bool fixed = row == 0 || row == ui->twTechTab->rowCount() - 1;
    if (fixed && column == 0)
        return;
    if (isComment(row))
        toggleBlock(row);
    else if (column < rasterColumn)
        askTechValue(row, column);
    else
        askRaster(row);
}

void CONTOUR::toggleBlock(int comment)
{
    const int last = ui->twTechTab->rowCount() - 1;
    for (int row = comment + 1; row < last && !isComment(row); ++row) {
        const bool on = !isOn(row);
        ui->twTechTab->item(row, 0)->setData(OnRole, on);
        for (int column = 0; column < columns; ++column)
            ui->twTechTab->item(row, column)->setBackground(on ? QColor(Qt::white) : offColor);
    }
}

void CONTOUR::askTechValue(int row, int column)
{
    const TechColumn& form = techColumns[column];
    Numpad numpad(QString::fromUtf8(form.title), this, techText(row, column).toFloat(), form.decimals == 0,
                  form.noSign, false);
    if (numpad.exec() != QDialog::Accepted)
        return;
    if (QTableWidgetItem* item = ui->twTechTab->item(row, column))
        item->setText(number(static_cast<float>(numpad.value()), form.decimals));
    updateValidDistance();
    updateGcode();
}

// --- raster ---

void CONTOUR::askRaster(int row)
{
    Raster values = raster(row);
    TRSelect dialog(this);
    dialog.setRaster(values);
    if (dialog.exec() != QDialog::Accepted || row >= ui->twTechTab->rowCount())
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
    writeRaster(row, values);
}

void CONTOUR::writeRaster(int row, const Raster& values)
{
    QTableWidgetItem* item = ui->twTechTab->item(row, rasterColumn);
    if (!item)
        return;
    // The settings stay in the cell when its text goes.
    item->setText(values.kind == Raster::Off ? rasterOffText : QString());
    item->setFont(ui->twTechTab->font());
    if (values.kind != Raster::On)
        return;
    QFont small = ui->twTechTab->font();
    small.setPointSize(9);
    item->setFont(small);
    item->setText(TRSelect::summary(values));
    item->setData(RasterTypeRole, values.type);
    item->setData(RasterAmpXRole, values.ampX);
    item->setData(RasterAmpYRole, values.ampY);
    item->setData(RasterAngleRole, values.angle);
    item->setData(RasterFreqRole, values.freq);
    item->setData(RasterShiftXRole, values.shiftX);
    item->setData(RasterShiftYRole, values.shiftY);
    item->setData(RasterParamRole, values.param);
    item->setData(RasterCwRole, values.cw);
}

// --- settings ---

void CONTOUR::on_pbSettings_clicked()
{
    TechSettings dialog(this, ui->pbSettings);
    connect(&dialog, &TechSettings::message, this, &CONTOUR::message);
    dialog.setCurrents(m_testMode, m_focusOn, m_yokeXOn, m_yokeYOn, m_defaultIf, m_defaultIx, m_defaultIy);
    dialog.setRoundParams(m_schema ? m_schema->D() : -1, m_centerX, m_centerY,
                          m_schema ? m_schema->Aux() : -1);
    dialog.setRoundEnabled(m_schema && m_schema->rotate());
    dialog.exec();
}

void CONTOUR::setTechSettings(bool test, bool focus, bool yokeX, bool yokeY, float If, float Ix, float Iy,
                              float D, int plane)
{
    m_testMode = test;
    m_focusOn = focus;
    m_yokeXOn = yokeX;
    m_yokeYOn = yokeY;
    m_defaultIf = If;
    m_defaultIx = Ix;
    m_defaultIy = Iy;
    const bool turned = m_schema && m_schema->Aux() != plane;
    if (m_schema) {
        m_schema->setD(D);
        m_schema->setAux(plane);
    }
    setProgramName(m_programName);
    showParam(2, m_focusOn, m_defaultIf);
    showParam(3, m_yokeXOn, m_defaultIx);
    showParam(4, m_yokeYOn, m_defaultIy);
    updatePlane(plane);
    if (turned) { // the way between the points is another one in another plane
        updateLength();
        updateValidDistance();
    }
}

void CONTOUR::showParam(int column, bool on, float value)
{
    ui->twTechTab->setColumnHidden(column, !on);
    if (!on)
        return;
    ui->twTechTab->setColumnWidth(column, shownWidth);
    setParamValueInTable(column, value, techColumns[column].decimals);
}
