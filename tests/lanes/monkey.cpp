// The seeded hand at work on the whole console and the simulated installation, while an instructor does his
// worst. monkey [--seed N] [--touches M] writes each touch to standard error before it is made, and the
// findings.

#include "trainer/monkey.h"
#include "journey.h"
#include "trainer/jogwatch.h"
#include "trainer/loopwatch.h"

#include <QCommandLineParser>
#include <QDialog>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QSettings>

#include <atomic>
#include <cmath>
#include <cstdio>

namespace {

// ms that the event loop may stand. None of the required pauses needs more: those between the starts of
// programs run the loop, the one between the requests for constants takes 10 ms, the patience with a
// controller that does not answer at once 1 ms.
#ifdef __OPTIMIZE__
constexpr int longestStall = 100;
#else
constexpr int longestStall = 1000; // of a build that is slower by far
#endif
constexpr int longestSleep = 500;  // ms at a lock or at the disk, with the slack of a busy machine
constexpr int longestStop = 3000;  // ms from the lifted finger to the jog's stop, on a machine at its limit
constexpr int touchesToLeave = 3;  // a modal window
constexpr int mostFindings = 20;   // then the run ends
constexpr int touchesUnlocked = 5; // after which the key switch is turned back
constexpr int touchesOfTrouble = 150; // after which everything is mended
constexpr int longestInside = 40;     // touches in one window before it is left

const QStringList troubles =
    QString(
        "door open;door close;vacuum on;vacuum off;key off;breaker qf31 off;emergency console on;"
        "emergency pendant on;rope left on;phase off;trip A;trip LX1 E2050;axis LX1 100;axis A 350;"
        "pult f1 x;pult f3 5;module 1;module 3;light led on;message 7;message 161;cncerror 5;link drop 0.5;"
        "link silence 2;link kvs drop 0.5;link kvk silence 2;frame bad;frame kvs bad;frame badtcp;"
        "frame kvk badtcp;beam off;beam on;air off;valve vp4 jam;pump nl1 stop;gauge pt1 invalid;"
        "water all off;leak chamber 1;speed 1;speed 200")
        .split(';');
const QStringList mending =
    QString(
        "key on;emergency console off;emergency pendant off;rope left off;phase on;breaker qf31 on;clear A;"
        "clear LX1;air on;water all on;valve vp4 free;pump nl1 mend;gauge pt1 good;leak chamber 0;speed 20;"
        "vacuum on;beam on")
        .split(';');
const char* const numbers[] = {"", "0", "1", "2.5", "45", "90", "400", "1000", "99999"}; // for a keypad
const char* const accessCodes[] = {"305729", "730592"};

class Lane
{
public:
    Lane(quint64 seed, int touches)
        : m_monkey(seed)
        , m_touches(touches)
    {
        prepare();
    }

    int run(quint64 seed);

private:
    void prepare();
    void life();
    void touch(int number);
    void make(const Monkey::Touch& touch);
    void leave(QPointer<QWidget> window, int depth);
    void instruct(int number);
    void switchOn();
    void logInAgain();
    void judge();
    void finding(const QString& what);
    // What the function tells on the window's thread.
    template <class Look>
    auto seen(const Look& look) -> decltype(look())
    {
        decltype(look()) result{};
        m_hand.onScreen([&] { result = look(); });
        return result;
    }
    QPointer<QWidget> front();
    bool shown(const QPointer<QWidget>& window);

