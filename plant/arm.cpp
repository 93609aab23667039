#include "plant/arm.h"

#include <cmath>

namespace plant {

namespace {

constexpr double pi = 3.14159265358979323846;
constexpr double upperLink = 1000;
constexpr double lowerLink = 1000;
constexpr double gunLink = 100;

// Directions of the links in the zero pose: the elbow stands out to the left, the gun looks down.
constexpr double upperZero = -135;
constexpr double elbowZero = 90;
constexpr double gunZero = -90;

double rad(double degrees)
{
    return degrees * pi / 180;
}

double deg(double radians)
{
    return radians * 180 / pi;
}

struct Point
{
    double x;
    double z;
};

Point polar(double length, double degrees)
{
    return {length * std::cos(rad(degrees)), length * std::sin(rad(degrees))};
}

Point mouth(double upper, double lower, double gun)
{
    const Point elbow = polar(upperLink, upper);
    const Point wrist = polar(lowerLink, lower);
    const Point tip = polar(gunLink, gun);
    return {elbow.x + wrist.x + tip.x, elbow.z + wrist.z + tip.z};
}

Point zeroPose()
{
    static const Point point = mouth(upperZero, upperZero + elbowZero, gunZero);
    return point;
}

} // namespace

ArmPose armForward(const ArmJoints& joints)
{
    const double upper = upperZero + joints.a;
    const double phi = joints.a + joints.b + joints.c;
    const Point point = mouth(upper, upper + elbowZero + joints.b, gunZero + phi);
    return {point.x - zeroPose().x, point.z - zeroPose().z, phi};
}

std::optional<ArmJoints> armInverse(const ArmPose& pose)
{
    const Point gun = polar(gunLink, gunZero + pose.phi);
    const double x = pose.x + zeroPose().x - gun.x;
    const double z = pose.z + zeroPose().z - gun.z;
    const double cosine =
        (x * x + z * z - upperLink * upperLink - lowerLink * lowerLink) / (2 * upperLink * lowerLink);
    if (!(std::abs(cosine) <= 1))
        return std::nullopt;

    const double elbow = std::acos(cosine);
    const double upper =
        std::atan2(z, x) - std::atan2(lowerLink * std::sin(elbow), upperLink + lowerLink * cosine);
    ArmJoints joints;
    joints.a = std::remainder(deg(upper) - upperZero, 360);
    joints.b = deg(elbow) - elbowZero;
    joints.c = pose.phi - joints.a - joints.b;
    return joints;
}

} // namespace plant
