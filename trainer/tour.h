#pragma once

#include <QString>

class PlantProcess;

// Plays a scripted journey on the running installation without a hand on the screen, and leaves numbered
// pictures in `folder` (made when missing). Runs the whole life of the console; the result is the exit code
// of the program: 0, or 1 with a line on standard error when the journey could not be played to its end.
int runTour(PlantProcess* plant, const QString& folder);
