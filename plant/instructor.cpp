#include "plant/instructor.h"

#include "plant/beamunit.h"
#include "plant/controller.h"
#include "plant/controllerlink.h"
#include "plant/present.h"
#include "plant/vacuumsystem.h"

#include <cmath>
#include <optional>

namespace plant {

namespace {

constexpr double longestFault = 3600; // s
constexpr double largestLeak = 1e6;   // Pa m3/s

const QString nobody = QStringLiteral("not here"); // for an instructor without an installation

// What a handler answers to words that it does not understand; a null text means done.
const QString usage = QLatin1String("");

QString error(const QString& text)
{
    return QStringLiteral("error: ") + text;
}

// The answer of a controller's setter: its reason as an error, otherwise nothing to add.
QString done(const QString& reason)
{
    return reason.isEmpty() ? QString() : error(reason);
}

bool is(const QString& word, const char* text)
{
    return word.compare(QLatin1String(text), Qt::CaseInsensitive) == 0;
}

// Which of two words stands here; empty for any other.
std::optional<bool> choice(const QString& word, const char* yes, const char* no)
{
    if (is(word, yes))
        return true;
    return is(word, no) ? std::optional<bool>(false) : std::nullopt;
}

std::optional<double> number(const QString& word)
{
    bool ok = false;
    const double value = word.toDouble(&ok);
    return ok && std::isfinite(value) ? std::optional<double>(value) : std::nullopt;
}

std::optional<double> seconds(const QString& word)
{
    const auto value = number(word);
    return value && *value > 0 && *value <= longestFault ? value : std::nullopt;
}

std::optional<Breaker> breakerByName(const QString& name)
{
    for (const auto& [text, breaker] : breakerNames)
        if (is(name, text))
            return breaker;
    return std::nullopt;
}

QString stateName(ChannelState state)
{
    switch (state) {
    case ChannelState::Idle:
        return QStringLiteral("idle");
    case ChannelState::Running:
        return QStringLiteral("running");
    case ChannelState::Error:
        return QStringLiteral("error");
    case ChannelState::Reset:
        return QStringLiteral("reset");
    case ChannelState::Loading:
        return QStringLiteral("loading");
    }
    return QString::number(static_cast<std::uint32_t>(state));
}

} // namespace

const std::vector<Instructor::Entry>& Instructor::entries()
{
    using I = Instructor;
    static const std::vector<Entry> table = {
        {"help", "help [WORD]", "lists the lines, or tells one", 0, 1, &I::help},
        {"status", "status", "the installation in one line", 0, 0, &I::status},
        {"state", "state", "the installation as names and values", 0, 0, &I::state},
        {"faults", "faults", "the faults that stand, as the lines that make them", 0, 0, &I::faults},
        {"door", "door open|close", "moves the chamber door; takes 3 s", 1, 1, &I::door},
        {"vacuum", "vacuum [on|off]",
         "the vacuum plant in one line; at once pumped down with the door closed, or all off and full of air",
         0, 1, &I::vacuum},
        {"valve", "valve NAME jam|free", "a valve, or the door's pressing (door), sticks where it is", 2, 2,
         &I::valve},
        {"pump", "pump NAME stop|mend", "a pump fails; mended it must be switched on anew", 2, 2, &I::pump},
        {"gauge", "gauge pt1..pt6 freeze|invalid|good", "a vacuum gauge shows its last value, or none", 2, 2,
         &I::gauge},
        {"water", "water 1..8|all off|on", "cooling water of a circuit", 2, 2, &I::water},
        {"leak", "leak chamber|jacket|nd1|foreline|roughing|gun RATE", "a leak, Pa m3/s; 0 mends it", 2, 2,
         &I::leak},
        {"air", "air on|off", "the compressor NP1; without air no valve moves", 1, 1, &I::air},
        {"key", "key on|off", "key switch of the console", 1, 1, &I::key},
        {"breaker", "breaker qf18|qf23|qf28|qf31..qf40 on|off", "closes or opens a circuit breaker", 2, 2,
         &I::breaker},
        {"phase", "phase on|off", "380 V phases right or wrong", 1, 1, &I::phase},
        {"emergency", "emergency console|pendant on|off", "presses or releases an emergency button", 2, 2,
         &I::emergency},
        {"rope", "rope left|right on|off", "pulls or resets a rope in the chamber", 2, 2, &I::rope},
        {"trip", "trip AXIS [CODE]",
         "gives a drive a fault (F....) or a warning (E....); F2019 without a code", 1, 2, &I::trip},
        {"clear", "clear AXIS", "takes a drive's fault or warning away", 1, 1, &I::clear},
        {"axis", "axis NAME VALUE", "places an axis, mm or deg", 2, 2, &I::axis},
        {"pult", "pult f1|f2|f3 x|y|z|4|5", "regime and selector of the remote panel", 2, 2, &I::pult},
        {"module", "module 0|1|2|3", "place of the transport module", 1, 1, &I::module},
        {"light", "light led|spots on|off", "chamber lighting", 2, 2, &I::light},
        {"message", "message N", "raises a numbered event", 1, 1, &I::message},
        {"cncerror", "cncerror N", "raises a controller error", 1, 1, &I::cncError},
        {"program", "program CHANNEL state", "what a channel does", 2, 2, &I::program},
        {"variable", "variable NAME", "a controller variable as programs wrote it", 1, 1, &I::variable},
        {"link", "link [kvs|kvk] drop|silence SECONDS",
         "no connection, or no datagrams, for a while of real time", 2, 3, &I::link},
        {"frame", "frame [kvs|kvk] bad|badtcp",
         "one datagram with a wrong signature, or text without a frame", 1, 2, &I::frame},
        {"speed", "speed N", "simulated seconds for each real one, 0.1 to 1000; 0: time stands still", 1, 1,
         &I::speed},
        {"time", "time", "simulated seconds since the start", 0, 0, &I::time},
        {"observe", "observe", "ports for one more console, which only watches", 0, 0, &I::observe},
        {"beam", "beam on|off", "the beam unit's program runs or hangs", 1, 1, &I::beam},
        {"quit", "quit", "ends the simulation", 0, 0, &I::quit},
    };
    return table;
}

Instructor::Instructor(MotionController& controller, VacuumSystem& vacuum, const Links& links,
                       QObject* parent)
    : QObject(parent)
    , m_controller(controller)
    , m_vacuum(vacuum)
    , m_links(links)
{}

const Instructor::Entry* Instructor::entryOf(const Words& words, QString* why)
{
    for (const Entry& entry : entries()) {
        if (!is(words.first(), entry.word))
            continue;
        if (words.size() - 1 >= entry.least && words.size() - 1 <= entry.most)
            return &entry;
        *why = QLatin1String(entry.usage);
        return nullptr;
    }
    *why = QStringLiteral("unknown word \"%1\"; try help").arg(words.first().left(40));
    return nullptr;
}

QString Instructor::misspelt(const QString& line)
{
    const Words words = line.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QString why = QStringLiteral("no line");
    return words.isEmpty() || entryOf(words, &why) == nullptr ? why : QString();
}

QString Instructor::execute(const QString& line)
{
    Words words = line.simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words.isEmpty() || words.first().startsWith(QLatin1Char('#')))
        return {};
    QString why;
    const Entry* entry = entryOf(words, &why);
    if (!entry)
        return error(why);
    QString answer = (this->*entry->handler)(words.mid(1));
    if (answer.isNull())
        answer = QStringLiteral("ok");
    else if (answer.isEmpty())
        answer = error(QLatin1String(entry->usage));
    return answer;
}

