#include "cncmessages.h"

namespace {

struct AxisName
{
    const char* shown;
    const char* name; // as in commands; of a pair the leading axis
};

const AxisName kDrives[] = {{"LX", "LX"}, {"LY", "LY"}, {"A", "A"},  {"B", "B"},
                            {"C", "C"},   {"D", "D"},   {"U", "U1"}, {"V", "V"}};
const AxisName kVirtual[] = {{"X", "X"}, {"Z", "Z"}, {"PHI", "PHI"}};

// Events of consecutive numbers, one for each axis; %1 is the axis. A line without axes is a single event.
struct Family
{
    unsigned int first;
    const AxisName* axes;
    unsigned int count;
    const char* line;
    CNCValue value;
};

const char kOverload[] =
    "[W]CML75: Перегрузка по току привода %1 - движение по оси и выполнение программы остановлено";
const char kMaxReached[] = "[W]CML75: Сработал положительный программный конечник координаты %1";
const char kMinReached[] = "[W]CML75: Сработал отрицательный программный конечник координаты %1";
const char kMinChanged[] =
    "[I]CML75: Изменено значение отрицательного программного конечника %1, новое значение ";
const char kMaxChanged[] =
    "[I]CML75: Изменено значение положительного программного конечника %1, новое значение ";
const char kReferenced[] = "[I]CML75: Выполнено референцирование оси %1, новая координата ";

const Family kFamilies[] = {
    {101, nullptr, 1, "[W]CML75: Отключение приводов: нет разрешения по датчику вакуума", CNCValue::None},
    {102, nullptr, 1, "[W]CML75: Отключение приводов: команда от контроллера вакуумной системы",
     CNCValue::None},
    {103, nullptr, 1, "[W]CML75: Отключение приводов: сработан аварийный сигнал (кнопка или трос)",
     CNCValue::None},
    {104, nullptr, 1, "[W]CML75: Отключение приводов: дверь камеры закрывается", CNCValue::None},
    {111, nullptr, 1, "[W]CML75: Невозможно запустить программу ЧПУ - приводы не включены", CNCValue::None},
    {121, kDrives, 8, kOverload, CNCValue::None},
    {131, kDrives, 8, kMaxReached, CNCValue::None},
    {141, kDrives, 8, kMinReached, CNCValue::None},
    {151, kVirtual, 3, kMaxReached, CNCValue::None},
    {156, kVirtual, 3, kMinReached, CNCValue::None},
    {161, kDrives, 8, kMinChanged, CNCValue::MinLimit},
    {169, kVirtual, 3, kMinChanged, CNCValue::MinLimit},
    {181, kDrives, 8, kMaxChanged, CNCValue::MaxLimit},
    {189, kVirtual, 3, kMaxChanged, CNCValue::MaxLimit},
    // The second drives of LX and U, which would be 202 and 209, are not referenced by themselves.
    {201, kDrives, 1, kReferenced, CNCValue::Coord},
    {203, kDrives + 1, 6, kReferenced, CNCValue::Coord},
    {210, kDrives + 7, 1, kReferenced, CNCValue::Coord},
};

} // namespace

QString cncMessage(unsigned int number, const CNCValueOf& value)
{
    for (const Family& family : kFamilies) {
        if (number < family.first || number >= family.first + family.count)
            continue;
        QString line = QString::fromUtf8(family.line);
        if (!family.axes)
            return line;
        const AxisName& axis = family.axes[number - family.first];
        line = line.arg(QLatin1String(axis.shown));
        if (family.value != CNCValue::None)
            line += QString::number(value(family.value, QLatin1String(axis.name)), 'f', 2);
        return line;
    }
    return QStringLiteral("[A]CML75: Неизвестное сообщение (%1)").arg(number);
}
