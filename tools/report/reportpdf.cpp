#include "reportpdf.h"

#include "paper.h"

#include <QFileInfo>

#include <qwt_plot.h>
#include <qwt_plot_renderer.h>

#include <memory>

namespace {

constexpr int mostLines = 500; // of one program; a report has a few pages, the file has all
constexpr int mostRows = 200;  // of a table, likewise
constexpr int linesOfBlock = 30;
constexpr double chartHeight = 82; // mm; three stand on a page

QString known(const QString& text)
{
    return text.isEmpty() ? QStringLiteral("—") : text.toHtmlEscaped();
}

QString headHtml(const RecordFile& run, const QString& number)
{
    QVector<QStringList> rows;
    const auto row = [&](const QString& what, const QString& value) {
        rows.append({what.toHtmlEscaped(), known(value)});
    };
    const auto* const path = run.column(QStringLiteral("Путь"));
    const bool told = path && !path->isEmpty() && qIsFinite(path->last());
    row(QStringLiteral("Файл"), QFileInfo(run.file).fileName());
    row(QStringLiteral("Начало"), run.start.toString(QStringLiteral("dd.MM.yyyy, hh:mm:ss")));
    row(QStringLiteral("Сварщик"), run.welder);
    for (const QString& line : run.head)
        row(line.section(QLatin1Char(':'), 0, 0), line.section(QLatin1Char(':'), 1).trimmed());
    row(QStringLiteral("Запись"),
        QStringLiteral("%1 с, замеров %2").arg(numberText(run.duration(), 1)).arg(run.samples()));
    row(QStringLiteral("Путь к концу"),
        told ? numberText(path->last(), 2) + QStringLiteral(" мм") : QString());
    const QStringList troubles = run.troubleLines().mid(0, 10);
    row(QStringLiteral("Замечания к файлу"),
        troubles.isEmpty() ? QStringLiteral("нет") : troubles.join('\n'));
    return QStringLiteral("<h2>%1</h2>").arg((number + run.kindText() + ": " + run.program).toHtmlEscaped()) +
           Paper::table({}, rows, {30, 70});
}

// Lines of a program in two columns, in blocks that a page can hold.
QString codeHtml(const QString& title, const QStringList& lines)
{
    if (lines.isEmpty())
        return {};
    QString html = QStringLiteral("<h4>%1</h4><table width=100% cellspacing=0 cellpadding=0>")
                       .arg(title.toHtmlEscaped());
    const int count = qMin(mostLines, lines.size());
    for (int at = 0; at < count; at += 2 * linesOfBlock) {
        const int half = qMin(linesOfBlock, (count - at + 1) / 2);
        html += QStringLiteral("<tr>");
        for (const int from : {at, at + half})
            html += QStringLiteral("<td width=50%><span style='font-family:DejaVu Sans Mono; font-size:8pt; "
                                   "white-space:pre-wrap'>%1</span></td>")
                        .arg(QStringList(lines.mid(from, qMin(half, count - from)))
                                 .join(QLatin1Char('\n'))
                                 .toHtmlEscaped());
        html += QStringLiteral("</tr>");
    }
    html += QStringLiteral("</table>");
    if (lines.size() > count)
        html += QStringLiteral("<p>… и ещё %1 строк; целиком — в файле.</p>").arg(lines.size() - count);
    return html;
}

QString programsHtml(const RecordFile& run)
{
    QString html = codeHtml(QStringLiteral("Контур"), run.contour) +
                   codeHtml(QStringLiteral("Технология: путь, мм; ток луча, мА; ток фокуса, мА; скорость, "
                                           "мм/мин; развёртка"),
                            run.technology);
    for (const RecordFile::Program& program : run.programs)
        html += codeHtml(program.title, program.lines);
    return html;
}

QString curvesHtml(const View& view)
{
    QString html = QStringLiteral("<h2>Кривые</h2>");
    for (int r = 0; view.runs.size() > 1 && r < view.runs.size(); ++r)
        html += QStringLiteral("%1: %2<br>")
                    .arg(r + 1)
                    .arg(QFileInfo(view.runs[r].file).fileName().toHtmlEscaped());
    return html;
}

void addCharts(Paper* paper, const View& view)
{
    for (const ChartKind& kind : chartKinds()) {
        if (!isDrawable(kind, view))
            continue;
        paper->picture(chartHeight, [&kind, &view](QPainter* painter, const QRectF& area) {
            const std::unique_ptr<QwtPlot> plot(makeChart(kind, view, 12, true));
            plot->resize(660, 300);
            QwtPlotRenderer renderer;
            renderer.setDiscardFlag(QwtPlotRenderer::DiscardBackground);
            renderer.render(plot.get(), painter, area);
        });
    }
}

QVector<QStringList> deviationRows(const View& view)
{
    QVector<QStringList> rows;
    for (int r = 0; r < view.runs.size(); ++r) {
        for (const Deviation& span : deviations(view.runs[r], view.percent))
            rows << QStringList(QString::number(r + 1)) + deviationCells(view.runs[r], span);
    }
    return rows;
}

QString deviationsHtml(const View& view)
{
    const QVector<QStringList> rows = deviationRows(view);
    QString html =
        QStringLiteral("<h2>Отклонения от уставки более %1 %</h2>").arg(numberText(view.percent, 1));
    html += rows.isEmpty() ? QStringLiteral("<p>Нет.</p>")
                           : Paper::table(QStringList(QStringLiteral("Ход")) + deviationTitles(),
                                          rows.mid(0, mostRows), {6, 19, 20, 18, 10, 10, 17});
    if (rows.size() > mostRows)
        html += QStringLiteral("<p>… и ещё %1; все — в окне программы.</p>").arg(rows.size() - mostRows);
    return html;
}

QString signaturesHtml()
{
    QString html = QStringLiteral("<br><table width=100% cellpadding=0 cellspacing=0>");
    for (const char* who : {"Сварщик", "Технолог", "Контролёр ОТК"})
        html += QStringLiteral("<tr><td width=28%><br>%1</td>"
                               "<td width=28% align=center><br>____________________<br>подпись</td>"
                               "<td width=28% align=center><br>____________________<br>фамилия, инициалы</td>"
                               "<td width=16% align=center><br>____________<br>дата</td></tr>")
                    .arg(QString::fromUtf8(who));
    return html + QStringLiteral("</table>");
}

} // namespace

QString numberText(double value, int decimals)
{
    return QString::number(value, 'f', decimals).replace(QLatin1Char('.'), QLatin1Char(','));
}

bool writeReport(const QString& file, const View& view, QString* why)
{
    const RecordFile& first = view.runs.first();
    Paper paper(first.program.isEmpty()
                    ? QFileInfo(first.file).fileName()
                    : first.program + first.start.toString(QStringLiteral(", dd.MM.yyyy hh:mm")));
    for (int r = 0; r < view.runs.size(); ++r) {
        if (r > 0)
            paper.newPage();
        paper.text(
            headHtml(view.runs[r], view.runs.size() > 1 ? QStringLiteral("%1. ").arg(r + 1) : QString()) +
            programsHtml(view.runs[r]));
    }
    paper.newPage();
    paper.text(curvesHtml(view));
    addCharts(&paper, view);
    paper.text(deviationsHtml(view));
    paper.text(signaturesHtml());
    return paper.write(file, why);
}
