#include "journaltail.h"

#include <QDir>

JournalTail::JournalTail(const QString& folder, int period, QObject* parent)
    : QObject(parent)
    , m_folder(folder)
    , m_file(newest())
    , m_read(QFileInfo(m_file).size())
{
    connect(&m_timer, &QTimer::timeout, this, &JournalTail::look);
    m_timer.start(period);
}

// Names of folders and files tell the time, so that the last is the newest.
QString JournalTail::newest() const
{
    const QStringList days = QDir(m_folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    if (days.isEmpty())
        return {};
    const QDir day(m_folder + QLatin1Char('/') + days.last());
    const QStringList files = day.entryList({QStringLiteral("polog_*.log")}, QDir::Files, QDir::Name);
    return files.isEmpty() ? QString() : day.filePath(files.last());
}

void JournalTail::look()
{
    const QString now = newest();
    QFile file(now);
    if (now.isEmpty() || !file.open(QIODevice::ReadOnly))
        return;
    if (now != m_file || file.size() < m_read)
        m_read = 0;
    m_file = now;
    file.seek(m_read);
    const QByteArray news = file.readAll();
    const int whole = news.lastIndexOf('\n') + 1;
    m_read += whole;
    for (const QByteArray& bytes : news.left(whole).split('\n')) {
        const QString text = QString::fromLocal8Bit(bytes);
        if (!text.isEmpty())
            emit line(text.mid(text.indexOf(QLatin1Char(']')) + 1).trimmed());
    }
}
