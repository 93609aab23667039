#pragma once

#include "autorization_abstractmanager.h"

namespace Autorization {

// The one built-in account. No other can be given this level.
class Administrator : public AbstractUserGroup
{
public:
    explicit Administrator(AbstractManager* manager);

    bool useable() const override;
    bool removeable() const override;
    void loginHandler() override;
};

// Sets the installation up: system constants, technology, all vacuum regimes.
class Fixer : public AbstractUserGroup
{
public:
    explicit Fixer(AbstractManager* manager);

    void loginHandler() override;
};

// Welds with what has been set up.
class Operator : public AbstractUserGroup
{
public:
    explicit Operator(AbstractManager* manager);

    void loginHandler() override;
};

} // namespace Autorization
