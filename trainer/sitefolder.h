#pragma once

#include <QString>

// Makes the folders that the console and the installation expect under `root`. With `firstDay` also what a
// newcomer should not have to make: an empty user file, so that no error box greets him, a short weld to look
// at, and widths of the users' table that show names whole. Nothing that is there already is touched. False
// when the root cannot be written.
bool laySiteFolder(const QString& root, bool firstDay);
