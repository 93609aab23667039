#include "trainer/machinelimits.h"

#include "plant/axes.h"

#include <QFile>
#include <QStringList>
#include <QVector>

#include <algorithm>
#include <cmath>

MachineLimits::MachineLimits()
{
    for (const plant::AxisId id :
         {plant::AxisId::LX1, plant::AxisId::LY, plant::AxisId::Z, plant::AxisId::V}) {
        const plant::AxisTraits& axis = plant::traits(id);
        const plant::CoordTraits& coord = plant::traits(axis.coord);
        axes.insert(QLatin1String(coord.name), {coord.min, coord.max, axis.maxSpeed, coord.endless});
    }
}

bool MachineLimits::read(const QString& file, QString* error)
{
    QFile source(file);
    constexpr qint64 most = 64 * 1024;
    if (!source.open(QIODevice::ReadOnly) || source.size() > most) {
        *error = QStringLiteral("файл пределов не читается");
        return false;
    }
    int number = 0;
    for (const QString& line : QString::fromUtf8(source.readAll()).split('\n')) {
        ++number;
        QStringList words = line.section('#', 0, 0).simplified().split(' ', Qt::SkipEmptyParts);
        if (words.isEmpty())
            continue;
        const QString name = words.takeFirst();
        QVector<double> values;
        bool ok = true;
        for (const QString& word : qAsConst(words)) {
            bool isNumber = false;
            values.append(word.toDouble(&isNumber));
            ok = ok && isNumber && std::isfinite(values.last());
        }
        const QMap<QString, double*> single{
            {"beam", &beam}, {"focus", &focus}, {"voltage", &voltage}, {"still", &still}};
        if (ok && axes.contains(name) && values.size() == 3 && values[0] < values[1] && values[2] > 0)
            axes[name] = {values[0], values[1], values[2], axes[name].endless};
        else if (ok && single.contains(name) && values.size() == 1 && values[0] > 0)
            *single[name] = values[0];
        else {
            *error =
                QStringLiteral("файл пределов, строка %1: «%2»").arg(number).arg(line.trimmed().left(60));
            return false;
        }
    }
    return true;
}
