#pragma once

#include <QString>

namespace plant {

class BeamUnit;
class MotionController;
class VacuumSystem;

// The installation as it stands now, for a program that follows it. One line each.

// Names and values, "state time=12.3 key=on door=closed ...": times in s, positions in mm or deg, pressures
// in Pa, currents in mA, all other values words. docs/lessons.md lists them.
QString presentState(const MotionController& motion, const VacuumSystem& vacuum);

// Every fault that stands, told by the instructor's line that makes it, in lower case: "faults valve vp3 jam;
// rope left on". "faults" alone when there is none. `beam` may be null. What ends by itself is no part of it.
QString presentFaults(const MotionController& motion, const VacuumSystem& vacuum, const BeamUnit* beam);

} // namespace plant
