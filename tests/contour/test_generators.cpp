#include "contourfixture.h"
#include "deathtest.h"
#include "generators.h"
#include "nctesthost.h"
#include "schema.h"
#include "weldmaker.h"
#include "weldpattern.h"
#include "widgets.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSettings>

#include <algorithm>
#include <numeric>

namespace {

// A pattern as the settings keep it: current, ascent, peak, descent, and how many tacks.
void keep(const QString& group, const QList<double>& values, bool degrees = false)
{
    QSettings settings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
    const char* const names[] = {"/Ir", "/Ascend", "/Peak", "/Descend", "/Number"};
    for (int i = 0; i < values.size(); ++i)
        settings.setValue(group + names[i], values[i]);
    settings.setValue(group + "/DegreeOn", degrees);
}

// Looks at the dialog on top.
Answer look(const char* widget, const std::function<void()>& at)
{
    return Answers::at<QWidget>(widget, [at](QWidget*) { at(); });
}

Answer shows(const char* label, const QString& text)
{
    return Answers::at<QLabel>(label, [text](QLabel* shown) { QCOMPARE(shown->text(), text); });
}

Answer enabled(const char* widget, bool is)
{
    return Answers::at<QWidget>(widget, [is](QWidget* shown) { QCOMPARE(shown->isEnabled(), is); });
}

Answer ticked(const char* box) // a box takes touches on its text only
{
    return Answers::at<QAbstractButton>(box, [](QAbstractButton* shown) { shown->click(); });
}

const Answer stays = look("pbCreate", [] {});
const Answer create = Answers::button("pbCreate");

QString warningShown()
{
    return Answers::shown<PatternView>("view")->warning().section('\n', 0, 0);
}

// The programs of the three channels run on a simulated controller; tells where the beam was on.
class Beam
{
public:
    explicit Beam(const ContourWindow& window)
    {
        const auto program = [&](const char* edit) {
            return window.find<QPlainTextEdit>(edit)->toPlainText();
        };
        const bool ring = window.contour->schema()->circle();
        const QList<float> first = window.contour->coords(0); // where the operator places the machine
        host().at("X") = double(first[ring ? 1 : 0]);
        host().at("Y") = double(first[ring ? 2 : 1]);
        m_bench.start(3, program("teGcode_3"));
        m_bench.forSeconds(1);
        if (ring)
            m_bench.start(2, program("teGcode_2"));
        m_bench.forSeconds(1);
        m_bench.start(1, program("teGcode"));
    }

    NcTestHost& host() { return m_bench.host; }

    // `place` of the machine on the seam, mm. Each time the beam was on: from where to where, and its peak.
    struct Burn
    {
        double from, to, peak;
    };
    QVector<Burn> run(const std::function<double(NcTestHost&)>& place)
    {
        QVector<Burn> burns;
        bool on = false;
        m_ended = m_bench.untilDone(5000, {1, 2, 3}, [&] {
            const double Ir = host().at("IR");
            const double at = place(host());
            if (Ir > 0.5) {
                if (!on)
                    burns.append({at, at, Ir});
                burns.last().to = at;
                burns.last().peak = std::max(burns.last().peak, Ir);
            }
            on = Ir > 0.5;
            for (const int channel : {1, 3}) {
                if (m_bench.nc.state(channel) == plant::ChannelState::Running)
                    m_runningAt[channel] = host().time;
            }
        });
        return burns;
    }

    double ended(int channel) const { return m_runningAt.value(channel); } // s; of channels 1 and 3

    QString trouble() const
    {
        QStringList all = m_bench.host.told("deadlock");
        for (int channel = 1; channel <= 3; ++channel)
            all << m_bench.nc.error(channel);
        all << (m_ended ? "" : "does not end");
        return all.join("");
    }

private:
    NcBench m_bench{0.02};
    bool m_ended = false;
    QMap<int, double> m_runningAt; // the last time that a channel ran
};

} // namespace

