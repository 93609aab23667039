#include "singleinstance.h"

#include "site.h"

#include <QFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

// Never closed: the lock must last as long as the process and die with it. Whoever starts the console first,
// root or the operator, makes the file for all. In a folder where all may write, the system lets nobody open
// another's file as one to be made, so it is asked for as it stands first; nor may a link lead the mode to
// another file.
int openLockFile(const char* path)
{
    constexpr int flags = O_RDWR | O_CLOEXEC | O_NOFOLLOW;
    int file = ::open(path, flags);
    if (file < 0 && errno == ENOENT)
        file = ::open(path, flags | O_CREAT, 0666);
    if (file >= 0)
        (void)::fchmod(file, 0666); // whatever the umask; another's file has it from its maker
    return file;
}

} // namespace

bool checkSingleInstance()
{
    const QByteArray path = QFile::encodeName(site().path(QStringLiteral("/var/tmp/.poMIRTA_lock")));
    const int file = openLockFile(path.constData());
    return file >= 0 && ::lockf(file, F_TLOCK, 1) == 0;
}
