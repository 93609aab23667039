#include "kvscomm.h"

#include <QTextCodec>

#include <algorithm>
#include <cstring>

namespace {

constexpr int pumpBytes = 24;  // from a field of a pump to that of the next one
constexpr int valveBytes = 20; // of a valve, and of the door

namespace kvs {
using S = KVSStatus;
using wire::rows;

// Offset and signals, in the order in which a datagram raises them.
constexpr auto table = wire::join(
    rows<&S::changedNL1State, &S::changedNL1Power, &S::changedNL1Thermal>(4), rows<&S::changedNL1Error>(24),
    rows<&S::changedNL2State, &S::changedNL2Power, &S::changedNL2Thermal>(28), rows<&S::changedNL2Error>(48),
    rows<&S::changedNZ1State, &S::changedNZ1Power, &S::changedNZ1Thermal>(52), rows<&S::changedNZ1Error>(72),
    rows<&S::changedNZ2State, &S::changedNZ2Power, &S::changedNZ2Thermal>(76), rows<&S::changedNZ2Error>(96),
    rows<&S::changedND1State, &S::changedND1Power, &S::changedND1Thermal>(100),
    rows<&S::changedND1Error>(120),
    rows<&S::changedNW2State, &S::changedNW2Power, &S::changedNW2Thermal>(124),
    rows<&S::changedNW2Error>(144),
    rows<&S::changedVP1State, &S::changedVP1Opened, &S::changedVP1Closed>(148),
    rows<&S::changedVP2State, &S::changedVP2Opened, &S::changedVP2Closed>(168),
    rows<&S::changedVP3State, &S::changedVP3Opened, &S::changedVP3Closed>(188),
    rows<&S::changedVP5State, &S::changedVP5Opened, &S::changedVP5Closed>(208),
    rows<&S::changedVP6State, &S::changedVP6Opened, &S::changedVP6Closed>(228),
    rows<&S::changedVP7State, &S::changedVP7Opened, &S::changedVP7Closed>(248),
    rows<&S::changedNL1LockOn, &S::changedNL2LockOn, &S::changedNZ1LockOn, &S::changedNZ2LockOn,
         &S::changedND1LockOn, &S::changedNW2LockOn>(16, pumpBytes),
    rows<&S::changedNL1LockOff, &S::changedNL2LockOff, &S::changedNZ1LockOff, &S::changedNZ2LockOff,
         &S::changedND1LockOff, &S::changedNW2LockOff>(20, pumpBytes),
    rows<&S::changedVP1LockOn, &S::changedVP2LockOn, &S::changedVP3LockOn, &S::changedVP5LockOn,
         &S::changedVP6LockOn, &S::changedVP7LockOn>(160, valveBytes),
    rows<&S::changedVP1LockOff, &S::changedVP2LockOff, &S::changedVP3LockOff, &S::changedVP5LockOff,
         &S::changedVP6LockOff, &S::changedVP7LockOff>(164, valveBytes),
    rows<&S::changedPTState, &S::changedLEDState, &S::changedSpiralState, &S::changedAlgNumber,
         &S::changedAlgState, &S::changedAlgTime>(268),
    rows<&S::changedPT1Valid, &S::changedPT2Valid, &S::changedPT3Valid, &S::changedPowerPT,
         &S::changedPower380V, &S::changedPower110V, &S::changedPower24V, &S::changedPowerDischarge,
         &S::changedPowerFan, &S::changedEmStop, &S::changedRopeAlarm, &S::changedPowerSHUK,
         &S::changedPowerKVK, &S::changedDoorClosed>(292),
    rows<&S::changedPT1, &S::changedPT2, &S::changedPT3>(308),
    rows<&S::changedTempCorpND, &S::changedTempOilND>(332),
    rows<&S::changedTemp1, &S::changedTemp2, &S::changedTemp3, &S::changedTemp4, &S::changedTemp5,
         &S::changedTemp6, &S::changedTemp7, &S::changedTemp8>(340),
    rows<&S::changedDisch1, &S::changedDisch2, &S::changedDisch3, &S::changedDisch4, &S::changedDisch5,
         &S::changedDisch6, &S::changedDisch7, &S::changedDisch8>(372));
static_assert(wire::fits<S>(table, sizeof(VacuumTCPpacketHdr), KvsWire::packSize));
} // namespace kvs

namespace kvk {
using S = KVKStatus;
using wire::rows;

// AlgRun before AlgNumber and StateACC before StateNET, against the order of the bytes: who hears of a number
// finds its state told.
constexpr auto table = wire::join(
    rows<&S::changedVP4State, &S::changedVP4Opened, &S::changedVP4Closed>(4),
    rows<&S::changedVP8State, &S::changedVP8Opened, &S::changedVP8Closed>(24),
    rows<&S::changedDoorState, &S::changedDoorUnpressed, &S::changedDoorPressed>(44),
    rows<&S::changedVP4LockOn, &S::changedVP8LockOn, &S::changedDoorLockOn>(16, valveBytes),
    rows<&S::changedVP4LockOff, &S::changedVP8LockOff, &S::changedDoorLockOff>(20, valveBytes),
    rows<&S::changedPT4, &S::changedPT5>(64),
    rows<&S::changedPT4Valid, &S::changedPT5Valid, &S::changedPressureOK, &S::changedNP1Power,
         &S::changedNW1Power, &S::changedDrivesLock, &S::changedSpiralLock, &S::changedShutdownLock>(80),
    rows<&S::changedAlgRun>(96), rows<&S::changedAlgNumber, &S::changedAlgTime>(88),
    rows<&S::changedBKUValid, &S::changedStateVPT, &S::changedStateVE, &S::changedStateTMN>(104),
    rows<&S::changedStateACC>(124), rows<&S::changedStateNET>(120),
    rows<&S::changedStateMP, &S::changedStateLocks>(128), rows<&S::changedPT6, &S::changedTMNFreq>(136));
static_assert(wire::fits<S>(table, sizeof(VacuumTCPpacketHdr), KvkWire::packSize));
} // namespace kvk

} // namespace

