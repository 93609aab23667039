#pragma once

#include <QDialog>

#include <memory>

class DriveTCPthread;

namespace Ui {
class FixedMove;
}

// Sends one axis to a coordinate, or by a distance: writes a short NC program and starts it in the axis's
// channel. Shows itself in a titled frame below `parent`; the caller runs `exec`. The mode and the last
// value are kept in the settings for each axis.
class FixedMove : public QDialog
{
    Q_OBJECT

public:
    // `speed` in units a minute; `channel` of the axis.
    FixedMove(const QString& name, const QString& unit, DriveTCPthread* drive, int speed, int channel,
              QWidget* parent);
    ~FixedMove() override;

public slots:
    // Both decide on the start button; the last to come wins.
    void onDriveState(bool on);
    void onChannelState(unsigned int state); // of channel 1

    void on_lblCoord_clicked();
    void on_pbStart_clicked();

signals:
    void message(const QString& line, bool shown); // journal line; shown in the list too

private:
    void setCoord(double value); // mm or deg

    std::unique_ptr<Ui::FixedMove> m_ui;
    const QString m_name;
    const QString m_unit;
    DriveTCPthread* m_drive;
    const int m_speed;
    const int m_channel;
};
