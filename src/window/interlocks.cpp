#include "interlocks.h"

#include "drivecomm.h"
#include "lockview.h"
#include "statebutton.h"

namespace {

constexpr uint kIdle = 1; // state of a channel

// By guard.
const QString kKeys[] = {QStringLiteral("LOCK:LockDrives"), QStringLiteral("LOCK:LockSpiral"),
                         QStringLiteral("LOCK:LockPult"), QStringLiteral("LOCK:LockShutdown")};

} // namespace

Interlocks::Interlocks(const Buttons& buttons)
    : m_trans(buttons.trans)
{
    addLock(kKeys[Drives], false, QStringLiteral("Нет вакуума или дверь не открыта"),
            QStringLiteral("Есть вакуум или дверь открыта"));
    addLock(kKeys[Spiral], false, QStringLiteral("Недостаточное давление в камере"),
            QStringLiteral("Давление в камере в норме"));
    addLock(kKeys[Pult], false, QStringLiteral("Приводы не включены"), QStringLiteral("Приводы включены"));
    addLock(kKeys[Shutdown], false, QStringLiteral("Вакуумная система не остановлена"),
            QStringLiteral("Вакуумная система остановлена"));

    const auto init = [](StateButton* button, const QString& title, bool oneWay, const QString& textOn,
                         const QString& textOff, Lock* guard) {
        button->init(title, oneWay, textOn, textOff, QString(), QString(), QStringLiteral("[ошибка]"), true);
        if (!guard)
            return;
        button->setLock(true, guard);
        button->addLock(true, guard);
    };
    const QString on = QStringLiteral("[включены]");
    const QString off = QStringLiteral("[выключены]");
    init(buttons.drives, QStringLiteral("Приводы"), false, on, off, lock(kKeys[Drives]));
    init(buttons.trans, QStringLiteral("Виртуальные\nоси"), false, on, off, nullptr);
    init(buttons.shutdown, QStringLiteral("Выключение\nсистемы"), true, {}, {}, lock(kKeys[Shutdown]));
    init(buttons.spiral, QString(), false, {}, {}, lock(kKeys[Spiral]));
    init(buttons.pult, QString(), false, {}, {}, lock(kKeys[Pult]));
}

Interlocks::~Interlocks()
{
    qDeleteAll(m_locks);
}

void Interlocks::addLock(const QString& key, bool perm, const QString& textLocked, const QString& textFree)
{
    const auto i = m_locks.find(key);
    Q_ASSERT(i == m_locks.end());
    m_locks.insert(i, key, new Lock(perm, textLocked, textFree));
}

Lock* Interlocks::lock(const QString& key) const
{
    const auto i = m_locks.find(key);
    Q_ASSERT(i != m_locks.end());
    return i.value();
}

void Interlocks::set(Guard guard, bool locked)
{
    lock(kKeys[guard])->setState(locked);
}

void Interlocks::setDrivesOn(bool on)
{
    m_drivesOn = on;
    set(Pult, !on);
    updateTrans();
}

void Interlocks::setChannel1State(uint state)
{
    m_channel1State = state;
    updateTrans();
}

void Interlocks::updateTrans()
{
    m_trans->setEnabled(m_drivesOn && m_channel1State == kIdle);
}

bool Interlocks::readyToMove() const
{
    return m_drivesOn && m_channel1State != DriveStatus::channelRuns;
}
