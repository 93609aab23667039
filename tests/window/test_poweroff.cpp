#include "contourfixture.h"
#include "endsignals.h"
#include "generic.h"
#include "guifixture.h"
#include "inform.h"
#include "systemoff.h"

#include <QSignalSpy>
#include <QTcpServer>
#include <QTimer>

#include <atomic>
#include <csignal>
#include <thread>

const QString done = "[I]Завершение работы установки выполнено";

// The computer of the machine is switched off through one call of the site, which the tests write down.
class TestPowerOff : public GuiFixture
{
    Q_OBJECT

private slots:
    void init()
    {
        begin();
        m_users = site().path("/home/oper/bin/users.bin");
        QVERIFY(QFile::remove(m_users)); // the window has read it
    }
    void cleanup() { end(); }

    void switchesOff()
    {
        for (const bool refuses : {false, true}) {
            QStringList& told = shell(refuses);
            m_ended = false;
            QCOMPARE(touchAndAnswer(true), 0);
            QCOMPARE(told, QStringList{"sudo /sbin/shutdown -h now"});
            QVERIFY(!list().contains(done)); // for the file only
            // Never with "su".
            QCOMPARE(m_site->read("/home/oper/bin/users.bin"), QByteArray("\xA0\xF4\0\0", 4));
            m_gui.reset();
            QVERIFY(journal().contains(done));
            end();
            init();
        }
        QVERIFY(!site().shell); // nor does anything run at another site
        QTest::ignoreMessage(QtWarningMsg, "no power-off at this site");
        QCOMPARE(touchAndAnswer(true), 0);
    }

    void noAnswerIsNo()
    {
        QStringList& told = shell();
        QCOMPARE(touchAndAnswer(false), -1);
        touch("sbShutdown"); // returns when the question has timed out
        QVERIFY(!QApplication::activeModalWidget());
        QCOMPARE(told, QStringList());
        QVERIFY(!journal().contains(done));
    }

    void lockedWhileTheVacuumSystemRuns()
    {
        QStringList& told = shell();
        m_gui->onChangedShutdownLock(true);
        QTest::mousePress(w("sbShutdown"), Qt::LeftButton);
        QStringList reasons;
        for (QWidget* each : QApplication::allWidgets()) {
            const auto* label = qobject_cast<QLabel*>(each);
            if (label && label->isVisible() && label->window() != m_gui.get())
                reasons << label->text();
        }
        QVERIFY2(!reasons.filter("Вакуумная система не остановлена").isEmpty(),
                 qPrintable(reasons.join('|')));
        QTest::mouseRelease(w("sbShutdown"), Qt::LeftButton);
        QVERIFY(!QApplication::activeModalWidget());
        QCOMPARE(told, QStringList());
    }

    void signalsEndTheConsole_data()
    {
        QTest::addColumn<int>("number");
        QTest::newRow("pbCloseProgram") << SIGINT; // a question, a menu, the login, a keypad
        QTest::newRow("lblLir1") << SIGHUP;
        QTest::newRow("pbChangeUser") << SIGTERM;
        QTest::newRow("sbVacAdjust") << SIGTERM;
    }

    void signalsEndTheConsole()
    {
        QFETCH(int, number);
        EndSignals end;
        connect(&end, &EndSignals::asked, m_gui.get(), &Gui::onEndAsked);
        Answers answers({signalled(number)});
        QTimer::singleShot(0, this, [this] { touch(QTest::currentDataTag()); });
        QCOMPARE(endOfConsole(), 0);
        m_gui.reset();
        QVERIFY(saved());
        QVERIFY(
            journal().contains("[I]Выполнен выход из программы автоматической сварки по сигналу системы"));
    }

    // The box about a missing user file stands in the window's construction, that about a file that cannot be
    // written in its end.
    void signalsEndWhatNoTouchOpened()
    {
        m_gui.reset();
        EndSignals end;
        {
            QFile::remove(m_users);
            Answers answers({signalled(SIGTERM)});
            Gui gui;
            QVERIFY(answers.allGiven());
            QVERIFY(!gui.autorizationAccepted());
            QVERIFY(QDir().mkpath(m_users));
        }
        QTimer::singleShot(0, qApp, &QCoreApplication::quit); // the next loop is not to hear of this end
        QCoreApplication::exec();
    }

