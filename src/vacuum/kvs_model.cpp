#include "kvs.h"

#include "lockview.h"
#include "ui_kvs.h"
#include "widgets.h"

#include <algorithm>
#include <iterator>

namespace {

// The devices that have a word for switching on or opening and one for switching off or closing.
constexpr const char* lockedDevices[] = {"NL1", "NL2", "NZ1", "NZ2", "ND1", "NW2",  "VP1", "VP2", "VP3",
                                         "VP4", "VP5", "VP6", "VP7", "VP8", "DOOR", "TMN", "VPT", "VE1"};

// A reason that a controller can give for refusing a command.
struct Cause
{
    const char* word; // the summary interlock that it belongs to
    int bit;
    const char* key;
    const char* locked;
    const char* free;
};

// One bit of a device's own word each; by rising bit within a word, the order in which reasons are told.
constexpr Cause causes[] = {
    {"NL1:LockOn", 0, "NL1:lockVP7", "Клапан VP7 не закрыт", "Клапан VP7 закрыт"},
    {"NL1:LockOn", 1, "NL1:lockDisch", "Недостаточный проток ОЖ", "Проток ОЖ в норме"},
    {"NL1:LockOff", 0, "NL1:lockVP2", "Клапан VP2 не закрыт", "Клапан VP2 закрыт"},
    {"NL1:LockOff", 1, "NL1:lockNZ1", "Насос NZ1 не выключен", "Насос NZ1 выключен"},
    {"NL2:LockOn", 0, "NL2:lockVP6", "Клапан VP6 не закрыт", "Клапан VP6 закрыт"},
    {"NL2:LockOff", 0, "NL2:lockVP3", "Затвор VP3 не закрыт", "Затвор VP3 закрыт"},
    {"NL2:LockOff", 1, "NL2:lockVP5", "Клапан VP5 не закрыт", "Клапан VP5 закрыт"},
    {"NL2:LockOff", 2, "NL2:lockNZ2", "Насос NZ2 не выключен", "Насос NZ2 выключен"},
    {"NZ1:LockOn", 0, "NZ1:lockPress", "Недостаточное давление в магистрали",
     "Давление в магистрали в норме"},
    {"NZ1:LockOff", 0, "NZ1:lockVP2", "Клапан VP2 не закрыт", "Клапан VP2 закрыт"},
    {"NZ2:LockOn", 0, "NZ2:lockPress", "Недостаточное давление в магистрали",
     "Давление в магистрали в норме"},
    {"NZ2:LockOn", 1, "NZ2:lockDisch", "Недостаточный проток ОЖ", "Проток ОЖ в норме"},
    {"NZ2:LockOff", 0, "NZ2:lockVP3", "Затвор VP3 не закрыт", "Затвор VP3 закрыт"},
    {"NZ2:LockOff", 1, "NZ2:lockVP5", "Клапан VP5 не закрыт", "Клапан VP5 закрыт"},
    {"ND1:LockOn", 0, "ND1:lockPress", "Недостаточное давление в насосе", "Давление в насосе в норме"},
    {"ND1:LockOn", 1, "ND1:lockVP2", "Клапан VP2 не открыт", "Клапан VP2 открыт"},
    {"ND1:LockOn", 2, "ND1:lockNL1", "Насос NL1 не включен", "Насос NL1 включен"},
    {"ND1:LockOn", 3, "ND1:lockDisch", "Недостаточный проток ОЖ", "Проток ОЖ в норме"},
    {"ND1:LockOff", 0, "ND1:lockVP1", "Затвор VP1 не закрыт", "Затвор VP1 закрыт"},
    {"VP1:LockOn", 0, "VP1:lockPress", "Недостаточное давление в камере", "Давление в камере в норме"},
    {"VP1:LockOn", 1, "VP1:lockND1", "Насос ND1 не включен", "Насос ND1 включен"},
    {"VP2:LockOn", 0, "VP2:lockPress", "Давление в насосе и в магистрали не выравнено",
     "Давление в насосе и в магистрали в норме"},
    {"VP2:LockOff", 0, "VP2:lockND1", "Насос ND1 не выключен", "Насос ND1 выключен"},
    {"VP3:LockOn", 0, "VP3:lockPress", "Давление в камере и в магистрали не выравнено",
     "Давление в камере и в магистрали в норме"},
    {"VP4:LockOn", 0, "VP4:lockDrives", "Приводы не выключены", "Приводы выключены"},
    {"VP4:LockOn", 1, "VP4:lockValve", "Затвор VP1 и/или VP3 не закрыт", "Затворы VP1 и VP3 закрыты"},
    {"VP5:LockOn", 0, "VP5:lockPress", "Давление в рубашке и в магистрали не выравнено",
     "Давление в рубашке и в магистрали в норме"},
    {"VP6:LockOn", 0, "VP6:lockNL2", "Насос NL2 не выключен", "Насос NL2 выключен"},
    {"VP7:LockOn", 0, "VP7:lockNL1", "Насос NL1 не выключен", "Насос NL1 выключен"},
    {"VP8:LockOn", 0, "VP8:lockDrives", "Приводы не выключены", "Приводы выключены"},
    {"VP8:LockOn", 1, "VP8:lockValve", "Затвор VP1 и/или VP3 не закрыт", "Затворы VP1 и VP3 закрыты"},
    {"DOOR:LockOn", 0, "DOOR:lockPress", "Нет атмосферы в камере", "Атмосфера в камере"},
    {"DOOR:LockOff", 0, "DOOR:lockState", "Дверь не закрыта", "Дверь закрыта"},
};

// TMN, VPT and VE1 share one word; the bit is that of the shared word.
constexpr Cause sharedCauses[] = {
    {"VPT:LockOff", 0, "VPT:lockTMN", "ТМН не выключен", ""},
    {"VE1:LockOn", 1, "VE1:lockShuk", "Нет разрешения от ШУК", ""},
    {"VE1:LockOff", 2, "VE1:lockAcc", "Ускоряющее не выключено", ""},
    {"TMN:LockOn", 3, "TMN:lockVPT", "VPT не открыт", "VPT открыт"},
    {"TMN:LockOn", 4, "TMN:lockPress", "Недостаточное давление", "Давление в норме"},
};

// The bits of the shared word that forbid each of the six commands.
constexpr struct
{
    const char* word;
    unsigned int bits;
} sharedWords[] = {
    {"VPT:LockOn", 0},        {"VPT:LockOff", 1U << 0},          {"VE1:LockOn", 1U << 1},
    {"VE1:LockOff", 1U << 2}, {"TMN:LockOn", 1U << 3 | 1U << 4}, {"TMN:LockOff", 0},
};

// Set by the panel itself.
constexpr Cause regimeLocks[] = {
    {"", 0, "REGIME:LockUser", "Нет прав на включение", "Права есть"},
    {"", 0, "REGIME:LockDoorPress", "Дверь камеры не прижата", "Дверь камеры прижата"},
    {"", 0, "REGIME:LockDoorState", "Дверь камеры не закрыта", "Дверь камеры закрыта"},
    {"", 0, "REGIME:LockPump", "", ""}, // stays free: pumping is the controller's to refuse
};

template <class Link, class Value>
struct Feed
{
    void (Link::*signal)(Value);
    const char* element;
};

constexpr Feed<KVSStatus, int> switches[] = {
    {&KVSStatus::changedNL1Power, "NL1:Power"},     {&KVSStatus::changedNL2Power, "NL2:Power"},
    {&KVSStatus::changedNZ1Power, "NZ1:Power"},     {&KVSStatus::changedNZ2Power, "NZ2:Power"},
    {&KVSStatus::changedND1Power, "ND1:Power"},     {&KVSStatus::changedNW2Power, "NW2:Power"},
    {&KVSStatus::changedNL1Thermal, "NL1:Thermal"}, {&KVSStatus::changedNL2Thermal, "NL2:Thermal"},
    {&KVSStatus::changedNZ1Thermal, "NZ1:Thermal"}, {&KVSStatus::changedNZ2Thermal, "NZ2:Thermal"},
    {&KVSStatus::changedND1Thermal, "ND1:Thermal"},
};

constexpr Feed<KVSStatus, float> measured[] = {
    {&KVSStatus::changedDisch1, "Discharge01"}, {&KVSStatus::changedDisch2, "Discharge02"},
    {&KVSStatus::changedDisch3, "Discharge03"}, {&KVSStatus::changedDisch4, "Discharge04"},
    {&KVSStatus::changedDisch5, "Discharge05"}, {&KVSStatus::changedDisch6, "Discharge06"},
    {&KVSStatus::changedDisch7, "Discharge07"}, {&KVSStatus::changedTemp1, "Temp01"},
    {&KVSStatus::changedTemp2, "Temp02"},       {&KVSStatus::changedTemp3, "Temp03"},
    {&KVSStatus::changedTemp4, "Temp04"},       {&KVSStatus::changedTemp5, "Temp05"},
    {&KVSStatus::changedTemp6, "Temp06"},       {&KVSStatus::changedTemp7, "Temp07"},
};

template <class Link>
struct Word
{
    void (Link::*signal)(int);
    void (KVS::*slot)(int);
};

constexpr Word<KVSStatus> kvsWords[] = {
    {&KVSStatus::changedNL1LockOn, &KVS::onChangedNL1LockOn},
    {&KVSStatus::changedNL1LockOff, &KVS::onChangedNL1LockOff},
    {&KVSStatus::changedNL2LockOn, &KVS::onChangedNL2LockOn},
    {&KVSStatus::changedNL2LockOff, &KVS::onChangedNL2LockOff},
    {&KVSStatus::changedNZ1LockOn, &KVS::onChangedNZ1LockOn},
    {&KVSStatus::changedNZ1LockOff, &KVS::onChangedNZ1LockOff},
    {&KVSStatus::changedNZ2LockOn, &KVS::onChangedNZ2LockOn},
    {&KVSStatus::changedNZ2LockOff, &KVS::onChangedNZ2LockOff},
    {&KVSStatus::changedND1LockOn, &KVS::onChangedND1LockOn},
    {&KVSStatus::changedND1LockOff, &KVS::onChangedND1LockOff},
    {&KVSStatus::changedNW2LockOn, &KVS::onChangedNW2LockOn},
    {&KVSStatus::changedNW2LockOff, &KVS::onChangedNW2LockOff},
    {&KVSStatus::changedVP1LockOn, &KVS::onChangedVP1LockOn},
    {&KVSStatus::changedVP1LockOff, &KVS::onChangedVP1LockOff},
    {&KVSStatus::changedVP2LockOn, &KVS::onChangedVP2LockOn},
    {&KVSStatus::changedVP2LockOff, &KVS::onChangedVP2LockOff},
    {&KVSStatus::changedVP3LockOn, &KVS::onChangedVP3LockOn},
    {&KVSStatus::changedVP3LockOff, &KVS::onChangedVP3LockOff},
    {&KVSStatus::changedVP5LockOn, &KVS::onChangedVP5LockOn},
    {&KVSStatus::changedVP5LockOff, &KVS::onChangedVP5LockOff},
    {&KVSStatus::changedVP6LockOn, &KVS::onChangedVP6LockOn},
    {&KVSStatus::changedVP6LockOff, &KVS::onChangedVP6LockOff},
    {&KVSStatus::changedVP7LockOn, &KVS::onChangedVP7LockOn},
    {&KVSStatus::changedVP7LockOff, &KVS::onChangedVP7LockOff},
};

constexpr Word<KVKStatus> kvkWords[] = {
    {&KVKStatus::changedVP4LockOn, &KVS::onChangedVP4LockOn},
    {&KVKStatus::changedVP4LockOff, &KVS::onChangedVP4LockOff},
    {&KVKStatus::changedVP8LockOn, &KVS::onChangedVP8LockOn},
    {&KVKStatus::changedVP8LockOff, &KVS::onChangedVP8LockOff},
    {&KVKStatus::changedDoorLockOn, &KVS::onChangedDoorLockOn},
    {&KVKStatus::changedDoorLockOff, &KVS::onChangedDoorLockOff},
};

template <class Link>
struct DeviceState
{
    void (Link::*signal)(int);
    PoSprite* Ui_KVS::*sprite;
    void (KVS::*slot)(int);
};

constexpr DeviceState<KVSStatus> kvsStates[] = {
    {&KVSStatus::changedNL1State, &Ui_KVS::NL1, &KVS::onChangedNL1State},
    {&KVSStatus::changedNL2State, &Ui_KVS::NL2, &KVS::onChangedNL2State},
    {&KVSStatus::changedNZ1State, &Ui_KVS::NZ1, &KVS::onChangedNZ1State},
    {&KVSStatus::changedNZ2State, &Ui_KVS::NZ2, &KVS::onChangedNZ2State},
    {&KVSStatus::changedND1State, &Ui_KVS::ND1, &KVS::onChangedND1State},
    {&KVSStatus::changedNW2State, &Ui_KVS::NW2, &KVS::onChangedNW2State},
    {&KVSStatus::changedVP1State, &Ui_KVS::VP1, &KVS::onChangedVP1State},
    {&KVSStatus::changedVP2State, &Ui_KVS::VP2, &KVS::onChangedVP2State},
    {&KVSStatus::changedVP3State, &Ui_KVS::VP3, &KVS::onChangedVP3State},
    {&KVSStatus::changedVP5State, &Ui_KVS::VP5, &KVS::onChangedVP5State},
    {&KVSStatus::changedVP6State, &Ui_KVS::VP6, &KVS::onChangedVP6State},
    {&KVSStatus::changedVP7State, &Ui_KVS::VP7, &KVS::onChangedVP7State},
};

constexpr DeviceState<KVKStatus> kvkStates[] = {
    {&KVKStatus::changedVP4State, &Ui_KVS::VP4, &KVS::onChangedVP4State},
    {&KVKStatus::changedVP8State, &Ui_KVS::VP8, &KVS::onChangedVP8State},
};

} // namespace

