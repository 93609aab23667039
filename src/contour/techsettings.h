#pragma once

#include <QDialog>

#include <memory>

class CONTOUR;
class PoLabel;
struct TechDefaults;
namespace Ui {
class TechSettings;
}

// Defaults of the technology table and the parameters of a circular seam. Shows itself in a titled frame
// beside `button`; accepting hands everything to the contour.
class TechSettings : public QDialog
{
    Q_OBJECT
public:
    TechSettings(CONTOUR* contour, QWidget* button);
    ~TechSettings() override;

    // Currents in mA; the flags show the columns of focus and deflection.
    void setCurrents(bool test, const TechDefaults& defaults);
    void setRoundParams(float D, float centerX, float centerY, int plane); // mm; plane -1 for none
    void setRoundEnabled(bool enabled);

signals:
    void message(const QString& text, bool show); // a journal line

private slots:
    void on_If_clicked();
    void on_Ix_clicked();
    void on_Iy_clicked();
    void on_diameter_clicked();
    void on_pbPlaneXY_clicked();
    void on_pbPlaneXZ_clicked();
    void on_pbPlaneYZ_clicked();
    void on_pbSettingsDone_clicked();
    void on_pbSettingsCancel_clicked();

private:
    void ask(PoLabel* label, const QString& title, int decimals, bool noSign, const QString& journal);

    std::unique_ptr<Ui::TechSettings> ui;
    CONTOUR* m_contour;
    float m_oldD = -1;
    int m_plane = -1;
};
