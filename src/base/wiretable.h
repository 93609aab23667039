#pragma once

#include <QMetaMethod>
#include <QObject>

#include <array>
#include <cstddef>
#include <cstring>

// A status datagram as a table. Each row names a place in the datagram and the signal that tells its value;
// the rows stand in the order in which a datagram raises them. Everything on the wire is little-endian, as is
// the console's processor.

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
    };
}

// Rows that follow each other: the first at `offset`, each next one `stride` bytes on, or right behind the
// one before when that is 0.
template <auto First, auto... More>
constexpr auto rows(int offset, int stride = 0)
{
    std::array table{row<First>(offset), row<More>(offset)...};
    for (auto& next : table) {
        next.offset = offset;
        offset += stride > 0 ? stride : wireWidth(next.kind);
    }
    return table;
}

// One table of several, in their order.
template <class Source, std::size_t... Sizes>
constexpr auto join(const std::array<WireRow<Source>, Sizes>&... parts)
{
    std::array<WireRow<Source>, (Sizes + ...)> table{};
    std::size_t next = 0;
    const auto append = [&](const auto& part) {
        for (const WireRow<Source>& row : part)
            table[next++] = row;
    };
    (append(parts), ...);
    return table;
}

// A table, wherever it stands.
template <class Source>
class Table
{
public:
    template <std::size_t Rows>
    constexpr Table(const std::array<WireRow<Source>, Rows>& rows)
        : m_begin(rows.data())
        , m_end(rows.data() + Rows)
    {}
    constexpr const WireRow<Source>* begin() const { return m_begin; }
    constexpr const WireRow<Source>* end() const { return m_end; }

private:
    const WireRow<Source>* m_begin;
    const WireRow<Source>* m_end;
};

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

// The last good datagram of a connection, and what to raise when the next one comes.
template <std::size_t Size>
class LastPack
{
public:
    // Raises each row whose field differs from the datagram before, in the order of the table, all rows at
    // the first; and keeps `pack`. Most datagrams are the last one again, to the byte: no field is looked at
    // then, unless one differs from itself. True when something was raised.
    template <class Source>
    bool take(const Table<Source>& table, Source& source, const std::array<char, Size>& pack)
    {
        if (m_settled && pack == m_pack)
            return false;
        bool raised = false;
        m_settled = true;
        for (const WireRow<Source>& row : table) {
            const char* const field = pack.data() + row.offset;
            m_settled = m_settled && !differs(row.kind, field, field);
            if (!m_stored || differs(row.kind, field, m_pack.data() + row.offset)) {
                row.raise(source, field);
                raised = true;
            }
        }
        m_stored = true;
        m_pack = pack;
        return raised;
    }

private:
    bool m_stored = false;
    bool m_settled = false; // what is stored raises nothing against itself
    std::array<char, Size> m_pack{};
};

// Each signal that `status` declares goes on from one object to the like-named signal of another; both are of
// that class. As the signals are raised on the telemetry thread and `to` lives in another, they arrive
// queued.
inline void forward(const QMetaObject& status, const QObject& from, const QObject& to)
{
    for (int i = status.methodOffset(); i < status.methodCount(); ++i) {
        if (const QMetaMethod method = status.method(i); method.methodType() == QMetaMethod::Signal)
            QObject::connect(&from, method, &to, method);
    }
}

// True when every row lies behind the head and within `size` bytes and no two rows touch.
template <class Source>
constexpr bool fits(const Table<Source>& table, int head, int size)
{
    for (const WireRow<Source>& row : table) {
        const int end = row.offset + wireWidth(row.kind);
        if (row.offset < head || end > size)
            return false;
        for (const WireRow<Source>& other : table) {
            if (&other != &row && other.offset >= row.offset && other.offset < end)
                return false;
        }
    }
    return true;
}

} // namespace wire
