#include "programwriter.h"
#include "schema.h"

#include <QtTest>

#include <cmath>
#include <limits>

class TestSchema : public QObject
{
    Q_OBJECT

private slots:
    void identity()
    {
        SchemaXYZr round(0, 0, 0);
        QVERIFY(!round.round());
        round.setD(123.456789f);
        QVERIFY(round.round());
        QCOMPARE(round.R(), 0.5f * 123.456789f);
        const SchemaXYZ line;
        const SchemaCircle ring(100, 8);
        const std::pair<const Schema*, const char*> kinds[] = {
            {&line, "XYZ LX,LY,Z -1 -1 -1 <b>Линейная интерполяция</b>"},
            {&round, "XYZr LX,LY,Z 123.457 0 0 <b>Круговая интерполяция</b><pre>D=123.457</>"},
            {&ring, "Circle V,LX,LY,Z 100 8 -1 <b>Кольцевой стык</b><pre>D=100</>"}};
        for (const auto& [schema, told] : kinds) {
            const QString numbers =
                QString("%1 %2 %3").arg(double(schema->D())).arg(double(schema->P())).arg(schema->Aux());
            QCOMPARE(schema->id() + ' ' + schema->axisNames().join(',') + ' ' + numbers + ' ' +
                         schema->header(),
                     QString(told));
        }
    }

    // A chord longer than the diameter is no chord of the circle, and only the chosen plane counts. The
    // diameter of a half circle, taught or read from a file, is rounded below its chord: half a turn all the
    // same.
    void chordAndDiameter()
    {
        QVERIFY(!SchemaXYZr(100, 0, 0).validDistance({60, 0, 0}, {-60, 0, 0}));
        QVERIFY(SchemaXYZr(100, 0, 2).validDistance({60, 0, 0}, {-60, 0, 0}));
        QVERIFY(SchemaXYZ().validDistance({60, 0, 0}, {-60, 0, 0}));

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

    // Where no number is, none is written that the controller could take for a place.
    void blocksAndNumbers()
    {
        QCOMPARE(numerate({"$1", "M30"}, 5), QString("N005 $1\nN010 M30\n"));
        QCOMPARE(numerate({"M30"}, 1000), QString("N1000 M30\n"));
        QCOMPARE(ncFixed(std::numeric_limits<double>::quiet_NaN(), 2), QString());
        QCOMPARE(ncFixed(-std::numeric_limits<double>::infinity(), 3), QString());
        QCOMPARE(ncFixed(0.125, 2), QString("0.13")); // ties away from zero
        QCOMPARE(ncFixed(-0.125, 2), QString("-0.13"));
    }
};

QTEST_GUILESS_MAIN(TestSchema)
#include "test_schema.moc"
