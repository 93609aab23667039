#include "guifixture.h"
#include "singleinstance.h"
#include "vacuumcontroller.h"

#include <QLineEdit>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QSettings>
#include <QSignalSpy>

#include <csignal>
#include <functional>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const QString settingsFile = QStringLiteral("/home/oper/bin/settings.ini");

// Runs `act` in a process of its own. Its exit code, or minus the signal that ended it.
template <class Act>
int inChild(Act act)
{
    const pid_t child = ::fork();
    if (child == 0) {
        qInstallMessageHandler(nullptr);
        ::signal(SIGABRT, SIG_DFL);
        ::close(STDERR_FILENO);
        ::_exit(act());
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

// Calls `act` on the visible window of that object name as soon as there is one.
void whenOpen(const QString& name, const std::function<void(QWidget*)>& act)
{
    auto* timer = new QTimer;
    QObject::connect(timer, &QTimer::timeout, [timer, name, act] {
        for (QWidget* widget : QApplication::allWidgets()) {
            if (widget->isVisible() && (widget->objectName() == name || widget->inherits(name.toLatin1()))) {
                timer->deleteLater();
                timer->stop();
                act(widget);
                return;
            }
        }
    });
    timer->start(5);
}

void logIn(const QString& login, const QString& password)
{
    whenOpen(QStringLiteral("AutorizationDialog"), [=](QWidget* dialog) {
        for (QLineEdit* edit : dialog->findChildren<QLineEdit*>())
            edit->setText(edit->echoMode() == QLineEdit::Password ? password : login);
        dialog->findChild<QPushButton*>()->click();
    });
}

void cancelLogin()
{
    whenOpen(QStringLiteral("AutorizationDialog"),
             [](QWidget* dialog) { qobject_cast<QDialog*>(dialog)->reject(); });
}

} // namespace

// The life of the window and what it shows.
class TestGui : public GuiFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }
    void speedsSurviveARestart();
    void spoiledSettings();
    void linkLostAndBack();
    void controllerSpeaksIntoTheBoxOfAFirstDay();
    void windowAndVacuumPanel();
    void programName();
    void login();
    void keySwitchDuringTheLogin();
    void exitByKeys();
    void unknownNames();
    void onlyOneInstance();
    void textsFit();

private:
    QString topBar() const // what it tells of the vacuum
    {
        QStringList texts;
        for (const char* label :
             {"lblVacuumState", "lblVacuumTime", "lblVacuumActive", "VacuumChamber", "VacuumGun"})
            texts << w<QLabel>(label)->text();
        return texts.join('|');
    }
};

void TestGui::speedsSurviveARestart()
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

void TestGui::spoiledSettings()
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
            QCOMPARE(w<PoLabel>(label)->text(), speed);
        QTest::mouseClick(w("pbMinusLX"), Qt::LeftButton);
        SENT("MOVE(LX,-" + speed + ")", "MOVE(LX,0)");
    }
}

void TestGui::linkLostAndBack()
{
    tell({{"LX1", 7.5}});
    QCOMPARE(colour("lblCNC"), QColor(Qt::green));
    QCOMPARE(colour("lblKVS"), QColor(Qt::red));
    QTRY_COMPARE(colour("lblELA"), QColor(Qt::red));
    m_controller->peer->close();
    QTRY_COMPARE(colour("lblCNC"), QColor(Qt::red));
    QCOMPARE(w<PoLabel>("coordLX")->text(), QStringLiteral("7.50"));
    QVERIFY(m_gui->isEnabled());
    touch("pbStop"); // lost, and nobody complains

    QTRY_VERIFY(m_controller->server.hasPendingConnections());
    QVERIFY(m_controller->accept());
    QTRY_COMPARE(colour("lblCNC"), QColor(Qt::green));
    m_received.clear();
    tell({{"LX1", 8.25}});
    QCOMPARE(w<PoLabel>("coordLX")->text(), QStringLiteral("8.25"));
    touch("pbStop");
    SENT("STOP_PRG");
}

