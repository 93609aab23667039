#include "weldpattern.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

// Sums of lengths typed with one decimal differ from the period by their rounding; that is no longer tack.
constexpr double sameLength = 0.001;

bool fits(const WeldPattern& pattern, double period)
{
    return double(pattern.length()) - period < sameLength;
}

QString joined(const QVector<int>& order)
{
    QStringList texts;
    for (const int tack : order)
        texts << QString::number(tack);
    return texts.join(QLatin1Char(','));
}

} // namespace

double degreeLength(float D)
{
    return double(D) * M_PI / 360;
}

QVector<PatternRow> weldRows(const WeldPattern& pattern, double scale)
{
    const auto mm = [scale](float units) { return float(double(units) * scale); };
    return {{0, 0, pattern.weldSpeed},
            {mm(pattern.ascend), pattern.Ir, pattern.weldSpeed},
            {mm(pattern.peak), pattern.Ir, pattern.weldSpeed},
            {mm(pattern.descend), 0, pattern.moveSpeed}};
}

std::optional<QVector<PatternRow>> linTackRows(const WeldPattern& pattern, float period,
                                               const QVector<int>& order)
{
    if (!fits(pattern, double(period)))
        return {};
    const double gap = std::max(0.0, double(period) - double(pattern.length()));
    QVector<PatternRow> rows;
    for (const int tack : order) {
        double path = double(period) * tack + 0.5 * gap;
        for (const PatternRow& row : weldRows(pattern)) {
            path += double(row.path);
            rows.append({float(path), row.Ir, row.speed});
        }
    }
    return rows;
}

std::optional<QVector<PatternRow>> circleTackRows(const WeldPattern& pattern, int number, double period,
                                                  const QVector<int>& order, double scale)
{
    if (!fits(pattern, period))
        return {};
    QVector<PatternRow> rows;
    qint64 before = 0;
    for (const qint64 tack : order) {
        qint64 periods = (number + tack - before) % number;
        if (periods < 0) // an order typed by hand may name places beyond one turn
            periods += number;
        before = tack;
        // The first tack begins where the one before ended; any other goes there with the beam off.
        const double way = std::max(0.0, double(periods) * period - double(pattern.length()));
        QVector<PatternRow> one = weldRows(pattern, scale);
        one.first().path = float(way * scale);
        if (periods == 0 || way == 0)
            one.removeFirst();
        rows += one;
    }
    return rows;
}

QString linTacksOrder(int number)
{
    QVector<int> order{number / 2};
    for (int i = 2; i <= number; ++i)
        order << (i % 2 ? number - 1 - (i - 3) / 2 : (i - 2) / 2);
    return joined(order);
}

QString circleTacksOrder(int number)
{
    if (number == 8) // found on the machine; by the rule below the heat would gather on one side
        return QStringLiteral("0,4,6,2,3,5,7,1");
    QVector<int> order{0};
    for (int i = 1; i < number; ++i) {
        const bool opposite = i % 2 || number % 2;
        order << (order.last() + number / 2 + (opposite ? 0 : 1)) % number;
    }
    return joined(order);
}

QVector<int> tacksOrder(const QString& text)
{
    QVector<int> order;
    for (const QString& entry : text.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        bool isNumber = false;
        const int tack = entry.toInt(&isNumber, 10);
        if (!isNumber)
            break;
        order << tack;
    }
    return order;
}

QVector<int> mergedOrder(const QVector<float>& table, const QVector<float>& paths)
{
    // A row beyond all others goes to the top, and whatever comes after it, not beyond, goes before it: from
    // there on it is a table of its own.
    float highest = -std::numeric_limits<float>::infinity();
    for (const float path : table)
        highest = std::max(highest, path);
    QVector<QVector<int>> groups(1);
    for (int i = 0; i < paths.size(); ++i) {
        if (paths[i] > highest) {
            highest = paths[i];
            groups.append(QVector<int>());
        }
        groups.last().append(i);
    }
    for (QVector<int>& group : groups) // of two at one path the later stands first
        std::sort(group.begin(), group.end(),
                  [&](int a, int b) { return paths[a] != paths[b] ? paths[a] < paths[b] : a > b; });

    QVector<int> order;
    order.reserve(table.size() + paths.size());
    for (int i = groups.size() - 1; i > 0; --i) {
        for (const int added : qAsConst(groups[i]))
            order.append(table.size() + added);
    }
    auto next = groups.first().cbegin();
    for (int row = 0; row < table.size(); ++row) {
        for (; next != groups.first().cend() && paths[*next] <= table[row]; ++next)
            order.append(table.size() + *next);
        order.append(row);
    }
    return order;
}
