#include "consoleapp.h"
#include "endsignals.h"
#include "instructorwindow.h"
#include "plant/inputlines.h"
#include "tools/replay/replay.h"
#include "trainer/journaltail.h"
#include "trainer/mirror.h"
#include "trainer/plantprocess.h"
#include "trainer/screen.h"
#include "trainer/sitefolder.h"
#include "trainer/tour.h"
#include "trainer/wheelcounters.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QStandardPaths>

#include <algorithm>
#include <cstdio>

namespace {

// The instructor's window stands beside the console's, in the process that shows it.
bool wantsInstructor(int argc, char* argv[])
{
    const auto given = [&](const char* option) {
        return std::any_of(argv + 1, argv + argc,
                           [&](const char* word) { return qstrncmp(word, option, qstrlen(option)) == 0; });
    };
    return (given("--lesson") || given("--instructor")) && !given("--mirror");
}

// Without a choice of the user's, a tour needs no screen, and a console on a screen is shown by a window that
// scales it.
bool shownByMirror(int argc, char* argv[])
{
    if (qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        return wantsInstructor(argc, argv);
    for (int i = 1; i < argc; ++i) {
        if (qstrncmp(argv[i], "--tour", 6) == 0) {
            qputenv("QT_QPA_PLATFORM", "offscreen");
            return false;
        }
        if (qstrncmp(argv[i], "--replay", 8) == 0)
            return false;
    }
    return true;
}

void addOptions(QCommandLineParser* parser)
{
    parser->addHelpOption();
    parser->addOptions({
        {"site", "Folder of the simulated site.", "dir",
         QStandardPaths::writableLocation(QStandardPaths::AppDataLocation)},
        {"speed", "Seconds of the installation in one second.", "n", "1"},
        {"script", "Instructor's lines from a file.", "file"},
        {"air", "Start with the vacuum plant off and the door open."},
        {"pcap", "Leave a capture of the links, for --replay and Wireshark.", "file"},
        {"instructor", "Open the instructor's window."},
        {"lesson", "Open it with the lesson of the file.", "file"},
        {"tour", "Play the tour, leave pictures in the folder, end.", "dir"},
    });
    replay::addOptions(parser);
    QCommandLineOption mirror("mirror", "Shown by another process.", "key");
    mirror.setFlags(QCommandLineOption::HiddenFromHelp);
    parser->addOption(mirror);
}

std::function<void(const QByteArray&)> typed(const std::function<void(const QString&)>& instruct)
{
    return [instruct](const QByteArray& line) { instruct(QString::fromUtf8(line).trimmed()); };
}

// The console runs in a process of its own.
int showMirror(const QCommandLineParser& parser)
{
    Lesson lesson;
    QString why;
    if (parser.isSet("lesson") && !readLesson(parser.value("lesson"), &lesson, &why)) {
        std::fprintf(stderr, "%s\n", qPrintable(why));
        return 2;
    }
    const EndSignals end;
    MirrorWindow window(QCoreApplication::applicationFilePath(), QCoreApplication::arguments().mid(1));
    const InputLines terminal(typed([&](const QString& line) { window.instruct(line); }));
    window.show();
    if (!parser.isSet("lesson") && !parser.isSet("instructor"))
        return QApplication::exec();

    const QString site = QDir(parser.value("site")).absolutePath();
    InstructorWindow instructor([&](const QString& line) { window.instruct(line); },
                                site + QStringLiteral("/lessons"));
    const JournalTail journal(site + QStringLiteral("/log"));
    QObject::connect(&journal, &JournalTail::line, &instructor, &InstructorWindow::readJournal);
    QObject::connect(&instructor.run(), &LessonRun::told, &window, &MirrorWindow::tell);
    QObject::connect(&window, &MirrorWindow::said, &instructor, [&](const QString& line) {
        instructor.hear(line);
        if (!LessonRun::isAnswer(line))
            std::fprintf(stderr, "%s\n", qPrintable(line));
    });
    instructor.choose(lesson);
    instructor.show();
    return QApplication::exec();
}

int runTrainer(PlantProcess* plant, const QCommandLineParser& parser)
{
    WheelCounters wheels;
    LirDevice::replace(&wheels);
    if (parser.isSet("tour"))
        return runTour(plant, parser.value("tour"));

    // Lines about the wheels stay here, the others go to the installation; all answers go where the
    // instructor reads.
    const bool passedOn = parser.isSet("mirror") && (parser.isSet("lesson") || parser.isSet("instructor"));
    QObject::connect(plant, &PlantProcess::said, [passedOn](const QString& line) {
        std::fprintf(passedOn ? stdout : stderr, passedOn ? "said %s\n" : "%s\n", qPrintable(line));
        std::fflush(stdout);
    });
    const auto instruct = [&](const QString& line) {
        if (const auto answer = wheelLine(&wheels, line))
            std::fprintf(stderr, "%s\n", qPrintable(*answer));
        else
            plant->instruct(line);
    };
    if (parser.isSet("mirror")) {
        takePanel(qApp);
        const MirrorSource source(parser.value("mirror"), instruct);
        return runConsole();
    }
    const InputLines terminal(typed(instruct));
    return runConsole();
}

} // namespace

int main(int argc, char* argv[])
{
    const bool mirror = shownByMirror(argc, argv);
    QApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("mirta-trainer"));
    QCommandLineParser parser;
    addOptions(&parser);
    parser.process(app);
    if (mirror)
        return showMirror(parser);
    if (replay::isAsked(parser))
        return replay::run(parser);

    Site own;
    own.root = QDir(parser.value("site")).absolutePath();
    own.shmSuffix = QStringLiteral("_trainer");
    setSite(own); // before anything is written: the folder may be none of ours
    if (!laySiteFolder(own.root, true)) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(own.root));
        return 1;
    }

    PlantProcess plant({PlantProcess::besideThisProgram(), own.root, parser.value("speed").toDouble(),
                        parser.value("script"), own.shmSuffix, parser.isSet("air"), parser.value("pcap")});
    QString why;
    if (!plant.start(&why)) {
        std::fprintf(stderr, "%s\n", qPrintable(why));
        return 1;
    }
    plant.setEndpoints(&own);
    setSite(own);
    return runTrainer(&plant, parser);
}
