#include "fuzz.h"

#include "trainer/sitefolder.h"

#include <QApplication>

#include <ctime>

#include <sys/resource.h>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__clang__)
constexpr int slack = 4; // what the sanitizers add to time and memory
#else
constexpr int slack = 1;
#endif

long peakMemory() // kB
{
    rusage use{};
    getrusage(RUSAGE_SELF, &use);
    return use.ru_maxrss;
}

} // namespace

FuzzTarget::FuzzTarget()
{
    Site own = site();
    own.pauses = {{}, {}, {}, {}};
    setSite(own);
    laySiteFolder(m_site.root(), true);
    auto* const timer = new QTimer(qApp);
    QObject::connect(timer, &QTimer::timeout, timer, [] {
        for (QWidget* top : {QApplication::activePopupWidget(), QApplication::activeModalWidget()}) {
            if (top)
                top->close();
        }
    });
    timer->start(1);
}

void FuzzTarget::empty(const QString& folder)
{
    QDir dir(site().path(folder));
    dir.removeRecursively();
    dir.mkpath(QStringLiteral("."));
}

std::unique_ptr<Gui> FuzzTarget::console()
{
    empty(QStringLiteral("/log"));
    auto gui = std::make_unique<Gui>();
    gui->setWindowState(Qt::WindowNoState);
    gui->show();
    return gui;
}

std::map<QByteArray, FuzzMake>& fuzzTargets()
{
    static std::map<QByteArray, FuzzMake> all;
    return all;
}

std::unique_ptr<FuzzTarget> fuzzTarget(const QByteArray& name)
{
    const auto found = fuzzTargets().find(name);
    fuzzCheck(found != fuzzTargets().end(), "there is no such target");
    // A console that waits for the disk at each input gets to see few of them.
    if (!qEnvironmentVariableIsSet("TMPDIR") && QFileInfo(QStringLiteral("/dev/shm")).isWritable())
        qputenv("TMPDIR", "/dev/shm");
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtFatalMsg)
            std::fprintf(stderr, "%s\n", qPrintable(text));
    });
    return found->second();
}

void fuzzCheck(bool holds, const char* words)
{
    if (holds)
        return;
    std::fprintf(stderr, "fuzz: %s\n", words);
    std::abort();
}

void fuzzTake(FuzzTarget& target, const QByteArray& input)
{
    if (QFile peak(QStringLiteral("/proc/self/clear_refs")); peak.open(QIODevice::WriteOnly))
        peak.write("5"); // begins anew
    const long before = peakMemory();
    const std::clock_t began = std::clock(); // of the processor
    target.take(input);
    fuzzCheck(std::clock() - began <= slack * target.longest * CLOCKS_PER_SEC, "an input takes too long");
    fuzzCheck(peakMemory() - before <= slack * 200'000, "an input takes too much memory");
}

QByteArray fuzzSwollen(QByteArray input, std::mt19937& random)
{
    const auto below = [&random](int end) { return int(random() % unsigned(qMax(1, end))); };
    const int at = below(input.size());
    const QByteArray part = input.mid(at, 1 + below(qMin(200, input.size() - at)));
    return input.insert(at, part.repeated(below(1'000'000 - input.size()) / qMax(1, part.size())));
}

QByteArray fuzzMangled(QByteArray input, const QByteArray& other, std::mt19937& random)
{
    static const QList<QByteArray> odd = {"nan", "inf", "1e38", "-1e38", "2147483648", "-1", "\n", "\f"};
    static const QRegularExpression number(QStringLiteral("[-+.\\d]+"));
    const auto below = [&random](int end) { return int(random() % unsigned(qMax(1, end))); };
    const int at = below(input.size() + 1);
    const int length = below(2) * below(qMin(64, input.size() - at + 1));
    const int way = below(8);
    if (way == 0)
        input.truncate(at);
    else if (way == 1)
        input.remove(at, length);
    else if (way < 4)
        input.replace(at, length, other.mid(below(other.size()), below(64)));
    else if (way > 4)
        input.replace(at, 1, QByteArray(1, char(below(256))));
    else if (const auto found = number.match(QString::fromLatin1(input), at); found.hasMatch())
        input.replace(found.capturedStart(), found.capturedLength(), odd[below(odd.size())]);
    return input;
}
