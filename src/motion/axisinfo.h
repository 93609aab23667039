#pragma once

#include <QDialog>

#include <memory>

class DriveTCPthread;

namespace Ui {
class AxisInfo;
}

// The details of one axis, and the operations that a setter needs and an operator must not hit by accident:
// soft limits, referencing, parking, clearing a drive's error. Shows itself in a titled frame below `parent`;
// whoever builds it connects and primes it and runs `exec`.
class AxisInfo : public QDialog
{
    Q_OBJECT

public:
    // `name` as commands use it. The second axes of the pairs show neither parking nor referencing, and only
    // the first ones can show or hide their second.
    AxisInfo(const QString& name, DriveTCPthread* drive, QWidget* parent);
    ~AxisInfo() override;

public slots:
    void onDrivesOn(bool on);                       // an axis is parked and released without power only
    void onStateChanged(int code);                  // diagnostic code of a drive
    void onVirtualStateChanged(unsigned int state); // of the virtual axes
    void onCoordChanged(float value);               // mm or deg
    void onSpeedChanged(int speed);                 // of a jog, units a minute
    void onParked(bool on);
    void onMaxLimChanged(float limit); // soft limits, mm or deg
    void onMinLimChanged(float limit);
    void onEpPlusChanged(bool on); // limit switches
    void onEpMinusChanged(bool on);
    void onSecondAxisShowButton(bool shown); // raises no signal

    void on_sbPark_clicked();
    void on_pbClearError_clicked();
    void on_lblSEPmax_clicked();
    void on_lblSEPmin_clicked();
    void on_lblReferValue_clicked();
    void on_pbReference_clicked(); // after an access code and a question
    void on_pbSecondAxis_clicked();

signals:
    void park(bool on); // false: release
    void clearError();
    void showSecondAxis(bool show);
    void message(const QString& line, bool shown); // journal line; shown in the list too

private:
    void initParking();
    void sendLimit(const QString& command, const QString& title, QWidget* label);
    void sendReference();

    std::unique_ptr<Ui::AxisInfo> m_ui;
    const QString m_name;
    DriveTCPthread* m_drive;
};
