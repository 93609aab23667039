#include "guifixture.h"
#include "lir940p.h"
#include "pultshare.h"
#include "trainer/wheelcounters.h"

#include <QMenu>
#include <QProcess>
#include <QSharedMemory>
#include <QtTest>

#include <cstdio>

namespace {

// The segment as the remote panel's own program sees it: this program, started a second time.
int printWords(const QString& key)
{
    QSharedMemory segment(key);
    if (!segment.attach(QSharedMemory::ReadOnly))
        return 1;
    segment.lock();
    quint32 words[4];
    memcpy(words, segment.constData(), sizeof words);
    segment.unlock();
    std::printf("%u %u %u %u", words[0], words[1], words[2], words[3]);
    return 0;
}

QString shareKey()
{
    return QString("PULT_SHARE_KEY") + site().shmSuffix;
}

QString wordsElsewhere()
{
    QProcess reader;
    reader.start(QCoreApplication::applicationFilePath(), {"--words", shareKey()});
    reader.waitForFinished();
    return reader.exitCode() == 0 ? reader.readAllStandardOutput() : QString("no segment");
}

} // namespace

// From the counts of a wheel to the command that the controller gets.
class TestHandwheels : public GuiFixture
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        LirDevice::replace(&m_wheels);
        connect(&m_alive, &QTimer::timeout, this, [this] { m_controller->datagram(m_datagram); });
    }
    void cleanupTestCase() { LirDevice::replace(nullptr); }
    void init()
    {
        begin();
        m_alive.start(100);
        QTRY_VERIFY(m_wheels.readings() > 9); // the counters have settled
        takeCommands();
    }
    void cleanup()
    {
        m_alive.stop();
        end();
    }

    void eachWheelForItself()
    {
        const auto turnAll = [this] {
            turn(WheelCounters::Left, 2);
            turn(WheelCounters::Right, -2);
            turn(WheelCounters::Remote, 3);
        };
        turnAll(); // all are free at the start
        choose("lblLir1", "Ось LX");
        choose("lblLir2", "Ось U");
        choose("lblLir3", "ЭЛА");
        turnAll();
        SENT("LIR(LX,20,3000)", "LIR(U,-20,0)");
        tell({{"PultOn", 1}});
        QVERIFY(w("pultRegime")->isVisible() && !w("frmLir3")->isEnabled()); // the panel has its wheel
        turnAll();
        SENT("LIR(LX,20,3000)", "LIR(U,-20,0)", "HANDWHEEL(300)");
        tell({{"KeyAccess", 0}});
        turnAll();
        tell({{"KeyAccess", 1}, {"PultOn", 0}});
        turnAll();
        SENT("LIR(LX,20,3000)", "LIR(U,-20,0)");
        QVERIFY(journal().contains("[I]На штурвал 'Правый' установлен параметр Ось U"));
        m_gui->onLirChanged(3, 1); // the card has no such channel
        QCOMPARE(takeCommands(), QStringList());
    }

    void shareSeenByAnotherProcess()
    {
        const auto words = [this](const char* expected) {
            m_gui->onTimeChanged();
            QTRY_COMPARE(wordsElsewhere(), expected);
        };
        QTRY_COMPARE(wordsElsewhere(), "0 0 0 0");
        choose("lblLir1", "ЭЛА");
        QTRY_COMPARE(wordsElsewhere(), "1 0 0 0"); // by the tick, within a second
        choose("lblLir1", "Ось LX");
        choose("lblLir2", "ЭЛА");
        words("0 1 0 0");
        choose("lblLir3", "ЭЛА");
        tell({{"KeyAccess", 0}});
        words("0 1 1 1");
        tell({{"KeyAccess", 1}, {"PultOn", 1}});
        words("0 1 0 0");
        m_gui.reset();
        QTRY_COMPARE(wordsElsewhere(), "no segment"); // the last one takes it away
    }

    void shareOfAnother()
    {
        m_gui.reset();
        {
            QSharedMemory panel(shareKey()); // stood before
            QVERIFY(panel.create(16));
            memset(panel.data(), 0x55, 16);
            PultShare share;
            QTRY_COMPARE(wordsElsewhere(), "0 0 0 0");
            const quint32 words[] = {5, 6, 7, 1};
            panel.lock();
            memcpy(panel.data(), words, sizeof words);
            panel.unlock();
            QVERIFY(share.getFuncLeftEncoder() == 5 && share.getFuncRightEncoder() == 6 &&
                    share.getFuncDistEncoder() == 7 && share.getBlockGui());
        }
        QSharedMemory foreign(shareKey()); // is too small
        QVERIFY(foreign.create(8));
        memset(foreign.data(), 0x55, 8);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^PultShare: the segment has 8 bytes"));
        PultShare share;
        share.setBlockGui(true);
        QVERIFY(!share.getBlockGui());
        QCOMPARE(QByteArray(static_cast<const char*>(foreign.constData()), 8), QByteArray(8, 0x55));
    }

private:
    // Turns a wheel and waits until the window has been told.
    void turn(WheelCounters::Wheel wheel, int detents)
    {
        m_wheels.turn(wheel, detents);
        const int now = m_wheels.readings();
        QTRY_VERIFY(m_wheels.readings() > now + 6); // two rounds
        QCoreApplication::sendPostedEvents(m_gui.get());
    }

    // Of the menu that a touch opens.
    void choose(const char* label, const QString& entry)
    {
        QTimer::singleShot(0, this, [&] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            QVERIFY(menu);
            for (QAction* action : menu->actions()) {
                if (action->text().trimmed() == entry)
                    QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(action).center());
            }
        });
        touch(QLatin1String(label));
    }

    WheelCounters m_wheels{1000}; // any turn is one reading
    QTimer m_alive;               // a controller that says nothing for a second is given up
};

int main(int argc, char* argv[])
{
    if (argc == 3 && qstrcmp(argv[1], "--words") == 0)
        return printWords(QString::fromUtf8(argv[2]));
    QApplication app(argc, argv);
    TestHandwheels test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}
#include "test_handwheels.moc"
