#pragma once

#include "statuslink.h"
#include "vacuumstatus.h"

#include <QThread>
#include <QVector>

#include <cstddef>
#include <mutex>

class KVSTCPthread;
class KVSUDPthread;
class KVKTCPthread;
class KVKUDPthread;

// The connections to both vacuum controllers: KVS, the forevacuum and diffusion part, and KVK, the chamber.
// They speak one protocol with different records. Each has two threads: the TCP thread carries text commands,
// text answers and the table of constants; the UDP thread turns the status datagram into one typed signal for
// each field that changed. The links interpret nothing.

// Head of every TCP packet in both directions: u16 signature, u16 number of bytes that follow.
using VacuumTCPpacketHdr = comm::FrameHead;

// One record of a constants packet, 92 bytes.
struct VacuumConst
{
    qint32 id;
    float value;
    char text[84]; // Windows-1251, ended by a zero byte unless it fills the field

    QString description() const;
};
static_assert(sizeof(VacuumConst) == 92 && offsetof(VacuumConst, value) == 4 &&
              offsetof(VacuumConst, text) == 8);

// What both vacuum links have beyond the other links: the table of constants.
class VacuumLink : public TcpLink
{
public:
    static constexpr int maxConsts = 100;

    // The constants as last received, `count` records of VacuumConst. For the window's thread; valid until
    // the next call, whatever comes meanwhile.
    const void* getVacConsts(int& count);

protected:
    using TcpLink::TcpLink;
    ~VacuumLink() = default;

    bool takeFrame(int socket, const VacuumTCPpacketHdr& head) override;
    virtual quint16 constsSignature() const = 0;
    virtual void tellConsts(int count) = 0;

private:
    void receiveConsts(int socket, int length);

    using Table = QVector<VacuumConst>;
    Table m_given; // the window's
    std::mutex m_receivedGuard;
    Table m_received; // as the thread has read it
};

// The reading thread of either. Owns the TCP connection, and the telemetry thread as long as the connection
// stands. The same object is connected again and again; consumers connect to its signals once. It lives in
// the window's thread, where the signals arrive.
template <class Wire>
class VacuumThread : public StatusLink<Wire, VacuumLink>
{
protected:
    using StatusLink<Wire, VacuumLink>::StatusLink;

    quint16 constsSignature() const override { return Wire::consts; }
    void tellConsts(int count) override { emit this->self().constsReceived(count); }
};

struct KvsWire
{
    using Status = KVSStatus;
    using Reader = KVSTCPthread;
    using Receiver = KVSUDPthread;
    static constexpr int packSize = 404;
    static constexpr quint16 consts = 0x5652; // signature of a packet of constants
    static const wire::Table<KVSStatus> table;
    static const LinkManners manners;
};

struct KvkWire
{
    using Status = KVKStatus;
    using Reader = KVKTCPthread;
    using Receiver = KVKUDPthread;
    static constexpr int packSize = 144;
    static constexpr quint16 consts = 0x5651;
    static const wire::Table<KVKStatus> table;
    static const LinkManners manners;
};

class KVSTCPthread : public VacuumThread<KvsWire>
{
    Q_OBJECT
public:
    explicit KVSTCPthread(QObject* parent = nullptr);
    ~KVSTCPthread() override; // ends an open connection; waits without limit

public slots:
    void UDPdisconnected() { telemetryLost(); } // asks the thread to end, from any thread

signals:
    void disconnected();            // the connection is over, both threads' work is done
    void constsReceived(int count); // 0 to 100 records stand ready in getVacConsts()
};

class KVKTCPthread : public VacuumThread<KvkWire>
{
    Q_OBJECT
public:
    explicit KVKTCPthread(QObject* parent = nullptr);
    ~KVKTCPthread() override;

public slots:
    void UDPdisconnected() { telemetryLost(); }

signals:
    void disconnected();
    void constsReceived(int count);
};

// Receives the status datagram on the port, and forwards all signals to its owner. It starts itself.
class KVSUDPthread final : public StatusReceiver<KvsWire>
{
    Q_OBJECT
public:
    KVSUDPthread(KVSTCPthread* owner, int port);
    ~KVSUDPthread() override;

signals:
    // Nothing came for a second; raised again every further 100 ms until the thread is ended.
    void UDPdisconnected();
};

class KVKUDPthread final : public StatusReceiver<KvkWire>
{
    Q_OBJECT
public:
    KVKUDPthread(KVKTCPthread* owner, int port);
    ~KVKUDPthread() override;

signals:
    void UDPdisconnected();
};
