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

const QString folder = "/home/oper/bin/contours/";

const char* const lineFile = "weld 1\nXYZ\n-1 0 0\n3 -1\n1 2\n600\n3\n"
                             "0.00 0.00 0.00 1 0 0 0 \n"
                             "100.00 0.00 -2.50 2 1 2 80.5 \n"
                             "100.00 75.00 0.00 1 0 0 0 \n"
                             "5\n+ 0.00 0.0 700 0.0 0.0 600.0 0 \n"
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

struct Dialog : FileManager
{
    using FileManager::FileManager;

    QAbstractButton* button(const char* name) const { return findChild<QAbstractButton*>(name); }
    QString listed() const
    {
        QStringList names;
        for (int i = 0; i < list()->count(); ++i)
            names << list()->item(i)->text();
        return names.join(' ');
    }
    void touchItem(const QString& item, bool twice) const
    {
        const QList<QListWidgetItem*> items = list()->findItems(item, Qt::MatchExactly);
        QCOMPARE(items.size(), 1);
        const QPoint at = list()->visualItemRect(items.first()).center();
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, Qt::NoModifier, at);
        if (twice)
            QTest::mouseDClick(list()->viewport(), Qt::LeftButton, Qt::NoModifier, at);
    }

private:
    QListWidget* list() const { return findChild<QListWidget*>(); }
};

} // namespace

