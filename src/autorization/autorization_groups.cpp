#include "autorization_groups.h"

#include "usergroup.h"

namespace Autorization {

Administrator::Administrator(AbstractManager* owner)
    : AbstractUserGroup(owner, usergroup::Administrator, QStringLiteral("Администратор"))
{}

bool Administrator::useable() const
{
    return false;
}

bool Administrator::removeable() const
{
    return false;
}

void Administrator::loginHandler()
{
    manager->enablePrivilegedOptions(true);
}

Fixer::Fixer(AbstractManager* owner)
    : AbstractUserGroup(owner, usergroup::Fixer, QStringLiteral("Наладчик"))
{}

void Fixer::loginHandler()
{
    manager->enablePrivilegedOptions(true);
}

Operator::Operator(AbstractManager* owner)
    : AbstractUserGroup(owner, usergroup::Operator, QStringLiteral("Оператор"))
{}

void Operator::loginHandler()
{
    manager->enablePrivilegedOptions(false);
}

} // namespace Autorization
