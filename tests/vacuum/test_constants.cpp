#include "constants.h"
#include "guifixture.h"
#include "vacuumcontroller.h"

#include <QSettings>
#include <QTableWidget>

#include <future>

#include <poll.h>

namespace {

using Records = QVector<std::tuple<qint32, float, QByteArray>>;

const Records chamber = {{12, 0.05F, "Threshold VP1"}, {13, 1e-7F, "\xC4\xE2\xE5\xF0\xFC"}};
const Records former = {{12, 5, "Threshold VP1"}, {13, 6, "x"}, {14, 7, "y"}};
const Records system_ = {{1, 1234567, QByteArray(84, '\xC4')}, {-2, -3.5F, ""}, {12, 20, "x"}};
const QStringList shown = {"KBK:12|Threshold VP1|0.05", "KBK:13|Дверь|1e-07",
                           "KBC:1|" + QString(84, QChar(0x414)) + "|1.23457e+06", "KBC:-2||-3.5",
                           "KBC:12|x|20"};

} // namespace

// The list of constants of both controllers, opened from the main window.
class TestConstants : public GuiFixture
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        begin();
        Site fast = site();
        fast.pauses.constants = std::chrono::milliseconds(1);
        setSite(fast);
    }
    void cleanupTestCase()
    {
        m_kvs.reset();
        m_kvk.reset();
        end();
    }
    void init()
    {
        join(&m_kvs, vacuumwire::kvs(), site().kvs, "lblKVS");
        join(&m_kvk, vacuumwire::kvk(), site().kvk, "lblKVK");
    }

    void listOfBoth()
    {
        open("kvk kvs", [this](Constants* dialog) {
            QCOMPARE(rows(dialog), shown);
            QTableWidget* const table = this->table(dialog);
            QCOMPARE(table->item(3, 0)->data(Qt::UserRole).toString(), "-2");
            QCOMPARE(dialog->window()->windowTitle(), "Параметры системы");
            // An answer to an earlier question takes the place of its own rows; what was chosen stays so.
            table->setCurrentCell(3, 1);
            m_kvs->sendConstants(system_);
            m_kvk->sendConstants(former);
            QTRY_COMPARE(rows(dialog),
                         QStringList({"KBK:12|Threshold VP1|5", "KBK:13|x|6", "KBK:14|y|7"}) + shown.mid(2));
            QCOMPARE(table->currentRow(), 4);
            m_kvk->sendConstants({});
            QTRY_COMPARE(rows(dialog), shown.mid(2));
            m_kvk->sendConstants(chamber);
            QTRY_COMPARE(rows(dialog).size(), 5);
            m_kvs->sendConstants({});
            QTRY_COMPARE(rows(dialog), shown.mid(0, 2));
            table->setCurrentCell(-1, -1);
            touchChange(dialog); // no keypad opens
            QVERIFY(dialog->isVisible());
        });
        QVERIFY(journal().contains("Закрыто окно параметров системы") && list().filter("Закрыто").isEmpty());
    }

    // Only the order of the questions, and the pause between them, tells whose rows stand first.
    void chamberIsAskedFirst()
    {
        const Site fast = site();
        Site slow = fast;
        slow.pauses.constants = std::chrono::milliseconds(300);
        setSite(slow);
        pollfd kvk{int(m_kvk->peer->socketDescriptor()), POLLIN, 0};
        pollfd kvs{int(m_kvs->peer->socketDescriptor()), POLLIN, 0};
        auto inOrder = std::async(std::launch::async,
                                  [&] { return ::poll(&kvk, 1, 5000) == 1 && ::poll(&kvs, 1, 100) == 0; });
        open("kvk kvs", [](Constants*) {});
        setSite(fast);
        QVERIFY(inOrder.get());
    }

    void change()
    {
        // Answers in the order of their coming, row, digits, whether it goes to KVK, and the command.
        const std::tuple<QString, int, QString, bool, const char*> changes[] = {
            {"kvk kvs", 1, "3", true, "SET(KBK:13,3.0000000)"},
            {"kvk kvs", 2, "0", false, "SET(KBC:1,0.0000000)"},
            {"former kvs kvk", 1, "7", true, "SET(KBK:13,7.0000000)"},
            {"former kvs kvk", 2, "7", false, "SET(KBC:1,7.0000000)"},
            {"former kvs kvk kvs", 4, "7", false, "SET(KBC:12,7.0000000)"},
            // An answer that comes late misdirects: the first rows count as KVK's.
            {"kvs kvk", 3, "7", false, "SET(KBK:12,7.0000000)"},
            {"kvs kvk", 0, "7", true, "SET(KBC:1,7.0000000)"},
            {"kvs", 0, "7", false, "SET(KBC:1,7.0000000)"},
            {"kvk", 1, "12,25", true, "SET(KBK:13,12.2500000)"},
        };
        for (const auto& [answers, row, digits, toKvk, command] : changes) {
            init();
            if (!answers.contains("kvk"))
                leave(&m_kvk, "lblKVK");
            if (!answers.contains("kvs"))
                leave(&m_kvs, "lblKVS");
            bool accepted = false;
            QString line;
            open(answers, [&, row = row, digits = digits](Constants* dialog) {
                connect(dialog, &QDialog::accepted, this, [&accepted] { accepted = true; });
                QTableWidget* const table = this->table(dialog);
                QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                                  table->visualItemRect(table->item(row, 1)).center());
                const QString name = table->item(row, 0)->text();
                line = QString("Изменено значение параметра %1 (%2), новое значение: %3")
                           .arg(name, table->item(row, 1)->text(), QString(digits).replace(',', '.'));
                typeNext(digits, true, name, [&] {
                    // The rows may go while the keypad is open; the change is that of the chosen row.
                    for (VacuumController* controller : {m_kvk.get(), m_kvs.get()}) {
                        if (controller)
                            controller->sendConstants({});
                    }
                    QTRY_COMPARE(rows(dialog), QStringList());
                    typeNext("730592", true, "Пароль:");
                });
                touchChange(dialog);
            });
            QVERIFY(accepted);
            QCOMPARE((toKvk ? *m_kvk : *m_kvs).takeCommands(1), QStringList(command));
            const auto& other = toKvk ? m_kvs : m_kvk;
            QVERIFY(!other || other->takeCommands().isEmpty());
            QVERIFY(list().contains(line));
        }
    }

    void wrongCode()
    {
        const int before = list().filter("Изменено").size();
        open("kvk kvs", [this](Constants* dialog) {
            table(dialog)->setCurrentCell(1, 2);
            const std::tuple<bool, const char*, bool> attempts[] = {
                {false, "", false}, {true, "730591", true}, {true, "730592", false}};
            for (const auto& [value, code, enter] : attempts) {
                typeNext("5", value, {}, [value = value, code = code, enter = enter] {
                    if (value)
                        typeNext(code, enter);
                });
                touchChange(dialog);
                QVERIFY(dialog->isVisible());
            }
        });
        QCOMPARE(list().filter("Изменено").size(), before);
        QVERIFY(m_kvk->takeCommands().isEmpty() && m_kvs->takeCommands().isEmpty());
    }

    void columnWidths()
    {
        for (const bool widened : {false, true}) {
            open("", [this, widened](Constants* dialog) {
                for (int column = 0; column < 3; ++column) {
                    QCOMPARE(table(dialog)->columnWidth(column), widened ? 150 + column : 100);
                    table(dialog)->setColumnWidth(column, 150 + column);
                }
            });
        }
        const QSettings settings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
        QCOMPARE(settings.value("Constants/Width_DESC").toInt(), 151);
    }

