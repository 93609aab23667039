#include "consolehost.h"
#include "contour.h"
#include "drivecomm.h"
#include "programtab.h"
#include "requiredpause.h"
#include "schema.h"
#include "site.h"
#include "ui_contour.h"

#include <algorithm>

// A program to be started on its channel.
struct Launch
{
    int channel;
    QString program;
    std::chrono::microseconds pause; // behind its start
};

namespace {

// Channel 1 last: it gives the event that the others wait for.
QVector<Launch> motion(const MotionPrograms& programs, std::chrono::microseconds pause)
{
    QVector<Launch> launches;
    if (!programs.channel2.isEmpty())
        launches.append({2, programs.channel2, pause});
    launches.append({1, programs.channel1, {}});
    return launches;
}

} // namespace

void CONTOUR::run(int channel, const QString& text)
{
    const QVector<Launch> launches{{channel, text, {}}};
    if (write(launches))
        start(launches);
}

// All programs are written before the first is started: a channel whose partner's program is missing would
// wait for it at its event for ever.
bool CONTOUR::write(const QVector<Launch>& launches)
{
    return std::all_of(launches.begin(), launches.end(), [this](const Launch& launch) {
        return program(launch.channel)->write(launch.program);
    });
}

bool CONTOUR::start(const QVector<Launch>& launches)
{
    for (int i = 0; i < launches.size(); ++i) {
        if (i > 0 && !RequiredPause::wait(launches[i - 1].pause)) {
            emit message(QStringLiteral("[W]Пуск прерван, канал %1 не запущен").arg(launches[i].channel),
                         true);
            return false;
        }
        program(launches[i].channel)->start();
    }
    return true;
}

ProgramTab* CONTOUR::program(int channel) const
{
    Q_ASSERT(channel >= 1 && channel <= 3);
    return m_programs[std::size_t(channel) - 1];
}

void CONTOUR::command(const QString& text)
{
    m_startUnanswered = true;
    if (ConsoleHost* window = host())
        window->drives()->command(text);
}

// --- the weld ---

void CONTOUR::on_pbGcode_clicked()
{
    emit message(QStringLiteral("[I]Нажата кнопка 'ПУСК' панели Технология"), false);
    if (!schema()) {
        emit message(QStringLiteral("[A]Ошибка! Контур не создан, пуск невозможен!"), true);
        return;
    }
    if (refused(tooLongText(programLines(tables()))))
        return;
    WeldStage weld = m_weld;
    const bool goesOn = weld.stopsSeen >= weld.stage;
    QVector<Launch> launches;
    if (goesOn) {
        // Channel 3 still runs and stands at its event: only the motion goes on.
        weld.stopsSeen = 0;
        ++weld.stage;
        launches = genContour(weld);
    } else if (m_testMode) {
        launches = genTestMove();
    } else {
        weld = WeldStage();
        launches = genTechnology() + genContour(weld);
    }
    if (!write(launches))
        return; // the next press does the same
    if (!goesOn)
        m_passport.setForm(m_testMode ? Passport::Short : Passport::Long);
    m_weld = WeldStage(); // a start that is broken off is nothing to go on with
    if (start(launches))
        m_weld = weld;
    updateGcode();
}

bool CONTOUR::refused(const QString& reason)
{
    if (!reason.isEmpty())
        emit message(reason, true);
    return !reason.isEmpty();
}

// Channel 3 must wait for its event before the others start.
QVector<Launch> CONTOUR::genTechnology()
{
    const QString text = technologyProgram(tables());
    program(3)->show(text, QStringLiteral("Технология"));
    return {{3, text, site().pauses.beforeContour}};
}

QVector<Launch> CONTOUR::genContour(WeldStage& weld)
{
    const MotionPrograms programs = contourPrograms(tables(), weld);
    const QString doubt = doubtText(programs.doubt);
    if (weld.stage == 1 && !doubt.isEmpty()) // what follows a stop was told with the start
        emit message(doubt, true);
    showMotion(programs);
    return motion(programs, site().pauses.beforeManipulator);
}

QVector<Launch> CONTOUR::genTestMove()
{
    const MotionPrograms programs = testMovePrograms(contourValues(), ui->weldSpeed->value());
    showMotion(programs);
    return motion(programs, site().pauses.navigation);
}

void CONTOUR::showMotion(const MotionPrograms& programs)
{
    if (schema()->circle())
        program(2)->show(programs.channel2, QStringLiteral("Перемещение изделия"));
    program(1)->show(programs.channel1, QStringLiteral("Перемещение манипулятора"));
}

// --- touching a point ---

void CONTOUR::onContourCellClicked(int row, int column)
{
    const QList<float> position = coords();
    const int current = m_points.current();
    m_points.setCurrent(current); // the mark follows the machine, not the finger
    if (column == m_points.frameColumn()) {
        onContourCellDoubleClicked(row, column);
        return;
    }
    constexpr int stepLines = 4; // in both channels
    if (refused(tooLongText(stepLines * qAbs(qint64(row) - qMax(0, current)))))
        return;
    WeldContour contour = contourValues();
    if (row != current)
        contour.moveForward = current < row;
    const auto launches =
        motion(navigationPrograms(contour, current, row, position, ui->contourSpeed->text()),
               site().pauses.navigation);
    if (write(launches) && start(launches)) // else the way was not gone, or not to its end
        m_points.setMovesForward(contour.moveForward);
}

// --- the panels of the channels ---

void CONTOUR::on_pbRun_clicked()
{
    QString against;
    if (m_passport.isOpen()) // a record follows one run to its end
        against = QStringLiteral("[A]Ошибка! Паспорт предыдущего пуска ещё не закрыт, пуск невозможен!");
    if (!program(1)->run(against))
        return;
    m_passport.setForm(Passport::Short);
    startPassport();
}

void CONTOUR::on_pbRun_2_clicked()
{
    program(2)->run();
}

void CONTOUR::on_pbRun_3_clicked()
{
    program(3)->run();
}
