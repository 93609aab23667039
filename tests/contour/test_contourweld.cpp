#include "contourfixture.h"
#include "deathtest.h"
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

    void stopsAndContinuation();
    void allChannelsOrNone();
    void withoutAContour();
    void editedProgramIsRun();
    void recordOfAProgram();
    void recordOfAWeld();

    void techRows();
    void pointsOfTheContourInTheTable();
    void manyPointsAtOnce();
    void tooLongProgramIsNotMade();
    void invalidTableIsToldAndMarked();
    void commentSwitchesItsBlock();
    void insertedRowTakesTheXDefaultTwice();
    void rasterOfARow();
    void settingsDialog();
    void anotherPlaneIsAnotherWay();

    void rightsOfTheUser();
    void settingsSurvive();

private:
    void ringOf99(const char* passes);
    QString record() const; // the whole file of the only one
    QStringList xs() const { return m_window->column(m_window->points(), 0); }
};

// --- starting ---

void TestContourWeld::stopsAndContinuation()
{
    laySampleWeld(*m_window);
    for (int i = 0; i < 2; ++i) {
        m_window->choose("pbTemplate", 2);
        m_contour->addTechPoint(2, 10, 600);
    }
    auto* start = m_window->find<QAbstractButton>("pbGcode");
    QVERIFY(m_window->linkUp());
    const QStringList whole{"EXEC_3(/programs/_temp3.npg)", "EXEC_1(/programs/_temp1.npg)"};
    const QStringList motion{"EXEC_1(/programs/_temp1.npg)"};
    QStringList expected;
    const auto press = [&](const QString& label, const QStringList& commands) {
        QCOMPARE(start->text(), label);
        m_window->press("pbGcode");
        QTest::mouseDClick(start, Qt::LeftButton); // the second touch of an impatient finger
        QTest::mouseRelease(start, Qt::LeftButton);
        expected += commands;
        QTRY_COMPARE(m_window->commands(), expected);
    };
    press(QStringLiteral("ПУСК"), whole);
    QVERIFY(m_window->journal.contains(QStringLiteral("[I]Нажата кнопка 'ПУСК' панели Технология")));
    QCOMPARE(m_window->find<QPlainTextEdit>("teGcode")->toPlainText().toUtf8(),
             m_site->read(QStringLiteral("/programs/_temp1.npg")));
    QCOMPARE(m_window->text("lbProgName1"), QStringLiteral("Перемещение манипулятора"));
    QCOMPARE(m_window->text("lbProgName3"), QStringLiteral("Технология"));
    m_contour->onChannel1State(3);
    QCOMPARE(start->text(), QStringLiteral("ПУСК")); // while the program still runs
    m_contour->onChannel1State(1);
    press(QStringLiteral("ДАЛЕЕ"), motion);
    press(QStringLiteral("ДАЛЕЕ"), motion);
    press(QStringLiteral("ПУСК"), whole); // the next weld begins from its first block
    QVERIFY(m_site->read(QStringLiteral("/programs/_temp1.npg")).contains("N5 GOTO N6\n"));
    QCOMPARE(start->text(), QStringLiteral("ДАЛЕЕ"));
    m_window->choose("pbNew", 0); // nothing of the stopped weld can go on with another contour
    QCOMPARE(start->text(), QStringLiteral("ПУСК"));
}

// No channel is left waiting for one whose program is missing, and the next press starts the same.
void TestContourWeld::allChannelsOrNone()
{
    laySampleWeld(*m_window);
    m_window->choose("pbTemplate", 2);
    m_contour->addTechPoint(2, 10, 600);
    QVERIFY(m_window->linkUp());
    QStringList expected;
    for (const QStringList& start :
         {QStringList{"EXEC_3(/programs/_temp3.npg)", "EXEC_1(/programs/_temp1.npg)"},
          QStringList{"EXEC_1(/programs/_temp1.npg)"}}) {
        const QString path = site().path(QStringLiteral("/programs/_temp1.npg"));
        const QString label = m_window->find<QAbstractButton>("pbGcode")->text();
        QFile::remove(path);
        QVERIFY(QDir().mkdir(path));
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("^file not written")));
        m_window->press("pbGcode");
        QCOMPARE(m_window->journal.last(),
                 QStringLiteral("[A]Файл /programs/_temp1.npg не записан, программа не запущена"));
        QCOMPARE(m_window->find<QAbstractButton>("pbGcode")->text(), label);
        QVERIFY(QDir().rmdir(path));
        m_window->press("pbGcode");
        expected += start;
        QTRY_COMPARE(m_window->commands(), expected);
    }
}

