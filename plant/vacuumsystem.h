#pragma once

#include "plant/controllerlink.h"
#include "plant/vacuumconstants.h"
#include "plant/vacuumpack.h"
#include "plant/vacuumplant.h"
#include "plant/vacuumregimes.h"

#include <QString>

#include <cstdint>
#include <functional>

namespace plant {

class MotionController;

// The vacuum plant under its two controllers: KVS with the pumps, their valves and the water, KVK with the
// chamber, the door's pressing, the regimes and, behind BKU, the gun's pump. Not thread safe. Time passes in
// `step` alone.
class VacuumSystem
{
public:
    enum class Start { Pumped, Air }; // at welding vacuum with the pumps at work; all off, the door released

    explicit VacuumSystem(std::uint32_t seed = 1);

    // Receives what the instructor should read: refusals, steps of the regimes, abnormal ends.
    void setLog(const std::function<void(const QString&)>& log);

    // Receives what KVK tells the console of its own accord: why a regime ended abnormally.
    void setAlarm(const std::function<void(const QString&)>& alarm) { m_regimes.setAlarm(alarm); }

    // A command of the console. Empty when it was carried out, otherwise why not; a refused command changes
    // nothing and is told to the log. "CONST" is the link's.
    QString commandKvs(const QString& text);
    QString commandKvk(const QString& text);

    void step(double dt); // s

    KvsPack kvsStatus() const;
    KvkPack kvkStatus() const;

    // What the links carry; the system outlives them.
    ControllerPort kvsPort();
    ControllerPort kvkPort();

    // At once. Pumped needs the door closed: false, and nothing has changed, when it is not.
    bool put(Start start);

    bool vacuumReached() const; // drives and spirals are allowed
    QString summary() const;    // one line on everything

    VacuumPlant& plant() { return m_plant; }
    const VacuumPlant& plant() const { return m_plant; }
    const VacuumRegimes& regimes() const { return m_regimes; }

private:
    QString executeKvs(const QString& text);
    QString executeKvk(const QString& text);
    QString switchDevice(Device device, bool on);
    QString refused(const char* controller, const QString& text, const QString& reason) const;
    PumpBlock pumpBlock(Device device) const;
    ValveBlock valveBlock(Device device) const;
    bool stopped() const;

    VacuumConstants m_constants;
    VacuumPlant m_plant;
    VacuumRegimes m_regimes;
    std::function<void(const QString&)> m_log;
};

// Lets both sides of the installation know of each other what their interlocks need.
void couple(MotionController& motion, VacuumSystem& vacuum);

} // namespace plant
