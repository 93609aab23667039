#include "patternfixture.h"

// The small dialogs beside the generators: points of the contour in the technology table, arcs of frames.
class TestContourDialogs : public PatternFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }
    void addsContourPoints();
    void arcThroughThreePoints();
};

void TestContourDialogs::addsContourPoints()
{
    line("100");
    m_window->teach(100, 50, 0);
    {
        Answers closing({Answers::entry(0)});
        m_window->press("pbRing");
    }
    answer("nrings", {Answers::number("3")});
    QList<Answer> answers = typed("pointNumber", "9"); // only three are there
    answers << typed("rotateNumber", "7")
            << look("pbAdd",
                    [] {
                        QCOMPARE(number("pointNumber"), QString("3"));
                        QCOMPARE(number("rotateNumber"), QString("3"));
                    })
            << Answers::button("pbAdd") << ticked("cbAllPoints") << ticked("rbAllRotate")
            << look("pbAdd",
                    [] {
                        QVERIFY(!Answers::shown<QWidget>("pointNumber")->isEnabled());
                        QVERIFY(!Answers::shown<QWidget>("rotateNumberPlus")->isEnabled());
                    })
            << Answers::cancel();
    answer("pbAddTechPoint", answers);
    const double pass = 150 + std::hypot(100, 50);
    QCOMPARE(rows(), QStringList{QString::number(150 + 2 * pass, 'f', 2) + " 0.0 600.0"});
    QCOMPARE(m_window->journal.last(), QString("[I]Закрыто окно 'Добавление точки контура'"));

    m_window->tech()->setCurrentCell(1, 0);
    m_window->press("pbDelTechPoint"); // what was ticked is remembered
    answer("pbAddTechPoint", {Answers::button("pbAdd"), look("pbAdd", [] {}), Answers::cancel()});
    QStringList paths;
    for (const double turn : {0.0, pass, 2 * pass}) {
        for (const double path : {0.0, 100.0, 150.0})
            paths << QString::number(turn + path, 'f', 2) + " 0.0 600.0";
    }
    QCOMPARE(rows(), paths);
}

void TestContourDialogs::arcThroughThreePoints()
{
    const auto frames = [this] { return m_window->column(m_window->points(), 3); };
    const auto frame = [this](int row, QList<Answer> answers) {
        Answers all(std::move(answers));
        m_window->touchCell(m_window->points(), row, 3);
        QVERIFY(all.allGiven());
    };
    line("100");
    m_window->teach(100, 0, 60);
    m_window->teach(50, 0, 120);
    const QStringList straight = frames();
    m_window->touchCell(m_window->points(), 3, 3); // the end of an open contour is no frame
    QVERIFY(!QApplication::activeModalWidget());
    frame(0, {Answers::button("pbType"),
              look("frmArc",
                   [] {
                       QVERIFY(Answers::shown<QWidget>("frmArc")->isEnabled());
                       QVERIFY(!Answers::shown<QWidget>("cbCalc")->isEnabled());
                   }),
              Answers::button("pbOn"), look("pbOn", [] {}), // an arc of no radius stays open
              Answers::button("pbCancel")});
    QCOMPARE(frames(), straight);
    QCOMPARE(m_window->journal.last(), QString("[A]Ошибка! Радиус, мм: от 0.01 до 9999999!"));

    // In XY the points lie on a line; in XZ on a circle.
    frame(1, {Answers::button("pbType"), ticked("cbCalc"),
              look("lblNoArc", [] { QVERIFY(!Answers::shown<QAbstractButton>("cbCalc")->isChecked()); }),
              Answers::button("pbXZ"), ticked("cbClockWise"), ticked("cbCalc"),
              look("radius", [] { QCOMPARE(number("radius"), QString("58.31")); }), Answers::button("pbOn")});
    QCOMPARE(frames(), (QStringList{"Дуга, r=58.3, пр. ч.с., пл-XZ", "Дуга, r=58.3, пр. ч.с., пл-XZ",
                                    "Прямая", "Конец"}));
    // Three quarters of the circle with that diameter and three quarters more would be another seam.
    const double r = std::hypot(100, 60) / 2;
    const double arcs = 2 * r * (std::asin(50 / r) + std::asin(30 / r));
    QVERIFY(qAbs(m_window->find<PoLabel>("length")->value() - (arcs + std::hypot(50, 60))) < 0.01);
    m_window->press("pbGcode");
    Beam machine(*m_window);
    machine.run([](NcTestHost&) { return 0.0; });
    QCOMPARE(machine.trouble(), QString());
    QVERIFY(qAbs(machine.host().at("Z") - 120) < 0.01);

    {
        Answers closing({Answers::entry(0)});
        m_window->press("pbRing");
    }
    frame(3, {Answers::button("pbType"), Answers::button("pbXZ"), ticked("cbCalc"),
              Answers::button("pbOn")}); // the closing frame ends at the first point
    QCOMPARE(frames()[3].left(5), QString("Дуга,"));
    QCOMPARE(frames()[2], frames()[3]);
}

QTEST_MAIN(TestContourDialogs)
#include "test_contourdialogs.moc"
