// A day of bad luck: the console at work on an installation whose time runs fast, with welds, pumping and
// every fault that there is, in an order drawn from a seed. What is told must be told as often as it
// happened, each connection must come back, and the screen be that of a console started now. Ends with 1 on a
// finding.

#include "faults.h"
#include "fulldisk.h"
#include "journey.h"
#include "trainer/freshconsole.h"
#include "trainer/processuse.h"
#include "trainer/timeofday.h"

#include <QCommandLineParser>
#include <QHash>
#include <QLabel>
#include <QRandomGenerator>
#include <QThreadPool>

#include <algorithm>
#include <utility>

namespace {

constexpr int kWork = 60;  // seconds of the installation in one: what lasts five shows in a datagram still
constexpr int kRest = 800; // while nothing but time is awaited
constexpr int kLinkPatience = 30'000; // ms
// Bytes that a line of the journal takes in its list: 185 of text, 280 of the item, 60 of the view.
constexpr long kRow = 525;

QString lampOf(const QString& link)
{
    return link == "drive" ? "lblCNC" : "lbl" + link.toUpper();
}

Fault named(Fault fault, const QString& name)
{
    for (QString* text : {&fault.inject, &fault.mend, &fault.line, &fault.link, &fault.lamp})
        text->replace("%1", name);
    if (fault.effect == Fault::Reconnects)
        fault.lamp = lampOf(fault.link);
    return fault;
}

// All but the constructor belongs to the script's thread.
class Soak
{
public:
    Soak(Journey& journey, const QCommandLineParser& options)
        : m_journey(journey)
        , m_hand(journey.hand)
        , m_plant(journey.plant())
        , m_hours(options.value("hours").toDouble())
        , m_hourly(options.value("faults").toInt())
        , m_each(options.value("look").toInt())
        , m_dice(options.value("seed").toUInt())
    {}

    void run()
    {
        m_hand.waitLinks();
        m_hand.loadContour("contour");
        m_hand.tapTab("contour", 1);
        m_hand.setNumber("weldSpeed", "60"); // nearly two minutes for its 100 mm
        for (int number = 1; m_time < m_hours * 3600; ++number) {
            hour(number);
            if (number == 1)
                m_first = m_last;
        }
        attempt("lines", [this] { checkLines(); });
        attempt("journal", [this] { checkJournal(); });
        const QString grown = m_last.grownFrom(m_first, 5);
        attempt("growth", [&] { Hand::expect(grown.isEmpty(), grown); });
        Hand::expect(m_findings.isEmpty(), QString("%1 findings").arg(m_findings.size()));
    }

    QString summary() const
    {
        return QString("%1 hours, %2 faults, %3 reconnections, %4 welds, %5 fresh consoles; %6")
            .arg(m_time / 3600, 0, 'f', 1)
            .arg(m_faults)
            .arg(m_connections["drive"] + m_connections["kvs"] + m_connections["kvk"] - 3)
            .arg(m_welds)
            .arg(m_looks)
            .arg(m_last.text());
    }

private:
    void run(int speed) { m_plant.instruct(QString("speed %1").arg(speed)); }

    void waitConnected(const QString& link)
    {
        const int wanted = ++m_connections[link];
        const auto done = [&] { return m_plant.connections(link) >= wanted; };
        m_hand.waitFor("connection " + link, done, kLinkPatience);
        m_hand.waitColour(lampOf(link), Qt::green, kLinkPatience);
    }

    // The place of the transport module marks a datagram: once it is told, all before it has been taken.
    void settle()
    {
        m_braking = !m_braking;
        const QString line = QString("торможения ") + (m_braking ? "камеры" : "загрузочной платформы");
        const int before = m_hand.told(line);
        m_plant.instruct(m_braking ? "module 2" : "module 3");
        m_hand.waitTold(line, before + 1);
        QThread::msleep(120); // those of the vacuum controllers come as often
    }

    // What is told is told once, also by a connection that comes back.
    void loseLinks(const Fault& fault)
    {
        m_plant.instruct("link drop 0.5;link kvs drop 0.5;link kvk drop 0.5");
        for (const char* link : {"drive", "kvs", "kvk"})
            waitConnected(link);
        if (!fault.link.isEmpty())
            ++m_expected[fault.line];
        settle();
    }

