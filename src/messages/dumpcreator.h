#pragma once

#include <QThread>

#include <condition_variable>
#include <mutex>

// The flight recorder: a file of ten values, twenty times a second, from the console's start to its end.
// A file that still can be written belongs to a run that did not end cleanly.
// Its file: flightrecord.h.
class DumpCreator : public QThread
{
    Q_OBJECT

public:
    // `source`: ten floats, read without a lock, each as a whole, and never again once stopDump() has
    // returned. Name and rate belong to the recorder's identity and change nothing: it has one file name and
    // one pace.
    DumpCreator(const QString& name, int rate, float* source);

    // The folder of the files, which nobody makes: without it there is no recording.
    void setDumpPath(const QString& newDumpPath);
    void startDump();
    void stopDump(); // from any thread; does not wait

signals:
    void signalDumpProblem(const QString& text); // the file cannot be opened; the thread ends

protected:
    void run() override;

private:
    bool take(float* values); // false when it was time to stop
    bool pause();             // the same

    QString m_dumpPath; // with a final "/"
    float* m_source;
    std::mutex m_mutex;
    std::condition_variable m_stopping;
    bool m_stop = true; // guarded by the mutex
};
