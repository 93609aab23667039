#pragma once

#include <QDialog>

#include <memory>

class PoLabel;

namespace Ui {
class RateCalc;
}

// Converts a welding speed between mm/min, m/h and deg/min for a part of a given diameter: a change of one
// speed recomputes the others, a change of the diameter keeps the angular speed. Shows itself in a titled
// frame below `parent`; the caller runs `exec`. The four values are kept in the settings, as they are: also
// such as do not belong together, until one of them is changed.
class RateCalc : public QDialog
{
    Q_OBJECT

public:
    explicit RateCalc(QWidget* parent);
    ~RateCalc() override;

public slots:
    void on_lblLinRate1_clicked(); // mm/min
    void on_LinRate1_clicked();
    void on_pbLinRate1Minus_clicked();
    void on_pbLinRate1Plus_clicked();
    void on_lblLinRate2_clicked(); // m/h
    void on_LinRate2_clicked();
    void on_pbLinRate2Minus_clicked();
    void on_pbLinRate2Plus_clicked();
    void on_lblAngleRate_clicked(); // deg/min
    void on_AngleRate_clicked();
    void on_pbAngleRateMinus_clicked();
    void on_pbAngleRatePlus_clicked();
    void on_lblDiam_clicked(); // mm
    void on_Diam_clicked();
    void on_pbDiamMinus_clicked();
    void on_pbDiamPlus_clicked();

private:
    struct Quantity;
    static const Quantity quantities[4];

    PoLabel* label(const Quantity& quantity) const;
    void type(int index); // by the keypad
    void step(int index, bool up);
    void changed(int index);

    void crement(PoLabel* label, float step, float min, float max, int decimals, bool up);
    void range(PoLabel* label, float value, float min, float max, int decimals); // NaN becomes `min`
    bool numpad(PoLabel* label, const QString& title, float min, float max, int decimals); // true: entered
    // `source` 0 has the value in mm/min, 1 in m/h, 2 in deg/min; any other does nothing.
    void calcAllRate(int source, float value);

    std::unique_ptr<Ui::RateCalc> m_ui;
};
