#pragma once

#include "weldtables.h"

#include <QDialog>

#include <memory>

class CONTOUR;
namespace Ui {
class ContourParams;
}

// How the path goes between two points of an XYZ contour: straight or by an arc. Shows itself in a titled
// frame at the pointer; accepting writes the frame into the contour table. An arc without a radius is
// refused.
class ContourParams : public QDialog
{
    Q_OBJECT

public:
    // `row`: number of the frame, counted from 1; it leads from row - 1 to the row of that number, the
    // closing one to the first.
    ContourParams(CONTOUR* contour, int row, QWidget* parent);
    ~ContourParams() override;

    void setFrame(const Frame& frame); // shows it
    Frame frame() const;               // as shown

public slots:
    void on_pbType_clicked();
    void on_radius_clicked();
    void on_cbCalc_clicked();
    void on_pbXY_clicked();
    void on_pbXZ_clicked();
    void on_pbYZ_clicked();
    void on_pbOn_clicked();
    void on_pbCancel_clicked();

signals:
    void message(const QString& text, bool show); // a journal line

private:
    void updateEnables();

    std::unique_ptr<Ui::ContourParams> ui;
    CONTOUR* m_contour;
    const int m_row;
};
