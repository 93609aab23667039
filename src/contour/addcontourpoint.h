#pragma once

#include <QDialog>

#include <memory>

class CONTOUR;
class PoLabel;
namespace Ui {
class AddContourPoint;
}

// Puts rows at points of the contour into the technology table: at one point or all, on one pass or on every
// pass. Shows itself in a titled frame at the pointer and stays open, so that several points can be added.
// The last entries are kept in the settings.
class AddContourPoint : public QDialog
{
    Q_OBJECT

public:
    AddContourPoint(CONTOUR* contour, int pointCount, int passCount);
    ~AddContourPoint() override; // with a journal line

public slots:
    void on_pbAdd_clicked();

signals:
    void message(const QString& text, bool show); // a journal line

private:
    void connectNumber(PoLabel* label, const QString& title, int maximum);
    void setNumber(PoLabel* label, float value, int maximum);
    void updateEnables();

    std::unique_ptr<Ui::AddContourPoint> ui;
    CONTOUR* m_contour;
};
