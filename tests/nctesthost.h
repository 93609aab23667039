#pragma once

#include "plant/nc.h"

#include <QHash>
#include <QStringList>
#include <QVector>

#include <cmath>
#include <functional>

// Axes without inertia and limits, and a record of all that the programs did.
class NcTestHost : public plant::NcHost
{
public:
    struct Written
    {
        double time; // s
        int channel;
        QString name;
        QString value;
    };

    double& at(const QString& axis) { return m_position[axis]; }

    std::optional<double> position(int channel, const QString& word) const override
    {
        static const QHash<int, QStringList> axes = {
            {1, {"X", "Y", "Z", "PHI", "LX", "LY", "A", "B", "C", "D", "U1"}},
            {2, {"V", "U1"}},
            {3, {"IR", "IW"}}};
        if (!axes.value(channel).contains(word.toUpper()))
            return {};
        return m_position.value(word.toUpper());
    }

    QString refusal(int, const QString& word, double target) const override
    {
        return mayMove ? mayMove(word.toUpper(), target) : QString();
    }

    void setPosition(int channel, const QString& word, double value) override
    {
        m_position[word.toUpper()] = value;
        if (onPosition)
            onPosition(channel);
    }

    void setVariable(int channel, const QString& name, const QString& value) override
    {
        variables.append({time, channel, name, value});
    }

    void report(const QString& text) override
    {
        reports.append(text);
        if (onReport)
            onReport(text);
    }

    void coordinateSystems(int channel, const QString& list) override { systems[channel].append(list); }

    QStringList told(const QString& part) const { return reports.filter(part); }

    QStringList written(const QString& name) const
    {
        QStringList values;
        for (const Written& one : variables) {
            if (one.name == name)
                values.append(one.value);
        }
        return values;
    }

    double time = 0;
    QVector<Written> variables;
    QStringList reports;
    QHash<int, QStringList> systems;
    std::function<QString(const QString&, double)> mayMove;
    std::function<void(const QString&)> onReport;
    std::function<void(int)> onPosition; // after each axis that was set, with the channel

private:
    QHash<QString, double> m_position;
};

// The channels on such axes, with a clock that counts the seconds of program time: the step in which a
// program is loaded is not counted.
class NcBench
{
public:
    explicit NcBench(double step = 0.01)
        : nc(host)
        , m_step(step)
    {}

    bool start(int channel, const QString& text)
    {
        if (!nc.start(channel, text))
            return false;
        nc.step(m_step);
        return true;
    }

    void step()
    {
        host.time += m_step;
        nc.step(m_step);
    }

    void forSeconds(double seconds)
    {
        for (double end = host.time + seconds - m_step / 2; host.time < end;)
            step();
    }

    // Runs until no channel of `channels` is running; false when that takes more than `limit` seconds.
    bool untilDone(double limit = 3600, const QList<int>& channels = {1, 2, 3},
                   const std::function<void()>& look = {})
    {
        const double end = host.time + limit;
        while (host.time < end) {
            bool running = false;
            for (const int channel : channels)
                running = running || nc.mode(channel) == 5;
            if (!running)
                return true;
            step();
            if (look)
                look();
        }
        return false;
    }

    NcTestHost host;
    plant::NcMachine nc;

private:
    double m_step;
};
