#pragma once

#include <QString>

// The command by which an axis runs at `speed`, signed units a minute, until the next; "0" ends it.
QString moveCommand(const QString& axis, const QString& speed);

// The whole program that sends one axis to a place, each line ended by a line feed. `axis` is the console's
// name; `value` in mm or deg and `speed` in units a minute are put in as they stand. Not `absolute`: the
// value is a distance.
QString axisProgram(int channel, const QString& axis, bool absolute, const QString& value,
                    const QString& speed);
