#include "filemanager.h"

#include "confirm.h"
#include "framed.h"
#include "site.h"
#include "ui_filemanager.h"

#include <QDir>
#include <QRegularExpressionValidator>
#include <QStyle>

namespace {

constexpr int confirmTimeout = 5; // s
constexpr int folderRole = Qt::UserRole;
constexpr int besideButtons = 90; // px, height at which "delete" stands in either mode
constexpr int belowButtons = 170;

const QString programDir = QStringLiteral("/programs/");
const QString programExt = QStringLiteral(".npg");
const QString up = QStringLiteral("..");

// Folders that hold the programs of one channel each: the only ones that can be entered.
const QStringList channelFolders = {QStringLiteral("ch1"), QStringLiteral("ch2"), QStringLiteral("ch3")};

} // namespace

FileManager::FileManager(QWidget* parent, const QString& dir, const QString& ext, bool openMode)
    : QDialog(parent)
    , ui(std::make_unique<Ui::FileManager>())
    , m_dir(dir)
    , m_ext(ext)
    , m_openMode(openMode)
{
    ui->setupUi(this);
    ui->frmSaveAsNewProg->hide();
    ui->leSaveAsNewProgName->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[^/]{1,200}")), this));
    ui->pbLoad->setVisible(openMode);
    ui->pbSave->setVisible(!openMode);
    ui->pbSave_as->setVisible(!openMode);
    ui->pbDelete->move(ui->pbDelete->x(), openMode ? besideButtons : belowButtons);
    ui->listWidget_prog->setWordWrap(true);
    ui->listWidget_prog->setResizeMode(QListView::Adjust);
    ui->listWidget_prog->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff); // a long name takes two lines
    RefreshFolder();

    const QString title = openMode ? QStringLiteral("Открытие файла") : QStringLiteral("Сохранение файла");
    frameAt(parent->mapToGlobal(QPoint(0, 0)), title, this, parent);
}

FileManager::~FileManager() = default;

void FileManager::RefreshFolder()
{
    ui->listWidget_prog->clear();
    const QDir dir(site().path(m_dir));
    QStringList folders = dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    if (m_ext == programExt && m_dir != programDir)
        folders.prepend(up);
    for (const QString& folder : folders) {
        auto* item = new QListWidgetItem(folder, ui->listWidget_prog);
        item->setData(folderRole, true);
        item->setIcon(style()->standardIcon(QStyle::SP_DirIcon));
    }
    const QStringList files = dir.entryList({QLatin1Char('*') + m_ext}, QDir::Files, QDir::Name);
    for (const QString& file : files)
        new QListWidgetItem(file.chopped(m_ext.size()), ui->listWidget_prog);
    updateButtons();
}

void FileManager::updateButtons()
{
    const bool chosen = !selectedName().isEmpty();
    ui->pbLoad->setEnabled(chosen);
    ui->pbSave->setEnabled(chosen);
    ui->pbDelete->setEnabled(chosen);
}

// A folder may lend its name to a file beside it.
QString FileManager::selectedName() const
{
    const QList<QListWidgetItem*> selected = ui->listWidget_prog->selectedItems();
    const QString name = selected.isEmpty() ? QString() : selected.first()->text();
    return name == up ? QString() : name;
}

void FileManager::on_listWidget_prog_itemSelectionChanged()
{
    updateButtons();
}

void FileManager::on_listWidget_prog_itemDoubleClicked(QListWidgetItem* item)
{
    if (item->data(folderRole).toBool())
        enter(item->text());
    else if (m_openMode)
        on_pbLoad_clicked();
    else
        on_pbSave_clicked();
}

void FileManager::enter(const QString& folder)
{
    if (m_ext != programExt)
        return;
    if (folder == up)
        m_dir = programDir;
    else if (channelFolders.contains(folder))
        m_dir = programDir + folder + QLatin1Char('/');
    else
        return;
    RefreshFolder();
}

void FileManager::on_pbLoad_clicked()
{
    const QString file = selectedName();
    if (!file.isEmpty())
        take(file);
}

void FileManager::on_pbSave_clicked()
{
    const QString file = selectedName();
    if (file.isEmpty())
        return;
    Confirm confirm(QStringLiteral("Подтверждение"),
                    QStringLiteral("Перезаписать файл ") + file + QLatin1Char('?'), ui->pbSave,
                    confirmTimeout);
    if (confirm.exec() == QDialog::Accepted)
        take(file);
}

void FileManager::on_pbSave_as_clicked()
{
    ui->frmSaveAsNewProg->show();
    ui->frmSaveAsNewProg->raise();
    ui->leSaveAsNewProgName->setFocus();
}

void FileManager::on_leSaveAsNewProgName_returnPressed()
{
    take(ui->leSaveAsNewProgName->text());
}

void FileManager::on_pbDelete_clicked()
{
    const QString file = selectedName();
    if (file.isEmpty())
        return;
    Confirm confirm(QStringLiteral("Подтверждение"),
                    QStringLiteral("Удалить файл ") + file + QLatin1Char('?'), ui->pbDelete, confirmTimeout);
    if (confirm.exec() != QDialog::Accepted)
        return;
    if (!QFile::remove(site().path(m_dir + file + m_ext)))
        qWarning("FileManager: cannot remove %s", qPrintable(m_dir + file + m_ext));
    RefreshFolder();
}

void FileManager::take(const QString& name)
{
    m_name = name;
    m_path = m_dir + name;
    accept();
}
