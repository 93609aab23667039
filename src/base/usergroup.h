#pragma once

// The groups of users, by the number that travels with a change of user; -1 stands for nobody.
namespace usergroup {

enum Id : int { Administrator, Fixer, Operator };

// May change constants and programs and enter the setup regime. The wider rights stay after a cancelled
// login, too.
constexpr bool maySetUp(int id)
{
    return id < Operator;
}

} // namespace usergroup
