#include "autorization_dialogs.h"
#include "autorization_manager.h"
#include "fulldisk.h"
#include "sitefixture.h"

#include <QApplication>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRandomGenerator>
#include <QSettings>
#include <QTableWidget>
#include <QTimer>
#include <QToolTip>
#include <QtTest>

#include <deque>
#include <functional>

using namespace Autorization;

namespace {

const QString userFile = QStringLiteral("/home/oper/bin/users.bin");
const QString notFound = QStringLiteral("Файл \"/home/oper/bin/users.bin\" не найден");
const QString damaged = QStringLiteral("Ошибка чтения файла \"/home/oper/bin/users.bin\"");

// Plays the operator while a modal dialog holds the test: each step waits for its dialog and acts on it.
// A message box is noted and closed at once. When a test has failed, or a dialog does not come, he closes
// what is open, so that no test hangs.
class Visitor
{
public:
    Visitor()
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] { look(); });
        m_timer.setSingleShot(true);
        m_timer.start(1);
        m_waiting.start();
    }

    // Runs `act` when a dialog of this object name is visible and no box covers it.
    void then(const QString& dialog, std::function<void(QWidget*)> act)
    {
        m_steps.push_back({dialog, std::move(act)});
        m_waiting.start();
    }

    QStringList takeTexts()
    {
        QStringList texts;
        texts.swap(m_texts);
        return texts;
    }
    QString title() const { return m_title; }
    QMessageBox::Icon icon() const { return m_icon; }
    bool done() const { return m_steps.empty(); }

private:
    struct Step
    {
        QString dialog;
        std::function<void(QWidget*)> act;
    };

    void look()
    {
        m_timer.start(1); // now, since a step may open a dialog of its own
        if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
            m_texts << box->text();
            m_title = box->windowTitle();
            m_icon = box->icon();
            box->accept();
        } else if (!QTest::currentTestFailed() && m_waiting.hasExpired(10'000)) {
            QTest::qFail("nothing more happens", __FILE__, __LINE__);
        } else if (QTest::currentTestFailed()) {
            m_steps.clear();
            for (QWidget* widget : QApplication::allWidgets()) {
                if (auto* dialog = qobject_cast<QDialog*>(widget); dialog && dialog->isVisible())
                    return dialog->reject();
            }
        } else if (!m_steps.empty()) {
            for (QWidget* widget : QApplication::allWidgets()) {
                if (widget->objectName() != m_steps.front().dialog || !widget->isVisible())
                    continue;
                const Step step = m_steps.front();
                m_steps.pop_front();
                m_waiting.start();
                return step.act(widget);
            }
        }
    }

    QTimer m_timer;
    QElapsedTimer m_waiting;
    std::deque<Step> m_steps;
    QStringList m_texts;
    QString m_title;
    QMessageBox::Icon m_icon = QMessageBox::NoIcon;
};

template <class Widget = QLineEdit>
Widget* child(QWidget* dialog, const char* name)
{
    auto* found = dialog->findChild<Widget*>(QLatin1String(name));
    Q_ASSERT_X(found, "child", name);
    return found;
}

void type(QWidget* dialog, const char* name, const QString& text)
{
    child(dialog, name)->setText(text);
}

QByteArray word(int value)
{
    return QByteArray(1, char(value & 0xFF)) + QByteArray(1, char(value >> 8));
}

QByteArray header(int count)
{
    return QByteArray("\xA0\xF4", 2) + word(count);
}

QByteArray account(const QByteArray& login, const QByteArray& name, int group,
                   const QByteArray& digest = QByteArray(16, 'd'))
{
    return word(login.size()) + word(name.size()) + word(digest.size()) + word(group) + login + name + digest;
}

// The widgets of the console window that the accounts work on.
struct Console
{
    QWidget window;
    QLabel userName{"кто"};
    QLabel groupName{"права"};
    QPushButton changeUser;
    QPushButton users{&window};

    AbstractManager::Widgets widgets() { return {&window, &userName, &groupName, &changeUser, &users}; }
};

} // namespace

