#include "plant/ncchannel.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace plant {

namespace {

// A program that runs in a circle without using time may execute so many statements in a step.
constexpr int maxStatementsInStep = 10000;

// Moves shorter than this (mm, deg, mA) are no moves: positions are printed with two decimals.
constexpr double noDistance = 1e-4;

bool isBeamAxis(const QString& word)
{
    return word == QLatin1String("IR") || word == QLatin1String("IW");
}

QStringList planeAxes(int plane)
{
    switch (plane) {
    case 1:
        return {"X", "Z", "Y"};
    case 2:
        return {"Y", "Z", "X"};
    default:
        return {"X", "Y", "Z"};
    }
}

double wrapped(double degrees)
{
    const double rest = std::fmod(degrees, 360.0);
    const double positive = rest < 0 ? rest + 360 : rest;
    return positive < 360 ? positive : 0; // a hair below 0 rounds up to 360
}

} // namespace

void NcCommon::set(int event, double time)
{
    m_set.insert(event);
    bool taken = false;
    const auto waiting = m_waiting;
    for (auto i = waiting.cbegin(); i != waiting.cend(); ++i) {
        if (i.value().event != event)
            continue;
        taken = taken || i.value().take;
        m_waiting.remove(i.key());
        i.key()->goOn(time);
    }
    if (taken)
        m_set.remove(event);
}

void NcCommon::wait(NcChannel* channel, int event, bool take)
{
    m_waiting.insert(channel, {event, take});
}

void NcCommon::releaseAll(int channel)
{
    for (auto i = m_owner.begin(); i != m_owner.end();)
        i = i.value() == channel ? m_owner.erase(i) : std::next(i);
}

NcChannel::NcChannel(int number, NcHost& host, NcCommon& common)
    : m_number(number)
    , m_host(host)
    , m_common(common)
{}

bool NcChannel::load(const QString& text)
{
    NcProgram program = parseNcProgram(text, m_number);
    m_program = std::move(program.statements);
    m_next = 0;
    m_line = 0;
    m_error.clear();
    m_relative = false;
    m_plane = -1;
    m_ratioOfV = 0;
    m_eventsSeenAt = 0;
    m_work = {};
    m_state = ChannelState::Loading;
    m_host.coordinateSystems(m_number, QStringLiteral("0,2"));
    if (!program.error.isEmpty()) {
        fail(program.errorLine, program.error);
        return false;
    }
    return checkAxes();
}

bool NcChannel::checkAxes()
{
    for (const NcStatement& statement : qAsConst(m_program)) {
        QStringList words;
        for (const NcWord& word : statement.words)
            words.append(word.axis);
        if (statement.kind == Kind::TakeAxis || statement.kind == Kind::ReleaseAxis)
            words.append(statement.name);
        for (const QString& word : qAsConst(words)) {
            if (!m_host.position(m_number, word)) {
                fail(statement.line, QStringLiteral("no axis '%1' in this channel").arg(word));
                return false;
            }
        }
    }
    return true;
}

void NcChannel::stop()
{
    if (m_state == ChannelState::Idle)
        return;
    const bool cutShort = running();
    const int line = std::exchange(m_line, 0);
    leave(ChannelState::Reset);
    // Last of all: the host may stop every channel from within the report.
    if (cutShort)
        m_host.report(QStringLiteral("channel %1: stopped at line %2").arg(m_number).arg(line));
}

void NcChannel::beginStep(double end, double dt)
{
    m_stepEnd = end;
    m_stepLength = dt;
    m_statements = 0;
    m_moved = false;
    if (m_state == ChannelState::Reset) {
        m_state = ChannelState::Idle;
    } else if (m_state == ChannelState::Loading) {
        m_state = ChannelState::Running;
        m_clock = end;
    }
}

bool NcChannel::ready() const
{
    return running() && m_waitingFor == 0 && m_clock < m_stepEnd;
}

void NcChannel::run()
{
    if (m_work.active) {
        work();
        return;
    }
    if (++m_statements > maxStatementsInStep) {
        m_clock = m_stepEnd;
        return;
    }
    if (m_next == m_program.size()) {
        fail(m_line, QStringLiteral("program ends without M30"));
        return;
    }
    const NcStatement statement = m_program.at(m_next);
    m_line = statement.line;
    ++m_next;
    execute(statement);
}

void NcChannel::goOn(double time)
{
    m_waitingFor = 0;
    m_clock = std::max(m_clock, time);
}

