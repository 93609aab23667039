#pragma once

#include "plant/statuspack.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

namespace plant {

class MotionController;

enum class Controller { Drive, Kvs, Kvk };
constexpr int controllerCount = 3;

struct Ports
{
    std::uint16_t tcp = 0; // 0: any free port of the loopback
    std::uint16_t udp = 0; // where the console listens; 0: a port that is free now
};

struct InstallationOptions
{
    QString root; // folder in front of "/programs/..."; empty: the machine's own root
    std::array<Ports, controllerCount> ports; // by Controller
    bool air = false;       // false: pumped down, the door closed; true: the vacuum plant off, the door open
    double speed = 1;       // simulated seconds for each real one
    std::uint32_t seed = 1; // of all that varies by chance: the same seed gives the same run
    std::optional<QString> shmSuffix; // of the beam unit's segment; nothing: no beam unit
    QString pcap;                     // file that gets what goes over the links; empty: none
    bool ownThread = true;            // false: everything happens in the caller's event loop
};

// The whole simulated installation: the controllers, their links on loopback, the instructor and the
// clock that drives them in steps of 10 ms. It answers from its own thread, or from the thread that made
// it, which then must run an event loop. Once started, every call but `start` and `stop` may come from
// any thread; it blocks until the installation's thread has done it.
class Installation : public QObject
{
    Q_OBJECT

public:
    explicit Installation(const InstallationOptions& options = {}, QObject* parent = nullptr);
    ~Installation() override; // stops

    bool start(QString* error = nullptr); // false with the reason when a port or the capture cannot be had
    void stop();

    Ports ports(Controller controller = Controller::Drive) const; // 0 until started

    // One line of the instructor; the answer is one line too.
    QString instruct(const QString& line);

    // Runs the instructor's lines of a file one after another; "wait SECONDS" holds it in real time.
    bool runScript(const QString& fileName, QString* error = nullptr);

    // What the motion controller's next datagram will carry.
    StatusPack status();

    // Calls `action` in the installation's thread and waits for it. Only while started.
    void inside(const std::function<void(MotionController&)>& action);

signals:
    // Something the instructor should know: a refused command, a program error, a console coming or going.
    // `line` carries no time. Emitted in the installation's thread.
    void logged(const QString& line);
    // The instructor's line "quit". Emitted in the installation's thread.
    void quitRequested();

private:
    class Core;
    class Gate;
    struct Jobs;
    void startThread();
    void call(const std::function<void()>& action);

    struct Private;
    std::unique_ptr<Private> d;
};

} // namespace plant
