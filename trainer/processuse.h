#pragma once

#include <QStringList>

// What a process holds of the computer.
struct ProcessUse
{
    long memory = 0; // kB resident, without what the allocator could give back
    int threads = 0;
    int files = 0;           // open descriptors
    QStringList threadNames; // as the kernel has them, sorted by their numbers

    static ProcessUse now(); // this process; gives free memory back to the kernel
    QString text() const;    // one line, without the names

    // Tells both when this is not the same number of threads and descriptors, or more memory than `former`
    // had by so many percent; empty otherwise.
    QString grownFrom(const ProcessUse& former, int percent) const;
};