void NcChannel::execute(const NcStatement& statement)
{
    if (statement.relative)
        m_relative = *statement.relative;

    switch (statement.kind) {
    case Kind::Channel:
    case Kind::Distances:
    case Kind::Wait: // a block begins only after the one before has arrived, so there is nothing to wait for
        break;
    case Kind::TakeAxis:
    case Kind::ReleaseAxis:
        executeBeamAxis(statement);
        break;
    case Kind::Rapid:
    case Kind::Line:
    case Kind::Arc:
        startMotion(statement);
        break;
    case Kind::Plane:
        m_plane = statement.number;
        break;
    case Kind::PlaneEnd:
        m_plane = -1;
        break;
    case Kind::Dwell:
        m_work = {};
        begin(*statement.feed);
        break;
    case Kind::Coordinates:
        m_host.coordinateSystems(m_number, statement.name);
        break;
    case Kind::Ratio:
        m_ratioOfV = statement.words.first().value;
        break;
    case Kind::RatioEnd:
        m_ratioOfV = 0;
        break;
    case Kind::SetEvent:
    case Kind::WaitEvent:
    case Kind::WaitResetEvent:
        executeEvent(statement);
        break;
    case Kind::ResetEvents:
        resetEvents();
        break;
    case Kind::Jump:
        m_next = statement.jumpTo;
        break;
    case Kind::End:
        leave(ChannelState::Idle);
        m_line = 0;
        m_host.report(QStringLiteral("channel %1: end of program").arg(m_number));
        break;
    case Kind::Variable:
        m_host.setVariable(m_number, statement.name, statement.value);
        break;
    }
}

void NcChannel::executeEvent(const NcStatement& statement)
{
    const int event = statement.number;
    if (statement.kind == Kind::SetEvent) {
        m_eventsSeenAt = m_clock + m_stepLength;
        m_common.set(event, m_clock);
        return;
    }
    const bool take = statement.kind == Kind::WaitResetEvent;
    if (!m_common.isSet(event)) {
        m_waitingFor = event;
        m_common.wait(this, event, take);
    } else if (take) {
        m_common.reset(event);
    }
}

void NcChannel::resetEvents()
{
    // What this channel has set stands long enough for every other one to have seen it.
    m_clock = std::max(m_clock, m_eventsSeenAt);
    if (m_clock < m_stepEnd)
        m_common.resetAll();
    else
        --m_next;
}

void NcChannel::executeBeamAxis(const NcStatement& statement)
{
    const int owner = m_common.owner(statement.name);
    const bool take = statement.kind == Kind::TakeAxis;
    if (take && owner != 0 && owner != m_number)
        fail(m_line, QStringLiteral("%1 is held by channel %2").arg(statement.name).arg(owner));
    else if (!take && owner != m_number)
        fail(m_line, QStringLiteral("%1 was not taken").arg(statement.name));
    else if (take)
        m_common.take(statement.name, m_number);
    else
        m_common.release(statement.name);
}

void NcChannel::startMotion(const NcStatement& statement)
{
    m_work = {};
    for (const NcWord& word : statement.words) {
        if (!prepareAxis(word))
            return;
    }
    if (statement.kind == Kind::Arc && !prepareArc(statement))
        return;
    if (!mayStart())
        return;
    if (statement.kind == Kind::Rapid) {
        begin(rapidTime());
        return;
    }

    double length = 0;
    if (!pathLength(statement, &length))
        return;
    begin(length > 0 ? length / *statement.feed * 60 : 0);
}

bool NcChannel::prepareAxis(const NcWord& word)
{
    const std::optional<double> position = m_host.position(m_number, word.axis);
    if (!position) {
        fail(m_line, QStringLiteral("no axis '%1' in this channel").arg(word.axis));
        return false;
    }
    if (isBeamAxis(word.axis) && m_common.owner(word.axis) != m_number) {
        fail(m_line, QStringLiteral("%1 was not taken").arg(word.axis));
        return false;
    }
    AxisMove axis;
    axis.word = word.axis;
    axis.start = *position;
    axis.target = m_relative ? axis.start + word.value : word.value;
    axis.delta = axis.target - axis.start;
    axis.cyclic = m_host.cyclic(m_number, word.axis);
    axis.arcCoordinate = -1;
    // Exactly half a turn goes the way that the numbers go.
    if (axis.cyclic && !m_relative && std::abs(axis.delta) > 180)
        axis.delta -= 360 * std::round(axis.delta / 360);
    m_work.axes.append(axis);
    return true;
}

bool NcChannel::prepareArc(const NcStatement& statement)
{
    if (m_plane < 0) {
        fail(m_line, QStringLiteral("arc without a plane"));
        return false;
    }
    const QStringList plane = planeAxes(m_plane);
    completePlane(plane);

    QPointF from;
    QPointF to;
    for (AxisMove& axis : m_work.axes) {
        axis.arcCoordinate = plane.indexOf(axis.word);
        if (axis.arcCoordinate == 2)
            axis.arcCoordinate = -1;
        if (axis.arcCoordinate == 0) {
            from.setX(axis.start);
            to.setX(axis.target);
        } else if (axis.arcCoordinate == 1) {
            from.setY(axis.start);
            to.setY(axis.target);
        }
    }
    QString error;
    m_work.arc = arcByRadius(from, to, *statement.radius, statement.clockwise, &error);
    if (!error.isEmpty())
        fail(m_line, error);
    return error.isEmpty();
}

