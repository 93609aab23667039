#include "plant/controller.h"

#include <algorithm>
#include <cmath>

namespace plant {

namespace {

constexpr double sameplace = 0.001;    // mm or deg: an axis that is there already needs no permission
constexpr double maxBeamCurrent = 800; // mA
constexpr double maxFocusCurrent = 1500;

constexpr AxisId armJoints[] = {AxisId::A, AxisId::B, AxisId::C};
constexpr AxisId armAxes[] = {AxisId::A, AxisId::B, AxisId::C, AxisId::X, AxisId::Z, AxisId::PHI};

} // namespace

MotionController::MotionController(const QString& root, std::uint32_t seed)
    : m_root(root)
    , m_drives(seed)
    , m_nc(*this)
{
    m_lastState.fill(ChannelState::Idle);
}

void MotionController::step(double dt)
{
    m_time += dt;
    m_drives.step(dt);
    m_cabinet.step(dt);
    startPending();
    m_nc.step(dt);
    if (m_overtravel) {
        log(QStringLiteral("a program left the limits: all programs stopped"));
        tellLimit(*m_overtravel);
        m_overtravel.reset();
        stopPrograms();
    }
    if (m_refusedLimit) {
        tellLimit(*m_refusedLimit);
        m_refusedLimit.reset();
    }
    for (const LimitHit& hit : m_axes.step(dt))
        tellLimit(hit);
    if (m_transPending && std::none_of(std::begin(armAxes), std::end(armAxes),
                                       [this](AxisId axis) { return m_axes.moving(axis); })) {
        m_axes.setTransformed(*m_transPending);
        m_transPending.reset();
    }
    watchChannels();
}

StatusPack MotionController::status() const
{
    StatusPack pack{};
    pack.signature = frameSignature;
    for (int channel = 1; channel <= 3; ++channel) {
        pack.channelState[channel - 1] = static_cast<std::uint32_t>(channelState(channel));
        pack.channelMode[channel - 1] = m_nc.mode(channel);
    }
    for (int i = 0; i < axisCount; ++i)
        pack.position[i] = static_cast<float>(m_axes.position(static_cast<AxisId>(i)));
    const bool supplied = m_cabinet.breakers.has(Breaker::QF28);
    for (int i = 0; i < driveCount; ++i) {
        const auto axis = static_cast<AxisId>(i);
        pack.driveState[i] = supplied ? m_drives.code(axis, m_axes.jogging(axis)) : diagnostic::none;
    }
    pack.virtualState = virtualState();
    for (int i = 0; i < coordCount; ++i) {
        const auto coord = static_cast<Coord>(i);
        pack.minLimit[i] = static_cast<float>(m_axes.minLimit(coord));
        pack.maxLimit[i] = static_cast<float>(m_axes.maxLimit(coord));
        pack.minFlag[i] = m_axes.atMin(coord);
        pack.maxFlag[i] = m_axes.atMax(coord);
    }
    pack.pointNo = m_pointNo;
    pack.drivesOn = m_drives.on();
    pack.transOn = m_axes.transformed();
    pack.axisMoving = m_axisMoving;
    m_messages.fill(pack);
    m_cabinet.fill(pack);
    return pack;
}

std::uint32_t MotionController::virtualState() const
{
    const auto anyJoint = [](auto test) {
        return std::any_of(std::begin(armJoints), std::end(armJoints), test);
    };
    if (anyJoint([this](AxisId axis) { return m_drives.faulted(axis); }))
        return 3;
    if (!m_drives.on())
        return 0;
    if (anyJoint([this](AxisId axis) { return m_drives.warned(axis); }))
        return 4;
    return m_axes.transformed() ? 2 : 1;
}

ChannelState MotionController::channelState(int channel) const
{
    const auto i = static_cast<std::size_t>(channel - 1);
    return m_pending[i] ? ChannelState::Loading : m_nc.state(channel);
}

void MotionController::consoleLost()
{
    if (!m_axes.anyMoving())
        return;
    m_axes.stopAll();
    log(QStringLiteral("console lost: jogs stopped"));
}

QString MotionController::setDoor(bool open)
{
    if (open && m_cabinet.vacuum)
        return QStringLiteral("the vacuum holds the door");
    if (open && m_cabinet.doorHold)
        return QLatin1String(m_cabinet.doorHold);
    if (m_cabinet.doorStandsOrGoes(open))
        return {};
    m_cabinet.startDoor(open);
    if (!m_cabinet.drivesAllowed() && drivesLive()) {
        raiseMessage(event::doorCloses);
        cutDrives(QStringLiteral("the door closes"));
    }
    return {};
}

QString MotionController::setVacuum(bool present)
{
    if (present == m_cabinet.vacuum)
        return {};
    if (present && m_cabinet.door != Door::Closed)
        return QStringLiteral("the door is not closed");
    m_cabinet.vacuum = present;
    if (!m_cabinet.drivesAllowed() && drivesLive()) {
        raiseMessage(event::noVacuum);
        cutDrives(QStringLiteral("no vacuum"));
    }
    if (!present)
        setLight(Light::Spiral, false);
    return {};
}

void MotionController::setPhases(bool healthy)
{
    m_cabinet.phases = healthy;
    if (!healthy)
        cutDrives(QStringLiteral("phases"));
}

void MotionController::setBreaker(Breaker breaker, bool closed)
{
    m_cabinet.breakers.set(breaker, closed);
    if (closed)
        return;
    if (breaker == Breaker::QF23) {
        setLight(Light::Spiral, false);
        return;
    }
    const bool live = drivesLive();
    if (live && breaker <= Breaker::QF18)
        for (int i = 0; i < driveCount; ++i) {
            const auto axis = static_cast<AxisId>(i);
            if (!m_drives.parked(axis) && !breakersClosed(axis))
                m_drives.setTrouble(axis, diagnostic::underVoltage);
        }
    if (live)
        cutDrives(QStringLiteral("a breaker opened"));
}

void MotionController::setAlarm(AlarmButton button, bool pressed)
{
    m_cabinet.alarm.set(button, pressed);
    if (pressed && drivesLive()) {
        raiseMessage(event::emergency);
        cutDrives(QStringLiteral("emergency stop"));
    }
}

void MotionController::setPult(std::uint32_t regime, int selector)
{
    m_cabinet.pultRegime = regime;
    m_cabinet.pultSelector = selector;
}

QString MotionController::trip(AxisId axis, std::int32_t code)
{
    if (isVirtual(axis))
        return QStringLiteral("%1 has no drive").arg(QLatin1String(traits(axis).name));
    if (code < diagnostic::firstWarning || code > 0xFFFFF)
        return QStringLiteral("the code of a warning or a fault begins with E or F");
    m_drives.setTrouble(axis, code);
    if (!m_drives.faulted(axis))
        return {};
    const bool live = drivesLive();
    if (live && code == diagnostic::overCurrent)
        raiseMessage(event::overload + static_cast<std::uint32_t>(traits(axis).coord) + 1);
    if (live)
        cutDrives(QStringLiteral("fault of drive ") + QLatin1String(traits(axis).name));
    return {};
}

QString MotionController::clear(AxisId axis)
{
    if (isVirtual(axis))
        return QStringLiteral("%1 has no drive").arg(QLatin1String(traits(axis).name));
    if (m_drives.trouble(axis) == diagnostic::underVoltage && !breakersClosed(axis))
        return QStringLiteral("its breaker is still open");
    m_drives.setTrouble(axis, 0);
    return {};
}

QString MotionController::placeAxis(AxisId axis, double value)
{
    if (m_axes.moving(axis) || claimedByOther(0, axis))
        return QStringLiteral("it is moving");
    if (m_axes.transformed() && isArmJoint(axis))
        return QStringLiteral("it belongs to the virtual axes now");
    const CoordTraits& range = traits(traits(axis).coord);
    if (!range.endless && (value < range.min - hardSwitchMargin || value > range.max + hardSwitchMargin))
        return QStringLiteral("beyond its hard switch");
    return m_axes.place(axis, value) ? QString() : QStringLiteral("out of the arm's reach");
}

void MotionController::raiseMessage(std::uint32_t number)
{
    if (!m_messages.raise(number))
        log(QStringLiteral("message %1 lost: too many at once").arg(number));
}

QString MotionController::summary() const
{
    static const char* const doors[] = {"closed", "open", "closing", "opening"};
    const auto yes = [](bool on) { return on ? QStringLiteral("on") : QStringLiteral("off"); };
    QStringList parts = {
        QStringLiteral("door %1").arg(QLatin1String(doors[static_cast<int>(m_cabinet.door)])),
        QStringLiteral("vacuum %1").arg(yes(m_cabinet.vacuum)),
        QStringLiteral("key %1").arg(yes(m_cabinet.key)), QStringLiteral("drives %1").arg(yes(m_drives.on())),
        QStringLiteral("virtual %1").arg(yes(m_axes.transformed()))};
    for (int channel = 1; channel <= 3; ++channel)
        parts << QStringLiteral("channel%1 %2")
                     .arg(channel)
                     .arg(static_cast<std::uint32_t>(channelState(channel)));
    for (const AxisId axis : allAxes)
        parts << QStringLiteral("%1 %2")
                     .arg(QLatin1String(traits(axis).name))
                     .arg(m_axes.position(axis), 0, 'f', 2);
    parts << QStringLiteral("IR %1").arg(m_beamCurrent, 0, 'f', 1)
          << QStringLiteral("IW %1").arg(m_focusCurrent, 0, 'f', 0)
          << QStringLiteral("time %1").arg(m_time, 0, 'f', 0);
    return parts.join(QStringLiteral(", "));
}

QString MotionController::switchOnRefusal() const
{
    if (!m_cabinet.key)
        return QStringLiteral("the key switch is off");
    if (!m_cabinet.drivesAllowed())
        return QStringLiteral("no vacuum or door not open");
    if (m_cabinet.alarm.word())
        return QStringLiteral("an emergency button or a rope is pulled");
    if (!m_cabinet.phases)
        return QStringLiteral("the phases are wrong");
    if (!m_cabinet.breakers.has(Breaker::QF28))
        return QStringLiteral("QF28 is open");
    for (int i = 0; i < driveCount; ++i) {
        const auto axis = static_cast<AxisId>(i);
        if (m_drives.parked(axis))
            continue;
        if (!breakersClosed(axis))
            return QStringLiteral("the breaker of %1 is open").arg(QLatin1String(traits(axis).name));
        if (m_drives.faulted(axis))
            return QStringLiteral("%1 has a fault").arg(QLatin1String(traits(axis).name));
    }
    return {};
}

bool MotionController::breakersClosed(AxisId axis) const
{
    return m_cabinet.breakers.has(static_cast<Breaker>(axis)) && m_cabinet.breakers.has(Breaker::QF18);
}

void MotionController::cutDrives(const QString& why)
{
    if (!drivesLive())
        return;
    stopPrograms();
    m_axes.setTransformed(false);
    m_transPending.reset();
    m_cabinet.pultOn = false;
    m_drives.switchOff();
    log(QStringLiteral("drives off: ") + why);
}

void MotionController::stopPrograms()
{
    m_nc.stopAll();
    m_pending.fill(std::nullopt);
}

void MotionController::tellLimit(const LimitHit& hit)
{
    const auto i = static_cast<std::uint32_t>(hit.coord);
    const bool arm = hit.coord >= Coord::X;
    const std::uint32_t family = arm ? (hit.positive ? 151 - 8 : 156 - 8) : (hit.positive ? 131 : 141);
    raiseMessage(family + i);
    log(QStringLiteral("%1 at its %2 soft limit")
            .arg(QLatin1String(traits(hit.coord).name),
                 hit.positive ? QStringLiteral("upper") : QStringLiteral("lower")));
}

bool MotionController::standing(int channel) const
{
    return std::none_of(allAxes.begin(), allAxes.end(),
                        [&](AxisId axis) { return traits(axis).channel == channel && m_axes.moving(axis); });
}

void MotionController::startPending()
{
    for (int channel = 1; channel <= 3; ++channel) {
        const auto i = static_cast<std::size_t>(channel - 1);
        if (!m_pending[i] || !standing(channel))
            continue;
        const Start start = *m_pending[i];
        m_pending[i].reset();
        for (int& owner : m_owner)
            owner = owner == channel ? 0 : owner;
        if (m_nc.start(channel, start.text))
            log(QStringLiteral("channel %1 runs %2").arg(channel).arg(start.path));
    }
}

void MotionController::watchChannels()
{
    for (int channel = 1; channel <= 3; ++channel) {
        ChannelState& last = m_lastState[static_cast<std::size_t>(channel - 1)];
        const ChannelState now = m_nc.state(channel);
        if (now == ChannelState::Error && last != ChannelState::Error)
            raiseError(cncerror::programStopped);
        last = now;
    }
}

std::optional<double> MotionController::position(int channel, const QString& word) const
{
    if (const double* beam = beamAxis(channel, word))
        return *beam;
    if (const auto axis = axisOfWord(channel, word))
        return m_axes.position(*axis);
    return std::nullopt;
}

QString MotionController::refusal(int channel, const QString& word, double target) const
{
    if (const double* beam = beamAxis(channel, word)) {
        const double most = beam == &m_beamCurrent ? maxBeamCurrent : maxFocusCurrent;
        return target >= 0 && target <= most ? QString() : QStringLiteral("beyond 0 to %1 mA").arg(most);
    }
    const auto axis = axisOfWord(channel, word);
    if (!axis)
        return QStringLiteral("no such axis");
    const QString name = QLatin1String(traits(*axis).name);
    if (!m_drives.on())
        return QStringLiteral("the drives are off");
    if (std::abs(target - m_axes.position(*axis)) < sameplace)
        return {};
    const QString reason = powered(*axis);
    if (!reason.isEmpty())
        return reason;
    if (isVirtual(*axis) && !m_axes.transformed())
        return QStringLiteral("%1: the virtual axes are off").arg(name);
    if (isArmJoint(*axis) && m_axes.transformed())
        return QStringLiteral("%1 belongs to the virtual axes now").arg(name);
    if (m_axes.moving(*axis))
        return QStringLiteral("%1 is moved by hand").arg(name);
    if (claimedByOther(channel, *axis))
        return QStringLiteral("%1 belongs to channel %2")
            .arg(name)
            .arg(m_owner[static_cast<std::size_t>(*axis)]);
    if (const auto hit = m_axes.beyond(*axis, target)) {
        m_refusedLimit = hit;
        return QStringLiteral("%1 beyond its soft limit").arg(name);
    }
    return {};
}

void MotionController::setPosition(int channel, const QString& word, double value)
{
    if (const double* beam = beamAxis(channel, word)) {
        (beam == &m_beamCurrent ? m_beamCurrent : m_focusCurrent) = value;
        return;
    }
    const auto axis = axisOfWord(channel, word);
    if (!axis || !m_drives.on())
        return;
    m_owner[static_cast<std::size_t>(*axis)] = channel;
    const double now = m_axes.position(*axis);
    const auto hit = m_axes.beyond(*axis, value);
    // An axis that stands beyond its limit may come back, but go no further.
    if (hit && (hit->positive ? value > now : value < now))
        m_overtravel = hit;
    else if (std::optional<LimitHit> joint; !m_axes.place(*axis, value, &joint))
        m_overtravel = joint ? *joint : LimitHit{traits(*axis).coord, value > now};
}

void MotionController::setVariable(int channel, const QString& name, const QString& value)
{
    const QString key = name.toUpper();
    m_variables.insert(key, value);
    if (key == QLatin1String("@1")) {
        bool ok = false;
        const std::uint32_t number = value.toUInt(&ok);
        if (ok)
            m_pointNo = number;
        else
            log(QStringLiteral("channel %1: \"%2\" is no point number").arg(channel).arg(value));
    } else if (key == QLatin1String("@AXISMOVING?")) {
        m_axisMoving = value.compare(QLatin1String("TRUE"), Qt::CaseInsensitive) == 0;
    }
}

void MotionController::coordinateSystems(int channel, const QString& systems)
{
    m_inSpace[static_cast<std::size_t>(channel - 1)] = systems != QLatin1String("0,2");
}

double MotionController::rapidRate(int channel, const QString& word) const
{
    const auto axis = axisOfWord(channel, word);
    return axis ? traits(*axis).maxSpeed : 0;
}

// The words of a program. While a coordinate system is switched on (COORD) a program describes the seam in
// space: its x and y are the carriage LX and the cross slide LY, its z the virtual axis Z. Without one it
// speaks of the machine's axes by their own names, where X and Y are the two virtual axes of the arm's plane,
// X and Z. Words carry no case.
std::optional<AxisId> MotionController::axisOfWord(int channel, const QString& word) const
{
    if (channel == 3)
        return std::nullopt;
    const QString name = word.toUpper();
    const bool inSpace = m_inSpace[static_cast<std::size_t>(channel - 1)];
    if (name == QLatin1String("X"))
        return inSpace ? AxisId::LX1 : AxisId::X;
    if (name == QLatin1String("Y"))
        return inSpace ? AxisId::LY : AxisId::Z;
    return axisByName(name);
}

const double* MotionController::beamAxis(int channel, const QString& word) const
{
    if (channel != 3)
        return nullptr;
    if (word.compare(QLatin1String("IR"), Qt::CaseInsensitive) == 0)
        return &m_beamCurrent;
    return word.compare(QLatin1String("IW"), Qt::CaseInsensitive) == 0 ? &m_focusCurrent : nullptr;
}

bool MotionController::claimedByOther(int channel, AxisId axis) const
{
    const int owner = m_owner[static_cast<std::size_t>(axis)];
    return owner != 0 && owner != channel && m_nc.state(owner) == ChannelState::Running;
}

void MotionController::log(const QString& text) const
{
    if (m_log)
        m_log(text);
}

} // namespace plant
