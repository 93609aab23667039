#pragma once

#include <QString>

// The two units in which pressures are shown; the controllers send pascals. `torr`: millimetres of mercury.
inline float pressureScale(bool torr)
{
    return torr ? 0.0075006373F : 1.0F;
}

inline QString pressureUnit(bool torr)
{
    return torr ? QStringLiteral("мм.рт.ст.") : QStringLiteral("Па");
}