// The dialogs that write the two tables of a contour.
class TestGenerators : public ContourTest
{
    Q_OBJECT

private slots:
    void init()
    {
        begin();
        m_window->enter("weldSpeed", "600");
        m_window->enter("contourSpeed", "1200");
    }
    void cleanup() { end(); }

    // --- the rows of a pattern ---

    void orders()
    {
        QCOMPARE(linTacksOrder(6), "3,0,5,1,4,2");
        QCOMPARE(circleTacksOrder(4), "0,2,1,3");
        QCOMPARE(circleTacksOrder(8), "0,4,6,2,3,5,7,1");
        for (int n = 2; n <= 12; ++n) {
            for (const QString& text : {linTacksOrder(n), circleTacksOrder(n)}) {
                QVector<int> order = tacksOrder(text);
                if (text == circleTacksOrder(n) && n != 8) // the next tack lies opposite, or beside that
                    for (int i = 1; i < n; ++i)
                        QVERIFY2((order[i] - order[i - 1] + n) % n - n / 2 <= 1, qPrintable(text));
                std::sort(order.begin(), order.end());
                QVector<int> all(n);
                std::iota(all.begin(), all.end(), 0);
                QCOMPARE(order, all);
            }
        }
    }

    void typedOrders()
    {
        QCOMPARE(tacksOrder("2,0,,1,"), (QVector<int>{2, 0, 1}));
        QCOMPARE(tacksOrder("2,0,x,1"), (QVector<int>{2, 0}));
        QCOMPARE(tacksOrder("1,0x10,2"), (QVector<int>{1}));
        QCOMPARE(tacksOrder("1,99999999999"), (QVector<int>{1}));
        QVERIFY(tacksOrder("").isEmpty());
        const WeldPattern tack{20, 1, 2, 1, 600, 1200};
        QVERIFY(linTackRows(tack, 4, {0}) && !linTackRows(tack, 3.99F, {0})); // without a gap; none left
        // Places beyond one turn are still ahead, never behind.
        const auto rows = circleTackRows(tack, 4, 10, {9, 2, 2147483647, 0}, 1);
        for (const PatternRow& row : *rows)
            QVERIFY(row.path >= 0 && row.path < 40);
    }

