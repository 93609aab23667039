#pragma once

#include "savedweld.h"
#include "trainer/proofrun.h"
#include "weldwarning.h"

#include <QJsonObject>

// All that is told of a weld.
struct Proof
{
    SavedWeld weld;
    MachineLimits limits;
    QVector<WeldDoubt> doubts; // by the rules, in the order of the tables
    ProofRun run;              // on the channels

    bool fine() const { return doubts.isEmpty() && run.troubles.isEmpty(); }
    // One line for each finding, as it is numbered in the picture: path in mm and text.
    QVector<QPair<double, QString>> findings() const;
};

Proof proveWeld(const SavedWeld& weld, const MachineLimits& limits);

QString proofText(const Proof& proof); // tables for a terminal
QString proofHtml(const Proof& proof); // the same for paper
QJsonObject proofJson(const Proof& proof);
