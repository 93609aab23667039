#include "programfile.h"

#include "site.h"

#include <QDebug>
#include <QFile>
#include <QTextStream>

bool writeProgramFile(const QString& path, const QString& text)
{
    constexpr QFileDevice::Permissions everyone(0x777); // user, group, others

    QFile file(site().path(path));
    file.setPermissions(everyone); // one that was left read-only can be written again
    if (file.open(QIODevice::WriteOnly)) {
        file.setPermissions(everyone); // a new one
        QTextStream stream(&file);
        stream << text;
        stream.flush();
        if (stream.status() == QTextStream::Ok && file.flush())
            return true;
    }
    // The rest of a program that was cut off is an end that nobody wrote.
    qWarning() << "program not written:" << file.fileName() << file.errorString();
    return false;
}