    // As if they were put in one by one, in tables that go back and with paths beyond the end.
    void mergedRows()
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
                const auto at = std::find_if(expected.begin(), expected.end(),
                                             [&](int row) { return all[row] >= all[i]; });
                expected.insert(at == expected.end() ? expected.begin() : at, i);
            }
            QCOMPARE(mergedOrder(table, paths), expected);
        }
    }

    // --- the dialogs of the patterns ---

    void weldTakesTheSeam()
    {
        line(100);
        QList<Answer> answers{Answers::entry(1)};
        answers << typed("Ir", "900") << typed("ascend", "10.5") << typed("descend", "4")
                << shows("peak", "85.5") << Answers::button("peakMinus") << shows("peak", "85.4")
                << shows("Ir", "800") << look("title", [] { // one word in the file
                       QTest::keyClicks(Answers::shown<QLineEdit>("title"), " 1");
                   });
        m_window->press("pbTemplate", answers << create);
        const QString first = "Сварка_1|0.00 0.0 600.0|10.50 800.0 600.0|95.90 800.0 600.0|99.90 0.0 1200.0";
        QCOMPARE(rows(), first);
        QVERIFY(m_window->journal.contains("[I]Нажата кнопка 'Сгенерировать' окна 'Линейная сварка'"));
        QCOMPARE(told(), "[I]Закрыто окно 'Линейная сварка'");
        // The next one begins with the numbers of this one, and behind it.
        m_window->choose("pbTemplate", 2);
        generate(1);
        QCOMPARE(rows(), first +
                             "|Технол.останов|Сварка|99.90 0.0 600.0|110.40 800.0 600.0|195.80 800.0 600.0|"
                             "199.80 0.0 1200.0");
    }

    void rampsLongerThanTheSeam()
    {
        line(100);
        const QString warning = "Подъем и спад вместе длиннее шва:";
        QList<Answer> answers{Answers::entry(1)};
        answers << typed("ascend", "60") << typed("descend", "50") << shows("peak", "-10.0") << create
                << look("view", [&] { QCOMPARE(warningShown(), warning); }) << typed("ascend", "60.1")
                << typed("descend", "39.9") // in floats a hair more than 100
                << shows("peak", "0.0") << look("view", [] { QCOMPARE(warningShown(), ""); }) << create;
        m_window->press("pbTemplate", answers);
        QCOMPARE(m_window->journal.count("[A]Ошибка! Подъем и спад вместе длиннее шва!"), 1);
        QCOMPARE(rows(), "Сварка|0.00 0.0 600.0|60.10 0.0 600.0|60.10 0.0 600.0|100.00 0.0 1200.0");
    }

    // A file may bring a diameter that no degree can be measured on.
    void noDegreesWithoutADiameter()
    {
        for (const bool degrees : {true, false}) {
            keep("CircleWeld", {50, 1, 2, 1, 0}, degrees);
            line(100);
            CircleWeld dialog({100, 0, 600, 1200}, m_window->contour, m_window->find("pbTemplate"));
            dialog.on_pbDegreeOn_clicked();
            dialog.on_pbCreate_clicked();
            QCOMPARE(rows(), "Сварка|0.00 0.0 600.0|1.00 50.0 600.0|3.00 50.0 600.0|4.00 0.0 1200.0");
        }
    }

    void periodIsNotRounded()
    {
        keep("LinTackWelds", {50, 1, 2, 1, 3});
        line(100);
        m_window->press("pbTemplate", {Answers::entry(0), shows("period", "33.3"), create});
        QCOMPARE(rows(), "Прихватки|48.00 0.0 600.0|49.00 50.0 600.0|51.00 50.0 600.0|52.00 0.0 1200.0|"
                         "14.67 0.0 600.0|15.67 50.0 600.0|17.67 50.0 600.0|18.67 0.0 1200.0|"
                         "81.33 0.0 600.0|82.33 50.0 600.0|84.33 50.0 600.0|85.33 0.0 1200.0");
    }

    // Where programs cannot bring the machine to the tacks the picture says so, and says no more than that;
    // so does the journal at each start.
    void warnings()
    {
        const auto warning = [&](const char* speed, const QString& order) {
            QString shown;
            QList<Answer> answers{Answers::entry(0)};
            answers << typed("moveSpeed", speed) << look("leTacksOrder", [&] {
                Answers::shown<QLineEdit>("leTacksOrder")->setText(order);
                shown = warningShown();
            }) << create;
            m_window->press("pbTemplate", answers);
            m_window->journal.clear();
            m_window->press("pbGcode");
            for (int row = m_window->tech()->rowCount() - 2; row > 0; --row) {
                m_window->tech()->setCurrentCell(row, 0);
                m_window->press("pbDelTechPoint");
            }
            return shown + m_window->journal.filter("[W]").join("");
        };
        const QString back = "На этом шве машина не вернётся назад:[W]На пути %1 мм таблица идёт назад, "
                             "машина так не пойдёт: луч и движение разойдутся";
        const QList<double> two{50, 5, 5, 5, 2};
        keep("LinTackWelds", two);
        seam();
        QCOMPARE(warning("1200", "1,0"), "");
        line(100);
        QCOMPARE(warning("1200", "1,0"), "");
        m_window->teach(200, 0, 0);
        QCOMPARE(warning("1200", "1,0"), "");
        m_window->teach(300, 10, 0);
        QCOMPARE(warning("1200", "1,0"),
                 "Шов не прямой, назад машина пойдёт мимо:[W]Шов не прямой: на пути 67.62"
                 " мм таблица идёт назад, луч пройдёт мимо шва");
        QCOMPARE(warning("1200", "0,1"), "");
        // From the very end of the seam nothing goes back, and nothing to 0.
        keep("LinTackWelds", {50, 50, 50, 50.25, 2});
        QCOMPARE(warning("1200", "1,0"), back.arg("0.00"));
        keep("LinTackWelds", {50, 50, 50, 0.1666, 3});
        QCOMPARE(warning("1200", "1,0,2"), back.arg("0.00"));
        keep("LinTackWelds", two);
        line(100);
        m_window->teach(100, 100, 0);
        QCOMPARE(warning("600", "1,0"), back.arg("42.50"));
        QCOMPARE(warning("600", "0,1"), "");
        QCOMPARE(warning("1200", "0,1"), "Поперёк X скорость не меняется:[W]Поперёк X скорость не меняется: "
                                         "на пути 157.50 мм луч и движение разойдутся");
    }

    // A weld may overlap its beginning as long as a pass is left.
    void overlaps()
    {
        keep("CircleWeld", {50, 10, 320, 10}); // a turn is 314 mm
        for (const int passes : {1, 2}) {
            ring("100", passes);
            bool red = false;
            const Answer colours = Answers::at<QWidget>("view", [&](QWidget* picture) {
                const QImage view = picture->grab().toImage();
                for (int x = 0; x < view.width(); ++x) {
                    const QColor at = view.pixelColor(x, view.height() / 2);
                    red = red || at.red() > at.blue() + 50;
                }
            });
            m_window->press("pbTemplate", {Answers::entry(1), colours, Answers::cancel()});
            QCOMPARE(red, passes == 1);
        }
    }

    void unitsForthAndBack()
    {
        const std::tuple<const char*, int, const char*> dialogs[] = {
            {"CircleWeld", 1, "Сварка|0.00 0.0 600.0|3.30 50.0 600.0|21.00 50.0 600.0|23.10 0.0 1200.0"},
            {"CircleTackWelds", 0,
             "Прихватки|3.30 50.0 600.0|21.00 50.0 600.0|23.10 0.0 1200.0|81.37 0.0 600.0|84.67 50.0 "}};
        for (const auto& [group, entry, begin] : dialogs) {
            QString straight;
            for (const int switches : {0, 2, 1}) { // back to millimetres, then written in degrees
                const bool degrees = switches == 1;
                ring("77.7", 1);
                if (switches == 0)
                    keep(group, {50, 3.3, 17.7, 2.1, 3});
                QList<Answer> answers{Answers::entry(entry)};
                for (int i = 0; i < switches; ++i)
                    answers << Answers::button("pbDegreeOn");
                answers << shows("ascend", degrees ? "4.9" : "3.30")
                        << shows("ascendTitle", degrees ? "Подъем, °" : "Подъем, мм");
                if (entry == 0)
                    answers << shows("period", degrees ? "120.00" : "81.37");
                m_window->press("pbTemplate", answers << create);
                straight = switches == 0 ? rows() : straight;
                QVERIFY2(rows().startsWith(begin), qPrintable(rows()));
                QCOMPARE(rows(), straight);
                const QSettings settings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
                QCOMPARE(settings.value(QString(group) + "/DegreeOn").toBool(), degrees);
            }
        }
    }

    void boundsAndCounts()
    {
        struct
        {
            const char *group, *ramp, *peak;
            bool degrees = false;
            const char *period = nullptr,
                       *order = nullptr; // of four tacks, where the dialog opened with three
        } const dialogs[] = {{"LinWeld", "1080.0", "3600.0"},
                             {"LinTackWelds", "1080.0", "3600.0", false, "33.3", "2,0,3,1"},
                             {"CircleWeld", "10000.00", "10000.00"},
                             {"CircleWeld", "3600.0", "3600.0", true},
                             {"CircleTackWelds", "10000.00", "10000.00", false, "78.54", "0,2,1,3"},
                             {"CircleTackWelds", "90.0", "90.0", true, "90.00", "0,2,1,3"}};
        for (const auto& dialog : dialogs) {
            dialog.group[0] == 'L' ? line(100) : ring("100", 1);
            keep(dialog.group, {50, 1, 1, 1, 3}, dialog.degrees);
            QList<Answer> answers{Answers::entry(dialog.order ? 0 : 1)};
            const std::pair<const char*, const char*> most[] = {
                {"ascend", dialog.ramp}, {"descend", dialog.ramp}, {"peak", dialog.peak},
                {"Ir", "800"},           {"weldSpeed", "2400.0"},  {"moveSpeed", "2400.0"}};
            for (const auto& [label, shown] : most)
                answers << typed(label, "1234567") << shows(label, shown);
            if (dialog.order)
                answers << Answers::button("numberPlus") << shows("period", dialog.period)
                        << look("period", [&] {
                               QCOMPARE(Answers::shown<QLineEdit>("leTacksOrder")->text(), dialog.order);
                           });
            m_window->press("pbTemplate", answers << Answers::cancel());
        }
        // What a file may bring.
        keep("CircleTackWelds", {1e9, qQNaN(), -5, 1e30, -7}, true);
        m_window->press("pbTemplate",
                        {Answers::entry(0), shows("Ir", "800"), shows("ascend", "0.0"), shows("peak", "0.0"),
                         shows("descend", "90.0"), shows("number", "1"), Answers::cancel()});
    }

    void refusals()
    {
        const QString alarm = "[A]Ошибка! Расчетная длина прихватки больше периода прихватки!";
        keep("LinTackWelds", {50, 10, 31, 10, 2});
        line(100);
        const QList<Answer> refused{Answers::entry(0), create, stays, stays, Answers::cancel()};
        m_window->press("pbTemplate", refused);
        QCOMPARE(rows(), "");
        QCOMPARE(m_window->journal.count(alarm), 1);

        keep("CircleTackWelds", {50, 30, 31, 30, 4}, true); // 91 of 90 degrees
        ring("100", 1);
        m_window->press("pbTemplate", refused);
        QCOMPARE(rows(), "Прихватки");
        QCOMPARE(m_window->journal.count(alarm), 1);

        keep("CircleTackWelds", {50, 30, 30, 30, 4}, true); // from tack to tack without a gap
        ring("100", 4);
        generate(0);
        QCOMPARE(rows().count('|'), 3 + 3 * 4);
    }

    void run_data()
    {
        QTest::addColumn<int>("number"); // of tacks, 0 for a weld
        for (const int number : {0, 2, 3, 5, 8, 12}) {
            for (const char* scheme : {"line", "seam", "ring", "circle", "ring deg", "circle deg"})
                QTest::addRow("%s %d", scheme, number) << number;
        }
    }

    // What the dialogs write is run by the controller, and the beam burns where the pattern says.
    void run()
    {
        QFETCH(int, number);
        const QString scheme = QString(QTest::currentDataTag()).section(' ', 0, -2);
        const bool onRing = scheme.startsWith("ring");
        const bool round = onRing || scheme.startsWith("circle");
        // The turn of such a part is a millimetre a degree: programs round that to two decimals.
        const double length = round ? 114.59 * M_PI : 300;
        const double mm = scheme.endsWith("deg") ? length / 360 : 1; // in a unit of the pattern
        const QString group = QString(round ? "Circle" : "Lin") + (number ? "TackWelds" : "Weld");
        const double peak = number ? 6 : length - 20;
        keep(group, {40, 4 / mm, peak / mm, 3 / mm, double(number)}, scheme.endsWith("deg"));
        onRing ? ring("114.59", 12) : round ? circle(12) : scheme == "line" ? line(300) : seam();
        generate(number ? 0 : 1);
        m_window->press("pbGcode");

        Beam beam(*m_window);
        const double t = 4 + peak + 3;
        const auto burns = beam.run([&](NcTestHost& host) {
            const double turn =
                onRing ? host.at("V") : std::atan2(host.at("Y") - 10, host.at("X") + 20) * 180 / M_PI;
            // A tack may begin a hair before the first point.
            return round ? std::fmod(turn + 365, 360.0) / 360 * length - 5 * length / 360
                         : std::hypot(host.at("X"), host.at("Y"));
        });
        QCOMPARE(beam.trouble(), "");
        const QVector<int> order = number == 0
                                       ? QVector<int>{0}
                                       : tacksOrder(round ? circleTacksOrder(number) : linTacksOrder(number));
        QCOMPARE(burns.size(), order.size());
        for (int i = 0; i < burns.size(); ++i) {
            const double period = length / qMax(1, number);
            const double start = order[i] * period + (round || number == 0 ? 0 : (period - t) / 2);
            const QByteArray where = QByteArray::number(burns[i].from) + " to " +
                                     QByteArray::number(burns[i].to) + " instead of " +
                                     QByteArray::number(start);
            // Half a milliampere of the ramps, the rounding of the programs and a step of the simulation.
            QVERIFY2(qAbs(burns[i].from - start) < 1.2, where);
            QVERIFY2(qAbs(burns[i].to - start - t) < 1.2, where);
            QVERIFY(burns[i].peak > 39.9 && burns[i].peak < 40.1);
        }
        // Tails: a second behind the beam, 0.2 s behind the motion but for a circle. Where the rest of the
        // passes is left out the beam's pause outlasts the motion.
        if (!round)
            QVERIFY2(qAbs(beam.ended(3) - 1 - beam.ended(1) + 0.2) < 0.1, qPrintable(scheme));
    }

    // --- beside the patterns: points of the contour in the technology table, arcs of frames ---

    void addsContourPoints()
    {
        const auto triangle = [this] {
            m_window->newLine({{0, 0, 0}, {100, 0, 0}, {100, 75, 0}});
            m_window->choose("pbRing", 0); // 300 mm a pass
            m_window->enter("nrings", "3");
        };
        triangle();
        QList<Answer> answers = typed("pointNumber", "9"); // only three are there
        answers << typed("rotateNumber", "7") << shows("pointNumber", "3") << shows("rotateNumber", "3")
                << Answers::button("pbAdd") << ticked("cbAllPoints") << ticked("rbAllRotate")
                << enabled("pointNumber", false) << enabled("rotateNumberPlus", false) << Answers::cancel();
        m_window->press("pbAddTechPoint", answers);
        QCOMPARE(rows(), "775.00 0.0 600.0");
        QCOMPARE(told(), "[I]Закрыто окно 'Добавление точки контура'");

        m_window->tech()->setCurrentCell(1, 0);
        m_window->press("pbDelTechPoint"); // what was ticked is remembered
        m_window->press("pbAddTechPoint",
                        {Answers::button("pbAdd"), look("pbAdd", [] {}), Answers::cancel()});
        QCOMPARE(tech(0), "0.00 0.00 100.00 175.00 300.00 400.00 475.00 600.00 700.00 775.00 900.00");
        for (const bool all : {true, false}) { // on one pass; one on all
            triangle();
            m_contour->addContourPoint(all, !all, 2, 2);
            QCOMPARE(tech(0), all ? "0.00 0.00 100.00 175.00 900.00" : "0.00 1000.00 100.00 400.00 900.00");
        }
        QVERIFY(deathOf([this] {
                    m_contour->addContourPoint(false, false, 1, 4);
                }).contains("rotate <= nrings->value()"));
    }

    void arcThroughThreePoints()
    {
        const auto frame = [this](int row, const QList<Answer>& answers) {
            m_window->touchCell(m_window->points(), row, 3, answers);
        };
        m_window->newLine({{0, 0, 0}, {100, 0, 0}, {100, 0, 60}, {50, 0, 120}});
        frame(3, {}); // the end of an open contour is no frame
        QVERIFY(!QApplication::activeModalWidget());
        const Answer arc = Answers::button("pbType"), plane = Answers::button("pbXZ"),
                     on = Answers::button("pbOn");
        frame(0, {arc, enabled("frmArc", true), enabled("cbCalc", false), on, look("pbOn", [] {}),
                  Answers::button("pbCancel")}); // an arc of no radius stays open
        QCOMPARE(points(3), "Прямая Прямая Прямая Конец");
        QCOMPARE(told(), "[A]Ошибка! Радиус, мм: от 0.01 до 9999999!");

        // In XY the points lie on a line; in XZ on a circle.
        frame(1, {arc, ticked("cbCalc"),
                  look("lblNoArc", [] { QVERIFY(!Answers::shown<QAbstractButton>("cbCalc")->isChecked()); }),
                  plane, ticked("cbClockWise"), ticked("cbCalc"), shows("radius", "58.31"), on});
        const QString shown = "Дуга, r=58.3, пр. ч.с., пл-XZ ";
        QCOMPARE(points(3), shown + shown + "Прямая Конец");
        // Three quarters of the circle with that diameter and three quarters more would be another seam.
        const double r = std::hypot(100, 60) / 2;
        const double arcs = 2 * r * (std::asin(50 / r) + std::asin(30 / r));
        QVERIFY(qAbs(m_window->find<PoLabel>("length")->value() - (arcs + std::hypot(50, 60))) < 0.01);
        m_window->press("pbGcode");
        Beam machine(*m_window);
        machine.run([](NcTestHost&) { return 0.0; });
        QCOMPARE(machine.trouble(), "");
        QVERIFY(qAbs(machine.host().at("Z") - 120) < 0.01);

        m_window->choose("pbRing", 0);
        frame(3, {arc, plane, ticked("cbCalc"), on}); // the closing frame ends at the first point
        const QStringList closed = points(3).split("Дуга");
        QCOMPARE(closed.size(), 5);
        QCOMPARE(closed[3].trimmed(), closed[4]);
    }

