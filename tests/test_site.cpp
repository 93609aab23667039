#include "site.h"

#include <QtTest>

// The site decides where files are looked for; the machine itself uses plain absolute paths.
class TestSite : public QObject
{
    Q_OBJECT

private slots:
    void machineUsesPlainPathsAndLoopbackControllers()
    {
        const Site machine;
        QCOMPARE(machine.path("/programs/_temp1.npg"), QString("/programs/_temp1.npg"));
        QCOMPARE(machine.drive.host, QString("127.0.0.1"));
        QCOMPARE(machine.drive.tcpPort, 5190);
        QCOMPARE(machine.drive.udpPort, 5191);
        QCOMPARE(machine.kvs.tcpPort, 5196);
        QCOMPARE(machine.kvk.udpPort, 5199);
        QCOMPARE(machine.programDir(), QCoreApplication::applicationDirPath());
    }

    void rootMovesEveryFile()
    {
        Site trainer;
        trainer.root = "/tmp/site";
        QCOMPARE(trainer.path("/log"), QString("/tmp/site/log"));
        QCOMPARE(trainer.programDir(), QString("/tmp/site/home/oper/bin"));
    }
};

QTEST_GUILESS_MAIN(TestSite)
#include "test_site.moc"
