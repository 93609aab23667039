#include "autorization_dialogs.h"
#include "autorization_manager.h"
#include "comparetext.h"
#include "fulldisk.h"
#include "nextdialog.h"
#include "sitefixture.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QTableWidget>
#include <QToolTip>

using namespace Autorization;

namespace {

const QString userFile = "/home/oper/bin/users.bin";
const QString notFound = "Файл \"/home/oper/bin/users.bin\" не найден";
const QString damaged = "Ошибка чтения файла \"/home/oper/bin/users.bin\"";

// Notes each message box and closes it at once.
class Boxes
{
public:
    Boxes()
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
                m_texts << box->text();
                title = box->windowTitle();
                icon = box->icon();
                box->accept();
            }
        });
        m_timer.start(1);
    }
    QString takeTexts() { return std::exchange(m_texts, {}).join('|'); }
    QString title;
    QMessageBox::Icon icon = QMessageBox::NoIcon;

private:
    QTimer m_timer;
    QStringList m_texts;
};

template <class Widget = QLineEdit>
Widget* child(QWidget* dialog, const char* name)
{
    return dialog->findChild<Widget*>(name);
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

private slots:
    void init()
    {
        m_site = std::make_unique<SiteFixture>();
        m_boxes = std::make_unique<Boxes>();
        m_console = std::make_unique<Console>();
        m_console->window.resize(1920, 1200);
    }
    void cleanup()
    {
        m_console.reset();
        m_boxes.reset();
        m_site.reset();
    }

    void missingFileLeavesTheBuiltInAccountAndAnEmptyFile()
    {
        auto manager = start();
        QCOMPARE(m_boxes->takeTexts(), notFound);
        QCOMPARE(m_boxes->title, "Система авторизации");
        QCOMPARE(m_boxes->icon, QMessageBox::Critical);
        QVERIFY(!manager->logIn("su", "46920138") && !manager->currentUser());
        QVERIFY(manager->logIn("su", "46920137"));
        QCOMPARE(manager->currentUser()->group->id, 0);
        manager.reset();
        const QByteArray former = m_site->read(userFile);
        QCOMPARE(former, header(0));

        // Accounts outlive a full disk.
        manager = start();
        add(manager, "ivan", "Иван", "1234", 2);
        QStringList journal;
        connect(manager.get(), &Manager::message, [&](const QString& line) { journal << line; });
        {
            const FullDisk full(6);
            manager.reset();
        }
        QCOMPARE(journal, QStringList{"[A]Файл /home/oper/bin/users.bin не записан"});
        QCOMPARE(m_boxes->takeTexts(), ""); // no box holds up the end
        QCOMPARE(m_site->read(userFile), former);

        QVERIFY(QDir(site().path("/home/oper/bin")).removeRecursively());
        start().reset();
        QCOMPARE(m_boxes->takeTexts(), notFound + '|' + notFound);
    }

    // Byte for byte: whatever reads this file in the field reads it so.
    void accountsAreWrittenInOrder()
    {
        auto manager = start();
        add(manager, "ivan", "Иван", "1234", 2);
        add(manager, "petr7", "Пётр", "0", 1);
        manager.reset();
        const QByteArray expected =
            header(2) + account("ivan", "Иван", 2, QByteArray::fromHex("81dc9bdb52d04dc20036dbd8313ed055")) +
            account("petr7", "Пётр", 1, QByteArray::fromHex("cfcd208495d565ef66e7dff9f98764da"));
        QCOMPARE(m_site->read(userFile).toHex(), expected.toHex());
        m_boxes->takeTexts();
        manager = start();
        QCOMPARE(m_boxes->takeTexts(), "");
        QCOMPARE(logins(*manager), "su ivan petr7");
        QVERIFY(manager->logIn("ivan", "1234"));
        QCOMPARE(manager->currentUser()->name, "Иван");
        manager.reset();
        QCOMPARE(m_site->read(userFile).toHex(), expected.toHex());
    }

    void rightsOfTheLevels()
    {
        auto manager = start();
        QCOMPARE(manager->groups().size(), 3);
        int id = 0;
        for (const auto& [name, given, users] : {std::tuple{"Администратор", false, true},
                                                 {"Наладчик", true, true},
                                                 {"Оператор", true, false}}) {
            AbstractUserGroup* group = manager->findUserGroup(id);
            QCOMPARE(manager->groups().at(id++), group);
            QCOMPARE(group->name, name);
            QVERIFY(group->useable() == given && group->removeable() == given);
            m_console->users.setVisible(!users);
            group->loginHandler();
            QCOMPARE(m_console->users.isHidden(), !users);
        }
        QVERIFY(!manager->findUserGroup(3) && !manager->findUser("SU"));
        QVERIFY(manager->logIn("su", "46920137") && !manager->logIn("su", "1"));
        QVERIFY2(manager->currentUser(), "a refused login leaves the user in place");
        manager->logOut();
        QVERIFY(!manager->currentUser());
    }

    void filesAreRead()
    {
        const QByteArray good = account("good", "Имя", 2);
        const QByteArray next = account("next", "Имя", 1);
        const QByteArray x63(63, 'x');
        const auto refused = [](const QString& login) {
            return "Ошибка чтения пользователя \"" + login + '"';
        };
        const std::tuple<const char*, QByteArray, QString, QString> files[] = {
            {"foreign magic", QByteArray("\xA1\xF4\1\0", 4) + good, damaged, "su"},
            {"1024 users", header(1024) + good, damaged, "su"},
            {"1023 users, one there", header(1023) + good, "", "su good"},
            {"none, bytes behind", header(0) + good, "", "su"},
            {"fewer told than there", header(1) + good + next, "", "su good"},
            {"login of 2", header(3) + good + account("ab", "Имя", 2) + next, damaged, "su good"},
            {"login of 63", header(1) + account(x63, "Имя", 2), "", "su " + x63},
            {"login of 64", header(2) + account('x' + x63, "Имя", 2) + next, damaged, "su"},
            {"name of 0", header(2) + account("good", "", 2) + next, damaged, "su"},
            {"name of 127", header(1) + account("good", QByteArray(127, 'n'), 2), "", "su good"},
            {"name of 128", header(2) + account("good", QByteArray(128, 'n'), 2) + next, damaged, "su"},
            {"texts cut short by a zero byte",
             header(2) + account(QByteArray("a\0c", 3), QByteArray(1, '\0'), 2) + next, "", "su a next"},
            {"texts that are no UTF-8", header(2) + account("good", QByteArray(127, '\xC8'), 2) + next, "",
             "su good next"},
            {"digest of 0", header(2) + account("good", "n", 2, "") + next, damaged, "su"},
            {"digest of 31", header(1) + account("good", "n", 2, QByteArray(31, 'd')), "", "su good"},
            {"digest of 32", header(2) + account("good", "n", 2, QByteArray(32, 'd')) + next, damaged, "su"},
            {"lengths of 65535", header(2) + good + QByteArray(8, '\xFF') + next, damaged, "su good"},
            {"unknown level", header(2) + account("seven", "Имя", 7) + next, refused("seven"), "su next"},
            {"su in the file", header(2) + account("su", "Имя", 2) + next, damaged, "su"},
            {"su behind a zero byte", header(2) + account(QByteArray("su\0", 3), "Имя", 2) + next,
             refused("su"), "su next"},
            {"twice the same", header(3) + good + account("good", "Другой", 1) + next, refused("good"),
             "su good next"},
        };
        for (const auto& [what, bytes, told, read] : files) {
            auto manager = start(bytes);
            QVERIFY2(m_boxes->takeTexts() == told && logins(*manager) == read, what);
            QVERIFY(manager->logIn("su", "46920137"));
            // What could not be read is gone with the next end of the program, the rest is there again.
            manager.reset();
            manager = start();
            QVERIFY2(m_boxes->takeTexts().isEmpty() && logins(*manager) == read, what);
        }
    }

    void aFileCutAtAnyByteKeepsTheAccountsBefore()
    {
        const QByteArray first = account("first", "Первый", 1);
        const QByteArray second = account("second", "Второй", 2);
        const QByteArray whole = header(2) + first + second;
        for (int size = 0; size <= whole.size(); ++size) {
            const auto manager = start(whole.left(size));
            const int behindHeader = size - 4;
            const int users = behindHeader < first.size() ? 0 : size < whole.size() ? 1 : 2;
            const int inAccount = behindHeader - (users == 0 ? 0 : first.size());
            // A head cut short is taken for the end; anything else that is missing is damage.
            const bool told = size < 4 || (users < 2 && inAccount >= 8);
            QCOMPARE(m_boxes->takeTexts(), told ? damaged : QString());
            QCOMPARE(logins(*manager), QString("su first second").section(' ', 0, users));
        }
    }

    void fieldsJudgeWhatIsTyped()
    {
        constexpr auto Invalid = QValidator::Invalid;
        constexpr auto Intermediate = QValidator::Intermediate;
        constexpr auto Acceptable = QValidator::Acceptable;
        const QString latin = "Допускается использовать только латинские буквы и цифры";
        const char* const digits = "Для пароля допускается использовать только цифры!";
        enum Field { Name, Login, NewLogin, Password };
        const std::tuple<Field, const char*, QString, QValidator::State> rows[] = {
            {Name, "", "", Intermediate},
            {Name, "Ян", "", Intermediate},
            {Name, "    ", "", Intermediate},
            {Name, "Яна", "", Acceptable},
            {Login, "", "Поле 'Логин' не может быть пустым!", Intermediate},
            {Login, "a b", latin + '!', Invalid},
            {Login, "é", latin + '!', Invalid},
            {Login, "Z", "", Acceptable},
            {NewLogin, "su", "Пользователь с именем \"su\" уже существует!", Intermediate},
            {NewLogin, "", "Поле 'Логин' не может быть пустым!", Intermediate},
            {NewLogin, "я", latin, Invalid},
            {NewLogin, "SU", "Логин должен быть не короче 3 символов", Intermediate},
            {NewLogin, "su1", "", Acceptable},
            {Password, "", "Поле 'Пароль' не может быть пустым!", Intermediate},
            {Password, "12a", digits, Invalid},
            {Password, "٣", digits, Invalid},
            {Password, "123", "Пароль должен быть не короче 4 символов!", Intermediate},
            {Password, "0123", "", Acceptable},
        };
        const auto manager = start();
        m_console->window.show();
        QLineEdit edit(&m_console->window);
        edit.move(300, 400);
        edit.show();
        const NameValidator name;
        const LoginValidator login(&edit);
        const NewLoginValidator newLogin(&edit, manager.get());
        const PasswordValidator password(&edit);
        const QValidator* const validators[] = {&name, &login, &newLogin, &password};
        for (const auto& [field, typed, tip, state] : rows) {
            QToolTip::showText(edit.mapToGlobal(QPoint(0, 0)), "прежний", &edit);
            QString text = typed;
            int position = 0;
            QCOMPARE(validators[field]->validate(text, position), state);
            if (state == Acceptable)
                QTRY_VERIFY(!QToolTip::isVisible());
            else
                QVERIFY2(QToolTip::isVisible() && QToolTip::text() == (tip.isEmpty() ? "прежний" : tip),
                         typed);
        }
    }

    void refusedKeystrokesNeverShow()
    {
        AutorizationDialog dialog(&m_console->window);
        dialog.show();
        auto* login = child(&dialog, "leLogin");
        QTest::keyClicks(login, "ab");
        QTest::sendKeyEvent(QTest::Click, login, Qt::Key_unknown, QStringLiteral("ж"), Qt::NoModifier);
        QCOMPARE(login->text(), "ab");
        QCOMPARE(QToolTip::text(), "Допускается использовать только латинские буквы и цифры!");
        auto* password = child(&dialog, "lePassword");
        QTest::keyClicks(password, "1x2");
        QCOMPARE(password->text(), "12");
        QCOMPARE(password->echoMode(), QLineEdit::Password);
        for (QLineEdit* edit : {login, password}) {
            QTest::keyClicks(edit, QString(40, '1'));
            QCOMPARE(edit->text().size(), 32);
        }
    }

    void thePanelListsAddsAndNeverRemoves()
    {
        auto manager = start(header(1) + account("ivan", "Иван", 2));
        const auto row = [](QTableWidget* table, int index) {
            QStringList texts;
            for (int column = 0; column < 3; ++column)
                texts << table->item(index, column)->text();
            return texts.join('|');
        };
        whenOpen<ControlPanel>([&](ControlPanel* panel) {
            auto* table = child<QTableWidget>(panel, "twUsers");
            QCOMPARE(table->rowCount(), 2);
            QCOMPARE(row(table, 0), "su|Администратор|Администратор");
            QCOMPARE(table->item(0, 0)->flags(), Qt::ItemFlags(Qt::NoItemFlags));
            QCOMPARE(row(table, 1), "ivan|Иван|Оператор");
            QCOMPARE(table->item(1, 2)->flags(), Qt::ItemIsSelectable | Qt::ItemIsEnabled);
            QCOMPARE(table->horizontalHeaderItem(2)->text(), "Уровень");

            table->selectRow(0);
            QVERIFY(table->selectedItems().isEmpty());
            table->selectRow(1);
            QCOMPARE(table->selectedItems().size(), 3);
            child<QPushButton>(panel, "pbRemove")->click();
            QVERIFY(table->rowCount() == 2 && manager->users().size() == 2);

            whenOpen<RegistrationDialog>([](QWidget* dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
            child<QPushButton>(panel, "pbAdd")->click();
            QCOMPARE(table->rowCount(), 2);
            whenOpen<RegistrationDialog>([&](RegistrationDialog* dialog) { fillIn(dialog, *manager); });
            child<QPushButton>(panel, "pbAdd")->click();
            QCOMPARE(row(table, 2), "petr|Пётр|Наладчик");
            QTest::keyClick(panel, Qt::Key_Escape);
        });
        m_console->users.click();
        QVERIFY(manager->logIn("petr", "43"));
        manager.reset();
        QCOMPARE(m_site->read(userFile),
                 header(2) + account("ivan", "Иван", 2) + account("petr", "Пётр", 1, passwordDigest("43")));
    }

    void columnWidthsAreRemembered()
    {
        const auto manager = start();
        const auto panel = [&] { return std::make_unique<ControlPanel>(&m_console->window, manager.get()); };
        const auto widths = [&] {
            const auto shown = panel();
            const auto* table = child<QTableWidget>(shown.get(), "twUsers");
            return QList<int>{table->columnWidth(0), table->columnWidth(1), table->columnWidth(2)};
        };
        const int share = child<QTableWidget>(panel().get(), "twUsers")->viewport()->width() / 3;
        QVERIFY(share > 200);
        QSettings stored(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
        stored.clear();
        stored.sync();
        QCOMPARE(widths(), (QList<int>{share, share, share})); // as long as nothing is stored
        child<QTableWidget>(panel().get(), "twUsers")->setColumnWidth(1, 333);
        QCOMPARE(widths(), (QList<int>{share, 333, share}));

        stored.sync();
        QCOMPARE(stored.value("Registration/Width_Name").toInt(), 333);
        stored.setValue("Registration/Width_Login", "noise");
        stored.setValue("Registration/Width_Rights", -7);
        stored.sync();
        QCOMPARE(widths(), (QList<int>{80, 333, 80}));
    }

private:
    std::unique_ptr<Manager> start() { return std::make_unique<Manager>(m_console->widgets()); }
    std::unique_ptr<Manager> start(const QByteArray& bytes) // of the file
    {
        m_site->write(userFile, bytes);
        return start();
    }
    static void add(const std::unique_ptr<Manager>& to, const char* login, const char* name,
                    const char* password, int group)
    {
        new AbstractUser(to.get(), login, name, passwordDigest(password), to->findUserGroup(group));
    }
    // What is missing is told, one thing after the other; the last touch adds the account.
    void fillIn(RegistrationDialog* dialog, const AbstractManager& manager)
    {
        auto* group = child<QComboBox>(dialog, "cbGroup");
        QVERIFY(group->count() == 2 && group->itemText(0) == "Наладчик");
        QCOMPARE(group->itemData(1).value<AbstractUserGroup*>(), manager.findUserGroup(2));
        group->setCurrentIndex(-1);
        const auto type = [dialog](const char* name, const QString& text) {
            child(dialog, name)->setText(text);
        };
        const auto complaint = [&] {
            child<QPushButton>(dialog, "pbAdd")->click();
            return m_boxes->takeTexts();
        };
        QCOMPARE(complaint(), "Поле \"Отображаемое имя:\" заполнено неверно!");
        QCOMPARE(m_boxes->title, "Добавление пользователя");
        // However long the name that was typed, the file can be read again, and no character is cut in half.
        type("leName", QString(200, QChar(u'Ж')));
        QCOMPARE(dialog->getName(), QString(63, QChar(u'Ж')));
        type("leName", "a" + QString::fromUcs4(U"\U0001F600").repeated(60));
        QCOMPARE(dialog->getName().toUtf8().size(), 125);
        type("leName", "Пётр");
        for (const char* login : {"", "su"}) {
            type("leLogin", login);
            QCOMPARE(complaint(), "Поле \"Логин:\" заполнено неверно!");
        }
        type("leLogin", "petr");
        type("lePassword", "43");
        QCOMPARE(complaint(), "Пароли не совпадают");
        type("lePassword2", "43");
        QCOMPARE(complaint(), "Уровень доступа не указан");
        QVERIFY(dialog->isVisible());
        group->setCurrentIndex(0);
        QCOMPARE(complaint(), ""); // two digits are enough when they agree
    }
    static QString logins(const AbstractManager& manager)
    {
        QStringList list;
        for (const AbstractUser* user : manager.users())
            list << user->login;
        return list.join(' ');
    }

    std::unique_ptr<SiteFixture> m_site;
    std::unique_ptr<Boxes> m_boxes;
    std::unique_ptr<Console> m_console;
};

QTEST_MAIN(TestUsers)
#include "test_users.moc"
