#include "sitefolder.h"

#include <QDir>
#include <QFile>
#include <QSettings>

bool laySiteFolder(const QString& root, bool firstDay)
{
    for (const char* folder : {"/home/oper/bin/contours", "/home/oper/bin/passports", "/programs/ch1",
                               "/programs/ch2", "/programs/ch3", "/points", "/log", "/var/tmp"}) {
        if (!QDir().mkpath(root + QLatin1String(folder)))
            return false;
    }
    if (!firstDay)
        return true;
    const QString settings = root + QStringLiteral("/home/oper/bin/settings.ini");
    if (!QFile::exists(settings)) {
        QSettings ini(settings, QSettings::IniFormat);
        ini.setValue(QStringLiteral("Registration/Width_Login"), 180);
        ini.setValue(QStringLiteral("Registration/Width_Name"), 320);
        ini.setValue(QStringLiteral("Registration/Width_Rights"), 230);
    }
    QFile users(root + QStringLiteral("/home/oper/bin/users.bin"));
    if (users.exists())
        return true;
    if (!users.open(QIODevice::WriteOnly))
        return false;
    const char empty[] = {'\xA0', '\xF4', 0, 0}; // magic 0xF4A0, little-endian, and no users
    return users.write(empty, sizeof(empty)) == sizeof(empty);
}
