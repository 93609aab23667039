#include "plant/axes.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace plant {

namespace {

constexpr AxisTraits axisTable[axisCount] = {
    {"LX", Coord::LX, 1, 3000, 250}, {"LX2", Coord::LX, 1, 3000, 250}, {"LY", Coord::LY, 1, 3000, 250},
    {"A", Coord::A, 1, 360, 30},     {"B", Coord::B, 1, 720, 60},      {"C", Coord::C, 1, 900, 75},
    {"D", Coord::D, 1, 900, 75},     {"U1", Coord::U, 2, 120, 10},     {"U2", Coord::U, 2, 120, 10},
    {"V", Coord::V, 2, 2160, 180},   {"X", Coord::X, 1, 3000, 250},    {"Z", Coord::Z, 1, 3000, 250},
    {"PHI", Coord::PHI, 1, 900, 75},
};

// The joints reach every pose within the limits of X, Z and PHI.
constexpr CoordTraits coordTable[coordCount] = {
    {"LX", -1500, 1500, false}, {"LY", -800, 800, false}, {"A", -90, 90, false},     {"B", -80, 80, false},
    {"C", -200, 200, false},    {"D", -180, 180, false},  {"U", -100, 100, false},   {"V", 0, 360, true},
    {"X", -300, 300, false},    {"Z", -300, 300, false},  {"PHI", -120, 120, false},
};

constexpr double resolution = 0.0001; // of the position encoders, mm or deg
constexpr double atLimit = 0.0005;    // nearer than this an axis stands at its limit

double wrapped(double degrees)
{
    const double turn = std::fmod(degrees, 360.0);
    const double positive = turn < 0 ? turn + 360 : turn;
    return positive >= 360 - resolution / 2 ? 0 : positive;
}

double towards(double value, double target, double change)
{
    return value + std::clamp(target - value, -change, change);
}

} // namespace

const AxisTraits& traits(AxisId axis)
{
    return axisTable[static_cast<std::size_t>(axis)];
}

const CoordTraits& traits(Coord coord)
{
    return coordTable[static_cast<std::size_t>(coord)];
}

std::optional<AxisId> axisByName(const QString& name)
{
    if (name == QLatin1String("U"))
        return AxisId::U1;
    for (const AxisId axis : allAxes)
        if (name == QLatin1String(traits(axis).name))
            return axis;
    return std::nullopt;
}

std::optional<AxisId> follower(AxisId axis)
{
    if (axis == AxisId::LX1)
        return AxisId::LX2;
    if (axis == AxisId::U1)
        return AxisId::U2;
    return std::nullopt;
}

Axes::Axes()
{
    for (std::size_t i = 0; i < coordCount; ++i) {
        m_min[i] = coordTable[i].min;
        m_max[i] = coordTable[i].max;
    }
}

double Axes::position(AxisId axis) const
{
    const double value = std::round(m_position[index(axis)] / resolution) * resolution;
    return value == 0 ? 0 : value; // no negative zero on a display
}

bool Axes::atMin(Coord coord) const
{
    return !traits(coord).endless && std::any_of(allAxes.begin(), allAxes.end(), [&](AxisId axis) {
        return traits(axis).coord == coord && m_position[index(axis)] <= minLimit(coord) + atLimit;
    });
}

bool Axes::atMax(Coord coord) const
{
    return !traits(coord).endless && std::any_of(allAxes.begin(), allAxes.end(), [&](AxisId axis) {
        return traits(axis).coord == coord && m_position[index(axis)] >= maxLimit(coord) - atLimit;
    });
}

void Axes::setTransformed(bool on)
{
    halt();
    m_transformed = on;
    followJoints();
}

void Axes::jog(AxisId axis, double speed)
{
    Motion& motion = m_motion[index(axis)];
    motion.mode = Mode::Jog;
    motion.wanted = speed;
    motion.remaining = 0;
}

void Axes::moveBy(AxisId axis, double distance, double speed)
{
    Motion& motion = m_motion[index(axis)];
    motion.remaining = distance + (motion.mode == Mode::Distance ? motion.remaining : 0);
    motion.mode = Mode::Distance;
    motion.wanted = speed;
}

void Axes::stop(AxisId axis)
{
    if (moving(axis))
        jog(axis, 0);
}

void Axes::stopAll()
{
    for (const AxisId axis : allAxes)
        stop(axis);
}

void Axes::halt()
{
    m_motion.fill(Motion());
}

bool Axes::anyMoving() const
{
    return std::any_of(allAxes.begin(), allAxes.end(), [this](AxisId axis) { return moving(axis); });
}

bool Axes::place(AxisId axis, double value, std::optional<LimitHit>* hit)
{
    if (isVirtual(axis)) {
        ArmPose target = pose();
        (axis == AxisId::X ? target.x : axis == AxisId::Z ? target.z : target.phi) = value;
        return applyPose(target, hit);
    }
    shift(axis, value - m_position[index(axis)]);
    if (isArmJoint(axis))
        followJoints();
    return true;
}

void Axes::define(AxisId axis, double value)
{
    m_position[index(axis)] = value;
    if (const auto second = follower(axis))
        m_position[index(*second)] = value;
    if (isArmJoint(axis))
        followJoints();
}

