#pragma once

#include <QtGlobal>

#include <array>
#include <cmath>
#include <cstring>

// Status datagrams of both vacuum controllers, of a plant at work: all devices on, all gauges valid, every
// measured value another than in the datagram before. `rate` is what one of them sends in a second.

using KvsPack = std::array<char, 404>;
using KvkPack = std::array<char, 144>;

template <class Value, class Pack>
void put(Pack& pack, int offset, Value value)
{
    std::memcpy(pack.data() + offset, &value, sizeof value);
}

template <class Pack>
Pack plantAtWork(int lastWord, int flagsFrom, int flags)
{
    Pack pack{};
    put(pack, 0, quint16(0x5650));
    for (int offset = 4; offset <= lastWord; offset += 4)
        put(pack, offset, 0);
    for (int i = 0; i < flags; ++i)
        put(pack, flagsFrom + i, char(1));
    return pack;
}

inline KvsPack kvsDatagram(int n)
{
    KvsPack pack = plantAtWork<KvsPack>(288, 292, 14);
    for (int pump = 0; pump < 6; ++pump)
        put(pack, 4 + 24 * pump, 1);
    for (int valve = 0; valve < 6; ++valve)
        put(pack, 148 + 20 * valve, valve % 2);
    for (int gauge = 0; gauge < 3; ++gauge)
        put(pack, 308 + 8 * gauge, 10 * std::exp(std::sin(0.01 * n + gauge)));
    for (int sensor = 0; sensor < 18; ++sensor)
        put(pack, 332 + 4 * sensor, 22.F + 4 * float(std::sin(0.13 * n + sensor)));
    return pack;
}

inline KvkPack kvkDatagram(int n, int rate)
{
    KvkPack pack = plantAtWork<KvkPack>(60, 80, 5);
    put(pack, 64, 100 * std::exp(std::sin(0.02 * n)));
    put(pack, 72, 0.01 * std::exp(std::sin(0.03 * n)));
    put(pack, 88, 4U);
    put(pack, 92, unsigned(n / rate));
    put(pack, 96, 1U);
    put(pack, 104, 1);
    put(pack, 116, 1);
    put(pack, 136, 0.001F * float(std::exp(std::sin(0.05 * n))));
    put(pack, 140, 700.F + float(n % 2));
    return pack;
}