    // Two units ask; the operator goes on working for one of them.
    void countsDown()
    {
        QTcpServer unit;
        QVERIFY(unit.listen(QHostAddress::LocalHost));
        QMap<QString, Element*> none;
        TCPthread link;
        QVERIFY(link.connect("127.0.0.1", unit.serverPort(), site().kvs.udpPort, &none));
        QVERIFY(unit.waitForNewConnection(1000));
        QTcpSocket* peer = unit.nextPendingConnection();
        SystemOff cancelled(&link, nullptr), dialog(nullptr, nullptr);
        QSignalSpy cancelledOff(&cancelled, &SystemOff::turnOff), off(&dialog, &SystemOff::turnOff);
        QSignalSpy cancelledSays(&cancelled, &SystemOff::message), says(&dialog, &SystemOff::message);
        cancelled.show();
        dialog.show();
        const auto* seconds = dialog.findChild<QLabel*>("lblSeconds");
        QCOMPARE(seconds->text(), "60");
        QTest::mouseClick(cancelled.findChild<QPushButton*>("pbCancel"), Qt::LeftButton);
        QVERIFY(!cancelled.isVisible());
        QCOMPARE(cancelledSays,
                 (QList<QVariantList>{{"[I]Автоматическое завершение работы отменено пользователем", true}}));
        const QByteArray expected = frame("SET turnSystemOff := off;").mid(2);
        QByteArray received;
        QTRY_VERIFY((received += peer->readAll()).endsWith(expected));

        QTRY_COMPARE(seconds->text(), "59"); // by itself
        for (int left = 58; left > 0; --left) {
            dialog.timeChanged();
            QCOMPARE(seconds->text(), QString::number(left));
        }
        QVERIFY(off.isEmpty() && dialog.isVisible());
        dialog.timeChanged();
        QCOMPARE(off.size(), 1);
        QVERIFY(!dialog.isVisible() && says.isEmpty());
        QTest::qWait(1100); // nothing goes on counting
        QCOMPARE(off.size(), 1);
        QVERIFY(cancelledOff.isEmpty());
        QCOMPARE(cancelled.findChild<QLabel*>("lblSeconds")->text(), "60");
        link.disconnect();
    }

    // A viewer of the test's own stands where the machine has one. Links and recorder ask for the time as
    // they run.
    void manuals()
    {
        QDir bin(site().root);
        m_site->write("/okular", "#!/bin/sh\necho \"$@\" >>\"${0%/*}/seen\"\n");
        QFile::setPermissions(bin.filePath("okular"), QFile::ReadOwner | QFile::ExeOwner);
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", bin.path().toUtf8() + ":/usr/bin:/bin");
        std::atomic<bool> over{false};
        std::thread clock([&over] {
            while (!over)
                QDateTime::currentDateTime();
        });
        Answers answers(
            {Answers::button("pbManual"), [this] { return m_site->read("/seen") == "РЭ_1.pdf\n"; },
             Answers::button("pbOperator"),
             [this] { return m_site->read("/seen") == "РЭ_1.pdf\nРЭ_2.pdf\n"; }, Answers::button("pbClose")});
        touch("pbInformation");
        over = true;
        clock.join();
        qputenv("PATH", path);
        QVERIFY(answers.allGiven());
        QVERIFY(journal().contains("[I]Нажата кнопка 'Информация о программе'"));
    }

    void programsThatAreMissing()
    {
        const QByteArray path = qgetenv("PATH");
        qputenv("PATH", "/nowhere");
        Inform dialog(m_gui.get());
        dialog.show();
        QVERIFY(dialog.hasMouseTracking());
        const QPoint off =
            dialog.geometry().center() - m_gui->mapToGlobal(QPoint(panelWidth / 2, panelHeight / 2));
        QVERIFY(off.manhattanLength() <= 2);
        for (const char* button : {"pbManual", "pbOperator"}) {
            QTest::ignoreMessage(QtWarningMsg, "cannot start okular (not found)");
            QTest::mouseClick(dialog.findChild<QPushButton*>(button), Qt::LeftButton);
        }
        QVERIFY(dialog.isVisible() && !QApplication::activeModalWidget()); // no box, no end
        dialog.close();

        QTest::ignoreMessage(QtWarningMsg, "cannot start kcalc (not found)");
        Answers answers({Answers::button("pbClose")}); // the console's own calculator opens all the same
        touch("pbCalc");
        qputenv("PATH", path);
        QVERIFY(answers.allGiven());
        QCOMPARE(list().last(), "Не удалось запустить калькулятор 'kcalc'");
    }

private:
    // What the shell was told; `refuses`: the system says no.
    QStringList& shell(bool refuses = false)
    {
        m_shell.clear();
        Site own = site();
        own.shell = [this, refuses](const char* command) {
            m_shell << QString::fromUtf8(command) + (m_ended ? " after the end" : "") +
                           (saved() ? "" : " before all is written");
            return refuses ? 1 : 0;
        };
        setSite(own);
        return m_shell;
    }
    bool saved() const
    {
        return QFile::exists(site().path("/home/oper/bin/settings.ini")) && QFileInfo(m_users).size() >= 4;
    }
    // Waits until the console ends; its exit code, -1 for none in time.
    static int endOfConsole(int patience = 5000)
    {
        QTimer late;
        connect(&late, &QTimer::timeout, &late, [] { QCoreApplication::exit(-1); });
        late.start(patience);
        return QCoreApplication::exec();
    }
    int touchAndAnswer(bool yes)
    {
        Answers answers({Answers::confirm(yes)});
        QTimer::singleShot(0, this, [this] { touch("sbShutdown"); });
        const int code = endOfConsole(yes ? 5000 : 500);
        m_ended = true;
        return code;
    }
    // The answer to whatever opens: the system ends the program.
    static std::function<bool()> signalled(int number)
    {
        return [number] {
            const bool open = QApplication::activeModalWidget() || QApplication::activePopupWidget();
            return open && ::raise(number) == 0;
        };
    }

    QString m_users;
    QStringList m_shell;
    bool m_ended = false;
};

QTEST_MAIN(TestPowerOff)
#include "test_poweroff.moc"
