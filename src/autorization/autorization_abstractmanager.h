#pragma once

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QMetaType>
#include <QObject>
#include <QString>

class QAbstractButton;
class QLabel;
class QWidget;

// Who stands at the console and what he may do. A small file beside the program holds the accounts, and
// one built-in account stays whatever becomes of that file. All of it belongs to the window's thread.
namespace Autorization {

class AbstractManager;
class AbstractUserGroup;

// MD5 of the UTF-8 bytes: 16 bytes, the only form in which a password is kept.
QByteArray passwordDigest(const QString& password);

// An account. It enters the manager's list when made and leaves it when destroyed; the manager destroys
// the accounts that are left at its own end, so they are made with `new`.
class AbstractUser
{
public:
    AbstractUser(AbstractManager* manager, const QString& login, const QString& name,
                 const QByteArray& password, AbstractUserGroup* group);
    virtual ~AbstractUser();
    AbstractUser(const AbstractUser&) = delete;
    AbstractUser& operator=(const AbstractUser&) = delete;

    AbstractManager* const manager;
    QString login;
    QString name;             // as shown to people
    QByteArray password;      // digest
    AbstractUserGroup* group; // not owned
};

// A level of access. It enters the manager's list when made and leaves it when destroyed.
class AbstractUserGroup
{
public:
    AbstractUserGroup(AbstractManager* manager, int id, const QString& name);
    virtual ~AbstractUserGroup();
    AbstractUserGroup(const AbstractUserGroup&) = delete;
    AbstractUserGroup& operator=(const AbstractUserGroup&) = delete;

    virtual bool useable() const;    // offered when an account is made
    virtual bool removeable() const; // its accounts are live rows of the users panel
    virtual void loginHandler() = 0; // called when one of its users has logged in

    AbstractManager* const manager;
    const int id;
    const QString name;
};

// Accounts, levels and the login.
class AbstractManager : public QObject
{
    Q_OBJECT

public:
    // Widgets of the console window, none of them owned, null for none: the parent of all dialogs, the
    // labels that tell who is logged in, the buttons that change the user and open the users panel.
    struct Widgets
    {
        QWidget* parent = nullptr;
        QLabel* userName = nullptr;
        QLabel* groupName = nullptr;
        QAbstractButton* changeUser = nullptr;
        QAbstractButton* users = nullptr;
    };

    ~AbstractManager() override;

    // False leaves the current user as he was.
    virtual bool logIn(const QString& login, const QString& password);
    virtual void logOut();
    virtual void enablePrivilegedOptions(bool enable);

    // Runs the login until it succeeds or is cancelled. The id of the user's group, -1 when cancelled:
    // then the labels and the current user stay.
    Q_INVOKABLE int showAutorization();

    AbstractUserGroup* findUserGroup(int id) const;     // null when absent
    AbstractUser* findUser(const QString& login) const; // null when absent; case matters

    AbstractUser* currentUser() const { return m_currentUser; } // null when nobody is logged in
    const QList<AbstractUser*>& users() const { return m_users; }
    const QList<AbstractUserGroup*>& groups() const { return m_groups; }

signals:
    void message(const QString& text, bool show); // a journal line

protected:
    // `userFile` is the path as people know it, without the root of the site.
    AbstractManager(const Widgets& widgets, const QString& userFile);

    // Trouble with the file is told in message boxes; accounts read before it are kept.
    void readUsers();
    // Writes every account there is at the moment. A failure leaves the file as it was and is told in the
    // journal; where the file cannot even be opened, in a message box as well.
    void writeUsers();
    // The same without one of them, null for none, and without a box: false when the file cannot be opened.
    bool storeUsers(AbstractUser* without);
    // Destroys the accounts that are left. To be called while their groups still live.
    void clearUsers();

    QWidget* dialogParent() const { return m_widgets.parent; }

private:
    friend class AbstractUser;
    friend class AbstractUserGroup;

    void complain(const QString& text) const;

    Widgets m_widgets;
    AbstractUser* m_currentUser = nullptr;
    QFile m_userFile;
    QString m_shownPath; // of the user file, for messages
    QList<AbstractUser*> m_users;
    QList<AbstractUserGroup*> m_groups;
};

} // namespace Autorization

Q_DECLARE_METATYPE(Autorization::AbstractUserGroup*)
