#include "autorization_groups.h"

namespace Autorization {

Administrator::Administrator(AbstractManager* owner)
    : AbstractUserGroup(owner, 0, QStringLiteral("Администратор"))
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
    : AbstractUserGroup(owner, 1, QStringLiteral("Наладчик"))
{}

void Fixer::loginHandler()
{
    manager->enablePrivilegedOptions(true);
}

Operator::Operator(AbstractManager* owner)
    : AbstractUserGroup(owner, 2, QStringLiteral("Оператор"))
{}

void Operator::loginHandler()
{
    manager->enablePrivilegedOptions(false);
}

} // namespace Autorization
