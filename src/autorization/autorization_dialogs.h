#pragma once

#include "autorization_validators.h"

#include <QDialog>
#include <QMessageBox>

class QComboBox;
class QFormLayout;
class QLineEdit;
class QPushButton;
class QTableWidget;

// Dialogs of the accounts, each framed at the centre of its parent. They serve a hand in a glove and a
// keyboard beside the screen. The frame owns the dialog and goes with it.
namespace Autorization {

class AbstractManager;
class AbstractUserGroup;

// A message box legible from two metres; returns when it has been closed.
void showBox(QMessageBox::Icon icon, QWidget* parent, const QString& title, const QString& text);

// Asks who is there. What the fields hold is taken as it is; the manager judges it.
class AutorizationDialog : public QDialog
{
    Q_OBJECT

public:
    explicit AutorizationDialog(QWidget* parent);

    QString getLogin() const;
    QString getPassword() const;
    void clearPassword(); // and asks for it again

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QLineEdit* m_login;
    QLineEdit* m_password;
    QPushButton* m_enter;
    LoginValidator m_loginValidator;
    PasswordValidator m_passwordValidator;
};

// Asks for the particulars of a new account. Accepted only when CheckInformation finds them in order.
class RegistrationDialog : public QDialog
{
    Q_OBJECT

public:
    RegistrationDialog(QWidget* parent, const QString& title, const AbstractManager* manager);

    QString getName() const;
    QString getLogin() const;
    QString getPassword() const;
    AbstractUserGroup* getGroup() const; // null when none is chosen

public slots:
    void CheckInformation();

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    QString complaint() const; // empty when all is in order
    void limitName();

    QFormLayout* m_form;
    QLineEdit* m_name;
    QLineEdit* m_login;
    QLineEdit* m_password;
    QLineEdit* m_confirmation;
    QComboBox* m_group;
    QPushButton* m_add;
    NameValidator m_nameValidator;
    NewLoginValidator m_loginValidator;
    PasswordValidator m_passwordValidator; // of both password fields; its tooltip stands at the first
};

// Lists the accounts and makes new ones. The widths of the columns are kept in the settings file.
class ControlPanel : public QDialog
{
    Q_OBJECT

public:
    ControlPanel(QWidget* parent, AbstractManager* manager);
    ~ControlPanel() override;

public slots:
    void updateUsersTable();
    void OnCreateUser();
    void OnRemoveUser();

private:
    AbstractManager* m_manager; // not owned
    QTableWidget* m_users;
};

} // namespace Autorization
