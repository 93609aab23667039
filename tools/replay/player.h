#pragma once

#include "plant/controllerlink.h"
#include "site.h"
#include "tools/replay/capture.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <array>
#include <memory>

namespace replay {

constexpr double slowest = 0.1; // seconds of the capture in one second
constexpr double fastest = 20;

// Three small servers on 127.0.0.1 that speak to a console what a capture holds, at its pace times a factor.
// What the console says is taken and dropped; only the table of constants, which it asks for to look at,
// comes out of the capture. While the moment stands, each controller goes on telling its last datagram. A
// controller that had been silent for a second, or whose connection was closed, is not there, as it was for
// the operator.
class Player : public QObject
{
    Q_OBJECT

public:
    explicit Player(const Capture& capture, QObject* parent = nullptr); // stands at the beginning

    bool listen(QString* why); // on free ports
    void setEndpoints(Site* site) const;

    qint64 now() const { return m_now; } // microseconds since 1970
    bool playing() const { return m_timer.isActive(); }
    double speed() const { return m_speed; }

    void play(); // from the beginning when it stands at the end
    void pause();
    void setSpeed(double factor);
    void jump(qint64 at); // to the last state before that moment, and on from there if it plays
    void step(bool on);   // to the next moment at which something came, or the one before; stands then

    // The last command of the operator's console before now, with its time; empty for none.
    QString lastCommand() const;

signals:
    void moved(); // now, playing or speed is another

private:
    struct State
    {
        QByteArray status; // empty: not there
        qint64 statusAt = 0;
        QByteArray constants; // the last frame of them
    };
    void tick();
    void advance(qint64 at);
    void take(const Event& event, bool tell);
    void tellState();
    void rewindClock();

    const Capture& m_capture;
    std::array<std::unique_ptr<plant::ControllerLink>, plant::controllerCount> m_links;
    std::array<State, plant::controllerCount> m_states;
    const Event* m_command = nullptr;
    std::size_t m_next = 0; // the first event that has not come yet
    qint64 m_now;
    qint64 m_from = 0; // where the clock was started
    double m_speed = 1;
    QElapsedTimer m_clock;
    QTimer m_timer;
};

} // namespace replay
