#include "generators.h"
#include "patternfixture.h"
#include "weldmaker.h"
#include "weldpattern.h"

#include <QLineEdit>
#include <QSettings>

#include <algorithm>
#include <numeric>

namespace {

// A pattern as the settings keep it.
struct Kept
{
    QString group;
    double Ir, ascend, peak, descend;
    int number = 0;
    bool degrees = false;

    void store() const
    {
        QSettings settings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
        settings.setValue(group + "/Ir", Ir);
        settings.setValue(group + "/Ascend", ascend);
        settings.setValue(group + "/Peak", peak);
        settings.setValue(group + "/Descend", descend);
        settings.setValue(group + "/Number", number);
        settings.setValue(group + "/DegreeOn", degrees);
    }
};

} // namespace

class TestGenerators : public PatternFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void orders();
    void typedOrders();
    void rowsOverAGrid();
    void mergedRows();

    void weldTakesTheSeam();
    void rampsLongerThanTheSeam();
    void noDegreesWithoutADiameter();
    void periodIsNotRounded();
    void warnings();
    void overlaps();
    void unitsForthAndBack();
    void boundsAndCounts();
    void refusals();
    void settingsOfNoise();
    void run_data();
    void run();

private:
    void circle(int passes); // of the diameter 114.59, its centre at (-20, 10)
    void seam();             // 300 mm in five points on one line across X and Y
};

void TestGenerators::orders()
{
    QCOMPARE(linTacksOrder(6), QString("3,0,5,1,4,2"));
    QCOMPARE(circleTacksOrder(4), QString("0,2,1,3"));
    QCOMPARE(circleTacksOrder(8), QString("0,4,6,2,3,5,7,1"));
    for (int n = 2; n <= 12; ++n) {
        for (const QString& text : {linTacksOrder(n), circleTacksOrder(n)}) {
            QVector<int> order = tacksOrder(text);
            if (text == circleTacksOrder(n) && n != 8) // the next tack lies opposite, or beside that
                for (int i = 1; i < n; ++i)
                    QVERIFY2((order[i] - order[i - 1] + n) % n - n / 2 <= 1, qPrintable(text));
            std::sort(order.begin(), order.end());
            for (int i = 0; i < n; ++i)
                QCOMPARE(order.value(i, -1), i);
            QCOMPARE(order.size(), n);
        }
    }
}

void TestGenerators::typedOrders()
{
    QCOMPARE(tacksOrder("2,0,,1,"), (QVector<int>{2, 0, 1}));
    QCOMPARE(tacksOrder("2,0,x,1"), (QVector<int>{2, 0}));
    QCOMPARE(tacksOrder("1,0x10,2"), (QVector<int>{1}));
    QCOMPARE(tacksOrder("1,99999999999"), (QVector<int>{1}));
    QVERIFY(tacksOrder("").isEmpty());
    // Places beyond one turn are still ahead, never behind.
    const auto rows = circleTackRows({20, 1, 2, 1, 600, 1200}, 4, 10, {9, 2, 2147483647, 0}, 1);
    for (const PatternRow& row : *rows)
        QVERIFY(row.path >= 0 && row.path < 40);
}

