#include "confirm.h"
#include "drivecontroller.h"
#include "gui.h"
#include "lockview.h"
#include "singleinstance.h"
#include "sitefixture.h"
#include "statebutton.h"
#include "widgets.h"

#include <QAction>
#include <QLineEdit>
#include <QListWidget>
#include <QLocale>
#include <QSettings>
#include <QSignalSpy>
#include <QtTest>

#include <csignal>

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

void answer(const QString& caption)
{
    whenOpen(QStringLiteral("Confirm"), [caption](QWidget* dialog) {
        for (QPushButton* button : dialog->findChildren<QPushButton*>()) {
            if (button->text() == caption)
                return button->click();
        }
    });
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

// What the controller has been told since the last time, and no more.
#define SENT(...)                                                                                            \
    do {                                                                                                     \
        const QStringList expected{__VA_ARGS__};                                                             \
        QTRY_VERIFY(commands().size() >= expected.size());                                                   \
        QCOMPARE(takeCommands(), expected);                                                                  \
    } while (false)

// The window in front of a motion controller that only writes down what it is told.
class TestGui : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void journalLine_data();
    void journalLine();
    void journalFile();
    void journalWithoutFolder();
    void firstStartShowsZeros();
    void speedsSurviveARestart();

    void buttons_data();
    void buttons();
    void lockedButtonSendsNothing();
    void transformedModeNeedsDrivesAndIdleChannel();
    void stopEndsEndlessRotation();
    void transformedModeSwitchesTheScreen();
    void secondAxes();

    void virtualJog_data();
    void virtualJog();
    void jogUnderTrouble_data();
    void jogUnderTrouble();

    void keySwitch();
    void linkLostAndBack();
    void channelStates_data();
    void channelStates();
    void channelModes();
    void programName();
    void pressures();
    void regimes();
    void lights();

    void login();
    void administratorComesUnnamed();
    void exitByButton();
    void exitByKeys();
    void unknownNames();
    void onlyOneInstance();
    void textsFit();

private:
    template <class Widget = QWidget>
    Widget* w(const QString& name) const
    {
        auto* found = m_gui->findChild<Widget*>(name);
        Q_ASSERT_X(found, "widget", qPrintable(name));
        return found;
    }
    void start(); // builds the window anew, joined to the controller
    void tell(std::initializer_list<std::pair<const char*, double>> fields);
    const QStringList& commands(); // all since the last takeCommands()
    QStringList takeCommands();
    void touch(const QString& name) { QTest::mouseClick(w(name), Qt::LeftButton); }
    QColor colour(const QString& name) const { return w(name)->palette().color(QPalette::Window); }
    QStringList list() const; // lines of lwLog without their stamps
    QString journal() const;  // the file of this run, without stamps
    void setVirtualMode();

    std::unique_ptr<SiteFixture> m_site;
    std::unique_ptr<DriveController> m_controller;
    std::unique_ptr<Gui> m_gui;
    QByteArray m_datagram;
    QByteArray m_received;
    QStringList m_commands;
};

void TestGui::init()
{
    m_site = std::make_unique<SiteFixture>();
    QFile users(site().path(QStringLiteral("/home/oper/bin/users.bin")));
    QVERIFY(users.open(QIODevice::WriteOnly));
    users.write(QByteArray("\xA0\xF4\0\0", 4));
    users.close();
    m_controller = std::make_unique<DriveController>();
    start();
}

void TestGui::cleanup()
{
    m_gui.reset();
    m_controller.reset();
    m_site.reset();
}

void TestGui::start()
{
    m_gui.reset();
    m_datagram = drivewire::emptyDatagram();
    m_received.clear();
    m_commands.clear();
    m_gui = std::make_unique<Gui>();
    m_gui->setWindowState(Qt::WindowNoState); // the test's screen is smaller than the machine's
    m_gui->resize(panelWidth, panelHeight);
    m_gui->show();
    QVERIFY(m_controller->accept());
    drivewire::put(m_datagram, drivewire::fieldNamed("KeyAccess"), 1);
    drivewire::put(m_datagram, drivewire::fieldNamed("DrivesPower"), 1);
    tell({});
}

