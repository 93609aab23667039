#pragma once

// A speed of the settings file, which anyone may have edited: what is negative or beyond `most` is read as
// 0, which moves nothing.
inline float storedSpeed(float speed, float most = 3000) // mm/min or deg/min; the fastest axes do 3000
{
    return speed >= 0 && speed <= most ? speed : 0;
}