void TestGenerators::rowsOverAGrid()
{
    for (int number = 2; number <= 12; ++number) {
        for (const float ascend : {0.0f, 0.1f, 3.3f}) {
            for (const float peak : {0.0f, 2.7f, 25.0f}) {
                const WeldPattern tack{120, ascend, peak, 4 - ascend, 600, 1200};
                const float t = tack.length();
                const float period = 300.0f / float(number);
                const auto line = linTackRows(tack, period, tacksOrder(linTacksOrder(number)));
                const auto round =
                    circleTackRows(tack, number, double(period), tacksOrder(circleTacksOrder(number)), 0.5);
                QCOMPARE(line.has_value(), t <= period);
                QCOMPARE(round.has_value(), t <= period);
                if (!line)
                    continue;
                const QVector<int> order = tacksOrder(linTacksOrder(number));
                for (int i = 0; i < number; ++i) { // in the middle of its period
                    const PatternRow* rows = &line->at(4 * i);
                    const float middle = (rows[0].path + rows[3].path) / 2;
                    QVERIFY(qAbs(middle - period * (float(order[i]) + 0.5f)) < 0.001f);
                    QVERIFY(qAbs(rows[1].path - rows[0].path - ascend) < 0.001f);
                    QVERIFY(rows[0].Ir + rows[3].Ir < 1 && rows[1].Ir > 119 && rows[2].Ir > 119);
                }
                double path = 0;
                QVector<int> reached; // places in half millimetres where the beam goes up
                for (const PatternRow& row : *round) {
                    if (row.Ir > 0 && reached.size() < number && row.speed < 601 &&
                        (&row == &round->first() || (&row - 1)->Ir < 1))
                        reached << qRound(path / 0.5 / double(period)) % number;
                    path += double(row.path);
                }
                QCOMPARE(reached, tacksOrder(circleTacksOrder(number)));
            }
        }
    }
}

// As if they were put in one by one, in tables that go back and with paths beyond the end.
void TestGenerators::mergedRows()
{
    Dice dice(7);
    for (int round = 0; round < 500; ++round) {
        QVector<float> table(dice.whole(1, 8)), paths(dice.whole(0, 8));
        for (QVector<float>* list : {&table, &paths})
            std::generate(list->begin(), list->end(), [&] { return float(dice.whole(0, 9)); });
        QVector<int> expected(table.size());
        std::iota(expected.begin(), expected.end(), 0);
        const QVector<float> all = table + paths;
        for (int i = table.size(); i < all.size(); ++i) {
            const auto at =
                std::find_if(expected.begin(), expected.end(), [&](int row) { return all[row] >= all[i]; });
            expected.insert(at == expected.end() ? expected.begin() : at, i);
        }
        QCOMPARE(mergedOrder(table, paths), expected);
    }
}

void TestGenerators::weldTakesTheSeam()
{
    line("100");
    QList<Answer> answers{Answers::entry(1)};
    answers << typed("Ir", "900") << typed("ascend", "10.5") << typed("descend", "4")
            << look("peak", [] { QCOMPARE(number("peak"), QString("85.5")); }) << Answers::button("peakMinus")
            << look("peak",
                    [] {
                        QCOMPARE(number("peak"), QString("85.4"));
                        QCOMPARE(number("Ir"), QString("800"));
                        QTest::keyClicks(Answers::shown<QLineEdit>("title"), " 1"); // one word in the file
                    })
            << Answers::button("pbCreate");
    answer("pbTemplate", answers);
    QCOMPARE(rows(), (QStringList{"Сварка_1", "0.00 0.0 600.0", "10.50 800.0 600.0", "95.90 800.0 600.0",
                                  "99.90 0.0 1200.0"}));
    QVERIFY(m_window->journal.contains("[I]Нажата кнопка 'Сгенерировать' окна 'Линейная сварка'"));
    QCOMPARE(m_window->journal.last(), QString("[I]Закрыто окно 'Линейная сварка'"));
    // The next one begins with the numbers of this one, and behind it.
    m_window->choose("pbTemplate", 2);
    generate(1);
    QCOMPARE(rows()[5], QString("Технол.останов"));
    QCOMPARE(rows().mid(7), (QStringList{"99.90 0.0 600.0", "110.40 800.0 600.0", "195.80 800.0 600.0",
                                         "199.80 0.0 1200.0"}));
}

