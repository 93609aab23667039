#include "consoleapp.h"
#include "site.h"

#include <QApplication>

#include <cstdlib>

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    Site machine;
    machine.shell = [](const char* command) { return std::system(command); };
    setSite(machine);
    return runConsole();
}
