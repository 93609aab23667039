#include "consolehost.h"
#include "contour.h"
#include "programtab.h"
#include "ui_contour.h"
#include "weldstart.h"

#include <QTimerEvent>

// What the panel brings to the record of a run.

void CONTOUR::startPassport()
{
    if (!m_passport.open(passportHead(), m_tech.number(0, TechTable::Speed)))
        return;
    ui->twTechTab->setCurrentCell(0, 0);
    timerEvent(nullptr);
    startTimer(Passport::period, Qt::PreciseTimer);
}

Passport::Head CONTOUR::passportHead() const
{
    Passport::Head head;
    head.start = QDateTime::currentDateTime();
    if (const ConsoleHost* window = host()) {
        head.name = window->programName();
        head.welder = window->getUserName();
    }
    for (const ProgramTab* tab : m_programs)
        head.programs << tab->text();
    if (m_passport.form() == Passport::Short)
        return head;
    head.closed = m_points.closed();
    head.length = ui->length->value();
    head.passes = ui->nrings->value();
    head.weldSpeed = ui->weldSpeed->value();
    for (int row = 0; row < ui->twContour->rowCount(); ++row) {
        QString cells;
        for (int column = 0; column < ui->twContour->columnCount(); ++column) {
            const QTableWidgetItem* item = ui->twContour->item(row, column);
            cells += (item ? item->text() : QString()) + QLatin1Char(' ');
        }
        head.contour << cells;
    }
    for (int row = 0; row < m_tech.rowCount(); ++row)
        head.technology << m_tech.line(row,
                                       {TechTable::Path, TechTable::Ir, TechTable::If, TechTable::Speed});
    return head;
}

Passport::Moment CONTOUR::passportMoment() const
{
    Passport::Moment now;
    now.runs = m_machine.runs(m_passport.form() == Passport::Long ? 3 : 1);
    now.moving = m_machine.axisMoving;
    now.way = ui->length->value() * (m_points.closed() ? ui->nrings->value() : 1.0F);
    const ConsoleHost* window = host();
    for (const QString& axis : Passport::axes())
        now.coords << (window ? window->coord(axis) : 0.0F);
    now.pressure = window ? window->pressure() : 0.0F;
    now.techRows = m_tech.rowCount();
    now.techRow = [this](int row) { return m_tech.row(row); };
    return now;
}

void CONTOUR::timerEvent(QTimerEvent* event)
{
    const Passport::Moment now = passportMoment();
    if (m_passport.sample(now, event != nullptr)) {
        if (const auto row = m_passport.follow(now))
            ui->twTechTab->setCurrentCell(*row, 0);
        return;
    }
    killTimer(event->timerId());
    if (m_passport.form() == Passport::Long)
        m_start->forget();
    ui->twTechTab->setCurrentCell(m_tech.last(), 0);
    updateGcode();
}
