#include "lessonrun.h"

#include <algorithm>

namespace {

constexpr int longestPreparation = 60'000; // ms, real
constexpr int mostNotes = 5000;

} // namespace

LessonRun::LessonRun(std::function<void(const QString&)> instruct, int period, QObject* parent)
    : QObject(parent)
    , m_instruct(std::move(instruct))
{
    connect(&m_timer, &QTimer::timeout, this, &LessonRun::ask);
    m_timer.start(period);
}

void LessonRun::ask()
{
    m_instruct(QStringLiteral("faults"));
    m_instruct(QStringLiteral("state"));
    ++m_asked;
}

bool LessonRun::isAnswer(const QString& said)
{
    return said.startsWith(QLatin1String("state ")) || said == QLatin1String("faults") ||
           said.startsWith(QLatin1String("faults "));
}

QString LessonRun::mending(const QString& fault)
{
    static const std::pair<const char*, const char*> ways[] = {
        {"valve", "free"}, {"pump", "mend"}, {"gauge", "good"}, {"leak", "0"}};
    const QStringList words = fault.split(' ', Qt::SkipEmptyParts);
    if (words.size() < 2)
        return {};
    if (words[0] == QLatin1String("trip"))
        return QStringLiteral("clear ") + words[1];
    for (const auto& [word, mended] : ways)
        if (words[0] == QLatin1String(word))
            return QStringLiteral("%1 %2 %3").arg(words[0], words[1], QLatin1String(mended));
    const QString last = words.last() == QLatin1String("on") ? QStringLiteral("off") : QStringLiteral("on");
    return (words.mid(0, words.size() - 1) << last).join(' ');
}

void LessonRun::begin(const Lesson& lesson, const QString& trainee)
{
    stop(QStringLiteral("начат другой урок"));
    m_lesson = lesson;
    for (LessonStep& step : m_lesson.steps)
        std::stable_sort(step.deeds.begin(), step.deeds.end(),
                         [](const Deed& a, const Deed& b) { return a.after < b.after; });
    m_result = LessonResult();
    m_result.title = lesson.title;
    m_result.trainee = trainee;
    m_result.began = QDateTime::currentDateTime();
    for (const LessonStep& step : lesson.steps)
        m_result.steps += LessonResult::Step{step.title, step.within};
    m_step = -1;
    m_preparing.clear();
    m_prepareTime.start();
    m_unanswered = {};
    m_phase = Phase::Prepare;
    m_instruct(QStringLiteral("speed 1"));
    m_fence = m_asked;
    emit told(QString());
    emit changed();
}

void LessonRun::stop(const QString& reason)
{
    if (running())
        finish(LessonResult::End::Stopped, reason);
}

void LessonRun::hear(const QString& said)
{
    if (said.startsWith(QLatin1String("faults"))) {
        m_faults = said.mid(7).split(QStringLiteral("; "), Qt::SkipEmptyParts);
        return;
    }
    if (said.startsWith(QLatin1String("error: ")) && running() && !m_unanswered.line.isEmpty()) {
        finish(LessonResult::End::Stopped, QStringLiteral("строка %1 урока не выполнена: %2: %3")
                                               .arg(m_unanswered.fileLine)
                                               .arg(m_unanswered.line, said));
        return;
    }
    if (!said.startsWith(QLatin1String("state ")))
        return;
    m_answered = std::min(m_answered + 1, m_asked);
    const bool fresh = m_answered > m_fence;
    if (fresh)
        m_unanswered = {};
    m_state.clear();
    for (const QString& part : said.mid(6).split(' ', Qt::SkipEmptyParts))
        m_state.insert(part.section('=', 0, 0), part.section('=', 1));
    m_now = m_state.value(QStringLiteral("time")).toDouble();
    if (preparing() && fresh)
        prepare();
    else if (m_phase == Phase::Run)
        follow();
    m_latePresses.clear();
    emit changed();
}

void LessonRun::readJournal(const QString& line)
{
    note(line);
    if (m_phase != Phase::Run || !line.contains(QStringLiteral("]Нажат")))
        return;
    m_latePresses << line;
    press(line);
}

void LessonRun::press(const QString& line)
{
    const QStringList& presses = m_lesson.steps[m_step].presses;
    for (int i = 0; i < presses.size(); ++i)
        m_pressed[i] = m_pressed[i] || line.contains(presses[i]);
}

void LessonRun::note(const QString& text)
{
    const bool during = m_phase == Phase::Run;
    if (during && m_result.notes.size() < mostNotes)
        m_result.notes += LessonResult::Note{time(), text};
    emit noted(during ? time() : -1, text);
}

void LessonRun::instruct(const QString& line)
{
    m_instruct(line);
    note(QStringLiteral("Инструктор: ") + line);
}

void LessonRun::doDeed(const Deed& deed)
{
    m_unanswered = deed;
    m_fence = m_asked;
    instruct(deed.line);
}

