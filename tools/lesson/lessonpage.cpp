#include "lessonpage.h"

#include <QAbstractTextDocumentLayout>
#include <QDir>
#include <QPainter>
#include <QPdfWriter>
#include <QRegularExpression>
#include <QSaveFile>
#include <QTextDocument>

#include <cmath>

namespace {

constexpr int resolution = 300; // dots an inch
constexpr int margin = 20;      // mm
constexpr int longestName = 60;

QString row(const QStringList& cells, const char* tag)
{
    QString html = QStringLiteral("<tr>");
    for (const QString& cell : cells)
        html += QStringLiteral("<%1 align=left>%2</%1>").arg(QLatin1String(tag), cell);
    return html + QStringLiteral("</tr>");
}

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
    QString html =
        QStringLiteral(
            "<h3>Шаги, минуты и секунды</h3><table width=100% border=1 cellspacing=0 "
            "cellpadding=4 style='border-style:solid; border-color:#888888; border-collapse:collapse'>") +
        row({QStringLiteral("№"), QStringLiteral("Шаг"), QStringLiteral("Начат"), QStringLiteral("Занял"),
             QStringLiteral("Отведено"), QStringLiteral("Итог")},
            "th");
    int number = 0;
    for (const LessonResult::Step& step : result.steps) {
        const QString end = step.done        ? QStringLiteral("выполнен")
                            : step.began < 0 ? QStringLiteral("—")
                                             : QStringLiteral("не выполнен");
        html += row({QString::number(++number), step.title.toHtmlEscaped(), clockText(step.began),
                     step.ended < 0 ? QString() : clockText(step.ended - step.began), clockText(step.within),
                     end},
                    "td");
    }
    return html + QStringLiteral("</table>");
}

// Presses, programs, troubles and the instructor's lines; what axes and channels tell besides is left to the
// journal file of the console.
QString notes(const LessonResult& result)
{
    QString html = QStringLiteral("<h3>Что сделано и что случилось</h3><table cellpadding=2>");
    for (const LessonResult::Note& note : result.notes) {
        const bool told = note.text.startsWith(QLatin1Char('['));
        if (note.text.startsWith(QLatin1String("[I]")) && !note.text.startsWith(QStringLiteral("[I]Нажат")))
            continue;
        const bool trouble =
            note.text.startsWith(QLatin1String("[A]")) || note.text.startsWith(QLatin1String("[W]"));
        const QString text = (told ? note.text.mid(3) : note.text).toHtmlEscaped();
        html += row({clockText(note.at),
                     trouble ? QStringLiteral("<span style='color:#b00000'>%1</span>").arg(text) : text},
                    "td");
    }
    return html + QStringLiteral("</table><p><br>Инструктор ____________________ &nbsp; Ученик "
                                 "____________________</p>");
}

void paint(QTextDocument* document, QPdfWriter* writer)
{
    document->documentLayout()->setPaintDevice(writer);
    const int footer = resolution / 3;
    const QSizeF page(writer->width(), writer->height() - footer);
    document->setPageSize(page);
    QPainter painter(writer);
    const int pages = document->pageCount();
    for (int i = 0; i < pages; ++i) {
        if (i > 0)
            writer->newPage();
        painter.save();
        painter.translate(0, -i * page.height());
        document->drawContents(&painter, QRectF(0, i * page.height(), page.width(), page.height()));
        painter.restore();
        painter.setFont(document->defaultFont());
        painter.drawText(QRectF(0, page.height(), page.width(), footer), Qt::AlignRight | Qt::AlignBottom,
                         QStringLiteral("%1 из %2").arg(i + 1).arg(pages));
    }
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
    QSaveFile file(fileName);
    if (!QDir().mkpath(QFileInfo(fileName).path()) || !file.open(QIODevice::WriteOnly)) {
        *why = file.errorString();
        return false;
    }
    {
        QPdfWriter writer(&file);
        writer.setTitle(result.title);
        writer.setResolution(resolution);
        writer.setPageSize(QPageSize(QPageSize::A4));
        writer.setPageMargins(QMarginsF(margin, margin, margin, margin), QPageLayout::Millimeter);
        QTextDocument document;
        document.setDocumentMargin(0);
        document.setDefaultFont(QFont(QStringLiteral("DejaVu Sans"), 10));
        document.setHtml(head(result) + steps(result) + notes(result));
        paint(&document, &writer);
    }
    const bool written = file.commit();
    if (!written)
        *why = file.errorString();
    return written;
}
