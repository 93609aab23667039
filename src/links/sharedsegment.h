#pragma once

#include <QString>

#include <memory>
#include <thread>

// A segment of memory that the console shares with another program, guarded by the cross-process lock of the
// segment. That program may hang while it holds the lock. So whatever takes it (joining, reading, writing,
// leaving) is done by a thread of the segment's own, and the caller waits for that thread a bounded time
// only: 20 ms for a reading, and none at all as long as an earlier one is overdue; 200 ms for joining and
// leaving, at the start and the end of the process. Any thread may call.
class SharedSegment
{
public:
    // Joins the segment of that key or makes it, and zeroes all of it. Where there is none, or it has less
    // than `bytes`, the debug output tells so, led by `owner`; then nothing is ever read or written.
    SharedSegment(const char* owner, const QString& key, int bytes);

    // Writes what is still to be written, and leaves. A thread that stands at the lock is abandoned: it ends
    // with the process, at the latest.
    ~SharedSegment();

    SharedSegment(const SharedSegment&) = delete;
    SharedSegment& operator=(const SharedSegment&) = delete;

    // Copies the first `bytes` of the segment as they are now. False, and nothing copied, when they cannot be
    // had in time.
    bool read(void* to);

    // Puts a word of 32 bits at its place, counted in words, as soon as the lock can be had. Does not wait.
    void write(int place, quint32 word);

private:
    struct Desk; // what the caller and the thread hand each other; the last of them takes it away

    static void serve(const std::shared_ptr<Desk>& desk);

    std::shared_ptr<Desk> m_desk;
    std::thread m_thread;
};
