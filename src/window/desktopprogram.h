#pragma once

#include <QStringList>

// Starts a program of the desktop, found in the PATH, and leaves it to itself. False, with a line in the
// debug output, when there is no such program or the system refuses. Any thread may be running beside it.
bool startDesktopProgram(const QString& program, const QStringList& arguments = {});
