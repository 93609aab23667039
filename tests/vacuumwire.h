#pragma once

#include "linkcontroller.h"

#include <QtEndian>

// The status datagrams of both vacuum controllers as their documents give them, in order of bytes. Written
// from the tables of the wire, not from the console's.
namespace vacuumwire {

enum Kind { I, U, B, F, D };

struct Field
{
    QString name;
    int offset;
    Kind kind;

    int width() const { return kind == B ? 1 : kind == D ? 8 : 4; }
};

struct Wire
{
    int size;
    quint16 constants; // signature of a constants packet
    QVector<Field> fields;
    QStringList order; // in which one datagram is told

    QByteArray empty() const
    {
        QByteArray bytes(size, '\0');
        bytes[0] = 0x50;
        bytes[1] = 0x56;
        return bytes;
    }
    const Field& field(const QString& name) const
    {
        return *std::find_if(fields.cbegin(), fields.cend(), [&](const Field& f) { return f.name == name; });
    }
    static void put(QByteArray& datagram, const Field& field, double value)
    {
        uchar* at = reinterpret_cast<uchar*>(datagram.data()) + field.offset;
        switch (field.kind) {
        case I:
            return qToLittleEndian(static_cast<qint32>(value), at);
        case U:
            return qToLittleEndian(static_cast<quint32>(value), at);
        case F:
            return qToLittleEndian(static_cast<float>(value), at);
        case D:
            return qToLittleEndian(value, at);
        case B:
            *at = static_cast<uchar>(value);
        }
    }
    void put(QByteArray& datagram, const QString& name, double value) const
    {
        put(datagram, field(name), value);
    }
};

// Each word of `heads` with each word of `tails` behind it.
inline QStringList cross(const char* heads, const char* tails)
{
    QStringList names;
    for (const QString& head : QString::fromLatin1(heads).split(' ')) {
        for (const QString& tail : QString::fromLatin1(tails).split(' '))
            names += head + tail;
    }
    return names;
}

inline void block(Wire& wire, int offset, Kind kind, const QStringList& names)
{
    for (const QString& name : names) {
        wire.fields.append({name, offset, kind});
        offset += wire.fields.last().width();
    }
}

inline const Wire& kvs()
{
    static const Wire wire = [] {
        const char* const pumps = "NL1 NL2 NZ1 NZ2 ND1 NW2";
        const char* const valves = "VP1 VP2 VP3 VP5 VP6 VP7";
        const QStringList units = cross("", "PTState LEDState SpiralState AlgNumber AlgState AlgTime");
        const QStringList flags =
            cross("", "PT1Valid PT2Valid PT3Valid PowerPT Power380V Power110V Power24V PowerDischarge "
                      "PowerFan EmStop RopeAlarm PowerSHUK PowerKVK DoorClosed");
        const QStringList sensors =
            cross("", "TempCorpND TempOilND") + cross("Temp Disch", "1 2 3 4 5 6 7 8");
        Wire w{404, 0x5652, {}, {}};
        block(w, 4, I, cross(pumps, "State Power Thermal LockOn LockOff Error"));
        block(w, 148, I, cross(valves, "State Opened Closed LockOn LockOff"));
        block(w, 268, I, units);
        block(w, 292, B, flags);
        block(w, 308, D, cross("PT", "1 2 3"));
        block(w, 332, F, sensors);
        w.order = cross(pumps, "State Power Thermal Error") + cross(valves, "State Opened Closed") +
                  cross(pumps, "LockOn") + cross(pumps, "LockOff") + cross(valves, "LockOn") +
                  cross(valves, "LockOff") + units + flags + cross("PT", "1 2 3") + sensors;
        return w;
    }();
    return wire;
}

inline const Wire& kvk()
{
    static const Wire wire = [] {
        const QStringList flags =
            cross("", "PT4Valid PT5Valid PressureOK NP1Power NW1Power DrivesLock SpiralLock ShutdownLock");
        Wire w{144, 0x5651, {}, {}};
        block(w, 4, I, cross("VP4 VP8", "State Opened Closed LockOn LockOff"));
        block(w, 44, I, cross("Door", "State Unpressed Pressed LockOn LockOff"));
        block(w, 64, D, cross("PT", "4 5"));
        block(w, 80, B, flags);
        block(w, 88, U, cross("Alg", "Number Time Run"));
        block(w, 104, I, cross("", "BKUValid StateVPT StateVE StateTMN"));
        block(w, 120, U, cross("State", "NET ACC MP Locks"));
        block(w, 136, F, cross("", "PT6 TMNFreq"));
        w.order =
            cross("VP4 VP8", "State Opened Closed") + cross("Door", "State Unpressed Pressed") +
            cross("VP4 VP8 Door", "LockOn") + cross("VP4 VP8 Door", "LockOff") + cross("PT", "4 5") + flags +
            cross("Alg", "Run Number Time") +
            cross("", "BKUValid StateVPT StateVE StateTMN StateACC StateNET StateMP StateLocks PT6 TMNFreq");
        return w;
    }();
    return wire;
}

} // namespace vacuumwire
