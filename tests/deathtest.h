#pragma once

#include <QByteArray>

#include <csignal>
#include <functional>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

// Runs `act` in a copy of this process. Returns what the copy wrote to standard error if an assertion
// ended it, and nothing if it lived on or ended in another way.
inline QByteArray deathOf(const std::function<void()>& act)
{
    int channel[2];
    if (pipe(channel) != 0)
        return {};
    const pid_t child = fork();
    if (child == 0) {
        const rlimit noCore{0, 0};
        setrlimit(RLIMIT_CORE, &noCore);
        // The test library's own handlers would print and wait for a debugger.
        signal(SIGABRT, SIG_DFL);
        qInstallMessageHandler(nullptr);
        dup2(channel[1], STDERR_FILENO);
        close(channel[0]);
        act();
        _exit(0);
    }
    close(channel[1]);
    QByteArray told;
    char buffer[512];
    for (ssize_t n; (n = read(channel[0], buffer, sizeof buffer)) > 0;)
        told.append(buffer, int(n));
    close(channel[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) && WTERMSIG(status) == SIGABRT ? told : QByteArray();
}
