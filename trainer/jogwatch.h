#pragma once

#include <QObject>
#include <QSet>
#include <QStringList>

// Which axes the motion controller was told to move by a jog and not yet to stop. Listens to its answers,
// which come to every command in the order of the wire. All of it on the window's thread.
class JogWatch : public QObject
{
public:
    // Of the console that is up now; nothing while there is none.
    void follow();

    // Names of the axes that nobody has stopped, none after the console has gone. The endless rotation of V
    // is not among them: it goes on without a finger until its button is touched again.
    QStringList moving() const;

    int starts() const { return m_starts; } // jogs so far

private:
    void take(const QString& text);

    QSet<QString> m_moving;
    int m_starts = 0;
};
