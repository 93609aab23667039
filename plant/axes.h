#pragma once

#include "plant/arm.h"

#include <QString>

#include <array>
#include <optional>
#include <vector>

namespace plant {

// Everything that can be moved by name. The first ten are drives, in the order of the status datagram;
// the last three are the virtual axes.
enum class AxisId { LX1, LX2, LY, A, B, C, D, U1, U2, V, X, Z, PHI };
constexpr int axisCount = 13;
constexpr int driveCount = 10;

// Sets of limits and switches, in the order of the status datagram: the two drives of LX share one, and
// so do those of U.
enum class Coord { LX, LY, A, B, C, D, U, V, X, Z, PHI };
constexpr int coordCount = 11;

constexpr std::array<AxisId, axisCount> allAxes = {
    AxisId::LX1, AxisId::LX2, AxisId::LY, AxisId::A, AxisId::B, AxisId::C,  AxisId::D,
    AxisId::U1,  AxisId::U2,  AxisId::V,  AxisId::X, AxisId::Z, AxisId::PHI};

struct AxisTraits
{
    const char* name; // as commands and programs know it: the first carriage drive is "LX"
    Coord coord;
    int channel;         // whose programs move it
    double maxSpeed;     // mm or deg a minute
    double acceleration; // mm or deg a second squared
};

struct CoordTraits
{
    const char* name;
    double min; // soft limits at the start, mm or deg
    double max;
    bool endless; // turns without end, 0 up to 360: its limits are kept but stop nothing
};

const AxisTraits& traits(AxisId axis);
const CoordTraits& traits(Coord coord);
std::optional<AxisId> axisByName(const QString& name); // exact case; "U" is the first of its pair
constexpr bool isVirtual(AxisId axis)
{
    return axis >= AxisId::X;
}
constexpr bool isArmJoint(AxisId axis)
{
    return axis == AxisId::A || axis == AxisId::B || axis == AxisId::C;
}
// The second drive that goes along when the first of a pair is moved; none for all others.
std::optional<AxisId> follower(AxisId axis);

// Hard switches stand this far beyond the limits of the start; mm or deg.
constexpr double hardSwitchMargin = 5;

struct LimitHit
{
    Coord coord;
    bool positive;
};

// Positions, motion and limits of all axes: pure mechanics, without power or permission. "LX" and "U1"
// take the second drive of their pair along and keep its offset; "LX2" and "U2" move it alone, to align
// it. In the transformed mode the pose of the arm leads and the joints A, B, C follow; otherwise the joints
// lead and the pose is told from them.
class Axes
{
public:
    Axes();

    double position(AxisId axis) const; // mm or deg, in steps of 0.0001
    double minLimit(Coord coord) const { return m_min[index(coord)]; }
    double maxLimit(Coord coord) const { return m_max[index(coord)]; }
    void setMinLimit(Coord coord, double value) { m_min[index(coord)] = value; }
    void setMaxLimit(Coord coord, double value) { m_max[index(coord)] = value; }
    bool atMin(Coord coord) const; // stands at its soft limit or beyond
    bool atMax(Coord coord) const;

    bool transformed() const { return m_transformed; }
    void setTransformed(bool on); // all motion must have ended

    // Jog at a signed speed, units a second, until stopped or at a limit.
    void jog(AxisId axis, double speed);
    // Go on by a signed distance at a speed above zero; distances of one axis add up while it moves.
    void moveBy(AxisId axis, double distance, double speed);
    void stop(AxisId axis); // brakes
    void stopAll();
    void halt(); // stands at once: the power is gone
    bool moving(AxisId axis) const { return m_motion[index(axis)].mode != Mode::Still; }
    bool jogging(AxisId axis) const { return m_motion[index(axis)].mode == Mode::Jog; }
    bool anyMoving() const;

    // Puts an axis somewhere at once, with its follower. False, and nothing moved, when a virtual axis
    // would bring the arm out of its reach or a joint beyond its limit; `hit` then tells which.
    bool place(AxisId axis, double value, std::optional<LimitHit>* hit = nullptr);
    // The drive of the axis now stands at `value` by definition; the pair together.
    void define(AxisId axis, double value);

    // Whether the axis may stand at `value` by its soft limits; the hit limit when not.
    std::optional<LimitHit> beyond(AxisId axis, double value) const;

    // Advances by dt seconds; the limits that ended a motion.
    std::vector<LimitHit> step(double dt);

private:
    enum class Mode { Still, Jog, Distance };
    struct Motion
    {
        Mode mode = Mode::Still;
        double velocity = 0;  // units a second
        double wanted = 0;    // speed asked for; signed in a jog
        double remaining = 0; // signed distance still to go
    };

    template <class T>
    static std::size_t index(T value)
    {
        return static_cast<std::size_t>(value);
    }
    double room(AxisId axis, bool positive) const; // distance to the nearest limit that way
    double advance(AxisId axis, double dt, std::vector<LimitHit>& hits);
    void shift(AxisId axis, double delta);
    bool applyPose(const ArmPose& pose, std::optional<LimitHit>* hit);
    void followJoints();
    ArmPose pose() const;

    std::array<double, axisCount> m_position{};
    std::array<double, coordCount> m_min{};
    std::array<double, coordCount> m_max{};
    std::array<Motion, axisCount> m_motion{};
    bool m_transformed = false;
};

} // namespace plant
