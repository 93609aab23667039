#include "consoleapp.h"
#include "endsignals.h"
#include "mirror.h"
#include "plantprocess.h"
#include "screen.h"
#include "sitefolder.h"
#include "tour.h"
#include "wheelcounters.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QSocketNotifier>
#include <QStandardPaths>

#include <cstdio>
#include <unistd.h>

namespace {

// Without a choice of the user's, a tour needs no screen, and a console on a screen is shown by a window that
// scales it.
bool shownByMirror(int argc, char* argv[])
{
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return false;
    for (int i = 1; i < argc; ++i) {
        if (qstrncmp(argv[i], "--tour", 6) == 0) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
            return false;
        }
    }
    return true;
}

// Lines typed on the terminal, one at a time.
class TerminalLines
{
public:
    explicit TerminalLines(const std::function<void(const QString&)>& take)
        : m_notifier(STDIN_FILENO, QSocketNotifier::Read)
    {
        QObject::connect(&m_notifier, &QSocketNotifier::activated, [this, take] {
            char buffer[4096];
            const ssize_t n = read(STDIN_FILENO, buffer, sizeof(buffer));
            if (n <= 0) {
                m_notifier.setEnabled(false);
                return;
            }
            m_typed.append(buffer, int(n));
            for (int end; (end = m_typed.indexOf('\n')) >= 0; m_typed.remove(0, end + 1))
                take(QString::fromUtf8(m_typed.left(end)).trimmed());
        });
    }

private:
    QSocketNotifier m_notifier;
    QByteArray m_typed; // the line that is still being typed
};

} // namespace

int main(int argc, char* argv[])
{
    const bool mirror = shownByMirror(argc, argv);
    QApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("mirta-trainer"));

    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption siteOption("site", "Folder of the simulated site.", "dir",
                                        QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
    const QCommandLineOption speedOption("speed", "Seconds of the installation in one second.", "n", "1");
    const QCommandLineOption scriptOption("script", "Instructor's lines from a file.", "file");
    const QCommandLineOption airOption("air", "Start with the vacuum plant off and the door open.");
    const QCommandLineOption tourOption("tour", "Play the tour, leave pictures in the folder, end.", "dir");
    QCommandLineOption mirrorOption("mirror", "Shown by another process.", "key");
    mirrorOption.setFlags(QCommandLineOption::HiddenFromHelp);
    parser.addOptions({siteOption, speedOption, scriptOption, airOption, tourOption, mirrorOption});
    parser.process(app);
    if (mirror) {
        const EndSignals end;
        MirrorWindow window(QCoreApplication::applicationFilePath(), app.arguments().mid(1));
        TerminalLines terminal([&](const QString& line) { window.instruct(line); });
        window.show();
        return QApplication::exec();
    }

    Site own;
    own.root = QDir(parser.value(siteOption)).absolutePath();
    own.shmSuffix = QStringLiteral("_trainer");
    setSite(own); // before anything is written: the folder may be none of ours
    if (!laySiteFolder(own.root, true)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(own.root));
        return 1;
    }

    PlantProcess plant({PlantProcess::besideThisProgram(), own.root,
                        parser.value(speedOption).toDouble(), parser.value(scriptOption), own.shmSuffix,
                        parser.isSet(airOption)});
    QString why;
    if (!plant.start(&why)) {
        std::fprintf(stderr, "%s\n", qPrintable(why));
        return 1;
    }
    plant.setEndpoints(&own);
    setSite(own);
    WheelCounters wheels;
    LirDevice::replace(&wheels);

    if (parser.isSet(tourOption))
        return runTour(&plant, parser.value(tourOption));

    // Lines about the wheels stay here, the others go to the installation; all answers go where the
    // instructor reads.
    QObject::connect(&plant, &PlantProcess::said,
                     [](const QString& line) { std::fprintf(stderr, "%s\n", qPrintable(line)); });
    const auto instruct = [&](const QString& line) {
        if (const auto answer = wheelLine(&wheels, line))
            std::fprintf(stderr, "%s\n", qPrintable(*answer));
        else
            plant.instruct(line);
    };
    if (parser.isSet(mirrorOption)) {
        takePanel(&app);
        const MirrorSource source(parser.value(mirrorOption), instruct);
        return runConsole();
    }
    const TerminalLines terminal(instruct);
    return runConsole();
}
