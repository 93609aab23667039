#pragma once

#include "patternview.h"
#include "weldpattern.h"
#include "weldtables.h"

#include <QDialog>

#include <memory>

class CONTOUR;
class PoLabel;
namespace Ui {
class PatternDialog;
}

// What the generators of weld patterns have in common: numbers with plus and minus, a picture of what they
// would lay, and the button that lays it as rows of the technology table. A dialog shows itself in a titled
// frame beside `button`; the caller runs `exec`, which accepts when rows were written. Numbers of the pattern
// are kept in the settings.
class PatternDialog : public QDialog
{
    Q_OBJECT

public:
    // What the contour says when the dialog opens.
    struct Seam
    {
        float length;    // mm
        float D;         // mm, of a round one
        float weldSpeed; // mm/min
        float moveSpeed;
        int passes = 1;        // along the whole length
        WeldContour contour{}; // the seam itself; its scheme outlives the dialog
    };

    ~PatternDialog() override; // keeps the settings, with a journal line

signals:
    void message(const QString& text, bool show); // a journal line

public slots:
    void on_pbCreate_clicked();
    void on_pbDegreeOn_clicked(); // the round ones: the numbers change their unit, the pattern stays

protected:
    enum Number { TackCount, Period, Ir, Ascend, Peak, Descend, WeldSpeed, MoveSpeed, NumberCount };

    // The kind of a dialog.
    struct Kind
    {
        const char* group;   // in the settings
        const char* title;   // of the window
        const char* comment; // the first proposal for the title of the rows
        bool tacks;
        bool round;
        float longestRamp, longestPeak; // mm
        float longestTurn;              // deg, of each of the three
    };

    PatternDialog(const Kind& kind, const Seam& seam, CONTOUR* contour);

    virtual void changed(Number) {} // by the operator
    virtual void unitSwitched() {}
    virtual bool create() = 0;                            // writes the rows; false when refused
    virtual QVector<PatternView::Beam> beams() const = 0; // as they would be written
    virtual bool possible() const { return true; }
    virtual QString warning() const { return {}; } // stands over the picture

    // Called in the constructors of the dialogs, with what is their own in between.
    void restore(); // the numbers of the settings and of the seam
    void present(QWidget* button);

    float value(Number number) const;
    void setValue(Number number, float value); // as it comes, without bounds
    int count() const { return int(value(TackCount)); }
    WeldPattern pattern() const;
    QString orderText() const;
    void setOrder(const QString& order);
    bool degrees() const { return m_degrees; }
    double unit() const;                        // mm in one unit of the numbers
    PatternView::Beam beam(double start) const; // start in units of the numbers
    void writeTitle();
    void writeIntervals(const QVector<PatternRow>& rows);

    const Seam m_seam;
    CONTOUR* const m_contour;
    std::unique_ptr<Ui::PatternDialog> ui;

private:
    struct Form; // how a number is asked for
    static const Form forms[NumberCount];

    void connectNumber(Number number);
    bool hasDegrees() const;
    void ask(Number number);
    void setNumber(Number number, float value); // within the bounds, by the operator's hand
    void refresh();                             // units and picture
    float maximum(Number number) const;
    int decimals(Number number) const;
    PoLabel* label(Number number) const;
    QString title(Number number) const;

    const Kind m_kind;
    bool m_degrees = false; // the round ones measure along the turn
};
