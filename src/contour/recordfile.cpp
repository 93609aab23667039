#include "recordfile.h"

#include "flightrecord.h"
#include "passportwords.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTextCodec>
#include <QtEndian>

#include <cmath>
#include <cstring>

namespace {

constexpr qint64 largest = 256 * 1024 * 1024; // bytes; a day of the flight recorder is 75 MB
constexpr int recordSize = sizeof(FlightRecord);
constexpr int headSize = 4096;            // bytes, within which name, date and welder stand
constexpr quint32 longestGap = 3'600'000; // ms between two records; what is further away is no record

const double nothing = std::nan("");

// Bytes that are no valid UTF-8 are Windows-1251, as the console writes it.
QString decoded(const QByteArray& bytes)
{
    QTextCodec::ConverterState state;
    const QString text =
        QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    if (state.invalidChars == 0 && state.remainingChars == 0)
        return text;
    return QTextCodec::codecForName("Windows-1251")->toUnicode(bytes);
}

// Without the line's end, the last separator and the quotes around it.
QString unquoted(QString line)
{
    if (line.endsWith(QLatin1Char(';')))
        line.chop(1);
    if (line.size() > 1 && line.startsWith(QLatin1Char('"')) && line.endsWith(QLatin1Char('"')))
        return line.mid(1, line.size() - 2);
    return line;
}

// Point or comma; where both stand, the last one is the decimal mark and the others stand between thousands.
double number(QString cell, bool* good)
{
    cell.remove(QChar(QChar::Nbsp)).remove(QChar(0x202F)).remove(QLatin1Char(' '));
    const int mark = qMax(cell.lastIndexOf(QLatin1Char('.')), cell.lastIndexOf(QLatin1Char(',')));
    if (mark >= 0) {
        const QString thousands =
            cell.left(mark).remove(cell[mark] == QLatin1Char('.') ? QLatin1Char(',') : QLatin1Char('.'));
        cell = thousands + QLatin1Char('.') + cell.mid(mark + 1);
    }
    const double value = cell.toDouble(good);
    *good = *good && std::isfinite(value);
    return *good ? value : nothing;
}

class PassportParser
{
public:
    explicit PassportParser(const QString& path) { m_record.file = path; }

    RecordFile parse(const QString& text)
    {
        m_lines = text.split(QLatin1Char('\n'));
        for (QString& line : m_lines) {
            if (line.endsWith(QLatin1Char('\r')))
                line.chop(1);
        }
        const int titles = takeHead();
        if (m_record.kind == RecordFile::Foreign) {
            trouble(0, QStringLiteral("не паспорт: нет ни шапки, ни заголовка таблицы"));
            return m_record;
        }
        nameFromFile();
        m_record.columns.resize(m_record.titles.size());
        if (titles < 0)
            trouble(m_lines.size(), QStringLiteral("обрыв: заголовка таблицы нет"));
        else if (m_record.kind == RecordFile::LongPassport)
            takeLines(titles + 1);
        else
            takeStream(titles + 1);
        if (titles >= 0 && m_record.samples() == 0)
            trouble(m_lines.size(), QStringLiteral("ни одного замера"));
        return m_record;
    }

private:
    void trouble(int line, const QString& reason) { m_record.troubles.append({line, reason}); }

    // Everything above the samples. Returns the index of the line of titles, -1 when there is none.
    int takeHead()
    {
        QStringList* section = &m_record.head;
        for (int i = 0; i < m_lines.size(); ++i) {
            if (m_lines[i].startsWith(QLatin1Char('"') + PassportWords::time + QLatin1String("\";"))) {
                takeTitles(m_lines[i]);
                return i;
            }
            const QString line = unquoted(m_lines[i]);
            if (m_lines[i].isEmpty())
                section = &m_record.head; // an empty line ends a section; one of a program is quoted
            else if (line.startsWith(QStringLiteral("ПРОГРАММА ")) && line.contains(QStringLiteral("(канал")))
                section = newProgram(line);
            else if (line == PassportWords::contour)
                section = &m_record.contour;
            else if (line == PassportWords::technology)
                section = &m_record.technology;
            else if (section != &m_record.head)
                section->append(line);
            else
                takeHeadLine(i, line);
        }
        if (!m_record.start.isValid() && m_record.welder.isEmpty())
            m_record.kind = RecordFile::Foreign;
        return -1;
    }

