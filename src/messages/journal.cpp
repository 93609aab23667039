#include "journal.h"

#include "site.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QListWidget>
#include <QScrollBar>
#include <QScroller>
#include <QTextStream>

#include <utility>

namespace {

constexpr int scrollBarWidth = 44; // px, for a finger in a glove

// Height of a row of the list, which wraps long lines. Told to every item once.
QSize rowSize(const QListWidget* list, const QString& text)
{
    constexpr int iconAndMargins = 36;
    const QRect room(0, 0, list->width() - scrollBarWidth - iconAndMargins, 1000);
    const int height = list->fontMetrics().boundingRect(room, Qt::TextWordWrap, text).height();
    return {room.width(), qMax(height, list->iconSize().height()) + 3};
}

// Keeps its colours in a window that is disabled.
QIcon stateIcon(const QString& file)
{
    QIcon icon(file);
    icon.addFile(file, QSize(), QIcon::Disabled);
    return icon;
}

} // namespace

Journal::Journal(QListWidget* list)
    : m_list(list)
    , m_classes{{
          {QLatin1String("[I]"), QColor(Qt::black), stateIcon(QStringLiteral(":/images/icon-info-mini.png"))},
          {QLatin1String("[A]"), QColor(Qt::red), stateIcon(QStringLiteral(":/images/icon-error-mini.png"))},
          {QLatin1String("[W]"), QColor(Qt::black),
           stateIcon(QStringLiteral(":/images/icon-warning-mini.png"))},
          {QLatin1String("[C]"), QColor(Qt::black), stateIcon(QStringLiteral(":/images/icon-run-mini.png"))},
          {QLatin1String("[M]"), QColor(Qt::blue), stateIcon(QStringLiteral(":/images/icon-basic-mini.png"))},
      }}
{
    list->verticalScrollBar()->setStyleSheet(
        QStringLiteral(
            "QScrollBar:vertical { width: %1px; background: #dfe3ec; border: none; }"
            "QScrollBar::handle:vertical { background: #8792ac; min-height: 48px; border-radius: 6px;"
            " margin: 2px 4px; }"
            "QScrollBar::add-line, QScrollBar::sub-line { height: 0; border: none; background: none; }"
            "QScrollBar::add-page, QScrollBar::sub-page { background: none; }")
            .arg(scrollBarWidth));
    // The lines follow the finger and stop at the list's ends.
    QScroller::grabGesture(list->viewport(), QScroller::LeftMouseButtonGesture);
    QScroller* scroller = QScroller::scroller(list->viewport());
    QScrollerProperties manner = scroller->scrollerProperties();
    manner.setScrollMetric(QScrollerProperties::VerticalOvershootPolicy,
                           QScrollerProperties::OvershootAlwaysOff);
    scroller->setScrollerProperties(manner);
}

void Journal::open()
{
    const QDateTime now = QDateTime::currentDateTime();
    const QString date = now.toString(QStringLiteral("yyyy_MM_dd"));
    const QString log = site().path(QStringLiteral("/log"));
    QDir folder(log);
    if (!folder.cd(date)) {
        folder.mkdir(date);
        folder.cd(date);
    }
    const QString time = now.toString(QStringLiteral("hh_mm_ss"));
    m_file.setFileName(QStringLiteral("%1/%2/polog_%3.log").arg(log, date, time));
    if (!m_file.open(QIODevice::WriteOnly))
        qWarning().noquote() << "no journal" << m_file.fileName() << ":" << m_file.errorString();
}

void Journal::close()
{
    m_file.close();
}

void Journal::write(const QString& line, bool shown)
{
    const QString stamp = QTime::currentTime().toString(QStringLiteral("[hh:mm:ss] "));
    if (shown)
        show(stamp, line);
    if (!m_file.isOpen())
        return;
    QTextStream stream(&m_file);
    stream << stamp << line << '\n';
    stream.flush();
    const bool written = m_file.flush(); // a crash must not lose what was already told
    if (std::exchange(m_written, written) && !written)
        qWarning().noquote() << "journal not written:" << m_file.errorString();
}

void Journal::show(const QString& stamp, const QString& line)
{
    auto* item = new QListWidgetItem(stamp + line);
    for (const Class& known : m_classes) {
        if (line.left(3) != known.mark)
            continue;
        item->setText(stamp + line.mid(3));
        item->setIcon(known.icon);
        item->setForeground(known.colour);
        break;
    }
    item->setSizeHint(rowSize(m_list, item->text()));
    m_list->addItem(item);
    m_list->setCurrentItem(item);
}
