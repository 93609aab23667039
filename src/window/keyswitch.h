#pragma once

#include <QPointer>

class QLabel;
class QWidget;

// The key switch of the panel. While it is turned off the window is disabled, and a field in its middle says
// so and takes the keys. Window's thread.
class KeySwitch
{
public:
    explicit KeySwitch(QWidget* window) // not owned
        : m_window(window)
    {}

    void setAccess(bool on); // as often as it is told

private:
    QWidget* m_window;
    QPointer<QLabel> m_notice; // null while the console can be touched; the window's
};
