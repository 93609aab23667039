#include "weldfixture.h"

#include <QtTest>

namespace {

bool near(double a, double b, double tolerance = 1e-4)
{
    return std::fabs(a - b) < tolerance;
}

bool near(const QList<float>& a, const QList<float>& b, double tolerance = 1e-3)
{
    for (int i = 0; i < a.size(); ++i) {
        if (!near(double(a[i]), double(b[i]), tolerance))
            return false;
    }
    return a.size() == b.size();
}

} // namespace

class TestWeldGeometry : public QObject
{
    Q_OBJECT

private slots:
    void frameLengths()
    {
        Weld weld(new SchemaXYZ);
        weld.point({0, 0, 0}, arc(50, 1, 1)).point({50, 9, 50});
        WeldContour& contour = weld.tables.contour;
        const QList<float>& a = contour.rows[0].coords;
        const QList<float>& b = contour.rows[1].coords;
        QVERIFY(near(frameLength(contour, 0, a, b), 25 * M_PI)); // a quarter in XZ, y plays no part
        QCOMPARE(frameLength(contour, -1, a, b), 0.0);
        QCOMPARE(frameLength(contour, 2, a, b), 0.0);
        contour.rows[0].frame.type = Frame::End;
        QCOMPARE(frameLength(contour, 0, a, b), 0.0);
        contour.rows[0].frame = arc(20, 1, 1); // cannot reach
        QVERIFY(std::isnan(frameLength(contour, 0, a, b)));
        // Half a turn whose radius is rounded below half of the chord.
        const double half = std::sqrt(50.0);
        contour.rows[0].frame = arc(float(half), 1, 1);
        QVERIFY(double(float(half)) < half);
        QVERIFY(near(frameLength(contour, 0, {0, 0, 0}, {10, 0, 10}), half * M_PI));
    }

    void lengthsOfPassAndProgram_data()
    {
        QTest::addColumn<int>("kind");    // 0 straight, 1 circle, 2 ring
        QTest::addColumn<int>("closure"); // 0 open, 1 forward, 2 backward
        QTest::addColumn<double>("pass");
        QTest::addColumn<double>("total");
        QTest::newRow("open triangle") << 0 << 0 << 70.0 << 70.0;
        QTest::newRow("triangle closed forward") << 0 << 1 << 120.0 << 360.0;
        QTest::newRow("triangle closed backward counts out and back") << 0 << 2 << 140.0 << 420.0;
        QTest::newRow("open arc") << 1 << 0 << 25 * M_PI << 25 * M_PI;
        QTest::newRow("closed circle") << 1 << 1 << 100 * M_PI << 300 * M_PI;
        QTest::newRow("open ring") << 2 << 0 << 50 * M_PI << 50 * M_PI;
        QTest::newRow("closed ring") << 2 << 1 << 100 * M_PI << 300 * M_PI;
    }

    void lengthsOfPassAndProgram()
    {
        QFETCH(int, kind);
        QFETCH(int, closure);
        QFETCH(double, pass);
        QFETCH(double, total);
        Weld weld(kind == 0   ? static_cast<Schema*>(new SchemaXYZ)
                  : kind == 1 ? static_cast<Schema*>(new SchemaXYZr(100, 0, 0))
                              : static_cast<Schema*>(new SchemaCircle(100, 3)));
        if (kind == 0)
            weld.point({0, 0, 0}).point({30, 0, 0}).point({30, 40, 0});
        else if (kind == 1)
            weld.point({50, 0, 0}).point({0, 50, 0});
        else
            weld.point({0, 0, 0, 0}).point({90, 0, 0, 0}).point({180, 0, 0, 0});
        weld.tables.contour.nrings = 3;
        if (closure > 0)
            weld.closed(3, closure == 1);
        QVERIFY(near(passLength(weld.tables.contour), pass));
        QVERIFY(near(totalLength(weld.tables.contour), total));

        weld.tables.contour.rows.resize(1);
        QCOMPARE(passLength(weld.tables.contour), 0.0);
        QCOMPARE(totalLength(weld.tables.contour), 0.0);
    }

