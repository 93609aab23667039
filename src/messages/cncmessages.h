#pragma once

#include <QString>

#include <functional>

// The motion controller tells an event by its number alone. The number that ends some lines the console
// takes from what it knows of the axis.
enum class CNCValue { None, MinLimit, MaxLimit, Coord };

// A value of an axis, mm or deg; the axis is named as in commands.
using CNCValueOf = std::function<double(CNCValue, const QString& axis)>;

// Journal line of an event, with its class mark. A number without an event reads as an unknown message.
// `value` is asked only for events whose line ends with one.
QString cncMessage(unsigned int number, const CNCValueOf& value);
