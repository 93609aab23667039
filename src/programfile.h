#pragma once

#include <QString>

// Writes `text` as the NC program `path`, which is the controller's path: it begins with "/" and bears no
// root. Everyone may read, write and execute the file: the controller works under an account of its own.
// False, told as a warning, when the file cannot be opened or the text did not get there whole: such a
// program is not to be started.
bool writeProgramFile(const QString& path, const QString& text);
