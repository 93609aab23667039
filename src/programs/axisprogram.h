#pragma once

#include <QString>

// The whole program that sends one axis to a place, each line ended by a line feed. `axis` is the console's
// name; `value` in mm or deg and `speed` in units a minute are put in as they stand. Not `absolute`: the
// value is a distance.
QString axisProgram(int channel, const QString& axis, bool absolute, const QString& value,
                    const QString& speed);
