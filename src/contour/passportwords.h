#pragma once

#include <QString>
#include <QStringList>

// The words of a passport, by which it is written and read again.
namespace PassportWords {

const QString fileStamp =
    QStringLiteral("yyyy-MM-dd-hh-mm-ss");         // of the file's name, before "-" and the program
const QString shortName = QStringLiteral("_temp"); // first line of the short form
const QString date = QStringLiteral("Дата: ");
const QString dateForm = QStringLiteral("dd-MM-yyyy");
const QString welder = QStringLiteral("Сварщик: ");
const QString clock = QStringLiteral("Время запуска: ");
const QString clockForm = QStringLiteral("hh:mm:ss");
const QString contour = QStringLiteral("Контур:");
const QString technology = QStringLiteral("Технология:");
const QStringList programs{QStringLiteral("ПРОГРАММА ПЕРЕМЕЩЕНИЯ (канал 1)"),
                           QStringLiteral("ПРОГРАММА ВРАЩЕНИЯ ДЕТАЛИ (канал 2)"),
                           QStringLiteral("ПРОГРАММА СВАРКИ (канал 3)")};
const QString time = QStringLiteral("Время"); // titles of columns
const QString path = QStringLiteral("Путь");  // in the long form alone; the samples of both have it

} // namespace PassportWords
