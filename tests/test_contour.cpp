#include "contouredit.h"
#include "contourfixture.h"
#include "deathtest.h"
#include "schema.h"
#include "weldgeometry.h"

#include <QPlainTextEdit>
#include <QSettings>
#include <QtMath>

namespace {

const QColor offGray(192, 192, 192);

// The parts of a sample weld: 100 mm along X with the beam up, level and down.
void laySampleWeld(ContourWindow& window)
{
    {
        Answers answers({Answers::entry(0)});
        window.press("pbNew");
    }
    {
        Answers answers({Answers::number(QStringLiteral("600"))});
        window.press("weldSpeed");
    }
    window.teach(0, 0, 0);
    window.teach(100, 0, 0);
    window.contour->addTechPoint(10, 20, 600);
    window.contour->addTechPoint(80, 20, 600);
}

} // namespace

class TestContour : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void newContour_data();
    void newContour();
    void cancelledNumberLeavesTheContour();
    void buttonsFollowTheMachine_data();
    void buttonsFollowTheMachine();
    void teaching();
    void pointBetweenIsTravelledThrough();
    void shifting();
    void ringAngleWraps();
    void deleting_data();
    void deleting();
    void closing();
    void inversion();
    void inversionKeepsEachFrameOnItsStretch_data();
    void inversionKeepsEachFrameOnItsStretch();
    void taughtCircle();
    void newDiameterMovesThePoints();

    void touchingAPoint();
    void touchingAPointOfARing();
    void shiftAndGo();
    void pointNumberMovesTheMark();

    void startOfAWeld();
    void stopsAndContinuation();
    void startWithoutLinkWritesTheFiles();
    void manualCurrent();
    void editedProgramIsRun();

    void techRows();
    void pointsOfTheContourInTheTable_data();
    void pointsOfTheContourInTheTable();
    void invalidTableIsToldAndMarked();
    void commentSwitchesItsBlock();
    void insertedRowTakesTheXDefaultTwice();
    void rasterOfARow();
    void settingsOfTheTable();
    void techAssertions();

    void rightsOfTheUser();
    void settingsSurvive();

private:
    std::unique_ptr<SiteFixture> m_site;
    std::unique_ptr<ContourWindow> m_window;
    CONTOUR* m_contour = nullptr;

    QList<float> point(float x, float y, float z) const { return {x, y, z}; }
    QStringList frames() const { return m_window->column(m_window->points(), 3); }
    QStringList xs() const { return m_window->column(m_window->points(), 0); }
    float total() const
    {
        return m_window->cell(m_window->tech(), m_window->tech()->rowCount() - 1, 0).toFloat();
    }
    int selectedRow() const
    {
        const QModelIndexList rows = m_window->points()->selectionModel()->selectedRows();
        return rows.size() == 1 ? rows.first().row() : -1;
    }
    void choose(const char* button, int entry)
    {
        Answers answers({Answers::entry(entry)});
        m_window->press(button);
        QVERIFY(answers.allGiven());
    }
    void newRing(const QString& D, const QString& points)
    {
        Answers answers({Answers::entry(2), Answers::number(D), Answers::number(points)});
        m_window->press("pbNew");
        QVERIFY(answers.allGiven());
    }
    void newRound(const QString& D)
    {
        Answers answers({Answers::entry(1), Answers::number(D)});
        m_window->press("pbNew");
        QVERIFY(answers.allGiven());
    }
};

void TestContour::init()
{
    m_site = std::make_unique<SiteFixture>();
    m_window = std::make_unique<ContourWindow>();
    m_contour = m_window->open();
    m_window->ready();
}

void TestContour::cleanup()
{
    m_window.reset();
    m_site.reset();
}

// --- contour table ---

void TestContour::newContour_data()
{
    QTest::addColumn<int>("entry");
    QTest::addColumn<QStringList>("numbers");
    QTest::addColumn<QString>("header");
    QTest::addColumn<QStringList>("columns");
    QTest::addColumn<QString>("journal");
    QTest::newRow("lines") << 0 << QStringList() << "<b>Линейная интерполяция</b>"
                           << QStringList{"LX", "LY", "Z", "Параметры"}
                           << "[I]Новый контур 'Смешаная интерполяция XYZ' создан";
    QTest::newRow("circle") << 1 << QStringList{"120.5"} << "<b>Круговая интерполяция</b><pre>D=120.5</>"
                            << QStringList{"LX", "LY", "Z"}
                            << "[I]Новый контур 'Круговая интерполяция' создан";
    QTest::newRow("ring") << 2 << QStringList{"250", "4"} << "<b>Кольцевой стык</b><pre>D=250</>"
                          << QStringList{"V", "LX", "LY", "Z"} << "[I]Новый контур 'Кольцевой стык' создан";
}

