#include "filewriter.h"
#include "fulldisk.h"
#include "sitefixture.h"

#include <QRegularExpression>
#include <QTest>

#include <sys/stat.h>
#include <sys/wait.h>

// Whatever happens to the console, a file holds what was written whole: before or now.
class TestFileWriter : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_site.reset();
        m_site = std::make_unique<SiteFixture>();
        QVERIFY(!writeFile(m_file, "former"));
    }

    void modeAndLinkStay()
    {
        const mode_t mask = umask(027);
        QVERIFY(!writeFile("/log/new", "x"));
        umask(mask);
        QCOMPARE(mode("/log/new"), 0640U);
        ::chmod(own(m_file), 0604);
        ::symlink("../points/p", own("/log/link"));
        QVERIFY(!writeFile("/log/link", "through the link"));
        holds("through the link");
        QVERIFY(QFileInfo(site().path("/log/link")).isSymLink());
        QCOMPARE(mode(m_file), 0604U);
        ::chmod(own(m_file), 0444); // as a program may have been left
        QVERIFY(!writeFile(m_file, "", QFileDevice::Permissions(0x777)));
        holds("");
        QCOMPARE(mode(m_file), 0777U);
    }

    void whatCannotBeReplacedStays()
    {
        ::mkfifo(own("/log/pipe"), 0666);
        for (const char* path : {"/points", "/log/pipe", "/nowhere/p", "/points/p/p"}) {
            const auto before = status(path).st_ino;
            QTest::ignoreMessage(QtWarningMsg, notWritten);
            const auto trouble = writeFile(path, "x");
            QVERIFY(trouble && !trouble->opened);
            QCOMPARE(trouble->line, QString("[A]Файл %1 не записан").arg(path));
            QCOMPARE(status(path).st_ino, before);
            holds("former");
        }
    }

    void fullDisk()
    {
        for (const int size : {1'001, 100'000}) {
            QTest::ignoreMessage(QtWarningMsg, notWritten);
            const FullDisk full(1000);
            const auto trouble = writeFile(m_file, QByteArray(size, 'x'));
            QVERIFY(trouble && trouble->opened);
            holds("former");
        }
    }

    void killedWhileItWrites()
    {
        const pid_t child = fork();
        if (child == 0) {
            const rlimit few{1000, 1000};
            setrlimit(RLIMIT_FSIZE, &few);
            std::signal(SIGXFSZ, SIG_DFL); // ends the process in the middle of a write
            writeFile(m_file, QByteArray(100'000, 'x'));
            _exit(0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        QVERIFY(WIFSIGNALED(status));
        holds("former");
    }

private:
    QByteArray own(const QString& absolute) const { return site().path(absolute).toLocal8Bit(); }
    struct stat status(const QString& absolute) const
    {
        struct stat now = {};
        ::stat(own(absolute), &now);
        return now;
    }
    unsigned mode(const QString& absolute) const { return status(absolute).st_mode & 07777; }
    // One file and nothing half written beside it.
    void holds(const QByteArray& bytes) const
    {
        QCOMPARE(m_site->read(m_file), bytes);
        QCOMPARE(QDir(site().path("/points")).entryList(QDir::Files).size(), 1);
    }

    const QRegularExpression notWritten{"^file not written"};
    const QString m_file = "/points/p";
    std::unique_ptr<SiteFixture> m_site;
};

QTEST_MAIN(TestFileWriter)
#include "test_filewriter.moc"
