#pragma once

#include "curves.h"

#include <QSet>

class QDoubleSpinBox;
class QLabel;
class QPushButton;
class QTreeWidget;

// The list of records on the left, the curves of those that are chosen, and what is to be said of them below.
class ReportWindow : public QWidget
{
    Q_OBJECT

public:
    ReportWindow(double percent, bool overPath);

    // Files and folders; those that are records are chosen, of a folder only the last one.
    void open(const QStringList& paths);

private:
    QPushButton* button(const QString& text, const QString& name, bool stays = false);
    QWidget* commands();
    QWidget* chartButtons();
    void addFile(const QString& path, bool chosen);
    void readChosen(); // the files, again
    void draw();
    void tell();
    void savePdf();

    View m_view;
    QSet<int> m_hidden; // indices into chartKinds()
    QTreeWidget* m_list;
    QTreeWidget* m_findings; // a touch shows the place
    Charts* m_charts;
    QLabel* m_summary;
    QDoubleSpinBox* m_percent;
    QPushButton* m_time;
    QPushButton* m_path;
    QVector<QPushButton*> m_kinds; // as chartKinds()
};
