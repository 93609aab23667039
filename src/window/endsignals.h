#pragma once

#include <QObject>
#include <QSocketNotifier>
#include <QTimer>

#include <array>

#include <csignal>

// The signals by which the system ends a program: SIGTERM, SIGINT and SIGHUP, at the end of a session or when
// the computer goes down. While this object stands they end the console as its own button does: all event
// loops of the window's thread end, those of open dialogs and menus too, and what they belong to is left in
// order. A window's thread that is busy is not interrupted; it hears of the signal when it is done.
//
// One object at a time, on the window's thread.
class EndSignals : public QObject
{
    Q_OBJECT

public:
    EndSignals();
    ~EndSignals() override; // the signals do again what they did before

signals:
    void asked(); // once, before the loops end

private:
    void onSignal();

    static constexpr std::array<int, 3> kSignals{SIGTERM, SIGINT, SIGHUP};

    QSocketNotifier m_notifier;
    QTimer m_again;
    std::array<struct sigaction, kSignals.size()> m_former{};
};
