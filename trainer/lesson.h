#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVector>

// A lesson as docs/lessons.md describes its file. Times are seconds of the installation's clock.

using PlantState = QHash<QString, QString>; // names and values as the installation tells them

// "NAME=VALUE", "NAME!=VALUE", "NAME<NUMBER" or "NAME>NUMBER".
struct Condition
{
    QString name;
    QChar op; // '=', '!', '<', '>'
    QString value;

    bool holds(const PlantState& state) const;
    QString text() const;
};

struct Ban
{
    Condition condition;
    QString reason; // told when it has come true
};

struct Deed // a line of the instructor
{
    double after = 0; // s since the step began
    QString line;
    int fileLine = 0;
};

struct LessonStep
{
    QString title;
    QString tell; // what the trainee is told as it begins, empty for nothing new
    QVector<Condition> until;
    QStringList presses; // each a part of a journal line that tells a press
    double within = 0;
    QVector<Deed> deeds;
    QVector<Ban> bans; // while the step waits
};

struct Lesson
{
    QString title;
    QString tell;
    enum class Start { AsItStands, Air, Vacuum } start = Start::AsItStands;
    QVector<Deed> deeds; // before the first step
    QVector<Ban> bans;   // from the first step to the end
    QVector<LessonStep> steps;
    QVector<Condition> passed;
    double passedWithin = 0; // 0: no limit
};

// Nothing, with "line N: reason" in `why`, when anything in the text is not as it must be.
bool parseLesson(const QByteArray& text, Lesson* lesson, QString* why);

// The same from a file; `why` begins with its name.
bool readLesson(const QString& fileName, Lesson* lesson, QString* why);
