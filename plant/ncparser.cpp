#include "plant/ncparser.h"

#include "plant/ncscanner.h"

#include <QStringList>

namespace plant {

namespace {

using Kind = NcStatement::Kind;
using Scanner = NcScanner;

QString bracketed(Scanner& scanner)
{
    scanner.expect('(');
    const QString text = scanner.upTo(')');
    scanner.expectEnd();
    return text;
}

void readBeamAxis(Scanner& scanner, NcStatement& statement, Kind kind)
{
    statement.kind = kind;
    statement.name = bracketed(scanner).toUpper();
    if (statement.name != QLatin1String("IR") && statement.name != QLatin1String("IW"))
        scanner.fail(QStringLiteral("no beam axis '%1'").arg(statement.name));
}

void readEvent(Scanner& scanner, NcStatement& statement, Kind kind)
{
    statement.kind = kind;
    scanner.expect('(');
    statement.number = scanner.integer();
    scanner.expect(')');
    scanner.expectEnd();
    if (statement.number == 0)
        scanner.fail(QStringLiteral("events count from 1"));
}

void readRatio(Scanner& scanner, NcStatement& statement)
{
    statement.kind = Kind::RatioEnd;
    scanner.expect('(');
    if (!scanner.take(')')) {
        statement.kind = Kind::Ratio;
        const QString axis = scanner.axisWord();
        if (axis != QLatin1String("V"))
            scanner.fail(QStringLiteral("ratio of V expected before '%1'").arg(scanner.rest()));
        const double ratio = scanner.number();
        if (ratio <= 0)
            scanner.fail(QStringLiteral("ratio of V must be above 0"));
        statement.words = {{axis, ratio}};
        scanner.expect(')');
    }
    scanner.expectEnd();
}

void readCoordinates(Scanner& scanner, NcStatement& statement)
{
    statement.kind = Kind::Coordinates;
    statement.name = bracketed(scanner).remove(' ');
    if (!QStringList({"1", "2", "0,2"}).contains(statement.name))
        scanner.fail(QStringLiteral("no coordinate system '%1'").arg(statement.name));
}

void readResetEvents(Scanner& scanner, NcStatement& statement)
{
    statement.kind = Kind::ResetEvents;
    if (bracketed(scanner).compare(QLatin1String("ALL"), Qt::CaseInsensitive) != 0)
        scanner.fail(QStringLiteral("only all events can be reset"));
}

// Statements that are a word with brackets or a word alone. False when the line is none of them.
bool readNamed(Scanner& scanner, NcStatement& statement)
{
    if (scanner.takeWord("GAX"))
        readBeamAxis(scanner, statement, Kind::TakeAxis);
    else if (scanner.takeWord("RAX"))
        readBeamAxis(scanner, statement, Kind::ReleaseAxis);
    else if (scanner.takeWord("COORD"))
        readCoordinates(scanner, statement);
    else if (scanner.takeWord("ARF"))
        readRatio(scanner, statement);
    else if (scanner.takeWord("SEV"))
        readEvent(scanner, statement, Kind::SetEvent);
    else if (scanner.takeWord("WEV"))
        readEvent(scanner, statement, Kind::WaitEvent);
    else if (scanner.takeWord("WREV"))
        readEvent(scanner, statement, Kind::WaitResetEvent);
    else if (scanner.takeWord("REV"))
        readResetEvents(scanner, statement);
    else if (scanner.takeWord("WAIT")) {
        statement.kind = Kind::Wait;
        scanner.expectEnd();
    } else if (scanner.takeWord("GOTO")) {
        statement.kind = Kind::Jump;
        if (!scanner.takeWord("N"))
            scanner.fail(QStringLiteral("block number expected before '%1'").arg(scanner.rest()));
        statement.number = scanner.integer();
        scanner.expectEnd();
    } else if (scanner.takeWord("M30")) {
        statement.kind = Kind::End;
        scanner.expectEnd();
    } else if (scanner.take('$')) {
        statement.kind = Kind::Channel;
        statement.number = scanner.integer();
        scanner.expectEnd();
    } else
        return false;
    return true;
}

// A block of G codes, axis words, F and R, in any order, glued or with blanks.
class MotionReader
{
public:
    MotionReader(Scanner& scanner, NcStatement& statement)
        : m_scanner(scanner)
        , m_statement(statement)
    {}

