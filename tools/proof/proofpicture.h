#pragma once

#include "proof.h"

#include <QRectF>

class QPainter;

// The seam twice and three curves over the path, in any size. `cursor` is a sample of the run, -1 for none.
void paintProof(QPainter* painter, const QRectF& area, const Proof& proof, int cursor = -1);

// False when the file could not be written.
bool writeProofPng(const QString& file, const Proof& proof);
bool writeProofPdf(const QString& file, const Proof& proof); // A4: the picture, then the tables
