#include "kvs.h"

#include "pressureunit.h"
#include "ui_kvs.h"
#include "widgets.h"

#include <QFile>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

using Sprite = PoSprite* Ui_KVS::*;
using Number = PoLabel* Ui_KVS::*;

// The images of a sprite are those of the stem that the form gives it, each with a suffix for its states: a
// device has five, a pipe two, the lamps of the water two and three.
constexpr struct
{
    int state;
    const char* suffix;
} suffixes[] = {{-1, "_4"}, {0, "_0"}, {1, "_1"}, {2, "_2"}, {2, "_23"}, {3, "_23"}, {4, "_4"}};

// Pipes that a valve lights while it is not closed. A row with other valves is for pipes that several feed:
// it counts while this valve is open or all the others are closed. The rows are not symmetrical, and the
// operators know the picture that way.
struct PipeRule
{
    KVS::Device valve;
    Sprite pipes[6];
    KVS::Device others[2];
};

constexpr PipeRule pipeRules[] = {
    {KVS::VP1, {&Ui_KVS::pipeA0, &Ui_KVS::pipeA1, &Ui_KVS::pipeA2}, {}},
    {KVS::VP2, {&Ui_KVS::pipeB0, &Ui_KVS::pipeB1, &Ui_KVS::pipeB2, &Ui_KVS::pipeB3, &Ui_KVS::pipeB4}, {}},
    {KVS::VP2, {&Ui_KVS::pipeBC, &Ui_KVS::pipeB5, &Ui_KVS::pipeB6}, {KVS::VP7}},
    {KVS::VP7, {&Ui_KVS::pipeC0, &Ui_KVS::pipeC1}, {}},
    {KVS::VP7, {&Ui_KVS::pipeBC, &Ui_KVS::pipeB5, &Ui_KVS::pipeB6}, {KVS::VP2}},
    {KVS::VP3, {&Ui_KVS::pipeE0, &Ui_KVS::pipeE1}, {}},
    {KVS::VP3, {&Ui_KVS::pipeEF, &Ui_KVS::pipeE2, &Ui_KVS::pipeE3}, {KVS::VP5}},
    {KVS::VP3, {&Ui_KVS::pipeEG, &Ui_KVS::pipeE4, &Ui_KVS::pipeE5, &Ui_KVS::pipeE6}, {KVS::VP5, KVS::VP6}},
    {KVS::VP5, {&Ui_KVS::pipeF0, &Ui_KVS::pipeF1, &Ui_KVS::pipeF2, &Ui_KVS::pipeF3}, {}},
    {KVS::VP5, {&Ui_KVS::pipeEF, &Ui_KVS::pipeE2, &Ui_KVS::pipeE3, &Ui_KVS::pipeEG}, {KVS::VP3}},
    {KVS::VP5, {&Ui_KVS::pipeE4, &Ui_KVS::pipeE5, &Ui_KVS::pipeE6}, {KVS::VP3, KVS::VP6}},
    {KVS::VP6, {&Ui_KVS::pipeG0, &Ui_KVS::pipeG1}, {}},
    {KVS::VP6, {&Ui_KVS::pipeE4, &Ui_KVS::pipeE5, &Ui_KVS::pipeE6, &Ui_KVS::pipeEG}, {KVS::VP3}},
    {KVS::VP4,
     {&Ui_KVS::pipeH0, &Ui_KVS::pipeH1, &Ui_KVS::pipeH2, &Ui_KVS::pipeH3, &Ui_KVS::pipeH4, &Ui_KVS::pipeH5},
     {}},
    {KVS::VP8, {&Ui_KVS::pipeJ0, &Ui_KVS::pipeJ1, &Ui_KVS::pipeJ2, &Ui_KVS::pipeJ3}, {}},
    {KVS::VPT, {&Ui_KVS::pipeO0, &Ui_KVS::pipeO1, &Ui_KVS::pipeP0}, {}},
};

// The pipes of the chamber's jacket are no pictures; they are on view while VP5 is not closed.
constexpr QFrame* Ui_KVS::*jacketPipes[] = {
    &Ui_KVS::pipeI0, &Ui_KVS::pipeI1, &Ui_KVS::pipeI2, &Ui_KVS::pipeI3, &Ui_KVS::pipeI4,
    &Ui_KVS::pipeI5, &Ui_KVS::pipeI6, &Ui_KVS::pipeI7, &Ui_KVS::pipeI8,
};

