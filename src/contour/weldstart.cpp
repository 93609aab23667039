#include "weldstart.h"

#include "programtab.h"
#include "requiredpause.h"
#include "schema.h"
#include "site.h"
#include "weldproof.h"

#include <algorithm>

WeldStart::WeldStart(const std::array<ProgramTab*, 3>& tabs, QObject* parent)
    : QObject(parent)
    , m_tabs(tabs)
{}

ProgramTab* WeldStart::tab(int channel) const
{
    Q_ASSERT(channel >= 1 && channel <= 3);
    return m_tabs[std::size_t(channel) - 1];
}

WeldStart::Outcome WeldStart::weld(const WeldTables& tables)
{
    WeldStage weld = m_weld;
    QVector<Launch> launches;
    if (goesOn()) {
        // Channel 3 still runs and stands at its event: only the motion goes on.
        weld.stopsSeen = 0;
        ++weld.stage;
    } else {
        weld = WeldStage();
        // Channel 3 must wait for its event before the others start.
        const QString beam = technologyProgram(tables);
        tab(3)->show(beam, QStringLiteral("Технология"));
        launches.append({3, beam, site().pauses.beforeContour});
    }
    launches += contour(tables, weld);
    return launch(launches, weld);
}

QVector<WeldStart::Launch> WeldStart::contour(const WeldTables& tables, WeldStage& weld)
{
    const MotionPrograms programs = contourPrograms(tables, weld);
    if (weld.stage == 1) { // what follows a stop was told with the start
        for (const QString& line : proofLines(weldProof(tables, programs)))
            emit message(line, true);
    }
    show(*tables.contour.schema, programs);
    return motion(programs, site().pauses.beforeManipulator);
}

WeldStart::Outcome WeldStart::testMove(const WeldContour& contour, float speed)
{
    const MotionPrograms programs = testMovePrograms(contour, speed);
    show(*contour.schema, programs);
    return launch(motion(programs, site().pauses.navigation), m_weld);
}

void WeldStart::show(const Schema& schema, const MotionPrograms& programs)
{
    if (schema.circle())
        tab(2)->show(programs.channel2, QStringLiteral("Перемещение изделия"));
    tab(1)->show(programs.channel1, QStringLiteral("Перемещение манипулятора"));
}

WeldStart::Outcome WeldStart::walk(const WeldContour& contour, int from, int to, const QList<float>& position,
                                   const QString& speedText)
{
    const MotionPrograms programs = navigationPrograms(contour, from, to, position, speedText);
    return launch(motion(programs, site().pauses.navigation));
}

WeldStart::Outcome WeldStart::run(int channel, const QString& program)
{
    return launch({{channel, program, {}}});
}

// Channel 1 last: it gives the event that the others wait for.
QVector<WeldStart::Launch> WeldStart::motion(const MotionPrograms& programs, std::chrono::microseconds pause)
{
    QVector<Launch> launches;
    if (!programs.channel2.isEmpty())
        launches.append({2, programs.channel2, pause});
    launches.append({1, programs.channel1, {}});
    return launches;
}

WeldStart::Outcome WeldStart::launch(const QVector<Launch>& launches, const std::optional<WeldStage>& next)
{
    const auto written = [this](const Launch& launch) { return tab(launch.channel)->write(launch.program); };
    if (!std::all_of(launches.begin(), launches.end(), written))
        return NotWritten;
    if (next)
        forget(); // a start that is broken off is nothing to go on with
    for (int i = 0; i < launches.size(); ++i) {
        const int channel = launches[i].channel;
        if (i > 0 && !RequiredPause::wait(launches[i - 1].pause)) {
            emit message(QStringLiteral("[W]Пуск прерван, канал %1 не запущен").arg(channel), true);
            return BrokenOff;
        }
        tab(channel)->start();
    }
    if (next)
        m_weld = *next;
    return Started;
}
