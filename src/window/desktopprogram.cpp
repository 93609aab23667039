#include "desktopprogram.h"

#include <QDebug>
#include <QProcess>
#include <QStandardPaths>

// A bare name would be looked up in the forked child, under a lock of the environment that a thread may have
// held at the moment of the fork; the child then waits for ever, and the window for the child.
bool startDesktopProgram(const QString& program, const QStringList& arguments)
{
    const QString path = QStandardPaths::findExecutable(program);
    if (!path.isEmpty() && QProcess::startDetached(path, arguments))
        return true;
    qWarning().noquote() << "cannot start" << program << (path.isEmpty() ? "(not found)" : "");
    return false;
}
