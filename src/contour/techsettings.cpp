#include "techsettings.h"

#include "asklength.h"
#include "contour.h"
#include "framed.h"
#include "numpad.h"
#include "ui_techsettings.h"
#include "widgets.h"

TechSettings::TechSettings(CONTOUR* contour, QWidget* button)
    : QDialog(contour)
    , ui(std::make_unique<Ui::TechSettings>())
    , m_contour(contour)
{
    ui->setupUi(this);
    const QPoint beside = button->mapToGlobal(QPoint(button->width() + 1, 0));
    frameAt(beside, QStringLiteral("Настройки контура"), this, contour);
}

TechSettings::~TechSettings() = default;

void TechSettings::setCurrents(bool test, const TechDefaults& defaults)
{
    ui->cbTestMode->setChecked(test);
    ui->cbFocus->setChecked(defaults.focusOn);
    ui->cbYokeX->setChecked(defaults.yokeXOn);
    ui->cbYokeY->setChecked(defaults.yokeYOn);
    ui->If->setValue(defaults.If, 0);
    ui->Ix->setValue(defaults.Ix, 1);
    ui->Iy->setValue(defaults.Iy, 1);
}

void TechSettings::setRoundParams(float D, float centerX, float centerY, int plane)
{
    m_oldD = D;
    m_plane = plane;
    ui->diameter->setValue(D, 2);
    ui->center1->setValue(centerX, 2);
    ui->center2->setValue(centerY, 2);
    ui->pbPlaneXY->setChecked(plane == 0);
    ui->pbPlaneXZ->setChecked(plane == 1);
    ui->pbPlaneYZ->setChecked(plane == 2);
}

void TechSettings::setRoundEnabled(bool enabled)
{
    ui->frmRoundParam->setEnabled(enabled);
}

void TechSettings::on_If_clicked()
{
    ask(ui->If, QStringLiteral("If, мА"), 0, true,
        QStringLiteral("Задан новый ток фокусировки для контура - %1 мА"));
}

void TechSettings::on_Ix_clicked()
{
    ask(ui->Ix, QStringLiteral("Ix, мА"), 1, false,
        QStringLiteral("Задан новый ток отклонения по X для контура - %1 мА"));
}

void TechSettings::on_Iy_clicked()
{
    ask(ui->Iy, QStringLiteral("Iy, мА"), 1, false,
        QStringLiteral("Задан новый ток отклонения по Y для контура - %1 мА"));
}

void TechSettings::on_diameter_clicked()
{
    const auto diameter = askLength(QStringLiteral("Диаметр, мм"), this, ui->diameter->value(),
                                    [this](const QString& line) { emit message(line, true); });
    if (!diameter)
        return;
    ui->diameter->setValue(*diameter, 2);
    emit message(QStringLiteral("Задан новый диаметр для контура - %1 мм").arg(double(*diameter)), false);
}

void TechSettings::ask(PoLabel* label, const QString& title, int decimals, bool noSign,
                       const QString& journal)
{
    Numpad numpad(title, this, label->value(), decimals == 0, noSign, false);
    if (numpad.exec() != QDialog::Accepted)
        return;
    label->setValue(static_cast<float>(numpad.value()), decimals);
    emit message(journal.arg(double(label->value())), false);
}

void TechSettings::on_pbPlaneXY_clicked()
{
    m_plane = 0;
}

void TechSettings::on_pbPlaneXZ_clicked()
{
    m_plane = 1;
}

void TechSettings::on_pbPlaneYZ_clicked()
{
    m_plane = 2;
}

void TechSettings::on_pbSettingsDone_clicked()
{
    const float newD = ui->diameter->value();
    m_contour->setTechSettings(ui->cbTestMode->isChecked(), ui->cbFocus->isChecked(),
                               ui->cbYokeX->isChecked(), ui->cbYokeY->isChecked(), ui->If->value(),
                               ui->Ix->value(), ui->Iy->value(), newD, m_plane);
    if (newD < m_oldD || newD > m_oldD)
        m_contour->recalcPointsForNewDiameter(m_oldD, newD);
    accept();
}

void TechSettings::on_pbSettingsCancel_clicked()
{
    reject();
}
