#include "settings.h"

#include "site.h"

#include <cmath>

Settings::Settings()
    : QSettings(site().path(QStringLiteral("/home/oper/bin/settings.ini")), QSettings::IniFormat)
{}

float Settings::number(const char* key, float usual) const
{
    const float stored = value(QLatin1String(key), usual).toFloat();
    return std::isfinite(stored) ? stored : usual;
}

int Settings::columnWidth(const char* key, int usual) const
{
    const int stored = value(QLatin1String(key), usual).toInt();
    return stored > 0 ? stored : usual;
}
