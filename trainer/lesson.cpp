#include "lesson.h"

#include "plant/instructor.h"

#include <QFile>
#include <QRegularExpression>
#include <QTextCodec>

#include <algorithm>
#include <cmath>

namespace {

constexpr int longestFile = 100'000; // bytes
constexpr int mostSteps = 60;
constexpr double longestTime = 86'400; // s

// What a name of the installation may be; no words: a number.
struct Known
{
    const char* names; // parted by blanks
    const char* words;
};

const Known known[] = {
    {"time lx lx2 ly a b c d u1 u2 v x z phi ir iw pt1 pt2 pt3 pt4 pt5 pt6 oil", ""},
    {"key vacuum alarm drives virtual", "on off"},
    {"door", "open closed opening closing"},
    {"pressing", "pressed released pressing releasing error nodata"},
    {"channel1 channel2 channel3", "idle running error"},
    {"regime", "0 1 2 3 4 5 6 abnormal"},
    {"progress", "idle running done"},
    {"nl1 nl2 nz1 nz2 nd1 nw2 vp1 vp2 vp3 vp4 vp5 vp6 vp7 vp8 vpt ve1 tmn",
     "on off goingon goingoff error nodata"},
};

struct Trouble
{
    QString text;
    int line; // 0: the line that is being read
};

[[noreturn]] void refuse(const QString& text, int line = 0)
{
    throw Trouble{text, line};
}

double number(const QString& word, double most)
{
    bool ok = false;
    const double value = word.toDouble(&ok);
    if (!ok || !std::isfinite(value) || value < 0 || value > most)
        refuse(QStringLiteral("\"%1\" is no number from 0 to %2").arg(word.left(40)).arg(most));
    return value;
}

Condition condition(const QString& text)
{
    const QString compact = QString(text).remove(' ').toLower();
    const int at = compact.indexOf(QRegularExpression(QStringLiteral("!=|[=<>]")));
    if (at < 1)
        refuse(QStringLiteral("\"%1\" is no condition such as door=closed or pt5<0.1").arg(text.left(60)));
    const Condition result{compact.left(at), compact[at], compact.mid(at + (compact[at] == '!' ? 2 : 1))};
    for (const Known& entry : known) {
        if (!QString(entry.names).split(' ').contains(result.name))
            continue;
        bool ok = false;
        const double value = result.value.toDouble(&ok);
        const bool isNumber = ok && std::isfinite(value);
        const bool asNumber = *entry.words == '\0';
        if (asNumber && !isNumber)
            refuse(QStringLiteral("%1 is a number, not \"%2\"").arg(result.name, result.value.left(40)));
        if (!asNumber && (result.op == '<' || result.op == '>'))
            refuse(QStringLiteral("%1 is a word: only = and != go with it").arg(result.name));
        if (!asNumber && !QString(entry.words).split(' ').contains(result.value))
            refuse(QStringLiteral("%1 is never \"%2\"; it is one of: %3")
                       .arg(result.name, result.value.left(40), QLatin1String(entry.words)));
        return result;
    }
    refuse(QStringLiteral("the installation tells nothing by the name \"%1\"").arg(result.name.left(40)));
}

Ban ban(const QString& rest)
{
    const int colon = rest.indexOf(':');
    if (colon < 0 || rest.mid(colon + 1).trimmed().isEmpty())
        refuse(QStringLiteral("never CONDITION: what is told then"));
    return {condition(rest.left(colon)), rest.mid(colon + 1).trimmed()};
}

// Reads line by line; what a line may say depends on whether a step is open.
class Reader
{
public:
    explicit Reader(Lesson* lesson)
        : m_lesson(*lesson)
    {}

    void take(const QString& line, int number)
    {
        m_number = number;
        const QString word = line.section(' ', 0, 0);
        const QString rest = line.section(' ', 1).trimmed();
        if (m_passed && word != QLatin1String("passed"))
            refuse(QStringLiteral("behind \"passed\" nothing but \"passed\" may follow"));
        if (m_lesson.title.isEmpty() && word != QLatin1String("lesson"))
            refuse(QStringLiteral("the first line is: lesson TITLE"));
        using Taker = void (Reader::*)(const QString&);
        static const QHash<QString, Taker> takers = {
            {"lesson", &Reader::title}, {"tell", &Reader::tell},     {"start", &Reader::start},
            {"do", &Reader::deed},      {"after", &Reader::later},   {"never", &Reader::never},
            {"step", &Reader::step},    {"until", &Reader::until},   {"press", &Reader::press},
            {"within", &Reader::limit}, {"passed", &Reader::passed},
        };
        const auto taker = takers.constFind(word);
        if (taker == takers.constEnd())
            refuse(QStringLiteral("unknown word \"%1\"").arg(word.left(40)));
        if (rest.isEmpty())
            refuse(QStringLiteral("nothing stands behind \"%1\"").arg(word));
        (this->**taker)(rest);
    }

    void end()
    {
        if (m_lesson.title.isEmpty())
            refuse(QStringLiteral("the file is empty"));
        closeStep();
        if (m_lesson.tell.isEmpty())
            refuse(QStringLiteral("nothing tells the trainee what to do: tell TEXT"));
        if (m_lesson.steps.isEmpty())
            refuse(QStringLiteral("there is no step"));
        if (!m_passed)
            refuse(QStringLiteral("nothing says what counts as passed: passed CONDITION"));
    }

private:
    void title(const QString& rest)
    {
        if (!m_lesson.title.isEmpty())
            refuse(QStringLiteral("the lesson has a title already"));
        m_lesson.title = rest;
    }

