#pragma once

#include "weldtables.h"

#include <QString>

#include <memory>

class Schema;

// A weld as the console has it after loading the file: what its cells show.
struct SavedWeld
{
    QString name;
    std::shared_ptr<const Schema> schema; // that the tables point to
    WeldTables tables;
};

// False, with a line in `error`, for a file that the console would not show as it was saved.
bool readWeld(const QString& file, SavedWeld* weld, QString* error);
