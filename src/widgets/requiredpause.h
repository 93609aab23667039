#pragma once

#include <chrono>

class QAbstractButton;

// The time that must pass between two commands of one operation. The window goes on meanwhile: it paints,
// its timers run, and it takes what the controllers report. Only the operator's hand finds it deaf: what is
// pressed, typed or turned in a pause is dropped, in every window of the console, and so is the lifting of
// a finger that was dropped, however late it comes. A finger that was down before keeps its lifting, as a
// jog must end with it.
//
// Nothing is started a second time within a pause, since every start of a program comes from a touch; and
// nothing that a touch destroys is destroyed. All in the window's thread.
namespace RequiredPause {

// Blocks for at least `length`. False when the operation must not go on: a button that acts always was
// touched, the program is coming to its end, or another pause runs already.
bool wait(std::chrono::microseconds length);

// Touches of this button are never dropped: in a pause it clicks at the press, without waiting for the
// lifting, and the pause ends with that.
void actsAlways(QAbstractButton* button);

} // namespace RequiredPause
