#include "vacuumdialogs.h"

#include "eldlg.h"
#include "kvscomm.h"

#include <QWidget>

#include <iterator>

namespace {

// How a kind of device is spoken of.
struct Kind
{
    const char* textOn;
    const char* textOff;
    const char* states[4];
};
constexpr Kind pump{"Включить", "Выключить", {"[выключен]", "[включен]", "[выключается]", "[включается]"}};
constexpr Kind valve{"Открыть", "Закрыть", {"[закрыт]", "[открыт]", "[закрывается]", "[открывается]"}};
// On is released.
constexpr Kind door{"Отжать", "Прижать", {"[прижата]", "[отжата]", "[прижимается]", "[отжимается]"}};

struct Reading
{
    const char* name;
    const char* element;
};

template <class Status>
struct Device
{
    const char* widget; // on the panel; in capitals, the name of its locks
    const char* id;
    const char* name;
    const Kind& kind;
    const char* cmdOn;
    const char* cmdOff;
    void (Status::*state)(int);
    Reading readings[10]; // in the order of the rows; the rest is empty
};

// clang-format off
constexpr Device<KVSStatus> kvsDevices[] = {
    {"NL1", "NL1", "Насос пластинчато-роторный\n2НВР-250Д", pump, "NL1 ON", "NL1 OFF", &KVSStatus::changedNL1State,
     {{"Питание", "NL1:Power"}, {"Перегрев", "NL1:Thermal"}, {"Проток, л/мин", "Discharge07"},
      {"Температура ОЖ, °C", "Temp07"}}},
    {"NL2", "NL2", "Насос пластинчато-роторный\nSV-750B", pump, "NL2 ON", "NL2 OFF", &KVSStatus::changedNL2State,
     {{"Питание", "NL2:Power"}, {"Перегрев", "NL2:Thermal"}}},
    {"NZ1", "NZ1", "Насос Рутса двухроторный\nНВД-600", pump, "NZ1 ON", "NZ1 OFF", &KVSStatus::changedNZ1State,
     {{"Питание", "NZ1:Power"}, {"Перегрев", "NZ1:Thermal"}}},
    {"NZ2", "NZ2", "Насос Рутса двухроторный\nWH-4400", pump, "NZ2 ON", "NZ2 OFF", &KVSStatus::changedNZ2State,
     {{"Питание", "NZ2:Power"}, {"Перегрев", "NZ2:Thermal"}, {"Проток, л/мин", "Discharge06"},
      {"Температура ОЖ, °C", "Temp06"}}},
    {"NW2", "NW2", "Насос циркуляционный\nGrundfos CM3-2", pump, "NW2 ON", "NW2 OFF", &KVSStatus::changedNW2State,
     {{"Питание", "NW2:Power"}, {"Проток, л/мин", "Discharge01"}, {"Темп-ра ОЖ, °C", "Temp01"}}},
    {"ND1", "ND1", "Насос диффузионный\nНД-1000", pump, "ND1 ON", "ND1 OFF", &KVSStatus::changedND1State,
     {{"Питание", "ND1:Power"}, {"Перегрев", "ND1:Thermal"}, {"Проток 1, л/мин", "Discharge02"},
      {"Температура ОЖ 1, °C", "Temp02"}, {"Проток 2, л/мин", "Discharge03"},
      {"Температура ОЖ 2, °C", "Temp03"}, {"Проток 3, л/мин", "Discharge04"},
      {"Температура ОЖ 3, °C", "Temp04"}, {"Проток 4, л/мин", "Discharge05"},
      {"Температура ОЖ 4, °C", "Temp05"}}},
    {"VP1", "VP1", "Затвор вакуумный\nЗВП-1000", valve, "VP1 ON", "VP1 OFF", &KVSStatus::changedVP1State, {}},
    {"VP2", "VP2", "Клапан угловой\nGDQ-J100B", valve, "VP2 ON", "VP2 OFF", &KVSStatus::changedVP2State, {}},
    {"VP3", "VP3", "Клапан плоский\nЗВПлП-250", valve, "VP3 ON", "VP3 OFF", &KVSStatus::changedVP3State, {}},
    {"VP5", "VP5", "Клапан вакуумный\nGDQ-J63B", valve, "VP5 ON", "VP5 OFF", &KVSStatus::changedVP5State, {}},
    {"VP6", "VP6", "Клапан вакуумный\nGDQ-J25B", valve, "VP6 ON", "VP6 OFF", &KVSStatus::changedVP6State, {}},
    {"VP7", "VP7", "Клапан вакуумный\nGDQ-J25B", valve, "VP7 ON", "VP7 OFF", &KVSStatus::changedVP7State, {}},
};

constexpr Device<KVKStatus> kvkDevices[] = {
    {"VP4", "VP4", "Клапан вакуумный\nGDQ-J63B", valve, "VP4 ON", "VP4 OFF", &KVKStatus::changedVP4State, {}},
    {"VP8", "VP8", "Клапан вакуумный\nGDQ-J25B", valve, "VP8 ON", "VP8 OFF", &KVKStatus::changedVP8State, {}},
    {"Door", "Дверь", "Клапаны пневмо-электрические Camozzi", door, "DOOR UNPRESS", "DOOR PRESS", &KVKStatus::changedDoorState, {}},
    {"TMN", "ТМН", "Насос турбомолекулярный", pump, "BKU(3,1)", "BKU(3,0)", &KVKStatus::changedStateTMN, {}},
    {"VPT", "VPT", "Клапан напуска ТМН", valve, "BKU(1,1)", "BKU(1,0)", &KVKStatus::changedStateVPT, {}},
    {"VE1", "VE1", "Шибер", valve, "BKU(2,1)", "BKU(2,0)", &KVKStatus::changedStateVE, {}},
};
// clang-format on

QStringList texts(const char* const (&list)[4])
{
    QStringList all;
    for (const char* text : list)
        all += QString::fromUtf8(text);
    return all;
}

template <class Dialog, class Link, class Status>
void makeDialogs(const Device<Status>* first, const Device<Status>* end, Link* link, const VacuumPlant& plant,
                 const QWidget* panel, QMap<QString, DeviceDlg*>& dialogs)
{
    for (const Device<Status>* device = first; device != end; ++device) {
        const QString widget = QString::fromUtf8(device->widget);
        const QString key = widget.toUpper();
        const QString lockOn = key + QStringLiteral(":LockOn");
        const QString lockOff = key + QStringLiteral(":LockOff");
        QStringList names;
        QList<LenzeElement*> elements;
        for (const Reading* reading = device->readings;
             reading != std::end(device->readings) && reading->name; ++reading) {
            names += QString::fromUtf8(reading->name);
            elements += plant.element(QString::fromUtf8(reading->element));
        }
        const Kind& kind = device->kind;
        auto* dialog =
            new Dialog(link, panel->findChild<QWidget*>(widget), QString::fromUtf8(device->id),
                       QString::fromUtf8(device->name), -1, plant.lock(lockOn), plant.lock(lockOff),
                       plant.reasons(lockOn), plant.reasons(lockOff), QString::fromUtf8(kind.textOn),
                       QString::fromUtf8(kind.textOff), QString::fromUtf8(device->cmdOn),
                       QString::fromUtf8(device->cmdOff), texts(kind.states), names, elements);
        QObject::connect(link, device->state, dialog, &DeviceDlg::onStateChanged);
        dialogs.insert(key, dialog);
    }
}

} // namespace

QMap<QString, DeviceDlg*> makeVacuumDialogs(const VacuumPlant& plant, const QWidget* panel)
{
    QMap<QString, DeviceDlg*> dialogs;
    makeDialogs<KvsDlg>(std::begin(kvsDevices), std::end(kvsDevices), plant.kvs, plant, panel, dialogs);
    makeDialogs<KvkDlg>(std::begin(kvkDevices), std::end(kvkDevices), plant.kvk, plant, panel, dialogs);
    return dialogs;
}
