#include "processuse.h"

#include <QDir>
#include <QFile>

#include <malloc.h>
#include <unistd.h>

namespace {

QByteArray firstLine(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readLine().trimmed() : QByteArray();
}

} // namespace

ProcessUse ProcessUse::now()
{
    malloc_trim(0);
    ProcessUse use;
    const struct mallinfo2 all = mallinfo2();
    use.heap = long((all.uordblks + all.hblkhd) / 1024);
    use.resident = firstLine("/proc/self/statm").split(' ').value(1).toLong() * sysconf(_SC_PAGESIZE) / 1024;
    const QStringList tasks = QDir("/proc/self/task").entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    use.threads = tasks.size();
    for (const QString& task : tasks)
        use.threadNames << firstLine("/proc/self/task/" + task + "/comm");
    use.files =
        QDir("/proc/self/fd").entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
    return use;
}

QString ProcessUse::text() const
{
    return QString("%1 kB of heap, %2 in memory, %3 threads, %4 descriptors")
        .arg(heap)
        .arg(resident)
        .arg(threads)
        .arg(files);
}

QString ProcessUse::grownFrom(const ProcessUse& former, int percent) const
{
    if (threads == former.threads && files == former.files && heap <= former.heap * (100 + percent) / 100 &&
        resident <= former.resident * (100 + 2 * percent) / 100)
        return {};
    return QString("grown from %1 (%2) to %3 (%4)")
        .arg(former.text(), former.threadNames.join(' '), text(), threadNames.join(' '));
}
