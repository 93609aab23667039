#include "savefile.h"

#include "schema.h"

#include <QStringList>

#include <cmath>

SaveFile::SaveFile(const QString& text)
    : m_text(text)
{
    const int end = m_text.indexOf(QLatin1Char('\n'));
    m_programName = m_text.left(end);
    m_at = end < 0 ? m_text.size() : end + 1;
}

void SaveFile::skipBlanks()
{
    while (m_at < m_text.size() && m_text[m_at].isSpace())
        ++m_at;
}

bool SaveFile::atEnd()
{
    skipBlanks();
    return m_at >= m_text.size();
}

QString SaveFile::word()
{
    skipBlanks();
    const int from = m_at;
    while (m_at < m_text.size() && !m_text[m_at].isSpace())
        ++m_at;
    return m_text.mid(from, m_at - from);
}

float SaveFile::number()
{
    const float value = word().toFloat();
    return std::isfinite(value) ? value : 0;
}

int SaveFile::integer()
{
    return word().toInt();
}

int SaveFile::rowCount()
{
    const int count = integer();
    if (count > maxRows)
        qWarning("SaveFile: %d rows announced, at most %d are read", count, maxRows);
    return qBound(0, count, maxRows);
}

SavedHead readHead(SaveFile& file)
{
    const auto shown = [](float value) { return QString::number(double(value), 'f', 2).toFloat(); };
    SavedHead head;
    head.scheme = file.word();
    head.D = file.number();
    head.centerX = shown(file.number());
    head.centerY = shown(file.number());
    head.P = file.number();
    head.Aux = file.integer();
    head.closed = file.integer() != 0;
    head.nrings = file.number();
    head.weldSpeed = file.number();
    return head;
}

std::unique_ptr<Schema> schemaOf(const SavedHead& head)
{
    if (head.scheme == QLatin1String("XYZr"))
        return std::make_unique<SchemaXYZr>(head.D, head.P, head.Aux);
    if (head.scheme == QLatin1String("Circle"))
        return std::make_unique<SchemaCircle>(head.D, head.P);
    return std::make_unique<SchemaXYZ>();
}

QString contourLine(const QStringList& coords, bool withFrame, const Frame& frame)
{
    QString line;
    for (const QString& coord : coords)
        line += coord + QLatin1Char(' ');
    if (!withFrame)
        return line;
    if (frame.type == Frame::End)
        return line + QStringLiteral("0 ");
    return line + QStringLiteral("%1 %2 %3 %4 ")
                      .arg(frame.type)
                      .arg(frame.direction)
                      .arg(frame.plane)
                      .arg(double(frame.radius));
}

QString techLine(const QStringList& numbers, const Raster& raster)
{
    QString line = QStringLiteral("+ ");
    for (const QString& number : numbers)
        line += number + QLatin1Char(' ');
    line += QString::number(raster.kind) + QLatin1Char(' ');
    if (raster.kind != Raster::On)
        return line;
    const auto general = [](float value) { return QString::number(double(value)); };
    return line + QStringList{QString::number(raster.type), general(raster.ampX),
                              general(raster.ampY),         QString::number(raster.angle),
                              QString::number(raster.freq), general(raster.shiftX),
                              general(raster.shiftY),       general(raster.param),
                              QString::number(raster.cw)}
                      .join(QLatin1Char(' '));
}
