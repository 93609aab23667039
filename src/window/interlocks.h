#pragma once

#include <QMap>
#include <QString>

#include <array>

class Lock;
class StateButton;

// What holds the window's buttons back: four locks, each with the button that it guards, and the mode of the
// virtual axes, which may change only with drives on and channel 1 idle. A guarded button refuses the press
// and tells why; nobody asks a lock before a command is sent. Window's thread.
class Interlocks
{
public:
    enum Guard { Drives, Spiral, Pult, Shutdown };

    struct Buttons // of the window; put to work here
    {
        StateButton* drives;
        StateButton* trans;
        StateButton* shutdown;
        StateButton* spiral;
        StateButton* pult;
    };

    explicit Interlocks(const Buttons& buttons);
    ~Interlocks(); // the buttons may outlive it
    Interlocks(const Interlocks&) = delete;
    Interlocks& operator=(const Interlocks&) = delete;

    Lock* lock(const QString& key) const; // asserts on an unknown key
    void set(Guard guard, bool locked);

    void setDrivesOn(bool on);
    void setChannel1State(uint state);
    bool readyToMove() const; // drives on, and channel 1 runs no program

private:
    void addLock(const QString& key, bool perm, const QString& textLocked, const QString& textFree);
    void updateTrans();

    QMap<QString, Lock*> m_locks; // by key
    StateButton* m_trans;
    bool m_drivesOn = false;
    uint m_channel1State = 0;
};
