#include "weldwarning.h"

#include "schema.h"
#include "weldgeometry.h"

#include <algorithm>

namespace {

// %1 the path, %2 the row as the table counts it.
struct PlaceText
{
    WeldDoubt::Kind kind;
    const char* text;
};
constexpr PlaceText placeTexts[] = {
    {WeldDoubt::OffArc, "[W]Строка %2, путь %1 мм: радиус дуги с дробью, рез ляжет мимо дуги"},
    {WeldDoubt::StopShort, "[W]Останов, строка %2: поперёк X машина встанет, не дойдя до пути %1 мм"},
    {WeldDoubt::StopWithBeam, "[W]Останов, строка %2, путь %1 мм: луч не снят и будет гореть на месте"},
    {WeldDoubt::StopInClosing,
     "[W]Останов в замыкающем кадре, строка %2, путь %1 мм: следующего останова канал 3 не дождётся"},
    {WeldDoubt::StopNotMet, "[W]Останов, строка %2: движение кончится раньше, канал 3 будет ждать без конца"},
    {WeldDoubt::EndsEarly, "[W]Строка %2: движение кончится на пути %1 мм, а луч будет гореть дальше"},
    {WeldDoubt::NoMotion, "[W]Строка %2, путь %1 мм: единственный проход пропускается, движения не будет"},
    {WeldDoubt::Backward,
     "[W]Замыкание обратным ходом: с пути %1 мм луч по таблице горит, а движение идёт иначе"},
    {WeldDoubt::NoSpeed, "[W]Строка %2, путь %1 мм: скорость не больше нуля, канал 1 встанет с ошибкой"},
    {WeldDoubt::CurrentSteps, "[W]Строка %2: ток меняется скачком на пути %1 мм, луч останется прежним"},
    {WeldDoubt::NoArc, "[W]Точка %2 контура: дуге не хватает радиуса до следующей точки, пуск станет"},
    {WeldDoubt::NoWay, "[W]Точка %2 контура: кадр без длины, а машина пойдёт: луч и движение разойдутся"},
    {WeldDoubt::SteepArc, "[W]Точка %2 контура, путь %1 мм: дуга короткая, поперёк неё ось пойдёт рывком"},
    {WeldDoubt::RingRatio,
     "[W]Кольцо: множитель ARF округлён, у строки %2 на пути %1 мм поворот разойдётся с лучом"},
    {WeldDoubt::ArcTurned, "[W]Точка %2 контура, путь %1 мм: дуга пойдёт в другую сторону"},
    {WeldDoubt::TooLong, "[W]Программа слишком длинная, пульт её не запустит"},
};

} // namespace

QString doubtText(const WeldDoubt& doubt)
{
    const QString path = QString::number(double(doubt.path), 'f', 2);
    switch (doubt.kind) {
    case WeldDoubt::SpeedKept:
        return QStringLiteral("[W]Поперёк X скорость не меняется: на пути %1 мм луч и движение разойдутся")
            .arg(path);
    case WeldDoubt::OffSeam:
        return QStringLiteral("[W]Шов не прямой: на пути %1 мм таблица идёт назад, луч пройдёт мимо шва")
            .arg(path);
    case WeldDoubt::OutOfStep:
        return QStringLiteral(
                   "[W]На пути %1 мм таблица идёт назад, машина так не пойдёт: луч и движение разойдутся")
            .arg(path);
    case WeldDoubt::None:
        return {};
    default:
        break;
    }
    const auto found = std::find_if(std::begin(placeTexts), std::end(placeTexts),
                                    [&](const PlaceText& text) { return text.kind == doubt.kind; });
    Q_ASSERT(found != std::end(placeTexts));
    return QString(found->text).replace("%1", path).replace("%2", QString::number(doubt.row + 1));
}

qint64 programLines(const WeldTables& tables)
{
    constexpr int headsAndTails = 50;
    constexpr int stopLines = 20;
    constexpr int rasterLines = 11;
    const WeldContour& contour = tables.contour;
    // A turn has the manipulator's move beside it, an arc its plane before it.
    const auto moveLines = [&](const Frame& frame) {
        return contour.schema->circle() || frame.type == Frame::Arc ? 2 : 1;
    };
    qint64 lines = 0;
    int longest = 1;
    for (const ContourRow& row : contour.rows) {
        lines += moveLines(row.frame);
        longest = std::max(longest, moveLines(row.frame));
    }
    lines = lines * passCount(contour) + headsAndTails;
    for (const TechRow& row : tables.tech) {
        if (row.stop)
            lines += stopLines;
        else if (row.on)
            lines += longest + 1 + (row.raster.kind == Raster::On ? rasterLines : 0);
    }
    return lines;
}

QString tooLongText(qint64 lines)
{
    if (lines <= maxProgramLines)
        return {};
    return QStringLiteral(
               "[A]Программа не создана: было бы строк %1, допустимо %2. Уменьшите число точек или проходов")
        .arg(lines)
        .arg(maxProgramLines);
}

QString tooManyRowsText(qint64 rows)
{
    if (rows <= maxTechRows)
        return {};
    return QStringLiteral("[A]Точки не добавлены: в таблице было бы строк %1, допустимо %2")
        .arg(rows)
        .arg(maxTechRows);
}
