#pragma once

#include <QVector>
#include <QWidget>

// The beam current along the seam as a pattern would lay it, before it is laid: a trapezium for each weld or
// tack, tacks with their turn. What goes beyond the last pass, and a pattern that cannot be laid, is drawn in
// red.
class PatternView : public QWidget
{
    Q_OBJECT

public:
    // In mm along the seam.
    struct Beam
    {
        double start, ascend, peak, descend;
        double end() const { return start + ascend + peak + descend; }
    };

    explicit PatternView(QWidget* parent = nullptr);

    // `length` of the seam, mm, along which `passes` go. `possible`: the pattern fits. `warning` is written
    // over it, empty for none.
    void setPattern(const QVector<Beam>& beams, double length, int passes, bool possible,
                    const QString& warning);

    QString warning() const { return m_warning; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    double x(double mm) const; // px, of a place along the seam
    void paintBeams(QPainter* painter) const;
    void paintSeam(QPainter* painter) const;
    void paintWarning(QPainter* painter) const;

    QVector<Beam> m_beams; // in the order in which they are made
    double m_length = 0;
    double m_end = 0; // mm, where the picture ends: that of the seam or of the last beam
    int m_passes = 1;
    bool m_possible = true;
    QString m_warning;
};