void KVS::addElement(const QString& name, LenzeElement::Type type, int dec)
{
    const auto i = m_Elements.find(name);
    Q_ASSERT(i == m_Elements.end());
    m_Elements.insert(name, new LenzeElement(name, type, dec));
}

LenzeElement* KVS::element(const QString& name) const
{
    const auto i = m_Elements.find(name);
    Q_ASSERT(i != m_Elements.end());
    return i.value();
}

void KVS::addLock(const QString& key, bool perm, const QString& textLocked, const QString& textFree)
{
    const auto i = m_locks.find(key);
    Q_ASSERT(i == m_locks.end());
    m_locks.insert(key, new Lock(perm, textLocked, textFree));
}

Lock* KVS::lock(const QString& key) const
{
    const auto i = m_locks.find(key);
    Q_ASSERT(i != m_locks.end());
    return i.value();
}

void KVS::initElements()
{
    for (const auto& feed : switches) {
        addElement(QLatin1String(feed.element), LenzeElement::Number, 0);
        connect(&m_kvs, feed.signal, element(QLatin1String(feed.element)), &LenzeElement::setNumberVal);
    }
    for (const char* device : lockedDevices) {
        for (const char* word : {":LockOn", ":LockOff"})
            addElement(QLatin1String(device) + QLatin1String(word), LenzeElement::Number, 0);
    }
    for (const auto& feed : measured) {
        addElement(QLatin1String(feed.element), LenzeElement::Sensor, 1);
        connect(&m_kvs, feed.signal, element(QLatin1String(feed.element)), &LenzeElement::setSensorVal);
    }
    connectStates();
    connectLockWords();
}

