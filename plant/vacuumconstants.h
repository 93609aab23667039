#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace plant {

// Numbers of the constants that KVS keeps ("KBC:" to the console) and of those of KVK ("KBK:"); pressures in
// Pa, flows in l/min, temperatures in deg C, times in s.
enum class KvsConst {
    NZ1Pressure = 1, // in the foreline, to start NZ1
    NZ2Pressure = 2, // in the roughing line, to start NZ2
    ND1Pressure = 3, // in the diffusion pump, to heat it
    BackingMost = 4, // behind the hot diffusion pump
    VP1Pressure = 5, // in the chamber, to open VP1
    VP2Difference = 6,
    VP3Difference = 7,
    VP5Difference = 8,
    OilHot = 9,      // ND1 works
    OilCold = 10,    // ND1 may be shut off
    FlowLeast1 = 11, // of circuit 1; those of the circuits 2 to 7 follow
    WaterMost = 18,  // overheat protection of the pumps
};

enum class KvkConst {
    RoughVacuum = 1,    // ends the forevacuum pumping
    WorkingVacuum = 2,  // ends the chamber pumping
    DrivesPressure = 3, // drives and spirals are allowed below it
    Atmosphere = 4,     // the door may be released above it
    TurboPressure = 5,  // in the gun, to start TMN
    WatchTime = 6,      // a trouble that lasts longer ends the regime
    DrivesWait = 7,     // bleeding waits so long for the drives to go off
};

// The tables of parameters of both controllers. They live in the controllers' memory: a restart of the
// installation brings the first values back.
class VacuumConstants
{
public:
    enum class Owner { Kvs, Kvk };

    VacuumConstants();

    double operator()(KvsConst id) const { return value(Owner::Kvs, static_cast<int>(id)); }
    double operator()(KvkConst id) const { return value(Owner::Kvk, static_cast<int>(id)); }
    double flowLeast(int circuit) const // circuits 1 to 7
    {
        return value(Owner::Kvs, static_cast<int>(KvsConst::FlowLeast1) + circuit - 1);
    }

    // The argument of SET as it came, "KBK:12,2.5000000". Empty when done, otherwise why not.
    QString set(Owner owner, const QString& argument);

    QByteArray records(Owner owner) const; // the table as a constants packet carries it

private:
    struct Constant
    {
        int id;
        float value;
        float least;
        float most;
        const char* text; // UTF-8
    };
    std::vector<Constant>& table(Owner owner) { return owner == Owner::Kvs ? m_kvs : m_kvk; }
    const std::vector<Constant>& table(Owner owner) const { return owner == Owner::Kvs ? m_kvs : m_kvk; }
    double value(Owner owner, int id) const;

    std::vector<Constant> m_kvs;
    std::vector<Constant> m_kvk;
};

} // namespace plant
