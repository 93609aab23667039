#include "sitefolder.h"

#include <QDir>
#include <QFile>

bool laySiteFolder(const QString& root, bool withUserFile)
{
    for (const char* folder : {"/home/oper/bin/contours", "/home/oper/bin/passports", "/programs/ch1",
                               "/programs/ch2", "/programs/ch3", "/points", "/log", "/var/tmp"}) {
        if (!QDir().mkpath(root + QLatin1String(folder)))
            return false;
    }
    QFile users(root + QStringLiteral("/home/oper/bin/users.bin"));
    if (!withUserFile || users.exists())
        return true;
    if (!users.open(QIODevice::WriteOnly))
        return false;
    const char empty[] = {'\xA0', '\xF4', 0, 0}; // magic 0xF4A0, little-endian, and no users
    return users.write(empty, sizeof(empty)) == sizeof(empty);
}
