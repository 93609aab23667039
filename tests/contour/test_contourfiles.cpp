#include "contourfixture.h"
#include "filemanager.h"
#include "fulldisk.h"
#include "savefile.h"
#include "schema.h"
#include "weldroles.h"

#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QRandomGenerator>

namespace {

const QString folder = QStringLiteral("/home/oper/bin/contours/");

const char* const lineFile = "weld 1\n"
                             "XYZ\n"
                             "-1 0 0\n"
                             "3 -1\n"
                             "1 2\n"
                             "600\n"
                             "3\n"
                             "0.00 0.00 0.00 1 0 0 0 \n"
                             "100.00 0.00 -2.50 2 1 2 80.5 \n"
                             "100.00 75.00 0.00 1 0 0 0 \n"
                             "5\n"
                             "+ 0.00 0.0 700 0.0 0.0 600.0 0 \n"
                             "- Технол.останов\n"
                             "+ 10.00 20.0 700 1.5 -2.0 550.0 1 5 10.5 -3 90 100 0.25 0 1 1\n"
                             "+ 90.00 20.0 700 0.0 0.0 600.0 2 \n"
                             "+ 0.00 0.0 700 0.0 0.0 600.0 2 \n";

const char* const ringFile = "ring\nCircle\n250 0 0\n4 -1\n1 3\n900\n4\n"
                             "0.00 1.00 2.00 3.00 \n270.00 1.00 2.00 3.00 \n"
                             "180.00 1.00 2.00 3.00 \n90.00 1.00 2.00 3.00 \n"
                             "2\n+ 0.00 0.0 700 0.0 0.0 900.0 2 \n+ 0.00 0.0 700 0.0 0.0 900.0 2 \n";

const char* const circleFile = "circle\nXYZr\n100 10.125 -20.5\n3 1\n0 1\n300\n3\n"
                               "60.00 0.00 -20.50 \n10.00 0.00 29.50 \n-40.00 0.00 -20.50 \n"
                               "2\n+ 0.00 0.0 700 0.0 0.0 300.0 2 \n+ 0.00 0.0 700 0.0 0.0 300.0 2 \n";

} // namespace

class TestContourFiles : public ContourTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void savedText();
    void whatIsLoaded();
    void whatAFileDoesNotKeep();
    void directionOfARingComesBack();
    void circleComesBack();
    void whatFailsChangesNothing();
    void workIsKeptWhileItGoesOn();

    void fileCutAtEveryByte();
    void lostRowsAreZeros();
    void noise();
    void hugeCounts();
    void tokens();

    void programFiles();
    void fileDialogLists();
    void fileDialogWalksTheProgramFolders();
    void fileDialogAsksBeforeItOverwritesOrDeletes();
    void fileDialogTakesANewName();