private:
    void join(std::unique_ptr<VacuumController>* controller, const vacuumwire::Wire& wire, const Endpoint& at,
              const char* label)
    {
        if (*controller)
            return;
        *controller = std::make_unique<VacuumController>(wire, at);
        QTRY_VERIFY((*controller)->server.hasPendingConnections());
        QVERIFY((*controller)->accept());
        (*controller)->keepTelling();
        QTRY_COMPARE(colour(label), QColor(Qt::green));
    }
    void leave(std::unique_ptr<VacuumController>* controller, const char* label)
    {
        controller->reset();
        QTRY_VERIFY(colour(label) != QColor(Qt::green));
    }

    // Opens the dialog; the controllers answer in the order given, then `act` runs.
    void open(const QString& answers, const std::function<void(Constants*)>& act)
    {
        whenOpen<Constants>([&](Constants* dialog) {
            QTimer::singleShot(10'000, dialog, &QDialog::reject); // a failure below ends without it
            QMap<VacuumController*, int> expected;
            for (const QString& answer : answers.split(' ', Qt::SkipEmptyParts)) {
                VacuumController* const controller = answer == "kvs" ? m_kvs.get() : m_kvk.get();
                const Records& records = answer == "kvs" ? system_ : answer == "kvk" ? chamber : former;
                if (!expected.contains(controller))
                    QCOMPARE(controller->takeCommands(1), QStringList("CONST"));
                controller->sendConstants(records);
                expected[controller] = records.size();
                QTRY_COMPARE(rows(dialog).size(), expected.value(m_kvk.get()) + expected.value(m_kvs.get()));
            }
            act(dialog);
            dialog->reject();
        });
        touch("pbConstants");
    }
    static QTableWidget* table(Constants* dialog) { return dialog->findChild<QTableWidget*>("twConst"); }
    static QStringList rows(Constants* dialog)
    {
        QStringList all;
        for (int row = 0; row < table(dialog)->rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < 3; ++column)
                cells << table(dialog)->item(row, column)->text();
            all << cells.join('|');
        }
        return all;
    }
    static void touchChange(Constants* dialog)
    {
        QTest::mouseClick(dialog->findChild<QWidget*>("pbChange"), Qt::LeftButton);
    }

    std::unique_ptr<VacuumController> m_kvs;
    std::unique_ptr<VacuumController> m_kvk;
};

QTEST_MAIN(TestConstants)
#include "test_constants.moc"
