#pragma once

#include "linkcontroller.h"

#include <QtEndian>

#include <algorithm>
#include <iterator>

// The motion controller as far as the wire goes: the layout of its status datagram, its sockets.
// Written from the tables of the wire, not from the console's.
namespace drivewire {

// The status datagram as the controller's documents give it, in order of bytes.
enum Kind { U, I, F, B };
struct Field
{
    int offset;
    Kind kind;
    const char* name;
};
// clang-format off
const Field fields[] = {
    {4, U, "ChannelState1"}, {8, U, "ChannelState2"}, {12, U, "ChannelState3"}, {16, U, "ChannelMode1"},
    {20, U, "ChannelMode2"}, {24, U, "ChannelMode3"}, {28, F, "LX1"}, {32, F, "LX2"}, {36, F, "LY"},
    {40, F, "A"}, {44, F, "B"}, {48, F, "C"}, {52, F, "D"}, {56, F, "U1"}, {60, F, "U2"}, {64, F, "V"},
    {68, F, "X"}, {72, F, "Z"}, {76, F, "PHI"}, {80, I, "StateLX1"}, {84, I, "StateLX2"},
    {88, I, "StateLY"}, {92, I, "StateA"}, {96, I, "StateB"}, {100, I, "StateC"}, {104, I, "StateD"},
    {108, I, "StateU1"}, {112, I, "StateU2"}, {116, I, "StateV"}, {120, U, "VirtualState"},
    {124, F, "MinLimLX"}, {128, F, "MinLimLY"}, {132, F, "MinLimA"}, {136, F, "MinLimB"},
    {140, F, "MinLimC"}, {144, F, "MinLimD"}, {148, F, "MinLimU"}, {152, F, "MinLimV"},
    {156, F, "MinLimX"}, {160, F, "MinLimZ"}, {164, F, "MinLimPHI"}, {168, F, "MaxLimLX"},
    {172, F, "MaxLimLY"}, {176, F, "MaxLimA"}, {180, F, "MaxLimB"}, {184, F, "MaxLimC"},
    {188, F, "MaxLimD"}, {192, F, "MaxLimU"}, {196, F, "MaxLimV"}, {200, F, "MaxLimX"},
    {204, F, "MaxLimZ"}, {208, F, "MaxLimPHI"}, {212, U, "Message"}, {216, U, "Message"},
    {220, U, "Message"}, {224, U, "Message"}, {228, U, "PointNo"}, {232, U, "CNCError"},
    {236, U, "DoorState"}, {240, U, "TrModuleState"}, {244, U, "DrivePowerState"}, {248, U, "LightState"},
    {252, U, "PortPultRegime"}, {256, U, "AlarmState"}, {260, B, "LXmin"}, {261, B, "LYmin"},
    {262, B, "Amin"}, {263, B, "Bmin"}, {264, B, "Cmin"}, {265, B, "Dmin"}, {266, B, "Umin"},
    {267, B, "Vmin"}, {268, B, "Xmin"}, {269, B, "Zmin"}, {270, B, "PHImin"}, {271, B, "LXmax"},
    {272, B, "LYmax"}, {273, B, "Amax"}, {274, B, "Bmax"}, {275, B, "Cmax"}, {276, B, "Dmax"},
    {277, B, "Umax"}, {278, B, "Vmax"}, {279, B, "Xmax"}, {280, B, "Zmax"}, {281, B, "PHImax"},
    {282, B, "DrivesOn"}, {283, B, "TransOn"}, {284, B, "AxisMoving"}, {285, B, "PultOn"},
    {286, B, "KeyAccess"}, {287, B, "DrivesLock"}, {288, B, "SpiralLock"}, {291, B, "SpiralPower"},
    {292, B, "DrivesPower"}, {293, B, "PhaseAlarm"},
};
// clang-format on

// The order in which one datagram is told.
const char* const order =
    "ChannelState1 ChannelState2 ChannelState3 ChannelMode1 ChannelMode2 ChannelMode3 "
    "LX1 LX2 LY A B C D U1 U2 V X Z PHI "
    "MinLimLX MinLimLY MinLimA MinLimB MinLimC MinLimD MinLimU MinLimV MinLimX MinLimZ MinLimPHI "
    "MaxLimLX MaxLimLY MaxLimA MaxLimB MaxLimC MaxLimD MaxLimU MaxLimV MaxLimX MaxLimZ MaxLimPHI "
    "StateLX1 StateLX2 StateLY StateA StateB StateC StateD StateU1 StateU2 StateV VirtualState "
    "LXmin LYmin Amin Bmin Cmin Dmin Umin Vmin Xmin Zmin PHImin "
    "LXmax LYmax Amax Bmax Cmax Dmax Umax Vmax Xmax Zmax PHImax "
    "DoorState TrModuleState DrivePowerState LightState PointNo PortPultRegime AlarmState "
    "DrivesOn TransOn PultOn AxisMoving KeyAccess DrivesLock SpiralLock SpiralPower DrivesPower PhaseAlarm "
    "Message Message Message Message CNCError";
constexpr int raised = 96; // 93 signals, one of them for four slots

inline QByteArray emptyDatagram()
{
    QByteArray bytes(296, '\0');
    bytes[0] = 0x50;
    bytes[1] = 0x56;
    return bytes;
}

inline void put(QByteArray& datagram, const Field& field, double value)
{
    uchar* at = reinterpret_cast<uchar*>(datagram.data()) + field.offset;
    switch (field.kind) {
    case U:
        qToLittleEndian(static_cast<quint32>(value), at);
        break;
    case I:
        qToLittleEndian(static_cast<qint32>(value), at);
        break;
    case F:
        qToLittleEndian(static_cast<float>(value), at);
        break;
    case B:
        *at = static_cast<uchar>(value);
        break;
    }
}

inline const Field& fieldNamed(const char* name)
{
    return *std::find_if(std::begin(fields), std::end(fields),
                         [&](const Field& f) { return !qstrcmp(f.name, name); });
}

} // namespace drivewire

// The controller's side of the link, at the endpoint of the site.
struct DriveController : LinkController
{
    DriveController()
        : LinkController(site().drive)
    {}
};