// The box about a missing user file lets in datagrams before the window listens; the first tells all fields.
void TestGui::controllerSpeaksIntoTheBoxOfAFirstDay()
{
    m_gui.reset();
    QVERIFY(QFile::remove(site().path(QStringLiteral("/home/oper/bin/users.bin"))));
    VacuumController kvk(vacuumwire::kvk(), site().kvk);
    kvk.put({{"AlgNumber", 4}, {"AlgTime", 61}, {"AlgRun", 1}, {"PT5", 4e-3}, {"PT5Valid", 1}});
    kvk.put({{"PT6", 2e-3}, {"BKUValid", 1}, {"SpiralLock", 1}, {"ShutdownLock", 1}, {"TMNFreq", 7}});
    kvk.keepTelling();
    whenOpen(QStringLiteral("QMessageBox"), [](QWidget* box) {
        auto* wait = new QTimer(box);
        connect(wait, &QTimer::timeout, box, [box] {
            for (QWidget* widget : QApplication::allWidgets()) {
                auto* frequency = widget->findChild<QLabel*>(QStringLiteral("FreqTMN"));
                if (frequency && frequency->text() == QLatin1String("7")) // the last field
                    qobject_cast<QDialog*>(box)->accept();
            }
        });
        wait->start(5);
    });
    start();
    QCOMPARE(colour("lblKVK"), QColor(Qt::green)); // told before anyone listened
    QCOMPARE(colour("lblKVS"), QColor(Qt::red));
    QVERIFY(m_gui->lock("LOCK:LockShutdown")->state() && m_gui->lock("LOCK:LockSpiral")->state());
    QCOMPARE(topBar(), QStringLiteral("Откачка камеры|00:01:01|Выполняется|4.0E-03|2.0E-03"));
    for (const char* gauge : {"VacuumChamber", "VacuumGun"})
        QCOMPARE(colour(gauge), QColor(189, 255, 180));
    for (const char* line :
         {"Клапан напуска VP4 закрыт", "Запущен алгоритм 'Откачка камеры' вакуумной системы"})
        QCOMPARE(list().count(QString::fromUtf8(line)), 1);
}

// What the chamber's controller tells reaches the top bar and the window's interlocks; what the window knows
// of the door and of the user reaches the panel.
void TestGui::windowAndVacuumPanel()
{
    m_gui.reset();
    VacuumController kvk(vacuumwire::kvk(), site().kvk);
    start();
    QVERIFY(kvk.accept());
    kvk.put(
        {{"AlgNumber", 4}, {"AlgTime", 61}, {"AlgRun", 1}, {"PT5", 4e-3}, {"PT5Valid", 1}, {"PT6", 2e-3}});
    kvk.put({{"BKUValid", 1}, {"SpiralLock", 1}, {"TMNFreq", 7}});
    kvk.keepTelling();
    QTRY_COMPARE(w<QLabel>("FreqTMN")->text(), QStringLiteral("7")); // the last field
    touch("lblPT2u");
    QCOMPARE(topBar(), QStringLiteral("Откачка камеры|00:01:01|Выполняется|3.0E-05|1.5E-05"));
    QCOMPARE(w<QLabel>("lblVacuumGun")->text(), QStringLiteral("Пушка, мм.рт.ст."));
    QCOMPARE(m_gui->pressure(), 4e-3F);
    QCOMPARE(colour("VacuumChamber"), QColor(189, 255, 180));
    kvk.put({{"PT5Valid", 0}, {"SpiralLock", 0}, {"ShutdownLock", 1}});
    QVERIFY(m_gui->lock("LOCK:LockSpiral")->state() && !m_gui->lock("LOCK:LockShutdown")->state());
    QTRY_VERIFY(m_gui->lock("LOCK:LockShutdown")->state());
    QVERIFY(!m_gui->lock("LOCK:LockSpiral")->state());
    QCOMPARE(colour("VacuumChamber"), QColor(255, 192, 192));
    QCOMPARE(colour("VacuumGun"), QColor(189, 255, 180));
    QVERIFY(list().contains(QStringLiteral("Нарушен обмен с датчиком вакуума PT5!")));

    tell({{"DoorState", 1}});
    QCOMPARE(w("Door")->y(), 340);
    for (int group : {2, 1}) {
        emit m_gui->signalUserChange(group);
        QCOMPARE(w<StateButton>("sbVacAdjust")->locked(), group == 2);
    }
}

