#pragma once

#include "elashare.h"
#include "weldtables.h"

#include <QDateTime>
#include <QFile>
#include <QStringList>

#include <functional>
#include <optional>

// The record of a run: a table for a spreadsheet, in Windows-1251, with the program, the contour and the
// technology, and one sample of the machine every 100 ms until the channel stops running.
//
// The owner keeps the clock and brings what is to be written as values; only the beam unit's are read here.
// What has been written outlives a fall of the console; a failure of the disk is told nowhere.
class Passport
{
public:
    static constexpr int period = 100; // ms between two samples

    enum Form {
        Short, // of a program started on the panel of channel 1, until that channel stops
        Long   // of a weld, until channel 3 stops
    };

    // What stands above the samples. The short form takes the program of channel 1 and nothing beneath it.
    struct Head
    {
        QDateTime start;
        QString name;         // of the program, part of the file's name
        QString welder;       // rights and name
        QStringList programs; // of channels 1 to 3; an empty one of channel 2 is left out
        bool closed = false;
        float length = 0; // mm, one pass of a closed contour or the whole seam
        float passes = 1;
        float weldSpeed = 0;    // mm/min
        QStringList contour;    // the cells of each row
        QStringList technology; // each row, "+ " or "- " in front
    };

    // The machine, and the technology table, at the moment of a sample.
    struct Moment
    {
        bool runs = false;                   // the channel whose end ends the record
        bool moving = false;                 // along the seam, as the program tells
        float way = 0;                       // mm, of all passes: the path goes no further
        QList<float> coords;                 // of `axes`, mm or deg
        float pressure = 0;                  // of the chamber, Pa
        int techRows = 0;                    // never asked for a row beyond them
        std::function<TechRow(int)> techRow; // asked for while the long form follows the technology
    };

    static const QStringList& axes(); // those of a sample, in its order

    void setForm(Form form); // of the next record; one that is open keeps its own
    Form form() const { return m_form; }
    bool isOpen() const { return m_ppf.isOpen(); }

    // Begins a record; `speed` is that of the first technology row, mm/min. False when its file cannot be
    // opened: there is no record then. Asserts while one is open.
    bool open(const Head& head, float speed);

    // Writes a sample. False when it was the last: the channel no longer runs, and the record is closed.
    // `mayEnd` is false for the first one, which comes before the channel can have begun.
    bool sample(const Moment& moment, bool mayEnd);

    // The technology row that the estimate has come to, over comments and rows that are switched off.
    // Nothing where none is to be marked: in the short form, at rest and in the last row.
    std::optional<int> follow(const Moment& moment);

private:
    QString beamCells(float pressure);
    void write(const QString& text);

    QFile m_ppf; // open while a run is recorded
    Form m_form = Short;
    ElaSharedMemory m_elaShare;
    float m_passportTime = 0; // s since the start
    float m_moveTime = 0;     // s in motion
    float m_segTime = 0;      // s in motion since the technology row in force
    float m_segPath = 0;      // mm, path of that row
    float m_curSpeed = 0;     // mm/min, its speed
    float m_path = 0;         // mm, estimated
    int m_curTechRow = 0;
};
