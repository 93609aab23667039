#include "gui.h"

#include "site.h"
#include "ui_gui.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
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

} // namespace

void Gui::initJournalList()
{
    ui->lwLog->verticalScrollBar()->setStyleSheet(
        QStringLiteral(
            "QScrollBar:vertical { width: %1px; background: #dfe3ec; border: none; }"
            "QScrollBar::handle:vertical { background: #8792ac; min-height: 48px; border-radius: 6px;"
            " margin: 2px 4px; }"
            "QScrollBar::add-line, QScrollBar::sub-line { height: 0; border: none; background: none; }"
            "QScrollBar::add-page, QScrollBar::sub-page { background: none; }")
            .arg(scrollBarWidth));
    // The lines follow the finger and stop at the list's ends.
    QScroller::grabGesture(ui->lwLog->viewport(), QScroller::LeftMouseButtonGesture);
    QScroller* scroller = QScroller::scroller(ui->lwLog->viewport());
    QScrollerProperties manner = scroller->scrollerProperties();
    manner.setScrollMetric(QScrollerProperties::VerticalOvershootPolicy,
                           QScrollerProperties::OvershootAlwaysOff);
    scroller->setScrollerProperties(manner);
}

// One file for each run. Without a file the list still works, and the operator is told nothing of it.
void Gui::openJournal()
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
    m_logFile.setFileName(QStringLiteral("%1/%2/polog_%3.log").arg(log, date, time));
    if (!m_logFile.open(QIODevice::WriteOnly))
        qWarning().noquote() << "no journal" << m_logFile.fileName() << ":" << m_logFile.errorString();
}

void Gui::prgMessage(const QString& str, bool isShow)
{
    const QString stamp = QTime::currentTime().toString(QStringLiteral("[hh:mm:ss] "));
    if (isShow)
        messageToLog(stamp, str);
    if (!m_logFile.isOpen())
        return;
    QTextStream stream(&m_logFile);
    stream << stamp << str << '\n';
    stream.flush();
    const bool written = m_logFile.flush(); // a crash must not lose what was already told
    if (std::exchange(m_journalWritten, written) && !written)
        qWarning().noquote() << "journal not written:" << m_logFile.errorString();
}

void Gui::messageToLog(const QString& time, const QString& str)
{
    const struct
    {
        QLatin1String prefix;
        const QIcon& icon;
        Qt::GlobalColor colour;
    } classes[] = {
        {QLatin1String("[I]"), m_iconInfo, Qt::black},    {QLatin1String("[A]"), m_iconError, Qt::red},
        {QLatin1String("[W]"), m_iconWarning, Qt::black}, {QLatin1String("[C]"), m_iconRun, Qt::black},
        {QLatin1String("[M]"), m_iconBasic, Qt::blue},
    };

    const QString prefix = str.left(3);
    auto* item = new QListWidgetItem(time + str);
    for (const auto& known : classes) {
        if (prefix != known.prefix)
            continue;
        item->setText(time + str.mid(3));
        item->setIcon(known.icon);
        item->setForeground(QColor(known.colour));
        break;
    }
    item->setSizeHint(rowSize(ui->lwLog, item->text()));
    ui->lwLog->addItem(item);
    ui->lwLog->setCurrentItem(item);
}