void KVS::initLocks()
{
    for (const char* device : lockedDevices) {
        for (const char* word : {":LockOn", ":LockOff"})
            addLock(QLatin1String(device) + QLatin1String(word), false, QString(), QString());
    }
    const auto add = [this](const Cause& cause) {
        addLock(QLatin1String(cause.key), false, QString::fromUtf8(cause.locked),
                QString::fromUtf8(cause.free));
    };
    std::for_each(std::begin(causes), std::end(causes), add);
    std::for_each(std::begin(sharedCauses), std::end(sharedCauses), add);
    std::for_each(std::begin(regimeLocks), std::end(regimeLocks), add);
}

void KVS::connectStates()
{
    const auto follow = [this](auto& link, const auto& device) {
        connect(&link, device.signal, ui.get()->*device.sprite, qOverload<int>(&PoSprite::changedState));
        connect(&link, device.signal, this, device.slot);
    };
    for (const auto& device : kvsStates)
        follow(m_kvs, device);
    for (const auto& device : kvkStates)
        follow(m_kvk, device);
    connect(&m_kvk, &KVKStatus::changedDoorState, this, &KVS::onChangedDoorState);
    connect(&m_kvk, &KVKStatus::changedDoorState, this, &KVS::onDoorPressChanged);
    connect(&m_kvk, &KVKStatus::changedNP1Power, this, &KVS::changedNP1);
    connect(&m_kvk, &KVKStatus::changedNW1Power, this, &KVS::changedNW1);
    connect(&m_kvk, &KVKStatus::changedStateVPT, this, &KVS::changedVPT);
    connect(&m_kvk, &KVKStatus::changedStateVE, this, &KVS::changedVE1);
    connect(&m_kvk, &KVKStatus::changedStateTMN, this, &KVS::changedTMN);
}