    QStringList* newProgram(const QString& title)
    {
        m_record.programs.append({title, {}});
        return &m_record.programs.last().lines;
    }

    void takeHeadLine(int index, const QString& line)
    {
        if (index == 0) {
            m_record.kind =
                line == PassportWords::shortName ? RecordFile::ShortPassport : RecordFile::LongPassport;
            m_record.program = line;
        } else if (line.startsWith(PassportWords::date)) {
            const QDate day =
                QDate::fromString(line.mid(PassportWords::date.size()), PassportWords::dateForm);
            if (!day.isValid())
                trouble(index + 1,
                        QStringLiteral("дата «%1» не читается").arg(line.mid(PassportWords::date.size())));
            m_record.start = day.startOfDay();
        } else if (line.startsWith(PassportWords::welder)) {
            m_record.welder = line.mid(PassportWords::welder.size());
        } else if (line.startsWith(PassportWords::clock)) {
            const QTime read =
                QTime::fromString(line.mid(PassportWords::clock.size()), PassportWords::clockForm);
            if (!read.isValid())
                trouble(index + 1,
                        QStringLiteral("время «%1» не читается").arg(line.mid(PassportWords::clock.size())));
            m_record.start.setTime(read);
        } else {
            m_record.head.append(line);
        }
    }

    // The head of the short form has no title for the path that its samples hold.
    void takeTitles(const QString& line)
    {
        QStringList cells = line.split(QLatin1Char(';'));
        if (cells.last().isEmpty())
            cells.removeLast();
        for (const QString& cell : qAsConst(cells))
            m_record.titles << unquoted(cell);
        const bool untitled = m_record.titles.value(1) != PassportWords::path;
        if (untitled)
            m_record.titles.insert(1, PassportWords::path);
        m_record.kind = untitled ? RecordFile::ShortPassport : RecordFile::LongPassport;
    }

    void nameFromFile()
    {
        static const QRegularExpression form(QStringLiteral("^(\\d{4}(?:-\\d\\d){5})-(.*)$"));
        const auto match = form.match(QFileInfo(m_record.file).completeBaseName());
        if (!match.hasMatch())
            return;
        if (m_record.kind == RecordFile::ShortPassport)
            m_record.program = match.captured(2);
        if (!m_record.start.isValid())
            m_record.start = QDateTime::fromString(match.captured(1), PassportWords::fileStamp);
    }

    // --- the samples ---

    // The long form: a sample a line. Each cell ends with a separator; what stands behind the last one is a
    // whole number only where another line follows.
    void takeLines(int first)
    {
        for (int i = first; i < m_lines.size(); ++i) {
            QStringList cells = m_lines[i].split(QLatin1Char(';'));
            const bool last = i + 1 == m_lines.size();
            const QString rest = cells.last();
            if (last || rest.isEmpty())
                cells.removeLast();
            addSample(i + 1, cells, last);
            if (last)
                tellRest(i + 1, rest);
        }
    }

    // The short form: all samples on one line. The time alone has one decimal, which tells where a sample
    // begins when cells are missing.
    void takeStream(int first)
    {
        static const QRegularExpression time(QStringLiteral("^\\d+[.,]\\d$"));
        QStringList cells = QStringList(m_lines.mid(first)).join(QString()).split(QLatin1Char(';'));
        const QString rest = cells.takeLast();
        const bool regular = isRegular(cells);
        for (int at = 0; at < cells.size();) {
            int end = regular ? at + m_record.titles.size() : at + 1;
            while (!regular && end < cells.size() && !time.match(cells[end]).hasMatch())
                ++end;
            addSample(first + 1, cells.mid(at, end - at), end == cells.size());
            at = end;
        }
        tellRest(first + 1, rest);
    }