// How the journal calls the devices. The tag of VE1 is that of the pump behind it; operators look for it so.
constexpr struct
{
    KVS::Device device;
    const char* kind;
    const char* tag;
} names[] = {
    {KVS::NL1, "Форвакуумный насос", "NL1"},
    {KVS::NL2, "Форвакуумный насос", "NL2"},
    {KVS::NZ1, "Двухроторный насос", "NZ1"},
    {KVS::NZ2, "Двухроторный насос", "NZ2"},
    {KVS::ND1, "Диффузионный насос", "ND1"},
    {KVS::NW2, "Повысительный насос", "NW2"},
    {KVS::TMN, "Турбомолекулярный насос", "ТМН"},
    {KVS::VP1, "Затвор", "VP1"},
    {KVS::VP2, "Клапан", "VP2"},
    {KVS::VP3, "Затвор", "VP3"},
    {KVS::VP4, "Клапан напуска", "VP4"},
    {KVS::VP5, "Клапан", "VP5"},
    {KVS::VP6, "Клапан напуска", "VP6"},
    {KVS::VP7, "Клапан напуска", "VP7"},
    {KVS::VP8, "Клапан напуска", "VP8"},
    {KVS::VPT, "Клапан напуска", "ТМН"},
    {KVS::VE1, "Шибер", "ТМН"},
};

// What shows a gauge, and what shows a circuit of cooling water.
constexpr struct
{
    Number value;
    Number unit;
} gauges[] = {
    {&Ui_KVS::PT1, &Ui_KVS::lblPT1u}, {&Ui_KVS::PT2, &Ui_KVS::lblPT2u}, {&Ui_KVS::PT3, &Ui_KVS::lblPT3u},
    {&Ui_KVS::PT4, &Ui_KVS::lblPT4u}, {&Ui_KVS::PT5, &Ui_KVS::lblPT5u}, {&Ui_KVS::PT6, &Ui_KVS::lblPT6u},
};

constexpr struct
{
    Sprite flowLamp;
    Number flow;
    Sprite temperatureLamp;
    Number temperature;
} circuits[] = {
    {&Ui_KVS::W1, &Ui_KVS::W1disch, &Ui_KVS::T1, &Ui_KVS::T1temp},
    {&Ui_KVS::W2, &Ui_KVS::W2disch, &Ui_KVS::T2, &Ui_KVS::T2temp},
    {&Ui_KVS::W3, &Ui_KVS::W3disch, &Ui_KVS::T3, &Ui_KVS::T3temp},
    {&Ui_KVS::W4, &Ui_KVS::W4disch, &Ui_KVS::T4, &Ui_KVS::T4temp},
    {&Ui_KVS::W5, &Ui_KVS::W5disch, &Ui_KVS::T5, &Ui_KVS::T5temp},
    {&Ui_KVS::W6, &Ui_KVS::W6disch, &Ui_KVS::T6, &Ui_KVS::T6temp},
    {&Ui_KVS::W7, &Ui_KVS::W7disch, &Ui_KVS::T7, &Ui_KVS::T7temp},
};

constexpr int pressureDepth = 5; // above 2, so the exponent notation
const QColor validColour(0, 128, 255);
const QColor invalidColour(255, 32, 0);
const QColor connectedChamber(160, 255, 255);
const QColor closedChamber(214, 210, 208);

const auto& nameOf(KVS::Device device)
{
    const auto i = std::find_if(std::begin(names), std::end(names),
                                [device](const auto& name) { return name.device == device; });
    Q_ASSERT(i != std::end(names));
    return *i;
}

QString kindOf(KVS::Device device)
{
    return QString::fromUtf8(nameOf(device).kind);
}

QString tagOf(KVS::Device device)
{
    return QString::fromUtf8(nameOf(device).tag);
}

// One journal line about a device; `endings` for the states 0 to 3.
QString stateLine(int state, const QString& kind, const QString& tag, const char* const (&endings)[4])
{
    const bool known = state >= 0 && state < int(std::size(endings));
    return QLatin1String(known ? "[I]" : "[W]") + kind + QLatin1Char(' ') + tag +
           QString::fromUtf8(known ? endings[state] : " - ошибка!");
}

} // namespace

void KVS::initSprites()
{
    for (PoSprite* sprite : findChildren<PoSprite*>()) {
        const QString stem = sprite->property("stem").toString();
        for (const auto& picture : suffixes) {
            const QString file = QStringLiteral(":/images/%1%2.png").arg(stem, QLatin1String(picture.suffix));
            if (!stem.isEmpty() && QFile::exists(file))
                sprite->addPixmap(picture.state, file);
        }
    }
    showJacket(false);
    changedChamberState();
    ui->Door->move(m_doorX, m_doorY);
}

