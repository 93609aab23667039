#pragma once

#include "trainer/machinelimits.h"
#include "weldprogram.h"

#include <QMap>
#include <QStringList>
#include <QVector>

#include <array>

// What a weld did on the simulated channels. Times are seconds from the start of channel 1's motion, without
// the pauses of the operator; paths are mm by the technology table.
struct ProofRun
{
    enum Harm { Standing, StopBurns, Beside, WrongCurrent, Deadlock, ChannelError, BeyondLimit, TooFast };
    struct Trouble
    {
        Harm harm;
        double time;
        double path;
        QString text; // with figures, channel and line of the program
    };
    struct Sample
    {
        double time = 0;
        double path = 0;            // where the beam is by the table
        std::array<double, 4> at{}; // x, y, z in mm, V in degrees
        double Ir = 0, If = 0;      // mA
        double feed = 0;            // mm/min along the seam
    };
    struct Stage // up to a stop or the end
    {
        std::array<double, 3> seconds{}; // of the channels, from their common start to their last motion
    };
    struct AxisUse
    {
        double least = 1e9, most = -1e9, way = 0, feed = 0; // mm or deg, a minute
    };
    struct Laid // energy on the way to a row of the technology table
    {
        int row = 0;
        double from = 0, to = 0; // mm
        double joules = 0;
        double way = 0; // that the part has moved under the beam
        double seconds = 0;
        double perMillimetre() const { return way > 0.01 ? joules / way : -1; } // J/mm; below 0: on one place
    };

    QVector<Trouble> troubles;
    QVector<Stage> stages;
    QMap<QString, AxisUse> axes;
    QVector<Laid> laid; // where the beam was on
    QVector<Sample> samples;
    double seconds = 0;
    double apart = 0;        // mm that beam and motion were apart at most while the beam was on
    double roundedApart = 0; // mm that the decimals of the programs may put them apart

    bool has(Harm harm) const;
};

ProofRun runWeld(const WeldTables& tables, const MachineLimits& limits);
