#include "techtable.h"

#include "savefile.h"
#include "trselect.h"
#include "weldgeometry.h"
#include "weldpattern.h"
#include "weldroles.h"

#include <QTableWidget>

namespace {

constexpr int shownWidth = 80;  // px, of a column that comes into view
constexpr int smallLetters = 9; // pt

const QString stopText = QStringLiteral("Технол.останов");
const QString rasterOffText = QStringLiteral("ВЫКЛ");

const QColor commentColor(160, 160, 160);
const QColor offColor(192, 192, 192);

QString shown(float value, int decimals)
{
    return QString::number(double(value), 'f', decimals);
}

Raster readRaster(SaveFile& file)
{
    Raster raster;
    raster.kind = Raster::On;
    raster.type = file.integer();
    raster.ampX = file.number();
    raster.ampY = file.number();
    raster.angle = file.integer();
    raster.freq = file.integer();
    raster.shiftX = file.number();
    raster.shiftY = file.number();
    raster.param = file.number();
    raster.cw = file.integer();
    return raster;
}

TechRow readRow(SaveFile& file)
{
    TechRow values;
    values.path = file.number();
    values.Ir = file.number();
    values.If = file.number();
    values.Ix = file.number();
    values.Iy = file.number();
    values.speed = file.number();
    const int kind = file.integer();
    if (kind == Raster::On)
        values.raster = readRaster(file);
    else
        values.raster.kind = kind == Raster::Off ? Raster::Off : Raster::Keep;
    return values;
}

} // namespace

const TechTable::Number TechTable::numbers[] = {
    {"Дистанция, мм", 2, true},       {"Ток луча, мА", 1, true},        {"Ток фокусировки, мА", 0, true},
    {"Ток откл. по X, мА", 1, false}, {"Ток откл. по Y, мА", 1, false}, {"Скорость, мм/мин", 1, true},
};

TechTable::TechTable(QTableWidget* table)
    : m_table(table)
{}

// --- the rows as the cells show them ---

int TechTable::rowCount() const
{
    return m_table->rowCount();
}

bool TechTable::isComment(int row) const
{
    return m_table->columnSpan(row, 0) > 1;
}

bool TechTable::isOn(int row) const
{
    const QTableWidgetItem* item = m_table->item(row, 0);
    return item && item->data(OnRole).toBool();
}

bool TechTable::isStop(int row) const
{
    return text(row, 0) == stopText;
}

float TechTable::prevDistance(int row) const
{
    int above = qMax(0, row - 1);
    while (above > 0 && isComment(above))
        --above;
    return number(above, Path);
}

QString TechTable::text(int row, int column) const
{
    const QTableWidgetItem* item = m_table->item(row, column);
    return item ? item->text() : QString();
}

float TechTable::number(int row, int column) const
{
    return text(row, column).toFloat();
}

