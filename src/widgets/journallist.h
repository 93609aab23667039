#pragma once

#include <QListWidget>
#include <QVector>

// The list of the journal: rows one below the other, each as high as its size hint says when it comes,
// scrolled by pixels. It only ever grows at its end and may hold the lines of weeks; a new line lays out
// itself and nothing else, where a list of the toolkit lays out all rows again. It selects nothing and has no
// editors.
class JournalList : public QListWidget
{
    Q_OBJECT

public:
    explicit JournalList(QWidget* parent = nullptr);

    QRect visualRect(const QModelIndex& index) const override;
    QModelIndex indexAt(const QPoint& point) const override;
    void scrollTo(const QModelIndex& index, ScrollHint hint = EnsureVisible) override;
    void doItemsLayout() override; // all rows anew
    void reset() override;

protected:
    void rowsInserted(const QModelIndex& parent, int first, int last) override;
    void updateGeometries() override;
    void scrollContentsBy(int dx, int dy) override;
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override; // at its end, whatever came while it was hidden
    int horizontalOffset() const override { return 0; }
    int verticalOffset() const override;
    QModelIndex moveCursor(CursorAction, Qt::KeyboardModifiers) override { return currentIndex(); }
    void setSelection(const QRect&, QItemSelectionModel::SelectionFlags) override {}

private:
    int top(int row) const { return row > 0 ? m_bottoms[row - 1] : 0; }
    void layOut(int first); // this row and all behind it

    QVector<int> m_bottoms; // of the rows, px from the list's beginning
};