void TestGui::tell(std::initializer_list<std::pair<const char*, double>> fields)
{
    // The point number is free here and tells when the datagram has gone through the window's queue.
    static quint32 mark = 100'000;
    QEventLoop loop;
    const auto connection = connect(m_gui->drives(), &DriveStatus::changedCNCError, &loop, &QEventLoop::quit);
    for (const auto& field : fields)
        drivewire::put(m_datagram, drivewire::fieldNamed(field.first), field.second);
    drivewire::put(m_datagram, drivewire::fieldNamed("CNCError"), ++mark);
    QTimer again; // the telemetry thread may not have bound its port yet
    connect(&again, &QTimer::timeout, this, [this] { m_controller->datagram(m_datagram); });
    again.start(20);
    m_controller->datagram(m_datagram);
    QTimer::singleShot(10'000, &loop, [&loop] { loop.exit(1); });
    const int lost = loop.exec();
    disconnect(connection);
    QVERIFY2(!lost, "the console does not take the datagram");
}

const QStringList& TestGui::commands()
{
    m_received += m_controller->peer->readAll();
    while (m_received.size() >= 4) {
        const int length = qFromLittleEndian<quint16>(m_received.constData() + 2);
        m_commands << QString::fromUtf8(m_received.mid(4, length));
        m_received.remove(0, 4 + length);
    }
    return m_commands;
}

QStringList TestGui::takeCommands()
{
    m_controller->peer->waitForReadyRead(50); // what the console has sent is on its way over loopback
    commands();
    return std::exchange(m_commands, {});
}

QStringList TestGui::list() const
{
    QStringList lines;
    const auto* log = w<QListWidget>(QStringLiteral("lwLog"));
    for (int row = 0; row < log->count(); ++row)
        lines << log->item(row)->text().mid(11);
    return lines;
}

QString TestGui::journal() const
{
    QString text;
    QDir log(site().path(QStringLiteral("/log")));
    for (const QString& day : log.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        for (const QString& file : QDir(log.filePath(day)).entryList(QDir::Files)) {
            for (const QByteArray& line : m_site->read("/log/" + day + "/" + file).split('\n'))
                text += QString::fromUtf8(line).mid(11) + '\n';
        }
    }
    return text;
}

void TestGui::setVirtualMode()
{
    tell({{"DrivesOn", 1}, {"TransOn", 1}, {"ChannelState1", 1}});
}

void TestGui::journalLine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<bool>("icon");
    QTest::addColumn<QColor>("colour");
    const QColor none;
    QTest::newRow("information") << "[I]Дверь открыта"
                                 << "Дверь открыта" << true << QColor(Qt::black);
    QTest::newRow("warning") << "[W]w"
                             << "w" << true << QColor(Qt::black);
    QTest::newRow("alarm") << "[A]a"
                           << "a" << true << QColor(Qt::red);
    QTest::newRow("process") << "[C]c"
                             << "c" << true << QColor(Qt::black);
    QTest::newRow("basic") << "[M]m"
                           << "m" << true << QColor(Qt::blue);
    QTest::newRow("lower case") << "[i]x"
                                << "[i]x" << false << none;
    QTest::newRow("no class") << "Пуск"
                              << "Пуск" << false << none;
    QTest::newRow("short") << "ab"
                           << "ab" << false << none;
    QTest::newRow("empty") << ""
                           << "" << false << none;
}

void TestGui::journalLine()
{
    QFETCH(QString, line);
    m_gui->prgMessage(line, true);
    auto* log = w<QListWidget>(QStringLiteral("lwLog"));
    const QListWidgetItem* item = log->item(log->count() - 1);
    QCOMPARE(log->currentItem(), item);
    QVERIFY(
        QRegularExpression(QStringLiteral("^\\[\\d\\d:\\d\\d:\\d\\d\\] ")).match(item->text()).hasMatch());
    QTEST(item->text().mid(11), "shown");
    QTEST(!item->icon().isNull(), "icon");
    QFETCH(QColor, colour);
    if (colour.isValid())
        QCOMPARE(item->foreground().color(), colour);
    QVERIFY(journal().endsWith(line + "\n\n"));
}

