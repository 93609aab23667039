#pragma once

#include <QtGlobal>

// A file of the flight recorder: a plain sequence of records of 44 bytes in host byte order. Its name is the
// moment of its start.
struct FlightRecord
{
    quint32 time; // ms since the start of the recording
    float values[10];

    static constexpr char nameForm[] = "dd.MM.yyyy_hh.mm.ss";
    static constexpr char suffix[] = ".dump";
};
static_assert(sizeof(FlightRecord) == 44);
