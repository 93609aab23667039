#include "kvscomm.h"

#include <QTextCodec>

#include <algorithm>
#include <cstring>

namespace {

constexpr quint16 signature = 0x5650; // of status datagrams

using wire::row;

// Offset and signal, in the order in which a datagram raises them.
constexpr WireRow<KVSStatus> kvsTable[] = {
    row<&KVSStatus::changedNL1State>(4),      row<&KVSStatus::changedNL1Power>(8),
    row<&KVSStatus::changedNL1Thermal>(12),   row<&KVSStatus::changedNL1Error>(24),
    row<&KVSStatus::changedNL2State>(28),     row<&KVSStatus::changedNL2Power>(32),
    row<&KVSStatus::changedNL2Thermal>(36),   row<&KVSStatus::changedNL2Error>(48),
    row<&KVSStatus::changedNZ1State>(52),     row<&KVSStatus::changedNZ1Power>(56),
    row<&KVSStatus::changedNZ1Thermal>(60),   row<&KVSStatus::changedNZ1Error>(72),
    row<&KVSStatus::changedNZ2State>(76),     row<&KVSStatus::changedNZ2Power>(80),
    row<&KVSStatus::changedNZ2Thermal>(84),   row<&KVSStatus::changedNZ2Error>(96),
    row<&KVSStatus::changedND1State>(100),    row<&KVSStatus::changedND1Power>(104),
    row<&KVSStatus::changedND1Thermal>(108),  row<&KVSStatus::changedND1Error>(120),
    row<&KVSStatus::changedNW2State>(124),    row<&KVSStatus::changedNW2Power>(128),
    row<&KVSStatus::changedNW2Thermal>(132),  row<&KVSStatus::changedNW2Error>(144),
    row<&KVSStatus::changedVP1State>(148),    row<&KVSStatus::changedVP1Opened>(152),
    row<&KVSStatus::changedVP1Closed>(156),   row<&KVSStatus::changedVP2State>(168),
    row<&KVSStatus::changedVP2Opened>(172),   row<&KVSStatus::changedVP2Closed>(176),
    row<&KVSStatus::changedVP3State>(188),    row<&KVSStatus::changedVP3Opened>(192),
    row<&KVSStatus::changedVP3Closed>(196),   row<&KVSStatus::changedVP5State>(208),
    row<&KVSStatus::changedVP5Opened>(212),   row<&KVSStatus::changedVP5Closed>(216),
    row<&KVSStatus::changedVP6State>(228),    row<&KVSStatus::changedVP6Opened>(232),
    row<&KVSStatus::changedVP6Closed>(236),   row<&KVSStatus::changedVP7State>(248),
    row<&KVSStatus::changedVP7Opened>(252),   row<&KVSStatus::changedVP7Closed>(256),
    row<&KVSStatus::changedNL1LockOn>(16),    row<&KVSStatus::changedNL2LockOn>(40),
    row<&KVSStatus::changedNZ1LockOn>(64),    row<&KVSStatus::changedNZ2LockOn>(88),
    row<&KVSStatus::changedND1LockOn>(112),   row<&KVSStatus::changedNW2LockOn>(136),
    row<&KVSStatus::changedNL1LockOff>(20),   row<&KVSStatus::changedNL2LockOff>(44),
    row<&KVSStatus::changedNZ1LockOff>(68),   row<&KVSStatus::changedNZ2LockOff>(92),
    row<&KVSStatus::changedND1LockOff>(116),  row<&KVSStatus::changedNW2LockOff>(140),
    row<&KVSStatus::changedVP1LockOn>(160),   row<&KVSStatus::changedVP2LockOn>(180),
    row<&KVSStatus::changedVP3LockOn>(200),   row<&KVSStatus::changedVP5LockOn>(220),
    row<&KVSStatus::changedVP6LockOn>(240),   row<&KVSStatus::changedVP7LockOn>(260),
    row<&KVSStatus::changedVP1LockOff>(164),  row<&KVSStatus::changedVP2LockOff>(184),
    row<&KVSStatus::changedVP3LockOff>(204),  row<&KVSStatus::changedVP5LockOff>(224),
    row<&KVSStatus::changedVP6LockOff>(244),  row<&KVSStatus::changedVP7LockOff>(264),
    row<&KVSStatus::changedPTState>(268),     row<&KVSStatus::changedLEDState>(272),
    row<&KVSStatus::changedSpiralState>(276), row<&KVSStatus::changedAlgNumber>(280),
    row<&KVSStatus::changedAlgState>(284),    row<&KVSStatus::changedAlgTime>(288),
    row<&KVSStatus::changedPT1Valid>(292),    row<&KVSStatus::changedPT2Valid>(293),
    row<&KVSStatus::changedPT3Valid>(294),    row<&KVSStatus::changedPowerPT>(295),
    row<&KVSStatus::changedPower380V>(296),   row<&KVSStatus::changedPower110V>(297),
    row<&KVSStatus::changedPower24V>(298),    row<&KVSStatus::changedPowerDischarge>(299),
    row<&KVSStatus::changedPowerFan>(300),    row<&KVSStatus::changedEmStop>(301),
    row<&KVSStatus::changedRopeAlarm>(302),   row<&KVSStatus::changedPowerSHUK>(303),
    row<&KVSStatus::changedPowerKVK>(304),    row<&KVSStatus::changedDoorClosed>(305),
    row<&KVSStatus::changedPT1>(308),         row<&KVSStatus::changedPT2>(316),
    row<&KVSStatus::changedPT3>(324),         row<&KVSStatus::changedTempCorpND>(332),
    row<&KVSStatus::changedTempOilND>(336),   row<&KVSStatus::changedTemp1>(340),
    row<&KVSStatus::changedTemp2>(344),       row<&KVSStatus::changedTemp3>(348),
    row<&KVSStatus::changedTemp4>(352),       row<&KVSStatus::changedTemp5>(356),
    row<&KVSStatus::changedTemp6>(360),       row<&KVSStatus::changedTemp7>(364),
    row<&KVSStatus::changedTemp8>(368),       row<&KVSStatus::changedDisch1>(372),
    row<&KVSStatus::changedDisch2>(376),      row<&KVSStatus::changedDisch3>(380),
    row<&KVSStatus::changedDisch4>(384),      row<&KVSStatus::changedDisch5>(388),
    row<&KVSStatus::changedDisch6>(392),      row<&KVSStatus::changedDisch7>(396),
    row<&KVSStatus::changedDisch8>(400),
};
static_assert(wire::fits(kvsTable, sizeof(VacuumTCPpacketHdr), 404));

// AlgRun before AlgNumber and StateACC before StateNET, against the order of the bytes: who hears of a number
// finds its state told.
constexpr WireRow<KVKStatus> kvkTable[] = {
    row<&KVKStatus::changedVP4State>(4),      row<&KVKStatus::changedVP4Opened>(8),
    row<&KVKStatus::changedVP4Closed>(12),    row<&KVKStatus::changedVP8State>(24),
    row<&KVKStatus::changedVP8Opened>(28),    row<&KVKStatus::changedVP8Closed>(32),
    row<&KVKStatus::changedDoorState>(44),    row<&KVKStatus::changedDoorUnpressed>(48),
    row<&KVKStatus::changedDoorPressed>(52),  row<&KVKStatus::changedVP4LockOn>(16),
    row<&KVKStatus::changedVP8LockOn>(36),    row<&KVKStatus::changedDoorLockOn>(56),
    row<&KVKStatus::changedVP4LockOff>(20),   row<&KVKStatus::changedVP8LockOff>(40),
    row<&KVKStatus::changedDoorLockOff>(60),  row<&KVKStatus::changedPT4>(64),
    row<&KVKStatus::changedPT5>(72),          row<&KVKStatus::changedPT4Valid>(80),
    row<&KVKStatus::changedPT5Valid>(81),     row<&KVKStatus::changedPressureOK>(82),
    row<&KVKStatus::changedNP1Power>(83),     row<&KVKStatus::changedNW1Power>(84),
    row<&KVKStatus::changedDrivesLock>(85),   row<&KVKStatus::changedSpiralLock>(86),
    row<&KVKStatus::changedShutdownLock>(87), row<&KVKStatus::changedAlgRun>(96),
    row<&KVKStatus::changedAlgNumber>(88),    row<&KVKStatus::changedAlgTime>(92),
    row<&KVKStatus::changedBKUValid>(104),    row<&KVKStatus::changedStateVPT>(108),
    row<&KVKStatus::changedStateVE>(112),     row<&KVKStatus::changedStateTMN>(116),
    row<&KVKStatus::changedStateACC>(124),    row<&KVKStatus::changedStateNET>(120),
    row<&KVKStatus::changedStateMP>(128),     row<&KVKStatus::changedStateLocks>(132),
    row<&KVKStatus::changedPT6>(136),         row<&KVKStatus::changedTMNFreq>(140),
};
static_assert(wire::fits(kvkTable, sizeof(VacuumTCPpacketHdr), 144));

constexpr LinkTexts kvsTexts{"KVS",
                             "KVS connect",
                             "KVS tcp connect() done",
                             "KVSTCPthread: >",
                             "KVSTCPthread started",
                             "KVSTCPthread stopped",
                             {nullptr, nullptr}};
constexpr quint16 kvsConsts = 0x5652;

constexpr LinkTexts kvkTexts{"",
                             nullptr,
                             nullptr,
                             "KVKTCPthread: >",
                             "KVKTCPthread started",
                             "KVKTCPthread stopped",
                             {nullptr, nullptr}};
constexpr quint16 kvkConsts = 0x5651;

} // namespace

