#pragma once

#include "patterndialog.h"

// One weld along an open seam. The plateau takes what the ramps leave of the seam; typed by hand it stays.
class LinWeld : public PatternDialog
{
    Q_OBJECT

public:
    LinWeld(const Seam& seam, CONTOUR* contour, QWidget* button);

protected:
    void changed(Number number) override;
    bool create() override;
    QVector<PatternView::Beam> beams() const override;
    bool possible() const override;
    QString warning() const override;

private:
    void calculatePeak();
};

// Tacks along an open seam, one in the middle of each period.
class LinTackWelds : public PatternDialog
{
    Q_OBJECT

public:
    LinTackWelds(const Seam& seam, CONTOUR* contour, QWidget* button);

protected:
    void changed(Number number) override;
    bool create() override;
    QVector<PatternView::Beam> beams() const override;
    bool possible() const override;
    QString warning() const override;

private:
    void initTacksOrder();
};

// One weld around a part, in millimetres of its circumference or in degrees.
class CircleWeld : public PatternDialog
{
    Q_OBJECT

public:
    CircleWeld(const Seam& seam, CONTOUR* contour, QWidget* button);

protected:
    bool create() override;
    QVector<PatternView::Beam> beams() const override;
};

// Tacks around a part, each at the start of its period; the part turns on from one to the next.
class CircleTackWelds : public PatternDialog
{
    Q_OBJECT

public:
    CircleTackWelds(const Seam& seam, CONTOUR* contour, QWidget* button);

protected:
    void changed(Number number) override;
    void unitSwitched() override;
    bool create() override;
    QVector<PatternView::Beam> beams() const override;
    bool possible() const override;

private:
    void updatePeriod();
    void initTacksOrder();
    double period() const; // the part's turn by the number of tacks, in the unit of the numbers
};
