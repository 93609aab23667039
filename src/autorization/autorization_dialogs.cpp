#include "autorization_dialogs.h"

#include "autorization_abstractmanager.h"
#include "autorization_userfile.h"
#include "settings.h"
#include "widgets.h"

#include <QApplication>
#include <QComboBox>
#include <QFormLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QTableWidget>

#include <array>

namespace Autorization {

namespace {

constexpr int touchHeight = 64; // px, of whatever a finger has to hit
constexpr int fieldWidth = 460; // px
constexpr int loginLength = 32; // characters of a login and of a password
constexpr int columnWidth = 80; // px, where the settings say nothing
constexpr int frameMargin = 1;  // px

// Column by column: the heading and the key of its width in the settings file.
struct Column
{
    const char* title;
    const char* key;
};
constexpr std::array<Column, 3> columns{{{"Логин", "Registration/Width_Login"},
                                         {"Имя", "Registration/Width_Name"},
                                         {"Уровень", "Registration/Width_Rights"}}};

QFont touchFont(int points, QFont::Weight weight = QFont::Normal)
{
    QFont font;
    font.setFamilies(
        {QStringLiteral("DejaVu Sans"), QStringLiteral("Liberation Sans"), QStringLiteral("Noto Sans")});
    font.setPointSize(points);
    font.setWeight(weight);
    return font;
}

// Fits the dialog to its contents and puts it into its frame.
void showFramed(QDialog* dialog, const QString& title, QWidget* parent)
{
    dialog->resize(dialog->sizeHint().expandedTo(dialog->size()));
    auto* frame = new MyFrame(title, 0, 0, frameMargin, dialog, parent, true, false);
    const QRect area = parent ? QRect(parent->mapToGlobal(QPoint(0, 0)), parent->size())
                              : QApplication::primaryScreen()->geometry();
    frame->move(area.center() - frame->rect().center());
    frame->show();
    frame->activateWindow();
}

QLineEdit* field(QWidget* parent, const char* name)
{
    auto* edit = new QLineEdit(parent);
    edit->setObjectName(QLatin1String(name));
    edit->setFont(touchFont(20));
    edit->setFixedSize(fieldWidth, touchHeight);
    edit->setTextMargins(10, 0, 10, 0);
    // The tooltips of the validators take the look of their field.
    edit->setStyleSheet(QStringLiteral("QToolTip { font-size: 16pt; padding: 4px 8px; }"));
    return edit;
}

QLineEdit* passwordField(QWidget* parent, const char* name)
{
    QLineEdit* edit = field(parent, name);
    edit->setEchoMode(QLineEdit::Password);
    edit->setMaxLength(loginLength);
    return edit;
}

QPushButton* button(QWidget* parent, const char* name, const QString& text, int width)
{
    auto* push = new QPushButton(text, parent);
    push->setObjectName(QLatin1String(name));
    push->setFont(touchFont(18, QFont::Bold));
    push->setFixedSize(width, touchHeight);
    push->setAutoDefault(false); // Enter is the dialog's to answer
    return push;
}

QFormLayout* form(QDialog* dialog)
{
    auto* layout = new QFormLayout;
    layout->setContentsMargins(28, tipStrip, 28, 12);
    layout->setHorizontalSpacing(20);
    layout->setVerticalSpacing(tipStrip);
    layout->setLabelAlignment(Qt::AlignRight | Qt::AlignVCenter);
    dialog->setFont(touchFont(18));
    return layout;
}

void addRow(QFormLayout* layout, const QString& text, QWidget* widget)
{
    auto* label = new QLabel(text, layout->parentWidget());
    label->setMinimumHeight(touchHeight);
    label->setBuddy(widget);
    layout->addRow(label, widget);
}

QString labelText(const QFormLayout* layout, QWidget* widget)
{
    return qobject_cast<QLabel*>(layout->labelForField(widget))->text();
}

void addFoot(QDialog* dialog, QLayout* body, const QList<QPushButton*>& buttons)
{
    auto* foot = new QHBoxLayout;
    foot->setContentsMargins(28, 12, 28, 28);
    foot->setSpacing(20);
    foot->addStretch();
    for (QPushButton* push : buttons)
        foot->addWidget(push);
    auto* whole = new QVBoxLayout(dialog);
    whole->setContentsMargins(0, 0, 0, 0);
    whole->setSpacing(0);
    whole->addLayout(body);
    whole->addLayout(foot);
}

bool isEnter(const QKeyEvent* event)
{
    return event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
}

} // namespace

void showBox(QMessageBox::Icon icon, QWidget* parent, const QString& title, const QString& text)
{
    QMessageBox box(icon, title, text, QMessageBox::Ok, parent);
    box.setTextFormat(Qt::PlainText); // a login from the file is shown as it stands
    box.setFont(touchFont(16));
    // Wide enough for the whole line, as a path broken in two is hard to read.
    if (auto* label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label")))
        label->setMinimumWidth(qMin(label->fontMetrics().horizontalAdvance(text) + 20, 900));
    box.button(QMessageBox::Ok)->setMinimumSize(140, touchHeight);
    box.exec();
}

AutorizationDialog::AutorizationDialog(QWidget* parent)
    : QDialog(parent)
    , m_login(field(this, "leLogin"))
    , m_password(passwordField(this, "lePassword"))
    , m_enter(button(this, "pbEnter", QStringLiteral("Войти"), 220))
    , m_loginValidator(m_login)
    , m_passwordValidator(m_password)
{
    setObjectName(QStringLiteral("AutorizationDialog"));
    QFormLayout* fields = form(this);
    addFoot(this, fields, {m_enter});
    addRow(fields, QStringLiteral("Логин:"), m_login);
    addRow(fields, QStringLiteral("Пароль:"), m_password);

    m_login->setMaxLength(loginLength);
    m_login->setValidator(&m_loginValidator);
    m_password->setValidator(&m_passwordValidator);
    connect(m_enter, &QPushButton::clicked, this, &QDialog::accept);

    showFramed(this, QStringLiteral("Авторизация"), parent);
    m_login->setFocus();
}

QString AutorizationDialog::getLogin() const
{
    return m_login->text();
}

QString AutorizationDialog::getPassword() const
{
    return m_password->text();
}

void AutorizationDialog::clearPassword()
{
    m_password->clear();
    m_password->setFocus();
}

void AutorizationDialog::keyPressEvent(QKeyEvent* event)
{
    // The fields let Enter through whatever they hold, a password too short included.
    if (!isEnter(event))
        QDialog::keyPressEvent(event);
    else if (focusWidget() == m_login)
        m_password->setFocus();
    else
        m_enter->click();
}

RegistrationDialog::RegistrationDialog(QWidget* parent, const QString& title, const AbstractManager* manager)
    : QDialog(parent)
    , m_form(form(this))
    , m_name(field(this, "leName"))
    , m_login(field(this, "leLogin"))
    , m_password(passwordField(this, "lePassword"))
    , m_confirmation(passwordField(this, "lePassword2"))
    , m_group(new QComboBox(this))
    , m_add(button(this, "pbAdd", QStringLiteral("Добавить"), 220))
    , m_loginValidator(m_login, manager)
    , m_passwordValidator(m_password)
{
    setObjectName(QStringLiteral("RegistrationDialog"));
    setWindowTitle(title);
    m_group->setObjectName(QStringLiteral("cbGroup"));
    m_group->setFont(touchFont(20));
    m_group->setFixedSize(fieldWidth, touchHeight);
    m_group->setStyleSheet(
        QStringLiteral("QComboBox { background: white; border: 1px solid #808080; padding-left: 12px; }"
                       "QComboBox::drop-down { width: 64px; border: none; }"
                       "QComboBox::down-arrow { image: url(:/images/arrows/down.png); }"));

    addFoot(this, m_form, {m_add});
    addRow(m_form, QStringLiteral("Отображаемое имя:"), m_name);
    addRow(m_form, QStringLiteral("Логин:"), m_login);
    addRow(m_form, QStringLiteral("Пароль:"), m_password);
    addRow(m_form, QStringLiteral("Подтверждение пароля:"), m_confirmation);
    addRow(m_form, QStringLiteral("Уровень доступа:"), m_group);

    m_name->setValidator(&m_nameValidator);
    m_login->setMaxLength(loginLength); // no longer one could be typed at the login
    m_login->setValidator(&m_loginValidator);
    m_password->setValidator(&m_passwordValidator);
    m_confirmation->setValidator(&m_passwordValidator);
    for (AbstractUserGroup* group : manager->groups()) {
        if (!group->useable())
            continue;
        m_group->addItem(group->name, QVariant::fromValue(group));
        m_group->setItemData(m_group->count() - 1, QSize(0, touchHeight), Qt::SizeHintRole);
    }
    connect(m_name, &QLineEdit::textChanged, this, &RegistrationDialog::limitName);
    connect(m_add, &QPushButton::clicked, this, &RegistrationDialog::CheckInformation);

    showFramed(this, title, parent);
    m_name->setFocus();
}

QString RegistrationDialog::getName() const
{
    return m_name->text();
}

QString RegistrationDialog::getLogin() const
{
    return m_login->text();
}

QString RegistrationDialog::getPassword() const
{
    return m_password->text();
}

AbstractUserGroup* RegistrationDialog::getGroup() const
{
    return m_group->currentData().value<AbstractUserGroup*>();
}

void RegistrationDialog::CheckInformation()
{
    const QString trouble = complaint();
    if (trouble.isEmpty())
        accept();
    else
        showBox(QMessageBox::Warning, this, windowTitle(), trouble);
}

void RegistrationDialog::keyPressEvent(QKeyEvent* event)
{
    if (!isEnter(event))
        QDialog::keyPressEvent(event);
    else if (focusWidget() == m_add)
        m_add->click();
    else
        focusNextChild();
}

QString RegistrationDialog::complaint() const
{
    for (QLineEdit* edit : {m_name, m_login}) {
        if (!edit->hasAcceptableInput())
            return QStringLiteral("Поле \"%1\" заполнено неверно!").arg(labelText(m_form, edit));
    }
    // A short password passes when both fields agree: accounts with such codes are in use, and the
    // tooltip has given its advice by now.
    if (m_password->text() != m_confirmation->text())
        return QStringLiteral("Пароли не совпадают");
    if (m_group->currentIndex() < 0)
        return QStringLiteral("Уровень доступа не указан");
    return QString();
}

void RegistrationDialog::limitName()
{
    // What does not go into the file is not to be typed.
    const QString name = cutToBytes(m_name->text(), maxNameBytes);
    if (name != m_name->text())
        m_name->setText(name);
}

ControlPanel::ControlPanel(QWidget* parent, AbstractManager* manager)
    : QDialog(parent, Qt::FramelessWindowHint)
    , m_manager(manager)
    , m_users(new QTableWidget(0, int(columns.size()), this))
{
    qRegisterMetaType<AbstractUserGroup*>();
    setObjectName(QStringLiteral("ControlPanel"));
    setFont(touchFont(16));
    resize(820, 640);

    m_users->setObjectName(QStringLiteral("twUsers"));
    m_users->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_users->setSelectionMode(QAbstractItemView::SingleSelection);
    m_users->setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_users->setWordWrap(false);
    m_users->verticalHeader()->hide();
    m_users->verticalHeader()->setDefaultSectionSize(touchHeight);
    m_users->horizontalHeader()->setMinimumHeight(touchHeight);
    m_users->horizontalHeader()->setHighlightSections(false);
    const Settings stored;
    bool anyStored = false;
    for (int i = 0; i < int(columns.size()); ++i) {
        const Column& column = columns[size_t(i)];
        auto* heading = new QTableWidgetItem(QString::fromUtf8(column.title));
        heading->setFont(touchFont(12)); // whole in a column of the default width
        m_users->setHorizontalHeaderItem(i, heading);
        anyStored = anyStored || stored.contains(QLatin1String(column.key));
        m_users->setColumnWidth(i, stored.columnWidth(column.key, columnWidth));
    }

    QPushButton* add = button(this, "pbAdd", QStringLiteral("Добавить"), 220);
    QPushButton* remove = button(this, "pbRemove", QStringLiteral("Удалить"), 220);
    connect(add, &QPushButton::clicked, this, &ControlPanel::OnCreateUser);
    connect(remove, &QPushButton::clicked, this, &ControlPanel::OnRemoveUser);
    auto* body = new QVBoxLayout;
    body->setContentsMargins(28, 28, 28, 0);
    body->addWidget(m_users);
    addFoot(this, body, {add, remove});

    updateUsersTable();
    showFramed(this, QStringLiteral("Панель управления пользователями"), parent);
    if (anyStored)
        return;
    for (int i = 0; i < int(columns.size()); ++i) // the first look: nothing is cut off, no room is left
        m_users->setColumnWidth(i, m_users->viewport()->width() / int(columns.size()));
}

ControlPanel::~ControlPanel()
{
    Settings stored;
    for (int i = 0; i < int(columns.size()); ++i)
        stored.setValue(QLatin1String(columns[size_t(i)].key), m_users->columnWidth(i));
}

void ControlPanel::updateUsersTable()
{
    m_users->setRowCount(0);
    for (const AbstractUser* user : m_manager->users()) {
        const int row = m_users->rowCount();
        m_users->insertRow(row);
        const Qt::ItemFlags flags =
            user->group->removeable() ? Qt::ItemIsSelectable | Qt::ItemIsEnabled : Qt::NoItemFlags;
        const std::array<QString, columns.size()> cells{user->login, user->name, user->group->name};
        for (int i = 0; i < int(cells.size()); ++i) {
            auto* item = new QTableWidgetItem(cells[size_t(i)]);
            item->setFlags(flags);
            item->setForeground(flags == Qt::NoItemFlags ? QColor(90, 96, 114) : QColor(Qt::black));
            m_users->setItem(row, i, item);
        }
    }
}

void ControlPanel::OnCreateUser()
{
    const QString title = QStringLiteral("Добавление пользователя");
    if (m_manager->users().size() > maxUsersInFile) { // the built-in account does not go into the file
        showBox(QMessageBox::Warning, this, title, QStringLiteral("В файле пользователей больше нет места"));
        return;
    }
    RegistrationDialog dialog(this, title, m_manager);
    if (dialog.exec() != QDialog::Accepted)
        return;
    new AbstractUser(m_manager, dialog.getLogin(), dialog.getName(), passwordDigest(dialog.getPassword()),
                     dialog.getGroup());
    updateUsersTable();
}

void ControlPanel::OnRemoveUser()
{
    // Removing an account from the panel is not granted: who once had access to the beam stays on record.
}

} // namespace Autorization
