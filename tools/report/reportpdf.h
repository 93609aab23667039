#pragma once

#include "curves.h"

// The runs on paper, A4: head, programs, curves, deviations, troubles of the files, places for signatures.
// False with the reason when the file cannot be written; what stood there before then stays.
bool writeReport(const QString& file, const View& view, QString* why);

// What the report says of all runs in one table: the number of the run in front where there are several.
QVector<QStringList> deviationRows(const View& view);
QStringList troubleLines(const RecordFile& run); // "строка 12: …"
QString numberText(double value, int decimals);  // with a comma
