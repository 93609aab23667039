#include "singleinstance.h"

#include "site.h"

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

bool checkSingleInstance()
{
    const QByteArray path = QFile::encodeName(site().path(QStringLiteral("/var/tmp/.poMIRTA_lock")));
    // Never closed: the lock must last as long as the process and die with it.
    const int file = ::open(path.constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    return file >= 0 && ::lockf(file, F_TLOCK, 1) == 0;
}
