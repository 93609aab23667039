#include "lessonpage.h"

#include "paper.h"

#include <QDir>
#include <QRegularExpression>

#include <cmath>

namespace {

constexpr int longestName = 60;

QString fact(const QString& name, const QString& value)
{
    return QStringLiteral("<tr><td>%1</td><td><b>%2</b></td></tr>").arg(name, value.toHtmlEscaped());
}

QString head(const LessonResult& result)
{
    const bool passed = result.end == LessonResult::End::Passed;
    return QStringLiteral("<h2>Протокол урока «%1»</h2><table cellpadding=3>")
               .arg(result.title.toHtmlEscaped()) +
           fact(QStringLiteral("Ученик"),
                result.trainee.isEmpty() ? QStringLiteral("____________________") : result.trainee) +
           fact(QStringLiteral("Начало"), result.began.toString(QStringLiteral("dd.MM.yyyy HH:mm"))) +
           fact(QStringLiteral("Длительность по часам установки"), clockText(result.length)) +
           QStringLiteral("</table><p style='font-size:16pt; color:%1'><b>%2</b></p><p>%3</p>")
               .arg(passed ? QStringLiteral("#00702a") : QStringLiteral("#b00000"), endText(result.end),
                    result.reason.toHtmlEscaped());
}

QString steps(const LessonResult& result)
{
    QVector<QStringList> rows;
    int number = 0;
    for (const LessonResult::Step& step : result.steps) {
        const QString end = step.done        ? QStringLiteral("выполнен")
                            : step.began < 0 ? QStringLiteral("—")
                                             : QStringLiteral("не выполнен");
        rows.append({QString::number(++number), step.title.toHtmlEscaped(), clockText(step.began),
                     step.ended < 0 ? QString() : clockText(step.ended - step.began), clockText(step.within),
                     end});
    }
    return QStringLiteral("<h3>Шаги, минуты и секунды</h3>") +
           Paper::table({QStringLiteral("№"), QStringLiteral("Шаг"), QStringLiteral("Начат"),
                         QStringLiteral("Занял"), QStringLiteral("Отведено"), QStringLiteral("Итог")},
                        rows, {5, 47, 11, 11, 12, 14});
}

// Presses, programs, troubles and the instructor's lines; what axes and channels tell besides is left to the
// journal file of the console.
QString notes(const LessonResult& result)
{
    QVector<QStringList> rows;
    for (const LessonResult::Note& note : result.notes) {
        const bool told = note.text.startsWith(QLatin1Char('['));
        if (note.text.startsWith(QLatin1String("[I]")) && !note.text.startsWith(QStringLiteral("[I]Нажат")))
            continue;
        const bool trouble =
            note.text.startsWith(QLatin1String("[A]")) || note.text.startsWith(QLatin1String("[W]"));
        const QString text = (told ? note.text.mid(3) : note.text).toHtmlEscaped();
        rows.append({clockText(note.at),
                     trouble ? QStringLiteral("<span style='color:#b00000'>%1</span>").arg(text) : text});
    }
    return QStringLiteral("<h3>Что сделано и что случилось</h3>") + Paper::table({}, rows, {11, 89}) +
           QStringLiteral("<p><br>Инструктор ____________________ &nbsp; Ученик "
                          "____________________</p>");
}

} // namespace

QString clockText(double seconds)
{
    if (seconds < 0)
        return {};
    const int whole = static_cast<int>(std::lround(seconds));
    return QStringLiteral("%1:%2").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}

QString endText(LessonResult::End end)
{
    switch (end) {
    case LessonResult::End::Passed:
        return QStringLiteral("Зачтено");
    case LessonResult::End::Failed:
        return QStringLiteral("Не зачтено");
    case LessonResult::End::Stopped:
        return QStringLiteral("Прерван");
    case LessonResult::End::Running:
        break;
    }
    return QStringLiteral("Идёт");
}

QString lessonPageName(const LessonResult& result, const QString& folder)
{
    QString title = result.title.left(longestName);
    title.replace(
        QRegularExpression(QStringLiteral("[^\\w\\- ]"), QRegularExpression::UseUnicodePropertiesOption),
        QStringLiteral("_"));
    const QString stem =
        QStringLiteral("%1/%2 %3")
            .arg(folder, result.began.toString(QStringLiteral("yyyy-MM-dd HH-mm-ss")), title);
    QString name = stem + QStringLiteral(".pdf");
    for (int i = 2; QFile::exists(name); ++i)
        name = QStringLiteral("%1 (%2).pdf").arg(stem).arg(i);
    return name;
}

bool writeLessonPage(const LessonResult& result, const QString& fileName, QString* why)
{
    QDir().mkpath(QFileInfo(fileName).path());
    Paper paper(QStringLiteral("Протокол урока «%1»").arg(result.title));
    paper.text(head(result) + steps(result) + notes(result));
    return paper.write(fileName, why);
}
