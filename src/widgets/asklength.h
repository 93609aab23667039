#pragma once

#include <QString>

#include <functional>
#include <optional>

class QWidget;

// Bounds of a length that must be positive: what its field shows, and what fits the keypad. mm
constexpr float leastLength = 0.01f;
constexpr float mostLength = 9'999'999;

// The journal line of a length out of its bounds; nothing for one within them. `title` is the field's.
std::optional<QString> lengthRefusal(const QString& title, float length);

// Asks on the keypad for a length, mm. Nothing when it is cancelled or out of its bounds, which `refuse` is
// told as a journal line.
std::optional<float> askLength(const QString& title, QWidget* parent, float present,
                               const std::function<void(const QString&)>& refuse);
