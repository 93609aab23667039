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

// The point at `degrees` of a circle of 50 mm about (10, 20), and where it stands across the plane.
QList<float> onCircle(int plane, double degrees, double across, double radius = 50)
{
    const double a = qDegreesToRadians(degrees);
    return inPlane(plane, 10 + radius * std::cos(a), 20 + radius * std::sin(a), across);
}

Weld circle(int plane, const QVector<double>& angles)
{
    Weld weld(new SchemaXYZr(100, 0, plane));
    weld.tables.contour.centerX = 10;
    weld.tables.contour.centerY = 20;
    for (const double degrees : angles)
        weld.point(onCircle(plane, degrees, 7));
    return weld;
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

    void lengthOfTheFirstPoints()
    {
        Weld weld(new SchemaXYZ);
        weld.point({0, 0, 0}, arc(50, 1, 0)).point({30, 0, 0}).point({30, 40, 0});
        const WeldContour& contour = weld.tables.contour;
        QCOMPARE(calcLength(contour, 0), 0.0);
        QCOMPARE(calcLength(contour, 2), 30.0); // straight, whatever the frame says
        QCOMPARE(calcLength(contour, 9), 70.0);
    }

    void polarAngles()
    {
        for (int deg = 0; deg < 360; deg += 15) {
            const double a = qDegreesToRadians(double(deg));
            QVERIFY(near(getPolarAngle(std::cos(a), std::sin(a)), a, 1e-12));
        }
        QCOMPARE(getPolarAngle(0, 1), M_PI / 2);
        QCOMPARE(getPolarAngle(0, -1), 3 * M_PI / 2);
        QCOMPARE(getPolarAngle(0, 0), 3 * M_PI / 2);
    }

    void circlesThroughPoints()
    {
        QVERIFY(!calcCircle(0, 0, 1, 1, 2, 2).exists());
        Weld weld = circle(0, {0, 80, 170, 260});
        WeldContour& contour = weld.tables.contour;
        const Circle mean = calcD(contour);
        QVERIFY(mean.exists() && near(mean.diameter, 100) && near(mean.centerX, 10) &&
                near(mean.centerY, 20));

        // One point off the circle: all four triples count, the last around to the first row.
        contour.rows[3].coords[1] += 1.0f;
        double sum = calcDiameter(contour, 2, 0) + calcDiameter(contour, 3, 0) + calcDiameter(contour, 4, 0);
        QVERIFY(!near(calcDiameter(contour, 4, 0), 100, 0.1));
        std::rotate(contour.rows.begin(), contour.rows.begin() + 1, contour.rows.end());
        sum += calcDiameter(contour, 4, 0);
        QVERIFY(near(calcD(contour).diameter, sum / 4, 1e-9));

        contour.rows.removeAt(2);
        QVERIFY(near(calcD(contour).diameter, 100));
        QVERIFY(near(calcDiameter(circle(2, {0, 80, 170}).tables.contour, 2, 2), 100));
    }

    // Along their rays; as rounded cells may lie, they begin just outside the circle.
    void newDiameterMovesPoints()
    {
        for (int aux = 0; aux < 3; ++aux) {
            Weld weld = circle(aux, {});
            for (const double degrees : {0, 60, 180, 300})
                weld.point(onCircle(aux, degrees, 7, 50.003));
            recalcPointsForNewDiameter(weld.tables.contour, 100, 60);
            for (int i = 0; i < 4; ++i)
                QVERIFY(near(weld.tables.contour.rows[i].coords,
                             onCircle(aux, QList<int>{0, 60, 180, 300}[i], 7, 30), 0.01));
        }
    }

    void tableValidity()
    {
        // Marks of the rows; of each its path, Ir and If, nothing for a comment.
        const std::pair<const char*, QVector<QVector<float>>> tables[] = {
            {"v.", {{0, 0, 700}, {0, 0, 700}}}, // as created
            {"vvv.", {{0, 0, 700}, {5, 9, 700}, {5, 9, 700}, {9, 0, 700}}},
            {"vxx.", {{0, 0, 700}, {5, 1, 700}, {5, 2, 700}, {9, 0, 700}}},  // current jumps
            {"vxx.", {{0, 0, 700}, {5, 0, 700}, {5, 0, 701}, {9, 0, 700}}},  // focus jumps
            {"vxx.", {{0, 0, 700}, {10, 1, 700}, {6, 1, 700}, {9, 0, 700}}}, // over the end
            {"v.x.x.", {{0, 0, 700}, {}, {5, 1, 700}, {}, {5, 2, 700}, {9, 0, 700}}},
            {"", {}}};
        for (const auto& [marks, rows] : tables) {
            Weld weld(new SchemaXYZ);
            for (const QVector<float>& cells : rows)
                cells.isEmpty() ? weld.stop() : weld.row(cells[0], cells[1], 600, cells[2]);
            const TableValidity validity = ::tableValidity(weld.tables.tech);
            QString told;
            for (TableValidity::Mark mark : validity.rows)
                told += ".vx"[mark];
            QCOMPARE(told, QString(marks));
            QCOMPARE(validity.valid, !told.contains('x'));
        }
    }

    // A radius with a fraction is cut with its whole part: the same arc, measured back from its end.
    void pointsOnAnArc()
    {
        Weld weld(new SchemaXYZ);
        weld.point(onCircle(0, 0, 0), arc(50.9f, 1, 0)).point(onCircle(0, 120, 12)).measure();
        const WeldPath path(weld.tables.contour);
        const double length = path.frame(1), way = length - qDegreesToRadians(30.0) * 50;
        QVERIFY(near(path.interCoords(1, way, {}), onCircle(0, 90, 12 * way / length), 2e-3));
    }

    void pointsOnRings()
    {
        // Angles of the rows, a row, a part of the frame that ends there, and the angle found.
        const std::tuple<QList<float>, int, double, double> cases[] = {
            {{0, 90, 180, 270}, 0, 0.5, 315},    {{0, 90, 180, 270}, 2, -0.5, 45},   // back before the frame
            {{0, 270, 180, 90}, 1, 0.25, 337.5},                                     // inverted
            {{0, 270, 180, 90}, 0, 0.5, 45},     {{5, 95, 185, 275}, 0, 0.5, 320},   // over 0
            {{5, 275, 185, 95}, 1, 0.5, 320},    {{270, 90, 180, 200}, 1, 0.5, 180}, // exactly half a turn
            {{360, 90, 180, 270}, 1, 0.5, 45},   {{270, 360, 90, 180}, 1, 1.0, 0}};  // ends at 360, so at 0
        for (const auto& [angles, row, part, angle] : cases) {
            Weld weld(new SchemaCircle(100, 4));
            for (const float degrees : angles)
                weld.point({degrees, 1, 5, 5});
            weld.closed(2).measure();
            const WeldPath path(weld.tables.contour);
            double before = 0;
            for (int i = 1; i < (row == 0 ? angles.size() : row); ++i)
                before += path.frame(i);
            for (int pass = 0; pass < 2; ++pass) {
                const double p = before + part * path.frame(row) + pass * double(weld.tables.contour.length);
                const double found = double(path.interCoords(row, p, {})[0]);
                QVERIFY2(near(found, angle, 1e-3) && found >= 0 && found < 360,
                         qPrintable(QString::number(found)));
            }
        }
    }

    void wholePassesInALongPause()
    {
        QCOMPARE(passesLeftOut(100, 100), 0);
        QCOMPARE(passesLeftOut(100.005, 100), 0); // a pass as the table's two decimals may write it
        QCOMPARE(passesLeftOut(100.02, 100), 1);
        QCOMPARE(passesLeftOut(200.005, 100), 1); // two passes: the second is still run
        QCOMPARE(passesLeftOut(350, 100), 3);
        QCOMPARE(passesLeftOut(350, 0), 0);
        QCOMPARE(passesLeftOut(-350, 100), 0);
    }
};

QTEST_GUILESS_MAIN(TestWeldGeometry)
#include "test_weldgeometry.moc"