    // No cell is missing: also where a spreadsheet has left out the zeros behind the decimal mark.
    bool isRegular(const QStringList& cells) const
    {
        const int width = m_record.titles.size();
        double before = -1;
        for (int at = 0; at < cells.size(); at += width) {
            bool good = false;
            const double time = number(cells[at], &good);
            if (!good || time <= before)
                return false;
            before = time;
        }
        return cells.size() % width == 0;
    }

    void tellRest(int line, const QString& rest)
    {
        if (!rest.isEmpty())
            trouble(line, QStringLiteral("обрыв: «%1» — неполное поле").arg(rest.left(20)));
    }

    // Of the last sample, where the file was cut, the cells that are there count; of another that has too few
    // or too many nobody knows which they are, and only its time does.
    void addSample(int line, const QStringList& cells, bool last)
    {
        const int width = m_record.titles.size();
        const QString which = QStringLiteral("замер %1: ").arg(m_record.samples() + 1);
        const bool cut = last && cells.size() < width;
        const bool whole = cells.size() == width;
        if (cells.isEmpty())
            return;
        if (cut)
            trouble(line, which + QStringLiteral("обрыв, целых полей %1 из %2").arg(cells.size()).arg(width));
        else if (!whole)
            trouble(line, which + QStringLiteral("полей %1 вместо %2").arg(cells.size()).arg(width));
        const int usable = whole || cut ? qMin(cells.size(), width) : 1;
        for (int i = 0; i < width; ++i) {
            bool good = true;
            double value = i < usable ? number(cells[i], &good) : nothing;
            if (!good)
                trouble(line,
                        which + QStringLiteral("%1 = «%2» — не число").arg(m_record.titles[i], cells[i]));
            if (i == 0 && !(value >= m_time)) {
                trouble(line, which + QStringLiteral("время «%1» не растёт").arg(cells[0]));
                value = m_time;
            }
            m_record.columns[i].append(value);
        }
        m_time = m_record.columns[0].last();
    }

    RecordFile m_record;
    QStringList m_lines;
    double m_time = 0; // of the last sample
};

bool isFlight(const QByteArray& bytes, const QString& path)
{
    return bytes.contains('\0') || path.endsWith(QLatin1String(FlightRecord::suffix), Qt::CaseInsensitive);
}

RecordFile unread(const QString& path, const QString& reason)
{
    RecordFile record;
    record.file = path;
    record.troubles.append({0, reason});
    return record;
}

} // namespace

const QVector<double>* RecordFile::column(const QString& title) const
{
    const int at = titles.indexOf(title);
    return at < 0 || at >= columns.size() ? nullptr : &columns[at];
}

double RecordFile::duration() const
{
    return samples() ? columns.first().last() - columns.first().first() : 0;
}

QString RecordFile::kindText() const
{
    switch (kind) {
    case ShortPassport:
        return QStringLiteral("Краткий паспорт");
    case LongPassport:
        return QStringLiteral("Паспорт сварки");
    case FlightRecorder:
        return QStringLiteral("Самописец");
    case Foreign:
        break;
    }
    return QStringLiteral("Не запись");
}

QStringList RecordFile::troubleLines() const
{
    const QString unit = kind == FlightRecorder ? QStringLiteral("запись") : QStringLiteral("строка");
    QStringList lines;
    for (const Trouble& trouble : troubles)
        lines << (trouble.line ? QStringLiteral("%1 %2: ").arg(unit).arg(trouble.line) : QString()) +
                     trouble.reason;
    return lines;
}

