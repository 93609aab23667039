#pragma once

#include <QStringList>

// What a process holds of the computer.
struct ProcessUse
{
    long heap = 0;     // kB that are allocated
    long resident = 0; // kB in memory, with what lies free between allocations
    int threads = 0;
    int files = 0;           // open descriptors
    QStringList threadNames; // as the kernel has them, sorted by their numbers

    static ProcessUse now(); // this process; gives free memory back to the kernel
    QString text() const;    // one line, without the names

    // Tells both when this is not the same number of threads and descriptors, or more heap than `former` had
    // by so many percent, or more in memory by twice as many; empty otherwise.
    QString grownFrom(const ProcessUse& former, int percent) const;
};