    void suffer(const Fault& fault, bool alsoLook)
    {
        const QColor before = m_hand.colour(fault.lamp);
        m_mend = fault.mend;
        m_plant.instruct(fault.inject);
        m_buzzes += fault.effect == Fault::Sounds;
        if (!fault.line.isEmpty())
            m_hand.waitTold(fault.line, ++m_expected[fault.line]);
        // Before a link that falls takes the command along.
        m_hand.waitFor("the buzzer", [&] { return m_plant.count("buzzer") >= m_buzzes; });
        if (!fault.lamp.isEmpty())
            m_hand.waitFor("another colour of " + fault.lamp, [&] {
                const QWidget* lamp = Operator::console()->findChild<QWidget*>(fault.lamp);
                return lamp->palette().color(QPalette::Window) != before;
            });
        if (fault.effect == Fault::Reconnects)
            waitConnected(fault.link);
        else if (fault.mend.isEmpty())
            QThread::msleep(1200); // an event and an error stand for a second
        else if (fault.kind == "key")
            m_hand.waitFor("the console disabled", [] { return !Operator::console()->isEnabled(); });
        else if (m_dice.bounded(3) == 0)
            loseLinks(fault);
        if (alsoLook && !fault.mend.isEmpty() && fault.kind != "key")
            look(true);
        const int over = m_hand.told(fault.mended);
        m_plant.instruct(fault.mend);
        if (!fault.mended.isEmpty())
            m_hand.waitTold(fault.mended, over + 1);
        if (fault.kind == "door")
            m_plant.instruct("vacuum on");
        if (!fault.lamp.isEmpty())
            m_hand.waitColour(fault.lamp, before);
        settle();
    }

    void look(bool trouble)
    {
        m_hand.tapTab("contour", 0);
        const QString difference = differenceToFreshConsole(m_hand, m_plant, trouble);
        ++m_looks;
        run(kWork);
        Hand::expect(difference.isEmpty(), difference);
    }

    void weld()
    {
        m_hand.startWeld();
        m_hand.waitTold("Канал 3: выполнение автоматической программы", ++m_welds);
        m_hand.waitText("channel1State", "выполнение");
    }

    // Air into the chamber and out again.
    void pump()
    {
        m_hand.waitIdle();
        m_hand.waitText("channel3State", "бездействие");
        if (m_hand.enabled("sbTrans"))
            m_hand.tap("sbDrives");
        for (const auto& [button, regime] :
             {std::pair("sbVacFilling", "Напуск в камеру"), std::pair("sbVacPumping", "Откачка камеры")}) {
            const int before = m_hand.told("Автоматический алгоритм выполнен");
            m_hand.startRegime(button, regime);
            run(kRest);
            m_hand.waitTold("Автоматический алгоритм выполнен", before + 1);
            run(kWork);
        }
    }

    // A gate that shows that it sticks when it is to close.
    void jam()
    {
        m_plant.instruct("valve vp1 jam");
        m_hand.tap("sbVacFilling");
        m_hand.tap("pbYes");
        m_hand.waitTold("Затвор VP1 - ошибка!", ++m_expected["Затвор VP1 - ошибка!"]);
        m_hand.waitText("lblVacuumState", "Аварийное завершение");
        m_plant.instruct("valve vp1 free;vacuum on");
        m_hand.waitText("lblVacuumState", "Откачка камеры");
        settle();
    }

