#pragma once

#include <QStringList>

// Starts a program of the desktop, found in the PATH, and leaves it to itself. False, with a line in the
// debug output, when there is no such program. Returns before it runs: the fork waits for the new process,
// and a busy computer may let that wait for long; a system that refuses is told in the debug output alone.
bool startDesktopProgram(const QString& program, const QStringList& arguments = {});
