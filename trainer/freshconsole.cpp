#include "freshconsole.h"

#include "consoleapp.h"
#include "gui.h"
#include "screenstate.h"
#include "site.h"
#include "sitefolder.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <cstdio>

namespace {

const QString kAsked = QStringLiteral("--fresh"); // then root, suffix, state of the fault, and three ports
const QString kExpected = QStringLiteral("/home/expected"); // file of the site: the state to be found
constexpr int kPatience = 60'000;                           // ms

// What a console that is started now cannot know, or has of its own.
QStringList unknown(bool trouble)
{
    // Clocks, the journal's rows, and the programs that it would send. Four pipes look as the last move of
    // VP3, VP5 and VP6 left them: the rules by which valves light them are not symmetrical, and the operators
    // know the picture that way. The lamps of the virtual axes turn green with each change of the mode, until
    // the next change of their state.
    QStringList names{"*/lblTime",     "*/lblDate",    "*/lwLog",      "*/teGcode*",
                      "*/lbProgName*", "*/kvs/pipeE4", "*/kvs/pipeE5", "*/kvs/pipeE6",
                      "*/kvs/pipeEG",  "*/indX",       "*/indZ",       "*/indPHI"};
    // The stack's times, and QF18, which is told when it trips and not while it is open; a device's button
    // keeps the direction in which it was switched last. Of VPT, VE1 and TMN nothing is known while BKU is
    // silent with its gauge: their pictures and pipes stay.
    if (trouble)
        names << "*/frErrorDiagnostic"
              << "*/sbSwitch"
              << "*/kvs/VPT"
              << "*/kvs/VE1"
              << "*/kvs/TMN"
              << "*/kvs/pipeO0"
              << "*/kvs/pipeO1"
              << "*/kvs/pipeP0";
    return names;
}

// What still changes on the screen after some seconds, empty for nothing; and its state.
QStringList restless(Operator& hand, bool trouble, QStringList* state)
{
    QStringList changes{QString()};
    for (int time = 0; time < 20 && !changes.isEmpty(); ++time) {
        const QStringList former = *state;
        QThread::msleep(300);
        hand.onScreen([&] { *state = screenState(Operator::console()); });
        changes = screenDifference(former, *state, unknown(trouble));
    }
    return changes;
}

} // namespace

QString differenceToFreshConsole(Operator& hand, PlantProcess& plant, bool trouble)
{
    plant.instruct("speed 0");
    QStringList state;
    if (const QStringList changes = restless(hand, trouble, &state); !changes.isEmpty())
        return "the screen does not rest:\n" + changes.join('\n');
    hand.onScreen([] { static_cast<Gui*>(Operator::console())->saveWork(); });
    QFile expected(site().path(kExpected));
    if (!expected.open(QIODevice::WriteOnly) || expected.write(state.join('\n').toUtf8()) < 0)
        return expected.errorString();
    expected.close();
    QStringList arguments{kAsked, site().root, site().shmSuffix, trouble ? "trouble" : "rest"};
    for (const QString& port : plant.ask("observe", "observed ").split(' ').mid(1))
        arguments << port.section('=', 1);
    QProcess fresh;
    fresh.start(QCoreApplication::applicationFilePath(), arguments);
    const bool ended = fresh.waitForFinished(kPatience);
    if (ended && fresh.exitStatus() == QProcess::NormalExit && fresh.exitCode() == 0)
        return {};
    const QByteArray differences = fresh.readAllStandardOutput();
    return differences.isEmpty() ? "it has ended: " + QString::fromUtf8(fresh.readAllStandardError())
                                 : "a fresh console shows otherwise: " + QString::fromUtf8(differences);
}

bool wasFreshConsole(const QStringList& arguments, int* status)
{
    if (arguments.value(1) != kAsked)
        return false;
    const QString former = arguments.value(2);
    const bool trouble = arguments.value(4) == "trouble";
    const QTemporaryDir root;
    laySiteFolder(root.path(), false);
    QProcess::execute("cp", {"-r", former + "/home", former + "/programs", root.path()});
    Site own;
    own.root = root.path();
    own.shmSuffix = arguments.value(3);
    int index = 5;
    for (Endpoint* controller : {&own.drive, &own.kvs, &own.kvk}) {
        const int port = arguments.value(index++).toInt();
        *controller = {QStringLiteral("127.0.0.1"), port, port};
    }
    setSite(own);
    QFile file(own.path(kExpected));
    const bool readable = file.open(QIODevice::ReadOnly);
    const QStringList expected = QString::fromUtf8(file.readAll()).split('\n');
    QStringList differences;
    Operator hand;
    const auto same = [&] {
        differences = screenDifference(expected, screenState(Operator::console()), unknown(trouble));
        return readable && differences.isEmpty();
    };
    const QString why = runScript([] { runConsole(); },
                                  [&] {
                                      hand.logIn();
                                      hand.waitFor("the same screen", same);
                                  });
    if (!why.isEmpty())
        std::printf("%s\n%s\n", qPrintable(why), qPrintable(differences.join('\n')));
    *status = why.isEmpty() ? 0 : 1;
    leaveSite();
    return true;
}
