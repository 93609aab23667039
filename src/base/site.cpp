#include "site.h"

#include <QCoreApplication>
#include <QDir>

#include <optional>

namespace {

std::optional<Site>& current()
{
    static std::optional<Site> instance;
    return instance;
}

bool leadsElsewhere(const QString& root)
{
    return QDir::isAbsolutePath(root) && QDir::cleanPath(root) != QDir::rootPath() &&
           QDir(root).canonicalPath() != QDir::rootPath();
}

} // namespace

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
    if (!current())
        qFatal("no site is set, and the machine's own is for its program alone");
    return *current();
}

void setSite(const Site& site)
{
    if (!site.m_machine && (!leadsElsewhere(site.root) || site.shmSuffix.isEmpty()))
        qFatal("a site needs a root and a suffix of its own: the machine's are for its program alone");
    current() = site;
}

void leaveSite()
{
    current().reset();
}
