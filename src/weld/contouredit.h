#pragma once

#include "weldtables.h"

// Turns the direction of a contour around. Where the seam starts stays where it is on a ring, a circle and
// a closed contour; an open contour starts at its former end. Frames go with the stretch that they describe.
void invertContour(WeldContour& contour);
