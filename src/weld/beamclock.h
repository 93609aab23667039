#pragma once

#include "weldgeometry.h"

#include <QVector>

// Where the beam should be at a time, and with what current: the technology table counted out in seconds,
// apart from the programs. The clock stands at each stop.
class BeamClock
{
public:
    struct Knot
    {
        double time; // s
        double path; // mm
        double Ir;   // mA
        int row;     // of the technology table
        int stage;   // stops in front of it
    };

    explicit BeamClock(const WeldTables& tables);

    struct Now
    {
        double path, Ir;
        int row;
    };
    Now at(double time) const;
    // The currents of the table within `margin` s of the time.
    void span(double time, double margin, double* least, double* most) const;
    double stageBegin(int stage) const; // s
    double end() const { return m_knots.last().time; }
    QList<float> place(double path) const { return m_path.place(path, m_start); }

    // How far the decimals of feeds and coordinates may put the channels apart, s and mm.
    double roundedSeconds() const { return m_rounded; }
    double roundedWay() const;

private:
    int before(double time) const; // the last knot not behind it

    const WeldTables& m_tables;
    WeldPath m_path;
    CircleStart m_start;
    QVector<Knot> m_knots;
    double m_rounded = 0;
    double m_fastest = 0, m_slowest = 1e9; // mm/min
};