void KVS::initSensors()
{
    for (size_t i = 0; i < std::size(gauges); ++i) {
        PoLabel* const value = ui.get()->*gauges[i].value;
        PoLabel* const unit = ui.get()->*gauges[i].unit;
        value->setDepth(pressureDepth); // no value is set: what the form shows stays until the first reading
        connect(value, &PoLabel::clicked, this, &KVS::changePressUnit);
        connect(unit, &PoLabel::clicked, this, &KVS::changePressUnit);
    }
    connectPressures();
    connectWater();
    connect(&m_kvs, &KVSStatus::changedTempCorpND, this, &KVS::onChangedND1CorpTemp);
    connect(&m_kvs, &KVSStatus::changedTempOilND, this, &KVS::onChangedND1Temp);
    connect(&m_kvk, &KVKStatus::changedTMNFreq, this, &KVS::changedTMNFreq);
}

void KVS::connectPressures()
{
    connect(&m_kvs, &KVSStatus::changedPT1, this, &KVS::onChangedPT1);
    connect(&m_kvs, &KVSStatus::changedPT2, this, &KVS::onChangedPT2);
    connect(&m_kvs, &KVSStatus::changedPT3, this, &KVS::onChangedPT3);
    connect(&m_kvk, &KVKStatus::changedPT4, this, &KVS::onChangedPT4);
    connect(&m_kvk, &KVKStatus::changedPT5, this, &KVS::onChangedPT5);
    connect(&m_kvk, &KVKStatus::changedPT5, this, &KVS::changedChamberPressure);
    connect(&m_kvk, &KVKStatus::changedPT6, this, &KVS::onChangedPT6);
    connect(&m_kvk, &KVKStatus::changedPT6, this, &KVS::changedGunPressure);
    connect(&m_kvs, &KVSStatus::changedPT1Valid, this, &KVS::onChangedPT1Valid);
    connect(&m_kvs, &KVSStatus::changedPT2Valid, this, &KVS::onChangedPT2Valid);
    connect(&m_kvs, &KVSStatus::changedPT3Valid, this, &KVS::onChangedPT3Valid);
    connect(&m_kvk, &KVKStatus::changedPT4Valid, this, &KVS::onChangedPT4Valid);
    connect(&m_kvk, &KVKStatus::changedPT5Valid, this, &KVS::onChangedPT5Valid);
    connect(&m_kvk, &KVKStatus::changedPT5Valid, this, &KVS::changedChamberPressureValid);
    // The gauge of the gun hangs on the unit BKU and is as valid as that.
    connect(&m_kvk, &KVKStatus::changedBKUValid, this, &KVS::onChangedPT6Valid);
    connect(&m_kvk, &KVKStatus::changedBKUValid, this, &KVS::changedGunPressureValid);
}

void KVS::connectWater()
{
    constexpr struct
    {
        void (KVSStatus::*flow)(float);
        void (KVS::*flowSlot)(float);
        void (KVSStatus::*temperature)(float);
        void (KVS::*temperatureSlot)(float);
    } water[] = {
        {&KVSStatus::changedDisch1, &KVS::changedW1, &KVSStatus::changedTemp1, &KVS::changedT1},
        {&KVSStatus::changedDisch2, &KVS::changedW2, &KVSStatus::changedTemp2, &KVS::changedT2},
        {&KVSStatus::changedDisch3, &KVS::changedW3, &KVSStatus::changedTemp3, &KVS::changedT3},
        {&KVSStatus::changedDisch4, &KVS::changedW4, &KVSStatus::changedTemp4, &KVS::changedT4},
        {&KVSStatus::changedDisch5, &KVS::changedW5, &KVSStatus::changedTemp5, &KVS::changedT5},
        {&KVSStatus::changedDisch6, &KVS::changedW6, &KVSStatus::changedTemp6, &KVS::changedT6},
        {&KVSStatus::changedDisch7, &KVS::changedW7, &KVSStatus::changedTemp7, &KVS::changedT7},
    };
    for (const auto& circuit : water) {
        connect(&m_kvs, circuit.flow, this, circuit.flowSlot);
        connect(&m_kvs, circuit.temperature, this, circuit.temperatureSlot);
    }
}

void KVS::setPumpState(Device pump, int state)
{
    m_states[pump] = state;
    setPumpStateText(state, kindOf(pump), tagOf(pump));
}

void KVS::setValveState(Device valve, int state)
{
    m_states[valve] = state;
    setValveTextState(state, kindOf(valve), tagOf(valve));
    lightPipes(valve);
    if (valve == VP5)
        showJacket(lit(VP5));
    if (valve == VP1 || valve == VP3 || valve == VP4 || valve == VP8)
        changedChamberState();
}

// Below 0 nothing is known yet of TMN, VPT and VE1, and their picture stays. A state above 4 ends the process
// for want of a picture, as it does with every device of the panel: a controller of another make is to be
// noticed.
void KVS::changedTMN(int state)
{
    m_states[TMN] = state;
    if (state < 0)
        return;
    ui->TMN->setSprite(state);
    setPumpStateText(state, kindOf(TMN), tagOf(TMN));
}

