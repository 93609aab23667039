#include "deathtest.h"
#include "sitefixture.h"

#include <QtTest>

// The site decides where files are looked for. The machine's own is for the console's program alone.
class TestSite : public QObject
{
    Q_OBJECT

private slots:
    void rootMovesEveryFile()
    {
        Site trainer;
        trainer.root = "/tmp/site";
        QCOMPARE(trainer.path("/log"), QString("/tmp/site/log"));
        QCOMPARE(trainer.programDir(), QString("/tmp/site/home/oper/bin"));
    }

    void nothingReachesTheMachine()
    {
        QVERIFY(deathOf([] { site(); }).contains("no site is set"));
        QTemporaryDir folder;
        const QString around = folder.filePath("around");
        QVERIFY(QFile::link("/", around));
        const char* suffix = "_test";
        for (const auto& [root, shmSuffix] :
             {std::pair{QString(), suffix}, std::pair{QString("/"), suffix},
              std::pair{QString("/tmp/.."), suffix}, std::pair{QString("site"), suffix},
              std::pair{around, suffix}, std::pair{folder.path(), ""}}) {
            Site own;
            own.root = root;
            own.shmSuffix = shmSuffix;
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