// Touches everything that can be touched on a machine that never had a contour.
void TestContourWeld::withoutAContour()
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
    QVERIFY(m_window->journal.contains(QStringLiteral("[A]Ошибка! Контур не создан, пуск невозможен!")));
    QVERIFY(!m_window->find("pbAddTechPoint")->isEnabled());
    m_window->choose("pbNew", 0);
    QVERIFY(m_window->find("pbAddTechPoint")->isEnabled());
}

void TestContourWeld::editedProgramIsRun()
{
    QVERIFY(m_window->linkUp());
    m_window->find<QPlainTextEdit>("teGcode")->setPlainText("N1 $1");
    m_window->find<QPlainTextEdit>("teGcode_2")->setPlainText("N1 $2");
    m_window->find<QPlainTextEdit>("teGcode_3")->setPlainText("N1 $3");
    for (const char* button : {"pbRun", "pbRun_2", "pbRun_3"})
        m_window->press(button);
    QTRY_COMPARE(m_window->commands(),
                 QStringList({"EXEC_1(/programs/_temp.npg)", "EXEC_2(/programs/_temp2.npg)",
                              "EXEC_3(/programs/_temp3.npg)"}));
    QCOMPARE(m_site->read("/programs/_temp.npg") + m_site->read("/programs/_temp2.npg") +
                 m_site->read("/programs/_temp3.npg"),
             QByteArray("N1 $1N1 $2N1 $3"));
}

QString TestContourWeld::record() const
{
    const QString folder = QStringLiteral("/home/oper/bin/passports/");
    const QStringList files = QDir(site().path(folder)).entryList({"*-Программа сварки.csv"}, QDir::Files);
    return QTextCodec::codecForName("Windows-1251")->toUnicode(m_site->read(folder + files.value(0)));
}

