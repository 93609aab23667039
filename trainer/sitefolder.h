#pragma once

#include <QString>

// Makes the folders that the console and the installation expect under `root`, and an empty user file
// when there is none, so that a newcomer meets no error box. False when the root cannot be written.
bool laySiteFolder(const QString& root, bool withUserFile);