void TestContour::newContour()
{
    QFETCH(int, entry);
    QFETCH(QStringList, numbers);
    m_window->place(1.5, -2.25, 3);
    QList<std::function<bool()>> given{Answers::entry(entry)};
    for (const QString& number : qAsConst(numbers))
        given << Answers::number(number);
    Answers answers(given);
    m_window->press("pbNew");
    QVERIFY(answers.allGiven());

    QTEST(m_window->text("lblConsts"), "header");
    QStringList columns;
    for (int i = 0; i < m_window->points()->columnCount(); ++i)
        columns << m_window->points()->horizontalHeaderItem(i)->text();
    QTEST(columns, "columns");
    QTEST(m_window->journal.last(), "journal");
    QCOMPARE(m_window->shownName, QStringLiteral("Программа сварки"));
    QCOMPARE(m_window->find("frmRotate")->isVisibleTo(m_contour->widget(1)), entry == 1);
    QCOMPARE(m_window->points()->rowCount(), entry == 2 ? 4 : 0);
    if (entry == 2) {
        QCOMPARE(xs(), (QStringList{"0.00", "90.00", "180.00", "270.00"}));
        QCOMPARE(m_window->cell(m_window->points(), 3, 2), QStringLiteral("-2.25"));
        QCOMPARE(selectedRow(), 0);
    }
    QCOMPARE(m_window->tech()->rowCount(), 2);
    QVERIFY(m_contour->tableValid());
}

void TestContour::cancelledNumberLeavesTheContour()
{
    laySampleWeld(*m_window);
    m_window->shownName = QStringLiteral("mine");
    Answers answers({Answers::entry(2), Answers::number(QStringLiteral("250")), Answers::cancel()});
    m_window->press("pbNew");
    QVERIFY(answers.allGiven());
    QCOMPARE(m_contour->schema()->id(), QStringLiteral("XYZ"));
    QCOMPARE(m_window->points()->rowCount(), 2);
    QCOMPARE(m_window->shownName, QStringLiteral("mine"));
}

void TestContour::buttonsFollowTheMachine_data()
{
    QTest::addColumn<bool>("drives");
    QTest::addColumn<bool>("transformed");
    QTest::addColumn<unsigned int>("channel1");
    QTest::addColumn<QString>("enabled"); // New Ins Corr corrNgo Del inveRse rinG
    QTest::newRow("ready") << true << true << 1U << "NICODRG";
    QTest::newRow("drives off") << false << true << 1U << "NDRG";
    QTest::newRow("own axes") << true << false << 1U << "NDRG";
    QTest::newRow("program runs") << true << true << 3U << "";
}

void TestContour::buttonsFollowTheMachine()
{
    laySampleWeld(*m_window);
    QFETCH(bool, drives);
    QFETCH(bool, transformed);
    QFETCH(unsigned int, channel1);
    m_contour->onDriveState(drives);
    m_contour->onVirtualMode(transformed);
    m_contour->onChannel1State(channel1);
    const std::pair<char, const char*> buttons[] = {{'N', "pbNew"},     {'I', "pbIns"}, {'C', "pbCorr"},
                                                    {'O', "pbCorrNgo"}, {'D', "pbDel"}, {'R', "pbInverse"},
                                                    {'G', "pbRing"}};
    QString enabled;
    for (const auto& [mark, name] : buttons)
        enabled += m_window->find(name)->isEnabled() ? QString(QLatin1Char(mark)) : QString();
    QTEST(enabled, "enabled");
    QVERIFY(m_window->find("pbGcode")->isEnabled());
    QVERIFY(m_window->find("pbRun")->isEnabled());
}

void TestContour::teaching()
{
    choose("pbNew", 0);
    m_window->teach(0, 0, 0);
    QCOMPARE(frames(), QStringList{"Прямая"});
    m_window->teach(30, 40, 0);
    m_window->teach(30, 40, 12.345f);
    QCOMPARE(frames(), (QStringList{"Прямая", "Прямая", "Конец"}));
    QCOMPARE(m_window->column(m_window->points(), 2), (QStringList{"0.00", "0.00", "12.35"}));
    QCOMPARE(m_window->text("points"), QStringLiteral("3"));
    QCOMPARE(m_window->text("length"), QStringLiteral("62.35"));
    QCOMPARE(m_window->cell(m_window->tech(), 1, 0), QStringLiteral("62.35"));
    QCOMPARE(selectedRow(), 2);

    m_window->teach(30, 40, 12.345f); // the machine already stands there
    QCOMPARE(m_window->points()->rowCount(), 3);
    QCOMPARE(m_contour->coords(2), point(30, 40, 12.35f));
}

void TestContour::pointBetweenIsTravelledThrough()
{
    laySampleWeld(*m_window);
    m_contour->onChangedPointNo(0);
    m_window->teach(50, 30, 0);
    QCOMPARE(xs(), (QStringList{"0.00", "50.00", "100.00"}));
    QCOMPARE(frames(), (QStringList{"Прямая", "Прямая", "Конец"}));
    QCOMPARE(total(), 116.62f);
}

