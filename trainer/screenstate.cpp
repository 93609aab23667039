#include "screenstate.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QPalette>
#include <QRegularExpression>
#include <QScrollBar>
#include <QWidget>

#include <algorithm>
#include <iterator>

namespace {

QString sum(const QImage& picture)
{
    const QImage same = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    quint32 sum = 2166136261U;
    for (int y = 0; y < same.height(); ++y) {
        const uchar* line = same.constScanLine(y);
        for (int x = 0; x < same.width() * 4; ++x)
            sum = (sum ^ line[x]) * 16777619U;
    }
    return QString::number(sum, 16);
}

QString nameOf(const QWidget* widget)
{
    if (!widget->objectName().isEmpty())
        return widget->objectName();
    const char* const kind = widget->metaObject()->className();
    int number = 0;
    if (const QObject* parent = widget->parent()) {
        for (const QObject* sibling : parent->children()) {
            if (sibling == widget)
                break;
            number += sibling->objectName().isEmpty() && !qstrcmp(sibling->metaObject()->className(), kind);
        }
    }
    return QStringLiteral("%1[%2]").arg(QLatin1String(kind)).arg(number);
}

QString pathOf(const QWidget* widget, const QWidget* window)
{
    return widget == window ? nameOf(widget)
                            : pathOf(widget->parentWidget(), window) + QLatin1Char('/') + nameOf(widget);
}

QString textOf(const QWidget* widget)
{
    for (const char* property : {"plainText", "text", "title", "currentText"}) {
        if (const QVariant text = widget->property(property); text.isValid())
            return text.toString();
    }
    return {};
}

QString pictureOf(const QWidget* widget)
{
    if (const auto* label = qobject_cast<const QLabel*>(widget))
        return label->pixmap(Qt::ReturnByValue).isNull() ? QString()
                                                         : sum(label->pixmap(Qt::ReturnByValue).toImage());
    if (const auto* button = qobject_cast<const QAbstractButton*>(widget); button && !button->icon().isNull())
        return sum(button->icon().pixmap(button->iconSize()).toImage());
    const bool own = !QByteArray(widget->metaObject()->className()).startsWith('Q');
    if (!own || widget->isWindow() || !widget->isVisible() || widget->size().isEmpty())
        return {};
    QImage image(widget->size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    const_cast<QWidget*>(widget)->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
    return sum(image);
}

// What is not on view may not have been laid out yet.
QString placeOf(const QWidget* widget)
{
    const QRect place = widget->geometry();
    return widget->isVisible() ? QStringLiteral("%1,%2 %3x%4")
                                     .arg(place.x())
                                     .arg(place.y())
                                     .arg(place.width())
                                     .arg(place.height())
                               : QString();
}

// Scroll bars and headers of a view come and go with what it shows, which stands in its own line.
bool isPartOfView(const QWidget* widget)
{
    const QString name = widget->objectName();
    return (name.startsWith(QLatin1String("qt_scrollarea_")) && name.endsWith(QLatin1String("container"))) ||
           qobject_cast<const QScrollBar*>(widget) || qobject_cast<const QHeaderView*>(widget) ||
           qobject_cast<const QHeaderView*>(widget->parentWidget());
}

QString rowsOf(const QWidget* widget)
{
    const auto* view = qobject_cast<const QAbstractItemView*>(widget);
    if (!view || !view->model())
        return {};
    QStringList rows;
    const QAbstractItemModel* model = view->model();
    for (int row = 0; row < model->rowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < model->columnCount(); ++column) {
            const QModelIndex cell = model->index(row, column);
            const auto ground = cell.data(Qt::BackgroundRole).value<QBrush>();
            cells << cell.data().toString() +
                         (ground.style() == Qt::NoBrush ? QString() : ground.color().name());
        }
        rows << (row == view->currentIndex().row() ? QStringLiteral(">") : QString()) + cells.join(',');
    }
    return rows.join(';');
}

QString lineOf(const QWidget* widget, const QWidget* window)
{
    const QPalette& colours = widget->palette();
    // A widget of a page that was never opened counts as hidden to the toolkit, without having been hidden.
    const bool hidden = widget->isHidden() && widget->testAttribute(Qt::WA_WState_ExplicitShowHide);
    QString seen = hidden ? QStringLiteral("hidden") : QStringLiteral("shown");
    if (!widget->isEnabled())
        seen += QStringLiteral(" disabled");
    if (const auto* button = qobject_cast<const QAbstractButton*>(widget); button && button->isChecked())
        seen += QStringLiteral(" checked");
    return QStringList{pathOf(widget, window),
                       QString::fromLatin1(widget->metaObject()->className()),
                       seen,
                       placeOf(widget),
                       textOf(widget).replace('\n', QStringLiteral("\\n")),
                       colours.color(widget->backgroundRole()).name(),
                       colours.color(widget->foregroundRole()).name(),
                       pictureOf(widget),
                       rowsOf(widget)}
        .join(QStringLiteral(" | "));
}

QStringList without(const QStringList& lines, const QStringList& except)
{
    QVector<QRegularExpression> patterns;
    for (const QString& pattern : except)
        patterns << QRegularExpression('^' + QRegularExpression::escape(pattern).replace("\\*", ".*") +
                                       "(/[^|]*)? \\| ");
    QStringList kept;
    std::copy_if(lines.cbegin(), lines.cend(), std::back_inserter(kept), [&](const QString& line) {
        return std::none_of(patterns.cbegin(), patterns.cend(), [&](const QRegularExpression& pattern) {
            return pattern.match(line).hasMatch();
        });
    });
    return kept;
}

} // namespace

QStringList screenState(const QWidget* window)
{
    QStringList lines{lineOf(window, window)};
    for (const QWidget* widget : window->findChildren<QWidget*>()) {
        if (!isPartOfView(widget))
            lines << lineOf(widget, window);
    }
    lines.sort();
    return lines;
}

QStringList screenDifference(const QStringList& expected, const QStringList& there, const QStringList& except)
{
    const QStringList was = without(expected, except);
    const QStringList is = without(there, except);
    QStringList lost;
    QStringList come;
    std::set_difference(was.cbegin(), was.cend(), is.cbegin(), is.cend(), std::back_inserter(lost));
    std::set_difference(is.cbegin(), is.cend(), was.cbegin(), was.cend(), std::back_inserter(come));
    QStringList lines;
    for (const QString& line : lost)
        lines << QStringLiteral("- ") + line;
    for (const QString& line : come)
        lines << QStringLiteral("+ ") + line;
    // One widget's two lines beside each other.
    std::stable_sort(lines.begin(), lines.end(), [](const QString& a, const QString& b) {
        return a.mid(2).section(" | ", 0, 0) < b.mid(2).section(" | ", 0, 0);
    });
    return lines;
}