QString Instructor::help(const Words& w)
{
    QStringList usages;
    for (const Entry& entry : entries()) {
        if (!w.isEmpty() && is(w[0], entry.word))
            return QStringLiteral("%1: %2").arg(QLatin1String(entry.usage), QLatin1String(entry.meaning));
        usages << QLatin1String(entry.usage);
    }
    return w.isEmpty() ? usages.join(QStringLiteral("; "))
                       : error(QStringLiteral("unknown word \"%1\"").arg(w[0].left(40)));
}

QString Instructor::status(const Words&)
{
    return m_controller.summary() + (m_links.drive->connected() ? QStringLiteral(", console connected")
                                                                : QStringLiteral(", no console"));
}

QString Instructor::state(const Words&)
{
    return presentState(m_controller, m_vacuum);
}

QString Instructor::faults(const Words&)
{
    return presentFaults(m_controller, m_vacuum, m_beamUnit);
}

QString Instructor::door(const Words& w)
{
    const auto open = choice(w[0], "open", "close");
    return open ? done(m_controller.setDoor(*open)) : usage;
}

QString Instructor::vacuum(const Words& w)
{
    couple(m_controller, m_vacuum);
    if (w.isEmpty())
        return m_vacuum.summary();
    const auto on = choice(w[0], "on", "off");
    if (!on)
        return usage;
    const bool put = m_vacuum.put(*on ? VacuumSystem::Start::Pumped : VacuumSystem::Start::Air);
    couple(m_controller, m_vacuum);
    return done(put ? QString() : QStringLiteral("the door is not closed"));
}