    void lengthOfTheFirstPoints()
    {
        Weld weld(new SchemaXYZ);
        weld.point({0, 0, 0}, arc(50, 1, 0)).point({30, 0, 0}).point({30, 40, 0});
        const WeldContour& contour = weld.tables.contour;
        QCOMPARE(calcLength(contour, 0), 0.0);
        QCOMPARE(calcLength(contour, 1), 0.0);
        QCOMPARE(calcLength(contour, 2), 30.0); // straight, whatever the frame says
        QCOMPARE(calcLength(contour, 3), 70.0);
        QCOMPARE(calcLength(contour, 9), 70.0);
    }

    void polarAngles()
    {
        for (int deg = 0; deg < 360; deg += 15) {
            const double a = qDegreesToRadians(double(deg));
            QVERIFY2(near(getPolarAngle(std::cos(a), std::sin(a)), a, 1e-12),
                     qPrintable(QString::number(deg)));
        }
        QCOMPARE(getPolarAngle(0, 1), M_PI / 2);
        QCOMPARE(getPolarAngle(0, -1), 3 * M_PI / 2);
        QCOMPARE(getPolarAngle(0, 0), 3 * M_PI / 2);
    }

    void circlesThroughPoints()
    {
        const Circle c = calcCircle(10 + 5, 20, 10, 20 + 5, 10 - 3, 20 - 4);
        QVERIFY(near(c.diameter, 10) && near(c.centerX, 10) && near(c.centerY, 20));
        QVERIFY(c.exists());
        QVERIFY(!calcCircle(0, 0, 1, 1, 2, 2).exists());

        Weld weld(new SchemaXYZr(0, 0, 0));
        for (int deg : {0, 80, 170, 260}) {
            const double a = qDegreesToRadians(double(deg));
            weld.point({float(3 + 50 * std::cos(a)), float(4 + 50 * std::sin(a)), 0});
        }
        const Circle mean = calcD(weld.tables.contour);
        QVERIFY(near(mean.diameter, 100) && near(mean.centerX, 3) && near(mean.centerY, 4));

        // One point off the circle: all four triples count, the mean moves by less than the worst of them.
        weld.tables.contour.rows[3].coords[0] += 1.0f;
        const Circle moved = calcD(weld.tables.contour);
        double sum = 0;
        for (int i = 0; i < 4; ++i) {
            const auto at = [&](int k) { return weld.tables.contour.rows[(i + k) % 4].coords; };
            sum += calcCircle(double(at(0)[0]), double(at(0)[1]), double(at(1)[0]), double(at(1)[1]),
                              double(at(2)[0]), double(at(2)[1]))
                       .diameter;
        }
        QVERIFY(near(moved.diameter, sum / 4, 1e-9));

        weld.tables.contour.rows.resize(3);
        QVERIFY(near(calcD(weld.tables.contour).diameter, 100));
        QVERIFY(near(calcDiameter(weld.tables.contour, 2, 0), 100));
    }

    void newDiameterMovesPointsAlongTheirRays()
    {
        for (int aux = 0; aux < 3; ++aux) {
            Weld weld(new SchemaXYZr(100, 0, aux));
            const PlaneColumns plane = planeColumns(aux);
            weld.tables.contour.centerX = 10;
            weld.tables.contour.centerY = 20;
            for (int deg : {0, 60, 180, 300}) {
                const double a = qDegreesToRadians(double(deg));
                QList<float> c{7, 7, 7};
                c[plane.first] = float(10 + 50.003 * std::cos(a)); // as rounded cells may lie: just outside
                c[plane.second] = float(20 + 50.003 * std::sin(a));
                weld.point(c);
            }
            recalcPointsForNewDiameter(weld.tables.contour, 100, 60);
            const float s = 30 * float(std::sin(M_PI / 3));
            const float expected[4][2] = {{40, 20}, {25, 20 + s}, {-20, 20}, {25, 20 - s}};
            for (int i = 0; i < 4; ++i) {
                const QList<float>& c = weld.tables.contour.rows[i].coords;
                QVERIFY(near(double(c[plane.first]), double(expected[i][0]), 0.01));
                QVERIFY(near(double(c[plane.second]), double(expected[i][1]), 0.01));
                QCOMPARE(c[plane.third], 7.0f);
            }
        }
    }