void TestGui::journalFile()
{
    QDir log(site().path(QStringLiteral("/log")));
    const QStringList days = log.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    QCOMPARE(days.size(), 1);
    QVERIFY(QDate::fromString(days.first(), QStringLiteral("yyyy_MM_dd")).isValid());
    const QStringList files = QDir(log.filePath(days.first())).entryList(QDir::Files);
    QCOMPARE(files.size(), 1);
    QVERIFY2(QRegularExpression(QStringLiteral("^polog_\\d\\d_\\d\\d_\\d\\d\\.log$"))
                 .match(files.first())
                 .hasMatch(),
             qPrintable(files.first()));
    m_gui->prgMessage(QStringLiteral("[I]только в файл"), false);
    QVERIFY(!list().contains(QStringLiteral("только в файл")));
    QVERIFY2(journal().contains(QStringLiteral("[I]только в файл\n")), "a line is in the file at once");
}

void TestGui::journalWithoutFolder()
{
    m_gui.reset();
    QVERIFY(QDir(site().path(QStringLiteral("/log"))).removeRecursively());
    start();
    m_gui->prgMessage(QStringLiteral("[I]видно"), true);
    QCOMPARE(list().last(), QStringLiteral("видно"));
    QVERIFY2(!QDir(site().path(QStringLiteral("/log"))).exists(), "the console does not make this folder");
}

void TestGui::firstStartShowsZeros()
{
    for (const char* label : {"speedLX", "speedLX2", "speedU", "speedU2", "speedV", "speedPHI"})
        QCOMPARE(w<PoLabel>(label)->text(), QStringLiteral("0"));
    m_gui.reset();
    const QSettings settings(site().path(settingsFile), QSettings::IniFormat);
    for (const char* axis : {"LX", "LY", "A", "B", "C", "D", "U", "V"}) {
        QCOMPARE(settings.value(QStringLiteral("LIR/") + axis, -1).toInt(), 0);
        QVERIFY(settings.contains(QStringLiteral("speed") + axis));
    }
}

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

void TestGui::buttons_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("field");
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("line");
    const auto row = [](const char* button, const char* field, double value, const char* command,
                        const char* line) {
        QTest::newRow(command) << button << field << value << command << QString::fromUtf8(line);
    };
    row("sbDrives", "DrivesOn", 1, "DRIVE OFF", "[I]Нажата кнопка 'Выключить питание приводов'");
    row("sbDrives", "DrivesOn", 0, "DRIVE ON", "[I]Нажата кнопка 'Включить питание приводов'");
    row("sbTrans", "TransOn", 1, "TRANS OFF", "[I]Нажата кнопка 'Выключить трансформацию приводов'");
    row("sbTrans", "TransOn", 0, "TRANS ON", "[I]Нажата кнопка 'Включить трансформацию приводов'");
    row("pbStop", "TransOn", 0, "STOP_PRG", "[I]Нажата кнопка 'СТОП' на панели приводов");
    row("sbDistPult", "PultOn", 1, "PULT OFF", "[I]Нажата кнопка 'Выключить дистанционный пульт'");
    row("sbDistPult", "PultOn", 0, "PULT ON", "[I]Нажата кнопка 'Включить дистанционный пульт'");
    row("sbLightSpiral", "LightState", 4, "SPIRAL OFF", "[I]Нажата кнопка 'Включить освещение зоны сварки'");
    row("sbLightSpiral", "LightState", 3, "SPIRAL ON", "[I]Нажата кнопка 'Выключить освещение зоны сварки'");
}

void TestGui::buttons()
{
    QFETCH(QString, button);
    QFETCH(QString, field);
    QFETCH(double, value);
    QFETCH(QString, command);
    QFETCH(QString, line);
    tell({{"DrivesOn", 1}, {"ChannelState1", 1}});
    tell({{qPrintable(field), value}});
    touch(button);
    SENT(command);
    QVERIFY(journal().contains(line + '\n'));
    QVERIFY2(!list().contains(line.mid(3)), "what the operator pressed goes to the file only");
}

void TestGui::lockedButtonSendsNothing()
{
    tell({{"DrivesLock", 1}});
    QVERIFY(m_gui->lock(QStringLiteral("LOCK:LockDrives"))->state());
    touch(QStringLiteral("sbDrives"));
    touch(QStringLiteral("sbDistPult")); // drives are off
    m_gui->onChangedSpiralLock(true);
    touch(QStringLiteral("sbLightSpiral"));
    QCOMPARE(takeCommands(), QStringList());
    tell({{"DrivesLock", 0}});
    touch(QStringLiteral("sbDrives"));
    SENT("DRIVE ON");
    QCOMPARE(w<StateButton>("sbDrives")->state(), StateButton::Off);
}

