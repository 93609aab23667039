#include "contour.h"
#include "filemanager.h"
#include "filewriter.h"
#include "programtab.h"
#include "savefile.h"
#include "schema.h"
#include "site.h"
#include "ui_contour.h"

#include <QFile>
#include <QTextStream>

namespace {

const QString contourExt = QStringLiteral(".save");

QString twoDecimals(float value)
{
    return QString::number(double(value), 'f', 2);
}

Schema* schemaFor(const QString& id, float D, float P, int Aux)
{
    if (id == QLatin1String("XYZr"))
        return new SchemaXYZr(D, P, Aux);
    if (id == QLatin1String("Circle"))
        return new SchemaCircle(D, P);
    return new SchemaXYZ;
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

} // namespace

// --- contours: saving ---

void CONTOUR::save(const QString& name, const QString& path, bool updateName)
{
    if (!m_schema)
        return;
    if (const auto trouble = writeFile(path + contourExt, contourText(name).toLocal8Bit())) {
        emit message(trouble->line, true);
        return;
    }
    emit message(QStringLiteral("[I]Контур сохранён в файле %1.save").arg(path), true);
    if (updateName)
        setProgramName(name);
}

QString CONTOUR::contourText(const QString& name) const
{
    QString text;
    QTextStream stream(&text);
    stream << name << '\n'
           << m_schema->id() << '\n'
           << m_schema->D() << ' ' << m_centerX << ' ' << m_centerY << '\n'
           << ui->points->value() << ' ' << m_schema->Aux() << '\n'
           << int(m_closed) << ' ' << ui->nrings->value() << '\n'
           << ui->weldSpeed->value() << '\n'
           << ui->twContour->rowCount() << '\n';
    for (int row = 0; row < ui->twContour->rowCount(); ++row)
        stream << contourRowText(row) << '\n';
    stream << ui->twTechTab->rowCount() << '\n';
    for (int row = 0; row < ui->twTechTab->rowCount(); ++row)
        stream << techRowText(row) << '\n';
    stream.flush();
    return text;
}

QString CONTOUR::contourRowText(int row) const
{
    QStringList cells;
    for (int column = 0; column < m_schema->axisNames().size(); ++column)
        cells << ui->twContour->item(row, column)->text();
    return contourLine(cells, isXYZ(), frame(row));
}

QString CONTOUR::techRowText(int row) const
{
    if (isComment(row))
        return QStringLiteral("- ") + techText(row, 0);
    QStringList cells;
    for (int column = 0; column < 6; ++column)
        cells << techText(row, column);
    return techLine(cells, raster(row));
}

// --- contours: loading ---

void CONTOUR::load(const QString& name, const QString& path)
{
    QFile source(site().path(path + contourExt));
    if (!source.open(QIODevice::ReadOnly))
        return;
    QTextStream stream(source.read(SaveFile::maxBytes));
    SaveFile file(stream.readAll());

    loadHead(file);
    loadContourRows(file);
    loadTechRows(file);

    emit message(QStringLiteral("[I]Загружен контур из файла %1.save").arg(path), true);
    const int last = ui->twContour->rowCount() - 1;
    setCurrentPoint(last >= 0 ? 0 : -1);
    updateLength();
    updateEnables();
    updateTechTab();
    updateValidDistance();
    setProgramName(name);
}

void CONTOUR::loadHead(SaveFile& file)
{
    const QString id = file.word();
    const float D = file.number();
    const float centerX = twoDecimals(file.number()).toFloat();
    const float centerY = twoDecimals(file.number()).toFloat();
    const float P = file.number();
    const int Aux = file.integer();
    const bool closed = file.integer() != 0;
    const float nrings = qBound(1.0f, file.number(), maxPasses);
    ui->weldSpeed->setValue(file.number(), 1);

    init(schemaFor(id, D, P, Aux));
    if (m_schema->rotate())
        showCircle(centerX, centerY);
    m_closed = closed;
    m_closedForward = true; // which kind of closure it was is not in the file
    ui->nrings->setValue(nrings, 0);
    ui->points->setValue(P, 0);
}

// All rows that are announced: those that a cut file lost stand in the table as zeros, for the setter to see.
void CONTOUR::loadContourRows(SaveFile& file)
{
    const int rows = file.rowCount();
    const int axes = m_schema->axisNames().size();
    for (int row = 0; row < rows; ++row) {
        QList<float> point;
        for (int axis = 0; axis < axes; ++axis)
            point << file.number();
        insertContourRow(row, point);
        if (!isXYZ())
            continue;
        Frame frame;
        const QString type = file.word();
        frame.type = type.toInt();
        if (type != QLatin1String("0")) {
            frame.direction = file.integer();
            frame.plane = file.integer();
            frame.radius = file.number();
        }
        writeFrame(row, frame);
    }
}

void CONTOUR::loadTechRows(SaveFile& file)
{
    const int rows = file.rowCount();
    for (int row = 0; row < rows && !file.atEnd(); ++row) {
        if (file.word() == QLatin1String("-")) {
            addComment(file.word());
            continue;
        }
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
        const int lastRow = ui->twTechTab->rowCount() - 1;
        if (row == 0 || row == rows - 1) {
            const int fixed = row == 0 ? 0 : lastRow;
            writeTechRow(fixed, values);
            markFixedRow(fixed);
        } else {
            insertTechRow(lastRow, values);
        }
    }
}

void CONTOUR::on_pbSave_clicked()
{
    chooseSave();
}

void CONTOUR::on_pbSave_2_clicked()
{
    chooseSave();
}

void CONTOUR::on_pbLoad_clicked()
{
    chooseLoad();
}

void CONTOUR::on_pbLoad_2_clicked()
{
    chooseLoad();
}

void CONTOUR::chooseSave()
{
    emit message(QStringLiteral("[I]Нажата кнопка 'Сохранить контур'"), false);
    FileManager files(this, m_contourDir, contourExt, false);
    if (files.exec() == QDialog::Accepted)
        save(files.name(), files.path(), true);
}

void CONTOUR::chooseLoad()
{
    emit message(QStringLiteral("[I]Нажата кнопка 'Загрузить контур'"), false);
    FileManager files(this, m_contourDir, contourExt, true);
    if (files.exec() == QDialog::Accepted)
        load(files.name(), files.path());
}

// --- programs of the channels ---

void CONTOUR::on_pbPrgOpen_1_clicked()
{
    program(1)->open();
}

void CONTOUR::on_pbPrgOpen_2_clicked()
{
    program(2)->open();
}

void CONTOUR::on_pbPrgOpen_3_clicked()
{
    program(3)->open();
}

void CONTOUR::on_pbPrgSave_1_clicked()
{
    program(1)->save();
}

void CONTOUR::on_pbPrgSave_2_clicked()
{
    program(2)->save();
}

void CONTOUR::on_pbPrgSave_3_clicked()
{
    program(3)->save();
}