QString VacuumConst::description() const
{
    return QTextCodec::codecForName("Windows-1251")->toUnicode(text, int(qstrnlen(text, sizeof text)));
}

VacuumLink::VacuumLink(QThread& thread, const LinkTexts& texts, quint16 constsSignature,
                       const char* receivedText)
    : TcpLink(thread, texts)
    , m_constsSignature(constsSignature)
    , m_receivedText(receivedText)
{}

const void* VacuumLink::getVacConsts(int& count)
{
    const std::lock_guard<std::mutex> guard(m_receivedGuard);
    m_given = m_received;
    count = m_given.size();
    return m_given.constData();
}

TcpLink::Turn VacuumLink::receiveFrame(int socket)
{
    // A head that comes in pieces counts as a head; what is missing is zero.
    VacuumTCPpacketHdr head;
    if (comm::receiveHead(socket, head) <= 0)
        return Turn::End;
    if (head.signature == m_constsSignature) {
        receiveConsts(socket, head.length);
    } else if (head.signature == textSignature) {
        tellMessage(timeStamp() + receiveText(socket, head.length, m_receivedText));
    } else {
        qDebug("Bad packet signature");
        return Turn::End;
    }
    return Turn::Go;
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
    : KVSStatus(parent)
    , VacuumLink(*this, kvsTexts, kvsConsts, "VacuumTCPthread: <")
{}

KVSTCPthread::~KVSTCPthread()
{
    end();
}

std::unique_ptr<QThread> KVSTCPthread::listen(int udpPort)
{
    return std::make_unique<KVSUDPthread>(this, udpPort);
}

KVKTCPthread::KVKTCPthread(QObject* parent)
    : KVKStatus(parent)
    , VacuumLink(*this, kvkTexts, kvkConsts, "KVKTCPthread: <")
{}

KVKTCPthread::~KVKTCPthread()
{
    end();
}

std::unique_ptr<QThread> KVKTCPthread::listen(int udpPort)
{
    return std::make_unique<KVKUDPthread>(this, udpPort);
}

KVSUDPthread::KVSUDPthread(KVSTCPthread* owner, int port)
    : m_port(port)
    , m_controller(owner->controller())
    , m_owner(owner)
{
    wire::forward(kvsTable, static_cast<const KVSStatus&>(*this), static_cast<const KVSStatus&>(*m_owner));
    connect(this, &KVSStatus::message, m_owner, &KVSStatus::message);
    // Direct, so that a loss is acted on even while the window's thread is busy.
    connect(this, &KVSUDPthread::UDPdisconnected, m_owner, &KVSTCPthread::UDPdisconnected,
            Qt::DirectConnection);
    start();
}

KVSUDPthread::~KVSUDPthread()
{
    wire::detach(kvsTable, static_cast<const KVSStatus&>(*this), static_cast<const KVSStatus&>(*m_owner));
    m_stop = true;
    wait();
}

void KVSUDPthread::run()
{
    comm::receiveTelemetry<404>(
        m_port, m_controller, signature, m_stop,
        [this](const auto& pack) { m_last.take(kvsTable, static_cast<KVSStatus&>(*this), pack); },
        [this] { emit UDPdisconnected(); });
}

KVKUDPthread::KVKUDPthread(KVKTCPthread* owner, int port)
    : m_port(port)
    , m_controller(owner->controller())
    , m_owner(owner)
{
    wire::forward(kvkTable, static_cast<const KVKStatus&>(*this), static_cast<const KVKStatus&>(*m_owner));
    connect(this, &KVKStatus::message, m_owner, &KVKStatus::message);
    // Direct, so that a loss is acted on even while the window's thread is busy.
    connect(this, &KVKUDPthread::UDPdisconnected, m_owner, &KVKTCPthread::UDPdisconnected,
            Qt::DirectConnection);
    start();
}

KVKUDPthread::~KVKUDPthread()
{
    wire::detach(kvkTable, static_cast<const KVKStatus&>(*this), static_cast<const KVKStatus&>(*m_owner));
    m_stop = true;
    wait();
}

void KVKUDPthread::run()
{
    comm::receiveTelemetry<144>(
        m_port, m_controller, signature, m_stop,
        [this](const auto& pack) { m_last.take(kvkTable, static_cast<KVKStatus&>(*this), pack); },
        [this] { emit UDPdisconnected(); });
}
