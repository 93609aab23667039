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

} // namespace

// The list of constants of both controllers, opened from the main window.
class TestConstants : public GuiFixture
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void listOfBoth();
    void chamberIsAskedFirst();
    void change_data();
    void change();
    void wrongCode();
    void nothingChosen();
    void columnWidths();

private:
    // Opens the dialog; the controllers that are there answer in the order given, then `act` runs.
    void open(const QList<std::pair<VacuumController*, Records>>& answers,
              const std::function<void(Constants*)>& act);
    static QStringList rows(Constants* dialog)
    {
        QStringList all;
        const auto* table = dialog->findChild<QTableWidget*>("twConst");
        for (int row = 0; row < table->rowCount(); ++row)
            all << table->item(row, 0)->text() + "|" + table->item(row, 1)->text() + "|" +
                       table->item(row, 2)->text();
        return all;
    }
    void connectKvk();
    void connectKvs();

    std::unique_ptr<VacuumController> m_kvs;
    std::unique_ptr<VacuumController> m_kvk;
    KVS* panel() const { return w<KVS>("kvs"); }
};

void TestConstants::init()
{
    begin();
    m_kvs = std::make_unique<VacuumController>(vacuumwire::kvs(), site().kvs);
    m_kvk = std::make_unique<VacuumController>(vacuumwire::kvk(), site().kvk);
    QTRY_VERIFY(m_kvs->server.hasPendingConnections() && m_kvk->server.hasPendingConnections());
    QVERIFY(m_kvs->accept() && m_kvk->accept());
    m_kvs->keepTelling();
    m_kvk->keepTelling();
    QTRY_COMPARE(colour("lblKVS"), QColor(Qt::green));
    QTRY_COMPARE(colour("lblKVK"), QColor(Qt::green));
}

void TestConstants::cleanup()
{
    m_kvs.reset();
    m_kvk.reset();
    end();
}

