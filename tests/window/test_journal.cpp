#include "guifixture.h"

#include <QScrollBar>

#include <csignal>

#include <sys/resource.h>

// What the window writes down: the list before the operator and the file of the run.
class TestJournal : public GuiFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }
    void journalLine();
    void journalFollowsTheFinger();
    void journalFile();
    void journalWithoutFolder();
    void journalOnAFullDisk();
    void journalOfWeeks();
};

void TestJournal::journalLine()
{
    const struct
    {
        const char* line;
        const char* shown;
        QColor colour;
    } rows[] = {
        {"[I]Дверь открыта", "Дверь открыта", Qt::black},
        {"[W]w", "w", Qt::black},
        {"[A]a", "a", Qt::red},
        {"[C]c", "c", Qt::black},
        {"[M]m", "m", Qt::blue},
        {"[i]x", "[i]x", QColor()},
        {"Пуск", "Пуск", QColor()},
        {"ab", "ab", QColor()},
        {"", "", QColor()},
    };
    for (const auto& row : rows) {
        const QString line = QString::fromUtf8(row.line);
        m_gui->prgMessage(line, true);
        auto* log = w<QListWidget>(QStringLiteral("lwLog"));
        const QListWidgetItem* item = log->item(log->count() - 1);
        QCOMPARE(log->currentItem(), item);
        QVERIFY(QRegularExpression(QStringLiteral("^\\[\\d\\d:\\d\\d:\\d\\d\\] "))
                    .match(item->text())
                    .hasMatch());
        QCOMPARE(item->text().mid(11), QString::fromUtf8(row.shown));
        QCOMPARE(!item->icon().isNull(), row.colour.isValid());
        if (row.colour.isValid())
            QCOMPARE(item->foreground().color(), row.colour);
        QVERIFY(journal().endsWith(line + "\n\n"));
    }
}

void TestJournal::journalFollowsTheFinger()
{
    for (int line = 0; line < 60; ++line)
        m_gui->prgMessage(QStringLiteral("[I]%1").arg(line), true);
    auto* log = w<QListWidget>(QStringLiteral("lwLog"));
    QScrollBar* bar = log->verticalScrollBar();
    QVERIFY(bar->sizeHint().width() >= 40); // a finger can seize it
    QCOMPARE(bar->value(), bar->maximum());
    const QPoint top = log->viewport()->mapTo(m_gui.get(), QPoint(300, 20));
    QWindow* window = m_gui->windowHandle();
    QTest::mousePress(window, Qt::LeftButton, {}, top);
    for (int y = 0; y <= 120; y += 10)
        QTest::mouseMove(window, top + QPoint(0, y), 10);
    QVERIFY2(bar->maximum() - bar->value() > 60, qPrintable(QString::number(bar->maximum() - bar->value())));
    QTest::mouseRelease(window, Qt::LeftButton, {}, top + QPoint(0, 120));
    m_gui->prgMessage(QStringLiteral("[I]новая"), true);
    QTRY_COMPARE(bar->value(), bar->maximum()); // the list follows the newest line
}

void TestJournal::journalFile()
{
    QDir log(site().path(QStringLiteral("/log")));
    const QStringList days = log.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QCOMPARE(days.size(), 1);
    QVERIFY(QDate::fromString(days.first(), QStringLiteral("yyyy_MM_dd")).isValid());
    const QStringList files = QDir(log.filePath(days.first())).entryList(QDir::Files);
    QCOMPARE(files.size(), 1);
    QVERIFY2(QRegularExpression(QStringLiteral("^polog_\\d\\d_\\d\\d_\\d\\d\\.log$"))
                 .match(files.first())
                 .hasMatch(),
             qPrintable(files.first()));
    m_gui->prgMessage(QStringLiteral("[I]только в файл"), false);
    QVERIFY(!list().contains(QStringLiteral("только в файл")));
    QVERIFY2(journal().contains(QStringLiteral("[I]только в файл\n")), "a line is in the file at once");
}

void TestJournal::journalWithoutFolder()
{
    m_gui.reset();
    QVERIFY(QDir(site().path(QStringLiteral("/log"))).removeRecursively());
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^no journal /.*polog_")));
    start();
    m_gui->prgMessage(QStringLiteral("[I]видно"), true);
    QCOMPARE(list().last(), QStringLiteral("видно"));
    QVERIFY2(!QDir(site().path(QStringLiteral("/log"))).exists(), "the console does not make this folder");
}

void TestJournal::journalOnAFullDisk()
{
    const auto former = ::signal(SIGXFSZ, SIG_IGN);
    rlimit usual;
    ::getrlimit(RLIMIT_FSIZE, &usual);
    const rlimit full{10, usual.rlim_max};
    ::setrlimit(RLIMIT_FSIZE, &full);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^journal not written: ")));
    for (int line = 0; line < 3; ++line) // told once
        m_gui->prgMessage(QStringLiteral("[I]видно"), true);
    ::setrlimit(RLIMIT_FSIZE, &usual);
    ::signal(SIGXFSZ, former);
    QCOMPARE(list().last(), QStringLiteral("видно"));
    m_gui->prgMessage(QStringLiteral("[I]снова место"), false);
    QVERIFY(journal().contains(QStringLiteral("[I]снова место\n")));
}

// A new line lays out itself alone, stands at the list's end, and every row keeps its place for the finger.
void TestJournal::journalOfWeeks()
{
    struct Row : QListWidgetItem
    {
        using QListWidgetItem::QListWidgetItem;
        QVariant data(int role) const override
        {
            asked += role == Qt::SizeHintRole;
            return QListWidgetItem::data(role);
        }
        mutable int asked = 0;
    };
    auto* log = w<QListWidget>("lwLog");
    log->clear();
    QList<Row*> rows;
    for (int i = 0; i < 3000; ++i) {
        rows << new Row(QString::number(i));
        rows.last()->setSizeHint({100, 20 + i % 3});
        log->addItem(rows.last());
    }
    QCoreApplication::processEvents();
    for (Row* row : rows)
        row->asked = 0;
    m_gui->prgMessage(QStringLiteral("[I]новая"), true);
    log->grab();
    QCoreApplication::processEvents();
    for (const Row* row : rows)
        QCOMPARE(row->asked, 0);

    QWidget* view = log->viewport();
    const QListWidgetItem* last = log->item(3000);
    QCOMPARE(log->visualItemRect(last).bottom(), view->height() - 1);
    QCOMPARE(log->itemAt(5, view->height() - 1), last);
    log->scrollToItem(rows[1000], QAbstractItemView::PositionAtTop);
    QCOMPARE(log->itemAt(5, 0), rows[1000]);
    QCOMPARE(log->itemAt(5, rows[1000]->sizeHint().height()), rows[1001]);
    log->scrollToTop();
    QCOMPARE(log->visualItemRect(rows[2]).top(), 41);
    log->clear();
    QCOMPARE(log->itemAt(5, 5), nullptr);
}

QTEST_MAIN(TestJournal)

#include "test_journal.moc"
