#include "contourkeeper.h"

#include "filewriter.h"
#include "site.h"

#include <QAbstractItemModel>
#include <QFile>

namespace {

// One write for many edits, also while they go on and on.
constexpr std::chrono::seconds patience{5};

} // namespace

ContourKeeper::ContourKeeper(const QString& path, Text text, QObject* parent)
    : QObject(parent)
    , m_path(path)
    , m_text(std::move(text))
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(patience);
    connect(&m_timer, &QTimer::timeout, this, &ContourKeeper::keep);
}

void ContourKeeper::watch(const QAbstractItemModel* table)
{
    connect(table, &QAbstractItemModel::dataChanged, this, &ContourKeeper::edited);
    connect(table, &QAbstractItemModel::rowsInserted, this, &ContourKeeper::edited);
    connect(table, &QAbstractItemModel::rowsRemoved, this, &ContourKeeper::edited);
}

void ContourKeeper::edited()
{
    if (!m_timer.isActive())
        m_timer.start();
}

void ContourKeeper::taken()
{
    m_kept = m_text();
}

void ContourKeeper::keep()
{
    m_timer.stop();
    const QString text = m_text();
    if (text.isEmpty() || (text == m_kept && QFile::exists(site().path(m_path))))
        return;
    const auto trouble = writeFile(m_path, text.toLocal8Bit());
    if (!trouble) {
        m_kept = text;
    } else {
        m_timer.start();
        if (!m_failed)
            emit message(trouble->line, true);
    }
    m_failed = trouble.has_value();
}
