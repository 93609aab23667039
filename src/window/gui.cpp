#include "gui.h"

#include "autorization_manager.h"
#include "axis.h"
#include "contour.h"
#include "dumpcreator.h"
#include "joghold.h"
#include "journal.h"
#include "kvs.h"
#include "lockview.h"
#include "site.h"
#include "statebutton.h"
#include "ui_gui.h"
#include "usergroup.h"
#include "widgets.h"

#include <QDateTime>
#include <QLocale>
#include <QShowEvent>

namespace {

constexpr int kTick = 1000;      // ms
constexpr int kReconnect = 1000; // ms between two attempts to reach the motion controller

} // namespace

// The order of construction is part of the design: state buttons need the locks, the axes need the
// buttons, the settings need the axes' labels, and the links begin to speak while the window is built.
Gui::Gui()
    : ui(std::make_unique<Ui::Gui>())
{
    ui->setupUi(this); // `contour` and, last of all, `kvs`
    m_virtual = {
        VirtualAxis{QStringLiteral("X"), QStringLiteral("мм"), ui->coordX, ui->speedX, ui->indX, ui->pbPlusX,
                    ui->pbMinusX, ui->pbInfoX},
        VirtualAxis{QStringLiteral("Z"), QStringLiteral("мм"), ui->coordZ, ui->speedZ, ui->indZ, ui->pbPlusZ,
                    ui->pbMinusZ, ui->pbInfoZ},
        VirtualAxis{QStringLiteral("PHI"), QStringLiteral("град"), ui->coordPHI, ui->speedPHI, ui->indPHI,
                    ui->pbPlusPHI, ui->pbMinusPHI, ui->pbInfoPHI},
    };
    setWindowState(Qt::WindowFullScreen | Qt::WindowActive);
    addAction(ui->actExit); // its shortcut works although no menu shows it

    m_journal = std::make_unique<Journal>(ui->lwLog);
    initManager();
    initSprites();
    initLocks();
    initStateButtons();
    initDrives();
    loadIni();

    connect(&m_drives, &DriveTCPthread::disconnected, this, &Gui::disconnectedDrives);
    connectDrives();
    connectPanels();
    initMessages();
    m_lirAxes = {QStringLiteral("LX"), QStringLiteral("LY"), QStringLiteral("A"),  QStringLiteral("B"),
                 QStringLiteral("C"),  QStringLiteral("D"),  QStringLiteral("U1"), QStringLiteral("V")};
    initGeometry();
    initPresets();
    startClock();
    m_journal->open();
    startDump();
    emit signalSystemStarted();
}

Gui::~Gui()
{
    m_dump->stopDump();
    stopJogs(); // while the link and the journal are there
    saveIni();
    ui->contour->keepForNextStart();
    delete m_manager; // writes the user file
    m_journal->close();
    qDeleteAll(m_locks);
    qDeleteAll(m_axis); // they save their speeds from labels that the base class destroys
    // The panels outlive everything that their reports need.
    ui->kvs->disconnect(this);
    ui->contour->disconnect(this);
}

void Gui::stopJogs()
{
    for (JogHold* hold : findChildren<JogHold*>())
        hold->letGo();
    for (Axis* axis : qAsConst(m_axis)) {
        for (JogHold* hold : axis->findChildren<JogHold*>())
            hold->letGo();
    }
}

void Gui::saveWork()
{
    stopJogs();
    saveIni();
    ui->contour->keepForNextStart();
    m_manager->save();
}

void Gui::prgMessage(const QString& str, bool isShow)
{
    m_journal->write(str, isShow);
}

void Gui::messageToLog(const QString& time, const QString& str)
{
    m_journal->show(time, str);
}

bool Gui::autorizationAccepted()
{
    m_userGroup = m_manager->showAutorization();
    emit signalUserChange(m_userGroup);
    m_userRights = ui->lblUserRight->text();
    m_userName = ui->lblUserName->text();
    prgMessage(QStringLiteral("[I]Регистрация пользователя - ") + getUserName(), true);
    return m_userGroup >= 0;
}

Axis* Gui::axis(const QString& name) const
{
    const auto i = m_axis.find(name);
    Q_ASSERT(i != m_axis.end());
    return i.value();
}

float Gui::coord(const QString& name) const
{
    const PoLabel* label = m_coord.value(name);
    return label ? label->value() : 0.0F;
}

Lock* Gui::lock(const QString& key) const
{
    const auto i = m_locks.find(key);
    Q_ASSERT(i != m_locks.end());
    return i.value();
}

QString Gui::getUserName() const
{
    return m_userRights + QLatin1Char(' ') + m_userName;
}

float Gui::pressure() const
{
    return ui->VacuumChamber->value();
}

void Gui::initManager()
{
    m_manager =
        new Autorization::Manager({this, ui->lblUserName, ui->lblUserRight, ui->pbChangeUser, ui->pbUsers});
    connect(m_manager, &Autorization::Manager::message, this, &Gui::prgMessage);
}

void Gui::initSprites()
{
    for (const VirtualAxis& axis : m_virtual) {
        axis.lamp->addPixmap(0, QStringLiteral(":/images/indicator_gray.png"));
        axis.lamp->addPixmap(1, QStringLiteral(":/images/indicator_green.png"));
        axis.lamp->addPixmap(2, QStringLiteral(":/images/indicator_yellow.png"));
        axis.lamp->addPixmap(4, QStringLiteral(":/images/indicator_red.png"));
    }
}

