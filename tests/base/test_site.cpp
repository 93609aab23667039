#include "deathtest.h"
#include "sitefixture.h"

#include <QtTest>

// The site decides where files are looked for. The machine's own is for the console's program alone.
class TestSite : public QObject
{
    Q_OBJECT

private slots:
    void nothingReachesTheMachine()
    {
        QVERIFY(deathOf([] { site(); }).contains("no site is set"));
        QTemporaryDir folder;
        const QString around = folder.filePath("around");
        QVERIFY(QFile::link("/", around));
        for (const QString& root :
             {QString(), QString("/"), QString("/tmp/.."), QString("site"), around, folder.path()}) {
            Site own;
            own.root = root;
            own.shmSuffix = root == folder.path() ? "" : "_test"; // there the suffix is what is missing
            QVERIFY2(deathOf([&] { setSite(own); }).contains("a root and a suffix of its own"),
                     qPrintable(root));
        }
        {
            const SiteFixture place;
            QCOMPARE(site().root, place.root());
        }
        QVERIFY(deathOf([] { site(); }).contains("no site is set"));
    }
};

QTEST_GUILESS_MAIN(TestSite)
#include "test_site.moc"
