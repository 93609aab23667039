#pragma once

// True when this process is the only console of the machine; the claim lasts until the process ends, in
// whatever way. A lock file that cannot be opened counts as a running instance.
bool checkSingleInstance();
