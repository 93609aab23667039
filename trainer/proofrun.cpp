#include "trainer/proofrun.h"

#include "beamclock.h"
#include "plant/nc.h"
#include "schema.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double beamOn = 0.5;       // mA that burn
constexpr double besideSeam = 1.0;   // mm beyond what rounding makes
constexpr double currentWrong = 0.6; // mA
constexpr double fineStep = 0.001;   // s, while the channels meet
constexpr double pauseBetween = 1.0; // s between the starts of two channels
constexpr int samplesKept = 6000;

// The axes of the three channels without limits or inertia: what is beyond is told, and the weld goes on.
class Axes final : public plant::NcHost
{
public:
    explicit Axes(const MachineLimits& limits)
        : m_limits(limits)
    {}

    std::array<double, 4> at{}; // x, y, z, V
    double Ir = 0, If = 0;
    QStringList deadlocks;

    std::optional<double> position(int channel, const QString& word) const override
    {
        const double* axis = const_cast<Axes*>(this)->find(channel, word);
        return axis ? std::optional<double>(*axis) : std::nullopt;
    }
    QString refusal(int channel, const QString& word, double target) const override
    {
        if (channel != 3)
            return {};
        const double most = word == QLatin1String("IR") ? m_limits.beam : m_limits.focus;
        return target >= 0 && target <= most ? QString() : QStringLiteral("beyond 0 to %1 mA").arg(most);
    }
    void setPosition(int channel, const QString& word, double value) override
    {
        if (double* axis = find(channel, word))
            *axis = value;
    }
    void setVariable(int, const QString&, const QString&) override {}
    void report(const QString& text) override
    {
        if (text.startsWith(QLatin1String("deadlock")))
            deadlocks.append(text);
    }

private:
    double* find(int channel, const QString& word)
    {
        if (channel == 3)
            return word == QLatin1String("IR") ? &Ir : word == QLatin1String("IW") ? &If : nullptr;
        if (channel == 2)
            return word == QLatin1String("V") ? &at[3] : nullptr;
        const int i = QStringLiteral("XYZ").indexOf(word);
        return word.size() == 1 && i >= 0 ? &at[std::size_t(i)] : nullptr;
    }

    const MachineLimits& m_limits;
};

QString number(double value, int decimals = 1)
{
    return QString::number(value, 'f', decimals);
}

