#include "dumpcreator.h"

#include "flightrecord.h"

#include <QDataStream>
#include <QDateTime>
#include <QFile>

#include <chrono>

namespace {

constexpr std::chrono::milliseconds period{50}; // and the time of the write

// Everyone may read, write and execute; everyone may read. In the toolkit's digits.
constexpr int openPermissions = 0x777;
constexpr int closedPermissions = 0x444;

} // namespace

DumpCreator::DumpCreator(const QString& /*name*/, int /*rate*/, float* source)
    : m_source(source)
{}

void DumpCreator::setDumpPath(const QString& newDumpPath)
{
    m_dumpPath = newDumpPath + QLatin1Char('/');
}

void DumpCreator::startDump()
{
    {
        // Here and not in the thread, so that a stop cannot come before it and be lost.
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stop = false;
    }
    start(QThread::InheritPriority);
}

void DumpCreator::stopDump()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_stop = true;
    m_stopping.notify_all();
}

void DumpCreator::run()
{
    const QDateTime now = QDateTime::currentDateTime();
    QFile file(m_dumpPath + now.toString(QLatin1String(FlightRecord::nameForm)) +
               QLatin1String(FlightRecord::suffix));
    if (!file.open(QIODevice::WriteOnly)) {
        emit signalDumpProblem(QStringLiteral("Can't open file for writing."));
        return;
    }
    file.setPermissions(QFileDevice::Permissions(openPermissions));
    QDataStream stream(&file);
    const qint64 start = QDateTime::currentMSecsSinceEpoch();
    do {
        FlightRecord record;
        record.time = static_cast<quint32>(QDateTime::currentMSecsSinceEpoch() - start);
        if (!take(record.values))
            break;
        stream.writeRawData(reinterpret_cast<const char*>(&record), int(sizeof record));
        file.flush(); // what led to a fall of the console is what the record is for
    } while (pause());
    file.setPermissions(QFileDevice::Permissions(closedPermissions));
    file.close();
}

bool DumpCreator::take(float* values)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_stop)
        return false;
    for (int i = 0; i < 10; ++i)
        __atomic_load(m_source + i, values + i, __ATOMIC_RELAXED);
    return true;
}

bool DumpCreator::pause()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    return !m_stopping.wait_for(lock, period, [this] { return m_stop; });
}