void TestContour::shifting()
{
    laySampleWeld(*m_window);
    m_window->place(110, 5, 1);
    choose("pbCorr", 0);
    QCOMPARE(m_contour->coords(0), point(0, 0, 0));
    QCOMPARE(m_contour->coords(1), point(110, 5, 1));

    m_window->place(120, 5, 1);
    Answers no({Answers::entry(1), Answers::confirm(false)});
    m_window->press("pbCorr");
    QCOMPARE(m_contour->coords(1), point(110, 5, 1));
    Answers yes({Answers::entry(1), Answers::confirm(true)});
    m_window->press("pbCorr");
    QCOMPARE(m_contour->coords(0), point(10, 0, 0));
    QCOMPARE(m_contour->coords(1), point(120, 5, 1));
    QCOMPARE(m_window->journal.last(),
             QStringLiteral("[I]Нажата кнопка 'Сдвиг всего контура' панели Контур"));
}

void TestContour::ringAngleWraps()
{
    newRing(QStringLiteral("100"), QStringLiteral("4"));
    m_contour->movePoint(3, {100, 0, 0, 0});
    m_contour->movePoint(1, {-100, 1, 0, 0});
    m_contour->movePoint(2, {180, 0, 0, 0});
    QCOMPARE(xs(), (QStringList{"0.00", "350.00", "360.00", "10.00"}));
    QCOMPARE(m_contour->calcDistance(0, m_contour->coords(1), m_contour->coords(3)), 100 * M_PI / 18);
}

void TestContour::deleting_data()
{
    QTest::addColumn<int>("current");
    QTest::addColumn<bool>("forward");
    QTest::addColumn<QStringList>("left");
    QTest::addColumn<int>("marked");
    QTest::newRow("last") << 2 << true << QStringList{"0.00", "10.00"} << 1;
    QTest::newRow("middle") << 1 << true << QStringList{"0.00", "20.00"} << 0;
    QTest::newRow("first") << 0 << true << QStringList{"10.00", "20.00"} << 0;
    QTest::newRow("going back") << 1 << false << QStringList{"0.00", "20.00"} << 0;
}

void TestContour::deleting()
{
    choose("pbNew", 0);
    for (int i = 0; i < 3; ++i)
        m_window->teach(10.0f * float(i), 0, 0);
    QFETCH(bool, forward);
    QFETCH(int, current);
    m_contour->onChangedPointNo(forward ? 0 : 2);
    m_contour->onContourCellClicked(forward ? 1 : 0, 0);
    m_contour->onChangedPointNo(unsigned(current));
    Answers answers({Answers::confirm(true)});
    m_window->press("pbDel");
    QTEST(xs(), "left");
    QTEST(selectedRow(), "marked");
    QCOMPARE(frames(), (QStringList{"Прямая", "Конец"}));
    for (int i = 0; i < 2; ++i) {
        Answers again({Answers::confirm(true)});
        m_window->press("pbDel");
    }
    QCOMPARE(m_window->points()->rowCount(), 0);
    m_window->teach(7, 0, 0); // the empty table takes a first point again
    QCOMPARE(xs(), QStringList{"7.00"});
}

void TestContour::closing()
{
    laySampleWeld(*m_window);
    m_window->teach(100, 75, 0);
    choose("pbRing", -1);
    QVERIFY(!m_window->find("frmRings")->isEnabled());
    QCOMPARE(m_window->text("lblLength"), QStringLiteral("Длина шва,\nмм"));

    choose("pbRing", 0);
    auto* ring = m_window->find<QAbstractButton>("pbRing");
    QCOMPARE(ring->text(), QStringLiteral("Замкнут\nпрямым\nходом"));
    QCOMPARE(m_window->text("lblLength"), QStringLiteral("Длина прохода,\nмм"));
    QCOMPARE(m_window->text("length"), QStringLiteral("300.00")); // 100 + 75 and back by 125
    QCOMPARE(frames().last(), QStringLiteral("Прямая"));
    {
        Answers answers({Answers::number(QStringLiteral("3"))});
        m_window->press("nrings");
    }
    QCOMPARE(m_window->journal.last(), QStringLiteral("[I]Задано новое число проходов по контуру - 3"));
    QCOMPARE(total(), 900.0f);

    m_window->press("pbRing");
    QCOMPARE(ring->text(), QStringLiteral("Замкнуть\nконтур"));
    QCOMPARE(frames().last(), QStringLiteral("Конец"));
    QCOMPARE(total(), 175.0f);

    choose("pbRing", 1);
    QCOMPARE(ring->text(), QStringLiteral("Замкнут\nобратным\nходом"));
    QCOMPARE(m_window->text("length"), QStringLiteral("350.00"));
    {
        Answers answers({Answers::number(QStringLiteral("0"))});
        m_window->press("nrings");
    }
    QCOMPARE(m_window->text("nrings"), QStringLiteral("1"));

    newRing(QStringLiteral("100"), QStringLiteral("3"));
    m_window->press("pbRing"); // a ring asks nothing
    QCOMPARE(ring->text(), QStringLiteral("Контур\nзамкнут"));
    QCOMPARE(m_window->text("length"), QStringLiteral("314.16"));
}