const wire::Table<KVSStatus> KvsWire::table{kvs::table};
const LinkManners KvsWire::manners = [] {
    LinkManners own;
    own.host = "KVS";
    own.opening = "KVS connect";
    own.opened = "KVS tcp connect() done";
    own.sent = "KVSTCPthread: >";
    own.received = "VacuumTCPthread: <";
    own.started = "KVSTCPthread started";
    own.stopped = "KVSTCPthread stopped";
    own.splitHead = LinkManners::SplitHead::PassesForWhole;
    return own;
}();

const wire::Table<KVKStatus> KvkWire::table{kvk::table};
const LinkManners KvkWire::manners = [] {
    LinkManners own;
    own.sent = "KVKTCPthread: >";
    own.received = "KVKTCPthread: <";
    own.started = "KVKTCPthread started";
    own.stopped = "KVKTCPthread stopped";
    own.splitHead = LinkManners::SplitHead::PassesForWhole;
    return own;
}();

QString VacuumConst::description() const
{
    return QTextCodec::codecForName("Windows-1251")->toUnicode(text, int(qstrnlen(text, sizeof text)));
}

const void* VacuumLink::getVacConsts(int& count)
{
    const std::lock_guard<std::mutex> guard(m_receivedGuard);
    m_given = m_received;
    count = m_given.size();
    return m_given.constData();
}

bool VacuumLink::takeFrame(int socket, const VacuumTCPpacketHdr& head)
{
    if (head.signature != constsSignature())
        return TcpLink::takeFrame(socket, head);
    receiveConsts(socket, head.length);
    return true;
}

void VacuumLink::receiveConsts(int socket, int length)
{
    const QByteArray body = receiveBody(socket, length);
    const int came = body.size() / int(sizeof(VacuumConst));
    const int count = std::min(came, maxConsts);
    if (came > count)
        qDebug("%d constants came, the first %d are kept", came, count);
    Table table(count);
    std::memcpy(table.data(), body.constData(), static_cast<size_t>(count) * sizeof(VacuumConst));
    for (const VacuumConst& c : qAsConst(table))
        qDebug() << c.id << QString::number(double(c.value), 'g', 6) << qUtf8Printable(c.description());
    {
        // The window may still be reading an earlier table.
        const std::lock_guard<std::mutex> guard(m_receivedGuard);
        m_received = table;
    }
    tellConsts(count);
}

KVSTCPthread::KVSTCPthread(QObject* parent)
    : VacuumThread(parent)
{}

KVSTCPthread::~KVSTCPthread()
{
    end();
}

KVSUDPthread::KVSUDPthread(KVSTCPthread* owner, int port)
    : StatusReceiver(owner, port)
{
    begin();
}

KVSUDPthread::~KVSUDPthread()
{
    halt();
}

KVKTCPthread::KVKTCPthread(QObject* parent)
    : VacuumThread(parent)
{}

KVKTCPthread::~KVKTCPthread()
{
    end();
}

KVKUDPthread::KVKUDPthread(KVKTCPthread* owner, int port)
    : StatusReceiver(owner, port)
{
    begin();
}

KVKUDPthread::~KVKUDPthread()
{
    halt();
}
