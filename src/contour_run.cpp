#include "consolehost.h"
#include "contour.h"
#include "drivecomm.h"
#include "programfile.h"
#include "schema.h"
#include "site.h"
#include "ui_contour.h"

#include <QDebug>
#include <QThread>

namespace {

void pauseFor(std::chrono::microseconds pause)
{
    QThread::usleep(static_cast<unsigned long>(pause.count()));
}

} // namespace

void CONTOUR::run(int channel, const QString& text)
{
    const QString path = m_prgDir + QStringLiteral("_temp%1.npg").arg(channel);
    if (writeProgramFile(path, text))
        execute(channel, path);
}

void CONTOUR::execute(int channel, const QString& path)
{
    if (ConsoleHost* window = host())
        window->drives()->command(QStringLiteral("EXEC_%1(%2)").arg(QString::number(channel), path));
}

// --- the weld ---

void CONTOUR::on_pbGcode_clicked()
{
    Q_ASSERT(m_schema);
    emit message(QStringLiteral("[I]Нажата кнопка 'ПУСК' панели Технология"), false);
    if (m_weld.stopsSeen >= m_weld.stage) {
        // Channel 3 still runs and stands at its event: only the motion goes on.
        m_weld.stopsSeen = 0;
        ++m_weld.stage;
        genContour();
    } else if (m_testMode) {
        m_techRun = false;
        genTestMove();
    } else {
        m_techRun = true;
        m_weld = WeldStage();
        genTechnology();
        pauseFor(site().pauses.beforeContour); // channel 3 must wait for its event first
        genContour();
    }
    updateGcode();
}

void CONTOUR::genTechnology()
{
    const QString text = technologyProgram(tables());
    ui->teGcode_3->setPlainText(text);
    ui->lbProgName3->setText(QStringLiteral("Технология"));
    run(3, text);
}

void CONTOUR::genContour()
{
    startMotion(contourPrograms(tables(), m_weld), true, site().pauses.beforeManipulator);
}

void CONTOUR::genTestMove()
{
    startMotion(testMovePrograms(contourValues(), ui->weldSpeed->value()), true, site().pauses.navigation);
}

// Channel 1 last: it gives the event that the others wait for.
void CONTOUR::startMotion(const MotionPrograms& programs, bool show, std::chrono::microseconds pause)
{
    if (m_schema->circle()) {
        if (show) {
            ui->teGcode_2->setPlainText(programs.channel2);
            ui->lbProgName2->setText(QStringLiteral("Перемещение изделия"));
        }
        run(2, programs.channel2);
        pauseFor(pause);
    }
    if (show) {
        ui->teGcode->setPlainText(programs.channel1);
        ui->lbProgName1->setText(QStringLiteral("Перемещение манипулятора"));
    }
    run(1, programs.channel1);
}

// --- touching a point ---

void CONTOUR::onContourCellClicked(int row, int column)
{
    Q_ASSERT(m_schema);
    setCurrentPoint(m_currentPoint); // the mark follows the machine, not the finger
    if (column == frameColumn()) {
        onContourCellDoubleClicked(row, column);
        return;
    }
    if (row != m_currentPoint)
        m_moveForward = m_currentPoint < row;
    startMotion(navigationPrograms(contourValues(), m_currentPoint, row, coords(), ui->contourSpeed->text()),
                false, site().pauses.navigation);
}

// --- the panels of the channels ---

void CONTOUR::on_pbRun_clicked()
{
    runEdited(1, QStringLiteral("_temp.npg"));
    m_techRun = false;
    startPassport();
}

void CONTOUR::on_pbRun_2_clicked()
{
    runEdited(2, QStringLiteral("_temp2.npg"));
}

void CONTOUR::on_pbRun_3_clicked()
{
    runEdited(3, QStringLiteral("_temp3.npg"));
}

void CONTOUR::runEdited(int channel, const QString& file)
{
    emit message(QStringLiteral("[I]Нажата кнопка 'Пуск программы' панели 'Канал %1'").arg(channel), false);
    if (writeProgramFile(m_prgDir + file, programEdit(channel)->toPlainText()))
        execute(channel, m_prgDir + file);
}