std::optional<LimitHit> Axes::beyond(AxisId axis, double value) const
{
    const Coord coord = traits(axis).coord;
    if (traits(coord).endless)
        return std::nullopt;
    if (value > maxLimit(coord) + atLimit)
        return LimitHit{coord, true};
    if (value < minLimit(coord) - atLimit)
        return LimitHit{coord, false};
    return std::nullopt;
}

std::vector<LimitHit> Axes::step(double dt)
{
    std::vector<LimitHit> hits;
    bool joints = false;
    ArmPose target = pose();
    for (const AxisId axis : allAxes) {
        if (!moving(axis))
            continue;
        const double delta = advance(axis, dt, hits);
        if (axis == AxisId::X)
            target.x += delta;
        else if (axis == AxisId::Z)
            target.z += delta;
        else if (axis == AxisId::PHI)
            target.phi += delta;
        else
            shift(axis, delta);
        joints = joints || isArmJoint(axis);
    }
    if (m_transformed) {
        std::optional<LimitHit> hit;
        const ArmPose now = pose();
        const bool changed = target.x != now.x || target.z != now.z || target.phi != now.phi;
        if (changed && !applyPose(target, &hit)) {
            for (const AxisId axis : {AxisId::X, AxisId::Z, AxisId::PHI})
                m_motion[index(axis)] = Motion();
            if (hit)
                hits.push_back(*hit);
        }
    } else if (joints) {
        followJoints();
    }
    return hits;
}

double Axes::room(AxisId axis, bool positive) const
{
    const Coord coord = traits(axis).coord;
    if (traits(coord).endless)
        return std::numeric_limits<double>::infinity();
    const auto distance = [&](AxisId one) {
        const double value = m_position[index(one)];
        return std::max(0.0, positive ? maxLimit(coord) - value : value - minLimit(coord));
    };
    const auto second = follower(axis);
    return second ? std::min(distance(axis), distance(*second)) : distance(axis);
}

// One step of one axis: the way it goes. The speed follows the one asked for at the axis's acceleration and
// never exceeds the one from which it can still stop in front of its limit or at its target.
double Axes::advance(AxisId axis, double dt, std::vector<LimitHit>& hits)
{
    Motion& motion = m_motion[index(axis)];
    const double acceleration = traits(axis).acceleration;
    const bool distance = motion.mode == Mode::Distance;
    const bool thereAlready = distance && std::abs(motion.remaining) < resolution / 10;
    const double wanted = thereAlready ? 0
                          : distance   ? std::copysign(motion.wanted, motion.remaining)
                                       : motion.wanted;

    motion.velocity = towards(motion.velocity, wanted, acceleration * dt);
    if (motion.velocity == 0 && wanted == 0) {
        motion = Motion();
        return 0;
    }
    const bool positive = motion.velocity > 0;
    const double free = room(axis, positive);
    const bool onTheWay = distance && positive == (motion.remaining > 0);
    const double way = onTheWay ? std::min(free, std::abs(motion.remaining)) : free;
    const double cap = std::sqrt(2 * acceleration * way);
    motion.velocity = std::clamp(motion.velocity, -cap, cap);

    double delta = motion.velocity * dt;
    if (std::abs(delta) >= way) {
        delta = std::copysign(way, positive ? 1 : -1);
        const bool limited = free <= way;
        const bool arrived = onTheWay && std::abs(motion.remaining) <= way;
        if (limited && !arrived)
            hits.push_back({traits(axis).coord, positive});
        motion = Motion();
    } else {
        motion.remaining -= distance ? delta : 0;
    }
    return delta;
}

void Axes::shift(AxisId axis, double delta)
{
    double& value = m_position[index(axis)];
    value += delta;
    if (traits(traits(axis).coord).endless)
        value = wrapped(value);
    if (const auto second = follower(axis))
        m_position[index(*second)] += delta;
}

bool Axes::applyPose(const ArmPose& target, std::optional<LimitHit>* hit)
{
    const auto joints = armInverse(target);
    if (!joints)
        return false;
    const std::pair<AxisId, double> solved[] = {
        {AxisId::A, joints->a}, {AxisId::B, joints->b}, {AxisId::C, joints->c}};
    for (const auto& [axis, value] : solved) {
        const auto limit = beyond(axis, value);
        const double now = m_position[index(axis)];
        // A joint that stands beyond its limit may come back, but go no further.
        const bool worse = limit && (limit->positive ? value > now : value < now);
        if (worse) {
            if (hit)
                *hit = limit;
            return false;
        }
    }
    for (const auto& [axis, value] : solved)
        m_position[index(axis)] = value;
    m_position[index(AxisId::X)] = target.x;
    m_position[index(AxisId::Z)] = target.z;
    m_position[index(AxisId::PHI)] = target.phi;
    return true;
}

void Axes::followJoints()
{
    const ArmPose now = armForward(
        {m_position[index(AxisId::A)], m_position[index(AxisId::B)], m_position[index(AxisId::C)]});
    m_position[index(AxisId::X)] = now.x;
    m_position[index(AxisId::Z)] = now.z;
    m_position[index(AxisId::PHI)] = now.phi;
}

ArmPose Axes::pose() const
{
    return {m_position[index(AxisId::X)], m_position[index(AxisId::Z)], m_position[index(AxisId::PHI)]};
}

} // namespace plant
