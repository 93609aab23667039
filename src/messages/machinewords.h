#pragma once

#include <QObject>

class CMessageServer;

// What the motion controller tells in words: doors, breakers, alarms, lights, errors. Each word becomes lines
// of the journal; what lasts also becomes a message of the stack, and an alarm sounds the buzzer.
//
// Called for changes only; the first telling of a connection counts as a change. Values and bits that nobody
// knows are silent.
class MachineWords : public QObject
{
    Q_OBJECT

public:
    MachineWords(CMessageServer* server, QObject* parent); // the server is not owned

    void controllerError(uint number); // 0: none
    void door(uint state);
    void transportModule(uint state);
    void breakers(uint word); // of the drives' power, a bit for each, set while it is closed
    void lights(uint word);
    void alarms(uint word); // bits of the emergency buttons and ropes
    void spiralPower(bool healthy);
    void drivesPower(bool healthy);
    void phases(bool wrong);

signals:
    void message(const QString& line, bool shown); // journal line; shown in the list too
    void command(const QString& text);             // for the motion controller

private:
    void tell(const char* line);
    void raiseAlarm(int numId); // with the buzzer
    void showAlarm(bool on, int numId, const char* line);

    CMessageServer* m_server;
    uint m_breakers = 0; // the words as last told
    uint m_lights = 0;
};
