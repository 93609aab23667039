#pragma once

#include "proof.h"

#include <QWidget>

class QLabel;
class QSlider;

// The picture with a slider that moves along the weld.
class ProofWindow : public QWidget
{
public:
    explicit ProofWindow(const Proof& proof); // which must outlive it

private:
    void showSample(int sample);

    const Proof& m_proof;
    QWidget* m_picture;
    QSlider* m_slider;
    QLabel* m_words;
};
