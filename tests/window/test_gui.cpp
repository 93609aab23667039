#include "autorization_dialogs.h"
#include "deathtest.h"
#include "guifixture.h"
#include "nextdialog.h"
#include "singleinstance.h"
#include "vacuumcontroller.h"

#include <QLineEdit>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QSettings>
#include <QSignalSpy>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const QString settingsFile = "/home/oper/bin/settings.ini";

// What a process of its own gets to hear when it asks whether it is the only one.
bool onlyInstanceElsewhere()
{
    const pid_t child = ::fork();
    if (child == 0)
        ::_exit(checkSingleInstance());
    int status = 0;
    ::waitpid(child, &status, 0);
    return status != 0;
}

using Autorization::AutorizationDialog;

void logIn()
{
    whenOpen<AutorizationDialog>([](AutorizationDialog* dialog) {
        for (auto* edit : dialog->findChildren<QLineEdit*>())
            edit->setText(edit->echoMode() == QLineEdit::Password ? "46920137" : "su");
        dialog->findChild<QPushButton*>()->click();
    });
}

void cancelLogin()
{
    whenOpen<AutorizationDialog>([](AutorizationDialog* dialog) { dialog->reject(); });
}

} // namespace

// The life of the window and what it shows.
class TestGui : public GuiFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void speedsSurviveARestart()
    {
        w<PoLabel>("speedLX")->setValue(250, 0);
        w<PoLabel>("speedLX2")->setValue(999, 0);
        w<PoLabel>("speedU")->setValue(60, 0);
        w<PoLabel>("speedZ")->setValue(12.34F, 0);
        m_gui.reset();
        {
            QSettings settings(site().path(settingsFile), QSettings::IniFormat);
            QCOMPARE(settings.value("speedZ").toFloat(), 12.34F);
            settings.setValue("LIR/LY", 3);
        }
        start();
        QCOMPARE(w<PoLabel>("speedLX")->value(), 250.0F);
        QCOMPARE(w<PoLabel>("speedLX2")->value(), 250.0F);
        QCOMPARE(w<PoLabel>("speedU2")->value(), 60.0F);
        QCOMPARE(w<PoLabel>("speedZ")->value(), 12.0F);
        m_gui.reset();
        QCOMPARE(QSettings(site().path(settingsFile), QSettings::IniFormat).value("LIR/LY").toInt(), 3);
    }

    void spoiledSettings()
    {
        m_gui.reset();
        const QByteArray good = m_site->read(settingsFile);
        QVERIFY(good.count('=') > 30);
        const auto with = [&good](const QByteArray& value) { // in the place of each
            QByteArray spoiled;
            for (const QByteArray& line : good.split('\n'))
                spoiled += (line.contains('=') ? line.left(line.indexOf('=') + 1) + value : line) + '\n';
            return spoiled;
        };
        QRandomGenerator random(5);
        QByteArray noise;
        for (int i = 0; i < 20'000; ++i)
            noise += char(random.bounded(256));
        const QByteArray folder; // where the file should be
        // The speed of a jog must not turn round.
        for (const QByteArray& file :
             {with("3000"), with("3001"), with("-2147483648"), with("99999999999999999999"), with("nan"),
              with("@Variant(\\0\\0\\x7f\\xff)"), with("\""), noise, folder}) {
            m_gui.reset();
            QFile target(site().path(settingsFile));
            target.remove();
            QVERIFY(file == folder ? QDir().mkpath(target.fileName()) : target.open(QIODevice::WriteOnly));
            if (target.isOpen())
                target.write(file);
            target.close();

            start();
            const QString speed = file == with("3000") ? "3000" : "0";
            for (const char* label : {"speedLX", "speedLX2", "speedU2", "speedV", "speedPHI"})
                QCOMPARE(text(label), speed);
            QTest::mouseClick(w("pbMinusLX"), Qt::LeftButton);
            SENT("MOVE(LX,-" + speed + ")", "MOVE(LX,0)");
        }
    }

    // The box about a missing user file lets in datagrams before the window listens; the first tells all
    // fields. What the chamber's controller tells reaches the top bar and the window's interlocks; what the
    // window knows of the door and of the user reaches the panel.
    void vacuumFromAFirstDayOn()
    {
        m_gui.reset();
        QVERIFY(QFile::remove(site().path("/home/oper/bin/users.bin")));
        VacuumController kvk(vacuumwire::kvk(), site().kvk);
        kvk.put({{"AlgNumber", 4}, {"AlgTime", 61}, {"AlgRun", 1}, {"PT5", 4e-3}, {"PT5Valid", 1}});
        kvk.put({{"PT6", 2e-3}, {"BKUValid", 1}, {"SpiralLock", 1}, {"ShutdownLock", 1}, {"TMNFreq", 7}});
        kvk.keepTelling();
        whenOpen<QMessageBox>([](QMessageBox* box) {
            auto* wait = new QTimer(box);
            connect(wait, &QTimer::timeout, box, [box] {
                for (QWidget* widget : QApplication::allWidgets()) {
                    auto* frequency = widget->findChild<QLabel*>("FreqTMN");
                    if (frequency && frequency->text() == "7") // the last field
                        box->accept();
                }
            });
            wait->start(5);
        });
        start();
        QCOMPARE(colour("lblKVK"), QColor(Qt::green)); // told before anyone listened
        QCOMPARE(colour("lblKVS"), QColor(Qt::red));
        const Lock* shutdown = m_gui->lock("LOCK:LockShutdown");
        const Lock* spiral = m_gui->lock("LOCK:LockSpiral");
        QVERIFY(shutdown->state() && spiral->state());
        QCOMPARE(topBar(), "Откачка камеры|00:01:01|Выполняется|4.0E-03|2.0E-03");
        for (const char* gauge : {"VacuumChamber", "VacuumGun"})
            QCOMPARE(colour(gauge), QColor(189, 255, 180));
        for (const char* line :
             {"Клапан напуска VP4 закрыт", "Запущен алгоритм 'Откачка камеры' вакуумной системы"})
            QCOMPARE(list().count(line), 1);

        touch("lblPT2u");
        QCOMPARE(topBar(), "Откачка камеры|00:01:01|Выполняется|3.0E-05|1.5E-05");
        kvk.put({{"PT5Valid", 0}, {"SpiralLock", 0}});
        QTRY_VERIFY(!spiral->state());
        QVERIFY(shutdown->state());
        QTRY_COMPARE(colour("VacuumChamber"), QColor(255, 192, 192));
        QVERIFY(list().contains("Нарушен обмен с датчиком вакуума PT5!"));
        kvk.put({{"ShutdownLock", 0}});
        QTRY_VERIFY(!shutdown->state());

        tell({{"DoorState", 1}});
        QCOMPARE(w("Door")->y(), 340);
        for (int group : {2, 1}) {
            emit m_gui->signalUserChange(group);
            QCOMPARE(w<StateButton>("sbVacAdjust")->locked(), group == 2);
        }
    }

    void programName()
    {
        const std::tuple<const char*, bool, const char*, const char*> rows[] = {
            {"/home//oper/шов 3.save/", false, "шов 3.save", "шов 3.save"},
            {"шов", true, "шов", "шов (без управления током)"},
            {"//", false, "", ""}};
        for (const auto& [path, withoutCurrent, name, shown] : rows) {
            m_gui->setProgramName(path, withoutCurrent);
            QCOMPARE(m_gui->programName(), name);
            QCOMPARE(text("lblContour"), shown);
            QCOMPARE(colour("lblContour"), QColor(withoutCurrent ? Qt::red : Qt::blue));
        }
    }

    void login()
    {
        QSignalSpy users(m_gui.get(), &Gui::signalUserChange);
        const QString unchanged = "Смена пользователя не выполнена";
        logIn();
        touch("pbChangeUser"); // the administrator comes unnamed
        QCOMPARE(users.takeFirst(), QVariantList{0});
        QCOMPARE(list().last(), unchanged);
        QCOMPARE(m_gui->getUserName(), " "); // nobody has logged in at start
        cancelLogin();
        touch("pbChangeUser");
        QCOMPARE(users.takeFirst(), QVariantList{-1});
        QCOMPARE(list().last(), unchanged);

        const QString labels = text("lblUserRight") + ' ' + text("lblUserName");
        cancelLogin();
        QVERIFY(!m_gui->autorizationAccepted());
        QCOMPARE(users.takeFirst(), QVariantList{-1});
        QCOMPARE(list().last(), "Регистрация пользователя - " + labels);
        logIn();
        QVERIFY(m_gui->autorizationAccepted());
        QCOMPARE(users.takeFirst(), QVariantList{0});
        QCOMPARE(m_gui->getUserName(), "Администратор Администратор");
        QVERIFY(journal().contains("[I]Регистрация пользователя - Администратор Администратор\n"));

        for (const int group : {2, -1}) {
            m_gui->onUserChanged(group);
            QCOMPARE(w("pbConstants")->isVisible(), group < 2);
        }
    }

    // The window that would tell why is not on view yet.
    void keySwitchDuringTheLogin()
    {
        m_gui->hide();
        whenOpen<AutorizationDialog>([this](AutorizationDialog* dialog) {
            const auto end = qScopeGuard([dialog] { dialog->reject(); });
            QTRY_COMPARE(QApplication::activeWindow(), dialog->window()); // and not the one behind it
            auto* password = dialog->findChild<QLineEdit*>("lePassword");
            const auto* title = dialog->window()->findChild<QLabel*>("lblTitle");
            password->setFocus();
            for (int turn = 0; turn < 2; ++turn) {
                m_gui->onAccessChanged(false);
                QVERIFY(!password->isEnabled());
                QCOMPARE(title->text(), "Панель управления заблокирована");
                QCOMPARE(title->parentWidget()->palette().color(QPalette::Window), QColor(Qt::red));
                m_gui->onAccessChanged(true);
                QCOMPARE(title->text(), "Авторизация");
                QCOMPARE(dialog->focusWidget(), password); // the keys go where they went
            }
            m_gui->onAccessChanged(false);
            Confirm question("?", "?", m_gui.get(), 0); // one that opens meanwhile
            QCOMPARE(question.window()->findChild<QLabel*>("lblTitle")->text(), title->text());
            m_gui->onAccessChanged(true);
        });
        QVERIFY(!m_gui->autorizationAccepted());
    }

    void exitByKeys()
    {
        w<PoLabel>("speedA")->setValue(36, 0);
        m_gui->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_gui.get()));
        QTimer::singleShot(10'000, m_gui.get(), [] { QCoreApplication::exit(1); });
        QTimer::singleShot(0, this, [this] { QTest::keyClick(m_gui.get(), Qt::Key_Q, Qt::ControlModifier); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QTest::mousePress(w("pbPlusA"), Qt::LeftButton); // a finger that is still there when the console ends
        SENT("MOVE(A,36)");
        m_gui.reset();
        QCOMPARE(takeCommands(), QStringList{"MOVE(A,0)"});
        QVERIFY(journal().contains(
            "[I]Выполнен выход из программы автоматической сварки по комбинации клавиш\n"));
        QCOMPARE(QSettings(site().path(settingsFile), QSettings::IniFormat).value("speedA").toInt(), 36);
        QCOMPARE(m_site->read("/home/oper/bin/users.bin"), QByteArray("\xA0\xF4\0\0", 4));
    }

    void unknownNames()
    {
        QCOMPARE(m_gui->coord("W"), 0.0F);
        QVERIFY(m_gui->axis("U2"));
        QVERIFY(!deathOf([&] { m_gui->axis("X"); }).isEmpty());
        QVERIFY(!deathOf([&] { m_gui->lock("LOCK:None"); }).isEmpty());
    }

    void onlyOneInstance()
    {
        const QString file = site().path("/var/tmp/.poMIRTA_lock");
        const mode_t usual = ::umask(077);
        QVERIFY(onlyInstanceElsewhere()); // ends, and its lock with it
        ::umask(usual);
        struct stat made;
        QVERIFY(::stat(file.toUtf8().constData(), &made) == 0 && (made.st_mode & 0777) == 0666);
        QVERIFY(checkSingleInstance());
        QVERIFY(!onlyInstanceElsewhere());
        QVERIFY(QDir(site().path("/var")).removeRecursively());
        QVERIFY2(!checkSingleInstance(), "a lock file that cannot be opened counts as a running instance");
    }

private:
    QString topBar() const // what it tells of the vacuum
    {
        QStringList texts;
        for (const char* label :
             {"lblVacuumState", "lblVacuumTime", "lblVacuumActive", "VacuumChamber", "VacuumGun"})
            texts << text(label);
        return texts.join('|');
    }
};

QTEST_MAIN(TestGui)
#include "test_gui.moc"
