#pragma once

#include "weldtables.h"

#include <QDialog>

#include <memory>

class QLabel;
namespace Ui {
class TRSelect;
}

// The beam raster of one technology row. Shows itself in a titled frame at the pointer; the caller runs
// `exec` and, after acceptance, reads `choice()`.
class TRSelect : public QDialog
{
    Q_OBJECT
public:
    enum Choice { Leave = 0, On = 1, Off = 2 };

    explicit TRSelect(QWidget* parent);
    ~TRSelect() override;

    static QStringList typeNames(); // in the order of the type numbers
    // The settings as the table shows them.
    static QString summary(const Raster& raster);

    void setRaster(const Raster& raster); // anything but a raster that is on starts from zeros
    Raster raster() const;                // the settings on the screen, angle and frequency whole
    Choice choice() const { return m_choice; }

    void setType(int type);
    int type() const { return m_type; }
    // Kept as the labels show them, two decimals; outside -100 to 100 % the nearest bound.
    void setAmpX(float value);
    void setAmpY(float value);
    void setShiftX(float value);
    void setShiftY(float value);
    float ampX() const;
    float ampY() const;
    float shiftX() const;
    float shiftY() const;

private slots:
    void on_TRtype_clicked();
    void on_pbOn_clicked();
    void on_pbOff_clicked();
    void on_pbClear_clicked();

protected:
    void mousePressEvent(QMouseEvent* event) override;

private:
    struct Parameter;
    static const Parameter parameters[];

    QLabel* label(const Parameter& parameter) const;
    float value(const Parameter& parameter) const;
    void setValue(const Parameter& parameter, float value);
    void ask(const Parameter& parameter);
    void finish(Choice choice);

    std::unique_ptr<Ui::TRSelect> ui;
    int m_type = 0;
    Choice m_choice = Leave;
};