void KVS::changedVPT(int state)
{
    m_states[VPT] = state;
    if (state < 0)
        return;
    ui->VPT->setSprite(state);
    setValveTextState(state, kindOf(VPT), tagOf(VPT));
    lightPipes(VPT);
}

void KVS::changedVE1(int state)
{
    m_states[VE1] = state;
    if (state < 0)
        return;
    ui->VE1->setSprite(state);
    setValveTextState(state, kindOf(VE1), tagOf(VE1));
}

void KVS::changedNP1(bool on)
{
    ui->NP1->setSprite(on ? 1 : 0);
}

void KVS::changedNW1(bool on)
{
    ui->NW1->setSprite(on ? 1 : 0);
}

void KVS::setPumpStateText(int state, const QString& kind, const QString& tag)
{
    emit message(stateLine(state, kind, tag, {" выключен", " включен", " выключается", " включается"}), true);
}

void KVS::setValveTextState(int state, const QString& kind, const QString& tag)
{
    emit message(stateLine(state, kind, tag, {" закрыт", " открыт", " закрывается", " открывается"}), true);
}

void KVS::lightPipes(Device valve)
{
    for (const PipeRule& rule : pipeRules) {
        if (rule.valve != valve)
            continue;
        const bool alone = std::none_of(std::begin(rule.others), std::end(rule.others),
                                        [this](Device other) { return lit(other); });
        if (!lit(valve) && !alone)
            continue;
        for (Sprite pipe : rule.pipes) {
            if (pipe)
                (ui.get()->*pipe)->setSprite(lit(valve) ? 1 : 0);
        }
    }
}

void KVS::showJacket(bool shown)
{
    for (const auto pipe : jacketPipes)
        (ui.get()->*pipe)->setVisible(shown);
}

void KVS::changedChamberState()
{
    m_chamberConnected = m_states[VP1] == 1 || m_states[VP3] == 1 || m_states[VP4] == 1 || m_states[VP8] == 1;
    setBackground(ui->frmChamber, m_chamberConnected ? connectedChamber : closedChamber);
}

void KVS::setBackground(QWidget* widget, const QColor& colour)
{
    QPalette colours = widget->palette();
    colours.setColor(QPalette::Window, colour);
    widget->setPalette(colours);
    widget->setAutoFillBackground(true);
}

void KVS::showPressure(int gauge, float pascal)
{
    (ui.get()->*gauges[gauge].value)->setValue(pascal, pressureDepth);
}

void KVS::showValid(int gauge, bool valid)
{
    const QColor& colour = valid ? validColour : invalidColour;
    setBackground(ui.get()->*gauges[gauge].value, colour);
    setBackground(ui.get()->*gauges[gauge].unit, colour);
    if (!valid)
        emit message(QStringLiteral("[W]Нарушен обмен с датчиком вакуума PT%1!").arg(gauge + 1), true);
}

void KVS::setPressUnit(int unit)
{
    if (unit != 0 && unit != 1)
        return;
    m_pressUnit = unit;
    for (const auto& gauge : gauges) {
        (ui.get()->*gauge.value)->setCoeff(pressureScale(unit != 0));
        (ui.get()->*gauge.unit)->setText(pressureUnit(unit != 0));
    }
}

void KVS::changePressUnit()
{
    setPressUnit(m_pressUnit == 0 ? 1 : 0);
    emit onChangedPressUnit(m_pressUnit != 0);
}

// A flow of exactly the limit is enough.
void KVS::showFlow(int circuit, float flow)
{
    (ui.get()->*circuits[circuit].flowLamp)->setSprite(m_minDischW[size_t(circuit)] > flow ? 0 : 1);
    (ui.get()->*circuits[circuit].flow)->setValue(flow, 1);
}

void KVS::showTemperature(int circuit, float celsius)
{
    (ui.get()->*circuits[circuit].temperatureLamp)->setSprite(getTemperatureState(celsius));
    (ui.get()->*circuits[circuit].temperature)->setValue(celsius, 1);
}

int KVS::getTemperatureState(float celsius) const
{
    return celsius > m_tempError ? 0 : celsius > m_tempWarning ? 2 : 1;
}

void KVS::onChangedND1Temp(float celsius)
{
    ui->ND1temp->setValue(celsius, 1);
}

void KVS::onChangedND1CorpTemp(float celsius)
{
    ui->ND1CorpTemp->setValue(celsius, 1);
}

void KVS::changedTMNFreq(float frequency)
{
    ui->FreqTMN->setValue(frequency, 0);
}
