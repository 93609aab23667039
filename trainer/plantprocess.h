#pragma once

#include "site.h"

#include <QObject>
#include <QProcess>
#include <QStringList>

#include <mutex>

// The simulated installation as a process of its own. It lives on the thread that made it; `instruct`
// and `lines` may be called from any thread. The process ends with this object.
class PlantProcess : public QObject
{
    Q_OBJECT

public:
    struct Options
    {
        QString program;   // path of the executable
        QString root;      // root of the site, where it finds the programs
        double speed = 1;  // seconds of the installation in one real second
        QString script;    // instructor's lines from a file, empty for none
        QString shmSuffix; // end of the shared segments' keys, as the site has it
        bool air = false;  // starts with the vacuum plant off and the door open, not pumped down
        QString pcap = {}; // file that gets what goes over the links, empty for none
    };

    explicit PlantProcess(const Options& options, QObject* parent = nullptr);
    ~PlantProcess() override;

    // Starts the process and waits until it listens, 10 s at most. False with a reason on failure.
    bool start(QString* why);

    // Path of the installation's program in this build: beside this program or one folder above it.
    static QString besideThisProgram();

    // Sends instructor's lines, parted by ";".
    void instruct(const QString& lines);

    // Sends one and waits for its answer, which begins so, 10 s at most; null when none comes. Not from the
    // thread of this object.
    QString ask(const QString& line, const QString& answer);

    // All that the installation has said so far, but for its answers to `state` and `faults`.
    QStringList lines() const;
    int count(const QString& pattern) const;          // lines in which this regular expression is found
    int connections(const QString& controller) const; // how often the console came to "drive", "kvs" or "kvk"

    // Puts the endpoints of the running installation into a site.
    void setEndpoints(Site* site) const;

signals:
    void said(const QString& line);
    void ended();

private:
    void readLines();

    Options m_options;
    QProcess m_process;
    struct Ports
    {
        int tcp = 0;
        int udp = 0;
    };
    Ports m_drive;
    Ports m_kvs;
    Ports m_kvk;
    mutable std::mutex m_mutex;
    QStringList m_lines;
};