void TestGenerators::rampsLongerThanTheSeam()
{
    line("100");
    QList<Answer> answers{Answers::entry(1)};
    answers << typed("ascend", "60") << typed("descend", "50")
            << look("peak", [] { QCOMPARE(number("peak"), QString("-10.0")); }) << Answers::button("pbCreate")
            << look("view", [] { QVERIFY(!Answers::shown<PatternView>("view")->warning().isEmpty()); })
            << typed("ascend", "60.1") << typed("descend", "39.9") // in floats a hair more than 100
            << look("peak", [] { QCOMPARE(number("peak"), QString("0.0")); })
            << look("view", [] { QVERIFY(Answers::shown<PatternView>("view")->warning().isEmpty()); })
            << Answers::button("pbCreate");
    answer("pbTemplate", answers);
    QCOMPARE(m_window->journal.count("[A]Ошибка! Подъем и спад вместе длиннее шва!"), 1);
    QCOMPARE(rows().mid(1),
             (QStringList{"0.00 0.0 600.0", "60.10 0.0 600.0", "60.10 0.0 600.0", "100.00 0.0 1200.0"}));
}

// A file may bring a diameter that no degree can be measured on.
void TestGenerators::noDegreesWithoutADiameter()
{
    for (const bool degrees : {true, false}) {
        Kept{"CircleWeld", 50, 1, 2, 1, 0, degrees}.store();
        line("100");
        CircleWeld dialog({100, 0, 600, 1200}, m_window->contour, m_window->find("pbTemplate"));
        dialog.on_pbDegreeOn_clicked();
        dialog.on_pbCreate_clicked();
        QCOMPARE(rows().mid(1),
                 (QStringList{"0.00 0.0 600.0", "1.00 50.0 600.0", "3.00 50.0 600.0", "4.00 0.0 1200.0"}));
    }
}

void TestGenerators::periodIsNotRounded()
{
    Kept{"LinTackWelds", 50, 1, 2, 1, 3}.store();
    line("100");
    answer("pbTemplate",
           {Answers::entry(0), look("period", [] { QCOMPARE(number("period"), QString("33.3")); }),
            Answers::button("pbCreate")});
    QCOMPARE(rows(), (QStringList{"Прихватки", "48.00 0.0 600.0", "49.00 50.0 600.0", "51.00 50.0 600.0",
                                  "52.00 0.0 1200.0", "14.67 0.0 600.0", "15.67 50.0 600.0",
                                  "17.67 50.0 600.0", "18.67 0.0 1200.0", "81.33 0.0 600.0",
                                  "82.33 50.0 600.0", "84.33 50.0 600.0", "85.33 0.0 1200.0"}));
}

// Where programs cannot bring the machine to the tacks the picture says so, and says no more than that; so
// does the journal at each start.
void TestGenerators::warnings()
{
    QString told;
    const auto warning = [&](const char* speed, const QString& order) {
        QString shown;
        QList<Answer> answers{Answers::entry(0)};
        answers << typed("moveSpeed", speed) << look("leTacksOrder", [&] {
            Answers::shown<QLineEdit>("leTacksOrder")->setText(order);
            shown = Answers::shown<PatternView>("view")->warning();
        }) << Answers::button("pbCreate");
        answer("pbTemplate", answers);
        m_window->journal.clear();
        m_window->press("pbGcode");
        const QStringList lines = m_window->journal.filter("[W]");
        told = lines.value(0);
        for (int row = m_window->tech()->rowCount() - 2; row > 0; --row) {
            m_window->tech()->setCurrentCell(row, 0);
            m_window->press("pbDelTechPoint");
        }
        return lines.size() == (shown.isEmpty() ? 0 : 1) ? shown.section('\n', 0, 0) : "told otherwise";
    };
    Kept{"LinTackWelds", 50, 5, 5, 5, 2}.store();
    const QString burns = "На этом шве машина не вернётся назад:";
    seam();
    QCOMPARE(warning("1200", "1,0"), QString());
    line("100");
    QCOMPARE(warning("1200", "1,0"), QString());
    m_window->teach(200, 0, 0);
    QCOMPARE(warning("1200", "1,0"), QString());
    m_window->teach(300, 10, 0);
    QCOMPARE(warning("1200", "1,0"), QString("Шов не прямой, назад машина пойдёт мимо:"));
    QCOMPARE(told, QString("[W]Шов не прямой: на пути 67.62 мм таблица идёт назад, луч пройдёт мимо шва"));
    QCOMPARE(warning("1200", "0,1"), QString());
    // From the very end of the seam nothing goes back, and nothing to 0.
    Kept{"LinTackWelds", 50, 50, 50, 50.25, 2}.store();
    QCOMPARE(warning("1200", "1,0"), burns);
    Kept{"LinTackWelds", 50, 50, 50, 0.1666, 3}.store();
    QCOMPARE(warning("1200", "1,0,2"), burns);
    Kept{"LinTackWelds", 50, 5, 5, 5, 2}.store();
    line("100");
    m_window->teach(100, 100, 0);
    QCOMPARE(warning("600", "1,0"), burns);
    QCOMPARE(
        told,
        QString("[W]На пути 42.50 мм таблица идёт назад, а машина так не пойдёт: луч и движение разойдутся"));
    QCOMPARE(warning("600", "0,1"), QString());
    QCOMPARE(warning("1200", "0,1"), QString("Поперёк X скорость не меняется:"));
    QCOMPARE(told, QString("[W]Поперёк X скорость не меняется: на пути 157.50 мм луч и движение разойдутся"));
}