RecordFile readRecord(const QString& path)
{
    QFile file(path);
    if (QFileInfo(path).isDir())
        return unread(path, QStringLiteral("это папка"));
    if (!file.open(QIODevice::ReadOnly))
        return unread(path, QStringLiteral("файл не открывается: ") + file.errorString());
    const QByteArray bytes = file.read(largest + 1);
    if (file.error() != QFileDevice::NoError)
        return unread(path, QStringLiteral("файл не читается: ") + file.errorString());
    if (bytes.isEmpty())
        return unread(path, QStringLiteral("файл пуст"));
    if (bytes.size() > largest)
        return unread(path, QStringLiteral("файл больше 256 МБ: столько не бывает"));
    return isFlight(bytes, path) ? parseFlightRecord(bytes, path) : parsePassport(bytes, path);
}

RecordFile readHead(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() <= headSize)
        return readRecord(path);
    QByteArray bytes = file.read(headSize);
    if (isFlight(bytes, path))
        return parseFlightRecord(bytes.left(2 * recordSize), path);
    bytes.truncate(bytes.lastIndexOf('\n') + 1); // no letter in halves
    RecordFile record = parsePassport(bytes, path);
    if (record.kind != RecordFile::Foreign)
        record.troubles.clear(); // it is us who cut the file
    return record;
}

RecordFile parsePassport(const QByteArray& bytes, const QString& path)
{
    return PassportParser(path).parse(decoded(bytes));
}

RecordFile parseFlightRecord(const QByteArray& bytes, const QString& path)
{
    RecordFile record;
    record.file = path;
    record.kind = RecordFile::FlightRecorder;
    record.start =
        QDateTime::fromString(QFileInfo(path).completeBaseName(), QLatin1String(FlightRecord::nameForm));
    record.titles =
        QStringList{PassportWords::time,  QStringLiteral("LX1"), QStringLiteral("LX2"), QStringLiteral("LY"),
                    QStringLiteral("A"),  QStringLiteral("B"),   QStringLiteral("C"),   QStringLiteral("D"),
                    QStringLiteral("U1"), QStringLiteral("U2"),  QStringLiteral("V")};
    record.columns.resize(record.titles.size());
    const int count = bytes.size() / recordSize;
    quint32 before = 0;
    for (int i = 0; i < count; ++i) {
        const char* const at = bytes.constData() + i * recordSize;
        const quint32 time = qFromLittleEndian<quint32>(at);
        if (time < before || time - before > longestGap) {
            if (i < 2)
                return unread(path, QStringLiteral("не файл самописца: время записей не растёт"));
            record.troubles.append(
                {i + 1, QStringLiteral("время %1 мс после %2 мс; дальше не читается, записей %3")
                            .arg(time)
                            .arg(before)
                            .arg(count - i)});
            return record;
        }
        before = time;
        record.columns[0].append(time / 1000.0);
        for (int value = 0; value < record.columns.size() - 1; ++value) {
            const float read = qFromLittleEndian<float>(at + 4 + 4 * value);
            if (!std::isfinite(read))
                record.troubles.append({i + 1, record.titles[value + 1] + QStringLiteral(" — не число")});
            record.columns[value + 1].append(std::isfinite(read) ? double(read) : nothing);
        }
    }
    if (count == 0)
        return unread(path, QStringLiteral("не файл самописца: короче одной записи в 44 байта"));
    if (const int rest = bytes.size() % recordSize)
        record.troubles.append({count + 1, QStringLiteral("обрыв: %1 байт из 44").arg(rest)});
    return record;
}

QStringList recordsOf(const QStringList& paths)
{
    QStringList files;
    for (const QString& path : paths) {
        if (!QFileInfo(path).isDir())
            files << path;
        const QDir dir(path);
        for (const QString& name :
             dir.entryList({QStringLiteral("*.csv"), QLatin1Char('*') + QLatin1String(FlightRecord::suffix)},
                           QDir::Files, QDir::Name))
            files << dir.filePath(name);
    }
    return files;
}
