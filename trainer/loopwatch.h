#pragma once

#include <QObject>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

// Looks from a thread of its own how long the window's thread leaves its event loop alone: every few
// milliseconds it posts a question and takes the time to the answer. The time during which the thread could
// have run and got no processor is not counted, so that a busy machine makes no stall; time asleep or at a
// lock is.
class LoopWatch
{
public:
    // On the window's thread. One that answers nothing for 30 s is taken for dead, and the process aborts
    // with a line on standard error.
    LoopWatch();
    ~LoopWatch();

    // The loop is expected to turn between the two calls; what is unanswered at the second counts nothing.
    // Any thread.
    void start();
    void stop();

    // Longest times without an answer since the last call, ms: on the processor, and asleep (at a lock, at
    // the disk, for another program).
    struct Stall
    {
        int busy = 0;
        int asleep = 0;
    };
    Stall takeLongest();

private:
    void watch();
    // Of the window's thread, s.
    struct Account
    {
        double busy = 0;
        double own = 0; // without its waits for a processor
    };
    Account account() const;

    const int m_thread; // the window's, by the kernel's number
    std::atomic<bool> m_running{false};
    std::mutex m_mutex; // of what follows
    std::condition_variable m_turn;
    bool m_over = false;
    bool m_asked = false;
    Account m_asking; // at the question
    Stall m_longest;
    QObject m_window; // on the window's thread, and takes unanswered questions along
    std::thread m_watcher;
};