    Journey m_journey;
    Operator m_hand{30'000};
    Monkey m_monkey;
    LoopWatch m_watch;
    JogWatch m_jogs;
    const int m_touches;
    int m_done = 0;
    int m_lives = 0;
    int m_left = 0;              // windows left on purpose
    int m_lockedAt = -1;         // touch at which the key switch was turned, -1 while it is on
    QPointer<QWidget> m_inside;  // the window that stood in front at the last touch
    int m_leaveAt = 0;           // touch at which it is left
    QMap<QString, int> m_fronts; // windows that stood in front, by name
    QStringList m_findings;
    std::atomic<bool> m_over{false}; // the console's life
};

// Outside the console stands nothing that a touch could hurt.
void Lane::prepare()
{
    QDir bin(site().root);
    for (const char* program : {"kcalc", "okular"}) {
        m_journey.files().write(QLatin1Char('/') + program, "#!/bin/sh\n");
        QFile::setPermissions(bin.filePath(program), QFile::ReadOwner | QFile::ExeOwner);
    }
    qputenv("PATH", bin.path().toUtf8());
    Site own = site();
    own.shell = [](const char*) { return 0; };
    setSite(own);
    QSettings settings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
    for (const char* axis : {"LX", "LX2", "LY", "A", "B", "C", "D", "U1", "U2", "V"})
        settings.setValue(QString(axis) + "/Speed", 100);
}

int Lane::run(quint64 seed)
{
    QElapsedTimer time;
    time.start();
    while (m_done < m_touches && m_findings.size() < mostFindings) {
        ++m_lives;
        m_over = false;
        if (m_monkey.chance(m_done, "empty") < 0.5)
            QFile::remove(site().path("/home/oper/bin/contours/contour.save"));
        const QString trouble = runScript(
            [this] {
                runConsole();
                m_over = true;
                m_watch.stop();
            },
            [this] { life(); });
        if (!trouble.isEmpty()) {
            finding(trouble);
            break;
        }
    }
    std::printf(
        "monkey: seed %llu, %d touches in %lld s, %d starts of the console, %d jogs, %d windows left on "
        "purpose, %d kinds of windows, %d findings\n",
        static_cast<unsigned long long>(seed), m_done, time.elapsed() / 1000, m_lives, m_jogs.starts(),
        m_left, m_fronts.size(), m_findings.size());
    for (auto each = m_fronts.cbegin(); each != m_fronts.cend(); ++each)
        std::fprintf(stderr, "window %s: %d touches\n", qPrintable(each.key()), each.value());
    for (const QString& each : qAsConst(m_findings))
        std::printf("  %s\n", qPrintable(each));
    return m_findings.isEmpty() ? 0 : 1;
}

QPointer<QWidget> Lane::front()
{
    return seen([] { return QPointer<QWidget>(Monkey::front()); });
}

bool Lane::shown(const QPointer<QWidget>& window)
{
    return seen([&] { return window && window->isVisible(); });
}

void Lane::life()
{
    m_watch.start();
    m_hand.logIn();
    m_hand.onScreen([&] { m_jogs.follow(); });
    switchOn();
    m_watch.takeLongest(); // the first picture of all
    while (!m_over && m_done < m_touches && m_findings.size() < mostFindings)
        touch(m_done++);
}

// The drives, which most troubles switch off; unless something else stands in front or the link is down.
void Lane::switchOn()
{
    if (front() || !m_hand.visible("sbDrives") || m_hand.enabled("sbTrans"))
        return;
    QThread::msleep(200); // for the controller to tell what has been mended
    m_hand.tap("sbDrives");
}

void Lane::finding(const QString& what)
{
    m_findings << QStringLiteral("touch %1: %2").arg(m_done - 1).arg(what);
    std::fprintf(stderr, "FINDING %s\n", qPrintable(m_findings.last()));
}

void Lane::make(const Monkey::Touch& touch)
{
    std::fprintf(stderr, "%d %s\n", m_done - 1, qPrintable(touch.words));
    m_monkey.make(touch);
}

void Lane::instruct(int number)
{
    const auto tell = [this](const QString& line) {
        std::fprintf(stderr, "instructor: %s\n", qPrintable(line));
        m_journey.plant().instruct(line);
    };
    if (m_lockedAt >= 0 && number - m_lockedAt >= touchesUnlocked) {
        tell("key on");
        m_lockedAt = -1;
        m_hand.waitFor("the key switch", [this] {
            const QWidget* window = Operator::console();
            return m_over || !window || window->isEnabled();
        });
    }
    if (number % touchesOfTrouble == touchesOfTrouble - 1 && m_lockedAt < 0) {
        for (const QString& line : mending)
            tell(line);
        switchOn();
    } else if (m_monkey.chance(number, "trouble") < 0.03) {
        const QString line = troubles[int(m_monkey.chance(number, "which") * troubles.size())];
        tell(line);
        if (line == "key off")
            m_lockedAt = number;
    }
}

void Lane::touch(int number)
{
    instruct(number);
    QString name;
    bool masked = false;
    const QPointer<QWidget> window = front();
    if (window != m_inside) {
        m_inside = window;
        m_leaveAt = -1;
    }
    m_hand.onScreen([&] {
        if (!window)
            return;
        const QLineEdit* field = window->findChild<QLineEdit*>();
        masked = field && field->echoMode() == QLineEdit::Password;
        const auto* dialog = window->findChild<QDialog*>();
        name = QLatin1String((dialog ? dialog : window.data())->metaObject()->className());
    });
    const double whim = m_monkey.chance(number, "whim");
    if (m_leaveAt < 0) // the longer, the less it is known
        m_leaveAt = number + 2 + int(whim * longestInside / std::sqrt(1 + 0.1 * m_fronts.value(name)));
    if (window)
        ++m_fronts[name];
    if (name == "Numpad" && whim < 0.5) {
        const int which = int(m_monkey.chance(number, "number") * double(std::size(numbers)));
        std::fprintf(stderr, "%d number %s\n", number, numbers[which]);
        m_hand.key(Qt::Key_Delete);
        m_monkey.type(numbers[which]);
        m_hand.key(Qt::Key_Return, "\r");
    } else if (window && m_lockedAt < 0 && number >= m_leaveAt) {
        leave(window, 0);
        ++m_left;
    } else if (name.endsWith("AutorizationDialog") && whim < 0.3) {
        logInAgain();
    } else if (masked && whim < 0.3) {
        m_monkey.type(accessCodes[number % 2]);
        m_hand.key(Qt::Key_Return);
    } else {
        make(m_monkey.touch(number));
    }
    judge();
}

void Lane::leave(QPointer<QWidget> window, int depth)
{
    const QString title = seen([&] { return window ? window->windowTitle() : QString(); });
    for (int attempt = 0; attempt < touchesToLeave && shown(window) && !m_over; ++attempt) {
        const QPointer<QWidget> above = front();
        if (above != window && depth < touchesToLeave)
            leave(above, depth + 1); // what asks whether to leave
        make(seen([&] { return window ? m_monkey.wayOut(window, attempt) : Monkey::Touch(); }));
        if (shown(window))
            QThread::msleep(50); // a pause between two starts drops touches
    }
    if (shown(window) && !m_over)
        finding(QStringLiteral("\"%1\" cannot be left").arg(title));
}

void Lane::logInAgain()
{
    m_hand.onScreen([] {
        for (auto* field :
             Monkey::front() ? Monkey::front()->findChildren<QLineEdit*>() : QList<QLineEdit*>())
            field->clear();
    });
    m_hand.tap("leLogin");
    m_hand.logIn();
}

void Lane::judge()
{
    const LoopWatch::Stall stall = m_watch.takeLongest();
    if (stall.busy > longestStall || stall.asleep > longestSleep)
        finding(QStringLiteral("the event loop stood: %1 ms busy, %2 ms asleep")
                    .arg(stall.busy)
                    .arg(stall.asleep));
    QElapsedTimer time;
    time.start();
    QStringList moving;
    do {
        moving = seen([&] { return m_jogs.moving(); });
        if (moving.isEmpty())
            return;
        QThread::msleep(5);
    } while (time.elapsed() < longestStop);
    finding("no stop for " + moving.join(' '));
    m_hand.onScreen([&] { m_jogs.follow(); });
}

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QCommandLineParser parser;
    parser.addOptions({{"seed", "What the hand does.", "n", "1"}, {"touches", "How often.", "n", "2000"}});
    parser.process(app);
    const quint64 seed = parser.value("seed").toULongLong();
    return Lane(seed, parser.value("touches").toInt()).run(seed);
}