    void tell(const QString& rest)
    {
        QString& text = m_open ? m_open->tell : m_lesson.tell;
        text += text.isEmpty() ? rest : QLatin1Char(' ') + rest;
    }

    void start(const QString& rest)
    {
        if (m_open || m_lesson.start != Lesson::Start::AsItStands)
            refuse(QStringLiteral("start stands once, in front of the steps"));
        if (rest != QLatin1String("air") && rest != QLatin1String("vacuum"))
            refuse(QStringLiteral("start air or start vacuum"));
        m_lesson.start = rest == QLatin1String("air") ? Lesson::Start::Air : Lesson::Start::Vacuum;
    }

    void addDeed(double after, const QString& line)
    {
        const QString wrong = plant::Instructor::misspelt(line);
        const QString word = line.section(' ', 0, 0).toLower();
        if (!wrong.isEmpty())
            refuse(wrong);
        if (QStringList({"quit", "state", "faults", "help", "status"}).contains(word))
            refuse(QStringLiteral("\"%1\" has no place in a lesson").arg(word));
        (m_open ? m_open->deeds : m_lesson.deeds) += Deed{after, line, m_number};
    }
    void deed(const QString& rest) { addDeed(0, rest); }

    void later(const QString& rest)
    {
        if (!m_open)
            refuse(QStringLiteral("after belongs to a step"));
        if (rest.section(' ', 1, 1) != QLatin1String("do"))
            refuse(QStringLiteral("after SECONDS do LINE"));
        addDeed(number(rest.section(' ', 0, 0), longestTime), rest.section(' ', 2).trimmed());
    }

    void never(const QString& rest) { (m_open ? m_open->bans : m_lesson.bans) += ban(rest); }

    void step(const QString& rest)
    {
        closeStep();
        if (m_lesson.steps.size() == mostSteps)
            refuse(QStringLiteral("more than %1 steps").arg(mostSteps));
        m_lesson.steps += LessonStep();
        m_open = &m_lesson.steps.last();
        m_open->title = rest;
        m_stepLine = m_number;
    }

    LessonStep& inStep(const char* word)
    {
        if (!m_open)
            refuse(QStringLiteral("%1 belongs to a step").arg(QLatin1String(word)));
        return *m_open;
    }
    void until(const QString& rest) { inStep("until").until += condition(rest); }
    void press(const QString& rest) { inStep("press").presses += rest; }

    void limit(const QString& rest)
    {
        LessonStep& step = inStep("within");
        if (step.within > 0)
            refuse(QStringLiteral("the step has a time already"));
        step.within = number(rest, longestTime);
        if (step.within == 0)
            refuse(QStringLiteral("no time at all"));
    }

    void passed(const QString& rest)
    {
        closeStep();
        m_passed = true;
        if (rest.startsWith(QLatin1String("within ")))
            m_lesson.passedWithin = number(rest.mid(7).trimmed(), longestTime);
        else
            m_lesson.passed += condition(rest);
    }

    void closeStep()
    {
        const LessonStep* step = m_open;
        m_open = nullptr;
        if (step && step->until.isEmpty() && step->presses.isEmpty())
            refuse(QStringLiteral("step \"%1\" waits for nothing: until or press").arg(step->title),
                   m_stepLine);
        if (step && step->within == 0)
            refuse(QStringLiteral("step \"%1\" has no time: within SECONDS").arg(step->title), m_stepLine);
    }

    Lesson& m_lesson;
    LessonStep* m_open = nullptr;
    bool m_passed = false;
    int m_number = 0;
    int m_stepLine = 0;
};

} // namespace

bool Condition::holds(const PlantState& state) const
{
    const QString now = state.value(name);
    if (op == '<' || op == '>')
        return op == '<' ? now.toDouble() < value.toDouble() : now.toDouble() > value.toDouble();
    bool isNumber = false;
    const double wanted = value.toDouble(&isNumber);
    const bool same = now == value || (isNumber && std::abs(now.toDouble() - wanted) < 0.005);
    return !now.isEmpty() && same == (op == '=');
}

QString Condition::text() const
{
    return name + (op == '!' ? QStringLiteral("!=") : QString(op)) + value;
}

bool parseLesson(const QByteArray& text, Lesson* lesson, QString* why)
{
    *lesson = Lesson();
    int number = 0;
    try {
        if (text.size() > longestFile)
            refuse(QStringLiteral("the file is longer than %1 bytes").arg(longestFile));
        QTextCodec::ConverterState utf8;
        const QString whole =
            QTextCodec::codecForName("UTF-8")->toUnicode(text.constData(), text.size(), &utf8);
        if (utf8.invalidChars > 0 || utf8.remainingChars > 0 || whole.contains(QChar(0)))
            refuse(QStringLiteral("the file is no UTF-8 text"));
        Reader reader(lesson);
        for (const QString& raw : whole.trimmed().isEmpty() ? QStringList() : whole.split('\n')) {
            ++number;
            const QString line = raw.simplified();
            if (!line.isEmpty() && !line.startsWith('#'))
                reader.take(line, number);
        }
        number -= whole.endsWith('\n');
        reader.end();
        return true;
    } catch (const Trouble& trouble) {
        *lesson = Lesson();
        *why = QStringLiteral("line %1: %2")
                   .arg(trouble.line ? trouble.line : std::max(number, 1))
                   .arg(trouble.text);
        return false;
    }
}

bool readLesson(const QString& fileName, Lesson* lesson, QString* why)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        *why = QStringLiteral("%1: %2").arg(fileName, file.errorString());
        return false;
    }
    const bool good = parseLesson(file.read(longestFile + 1), lesson, why);
    if (!good)
        why->prepend(fileName + QStringLiteral(": "));
    return good;
}
