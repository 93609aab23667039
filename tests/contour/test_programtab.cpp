#include "programtab.h"

#include "fulldisk.h"
#include "sitefixture.h"

#include <QLabel>
#include <QPlainTextEdit>
#include <QtTest>

// The program of one channel by itself, in a window that is no panel.
class TestProgramTab : public QObject
{
    Q_OBJECT

private slots:
    void filesItIsKeptIn();
    void startsOnItsChannel();
};

namespace {

struct Tab : QWidget
{
    explicit Tab(int channel)
        : program(channel, &edit, &name, this)
    {
        connect(&program, &ProgramTab::message, this,
                [this](const QString& line, bool shown) { told << (shown ? "! " : "") + line; });
        connect(&program, &ProgramTab::command, this, [this](const QString& text) { told << text; });
    }
    // What it told since the last look: the journal, "! " before a line to be shown, and commands.
    QStringList news() { return std::exchange(told, {}); }

    SiteFixture files;
    QPlainTextEdit edit;
    QLabel name;
    ProgramTab program;
    QStringList told;
};

} // namespace

void TestProgramTab::filesItIsKeptIn()
{
    Tab tab(2);
    tab.program.show("N1 $2\nN2 M30\n", "made");
    tab.program.saveFile("turn", "/programs/ch2/turn");
    QCOMPARE(tab.files.read("/programs/ch2/turn.npg"), QByteArray("N1 $2\nN2 M30\n"));
    QCOMPARE(tab.name.text(), QString("turn"));
    QCOMPARE(tab.news(), QStringList("[I]Программа ЧПУ сохранена в файле /programs/ch2/turn.npg"));

    tab.program.show(QString(1000, 'x'), "other");
    {
        const FullDisk full(100);
        tab.program.saveFile("turn", "/programs/ch2/turn");
    }
    tab.program.loadFile("nothing", "/programs/ch2/nothing");
    QCOMPARE(tab.news(), QStringList("! [A]Файл /programs/ch2/turn.npg не записан"));
    QCOMPARE(tab.name.text(), QString("other"));
    QCOMPARE(tab.program.text().size(), 1000);

    tab.program.loadFile("turn", "/programs/ch2/turn");
    QCOMPARE(tab.program.text(), QString("N1 $2\nN2 M30\n"));
    QCOMPARE(tab.name.text(), QString("turn"));
    QCOMPARE(tab.news(), QStringList("[I]Выполнена загрузка программы ЧПУ из файла /programs/ch2/turn.npg"));
}

void TestProgramTab::startsOnItsChannel()
{
    for (const QString channel : {"1", "2", "3"}) {
        const QString made = "/programs/_temp" + channel + ".npg";
        const QString edited =
            channel == "1" ? "/programs/_temp.npg" : made; // a weld's program stays beside it
        const QString pressed = "[I]Нажата кнопка 'Пуск программы' панели 'Канал " + channel + "'";
        Tab tab(channel.toInt());
        QVERIFY(tab.program.write("generated"));
        tab.program.start();
        QCOMPARE(tab.news(), QStringList("EXEC_" + channel + "(" + made + ")"));
        tab.edit.setPlainText("by hand");
        QVERIFY(!tab.program.run("[A]Нельзя"));
        QCOMPARE(tab.news(), QStringList({pressed, "! [A]Нельзя"}));
        QCOMPARE(tab.files.read(made), QByteArray("generated"));
        QVERIFY(tab.program.run());
        QCOMPARE(tab.news(), QStringList({pressed, "EXEC_" + channel + "(" + edited + ")"}));
        QCOMPARE(tab.files.read(edited), QByteArray("by hand"));

        const FullDisk full(1);
        const QString trouble = "! [A]Файл %1 не записан, программа не запущена";
        QVERIFY(!tab.program.write("generated") && !tab.program.run());
        QCOMPARE(tab.news(), QStringList({trouble.arg(made), pressed, trouble.arg(edited)}));
    }
}

QTEST_MAIN(TestProgramTab)

#include "test_programtab.moc"
