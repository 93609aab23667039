#include "programtab.h"

#include "filemanager.h"
#include "filewriter.h"
#include "programfile.h"
#include "savefile.h"
#include "site.h"

#include <QFile>
#include <QLabel>
#include <QPlainTextEdit>
#include <QTextStream>

namespace {

const QString programDir = QStringLiteral("/programs/");
const QString programExt = QStringLiteral(".npg");

} // namespace

ProgramTab::ProgramTab(int channel, QPlainTextEdit* edit, QLabel* name, QWidget* panel)
    : QObject(panel)
    , m_channel(channel)
    , m_edit(edit)
    , m_name(name)
    , m_panel(panel)
{}

QString ProgramTab::text() const
{
    return m_edit->toPlainText();
}

void ProgramTab::show(const QString& program, const QString& name)
{
    m_edit->setPlainText(program);
    m_name->setText(name);
}

// --- files ---

void ProgramTab::open()
{
    emit message(
        QStringLiteral("[I]Нажата кнопка 'Загрузить программу ЧПУ' панели 'Канал %1'").arg(m_channel), false);
    FileManager files(m_panel, programDir + QStringLiteral("ch%1/").arg(m_channel), programExt, true);
    if (files.exec() == QDialog::Accepted)
        loadFile(files.name(), files.path());
}

void ProgramTab::save()
{
    emit message(
        QStringLiteral("[I]Нажата кнопка 'Сохранить программу ЧПУ' панели 'Канал %1'").arg(m_channel), false);
    FileManager files(m_panel, programDir + QStringLiteral("ch%1/").arg(m_channel), programExt, false);
    if (files.exec() == QDialog::Accepted)
        saveFile(files.name(), files.path());
}

void ProgramTab::loadFile(const QString& name, const QString& path)
{
    QFile file(site().path(path + programExt));
    if (!file.open(QIODevice::ReadOnly))
        return;
    QTextStream stream(file.read(SaveFile::maxBytes));
    show(stream.readAll(), name);
    emit message(QStringLiteral("[I]Выполнена загрузка программы ЧПУ из файла %1.npg").arg(path), false);
}

void ProgramTab::saveFile(const QString& name, const QString& path)
{
    if (const auto trouble = writeFile(path + programExt, text().toLocal8Bit())) {
        emit message(trouble->line, true);
        return;
    }
    emit message(QStringLiteral("[I]Программа ЧПУ сохранена в файле %1.npg").arg(path), false);
    m_name->setText(name);
}

// --- start ---

QString ProgramTab::launchPath() const
{
    return programDir + QStringLiteral("_temp%1.npg").arg(m_channel);
}

// Channel 1 keeps the program of a weld beside the one that was edited.
QString ProgramTab::editedPath() const
{
    return m_channel == 1 ? programDir + QStringLiteral("_temp.npg") : launchPath();
}

bool ProgramTab::write(const QString& program)
{
    return writeProgram(launchPath(), program);
}

void ProgramTab::start()
{
    execute(launchPath());
}

bool ProgramTab::run(const QString& against)
{
    emit message(QStringLiteral("[I]Нажата кнопка 'Пуск программы' панели 'Канал %1'").arg(m_channel), false);
    if (!against.isEmpty()) {
        emit message(against, true);
        return false;
    }
    if (!writeProgram(editedPath(), text()))
        return false;
    execute(editedPath());
    return true;
}

bool ProgramTab::writeProgram(const QString& path, const QString& program)
{
    const auto trouble = writeProgramFile(path, program);
    if (trouble)
        emit message(*trouble, true);
    return !trouble;
}

void ProgramTab::execute(const QString& path)
{
    emit command(startCommand(m_channel, path));
}
