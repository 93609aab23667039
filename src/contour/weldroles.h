#pragma once

// What the cells of the two tables carry beside their text.
enum WeldRole {
    OnRole = 256,           // bool, column 0 of the technology table
    RasterTypeRole = 257,   // int; the raster roles stand in column 6
    RasterAmpXRole = 258,   // float, %
    RasterAmpYRole = 259,   // float, %
    RasterAngleRole = 260,  // int, deg
    RasterFreqRole = 261,   // int, Hz
    RasterShiftXRole = 262, // float, %
    RasterShiftYRole = 263, // float, %
    RasterParamRole = 264,  // float
    RasterCwRole = 265,     // int, 1 for reverse rotation
    RowTypeRole = 266,      // int, Frame::Type; the frame roles stand in the column "Параметры"
    RowRadiusRole = 267,    // float, mm
    RowDirRole = 268,       // int, 1 counter-clockwise
    RowPlaneRole = 269      // int, 0 XY, 1 XZ, 2 YZ
};
