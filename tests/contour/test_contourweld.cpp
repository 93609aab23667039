#include "contourfixture.h"
#include "fulldisk.h"
#include "schema.h"
#include "widgets.h"

#include <QPlainTextEdit>
#include <QSettings>
#include <QTextCodec>

// What is laid along the contour and how it is started: technology table, settings and programs.
class TestContourWeld : public ContourTest
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    // --- starting ---

    void stopsAndContinuation()
    {
        m_window->laySampleWeld();
        addStop();
        addStop();
        auto* start = m_window->find<QAbstractButton>("pbGcode");
        QVERIFY(m_window->linkUp());
        QString expected;
        const auto press = [&](const char* label) {
            QCOMPARE(start->text(), label);
            const bool whole = start->text() == "ПУСК";
            m_window->press("pbGcode");
            QTest::mouseDClick(start, Qt::LeftButton); // the second touch of an impatient finger
            QTest::mouseRelease(start, Qt::LeftButton);
            expected += QString(expected.isEmpty() ? "" : ", ") + (whole ? "3 _temp3, 1 _temp1" : "1 _temp1");
            QTRY_COMPARE(m_window->commands(), expected);
        };
        press("ПУСК");
        QVERIFY(m_window->journal.contains("[I]Нажата кнопка 'ПУСК' панели Технология"));
        QCOMPARE(m_window->find<QPlainTextEdit>("teGcode")->toPlainText(), program("_temp1"));
        QCOMPARE(m_window->text("lbProgName1 lbProgName3"), "Перемещение манипулятора Технология");
        m_contour->onChannel1State(3);
        QCOMPARE(start->text(), "ПУСК"); // while the program still runs
        m_contour->onChannel1State(1);
        press("ДАЛЕЕ");
        press("ДАЛЕЕ");
        press("ПУСК"); // the next weld begins from its first block
        QVERIFY(program("_temp1").contains("N5 GOTO N6\n"));
        QCOMPARE(start->text(), "ДАЛЕЕ");
        m_window->choose("pbNew", 0); // nothing of the stopped weld can go on with another contour
        QCOMPARE(start->text(), "ПУСК");
    }

    // No channel is left waiting for one whose program is missing, and the next press starts the same.
    void allChannelsOrNone()
    {
        m_window->laySampleWeld();
        addStop();
        QVERIFY(m_window->linkUp());
        const QString path = site().path("/programs/_temp1.npg");
        for (const char* commands : {"3 _temp3, 1 _temp1", "3 _temp3, 1 _temp1, 1 _temp1"}) {
            const QString label = m_window->text("pbGcode");
            QFile::remove(path);
            QVERIFY(QDir().mkdir(path));
            QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^file not written"));
            m_window->press("pbGcode");
            QCOMPARE(told(), "[A]Файл /programs/_temp1.npg не записан, программа не запущена");
            QCOMPARE(m_window->text("pbGcode"), label);
            QVERIFY(QDir().rmdir(path));
            m_window->press("pbGcode");
            QTRY_COMPARE(m_window->commands(), commands);
        }
    }

    // Touches everything that can be touched on a machine that never had a contour.
    void withoutAContour()
    {
        QTimer answers;
        connect(&answers, &QTimer::timeout, this, [] {
            if (QWidget* menu = QApplication::activePopupWidget())
                menu->close();
            else if (QWidget* top = QApplication::activeModalWidget())
                top->findChild<QDialog*>()->reject();
        });
        answers.start(5);
        int touched = 0;
        for (int tab = 0; tab < m_contour->count(); ++tab) {
            m_contour->setCurrentIndex(tab);
            for (QWidget* widget : m_contour->widget(tab)->findChildren<QWidget*>()) {
                if (widget->isVisible() && widget->isEnabled() &&
                    (qobject_cast<QAbstractButton*>(widget) || qobject_cast<PoLabel*>(widget))) {
                    QTest::mouseClick(widget, Qt::LeftButton);
                    ++touched;
                }
            }
        }
        answers.stop();
        QVERIFY(touched > 15);
        QVERIFY(!m_contour->schema());
        QVERIFY(m_window->journal.contains("[A]Ошибка! Контур не создан, пуск невозможен!"));
        QVERIFY(!m_window->find("pbAddTechPoint")->isEnabled());
        m_window->choose("pbNew", 0);
        QVERIFY(m_window->find("pbAddTechPoint")->isEnabled());
    }

    void editedProgramIsRun()
    {
        QVERIFY(m_window->linkUp());
        edit("N1 $");
        for (const char* button : {"pbRun", "pbRun_2", "pbRun_3"})
            m_window->press(button);
        QTRY_COMPARE(m_window->commands(), "1 _temp, 2 _temp2, 3 _temp3");
        QCOMPARE(program("_temp") + program("_temp2") + program("_temp3"), "N1 $1N1 $2N1 $3");
        QCOMPARE(m_window->journal.filter("[I]Нажата кнопка 'Пуск программы' панели 'Канал ").size(), 3);
        QCOMPARE(program("_temp1"), ""); // the place of a weld's program
    }

    void recordOfAProgram()
    {
        m_window->laySampleWeld();
        m_window->press("pbGcode"); // a weld before it leaves nothing of its form
        m_contour->onChannel1State(2);
        edit("N1 $");
        {
            const FullDisk full(1);
            m_window->press("pbRun"); // nothing was started that could be recorded
            QCOMPARE(record(), "");
            QCOMPARE(told(), "[A]Файл /programs/_temp.npg не записан, программа не запущена");
        }
        m_window->tech()->setCurrentCell(2, 0);
        m_window->press("pbRun");
        QVERIFY(record().endsWith("\n0.0;0.00;100.00;0.00;0.00;0.00;0.00;0.00;0.00;0.00;")); // there at once
        QCOMPARE(m_window->tech()->currentRow(), 0);
        QTRY_COMPARE(m_window->tech()->currentRow(), 3); // two samples: the channel never rose
        m_window->tech()->setCurrentCell(2, 0);
        QTest::qWait(150); // it is closed: no tick comes any more
        QVERIFY(record().contains(";0.1;0.00;100.00;") && !record().contains(";0.2;"));
        QCOMPARE(m_window->tech()->currentRow(), 2);

        m_contour->onChannel1State(3);
        m_window->press("pbRun");
        m_window->press("pbRun"); // a record follows one run to its end
        QCOMPARE(told(), "[A]Ошибка! Паспорт предыдущего пуска ещё не закрыт, пуск невозможен!");
    }

    // No button starts such a record yet.
    void recordOfAWeld()
    {
        m_window->newLine({{0, 0, 0}, {3, 0, 0}});
        m_window->choose("pbRing", 0);
        m_window->enter("nrings", "2");
        m_window->enter("weldSpeed", "1200");
        m_contour->addTechPoint(2, 20, 1200);
        m_contour->addComment("Технол.останов");
        m_contour->addTechPoint(1, 0, 1200);
        m_window->press("pbGcode");
        QCOMPARE(m_window->text("pbGcode"), "ДАЛЕЕ");
        edit("N");
        m_contour->onChannel3State(3);
        m_contour->onAxisMoving(true);
        QList<int> rows;
        connect(m_window->tech(), &QTableWidget::currentCellChanged, this, [&rows](int row) { rows << row; });
        m_contour->startPassport();
        const QString head = record();
        QVERIFY(head.startsWith("\"Программа сварки\"\n\"Дата: "));
        QVERIFY(head.contains(
            "\n\"Длина прохода: 6.00 мм\"\n\"Число проходов: 2\"\n\"Скорость: 1200.0 мм/мин\"\n\n"
            "\"Контур:\"\n\"0.00 0.00 0.00 Прямая \"\n\"3.00 0.00 0.00 Прямая \"\n"
            "\"Технология:\"\n\"+ 0.00 0.0 700 1200.0 2 \";\n\"+ 2.00 20.0 700 1200.0 2 \";\n"
            "\"- Технол.останов\";\n\"+ 3.00 0.0 700 1200.0 2 \";\n"
            "\"+ 12.00 0.0 700 1200.0 2 \";\n\n"
            "\"ПРОГРАММА ПЕРЕМЕЩЕНИЯ (канал 1)\"\n\"N1\";\n"
            "\"ПРОГРАММА ВРАЩЕНИЯ ДЕТАЛИ (канал 2)\"\n\"N2\";\n\n"
            "\"ПРОГРАММА СВАРКИ (канал 3)\"\n\"N3\";\n\n\"Время\";"));
        QVERIFY(head.endsWith(";1.2e-03;\n"));
        QTRY_VERIFY(record().contains("\n0.7;12.00;3.00;0.00;")); // both passes, and no further
        QCOMPARE(rows, QList<int>({0, 1, 3, 4}));
        m_contour->onChannel1State(1); // which channel 3 outlives
        m_window->tech()->setCurrentCell(1, 0);
        QTRY_VERIFY(record().contains("\n1.1;12.00;"));
        m_contour->onChannel3State(1);
        QTRY_COMPARE(m_window->tech()->currentRow(), 4);
        QCOMPARE(m_window->text("pbGcode"), "ПУСК");
    }

    // --- technology ---

    void techRows()
    {
        m_window->laySampleWeld();
        QTableWidget* table = m_window->tech();
        for (const int row : {0, table->rowCount() - 1}) {
            table->setCurrentCell(row, 0);
            QCOMPARE(m_window->find("pbInsTechPoint")->isEnabled(), row > 0);
            QVERIFY(!m_window->find("pbDelTechPoint")->isEnabled());
        }
        m_contour->addPointToTech(50);
        table->setCurrentCell(3, 0);
        m_window->press("pbDelTechPoint");
        m_window->touchCell(table, 1, 0, {Answers::number("12.345")});
        m_window->touchCell(table, 0, 0); // the ends of the path are not asked for
        QVERIFY(!QApplication::activeModalWidget());
        QCOMPARE(tech(0), "0.00 12.35 50.00 100.00");

        // A row put in takes the default for X twice.
        m_contour->setTechSettings(false, true, true, true, 650, 1.5, -2, -1, -1);
        table->setCurrentCell(2, 1);
        m_window->press("pbInsTechPoint");
        QCOMPARE(
            tech(0) + '|' + tech(1) + '|' + tech(3) + '|' + tech(4),
            "0.00 12.35 0.00 50.00 100.00|0.0 20.0 0.0 0.0 0.0|1.5 1.5 1.5 1.5 1.5|-2.0 -2.0 1.5 -2.0 -2.0");
        QCOMPARE(tech(2), "650 650 650 650 650");

        // A table that cannot be gone is told and marked; it forbids nothing.
        m_window->journal.clear();
        for (const char* path : {"45", "120"}) // of 100
            m_window->touchCell(table, 2, 0, {Answers::number(path)});
        QCOMPARE(table->item(2, 0)->foreground().color(), QColor(Qt::red));
        m_window->touchCell(table, 2, 0, {Answers::number("40")});
        QCOMPARE(table->item(2, 0)->foreground().color(), QColor(Qt::black));
        QCOMPARE(m_window->journal.filter("[A]").join('|'), "[A]Ошибка заполнения технологической таблицы!");
        QVERIFY(m_window->find("pbGcode")->isEnabled());

        // What a comment switches off is not in the program.
        m_window->laySampleWeld();
        m_contour->addComment("Прихватки");
        m_contour->addTechPoint(1, 5, 600);
        for (const bool on : {false, true}) {
            m_window->touchCell(table, 3, 0);
            m_window->press("pbGcode");
            QCOMPARE(program("_temp3").contains("IR=5.0"), on);
        }
    }

    void tooMuchIsNotMade()
    {
        QVERIFY(m_window->linkUp());
        ringOf99("41");
        m_contour->addContourPoint(true, true, 1, 1);
        QCOMPARE(m_window->tech()->rowCount(), 2);
        QCOMPARE(told(), "[A]Точки не добавлены: в таблице было бы строк 4061, допустимо 4000");
        m_window->enter("nrings", "40");
        m_window->tech()->setCurrentCell(1, 0); // the end of the seam, with the rows before it
        m_contour->addContourPoint(true, true, 1, 1);
        QCOMPARE(m_window->tech()->rowCount(), 3962);
        QCOMPARE(m_window->tech()->currentRow(), 3961);

        ringOf99("1000");
        m_window->press("pbGcode");
        QCOMPARE(told(), "[A]Программа не создана: было бы строк 198056, допустимо 15000. "
                         "Уменьшите число точек или проходов");
        QCOMPARE(m_window->find<QPlainTextEdit>("teGcode_3")->toPlainText(), "");
        QVERIFY(!QFile::exists(site().path("/programs/_temp3.npg")));
        m_window->enter("nrings", "75");
        m_window->press("pbGcode");
        QTRY_COMPARE(m_window->commands(), "3 _temp3, 2 _temp2, 1 _temp1");
    }

    void rasterOfARow()
    {
        m_window->laySampleWeld();
        const char* const rectangle = "Прямоугольник; 0.10x0.00; 0; 1; 0.00x0.00; 0; 1";
        const std::pair<QList<Answer>, const char*> touches[] = {
            {{Answers::button("TRtype"), Answers::entry(5), Answers::button("TRamplXPlus"),
              Answers::button("TRfreqPlus"), Answers::button("pbTRrotation"), Answers::button("pbOn")},
             rectangle},
            {{Answers::button("pbOn")}, rectangle}, // opens with what is stored
            {{Answers::button("pbClear")}, ""},
            {{Answers::button("pbOff")}, "ВЫКЛ"},
            {{Answers::cancel()}, "ВЫКЛ"}};
        for (const auto& [answers, shown] : touches) {
            m_window->touchCell(m_window->tech(), 1, 6, answers);
            QCOMPARE(tech(1, 6), shown);
        }
    }

    void settingsDialog()
    {
        m_window->laySampleWeld();
        m_window->journal.clear();
        const auto look = Answers::at<QWidget>("frmRoundParam", [](QWidget* round) {
            QVERIFY(!round->isEnabled());
            QString shown;
            for (const char* name : {"IfTitle", "If", "IxTitle", "Ix", "IyTitle", "Iy"})
                shown += Answers::shown<QLabel>(name)->text() + '|';
            // What was typed before a cancel is forgotten.
            QCOMPARE(shown, "Ток фокуса, мА|700|Ток отклонения по X, мА|0.0|Ток отклонения по Y, мА|0.0|");
        });
        for (const char* end : {"pbSettingsCancel", "pbSettingsDone"}) {
            QList<Answer> answers{look};
            answers << typed("If", "650") << typed("Ix", "1.25") << typed("Iy", "-2");
            for (const char* name : {"cbTestMode", "cbFocus", "cbYokeY", end})
                answers << Answers::button(name);
            m_window->press("pbSettings", answers);
            const bool done = end == QByteArray("pbSettingsDone");
            QCOMPARE(m_window->withoutCurrent, done);
            QCOMPARE(m_window->tech()->isColumnHidden(2), !done);
            QCOMPARE(tech(1, 2), done ? "650" : "700");
            QCOMPARE(tech(1, 4), done ? "-2.0" : "0.0");
        }
        const QStringList told{"Задан новый ток фокусировки для контура - 650 мА",
                               "Задан новый ток отклонения по X для контура - 1.25 мА",
                               "Задан новый ток отклонения по Y для контура - -2 мА"};
        QCOMPARE(m_window->journal, told + told);
    }

    // The seam length in the table must be that of the plane that the programs are written for.
    void anotherPlaneIsAnotherWay()
    {
        m_window->newRound("100", {{0, 0, 0}, {30, 0, 40}});
        QCOMPARE(m_window->text("length"), "30.47");
        m_contour->setTechSettings(false, false, false, false, 700, 0, 0, 100, 1);
        QCOMPARE(m_window->text("plane length"), "XZ 52.36");
        QCOMPARE(tech(1, 0), "52.36");
    }

    // --- rights, settings ---

    void rightsOfTheUser()
    {
        m_contour->onUserChanged(1);
        m_contour->setCurrentIndex(3);
        m_contour->onUserChanged(2);
        QCOMPARE(m_contour->currentIndex(), 0);
        for (int tab = 0; tab < 5; ++tab)
            QCOMPARE(m_contour->isTabEnabled(tab), tab < 2);
        m_contour->onUserChanged(-1); // a cancelled change of user
        QVERIFY(m_contour->isTabEnabled(4));
    }

    void settingsSurvive()
    {
        m_window->laySampleWeld();
        m_window->enter("contourSpeed", "450.5");
        m_contour->setTechSettings(false, true, false, true, 640, 1.5, -2, -1, -1);
        m_window->points()->setColumnWidth(1, 130);
        m_window->tech()->setColumnWidth(0, 95);
        m_contour->setCurrentIndex(1);
        restart();
        QCOMPARE(m_contour->currentIndex(), 1);
        QCOMPARE(m_window->text("contourSpeed weldSpeed"), "450.5 600.0");
        QCOMPARE(m_window->points()->columnWidth(1), 130);
        QCOMPARE(m_window->tech()->columnWidth(0), 95);
        QVERIFY(!m_window->tech()->isColumnHidden(2) && m_window->tech()->isColumnHidden(3));
        QCOMPARE(points(0), "0.00 100.00"); // the contour comes back as well
        const QSettings settings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
        QCOMPARE(settings.value("Contour/Width_LXLYZ_LY").toInt(), 130);
        QCOMPARE(settings.value("Contour/Iy").toFloat(), -2.0f);
    }

private:
    void addStop() // with a row behind it
    {
        m_window->choose("pbTemplate", 2);
        m_contour->addTechPoint(2, 10, 600);
    }
    // Passes of a ring of 99 points.
    void ringOf99(const char* passes)
    {
        m_window->newRing("100", "99");
        m_window->press("pbRing");
        m_window->enter("nrings", passes);
    }
    void edit(const QString& prefix) // the programs of the channels: their numbers behind it
    {
        int channel = 0;
        for (const char* name : {"teGcode", "teGcode_2", "teGcode_3"})
            m_window->find<QPlainTextEdit>(name)->setPlainText(prefix + QString::number(++channel));
    }
    QString record() const
    {
        const QString folder = "/home/oper/bin/passports/";
        const QStringList files =
            QDir(site().path(folder)).entryList({"*-Программа сварки.csv"}, QDir::Files);
        return QTextCodec::codecForName("Windows-1251")->toUnicode(m_site->read(folder + files.value(0)));
    }
};

QTEST_MAIN(TestContourWeld)

#include "test_contourweld.moc"