void TestContour::inversion()
{
    newRing(QStringLiteral("100"), QStringLiteral("4"));
    m_window->press("pbInverse");
    QCOMPARE(xs(), (QStringList{"0.00", "270.00", "180.00", "90.00"}));
    laySampleWeld(*m_window);
    m_contour->addParameters(0, Frame::Arc, 1, 0, 80, true);
    const float before = total();
    m_window->press("pbInverse");
    QCOMPARE(xs(), (QStringList{"100.00", "0.00"}));
    QCOMPARE(frames(), (QStringList{"Дуга, r=80.0, пр. ч.с., пл-XY", "Конец"}));
    QCOMPARE(total(), before);
}

void TestContour::inversionKeepsEachFrameOnItsStretch_data()
{
    QTest::addColumn<bool>("closed");
    QTest::addColumn<QString>("points");
    QTest::addColumn<QString>("radii"); // the frame of each row by its radius, 0 for the end
    QTest::newRow("open") << false << "dcba"
                          << "3210";
    QTest::newRow("closed") << true << "adcb"
                            << "4321";
}

void TestContour::inversionKeepsEachFrameOnItsStretch()
{
    // Frame 1 runs from a to b, 2 from b to c, 3 from c to d, 4 (when closed) from d to a.
    QFETCH(bool, closed);
    const SchemaXYZ schema;
    WeldContour contour;
    contour.schema = &schema;
    contour.closed = closed;
    for (int i = 0; i < 4; ++i) {
        ContourRow row{{float(i), 0, 0}, {}};
        row.frame.type = i < 3 || closed ? Frame::Arc : Frame::End;
        row.frame.radius = i < 3 || closed ? float(i + 1) : 0;
        contour.rows.append(row);
    }
    const QVector<ContourRow> before = contour.rows;
    invertContour(contour);
    QString points;
    QString radii;
    for (const ContourRow& row : qAsConst(contour.rows)) {
        points += QChar('a' + int(row.coords[0]));
        radii += QString::number(double(row.frame.radius));
    }
    QTEST(points, "points");
    QTEST(radii, "radii");
    invertContour(contour);
    for (int i = 0; i < 4; ++i) {
        QCOMPARE(contour.rows[i].coords, before[i].coords);
        QCOMPARE(contour.rows[i].frame.radius, before[i].frame.radius);
    }
}

void TestContour::taughtCircle()
{
    newRound(QStringLiteral("10"));
    m_window->teach(60, 20, 0);
    m_window->teach(10, 70, 0);
    QCOMPARE(m_window->text("lblConsts"), QStringLiteral("<b>Круговая интерполяция</b><pre>D=10</>"));
    // The chord is longer than the diameter given: marked until the circle is known.
    QCOMPARE(m_window->points()->item(1, 0)->foreground().color(), QColor(Qt::red));
    m_window->teach(-40, 20, 0);
    QCOMPARE(m_window->text("diameter"), QStringLiteral("100.00"));
    QCOMPARE(m_window->text("centerX") + QLatin1Char(' ') + m_window->text("centerY"),
             QStringLiteral("10.00 20.00"));
    QCOMPARE(m_window->points()->item(1, 0)->foreground().color(), QColor(Qt::black));
    QCOMPARE(m_window->text("length"), QStringLiteral("157.08"));

    newRound(QStringLiteral("40"));
    for (int i = 0; i < 3; ++i)
        m_window->teach(10.0f * float(i), 0, 0); // no circle goes through a straight line
    QCOMPARE(m_contour->schema()->D(), 40.0f);
    for (const QString& cell :
         m_window->column(m_window->points(), 0) + QStringList(m_window->text("length")))
        QVERIFY2(!cell.contains(QLatin1String("nan")) && !cell.contains(QLatin1String("inf")),
                 qPrintable(cell));
}

