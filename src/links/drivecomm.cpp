#include "drivecomm.h"

#include "comm.h"

namespace {

constexpr quint16 signature = 0x5650;
constexpr int fieldBytes = 294;
constexpr int positionsAt = 28; // of the drives, LX1 first
constexpr int dumpedPositions = 10;

using Status = DriveStatus;
using wire::row;

// Offset and signal, in the order in which a datagram raises them. Consumers rely on that order.
constexpr WireRow<DriveStatus> driveTable[] = {
    row<&Status::changedChannelState1>(4),
    row<&Status::changedChannelState2>(8),
    row<&Status::changedChannelState3>(12),
    row<&Status::changedChannelMode1>(16),
    row<&Status::changedChannelMode2>(20),
    row<&Status::changedChannelMode3>(24),
    row<&Status::changedLX1>(28),
    row<&Status::changedLX2>(32),
    row<&Status::changedLY>(36),
    row<&Status::changedA>(40),
    row<&Status::changedB>(44),
    row<&Status::changedC>(48),
    row<&Status::changedD>(52),
    row<&Status::changedU1>(56),
    row<&Status::changedU2>(60),
    row<&Status::changedV>(64),
    row<&Status::changedX>(68),
    row<&Status::changedZ>(72),
    row<&Status::changedPHI>(76),
    row<&Status::changedMinLimLX>(124),
    row<&Status::changedMinLimLY>(128),
    row<&Status::changedMinLimA>(132),
    row<&Status::changedMinLimB>(136),
    row<&Status::changedMinLimC>(140),
    row<&Status::changedMinLimD>(144),
    row<&Status::changedMinLimU>(148),
    row<&Status::changedMinLimV>(152),
    row<&Status::changedMinLimX>(156),
    row<&Status::changedMinLimZ>(160),
    row<&Status::changedMinLimPHI>(164),
    row<&Status::changedMaxLimLX>(168),
    row<&Status::changedMaxLimLY>(172),
    row<&Status::changedMaxLimA>(176),
    row<&Status::changedMaxLimB>(180),
    row<&Status::changedMaxLimC>(184),
    row<&Status::changedMaxLimD>(188),
    row<&Status::changedMaxLimU>(192),
    row<&Status::changedMaxLimV>(196),
    row<&Status::changedMaxLimX>(200),
    row<&Status::changedMaxLimZ>(204),
    row<&Status::changedMaxLimPHI>(208),
    row<&Status::changedStateLX1>(80),
    row<&Status::changedStateLX2>(84),
    row<&Status::changedStateLY>(88),
    row<&Status::changedStateA>(92),
    row<&Status::changedStateB>(96),
    row<&Status::changedStateC>(100),
    row<&Status::changedStateD>(104),
    row<&Status::changedStateU1>(108),
    row<&Status::changedStateU2>(112),
    row<&Status::changedStateV>(116),
    row<&Status::changedVirtualState>(120),
    row<&Status::changedLXmin>(260),
    row<&Status::changedLYmin>(261),
    row<&Status::changedAmin>(262),
    row<&Status::changedBmin>(263),
    row<&Status::changedCmin>(264),
    row<&Status::changedDmin>(265),
    row<&Status::changedUmin>(266),
    row<&Status::changedVmin>(267),
    row<&Status::changedXmin>(268),
    row<&Status::changedZmin>(269),
    row<&Status::changedPHImin>(270),
    row<&Status::changedLXmax>(271),
    row<&Status::changedLYmax>(272),
    row<&Status::changedAmax>(273),
    row<&Status::changedBmax>(274),
    row<&Status::changedCmax>(275),
    row<&Status::changedDmax>(276),
    row<&Status::changedUmax>(277),
    row<&Status::changedVmax>(278),
    row<&Status::changedXmax>(279),
    row<&Status::changedZmax>(280),
    row<&Status::changedPHImax>(281),
    row<&Status::changedDoorState>(236),
    row<&Status::changedTrModuleState>(240),
    row<&Status::changedDrivePowerState>(244),
    row<&Status::changedLightState>(248),
    row<&Status::changedPointNo>(228),
    row<&Status::changedPortPultRegime>(252),
    row<&Status::changedAlarmState>(256),
    row<&Status::changedDrivesOn>(282),
    row<&Status::changedTransOn>(283),
    row<&Status::changedPultOn>(285),
    row<&Status::changedAxisMoving>(284),
    row<&Status::changedKeyAccess>(286),
    row<&Status::changedDrivesLock>(287),
    row<&Status::changedSpiralLock>(288),
    row<&Status::changedSpiralPower>(291),
    row<&Status::changedDrivesPower>(292),
    row<&Status::changedPhaseAlarm>(293),
    row<&Status::changedMessage>(212),
    row<&Status::changedMessage>(216),
    row<&Status::changedMessage>(220),
    row<&Status::changedMessage>(224),
    row<&Status::changedCNCError>(232),
};

static_assert(wire::fits(driveTable, sizeof signature, fieldBytes));

constexpr LinkTexts driveTexts{"DRIVE",
                               nullptr,
                               nullptr,
                               "DriveTCPthread: >",
                               "DriveTCPthread started",
                               "Drive TCP thread stopped",
                               {"Drive TCP thread stopped", "DriveTCPthread finished"}};

} // namespace

