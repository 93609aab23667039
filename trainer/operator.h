#pragma once

#include "hand.h"

#include <QStringList>

// What an operator does every day, in terms of touches. Same rules as for Hand: from the script's thread.
class Operator : public Hand
{
public:
    using Hand::Hand;

    // The window of the console, null while there is none. On the window's thread.
    static QWidget* console();

    // The login dialog, as «su».
    void logIn();

    // Until those to the three controllers and to the beam unit are up.
    void waitLinks();

    // Drives on and, if wanted, the mode of the virtual axes.
    void switchOn(bool virtualAxes);

    // Touches a label that opens the keypad and types a number into it.
    void setNumber(const QString& label, const QString& number);

    // Sets the jog speed of an axis by the free entry of its selector.
    void setSpeed(const QString& axis, const QString& speed);

    // Waits until the motion channels have ended their programs.
    void waitIdle();

    // Sends an axis to a coordinate by its fixed move dialog and waits until it stands there.
    void moveTo(const QString& axis, const QString& coordinate);

    // A contour from the list of those that are stored.
    void loadContour(const QString& name);

    // The weld of the contour that is loaded, by «ПУСК», once the chamber is pumped down; acknowledges
    // channels in error and switches on what it needs.
    void startWeld();

    // Rows of the journal's list, as they stand there.
    QStringList journal();
    int told(const QString& text); // rows that hold it
    // Until there are so many, for half a minute at most; one more is an error as well.
    void waitTold(const QString& text, int times);

    // A regime of the vacuum plant by its button, confirmed, until the chamber's controller reports it.
    void startRegime(const QString& button, const QString& shown);

    // The point where the machine stands, into the contour.
    void teachPoint();

    // Holds a jog button until the coordinate has changed by at least `distance`, then lets go.
    void jog(const QString& button, const QString& axis, double distance);
};
