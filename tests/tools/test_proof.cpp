#include "contouredit.h"
#include "tools/proof/proof.h"
#include "tools/proof/proofpicture.h"
#include "tools/proof/proofwindow.h"
#include "weldfixture.h"
#include "weldmaker.h"
#include "weldproof.h"

#include <QSlider>
#include <QTemporaryDir>

using Harms = QVector<ProofRun::Harm>;

namespace {

constexpr float slow = 600, fast = 1200; // mm/min

Proof prove(const WeldTables& tables)
{
    return proveWeld({{}, {}, tables}, {});
}

bool told(const Proof& proof, WeldDoubt::Kind kind)
{
    return std::any_of(proof.doubts.begin(), proof.doubts.end(),
                       [&](const WeldDoubt& one) { return one.kind == kind; });
}

QString all(const Proof& proof)
{
    QString text;
    for (const auto& [path, line] : proof.findings())
        text += QString("%1: %2\n").arg(path).arg(line);
    return text;
}

// Lines through the points, the beam as the rows say.
Weld lineWeld(std::initializer_list<QList<float>> points)
{
    Weld weld(new SchemaXYZ);
    for (const QList<float>& point : points)
        weld.point(point);
    weld.tables.contour.rows.last().frame.type = Frame::End;
    return weld;
}

Weld bend() // a straight line that passes smoothly into a quarter of a circle and on
{
    Weld weld(new SchemaXYZ);
    weld.point({0, 0, 0})
        .point({50, 0, 0}, arc(50, 1, 0))
        .point({100, 50, 0})
        .point({100, 100, 0}, {Frame::End, 0, 0, 0});
    return weld;
}

struct Hazard
{
    WeldDoubt::Kind kind;
    ProofRun::Harm harm;
    std::function<Weld()> weld;
};

const Hazard hazards[] = {
    {WeldDoubt::OffSeam, ProofRun::Beside,
     [] {
         return std::move(lineWeld({{0, 0, 0}, {100, 0, 0}, {180, 60, 0}})
                              .row(0, 0, slow)
                              .row(150, 0, slow)
                              .row(40, 20, slow)
                              .row(90, 20, slow)
                              .end());
     }},
    {WeldDoubt::OutOfStep, ProofRun::Beside,
     [] {
         return std::move(lineWeld({{0, 0, 0}, {0, 100, 0}})
                              .row(0, 0, slow)
                              .row(60, 0, slow)
                              .row(20, 20, slow)
                              .row(40, 20, slow)
                              .end());
     }},
    {WeldDoubt::SpeedKept, ProofRun::Beside,
     [] {
         return std::move(lineWeld({{0, 0, 0}, {0, 100, 0}}).row(0, 20, slow).row(50, 20, fast).end(20));
     }},
    {WeldDoubt::OffArc, ProofRun::Beside,
     [] {
         Weld weld(new SchemaXYZ);
         weld.point({0, 0, 0}, arc(30.9F, 1, 0)).point({60, 0, 0}, {Frame::End, 0, 0, 0});
         return std::move(weld.row(0, 20, slow).row(40, 20, slow).end(20));
     }},
    {WeldDoubt::StopInClosing, ProofRun::Deadlock,
     [] {
         Weld weld(new SchemaXYZ);
         weld.point({0, 0, 0}).point({30, 0, 0}).point({30, 40, 0}).closed(2);
         return std::move(weld.row(0, 0, slow).row(100, 0, slow).stop().row(200, 0, slow).stop().end());
     }},
    {WeldDoubt::StopNotMet, ProofRun::Deadlock,
     [] {
         return std::move(lineWeld({{0, 0, 0}, {100, 0, 0}}).row(0, 0, slow).row(100, 0, slow).stop().end());
     }},
    {WeldDoubt::StopWithBeam, ProofRun::StopBurns,
     [] {
         return std::move(lineWeld({{0, 0, 0}, {100, 0, 0}}).row(0, 20, slow).row(50, 20, slow).stop().end());
     }},
    {WeldDoubt::StopShort, ProofRun::Standing,
     [] {
         return std::move(lineWeld({{0, 0, 0}, {0, 100, 0}}).row(0, 20, slow).row(50, 0, slow).stop().end());
     }},
    {WeldDoubt::NoSpeed, ProofRun::ChannelError,
     [] {
         return std::move(lineWeld({{0, 0, 0}, {100, 0, 0}}).row(0, 20, slow).row(50, 20, 0).end(20));
     }},
    {WeldDoubt::CurrentSteps, ProofRun::WrongCurrent,
     [] {
         return std::move(
             lineWeld({{0, 0, 0}, {100, 0, 0}}).row(0, 0, slow).row(50, 0, slow).row(50, 20, slow).end(20));
     }},
    {WeldDoubt::NoMotion, ProofRun::Standing,
     [] { return std::move(ring(1).row(0, 0, slow).row(500, 0, slow).row(510, 20, slow).end()); }},
    {WeldDoubt::NoArc, ProofRun::ChannelError,
     [] {
         Weld weld(new SchemaXYZ);
         weld.point({0, 0, 0}, arc(20, 1, 0)).point({100, 0, 0}, {Frame::End, 0, 0, 0});
         return std::move(weld.row(0, 20, slow).row(10, 20, slow));
     }},
    {WeldDoubt::NoWay, ProofRun::Beside,
     [] {
         Weld weld(new SchemaXYZ);
         weld.point({0, 0, 0})
             .point({50, 0, 0}, {Frame::End, 0, 0, 0})
             .point({80, 0, 0})
             .point({120, 0, 0}, {Frame::End, 0, 0, 0});
         return std::move(weld.row(0, 20, slow).end(20));
     }},
    {WeldDoubt::Backward, ProofRun::Standing,
     [] {
         Weld weld(new SchemaXYZ);
         weld.point({0, 0, 0}).point({100, 0, 0}).closed(1, false);
         return std::move(weld.row(0, 20, slow).end(20));
     }},
    {WeldDoubt::SteepArc, ProofRun::TooFast,
     [] {
         Weld weld(new SchemaXYZ);
         weld.point({0, 0, 0}).point({50, 0, 0}, arc(12, 1, 0)).point({50, 1, 80}, {Frame::End, 0, 0, 0});
         return std::move(weld.row(0, 20, slow).end(20));
     }},
    {WeldDoubt::RingRatio, ProofRun::Standing,
     [] { // 0.436 mm a degree count as 0.44, 0.471 as 0.47: here the part comes in before the beam is off
         Weld weld(new SchemaCircle(54, 3));
         for (float angle : {0.0F, 120.0F, 240.0F})
             weld.point({angle, 10, 20, 30});
         weld.closed(10);
         return std::move(weld.row(0, 20, slow).end(20));
     }},
    {WeldDoubt::EndsEarly, ProofRun::Standing,
     [] {
         return std::move(lineWeld({{0, 0, 0}, {100, 0, 0}}).row(0, 20, slow).row(140, 20, slow).end());
     }},
    {WeldDoubt::ArcTurned, ProofRun::Beside,
     [] {
         Weld weld = bend();
         weld.tables.contour.moveForward = false; // a walk backward was the last
         return std::move(weld.row(0, 20, slow).end(20));
     }},
};

// Any weld: rows in any order, along any axis, radii with a fraction, steps of the current, zero speed.
WeldTables randomWeld(WeldMaker* maker, const QString& scheme, unsigned seed)
{
    maker->goesBack = seed % 3 == 0;
    maker->anyDirection = scheme == "XYZ" && seed % 2 == 0;
    WeldTables tables = maker->make();
    const int middle = tables.tech.size() / 2;
    if (seed % 7 == 0) {
        for (ContourRow& row : tables.contour.rows)
            row.frame.radius += 0.6F;
        tables.contour.length = float(passLength(tables.contour));
        tables.tech.last().path = twoDecimals(totalLength(tables.contour));
    }
    if (seed % 11 == 0 && middle + 1 < tables.tech.size() && tables.tech[middle].on &&
        tables.tech[middle - 1].on) {
        tables.tech[middle].Ir += 10;
        tables.tech[middle].path = tables.tech[middle - 1].path;
    }
    if (seed % 13 == 0)
        tables.tech[middle].speed = 0;
    return tables;
}

} // namespace

