#pragma once

#include "autorization_groups.h"

#include <memory>

namespace Autorization {

// The accounts of this installation. Reads the user file when made, which may show message boxes, and
// writes it when destroyed: accounts made in a run that crashes are lost. Connects the users button to
// the users panel itself.
class Manager : public AbstractManager
{
    Q_OBJECT

public:
    explicit Manager(const Widgets& widgets);
    ~Manager() override;

    // Writes the user file ahead of the end and without a box: a failure is told in the journal, and again at
    // the end.
    void save() { storeUsers(m_builtIn.get()); }

public slots:
    void onControlPanel(); // the users panel, modal

private:
    Administrator m_administrator;
    Fixer m_fixer;
    Operator m_operator;
    std::unique_ptr<AbstractUser> m_builtIn;
};

} // namespace Autorization
