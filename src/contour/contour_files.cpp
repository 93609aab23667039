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

} // namespace

// --- contours: saving ---

void CONTOUR::save(const QString& name, const QString& path, bool updateName)
{
    if (!schema())
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
           << schema()->id() << '\n'
           << schema()->D() << ' ' << m_points.centerX() << ' ' << m_points.centerY() << '\n'
           << ui->points->value() << ' ' << schema()->Aux() << '\n'
           << int(m_points.closed()) << ' ' << ui->nrings->value() << '\n'
           << ui->weldSpeed->value() << '\n'
           << m_points.rowCount() << '\n';
    for (int row = 0; row < m_points.rowCount(); ++row)
        stream << m_points.line(row) << '\n';
    stream << m_tech.rowCount() << '\n';
    for (int row = 0; row < m_tech.rowCount(); ++row)
        stream << m_tech.line(row) << '\n';
    stream.flush();
    return text;
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
    m_points.load(file);
    m_tech.load(file);

    emit message(QStringLiteral("[I]Загружен контур из файла %1.save").arg(path), true);
    m_points.setCurrent(m_points.rowCount() > 0 ? 0 : -1);
    updateLength();
    updateEnables();
    updateTechTab();
    updateValidDistance();
    setProgramName(name);
}

void CONTOUR::loadHead(SaveFile& file)
{
    const SavedHead head = readHead(file);
    ui->weldSpeed->setValue(head.weldSpeed, 1);

    init(schemaOf(head).release());
    if (schema()->rotate()) {
        m_points.setCenter(head.centerX, head.centerY);
        showCircle();
    }
    m_points.setClosed(head.closed, true); // which kind of closure it was is not in the file
    ui->nrings->setValue(qBound(1.0f, head.nrings, maxPasses), 0);
    ui->points->setValue(head.P, 0);
}

void CONTOUR::on_pbSave_clicked()
{
    emit message(QStringLiteral("[I]Нажата кнопка 'Сохранить контур'"), false);
    FileManager files(this, m_contourDir, contourExt, false);
    if (files.exec() == QDialog::Accepted)
        save(files.name(), files.path(), true);
}

void CONTOUR::on_pbSave_2_clicked()
{
    on_pbSave_clicked();
}

void CONTOUR::on_pbLoad_clicked()
{
    emit message(QStringLiteral("[I]Нажата кнопка 'Загрузить контур'"), false);
    FileManager files(this, m_contourDir, contourExt, true);
    if (files.exec() == QDialog::Accepted)
        load(files.name(), files.path());
}

void CONTOUR::on_pbLoad_2_clicked()
{
    on_pbLoad_clicked();
}

// --- programs of the channels ---

void CONTOUR::on_pbPrgOpen_1_clicked()
{
    m_programs[0]->open();
}

void CONTOUR::on_pbPrgOpen_2_clicked()
{
    m_programs[1]->open();
}

void CONTOUR::on_pbPrgOpen_3_clicked()
{
    m_programs[2]->open();
}

void CONTOUR::on_pbPrgSave_1_clicked()
{
    m_programs[0]->save();
}

void CONTOUR::on_pbPrgSave_2_clicked()
{
    m_programs[1]->save();
}

void CONTOUR::on_pbPrgSave_3_clicked()
{
    m_programs[2]->save();
}
