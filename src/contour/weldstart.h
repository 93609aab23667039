#pragma once

#include "weldprogram.h"

#include <QObject>
#include <QVector>

#include <array>
#include <chrono>
#include <optional>

class ProgramTab;

// Starts what needs more than one channel, and knows where a weld with technological stops stands. Programs
// are made from values. All of an operation are written before the first is started: a channel whose
// partner's program is missing would wait for it at its event for ever. Between two channels the operator's
// hand has to wait for the pauses of `Site`; what fails or is broken off is told in the journal.
class WeldStart : public QObject
{
    Q_OBJECT
public:
    enum Outcome {
        NotWritten, // nothing has been started, and the next attempt does the same
        BrokenOff,  // in a pause: the channels that were to follow have not been started
        Started
    };

    WeldStart(const std::array<ProgramTab*, 3>& tabs, QObject* parent); // of the channels 1 to 3

    // A weld stands at a technological stop, and its next start goes on from there.
    bool goesOn() const { return m_weld.stopsSeen >= m_weld.stage; }
    void forget() { m_weld = WeldStage(); }

    // These show their programs in the tabs. `speed` in mm/min.
    Outcome weld(const WeldTables& tables);
    Outcome testMove(const WeldContour& contour, float speed);

    // These do not. The walk is that of `navigationPrograms`.
    Outcome walk(const WeldContour& contour, int from, int to, const QList<float>& position,
                 const QString& speedText);
    Outcome run(int channel, const QString& program);

signals:
    void message(const QString& text, bool show); // a journal line

private:
    struct Launch // of a program on its channel
    {
        int channel;
        QString program;
        std::chrono::microseconds pause; // behind its start
    };

    ProgramTab* tab(int channel) const;
    static QVector<Launch> motion(const MotionPrograms& programs, std::chrono::microseconds pause);
    QVector<Launch> contour(const WeldTables& tables, WeldStage& weld);
    void show(const Schema& schema, const MotionPrograms& programs);
    // `next`: where the weld stands then; left as it is without one.
    Outcome launch(const QVector<Launch>& launches, const std::optional<WeldStage>& next = {});

    const std::array<ProgramTab*, 3> m_tabs;
    WeldStage m_weld;
};
