#pragma once

// The time of day of this process alone, as its toolkit asks for it, may be moved: somebody sets the
// computer's clock. Timers and pauses stay as they are. A program that calls this has it in place of the
// system's.
void moveTimeOfDay(int seconds); // later, or earlier when negative; adds up. Any thread
