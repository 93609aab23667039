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

qint64 programLines(const WeldContour& contour, const QVector<TechRow>& tech)
{
    constexpr int frameLines = 2; // an arc with its plane, or a turn with the move that follows it
    constexpr int stopLines = 20;
    constexpr int rasterLines = 11;
    qint64 lines = 50 + frameLines * qint64(passCount(contour)) * contour.rows.size(); // with heads and tails
    for (const TechRow& row : tech) {
        if (row.stop)
            lines += stopLines;
        else if (row.on)
            lines += frameLines + 1 + (row.raster.kind == Raster::On ? rasterLines : 0);
    }
    return lines;
}

QString tooLongText(qint64 lines)
{
    if (lines <= maxProgramLines)
        return {};
    return QStringLiteral(
               "[A]Программа не создана: %1 строк, допустимо %2. Уменьшите число точек или проходов")
        .arg(lines)
        .arg(maxProgramLines);
}
