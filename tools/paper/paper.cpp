#include "paper.h"

#include <QAbstractTextDocumentLayout>
#include <QBuffer>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>
#include <QTextBlock>
#include <QTextDocument>

namespace {

constexpr int dpi = 300;
constexpr double mm = dpi / 25.4;
constexpr int margin = 15;         // mm, at all four sides
constexpr double foot = 8 * mm;    // below the text
constexpr double between = 3 * mm; // two items
constexpr int longestTitle = 80;   // letters of it at the foot

} // namespace

Paper::Paper(const QString& title)
    : m_title(title)
{}

void Paper::text(const QString& html)
{
    m_items.append({html, 0, {}});
}

void Paper::picture(double height, const Paint& paint)
{
    m_items.append({{}, height, paint});
}

void Paper::newPage()
{
    m_items.append({{}, -1, {}});
}

QString Paper::table(const QStringList& head, const QVector<QStringList>& rows, const QVector<int>& widths)
{
    QString html = QStringLiteral("<table %1 border=1 cellspacing=0 cellpadding=4 style='border-style:solid; "
                                  "border-color:#888888; border-collapse:collapse'>")
                       .arg(widths.isEmpty() ? QString() : QStringLiteral("width=100%"));
    const auto row = [&](const QStringList& cells, const char* begin, const char* end) {
        html += QStringLiteral("<tr>");
        for (int i = 0; i < cells.size(); ++i)
            html += QString::fromLatin1(begin).arg(
                        i < widths.size() ? QStringLiteral("width=%1%").arg(widths[i]) : QString()) +
                    cells[i] + QLatin1String(end);
        html += QStringLiteral("</tr>");
    };
    if (!head.isEmpty())
        row(head, "<td bgcolor=#e6e6e6 %1><b>", "</b></td>");
    for (const QStringList& cells : rows)
        row(cells, "<td %1>", "</td>");
    return html + QStringLiteral("</table>");
}

// Lays all items out and paints them when there is a painter. Returns the number of pages.
int Paper::pages(QPdfWriter* writer, QPainter* painter, int of) const
{
    const QSizeF size(writer->width(), writer->height() - foot);
    const QFont letters(QStringLiteral("DejaVu Sans"), 10);
    int page = 0;
    double y = 0;
    const auto begin = [&] {
        if (page++ > 0 && painter)
            writer->newPage();
        y = 0;
        if (!painter)
            return;
        painter->setPen(Qt::black);
        painter->setFont(QFont(letters.family(), 9));
        const QRectF line(0, size.height(), size.width(), foot);
        painter->drawText(line, Qt::AlignLeft | Qt::AlignBottom, m_title.left(longestTitle));
        painter->drawText(line, Qt::AlignRight | Qt::AlignBottom,
                          QStringLiteral("стр. %1 из %2").arg(page).arg(of));
    };
    const auto text = [&](const QString& html) {
        QTextDocument document;
        document.setDocumentMargin(0);
        document.setDefaultFont(letters);
        document.documentLayout()->setPaintDevice(writer);
        document.setTextWidth(size.width());
        document.setHtml(html);
        if (y > 0 && y + document.size().height() > size.height())
            begin();
        const double top = y;
        if (top == 0)
            document.setPageSize(size);
        const int count = top == 0 ? document.pageCount() : 1;
        for (int i = 0; i < count; ++i) {
            if (i > 0)
                begin();
            if (!painter)
                continue;
            painter->save();
            painter->translate(0, top - i * size.height());
            document.drawContents(painter, QRectF(0, i * size.height(), size.width(), size.height()));
            painter->restore();
        }
        const QTextBlock last = document.lastBlock();
        y = top - (count - 1) * size.height() + document.documentLayout()->blockBoundingRect(last).bottom() +
            between;
    };
    begin();
    for (const Item& item : m_items) {
        if (item.height < 0 ? y > 0 : y > 0 && item.paint && y + item.height * mm > size.height())
            begin();
        if (item.paint) {
            if (painter) {
                painter->save();
                item.paint(painter, QRectF(0, y, size.width(), item.height * mm));
                painter->restore();
            }
            y += item.height * mm + between;
        } else if (item.height == 0) {
            text(item.html);
        }
    }
    return page;
}

bool Paper::write(const QString& file, QString* why) const
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&buffer);
        writer.setTitle(m_title);
        writer.setResolution(dpi);
        writer.setPageSize(QPageSize(QPageSize::A4));
        writer.setPageMargins({margin, margin, margin, margin}, QPageLayout::Millimeter);
        const int count = pages(&writer, nullptr, 0);
        QPainter painter(&writer);
        pages(&writer, &painter, count);
    }
    QSaveFile device(file);
    if (device.open(QIODevice::WriteOnly) && device.write(bytes) == bytes.size() && device.commit())
        return true;
    *why = device.errorString();
    return false;
}
