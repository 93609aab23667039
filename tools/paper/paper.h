#pragma once

#include <QRectF>
#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>

class QPainter;

// Pages of A4, on which texts and pictures follow each other; at the foot of each stand the title and the
// number of the page.
class Paper
{
public:
    using Paint = std::function<void(QPainter*, const QRectF&)>; // rectangle in dots of the painter

    explicit Paper(const QString& title);

    // Rich text of QTextDocument, in letters of 10 pt unless it says otherwise. What does not fit under that
    // which stands before it begins a page.
    void text(const QString& html);
    void picture(double height, const Paint& paint); // mm, at most 255; as wide as the text
    void newPage();

    // A table with frames; cells are HTML, widths are shares of the text's width in per cent, and without
    // widths each column is as wide as it needs.
    static QString table(const QStringList& head, const QVector<QStringList>& rows,
                         const QVector<int>& widths = {});

    // Writes all pages, or leaves the former file as it was and says why.
    bool write(const QString& file, QString* why) const;

private:
    struct Item
    {
        QString html;
        double height; // mm, of a picture; negative: a new page
        Paint paint;
    };

    int pages(class QPdfWriter* writer, QPainter* painter, int of) const;

    QString m_title;
    QVector<Item> m_items;
};