void TestGui::programName()
{
    const std::tuple<const char*, bool, const char*, const char*> rows[] = {
        {"/home//oper/шов 3.save/", false, "шов 3.save", "шов 3.save"},
        {"шов", true, "шов", "шов (без управления током)"},
        {"//", false, "", ""}};
    for (const auto& [path, withoutCurrent, name, shown] : rows) {
        m_gui->setProgramName(QString::fromUtf8(path), withoutCurrent);
        QCOMPARE(m_gui->programName(), QString::fromUtf8(name));
        QCOMPARE(w<QLabel>("lblContour")->text(), QString::fromUtf8(shown));
        QCOMPARE(colour("lblContour"), QColor(withoutCurrent ? Qt::red : Qt::blue));
    }
}

void TestGui::login()
{
    QSignalSpy users(m_gui.get(), &Gui::signalUserChange);
    const QString su = QStringLiteral("su"), password = QStringLiteral("46920137");
    const QString unchanged = QStringLiteral("Смена пользователя не выполнена");
    logIn(su, password);
    touch("pbChangeUser"); // the administrator comes unnamed
    QCOMPARE(users.takeFirst(), QVariantList{0});
    QCOMPARE(list().last(), unchanged);
    QCOMPARE(m_gui->getUserName(), QStringLiteral(" ")); // nobody has logged in at start
    cancelLogin();
    touch("pbChangeUser");
    QCOMPARE(users.takeFirst(), QVariantList{-1});
    QCOMPARE(list().last(), unchanged);

    const QString labels =
        w<QLabel>("lblUserRight")->text() + QLatin1Char(' ') + w<QLabel>("lblUserName")->text();
    cancelLogin();
    QVERIFY(!m_gui->autorizationAccepted());
    QCOMPARE(users.takeFirst(), QVariantList{-1});
    QCOMPARE(list().last(), "Регистрация пользователя - " + labels);
    logIn(su, password);
    QVERIFY(m_gui->autorizationAccepted());
    QCOMPARE(users.takeFirst(), QVariantList{0});
    QCOMPARE(m_gui->getUserName(), QStringLiteral("Администратор Администратор"));
    QVERIFY(
        journal().contains(QStringLiteral("[I]Регистрация пользователя - Администратор Администратор\n")));

    for (const int group : {2, -1}) {
        m_gui->onUserChanged(group);
        QCOMPARE(w("pbConstants")->isVisible(), group < 2);
    }
}

// The window that would tell why is not on view yet.
void TestGui::keySwitchDuringTheLogin()
{
    m_gui->hide();
    whenOpen(QStringLiteral("AutorizationDialog"), [this](QWidget* dialog) {
        const auto end = qScopeGuard([dialog] { qobject_cast<QDialog*>(dialog)->reject(); });
        QTRY_COMPARE(QApplication::activeWindow(), dialog->window()); // and not the one behind it
        auto* password = dialog->findChild<QLineEdit*>("lePassword");
        const auto* title = dialog->window()->findChild<QLabel*>("lblTitle");
        password->setFocus();
        for (int turn = 0; turn < 2; ++turn) {
            m_gui->onAccessChanged(false);
            QVERIFY(!password->isEnabled());
            QCOMPARE(title->text(), QStringLiteral("Панель управления заблокирована"));
            QCOMPARE(title->parentWidget()->palette().color(QPalette::Window), QColor(Qt::red));
            m_gui->onAccessChanged(true);
            QCOMPARE(title->text(), QStringLiteral("Авторизация"));
            QCOMPARE(dialog->focusWidget(), password); // the keys go where they went
        }
        m_gui->onAccessChanged(false);
        Confirm question("?", "?", m_gui.get(), 0); // one that opens meanwhile
        QCOMPARE(question.window()->findChild<QLabel*>("lblTitle")->text(), title->text());
        m_gui->onAccessChanged(true);
    });
    QVERIFY(!m_gui->autorizationAccepted());
}

void TestGui::exitByKeys()
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
        QStringLiteral("[I]Выполнен выход из программы автоматической сварки по комбинации клавиш\n")));
    QCOMPARE(QSettings(site().path(settingsFile), QSettings::IniFormat).value("speedA").toInt(), 36);
    QCOMPARE(m_site->read(QStringLiteral("/home/oper/bin/users.bin")), QByteArray("\xA0\xF4\0\0", 4));
}

