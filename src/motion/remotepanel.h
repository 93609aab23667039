#pragma once

#include <QObject>

#include <optional>

class Handwheels;
class QLabel;
class QWidget;
class StateButton;

// The remote panel, whose own switch chooses what its wheel moves. While it is on it has the remote wheel to
// itself, and in the regimes F2 and F3 the drives' side of the window as well. Window's thread.
class RemotePanel : public QObject
{
    Q_OBJECT

public:
    struct Widgets // of the window
    {
        StateButton* button;
        QLabel* regime;  // tells what the positions of the panel's switch mean
        QWidget* drives; // the drives' side
        QWidget* wheel;  // the remote wheel's frame
    };

    RemotePanel(const Widgets& widgets, Handwheels* wheels, QObject* parent);

    bool isOn() const { return m_on; }

    void press(); // of the button. Holds at once; telemetry corrects it if the controller thinks otherwise

    // What the controller tells. `tell` drops what is no news, as after a link that comes back.
    void tell(bool on);
    void setOn(bool on);
    void setRegime(uint regime); // 2: F2, 3: F3, any other: F1

signals:
    void message(const QString& line, bool shown); // journal line; shown in the list too
    void command(const QString& text);             // for the motion controller

private:
    const Widgets m_widgets;
    Handwheels* m_wheels;
    bool m_on = false;
    std::optional<bool> m_told;
    uint m_regime = 0;
};
