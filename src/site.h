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

// The place where the console runs: what differs between the machine, the trainer and a test.
// Production takes the defaults; nothing outside the program can change them.
struct Site
{
    QString root;      // put in front of every absolute path; empty on the machine
    QString shmSuffix; // appended to the keys of the shared segments; empty on the machine

    Endpoint drive; // motion controller CML75
    Endpoint kvs;   // vacuum system controller
    Endpoint kvk;   // chamber controller

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

    Site(); // the machine's own values

    // The path as this process opens it. `absolute` begins with "/"; paths that travel over a link
    // never pass through here.
    QString path(const QString& absolute) const;

    // The folder of the console's executable, without a final "/". Under a root it is the folder
    // where the machine keeps the executable.
    QString programDir() const;
};

// The site of this process. `setSite` is called before the window is built, on the main thread.
const Site& site();
void setSite(const Site& site);