void TestGui::transformedModeNeedsDrivesAndIdleChannel()
{
    const auto* button = w<StateButton>("sbTrans");
    QVERIFY(!button->isEnabled());
    QVERIFY(w<StateButton>("sbDistPult")->locked());
    tell({{"DrivesOn", 1}});
    QVERIFY(!button->isEnabled());
    QVERIFY(!w<StateButton>("sbDistPult")->locked());
    tell({{"ChannelState1", 1}});
    QVERIFY(button->isEnabled());
    tell({{"ChannelState1", 3}});
    QVERIFY(!button->isEnabled());
    tell({{"ChannelState1", 1}, {"DrivesOn", 0}});
    QVERIFY(!button->isEnabled());
}

void TestGui::stopEndsEndlessRotation()
{
    auto* endless = w<QPushButton>("pbEndlessV");
    w<PoLabel>("speedV")->setValue(100, 0);
    touch("pbEndlessV");
    QVERIFY(endless->isChecked());
    QCOMPARE(takeCommands(), QStringList());
    touch("pbPlusV");
    SENT("MOVE(V,100)");
    touch("pbStop");
    SENT("STOP_PRG");
    QVERIFY(!endless->isChecked());
    touch("pbPlusV");
    SENT("MOVE(V,100)", "MOVE(V,0)");

    touch("pbEndlessV");
    touch("pbEndlessV");
    SENT("MOVE(V,0)");
    QVERIFY(journal().contains(
        QStringLiteral("[I]Отжата кнопка 'Бесконечное вращение' на панели координаты V\n")));
}

void TestGui::transformedModeSwitchesTheScreen()
{
    QVERIFY(w("frmA")->isVisible());
    QVERIFY(!w("frmVirtual")->isVisible());
    QCOMPARE(w("frmD")->geometry(), QRect(0, 425, 450, 75));
    tell({{"X", -12.345}, {"TransOn", 1}});
    for (const char* name : {"frmA", "frmB", "frmC", "pbInfoA", "pbInfoB", "pbInfoC"})
        QVERIFY2(!w(name)->isVisible(), name);
    QVERIFY(w("frmVirtual")->isVisible());
    QCOMPARE(w("frmVirtual")->geometry(), QRect(10, 345, 450, 260));
    QCOMPARE(w("frmD")->geometry(), QRect(0, 185, 450, 75));
    QCOMPARE(w("pbInfoD")->geometry(), QRect(385, 195, 55, 55));
    QCOMPARE(w("frameManip")->geometry(), QRect(10, 80, 450, 525));
    QCOMPARE(w<PoLabel>("coordX")->text(), QLocale::c().toString(-12.345F, 'f', 2));
    QCOMPARE(m_gui->coord(QStringLiteral("X")), -12.345F);
    tell({{"TransOn", 0}});
    QVERIFY(w("frmA")->isVisible());
    QCOMPARE(w("frmD")->geometry(), QRect(0, 425, 450, 75));
}

void TestGui::secondAxes()
{
    QSignalSpy shown(m_gui.get(), &Gui::signalSecondXPanelShow);
    QVERIFY(!w("frmLX2")->isVisible());
    m_gui->showSecondLXAxis(true);
    m_gui->showSecondUAxis(true);
    QCOMPARE(shown, (QList<QVariantList>{{true}}));
    QCOMPARE(w("frmLX2")->geometry(), QRect(0, 105, 450, 75));
    QVERIFY(w("frmLX2")->isVisible() && w("pbInfoLX2")->isVisible());
    QVERIFY(w("frmU2")->isVisible() && w("pbInfoU2")->isVisible());
    m_gui->showSecondLXAxis(false);
    QVERIFY(!w("frmLX2")->isVisible() && !w("pbInfoLX2")->isVisible());
    QVERIFY2(w("pbInfoLX")->visibleRegion() == QRegion(w("pbInfoLX")->rect()), "the way back must stay free");
}

