#pragma once

#include "finger.h"

#include <QColor>

// The operator's hand: finds widgets by object name and touches them through the window system, as a
// finger would, so that grabs, modal windows and disabled buttons act as they do on the machine.
//
// All calls belong to a thread of the operator's own (see `runScript`), never to the window's: a touch
// that opens a dialog or a menu then leaves the script free to go on. Every wait is bounded; a failed
// one throws HandError.
class Hand
{
public:
    // Time that a wait may take, ms.
    explicit Hand(int patience = 10'000)
        : m_patience(patience)
    {}

    void tap(const QString& name);
    void tap(const QString& name, QPoint at); // at: in the widget's own coordinates
    void press(const QString& name);
    void press(const QString& name, QPoint at);
    void slide(QPoint panel); // what is pressed, to a point of the panel
    void release();
    void tapCell(const QString& table, int row, int column);
    void tapItem(const QString& list, const QString& text);
    void tapMenu(const QString& text); // an entry of the open menu whose text begins so
    void tapTab(const QString& tabWidget, int index);
    void key(int key, const QString& text = QString());
    void type(const QString& text);          // letters and digits into the focused field
    void enterNumber(const QString& number); // on the keypad that is open, then its Enter
    void closeBox();                         // by its button

    QString text(const QString& name);
    bool visible(const QString& name);
    bool enabled(const QString& name);
    QColor colour(const QString& name); // of its ground; no colour when it is not on the screen
    QString cell(const QString& table, int row, int column);
    int rows(const QString& table);
    int currentRow(const QString& table);

    // Waits until the condition, evaluated on the window's thread, holds.
    void waitFor(const QString& what, const std::function<bool()>& condition, int ms = 0);
    void waitText(const QString& name, const QString& text, int ms = 0);
    void waitVisible(const QString& name, int ms = 0);
    void waitGone(const QString& name, int ms = 0);
    void waitEnabled(const QString& name, int ms = 0);

    // The window colour of a label.
    void waitColour(const QString& name, const QColor& colour, int ms = 0);

    // Runs a function on the window's thread and waits for it.
    void onScreen(const std::function<void()>& function);

    // A picture of the whole screen: all visible windows in their places, 1920 by 1200.
    void grab(const QString& file);

    // Throws when the condition is false.
    static void expect(bool condition, const QString& what);

    int patience() const { return m_patience; }

private:
    QWidget* find(const QString& name) const; // window's thread; the topmost visible one, null for none
    Finger& finger();
    Finger::Where spot(const QString& name, const std::function<QPoint(QWidget*)>& where) const;

    int m_patience;
    std::shared_ptr<Finger> m_finger; // null until the first touch
};

// Runs `script` on a thread of its own while `console` runs on this one (which must be the window's).
// The console's modal loops end when the script is over. Returns what went wrong, empty for nothing.
QString runScript(const std::function<void()>& console, const std::function<void()>& script);
