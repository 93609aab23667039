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

} // namespace

void Gui::initDrives()
{
    connectAxes();
    connectVirtualAxes();
    connectMachine();
    onChangedTransOn(false);
    m_drives.setDumpValues(m_dumpValues);
}

void Gui::connectAxes()
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
}

void Gui::initVirtualAxes()
{
    const struct
    {
        const char* name;
        const char* unit;
        int maxSpeed; // units a minute
    } rows[] = {{"X", "мм", 3000}, {"Z", "мм", 3000}, {"PHI", "град", 900}};
    for (const VirtualIndex index : {X, Z, Phi}) {
        const QString name = QLatin1String(rows[index].name);
        const VirtualAxis::Row row{findChild<PoLabel*>(QStringLiteral("coord") + name),
                                   findChild<PoLabel*>(QStringLiteral("speed") + name),
                                   findChild<PoSprite*>(QStringLiteral("ind") + name),
                                   findChild<QPushButton*>(QStringLiteral("pbPlus") + name),
                                   findChild<QPushButton*>(QStringLiteral("pbMinus") + name),
                                   findChild<QPushButton*>(QStringLiteral("pbInfo") + name)};
        m_virtual[index] = new VirtualAxis(name, QString::fromUtf8(rows[index].unit), rows[index].maxSpeed,
                                           row, &m_drives, this);
        m_coord.insert(name, row.coord);
        connect(m_virtual[index], &VirtualAxis::message, this, &Gui::prgMessage);
        connect(m_virtual[index], &VirtualAxis::coordChanged, ui->contour, &CONTOUR::onCoordsChanged);
    }
}

void Gui::connectVirtualAxes()
{
    connect(&m_drives, &DriveTCPthread::changedX, this, &Gui::onChangedX);
    connect(&m_drives, &DriveTCPthread::changedZ, this, &Gui::onChangedZ);
    connect(&m_drives, &DriveTCPthread::changedPHI, this, &Gui::onChangedPHI);
    connect(&m_drives, &DriveTCPthread::changedMaxLimX, this, &Gui::onChangedMaxLimitX);
    connect(&m_drives, &DriveTCPthread::changedMaxLimZ, this, &Gui::onChangedMaxLimitZ);
    connect(&m_drives, &DriveTCPthread::changedMaxLimPHI, this, &Gui::onChangedMaxLimitPHI);
    connect(&m_drives, &DriveTCPthread::changedMinLimX, this, &Gui::onChangedMinLimitX);
    connect(&m_drives, &DriveTCPthread::changedMinLimZ, this, &Gui::onChangedMinLimitZ);
    connect(&m_drives, &DriveTCPthread::changedMinLimPHI, this, &Gui::onChangedMinLimitPHI);
    connect(&m_drives, &DriveTCPthread::changedXmax, this, &Gui::onChangedEpX);
    connect(&m_drives, &DriveTCPthread::changedZmax, this, &Gui::onChangedEpZ);
    connect(&m_drives, &DriveTCPthread::changedPHImax, this, &Gui::onChangedEpPHI);
    connect(&m_drives, &DriveTCPthread::changedXmin, this, &Gui::onChangedNpX);
    connect(&m_drives, &DriveTCPthread::changedZmin, this, &Gui::onChangedNpZ);
    connect(&m_drives, &DriveTCPthread::changedPHImin, this, &Gui::onChangedNpPHI);
    connect(&m_drives, &DriveTCPthread::changedVirtualState, this, &Gui::onChangedStateVirtual);
    connectVirtualJog();
}

void Gui::connectMachine()
{
    connect(&m_drives, &DriveTCPthread::changedDrivesOn, ui->sbDrives,
            qOverload<bool>(&StateButton::setState));
    connect(&m_drives, &DriveTCPthread::changedDrivesOn, this, &Gui::onChangedDrivesState);
    connect(&m_drives, &DriveTCPthread::changedDrivesOn, ui->contour, &CONTOUR::onDriveState);
    connect(&m_drives, &DriveTCPthread::changedTransOn, this, &Gui::onChangedTransOn);
    connect(&m_drives, &DriveTCPthread::changedTransOn, ui->contour, &CONTOUR::onVirtualMode);
    connect(&m_drives, &DriveTCPthread::changedPultOn, m_pult, &RemotePanel::tell);
    connectChanges(&m_drives, &DriveTCPthread::changedChannelState1, this, &Gui::onChangedChannelState1);
    connectChanges(&m_drives, &DriveTCPthread::changedChannelState2, this, &Gui::onChangedChannelState2);
    connectChanges(&m_drives, &DriveTCPthread::changedChannelState3, this, &Gui::onChangedChannelState3);
    connect(&m_drives, &DriveTCPthread::changedChannelState1, ui->contour, &CONTOUR::onChannel1State);
    connect(&m_drives, &DriveTCPthread::changedChannelState2, ui->contour, &CONTOUR::onChannel2State);
    connect(&m_drives, &DriveTCPthread::changedChannelState3, ui->contour, &CONTOUR::onChannel3State);
    connect(&m_drives, &DriveTCPthread::changedChannelMode1, this, &Gui::onChangedChannelMode1);
    connect(&m_drives, &DriveTCPthread::changedChannelMode2, this, &Gui::onChangedChannelMode2);
    connect(&m_drives, &DriveTCPthread::changedChannelMode3, this, &Gui::onChangedChannelMode3);
    connect(&m_drives, &DriveTCPthread::changedAxisMoving, ui->contour, &CONTOUR::onAxisMoving);
    connectChanges(&m_drives, &DriveTCPthread::changedPortPultRegime, this, &Gui::onChangedPultRegime);
    connect(&m_drives, &DriveTCPthread::changedDoorState, ui->kvs, &KVS::onDoorStateChanged);
    connect(&m_drives, &DriveTCPthread::changedKeyAccess, this, &Gui::onAccessChanged);
    connect(&m_drives, &DriveTCPthread::changedDrivesLock, this, &Gui::changedDrivesLock);
    connect(&m_drives, &DriveTCPthread::changedPointNo, ui->contour, &CONTOUR::onChangedPointNo);
    connectMessages();
}