class TestContourFiles : public ContourTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    // --- contours ---

    void savedText()
    {
        for (QByteArray file : {QByteArray(lineFile), QByteArray(ringFile), QByteArray(circleFile)}) {
            file.replace("10.125", "10.13");
            const QString name = file.left(file.indexOf('\n'));
            given("given", file);
            m_contour->save(name, folder + "again", true);
            // The last path follows from the contour; all else comes out as it went in.
            const QByteArray length = tech(m_window->tech()->rowCount() - 1, 0).toLatin1();
            file.replace(file.lastIndexOf("+ 0.00"), 6, "+ " + length);
            QCOMPARE(QString(saved("again")), QString(file));
            QCOMPARE(m_window->shownName, name);
            QCOMPARE(told(), "[I]Контур сохранён в файле /home/oper/bin/contours/again.save");
        }
    }

    void whatIsLoaded()
    {
        const QString closed = "Замкнут\nпрямым\nходом";
        given("line", lineFile);
        QCOMPARE(told(), "[I]Загружен контур из файла /home/oper/bin/contours/line.save");
        QCOMPARE(m_window->shownName, "line");
        QCOMPARE(points(3), "Прямая Дуга, r=80.5, пр. ч.с., пл-YZ Прямая");
        QCOMPARE(m_window->text("nrings weldSpeed pbRing"), "2 600.0 " + closed);
        QCOMPARE(m_window->tech()->columnSpan(1, 0), 7);
        QCOMPARE(tech(6), "ВЫКЛ  Прямоугольник; 10.50x-3.00; 90; 100; 0.25x0.00; 1; 1  ");
        const QTableWidgetItem* fixed = m_window->tech()->item(4, 0);
        QVERIFY(fixed->font().italic() && fixed->font().bold());
        QVERIFY(qAbs(fixed->text().toFloat() - 2 * m_window->text("length").toFloat()) < 0.02f);

        // What a file does not keep: the closure backward, and a row switched off.
        m_window->press("pbRing");
        m_window->choose("pbRing", 1);
        m_window->touchCell(m_window->tech(), 1, 0);
        const auto isOn = [this] { return m_window->tech()->item(2, 0)->data(OnRole).toBool(); };
        QVERIFY(!isOn());
        m_contour->save("line", folder + "line", true);
        given("line", saved("line"));
        QCOMPARE(m_window->text("pbRing"), closed);
        QVERIFY(isOn());

        given("odd", QByteArray(lineFile).replace("XYZ\n", "what\n"));
        QCOMPARE(m_contour->schema()->id(), "XYZ");
        QCOMPARE(m_window->points()->rowCount(), 3);
        QByteArray lost = lineFile; // rows are zeros
        given("lost", lost.left(lost.indexOf("-2.50")));
        QCOMPARE(points(0) + ' ' + points(3), "0.00 100.00 0.00 Прямая Конец Конец");
        QCOMPARE(m_window->tech()->rowCount(), 2);
    }

    void directionOfARingComesBack()
    {
        given("ring", ringFile);
        QCOMPARE(m_window->text("length"), "785.40");
        // The last stretch runs from 90 back to 0 and not over 360: a row in its middle cuts it at 45
        // degrees.
        m_contour->addLinearTackPoint(785.4f - 785.4f / 8, 0, 900);
        m_window->press("pbGcode");
        QVERIFY(program("_temp2").contains("V=45.00"));
    }

    void circleComesBack()
    {
        given("circle", circleFile);
        QCOMPARE(m_window->text("centerX centerY diameter plane length"), "10.13 -20.50 100.00 XZ 157.08");
        // Closing and turning around move no point: the circle of the file stands.
        given("circle", QByteArray(circleFile).replace("10.00 0.00", "10.00 5.00"));
        m_window->press("pbRing");
        m_window->press("pbInverse");
        QCOMPARE(m_window->text("diameter length"), "100.00 314.16");
    }

    void whatFailsChangesNothing()
    {
        given("line", lineFile);
        write("kept.save", "former");
        m_window->journal.clear();
        m_contour->load("nothing", folder + "nothing");
        QCOMPARE(m_window->points()->rowCount(), 3);
        const FullDisk full(100);
        m_contour->save("new name", folder + "kept", true);
        QCOMPARE(m_window->journal, QStringList("[A]Файл /home/oper/bin/contours/kept.save не записан"));
        QCOMPARE(saved("kept"), QByteArray("former"));
        QCOMPARE(m_window->shownName, "line");
    }

    // What is taught outlives a fall of the console that comes ten seconds later; a contour that nobody
    // touched is not written again, at the end neither.
    void workIsKeptWhileItGoesOn()
    {
        write("contour.save", lineFile);
        restart();
        restart();
        QCOMPARE(saved("contour"), QByteArray(lineFile));
        m_window->teach(100, 75, 33);
        m_window->journal.clear();
        {
            const FullDisk full(100);
            m_contour->keepForNextStart();
            m_contour->keepForNextStart();
            QCOMPARE(m_window->journal.join('|'),
                     "[A]Файл /home/oper/bin/contours/contour.save не записан"); // told once
            QCOMPARE(saved("contour"), QByteArray(lineFile));
        }
        QTRY_VERIFY_WITH_TIMEOUT(saved("contour").contains("100.00 75.00 33.00 "), 10'000);
        QCOMPARE(m_window->journal.size(), 1); // and success is silent
    }

    // --- bad files ---

    void fileCutAtEveryByte()
    {
        for (const QByteArray file : {lineFile, ringFile, circleFile}) {
            const int step = file.startsWith("weld") ? 1 : 5;
            for (int length = 0; length < file.size(); length += step) {
                given("cut", file.left(length));
                QVERIFY(m_window->points()->rowCount() <= 4);
                const int rows = m_window->tech()->rowCount();
                QVERIFY(rows >= 2 && rows <= 6);
                for (int row = 0; row < rows; ++row)
                    QVERIFY(!tech(row, 0).isEmpty()); // a comment without a text would be read as another
            }
        }
    }

    void noise()
    {
        QRandomGenerator random(7);
        const QByteArray words[] = {"nan", "inf", "-1", "1e39", "XYZr", "Circle", "+",
                                    "-",   "2",   "1",  "0.5",  "\n",   "x"};
        for (int round = 0; round < 60; ++round) {
            QByteArray file = "name\n";
            for (int i = 0; i < 400; ++i)
                file += round % 2 ? QByteArray(1, char(random.bounded(256)))
                                  : words[random.bounded(int(std::size(words)))] + ' ';
            given("noise", file);
            QVERIFY(m_window->points()->rowCount() <= 400);
            QVERIFY2(!points(0).contains("n"), qPrintable(points(0))); // neither nan nor inf
        }
    }

    void hugeCounts()
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

    void tokens()
    {
        SaveFile file("the name of it\n 1.5\t-2 x 7.5 nan 1e50 200000 \n \n");
        QCOMPARE(file.programName(), "the name of it");
        QList<float> numbers{file.number()};
        numbers << float(file.integer()) << file.number();
        numbers << float(file.integer()) << file.number(); // a fraction is no whole number
        numbers << file.number() << float(file.rowCount());
        QCOMPARE(numbers, (QList<float>{1.5, -2, 0, 0, 0, 0, SaveFile::maxRows}));
        QVERIFY(file.atEnd());
        QCOMPARE(file.word(), "");
    }

    // --- programs, the file dialog ---

    void programFiles()
    {
        const QString path = "/programs/ch2/turn.npg";
        auto* edit = m_window->find<QPlainTextEdit>("teGcode_2");
        edit->setPlainText("N1 $2\nN2 M30\n");
        const Answer name = Answers::at<QLineEdit>("leSaveAsNewProgName",
                                                   [](QLineEdit* line) { QTest::keyClicks(line, "turn\r"); });
        const Answer file = Answers::at<QListWidget>(
            "listWidget_prog", [](auto* list) { list->setCurrentRow(1); }); // after ".."
        m_window->press("pbPrgSave_2", {Answers::button("pbSave_as"), name});
        QCOMPARE(m_site->read(path), QByteArray("N1 $2\nN2 M30\n"));
        QCOMPARE(m_window->text("lbProgName2"), "turn");
        QCOMPARE(told(), "[I]Программа ЧПУ сохранена в файле " + path);
        edit->setPlainText(QString(1000, 'x'));
        m_window->find<QLabel>("lbProgName2")->clear();
        {
            const FullDisk full(100);
            m_window->press("pbPrgSave_2", {file, Answers::button("pbSave"), Answers::confirm(true)});
            QCOMPARE(told(), "[A]Файл " + path + " не записан");
            QCOMPARE(m_window->text("lbProgName2"), "");
        }
        m_window->press("pbPrgOpen_2", {file, Answers::button("pbLoad")});
        QCOMPARE(edit->toPlainText(), "N1 $2\nN2 M30\n");
        QCOMPARE(m_window->text("lbProgName2"), "turn");
        QCOMPARE(told(), "[I]Выполнена загрузка программы ЧПУ из файла " + path);
        const Answer gone = [path] { return QFile::remove(site().path(path)); };
        m_window->press("pbPrgOpen_2", {file, gone, Answers::button("pbLoad")});
        QCOMPARE(edit->toPlainText(), "N1 $2\nN2 M30\n");
        for (const char* button : {"pbPrgSave_1", "pbPrgSave_3", "pbPrgOpen_1", "pbPrgOpen_3"})
            m_window->press(button, {Answers::cancel()});
        QCOMPARE(m_window->journal.filter("Сохранить программу ЧПУ' панели 'Канал").size(), 4);
        QCOMPARE(told(), "[I]Нажата кнопка 'Загрузить программу ЧПУ' панели 'Канал 3'");
    }

    void fileDialogLists()
    {
        for (const char* file : {"b.save", "a.b.save", "c.txt"})
            write(file, lineFile);
        QDir(site().path(folder)).mkdir("z");
        Dialog open(m_contour, folder, ".save", true);
        QCOMPARE(open.listed(), "z a.b b");
        QVERIFY(open.button("pbLoad")->isVisible() && !open.button("pbSave")->isVisible() &&
                !open.button("pbSave_as")->isVisible());
        QCOMPARE(open.button("pbDelete")->geometry().topLeft(), QPoint(410, 90));
        QVERIFY(!open.button("pbLoad")->isEnabled());
        open.touchItem("z", false); // its name may be taken, too
        QVERIFY(open.button("pbLoad")->isEnabled());
        open.touchItem("z", true); // contours have no folders to walk
        QCOMPARE(open.listed(), "z a.b b");
        open.touchItem("a.b", true);
        QCOMPARE(open.result(), int(QDialog::Accepted));
        QCOMPARE(open.name() + ' ' + open.path(), "a.b " + folder + "a.b");
    }

    void fileDialogWalksTheProgramFolders()
    {
        Dialog dialog(m_contour, "/programs/ch1/", ".npg", true);
        QCOMPARE(dialog.listed(), "..");
        dialog.touchItem("..", false);
        QVERIFY(!dialog.button("pbDelete")->isEnabled());
        QDir(site().path("/programs/")).mkdir("other");
        m_site->write("/programs/ch3/p.npg", "");
        dialog.touchItem("..", true);
        for (const char* item : {"other", "ch3"}) {
            QCOMPARE(dialog.listed(), "ch1 ch2 ch3 other");
            dialog.touchItem(item, true);
        }
        QCOMPARE(dialog.listed(), ".. p");
        dialog.touchItem("p", false);
        dialog.button("pbLoad")->click();
        QCOMPARE(dialog.path(), "/programs/ch3/p");
    }

    void fileDialogSaves()
    {
        write("old.save", lineFile);
        Dialog dialog(m_contour, folder, ".save", false);
        QCOMPARE(dialog.button("pbDelete")->geometry(), QRect(410, 170, 150, 70));
        QVERIFY(!dialog.button("pbSave")->isEnabled());
        const auto asked = [&](bool yes, bool deleting) { // before it overwrites or deletes
            Answers answers({Answers::confirm(yes)});
            dialog.touchItem("old", !deleting);
            if (deleting)
                dialog.button("pbDelete")->click();
            return answers.allGiven();
        };
        for (const bool yes : {false, true}) {
            QVERIFY(asked(yes, false));
            QCOMPARE(dialog.name(), yes ? "old" : "");
        }
        for (const bool yes : {false, true}) {
            QVERIFY(asked(yes, true));
            QCOMPARE(dialog.listed(), yes ? "" : "old");
        }
        QVERIFY(saved("old").isEmpty());

        Dialog fresh(m_contour, folder, ".save", false);
        fresh.button("pbSave_as")->click();
        auto* name = fresh.findChild<QLineEdit*>("leSaveAsNewProgName");
        QVERIFY(name->isVisible());
        QTest::keyClick(name, Qt::Key_Return); // no name, no file
        QVERIFY(fresh.isVisible());
        QTest::keyClicks(name, "../a\r");
        QCOMPARE(fresh.path(), folder + "..a"); // it stays in its folder
    }

private:
    void write(const QString& name, const QByteArray& text) const { m_site->write(folder + name, text); }
    void given(const QString& name, const QByteArray& text)
    {
        write(name + ".save", text);
        m_contour->load(name, folder + name);
    }
    QByteArray saved(const QString& name) const { return m_site->read(folder + name + ".save"); }
};

QTEST_MAIN(TestContourFiles)

#include "test_contourfiles.moc"
