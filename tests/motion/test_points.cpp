#include "filemanager.h"
#include "fulldisk.h"
#include "guifixture.h"
#include "plant/controller.h"
#include "point.h"

#include <QLineEdit>
#include <QListWidget>
#include <QSettings>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTimer>

#include <cmath>

// Stored points: their table, their files, and the way back to a coordinate.
class TestPoints : public GuiFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }
    void opensOnThePresentPlace();
    void goesToACoordinate_data();
    void goesToACoordinate();
    void nothingWithoutARow();
    void fileIsWrittenAndRead();
    void fileIsChosen();
    void foreignFiles_data();
    void foreignFiles();
    void filesThatCannotBeOpenedOrWritten();
    void columnsAreKept();

private:
    std::unique_ptr<Point> point(const QList<float>& coords = {}) const
    {
        return std::make_unique<Point>(m_gui->drives(), coords, w("pbPoint"));
    }
    static QString cell(const Point& dialog, int row, int column)
    {
        return dialog.findChild<QTableWidget*>()->item(row, column)->text();
    }
    static void press(const Point& dialog, const char* button)
    {
        QTest::mouseClick(dialog.findChild<QPushButton*>(button), Qt::LeftButton);
    }
    static void touchRow(const Point& dialog, int row)
    {
        auto* table = dialog.findChild<QTableWidget*>();
        const QPoint at = table->visualItemRect(table->item(row, 1)).center();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, at);
        QCOMPARE(table->selectedItems().size(), 2); // the whole row tells which it is
    }
    void write(const QByteArray& text) const
    {
        QFile file(site().path(QStringLiteral("/points/p.point")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
};

void TestPoints::opensOnThePresentPlace()
{
    tell({{"LX1", 1}, {"LY", 2}, {"A", 3}, {"B", 4}, {"C", 5}, {"D", 6}, {"U1", -7.006}, {"V", 359.999}});
    QStringList shown;
    QTimer::singleShot(0, this, [&] {
        auto* dialog = m_gui->findChild<Point*>();
        QVERIFY(dialog);
        for (int row = 0; row < 8; ++row)
            shown << cell(*dialog, row, 0) + ' ' + cell(*dialog, row, 1);
        press(*dialog, "pbStopGoPoint");
        dialog->reject();
    });
    touch("pbPoint");
    QCOMPARE(shown, (QStringList{"LX 1.00", "LY 2.00", "A 3.00", "B 4.00", "C 5.00", "D 6.00", "U1 -7.01",
                                 "V 360.00"}));
    SENT("STOP_PRG");
    QVERIFY(journal().contains("[I]Нажата кнопка 'Координаты точек'\n[I]Открыто окно 'Координаты точки'\n"));
}

void TestPoints::goesToACoordinate_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("channel");
    QTest::addColumn<QByteArray>("program");
    const char* const moves[] = {"N03 G90 G01 LX=-12.35 F1200", "N03 G90 G01 LY=-12.35 F1200",
                                 "N03 G90 G01 A=-12.35 F180",   "N03 G90 G01 B=-12.35 F180",
                                 "N03 G90 G01 C=-12.35 F360",   "N03 G90 G01 D=-12.35 F360",
                                 "N03 G90 G01 U1=-12.35 F60"};
    for (int row = 0; row < 7; ++row)
        QTest::addRow("%s", moves[row]) << row << 1 << QByteArray("N01 $1\n") + moves[row] + "\nN05 M30\n";
    QTest::newRow("V") << 7 << 2 << QByteArray("N01 $2\nN02 ARF()\nN03 G90 G01 V=-12.35 F360\nN05 M30\n");
}

void TestPoints::goesToACoordinate()
{
    QFETCH(int, row);
    QFETCH(int, channel);
    auto dialog =
        point(QList<float>{-12.345F, -12.345F, -12.345F, -12.345F, -12.345F, -12.345F, -12.345F, -12.345F});
    const QString axis = cell(*dialog, row, 0);
    QSignalSpy told(dialog.get(), &Point::message);
    touchRow(*dialog, row);
    press(*dialog, "pbGoToPoint");
    const QString exec = QStringLiteral("EXEC_%1(/programs/_point.npg)").arg(channel);
    SENT(exec);
    QTEST(m_site->read("/programs/_point.npg"), "program");
    QCOMPARE(
        told.value(0),
        (QVariantList{QStringLiteral("[C]Запущено перемещение в точку -12.35 по оси %1").arg(axis), true}));

    using namespace plant;
    MotionController controller(m_site->root());
    QCOMPARE(controller.command(QStringLiteral("DRIVE ON")), QString());
    for (int i = 0; i < 200; ++i)
        controller.step(0.01);
    QCOMPARE(controller.command(exec), QString());
    for (int i = 0; i < 9000; ++i)
        controller.step(0.01);
    QCOMPARE(controller.channelState(channel), ChannelState::Idle);
    const double place = controller.axes().position(*axisByName(axis));
    QVERIFY2(std::abs(place - (axis == "V" ? 360 - 12.35 : -12.35)) < 0.01,
             qPrintable(QString::number(place)));
}

void TestPoints::nothingWithoutARow()
{
    auto dialog = point();
    QSignalSpy told(dialog.get(), &Point::message);
    press(*dialog, "pbGoToPoint");
    QCOMPARE(takeCommands(), QStringList());
    QVERIFY(!QFile::exists(site().path("/programs/_point.npg")));

    // Without the folder there is no program, and no command to run the one of yesterday.
    QVERIFY(QDir(site().path("/programs")).removeRecursively());
    touchRow(*dialog, 0);
    press(*dialog, "pbGoToPoint");
    QCOMPARE(takeCommands(), QStringList());
    const QVariantList trouble{
        QStringLiteral("[A]Файл /programs/_point.npg не записан, программа не запущена"), true};
    QCOMPARE(told, QList<QVariantList>{trouble});
}

void TestPoints::fileIsWrittenAndRead()
{
    auto dialog = point({152.5F, -0.004F, 3});
    QSignalSpy told(dialog.get(), &Point::message);
    dialog->saveFile("/points/", "p");
    QCOMPARE(m_site->read("/points/p.point"),
             QByteArray("LX 152.50\nLY -0.00\nA 3.00\nB 0.00\nC 0.00\nD 0.00\nU1 0.00\nV 0.00\n"));

    auto other = point();
    QSignalSpy read(other.get(), &Point::message);
    other->loadFile("/points/", "p");
    QCOMPARE(cell(*other, 0, 0) + cell(*other, 0, 1), QStringLiteral("LX152.50"));
    QCOMPARE(cell(*other, 2, 1), QStringLiteral("3.00"));
    QCOMPARE(told.value(0),
             (QVariantList{"[I]Положение механической системы сохранено в файле p.point", true}));
    QCOMPARE(read.value(0), (QVariantList{"[I]Выполнена загрузка точки из файла p.point", true}));
}

void TestPoints::fileIsChosen()
{
    auto dialog = point({7});
    bool opens = false;
    const auto choose = [&](const char* button, const std::function<void(FileManager*)>& answer) {
        QTimer::singleShot(0, this, [&] {
            auto* files = dialog->window()->findChild<FileManager*>();
            QVERIFY(files);
            opens = files->findChild<QPushButton*>("pbLoad")->isVisible();
            answer(files);
        });
        press(*dialog, button);
    };
    choose("pbSaveFile", [](FileManager* files) {
        QTest::mouseClick(files->findChild<QPushButton*>("pbSave_as"), Qt::LeftButton);
        QTest::keyClicks(files->findChild<QLineEdit*>(), "new");
        QTest::keyClick(files->findChild<QLineEdit*>(), Qt::Key_Return);
    });
    QVERIFY(!opens && m_site->read("/points/new.point").startsWith("LX 7.00\n"));

    write("LX 8\n");
    choose("pbOpenFile", [](FileManager* files) { files->reject(); });
    QCOMPARE(cell(*dialog, 0, 1), QStringLiteral("7.00"));
    choose("pbOpenFile", [](FileManager* files) {
        auto* names = files->findChild<QListWidget*>();
        names->setCurrentItem(names->findItems("p", Qt::MatchExactly).value(0));
        QTest::mouseClick(files->findChild<QPushButton*>("pbLoad"), Qt::LeftButton);
    });
    QVERIFY(opens && cell(*dialog, 0, 1) == QStringLiteral("8.00"));
}

void TestPoints::foreignFiles_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("last");
    QTest::newRow("few lines") << QByteArray("LX 1.5\nLY 2\n") << "LX 1.50"
                               << " 0.00";
    QTest::newRow("empty") << QByteArray() << " 0.00"
                           << " 0.00";
    QTest::newRow("other names") << QByteArray("Q 1\nQ 2\nQ 3\nQ 4\nQ 5\nQ 6\nQ 7\nQ 8\n") << "Q 1.00"
                                 << "Q 8.00";
    QTest::newRow("no number") << QByteArray("LX много\n") << "LX 0.00"
                               << " 0.00";
    QTest::newRow("not a number") << QByteArray("LX nan\nLY 1\nA 1\nB 1\nC 1\nD 1\nU1 1\nV inf\n")
                                  << "LX 0.00"
                                  << "V 0.00";
    QTest::newRow("endless") << QByteArray(1 << 22, 'x') << QString(64 * 1024, 'x') + " 0.00"
                             << " 0.00";
}

