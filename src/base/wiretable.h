#pragma once

#include <QMetaMethod>
#include <QObject>

#include <array>
#include <cstddef>
#include <cstring>

// A status datagram as a table. Each row names a place in the datagram and the signal that tells its value;
// the rows stand in the order in which a datagram raises them. Decoding, forwarding and disconnecting walk
// the same table. Everything on the wire is little-endian, as is the console's processor.

// What stands at a row's offset.
enum class WireKind {
    Flag,   // one byte; zero is false, anything else true
    Word,   // 4 bytes, signed or not
    Float,  // IEEE 754, 4 bytes
    Double, // IEEE 754, 8 bytes
};

constexpr int wireWidth(WireKind kind)
{
    return kind == WireKind::Flag ? 1 : kind == WireKind::Double ? 8 : 4;
}

template <class Source>
struct WireRow
{
    int offset; // bytes from the start of the datagram
    WireKind kind;
    void (*raise)(Source& source, const char* field);
    void (*forward)(const Source& from, const Source& to);
    void (*detach)(const Source& from, const Source& to);
};

namespace wire {

template <class Value>
Value load(const char* field)
{
    Value value;
    std::memcpy(&value, field, sizeof value);
    return value;
}

template <>
inline bool load<bool>(const char* field)
{
    return *field != 0;
}

template <class Value>
struct KindOf;
template <>
struct KindOf<bool>
{
    static constexpr WireKind value = WireKind::Flag;
};
template <>
struct KindOf<int>
{
    static constexpr WireKind value = WireKind::Word;
};
template <>
struct KindOf<unsigned int>
{
    static constexpr WireKind value = WireKind::Word;
};
template <>
struct KindOf<float>
{
    static constexpr WireKind value = WireKind::Float;
};
template <>
struct KindOf<double>
{
    static constexpr WireKind value = WireKind::Double;
};

template <class Signal>
struct SignalTraits;
template <class SourceType, class ValueType>
struct SignalTraits<void (SourceType::*)(ValueType)>
{
    using Source = SourceType;
    using Value = ValueType;
};

// A row at `offset`, its width and type told by the signal's argument.
template <auto Signal>
constexpr auto row(int offset)
{
    using Source = typename SignalTraits<decltype(Signal)>::Source;
    using Value = typename SignalTraits<decltype(Signal)>::Value;
    return WireRow<Source>{
        offset,
        KindOf<Value>::value,
        [](Source& source, const char* field) { (source.*Signal)(load<Value>(field)); },
        // Several rows may share a signal; it is forwarded once.
        [](const Source& from, const Source& to) {
            const QMetaMethod method = QMetaMethod::fromSignal(Signal);
            QObject::connect(&from, method, &to, method, Qt::UniqueConnection);
        },
        [](const Source& from, const Source& to) {
            const QMetaMethod method = QMetaMethod::fromSignal(Signal);
            QObject::disconnect(&from, method, &to, method);
        },
    };
}

// Numbers are compared by value, so that a field that is no number differs from itself; flags as raw bytes.
inline bool differs(WireKind kind, const char* now, const char* last)
{
    switch (kind) {
    case WireKind::Flag:
        return *now != *last;
    case WireKind::Word:
        return load<quint32>(now) != load<quint32>(last);
    case WireKind::Float:
        return load<float>(now) != load<float>(last);
    case WireKind::Double:
        return load<double>(now) != load<double>(last);
    }
    return true;
}

// Raises each row whose field differs between the datagrams, in the order of the table; every row when
// there is no `last` (null).
template <class Source, std::size_t Rows>
void raiseChanges(const WireRow<Source> (&table)[Rows], Source& source, const char* now, const char* last)
{
    for (const WireRow<Source>& row : table) {
        if (!last || differs(row.kind, now + row.offset, last + row.offset))
            row.raise(source, now + row.offset);
    }
}

// The last good datagram of a connection, and what to raise when the next one comes.
template <std::size_t Size>
class LastPack
{
public:
    // Raises what changed since the datagram before, all rows at the first, and keeps `pack`.
    template <class Source, std::size_t Rows>
    void take(const WireRow<Source> (&table)[Rows], Source& source, const std::array<char, Size>& pack)
    {
        raiseChanges(table, source, pack.data(), m_stored ? m_pack.data() : nullptr);
        m_stored = true;
        m_pack = pack;
    }

private:
    bool m_stored = false;
    std::array<char, Size> m_pack{};
};

// Each signal of the table goes on to the like-named signal of `to`. As the signals are raised on the
// telemetry thread and `to` lives in another, they arrive queued.
template <class Source, std::size_t Rows>
void forward(const WireRow<Source> (&table)[Rows], const Source& from, const Source& to)
{
    for (const WireRow<Source>& row : table)
        row.forward(from, to);
}

template <class Source, std::size_t Rows>
void detach(const WireRow<Source> (&table)[Rows], const Source& from, const Source& to)
{
    for (const WireRow<Source>& row : table)
        row.detach(from, to);
}

// True when every row lies behind the head and within `size` bytes and no two rows touch.
template <class Source, std::size_t Rows>
constexpr bool fits(const WireRow<Source> (&table)[Rows], int head, int size)
{
    for (std::size_t i = 0; i < Rows; ++i) {
        const int end = table[i].offset + wireWidth(table[i].kind);
        if (table[i].offset < head || end > size)
            return false;
        for (std::size_t k = 0; k < Rows; ++k) {
            if (k != i && table[k].offset >= table[i].offset && table[k].offset < end)
                return false;
        }
    }
    return true;
}

} // namespace wire
