#include "gui.h"

#include "axis.h"
#include "contour.h"
#include "kvs.h"
#include "statebutton.h"
#include "ui_gui.h"
#include "widgets.h"
#include "wordchange.h"

namespace {

// A drive of the machine: its names and the fields of telemetry that are its own. The second axis of a
// pair shares limits and switches with the first.
struct DriveRow
{
    const char* name;   // as in commands
    const char* widget; // tail of its row's object names
    const char* unit;
    int channel;  // NC channel whose programs move it
    int maxSpeed; // units a minute
    void (DriveStatus::*position)(float);
    void (DriveStatus::*state)(int);
    void (DriveStatus::*minSwitch)(bool);
    void (DriveStatus::*maxSwitch)(bool);
    void (DriveStatus::*minLimit)(float);
    void (DriveStatus::*maxLimit)(float);
};

using S = DriveStatus;

const DriveRow kDrives[] = {
    {"LX", "LX", "мм", 1, 3000, &S::changedLX1, &S::changedStateLX1, &S::changedLXmin, &S::changedLXmax,
     &S::changedMinLimLX, &S::changedMaxLimLX},
    {"LX2", "LX2", "мм", 1, 3000, &S::changedLX2, &S::changedStateLX2, &S::changedLXmin, &S::changedLXmax,
     &S::changedMinLimLX, &S::changedMaxLimLX},
    {"LY", "LY", "мм", 1, 3000, &S::changedLY, &S::changedStateLY, &S::changedLYmin, &S::changedLYmax,
     &S::changedMinLimLY, &S::changedMaxLimLY},
    {"A", "A", "град", 1, 360, &S::changedA, &S::changedStateA, &S::changedAmin, &S::changedAmax,
     &S::changedMinLimA, &S::changedMaxLimA},
    {"B", "B", "град", 1, 720, &S::changedB, &S::changedStateB, &S::changedBmin, &S::changedBmax,
     &S::changedMinLimB, &S::changedMaxLimB},
    {"C", "C", "град", 1, 900, &S::changedC, &S::changedStateC, &S::changedCmin, &S::changedCmax,
     &S::changedMinLimC, &S::changedMaxLimC},
    {"D", "D", "град", 1, 900, &S::changedD, &S::changedStateD, &S::changedDmin, &S::changedDmax,
     &S::changedMinLimD, &S::changedMaxLimD},
    {"U1", "U", "град", 2, 120, &S::changedU1, &S::changedStateU1, &S::changedUmin, &S::changedUmax,
     &S::changedMinLimU, &S::changedMaxLimU},
    {"U2", "U2", "град", 2, 120, &S::changedU2, &S::changedStateU2, &S::changedUmin, &S::changedUmax,
     &S::changedMinLimU, &S::changedMaxLimU},
    {"V", "V", "град", 2, 2160, &S::changedV, &S::changedStateV, &S::changedVmin, &S::changedVmax,
     &S::changedMinLimV, &S::changedMaxLimV},
};

void connectVirtualAxes(Gui* gui, DriveTCPthread* drives)
{
    const auto hear = [=](auto signal, auto slot) { QObject::connect(drives, signal, gui, slot); };
    hear(&S::changedX, &Gui::onChangedX);
    hear(&S::changedZ, &Gui::onChangedZ);
    hear(&S::changedPHI, &Gui::onChangedPHI);
    hear(&S::changedMaxLimX, &Gui::onChangedMaxLimitX);
    hear(&S::changedMaxLimZ, &Gui::onChangedMaxLimitZ);
    hear(&S::changedMaxLimPHI, &Gui::onChangedMaxLimitPHI);
    hear(&S::changedMinLimX, &Gui::onChangedMinLimitX);
    hear(&S::changedMinLimZ, &Gui::onChangedMinLimitZ);
    hear(&S::changedMinLimPHI, &Gui::onChangedMinLimitPHI);
    hear(&S::changedXmax, &Gui::onChangedEpX);
    hear(&S::changedZmax, &Gui::onChangedEpZ);
    hear(&S::changedPHImax, &Gui::onChangedEpPHI);
    hear(&S::changedXmin, &Gui::onChangedNpX);
    hear(&S::changedZmin, &Gui::onChangedNpZ);
    hear(&S::changedPHImin, &Gui::onChangedNpPHI);
    hear(&S::changedVirtualState, &Gui::onChangedStateVirtual);
}

void connectMachine(Gui* gui, DriveTCPthread* drives, const Ui::Gui& ui)
{
    const auto hear = [=](auto signal, auto slot) { QObject::connect(drives, signal, gui, slot); };
    const auto hearChanges = [=](auto signal, auto slot) { connectChanges(drives, signal, gui, slot); };
    QObject::connect(drives, &S::changedDrivesOn, ui.sbDrives, qOverload<bool>(&StateButton::setState));
    hear(&S::changedDrivesOn, &Gui::onChangedDrivesState);
    QObject::connect(drives, &S::changedDrivesOn, ui.contour, &CONTOUR::onDriveState);
    hear(&S::changedTransOn, &Gui::onChangedTransOn);
    QObject::connect(drives, &S::changedTransOn, ui.contour, &CONTOUR::onVirtualMode);
    hearChanges(&S::changedChannelState1, &Gui::onChangedChannelState1);
    hearChanges(&S::changedChannelState2, &Gui::onChangedChannelState2);
    hearChanges(&S::changedChannelState3, &Gui::onChangedChannelState3);
    QObject::connect(drives, &S::changedChannelState1, ui.contour, &CONTOUR::onChannel1State);
    QObject::connect(drives, &S::changedChannelState2, ui.contour, &CONTOUR::onChannel2State);
    QObject::connect(drives, &S::changedChannelState3, ui.contour, &CONTOUR::onChannel3State);
    hear(&S::changedChannelMode1, &Gui::onChangedChannelMode1);
    hear(&S::changedChannelMode2, &Gui::onChangedChannelMode2);
    hear(&S::changedChannelMode3, &Gui::onChangedChannelMode3);
    QObject::connect(drives, &S::changedAxisMoving, ui.contour, &CONTOUR::onAxisMoving);
    hearChanges(&S::changedPortPultRegime, &Gui::onChangedPultRegime);
    QObject::connect(drives, &S::changedDoorState, ui.kvs, &KVS::onDoorStateChanged);
    hear(&S::changedKeyAccess, &Gui::onAccessChanged);
    hear(&S::changedDrivesLock, &Gui::changedDrivesLock);
    QObject::connect(drives, &S::changedPointNo, ui.contour, &CONTOUR::onChangedPointNo);
}

void connectWords(Gui* gui, DriveTCPthread* drives)
{
    const auto hear = [=](auto signal, auto slot) { QObject::connect(drives, signal, gui, slot); };
    const auto hearChanges = [=](auto signal, auto slot) { connectChanges(drives, signal, gui, slot); };
    // Four places in the datagram share this signal, and it does not say which: what they hold is told anew
    // with each connection rather than an event be lost.
    hear(&S::changedMessage, &Gui::onNewCNCMessage);
    hearChanges(&S::changedCNCError, &Gui::onNewCNCError);
    hearChanges(&S::changedDoorState, &Gui::onDoorStateChanged);
    hearChanges(&S::changedTrModuleState, &Gui::onTrModuleStateChanged);
    hear(&S::changedDrivePowerState, &Gui::onDrivePowerStateChanged);
    hear(&S::changedLightState, &Gui::onLightStateChanged);
    hearChanges(&S::changedAlarmState, &Gui::onAlarmStateChanged);
    hearChanges(&S::changedSpiralPower, &Gui::onSpiralPowerOff);
    hearChanges(&S::changedDrivesPower, &Gui::onDrivesPowerOff);
    hearChanges(&S::changedPhaseAlarm, &Gui::onPhaseAlarm);
}

} // namespace

