#include "dumpcreator.h"

#include "guifixture.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>

namespace {

struct Sample
{
    quint32 time;
    QVector<float> values;
};

// Knows the file by its offsets alone.
QVector<Sample> samples(const QByteArray& file)
{
    QVector<Sample> list;
    for (int at = 0; at + 44 <= file.size(); at += 44) {
        Sample sample{qFromLittleEndian<quint32>(file.constData() + at), {}};
        for (int i = 0; i < 10; ++i)
            sample.values << qFromLittleEndian<float>(file.constData() + at + 4 + 4 * i);
        list << sample;
    }
    return list;
}

QStringList dumps(const QString& folder)
{
    return QDir(folder).entryList({"*.dump"}, QDir::Files);
}

QByteArray content(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Of owner, group and others; what the present user may do depends on who runs the test.
const auto all = QFileDevice::Permissions(0x7077);
const auto readOnly = QFileDevice::Permissions(0x4044);

} // namespace

class TestDump : public GuiFixture
{
    Q_OBJECT

private slots:
    void recordsOfFortyFourBytesTwentyTimesASecond();
    void aStopBeforeTheThreadRunsIsNotLost();
    void withoutTheFolderTheConsoleRunsOn();
    void theConsoleRecordsThePositionsOfTheDrives();
};

void TestDump::recordsOfFortyFourBytesTwentyTimesASecond()
{
    QTemporaryDir folder;
    float source[10] = {0, 1, 2, 3, 4, 5, 6, 7, 8, -9.5F};
    DumpCreator dump("pass", 20, source);
    dump.setDumpPath(folder.path());
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
    QElapsedTimer clock;
    clock.start();
    dump.startDump();
    QTRY_COMPARE(dumps(folder.path()).size(), 1);
    const QString path = folder.filePath(dumps(folder.path()).first());
    const auto start = QDateTime::fromString(QFileInfo(path).fileName(), "dd.MM.yyyy_hh.mm.ss'.dump'");
    QVERIFY(start.isValid() && start >= before && start <= QDateTime::currentDateTime());
    QTRY_VERIFY(QFileInfo(path).size() >= 20 * 44);
    QCOMPARE(QFile::permissions(path) & all, all);
    dump.stopDump();
    QVERIFY(dump.wait(5000));
    const qint64 lasted = clock.elapsed();
    QCOMPARE(QFile::permissions(path) & all, readOnly);

    const QByteArray file = content(path);
    QCOMPARE(file.size() % 44, 0);
    const QVector<Sample> list = samples(file);
    QVERIFY(list.size() <= lasted / 50 + 1);
    QVERIFY(list.first().time < 50);
    QVector<quint32> periods;
    for (int i = 1; i < list.size(); ++i)
        periods << list[i].time - list[i - 1].time;
    std::sort(periods.begin(), periods.end());
    QVERIFY(periods.first() >= 49); // the clock of the day may round, but not by more
    QVERIFY2(periods[periods.size() / 2] < 70, "about twenty records a second");
    for (const Sample& sample : list)
        QCOMPARE(sample.values, QVector<float>({0, 1, 2, 3, 4, 5, 6, 7, 8, -9.5F}));
}

void TestDump::aStopBeforeTheThreadRunsIsNotLost()
{
    QTemporaryDir folder;
    float source[10] = {};
    for (int i = 0; i < 20; ++i) {
        DumpCreator dump("pass", 20, source);
        dump.setDumpPath(folder.path());
        dump.startDump();
        dump.stopDump();
        QVERIFY(dump.wait(5000));
        for (const QString& name : dumps(folder.path()))
            QVERIFY(QFile::remove(folder.filePath(name)));
    }
}

void TestDump::withoutTheFolderTheConsoleRunsOn()
{
    QTemporaryDir folder;
    float source[10] = {};
    DumpCreator dump("pass", 20, source);
    dump.setDumpPath(folder.filePath("dump"));
    QSignalSpy problem(&dump, &DumpCreator::signalDumpProblem);
    dump.startDump();
    QVERIFY(dump.wait(5000));
    QCOMPARE(problem.size(), 1);
    QCOMPARE(problem.first().first().toString(), QString("Can't open file for writing."));
    QVERIFY(!QDir(folder.filePath("dump")).exists());
    dump.stopDump();

    begin(); // a site without the folder
    tell({{"LX1", 1}});
    QVERIFY(!QDir(site().programDir() + "/dump").exists());
    end();
}

void TestDump::theConsoleRecordsThePositionsOfTheDrives()
{
    begin();
    const QString folder = site().programDir() + "/dump";
    QVERIFY(QDir().mkpath(folder));
    start();
    tell({{"LX1", 10},
          {"LX2", 11},
          {"LY", 12},
          {"A", 13},
          {"B", 14},
          {"C", 15},
          {"D", 16},
          {"U1", 17},
          {"U2", 18},
          {"V", 19.5}});
    QTRY_COMPARE(dumps(folder).size(), 1);
    const QString path = folder + "/" + dumps(folder).first();
    const QVector<float> expected{10, 11, 12, 13, 14, 15, 16, 17, 18, 19.5F};
    const auto last = [&path] {
        const QVector<Sample> list = samples(content(path));
        return list.isEmpty() ? QVector<float>() : list.last().values;
    };
    QTRY_COMPARE(last(), expected);
    QCOMPARE(samples(content(path)).first().values, QVector<float>(10, 0)); // before any telemetry
    m_gui.reset();
    QTRY_COMPARE(QFile::permissions(path) & all, readOnly);
    QCOMPARE(content(path).size() % 44, 0);
    end();
}

QTEST_MAIN(TestDump)

#include "test_dump.moc"
