#include "plant/beamunit.h"

#include "plant/controller.h"

#include <cmath>
#include <cstring>

namespace plant {

namespace {

constexpr double period = 0.1; // s between two writes

constexpr float highVoltage = 50;         // kV: 800 mA make the 40 kW of the gun
constexpr float cutOffVoltage = 3;        // kV that hold back the whole beam
constexpr float cutOffSlope = 2.0F / 800; // kV less for each mA of beam
constexpr float cathodeVoltage = 1.2F;    // kV
constexpr float cathodeCurrent = 85;      // mA
constexpr float highVoltageMost = 0.1F;   // Pa in the gun

} // namespace

BeamUnit::BeamUnit(const MotionController& controller, const QString& suffix)
    : m_controller(controller)
    , m_shared(QStringLiteral("ELA_SHM_KEY") + suffix)
{
    // The second attempt to attach is for a console that made the segment just now.
    if (!m_shared.attach() && !m_shared.create(sizeof(BeamBlock)))
        m_shared.attach();
    publish();
}

void BeamUnit::step(double realSeconds)
{
    m_waited += realSeconds;
    if (m_waited < period)
        return;
    m_waited = std::fmod(m_waited, period);
    publish();
}

void BeamUnit::publish()
{
    if (!m_running || !speaks())
        return;
    BeamBlock& b = m_block;
    const auto beam = static_cast<float>(m_controller.beamCurrent());
    const bool highOn =
        m_controller.channelState(3) == ChannelState::Running && m_gunPressure < highVoltageMost;
    ++b.heartbeat;
    b.gunPressure = m_gunPressure;
    b.focusActual = b.focusSet = static_cast<float>(m_controller.focusCurrent());
    b.beamActual = highOn ? beam : 0;
    b.beamSet = beam;
    b.acceleratingVoltage = highOn ? highVoltage : 0;
    b.lockingVoltage = highOn ? cutOffVoltage - cutOffSlope * beam : 0;
    b.bombardmentVoltage = highOn ? cathodeVoltage : 0;
    b.bombardmentCurrent = highOn ? cathodeCurrent : 0;
    b.rasterOn = static_cast<std::int32_t>(raster("@RASTERON%"));
    b.rasterType = static_cast<std::int32_t>(raster("@RASTERTYPE%"));
    b.rasterAmpX = raster("@RASTERAMPX");
    b.rasterAmpY = raster("@RASTERAMPY");
    b.rasterParam = raster("@RASTERPARAM");
    b.rasterRotation = static_cast<std::int32_t>(raster("@RASTERCW%"));
    b.rasterAngle = raster("@RASTERANGLE");
    b.rasterShiftX = raster("@RASTERSHIFTX");
    b.rasterShiftY = raster("@RASTERSHIFTY");
    b.rasterFreq = raster("@RASTERFREQ");
    m_shared.lock();
    std::memcpy(m_shared.data(), &b, sizeof b);
    m_shared.unlock();
}

// 0 for a variable that no program has written, or with no number.
float BeamUnit::raster(const char* variable) const
{
    return m_controller.variable(QLatin1String(variable)).toFloat();
}

} // namespace plant
