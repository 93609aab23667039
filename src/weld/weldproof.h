#pragma once

#include "weldprogram.h"

// What can be said of a weld before anything moves: every place where the machine will not do what the tables
// say, or the beam will burn where it should not. `programs` are those of the whole weld, from its start.
QVector<WeldDoubt> weldProof(const WeldTables& tables, const MotionPrograms& programs);

// The journal lines: of each kind its first place, with the number of the others.
QStringList proofLines(const QVector<WeldDoubt>& doubts);
