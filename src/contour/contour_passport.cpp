#include "consolehost.h"
#include "contour.h"
#include "drivecomm.h"
#include "savefile.h"
#include "site.h"
#include "ui_contour.h"

#include <QDateTime>
#include <QLocale>
#include <QTextStream>
#include <QTimerEvent>

// The record of a run: a table for a spreadsheet, in Windows-1251, with the program, the contour and the
// technology, and one sample of the machine every 100 ms until the channel stops running.
//
// The short form belongs to a program started on the panel of channel 1, the long form to a weld.

namespace {

constexpr int tickPeriod = 100;  // ms
constexpr float tickTime = 0.1F; // s
constexpr float minute = 60.0F;  // s
constexpr int speedColumn = 5;   // of the technology table

const QString end = QStringLiteral("\n");

const char* const beamTitles[] = {
    "Уст. I луча", "I луча", "Уст. I фок.", "I фок.", "I откл.X", "I откл.Y", "Ub бомб.", "Ib бомб.",
    "U уск.",      "U зап.", "Тип ТР",      "Ампл.X", "Ампл.Y",   "Угол",     "Час-та",   "Смещ.X",
    "Смещ.Y",      "Д.пар.", "По ч.с.",     "ТР",     "P пушк.",  "P кам.",
};

QString quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QString title(const QString& text)
{
    return quoted(text) + QLatin1Char(';');
}

// As the system's locale writes numbers, but never with blanks between the thousands: a spreadsheet would
// take the number for a text.
QString local(float value, char form, int decimals)
{
    QLocale locale = QLocale::system();
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return locale.toString(double(value), form, decimals);
}

QString cell(float value, int decimals, char form = 'f')
{
    return local(value, form, decimals) + QLatin1Char(';');
}

QString cell(qint32 value)
{
    return QString::number(value) + QLatin1Char(';');
}

QString programLines(const QString& text)
{
    QString lines;
    for (const QString& line : text.split(QLatin1Char('\n')))
        lines += title(line) + end;
    return lines;
}

} // namespace

void CONTOUR::startPassport()
{
    Q_ASSERT(!m_ppf.isOpen());
    const QDateTime now = QDateTime::currentDateTime();
    const QString program = host() ? host()->programName() : QString();
    m_ppf.setFileName(site().path(m_passportsDir + now.toString(QStringLiteral("yyyy-MM-dd-hh-mm-ss-")) +
                                  program + QStringLiteral(".csv")));
    if (!m_ppf.open(QIODevice::WriteOnly | QIODevice::Text))
        return;
    writePassport(passportHead(now));

    m_curTechRow = 0;
    ui->twTechTab->setCurrentCell(0, 0);
    m_passportTime = 0;
    m_moveTime = 0;
    m_segTime = 0;
    m_segPath = 0;
    m_path = 0;
    m_curSpeed = techText(0, speedColumn).toFloat();
    timerEvent(nullptr);
    startTimer(tickPeriod, Qt::PreciseTimer);
}

// --- the head ---

QString CONTOUR::passportHead(const QDateTime& start) const
{
    const QString welder = host() ? host()->getUserName() : QString();
    const QString program = host() ? host()->programName() : QString();
    QString head = quoted(m_techRun ? program : QStringLiteral("_temp")) + end;
    head += quoted(QStringLiteral("Дата: ") + start.toString(QStringLiteral("dd-MM-yyyy"))) + end;
    head += quoted(QStringLiteral("Сварщик: ") + welder) + end;
    head += quoted(QStringLiteral("Время запуска: ") + start.toString(QStringLiteral("hh:mm:ss"))) + end;
    if (m_techRun)
        head += passportWeld();
    head += end + quoted(QStringLiteral("ПРОГРАММА ПЕРЕМЕЩЕНИЯ (канал 1)")) + end;
    head += programLines(ui->teGcode->toPlainText());
    if (m_techRun && !ui->teGcode_2->toPlainText().isEmpty()) {
        head += quoted(QStringLiteral("ПРОГРАММА ВРАЩЕНИЯ ДЕТАЛИ (канал 2)")) + end;
        head += programLines(ui->teGcode_2->toPlainText());
    }
    head += end;
    if (m_techRun) {
        head += quoted(QStringLiteral("ПРОГРАММА СВАРКИ (канал 3)")) + end;
        head += programLines(ui->teGcode_3->toPlainText()) + end;
    }
    return head + passportTitles();
}