QString Instructor::key(const Words& w)
{
    const auto on = choice(w[0], "on", "off");
    if (!on)
        return usage;
    m_controller.setKey(*on);
    return {};
}

QString Instructor::breaker(const Words& w)
{
    const auto name = breakerByName(w[0]);
    const auto on = choice(w[1], "on", "off");
    if (!name || !on)
        return usage;
    m_controller.setBreaker(*name, *on);
    return {};
}

QString Instructor::phase(const Words& w)
{
    const auto on = choice(w[0], "on", "off");
    if (!on)
        return usage;
    m_controller.setPhases(*on);
    return {};
}

QString Instructor::emergency(const Words& w)
{
    const auto console = choice(w[0], "console", "pendant");
    const auto on = choice(w[1], "on", "off");
    if (!console || !on)
        return usage;
    m_controller.setAlarm(*console ? AlarmButton::Console : AlarmButton::Pendant, *on);
    return {};
}

QString Instructor::rope(const Words& w)
{
    const auto left = choice(w[0], "left", "right");
    const auto on = choice(w[1], "on", "off");
    if (!left || !on)
        return usage;
    m_controller.setAlarm(*left ? AlarmButton::LeftRope : AlarmButton::RightRope, *on);
    return {};
}

QString Instructor::trip(const Words& w)
{
    const auto axis = axisByName(w[0].toUpper());
    bool ok = true;
    const int code = w.size() > 1 ? w[1].toInt(&ok, 16) : diagnostic::motorTooHot;
    return axis && ok ? done(m_controller.trip(*axis, code)) : usage;
}

QString Instructor::clear(const Words& w)
{
    const auto axis = axisByName(w[0].toUpper());
    return axis ? done(m_controller.clear(*axis)) : usage;
}

QString Instructor::axis(const Words& w)
{
    const auto axis = axisByName(w[0].toUpper());
    const auto value = number(w[1]);
    return axis && value ? done(m_controller.placeAxis(*axis, *value)) : usage;
}

QString Instructor::pult(const Words& w)
{
    const int regime = QStringList({QStringLiteral("F1"), QStringLiteral("F2"), QStringLiteral("F3")})
                           .indexOf(w[0].toUpper());
    const int selector = QStringLiteral("XYZ45").indexOf(w[1].toUpper());
    if (regime < 0 || selector < 0 || w[1].size() != 1)
        return usage;
    m_controller.setPult(static_cast<std::uint32_t>(regime + 1), selector);
    return {};
}

QString Instructor::module(const Words& w)
{
    bool ok = false;
    const std::uint32_t state = w[0].toUInt(&ok);
    if (!ok || state > 3)
        return usage;
    m_controller.setTransportModule(state);
    return {};
}

QString Instructor::light(const Words& w)
{
    const auto led = choice(w[0], "led", "spots");
    const auto on = choice(w[1], "on", "off");
    if (!led || !on)
        return usage;
    m_controller.setLight(*led ? Light::Led : Light::Spots, *on);
    return {};
}

QString Instructor::message(const Words& w)
{
    bool ok = false;
    const std::uint32_t value = w[0].toUInt(&ok);
    if (!ok || value == 0)
        return usage;
    m_controller.raiseMessage(value);
    return {};
}

QString Instructor::cncError(const Words& w)
{
    bool ok = false;
    const std::uint32_t value = w[0].toUInt(&ok);
    if (!ok || value == 0)
        return usage;
    m_controller.raiseError(value);
    return {};
}

QString Instructor::program(const Words& w)
{
    const int channel = w[0].toInt();
    if (channel < 1 || channel > 3 || !is(w[1], "state"))
        return usage;
    const NcMachine& nc = m_controller.nc();
    QString answer =
        QStringLiteral("channel %1 %2").arg(channel).arg(stateName(m_controller.channelState(channel)));
    if (const int line = nc.currentLine(channel))
        answer += QStringLiteral(", line %1").arg(line);
    if (const QString text = nc.error(channel); !text.isEmpty())
        answer += QStringLiteral(", ") + text;
    return answer;
}

