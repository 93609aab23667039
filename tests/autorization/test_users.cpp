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
#include <QRandomGenerator>
#include <QSettings>
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
    QString takeTexts()
    {
        const QString texts = m_texts.join('|');
        m_texts.clear();
        return texts;
    }
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
        QVERIFY(!manager->logIn("su", "46920138"));
        QVERIFY(!manager->currentUser());
        QVERIFY(manager->logIn("su", "46920137"));
        QCOMPARE(manager->currentUser()->group->id, 0);
        manager.reset();
        const QByteArray former = m_site->read(userFile);
        QCOMPARE(former, header(0));

        // Accounts outlive a full disk.
        manager = start();
        new AbstractUser(manager.get(), "ivan", "Иван", passwordDigest("1234"), manager->findUserGroup(2));
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
        new AbstractUser(manager.get(), "ivan", "Иван", passwordDigest("1234"), manager->findUserGroup(2));
        new AbstractUser(manager.get(), "petr7", "Пётр", passwordDigest("0"), manager->findUserGroup(1));
        manager.reset();
        const QByteArray ivan = QByteArray::fromHex("81dc9bdb52d04dc20036dbd8313ed055");
        const QByteArray petr = QByteArray::fromHex("cfcd208495d565ef66e7dff9f98764da");
        const QByteArray expected =
            header(2) + account("ivan", "Иван", 2, ivan) + account("petr7", "Пётр", 1, petr);
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
        const std::tuple<const char*, bool, bool> levels[] = {
            {"Администратор", false, true}, {"Наладчик", true, true}, {"Оператор", true, false}};
        int id = 0;
        for (const auto& [name, given, users] : levels) {
            AbstractUserGroup* group = manager->findUserGroup(id);
            QCOMPARE(manager->groups().at(id++), group);
            QCOMPARE(group->name, name);
            QCOMPARE(group->useable(), given);
            QCOMPARE(group->removeable(), given);
            m_console->users.setVisible(!users);
            group->loginHandler();
            QCOMPARE(m_console->users.isHidden(), !users);
        }
        QVERIFY(!manager->findUserGroup(3));
        QVERIFY(!manager->findUser("SU"));

        QVERIFY(manager->logIn("su", "46920137"));
        QVERIFY(!manager->logIn("su", "1"));
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
            putFile(bytes);
            auto manager = start();
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
            putFile(whole.left(size));
            const auto manager = start();
            const int behindHeader = size - 4;
            const int users = behindHeader < first.size() ? 0 : size < whole.size() ? 1 : 2;
            const int inAccount = behindHeader - (users == 0 ? 0 : first.size());
            // A head cut short is taken for the end; anything else that is missing is damage.
            const bool told = size < 4 || (users < 2 && inAccount >= 8);
            QCOMPARE(m_boxes->takeTexts(), told ? damaged : QString());
            QCOMPARE(logins(*manager), QString("su first second").section(' ', 0, users));
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
            for (const QString& text : m_boxes->takeTexts().split('|', Qt::SkipEmptyParts))
                QVERIFY2(text == damaged || text.startsWith("Ошибка чтения пользователя \""),
                         qPrintable(text));
            // What was read once is read again.
            const QString read = logins(*manager);
            manager.reset();
            manager = start();
            QCOMPARE(m_boxes->takeTexts(), "");
            QCOMPARE(logins(*manager), read);
        }
    }

    void fieldsJudgeWhatIsTyped()
    {
        enum Field { Name, Login, NewLogin, Password };
        const struct
        {
            Field field;
            const char* text;
            const char* tip;
            QValidator::State state;
        } rows[] = {
            {Name, "", "", QValidator::Intermediate},
            {Name, "Ян", "", QValidator::Intermediate},
            {Name, "    ", "", QValidator::Intermediate},
            {Name, "Яна", "", QValidator::Acceptable},
            {Login, "", "Поле 'Логин' не может быть пустым!", QValidator::Intermediate},
            {Login, "a b", "Допускается использовать только латинские буквы и цифры!", QValidator::Invalid},
            {Login, "é", "Допускается использовать только латинские буквы и цифры!", QValidator::Invalid},
            {Login, "Z", "", QValidator::Acceptable},
            {NewLogin, "su", "Пользователь с именем \"su\" уже существует!", QValidator::Intermediate},
            {NewLogin, "", "Поле 'Логин' не может быть пустым!", QValidator::Intermediate},
            {NewLogin, "я", "Допускается использовать только латинские буквы и цифры", QValidator::Invalid},
            {NewLogin, "SU", "Логин должен быть не короче 3 символов", QValidator::Intermediate},
            {NewLogin, "su1", "", QValidator::Acceptable},
            {Password, "", "Поле 'Пароль' не может быть пустым!", QValidator::Intermediate},
            {Password, "12a", "Для пароля допускается использовать только цифры!", QValidator::Invalid},
            {Password, "٣", "Для пароля допускается использовать только цифры!", QValidator::Invalid},
            {Password, "123", "Пароль должен быть не короче 4 символов!", QValidator::Intermediate},
            {Password, "0123", "", QValidator::Acceptable},
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
        for (const auto& row : rows) {
            QToolTip::showText(edit.mapToGlobal(QPoint(0, 0)), "прежний", &edit);
            QString text = row.text;
            int position = 0;
            QCOMPARE(validators[row.field]->validate(text, position), row.state);
            if (*row.tip) {
                QVERIFY(QToolTip::isVisible());
                QCOMPARE(QToolTip::text(), row.tip);
            } else if (row.state == QValidator::Acceptable) {
                QTRY_VERIFY(!QToolTip::isVisible());
            } else {
                QCOMPARE(QToolTip::text(), "прежний");
            }
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
        putFile(header(1) + account("ivan", "Иван", 2));
        auto manager = start();
        const auto row = [](QTableWidget* table, int index) {
            return table->item(index, 0)->text() + '|' + table->item(index, 1)->text() + '|' +
                   table->item(index, 2)->text();
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
            QCOMPARE(table->rowCount(), 2);
            QCOMPARE(manager->users().size(), 2);

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
    void putFile(const QByteArray& bytes)
    {
        QFile file(site().path(userFile));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    }
    // What is missing is told, one thing after the other; the last touch adds the account.
    void fillIn(RegistrationDialog* dialog, const AbstractManager& manager)
    {
        auto* group = child<QComboBox>(dialog, "cbGroup");
        QCOMPARE(group->count(), 2);
        QCOMPARE(group->itemText(0), "Наладчик");
        QCOMPARE(group->itemData(1).value<AbstractUserGroup*>(), manager.findUserGroup(2));
        group->setCurrentIndex(-1);
        const auto complaint = [&] {
            child<QPushButton>(dialog, "pbAdd")->click();
            return m_boxes->takeTexts();
        };
        QCOMPARE(complaint(), "Поле \"Отображаемое имя:\" заполнено неверно!");
        QCOMPARE(m_boxes->title, "Добавление пользователя");
        // However long the name that was typed, the file can be read again, and no character is cut in half.
        type(dialog, "leName", QString(200, QChar(u'Ж')));
        QCOMPARE(dialog->getName(), QString(63, QChar(u'Ж')));
        type(dialog, "leName", "a" + QString::fromUcs4(U"\U0001F600").repeated(60));
        QCOMPARE(dialog->getName().toUtf8().size(), 125);
        type(dialog, "leName", "Пётр");
        for (const char* login : {"", "su"}) {
            type(dialog, "leLogin", login);
            QCOMPARE(complaint(), "Поле \"Логин:\" заполнено неверно!");
        }
        type(dialog, "leLogin", "petr");
        type(dialog, "lePassword", "43");
        QCOMPARE(complaint(), "Пароли не совпадают");
        type(dialog, "lePassword2", "43");
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