private:
    void generate(int entry) { m_window->press("pbTemplate", {Answers::entry(entry), create}); }
    void line(float length) { m_window->newLine({{0, 0, 0}, {length, 0, 0}}); }
    void ring(const QString& D, int passes)
    {
        m_window->newRing(D, "4");
        m_window->press("pbRing");
        m_window->enter("nrings", QString::number(passes));
    }
    // --- the patterns on the machine ---

    void circle(int passes) // of the diameter 114.59, its centre at (-20, 10)
    {
        QList<QList<float>> points;
        for (const double turn : {0.0, 2 * M_PI / 3, 4 * M_PI / 3})
            points << QList<float>{float(57.295 * std::cos(turn) - 20), float(57.295 * std::sin(turn) + 10),
                                   0};
        m_window->newRound("114.59", points);
        m_window->press("pbRing");
        m_window->enter("nrings", QString::number(passes));
    }

    void seam() // 300 mm in five points on one line across X and Y
    {
        m_window->choose("pbNew", 0);
        for (const float at : {0.0f, 35.0f, 150.0f, 180.0f, 300.0f})
            m_window->teach(0.6f * at, 0.8f * at, 0);
    }
    // Path, current and speed of the rows between the fixed ones; comments by their text.
    QString rows() const
    {
        const QTableWidget* table = m_window->tech();
        QStringList list;
        for (int row = 1; row < table->rowCount() - 1; ++row) {
            list << tech(row, 0);
            if (table->columnSpan(row, 0) == 1)
                list.last() += ' ' + tech(row, 1) + ' ' + tech(row, 5);
        }
        return list.join('|');
    }
};

QTEST_MAIN(TestGenerators)

#include "test_generators.moc"
