#pragma once

#include <QObject>
#include <QString>

class DriveTCPthread;
class PoLabel;
class PoSprite;
class QPushButton;

// One drive: the model of its state and the controller of its row on the window. The row's widgets belong to
// the window and outlive the axis. All calls and slots belong to the window's thread.
//
// The axis checks nothing before it sends a command: safety lives in the controller.
class Axis : public QObject
{
    Q_OBJECT

public:
    // `name` as commands use it, `unit` the word that dialogs show, `number` 0..9, `channel` 1 or 2: the NC
    // channel whose programs move the axis, `maxSpeed` in units a minute. `endless`: lifting the finger does
    // not stop the axis. The jog speed comes from the settings.
    Axis(const QString& name, const QString& unit, int number, int channel, int maxSpeed,
         DriveTCPthread* drive, PoSprite* sprite, PoLabel* coordLabel, PoLabel* speedLabel,
         QPushButton* plusButton, QPushButton* minusButton, QPushButton* infoButton, bool endless,
         bool secondAxis);
    ~Axis() override; // keeps the jog speed in the settings

    int state() const { return m_state; }   // the drive's diagnostic code, 0 before the first datagram
    float coord() const { return m_coord; } // mm or deg
    bool epPlus() const { return m_epPlus; }
    bool epMinus() const { return m_epMinus; }
    int speed() const; // of a jog, units a minute; what the speed label holds, its fraction cut off
    int maxSpeed() const { return m_maxSpeed; }
    float minLimit() const { return m_minLimit; } // soft limits, mm or deg; jogging does not look at them
    float maxLimit() const { return m_maxLimit; }

signals:
    void stateChanged(int code);
    void coordChanged(float value);
    void speedChanged(int speed);
    void epPlusValueChanged(float limit);
    void epMinusValueChanged(float limit);
    void epPlusChanged(bool on);
    void epMinusChanged(bool on);
    void secondAxis(bool show); // the detail dialog asks for the second axis of this pair
    void parked(bool on);       // the drive goes into or out of its parked state
    void axisMessage(const QString& line, bool shown); // journal line; shown in the list too

public slots:
    void onPlusPressed();
    void onPlusReleased();
    void onMinusPressed();
    void onMinusReleased();
    void onPlusToggled(bool checked); // for buttons made checkable
    void onMinusToggled(bool checked);
    void onCoordClicked();
    void onSpeedClicked();
    void onInfoClicked();
    void onEndlessClicked(bool on);
    void onDrivesPowerChanged(bool on);
    void onStateChanged(int code);
    void onCoordChanged(float value);
    void onEpPlusChanged(bool on); // limit switches: block the jog button of their side
    void onEpMinusChanged(bool on);
    void onEpPlusValueChanged(float limit);
    void onEpMinusValueChanged(float limit);
    void onSecondAxisShow(bool show);
    void onPark(bool on);
    void onClearError();

private:
    void startJog(const QPushButton* button, const QString& sign, const QString& line);
    void endJog(const QPushButton* button);
    void move(const QString& speed);

    const QString m_name;
    const QString m_unit;
    const int m_number;
    const int m_channel;
    const int m_maxSpeed;
    DriveTCPthread* m_drive;
    int m_state = 0;
    float m_coord = 0;
    bool m_epPlus = false;
    bool m_epMinus = false;
    float m_maxLimit = 0;
    float m_minLimit = 0;
    bool m_endless;
    bool m_secondAxis;
    bool m_drivesOn = false;
    PoSprite* m_sprite;
    PoLabel* m_coordLabel;
    PoLabel* m_speedLabel;
    QPushButton* m_plusButton;
    QPushButton* m_minusButton;
    QPushButton* m_infoButton;
};