// A weld may overlap its beginning as long as a pass is left.
void TestGenerators::overlaps()
{
    const auto inRed = [this] {
        bool red = false;
        answer("pbTemplate", {Answers::entry(1),
                              look("view",
                                   [&] {
                                       const QImage view = Answers::shown<QWidget>("view")->grab().toImage();
                                       for (int x = 0; x < view.width(); ++x) {
                                           const QColor at = view.pixelColor(x, view.height() / 2);
                                           red = red || at.red() > at.blue() + 50;
                                       }
                                   }),
                              Answers::cancel()});
        return red;
    };
    Kept{"CircleWeld", 50, 10, 320, 10}.store(); // a turn is 314 mm
    ring("100", 1);
    QVERIFY(inRed());
    ring("100", 2);
    QVERIFY(!inRed());
}

void TestGenerators::unitsForthAndBack()
{
    struct
    {
        const char* group;
        int entry;
    } const dialogs[] = {{"CircleWeld", 1}, {"CircleTackWelds", 0}};
    for (const auto& dialog : dialogs) {
        ring("77.7", 1);
        Kept{dialog.group, 50, 3.3, 17.7, 2.1, 3}.store();
        generate(dialog.entry);
        const QStringList straight = rows();
        for (const int switches : {2, 1}) { // back to millimetres, then written in degrees
            ring("77.7", 1);
            QList<Answer> answers{Answers::entry(dialog.entry)};
            for (int i = 0; i < switches; ++i)
                answers << Answers::button("pbDegreeOn");
            answers << look("ascend", [&] {
                QCOMPARE(number("ascend"), QString(switches == 1 ? "4.9" : "3.30"));
                QCOMPARE(number("ascendTitle"), QString(switches == 1 ? "Подъем, °" : "Подъем, мм"));
                if (dialog.entry == 0)
                    QCOMPARE(number("period"), QString(switches == 1 ? "120.00" : "81.37"));
            }) << Answers::button("pbCreate");
            answer("pbTemplate", answers);
            QCOMPARE(rows(), straight);
            const QSettings settings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
            QCOMPARE(settings.value(QString(dialog.group) + "/DegreeOn").toBool(), switches == 1);
        }
    }
}