    void tableValidity_data()
    {
        QTest::addColumn<QVector<QVector<float>>>("rows"); // path, Ir, If; empty for a comment
        QTest::addColumn<QString>("marks");                // of each row: . v x
        using T = QVector<QVector<float>>;
        QTest::newRow("as created") << T{{0, 0, 700}, {0, 0, 700}} << "v.";
        QTest::newRow("speed change only") << T{{0, 0, 700}, {5, 9, 700}, {5, 9, 700}, {9, 0, 700}} << "vvv.";
        QTest::newRow("current jumps") << T{{0, 0, 700}, {5, 1, 700}, {5, 2, 700}, {9, 0, 700}} << "vxx.";
        QTest::newRow("focus jumps") << T{{0, 0, 700}, {5, 0, 700}, {5, 0, 701}, {9, 0, 700}} << "vxx.";
        QTest::newRow("over the end") << T{{0, 0, 700}, {10, 1, 700}, {6, 1, 700}, {9, 0, 700}} << "vxx.";
        QTest::newRow("comments pass")
            << T{{0, 0, 700}, {}, {5, 1, 700}, {}, {5, 2, 700}, {9, 0, 700}} << "v.x.x.";
        QTest::newRow("empty") << T{} << "";
    }

    void tableValidity()
    {
        QFETCH(QVector<QVector<float>>, rows);
        QFETCH(QString, marks);
        QVector<TechRow> tech;
        for (const QVector<float>& cells : rows) {
            TechRow row;
            row.comment = cells.isEmpty();
            row.path = cells.value(0);
            row.Ir = cells.value(1);
            row.If = cells.value(2);
            tech.append(row);
        }
        const TableValidity validity = ::tableValidity(tech);
        QString told;
        for (TableValidity::Mark mark : validity.rows)
            told += ".vx"[mark];
        QCOMPARE(told, marks);
        QCOMPARE(validity.valid, !marks.contains('x'));
    }

    void pointsOnLines()
    {
        Weld weld(new SchemaXYZ);
        weld.point({0, 0, 10}).point({30, 0, 10}).point({30, 40, 20}).closed(3).measure();
        const WeldPath path(weld.tables.contour);
        const CircleStart start;
        const double pass = double(weld.tables.contour.length);
        QVERIFY(near(path.interCoords(1, 15, start), {15, 0, 10}));
        QVERIFY(near(path.interCoords(2, 30 + path.frame(2) / 4, start), {30, 10, 12.5f}));
        QVERIFY(near(path.interCoords(0, pass - path.frame(0) / 2, start), {15, 20, 15}));
        QVERIFY(near(path.interCoords(1, 15 + 2 * pass, start), {15, 0, 10})); // third pass
        QVERIFY(
            near(path.interCoords(0, 2 * pass, start), {0, 0, 10})); // a whole pass is its end, not its start

        // A pass of a backward closure runs the way out only: each pass cuts on its frames.
        weld.closed(2, false).measure();
        const WeldPath outAndBack(weld.tables.contour);
        QVERIFY(
            near(outAndBack.interCoords(1, double(weld.tables.contour.length) / 2 + 15, start), {15, 0, 10}));
    }

    // The centre and the way round are found here from what the controller does: the shorter arc from a to
    // b, counter-clockwise for direction 1.
    void pointsOnArcs()
    {
        for (int plane = 0; plane < 3; ++plane) {
            for (int direction = 0; direction < 2; ++direction) {
                for (int turned = 0; turned < 360; turned += 30)
                    pointsOnArc(plane, direction, turned);
            }
        }
    }

