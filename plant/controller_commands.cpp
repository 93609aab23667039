// What the console may ask of the motion controller.

#include "plant/controller.h"

#include <QFile>
#include <QRegularExpression>

#include <cmath>

namespace plant {

namespace {

constexpr double referencePerUnit = 10000;  // REFERENCE( counts ten-thousandths
constexpr double wheelPerUnit = 1000;       // LIR( and HANDWHEEL( count thousandths
constexpr double clearingTime = 0.5;        // s
constexpr double homingTime = 1;            // s
constexpr qint64 longestProgram = 64 << 20; // bytes

// Events "limit changed" and "referenced"; by the order of Coord.
constexpr std::uint32_t minChanged = 161;
constexpr std::uint32_t maxChanged = 181;
constexpr std::uint32_t referenced[] = {201, 203, 204, 205, 206, 207, 208, 210};

constexpr double endlessRange = 1e6; // deg

// What the remote panel's selector turns to, by regime F1 to F3 and position X Y Z 4 5.
constexpr std::optional<AxisId> pultAxes[3][5] = {
    {AxisId::LX1, AxisId::LY, AxisId::A, AxisId::B, AxisId::C},
    {AxisId::LX1, AxisId::LY, AxisId::Z, AxisId::PHI, AxisId::D},
    {AxisId::LX1, AxisId::LY, std::nullopt, AxisId::U1, AxisId::V},
};

QString unknownAxis(const QString& name)
{
    return QStringLiteral("no axis \"%1\"").arg(name);
}

QString nameOf(AxisId axis)
{
    return QLatin1String(traits(axis).name);
}

// The C locale's number; empty for anything else, infinities included.
std::optional<double> number(const QString& text)
{
    bool ok = false;
    const double value = text.toDouble(&ok);
    return ok && std::isfinite(value) ? std::optional<double>(value) : std::nullopt;
}

} // namespace

const std::vector<MotionController::Entry>& MotionController::vocabulary()
{
    using C = MotionController;
    static const std::vector<Entry> entries = {
        {"MOVE", 2, &C::move},
        {"PARK", 1, &C::park},
        {"DEPARK", 1, &C::depark},
        {"CLEAR_ERROR", 1, &C::clearError},
        {"LIMIT_MAX", 2, &C::limitMax},
        {"LIMIT_MIN", 2, &C::limitMin},
        {"REFERENCE", 2, &C::reference},
        {"LIR", 3, &C::lir},
        {"HANDWHEEL", 1, &C::handwheel},
        {"EXEC_1", 1, &C::exec1},
        {"EXEC_2", 1, &C::exec2},
        {"EXEC_3", 1, &C::exec3},
        {"STOP_PRG", 0, &C::stopEverything},
        {"DRIVE ON", 0, &C::driveOn},
        {"DRIVE OFF", 0, &C::driveOff},
        {"TRANS ON", 0, &C::transOn},
        {"TRANS OFF", 0, &C::transOff},
        {"PULT ON", 0, &C::pultOnCommand},
        {"PULT OFF", 0, &C::pultOff},
        {"SPIRAL ON", 0, &C::spiralOn},
        {"SPIRAL OFF", 0, &C::spiralOff},
        {"ZOOMMER", 0, &C::buzzer},
    };
    return entries;
}

QString MotionController::command(const QString& text)
{
    const QString reason = execute(text);
    if (!reason.isEmpty())
        log(QStringLiteral("refused %1: %2").arg(text.left(200), reason));
    return reason;
}

QString MotionController::execute(const QString& text)
{
    static const QRegularExpression form(QStringLiteral("\\A([A-Z_0-9]+(?: [A-Z]+)?)(?:\\(([^()]*)\\))?\\z"));
    const auto match = form.match(text);
    if (!match.hasMatch())
        return QStringLiteral("malformed command");
    const bool bracketed = match.lastCapturedIndex() == 2;
    const Arguments arguments = bracketed ? match.captured(2).split(QLatin1Char(',')) : Arguments();
    for (const Entry& entry : vocabulary()) {
        if (match.captured(1) != QLatin1String(entry.name))
            continue;
        if (arguments.size() != entry.arguments)
            return QStringLiteral("takes %1 arguments").arg(entry.arguments);
        return (this->*entry.handler)(arguments);
    }
    return QStringLiteral("unknown command");
}

QString MotionController::move(const Arguments& a)
{
    const auto axis = axisByName(a[0]);
    const auto speed = number(a[1]);
    if (!axis)
        return unknownAxis(a[0]);
    if (!speed)
        return QStringLiteral("\"%1\" is no speed").arg(a[1]);
    if (*speed == 0) {
        m_axes.stop(*axis);
        return {};
    }
    const QString reason = movable(*axis);
    if (!reason.isEmpty())
        return reason;
    const double most = traits(*axis).maxSpeed;
    if (std::abs(*speed) > most)
        log(QStringLiteral("%1: speed cut to %2").arg(a[0]).arg(most));
    m_axes.jog(*axis, std::copysign(std::min(std::abs(*speed), most), *speed) / 60);
    return {};
}

QString MotionController::park(const Arguments& a)
{
    return setParked(a, true);
}

QString MotionController::depark(const Arguments& a)
{
    return setParked(a, false);
}

// The second drive of a pair follows its partner into the parking and out of it.
QString MotionController::setParked(const Arguments& a, bool on)
{
    std::optional<AxisId> axis;
    const QString reason = ownDrive(a[0], &axis);
    if (!reason.isEmpty())
        return reason;
    if (drivesLive())
        return QStringLiteral("the drives are on");
    m_drives.park(*axis, on);
    return {};
}

QString MotionController::clearError(const Arguments& a)
{
    const auto axis = axisByName(a[0]);
    if (!axis)
        return unknownAxis(a[0]);
    const QString reason = clear(*axis);
    if (reason.isEmpty())
        m_drives.showCommand(*axis, diagnostic::clearing, clearingTime);
    return reason;
}

QString MotionController::limitMax(const Arguments& a)
{
    return setLimit(a, true);
}

QString MotionController::limitMin(const Arguments& a)
{
    return setLimit(a, false);
}

QString MotionController::setLimit(const Arguments& a, bool max)
{
    const auto axis = axisByName(a[0]);
    const auto value = number(a[1]);
    if (!axis)
        return unknownAxis(a[0]);
    if (!value)
        return QStringLiteral("\"%1\" is no limit").arg(a[1]);
    const Coord coord = traits(*axis).coord;
    const CoordTraits& range = traits(coord);
    const double low = range.endless ? -endlessRange : range.min - hardSwitchMargin;
    const double high = range.endless ? endlessRange : range.max + hardSwitchMargin;
    if (*value < low || *value > high)
        return QStringLiteral("beyond the hard switches, %1 to %2").arg(low).arg(high);
    if (max ? *value <= m_axes.minLimit(coord) : *value >= m_axes.maxLimit(coord))
        return QStringLiteral("no room is left between the limits");
    if (max)
        m_axes.setMaxLimit(coord, *value);
    else
        m_axes.setMinLimit(coord, *value);
    raiseMessage((max ? maxChanged : minChanged) + static_cast<std::uint32_t>(coord));
    return {};
}

QString MotionController::reference(const Arguments& a)
{
    std::optional<AxisId> axis;
    const QString reason = ownDrive(a[0], &axis);
    if (!reason.isEmpty())
        return reason;
    bool ok = false;
    const double value = a[1].toInt(&ok) / referencePerUnit;
    if (!ok)
        return QStringLiteral("\"%1\" is no position").arg(a[1]);
    // A drive that holds its position cannot take another one for it.
    if (drivesLive())
        return QStringLiteral("the drives are on");
    const Coord coord = traits(*axis).coord;
    const CoordTraits& range = traits(coord);
    if (value < range.min - hardSwitchMargin || value > range.max + hardSwitchMargin)
        return QStringLiteral("beyond the hard switches");
    m_axes.define(*axis, value);
    m_drives.showCommand(*axis, diagnostic::homing, homingTime);
    raiseMessage(referenced[static_cast<std::size_t>(coord)]);
    return {};
}

QString MotionController::lir(const Arguments& a)
{
    const auto axis = axisByName(a[0]);
    const auto distance = number(a[1]);
    const auto speed = number(a[2]);
    if (!axis)
        return unknownAxis(a[0]);
    if (!distance || !speed)
        return QStringLiteral("no number");
    return increment(*axis, *distance / wheelPerUnit, *speed);
}

QString MotionController::handwheel(const Arguments& a)
{
    const auto distance = number(a[0]);
    if (!distance)
        return QStringLiteral("\"%1\" is no distance").arg(a[0]);
    if (!m_cabinet.pultOn)
        return QStringLiteral("the remote panel is off");
    const auto axis = pultAxes[m_cabinet.pultRegime - 1][m_cabinet.pultSelector];
    if (!axis)
        return QStringLiteral("the panel's selector stands on no axis");
    return increment(*axis, *distance / wheelPerUnit, traits(*axis).maxSpeed);
}

QString MotionController::increment(AxisId axis, double distance, double speed)
{
    const QString reason = movable(axis);
    if (!reason.isEmpty())
        return reason;
    if (speed <= 0)
        return QStringLiteral("no motion at speed %1").arg(speed);
    if (m_axes.jogging(axis))
        return QStringLiteral("%1 is being jogged").arg(nameOf(axis));
    m_axes.moveBy(axis, distance, std::min(speed, traits(axis).maxSpeed) / 60);
    return {};
}

QString MotionController::exec(int channel, const QString& path)
{
    const auto i = static_cast<std::size_t>(channel - 1);
    if (!path.startsWith(QLatin1String("/programs/")) || path.contains(QLatin1String("..")))
        return QStringLiteral("programs lie under /programs/");
    if (!m_drives.on()) {
        raiseMessage(event::programWithoutDrives);
        return QStringLiteral("the drives are off");
    }
    if (busy(channel))
        return QStringLiteral("channel %1 runs a program").arg(channel);
    QFile file(m_root + path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > longestProgram) {
        raiseError(cncerror::noProgramFile);
        return QStringLiteral("the program cannot be read");
    }
    // Programs and hands never move an axis together: the channel's axes come to rest first.
    for (const AxisId axis : allAxes)
        if (traits(axis).channel == channel)
            m_axes.stop(axis);
    m_pending[i] = Start{path, QString::fromUtf8(file.readAll())};
    return {};
}

QString MotionController::stopEverything(const Arguments&)
{
    stopPrograms();
    m_axes.stopAll();
    return {};
}

QString MotionController::driveOn(const Arguments&)
{
    const QString reason = switchOnRefusal();
    if (reason.isEmpty())
        m_drives.switchOn();
    return reason;
}

QString MotionController::driveOff(const Arguments&)
{
    cutDrives(QStringLiteral("command"));
    return {};
}

QString MotionController::transOn(const Arguments&)
{
    return switchTransformed(true);
}

QString MotionController::transOff(const Arguments&)
{
    return switchTransformed(false);
}

QString MotionController::switchTransformed(bool on)
{
    if (!m_drives.on())
        return QStringLiteral("the drives are off");
    if (channelState(1) != ChannelState::Idle)
        return QStringLiteral("channel 1 is not idle");
    for (const AxisId joint : {AxisId::A, AxisId::B, AxisId::C}) {
        const QString reason = powered(joint);
        if (on && !reason.isEmpty())
            return reason;
    }
    for (const AxisId axis : {AxisId::A, AxisId::B, AxisId::C, AxisId::X, AxisId::Z, AxisId::PHI})
        m_axes.stop(axis);
    m_transPending = on;
    return {};
}

QString MotionController::pultOnCommand(const Arguments&)
{
    if (!m_drives.on())
        return QStringLiteral("the drives are off");
    m_cabinet.pultOn = true;
    return {};
}

QString MotionController::pultOff(const Arguments&)
{
    m_cabinet.pultOn = false;
    return {};
}

QString MotionController::spiralOn(const Arguments&)
{
    if (!m_cabinet.vacuum)
        return QStringLiteral("no vacuum in the chamber");
    if (!m_cabinet.breakers.has(Breaker::QF23))
        return QStringLiteral("QF23 is open");
    setLight(Light::Spiral, true);
    return {};
}

QString MotionController::spiralOff(const Arguments&)
{
    setLight(Light::Spiral, false);
    return {};
}

QString MotionController::buzzer(const Arguments&)
{
    log(QStringLiteral("the buzzer sounds"));
    return {};
}

QString MotionController::ownDrive(const QString& name, std::optional<AxisId>* axis) const
{
    *axis = axisByName(name);
    if (!*axis)
        return unknownAxis(name);
    if (isVirtual(**axis))
        return QStringLiteral("%1 has no drive").arg(name);
    if (**axis == AxisId::LX2 || **axis == AxisId::U2)
        return QStringLiteral("%1 follows the first drive of its pair").arg(name);
    return {};
}

QString MotionController::movable(AxisId axis) const
{
    if (!m_drives.on())
        return QStringLiteral("the drives are off");
    const QString reason = powered(axis);
    if (!reason.isEmpty())
        return reason;
    if (m_transPending && (isVirtual(axis) || isArmJoint(axis)))
        return QStringLiteral("the virtual axes are being switched");
    if (isVirtual(axis) && !m_axes.transformed())
        return QStringLiteral("the virtual axes are off");
    if (isArmJoint(axis) && m_axes.transformed())
        return QStringLiteral("%1 belongs to the virtual axes now").arg(nameOf(axis));
    if (busy(traits(axis).channel) || claimedByOther(0, axis))
        return QStringLiteral("a program moves %1").arg(nameOf(axis));
    return {};
}

bool MotionController::busy(int channel) const
{
    const ChannelState state = channelState(channel);
    return state == ChannelState::Running || state == ChannelState::Loading;
}

QString MotionController::powered(AxisId axis) const
{
    const auto check = [this](AxisId drive) {
        if (m_drives.parked(drive))
            return QStringLiteral("%1 is parked").arg(nameOf(drive));
        return m_drives.faulted(drive) ? QStringLiteral("%1 has a fault").arg(nameOf(drive)) : QString();
    };
    if (!isVirtual(axis))
        return check(axis);
    for (const AxisId joint : {AxisId::A, AxisId::B, AxisId::C}) {
        const QString reason = check(joint);
        if (!reason.isEmpty())
            return reason;
    }
    return {};
}

} // namespace plant