void TestContourWeld::recordOfAProgram()
{
    laySampleWeld(*m_window);
    m_window->press("pbGcode"); // a weld before it leaves nothing of its form
    m_contour->onChannel1State(2);
    m_window->find<QPlainTextEdit>("teGcode")->setPlainText("N1 $1");
    {
        const FullDisk full(1);
        m_window->press("pbRun"); // nothing was started that could be recorded
        QCOMPARE(record(), QString());
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
    QCOMPARE(m_window->journal.last(),
             QStringLiteral("[A]Ошибка! Паспорт предыдущего пуска ещё не закрыт, пуск невозможен!"));
}

// No button starts such a record yet.
void TestContourWeld::recordOfAWeld()
{
    m_window->choose("pbNew", 0);
    m_window->teach(0, 0, 0);
    m_window->teach(3, 0, 0);
    m_window->choose("pbRing", 0);
    m_window->enter("nrings", "2");
    m_window->enter("weldSpeed", "1200");
    m_contour->addTechPoint(2, 20, 1200);
    m_contour->addComment(QStringLiteral("Технол.останов"));
    m_contour->addTechPoint(1, 0, 1200);
    m_window->press("pbGcode");
    QCOMPARE(m_window->find<QAbstractButton>("pbGcode")->text(), QStringLiteral("ДАЛЕЕ"));
    for (const char* edit : {"teGcode", "teGcode_2", "teGcode_3"})
        m_window->find<QPlainTextEdit>(edit)->setPlainText(edit);
    m_contour->onChannel3State(3);
    m_contour->onAxisMoving(true);
    QList<int> rows;
    connect(m_window->tech(), &QTableWidget::currentCellChanged, this, [&rows](int row) { rows << row; });
    m_contour->startPassport();
    const QString head = record();
    QVERIFY(head.startsWith(QStringLiteral("\"Программа сварки\"\n\"Дата: ")));
    QVERIFY(head.contains(
        QStringLiteral("\n\"Длина прохода: 6.00 мм\"\n\"Число проходов: 2\"\n\"Скорость: 1200.0 мм/мин\"\n\n"
                       "\"Контур:\"\n\"0.00 0.00 0.00 Прямая \"\n\"3.00 0.00 0.00 Прямая \"\n"
                       "\"Технология:\"\n\"+ 0.00 0.0 700 1200.0 2 \";\n\"+ 2.00 20.0 700 1200.0 2 \";\n"
                       "\"- Технол.останов\";\n\"+ 3.00 0.0 700 1200.0 2 \";\n"
                       "\"+ 12.00 0.0 700 1200.0 2 \";\n\n"
                       "\"ПРОГРАММА ПЕРЕМЕЩЕНИЯ (канал 1)\"\n\"teGcode\";\n"
                       "\"ПРОГРАММА ВРАЩЕНИЯ ДЕТАЛИ (канал 2)\"\n\"teGcode_2\";\n\n"
                       "\"ПРОГРАММА СВАРКИ (канал 3)\"\n\"teGcode_3\";\n\n\"Время\";")));
    QVERIFY(head.endsWith(";1.2e-03;\n"));
    QTRY_VERIFY(record().contains("\n0.7;12.00;3.00;0.00;")); // both passes, and no further
    QCOMPARE(rows, QList<int>({0, 1, 3, 4}));
    m_contour->onChannel1State(1); // which channel 3 outlives
    m_window->tech()->setCurrentCell(1, 0);
    QTRY_VERIFY(record().contains("\n1.1;12.00;"));
    m_contour->onChannel3State(1);
    QTRY_COMPARE(m_window->tech()->currentRow(), 4);
    QCOMPARE(m_window->find<QAbstractButton>("pbGcode")->text(), QStringLiteral("ПУСК"));
}

// --- technology ---

void TestContourWeld::techRows()
{
    laySampleWeld(*m_window);
    QTableWidget* tech = m_window->tech();
    tech->setCurrentCell(0, 0);
    QVERIFY(!m_window->find("pbInsTechPoint")->isEnabled());
    QVERIFY(!m_window->find("pbDelTechPoint")->isEnabled());
    tech->setCurrentCell(tech->rowCount() - 1, 0);
    QVERIFY(m_window->find("pbInsTechPoint")->isEnabled());
    QVERIFY(!m_window->find("pbDelTechPoint")->isEnabled());
    m_contour->addPointToTech(50);
    tech->setCurrentCell(3, 0);
    m_window->press("pbDelTechPoint");
    QCOMPARE(m_window->column(tech, 0), (QStringList{"0.00", "10.00", "50.00", "100.00"}));

    Answers answers({Answers::number(QStringLiteral("12.345"))});
    m_window->touchCell(tech, 1, 0);
    QCOMPARE(m_window->cell(tech, 1, 0), QStringLiteral("12.35"));
    m_window->touchCell(tech, 0, 0); // the ends of the path are not asked for
    QVERIFY(!QApplication::activeModalWidget());
}

// The dialog's test has all points on every pass, and one on a pass.
void TestContourWeld::pointsOfTheContourInTheTable()
{
    for (const bool all : {true, false}) {
        m_window->choose("pbNew", 0);
        m_window->teach(0, 0, 0);
        m_window->teach(100, 0, 0);
        m_window->teach(100, 75, 0);
        m_window->choose("pbRing", 0); // 300 mm a pass
        m_window->enter("nrings", "3");
        m_contour->addContourPoint(all, !all, 2, 2);
        QCOMPARE(m_window->column(m_window->tech(), 0).join(' '),
                 QString(all ? "0.00 0.00 100.00 175.00 900.00" : "0.00 1000.00 100.00 400.00 900.00"));
    }
    QVERIFY(deathOf([this] {
                m_contour->addContourPoint(false, false, 1, 4);
            }).contains("rotate <= nrings->value()"));
}

// Passes of a ring of 99 points.
void TestContourWeld::ringOf99(const char* passes)
{
    m_window->newRing("100", "99");
    m_window->press("pbRing");
    m_window->enter("nrings", passes);
}

void TestContourWeld::manyPointsAtOnce()
{
    ringOf99("41");
    m_contour->addContourPoint(true, true, 1, 1);
    QCOMPARE(m_window->tech()->rowCount(), 2);
    QCOMPARE(m_window->journal.last(),
             QString("[A]Точки не добавлены: в таблице было бы строк 4061, допустимо 4000"));
    ringOf99("40");
    m_window->tech()->setCurrentCell(1, 0); // the end of the seam, with the rows before it
    m_contour->addContourPoint(true, true, 1, 1);
    QCOMPARE(m_window->tech()->rowCount(), 3962);
    QCOMPARE(m_window->tech()->currentRow(), 3961);
}

void TestContourWeld::tooLongProgramIsNotMade()
{
    QVERIFY(m_window->linkUp());
    ringOf99("1000");
    m_window->press("pbGcode");
    QCOMPARE(m_window->journal.last(), QString("[A]Программа не создана: было бы строк 198056, допустимо "
                                               "15000. Уменьшите число точек или проходов"));
    QVERIFY(m_window->find<QPlainTextEdit>("teGcode_3")->toPlainText().isEmpty());
    QVERIFY(!QFile::exists(site().path("/programs/_temp3.npg")));
    ringOf99("75");
    m_window->press("pbGcode");
    QTRY_COMPARE(m_window->commands().size(), 3);
}

void TestContourWeld::invalidTableIsToldAndMarked()
{
    laySampleWeld(*m_window);
    m_window->journal.clear();
    for (const char* path : {"50", "120"}) { // of 100
        Answers answers({Answers::number(path)});
        m_window->touchCell(m_window->tech(), 2, 0);
    }
    QCOMPARE(m_window->tech()->item(2, 0)->foreground().color(), QColor(Qt::red));
    QCOMPARE(m_window->journal, QStringList("[A]Ошибка заполнения технологической таблицы!"));
    QVERIFY(m_window->find("pbGcode")->isEnabled());
}

void TestContourWeld::commentSwitchesItsBlock()
{
    laySampleWeld(*m_window);
    m_contour->addComment(QStringLiteral("Прихватки"));
    m_contour->addTechPoint(1, 5, 600);
    for (const bool on : {false, true}) { // what is switched off is not in the program
        m_window->touchCell(m_window->tech(), 3, 0);
        m_window->press("pbGcode");
        QCOMPARE(m_site->read(QStringLiteral("/programs/_temp3.npg")).contains("IR=5.0"), on);
    }
}

void TestContourWeld::insertedRowTakesTheXDefaultTwice()
{
    laySampleWeld(*m_window);
    m_contour->setTechSettings(false, true, true, true, 650, 1.5, -2, -1, -1);
    m_window->tech()->setCurrentCell(2, 1);
    m_window->press("pbInsTechPoint");
    QStringList cells;
    for (int column = 0; column < 7; ++column)
        cells << m_window->cell(m_window->tech(), 2, column);
    QCOMPARE(cells, (QStringList{"0.00", "0.0", "650", "1.5", "1.5", "600.0", ""}));
    QCOMPARE(m_window->column(m_window->tech(), 4), (QStringList{"-2.0", "-2.0", "1.5", "-2.0", "-2.0"}));
}

void TestContourWeld::rasterOfARow()
{
    laySampleWeld(*m_window);
    QTableWidget* tech = m_window->tech();
    const auto answer = [&](const char* button) {
        Answers answers({Answers::button(button)});
        m_window->touchCell(tech, 1, 6);
        QVERIFY(answers.allGiven());
    };
    {
        Answers answers({Answers::button("TRtype"), Answers::entry(5), Answers::button("TRamplXPlus"),
                         Answers::button("TRfreqPlus"), Answers::button("pbTRrotation"),
                         Answers::button("pbOn")});
        m_window->touchCell(tech, 1, 6);
        QVERIFY(answers.allGiven());
    }
    QCOMPARE(m_window->cell(tech, 1, 6), QStringLiteral("Прямоугольник; 0.10x0.00; 0; 1; 0.00x0.00; 0; 1"));
    answer("pbOn"); // opens with what is stored
    QCOMPARE(m_window->cell(tech, 1, 6), QStringLiteral("Прямоугольник; 0.10x0.00; 0; 1; 0.00x0.00; 0; 1"));
    answer("pbClear");
    QCOMPARE(m_window->cell(tech, 1, 6), QString());
    answer("pbOff");
    QCOMPARE(m_window->cell(tech, 1, 6), QStringLiteral("ВЫКЛ"));
    Answers closed({Answers::cancel()});
    m_window->touchCell(tech, 1, 6);
    QCOMPARE(m_window->cell(tech, 1, 6), QStringLiteral("ВЫКЛ"));
}

void TestContourWeld::settingsDialog()
{
    laySampleWeld(*m_window);
    m_window->journal.clear();
    QString shown;
    const auto look = [&shown] {
        for (const char* name : {"IfTitle", "If", "IxTitle", "Ix", "IyTitle", "Iy"}) {
            const auto* label = Answers::shown<QLabel>(name);
            if (!label)
                return false;
            shown += label->text() + QLatin1Char('|');
        }
        return !Answers::shown<QWidget>("frmRoundParam")->isEnabled();
    };
    for (const char* end : {"pbSettingsCancel", "pbSettingsDone"}) {
        Answers answers(QList<Answer>{look} + typed("If", "650") + typed("Ix", "1.25") + typed("Iy", "-2") +
                        QList<Answer>{Answers::button("cbTestMode"), Answers::button("cbFocus"),
                                      Answers::button("cbYokeY"), Answers::button(end)});
        m_window->press("pbSettings");
        QVERIFY(answers.allGiven());
        const bool done = end == QLatin1String("pbSettingsDone");
        QCOMPARE(m_window->withoutCurrent, done);
        QCOMPARE(m_window->tech()->isColumnHidden(2), !done);
        QCOMPARE(m_window->cell(m_window->tech(), 1, 2), QString(done ? "650" : "700"));
        QCOMPARE(m_window->cell(m_window->tech(), 1, 4), QString(done ? "-2.0" : "0.0"));
    }
    // What was typed before a cancel is forgotten.
    const QString fresh =
        QStringLiteral("Ток фокуса, мА|700|Ток отклонения по X, мА|0.0|Ток отклонения по Y, мА|0.0|");
    QCOMPARE(shown, fresh + fresh);
    const QStringList told{"Задан новый ток фокусировки для контура - 650 мА",
                           "Задан новый ток отклонения по X для контура - 1.25 мА",
                           "Задан новый ток отклонения по Y для контура - -2 мА"};
    QCOMPARE(m_window->journal, told + told);
}

// The seam length in the table must be that of the plane that the programs are written for.
void TestContourWeld::anotherPlaneIsAnotherWay()
{
    m_window->newRound(QStringLiteral("100"));
    m_window->teach(0, 0, 0);
    m_window->teach(30, 0, 40);
    QCOMPARE(m_window->text("length"), QStringLiteral("30.47"));
    m_contour->setTechSettings(false, false, false, false, 700, 0, 0, 100, 1);
    QCOMPARE(m_window->text("plane"), QStringLiteral("XZ"));
    QCOMPARE(m_window->text("length"), QStringLiteral("52.36"));
    QCOMPARE(m_window->cell(m_window->tech(), 1, 0), QStringLiteral("52.36"));
}

// --- rights, settings ---

void TestContourWeld::rightsOfTheUser()
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

void TestContourWeld::settingsSurvive()
{
    laySampleWeld(*m_window);
    m_window->enter("contourSpeed", "450.5");
    m_contour->setTechSettings(false, true, false, true, 640, 1.5, -2, -1, -1);
    m_window->points()->setColumnWidth(1, 130);
    m_window->tech()->setColumnWidth(0, 95);
    m_contour->setCurrentIndex(1);
    m_window.reset();

    m_window = std::make_unique<ContourWindow>();
    m_contour = m_window->open();
    QCOMPARE(m_contour->currentIndex(), 1);
    QCOMPARE(m_window->text("contourSpeed"), QStringLiteral("450.5"));
    QCOMPARE(m_window->text("weldSpeed"), QStringLiteral("600.0"));
    QCOMPARE(m_window->points()->columnWidth(1), 130);
    QCOMPARE(m_window->tech()->columnWidth(0), 95);
    QVERIFY(!m_window->tech()->isColumnHidden(2));
    QVERIFY(m_window->tech()->isColumnHidden(3));
    QCOMPARE(xs(), (QStringList{"0.00", "100.00"})); // the contour comes back as well
    const QSettings settings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
    QCOMPARE(settings.value(QStringLiteral("Contour/Width_LXLYZ_LY")).toInt(), 130);
    QCOMPARE(settings.value(QStringLiteral("Contour/Iy")).toFloat(), -2.0f);
}

QTEST_MAIN(TestContourWeld)

#include "test_contourweld.moc"