void Gui::connectPanels()
{
    connect(this, &Gui::signalSystemStarted, ui->kvs, &KVS::onSystemStarted);
    connect(ui->kvs, &KVS::onKVSConnected, this, &Gui::onChangedKVSConnected);
    connect(ui->kvs, &KVS::onKVKConnected, this, &Gui::onChangedKVKConnected);
    connect(ui->kvs, &KVS::message, this, &Gui::prgMessage);
    connect(ui->contour, &CONTOUR::message, this, &Gui::prgMessage);
    connect(ui->kvs, &KVS::turnSystemOff, this, &Gui::onTurnSystemOff);
    connect(ui->kvs, &KVS::onChangedPressUnit, this, &Gui::onChangedPressUnit);
    connect(ui->kvs, &KVS::signalChangedSpiralLock, this, &Gui::onChangedSpiralLock);
    connect(ui->kvs, &KVS::signalChangedShutdownLock, this, &Gui::onChangedShutdownLock);
    connect(ui->kvs, &KVS::signalChangedMode, this, &Gui::changedMode);
    connect(ui->kvs, &KVS::signalChangedModeTime, this, &Gui::changedModeTime);
    connect(ui->kvs, &KVS::signalChangedModeState, this, &Gui::changedModeState);
    connect(ui->kvs, &KVS::changedChamberPressure, this, &Gui::onChangedChamberPressure);
    connect(ui->kvs, &KVS::changedChamberPressureValid, this, &Gui::onChangedChamberValid);
    connect(ui->kvs, &KVS::changedGunPressure, this, &Gui::onChangedGunPressure);
    connect(ui->kvs, &KVS::changedGunPressureValid, this, &Gui::onChangedGunValid);
    connect(this, &Gui::signalUserChange, ui->kvs, &KVS::onUserChanged);
    connect(this, &Gui::signalUserChange, ui->contour, &CONTOUR::onUserChanged);
    connect(this, &Gui::signalUserChange, this, &Gui::onUserChanged);
    connect(&m_lir, &Lir940p::valueChanged, this, &Gui::onLirChanged);
}

void Gui::initGeometry()
{
    ui->frmVirtual->setGeometry(QRect(QPoint(10, 345), QPoint(459, 604)));
    ui->frmVirtual->hide();
    ui->frmLX2->setGeometry(QRect(QPoint(0, 105), QPoint(449, 179)));
    ui->frmLX2->setVisible(m_secondLX);
    ui->pbInfoLX2->setGeometry(QRect(QPoint(385, 115), QPoint(439, 169)));
    ui->pbInfoLX2->setVisible(m_secondLX);
    ui->frmU2->setGeometry(QRect(QPoint(0, 25), QPoint(449, 99)));
    ui->frmU2->setVisible(m_secondU);
    ui->pbInfoU2->setGeometry(QRect(QPoint(385, 35), QPoint(439, 89)));
    ui->pbInfoU2->setVisible(m_secondU);
}

void Gui::initPresets()
{
    const QList<float> coarse = {1.0F, 2.0F, 5.0F, 10.0F};
    m_presets = {
        {QStringLiteral("presetIr"), {0.1F, 0.2F, 0.5F, 1.0F}},
        {QStringLiteral("presetIf"), coarse},
        {QStringLiteral("ADJUST:setIxj"), coarse},
        {QStringLiteral("ADJUST:setIyj"), coarse},
    };
}

void Gui::startClock()
{
    ui->pultRegime->hide();
    connect(&m_timer, &QTimer::timeout, this, &Gui::onTimeChanged);
    m_timer.start(kTick);
    // Set once: a run that passes midnight belongs to the day on which it began, like its journal.
    ui->lblDate->setText(
        QLocale(QLocale::Russian).toString(QDate::currentDate(), QStringLiteral("dd.MM.yyyy, ddd")));
}

// The recorder is left to the end of the process: the console waits for no disk.
void Gui::startDump()
{
    m_dump = new DumpCreator(QStringLiteral("pass"), 20, m_dumpValues);
    m_dump->setDumpPath(site().root.isEmpty() ? QStringLiteral("dump") : site().programDir() + "/dump");
    m_dump->startDump();
}

void Gui::connectDrives()
{
    const Endpoint& drive = site().drive;
    if (!m_drives.connect(drive.host, drive.tcpPort, drive.udpPort)) {
        disconnectedDrives();
        return;
    }
    m_drivesConnected = true;
    onChangedCNCConnected(true);
}

void Gui::disconnectedDrives()
{
    m_drivesConnected = false;
    onChangedCNCConnected(false);
    QTimer::singleShot(kReconnect, this, &Gui::connectDrives);
}

void Gui::onTimeChanged()
{
    ui->lblTime->setText(QTime::currentTime().toString(QStringLiteral("hh:mm:ss")));
    shareWheels();
    m_elaShare.updateStatusEla();
    onChangedELAConnected(m_elaShare.status());
}

void Gui::onUserChanged(int state)
{
    ui->pbConstants->setVisible(usergroup::maySetUp(state));
}

void Gui::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    ui->lwLog->scrollToBottom(); // lines that came before the window had a size
}