    void read()
    {
        while (!m_scanner.atEnd())
            readPart();
        if (m_scanner.error().isEmpty())
            check();
    }

private:
    void readPart()
    {
        const QString axis = m_scanner.axisWord();
        if (!axis.isEmpty())
            addWord(axis);
        else if (m_scanner.take('G') || m_scanner.take('g'))
            addCode(m_scanner.integer());
        else if (m_scanner.take('F') || m_scanner.take('f'))
            once(m_statement.feed, "F");
        else if (m_scanner.take('R') || m_scanner.take('r'))
            once(m_statement.radius, "R");
        else
            m_scanner.fail(QStringLiteral("unknown statement '%1'").arg(m_scanner.rest()));
    }

    void addWord(const QString& axis)
    {
        for (const NcWord& word : qAsConst(m_statement.words)) {
            if (word.axis == axis)
                m_scanner.fail(QStringLiteral("'%1' stands twice").arg(axis));
        }
        if (m_statement.words.isEmpty())
            m_statement.words.reserve(4); // a line in space has three
        m_statement.words.append({axis, m_scanner.number()});
    }

    void once(std::optional<double>& slot, const char* letter)
    {
        if (slot)
            m_scanner.fail(QStringLiteral("'%1' stands twice").arg(letter));
        slot = m_scanner.number();
    }

    void addCode(int code)
    {
        if (code == 90 || code == 91) {
            if (m_statement.relative)
                m_scanner.fail(QStringLiteral("G90 and G91 exclude one another"));
            m_statement.relative = code == 91;
            return;
        }
        if (m_code >= 0)
            m_scanner.fail(QStringLiteral("G%1 and G%2 in one block").arg(m_code).arg(code));
        m_code = code;
        switch (code) {
        case 0:
            m_statement.kind = Kind::Rapid;
            break;
        case 1:
            m_statement.kind = Kind::Line;
            break;
        case 2:
        case 3:
            m_statement.kind = Kind::Arc;
            m_statement.clockwise = code == 2;
            break;
        case 4:
            m_statement.kind = Kind::Dwell;
            break;
        case 16:
            m_statement.kind = Kind::PlaneEnd;
            break;
        case 17:
        case 18:
        case 19:
            m_statement.kind = Kind::Plane;
            m_statement.number = code - 17;
            break;
        default:
            m_scanner.fail(QStringLiteral("unknown statement 'G%1'").arg(code));
        }
    }

    void check() const
    {
        const bool rapid = m_statement.kind == Kind::Rapid && m_code == 0;
        const bool line = m_statement.kind == Kind::Line && m_code == 1;
        const bool arc = m_statement.kind == Kind::Arc;
        const bool dwell = m_statement.kind == Kind::Dwell;
        if (!rapid && !line && !arc && !m_statement.words.isEmpty())
            m_scanner.fail(QStringLiteral("axis '%1' without a motion").arg(m_statement.words.first().axis));
        if ((rapid || line || arc) && m_statement.words.isEmpty())
            m_scanner.fail(QStringLiteral("motion without an axis"));
        if (m_statement.radius.has_value() != arc)
            m_scanner.fail(arc ? QStringLiteral("arc without R") : QStringLiteral("R without an arc"));
        if (m_statement.radius && qFuzzyIsNull(*m_statement.radius))
            m_scanner.fail(QStringLiteral("arc of radius 0"));
        if (m_statement.feed && !(rapid || line || arc || dwell))
            m_scanner.fail(QStringLiteral("F without a motion"));
        if (dwell && !m_statement.feed)
            m_scanner.fail(QStringLiteral("dwell without F"));
        if (m_statement.feed && *m_statement.feed < 0)
            m_scanner.fail(QStringLiteral("F below 0"));
        if (dwell && m_statement.relative)
            m_scanner.fail(QStringLiteral("dwell with G90 or G91"));
        checkAxes(arc);
    }

    void checkAxes(bool arc) const
    {
        int beamWords = 0;
        for (const NcWord& word : m_statement.words) {
            const bool beam = word.axis == QLatin1String("IR") || word.axis == QLatin1String("IW");
            beamWords += beam ? 1 : 0;
            if (arc &&
                (word.axis.size() != 1 || word.axis < QLatin1String("X") || word.axis > QLatin1String("Z")))
                m_scanner.fail(QStringLiteral("axis '%1' in an arc").arg(word.axis));
        }
        if (beamWords != 0 && beamWords != m_statement.words.size())
            m_scanner.fail(QStringLiteral("beam axes and others in one block"));
    }

