#pragma once

// The life of the console on the site that is set: the lock of the single instance, the window, the login
// before the first paint, the event loop. Needs an application object. The result is the exit code:
// -1 when another instance runs, 0 after a cancelled login, else the value that ended the event loop.
// SIGTERM, SIGINT and SIGHUP end the loops with 0, those of open dialogs and of the login too.
int runConsole();
