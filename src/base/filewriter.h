#pragma once

#include <QFileDevice>
#include <QString>

#include <optional>

// Why a file does not hold what was to be written.
struct WriteTrouble
{
    bool opened;  // false when not even a first byte could be written
    QString line; // for the journal: "[A]", the file, and the reason where the operator can help
};

// Puts `bytes` in the place of what the file `path` holds; nothing when they are there and on the disk.
// Whoever opens the file, after a cut of the power too, finds the former bytes whole or the new ones.
//
// `path` begins with "/" and bears no root. An existing file keeps its mode and a new one gets the mode
// that the process gives its files, unless `mode` sets another; a symbolic link stays and leads to the new
// bytes. A folder, a pipe or a device is never replaced. The system's own reason goes to the debug output.
std::optional<WriteTrouble> writeFile(const QString& path, const QByteArray& bytes,
                                      std::optional<QFileDevice::Permissions> mode = {});
