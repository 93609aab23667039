#include "autorization_abstractmanager.h"

#include "autorization_dialogs.h"
#include "autorization_userfile.h"
#include "filewriter.h"
#include "site.h"

#include <QAbstractButton>
#include <QBuffer>
#include <QCryptographicHash>
#include <QLabel>

#include <algorithm>

namespace Autorization {

QByteArray passwordDigest(const QString& password)
{
    return QCryptographicHash::hash(password.toUtf8(), QCryptographicHash::Md5);
}

AbstractUser::AbstractUser(AbstractManager* owner, const QString& userLogin, const QString& userName,
                           const QByteArray& digest, AbstractUserGroup* userGroup)
    : manager(owner)
    , login(userLogin)
    , name(userName)
    , password(digest)
    , group(userGroup)
{
    manager->m_users.append(this);
}

AbstractUser::~AbstractUser()
{
    manager->m_users.removeOne(this);
    if (manager->m_currentUser == this)
        manager->m_currentUser = nullptr;
}

AbstractUserGroup::AbstractUserGroup(AbstractManager* owner, int groupId, const QString& groupName)
    : manager(owner)
    , id(groupId)
    , name(groupName)
{
    manager->m_groups.append(this);
}

AbstractUserGroup::~AbstractUserGroup()
{
    manager->m_groups.removeOne(this);
}

bool AbstractUserGroup::useable() const
{
    return true;
}

bool AbstractUserGroup::removeable() const
{
    return true;
}

AbstractManager::AbstractManager(const Widgets& widgets, const QString& userFile)
    : m_widgets(widgets)
    , m_userFile(site().path(userFile))
    , m_shownPath(userFile)
{}

AbstractManager::~AbstractManager()
{
    clearUsers();
}

bool AbstractManager::logIn(const QString& login, const QString& password)
{
    AbstractUser* user = findUser(login);
    if (!user || user->password != passwordDigest(password))
        return false;
    m_currentUser = user;
    user->group->loginHandler();
    return true;
}

void AbstractManager::logOut()
{
    m_currentUser = nullptr;
}

void AbstractManager::enablePrivilegedOptions(bool enable)
{
    if (m_widgets.users)
        m_widgets.users->setVisible(enable);
}

int AbstractManager::showAutorization()
{
    AutorizationDialog dialog(m_widgets.parent);
    while (dialog.exec() == QDialog::Accepted) {
        if (logIn(dialog.getLogin(), dialog.getPassword())) {
            if (m_widgets.userName)
                m_widgets.userName->setText(m_currentUser->name);
            if (m_widgets.groupName)
                m_widgets.groupName->setText(m_currentUser->group->name);
            return m_currentUser->group->id;
        }
        dialog.show(); // the fields stay in sight behind the box
        showBox(QMessageBox::Warning, &dialog, QStringLiteral("Авторизация"),
                QStringLiteral("Неправильный логин или пароль!"));
        dialog.clearPassword();
    }
    return -1;
}

AbstractUserGroup* AbstractManager::findUserGroup(int id) const
{
    const auto found = std::find_if(m_groups.begin(), m_groups.end(),
                                    [id](const AbstractUserGroup* group) { return group->id == id; });
    return found == m_groups.end() ? nullptr : *found;
}

AbstractUser* AbstractManager::findUser(const QString& login) const
{
    const auto found = std::find_if(m_users.begin(), m_users.end(),
                                    [&login](const AbstractUser* user) { return user->login == login; });
    return found == m_users.end() ? nullptr : *found;
}

void AbstractManager::readUsers()
{
    const QString damaged = QStringLiteral("Ошибка чтения файла \"%1\"").arg(m_shownPath);
    if (!m_userFile.open(QIODevice::ReadOnly)) {
        complain(QStringLiteral("Файл \"%1\" не найден").arg(m_shownPath));
        return;
    }
    const int count = readUserCount(m_userFile);
    if (count < 0)
        complain(damaged);
    for (int i = 0; i < count; ++i) {
        UserRecord record;
        const UserRead result = readUser(m_userFile, &record);
        if (result == UserRead::Damaged)
            complain(damaged);
        if (result != UserRead::Whole)
            break;
        AbstractUserGroup* group = findUserGroup(record.group);
        if (group && !findUser(record.login))
            new AbstractUser(this, record.login, record.name, record.password, group);
        else
            complain(QStringLiteral("Ошибка чтения пользователя \"%1\"").arg(record.login));
    }
    m_userFile.close();
}

void AbstractManager::writeUsers()
{
    if (!storeUsers(nullptr))
        complain(QStringLiteral("Файл \"%1\" не найден").arg(m_shownPath));
}

bool AbstractManager::storeUsers(AbstractUser* without)
{
    QList<AbstractUser*> stored = m_users;
    stored.removeOne(without);
    QBuffer bytes;
    bytes.open(QIODevice::WriteOnly);
    writeUserCount(bytes, stored.size());
    for (const AbstractUser* user : qAsConst(stored))
        writeUser(bytes, {user->login, user->name, user->password, user->group->id});
    const auto trouble = writeFile(m_shownPath, bytes.data());
    if (!trouble)
        return true;
    emit message(trouble->line, true);
    return trouble->opened;
}

void AbstractManager::clearUsers()
{
    const QList<AbstractUser*> left = m_users; // each takes itself off the list
    qDeleteAll(left);
}

void AbstractManager::complain(const QString& text) const
{
    showBox(QMessageBox::Critical, m_widgets.parent, QStringLiteral("Система авторизации"), text);
}

} // namespace Autorization
