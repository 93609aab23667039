#pragma once

#include <QPoint>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>
#include <memory>
#include <stdexcept>

// What the hand wanted was not on the screen, or did not happen in time.
struct HandError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

// A place to touch, in the widget's own coordinates.
struct Spot
{
    QPointer<QWidget> widget; // null: nothing there
    QPoint at;
};

// The road by which touches and keys reach the console. Called from the script's thread; a `Where` is asked
// on the window's thread, just before the touch.
class Finger
{
public:
    using Where = std::function<Spot()>;

    virtual ~Finger() = default;

    // Down there, and up again unless `stay`. Nothing when there is nothing to touch.
    virtual void touch(const Where& where, bool stay) = 0;
    virtual void slideTo(QPoint panel) = 0; // the finger that is down, to a point of the panel
    virtual void lift() = 0;                // where it is
    // A key of Qt's and the text that it types.
    virtual void key(int key, const QString& text) = 0;

    // The X server where one shows the console, otherwise the toolkit's window-system interface. A touch that
    // finds its place covered for `patience` ms throws HandError (X server only).
    static std::unique_ptr<Finger> ofPlatform(int patience);
};

// The finger of a real X server: its XTEST extension moves the pointer, and its window manager has a say.
std::unique_ptr<Finger> xServerFinger(int patience);