void Gui::initDrives()
{
    int number = 0;
    for (const DriveRow& row : kDrives) {
        const QString name = QLatin1String(row.name);
        const QString tail = QLatin1String(row.widget);
        auto* coordLabel = findChild<PoLabel*>(QStringLiteral("coord") + tail);

        auto* axis = new Axis(name, QString::fromUtf8(row.unit), number++, row.channel, row.maxSpeed,
                              &m_drives, findChild<PoSprite*>(QStringLiteral("ind") + tail), coordLabel,
                              findChild<PoLabel*>(QStringLiteral("speed") + tail),
                              findChild<QPushButton*>(QStringLiteral("pbPlus") + tail),
                              findChild<QPushButton*>(QStringLiteral("pbMinus") + tail),
                              findChild<QPushButton*>(QStringLiteral("pbInfo") + tail),
                              name == QLatin1String("V") && ui->pbEndlessV->isChecked(), false);
        m_axis.insert(name, axis);
        // The second axis of a pair has no coordinate of its own in programs and points.
        if (!name.endsWith(QLatin1Char('2')))
            m_coord.insert(name, coordLabel);

        connect(&m_drives, row.position, axis, &Axis::onCoordChanged);
        connect(&m_drives, row.state, axis, &Axis::onStateChanged);
        connect(&m_drives, row.minSwitch, axis, &Axis::onEpMinusChanged);
        connect(&m_drives, row.maxSwitch, axis, &Axis::onEpPlusChanged);
        connect(&m_drives, row.minLimit, axis, &Axis::onEpMinusValueChanged);
        connect(&m_drives, row.maxLimit, axis, &Axis::onEpPlusValueChanged);
        connect(&m_drives, &DriveTCPthread::changedDrivesOn, axis, &Axis::onDrivesPowerChanged);
        connect(axis, &Axis::parked, findChild<QFrame*>(QStringLiteral("frm") + tail), &QFrame::setDisabled);
        connect(axis, &Axis::axisMessage, this, &Gui::prgMessage);
        connect(axis, &Axis::coordChanged, ui->contour, &CONTOUR::onCoordsChanged);
    }

    Axis* lx = axis(QStringLiteral("LX"));
    connect(lx, &Axis::secondAxis, this, &Gui::showSecondLXAxis);
    connect(this, &Gui::signalSecondXPanelShow, lx, &Axis::onSecondAxisShow);
    Axis* u = axis(QStringLiteral("U1"));
    connect(u, &Axis::secondAxis, this, &Gui::showSecondUAxis);
    connect(this, &Gui::signalSecondUPanelShow, u, &Axis::onSecondAxisShow);

    connectVirtualAxes(this, &m_drives);
    connectMachine(this, &m_drives, *ui);
    connectWords(this, &m_drives);
    connect(&m_drives, &DriveTCPthread::changedPultOn, m_pult, &RemotePanel::tell);
    onChangedTransOn(false);
    m_drives.setDumpValues(m_dumpValues);
}

void Gui::initVirtualAxes()
{
    const auto add = [this](const char* word, const char* unit, int maxSpeed) { // units a minute
        const QString name = QLatin1String(word);
        const VirtualAxis::Row row{findChild<PoLabel*>(QStringLiteral("coord") + name),
                                   findChild<PoLabel*>(QStringLiteral("speed") + name),
                                   findChild<PoSprite*>(QStringLiteral("ind") + name),
                                   findChild<QPushButton*>(QStringLiteral("pbPlus") + name),
                                   findChild<QPushButton*>(QStringLiteral("pbMinus") + name),
                                   findChild<QPushButton*>(QStringLiteral("pbInfo") + name)};
        auto* axis = new VirtualAxis(name, QString::fromUtf8(unit), maxSpeed, row, &m_drives, this);
        m_coord.insert(name, row.coord);
        connect(axis, &VirtualAxis::message, this, &Gui::prgMessage);
        connect(axis, &VirtualAxis::coordChanged, ui->contour, &CONTOUR::onCoordsChanged);
        return axis;
    };
    m_x = add("X", "мм", 3000);
    m_z = add("Z", "мм", 3000);
    m_phi = add("PHI", "град", 900);
}
