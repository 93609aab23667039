#include "reportpdf.h"

#include <QFileInfo>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>

#include <qwt_plot.h>
#include <qwt_plot_renderer.h>

#include <memory>

namespace {

constexpr int dpi = 600;
constexpr double mm = dpi / 25.4;
constexpr double left = 20 * mm, right = 195 * mm, top = 15 * mm, bottom = 280 * mm; // of the written part
constexpr int mostLines = 500;    // of one program; a report has a few pages, the file has all
constexpr int mostRows = 200;     // of a table, likewise
constexpr int columnsOfCode = 50; // letters of a line in half a page

class Paper
{
public:
    Paper(QIODevice* device, const QString& footer)
        : m_writer(device)
        , m_footer(footer)
    {
        m_writer.setPageSize(QPageSize(QPageSize::A4));
        m_writer.setPageMargins(QMarginsF(0, 0, 0, 0));
        m_writer.setResolution(dpi);
        m_writer.setTitle(footer);
        m_painter.begin(&m_writer);
        foot();
    }
    bool end() { return m_painter.end(); }

    void page()
    {
        m_writer.newPage();
        m_y = top;
        foot();
    }
    void need(double height)
    {
        if (m_y + height > bottom)
            page();
    }
    void skip(double millimetres) { m_y += millimetres * mm; }
    bool atTop() const { return m_y <= top; }

    void heading(const QString& text, double points = 13)
    {
        need(25 * mm);
        skip(atTop() ? 0 : 3);
        write(text, points, true);
        skip(1.5);
    }
    void write(const QString& text, double points = 10, bool bold = false)
    {
        setFont(points, bold);
        const QRectF box = bounds(text, right - left);
        need(box.height());
        m_painter.drawText(QRectF(left, m_y, right - left, box.height()), Qt::TextWordWrap, text);
        m_y += box.height() + 0.8 * mm;
    }
    // A row of cells in shares of the width; the first of a table is its head.
    void row(const QStringList& cells, const QVector<double>& shares, bool head = false)
    {
        setFont(9, head);
        double height = 0;
        for (int i = 0; i < cells.size(); ++i)
            height = qMax(height, bounds(cells[i], (right - left) * shares[i] - 2 * mm).height());
        height += 1.6 * mm;
        need(height);
        setFont(9, head); // a new page has written its foot
        double x = left;
        for (int i = 0; i < cells.size(); ++i) {
            const QRectF cell(x, m_y, (right - left) * shares[i], height);
            if (head)
                m_painter.fillRect(cell, QColor(230, 230, 230));
            m_painter.setPen(QPen(QColor(150, 150, 150), 0.15 * mm));
            m_painter.drawRect(cell);
            m_painter.setPen(Qt::black);
            m_painter.drawText(cell.adjusted(mm, 0, -mm, 0), Qt::AlignVCenter | Qt::TextWordWrap, cells[i]);
            x += cell.width();
        }
        m_y += height;
    }
    // Lines of a program in two columns of a page.
    void code(const QString& title, const QStringList& lines)
    {
        heading(title, 11);
        QStringList all;
        for (const QString& line : lines.mid(0, mostLines)) {
            for (int at = 0; at == 0 || at < line.size(); at += columnsOfCode)
                all << (at ? QStringLiteral("  ") : QString()) + line.mid(at, columnsOfCode);
        }
        for (int done = 0; done < all.size();) {
            setFont(8, false, QStringLiteral("DejaVu Sans Mono"));
            const double step = m_painter.fontMetrics().height();
            const int fit = qMax(1, int((bottom - m_y) / step));
            const int rows = qMin(fit, (all.size() - done + 1) / 2);
            for (int i = 0; i < 2 * rows && done < all.size(); ++i, ++done)
                m_painter.drawText(
                    QPointF(i < rows ? left : (left + right) / 2, m_y + (i % rows + 0.8) * step), all[done]);
            m_y += rows * step;
            if (done < all.size())
                page();
        }
        if (lines.size() > mostLines)
            write(QStringLiteral("… и ещё %1 строк; целиком — в файле.").arg(lines.size() - mostLines));
    }
    void chart(QwtPlot* plot, double height)
    {
        need(height);
        QwtPlotRenderer renderer;
        renderer.setDiscardFlag(QwtPlotRenderer::DiscardBackground);
        renderer.render(plot, &m_painter, QRectF(left, m_y, right - left, height - 4 * mm));
        m_y += height;
    }
    void signatureLine(const QString& who)
    {
        need(14 * mm);
        skip(8);
        setFont(10, false);
        m_painter.drawText(QPointF(left, m_y), who);
        const double lines[][2] = {{60, 105}, {110, 150}, {155, 175}};
        const QString under[] = {QStringLiteral("подпись"), QStringLiteral("фамилия, инициалы"),
                                 QStringLiteral("дата")};
        setFont(7, false);
        for (int i = 0; i < 3; ++i) {
            m_painter.drawLine(QPointF(left + lines[i][0] * mm, m_y), QPointF(left + lines[i][1] * mm, m_y));
            m_painter.drawText(
                QRectF(left + lines[i][0] * mm, m_y + 0.5 * mm, (lines[i][1] - lines[i][0]) * mm, 4 * mm),
                Qt::AlignHCenter, under[i]);
        }
        skip(4);
    }

private:
    void setFont(double points, bool bold, const QString& family = QStringLiteral("DejaVu Sans"))
    {
        QFont font(family);
        font.setPointSizeF(points);
        font.setBold(bold);
        m_painter.setFont(font);
    }
    QRectF bounds(const QString& text, double width)
    {
        return m_painter.boundingRect(QRectF(0, 0, width, 1e6), Qt::TextWordWrap,
                                      text.isEmpty() ? QStringLiteral(" ") : text);
    }
    void foot()
    {
        setFont(8, false);
        const QRectF line(left, 285 * mm, right - left, 5 * mm);
        m_painter.drawText(line, Qt::AlignLeft, m_footer);
        m_painter.drawText(line, Qt::AlignRight, QStringLiteral("стр. %1").arg(++m_page));
    }