void TestGui::unknownNames()
{
    QCOMPARE(m_gui->coord(QStringLiteral("W")), 0.0F);
    QVERIFY(m_gui->axis(QStringLiteral("U2")));
    const auto ask = [this](auto question) {
        return inChild([&] {
            question(*m_gui);
            return 0;
        });
    };
    QCOMPARE(ask([](const Gui& gui) { gui.axis(QStringLiteral("X")); }), -SIGABRT);
    QCOMPARE(ask([](const Gui& gui) { gui.lock(QStringLiteral("LOCK:None")); }), -SIGABRT);
}

void TestGui::onlyOneInstance()
{
    const QString file = site().path(QStringLiteral("/var/tmp/.poMIRTA_lock"));
    const mode_t usual = ::umask(077);
    QCOMPARE(inChild([] { return int(checkSingleInstance()); }), 1); // ends, and its lock with it
    ::umask(usual);
    struct stat made;
    QVERIFY(::stat(file.toUtf8().constData(), &made) == 0 && (made.st_mode & 0777) == 0666);
    QVERIFY(checkSingleInstance());
    QCOMPARE(inChild([] { return int(checkSingleInstance()); }), 0);
    QVERIFY(QDir(site().path(QStringLiteral("/var"))).removeRecursively());
    QVERIFY2(!checkSingleInstance(), "a lock file that cannot be opened counts as a running instance");
}

// Every text of the window whole in its place, in every state that changes it.
void TestGui::textsFit()
{
    const auto clipped = [this] {
        QStringList found;
        for (QLabel* label : m_gui->findChildren<QLabel*>()) {
            if (label->window() != m_gui.get() || label->text().isEmpty() || label->objectName().isEmpty() ||
                label->objectName().startsWith(QLatin1String("qt_")) || w("contour")->isAncestorOf(label))
                continue;
            const int flags = label->wordWrap() ? Qt::TextWordWrap : 0;
            const QRect room = label->contentsRect();
            const QRect need =
                label->fontMetrics().boundingRect(QRect(0, 0, room.width(), 1000), flags, label->text());
            if (need.width() > room.width() || need.height() > room.height())
                found << label->objectName() + ": " + label->text() +
                             QStringLiteral(" %1x%2 in %3x%4")
                                 .arg(need.width())
                                 .arg(need.height())
                                 .arg(room.width())
                                 .arg(room.height());
        }
        for (QPushButton* button : m_gui->findChildren<QPushButton*>()) {
            if (button->text().isEmpty() || w("contour")->isAncestorOf(button))
                continue;
            const QRect need = button->fontMetrics().boundingRect(QRect(0, 0, 1000, 1000), 0, button->text());
            if (need.width() > button->width() - 4 || need.height() > button->height())
                found << button->objectName() + ": " + button->text() +
                             QStringLiteral(" %1x%2").arg(need.width()).arg(need.height());
        }
        return found;
    };
    QVERIFY2(clipped().isEmpty(), qPrintable(clipped().join("; ")));
    m_gui->setProgramName(QStringLiteral("Кольцо D1250.save"), true);
    m_gui->onChangedPressUnit(true);
    m_gui->onChangedGunPressure(101325);
    for (const char* axis : {"X", "Z", "PHI", "LX", "A"})
        w<PoLabel>(QStringLiteral("coord") + axis)->setValue(-1234.56F, 2);
    for (const char* axis : {"X", "Z", "PHI", "LX", "V"})
        w<PoLabel>(QStringLiteral("speed") + axis)->setValue(3000, 0);
    for (uint state = 0; state < 15; ++state) {
        m_gui->onChangedChannelState1(state);
        m_gui->onChangedChannelMode1(state);
        m_gui->onChangedPultRegime(state);
        m_gui->changedMode(state - 1);
        m_gui->changedModeState(state);
        QVERIFY2(clipped().isEmpty(), qPrintable(clipped().join("; ")));
    }
}

QTEST_MAIN(TestGui)
#include "test_gui.moc"