void TestPoints::foreignFiles()
{
    QFETCH(QByteArray, text);
    write(text);
    auto dialog = point();
    dialog->loadFile("/points/", "p");
    QTEST(cell(*dialog, 0, 0) + ' ' + cell(*dialog, 0, 1), "first");
    QTEST(cell(*dialog, 7, 0) + ' ' + cell(*dialog, 7, 1), "last");

    // The machine's own names go into programs and files.
    touchRow(*dialog, 7);
    press(*dialog, "pbGoToPoint");
    QVERIFY(m_site->read("/programs/_point.npg").contains("G90 G01 V="));
    dialog->saveFile("/points/", "q");
    QVERIFY(m_site->read("/points/q.point").startsWith("LX "));
}

void TestPoints::filesThatCannotBeOpenedOrWritten()
{
    auto dialog = point({5});
    QSignalSpy told(dialog.get(), &Point::message);
    dialog->loadFile("/points/", "nowhere");
    QCOMPARE(told.size(), 0);
    QCOMPARE(cell(*dialog, 0, 1), QStringLiteral("5.00"));

    write("LX 8\n");
    const FullDisk full(10);
    dialog->saveFile("/points/", "p");
    QCOMPARE(told.takeFirst(), (QVariantList{QStringLiteral("[A]Файл /points/p.point не записан"), true}));
    QCOMPARE(m_site->read("/points/p.point"), QByteArray("LX 8\n"));
}

void TestPoints::columnsAreKept()
{
    const auto width = [this](int column) {
        return point()->findChild<QTableWidget*>()->columnWidth(column);
    };
    const int usual[] = {width(0), width(1)};
    for (const int column : {0, 1}) {
        for (const int kept : {90, 131, 400}) {
            point()->findChild<QTableWidget*>()->setColumnWidth(column, kept);
            QCOMPARE(width(column), kept);
        }
    }
    QSettings settings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
    for (const char* key : {"Point/Width_name", "Point/Width_coord"})
        settings.setValue(key, -5);
    settings.sync();
    QVERIFY(width(0) == usual[0] && width(1) == usual[1]); // columns that can be seen
}

QTEST_MAIN(TestPoints)
#include "test_points.moc"
