#pragma once

#include <QDialog>

#include <memory>

class QListWidgetItem;
namespace Ui {
class FileManager;
}

// Chooses a contour or a program to open or to save. Shows itself in a titled frame; the caller runs `exec`.
class FileManager : public QDialog
{
    Q_OBJECT
public:
    // `dir`: with its final "/", without the site's root. `ext`: with its point.
    FileManager(QWidget* parent, const QString& dir, const QString& ext, bool openMode);
    ~FileManager() override;

    // After acceptance: the name without extension, and the directory with the name.
    QString name() const { return m_name; }
    QString path() const { return m_path; }

private slots:
    void on_pbLoad_clicked();
    void on_pbSave_clicked();
    void on_pbSave_as_clicked();
    void on_pbDelete_clicked();
    void on_leSaveAsNewProgName_returnPressed();
    void on_listWidget_prog_itemDoubleClicked(QListWidgetItem* item);
    void on_listWidget_prog_itemSelectionChanged();

private:
    void RefreshFolder();
    void updateButtons();
    QString selectedName() const; // empty when nothing is selected, or the way up
    void enter(const QString& folder);
    void take(const QString& name);

    std::unique_ptr<Ui::FileManager> ui;
    QString m_dir;
    QString m_ext;
    bool m_openMode;
    QString m_name;
    QString m_path;
};