class TestProof : public QObject
{
    Q_OBJECT

private slots:
    void hazardsAreToldAndHarm()
    {
        for (const Hazard& hazard : hazards) {
            const Weld weld = hazard.weld();
            const Proof proof = prove(weld.tables);
            const QByteArray what = QByteArray::number(int(hazard.kind)) + "\n" + all(proof).toUtf8();
            QVERIFY2(told(proof, hazard.kind), what);
            QVERIFY2(proof.run.has(hazard.harm), what);
        }
    }

    // The same seam backward: the stored direction now leads around the other side.
    void inversion()
    {
        Weld weld = bend();
        weld.row(0, 20, slow).end(20);
        QCOMPARE(all(prove(weld.tables)), QString());
        invertContour(weld.tables.contour);
        const Proof proof = prove(weld.tables);
        QVERIFY2(told(proof, WeldDoubt::ArcTurned), qPrintable(all(proof)));
        double nearest = 1e9; // to the middle of the arc that was taught
        for (const ProofRun::Sample& sample : proof.run.samples)
            nearest = std::min(nearest, std::hypot(sample.at[0] - 85.36, sample.at[1] - 14.64));
        QVERIFY(nearest > 20);
    }

    void tooLong()
    {
        Weld weld = ring(3000);
        weld.row(0, 0, slow).end();
        WeldStage stage;
        const auto doubts = weldProof(weld.tables, contourPrograms(weld.tables, stage));
        QCOMPARE(proofLines(doubts), QStringList("[W]Программа слишком длинная, пульт её не запустит"));
        QVERIFY(!tooLongText(programLines(weld.tables)).isEmpty());
    }