    void moveClock()
    {
        moveTimeOfDay((m_dice.bounded(2) ? 1 : -1) * m_dice.bounded(600, 40'000));
        m_hand.waitFor("the clock's new time", [] {
            const QString shown = Operator::console()->findChild<QLabel*>("lblTime")->text();
            return std::abs(QTime::fromString(shown, "hh:mm:ss").secsTo(QTime::currentTime())) < 5;
        });
        settle();
    }

    void fillDisk()
    {
        const FullDisk full(0);
        m_plant.instruct("light led on");
        m_hand.waitTold("лентами включено", ++m_expected["лентами включено"]);
        m_plant.instruct("light led off");
        settle();
    }

    Fault draw()
    {
        if (m_deck.isEmpty()) {
            QHash<QString, QVector<Fault>> kinds;
            QStringList order;
            for (const Fault& fault : kFaults) {
                for (const QString& name : fault.names.split(','))
                    kinds[fault.kind] << named(fault, name);
                order << fault.kind;
            }
            order.removeDuplicates();
            std::shuffle(order.begin(), order.end(), m_dice);
            for (const QString& kind : qAsConst(order))
                m_deck << kinds[kind][m_dice.bounded(kinds[kind].size())];
        }
        return m_deck.takeLast();
    }

    // What goes wrong is told, and the day goes on: one finding must not hide the next.
    void attempt(const QString& what, const std::function<void()>& step)
    {
        try {
            step();
        } catch (const HandError& error) {
            m_findings << what + ": " + error.what();
            std::printf("\nFOUND: %s\n", qPrintable(m_findings.last()));
            m_plant.instruct(std::exchange(m_mend, {}) + QString(";speed %1").arg(kWork));
            Hand::expect(m_findings.size() < 10, "enough found");
        }
        std::printf(" %s,", qPrintable(what));
        std::fflush(stdout);
    }

    void befall(const Fault& fault, bool alsoLook)
    {
        if (fault.kind == "jam")
            jam();
        else if (fault.kind == "clock")
            moveClock();
        else if (fault.kind == "disk")
            fillDisk();
        else
            suffer(fault, alsoLook);
        m_mend.clear();
        if (alsoLook && (fault.mend.isEmpty() || m_each == 1))
            look(false);
    }

    void hour(int number)
    {
        run(kWork);
        std::printf("hour %d:", number);
        for (int i = 0; i < m_hourly; ++i) {
            if (i % 5 == 0)
                attempt("weld", [this] { weld(); });
            const Fault fault = draw();
            attempt(fault.inject, [&] { befall(fault, m_faults++ % m_each == 0); });
        }
        attempt("pump", [this] { pump(); });
        run(kRest);
        do {
            QThread::msleep(100);
            m_time = m_plant.ask("time", "time ").section(' ', 1).toDouble();
        } while (m_time < number * 3600);
        attempt("look", [this] { look(false); });
        m_hand.waitLinks();
        QThread::msleep(500); // what is ending has ended
        m_last = ProcessUse::now();
        m_last.heap -= noted();
        m_last.resident -= noted();
        std::printf(" %s beside %ld kB noted\n", qPrintable(m_last.text()), noted());
    }

    // No row leaves the journal's list, and this program keeps what the installation says.
    long noted()
    {
        long bytes = kRow * m_hand.journal().size();
        for (const QString& line : m_plant.lines())
            bytes += 2 * line.size() + long(sizeof(QString)) + 40; // its head and the allocator's
        return bytes / 1024;
    }

    void checkLines()
    {
        for (auto line = m_expected.cbegin(); line != m_expected.cend(); ++line)
            m_hand.waitTold(line.key(), line.value());
        // What a loaded computer does to the links is not the console's doing, and is told apart.
        const int stalls = m_plant.count("stood still");
        for (auto link = m_connections.cbegin(); link != m_connections.cend(); ++link) {
            const int times = m_plant.connections(link.key());
            Hand::expect(
                times >= link.value() && times <= link.value() + stalls,
                QString("%1 connected %2 times, not %3").arg(link.key()).arg(times).arg(link.value()));
        }
        const int buzzes = m_plant.count("buzzer") - m_buzzes;
        Hand::expect(buzzes == 0, QString("the buzzer sounded %1 times more often").arg(buzzes));
    }

    // All that was told stands in the file, in its order, and of troubles nothing that no fault explains.
    void checkJournal()
    {
        QStringList causes = m_expected.keys();
        causes << "Ось "
               << "ошибка в канале"
               << "CML75: Отключение приводов"
               << "CML75: Перегрузка";
        QStringList strange;
        const QStringList rows = m_hand.journal();
        auto row = rows.cbegin();
        for (const QString& line : m_journey.journal().split('\n')) {
            const QString words = line.mid(3);
            if (row != rows.cend() && words == row->section("] ", 1))
                ++row;
            const auto explains = [&](const QString& cause) { return words.contains(cause); };
            if ((line.startsWith("[A]") || line.startsWith("[W]")) &&
                std::none_of(causes.cbegin(), causes.cend(), explains))
                strange << line;
        }
        Hand::expect(row == rows.cend(),
                     "not in the journal's file: " + (row == rows.cend() ? QString() : *row));
        Hand::expect(strange.isEmpty(), "told without a cause:\n" + strange.join('\n'));
    }

    Journey& m_journey;
    Operator& m_hand;
    PlantProcess& m_plant;
    const double m_hours;
    const int m_hourly; // faults
    const int m_each;   // faults to a look
    QRandomGenerator m_dice;
    QVector<Fault> m_deck;          // still to come in this round, one of each kind
    QHash<QString, int> m_expected; // lines of faults
    QHash<QString, int> m_connections{{"drive", 1}, {"kvs", 1}, {"kvk", 1}};
    ProcessUse m_first;
    ProcessUse m_last;
    double m_time = 0; // s of the installation
    bool m_braking = false;
    QStringList m_findings;
    QString m_mend; // of the fault that stands
    int m_faults = 0;
    int m_buzzes = 0;
    int m_welds = 0;
    int m_looks = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    if (int status = 0; wasFreshConsole(app.arguments(), &status))
        return status;
    QCommandLineParser parser;
    parser.addHelpOption();
    parser.addOptions(
        {{"hours", "Hours of the installation.", "h", "24"},
         {"faults", "Faults in an hour.", "n", "15"},
         {"look", "Faults to a look at a fresh console.", "n", "1"},
         {"seed", "Of all that is drawn.", "s", QString::number(QRandomGenerator::global()->generate())}});
    parser.process(app);
    // The toolkit's helpers for large pictures are no growth.
    QThreadPool::globalInstance()->setExpiryTimeout(1);
    const QString again =
        QString("soak: --seed %1 --hours %2 --faults %3 --look %4")
            .arg(parser.value("seed"), parser.value("hours"), parser.value("faults"), parser.value("look"));
    std::printf("%s\n", qPrintable(again));
    QElapsedTimer timer;
    timer.start();
    Journey journey(kWork);
    Soak soak(journey, parser);
    const QString trouble = journey.runLoggedIn([&] { soak.run(); });
    std::printf("\n%s%s\n%s: %s, in %lld s\n", trouble.isEmpty() ? "" : "FOUND: ", qPrintable(trouble),
                qPrintable(again), qPrintable(soak.summary()), timer.elapsed() / 1000);
    return trouble.isEmpty() ? 0 : 1;
}