void TestContour::newDiameterMovesThePoints()
{
    newRound(QStringLiteral("100"));
    m_window->teach(60, 20, 5);
    m_window->teach(10, 70, 5);
    m_window->teach(-40, 20, 5);
    Answers answers({[] {
                         auto* label = Answers::shown<QLabel>("diameter");
                         if (label)
                             QTimer::singleShot(0, label,
                                                [label] { QTest::mouseClick(label, Qt::LeftButton); });
                         return label != nullptr;
                     },
                     Answers::number(QStringLiteral("50")), Answers::button("pbSettingsDone")});
    m_window->press("pbSettings");
    QVERIFY(answers.allGiven());
    QCOMPARE(m_contour->coords(0), point(35, 20, 5));
    QCOMPARE(m_contour->coords(1), point(10, 45, 5));
    QCOMPARE(m_contour->coords(2), point(-15, 20, 5));
    QCOMPARE(m_window->text("lblConsts"), QStringLiteral("<b>Круговая интерполяция</b><pre>D=50</>"));
    QCOMPARE(m_window->text("length"), QStringLiteral("78.54"));
    QVERIFY(m_window->journal.contains(QStringLiteral("Задан новый диаметр для контура - 50 мм")));
}

// --- moving along the contour ---

void TestContour::touchingAPoint()
{
    laySampleWeld(*m_window);
    m_window->teach(100, 50, 0);
    QVERIFY(m_window->linkUp());
    m_window->touchCell(m_window->points(), 0, 3); // the frame column is no way to move
    QVERIFY(m_site->read(QStringLiteral("/programs/_temp1.npg")).isEmpty());

    m_window->touchCell(m_window->points(), 0, 1);
    QCOMPARE(selectedRow(), 2); // the mark waits for the machine
    QCOMPARE(m_window->points()->currentRow(), 2);
    QTRY_COMPARE(m_window->commands(), QStringList{"EXEC_1(/programs/_temp1.npg)"});
    const QString program = QString::fromUtf8(m_site->read(QStringLiteral("/programs/_temp1.npg")));
    const QStringList moves = program.split(QLatin1Char('\n')).filter(QStringLiteral("G01"));
    QCOMPARE(moves.size(), 3); // the point it stands at, and one for each row
    QVERIFY(moves.last().endsWith(QStringLiteral("x=0.00 y=0.00 z=0.00 F0.0")));
    QVERIFY(m_window->find<QPlainTextEdit>("teGcode")->toPlainText().isEmpty());
}

void TestContour::touchingAPointOfARing()
{
    newRing(QStringLiteral("100"), QStringLiteral("4"));
    QVERIFY(m_window->linkUp());
    m_window->touchCell(m_window->points(), 2, 0);
    QTRY_COMPARE(m_window->commands(),
                 (QStringList{"EXEC_2(/programs/_temp2.npg)", "EXEC_1(/programs/_temp1.npg)"}));
    QVERIFY(m_site->read(QStringLiteral("/programs/_temp2.npg")).contains("V=180.00"));
}

void TestContour::shiftAndGo()
{
    laySampleWeld(*m_window);
    m_contour->onChangedPointNo(0);
    m_window->place(0, 10, 0);
    m_window->press("pbCorrNgo");
    QCOMPARE(m_contour->coords(0), point(0, 10, 0));
    QCOMPARE(total(), 100.5f);
    QVERIFY(m_site->read(QStringLiteral("/programs/_temp1.npg")).contains("x=100.00 y=0.00"));

    m_contour->onChangedPointNo(1); // past the last row of an open contour it stays
    m_window->place(100, 0, 0);
    m_window->press("pbCorrNgo");
    QVERIFY(!m_site->read(QStringLiteral("/programs/_temp1.npg")).contains("x=0.00"));
    choose("pbRing", 0);
    m_window->press("pbCorrNgo"); // and of a closed one goes to the first
    QVERIFY(m_site->read(QStringLiteral("/programs/_temp1.npg")).contains("x=0.00 y=10.00"));
}

