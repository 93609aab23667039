#pragma once

#include <QString>
#include <QVector>

#include <optional>

// Rows of the technology table that follow a pattern: the beam is led up, held and led down, once for a weld
// or many times for tacks. Pure computation; the dialogs bring the numbers and the contour takes the rows.

struct WeldPattern
{
    float Ir = 0;                            // mA, of the plateau
    float ascend = 0, peak = 0, descend = 0; // mm along the seam, or degrees of the part
    float weldSpeed = 0;                     // mm/min, with the beam
    float moveSpeed = 0;                     // mm/min, behind the pattern
    float length() const { return ascend + peak + descend; }
};

struct PatternRow
{
    float path; // mm from the row before, or from the start of the program where the pattern says so
    float Ir;   // mA
    float speed;
};

// Length of one degree of the circumference, mm.
double degreeLength(float D);

// One weld, as intervals. `scale` is the length in mm of one unit of the pattern.
QVector<PatternRow> weldRows(const WeldPattern& pattern, double scale = 1);

// Tacks on an open seam, as paths from the start, each in the middle of its period (mm). Nothing when a tack
// is longer than the period.
std::optional<QVector<PatternRow>> linTackRows(const WeldPattern& pattern, float period,
                                               const QVector<int>& order);

// Tacks around a part, as intervals: it turns on from tack to tack, never back. The period is in the
// pattern's unit. Nothing when a tack is longer than the period.
std::optional<QVector<PatternRow>> circleTackRows(const WeldPattern& pattern, int number, double period,
                                                  const QVector<int>& order, double scale);

// In which order tacks counted from 0 are made, so that the heat is spread: on a seam from the middle
// outwards by turns, around a part by opposite places.
QString linTacksOrder(int number);
QString circleTacksOrder(int number);

// The entries of an order as typed. Empty ones are passed over; the first that is no number ends the list.
QVector<int> tacksOrder(const QString& text);

// How the technology table is ordered once rows at `paths` were put into it one after the other, each before
// the first row that lies not below it, or at the top where none does. `table`: the paths of its rows from
// the second on. Of the result, a number below table.size() is that row, any other less table.size() a new
// one.
QVector<int> mergedOrder(const QVector<float>& table, const QVector<float>& paths);
