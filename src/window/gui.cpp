#include "gui.h"

#include "autorization_manager.h"
#include "axis.h"
#include "contour.h"
#include "dumpcreator.h"
#include "joghold.h"
#include "journal.h"
#include "kvs.h"
#include "requiredpause.h"
#include "site.h"
#include "statebutton.h"
#include "ui_gui.h"
#include "usergroup.h"
#include "widgets.h"

#include <QDateTime>
#include <QLocale>
#include <QTimer>

namespace {

constexpr int kTick = 1000;      // ms
constexpr int kReconnect = 1000; // ms between two attempts to reach the motion controller

// The recorder of `values` is left to the end of the process: the console waits for no disk.
DumpCreator* startRecorder(float* values)
{
    auto* recorder = new DumpCreator(QStringLiteral("pass"), 20, values);
    recorder->setDumpPath(site().root.isEmpty() ? QStringLiteral("dump") : site().programDir() + "/dump");
    recorder->startDump();
    return recorder;
}

// What the contour tab and the vacuum panel tell, and what they are told.
void connectPanels(Gui* gui, CONTOUR* contour, KVS* kvs)
{
    QObject::connect(gui, &Gui::signalSystemStarted, kvs, &KVS::onSystemStarted);
    QObject::connect(kvs, &KVS::onKVSConnected, gui, &Gui::onChangedKVSConnected);
    QObject::connect(kvs, &KVS::onKVKConnected, gui, &Gui::onChangedKVKConnected);
    QObject::connect(kvs, &KVS::message, gui, &Gui::prgMessage);
    QObject::connect(contour, &CONTOUR::message, gui, &Gui::prgMessage);
    QObject::connect(kvs, &KVS::turnSystemOff, gui, &Gui::onTurnSystemOff);
    QObject::connect(kvs, &KVS::onChangedPressUnit, gui, &Gui::onChangedPressUnit);
    QObject::connect(kvs, &KVS::signalChangedSpiralLock, gui, &Gui::onChangedSpiralLock);
    QObject::connect(kvs, &KVS::signalChangedShutdownLock, gui, &Gui::onChangedShutdownLock);
    QObject::connect(kvs, &KVS::signalChangedMode, gui, &Gui::changedMode);
    QObject::connect(kvs, &KVS::signalChangedModeTime, gui, &Gui::changedModeTime);
    QObject::connect(kvs, &KVS::signalChangedModeState, gui, &Gui::changedModeState);
    QObject::connect(kvs, &KVS::changedChamberPressure, gui, &Gui::onChangedChamberPressure);
    QObject::connect(kvs, &KVS::changedChamberPressureValid, gui, &Gui::onChangedChamberValid);
    QObject::connect(kvs, &KVS::changedGunPressure, gui, &Gui::onChangedGunPressure);
    QObject::connect(kvs, &KVS::changedGunPressureValid, gui, &Gui::onChangedGunValid);
    QObject::connect(gui, &Gui::signalUserChange, kvs, &KVS::onUserChanged);
    QObject::connect(gui, &Gui::signalUserChange, contour, &CONTOUR::onUserChanged);
    QObject::connect(gui, &Gui::signalUserChange, gui, &Gui::onUserChanged);
}

// Words of full height in little room: rather narrower than cut off.
void narrowLetters(std::initializer_list<QWidget*> widgets)
{
    for (QWidget* widget : widgets) {
        QFont font = widget->font();
        font.setStretch(85);
        widget->setFont(font);
    }
}

} // namespace

