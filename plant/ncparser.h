#pragma once

#include <QHash>
#include <QString>
#include <QVector>

#include <optional>

namespace plant {

// Axis word of a block, such as "x=10.00". The name is kept in upper case.
struct NcWord
{
    QString axis;
    double value = 0; // mm, deg or mA
};

struct NcStatement
{
    enum class Kind {
        Channel,        // $n
        TakeAxis,       // GAX(IR)
        ReleaseAxis,    // RAX(IR)
        Distances,      // G90 or G91 alone
        Rapid,          // G0
        Line,           // G1
        Arc,            // G2, G3
        Plane,          // G17, G18, G19
        PlaneEnd,       // G16
        Dwell,          // G4
        Coordinates,    // COORD(...)
        Ratio,          // ARF(V=k)
        RatioEnd,       // ARF()
        SetEvent,       // SEV(n)
        WaitEvent,      // WEV(n)
        WaitResetEvent, // WREV(n)
        ResetEvents,    // REV(ALL)
        Wait,           // WAIT
        Jump,           // GOTO Nn
        End,            // M30
        Variable,       // 1 @NAME=value
    };

    Kind kind = Kind::Wait;
    int line = 0;  // 1-based line of the text
    int block = 0; // block number, 0 when the line has none

    int number = 0;               // channel, event, plane (0 XY, 1 XZ, 2 YZ) or block to jump to
    int jumpTo = 0;               // index of the statement that a jump goes to
    bool clockwise = false;       // arcs
    std::optional<bool> relative; // G91 true, G90 false, empty when the block leaves it as it is
    std::optional<double> feed;   // F, in the unit that the statement gives it
    std::optional<double> radius; // R, mm; negative for the arc longer than a half circle
    QVector<NcWord> words;
    QString name;  // axis of GAX and RAX, systems of COORD, variable with its "@"
    QString value; // text of a variable
};

// A program that was read to its end, or the first line that breaks the dialect.
struct NcProgram
{
    QVector<NcStatement> statements;
    int errorLine = 0;
    QString error; // empty when the text is sound
};

// Reads the text of a program for `channel`: every line, that the head names this channel, that no block
// number occurs twice and that every jump has its target. Whether the axes exist is not looked at.
NcProgram parseNcProgram(const QString& text, int channel);

} // namespace plant
