#include "elashare.h"
#include "pultshare.h"
#include "sitefixture.h"

#include <QtTest>

#include <algorithm>

namespace {

// A console, as far as the two segments go: this program, started a second time.
int beAConsole(const QString& root, const QString& suffix)
{
    Site place;
    place.root = root;
    place.shmSuffix = suffix;
    setSite(place);
    ElaSharedMemory ela;
    PultShare pult;
    for (int i = 0; i < 3; ++i) {
        ela.updateStatusEla();
        pult.setBlockGui(true);
    }
    return 0;
}

// The other programs, which make the segments and may hang with their locks in their hands.
struct Others
{
    Others() { QVERIFY(unit.create(512) && panel.create(16)); }
    void hold() { QVERIFY(unit.lock() && panel.lock()); }
    void giveBack()
    {
        unit.unlock();
        panel.unlock();
    }
    quint32 word(int index) const { return static_cast<const quint32*>(panel.constData())[index]; }

    SiteFixture place;
    QSharedMemory unit{"ELA_SHM_KEY" + site().shmSuffix};
    QSharedMemory panel{"PULT_SHARE_KEY" + site().shmSuffix};
};

} // namespace

class TestSharedSegment : public QObject
{
    Q_OBJECT

private slots:
    void nobodyWaitsForALockThatIsNotGivenBack()
    {
        Others others;
        ElaSharedMemory ela;
        PultShare pult;
        others.hold();
        std::vector<double> ticks; // of the window, ms
        for (unsigned int i = 0; i < 1000; ++i) {
            QElapsedTimer time;
            time.start();
            ela.updateStatusEla();
            pult.setFuncLeftEncoder(i % 2);
            pult.setFuncRightEncoder(i);
            pult.setBlockGui(true);
            ticks.push_back(double(time.nsecsElapsed()) / 1e6);
        }
        std::sort(ticks.begin(), ticks.end());
        qInfo("a tick while both locks are held: median %.4f ms, worst %.1f ms", ticks[500], ticks.back());
        QVERIFY(ticks[990] < 5 && ticks.back() < 100);
        QVERIFY(!ela.status());
        QCOMPARE(pult.getFuncRightEncoder(), 0U);

        // What was to be written comes as soon as it can, and what is there is read.
        *static_cast<quint64*>(others.unit.data()) = 1;
        others.giveBack();
        QVERIFY(QTest::qWaitFor([&] { return ela.updateStatusEla(), ela.status(); }));
        QTRY_COMPARE(pult.getFuncRightEncoder(), 999U);
        QVERIFY(others.word(0) == 1 && others.word(3) == 1);
    }

    void theProcessEndsAtALockThatIsNotGivenBack()
    {
        Others others;
        others.hold();
        QElapsedTimer time;
        time.start();
        QProcess console;
        console.start(QCoreApplication::applicationFilePath(), {"--console", site().root, site().shmSuffix});
        const bool ended = console.waitForFinished(10'000);
        qInfo("a console that met held locks ended after %lld ms", time.elapsed());
        others.giveBack();
        QVERIFY(ended && console.exitStatus() == QProcess::NormalExit && console.exitCode() == 0);
    }
};

// With "--console" the program is one that meets the segments as they are.
int main(int argc, char* argv[])
{
    if (argc == 4 && qstrcmp(argv[1], "--console") == 0)
        return beAConsole(QString::fromLocal8Bit(argv[2]), QString::fromLocal8Bit(argv[3]));
    QCoreApplication app(argc, argv);
    TestSharedSegment test;
    return QTest::qExec(&test, argc, argv);
}
#include "test_sharedsegment.moc"
