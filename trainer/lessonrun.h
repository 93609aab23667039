#pragma once

#include "lesson.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <functional>

// What came of a lesson.
struct LessonResult
{
    enum class End { Running, Passed, Failed, Stopped };
    struct Step
    {
        QString title;
        double within = 0;
        double began = -1; // s of the lesson; -1: never
        double ended = -1;
        bool done = false;
    };
    struct Note
    {
        double at = 0; // s of the lesson
        QString text; // a line of the console's journal, or "Инструктор: " and a line of the lesson's
    };

    QString title;
    QString trainee;
    QDateTime began;
    End end = End::Running;
    QString reason;    // why it ended so, for people
    double length = 0; // s of the installation's clock
    QVector<Step> steps;
    QVector<Note> notes;
};

// Follows the installation for the instructor and leads a trainee through a lesson. The installation is asked
// again and again by instructor's lines; whoever owns it brings its answers and what the console's journal
// tells.
class LessonRun : public QObject
{
    Q_OBJECT

public:
    // `instruct` sends a line to the installation. `period`: ms between two questions.
    explicit LessonRun(std::function<void(const QString&)> instruct, int period = 100,
                       QObject* parent = nullptr);

    // Puts the installation in order (no fault, drives off, as the lesson wants it) and begins; one that runs
    // is stopped first.
    void begin(const Lesson& lesson, const QString& trainee);
    void stop(const QString& reason); // nothing when none runs

    void instruct(const QString& line);    // of the instructor's own, which the journal notes
    void hear(const QString& said);        // any line that the installation says
    void readJournal(const QString& line); // of the console

    bool running() const { return m_phase != Phase::Rest; }
    bool preparing() const { return m_phase == Phase::Prepare; }
    int step() const { return m_step; } // that waits now, from 0
    double time() const { return m_now - m_zero; }
    const Lesson& lesson() const { return m_lesson; }
    const LessonResult& result() const { return m_result; }
    const PlantState& state() const { return m_state; } // empty before the first answer
    const QStringList& faults() const { return m_faults; }

    static bool isAnswer(const QString& said); // to one of its own questions

    // The line that takes a fault away, empty for none.
    static QString mending(const QString& fault);

signals:
    void changed();                 // state, faults or steps; as often as the installation is asked
    void told(const QString& text); // to the trainee; empty: nothing any more
    void noted(double at, const QString& text); // -1: no lesson runs
    void finished();                            // the result stands

private:
    enum class Phase { Rest, Prepare, Run };

    void ask();
    void note(const QString& text);
    void doDeed(const Deed& deed);
    void prepare();
    void start();
    void beginStep(int index);
    void follow();
    bool banned(const QVector<Ban>& bans);
    void press(const QString& line);
    void endStep();
    void finish(LessonResult::End end, const QString& reason);

    std::function<void(const QString&)> m_instruct;
    QTimer m_timer;
    Phase m_phase = Phase::Rest;
    Lesson m_lesson;
    LessonResult m_result;
    PlantState m_state;
    QStringList m_faults;
    double m_now = 0;  // s, the installation's clock
    double m_zero = 0; // when the lesson began
    int m_step = -1;
    double m_stepBegan = 0;
    int m_deedsDone = 0; // of the step, in the order of their times
    QVector<bool> m_pressed;
    // Presses since the last answer. The answer may tell that the step was over before them: then they are
    // the next step's.
    QStringList m_latePresses;
    QStringList m_preparing; // what was sent once already
    QElapsedTimer m_prepareTime;
    // A question's answer tells of a line only when it was asked after it.
    int m_asked = 0;
    int m_answered = 0;
    int m_fence = 0;   // questions asked before the last line that was sent
    Deed m_unanswered; // the line, when it is one of the lesson, until its effect has been told
};
