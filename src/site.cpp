#include "site.h"

#include <QCoreApplication>

namespace {

Site& current()
{
    static Site instance;
    return instance;
}

} // namespace

Site::Site()
    : drive{QStringLiteral(MIRTA_DRIVE_HOST), 5190, 5191}
    , kvs{QStringLiteral(MIRTA_KVS_HOST), 5196, 5197}
    , kvk{QStringLiteral(MIRTA_KVK_HOST), 5198, 5199}
{}

QString Site::path(const QString& absolute) const
{
    return root + absolute;
}

QString Site::programDir() const
{
    return root.isEmpty() ? QCoreApplication::applicationDirPath() : root + QStringLiteral("/home/oper/bin");
}

const Site& site()
{
    return current();
}

void setSite(const Site& site)
{
    current() = site;
}
