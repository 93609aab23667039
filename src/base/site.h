#pragma once

#include <QString>

#include <chrono>
#include <functional>

// Where one controller answers. The ports are fixed by the controllers' own configuration.
struct Endpoint
{
    QString host;
    int tcpPort;
    int udpPort;
};

// The place where the console runs: what differs between the machine, the trainer and a test. The machine's
// own values stand in its program alone; nothing outside the program can change them.
struct Site
{
    QString root;      // put in front of every absolute path; empty on the machine
    QString shmSuffix; // appended to the keys of the shared segments; empty on the machine

    // Nobody answers where none is given.
    Endpoint drive{QString(), 0, 0}; // motion controller CML75
    Endpoint kvs{QString(), 0, 0};   // vacuum system controller
    Endpoint kvk{QString(), 0, 0};   // chamber controller

    // Pauses between the starts of programs that meet by events (see `RequiredPause`). The controllers need
    // the full values; only a test may shorten them.
    struct Pauses
    {
        std::chrono::microseconds beforeContour{1'000'000};     // channel 3 started, channels 1 and 2 follow
        std::chrono::microseconds beforeManipulator{1'000'000}; // channel 2 started, channel 1 follows
        std::chrono::microseconds navigation{500'000};          // the same for navigation and the test move
        std::chrono::microseconds constants{10'000};            // between the two requests for constants
    } pauses;

    // Runs a command of the operating system and returns its result. Only the machine's own program sets it:
    // where it is empty nothing can be switched off, neither a desk nor a computer that runs tests.
    std::function<int(const char* command)> shell;

    // The path as this process opens it. `absolute` begins with "/"; paths that travel over a link
    // never pass through here.
    QString path(const QString& absolute) const;

    // The folder of the console's executable, without a final "/". Under a root it is the folder
    // where the machine keeps the executable.
    QString programDir() const;

private:
    friend struct Machine; // of the console's own program and of nothing else
    friend void setSite(const Site& site);
    bool m_machine = false;
};

// The site of this process. It is set before the window is built, on the main thread. There is none to begin
// with, and the machine's own belongs to its program alone: whoever else asks for a site before setting one,
// or sets one without a root (or with "/") or without a suffix, is ended at once, before a test can write a
// file or move an axis of the machine.
const Site& site();
void setSite(const Site& site);
void leaveSite(); // none again