QString CONTOUR::passportWeld() const
{
    QString text;
    const QString length = local(ui->length->value(), 'f', 2);
    if (m_closed) {
        text += quoted(QStringLiteral("Длина прохода: %1 мм").arg(length)) + end;
        text += quoted(QStringLiteral("Число проходов: ") +
                       QString::number(double(ui->nrings->value()), 'f', 0)) +
                end;
    } else {
        text += quoted(QStringLiteral("Длина шва: %1 мм").arg(length)) + end;
    }
    text +=
        quoted(QStringLiteral("Скорость: %1 мм/мин").arg(double(ui->weldSpeed->value()), 0, 'f', 1)) + end;

    text += end + quoted(QStringLiteral("Контур:")) + end;
    for (int row = 0; row < ui->twContour->rowCount(); ++row) {
        QString cells;
        for (int column = 0; column < ui->twContour->columnCount(); ++column) {
            const QTableWidgetItem* item = ui->twContour->item(row, column);
            cells += (item ? item->text() : QString()) + QLatin1Char(' ');
        }
        text += quoted(cells) + end;
    }
    text += quoted(QStringLiteral("Технология:")) + end;
    for (int row = 0; row < ui->twTechTab->rowCount(); ++row) {
        const QString values =
            isComment(row)
                ? QStringLiteral("- ") + techText(row, 0)
                : techLine({techText(row, 0), techText(row, 1), techText(row, 2), techText(row, speedColumn)},
                           raster(row));
        text += title(values) + end;
    }
    return text;
}

QString CONTOUR::passportTitles() const
{
    QString titles = title(QStringLiteral("Время"));
    if (m_techRun)
        titles += title(QStringLiteral("Путь"));
    for (const QString& axis : m_passportAxes)
        titles += title(axis);
    if (!m_techRun)
        return titles + end;
    for (const char* text : beamTitles)
        titles += title(QString::fromUtf8(text));
    return titles + end + end;
}

// --- the samples ---

// Without an event: the first sample, which a channel that does not run yet may not end.
void CONTOUR::timerEvent(QTimerEvent* event)
{
    QString sample = cell(m_passportTime, 1);
    if (m_axisMoving) {
        // An estimate from the time in motion; nobody measures the path.
        const float passes = m_closed ? ui->nrings->value() : 1.0F;
        m_path = qMin(m_moveTime / minute * m_curSpeed, ui->length->value() * passes);
        m_moveTime += tickTime;
        m_segTime += tickTime;
    }
    sample += cell(m_path, 2);
    for (const QString& axis : m_passportAxes)
        sample += cell(host() ? host()->coord(axis) : 0.0F, 2);
    // The samples of the short form follow one another on one line, with a path that its head has no title
    // for: the programs that read these files count the fields so.
    if (m_techRun)
        sample += beamSample() + end;
    writePassport(sample);

    if (event && (m_techRun ? m_ch3State : m_ch1State) != DriveStatus::channelRuns) {
        endPassport();
        killTimer(event->timerId());
        return;
    }
    if (m_techRun && m_axisMoving)
        followTechnology();
    m_passportTime += tickTime;
}

QString CONTOUR::beamSample()
{
    m_elaShare.updateStatusEla();
    const auto real = [this](ela::Real offset, int decimals) {
        return cell(m_elaShare.value(offset), decimals);
    };
    const auto integer = [this](ela::Integer offset) { return cell(m_elaShare.value(offset)); };
    return real(ela::BeamCurrentSet, 1) + real(ela::BeamCurrent, 1) + real(ela::FocusCurrentSet, 0) +
           real(ela::FocusCurrent, 0) + real(ela::DeflectionX, 0) + real(ela::DeflectionY, 0) +
           real(ela::BombardmentVoltage, 1) + real(ela::BombardmentCurrent, 1) +
           real(ela::AcceleratingVoltage, 1) + real(ela::LockingVoltage, 1) + integer(ela::RasterType) +
           real(ela::RasterAmpX, 2) + real(ela::RasterAmpY, 2) + real(ela::RasterAngle, 0) +
           real(ela::RasterFreq, 0) + real(ela::RasterShiftX, 2) + real(ela::RasterShiftY, 2) +
           real(ela::RasterParam, 2) + integer(ela::RasterRotation) + integer(ela::RasterOn) +
           cell(m_elaShare.value(ela::GunPressure), 1, 'e') +
           cell(host() ? host()->pressure() : 0.0F, 1, 'e');
}

void CONTOUR::endPassport()
{
    if (m_techRun)
        m_weld = WeldStage();
    m_curTechRow = 0;
    m_ppf.close();
    ui->twTechTab->setCurrentCell(ui->twTechTab->rowCount() - 1, 0);
    updateGcode();
}

// The highlight goes on to the next row that takes part, once the estimate has come to its path.
void CONTOUR::followTechnology()
{
    const int last = ui->twTechTab->rowCount() - 1;
    if (m_curTechRow >= last)
        return;
    int next = m_curTechRow + 1;
    while (next < last && (isComment(next) || !isOn(next)))
        ++next;
    const float distance = techText(next, 0).toFloat() - techText(m_curTechRow, 0).toFloat();
    if (m_segPath + distance <= m_segTime / minute * m_curSpeed + m_segPath) {
        m_curTechRow = next;
        m_curSpeed = techText(next, speedColumn).toFloat();
        m_segTime = 0;
        m_segPath += distance;
    }
    ui->twTechTab->setCurrentCell(m_curTechRow, 0);
}

// What has been written outlives a fall of the console.
void CONTOUR::writePassport(const QString& text)
{
    QTextStream stream(&m_ppf);
    stream.setCodec("Windows-1251");
    stream << text;
    stream.flush();
    m_ppf.flush();
}
