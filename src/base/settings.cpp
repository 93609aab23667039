#include "settings.h"

#include "site.h"

Settings::Settings()
    : QSettings(site().path(QStringLiteral("/home/oper/bin/settings.ini")), QSettings::IniFormat)
{}
