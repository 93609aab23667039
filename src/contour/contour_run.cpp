#include "consolehost.h"
#include "contour.h"
#include "drivecomm.h"
#include "programtab.h"
#include "ui_contour.h"
#include "weldstart.h"

void CONTOUR::run(int channel, const QString& text)
{
    m_start->run(channel, text);
}

void CONTOUR::command(const QString& text)
{
    m_machine.startUnanswered = true;
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
    const bool goesOn = m_start->goesOn();
    const WeldStart::Outcome outcome = m_testMode && !goesOn
                                           ? m_start->testMove(contourValues(), ui->weldSpeed->value())
                                           : m_start->weld(tables());
    if (outcome == WeldStart::NotWritten)
        return;
    if (!goesOn)
        m_passport.setForm(m_testMode ? Passport::Short : Passport::Long);
    updateGcode();
}

bool CONTOUR::refused(const QString& reason)
{
    if (!reason.isEmpty())
        emit message(reason, true);
    return !reason.isEmpty();
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
    if (m_start->walk(contour, current, row, position, ui->contourSpeed->text()) == WeldStart::Started)
        m_points.setMovesForward(contour.moveForward); // else the way was not gone, or not to its end
}

// --- the panels of the channels ---

void CONTOUR::on_pbRun_clicked()
{
    QString against;
    if (m_passport.isOpen()) // a record follows one run to its end
        against = QStringLiteral("[A]Ошибка! Паспорт предыдущего пуска ещё не закрыт, пуск невозможен!");
    if (!m_programs[0]->run(against))
        return;
    m_passport.setForm(Passport::Short);
    startPassport();
}

void CONTOUR::on_pbRun_2_clicked()
{
    m_programs[1]->run();
}

void CONTOUR::on_pbRun_3_clicked()
{
    m_programs[2]->run();
}
