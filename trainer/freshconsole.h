#pragma once

#include "operator.h"
#include "plantprocess.h"

// A console that has been at work must show what one shows that is started now. That one runs in a process of
// its own, this program called again, on the same installation, which it only watches.

// Lets the installation's time stand still, waits until the screen rests, and starts the fresh console with
// what this one has saved; that is to show the same, but for what it cannot know, within a minute. `trouble`:
// a fault stands. Returns what it showed otherwise or why it ended, empty for nothing. From the script's
// thread, which then sets the installation's speed again.
QString differenceToFreshConsole(Operator& hand, PlantProcess& plant, bool trouble);

// To be asked by main, with the application's arguments, before anything else: true when this process is that
// console. It then has ended, and `status` is its exit status.
bool wasFreshConsole(const QStringList& arguments, int* status);
