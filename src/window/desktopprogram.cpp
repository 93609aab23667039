#include "desktopprogram.h"

#include <QDebug>
#include <QProcess>
#include <QStandardPaths>
#include <QThreadPool>

// A bare name would be looked up in the forked child, under a lock of the environment that a thread may have
// held at the moment of the fork; the child then waits for ever, and who started it waits for the child.
bool startDesktopProgram(const QString& program, const QStringList& arguments)
{
    const QString path = QStandardPaths::findExecutable(program);
    if (path.isEmpty()) {
        qWarning().noquote() << "cannot start" << program << "(not found)";
        return false;
    }
    QThreadPool::globalInstance()->start([path, arguments] {
        if (!QProcess::startDetached(path, arguments))
            qWarning().noquote() << "cannot start" << path;
    });
    return true;
}
