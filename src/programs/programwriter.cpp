#include "programwriter.h"

#include <cmath>

QString ncFixed(double value, int decimals)
{
    return std::isfinite(value) ? QString::number(value, 'f', decimals) : QString();
}

QString ncBlock(int* block, const QString& statement)
{
    return QString("N%1 ").arg((*block)++) + statement;
}

QString numerate(const QStringList& list, int step)
{
    QString text;
    int number = 0;
    for (const QString& line : list)
        text += QString("N%1 ").arg(number += step, 3, 10, QChar('0')) + line + '\n';
    return text;
}

ProgramWriter::ProgramWriter(int channel, int* block)
    : m_lines{QString("N1 $%1").arg(channel)}
    , m_block(block)
{}

void ProgramWriter::block(const QString& statement)
{
    m_lines.append(ncBlock(m_block, statement));
}

void ProgramWriter::lines(const QStringList& numbered)
{
    m_lines.append(numbered);
}

void ProgramWriter::wait()
{
    m_lines.append("WAIT");
}

void ProgramWriter::variable(int count, const QString& name, const QString& value)
{
    m_lines.append(QString::number(count) + " @" + name + '=' + value);
}

QString ProgramWriter::text() const
{
    return m_lines.join('\n');
}
