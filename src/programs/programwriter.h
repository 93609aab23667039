#pragma once

#include <QString>
#include <QStringList>

// Number of a program word with a fixed count of decimals and the decimal point. A value that is no number
// is written as nothing: the controller then refuses the program at its start instead of running to a place
// that nobody gave.
QString ncFixed(double value, int decimals);

// The line "N<number> <statement>"; `block` moves on to the next free number.
QString ncBlock(int* block, const QString& statement);

// Lines of `list` numbered step, 2 step, 3 step ... with at least three digits, each ended by a line feed.
QString numerate(const QStringList& list, int step);

// Collects the program of one channel, a statement a line. Two writers may share one block counter, so that
// no number occurs in both channels.
class ProgramWriter
{
public:
    // `block` is the next free number, not owned. The first line, "N1 $<channel>", does not come from it.
    ProgramWriter(int channel, int* block);

    void block(const QString& statement);
    void lines(const QStringList& numbered); // lines that carry their numbers already
    void wait();                             // until the motion before has ended; has no number
    void variable(int count, const QString& name, const QString& value);

    QString text() const; // joined by line feeds, none after the last line

private:
    QStringList m_lines;
    int* m_block;
};
