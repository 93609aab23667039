#include "comparetext.h"
#include "filemanager.h"
#include "fulldisk.h"
#include "guifixture.h"
#include "nextdialog.h"
#include "point.h"

#include <QLineEdit>
#include <QSettings>
#include <QSignalSpy>
#include <QTableWidget>

// Stored points: their table, their files, and the way back to a coordinate.
class TestPoints : public GuiFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void opensOnThePresentPlace()
    {
        tell({{"LX1", 1}, {"LY", 2}, {"A", 3}, {"B", 4}, {"C", 5}, {"D", 6}, {"U1", -7.006}, {"V", 359.999}});
        QStringList shown;
        whenOpen<Point>([&](Point* dialog) {
            for (int row = 0; row < 8; ++row)
                shown << this->row(*dialog, row);
            press(*dialog, "pbStopGoPoint");
            dialog->reject();
        });
        touch("pbPoint");
        QCOMPARE(shown.join(", "), "LX 1.00, LY 2.00, A 3.00, B 4.00, C 5.00, D 6.00, U1 -7.01, V 360.00");
        SENT("STOP_PRG");
        QVERIFY(journal().contains("'Координаты точек'\n[I]Открыто окно 'Координаты точки'\n"));
    }

    // Each row has its channel and its speed.
    void goesToACoordinate()
    {
        const char* const moves[] = {"LX=-12.35 F1200", "LY=-12.35 F1200", "A=-12.35 F180", "B=-12.35 F180",
                                     "C=-12.35 F360",   "D=-12.35 F360",   "U1=-12.35 F60", "V=-12.35 F360"};
        auto dialog = point(QVector<float>(8, -12.345F).toList());
        QSignalSpy told(dialog.get(), &Point::message);
        for (int row = 0; row < 8; ++row) {
            tell({}); // the link lives
            const QString axis = this->row(*dialog, row).section(' ', 0, 0);
            const bool turntable = axis == "V";
            touchRow(*dialog, row);
            press(*dialog, "pbGoToPoint");
            SENT(QString("EXEC_%1(/programs/_point.npg)").arg(turntable ? 2 : 1));
            QCOMPARE(QString(m_site->read("/programs/_point.npg")),
                     (turntable ? "N01 $2\nN02 ARF()\nN03 G90 G01 " : "N01 $1\nN03 G90 G01 ") +
                         QString(moves[row]) + "\nN05 M30\n");
            QCOMPARE(told.takeFirst(),
                     (QVariantList{"[C]Запущено перемещение в точку -12.35 по оси " + axis, true}));
        }
    }

    void nothingWithoutARow()
    {
        auto dialog = point();
        const QSignalSpy told(dialog.get(), &Point::message);
        press(*dialog, "pbGoToPoint");
        QCOMPARE(takeCommands(), QStringList());
        QVERIFY(!QFile::exists(site().path("/programs/_point.npg")));

        // Without the folder there is no program, and no command to run the one of yesterday.
        QVERIFY(QDir(site().path("/programs")).removeRecursively());
        touchRow(*dialog, 0);
        press(*dialog, "pbGoToPoint");
        QCOMPARE(takeCommands(), QStringList());
        const QString trouble = "[A]Файл /programs/_point.npg не записан, программа не запущена";
        QCOMPARE(told, (QList<QVariantList>{{trouble, true}}));
    }

    void files()
    {
        auto dialog = point({152.5F, -0.004F, 3});
        QSignalSpy told(dialog.get(), &Point::message);
        const auto choose = [&](const char* button, const std::function<void(FileManager*)>& answer) {
            whenOpen<FileManager>([=](FileManager* files) {
                const bool opens = files->findChild<QPushButton*>("pbLoad")->isVisible();
                QCOMPARE(opens, !qstrcmp(button, "pbOpenFile"));
                answer(files);
            });
            press(*dialog, button);
        };
        choose("pbSaveFile", [](FileManager* files) {
            files->findChild<QPushButton*>("pbSave_as")->click();
            QTest::keyClicks(files->findChild<QLineEdit*>(), "new\r");
        });
        const QByteArray saved = "LX 152.50\nLY -0.00\nA 3.00\nB 0.00\nC 0.00\nD 0.00\nU1 0.00\nV 0.00\n";
        QCOMPARE(m_site->read("/points/new.point"), saved);
        QCOMPARE(told.takeFirst(),
                 (QVariantList{"[I]Положение механической системы сохранено в файле new.point", true}));

        dialog = point({7});
        QSignalSpy read(dialog.get(), &Point::message);
        choose("pbOpenFile", [](FileManager* files) { files->reject(); });
        dialog->loadFile("/points/", "nowhere");
        QCOMPARE(row(*dialog, 0), "LX 7.00");
        QVERIFY(read.isEmpty());
        choose("pbOpenFile", [](FileManager* files) {
            auto* names = files->findChild<QListWidget*>();
            names->setCurrentItem(names->findItems("new", Qt::MatchExactly).value(0));
            files->findChild<QPushButton*>("pbLoad")->click();
        });
        QCOMPARE(row(*dialog, 0) + row(*dialog, 2), "LX 152.50A 3.00");
        QCOMPARE(dialog->findChild<QLabel*>("lblPosition")->text(), "Точка new");
        QCOMPARE(read.takeFirst(), (QVariantList{"[I]Выполнена загрузка точки из файла new.point", true}));

        const FullDisk full(10);
        dialog->saveFile("/points/", "new");
        QCOMPARE(read.takeFirst(), (QVariantList{"[A]Файл /points/new.point не записан", true}));
        QCOMPARE(m_site->read("/points/new.point"), saved);
    }

    void foreignFiles()
    {
        const std::tuple<QByteArray, QString, QString> files[] = {
            // their first and their last row
            {"LX 1.5\nLY 2\n", "LX 1.50", " 0.00"},
            {"", " 0.00", " 0.00"},
            {"Q 1\nQ 2\nQ 3\nQ 4\nQ 5\nQ 6\nQ 7\nQ 8\n", "Q 1.00", "Q 8.00"},
            {"LX много\n", "LX 0.00", " 0.00"},
            {"LX nan\nLY 1\nA 1\nB 1\nC 1\nD 1\nU1 1\nV inf\n", "LX 0.00", "V 0.00"},
            {QByteArray(1 << 22, 'x'), QString(64 * 1024, 'x') + " 0.00", " 0.00"},
        };
        for (const auto& [text, first, last] : files) {
            m_site->write("/points/p.point", text);
            auto dialog = point();
            dialog->loadFile("/points/", "p");
            QCOMPARE(row(*dialog, 0), first);
            QCOMPARE(row(*dialog, 7), last);

            // The machine's own names go into programs and files.
            touchRow(*dialog, 7);
            press(*dialog, "pbGoToPoint");
            QVERIFY(m_site->read("/programs/_point.npg").contains("G90 G01 V="));
            dialog->saveFile("/points/", "q");
            QVERIFY(m_site->read("/points/q.point").startsWith("LX "));
        }
    }

    void columnsAreKept()
    {
        const auto table = [](const std::unique_ptr<Point>& dialog) {
            return dialog->findChild<QTableWidget*>();
        };
        const auto widths = [&] {
            const auto dialog = point();
            return QSize(table(dialog)->columnWidth(0), table(dialog)->columnWidth(1));
        };
        const QSize usual = widths();
        for (const int column : {0, 1})
            table(point())->setColumnWidth(column, 131 + column);
        QCOMPARE(widths(), QSize(131, 132));
        QSettings settings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
        for (const char* key : {"Point/Width_name", "Point/Width_coord"})
            settings.setValue(key, -5);
        settings.sync();
        QCOMPARE(widths(), usual); // columns that can be seen
    }

private:
    std::unique_ptr<Point> point(const QList<float>& coords = {}) const
    {
        return std::make_unique<Point>(m_gui->drives(), coords, w("pbPoint"));
    }
    static QString row(const Point& dialog, int row)
    {
        const auto* table = dialog.findChild<QTableWidget*>();
        return table->item(row, 0)->text() + ' ' + table->item(row, 1)->text();
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
};

QTEST_MAIN(TestPoints)
#include "test_points.moc"
