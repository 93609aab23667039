#include "consoleapp.h"
#include "site.h"

#include <QApplication>

#include <cstdlib>

// The machine's own values.
struct Machine
{
    static Site site()
    {
        Site own;
        own.drive = {QStringLiteral(MIRTA_DRIVE_HOST), 5190, 5191};
        own.kvs = {QStringLiteral(MIRTA_KVS_HOST), 5196, 5197};
        own.kvk = {QStringLiteral(MIRTA_KVK_HOST), 5198, 5199};
        // It starts the shell without a copy of this process, so that no lock of a thread is taken along.
        own.shell = [](const char* command) { return std::system(command); };
        own.m_machine = true;
        return own;
    }
};

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    setSite(Machine::site());
    return runConsole();
}
