#include "passport.h"

#include "passportwords.h"
#include "site.h"

#include <QLocale>
#include <QTextStream>

namespace {

const QString folder = QStringLiteral("/home/oper/bin/passports/");

constexpr float tickTime = 0.1F; // s
constexpr float minute = 60.0F;  // s

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

// --- the head ---

QString weldText(const Passport::Head& head)
{
    QString text;
    const QString length = local(head.length, 'f', 2);
    if (head.closed) {
        text += quoted(QStringLiteral("Длина прохода: %1 мм").arg(length)) + end;
        text +=
            quoted(QStringLiteral("Число проходов: ") + QString::number(double(head.passes), 'f', 0)) + end;
    } else {
        text += quoted(QStringLiteral("Длина шва: %1 мм").arg(length)) + end;
    }
    text += quoted(QStringLiteral("Скорость: %1 мм/мин").arg(double(head.weldSpeed), 0, 'f', 1)) + end;
    text += end + quoted(PassportWords::contour) + end;
    for (const QString& row : head.contour)
        text += quoted(row) + end;
    text += quoted(PassportWords::technology) + end;
    for (const QString& row : head.technology)
        text += title(row) + end;
    return text;
}

QString titles(Passport::Form form)
{
    const bool weld = form == Passport::Long;
    QString line = title(PassportWords::time);
    if (weld)
        line += title(PassportWords::path);
    for (const QString& axis : Passport::axes())
        line += title(axis);
    if (!weld)
        return line + end;
    for (const char* text : beamTitles)
        line += title(QString::fromUtf8(text));
    return line + end + end;
}

QString headText(const Passport::Head& head, Passport::Form form)
{
    const bool weld = form == Passport::Long;
    QString text = quoted(weld ? head.name : PassportWords::shortName) + end;
    text += quoted(PassportWords::date + head.start.toString(PassportWords::dateForm)) + end;
    text += quoted(PassportWords::welder + head.welder) + end;
    text += quoted(PassportWords::clock + head.start.toString(PassportWords::clockForm)) + end;
    if (weld)
        text += weldText(head);
    text += end + quoted(PassportWords::programs[0]) + end;
    text += programLines(head.programs[0]);
    if (weld && !head.programs[1].isEmpty()) {
        text += quoted(PassportWords::programs[1]) + end;
        text += programLines(head.programs[1]);
    }
    text += end;
    if (weld) {
        text += quoted(PassportWords::programs[2]) + end;
        text += programLines(head.programs[2]) + end;
    }
    return text + titles(form);
}

} // namespace

const QStringList& Passport::axes()
{
    static const QStringList names{QStringLiteral("LX"), QStringLiteral("LY"), QStringLiteral("A"),
                                   QStringLiteral("B"),  QStringLiteral("C"),  QStringLiteral("D"),
                                   QStringLiteral("U1"), QStringLiteral("V")};
    return names;
}

void Passport::setForm(Form form)
{
    if (!isOpen())
        m_form = form;
}

bool Passport::open(const Head& head, float speed)
{
    Q_ASSERT(!m_ppf.isOpen());
    m_ppf.setFileName(site().path(folder + head.start.toString(PassportWords::fileStamp) + QLatin1Char('-') +
                                  head.name + QStringLiteral(".csv")));
    if (!m_ppf.open(QIODevice::WriteOnly | QIODevice::Text))
        return false;
    write(headText(head, m_form));
    m_passportTime = 0;
    m_moveTime = 0;
    m_segTime = 0;
    m_segPath = 0;
    m_path = 0;
    m_curSpeed = speed;
    m_curTechRow = 0;
    return true;
}

// --- the samples ---

bool Passport::sample(const Moment& moment, bool mayEnd)
{
    QString cells = cell(m_passportTime, 1);
    if (moment.moving) {
        // An estimate from the time in motion; nobody measures the path.
        m_path = qMin(m_moveTime / minute * m_curSpeed, moment.way);
        m_moveTime += tickTime;
        m_segTime += tickTime;
    }
    cells += cell(m_path, 2);
    for (const float coord : moment.coords)
        cells += cell(coord, 2);
    // The samples of the short form follow one another on one line, with a path that its head has no title
    // for: the programs that read these files count the fields so.
    if (m_form == Long)
        cells += beamCells(moment.pressure) + end;
    write(cells);
    m_passportTime += tickTime;
    if (!mayEnd || moment.runs)
        return true;
    m_ppf.close();
    return false;
}

QString Passport::beamCells(float pressure)
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
           cell(m_elaShare.value(ela::GunPressure), 1, 'e') + cell(pressure, 1, 'e');
}

// The next row that takes part is the one in force, once the estimate has come to its path.
std::optional<int> Passport::follow(const Moment& moment)
{
    const int last = moment.techRows - 1;
    if (m_form == Short || !moment.moving || m_curTechRow >= last)
        return {};
    int next = m_curTechRow + 1;
    TechRow row = moment.techRow(next);
    while (next < last && (row.comment || !row.on))
        row = moment.techRow(++next);
    const float distance = row.path - moment.techRow(m_curTechRow).path;
    if (m_segPath + distance <= m_segTime / minute * m_curSpeed + m_segPath) {
        m_curTechRow = next;
        m_curSpeed = row.speed;
        m_segTime = 0;
        m_segPath += distance;
    }
    return m_curTechRow;
}

void Passport::write(const QString& text)
{
    QTextStream stream(&m_ppf);
    stream.setCodec("Windows-1251");
    stream << text;
    stream.flush();
    m_ppf.flush();
}
