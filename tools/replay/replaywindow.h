#pragma once

#include "tools/replay/player.h"
#include "trainer/mirror.h"

#include <QLabel>
#include <QPushButton>
#include <QTimeEdit>
#include <QWidget>

#include <vector>

namespace replay {

// The whole capture from left to right: where it stands, where the operator gave commands, where a controller
// was missing. A finger takes it to another moment.
class TimeLine : public QWidget
{
    Q_OBJECT

public:
    TimeLine(const Capture& capture, QWidget* parent);

    void setNow(qint64 at);

signals:
    void wanted(qint64 at);

protected:
    void paintEvent(QPaintEvent*) override;
    void mousePressEvent(QMouseEvent* event) override { ask(event); }
    void mouseMoveEvent(QMouseEvent* event) override { ask(event); }

private:
    void ask(const QMouseEvent* event);
    double x(qint64 at) const;
    QRect track() const;

    const Capture& m_capture;
    std::vector<qint64> m_commands;
    std::vector<std::pair<qint64, qint64>> m_silent; // some controller was silent from, to
    qint64 m_now;
};

// The console's picture above a bar with the hands on the time.
class ReplayWindow : public QWidget
{
    Q_OBJECT

public:
    // Starts `program` with `arguments` as the console (see MirrorWindow). All outlive the window.
    ReplayWindow(const QString& fileName, const Capture& capture, Player& player, const QString& program,
                 const QStringList& arguments);

private:
    QPushButton* button(const QString& text, const char* name, const std::function<void()>& action);
    QWidget* makeBar();
    void changeSpeed(int by);
    void tellNow();

    const Capture& m_capture;
    Player& m_player;
    TimeLine* m_line;
    QLabel* m_time;
    QLabel* m_command;
    QLabel* m_speed;
    QTimeEdit* m_moment;
    QPushButton* m_play = nullptr;
};

} // namespace replay