DriveTCPthread::DriveTCPthread(QObject* parent)
    : DriveStatus(parent)
    , TcpLink(*this, driveTexts)
{}

DriveTCPthread::~DriveTCPthread()
{
    end();
}

unsigned int DriveTCPthread::channelState() const
{
    return m_channelState;
}

std::unique_ptr<QThread> DriveTCPthread::listen(int udpPort)
{
    return std::make_unique<DriveUDPthread>(this, udpPort);
}

TcpLink::Turn DriveTCPthread::receiveFrame(int socket)
{
    comm::FrameHead head;
    const int got = comm::receiveHead(socket, head);
    if (got <= 0)
        return Turn::End;
    // Behind a bad frame nothing can be found again, so it ends the connection; so does half a head.
    if (got < int(sizeof head) || head.signature != textSignature) {
        qDebug("Bad packet signature");
        return Turn::End;
    }
    emit message(timeStamp() + receiveText(socket, head.length, "DriveTCPthread: <"));
    return Turn::Go;
}

DriveUDPthread::DriveUDPthread(DriveTCPthread* owner, int port)
    : m_port(port)
    , m_controller(owner->controller())
    , m_owner(owner)
{
    m_owner->m_channelState = 0;
    wire::forward(driveTable, static_cast<const DriveStatus&>(*this),
                  static_cast<const DriveStatus&>(*m_owner));
    // Direct, so that a loss is acted on even while the window's thread is busy.
    connect(this, &DriveUDPthread::UDPdisconnected, m_owner, &DriveTCPthread::UDPdisconnected,
            Qt::DirectConnection);
    start();
}

DriveUDPthread::~DriveUDPthread()
{
    wire::detach(driveTable, static_cast<const DriveStatus&>(*this),
                 static_cast<const DriveStatus&>(*m_owner));
    m_stop = true;
    wait();
}

unsigned int DriveUDPthread::channelState() const
{
    return m_owner->channelState();
}

void DriveUDPthread::run()
{
    comm::receiveTelemetry<packSize>(
        m_port, m_controller, signature, m_stop, [this](const Pack& pack) { take(pack); },
        [this] { emit UDPdisconnected(); });
}

void DriveUDPthread::take(const Pack& pack)
{
    storePositions(pack);
    // Channel 1 is the first to be raised: who hears of it finds the new state here.
    m_owner->m_channelState = wire::load<unsigned int>(pack.data() + driveTable[0].offset);
    m_last.take(driveTable, static_cast<DriveStatus&>(*this), pack);
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