// Asked at each answer until the installation stands as the lesson wants it. A line that has been sent is
// given the time that it takes.
void LessonRun::prepare()
{
    if (m_prepareTime.elapsed() > longestPreparation) {
        finish(LessonResult::End::Stopped, QStringLiteral("установку не удалось подготовить к уроку"));
        return;
    }
    const auto once = [this](const QString& line) {
        if (!m_preparing.contains(line))
            m_instruct(line);
        m_preparing << line;
        m_fence = m_asked;
        return false;
    };
    const auto is = [this](const char* name, const char* value) {
        return m_state.value(QLatin1String(name)) == QLatin1String(value);
    };
    const auto ready = [&] {
        if (!m_faults.isEmpty()) {
            for (const QString& fault : qAsConst(m_faults))
                m_instruct(mending(fault));
            m_fence = m_asked;
            return false;
        }
        // An emergency button ends programs, motion and the virtual axes with the drives.
        if (!is("drives", "off"))
            return once(QStringLiteral("emergency console on"));
        if (m_lesson.start == Lesson::Start::Air) {
            if (!is("pressing", "released") || !is("regime", "1"))
                return once(QStringLiteral("vacuum off"));
            return is("door", "open") || once(QStringLiteral("door open"));
        }
        if (m_lesson.start == Lesson::Start::Vacuum) {
            if (!is("door", "closed"))
                return once(QStringLiteral("door close"));
            if (!m_preparing.contains(QStringLiteral("vacuum on")))
                return once(QStringLiteral("vacuum on"));
            return is("vacuum", "on");
        }
        return true;
    };
    if (ready())
        start();
}

void LessonRun::start()
{
    m_phase = Phase::Run;
    m_zero = m_now;
    m_latePresses.clear();
    for (const Deed& deed : qAsConst(m_lesson.deeds))
        doDeed(deed);
    emit told(m_lesson.tell);
    beginStep(0);
}

void LessonRun::beginStep(int index)
{
    m_step = index;
    m_stepBegan = m_now;
    m_deedsDone = 0;
    m_result.steps[index].began = time();
    const LessonStep& step = m_lesson.steps[index];
    m_pressed = QVector<bool>(step.presses.size(), false);
    for (const QString& line : qAsConst(m_latePresses))
        press(line);
    m_latePresses.clear();
    if (!step.tell.isEmpty())
        emit told(step.tell);
    follow();
}

void LessonRun::follow()
{
    const LessonStep& step = m_lesson.steps[m_step];
    while (m_phase == Phase::Run && m_deedsDone < step.deeds.size() &&
           step.deeds[m_deedsDone].after <= m_now - m_stepBegan)
        doDeed(step.deeds[m_deedsDone++]);
    if (banned(step.bans) || banned(m_lesson.bans))
        return;
    // What the lesson has just done, only the next answer shows.
    const auto holds = [this](const Condition& c) { return c.holds(m_state); };
    if (m_unanswered.line.isEmpty() && m_deedsDone == step.deeds.size() && !m_pressed.contains(false) &&
        std::all_of(step.until.begin(), step.until.end(), holds))
        endStep();
    else if (m_now - m_stepBegan > step.within)
        finish(LessonResult::End::Failed, QStringLiteral("шаг %1 не выполнен за %2 с: %3")
                                              .arg(m_step + 1)
                                              .arg(step.within)
                                              .arg(step.title));
}

bool LessonRun::banned(const QVector<Ban>& bans)
{
    for (const Ban& ban : bans) {
        if (!ban.condition.holds(m_state))
            continue;
        finish(LessonResult::End::Failed, ban.reason);
        return true;
    }
    return false;
}

void LessonRun::endStep()
{
    LessonResult::Step& result = m_result.steps[m_step];
    result.done = true;
    result.ended = time();
    if (m_step + 1 < m_lesson.steps.size()) {
        beginStep(m_step + 1);
        return;
    }
    for (const Condition& condition : qAsConst(m_lesson.passed)) {
        if (!condition.holds(m_state)) {
            finish(LessonResult::End::Failed,
                   QStringLiteral("в конце урока не выполнено: ") + condition.text());
            return;
        }
    }
    if (m_lesson.passedWithin > 0 && time() > m_lesson.passedWithin)
        finish(LessonResult::End::Failed,
               QStringLiteral("весь урок занял больше %1 с").arg(m_lesson.passedWithin));
    else
        finish(LessonResult::End::Passed, QStringLiteral("все шаги выполнены вовремя"));
}

void LessonRun::finish(LessonResult::End end, const QString& reason)
{
    const bool begun = m_phase == Phase::Run;
    if (begun && !m_result.steps[m_step].done)
        m_result.steps[m_step].ended = time();
    m_result.end = end;
    m_result.reason = reason;
    m_result.length = begun ? time() : 0;
    m_phase = Phase::Rest;
    m_step = -1;
    emit told(QString());
    emit changed();
    emit finished();
}
