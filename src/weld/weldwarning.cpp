#include "weldwarning.h"

#include "schema.h"
#include "weldgeometry.h"

#include <algorithm>

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
                   "[W]На пути %1 мм таблица идёт назад, а машина так не пойдёт: луч и движение разойдутся")
            .arg(path);
    case WeldDoubt::None:
        break;
    }
    return {};
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
