#include "programwriter.h"
#include "schema.h"

#include <QtTest>

#include <cmath>
#include <limits>
#include <memory>

class TestSchema : public QObject
{
    Q_OBJECT

private slots:
    void identity()
    {
        const SchemaXYZ line;
        QCOMPARE(line.id(), QString("XYZ"));
        QCOMPARE(line.axisNames(), (QStringList{"LX", "LY", "Z"}));
        QVERIFY(!line.round() && !line.circle() && !line.rotate());
        QCOMPARE(line.D(), -1.0f);
        QCOMPARE(line.P(), -1.0f);
        QCOMPARE(line.Aux(), -1);
        QCOMPARE(line.header(), QString("<b>Линейная интерполяция</b>"));

        SchemaXYZr round(0, 0, 0);
        QVERIFY(!round.round());
        round.setD(123.456789f);
        QVERIFY(round.round() && round.rotate() && !round.circle());
        QCOMPARE(round.R(), 0.5f * 123.456789f);
        QCOMPARE(round.header(), QString("<b>Круговая интерполяция</b><pre>D=123.457</>"));

        const SchemaCircle ring(100, 8);
        QVERIFY(ring.round() && ring.circle() && !ring.rotate());
        QCOMPARE(ring.axisNames(), (QStringList{"V", "LX", "LY", "Z"}));
        QCOMPARE(ring.P(), 8.0f);
        QCOMPARE(ring.Aux(), -1);
        QCOMPARE(ring.header(), QString("<b>Кольцевой стык</b><pre>D=100</>"));
    }

    void distances_data()
    {
        QTest::addColumn<int>("kind"); // -1 straight, 0..2 circle in that plane, 3 ring
        QTest::addColumn<QList<float>>("c1");
        QTest::addColumn<QList<float>>("c2");
        QTest::addColumn<double>("length");
        const double quarter = 100 * M_PI / 4;
        using P = QList<float>;
        QTest::newRow("straight, all axes") << -1 << P{1, 2, 3} << P{4, 6, 15} << 13.0;
        QTest::newRow("quarter in XY, z plays no part") << 0 << P{50, 0, 7} << P{0, 50, 9} << quarter;
        QTest::newRow("quarter in XZ") << 1 << P{50, 7, 0} << P{0, 9, 50} << quarter;
        QTest::newRow("quarter in YZ") << 2 << P{7, 50, 0} << P{9, 0, 50} << quarter;
        QTest::newRow("half turn") << 0 << P{50, 0, 0} << P{-50, 0, 0} << 50 * M_PI;
        QTest::newRow("ring over 0 degrees") << 3 << P{350, 1, 2, 3} << P{10, 4, 5, 6} << 100 * M_PI / 18;
        QTest::newRow("ring, half turn") << 3 << P{0, 0, 0, 0} << P{180, 0, 0, 0} << 50 * M_PI;
    }

    void distances()
    {
        QFETCH(int, kind);
        QFETCH(QList<float>, c1);
        QFETCH(QList<float>, c2);
        QFETCH(double, length);
        std::unique_ptr<Schema> schema;
        if (kind < 0)
            schema = std::make_unique<SchemaXYZ>();
        else if (kind == 3)
            schema = std::make_unique<SchemaCircle>(100.0f, 4.0f);
        else
            schema = std::make_unique<SchemaXYZr>(100.0f, 0.0f, kind);
        QVERIFY(qAbs(schema->distance(c1, c2) - length) < 1e-9);
        QVERIFY(qAbs(schema->distance(c2, c1) - length) < 1e-9);
        QVERIFY(schema->validDistance(c1, c2));
    }

    // A chord longer than the diameter is no chord of the circle, and only the chosen plane counts.
    void chordBeyondDiameter()
    {
        const QList<float> a{60, 0, 0}, b{-60, 0, 0};
        QVERIFY(!SchemaXYZr(100, 0, 0).validDistance(a, b));
        QVERIFY(!SchemaXYZr(100, 0, 1).validDistance(a, b));
        QVERIFY(SchemaXYZr(100, 0, 2).validDistance(a, b));
        QVERIFY(SchemaXYZ().validDistance(a, b));
    }

    // The diameter of a half circle, taught or read from a file, is rounded below its chord: it is half a
    // turn all the same.
    void chordThatIsTheDiameter()
    {
        const QList<float> a{0, 0, 0}, b{10, 10, 0};
        const double diameter = std::sqrt(200.0);
        for (float kept : {float(diameter), 14.1421f}) {
            const SchemaXYZr circle(kept, 0, 0);
            QVERIFY(double(kept) < diameter);
            QVERIFY(circle.validDistance(a, b));
            QVERIFY(qAbs(circle.distance(a, b) - diameter * M_PI / 2) < 1e-4);
            QVERIFY(!circle.validDistance(a, {10.01f, 10, 0}));
            QVERIFY(std::isnan(circle.distance(a, {10.01f, 10, 0})));
        }
    }

    void numerateLists()
    {
        QCOMPARE(numerate({"$1", "M30"}, 5), QString("N005 $1\nN010 M30\n"));
        QCOMPARE(numerate({"M30"}, 1000), QString("N1000 M30\n"));
        QCOMPARE(numerate({}, 1), QString());
    }

    // A program must never carry a number that the controller could take for a place.
    void noNumberIsWrittenAsNothing()
    {
        QCOMPARE(ncFixed(std::numeric_limits<double>::quiet_NaN(), 2), QString());
        QCOMPARE(ncFixed(-std::numeric_limits<double>::infinity(), 3), QString());
        QCOMPARE(ncFixed(0.125, 2), QString("0.13")); // ties away from zero
        QCOMPARE(ncFixed(-0.125, 2), QString("-0.13"));
    }
};

QTEST_GUILESS_MAIN(TestSchema)
#include "test_schema.moc"