    Scanner& m_scanner;
    NcStatement& m_statement;
    int m_code = -1;
};

void readStatement(Scanner& scanner, NcStatement& statement)
{
    if (scanner.atEnd())
        scanner.fail(QStringLiteral("block without a statement"));
    if (readNamed(scanner, statement))
        return;
    statement.kind = Kind::Distances;
    MotionReader(scanner, statement).read();
}

// The count in front carries no meaning: it is neither a block number nor unique.
void readVariable(Scanner& scanner, NcStatement& statement)
{
    statement.kind = Kind::Variable;
    scanner.integer();
    scanner.expect('@');
    const QString name = scanner.upTo('=');
    for (const QChar c : name) {
        if (!isLetter(c) && !isDigit(c) && c != '?' && c != '%' && c != '_')
            scanner.fail(QStringLiteral("'@%1' is no variable").arg(name));
    }
    if (name.isEmpty())
        scanner.fail(QStringLiteral("variable without a name"));
    statement.name = '@' + name;
    statement.value = scanner.rest();
    const QString plain = statement.value.toLower().remove('-').remove('+');
    if (plain.isEmpty() || plain == QLatin1String("inf") || plain == QLatin1String("nan"))
        scanner.fail(QStringLiteral("variable '%1' without a value").arg(statement.name));
}

// The statement of one line that is not blank; `error` tells what is wrong with it.
NcStatement readLine(const QStringRef& text, int line, QString* error)
{
    NcStatement statement;
    statement.line = line;
    Scanner scanner(text);
    if (isDigit(scanner.peek())) {
        readVariable(scanner, statement);
    } else if (scanner.takeWord("N")) {
        statement.block = scanner.integer();
        if (statement.block == 0)
            scanner.fail(QStringLiteral("blocks count from 1"));
        readStatement(scanner, statement);
    } else {
        readStatement(scanner, statement);
        if (statement.kind != Kind::Wait)
            scanner.fail(QStringLiteral("statement without a block number"));
    }
    *error = scanner.error();
    return statement;
}

// Links what stands in different lines: the head, the blocks and the jumps. Each step is false when it found
// a fault.
class Linker
{
public:
    Linker(NcProgram& program, int channel)
        : m_program(program)
        , m_channel(channel)
    {}

    void link()
    {
        if (checkHead() && collectBlocks())
            findTargets();
    }

private:
    bool fail(int line, const QString& text)
    {
        m_program.errorLine = line;
        m_program.error = text;
        return false;
    }

    bool checkHead()
    {
        if (m_program.statements.isEmpty())
            return fail(1, QStringLiteral("program is empty"));
        for (int i = 0; i < m_program.statements.size(); ++i) {
            const NcStatement& statement = m_program.statements.at(i);
            const bool head = statement.kind == Kind::Channel;
            if (i == 0 && !head)
                return fail(statement.line, QStringLiteral("program begins without its channel"));
            if (i > 0 && head)
                return fail(statement.line, QStringLiteral("channel stands twice"));
            if (head && statement.number != m_channel)
                return fail(statement.line,
                            QStringLiteral("program is for channel %1").arg(statement.number));
        }
        return true;
    }

    bool collectBlocks()
    {
        m_blocks.reserve(m_program.statements.size());
        for (int i = 0; i < m_program.statements.size(); ++i) {
            const NcStatement& statement = m_program.statements.at(i);
            if (statement.block == 0)
                continue;
            if (m_blocks.contains(statement.block))
                return fail(statement.line, QStringLiteral("block N%1 stands twice").arg(statement.block));
            m_blocks.insert(statement.block, i);
        }
        return true;
    }

    bool findTargets()
    {
        for (NcStatement& statement : m_program.statements) {
            if (statement.kind != Kind::Jump)
                continue;
            const auto target = m_blocks.constFind(statement.number);
            if (target == m_blocks.constEnd())
                return fail(statement.line, QStringLiteral("no block N%1 to go to").arg(statement.number));
            statement.jumpTo = target.value();
        }
        return true;
    }

    NcProgram& m_program;
    int m_channel;
    QHash<int, int> m_blocks;
};

} // namespace

NcProgram parseNcProgram(const QString& text, int channel)
{
    NcProgram program;
    const QVector<QStringRef> lines = text.splitRef('\n');
    program.statements.reserve(lines.size());
    for (int i = 0; i < lines.size(); ++i) {
        const QStringRef line = lines.at(i).trimmed();
        if (line.isEmpty())
            continue;
        program.statements.append(readLine(line, i + 1, &program.error));
        if (!program.error.isEmpty()) {
            program.errorLine = i + 1;
            return program;
        }
    }
    Linker(program, channel).link();
    return program;
}

} // namespace plant
