#pragma once

#include "weldtables.h"

#include <QString>
#include <QVector>

#include <memory>

class Schema;

// The text of a contour file: a name line, then tokens separated by blanks and line ends.
//
// Reading is as forgiving as the files have always been read: a token that is no number counts as 0, and so
// does everything after the end. It always comes to an end: each token is consumed, and neither the text
// taken in nor the rows taken from it can grow without bound.
class SaveFile
{
public:
    static constexpr qint64 maxBytes = 16 * 1024 * 1024; // what lies beyond is not read
    static constexpr int maxRows = 50'000;               // of one table

    // The whole text of a file, read once.
    explicit SaveFile(const QString& text);

    QString programName() const { return m_programName; }

    bool atEnd(); // also when nothing but blanks is left
    QString word();
    float number(); // 0 for a token that is no finite number
    int integer();  // 0 for a token that is no whole number
    int rowCount(); // an integer, within 0 to maxRows

private:
    void skipBlanks();

    QString m_text;
    QString m_programName;
    int m_at = 0;
};

// What stands in front of the two tables.
struct SavedHead
{
    QString scheme; // its name; an unknown one counts as "XYZ"
    float D = 0;
    float centerX = 0, centerY = 0; // mm, as their labels show them
    float P = 0;
    int Aux = 0;
    bool closed = false;
    float nrings = 1; // not bounded
    float weldSpeed = 0;
};
SavedHead readHead(SaveFile& file);
std::unique_ptr<Schema> schemaOf(const SavedHead& head);

// One line of the file without its line feed.
QString contourLine(const QStringList& coords, bool withFrame, const Frame& frame);
QString techLine(const QStringList& numbers, const Raster& raster);