// The order of construction is part of the design: state buttons need the locks, the axes need the
// buttons, the settings need the axes' labels, and the links begin to speak while the window is built.
Gui::Gui()
    : ui(std::make_unique<Ui::Gui>())
{
    ui->setupUi(this); // `contour` and, last of all, `kvs`
    narrowLetters({ui->pbUsers, ui->pbChangeUser, ui->pbInformation, ui->pbEndlessV, ui->lblVacuumChamber,
                   ui->lblVacuumGun});
    setWindowState(Qt::WindowFullScreen | Qt::WindowActive);
    addAction(ui->actExit); // its shortcut works although no menu shows it

    m_journal = std::make_unique<Journal>(ui->lwLog);
    m_manager =
        new Autorization::Manager({this, ui->lblUserName, ui->lblUserRight, ui->pbChangeUser, ui->pbUsers});
    connect(m_manager, &Autorization::Manager::message, this, &Gui::prgMessage);
    initVirtualAxes();
    m_interlocks = std::make_unique<Interlocks>(
        Interlocks::Buttons{ui->sbDrives, ui->sbTrans, ui->sbShutdown, ui->sbLightSpiral, ui->sbDistPult});
    RequiredPause::actsAlways(ui->pbStop);
    initWheels();
    initDrives();
    loadIni();

    connect(&m_drives, &DriveTCPthread::disconnected, this, &Gui::disconnectedDrives);
    connectDrives();
    connectPanels(this, ui->contour, ui->kvs);
    connect(&m_lir, &Lir940p::valueChanged, this, &Gui::onLirChanged);
    initMessages();
    auto* clock = new QTimer(this);
    connect(clock, &QTimer::timeout, this, &Gui::onTimeChanged);
    clock->start(kTick);
    // Set once: a run that passes midnight belongs to the day on which it began, like its journal.
    ui->lblDate->setText(
        QLocale(QLocale::Russian).toString(QDate::currentDate(), QStringLiteral("dd.MM.yyyy, ddd")));
    m_journal->open();
    m_dump = startRecorder(m_dumpValues);
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
    m_interlocks.reset();
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
    const int group = m_manager->showAutorization();
    emit signalUserChange(group);
    m_userName = ui->lblUserRight->text() + QLatin1Char(' ') + ui->lblUserName->text();
    prgMessage(QStringLiteral("[I]Регистрация пользователя - ") + m_userName, true);
    return group >= 0;
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

float Gui::pressure() const
{
    return ui->VacuumChamber->value();
}

void Gui::initWheels()
{
    const std::array<Handwheels::Labels, 3> labels{
        {{ui->lblLir1, ui->lblLir1Use}, {ui->lblLir2, ui->lblLir2Use}, {ui->lblLir3, ui->lblLir3Use}}};
    const auto maxSpeed = [this](const QString& name) {
        const Axis* axis = m_axis.value(name);
        return axis ? axis->maxSpeed() : 0;
    };
    m_wheels = new Handwheels(labels, maxSpeed, this);
    connect(m_wheels, &Handwheels::message, this, &Gui::prgMessage);
    connect(m_wheels, &Handwheels::command, this, &Gui::send);
    m_pult = new RemotePanel({ui->sbDistPult, ui->pultRegime, ui->frmDrives, ui->frmLir3}, m_wheels, this);
    connect(m_pult, &RemotePanel::message, this, &Gui::prgMessage);
    connect(m_pult, &RemotePanel::command, this, &Gui::send);
}

void Gui::onLirChanged(int channel, int delta)
{
    if (!isEnabled())
        return; // the key switch blocks the console
    switch (channel) {
    case 0:
        m_wheels->turn(Handwheels::Left, delta);
        break;
    case 1:
        m_wheels->turn(Handwheels::Right, delta);
        break;
    case 2:
        if (m_pult->isOn())
            lirChangedPult(delta);
        break;
    case 3: // the card has no fourth channel today
        m_wheels->turn(Handwheels::Remote, delta);
        break;
    default:
        break;
    }
}

void Gui::connectDrives()
{
    const Endpoint& drive = site().drive;
    if (m_drives.connect(drive.host, drive.tcpPort, drive.udpPort))
        onChangedCNCConnected(true);
    else
        disconnectedDrives();
}

void Gui::disconnectedDrives()
{
    onChangedCNCConnected(false);
    QTimer::singleShot(kReconnect, this, &Gui::connectDrives);
}

void Gui::onTimeChanged()
{
    ui->lblTime->setText(QTime::currentTime().toString(QStringLiteral("hh:mm:ss")));
    m_pultShare.setFuncLeftEncoder(m_wheels->isElas(Handwheels::Left));
    m_pultShare.setFuncRightEncoder(m_wheels->isElas(Handwheels::Right));
    m_pultShare.setFuncDistEncoder(m_wheels->isElas(Handwheels::Remote));
    m_pultShare.setBlockGui(!isEnabled());
    m_elaShare.updateStatusEla();
    onChangedELAConnected(m_elaShare.status());
}

void Gui::onUserChanged(int state)
{
    ui->pbConstants->setVisible(usergroup::maySetUp(state));
}
