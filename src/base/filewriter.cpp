#include "filewriter.h"

#include "site.h"

#include <QDebug>
#include <QFileInfo>
#include <QSaveFile>

#include <cerrno>

#include <unistd.h>

namespace {

// A disk that fills up takes a part first and says why at the next try only. Unbuffered, since what a buffer
// loses at the end QSaveFile takes for written.
bool writeWhole(QSaveFile* file, const QByteArray& bytes)
{
    qint64 done = 0;
    while (done < bytes.size()) {
        const qint64 taken = file->write(bytes.constData() + done, bytes.size() - done);
        if (taken <= 0)
            return false;
        done += taken;
    }
    // Some file systems tell only now that there is no room; commit() does not look at it.
    if (::fdatasync(file->handle()) != 0 && errno != EINVAL && errno != ENOSYS)
        return false;
    return file->commit();
}

} // namespace

std::optional<WriteTrouble> writeFile(const QString& path, const QByteArray& bytes,
                                      std::optional<QFileDevice::Permissions> mode)
{
    QSaveFile file(site().path(path));
    const QFileInfo former(file.fileName());
    const bool special = former.exists() && !former.isFile();
    if (mode && former.isFile())
        QFile::setPermissions(file.fileName(), *mode); // one that was left read-only can be written again
    const bool opened = !special && file.open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    if (opened) {
        if (mode)
            file.setPermissions(*mode);
        if (writeWhole(&file, bytes))
            return {};
    }
    qWarning() << "file not written:" << file.fileName()
               << (special ? QStringLiteral("not a regular file") : file.errorString());
    const bool full = opened && file.error() == QFileDevice::ResourceError;
    return WriteTrouble{opened, QStringLiteral("[A]Файл %1 не записан").arg(path) +
                                    (full ? QStringLiteral(": нет места на диске") : QString())};
}
