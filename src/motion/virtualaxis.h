#pragma once

#include <QObject>

class DriveTCPthread;
class PoLabel;
class PoSprite;
class QPushButton;

// A virtual axis, X, Z or PHI: the model of what the controller tells of it, and the controller of its row on
// the window. The motion controller computes it from several drives, so it is no Axis and has nothing to park
// or to clear. Window's thread.
//
// Nothing is checked before a command is sent: safety lives in the controller.
class VirtualAxis : public QObject
{
    Q_OBJECT

public:
    struct Row // on the window, to which it belongs
    {
        PoLabel* coord;
        PoLabel* speed;
        PoSprite* lamp;
        QPushButton* plus; // jogs in the negative direction, minus in the positive one
        QPushButton* minus;
        QPushButton* info;
    };

    // `name` as in commands, `unit` the word that dialogs show, `maxSpeed` in units a minute.
    VirtualAxis(const QString& name, const QString& unit, int maxSpeed, const Row& row, DriveTCPthread* drive,
                QObject* parent);

    const QString& name() const { return m_name; }
    float minLimit() const { return m_minLimit; } // soft limits as last told, mm or deg
    float maxLimit() const { return m_maxLimit; }

    // What the controller tells.
    void setCoord(float value); // mm or deg
    void setMaxLimit(float value);
    void setMinLimit(float value);
    void setMaxSwitch(bool on); // takes the button away that drives towards it
    void setMinSwitch(bool on);
    void setState(uint state);  // of the virtual axes together
    void showState(uint state); // the lamp's part alone; above 4 it stays as it is
    void modeChanged();         // the window has turned to the virtual axes, or from them

    // Touches of the row. A jog runs as long as the finger is on its button.
    void chooseSpeed();
    void moveFixed(bool ready); // `ready`: the dialog's start is enabled at its opening
    void showInfo();

signals:
    void coordChanged(float value);
    void maxLimitChanged(float value);
    void minLimitChanged(float value);
    void message(const QString& line, bool shown); // journal line; shown in the list too

private:
    void jogForward();
    void jogBack();
    void endJog();
    void startJog(const QString& speed, const QString& direction);

    const QString m_name;
    const QString m_unit;
    const int m_maxSpeed;
    const Row m_row;
    DriveTCPthread* m_drive;
    float m_coord = 0;
    float m_maxLimit = 0;
    float m_minLimit = 0;
    bool m_atMax = false;
    bool m_atMin = false;
    uint m_state = 0;
};