class Runner
{
public:
    Runner(const WeldTables& tables, const MachineLimits& limits, ProofRun* out)
        : m_tables(tables)
        , m_limits(limits)
        , m_out(*out)
        , m_ring(tables.contour.schema->circle())
        , m_clock(tables)
        , m_axes(limits)
        , m_nc(m_axes)
    {
        const QList<float>& first = tables.contour.rows.first().coords;
        for (int i = 0; i < 3; ++i)
            m_axes.at[std::size_t(i)] = double(first[i + (m_ring ? 1 : 0)]);
        if (m_ring)
            m_axes.at[3] = double(first[0]);
        m_before = m_axes.at;
        m_step = std::clamp(m_clock.end() / 40'000, 0.01, 0.1);
        m_keepEvery = std::max(m_step, m_clock.end() / samplesKept);
        m_out.roundedApart = m_clock.roundedWay();
    }

    void run()
    {
        start(3, technologyProgram(m_tables));
        forSeconds(pauseBetween);
        WeldStage stage;
        for (;; ++stage.stage) {
            const int stoppedFor = m_nc.waitingFor(3);
            runStage(stage);
            if (!running(3) || m_stuck)
                break;
            if (stage.stopsSeen < stage.stage || m_nc.waitingFor(3) == stoppedFor) {
                trouble(ProofRun::Deadlock,
                        QStringLiteral(
                            "канал 3 ждёт события %1, которого никто не даст (строка %2: %3); ток луча %4 мА")
                            .arg(m_nc.waitingFor(3))
                            .arg(m_nc.currentLine(3))
                            .arg(line(3), number(m_axes.Ir)));
                break;
            }
            if (m_axes.Ir > beamOn)
                trouble(ProofRun::StopBurns,
                        QStringLiteral("луч %1 мА горит на месте, пока не нажата «ДАЛЕЕ»")
                            .arg(number(m_axes.Ir)));
        }
        endStanding();
        limits();
        m_out.seconds = m_beamTime;
    }

private:
    bool running(int channel) const { return m_nc.mode(channel) == 5; }
    QString line(int channel) const { return m_text[channel].value(m_nc.currentLine(channel) - 1).trimmed(); }

    void trouble(ProofRun::Harm harm, const QString& text)
    {
        m_out.troubles.append({harm, m_beamTime, m_now.path, text});
    }

    void start(int channel, const QString& text)
    {
        m_text[channel] = text.split('\n');
        m_told[channel] = false;
        m_nc.start(channel, text);
        step(fineStep);
        m_last[channel - 1] = 0;
    }

    void forSeconds(double seconds)
    {
        for (; seconds > 0; seconds -= 0.01)
            step(0.01);
    }

    void runStage(WeldStage& stage)
    {
        const MotionPrograms programs = contourPrograms(m_tables, stage);
        if (m_ring) {
            start(2, programs.channel2);
            forSeconds(pauseBetween);
        }
        m_stoppedFor = m_nc.waitingFor(3);
        m_goes = false;
        m_beamTime = m_clock.stageBegin(stage.stage - 1);
        const double begun = m_beamTime;
        start(1, programs.channel1);
        const double most = m_clock.end() * 3 + 600;
        for (double spent = 0; spent < most;) {
            const bool motion = running(1) || running(2);
            const bool beam = running(3) && m_nc.waitingFor(3) == 0;
            if (!motion && !beam)
                break;
            if (motion && !beam && stands(1) && stands(2)) { // no one is left to give an event
                m_stuck = true;
                tellStuck();
                break;
            }
            const double dt = m_goes ? m_step : fineStep;
            step(dt);
            spent += dt;
            if (spent >= most) {
                m_stuck = true;
                trouble(ProofRun::Deadlock, QStringLiteral("программы не кончаются"));
            }
        }
        ProofRun::Stage times;
        for (std::size_t i = 0; i < 3; ++i)
            times.seconds[i] = std::max(0.0, m_last[i] - begun);
        m_out.stages.append(times);
    }

    bool stands(int channel) const { return !running(channel) || m_nc.waitingFor(channel) != 0; }

    void tellStuck()
    {
        QStringList waits;
        for (int channel = 1; channel <= 3; ++channel) {
            if (running(channel) && m_nc.waitingFor(channel) != 0)
                waits.append(QStringLiteral("канал %1 ждёт события %2 (строка %3)")
                                 .arg(channel)
                                 .arg(m_nc.waitingFor(channel))
                                 .arg(m_nc.currentLine(channel)));
        }
        trouble(ProofRun::Deadlock, waits.join(QStringLiteral(", ")));
    }

    void step(double dt)
    {
        m_nc.step(dt);
        // The beam's clock runs from the event that lets channel 3 go on.
        if (!m_goes && running(3) && running(1) && m_nc.waitingFor(3) != m_stoppedFor)
            m_goes = true;
        else if (m_goes)
            m_beamTime += dt;
        m_now = m_clock.at(m_beamTime);
        for (int channel = 1; channel <= 3; ++channel) {
            if (m_nc.state(channel) == plant::ChannelState::Error && !m_told[channel]) {
                m_told[channel] = true;
                trouble(ProofRun::ChannelError, QStringLiteral("канал %1 в ошибке: %2 [%3]")
                                                    .arg(channel)
                                                    .arg(m_nc.error(channel), line(channel)));
            }
        }
        watch(dt);
    }

    void watch(double dt)
    {
        ProofRun::Sample sample{m_beamTime, m_now.path, m_axes.at, m_axes.Ir, m_axes.If, 0};
        double way = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            double moved = m_axes.at[i] - m_before[i];
            if (i == 3)
                moved = std::remainder(moved, 360.0);
            ProofRun::AxisUse& use = m_use[i];
            use.least = std::min(use.least, m_axes.at[i]);
            use.most = std::max(use.most, m_axes.at[i]);
            use.way += std::fabs(moved);
            use.feed = std::max(use.feed, std::fabs(moved) / dt * 60);
            const bool turn = i == 3;
            if (turn)
                moved *= double(m_tables.contour.schema->D()) * M_PI / 360;
            if (!m_ring || turn)
                way = std::hypot(way, moved);
            if (std::fabs(moved) > 0)
                m_last[turn ? 1 : 0] = m_beamTime;
        }
        if (m_axes.Ir != m_IrBefore || m_axes.If != m_IfBefore || m_axes.Ir > beamOn)
            m_last[2] = m_beamTime;
        m_IrBefore = m_axes.Ir;
        m_IfBefore = m_axes.If;
        m_before = m_axes.at;
        sample.feed = way / dt * 60;
        if (m_goes) {
            judge(way, dt);
            if (m_beamTime >= m_nextKept) {
                m_out.samples.append(sample);
                m_nextKept = m_beamTime + m_keepEvery;
            }
        }
    }