    void pointsOnRings_data()
    {
        QTest::addColumn<QList<float>>("angles");
        QTest::addColumn<int>("row");
        QTest::addColumn<double>("part"); // of the frame that ends at `row`
        QTest::addColumn<float>("angle");
        using A = QList<float>;
        QTest::newRow("within") << A{0, 90, 180, 270} << 2 << 0.5 << 135.0f;
        QTest::newRow("closing") << A{0, 90, 180, 270} << 0 << 0.5 << 315.0f;
        QTest::newRow("back before the frame") << A{0, 90, 180, 270} << 2 << -0.5 << 45.0f;
        QTest::newRow("inverted, first frame") << A{0, 270, 180, 90} << 1 << 0.25 << 337.5f;
        QTest::newRow("inverted, closing") << A{0, 270, 180, 90} << 0 << 0.5 << 45.0f;
        QTest::newRow("shifted ring, over 0") << A{5, 95, 185, 275} << 0 << 0.5 << 320.0f;
        QTest::newRow("shifted, inverted, over 0") << A{5, 275, 185, 95} << 1 << 0.5 << 320.0f;
        QTest::newRow("past 0 within a frame") << A{350, 80, 170, 260} << 1 << 0.5 << 35.0f;
        QTest::newRow("360 is 0") << A{270, 90, 180, 200} << 1 << 0.5 << 180.0f; // exactly half a turn
        QTest::newRow("360 in row 0") << A{360, 90, 180, 270} << 1 << 0.5 << 45.0f;
        QTest::newRow("ends at 360, so at 0") << A{270, 360, 90, 180} << 1 << 1.0 << 0.0f;
    }

    void pointsOnRings()
    {
        QFETCH(QList<float>, angles);
        QFETCH(int, row);
        QFETCH(double, part);
        QFETCH(float, angle);
        Weld weld(new SchemaCircle(100, 4));
        for (int i = 0; i < angles.size(); ++i)
            weld.point({angles[i], float(i), 5, 5});
        weld.closed(2).measure();
        const WeldPath path(weld.tables.contour);
        double before = 0;
        for (int i = 1; i < (row == 0 ? angles.size() : row); ++i)
            before += path.frame(i);
        for (int pass = 0; pass < 2; ++pass) {
            const double p = before + part * path.frame(row) + pass * double(weld.tables.contour.length);
            const QList<float> point = path.interCoords(row, p, {});
            QVERIFY2(near(double(point[0]), double(angle), 1e-3),
                     qPrintable(QString::number(double(point[0]))));
            QVERIFY(point[0] >= 0.0f && point[0] < 360.0f);
        }
    }

    // Four points from 300 degrees on, over 0; the circle is tilted by 8 mm across the plane.
    void pointsOnCircles()
    {
        for (int plane = 0; plane < 3; ++plane) {
            for (int sense : {1, -1}) {
                for (bool closed : {false, true})
                    pointsOnCircle(plane, sense, closed);
            }
        }
    }

    void senseOfTheTurn()
    {
        const std::pair<QList<double>, bool> turns[] = {{{10, 100, 200}, true},  {{200, 300, 20}, true},
                                                        {{300, 20, 100}, true},  {{200, 100, 10}, false},
                                                        {{100, 10, 280}, false}, {{20, 300, 200}, false}};
        for (const auto& [angles, increasing] : turns) {
            Weld weld(new SchemaXYZr(100, 0, 0));
            for (double deg : angles) {
                const double a = qDegreesToRadians(deg);
                weld.point({float(50 * std::cos(a)), float(50 * std::sin(a)), 0});
            }
            QVERIFY2(circleStart(weld.tables.contour).increasing == increasing,
                     qPrintable(QString::number(angles[0])));
        }
    }

