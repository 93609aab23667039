#include "journallist.h"

#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>

#include <algorithm>

JournalList::JournalList(QWidget* parent)
    : QListWidget(parent)
{
    setVerticalScrollMode(ScrollPerPixel);
}

void JournalList::layOut(int first)
{
    m_bottoms.resize(first);
    for (int row = first; row < count(); ++row)
        m_bottoms.append(top(row) + item(row)->sizeHint().height());
}

// Only the end grows; rows that came before another are laid out with it.
void JournalList::rowsInserted(const QModelIndex& parent, int first, int last)
{
    QAbstractItemView::rowsInserted(parent, first, last);
    layOut(qMin(first, m_bottoms.size()));
    updateGeometries();
    viewport()->update(QRect(QPoint(0, top(first) - verticalOffset()), viewport()->rect().bottomRight()));
}

void JournalList::doItemsLayout()
{
    layOut(0);
    QAbstractItemView::doItemsLayout();
}

void JournalList::reset()
{
    QListWidget::reset();
    layOut(0);
    updateGeometries();
}

void JournalList::updateGeometries()
{
    QAbstractItemView::updateGeometries();
    const int page = viewport()->height();
    verticalScrollBar()->setPageStep(page);
    verticalScrollBar()->setSingleStep(fontMetrics().lineSpacing());
    verticalScrollBar()->setRange(0, qMax(0, top(m_bottoms.size()) - page));
}

int JournalList::verticalOffset() const
{
    return verticalScrollBar()->value();
}

QRect JournalList::visualRect(const QModelIndex& index) const
{
    const int row = index.row();
    if (!index.isValid() || row >= m_bottoms.size())
        return {};
    return {0, top(row) - verticalOffset(), viewport()->width(), m_bottoms[row] - top(row)};
}

QModelIndex JournalList::indexAt(const QPoint& point) const
{
    const int y = point.y() + verticalOffset();
    if (y < 0)
        return {};
    const auto found = std::upper_bound(m_bottoms.cbegin(), m_bottoms.cend(), y);
    return model()->index(int(found - m_bottoms.cbegin()), 0); // none behind the last
}

void JournalList::scrollTo(const QModelIndex& index, ScrollHint hint)
{
    const QRect row = visualRect(index);
    if (!row.isValid())
        return;
    const int page = viewport()->height();
    int by = 0;
    if (hint == PositionAtTop || (hint == EnsureVisible && row.top() < 0))
        by = row.top();
    else if (hint == PositionAtCenter)
        by = row.center().y() - page / 2;
    else if (hint == PositionAtBottom || row.bottom() >= page)
        by = row.bottom() + 1 - page;
    verticalScrollBar()->setValue(verticalOffset() + by);
}

void JournalList::scrollContentsBy(int dx, int dy)
{
    scrollDirtyRegion(dx, dy);
    viewport()->scroll(dx, dy);
}

void JournalList::paintEvent(QPaintEvent* event)
{
    QPainter painter(viewport());
    QStyleOptionViewItem option = viewOptions();
    for (QModelIndex index = indexAt(event->rect().topLeft()); index.isValid();
         index = index.sibling(index.row() + 1, 0)) {
        option.rect = visualRect(index);
        if (option.rect.top() > event->rect().bottom())
            break;
        itemDelegate()->paint(&painter, option, index);
    }
}

void JournalList::showEvent(QShowEvent* event)
{
    QListWidget::showEvent(event);
    scrollToBottom();
}
