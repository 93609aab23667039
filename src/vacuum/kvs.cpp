#include "kvs.h"

#include "lockview.h"
#include "settings.h"
#include "site.h"
#include "ui_kvs.h"
#include "widgets.h"
#include "wordchange.h"

#include <QDebug>
#include <QTimer>

#include <cmath>

namespace {

constexpr int reconnectMs = 1000; // between two attempts to reach a controller
const QColor connectedColour(255, 255, 192);

// A limit of the settings file. What is no number there would call every reading bad or good, so the
// machine's own limit stands instead.
float limit(const Settings& settings, const QString& key, float standard)
{
    const QVariant stored = settings.value(key, standard);
    bool number = false;
    const float value = stored.toFloat(&number);
    if (number && std::isfinite(value))
        return value;
    qWarning().noquote() << "settings:" << key << "is no number, taken as" << standard;
    return standard;
}

} // namespace

KVS::KVS(QWidget* parent)
    : QWidget(parent)
    , ui(std::make_unique<Ui::KVS>())
{
    ui->setupUi(this);
    m_states[TMN] = m_states[VPT] = m_states[VE1] = -1;

    initSprites();
    initElements();
    initLocks();
    initStateButtons();
    initSensors();
    initDialogs();
    initHiding();
    keepForStart();

    connect(&m_kvk, &KVKStatus::changedAlgNumber, this, &KVS::changedMode);
    // Where a device stands and which gauge is silent is told anew with each connection; that a regime was
    // started or has ended, when it happens.
    connectChanges(&m_kvk, &KVKStatus::changedAlgNumber, this, &KVS::signalChangedMode);
    connect(&m_kvk, &KVKStatus::changedAlgTime, this, &KVS::signalChangedModeTime);
    connectChanges(&m_kvk, &KVKStatus::changedAlgRun, this, &KVS::signalChangedModeState);
    connect(&m_kvs, &KVSStatus::message, this, &KVS::messageTCP);
    connect(&m_kvk, &KVKStatus::message, this, &KVS::messageTCP);
    connect(&m_kvs, &KVSTCPthread::disconnected, this, &KVS::disconnectedKVS);
    connectKVS();
    connect(&m_kvk, &KVKTCPthread::disconnected, this, &KVS::disconnectedKVK);
    connectKVK();
    loadLimits();
}

KVS::~KVS()
{
    // No new attempt may follow from the end of the links.
    QObject::disconnect(&m_kvs, &KVSTCPthread::disconnected, this, nullptr);
    QObject::disconnect(&m_kvk, &KVKTCPthread::disconnected, this, nullptr);
    m_kvs.disconnect();
    m_kvk.disconnect();
    qDeleteAll(m_Elements);
    qDeleteAll(m_locks);
}

void KVS::connectKVS()
{
    const Endpoint& place = site().kvs;
    if (!m_kvs.connect(place.host, place.tcpPort, place.udpPort)) {
        disconnectedKVS();
        return;
    }
    setBackground(this, connectedColour);
    m_kvsConnected = true;
    emit onKVSConnected(true);
}

void KVS::disconnectedKVS()
{
    setBackground(this, invalidGround);
    m_kvsConnected = false;
    emit onKVSConnected(false);
    QTimer::singleShot(reconnectMs, this, &KVS::connectKVS);
}

void KVS::connectKVK()
{
    const Endpoint& place = site().kvk;
    if (!m_kvk.connect(place.host, place.tcpPort, place.udpPort)) {
        disconnectedKVK();
        return;
    }
    setBackground(ui->Chamber, connectedColour);
    setBackground(ui->Door, connectedColour);
    m_kvkConnected = true;
    emit onKVKConnected(true);
}

void KVS::disconnectedKVK()
{
    setBackground(ui->Chamber, invalidGround);
    setBackground(ui->Door, invalidGround);
    m_kvkConnected = false;
    emit onKVKConnected(false);
    QTimer::singleShot(reconnectMs, this, &KVS::connectKVK);
}

void KVS::messageTCP(const QString& text)
{
    emit message(text, false);
}

void KVS::onSystemStarted()
{
    emit onKVSConnected(m_kvsConnected);
    emit onKVKConnected(m_kvkConnected);
    m_early.tellAgain();
}

void KVS::keepForStart()
{
    m_early.keepEach(&KVS::message);
    m_early.keepLast(&KVS::signalChangedSpiralLock);
    m_early.keepLast(&KVS::signalChangedShutdownLock);
    m_early.keepLast(&KVS::signalChangedMode);
    m_early.keepLast(&KVS::signalChangedModeTime);
    m_early.keepLast(&KVS::signalChangedModeState);
    m_early.keepLast(&KVS::changedChamberPressure);
    m_early.keepLast(&KVS::changedChamberPressureValid);
    m_early.keepLast(&KVS::changedGunPressure);
    m_early.keepLast(&KVS::changedGunPressureValid);
    m_early.keepLast(&KVS::onChangedPressUnit);
    m_early.keepLast(&KVS::turnSystemOff);
}

void KVS::loadLimits()
{
    const Settings settings;
    m_tempWarning = limit(settings, QStringLiteral("Vacuum/TempWarning"), 30);
    m_tempError = limit(settings, QStringLiteral("Vacuum/TempError"), 50);
    for (size_t i = 0; i < m_minDischW.size(); ++i)
        m_minDischW[i] = limit(settings, QStringLiteral("Vacuum/MinDischW%1").arg(i + 1), 3);
}