    void wholePassesInALongPause()
    {
        QCOMPARE(passesLeftOut(90, 100), 0);
        QCOMPARE(passesLeftOut(100, 100), 0);
        QCOMPARE(passesLeftOut(100.005, 100), 0); // a pass as the table's two decimals may write it
        QCOMPARE(passesLeftOut(100.02, 100), 1);
        QCOMPARE(passesLeftOut(200.005, 100), 1); // two passes: the second is still run
        QCOMPARE(passesLeftOut(350, 100), 3);
        QCOMPARE(passesLeftOut(350, 0), 0);
        QCOMPARE(passesLeftOut(-350, 100), 0);
    }

private:
    void pointsOnArc(int plane, int direction, int turned)
    {
        const PlaneColumns columns = planeColumns(plane);
        const double sense = direction == 1 ? 1 : -1;
        // Circle of 50 mm about (10, 20), from `turned` over 120 degrees; the third axis rises from 0 to 12.
        const auto at = [&](double part) {
            const double a = qDegreesToRadians(turned + sense * 120 * part);
            QList<float> c{0, 0, 0};
            c[columns.first] = float(10 + 50 * std::cos(a));
            c[columns.second] = float(20 + 50 * std::sin(a));
            c[columns.third] = float(12 * part);
            return c;
        };
        Weld weld(new SchemaXYZ);
        weld.point({-999, 5, 5}).point(at(0), arc(50.9f, direction, plane)).point(at(1)).measure();
        weld.tables.contour.rows[0].coords = at(0); // a first frame without length
        weld.measure();
        const WeldPath path(weld.tables.contour);
        weld.tables.contour.rows[1].frame.radius = 50.0f;
        const WeldPath whole(weld.tables.contour);
        for (double part : {0.1, 0.25, 0.5, 0.9})
            QVERIFY(near(whole.interCoords(2, whole.frame(2) * part, {}), at(part), 2e-3));

        // A radius with a fraction is cut with its whole part: the same arc, measured back from its end.
        weld.tables.contour.rows[1].frame.radius = 50.9f;
        const double s1 = path.frame(2);
        const double back = qDegreesToRadians(30.0) * 50;
        QList<float> expected = at(0.75);
        expected[columns.third] = float(12 * (s1 - back) / s1);
        QVERIFY(near(path.interCoords(2, s1 - back, {}), expected, 2e-3));
    }

    void pointsOnCircle(int plane, int sense, bool closed)
    {
        const PlaneColumns columns = planeColumns(plane);
        const auto at = [&](double turned) {
            const double a = qDegreesToRadians(300 + sense * turned);
            QList<float> c{0, 0, 0};
            c[columns.first] = float(10 + 50 * std::cos(a));
            c[columns.second] = float(20 + 50 * std::sin(a));
            c[columns.third] = float(3 + 4 * (1 - std::cos(qDegreesToRadians(turned))));
            return c;
        };
        Weld weld(new SchemaXYZr(100, 0, plane));
        weld.tables.contour.centerX = 10;
        weld.tables.contour.centerY = 20;
        for (int turned : {0, 90, 180, 270})
            weld.point(at(turned));
        if (closed)
            weld.closed(3);
        weld.measure();
        const CircleStart start = circleStart(weld.tables.contour);
        QCOMPARE(start.increasing, sense > 0);
        QVERIFY(near(start.angle, 300, 1e-3));
        QVERIFY(near(start.height, 8, 1e-3));

        const WeldPath path(weld.tables.contour);
        const double perDegree = 100 * M_PI / 360;
        for (double turned : {10.0, 45.0, 120.0, 250.0}) {
            QVERIFY(near(path.interCoords(1, turned * perDegree, start), at(turned)));
            if (closed)
                QVERIFY(near(path.interCoords(1, (turned + 720) * perDegree, start), at(turned)));
        }
    }
};

QTEST_GUILESS_MAIN(TestWeldGeometry)
#include "test_weldgeometry.moc"