private:
    void write(const QString& name, const QByteArray& text) const
    {
        QFile file(site().path(folder + name + QStringLiteral(".save")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    void load(const QString& name) { m_contour->load(name, folder + name); }
    void given(const QString& name, const QByteArray& text)
    {
        write(name, text);
        load(name);
    }
    QByteArray saved(const QString& name) const
    {
        return m_site->read(folder + name + QStringLiteral(".save"));
    }
    QString cell(int row, int column) const { return m_window->cell(m_window->tech(), row, column); }
};

// --- contours ---

void TestContourFiles::savedText()
{
    for (QByteArray file : {QByteArray(lineFile), QByteArray(ringFile), QByteArray(circleFile)}) {
        file.replace("10.125", "10.13");
        const QString name = QString::fromUtf8(file.left(file.indexOf('\n')));
        given("given", file);
        m_contour->save(name, folder + "again", true);
        // The last path follows from the contour; all else comes out as it went in.
        const QByteArray length = cell(m_window->tech()->rowCount() - 1, 0).toLatin1();
        file.replace(file.lastIndexOf("+ 0.00"), 6, "+ " + length);
        QCOMPARE(QString::fromUtf8(saved("again")), QString::fromUtf8(file));
        QCOMPARE(m_window->shownName, name);
        QCOMPARE(m_window->journal.last(),
                 QStringLiteral("[I]Контур сохранён в файле /home/oper/bin/contours/again.save"));
    }
}

void TestContourFiles::whatIsLoaded()
{
    given("line", lineFile);
    QCOMPARE(m_window->journal.last(),
             QStringLiteral("[I]Загружен контур из файла /home/oper/bin/contours/line.save"));
    QCOMPARE(m_window->shownName, QStringLiteral("line"));
    QCOMPARE(m_window->column(m_window->points(), 3),
             (QStringList{"Прямая", "Дуга, r=80.5, пр. ч.с., пл-YZ", "Прямая"}));
    QCOMPARE(m_window->text("nrings"), QStringLiteral("2"));
    QCOMPARE(m_window->text("weldSpeed"), QStringLiteral("600.0"));
    QCOMPARE(m_window->find<QAbstractButton>("pbRing")->text(), QStringLiteral("Замкнут\nпрямым\nходом"));
    QCOMPARE(m_window->tech()->columnSpan(1, 0), 7);
    QCOMPARE(cell(0, 6), QStringLiteral("ВЫКЛ"));
    QCOMPARE(cell(2, 6), QStringLiteral("Прямоугольник; 10.50x-3.00; 90; 100; 0.25x0.00; 1; 1"));
    QCOMPARE(cell(3, 6), QString());
    const QTableWidgetItem* fixed = m_window->tech()->item(4, 0);
    QVERIFY(fixed->font().italic() && fixed->font().bold());
    QVERIFY(qAbs(fixed->text().toFloat() - 2 * m_window->text("length").toFloat()) < 0.02f);

    given("odd", QByteArray(lineFile).replace("XYZ\n", "what\n"));
    QCOMPARE(m_contour->schema()->id(), QStringLiteral("XYZ"));
    QCOMPARE(m_window->points()->rowCount(), 3);
}

void TestContourFiles::whatAFileDoesNotKeep()
{
    given("line", lineFile);
    m_window->press("pbRing");
    m_window->choose("pbRing", 1);               // closed backward
    m_window->touchCell(m_window->tech(), 1, 0); // a row switched off
    QCOMPARE(m_window->tech()->item(2, 0)->data(OnRole).toBool(), false);
    m_contour->save("line", folder + "line", true);
    load("line");
    QCOMPARE(m_window->find<QAbstractButton>("pbRing")->text(), QStringLiteral("Замкнут\nпрямым\nходом"));
    QCOMPARE(m_window->tech()->item(2, 0)->data(OnRole).toBool(), true);
}

void TestContourFiles::directionOfARingComesBack()
{
    given("ring", ringFile);
    QCOMPARE(m_window->text("length"), QStringLiteral("785.40"));
    // The last stretch runs from 90 back to 0 and not over 360: a row in its middle cuts it at 45 degrees.
    m_contour->addLinearTackPoint(785.4f - 785.4f / 8, 0, 900);
    m_window->press("pbGcode");
    QVERIFY(m_site->read(QStringLiteral("/programs/_temp2.npg")).contains("V=45.00"));
}

void TestContourFiles::circleComesBack()
{
    given("circle", circleFile);
    QCOMPARE(m_window->text("centerX"), QStringLiteral("10.13"));
    QCOMPARE(m_window->text("centerY"), QStringLiteral("-20.50"));
    QCOMPARE(m_window->text("diameter"), QStringLiteral("100.00"));
    QCOMPARE(m_window->text("plane"), QStringLiteral("XZ"));
    QCOMPARE(m_window->text("length"), QStringLiteral("157.08"));

    // Closing and turning around move no point: the circle of the file stands.
    given("circle", QByteArray(circleFile).replace("10.00 0.00", "10.00 5.00"));
    m_window->press("pbRing");
    m_window->press("pbInverse");
    QCOMPARE(m_window->text("diameter"), QStringLiteral("100.00"));
    QCOMPARE(m_window->text("length"), QStringLiteral("314.16"));
}

void TestContourFiles::whatFailsChangesNothing()
{
    given("line", lineFile);
    write("kept", "former");
    m_window->journal.clear();
    load("nothing");
    QCOMPARE(m_window->points()->rowCount(), 3);
    const FullDisk full(100);
    m_contour->save("new name", folder + "kept", true);
    QCOMPARE(m_window->journal, QStringList("[A]Файл /home/oper/bin/contours/kept.save не записан"));
    QCOMPARE(saved("kept"), QByteArray("former"));
    QCOMPARE(m_window->shownName, QStringLiteral("line"));
}

// What is taught outlives a fall of the console that comes ten seconds later; a contour that nobody touched
// is not written again, at the end neither.
void TestContourFiles::workIsKeptWhileItGoesOn()
{
    const QString kept = QStringLiteral("contour");
    write(kept, lineFile);
    m_window = std::make_unique<ContourWindow>();
    m_contour = m_window->open();
    m_window.reset();
    QCOMPARE(saved(kept), QByteArray(lineFile));

    m_window = std::make_unique<ContourWindow>();
    m_contour = m_window->open();
    m_window->ready();
    m_window->teach(100, 75, 33);
    m_window->journal.clear();
    {
        const FullDisk full(100);
        m_contour->keepForNextStart();
        m_contour->keepForNextStart();
        QCOMPARE(m_window->journal,
                 QStringList{"[A]Файл /home/oper/bin/contours/contour.save не записан"}); // told once
        QCOMPARE(saved(kept), QByteArray(lineFile));
    }
    QTRY_VERIFY_WITH_TIMEOUT(saved(kept).contains("100.00 75.00 33.00 "), 10'000);
    QCOMPARE(m_window->journal.size(), 1); // and success is silent
}

// --- bad files ---

void TestContourFiles::fileCutAtEveryByte()
{
    for (const char* whole : {lineFile, ringFile, circleFile}) {
        const QByteArray file(whole);
        const int step = whole == lineFile ? 1 : 5;
        for (int length = 0; length < file.size(); length += step) {
            given("cut", file.left(length));
            QVERIFY(m_window->points()->rowCount() <= 4);
            QVERIFY(m_window->tech()->rowCount() >= 2 && m_window->tech()->rowCount() <= 6);
        }
    }
}

void TestContourFiles::lostRowsAreZeros()
{
    const QByteArray file(lineFile);
    given("cut", file.left(file.indexOf("-2.50")));
    QCOMPARE(m_window->column(m_window->points(), 0), (QStringList{"0.00", "100.00", "0.00"}));
    QCOMPARE(m_window->column(m_window->points(), 3), (QStringList{"Прямая", "Конец", "Конец"}));
    QCOMPARE(m_window->tech()->rowCount(), 2);
}

void TestContourFiles::noise()
{
    QRandomGenerator random(7);
    const QByteArray words[] = {"nan", "inf", "-1", "1e39", "XYZr", "Circle", "+",
                                "-",   "2",   "1",  "0.5",  "\n",   "x"};
    for (int round = 0; round < 60; ++round) {
        QByteArray file = "name\n";
        const bool bytes = round % 2;
        for (int i = 0; i < 400; ++i) {
            if (bytes)
                file += char(random.bounded(256));
            else
                file += words[random.bounded(int(std::size(words)))] + ' ';
        }
        given("noise", file);
        QVERIFY(m_window->points()->rowCount() <= 400);
        for (const QString& shown : m_window->column(m_window->points(), 0))
            QVERIFY2(!shown.contains(QLatin1String("nan")) && !shown.contains(QLatin1String("inf")),
                     qPrintable(shown));
    }
}

void TestContourFiles::hugeCounts()
{
    const std::pair<const char*, int> files[] = {
        {"n\nXYZ\n-1 0 0\n0 -1\n1 1e30\n600\n1000000000\n1 2 3 0\n4 5 6 0", SaveFile::maxRows},
        {"n\nXYZ\n-1 0 0\n0 -1\n1 -4\n600\n-5\n-7\n", 0},
        {"n\nXYZ\n-1 0 0\n0 -1\n0 1\n600\n0\n1999999999\n+ 1 2 3\n", 0}};
    for (const auto& [file, points] : files) {
        given("huge", file);
        QCOMPARE(m_window->points()->rowCount(), points);
        QCOMPARE(m_window->tech()->rowCount(), 2);
        QVERIFY(m_window->text("nrings").toInt() >= 1 && m_window->text("nrings").toInt() <= 1000);
    }
}

void TestContourFiles::tokens()
{
    SaveFile file(QStringLiteral("the name of it\n 1.5\t-2 x 7.5 nan 1e50 200000 \n \n"));
    QCOMPARE(file.programName(), QStringLiteral("the name of it"));
    QCOMPARE(file.number(), 1.5f);
    QCOMPARE(file.integer(), -2);
    QCOMPARE(file.number(), 0.0f);
    QCOMPARE(file.integer(), 0); // a fraction is no whole number
    QCOMPARE(file.number(), 0.0f);
    QCOMPARE(file.number(), 0.0f);
    QCOMPARE(file.rowCount(), int(SaveFile::maxRows));
    QVERIFY(file.atEnd());
    QCOMPARE(file.word(), QString());
    QVERIFY(SaveFile(QString()).atEnd());
}

// --- programs, the file dialog ---

void TestContourFiles::programFiles()
{
    auto* edit = m_window->find<QPlainTextEdit>("teGcode_2");
    edit->setPlainText("N1 $2");
    Answers answers({Answers::button("pbSave_as"),
                     [] {
                         auto* name = Answers::shown<QLineEdit>("leSaveAsNewProgName");
                         if (name)
                             QTest::keyClicks(name, "turn\r");
                         return name != nullptr;
                     },
                     [] {
                         auto* list = Answers::shown<QListWidget>("listWidget_prog");
                         if (list)
                             list->setCurrentRow(1); // after ".."
                         return list != nullptr;
                     },
                     Answers::button("pbLoad"), Answers::cancel(), Answers::cancel(), Answers::cancel(),
                     Answers::cancel()});
    m_window->press("pbPrgSave_2");
    QCOMPARE(m_site->read("/programs/ch2/turn.npg"), QByteArray("N1 $2"));
    QCOMPARE(m_window->text("lbProgName2"), QString("turn"));
    edit->clear();
    m_window->press("pbPrgOpen_2");
    QCOMPARE(edit->toPlainText(), QString("N1 $2"));
    for (const char* button : {"pbPrgSave_1", "pbPrgSave_3", "pbPrgOpen_1", "pbPrgOpen_3"})
        m_window->press(button);
    QVERIFY(answers.allGiven());
    QCOMPARE(m_window->journal.filter("Сохранить программу ЧПУ' панели 'Канал").size(), 3);
    QCOMPARE(m_window->journal.last(),
             QString("[I]Нажата кнопка 'Загрузить программу ЧПУ' панели 'Канал 3'"));
}

namespace {

QStringList listed(const FileManager& dialog)
{
    const auto* list = dialog.findChild<QListWidget*>();
    QStringList names;
    for (int i = 0; i < list->count(); ++i)
        names << list->item(i)->text();
    return names;
}

void touchItem(const FileManager& dialog, const QString& name, bool twice)
{
    auto* list = dialog.findChild<QListWidget*>();
    const QList<QListWidgetItem*> items = list->findItems(name, Qt::MatchExactly);
    QCOMPARE(items.size(), 1);
    const QPoint at = list->visualItemRect(items.first()).center();
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    if (twice)
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, at);
}

} // namespace

void TestContourFiles::fileDialogLists()
{
    write(QStringLiteral("b"), lineFile);
    write(QStringLiteral("a.b"), lineFile);
    QFile(site().path(folder + QStringLiteral("c.txt"))).open(QIODevice::WriteOnly);
    QDir(site().path(folder)).mkdir(QStringLiteral("z"));
    FileManager open(m_contour, folder, QStringLiteral(".save"), true);
    QCOMPARE(listed(open), (QStringList{"z", "a.b", "b"}));
    const auto button = [&](const char* name) {
        return open.findChild<QAbstractButton*>(QLatin1String(name));
    };
    QVERIFY(button("pbLoad")->isVisible() && !button("pbSave")->isVisible() &&
            !button("pbSave_as")->isVisible());
    QCOMPARE(button("pbDelete")->geometry().topLeft(), QPoint(410, 90));
    QVERIFY(!button("pbLoad")->isEnabled());
    touchItem(open, QStringLiteral("z"), false); // its name may be taken, too
    QVERIFY(button("pbLoad")->isEnabled());
    touchItem(open, QStringLiteral("z"), true); // contours have no folders to walk
    QCOMPARE(listed(open).size(), 3);
    touchItem(open, QStringLiteral("a.b"), true);
    QCOMPARE(open.result(), int(QDialog::Accepted));
    QCOMPARE(open.name(), QStringLiteral("a.b"));
    QCOMPARE(open.path(), folder + QStringLiteral("a.b"));

    const FileManager save(m_contour, folder, QStringLiteral(".save"), false);
    QCOMPARE(save.findChild<QAbstractButton*>(QStringLiteral("pbDelete"))->geometry(),
             QRect(410, 170, 150, 70));
}

void TestContourFiles::fileDialogWalksTheProgramFolders()
{
    const QString programs = QStringLiteral("/programs/");
    FileManager dialog(m_contour, programs + QStringLiteral("ch1/"), QStringLiteral(".npg"), true);
    QCOMPARE(listed(dialog), QStringList{".."});
    touchItem(dialog, QStringLiteral(".."), false);
    QVERIFY(!dialog.findChild<QAbstractButton*>(QStringLiteral("pbDelete"))->isEnabled());
    QDir(site().path(programs)).mkdir(QStringLiteral("other"));
    QFile(site().path(QStringLiteral("/programs/ch3/p.npg"))).open(QIODevice::WriteOnly);
    touchItem(dialog, QStringLiteral(".."), true);
    QCOMPARE(listed(dialog), (QStringList{"ch1", "ch2", "ch3", "other"}));
    touchItem(dialog, QStringLiteral("other"), true);
    QCOMPARE(listed(dialog).size(), 4);
    touchItem(dialog, QStringLiteral("ch3"), true);
    QCOMPARE(listed(dialog), (QStringList{"..", "p"}));
    touchItem(dialog, QStringLiteral("p"), false);
    dialog.findChild<QAbstractButton*>(QStringLiteral("pbLoad"))->click();
    QCOMPARE(dialog.path(), QStringLiteral("/programs/ch3/p"));
}

void TestContourFiles::fileDialogAsksBeforeItOverwritesOrDeletes()
{
    write(QStringLiteral("old"), lineFile);
    FileManager dialog(m_contour, folder, QStringLiteral(".save"), false);
    for (bool yes : {false, true}) {
        Answers answers({Answers::confirm(yes)});
        touchItem(dialog, QStringLiteral("old"), true);
        QVERIFY(answers.allGiven());
        QCOMPARE(dialog.name(), yes ? QStringLiteral("old") : QString());
    }
    for (bool yes : {false, true}) {
        touchItem(dialog, QStringLiteral("old"), false);
        Answers answers({Answers::confirm(yes)});
        dialog.findChild<QAbstractButton*>(QStringLiteral("pbDelete"))->click();
        QVERIFY(answers.allGiven());
        QCOMPARE(listed(dialog), yes ? QStringList() : QStringList{"old"});
    }
    QVERIFY(saved(QStringLiteral("old")).isEmpty());
}

void TestContourFiles::fileDialogTakesANewName()
{
    FileManager dialog(m_contour, folder, QStringLiteral(".save"), false);
    QVERIFY(!dialog.findChild<QAbstractButton*>(QStringLiteral("pbSave"))->isEnabled());
    dialog.findChild<QAbstractButton*>(QStringLiteral("pbSave_as"))->click();
    auto* name = dialog.findChild<QLineEdit*>(QStringLiteral("leSaveAsNewProgName"));
    QVERIFY(name->isVisible());
    QTest::keyClick(name, Qt::Key_Return); // no name, no file
    QVERIFY(dialog.isVisible());
    QTest::keyClicks(name, QStringLiteral("../a"));
    QTest::keyClick(name, Qt::Key_Return);
    QCOMPARE(dialog.path(), folder + QStringLiteral("..a")); // it stays in its folder
}

QTEST_MAIN(TestContourFiles)

#include "test_contourfiles.moc"
