#pragma once

#include "recordfile.h"

// Set and actual value of a record that are further from each other than is allowed.

struct Pair // columns of a record
{
    QString set;
    QString actual;
    QString name; // of what is set, with its unit
    double digit; // what the last decimal of the record is worth
};

struct Deviation
{
    int pair;        // index into pairs()
    int first, last; // samples, both outside
    int worst;       // sample of the greatest distance
};

const QVector<Pair>& pairs();

// The distance that is allowed at a set value: a share of it, and never less than the last decimal of the
// record tells, so that a beam that is off does not deviate by its own rounding.
double allowed(const Pair& pair, double set, double percent);

// Every span outside, pair by pair. A sample without one of both values ends a span.
QVector<Deviation> deviations(const RecordFile& record, double percent);

// Times, path, values of a span, as its row in a table: what, time, path, set, actual, difference.
QStringList deviationCells(const RecordFile& record, const Deviation& span);
QStringList deviationTitles();