    void judge(double way, double dt)
    {
        const bool on = m_axes.Ir > beamOn;
        if (on)
            lay(way, dt);
        // A beam that waits at a stop burns too, and is told there.
        const bool stands = on && !(way > 1e-6) && m_nc.waitingFor(3) == 0;
        if (!stands)
            endStanding();
        else if (m_standing <= 0)
            m_standsFrom = m_now.path;
        m_standing = stands ? m_standing + dt : 0;
        if (m_nc.waitingFor(3) != 0 || !running(3))
            return;

        const double margin = m_clock.roundedSeconds() + 0.003 + dt;
        double least = 0, most = 0;
        m_clock.span(m_beamTime, margin, &least, &most);
        const bool wrong = m_axes.Ir < least - currentWrong || m_axes.Ir > most + currentWrong;
        once(&m_wrong, wrong, ProofRun::WrongCurrent, [&] {
            return QStringLiteral("ток луча %1 мА, по таблице %2").arg(number(m_axes.Ir), number(m_now.Ir));
        });
        const double off = on ? apart() : 0;
        m_out.apart = std::max(m_out.apart, off);
        once(&m_beside, off > besideSeam + m_out.roundedApart, ProofRun::Beside, [&] {
            return QStringLiteral("луч %1 мА в %2 мм от своего места").arg(number(m_axes.Ir), number(off));
        });
    }

    // Each stretch of trouble once.
    template <typename Text>
    void once(bool* told, bool now, ProofRun::Harm harm, const Text& text)
    {
        if (now && !*told)
            trouble(harm, text());
        *told = now;
    }

    void endStanding()
    {
        if (m_standing > m_limits.still)
            m_out.troubles.append(
                {ProofRun::Standing, m_beamTime, m_standsFrom,
                 QStringLiteral("луч горит на неподвижной детали %1 с").arg(number(m_standing))});
        m_standing = 0;
    }

    void lay(double way, double dt)
    {
        if (m_out.laid.isEmpty() || m_out.laid.last().row != m_now.row)
            m_out.laid.append({m_now.row, m_now.path, m_now.path, 0, 0, 0});
        ProofRun::Laid& laid = m_out.laid.last();
        laid.to = m_now.path;
        laid.joules += m_axes.Ir * m_limits.voltage * dt;
        laid.way += way;
        laid.seconds += dt;
    }

    // Way from where the table has the beam to where the part is under it. Across the plane of a circle the
    // way between two points is the machine's own.
    double apart() const
    {
        const Schema& schema = *m_tables.contour.schema;
        const QList<float> place = m_clock.place(m_now.path);
        const int across = schema.rotate() ? planeColumns(schema.Aux()).third : -1;
        double off = 0;
        for (int i = 0; i < 3; ++i) {
            if (i != across)
                off = std::hypot(off, m_axes.at[std::size_t(i)] - double(place[i + (m_ring ? 1 : 0)]));
        }
        if (m_ring)
            off = std::hypot(off, std::remainder(m_axes.at[3] - double(place[0]), 360.0) *
                                      double(schema.D()) * M_PI / 360);
        return std::isfinite(off) ? off : 0;
    }

    void limits()
    {
        static const char* const names[] = {"LX", "LY", "Z", "V"};
        for (std::size_t i = 0; i < (m_ring ? 4U : 3U); ++i) {
            const QString name = QLatin1String(names[i]);
            const ProofRun::AxisUse& use = m_use[i];
            m_out.axes.insert(name, use);
            const MachineLimits::Axis limit = m_limits.axes.value(name);
            if (!limit.endless && (use.least < limit.min || use.most > limit.max))
                trouble(ProofRun::BeyondLimit, QStringLiteral("ось %1: от %2 до %3 мм, допустимо от %4 до %5")
                                                   .arg(name, number(use.least, 2), number(use.most, 2),
                                                        number(limit.min), number(limit.max)));
            if (use.feed > limit.feed * 1.001)
                trouble(ProofRun::TooFast, QStringLiteral("ось %1: скорость %2, допустимо %3 в минуту")
                                               .arg(name, number(use.feed), number(limit.feed)));
        }
    }

    const WeldTables& m_tables;
    const MachineLimits& m_limits;
    ProofRun& m_out;
    const bool m_ring;
    const BeamClock m_clock;
    Axes m_axes;
    plant::NcMachine m_nc;
    QStringList m_text[4];
    bool m_told[4] = {};
    std::array<ProofRun::AxisUse, 4> m_use;
    std::array<double, 4> m_before{};
    std::array<double, 3> m_last{}; // when each channel last did something
    double m_IrBefore = 0, m_IfBefore = 0;
    double m_step = 0.01, m_keepEvery = 0, m_nextKept = 0;
    double m_beamTime = 0;
    BeamClock::Now m_now{0, 0, 0};
    int m_stoppedFor = 0;
    bool m_goes = false; // channel 3 has gone on in this stage
    bool m_stuck = false;
    double m_standing = 0, m_standsFrom = 0;
    bool m_wrong = false, m_beside = false;
};

} // namespace

bool ProofRun::has(Harm harm) const
{
    return std::any_of(troubles.begin(), troubles.end(),
                       [&](const Trouble& one) { return one.harm == harm; });
}

ProofRun runWeld(const WeldTables& tables, const MachineLimits& limits)
{
    ProofRun run;
    Runner(tables, limits, &run).run();
    return run;
}
