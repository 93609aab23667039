#pragma once

#include <QByteArray>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

// The rows of a benchmark, one for each measure, as `./check bench` puts them together:
//   measure, figure, yardstick of the same run with its figure, figure / yardstick, limit, whether it holds

// What the figure is measured against, in the figure's unit.
struct Yardstick
{
    const char* name;
    double value;
};

// Of the figure itself, or of its ratio to the yardstick.
struct Limit
{
    enum Of { Nothing, Figure, Ratio } of = Nothing;
    enum Side { AtMost, AtLeast } side = AtMost;
    double value = 0;
};
constexpr Limit noLimit{};
constexpr Limit atMost(double value)
{
    return {Limit::Figure, Limit::AtMost, value};
}
constexpr Limit atMostTimes(double value)
{
    return {Limit::Ratio, Limit::AtMost, value};
}
constexpr Limit atLeastTimes(double value)
{
    return {Limit::Ratio, Limit::AtLeast, value};
}

class Table
{
public:
    void row(const QByteArray& measure, double figure, const char* unit, Yardstick yardstick, Limit limit)
    {
        const double ratio = yardstick.value > 0 ? figure / yardstick.value : std::nan("");
        const bool holds = within(limit, figure, ratio);
        m_holds = m_holds && holds;
        QByteArray told = "-";
        if (limit.of != Limit::Nothing)
            told = (limit.side == Limit::AtMost ? "<= " : ">= ") + QByteArray::number(limit.value) + ' ' +
                   (limit.of == Limit::Ratio ? "times" : unit);
        std::printf("%-54s %10s %-6s %-32s %10s %8s  %-13s %s\n", measure.constData(),
                    number(figure).constData(), unit, yardstick.name, number(yardstick.value).constData(),
                    number(ratio).constData(), told.constData(), holds ? "ok" : "BEYOND");
        std::fflush(stdout);
    }
    // A measure that could not be taken.
    void missing(const QByteArray& measure, const QByteArray& why)
    {
        m_holds = false;
        std::printf("%-54s not measured: %s\n", measure.constData(), why.constData());
    }
    // Of the program: 0 when every limit held.
    int result() const { return m_holds ? 0 : 1; }

private:
    static bool within(Limit limit, double figure, double ratio)
    {
        const double judged = limit.of == Limit::Ratio ? ratio : figure; // what is no number keeps no limit
        return limit.of == Limit::Nothing ||
               (limit.side == Limit::AtMost ? judged <= limit.value : judged >= limit.value);
    }
    static QByteArray number(double value)
    {
        return std::isnan(value) ? "-" : QByteArray::number(value, 'g', 4);
    }

    bool m_holds = true;
};

// The value below which `share` of all lie; no number for none.
inline double quantile(std::vector<double> values, double share)
{
    if (values.empty())
        return std::nan("");
    std::sort(values.begin(), values.end());
    return values[std::min(values.size() - 1, std::size_t(share * double(values.size())))];
}

inline double median(const std::vector<double>& values)
{
    return quantile(values, 0.5);
}
