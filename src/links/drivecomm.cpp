#include "drivecomm.h"

namespace {

constexpr int fieldBytes = 294;
constexpr int positionsAt = 28; // of the drives, LX1 first
constexpr int dumpedPositions = 10;

using S = DriveStatus;
using wire::rows;

// Offset and signals, in the order in which a datagram raises them. Consumers rely on that order.
constexpr auto driveTable = wire::join(
    rows<&S::changedChannelState1, &S::changedChannelState2, &S::changedChannelState3,
         &S::changedChannelMode1, &S::changedChannelMode2, &S::changedChannelMode3>(4),
    rows<&S::changedLX1, &S::changedLX2, &S::changedLY, &S::changedA, &S::changedB, &S::changedC,
         &S::changedD, &S::changedU1, &S::changedU2, &S::changedV, &S::changedX, &S::changedZ,
         &S::changedPHI>(positionsAt),
    rows<&S::changedMinLimLX, &S::changedMinLimLY, &S::changedMinLimA, &S::changedMinLimB, &S::changedMinLimC,
         &S::changedMinLimD, &S::changedMinLimU, &S::changedMinLimV, &S::changedMinLimX, &S::changedMinLimZ,
         &S::changedMinLimPHI>(124),
    rows<&S::changedMaxLimLX, &S::changedMaxLimLY, &S::changedMaxLimA, &S::changedMaxLimB, &S::changedMaxLimC,
         &S::changedMaxLimD, &S::changedMaxLimU, &S::changedMaxLimV, &S::changedMaxLimX, &S::changedMaxLimZ,
         &S::changedMaxLimPHI>(168),
    rows<&S::changedStateLX1, &S::changedStateLX2, &S::changedStateLY, &S::changedStateA, &S::changedStateB,
         &S::changedStateC, &S::changedStateD, &S::changedStateU1, &S::changedStateU2, &S::changedStateV,
         &S::changedVirtualState>(80),
    rows<&S::changedLXmin, &S::changedLYmin, &S::changedAmin, &S::changedBmin, &S::changedCmin,
         &S::changedDmin, &S::changedUmin, &S::changedVmin, &S::changedXmin, &S::changedZmin,
         &S::changedPHImin>(260),
    rows<&S::changedLXmax, &S::changedLYmax, &S::changedAmax, &S::changedBmax, &S::changedCmax,
         &S::changedDmax, &S::changedUmax, &S::changedVmax, &S::changedXmax, &S::changedZmax,
         &S::changedPHImax>(271),
    rows<&S::changedDoorState, &S::changedTrModuleState, &S::changedDrivePowerState, &S::changedLightState>(
        236),
    rows<&S::changedPointNo>(228), rows<&S::changedPortPultRegime, &S::changedAlarmState>(252),
    rows<&S::changedDrivesOn, &S::changedTransOn>(282), rows<&S::changedPultOn>(285),
    rows<&S::changedAxisMoving>(284),
    rows<&S::changedKeyAccess, &S::changedDrivesLock, &S::changedSpiralLock>(286),
    rows<&S::changedSpiralPower, &S::changedDrivesPower, &S::changedPhaseAlarm>(291),
    rows<&S::changedMessage, &S::changedMessage, &S::changedMessage, &S::changedMessage>(212),
    rows<&S::changedCNCError>(232));
static_assert(wire::fits<S>(driveTable, sizeof(comm::FrameHead), fieldBytes));
static_assert(driveTable[0].offset == 4 && driveTable.size() == 96);

} // namespace

const wire::Table<DriveStatus> DriveWire::table{driveTable};
const LinkManners DriveWire::manners = [] {
    LinkManners drive;
    drive.host = "DRIVE";
    drive.sent = "DriveTCPthread: >";
    drive.received = "DriveTCPthread: <";
    drive.started = "DriveTCPthread started";
    drive.stopped = "Drive TCP thread stopped";
    drive.ended[0] = drive.stopped;
    drive.ended[1] = "DriveTCPthread finished";
    return drive;
}();

DriveTCPthread::DriveTCPthread(QObject* parent)
    : StatusLink(parent)
{}

DriveTCPthread::~DriveTCPthread()
{
    end();
}

DriveUDPthread::DriveUDPthread(DriveTCPthread* owner, int port)
    : StatusReceiver(owner, port)
{
    m_owner->m_channelState = 0;
    begin();
}

DriveUDPthread::~DriveUDPthread()
{
    halt();
}

unsigned int DriveUDPthread::channelState() const
{
    return m_owner->channelState();
}

void DriveUDPthread::take(const Pack& pack)
{
    storePositions(pack);
    // Channel 1 is the first to be raised: who hears of it finds the new state here.
    m_owner->m_channelState = wire::load<unsigned int>(pack.data() + driveTable[0].offset);
    StatusReceiver::take(pack);
}

void DriveUDPthread::storePositions(const Pack& pack)
{
    float* const values = m_owner->m_dumpValues;
    if (!values)
        return;
    for (int i = 0; i < dumpedPositions; ++i) {
        float position = wire::load<float>(pack.data() + positionsAt + i * int(sizeof(float)));
        __atomic_store(values + i, &position, __ATOMIC_RELAXED);
    }
}
