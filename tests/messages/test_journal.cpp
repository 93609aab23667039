#include "comparetext.h"
#include "fulldisk.h"
#include "journal.h"
#include "journallist.h"
#include "sitefixture.h"

#include <QScrollBar>
#include <QScroller>
#include <QtTest>

// What the console writes down: the list before the operator and the file of the run.
class TestJournal : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_site.reset();
        m_site = std::make_unique<SiteFixture>();
        m_list.clear();
        m_list.resize(800, 195);
        m_list.show();
        m_journal = std::make_unique<Journal>(&m_list);
        m_journal->open();
    }

    void cleanup()
    {
        QScroller::scroller(m_list.viewport())
            ->stop(); // a list that still runs on would run into the next test
        m_journal.reset();
    }

    void lines()
    {
        const std::tuple<const char*, const char*, QColor> rows[] = {
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
        for (const auto& [line, shown, colour] : rows) {
            m_journal->write(line, true);
            const QListWidgetItem* item = m_list.item(m_list.count() - 1);
            QCOMPARE(m_list.currentItem(), item);
            QVERIFY(QRegularExpression("^\\[\\d\\d:\\d\\d:\\d\\d\\] ").match(item->text()).hasMatch());
            QCOMPARE(last(), shown);
            QCOMPARE(!item->icon().isNull(), colour.isValid());
            if (colour.isValid())
                QCOMPARE(item->foreground().color(), colour);
            QVERIFY(written().endsWith(QString("] ") + line + "\n")); // at once
        }
        m_journal->write("[I]только в файл", false);
        QCOMPARE(m_list.count(), int(std::size(rows)));
        QVERIFY(written().endsWith("] [I]только в файл\n"));
    }

    void followsTheFinger()
    {
        for (int line = 0; line < 60; ++line)
            m_journal->write(QString("[I]%1").arg(line), true);
        QScrollBar* bar = m_list.verticalScrollBar();
        QVERIFY(bar->sizeHint().width() >= 40); // a finger can seize it
        QCOMPARE(bar->value(), bar->maximum());
        const QPoint top = m_list.viewport()->mapTo(&m_list, QPoint(300, 20));
        QWindow* window = m_list.windowHandle();
        QTest::mousePress(window, Qt::LeftButton, {}, top);
        for (int y = 0; y <= 120; y += 10)
            QTest::mouseMove(window, top + QPoint(0, y), 10);
        QVERIFY2(bar->maximum() - bar->value() > 60,
                 qPrintable(QString::number(bar->maximum() - bar->value())));
        QTest::mouseRelease(window, Qt::LeftButton, {}, top + QPoint(0, 120));
        m_journal->write("[I]новая", true);
        QTRY_COMPARE(bar->value(), bar->maximum()); // the list follows the newest line
    }

    void withoutFolder()
    {
        m_journal->close();
        QVERIFY(log().removeRecursively());
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^no journal /.*polog_"));
        m_journal->open();
        m_journal->write("[I]видно", true);
        QCOMPARE(last(), "видно");
        QVERIFY2(!log().exists(), "the console does not make this folder");
    }

    void onAFullDisk()
    {
        {
            const FullDisk full(10);
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^journal not written: "));
            for (int line = 0; line < 3; ++line) // told once
                m_journal->write("[I]видно", true);
        }
        QCOMPARE(last(), "видно");
        m_journal->write("[I]снова место", false);
        QVERIFY(written().contains("[I]снова место\n"));
    }

    // A new line lays out itself alone, stands at the list's end, and every row keeps its place for the
    // finger.
    void ofWeeks()
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
        QList<Row*> rows;
        for (int i = 0; i < 3000; ++i) {
            rows << new Row(QString::number(i));
            rows.last()->setSizeHint({100, 20 + i % 3});
            m_list.addItem(rows.last());
        }
        QCoreApplication::processEvents();
        for (Row* row : rows)
            row->asked = 0;
        m_journal->write("[I]новая", true);
        m_list.grab();
        QCoreApplication::processEvents();
        for (const Row* row : rows)
            QCOMPARE(row->asked, 0);

        QWidget* view = m_list.viewport();
        const QListWidgetItem* last = m_list.item(3000);
        QCOMPARE(m_list.visualItemRect(last).bottom(), view->height() - 1);
        QCOMPARE(m_list.itemAt(5, view->height() - 1), last);
        m_list.scrollToItem(rows[1000], QAbstractItemView::PositionAtTop);
        QCOMPARE(m_list.itemAt(5, 0), rows[1000]);
        QCOMPARE(m_list.itemAt(5, rows[1000]->sizeHint().height()), rows[1001]);
        m_list.scrollToTop();
        QCOMPARE(m_list.visualItemRect(rows[2]).top(), 41);
        m_list.clear();
        QCOMPARE(m_list.itemAt(5, 5), nullptr);
    }

private:
    QString last() const { return m_list.item(m_list.count() - 1)->text().mid(11); }
    QString written() const // the file of this run, which has its name from the present day and time
    {
        const QStringList days = log().entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        const QStringList files = QDir(log().filePath(days.value(0))).entryList(QDir::Files);
        const QRegularExpression name("^\\d{4}_\\d\\d_\\d\\d/polog_\\d\\d_\\d\\d_\\d\\d\\.log$");
        const QString path = days.join('|') + '/' + files.join('|');
        return name.match(path).hasMatch() ? QString::fromUtf8(m_site->read("/log/" + path)) : path;
    }
    static QDir log() { return {site().path("/log")}; }

    std::unique_ptr<SiteFixture> m_site;
    JournalList m_list;
    std::unique_ptr<Journal> m_journal;
};

QTEST_MAIN(TestJournal)

#include "test_journal.moc"