    void randomWelds()
    {
        int harmed = 0, falseAlarms = 0, welds = 0;
        QStringList untold;
        for (unsigned seed = 1; seed <= 1000; ++seed) {
            const QString scheme = QStringList{"XYZ", "XYZr", "Circle"}[int(seed % 3)];
            WeldMaker maker(scheme, seed * 7);
            const WeldTables tables = randomWeld(&maker, scheme, seed / 3);
            const Proof proof = prove(tables);
            ++welds;
            const bool harm =
                std::any_of(proof.run.troubles.begin(), proof.run.troubles.end(), [](const auto& one) {
                    return one.harm != ProofRun::BeyondLimit && one.harm != ProofRun::TooFast;
                });
            harmed += harm ? 1 : 0;
            if (harm && proof.doubts.isEmpty())
                untold.append(QString("%1 %2: %3").arg(scheme).arg(seed).arg(all(proof)));
            falseAlarms += !harm && !proof.doubts.isEmpty() ? 1 : 0;
        }
        qInfo("%d welds, %d with harm, %d told without harm, %d not told", welds, harmed, falseAlarms,
              untold.size());
        QVERIFY2(untold.isEmpty(), qPrintable(untold.join("")));
        QVERIFY(harmed > 200 && falseAlarms < welds / 5);
    }

    void filesAndPictures()
    {
        QTemporaryDir dir;
        const QByteArray good =
            "Шов\nXYZ\n-1 0 0\n2 -1\n0 1\n600\n2\n0.00 0.00 0.00 1 0 0 0 \n100.00 0.00 0.00 0 \n"
            "4\n+ 0.00 0.0 700 0.0 0.0 600.0 2 \n+ 10.00 20.0 700 0.0 0.0 600.0 2 \n"
            "+ 90.00 20.0 700 0.0 0.0 600.0 2 \n+ 100.00 0.0 700 0.0 0.0 600.0 2 \n";
        const auto read = [&](const QByteArray& bytes, SavedWeld* weld) {
            QFile file(dir.filePath("a.save"));
            QString error;
            if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
                return QString("not written");
            file.close();
            return readWeld(file.fileName(), weld, &error) ? QString() : error;
        };
        SavedWeld weld;
        for (int cut = 0; cut < good.size() - 2; cut += 3)
            read(good.left(cut), &weld); // ends, whatever it finds
        QCOMPARE(read({}, &weld), "это не файл контура");
        QCOMPARE(read(QByteArray(100'000, '\xFF'), &weld), "это не файл контура");
        QVERIFY(read(good.left(good.indexOf("+ 90.00")), &weld).startsWith("файл обрезан или повреждён"));
        QCOMPARE(read(good, &weld), QString());
        const Proof proof = proveWeld(weld, {});
        QCOMPARE(all(proof), QString());
        QVERIFY(qAbs(proof.run.stages.value(0).seconds[0] - 10) < 0.05 && qAbs(proof.run.seconds - 10) < 1.1);
        QVERIFY(qAbs(proof.run.laid.value(1).perMillimetre() - 20 * 50 / 10.0) < 0.5); // mA kV / (mm/s)
        QVERIFY(proofText(proof).contains("Замечаний нет") && proofJson(proof)["fine"].toBool());

        MachineLimits narrow;
        narrow.axes["LX"].max = 50;
        QVERIFY(proveWeld(weld, narrow).run.has(ProofRun::BeyondLimit));

        QVERIFY(writeProofPng(dir.filePath("a.png"), proof) && QImage(dir.filePath("a.png")).width() > 1000);
        QVERIFY(writeProofPdf(dir.filePath("a.pdf"), proof) && !writeProofPdf("/nowhere/a.pdf", proof));
        ProofWindow window(proof);
        auto* slider = window.findChild<QSlider*>("place");
        slider->setValue(slider->maximum() / 2);
        QVERIFY(window.findChild<QWidget*>("words")->property("text").toString().contains("ток 20.0 мА"));
        QVERIFY(!window.grab().isNull());
    }
};

QTEST_MAIN(TestProof)
#include "test_proof.moc"
