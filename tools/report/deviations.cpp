#include "deviations.h"

#include <cmath>

const QVector<Pair>& pairs()
{
    static const QVector<Pair> all{
        {QStringLiteral("Уст. I луча"), QStringLiteral("I луча"), QStringLiteral("Ток луча, мА"), 0.1},
        {QStringLiteral("Уст. I фок."), QStringLiteral("I фок."), QStringLiteral("Ток фокуса, мА"), 1}};
    return all;
}

double allowed(const Pair& pair, double set, double percent)
{
    return qMax(pair.digit * 1.0001, std::abs(set) * percent / 100);
}

QVector<Deviation> deviations(const RecordFile& record, double percent)
{
    QVector<Deviation> spans;
    for (int pair = 0; pair < pairs().size(); ++pair) {
        const QVector<double>* const set = record.column(pairs()[pair].set);
        const QVector<double>* const actual = record.column(pairs()[pair].actual);
        double worst = 0;
        bool open = false;
        for (int i = 0; set && actual && i < record.samples(); ++i) {
            const double distance = std::abs((*actual)[i] - (*set)[i]);
            if (!(distance > allowed(pairs()[pair], (*set)[i], percent))) {
                open = false; // a NaN too
                continue;
            }
            if (!open)
                spans.append({pair, i, i, i});
            if (!open || distance > worst) {
                spans.last().worst = i;
                worst = distance;
            }
            spans.last().last = i;
            open = true;
        }
    }
    return spans;
}

QStringList deviationCells(const RecordFile& record, const Deviation& span)
{
    const auto text = [](double value, int decimals) {
        return std::isfinite(value)
                   ? QString::number(value, 'f', decimals).replace(QLatin1Char('.'), QLatin1Char(','))
                   : QStringLiteral("—");
    };
    const auto range = [&](const QVector<double>* column, int decimals) {
        return column ? text((*column)[span.first], decimals) + QStringLiteral(" – ") +
                            text((*column)[span.last], decimals)
                      : QStringLiteral("—");
    };
    const Pair& pair = pairs()[span.pair];
    const double set = (*record.column(pair.set))[span.worst];
    const double actual = (*record.column(pair.actual))[span.worst];
    const int decimals = pair.digit < 1 ? 1 : 0;
    const QString share =
        set == 0 ? QStringLiteral("—") : text(100 * (actual - set) / std::abs(set), 1) + QStringLiteral(" %");
    return {
        pair.name,           range(&record.columns[0], 1), range(record.column(QStringLiteral("Путь")), 2),
        text(set, decimals), text(actual, decimals),       share};
}

QStringList deviationTitles()
{
    return {QStringLiteral("Величина"), QStringLiteral("Время, с"), QStringLiteral("Путь, мм"),
            QStringLiteral("Уставка"),  QStringLiteral("Факт"),     QStringLiteral("Отклонение")};
}