void TestConstants::open(const QList<std::pair<VacuumController*, Records>>& answers,
                         const std::function<void(Constants*)>& act)
{
    whenOpen<Constants>([&](Constants* dialog) {
        QTimer::singleShot(10'000, dialog, &QDialog::reject); // a failure below ends without it
        QMap<VacuumController*, int> expected;
        for (const auto& [controller, records] : answers) {
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

void TestConstants::listOfBoth()
{
    open({{m_kvk.get(), chamber}, {m_kvs.get(), system_}}, [this](Constants* dialog) {
        const QStringList expected = {"KBK:12|Threshold VP1|0.05", QStringLiteral("KBK:13|Дверь|1e-07"),
                                      "KBC:1|" + QString(84, QChar(0x414)) + "|1.23457e+06", "KBC:-2||-3.5",
                                      "KBC:12|x|20"};
        QCOMPARE(rows(dialog), expected);
        auto* table = dialog->findChild<QTableWidget*>("twConst");
        QCOMPARE(table->item(3, 0)->data(Qt::UserRole).toString(), QStringLiteral("-2"));
        QCOMPARE(dialog->window()->windowTitle(), QStringLiteral("Параметры системы"));
        // An answer to an earlier question takes the place of its own rows; what was chosen stays so.
        table->setCurrentCell(3, 1);
        m_kvs->sendConstants(system_);
        m_kvk->sendConstants(former);
        QTRY_COMPARE(rows(dialog),
                     QStringList({"KBK:12|Threshold VP1|5", "KBK:13|x|6", "KBK:14|y|7"}) + expected.mid(2));
        QCOMPARE(table->currentRow(), 4);
        m_kvk->sendConstants({});
        QTRY_COMPARE(rows(dialog), expected.mid(2));
        m_kvk->sendConstants(chamber);
        QTRY_COMPARE(rows(dialog).size(), 5);
        m_kvs->sendConstants({});
        QTRY_COMPARE(rows(dialog), expected.mid(0, 2));
    });
    QVERIFY(journal().contains(QStringLiteral("Нажата кнопка 'Параметры системы'")));
    QVERIFY(journal().contains(QStringLiteral("Закрыто окно параметров системы")));
}

// Only the order of the questions, and the pause between them, tells whose rows stand first.
void TestConstants::chamberIsAskedFirst()
{
    Site slow = site();
    slow.pauses.constants = std::chrono::milliseconds(300);
    setSite(slow);
    pollfd kvk{int(m_kvk->peer->socketDescriptor()), POLLIN, 0};
    pollfd kvs{int(m_kvs->peer->socketDescriptor()), POLLIN, 0};
    auto inOrder = std::async(std::launch::async,
                              [&] { return ::poll(&kvk, 1, 5000) == 1 && ::poll(&kvs, 1, 100) == 0; });
    open({}, [](Constants*) {});
    QVERIFY(inOrder.get());
}

void TestConstants::change_data()
{
    QTest::addColumn<QString>("links"); // in the order of their answers
    QTest::addColumn<int>("row");
    QTest::addColumn<QString>("digits");
    QTest::addColumn<bool>("toKvk");
    QTest::addColumn<QString>("command");
    QTest::newRow("KVK") << "kvk kvs" << 0 << "2,5" << true << "SET(KBK:12,2.5000000)";
    QTest::newRow("KVK, the last") << "kvk kvs" << 1 << "3" << true << "SET(KBK:13,3.0000000)";
    QTest::newRow("KVS, the first") << "kvk kvs" << 2 << "0" << false << "SET(KBC:1,0.0000000)";
    QTest::newRow("KVS, the last") << "kvk kvs" << 4 << "12,25" << false << "SET(KBC:12,12.2500000)";
    QTest::newRow("KVS alone") << "kvs" << 0 << "7" << false << "SET(KBC:1,7.0000000)";
    QTest::newRow("KVK alone") << "kvk" << 1 << "7" << true << "SET(KBK:13,7.0000000)";
    QTest::newRow("KVK twice, its row") << "former kvs kvk" << 1 << "7" << true << "SET(KBK:13,7.0000000)";
    QTest::newRow("KVK twice, KVS") << "former kvs kvk" << 2 << "7" << false << "SET(KBC:1,7.0000000)";
    QTest::newRow("both twice") << "former kvs kvk kvs" << 4 << "7" << false << "SET(KBC:12,7.0000000)";
    // An answer that comes late misdirects: the first rows count as KVK's.
    QTest::newRow("KVK late, its row") << "kvs kvk" << 3 << "7" << false << "SET(KBK:12,7.0000000)";
    QTest::newRow("KVK late, row of KVS") << "kvs kvk" << 0 << "7" << true << "SET(KBC:1,7.0000000)";
}

void TestConstants::change()
{
    QFETCH(QString, links);
    QFETCH(int, row);
    QFETCH(QString, digits);
    QFETCH(bool, toKvk);
    QFETCH(QString, command);
    QList<std::pair<VacuumController*, Records>> answers;
    for (const QString& link : links.split(' '))
        answers.append(link == "kvs" ? std::make_pair(m_kvs.get(), system_)
                                     : std::make_pair(m_kvk.get(), link == "kvk" ? chamber : former));
    if (!links.contains("kvk"))
        m_kvk.reset();
    if (!links.contains("kvs"))
        m_kvs.reset();
    QTRY_COMPARE(colour("lblKVK") == QColor(Qt::green), bool(m_kvk));
    QTRY_COMPARE(colour("lblKVS") == QColor(Qt::green), bool(m_kvs));

    bool accepted = false;
    QString line;
    open(answers, [&](Constants* dialog) {
        connect(dialog, &QDialog::accepted, this, [&accepted] { accepted = true; });
        auto* table = dialog->findChild<QTableWidget*>("twConst");
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                          table->visualItemRect(table->item(row, 1)).center());
        const QString name = table->item(row, 0)->text();
        line = QStringLiteral("Изменено значение параметра %1 (%2), новое значение: ")
                   .arg(name, table->item(row, 1)->text());
        typeNext(digits, true, name, [&] {
            // The rows may go while the keypad is open; the change is that of the row that was chosen.
            for (VacuumController* controller : {m_kvk.get(), m_kvs.get()}) {
                if (controller)
                    controller->sendConstants({});
            }
            QTRY_COMPARE(rows(dialog), QStringList());
            typeNext("730592", true, QStringLiteral("Пароль:"));
        });
        QTest::mouseClick(dialog->findChild<QWidget*>("pbChange"), Qt::LeftButton);
    });
    QVERIFY(accepted);
    VacuumController* const told = toKvk ? m_kvk.get() : m_kvs.get();
    QCOMPARE(told->takeCommands(1), QStringList(command));
    VacuumController* const other = toKvk ? m_kvs.get() : m_kvk.get();
    if (other)
        QVERIFY(other->takeCommands().isEmpty());
    QVERIFY(list().contains(line + QString(digits).replace(',', '.')));
}

void TestConstants::wrongCode()
{
    open({{m_kvk.get(), chamber}, {m_kvs.get(), system_}}, [this](Constants* dialog) {
        auto* table = dialog->findChild<QTableWidget*>("twConst");
        table->setCurrentCell(1, 2);
        const QStringList before = rows(dialog);
        const struct
        {
            bool value;
            const char* code;
            bool enter;
        } attempts[] = {{false, "", false}, {true, "730591", true}, {true, "730592", false}};
        for (const auto& attempt : attempts) {
            typeNext("5", attempt.value, {}, [attempt] {
                if (attempt.value)
                    typeNext(attempt.code, attempt.enter);
            });
            QTest::mouseClick(dialog->findChild<QWidget*>("pbChange"), Qt::LeftButton);
            QVERIFY(dialog->isVisible());
        }
        QCOMPARE(rows(dialog), before);
        QVERIFY(list().filter(QStringLiteral("Изменено")).isEmpty());
    });
    QVERIFY(m_kvk->takeCommands().isEmpty() && m_kvs->takeCommands().isEmpty());
}

void TestConstants::nothingChosen()
{
    open({{m_kvk.get(), {}}, {m_kvs.get(), system_}}, [](Constants* dialog) {
        QTest::mouseClick(dialog->findChild<QWidget*>("pbChange"), Qt::LeftButton); // no keypad opens
        QVERIFY(dialog->isVisible());
    });
}

void TestConstants::columnWidths()
{
    open({}, [](Constants* dialog) {
        auto* table = dialog->findChild<QTableWidget*>("twConst");
        for (int column = 0; column < 3; ++column) {
            QCOMPARE(table->columnWidth(column), 100);
            table->setColumnWidth(column, 150 + column);
        }
    });
    {
        QSettings settings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
        QCOMPARE(settings.value("Constants/Width_DESC").toInt(), 151);
        settings.setValue("Constants/Width_VALUE", "wide");
    }
    open({}, [](Constants* dialog) {
        auto* table = dialog->findChild<QTableWidget*>("twConst");
        QCOMPARE(table->columnWidth(0), 150);
        QCOMPARE(table->columnWidth(2), 100);
    });
}

QTEST_MAIN(TestConstants)
#include "test_constants.moc"