class TestUsers : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<SiteFixture> m_site;
    std::unique_ptr<Visitor> m_operator;
    std::unique_ptr<Console> m_console;

    std::unique_ptr<Manager> start() { return std::make_unique<Manager>(m_console->widgets()); }

    void putFile(const QByteArray& bytes)
    {
        QFile file(site().path(userFile));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }

    static QStringList logins(const AbstractManager& manager)
    {
        QStringList list;
        for (const AbstractUser* user : manager.users())
            list << user->login;
        return list;
    }

private slots:
    void init()
    {
        m_site = std::make_unique<SiteFixture>();
        m_operator = std::make_unique<Visitor>();
        m_console = std::make_unique<Console>();
        m_console->window.resize(1920, 1200);
    }
    void cleanup()
    {
        QVERIFY2(m_operator->done(), "a dialog that the operator waits for never came");
        m_console.reset();
        m_operator.reset();
        m_site.reset();
    }

    void missingFileLeavesTheBuiltInAccountAndAnEmptyFile()
    {
        auto manager = start();
        QCOMPARE(m_operator->takeTexts(), QStringList{notFound});
        QCOMPARE(m_operator->title(), QString("Система авторизации"));
        QCOMPARE(m_operator->icon(), QMessageBox::Critical);
        QVERIFY(!manager->logIn("su", "46920138"));
        QVERIFY(!manager->currentUser());
        QVERIFY(manager->logIn("su", "46920137"));
        QCOMPARE(manager->currentUser()->group->id, 0);
        manager.reset();
        QCOMPARE(m_site->read(userFile), QByteArray("\xA0\xF4\0\0", 4));
    }

    void aFileThatCannotBeWrittenIsTold()
    {
        QVERIFY(QDir(site().path("/home/oper/bin")).removeRecursively());
        start().reset();
        QCOMPARE(m_operator->takeTexts(), (QStringList{notFound, notFound}));
    }

    void accountsOutliveAFullDisk()
    {
        start().reset();
        const QByteArray former = m_site->read(userFile);
        auto manager = start();
        m_operator->takeTexts();
        new AbstractUser(manager.get(), "ivan", "Иван", passwordDigest("1234"), manager->findUserGroup(2));
        QStringList journal;
        connect(manager.get(), &Manager::message, [&](const QString& line) { journal << line; });
        const FullDisk full(20);
        manager.reset();
        QCOMPARE(journal, QStringList{"[A]Файл /home/oper/bin/users.bin не записан"});
        QVERIFY(m_operator->takeTexts().isEmpty()); // no box holds up the end
        QCOMPARE(m_site->read(userFile), former);
    }

    // Byte for byte: whatever reads this file in the field reads it so.
    void accountsAreWrittenInOrder()
    {
        auto manager = start();
        new AbstractUser(manager.get(), "ivan", "Иван", passwordDigest("1234"), manager->findUserGroup(2));
        new AbstractUser(manager.get(), "petr7", "Пётр", passwordDigest("0"), manager->findUserGroup(1));
        manager.reset();
        const QByteArray ivan = QByteArray::fromHex("81dc9bdb52d04dc20036dbd8313ed055");
        const QByteArray petr = QByteArray::fromHex("cfcd208495d565ef66e7dff9f98764da");
        const QByteArray expected =
            header(2) + account("ivan", "Иван", 2, ivan) + account("petr7", "Пётр", 1, petr);
        QCOMPARE(m_site->read(userFile).toHex(), expected.toHex());

        m_operator->takeTexts();
        manager = start();
        QCOMPARE(m_operator->takeTexts(), QStringList());
        QCOMPARE(logins(*manager), (QStringList{"su", "ivan", "petr7"}));
        QVERIFY(manager->logIn("ivan", "1234"));
        QCOMPARE(manager->currentUser()->name, QString("Иван"));
        manager.reset();
        QCOMPARE(m_site->read(userFile).toHex(), expected.toHex());
    }

    void rightsOfTheLevels()
    {
        auto manager = start();
        QCOMPARE(manager->groups().size(), 3);
        const struct
        {
            const char* name;
            bool useable, removeable, users;
        } levels[] = {{"Администратор", false, false, true},
                      {"Наладчик", true, true, true},
                      {"Оператор", true, true, false}};
        for (int id = 0; id < 3; ++id) {
            AbstractUserGroup* group = manager->findUserGroup(id);
            QCOMPARE(manager->groups().at(id), group);
            QCOMPARE(group->name, QString(levels[id].name));
            QCOMPARE(group->useable(), levels[id].useable);
            QCOMPARE(group->removeable(), levels[id].removeable);
            m_console->users.setVisible(!levels[id].users);
            group->loginHandler();
            QCOMPARE(m_console->users.isHidden(), !levels[id].users);
        }
        QVERIFY(!manager->findUserGroup(3));
        QVERIFY(!manager->findUser("SU"));

        QVERIFY(manager->logIn("su", "46920137"));
        QVERIFY(!manager->logIn("su", "1"));
        QVERIFY2(manager->currentUser(), "a refused login leaves the user in place");
        manager->logOut();
        QVERIFY(!manager->currentUser());
    }

    void filesAreRead_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("texts");
        QTest::addColumn<QStringList>("read");
        const auto row = [](const char* name, const QByteArray& bytes, const QStringList& texts,
                            const QStringList& read) { QTest::newRow(name) << bytes << texts << read; };
        const QByteArray good = account("good", "Имя", 2);
        const QByteArray next = account("next", "Имя", 1);
        const auto refused = [](const char* login) {
            return QStringList{QStringLiteral("Ошибка чтения пользователя \"%1\"").arg(login)};
        };

        row("foreign magic", QByteArray("\xA1\xF4\1\0", 4) + good, {damaged}, {});
        row("1024 users", header(1024) + good, {damaged}, {});
        row("1023 users, one there", header(1023) + good, {}, {"good"});
        row("none, bytes behind", header(0) + good, {}, {});
        row("fewer told than there", header(1) + good + next, {}, {"good"});

        row("login of 2", header(3) + good + account("ab", "Имя", 2) + next, {damaged}, {"good"});
        row("login of 63", header(1) + account(QByteArray(63, 'x'), "Имя", 2), {}, {QString(63, 'x')});
        row("login of 64", header(2) + account(QByteArray(64, 'x'), "Имя", 2) + next, {damaged}, {});
        row("name of 0", header(2) + account("good", "", 2) + next, {damaged}, {});
        row("name of 127", header(1) + account("good", QByteArray(127, 'n'), 2), {}, {"good"});
        row("name of 128", header(2) + account("good", QByteArray(128, 'n'), 2) + next, {damaged}, {});
        row("texts cut short by a zero byte",
            header(2) + account(QByteArray("a\0c", 3), QByteArray(1, '\0'), 2) + next, {}, {"a", "next"});
        row("texts that are no UTF-8", header(2) + account("good", QByteArray(127, '\xC8'), 2) + next, {},
            {"good", "next"});
        row("digest of 0", header(2) + account("good", "n", 2, "") + next, {damaged}, {});
        row("digest of 31", header(1) + account("good", "n", 2, QByteArray(31, 'd')), {}, {"good"});
        row("digest of 32", header(2) + account("good", "n", 2, QByteArray(32, 'd')) + next, {damaged}, {});
        row("lengths of 65535", header(2) + good + QByteArray(8, '\xFF') + next, {damaged}, {"good"});

        row("unknown level", header(2) + account("seven", "Имя", 7) + next, refused("seven"), {"next"});
        row("su in the file", header(2) + account("su", "Имя", 2) + next, {damaged}, {});
        row("su behind a zero byte", header(2) + account(QByteArray("su\0", 3), "Имя", 2) + next,
            refused("su"), {"next"});
        row("twice the same", header(3) + good + account("good", "Другой", 1) + next, refused("good"),
            {"good", "next"});
    }
    void filesAreRead()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QStringList, texts);
        QFETCH(QStringList, read);
        putFile(bytes);
        auto manager = start();
        QCOMPARE(m_operator->takeTexts(), texts);
        QCOMPARE(logins(*manager), QStringList("su") + read);
        QVERIFY(manager->logIn("su", "46920137"));

        // What could not be read is gone with the next end of the program, the rest is there again.
        manager.reset();
        manager = start();
        QCOMPARE(m_operator->takeTexts(), QStringList());
        QCOMPARE(logins(*manager), QStringList("su") + read);
    }

    void aFileCutAtAnyByteKeepsTheAccountsBefore()
    {
        const QByteArray first = account("first", "Первый", 1);
        const QByteArray second = account("second", "Второй", 2);
        const QByteArray whole = header(2) + first + second;
        for (int size = 0; size <= whole.size(); ++size) {
            putFile(whole.left(size));
            const auto manager = start();
            const int behindHeader = size - 4;
            const int users = behindHeader < first.size() ? 0 : size < whole.size() ? 1 : 2;
            const int inAccount = behindHeader - (users == 0 ? 0 : first.size());
            // A head cut short is taken for the end; anything else that is missing is damage.
            const bool told = size < 4 || (users < 2 && inAccount >= 8);
            QCOMPARE(m_operator->takeTexts(), told ? QStringList{damaged} : QStringList());
            QCOMPARE(logins(*manager), QStringList({"su", "first", "second"}).mid(0, 1 + users));
        }
    }

    void noiseNeverCostsTheBuiltInAccount()
    {
        QRandomGenerator random(20260101);
        for (int round = 0; round < 150; ++round) {
            QByteArray bytes = header(int(random.bounded(1, 6)));
            for (int i = 0; i < 5; ++i)
                bytes += account(QByteArray("user") + char('a' + i), "Имя", random.bounded(4));
            for (int i = random.bounded(1, 12); i > 0; --i)
                bytes[random.bounded(bytes.size())] = char(random.bounded(256));
            putFile(bytes);
            auto manager = start();
            QVERIFY(manager->logIn("su", "46920137"));
            for (const QString& text : m_operator->takeTexts())
                QVERIFY2(text == damaged || text.startsWith("Ошибка чтения пользователя \""),
                         qPrintable(text));
            // What was read once is read again.
            const QStringList read = logins(*manager);
            manager.reset();
            manager = start();
            QCOMPARE(m_operator->takeTexts(), QStringList());
            QCOMPARE(logins(*manager), read);
        }
    }

    void fieldsJudgeWhatIsTyped_data()
    {
        QTest::addColumn<int>("field"); // 0 name, 1 login, 2 new login, 3 password
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("tip");
        QTest::addColumn<int>("state");
        const auto row = [](int field, const char* text, const char* tip, QValidator::State state) {
            QTest::addRow("%d '%s'", field, text) << field << text << tip << int(state);
        };
        row(0, "", "", QValidator::Intermediate);
        row(0, "Ян", "", QValidator::Intermediate);
        row(0, "    ", "", QValidator::Intermediate);
        row(0, "Яна", "", QValidator::Acceptable);
        row(1, "", "Поле 'Логин' не может быть пустым!", QValidator::Intermediate);
        row(1, "a b", "Допускается использовать только латинские буквы и цифры!", QValidator::Invalid);
        row(1, "é", "Допускается использовать только латинские буквы и цифры!", QValidator::Invalid);
        row(1, "Z", "", QValidator::Acceptable);
        row(2, "su", "Пользователь с именем \"su\" уже существует!", QValidator::Intermediate);
        row(2, "", "Поле 'Логин' не может быть пустым!", QValidator::Intermediate);
        row(2, "я", "Допускается использовать только латинские буквы и цифры", QValidator::Invalid);
        row(2, "SU", "Логин должен быть не короче 3 символов", QValidator::Intermediate);
        row(2, "su1", "", QValidator::Acceptable);
        row(3, "", "Поле 'Пароль' не может быть пустым!", QValidator::Intermediate);
        row(3, "12a", "Для пароля допускается использовать только цифры!", QValidator::Invalid);
        row(3, "٣", "Для пароля допускается использовать только цифры!", QValidator::Invalid);
        row(3, "123", "Пароль должен быть не короче 4 символов!", QValidator::Intermediate);
        row(3, "0123", "", QValidator::Acceptable);
    }
    void fieldsJudgeWhatIsTyped()
    {
        QFETCH(int, field);
        QFETCH(QString, text);
        QFETCH(QString, tip);
        QFETCH(int, state);
        const auto manager = start();
        m_console->window.show();
        QLineEdit edit(&m_console->window);
        edit.move(300, 400);
        edit.show();
        const NameValidator name;
        const LoginValidator login(&edit);
        const NewLoginValidator newLogin(&edit, manager.get());
        const PasswordValidator password(&edit);
        const QValidator* validators[] = {&name, &login, &newLogin, &password};
        QToolTip::showText(edit.mapToGlobal(QPoint(0, 0)), "прежний", &edit);
        int position = 0;
        QCOMPARE(int(validators[field]->validate(text, position)), state);
        if (!tip.isEmpty()) {
            QVERIFY(QToolTip::isVisible());
            QCOMPARE(QToolTip::text(), tip);
        } else if (state == QValidator::Acceptable) {
            QTRY_VERIFY(!QToolTip::isVisible());
        } else {
            QCOMPARE(QToolTip::text(), QString("прежний"));
        }
    }

    void refusedKeystrokesNeverShow()
    {
        AutorizationDialog dialog(&m_console->window);
        dialog.show();
        auto* login = child(&dialog, "leLogin");
        QTest::keyClicks(login, "ab");
        QTest::sendKeyEvent(QTest::Click, login, Qt::Key_unknown, QStringLiteral("ж"), Qt::NoModifier);
        QCOMPARE(login->text(), QString("ab"));
        QCOMPARE(QToolTip::text(), QString("Допускается использовать только латинские буквы и цифры!"));
        auto* password = child(&dialog, "lePassword");
        QTest::keyClicks(password, "1x2");
        QCOMPARE(password->text(), QString("12"));
        QCOMPARE(password->echoMode(), QLineEdit::Password);
        QTest::keyClicks(login, QString(40, 'c'));
        QCOMPARE(login->text().size(), 32);
    }

    void registrationTellsWhatIsMissing()
    {
        const auto manager = start();
        m_operator->takeTexts();
        RegistrationDialog dialog(&m_console->window, "Добавление пользователя", manager.get());
        dialog.show();
        auto* group = child<QComboBox>(&dialog, "cbGroup");
        QCOMPARE(group->count(), 2);
        QCOMPARE(group->itemText(0), QString("Наладчик"));
        QCOMPARE(group->itemData(1).value<AbstractUserGroup*>(), manager->findUserGroup(2));
        group->setCurrentIndex(-1);
        const auto complaint = [&] {
            child<QPushButton>(&dialog, "pbAdd")->click();
            return m_operator->takeTexts().join("|");
        };
        QCOMPARE(complaint(), QString("Поле \"Отображаемое имя:\" заполнено неверно!"));
        QCOMPARE(m_operator->title(), QString("Добавление пользователя"));
        type(&dialog, "leName", "Иван Иванов");
        QCOMPARE(complaint(), QString("Поле \"Логин:\" заполнено неверно!"));
        type(&dialog, "leLogin", "su");
        QCOMPARE(complaint(), QString("Поле \"Логин:\" заполнено неверно!"));
        type(&dialog, "leLogin", "ivan");
        type(&dialog, "lePassword", "12");
        QCOMPARE(complaint(), QString("Пароли не совпадают"));
        type(&dialog, "lePassword2", "12");
        QCOMPARE(complaint(), QString("Уровень доступа не указан"));
        QVERIFY(dialog.isVisible());
        group->setCurrentIndex(1);
        QCOMPARE(complaint(), QString()); // two digits are enough when they agree
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(dialog.getGroup()->id, 2);
    }

    // However long the name that was typed, the file can be read again.
    void aLongNameStaysReadable()
    {
        const auto manager = start();
        RegistrationDialog dialog(&m_console->window, "Добавление пользователя", manager.get());
        type(&dialog, "leName", QString(200, QChar(u'Ж')));
        QCOMPARE(dialog.getName(), QString(63, QChar(u'Ж')));
        type(&dialog, "leName", "a" + QString::fromUcs4(U"\U0001F600").repeated(60));
        QCOMPARE(dialog.getName().toUtf8().size(), 125); // no half of a character
    }

    void thePanelListsAddsAndNeverRemoves()
    {
        putFile(header(1) + account("ivan", "Иван", 2));
        auto manager = start();
        const auto row = [](QTableWidget* table, int index) {
            return QStringList{table->item(index, 0)->text(), table->item(index, 1)->text(),
                               table->item(index, 2)->text()};
        };
        m_operator->then("ControlPanel", [&](QWidget* panel) {
            auto* table = child<QTableWidget>(panel, "twUsers");
            QCOMPARE(table->rowCount(), 2);
            QCOMPARE(row(table, 0), (QStringList{"su", "Администратор", "Администратор"}));
            QCOMPARE(table->item(0, 0)->flags(), Qt::ItemFlags(Qt::NoItemFlags));
            QCOMPARE(row(table, 1), (QStringList{"ivan", "Иван", "Оператор"}));
            QCOMPARE(table->item(1, 2)->flags(), Qt::ItemIsSelectable | Qt::ItemIsEnabled);
            QCOMPARE(table->horizontalHeaderItem(2)->text(), QString("Уровень"));

            table->selectRow(0);
            QVERIFY(table->selectedItems().isEmpty());
            table->selectRow(1);
            QCOMPARE(table->selectedItems().size(), 3);
            child<QPushButton>(panel, "pbRemove")->click();
            QCOMPARE(table->rowCount(), 2);
            QCOMPARE(manager->users().size(), 2);

            m_operator->then("RegistrationDialog",
                             [](QWidget* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
            child<QPushButton>(panel, "pbAdd")->click();
            QCOMPARE(table->rowCount(), 2);

            m_operator->then("RegistrationDialog", [](QWidget* dialog) {
                type(dialog, "leName", "Пётр");
                type(dialog, "leLogin", "petr");
                type(dialog, "lePassword", "4321");
                type(dialog, "lePassword2", "4321");
                child<QComboBox>(dialog, "cbGroup")->setCurrentIndex(0);
                child<QPushButton>(dialog, "pbAdd")->click();
            });
            child<QPushButton>(panel, "pbAdd")->click();
            QCOMPARE(row(table, 2), (QStringList{"petr", "Пётр", "Наладчик"}));
            QTest::keyClick(panel, Qt::Key_Escape);
        });
        m_console->users.click();
        QCOMPARE(m_operator->takeTexts(), QStringList());

        QVERIFY(manager->logIn("petr", "4321"));
        manager.reset();
        QCOMPARE(m_site->read(userFile),
                 header(2) + account("ivan", "Иван", 2) + account("petr", "Пётр", 1, passwordDigest("4321")));
    }

    void columnWidthsAreRemembered()
    {
        const auto manager = start();
        const auto widths = [](QWidget* panel) {
            auto* table = child<QTableWidget>(panel, "twUsers");
            return QList<int>{table->columnWidth(0), table->columnWidth(1), table->columnWidth(2)};
        };
        {
            ControlPanel panel(&m_console->window, manager.get());
            auto* table = child<QTableWidget>(&panel, "twUsers");
            const int share = table->viewport()->width() / 3;
            QVERIFY(share > 200);
            QCOMPARE(widths(&panel), (QList<int>{share, share, share}));
            table->setColumnWidth(1, 333);
            table->setColumnWidth(2, 77);
        }
        QCOMPARE(widths(std::make_unique<ControlPanel>(&m_console->window, manager.get()).get()).mid(1),
                 (QList<int>{333, 77}));

        QSettings stored(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
        QCOMPARE(stored.value("Registration/Width_Name").toInt(), 333);
        stored.setValue("Registration/Width_Login", "noise");
        stored.setValue("Registration/Width_Rights", -7);
        stored.sync();
        QCOMPARE(widths(std::make_unique<ControlPanel>(&m_console->window, manager.get()).get()),
                 (QList<int>{80, 333, 80}));
    }
};

QTEST_MAIN(TestUsers)
#include "test_users.moc"