// A coordinate of the plane that the block does not name ends where it began.
void NcChannel::completePlane(const QStringList& plane)
{
    for (int i = 0; i < 2; ++i) {
        const QString& word = plane.at(i);
        const bool named = std::any_of(m_work.axes.cbegin(), m_work.axes.cend(),
                                       [&](const AxisMove& axis) { return axis.word == word; });
        const std::optional<double> position = m_host.position(m_number, word);
        if (!named && position)
            m_work.axes.append({word, *position, 0, *position, false, -1});
    }
}

// The length that F is counted over: for beam axes the vector of both currents; for V with its ratio the
// circumference; for an arc its length in the plane, the third coordinate keeping pace with it; else the
// vector of all axes named.
bool NcChannel::pathLength(const NcStatement& statement, double* length)
{
    double squares = 0;
    for (const AxisMove& axis : qAsConst(m_work.axes)) {
        const bool ratio = axis.word == QLatin1String("V") && m_ratioOfV > 0;
        const double way = axis.delta * (ratio ? m_ratioOfV : 1);
        squares += way * way;
    }
    const double arcLength = statement.kind == Kind::Arc ? m_work.arc.length() : 0;
    *length = arcLength > noDistance ? arcLength : std::sqrt(squares);
    if (*length <= noDistance) {
        *length = 0;
        return true;
    }
    if (!statement.feed || *statement.feed <= 0) {
        fail(m_line, QStringLiteral("motion without feed"));
        return false;
    }
    return true;
}

bool NcChannel::mayStart()
{
    for (const AxisMove& axis : qAsConst(m_work.axes)) {
        const bool moves = axis.delta != 0 || (axis.arcCoordinate >= 0 && m_work.arc.radius > 0);
        const QString refusal = moves ? m_host.refusal(m_number, axis.word, axis.target) : QString();
        if (!refusal.isEmpty()) {
            fail(m_line, refusal);
            return false;
        }
    }
    return true;
}

double NcChannel::rapidTime() const
{
    double minutes = 0;
    for (const AxisMove& axis : m_work.axes) {
        const double rate = m_host.rapidRate(m_number, axis.word);
        if (rate > 0)
            minutes = std::max(minutes, std::abs(axis.delta) / rate);
    }
    return minutes * 60;
}

void NcChannel::begin(double duration)
{
    m_work.active = true;
    m_work.since = m_clock;
    m_work.duration = duration;
}

void NcChannel::work()
{
    // The host may stop or reload the channel while its axes are set: go on with a copy.
    const Work now = m_work;
    const double end = now.since + now.duration;
    const bool arrives = end <= m_stepEnd;
    const double part = arrives ? 1 : (m_stepEnd - now.since) / now.duration;
    for (const AxisMove& axis : now.axes) {
        const double value = positionAt(axis, part);
        const QString refusal = m_host.refusal(m_number, axis.word, value);
        const bool moves = axis.delta != 0 || axis.arcCoordinate >= 0;
        if (moves && !refusal.isEmpty()) {
            fail(m_line, refusal);
            return;
        }
        m_host.setPosition(m_number, axis.word, value);
        if (!running())
            return;
    }
    m_moved = m_moved || (!now.axes.isEmpty() && now.duration > 0);
    m_clock = arrives ? end : m_stepEnd;
    m_work.active = !arrives;
}

double NcChannel::positionAt(const AxisMove& axis, double part) const
{
    if (part >= 1)
        return axis.cyclic ? wrapped(axis.target) : axis.target;
    if (axis.arcCoordinate >= 0) {
        const QPointF point = m_work.arc.at(part);
        return axis.arcCoordinate == 0 ? point.x() : point.y();
    }
    const double value = axis.start + axis.delta * part;
    return axis.cyclic ? wrapped(value) : value;
}

void NcChannel::leave(ChannelState state)
{
    m_state = state;
    m_work.active = false;
    m_moved = false;
    m_waitingFor = 0;
    m_common.forget(this);
    m_common.releaseAll(m_number);
    m_host.coordinateSystems(m_number, QStringLiteral("0,2"));
}

void NcChannel::fail(int line, const QString& text)
{
    m_line = line;
    m_error = QStringLiteral("line %1: %2").arg(line).arg(text);
    leave(ChannelState::Error);
    m_host.report(QStringLiteral("channel %1: %2").arg(m_number).arg(m_error));
}

} // namespace plant