void TestGui::virtualJog_data()
{
    QTest::addColumn<QString>("axis");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("move");
    QTest::addColumn<QString>("direction");
    QTest::newRow("X+") << "X"
                        << "pbMinusX"
                        << "MOVE(X,12.34)"
                        << "положительном";
    QTest::newRow("X-") << "X"
                        << "pbPlusX"
                        << "MOVE(X,-12.34)"
                        << "отрицательном";
    QTest::newRow("Z+") << "Z"
                        << "pbMinusZ"
                        << "MOVE(Z,12.34)"
                        << "положительном";
    QTest::newRow("Z-") << "Z"
                        << "pbPlusZ"
                        << "MOVE(Z,-12.34)"
                        << "отрицательном";
    QTest::newRow("PHI+") << "PHI"
                          << "pbMinusPHI"
                          << "MOVE(PHI,12.34)"
                          << "положительном";
    QTest::newRow("PHI-") << "PHI"
                          << "pbPlusPHI"
                          << "MOVE(PHI,-12.3)"
                          << "отрицательном";
}

void TestGui::virtualJog()
{
    QFETCH(QString, axis);
    QFETCH(QString, button);
    QFETCH(QString, move);
    QFETCH(QString, direction);
    setVirtualMode();
    w<PoLabel>("speed" + axis)->setValue(12.34F, 0);
    QTest::mousePress(w(button), Qt::LeftButton);
    SENT(move);
    QCOMPARE(list().last(),
             QStringLiteral("Выполнение ручного перемещение по виртуальной оси %1 в %2 направлении...")
                 .arg(axis, direction));
    QTest::mouseRelease(w(button), Qt::LeftButton);
    SENT(QStringLiteral("MOVE(%1,0)").arg(axis));
    QCOMPARE(list().last(), "Завершено ручное перемещение по виртуальной оси " + axis);
}

void TestGui::jogUnderTrouble_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("field");
    QTest::addColumn<double>("value");
    QTest::addColumn<bool>("goesOn"); // until the finger lifts
    QTest::newRow("virtual axis at its end") << "pbPlusX"
                                             << "Xmax" << 1.0 << true;
    QTest::newRow("virtual axis at its other end") << "pbMinusX"
                                                   << "Xmin" << 1.0 << true;
    QTest::newRow("virtual rows go away") << "pbMinusX"
                                          << "TransOn" << 0.0 << false;
    QTest::newRow("key switch, virtual axis") << "pbMinusX"
                                              << "KeyAccess" << 0.0 << false;
    QTest::newRow("drive at its limit switch") << "pbPlusD"
                                               << "Dmax" << 1.0 << true;
    QTest::newRow("key switch, drive") << "pbPlusD"
                                       << "KeyAccess" << 0.0 << false;
    QTest::newRow("drive parked") << "pbPlusD"
                                  << "StateD" << double(0xC1600) << false;
    QTest::newRow("drives off") << "pbPlusD"
                                << "DrivesOn" << 0.0 << true;
}

void TestGui::jogUnderTrouble()
{
    QFETCH(QString, button);
    QFETCH(QString, field);
    QFETCH(double, value);
    QFETCH(bool, goesOn);
    setVirtualMode();
    QTest::mousePress(w(button), Qt::LeftButton);
    QTRY_COMPARE(commands().size(), 1);
    takeCommands();
    tell({{qPrintable(field), value}});
    const QStringList atOnce = takeCommands();
    QCOMPARE(atOnce.size(), goesOn ? 0 : 1);
    QTest::mouseRelease(w(button), Qt::LeftButton);
    const QStringList stops = atOnce + takeCommands();
    QCOMPARE(stops.size(), 1);
    QVERIFY(stops.first().endsWith(QStringLiteral(",0)")));
}

