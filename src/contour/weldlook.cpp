#include "weldlook.h"

#include <QHeaderView>
#include <QSettings>
#include <QStyledItemDelegate>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>

namespace {

constexpr int leastLetters = 16; // px

const char* const tabLook =
    "QTabBar::tab { min-width: 60px; height: 48px; padding: 0px 9px; margin-right: 2px; background: #d3d8e4;"
    " color: black; border: 1px solid #8792ac; border-bottom: none; border-top-left-radius: 6px;"
    " border-top-right-radius: 6px; }"
    "QTabBar::tab:selected { background: #3c4a6b; color: white; }"
    "QTabBar::tab:disabled { background: #e6e6e6; color: #5c5c5c; }";

const char* const tableLook =
    "QTableWidget { font-size: 13pt; gridline-color: #a9b2c6;"
    " background: white; color: black; selection-background-color: #00d6ff; selection-color: black; }"
    "QHeaderView { background: #e9ecf3; border: none; }"
    "QHeaderView::section { background: #d3d8e4; color: black; padding: 0px 1px; border: none;"
    " border-right: 1px solid #8792ac; border-bottom: 1px solid #8792ac; }"
    "QPlainTextEdit { background: white; color: black; }"
    "QScrollBar:vertical { width: 34px; background: #dfe3ec; border: none; }"
    "QScrollBar::handle:vertical { background: #8792ac; min-height: 60px; border-radius: 6px; margin: 2px "
    "4px; }"
    "QScrollBar:horizontal { height: 34px; background: #dfe3ec; border: none; }"
    "QScrollBar::handle:horizontal { background: #8792ac; min-width: 60px; border-radius: 6px; margin: 4px "
    "2px; }"
    "QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; border: none; background: none; }"
    "QScrollBar::add-page, QScrollBar::sub-page { background: none; }";

// Numbers stand with their points below one another and never lose a digit: what does not fit its column
// is drawn narrower.
class CellDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override
    {
        QStyledItemDelegate::initStyleOption(option, index);
        bool isNumber = false;
        option->text.toFloat(&isNumber);
        if (!(option->displayAlignment & Qt::AlignVertical_Mask))
            option->displayAlignment |= Qt::AlignVCenter;
        if (!isNumber) {
            makeLegible(option);
            return;
        }
        option->displayAlignment = Qt::AlignRight | Qt::AlignVCenter;
        const int room = option->rect.width() - 8;
        const int needed = QFontMetrics(option->font).horizontalAdvance(option->text);
        if (room > 0 && needed > room) {
            option->font.setStretch(qMax(50, 100 * room / needed));
            option->fontMetrics = QFontMetrics(option->font);
        }
    }

private:
    // What describes a frame or a raster in small letters is drawn as large as the room in its cell allows
    // and never too small for a look from the machine: rather narrower than cut off.
    static void makeLegible(QStyleOptionViewItem* option)
    {
        const QSize room = option->rect.size() - QSize(8, 0);
        if (room.width() <= 0 || QFontInfo(option->font).pixelSize() >= leastLetters)
            return;
        option->font.setPixelSize(leastLetters);
        for (int stretch = 100; stretch >= 50; stretch -= 5) {
            option->font.setStretch(stretch);
            option->fontMetrics = QFontMetrics(option->font);
            const QRect needed =
                option->fontMetrics.boundingRect(QRect(QPoint(), room), Qt::TextWordWrap, option->text);
            if (needed.width() <= room.width() && needed.height() <= room.height())
                break;
        }
    }
};

int sensibleWidth(const QVariant& stored, int fallback)
{
    const int width = stored.toInt();
    return width >= 40 && width <= 1000 ? width : fallback;
}

} // namespace

void dressWeldPanel(QTabWidget* panel)
{
    panel->tabBar()->setFocusPolicy(Qt::NoFocus);
    panel->tabBar()->setStyleSheet(QLatin1String(tabLook));
    for (QAbstractScrollArea* area : panel->findChildren<QAbstractScrollArea*>()) {
        if (!qobject_cast<QHeaderView*>(area))
            area->setStyleSheet(QLatin1String(tableLook));
    }
    for (QTableWidget* table : panel->findChildren<QTableWidget*>()) {
        table->setItemDelegate(new CellDelegate(table));
        QPalette palette = table->palette();
        palette.setColor(QPalette::AlternateBase, QColor(0xe3, 0xe8, 0xf4));
        table->setPalette(palette);
        QFont font = table->font();
        font.setPointSize(12);
        font.setStretch(84); // a title's longest word fills a column of 80 px
        table->horizontalHeader()->setFont(font);
    }
}

// --- column widths ---

QStringList contourWidthKeys(const QStringList& axes)
{
    QStringList keys;
    for (const QString& axis : axes)
        keys << QStringLiteral("Contour/Width_%1_%2").arg(axes.join(QString()), axis);
    return keys;
}

QStringList techWidthKeys()
{
    QStringList keys;
    for (const char* column : {"S", "Ir", "If", "Ix", "Iy", "Rate", "TR"})
        keys << QStringLiteral("Contour/Width_") + QLatin1String(column);
    return keys;
}

void restoreWidths(QTableWidget* table, const QSettings& settings, const QStringList& keys, int otherwise)
{
    for (int column = 0; column < keys.size(); ++column)
        table->setColumnWidth(column, sensibleWidth(settings.value(keys[column]), otherwise));
}

void keepWidths(const QTableWidget* table, QSettings& settings, const QStringList& keys)
{
    for (int column = 0; column < keys.size(); ++column) {
        if (!table->isColumnHidden(column))
            settings.setValue(keys[column], table->columnWidth(column));
    }
}

FittedColumn::FittedColumn(QTableWidget* table, int column)
    : QObject(table)
    , m_column(column)
    , m_ownWidth(table->columnWidth(column))
{
    const QHeaderView* header = table->horizontalHeader();
    connect(header, &QHeaderView::geometriesChanged, this, &FittedColumn::fit);
    connect(header, &QHeaderView::sectionResized, this, [this](int resized, int, int width) {
        if (m_fitting)
            return;
        if (resized == m_column)
            m_ownWidth = width;
        fit();
    });
    fit();
}

void FittedColumn::fit()
{
    // A table that goes away has its header tell once more, when it is no table any longer.
    const auto* table = qobject_cast<QTableWidget*>(parent());
    if (!table)
        return;
    QHeaderView* header = table->horizontalHeader();
    int others = 0;
    for (int column = 0; column < m_column; ++column)
        others += header->sectionSize(column); // 0 for a hidden one
    const int width = qMax(table->viewport()->width() - others, m_ownWidth);
    if (header->sectionSize(m_column) == width)
        return;
    m_fitting = true;
    header->resizeSection(m_column, width);
    m_fitting = false;
}