Raster TechTable::raster(int row) const
{
    Raster raster;
    const QTableWidgetItem* item = m_table->item(row, RasterCell);
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

TechRow TechTable::row(int row) const
{
    TechRow values;
    values.comment = isComment(row);
    values.stop = isStop(row);
    values.on = isOn(row);
    if (values.comment)
        return values;
    values.path = number(row, Path);
    values.Ir = number(row, Ir);
    values.If = number(row, If);
    values.Ix = number(row, Ix);
    values.Iy = number(row, Iy);
    values.speed = number(row, Speed);
    values.raster = raster(row);
    return values;
}

QVector<TechRow> TechTable::rows() const
{
    QVector<TechRow> rows;
    rows.reserve(rowCount());
    for (int i = 0; i < rowCount(); ++i)
        rows.append(row(i));
    return rows;
}

// --- defaults ---

TechRow TechTable::restRow(float speed) const
{
    TechRow row;
    row.If = m_defaults.If;
    row.Ix = m_defaults.Ix;
    row.Iy = m_defaults.Iy;
    row.speed = speed;
    return row;
}

void TechTable::setDefaults(const TechDefaults& defaults)
{
    m_defaults = defaults;
    showColumn(If, defaults.focusOn, defaults.If);
    showColumn(Ix, defaults.yokeXOn, defaults.Ix);
    showColumn(Iy, defaults.yokeYOn, defaults.Iy);
}

void TechTable::showColumn(int column, bool visible, float value)
{
    m_table->setColumnHidden(column, !visible);
    if (!visible)
        return;
    m_table->setColumnWidth(column, shownWidth);
    setParamValueInTable(column, value, numbers[column].decimals);
}

// --- rows come in ---

void TechTable::write(int row, const TechRow& values)
{
    const float cells[] = {values.path, values.Ir, values.If, values.Ix, values.Iy, values.speed};
    for (int column = 0; column < RasterCell; ++column)
        m_table->setItem(row, column, new QTableWidgetItem(shown(cells[column], numbers[column].decimals)));
    m_table->setItem(row, RasterCell, new QTableWidgetItem);
    m_table->item(row, 0)->setData(OnRole, true);
    setRaster(row, values.raster);
}

void TechTable::insert(int row, const TechRow& values)
{
    m_table->insertRow(row);
    write(row, values);
}

void TechTable::markFixed(int row)
{
    for (int column = 0; column < ColumnCount; ++column)
        m_table->item(row, column)->setBackground(m_table->palette().alternateBase());
    QFont font = m_table->font();
    font.setWeight(75);
    font.setItalic(true);
    m_table->item(row, 0)->setFont(font);
}

void TechTable::reset(float speed)
{
    m_table->clearSpans();
    m_table->setRowCount(0);
    for (int row = 0; row < 2; ++row) {
        insert(row, restRow(speed));
        markFixed(row);
    }
}

void TechTable::addTechPoint(float interval, float IrVal, float speed)
{
    const int row = last();
    Q_ASSERT(row > 0);
    Q_ASSERT(interval >= 0);
    addBeforeLast(prevDistance(row) + interval, IrVal, speed);
}

void TechTable::addLinearTackPoint(float interval, float IrVal, float speed)
{
    const int row = last();
    Q_ASSERT(row > 0);
    Q_ASSERT(interval >= 0);
    addBeforeLast(interval, IrVal, speed);
}

// The path is taken as it comes: a file or a keyboard may have brought a negative one into the row before.
void TechTable::addBeforeLast(float path, float IrVal, float speed)
{
    Q_ASSERT((IrVal >= 0) && (IrVal <= 800));
    TechRow values = restRow(speed);
    values.path = path;
    values.Ir = IrVal;
    insert(last(), values);
}

// One after the other they would shift the rows below each time: all are put in their places at once.
void TechTable::addPoints(QVector<float> paths, float speed)
{
    for (float& path : paths)
        path = shown(path, numbers[Path].decimals).toFloat(); // as the table will show it
    QVector<float> table;
    for (int row = 1; row < rowCount(); ++row)
        table.append(number(row, Path));
    const QVector<int> order = mergedOrder(table, paths);
    for (int last = order.size() - 1, before = table.size(); last >= 0; --last) {
        if (order[last] < table.size()) {
            --before;
            continue;
        }
        const int end = last + 1;
        while (last > 0 && order[last - 1] >= table.size())
            --last;
        m_table->model()->insertRows(before + 1, end - last);
    }
    TechRow values = restRow(speed);
    for (int i = 0; i < order.size(); ++i) {
        if (order[i] < table.size())
            continue;
        values.path = paths[order[i] - table.size()];
        write(i + 1, values);
    }
}

void TechTable::addComment(const QString& text)
{
    const int row = last();
    Q_ASSERT(row > 0);
    m_table->insertRow(row);
    auto* item = new QTableWidgetItem(text);
    item->setBackground(commentColor);
    item->setTextAlignment(8);
    item->setData(OnRole, false);
    m_table->setItem(row, 0, item);
    m_table->setSpan(row, 0, 1, ColumnCount);
}

void TechTable::addStop()
{
    addComment(stopText);
}

void TechTable::remove(int row)
{
    QTableWidget* twTechTab = m_table;
    Q_ASSERT(row > 0);
    // clang-format off
    Q_ASSERT(row < twTechTab->rowCount()-1);
    // clang-format on
    twTechTab->removeRow(row);
}

// --- cells change ---

void TechTable::setNumber(int row, int column, float value)
{
    if (QTableWidgetItem* item = m_table->item(row, column))
        item->setText(shown(value, numbers[column].decimals));
}

void TechTable::setParamValueInTable(int column, float value, int decimals)
{
    for (int row = 0; row < rowCount(); ++row) {
        QTableWidgetItem* item = m_table->item(row, column);
        if (!item) {
            item = new QTableWidgetItem; // under the span of a comment
            m_table->setItem(row, column, item);
        }
        item->setText(shown(value, decimals));
    }
}

void TechTable::setRaster(int row, const Raster& values)
{
    QTableWidgetItem* item = m_table->item(row, RasterCell);
    if (!item)
        return;
    item->setText(values.kind == Raster::Off ? rasterOffText : QString());
    item->setFont(m_table->font());
    if (values.kind != Raster::On)
        return;
    QFont small = m_table->font();
    small.setPointSize(smallLetters);
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

void TechTable::setWholePath(double path)
{
    if (QTableWidgetItem* item = m_table->item(last(), Path))
        item->setText(QString::number(path, 'f', numbers[Path].decimals));
}

void TechTable::toggleBlock(int comment)
{
    for (int row = comment + 1; row < last() && !isComment(row); ++row) {
        const bool on = !isOn(row);
        m_table->item(row, 0)->setData(OnRole, on);
        for (int column = 0; column < ColumnCount; ++column)
            m_table->item(row, column)->setBackground(on ? QColor(Qt::white) : offColor);
    }
}

bool TechTable::markValidity()
{
    const TableValidity validity = tableValidity(rows());
    for (int row = 0; row < validity.rows.size(); ++row) {
        if (validity.rows[row] != TableValidity::None)
            m_table->item(row, 0)->setForeground(
                QColor(validity.rows[row] == TableValidity::Valid ? Qt::black : Qt::red));
    }
    return validity.valid;
}

// --- files ---

QString TechTable::line(int row, const QVector<Column>& columns) const
{
    if (isComment(row))
        return QStringLiteral("- ") + text(row, 0);
    QStringList cells;
    for (const Column column : columns)
        cells << text(row, column);
    return techLine(cells, raster(row));
}

void TechTable::load(SaveFile& file)
{
    const int announced = file.rowCount();
    for (int row = 0; row < announced && !file.atEnd(); ++row) {
        if (file.word() == QLatin1String("-")) {
            // One without a text, where a file was cut, would take the next row for its text when it is read
            // again.
            if (const QString comment = file.word(); !comment.isEmpty())
                addComment(comment);
            continue;
        }
        const TechRow values = readRow(file);
        if (row == 0 || row == announced - 1) {
            const int fixed = row == 0 ? 0 : last();
            write(fixed, values);
            markFixed(fixed);
        } else {
            insert(last(), values);
        }
    }
}