    QPdfWriter m_writer;
    QPainter m_painter;
    QString m_footer;
    double m_y = top;
    int m_page = 0;
};

QString listed(const QStringList& lines)
{
    return lines.isEmpty() ? QStringLiteral("—") : lines.join(QLatin1Char('\n'));
}

void writeHead(Paper* paper, const RecordFile& run, const QString& number)
{
    paper->heading(number + run.kindText() + QStringLiteral(": ") + run.program, 16);
    const auto row = [paper](const QString& what, const QString& value) {
        paper->row({what, value}, {0.3, 0.7});
    };
    const auto* const path = run.column(QStringLiteral("Путь"));
    const bool known = path && !path->isEmpty() && qIsFinite(path->last());
    row(QStringLiteral("Файл"), QFileInfo(run.file).fileName());
    row(QStringLiteral("Начало"), run.start.isValid()
                                      ? run.start.toString(QStringLiteral("dd.MM.yyyy, hh:mm:ss"))
                                      : QStringLiteral("—"));
    row(QStringLiteral("Сварщик"), run.welder.isEmpty() ? QStringLiteral("—") : run.welder);
    for (const QString& line : run.head)
        row(line.section(QLatin1Char(':'), 0, 0), line.section(QLatin1Char(':'), 1).trimmed());
    row(QStringLiteral("Запись"),
        QStringLiteral("%1 с, замеров %2").arg(numberText(run.duration(), 1)).arg(run.samples()));
    row(QStringLiteral("Путь к концу"),
        known ? numberText(path->last(), 2) + QStringLiteral(" мм") : QStringLiteral("—"));
    row(QStringLiteral("Замечания к файлу"), listed(troubleLines(run).mid(0, 10)));
}

void writePrograms(Paper* paper, const RecordFile& run)
{
    if (!run.contour.isEmpty())
        paper->code(QStringLiteral("Контур"), run.contour);
    if (!run.technology.isEmpty())
        paper->code(
            QStringLiteral("Технология: путь, мм; ток луча, мА; ток фокуса, мА; скорость, мм/мин; развёртка"),
            run.technology);
    for (const RecordFile::Program& program : run.programs)
        paper->code(program.title, program.lines);
}

void writeCurves(Paper* paper, const View& view)
{
    paper->page();
    paper->heading(QStringLiteral("Кривые"));
    for (int r = 0; view.runs.size() > 1 && r < view.runs.size(); ++r)
        paper->write(QStringLiteral("%1: %2").arg(r + 1).arg(QFileInfo(view.runs[r].file).fileName()));
    for (const ChartKind& kind : chartKinds()) {
        if (!isDrawable(kind, view))
            continue;
        const std::unique_ptr<QwtPlot> plot(makeChart(kind, view, 10, true));
        plot->resize(660, 300);
        paper->chart(plot.get(), 82 * mm);
    }
}

void writeDeviations(Paper* paper, const View& view)
{
    const QVector<QStringList> rows = deviationRows(view);
    paper->heading(QStringLiteral("Отклонения от уставки более %1 %").arg(numberText(view.percent, 1)));
    const QVector<double> shares{0.06, 0.19, 0.2, 0.18, 0.1, 0.1, 0.17};
    if (rows.isEmpty())
        paper->write(QStringLiteral("Нет."));
    else
        paper->row(QStringList(QStringLiteral("Ход")) + deviationTitles(), shares, true);
    for (const QStringList& row : rows.mid(0, mostRows))
        paper->row(row, shares);
    if (rows.size() > mostRows)
        paper->write(QStringLiteral("… и ещё %1; все — в окне программы.").arg(rows.size() - mostRows));
}

} // namespace

QString numberText(double value, int decimals)
{
    return QString::number(value, 'f', decimals).replace(QLatin1Char('.'), QLatin1Char(','));
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

QStringList troubleLines(const RecordFile& run)
{
    QStringList lines;
    const QString unit =
        run.kind == RecordFile::FlightRecorder ? QStringLiteral("запись") : QStringLiteral("строка");
    for (const RecordFile::Trouble& trouble : run.troubles)
        lines << (trouble.line ? QStringLiteral("%1 %2: ").arg(unit).arg(trouble.line) : QString()) +
                     trouble.reason;
    return lines;
}

bool writeReport(const QString& file, const View& view, QString* why)
{
    QSaveFile device(file);
    if (!device.open(QIODevice::WriteOnly)) {
        *why = device.errorString();
        return false;
    }
    const RecordFile& first = view.runs.first();
    Paper paper(&device, first.program.isEmpty()
                             ? QFileInfo(first.file).fileName()
                             : first.program + first.start.toString(QStringLiteral(", dd.MM.yyyy hh:mm")));
    for (int r = 0; r < view.runs.size(); ++r) {
        if (r > 0)
            paper.page();
        writeHead(&paper, view.runs[r], view.runs.size() > 1 ? QStringLiteral("%1. ").arg(r + 1) : QString());
        writePrograms(&paper, view.runs[r]);
    }
    writeCurves(&paper, view);
    writeDeviations(&paper, view);
    paper.need(60 * mm);
    paper.skip(6);
    for (const char* who : {"Сварщик", "Технолог", "Контролёр ОТК"})
        paper.signatureLine(QString::fromUtf8(who));
    const bool painted = paper.end();
    if (painted && device.commit())
        return true;
    *why = device.errorString();
    return false;
}