void TestGenerators::boundsAndCounts()
{
    struct
    {
        const char *group, *ramp, *peak;
        bool degrees = false;
        const char *period = nullptr, *order = nullptr; // of four tacks, where the dialog opened with three
    } const dialogs[] = {{"LinWeld", "1080.0", "3600.0"},
                         {"LinTackWelds", "1080.0", "3600.0", false, "33.3", "2,0,3,1"},
                         {"CircleWeld", "10000.00", "10000.00"},
                         {"CircleWeld", "3600.0", "3600.0", true},
                         {"CircleTackWelds", "10000.00", "10000.00", false, "78.54", "0,2,1,3"},
                         {"CircleTackWelds", "90.0", "90.0", true, "90.00", "0,2,1,3"}};
    for (const auto& dialog : dialogs) {
        dialog.group[0] == 'L' ? line("100") : ring("100", 1);
        Kept{dialog.group, 50, 1, 1, 1, 3, dialog.degrees}.store();
        QList<Answer> answers{Answers::entry(dialog.order ? 0 : 1)};
        const std::pair<const char*, const char*> most[] = {{"ascend", dialog.ramp}, {"descend", dialog.ramp},
                                                            {"peak", dialog.peak},   {"Ir", "800"},
                                                            {"weldSpeed", "2400.0"}, {"moveSpeed", "2400.0"}};
        for (const auto& [label, shown] : most)
            answers << typed(label, "1234567") << look(label, [label = label, shown = shown] {
                QCOMPARE(number(label), QString(shown));
            });
        if (dialog.order)
            answers << Answers::button("numberPlus") << look("period", [&dialog] {
                QCOMPARE(number("period"), QString(dialog.period));
                QCOMPARE(Answers::shown<QLineEdit>("leTacksOrder")->text(), QString(dialog.order));
            });
        answer("pbTemplate", answers << Answers::cancel());
    }
}

void TestGenerators::refusals()
{
    const QString alarm = "[A]Ошибка! Расчетная длина прихватки больше периода прихватки!";
    Kept{"LinTackWelds", 50, 10, 31, 10, 2}.store();
    line("100");
    const auto stays = look("pbCreate", [] {});
    const QList<Answer> refused{Answers::entry(0), Answers::button("pbCreate"), stays, stays,
                                Answers::cancel()};
    answer("pbTemplate", refused);
    QCOMPARE(rows(), QStringList());
    QCOMPARE(m_window->journal.count(alarm), 1);

    Kept{"CircleTackWelds", 50, 30, 31, 30, 4, true}.store(); // 91 of 90 degrees
    ring("100", 1);
    answer("pbTemplate", refused);
    QCOMPARE(rows(), QStringList{"Прихватки"});
    QCOMPARE(m_window->journal.count(alarm), 1);

    Kept{"CircleTackWelds", 50, 30, 30, 30, 4, true}.store(); // from tack to tack without a gap
    ring("100", 4);
    generate(0);
    QCOMPARE(rows().size(), 1 + 3 + 3 * 4 - 0);
}

void TestGenerators::settingsOfNoise()
{
    Kept{"CircleTackWelds", 1e9, qQNaN(), -5, 1e30, -7, true}.store();
    QSettings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat)
        .setValue("CircleTackWelds/Number", "many");
    ring("100", 1);
    answer("pbTemplate", {Answers::entry(0),
                          look("Ir",
                               [] {
                                   QCOMPARE(number("Ir"), QString("800"));
                                   QCOMPARE(number("ascend"), QString("0.0"));
                                   QCOMPARE(number("peak"), QString("0.0"));
                                   QCOMPARE(number("descend"), QString("90.0"));
                                   QCOMPARE(number("number"), QString("1"));
                               }),
                          Answers::cancel()});
}

void TestGenerators::run_data()
{
    QTest::addColumn<int>("number"); // of tacks, 0 for a weld
    QTest::addColumn<QString>("scheme");
    QTest::addColumn<bool>("degrees");
    for (const int number : {0, 2, 3, 5, 8, 12}) {
        for (const char* scheme : {"line", "seam", "ring", "circle"}) {
            const bool round = scheme[0] == 'r' || scheme[0] == 'c';
            for (const bool degrees : {false, true}) {
                if (round || !degrees)
                    QTest::addRow("%d %s %s", number, scheme, degrees ? "deg" : "mm")
                        << number << QString(scheme) << degrees;
            }
        }
    }
}