void TestContour::pointNumberMovesTheMark()
{
    laySampleWeld(*m_window);
    m_contour->onChangedPointNo(0);
    QCOMPARE(selectedRow(), 0);
    m_contour->onChangedPointNo(2); // not in the table
    m_contour->onChangedPointNo(4'000'000'000U);
    QCOMPARE(selectedRow(), 0);
}

// --- starting ---

void TestContour::startOfAWeld()
{
    laySampleWeld(*m_window);
    QVERIFY(m_window->linkUp());
    m_window->press("pbGcode");
    QTRY_COMPARE(m_window->commands(),
                 (QStringList{"EXEC_3(/programs/_temp3.npg)", "EXEC_1(/programs/_temp1.npg)"}));
    const QString channel1 = QString::fromUtf8(m_site->read(QStringLiteral("/programs/_temp1.npg")));
    const QString channel3 = QString::fromUtf8(m_site->read(QStringLiteral("/programs/_temp3.npg")));
    QVERIFY(channel1.contains(QStringLiteral("N10 G90 G01 x=10.00 y=0.00 z=0.00 F600.000\n"
                                             "N11 G90 G01 x=90.00 y=0.00 z=0.00 F600.000\n"
                                             "N12 G90 G01 x=100.00 y=0.00 z=0.00 F600.000\n")));
    QVERIFY(channel3.contains(QStringLiteral("N14 G90 G01 IR=20.0 IW=700 F1200.000\nN15 G4 F8.000\n"
                                             "N16 G90 G01 IR=0.0 IW=700 F1200.000\n")));
    QCOMPARE(m_window->find<QPlainTextEdit>("teGcode")->toPlainText(), channel1);
    QCOMPARE(m_window->find<QPlainTextEdit>("teGcode_3")->toPlainText(), channel3);
    QCOMPARE(m_window->text("lbProgName1"), QStringLiteral("Перемещение манипулятора"));
    QCOMPARE(m_window->text("lbProgName3"), QStringLiteral("Технология"));
    QVERIFY(QFileInfo(site().path(QStringLiteral("/programs/_temp1.npg"))).size() > 0);
}

void TestContour::stopsAndContinuation()
{
    laySampleWeld(*m_window);
    for (int i = 0; i < 2; ++i) {
        choose("pbTemplate", 2);
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
        expected += commands;
        QTRY_COMPARE(m_window->commands(), expected);
    };
    press(QStringLiteral("ПУСК"), whole);
    m_contour->onChannel1State(3);
    QCOMPARE(start->text(), QStringLiteral("ПУСК")); // while the program still runs
    m_contour->onChannel1State(1);
    press(QStringLiteral("ДАЛЕЕ"), motion);
    press(QStringLiteral("ДАЛЕЕ"), motion);
    press(QStringLiteral("ПУСК"), whole); // the next weld begins from its first block
    QVERIFY(m_site->read(QStringLiteral("/programs/_temp1.npg")).contains("N5 GOTO N6\n"));
    QCOMPARE(start->text(), QStringLiteral("ДАЛЕЕ"));
    choose("pbNew", 0); // nothing of the stopped weld can go on with another contour
    QCOMPARE(start->text(), QStringLiteral("ПУСК"));
}

void TestContour::startWithoutLinkWritesTheFiles()
{
    laySampleWeld(*m_window);
    m_window->press("pbGcode");
    QVERIFY(!m_site->read(QStringLiteral("/programs/_temp1.npg")).isEmpty());
    QVERIFY(!m_site->read(QStringLiteral("/programs/_temp3.npg")).isEmpty());

    QVERIFY(m_window->linkUp());
    QDir(site().path(QStringLiteral("/programs"))).removeRecursively();
    m_window->press("pbGcode"); // no file, no command
    QTest::qWait(50);
    QCOMPARE(m_window->commands(), QStringList());
}

void TestContour::manualCurrent()
{
    laySampleWeld(*m_window);
    m_contour->setTechSettings(true, false, false, false, 700, 0, 0, -1, -1);
    QVERIFY(m_window->withoutCurrent);
    QVERIFY(m_window->linkUp());
    m_window->press("pbGcode");
    QTRY_COMPARE(m_window->commands(), QStringList{"EXEC_1(/programs/_temp1.npg)"});
    QVERIFY(m_site->read(QStringLiteral("/programs/_temp3.npg")).isEmpty());
}

void TestContour::editedProgramIsRun()
{
    QVERIFY(m_window->linkUp());
    const char* const edits[] = {"teGcode", "teGcode_2", "teGcode_3"};
    const char* const buttons[] = {"pbRun", "pbRun_2", "pbRun_3"};
    const char* const files[] = {"_temp.npg", "_temp2.npg", "_temp3.npg"};
    QStringList expected;
    for (int i = 0; i < 3; ++i) {
        const QString program = QStringLiteral("N1 $%1\nN2 M30").arg(i + 1);
        m_window->find<QPlainTextEdit>(edits[i])->setPlainText(program);
        m_window->press(buttons[i]);
        const QString path = QStringLiteral("/programs/") + QLatin1String(files[i]);
        QCOMPARE(QString::fromUtf8(m_site->read(path)), program);
        expected << QStringLiteral("EXEC_%1(%2)").arg(QString::number(i + 1), path);
        QCOMPARE(m_window->journal.last(),
                 QStringLiteral("[I]Нажата кнопка 'Пуск программы' панели 'Канал %1'").arg(i + 1));
    }
    QTRY_COMPARE(m_window->commands(), expected);
}

// --- technology ---

void TestContour::techRows()
{
    laySampleWeld(*m_window);
    m_contour->addLinearTackPoint(95, 800, 1200);
    m_contour->addPointToTech(50);
    QTableWidget* tech = m_window->tech();
    QCOMPARE(m_window->column(tech, 0), (QStringList{"0.00", "10.00", "50.00", "90.00", "95.00", "100.00"}));
    QCOMPARE(m_window->column(tech, 1), (QStringList{"0.0", "20.0", "0.0", "20.0", "800.0", "0.0"}));
    QCOMPARE(m_window->column(tech, 5)[4], QStringLiteral("1200.0"));

    m_contour->addComment(QStringLiteral("Прихватки"));
    m_contour->addTechPoint(1, 0, 600); // counts from the row above the comment
    QCOMPARE(m_window->cell(tech, 6, 0), QStringLiteral("96.00"));

    tech->setCurrentCell(0, 0);
    QVERIFY(!m_window->find("pbInsTechPoint")->isEnabled());
    QVERIFY(!m_window->find("pbDelTechPoint")->isEnabled());
    tech->setCurrentCell(tech->rowCount() - 1, 0);
    QVERIFY(m_window->find("pbInsTechPoint")->isEnabled());
    QVERIFY(!m_window->find("pbDelTechPoint")->isEnabled());
    tech->setCurrentCell(5, 0);
    m_window->press("pbDelTechPoint");
    QCOMPARE(m_window->column(tech, 0),
             (QStringList{"0.00", "10.00", "50.00", "90.00", "95.00", "96.00", "100.00"}));

    Answers answers({Answers::number(QStringLiteral("12.345"))});
    m_window->touchCell(tech, 1, 0);
    QCOMPARE(m_window->cell(tech, 1, 0), QStringLiteral("12.35"));
    m_window->touchCell(tech, 0, 0); // the ends of the path are not asked for
    QVERIFY(!QApplication::activeModalWidget());
}

void TestContour::pointsOfTheContourInTheTable_data()
{
    QTest::addColumn<bool>("all");
    QTest::addColumn<bool>("everyPass");
    QTest::addColumn<QStringList>("paths");
    QTest::newRow("all, every pass") << true << true
                                     << QStringList{"0.00",   "100.00", "175.00", "300.00", "400.00",
                                                    "475.00", "600.00", "700.00", "775.00"};
    QTest::newRow("all once") << true << false << QStringList{"0.00", "100.00", "175.00"};
    QTest::newRow("one, every pass") << false << true << QStringList{"100.00", "400.00", "1000.00"};
    QTest::newRow("one, second pass") << false << false << QStringList{"400.00"};
}

void TestContour::pointsOfTheContourInTheTable()
{
    choose("pbNew", 0);
    m_window->teach(0, 0, 0);
    m_window->teach(100, 0, 0);
    m_window->teach(100, 75, 0);
    choose("pbRing", 0); // 300 mm a pass
    Answers answers({Answers::number(QStringLiteral("3"))});
    m_window->press("nrings");
    QFETCH(bool, all);
    QFETCH(bool, everyPass);
    m_contour->addContourPoint(all, everyPass, 2, 2);
    QStringList paths = m_window->column(m_window->tech(), 0);
    paths.removeLast();
    paths.removeFirst();
    std::sort(paths.begin(), paths.end(),
              [](const QString& a, const QString& b) { return a.toFloat() < b.toFloat(); });
    QTEST(paths, "paths");
    QCOMPARE(deathOf([this] {
                 m_contour->addContourPoint(false, false, 1, 4);
             }).contains("rotate <= nrings->value()"),
             true);
}

void TestContour::invalidTableIsToldAndMarked()
{
    laySampleWeld(*m_window);
    QTableWidget* tech = m_window->tech();
    const auto red = [&] {
        QString marks;
        for (int row = 0; row < tech->rowCount(); ++row)
            marks += tech->item(row, 0)->foreground().color() == QColor(Qt::red) ? 'r' : '.';
        return marks;
    };
    const QString alarm = QStringLiteral("[A]Ошибка заполнения технологической таблицы!");
    QCOMPARE(red(), QStringLiteral("...."));
    {
        Answers answers({Answers::number(QStringLiteral("120"))});
        m_window->touchCell(tech, 2, 0); // beyond the end of the path
    }
    QCOMPARE(red(), QStringLiteral("..r."));
    QCOMPARE(m_window->journal.last(), alarm);
    {
        Answers answers({Answers::number(QStringLiteral("10"))});
        m_window->touchCell(tech, 2, 0); // the same place and the same currents: a change of speed
    }
    QVERIFY(m_contour->tableValid());
    QCOMPARE(red(), QStringLiteral("...."));
    {
        Answers answers({Answers::number(QStringLiteral("21"))});
        m_window->touchCell(tech, 2, 1); // the current jumps
    }
    QVERIFY(!m_contour->tableValid());
    QCOMPARE(red(), QStringLiteral(".rr."));
    QVERIFY(m_window->find("pbGcode")->isEnabled());
}

void TestContour::commentSwitchesItsBlock()
{
    laySampleWeld(*m_window);
    m_contour->addComment(QStringLiteral("Прихватки"));
    m_contour->addTechPoint(1, 5, 600);
    m_contour->addTechPoint(1, 0, 600);
    m_contour->addComment(QStringLiteral("Сварка"));
    m_contour->addTechPoint(1, 0, 600);
    QTableWidget* tech = m_window->tech();
    const auto state = [&] {
        QString marks;
        for (int row = 0; row < tech->rowCount(); ++row)
            marks += tech->item(row, 0)->data(OnRole).toBool() ? '+' : '-';
        return marks;
    };
    QCOMPARE(state(), QStringLiteral("+++-++-++"));
    m_window->touchCell(tech, 3, 0);
    QCOMPARE(state(), QStringLiteral("+++----++"));
    QCOMPARE(tech->item(5, 6)->background().color(), offGray);
    m_window->press("pbGcode"); // what is switched off is not in the program
    QVERIFY(!m_site->read(QStringLiteral("/programs/_temp3.npg")).contains("IR=5.0"));
    m_window->touchCell(tech, 3, 0);
    QCOMPARE(state(), QStringLiteral("+++-++-++"));
    QCOMPARE(tech->item(5, 6)->background().color(), QColor(Qt::white));
}

void TestContour::insertedRowTakesTheXDefaultTwice()
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

void TestContour::rasterOfARow()
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
    QCOMPARE(tech->item(1, 6)->data(RasterTypeRole).toInt(), 5);
    answer("pbOn"); // opens with what is stored
    QCOMPARE(m_window->cell(tech, 1, 6), QStringLiteral("Прямоугольник; 0.10x0.00; 0; 1; 0.00x0.00; 0; 1"));
    answer("pbClear");
    QCOMPARE(m_window->cell(tech, 1, 6), QString());
    QCOMPARE(tech->item(1, 6)->data(RasterTypeRole).toInt(), 5);
    answer("pbOff");
    QCOMPARE(m_window->cell(tech, 1, 6), QStringLiteral("ВЫКЛ"));
    Answers closed({Answers::cancel()});
    m_window->touchCell(tech, 1, 6);
    QCOMPARE(m_window->cell(tech, 1, 6), QStringLiteral("ВЫКЛ"));
}

