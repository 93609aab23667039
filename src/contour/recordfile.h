#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVector>

// A record as its file holds it: a passport in the short form (a program of channel 1) or in the long one (a
// weld), or a file of the flight recorder. Nothing here needs a window.
//
// What cannot be read is told with its line and the reason, and the rest stands as it was written: a value
// that is missing is a NaN in its column.
struct RecordFile
{
    enum Kind { Foreign, ShortPassport, LongPassport, FlightRecorder };

    struct Trouble
    {
        int line; // from 1; of the flight recorder the record; 0 for the file as a whole
        QString reason;
    };
    struct Program
    {
        QString title;
        QStringList lines;
    };

    Kind kind = Foreign; // Foreign: nothing of the file is a record, and `troubles` says why
    QString file;
    QString program; // of a short passport from the file's name, where alone it stands
    QString welder;
    QDateTime start;        // of a date without a time: midnight; invalid when neither head nor name tells it
    QStringList head;       // further lines of the head: length, passes, speed
    QStringList contour;    // rows as written
    QStringList technology; // rows as written, "+ " or "- " in front
    QVector<Program> programs;        // of the channels, in the order of the file
    QStringList titles;               // of the columns; the first is always "Время", s
    QVector<QVector<double>> columns; // as many as titles, all of one length
    QVector<Trouble> troubles;

    int samples() const { return columns.isEmpty() ? 0 : columns.first().size(); }
    const QVector<double>* column(const QString& title) const; // null when there is none
    double duration() const;                                   // s
    QString kindText() const;
    QStringList troubleLines() const; // as people read them
    bool hasPath() const { return column(QStringLiteral("Путь")) != nullptr; }
};

// Reads the whole file, whatever it holds; never fails otherwise than by `troubles`. Passports are in
// Windows-1251, or in UTF-8 when all of their bytes are; numbers have a point or a comma.
RecordFile readRecord(const QString& path);
RecordFile readHead(const QString& path); // name, date, welder and kind only: what a list shows, at once
RecordFile parsePassport(const QByteArray& bytes, const QString& path);
RecordFile parseFlightRecord(const QByteArray& bytes, const QString& path);

// The files, and of folders those that can be records (*.csv, *.dump), in the order of their names.
QStringList recordsOf(const QStringList& paths);
