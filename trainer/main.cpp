#include "consoleapp.h"
#include "plantprocess.h"
#include "sitefolder.h"
#include "tour.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QScreen>
#include <QSocketNotifier>
#include <QStandardPaths>
#include <QWidget>

#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace {

constexpr int kWidth = 1920; // the console's own screen
constexpr int kHeight = 1200;

// Shows the whole console on a screen that is smaller than the machine's: the scale has to stand in the
// environment before the application object, so the program starts itself once more.
void scaleToScreen(int argc, char* argv[])
{
    for (int i = 1; i < argc; ++i) {
        if (qstrncmp(argv[i], "--tour", 6) == 0 && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
            qputenv("QT_QPA_PLATFORM", "offscreen"); // a tour needs no screen
    }
    if (qEnvironmentVariableIsSet("QT_SCALE_FACTOR") || qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return;
    double scale = 1;
    {
        QGuiApplication probe(argc, argv);
        const QSize size = probe.primaryScreen()->availableSize();
        scale = qMin(size.width() / double(kWidth), size.height() / double(kHeight));
    }
    qputenv("QT_SCALE_FACTOR", QByteArray::number(qMin(scale, 1.0)));
    execv("/proc/self/exe", argv);
}

int signalPipe[2];

void onSignal(int)
{
    const char byte = 0;
    (void)!write(signalPipe[1], &byte, 1);
}

// Ctrl+C on the terminal ends the console as its own button would, and the plant with it.
void endOnSignals(QObject* parent)
{
    if (pipe(signalPipe) != 0)
        return;
    auto* notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, parent);
    QObject::connect(notifier, &QSocketNotifier::activated, parent, [] {
        for (QWidget* top : QApplication::topLevelWidgets())
            top->close();
        QCoreApplication::exit(0);
    });
    std::signal(SIGINT, onSignal);
    std::signal(SIGTERM, onSignal);
}

} // namespace

int main(int argc, char* argv[])
{
    scaleToScreen(argc, argv);
    QApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("mirta-trainer"));

    QCommandLineParser parser;
    parser.addHelpOption();
    const QCommandLineOption siteOption("site", "Folder of the simulated site.", "dir",
                                        QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));
    const QCommandLineOption speedOption("speed", "Seconds of the installation in one second.", "n", "1");
    const QCommandLineOption scriptOption("script", "Instructor's lines from a file.", "file");
    const QCommandLineOption tourOption("tour", "Play the tour, leave pictures in the folder, end.", "dir");
    parser.addOptions({siteOption, speedOption, scriptOption, tourOption});
    parser.process(app);

    Site own;
    own.root = QDir(parser.value(siteOption)).absolutePath();
    own.shmSuffix = QStringLiteral("_trainer");
    if (!laySiteFolder(own.root, true)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(own.root));
        return 1;
    }

    PlantProcess plant({QCoreApplication::applicationDirPath() + "/plant", own.root,
                        parser.value(speedOption).toDouble(), parser.value(scriptOption)});
    QString why;
    if (!plant.start(&why)) {
        std::fprintf(stderr, "%s\n", qPrintable(why));
        return 1;
    }
    plant.setEndpoints(&own);
    setSite(own);
    endOnSignals(&app);

    if (parser.isSet(tourOption))
        return runTour(&plant, parser.value(tourOption));

    // Lines typed on the terminal go to the installation, and its answers come back.
    QObject::connect(&plant, &PlantProcess::said, [](const QString& line) { std::puts(qPrintable(line)); });
    QSocketNotifier terminal(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&terminal, &QSocketNotifier::activated, [&] {
        char buffer[4096];
        const ssize_t n = read(STDIN_FILENO, buffer, sizeof(buffer));
        if (n <= 0)
            terminal.setEnabled(false);
        else
            plant.instruct(QString::fromUtf8(buffer, int(n)).trimmed());
    });
    return runConsole();
}
