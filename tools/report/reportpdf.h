#pragma once

#include "curves.h"

// The runs on paper, A4: head, programs, curves, deviations, troubles of the files, places for signatures.
// False with the reason when the file cannot be written; what stood there before then stays.
bool writeReport(const QString& file, const View& view, QString* why);
QString numberText(double value, int decimals); // with a comma
