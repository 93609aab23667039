#include "sitefolder.h"

#include <QDir>
#include <QFile>
#include <QSettings>

namespace {

// A straight seam of 100 mm: the beam rises to 20 mA over the first centimetre and falls over the last.
const char exampleWeld[] = "contour\nXYZ\n-1 0 0\n2 -1\n0 1\n600\n2\n"
                           "0.00 0.00 0.00 1 0 0 0 \n100.00 0.00 0.00 0 \n4\n"
                           "+ 0.00 0.0 700 0.0 0.0 600.0 2 \n+ 10.00 20.0 700 0.0 0.0 600.0 2 \n"
                           "+ 90.00 20.0 700 0.0 0.0 600.0 2 \n+ 100.00 0.0 700 0.0 0.0 600.0 2 \n";

} // namespace

bool laySiteFolder(const QString& root, bool firstDay)
{
    for (const char* folder :
         {"/home/oper/bin/contours", "/home/oper/bin/dump", "/home/oper/bin/passports", "/programs/ch1",
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
        ini.setValue(QStringLiteral("Constants/Width_ID"), 130);
        ini.setValue(QStringLiteral("Constants/Width_DESC"), 740);
        ini.setValue(QStringLiteral("Constants/Width_VALUE"), 170);
    }
    QFile example(root + QStringLiteral("/home/oper/bin/contours/contour.save"));
    if (!example.exists() && (!example.open(QIODevice::WriteOnly) || example.write(exampleWeld) < 0))
        return false;
    QFile users(root + QStringLiteral("/home/oper/bin/users.bin"));
    if (users.exists())
        return true;
    if (!users.open(QIODevice::WriteOnly))
        return false;
    const char empty[] = {'\xA0', '\xF4', 0, 0}; // magic 0xF4A0, little-endian, and no users
    return users.write(empty, sizeof(empty)) == sizeof(empty);
}
