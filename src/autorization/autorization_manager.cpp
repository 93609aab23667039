#include "autorization_manager.h"

#include "autorization_dialogs.h"

#include <QAbstractButton>

namespace Autorization {

namespace {

const QString userFile = QStringLiteral("/home/oper/bin/users.bin");
const QString accessCode = QStringLiteral("46920137"); // of the built-in account

} // namespace

Manager::Manager(const Widgets& widgets)
    : AbstractManager(widgets, userFile)
    , m_administrator(this)
    , m_fixer(this)
    , m_operator(this)
    , m_builtIn(std::make_unique<AbstractUser>(this, QStringLiteral("su"), m_administrator.name,
                                               passwordDigest(accessCode), &m_administrator))
{
    // The built-in account stands first, so a file cannot bring another "su".
    readUsers();
    if (widgets.users)
        connect(widgets.users, &QAbstractButton::clicked, this, &Manager::onControlPanel);
}

Manager::~Manager()
{
    m_builtIn.reset(); // never goes into the file
    writeUsers();
    clearUsers();
}

void Manager::onControlPanel()
{
    ControlPanel(dialogParent(), this).exec();
}

} // namespace Autorization
