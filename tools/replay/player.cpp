#include "tools/replay/player.h"

#include <algorithm>
#include <chrono>

namespace replay {

namespace {

using plant::Controller;

constexpr std::chrono::milliseconds period{20};
constexpr qint64 silence =
    1'100'000; // microseconds without a datagram after which the console takes a link for lost

const char* const names[plant::controllerCount] = {"CML75", "KVS", "KVK"};

plant::Frame frameOf(const QByteArray& bytes)
{
    plant::FrameHead head{};
    std::copy_n(bytes.constData(), sizeof head, reinterpret_cast<char*>(&head));
    return {head.signature, bytes.mid(sizeof head)};
}

bool isText(const QByteArray& frame)
{
    return frameOf(frame).signature == plant::frameSignature;
}

} // namespace

Player::Player(const Capture& capture, QObject* parent)
    : QObject(parent)
    , m_capture(capture)
    , m_now(capture.begin())
{
    for (std::size_t i = 0; i < m_links.size(); ++i) {
        State& state = m_states[i];
        m_links[i] = std::make_unique<plant::ControllerLink>(
            plant::ControllerPort{QString(),
                                  [&state](const QString& command) -> std::optional<plant::Frame> {
                                      if (command == QLatin1String("CONST") && !state.constants.isEmpty())
                                          return frameOf(state.constants);
                                      return {};
                                  },
                                  [&state] { return state.status; }, [] {}});
    }
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(period);
    connect(&m_timer, &QTimer::timeout, this, &Player::tick);
}

bool Player::listen(QString* why)
{
    for (const auto& link : m_links) {
        if (!link->listen(0, 0, why))
            return false;
    }
    jump(m_now);
    return true;
}

void Player::setEndpoints(Site* site) const
{
    Endpoint* const ends[] = {&site->drive, &site->kvs, &site->kvk};
    for (std::size_t i = 0; i < m_links.size(); ++i)
        *ends[i] = {QStringLiteral("127.0.0.1"), m_links[i]->tcpPort(), m_links[i]->udpPort()};
}

void Player::play()
{
    if (m_now >= m_capture.end())
        jump(m_capture.begin());
    rewindClock();
    m_timer.start();
    emit moved();
}

void Player::pause()
{
    m_timer.stop();
    emit moved();
}

void Player::setSpeed(double factor)
{
    m_speed = std::clamp(factor, slowest, fastest);
    rewindClock();
    emit moved();
}

void Player::rewindClock()
{
    m_from = m_now;
    m_clock.start();
}

void Player::tick()
{
    advance(m_from + static_cast<qint64>(double(m_clock.nsecsElapsed()) / 1000 * m_speed));
    if (m_now >= m_capture.end())
        m_timer.stop();
    emit moved();
}

void Player::advance(qint64 at)
{
    m_now = std::min(at, m_capture.end());
    const auto& events = m_capture.events();
    while (m_next < events.size() && events[m_next].at <= m_now)
        take(events[m_next++], true);
    tellState();
}

void Player::take(const Event& event, bool tell)
{
    const auto i = static_cast<std::size_t>(event.who);
    State& state = m_states[i];
    switch (event.kind) {
    case Event::Status:
        state.status = event.bytes;
        state.statusAt = event.at;
        if (tell)
            m_links[i]->tellStatus();
        break;
    case Event::Frame:
        if (!isText(event.bytes))
            state.constants = event.bytes;
        if (tell)
            m_links[i]->tell(frameOf(event.bytes));
        break;
    case Event::Command:
        m_command = &event;
        break;
    case Event::Closed:
        state.status.clear();
        break;
    }
}

void Player::tellState()
{
    for (std::size_t i = 0; i < m_links.size(); ++i) {
        State& state = m_states[i];
        if (m_now - state.statusAt > silence)
            state.status.clear();
        if (state.status.isEmpty())
            m_links[i]->cut();
        else
            m_links[i]->listenAgain();
    }
}

void Player::jump(qint64 at)
{
    m_now = std::clamp(at, m_capture.begin(), m_capture.end());
    const auto& events = m_capture.events();
    m_next = static_cast<std::size_t>(
        std::upper_bound(events.cbegin(), events.cend(), m_now,
                         [](qint64 moment, const Event& event) { return moment < event.at; }) -
        events.cbegin());

    // Of each controller what told its connection last, and its constants; the last command of all.
    std::array<const Event*, plant::controllerCount> link{};
    std::array<const Event*, plant::controllerCount> constants{};
    m_command = nullptr;
    std::size_t missing = 2 * link.size() + 1;
    for (std::size_t next = m_next; next > 0 && missing > 0; --next) {
        const Event& event = events[next - 1];
        const auto i = static_cast<std::size_t>(event.who);
        const Event** slot = nullptr;
        if (event.kind == Event::Status || event.kind == Event::Closed)
            slot = &link[i];
        else if (event.kind == Event::Frame && !isText(event.bytes))
            slot = &constants[i];
        else if (event.kind == Event::Command)
            slot = &m_command;
        if (slot && !*slot) {
            *slot = &event;
            --missing;
        }
    }
    for (std::size_t i = 0; i < link.size(); ++i) {
        m_states[i] = {};
        if (link[i])
            take(*link[i], false);
        if (constants[i])
            take(*constants[i], false);
    }
    tellState();
    for (const auto& own : m_links)
        own->tellStatus();
    rewindClock();
    emit moved();
}

void Player::step(bool on)
{
    m_timer.stop();
    const auto& events = m_capture.events();
    if (on) {
        if (m_next < events.size())
            advance(events[m_next].at);
        emit moved();
        return;
    }
    const auto first = std::lower_bound(events.cbegin(), events.cend(), m_now,
                                        [](const Event& event, qint64 moment) { return event.at < moment; });
    jump(first == events.cbegin() ? m_capture.begin() : (first - 1)->at);
}

QString Player::lastCommand() const
{
    if (!m_command)
        return {};
    return QStringLiteral("%1  %2: %3")
        .arg(clockText(m_command->at), QLatin1String(names[static_cast<std::size_t>(m_command->who)]),
             QString::fromUtf8(m_command->bytes));
}

} // namespace replay