void KVS::connectLockWords()
{
    for (const auto& word : kvsWords)
        connect(&m_kvs, word.signal, this, word.slot);
    for (const auto& word : kvkWords)
        connect(&m_kvk, word.signal, this, word.slot);
    connect(&m_kvk, &KVKStatus::changedStateLocks, this, &KVS::changedLocksELA);
    connect(&m_kvk, &KVKStatus::changedSpiralLock, this, &KVS::signalChangedSpiralLock);
    connect(&m_kvk, &KVKStatus::changedShutdownLock, this, &KVS::signalChangedShutdownLock);
}

// A bit without a known reason forbids the command all the same.
void KVS::setLockWord(const char* key, int word)
{
    element(QLatin1String(key))->setNumberVal(word);
    lock(QLatin1String(key))->setState(word != 0);
    for (const Cause& cause : causes) {
        if (qstrcmp(cause.word, key) == 0)
            lock(QLatin1String(cause.key))->setState((word >> cause.bit & 1) != 0);
    }
}

void KVS::changedLocksELA(unsigned int word)
{
    for (const Cause& cause : sharedCauses)
        lock(QLatin1String(cause.key))->setState((word >> cause.bit & 1) != 0);
    for (const auto& shared : sharedWords)
        lock(QLatin1String(shared.word))->setState((word & shared.bits) != 0);
}

QList<Lock*> KVS::reasons(const QString& key) const
{
    QList<Lock*> found;
    const auto collect = [&](const Cause& cause) {
        if (key == QLatin1String(cause.word))
            found << lock(QLatin1String(cause.key));
    };
    std::for_each(std::begin(causes), std::end(causes), collect);
    std::for_each(std::begin(sharedCauses), std::end(sharedCauses), collect);
    return found;
}