QString Instructor::variable(const Words& w)
{
    const QString value = m_controller.variable(w[0].toUpper());
    return value.isNull() ? error(QStringLiteral("never written")) : QStringLiteral("%1=%2").arg(w[0], value);
}

ControllerLink& Instructor::named(Words* w) const
{
    for (const auto& [name, link] : {std::pair{"kvs", m_links.kvs}, std::pair{"kvk", m_links.kvk}})
        if (is(w->first(), name)) {
            w->removeFirst();
            return *link;
        }
    return *m_links.drive;
}

QString Instructor::link(const Words& w)
{
    Words words = w;
    ControllerLink& target = named(&words);
    if (words.size() != 2)
        return usage;
    const auto drop = choice(words[0], "drop", "silence");
    const auto time = seconds(words[1]);
    if (!drop || !time)
        return usage;
    if (*drop)
        target.drop(*time);
    else
        target.silence(*time);
    return {};
}

QString Instructor::frame(const Words& w)
{
    Words words = w;
    ControllerLink& target = named(&words);
    if (words.size() != 1)
        return usage;
    const auto datagram = choice(words[0], "bad", "badtcp");
    if (!datagram)
        return usage;
    const bool sent = *datagram ? target.sendBadDatagram() : target.sendBadFrame();
    return done(sent ? QString() : QStringLiteral("no console is connected"));
}

QString Instructor::valve(const Words& w)
{
    const auto device = deviceByName(w[0]);
    const auto jam = choice(w[1], "jam", "free");
    if (!device || traits(*device).pump || !jam)
        return usage;
    m_vacuum.plant().setBroken(*device, *jam);
    return {};
}

QString Instructor::pump(const Words& w)
{
    const auto device = deviceByName(w[0]);
    const auto stop = choice(w[1], "stop", "mend");
    if (!device || !traits(*device).pump || !stop)
        return usage;
    m_vacuum.plant().setBroken(*device, *stop);
    return {};
}

QString Instructor::gauge(const Words& w)
{
    const int number = w[0].size() == 3 && is(w[0].left(2), "pt") ? w[0].mid(2).toInt() : 0;
    const std::pair<const char*, GaugeFault> faults[] = {
        {"freeze", GaugeFault::Frozen}, {"invalid", GaugeFault::Invalid}, {"good", GaugeFault::None}};
    for (const auto& [word, fault] : faults) {
        if (number < 1 || number > gaugeCount || !is(w[1], word))
            continue;
        m_vacuum.plant().setGauge(number, fault);
        return {};
    }
    return usage;
}

QString Instructor::water(const Words& w)
{
    const auto on = choice(w[1], "on", "off");
    const bool all = is(w[0], "all");
    const int number = w[0].toInt();
    if (!on || (!all && (number < 1 || number > circuitCount)))
        return usage;
    for (int circuit = 1; circuit <= circuitCount; ++circuit)
        if (all || circuit == number)
            m_vacuum.plant().setWater(circuit, *on);
    return {};
}

QString Instructor::leak(const Words& w)
{
    const auto rate = number(w[1]);
    for (std::size_t i = 0; i < nodeCount; ++i) {
        if (!is(w[0], nodeNames[i]) || !rate || *rate < 0 || *rate > largestLeak)
            continue;
        m_vacuum.plant().setLeak(static_cast<Node>(i), *rate);
        return {};
    }
    return usage;
}

QString Instructor::air(const Words& w)
{
    const auto on = choice(w[0], "on", "off");
    if (!on)
        return usage;
    m_vacuum.plant().setCompressor(*on);
    return {};
}

QString Instructor::speed(const Words& w)
{
    const auto factor = number(w[0]);
    if (!factor || *factor > fastestTime || (*factor < slowestTime && *factor != 0))
        return usage;
    emit speedWanted(*factor);
    return {};
}

QString Instructor::time(const Words&)
{
    return m_house.time ? QStringLiteral("time %1").arg(m_house.time(), 0, 'f', 1) : error(nobody);
}

QString Instructor::observe(const Words&)
{
    return m_house.observe ? m_house.observe() : error(nobody);
}

QString Instructor::beam(const Words& w)
{
    const auto on = choice(w[0], "on", "off");
    if (!on)
        return usage;
    if (!m_beamUnit)
        return error(QStringLiteral("there is no beam unit"));
    m_beamUnit->setRunning(*on);
    return {};
}

QString Instructor::quit(const Words&)
{
    emit quitWanted();
    return {};
}

} // namespace plant
