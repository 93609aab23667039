#include "dumpcreator.h"

#include "guifixture.h"

namespace {

// The records of the file by its offsets alone, the time of each in front of its values.
QVector<QVector<float>> records(const QByteArray& file)
{
    QVector<QVector<float>> all;
    for (int at = 0; at + 44 <= file.size(); at += 44) {
        all << QVector<float>{float(qFromLittleEndian<quint32>(file.constData() + at))};
        for (int i = 0; i < 10; ++i)
            all.last() << qFromLittleEndian<float>(file.constData() + at + 4 + 4 * i);
    }
    return all;
}

// The one recording of a folder, by its path; empty when there is none.
QString recording(const QString& folder)
{
    const QStringList names = QDir(folder).entryList({"*.dump"}, QDir::Files);
    return names.size() == 1 ? folder + '/' + names.first() : QString();
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
    void recordsOfFortyFourBytesTwentyTimesASecond()
    {
        const QTemporaryDir folder;
        float source[10] = {0, 1, 2, 3, 4, 5, 6, 7, 8, -9.5F};
        DumpCreator dump("pass", 20, source);
        dump.setDumpPath(folder.path());
        const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
        QElapsedTimer clock;
        clock.start();
        dump.startDump();
        QTRY_VERIFY(!recording(folder.path()).isEmpty());
        const QString path = recording(folder.path());
        const auto start = QDateTime::fromString(QFileInfo(path).fileName(), "dd.MM.yyyy_hh.mm.ss'.dump'");
        QVERIFY(start.isValid() && start >= before && start <= QDateTime::currentDateTime());
        QTRY_VERIFY(QFileInfo(path).size() >= 20 * 44);
        QCOMPARE(QFile::permissions(path) & all, all);
        dump.stopDump();
        QVERIFY(dump.wait(5000));
        const qint64 lasted = clock.elapsed();
        QCOMPARE(QFile::permissions(path) & all, readOnly);

        QCOMPARE(content(path).size() % 44, 0);
        const auto list = records(content(path));
        QVERIFY(list.size() <= lasted / 50 + 1);
        QVERIFY(list.first().first() < 50);
        QVector<float> periods;
        for (int i = 1; i < list.size(); ++i)
            periods << list[i][0] - list[i - 1][0];
        std::sort(periods.begin(), periods.end());
        QVERIFY(periods.first() >= 49); // the clock of the day may round, but not by more
        QVERIFY2(periods[periods.size() / 2] < 70, "about twenty records a second");
        for (const QVector<float>& record : list)
            QCOMPARE(record.mid(1), QVector<float>({0, 1, 2, 3, 4, 5, 6, 7, 8, -9.5F}));

        for (int i = 0; i < 20; ++i) { // a stop before the thread runs is not lost
            dump.startDump();
            dump.stopDump();
            QVERIFY(dump.wait(5000));
        }
    }

    void withoutTheFolderTheConsoleRunsOn()
    {
        const QTemporaryDir folder;
        float source[10] = {};
        DumpCreator dump("pass", 20, source);
        dump.setDumpPath(folder.filePath("dump"));
        const QSignalSpy problem(&dump, &DumpCreator::signalDumpProblem);
        dump.startDump();
        QVERIFY(dump.wait(5000));
        QCOMPARE(problem, QList<QVariantList>{{"Can't open file for writing."}});
        QVERIFY(!QDir(folder.filePath("dump")).exists());
        dump.stopDump();

        begin(); // a site without the folder
        tell({{"LX1", 1}});
        QVERIFY(!QDir(site().programDir() + "/dump").exists());

        // With it the console records the positions of its drives.
        const QString own = site().programDir() + "/dump";
        QVERIFY(QDir().mkpath(own));
        start();
        QVector<float> expected;
        for (const char* drive : {"LX1", "LX2", "LY", "A", "B", "C", "D", "U1", "U2", "V"}) {
            expected << float(10 + expected.size());
            tell({{drive, double(expected.last())}});
        }
        const QString path = recording(own);
        QTRY_COMPARE(records(content(path)).last().mid(1), expected);
        QCOMPARE(records(content(path)).first().mid(1), QVector<float>(10, 0)); // before any telemetry
        m_gui.reset();
        QTRY_COMPARE(QFile::permissions(path) & all, readOnly);
        QCOMPARE(content(path).size() % 44, 0);
        end();
    }
};

QTEST_MAIN(TestDump)
#include "test_dump.moc"
