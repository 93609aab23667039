#pragma once

#include <QMap>
#include <QString>

// What the installation allows. The defaults are those of the simulated one.
struct MachineLimits
{
    struct Axis
    {
        double min = 0, max = 0; // soft limits, mm; an endless axis has none
        double feed = 0;         // mm or deg a minute
        bool endless = false;
    };
    QMap<QString, Axis> axes; // LX, LY, Z, V
    double beam = 800;        // mA
    double focus = 1500;      // mA
    double voltage = 50;      // kV
    double still = 0.3;       // s that the beam may burn on one place

    MachineLimits();

    // Lines "LX -1500 1500 3000", "beam 800" and so on; "#" begins a comment. False with the line that is
    // wrong.
    bool read(const QString& file, QString* error);
};
