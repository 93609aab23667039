#pragma once

#include "site.h"
#include "trainer/sitefolder.h"

#include <QTemporaryDir>

// A site of a benchmark's own: what the console expects, in a folder that goes when the program ends.
struct BenchSite
{
    BenchSite()
    {
        own.root = folder.path();
        own.shmSuffix = QStringLiteral("_bench");
        laySiteFolder(own.root, true);
    }

    QTemporaryDir folder;
    Site own; // not yet the site of the process
};