void TestGui::keySwitch()
{
    const auto overlays = [this] {
        int count = 0;
        for (QLabel* label : m_gui->findChildren<QLabel*>())
            count += label->text() == QStringLiteral("Панель управления заблокирована");
        return count;
    };
    tell({{"KeyAccess", 0}});
    m_gui->onAccessChanged(false);
    QCOMPARE(overlays(), 1);
    QVERIFY(!m_gui->isEnabled());
    touch("pbStop");
    QCOMPARE(takeCommands(), QStringList());
    tell({{"KeyAccess", 1}});
    QCOMPARE(overlays(), 0);
    QVERIFY(m_gui->isEnabled());
    QVERIFY(!QWidget::keyboardGrabber());
    touch("pbStop");
    SENT("STOP_PRG");
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

void TestGui::channelStates_data()
{
    QTest::addColumn<uint>("state");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("line");
    QTest::newRow("idle") << 1U << "бездействие"
                          << "Канал 2: бездействие";
    QTest::newRow("running") << 3U << "выполнение"
                             << "Канал 2: выполнение автоматической программы";
    QTest::newRow("reserve") << 7U << "резервное"
                             << "";
    QTest::newRow("error") << 6U << "ошибка"
                           << "Канал 2: ошибка в канале";
    QTest::newRow("loading") << 9U << "загрузка\nпрограммы"
                             << "Канал 2: загрузка программы";
    QTest::newRow("cancel") << 11U << "cancel distance to go\nRunning"
                            << "";
    QTest::newRow("waits") << 13U << "ожидание\nпродолжения"
                           << "Канал 2: готовность к продолжению программы";
    QTest::newRow("0") << 0U << "неопределено\n(0)"
                       << "Канал 2: состояние неопределено - ошибка связи";
    QTest::newRow("14") << 14U << "неопределено\n(14)"
                        << "Канал 2: состояние неопределено - ошибка связи";
    QTest::newRow("top") << 0xFFFFFFFFU << "неопределено\n(4294967295)"
                         << "Канал 2: состояние неопределено - ошибка связи";
}

void TestGui::channelStates()
{
    QFETCH(uint, state);
    QFETCH(QString, line);
    const int before = list().size();
    m_gui->onChangedChannelState2(state);
    QTEST(w<PoLabel>("channel2State")->text(), "text");
    QCOMPARE(list().mid(before), line.isEmpty() ? QStringList() : QStringList{line});
    QCOMPARE(colour("channel2State"), state == 3 ? QColor(0, 255, 128) : QColor(189, 255, 180));
}

void TestGui::channelModes()
{
    const std::pair<uint, QString> modes[] = {{1, QStringLiteral("ручной")},  {4, QStringLiteral("MDI")},
                                              {5, QStringLiteral("автомат")}, {14, QStringLiteral("WCS")},
                                              {0, QStringLiteral("0")},       {15, QStringLiteral("15")}};
    for (const auto& mode : modes) {
        tell({{"ChannelMode3", mode.first}});
        QCOMPARE(w<PoLabel>("channel3Mode")->text(), mode.second);
    }
}

void TestGui::programName()
{
    m_gui->setProgramName(QStringLiteral("/home//oper/шов 3.save/"), false);
    QCOMPARE(m_gui->programName(), QStringLiteral("шов 3.save"));
    QCOMPARE(w<QLabel>("lblContour")->text(), QStringLiteral("шов 3.save"));
    QCOMPARE(colour("lblContour"), QColor(Qt::blue));
    m_gui->setProgramName(QStringLiteral("шов"), true);
    QCOMPARE(m_gui->programName(), QStringLiteral("шов"));
    QCOMPARE(w<QLabel>("lblContour")->text(), QStringLiteral("шов (без управления током)"));
    QCOMPARE(colour("lblContour"), QColor(Qt::red));
    m_gui->setProgramName(QStringLiteral("//"), false);
    QCOMPARE(m_gui->programName(), QString());
}

void TestGui::pressures()
{
    m_gui->onChangedChamberPressure(133.322);
    QCOMPARE(m_gui->pressure(), 133.322F);
    QCOMPARE(w<PoLabel>("VacuumChamber")->text(), QStringLiteral("1.3E+02"));
    m_gui->onChangedPressUnit(true);
    QCOMPARE(w<PoLabel>("VacuumChamber")->text(), QStringLiteral("1.0E+00"));
    QCOMPARE(w<QLabel>("lblVacuumGun")->text(), QStringLiteral("Пушка, мм.рт.ст."));
    QCOMPARE(m_gui->pressure(), 133.322F);
    m_gui->onChangedChamberValid(false);
    QCOMPARE(colour("VacuumChamber"), QColor(255, 192, 192));
    m_gui->onChangedPressUnit(false);
    QCOMPARE(w<PoLabel>("VacuumChamber")->text(), QStringLiteral("1.3E+02"));
}

void TestGui::regimes()
{
    m_gui->changedModeTime(3661);
    QCOMPARE(w<QLabel>("lblVacuumTime")->text(), QStringLiteral("01:01:01"));
    m_gui->changedModeState(2);
    QCOMPARE(list().last(),
             QStringLiteral("Автоматический алгоритм выполнен, время выполнения - 61 минут 1 секунд"));
    const int before = list().size();
    m_gui->changedMode(0xFFFFFFFF);
    QCOMPARE(w<QLabel>("lblVacuumState")->text(), QStringLiteral("Аварийное завершение"));
    m_gui->changedMode(7);
    QCOMPARE(w<QLabel>("lblVacuumState")->text(), QStringLiteral("Wrong mode"));
    QCOMPARE(list().size(), before);
    m_gui->changedMode(0);
    QCOMPARE(colour("lblVacuumState"), QColor(255, 128, 128));
    QCOMPARE(list().last(),
             QStringLiteral("Выполнено переключение в Наладочный режим работы вакуумной системы"));
}

void TestGui::lights()
{
    const int before = list().size();
    m_gui->onLightStateChanged(0);
    QCOMPARE(list().size(), before);
    m_gui->onLightStateChanged(5);
    m_gui->onLightStateChanged(6);
    QCOMPARE(list().mid(before),
             (QStringList{QStringLiteral("Освещение камеры светодиодными лентами включено"),
                          QStringLiteral("Освещение зоны сварки спиралями включено"),
                          QStringLiteral("Освещение камеры светодиодными лентами выключено"),
                          QStringLiteral("Освещение камеры светодиодными прожекторами включено")}));
    QCOMPARE(w<StateButton>("sbLightSpiral")->state(), StateButton::On);
}

void TestGui::login()
{
    QSignalSpy users(m_gui.get(), &Gui::signalUserChange);
    const QString nobody =
        w<QLabel>("lblUserRight")->text() + QLatin1Char(' ') + w<QLabel>("lblUserName")->text();
    cancelLogin();
    QVERIFY(!m_gui->autorizationAccepted());
    QCOMPARE(users.takeFirst(), QVariantList{-1});
    QCOMPARE(list().last(), "Регистрация пользователя - " + nobody);

    logIn(QStringLiteral("su"), QStringLiteral("46920137"));
    QVERIFY(m_gui->autorizationAccepted());
    QCOMPARE(users.takeFirst(), QVariantList{0});
    QCOMPARE(m_gui->getUserName(), QStringLiteral("Администратор Администратор"));
    QVERIFY(
        journal().contains(QStringLiteral("[I]Регистрация пользователя - Администратор Администратор\n")));

    m_gui->onUserChanged(2);
    QVERIFY(!w("pbConstants")->isVisible());
    m_gui->onUserChanged(-1);
    QVERIFY(w("pbConstants")->isVisible());
}

void TestGui::administratorComesUnnamed()
{
    QSignalSpy users(m_gui.get(), &Gui::signalUserChange);
    logIn(QStringLiteral("su"), QStringLiteral("46920137"));
    touch("pbChangeUser");
    QCOMPARE(users.takeFirst(), QVariantList{0});
    QCOMPARE(list().last(), QStringLiteral("Смена пользователя не выполнена"));
    QCOMPARE(m_gui->getUserName(), QStringLiteral(" ")); // nobody has logged in at start
    cancelLogin();
    touch("pbChangeUser");
    QCOMPARE(users.takeFirst(), QVariantList{-1});
    QCOMPARE(list().last(), QStringLiteral("Смена пользователя не выполнена"));
}

void TestGui::exitByButton()
{
    const QString line = QStringLiteral("[I]Выполнен выход из программы автоматической сварки по кнопке\n");
    answer(QStringLiteral("Нет"));
    touch("pbCloseProgram");
    QVERIFY(!journal().contains(line));
    QTimer::singleShot(10'000, m_gui.get(), [] { QCoreApplication::exit(1); });
    QTimer::singleShot(0, this, [this] {
        answer(QStringLiteral("Да"));
        touch("pbCloseProgram");
    });
    QCOMPARE(QCoreApplication::exec(), 0);
    QVERIFY(journal().contains(line));
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
    QCOMPARE(m_gui->coord(QStringLiteral("LX2")), 0.0F);
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
    QCOMPARE(inChild([] { return int(checkSingleInstance()); }), 1); // ends, and its lock with it
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