void TestContour::settingsOfTheTable()
{
    laySampleWeld(*m_window);
    m_contour->addComment(QStringLiteral("Прихватки"));
    QTableWidget* tech = m_window->tech();
    QVERIFY(tech->isColumnHidden(2));
    m_contour->setTechSettings(false, true, false, false, 655.4f, 1, 1, -1, -1);
    QVERIFY(!tech->isColumnHidden(2));
    QVERIFY(tech->isColumnHidden(3));
    QCOMPARE(m_window->column(tech, 2), (QStringList{"655", "655", "655", "655", "655"}));
    QCOMPARE(m_window->column(tech, 3)[1], QStringLiteral("0.0")); // a hidden column keeps its values
    QCOMPARE(tech->item(0, 2)->background(), tech->palette().alternateBase());
    QCOMPARE(m_contour->schema()->Aux(), -1);
}

void TestContour::techAssertions()
{
    laySampleWeld(*m_window);
    QVERIFY(deathOf([this] { m_contour->addTechPoint(-1, 0, 0); }).contains("interval >= 0"));
    QVERIFY(deathOf([this] {
                m_contour->addLinearTackPoint(1, 801, 0);
            }).contains("(IrVal >= 0) && (IrVal <= 800)"));
    QVERIFY(deathOf([this] { m_contour->coords(2); }).contains("twi"));
    QVERIFY(deathOf([this] {
                m_contour->addPoint({1, 2, 3});
            }).contains("point.size() == twContour->columnCount()"));
    QVERIFY(deathOf([] {
                CONTOUR bare;
                bare.coords();
            }).contains("m_schema"));
}

// --- rights, settings ---

void TestContour::rightsOfTheUser()
{
    m_contour->onUserChanged(1);
    m_contour->setCurrentIndex(3);
    m_contour->onUserChanged(2);
    QCOMPARE(m_contour->currentIndex(), 0);
    for (int tab = 0; tab < 5; ++tab)
        QCOMPARE(m_contour->isTabEnabled(tab), tab < 2);
    m_contour->onUserChanged(0);
    QVERIFY(m_contour->isTabEnabled(4));
}

void TestContour::settingsSurvive()
{
    laySampleWeld(*m_window);
    {
        Answers answers({Answers::number(QStringLiteral("450.5"))});
        m_window->press("contourSpeed");
    }
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
    const QSettings settings(site().path(QStringLiteral("/home/oper/bin/settings.ini")),
                             QSettings::IniFormat);
    QCOMPARE(settings.value(QStringLiteral("Contour/Width_LXLYZ_LY")).toInt(), 130);
    QCOMPARE(settings.value(QStringLiteral("Contour/Iy")).toFloat(), -2.0f);
}

QTEST_MAIN(TestContour)

#include "test_contour.moc"
