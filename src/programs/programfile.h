#pragma once

#include <QString>

#include <optional>

// The command that starts the program `path` in a channel. The controller finds the file by itself.
QString startCommand(int channel, const QString& path);

// Writes `text` as the NC program `path`, which is the controller's path: it begins with "/" and bears no
// root. Everyone may read, write and execute the file: the controller works under an account of its own.
// Nothing when it is there whole. Else a journal line that tells so: such a program is not to be started.
std::optional<QString> writeProgramFile(const QString& path, const QString& text);
