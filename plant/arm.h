#pragma once

#include <optional>

namespace plant {

// Angles of the three arm joints, deg, 0 in the machine's zero pose.
struct ArmJoints
{
    double a = 0;
    double b = 0;
    double c = 0;
};

// Place of the gun's mouth in the plane of the arm (mm) and the turn of the gun (deg), 0 in the zero pose.
struct ArmPose
{
    double x = 0;
    double z = 0;
    double phi = 0;
};

// The manipulator's arm: three joints in one plane, hanging beneath the carriage, links of 1000, 1000 and
// 100 mm, X to the right and Z upwards. The elbow is bent one way only, so that a pose has one solution.
ArmPose armForward(const ArmJoints& joints);

// Empty when the pose is out of the arm's reach.
std::optional<ArmJoints> armInverse(const ArmPose& pose);

} // namespace plant
