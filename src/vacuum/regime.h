#pragma once

#include <QString>

// The regimes of the vacuum plant, by the number under which the chamber controller knows them.
namespace regime {

enum Number : unsigned int { Setup, Manual, Prepare, Forepump, Pumping, Filling, Shutdown, Count };

QString name(Number number); // in one line, as the operator reads it; a word or two

} // namespace regime
