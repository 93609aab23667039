#include "ratecalc.h"

#include "framed.h"
#include "numpad.h"
#include "settings.h"
#include "ui_ratecalc.h"
#include "widgets.h"

namespace {

constexpr int decimals = 1;
constexpr float touch = 1; // of the plus and minus buttons
constexpr double pi = 3.14159265358979323846;

enum Index { LinRate1, LinRate2, AngleRate, Diam }; // the first three are the sources of a calculation

} // namespace

struct RateCalc::Quantity
{
    PoLabel* Ui::RateCalc::*label;
    MyLabel* Ui::RateCalc::*caption;
    const char* key;
    float usual;
    float min;
    float max;
};

// In the order of Index.
const RateCalc::Quantity RateCalc::quantities[4] = {
    {&Ui::RateCalc::lblLinRate1, &Ui::RateCalc::LinRate1, "RateCalc/LinRate1", 600, 1, 2400},
    {&Ui::RateCalc::lblLinRate2, &Ui::RateCalc::LinRate2, "RateCalc/LinRate2", 20, 1, 1000},
    {&Ui::RateCalc::lblAngleRate, &Ui::RateCalc::AngleRate, "RateCalc/AngleRate", 360, 0, 1800},
    {&Ui::RateCalc::lblDiam, &Ui::RateCalc::Diam, "RateCalc/Diam", 100, 0, 6000},
};

RateCalc::RateCalc(QWidget* parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::RateCalc>())
{
    m_ui->setupUi(this);
    const Settings settings;
    for (const Quantity& quantity : quantities)
        label(quantity)->setValue(settings.number(quantity.key, quantity.usual), decimals);
    frameBelow(parent, QStringLiteral("Калькулятор скоростей"), this);
}

RateCalc::~RateCalc()
{
    Settings settings;
    for (const Quantity& quantity : quantities)
        settings.setValue(QLatin1String(quantity.key), double(label(quantity)->value()));
}

PoLabel* RateCalc::label(const Quantity& quantity) const
{
    return (*m_ui).*(quantity.label);
}

void RateCalc::type(int index)
{
    const Quantity& quantity = quantities[index];
    const QString title = ((*m_ui).*(quantity.caption))->text();
    if (numpad(label(quantity), title, quantity.min, quantity.max, decimals))
        changed(index);
}

void RateCalc::step(int index, bool up)
{
    const Quantity& quantity = quantities[index];
    crement(label(quantity), touch, quantity.min, quantity.max, decimals, up);
    changed(index);
}

void RateCalc::changed(int index)
{
    const int source = index == Diam ? AngleRate : index;
    calcAllRate(source, label(quantities[source])->value());
}

void RateCalc::crement(PoLabel* label, float step, float min, float max, int places, bool up)
{
    range(label, label->value() + (up ? step : -step), min, max, places);
}

void RateCalc::range(PoLabel* label, float value, float min, float max, int places)
{
    label->setValue(qBound(min, value, max), places);
}

bool RateCalc::numpad(PoLabel* label, const QString& title, float min, float max, int places)
{
    Numpad pad(title, label, 0, false, true, false);
    if (pad.exec() != QDialog::Accepted)
        return false;
    range(label, float(pad.value()), min, max, places);
    return true;
}

void RateCalc::calcAllRate(int source, float value)
{
    const double diameter = double(m_ui->lblDiam->value());
    const double rate = double(value);
    const auto show = [](PoLabel* label, double result) { label->setValue(float(result), decimals); };
    switch (source) {
    case LinRate1:
        show(m_ui->lblLinRate2, rate * 6 / 100);
        show(m_ui->lblAngleRate, rate * 360 / (diameter * pi));
        break;
    case LinRate2:
        show(m_ui->lblLinRate1, rate * 100 / 6);
        show(m_ui->lblAngleRate, rate * 6000 / (diameter * pi));
        break;
    case AngleRate:
        show(m_ui->lblLinRate1, diameter * rate * pi / 360);
        show(m_ui->lblLinRate2, diameter * rate * pi / 6000);
        break;
    default:
        break;
    }
}

void RateCalc::on_lblLinRate1_clicked()
{
    type(LinRate1);
}

void RateCalc::on_LinRate1_clicked()
{
    type(LinRate1);
}

void RateCalc::on_pbLinRate1Minus_clicked()
{
    step(LinRate1, false);
}

void RateCalc::on_pbLinRate1Plus_clicked()
{
    step(LinRate1, true);
}

void RateCalc::on_lblLinRate2_clicked()
{
    type(LinRate2);
}

void RateCalc::on_LinRate2_clicked()
{
    type(LinRate2);
}

void RateCalc::on_pbLinRate2Minus_clicked()
{
    step(LinRate2, false);
}

void RateCalc::on_pbLinRate2Plus_clicked()
{
    step(LinRate2, true);
}

void RateCalc::on_lblAngleRate_clicked()
{
    type(AngleRate);
}

void RateCalc::on_AngleRate_clicked()
{
    type(AngleRate);
}

void RateCalc::on_pbAngleRateMinus_clicked()
{
    step(AngleRate, false);
}

void RateCalc::on_pbAngleRatePlus_clicked()
{
    step(AngleRate, true);
}

void RateCalc::on_lblDiam_clicked()
{
    type(Diam);
}

void RateCalc::on_Diam_clicked()
{
    type(Diam);
}

void RateCalc::on_pbDiamMinus_clicked()
{
    step(Diam, false);
}

void RateCalc::on_pbDiamPlus_clicked()
{
    step(Diam, true);
}