void TestGenerators::circle(int passes)
{
    m_window->newRound("114.59");
    for (const double turn : {0.0, 2 * M_PI / 3, 4 * M_PI / 3})
        m_window->teach(float(57.295 * std::cos(turn) - 20), float(57.295 * std::sin(turn) + 10), 0);
    m_window->press("pbRing");
    answer("nrings", {Answers::number(QString::number(passes))});
}

void TestGenerators::seam()
{
    m_window->choose("pbNew", 0);
    for (const float at : {0.0f, 35.0f, 150.0f, 180.0f, 300.0f})
        m_window->teach(0.6f * at, 0.8f * at, 0);
}

// What the dialogs write is run by the controller, and the beam burns where the pattern says.
void TestGenerators::run()
{
    QFETCH(int, number);
    QFETCH(QString, scheme);
    QFETCH(bool, degrees);
    const bool round = scheme == "ring" || scheme == "circle";
    // The turn of such a part is a millimetre a degree: programs round that to two decimals.
    const double length = round ? 114.59 * M_PI : 300;
    const double mm = degrees ? length / 360 : 1; // in a unit of the pattern
    const QString group = QString(round ? "Circle" : "Lin") + (number ? "TackWelds" : "Weld");
    Kept kept{group, 40, 4 / mm, (number ? 6 : length - 20) / mm, 3 / mm, number, degrees};
    kept.store();
    const QMap<QString, std::function<void()>> contours = {{"line", [this] { line("300"); }},
                                                           {"seam", [this] { seam(); }},
                                                           {"ring", [this] { ring("114.59", 12); }},
                                                           {"circle", [this] { circle(12); }}};
    contours[scheme]();
    generate(number ? 0 : 1);
    m_window->press("pbGcode");

    Beam beam(*m_window);
    const double t = 4 + kept.peak * mm + 3;
    const auto burns = beam.run([&](NcTestHost& host) {
        const double turn =
            scheme == "ring" ? host.at("V") : std::atan2(host.at("Y") - 10, host.at("X") + 20) * 180 / M_PI;
        // A tack may begin a hair before the first point.
        return round ? std::fmod(turn + 365, 360.0) / 360 * length - 5 * length / 360
                     : std::hypot(host.at("X"), host.at("Y"));
    });
    QCOMPARE(beam.trouble(), QString());
    const QVector<int> order =
        number == 0 ? QVector<int>{0} : tacksOrder(round ? circleTacksOrder(number) : linTacksOrder(number));
    QCOMPARE(burns.size(), order.size());
    for (int i = 0; i < burns.size(); ++i) {
        const double period = length / qMax(1, number);
        const double start = order[i] * period + (round || number == 0 ? 0 : (period - t) / 2);
        const QByteArray where = QByteArray::number(burns[i].from) + " to " +
                                 QByteArray::number(burns[i].to) + " instead of " + QByteArray::number(start);
        // Half a milliampere of the ramps, the rounding of the programs and a step of the simulation.
        QVERIFY2(qAbs(burns[i].from - start) < 1.2, where);
        QVERIFY2(qAbs(burns[i].to - start - t) < 1.2, where);
        QVERIFY(burns[i].peak > 39.9 && burns[i].peak < 40.1);
    }
    // Tails: a second behind the beam, 0.2 s behind the motion but for a circle. Where the rest of the passes
    // is left out the beam's pause outlasts the motion.
    if (!round)
        QVERIFY2(qAbs(beam.ended(3) - 1 - beam.ended(1) + 0.2) < 0.1, qPrintable(scheme));
}

QTEST_MAIN(TestGenerators)
#include "test_generators.moc"
