#include "tools/replay/replaywindow.h"

#include <QDateTime>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>
#include <array>
#include <cmath>

namespace replay {

namespace {

constexpr int touch = 48; // pixels of what a finger takes
constexpr qint64 second = 1'000'000;
constexpr qint64 silence = 2 * second;
constexpr std::array speeds{slowest, 0.25, 0.5, 1.0, 2.0, 5.0, 10.0, fastest};

const QColor ground(0xC0, 0xC8, 0xD0);
const QColor past(0x70, 0x98, 0xC0);
const QColor missing(0xE0, 0x30, 0x30);
const QColor ink(0x20, 0x28, 0x30);

} // namespace

TimeLine::TimeLine(const Capture& capture, QWidget* parent)
    : QWidget(parent)
    , m_capture(capture)
    , m_now(capture.begin())
{
    setFixedHeight(touch);
    setMinimumWidth(300);
    std::array<qint64, plant::controllerCount> heard;
    heard.fill(capture.begin());
    const auto hear = [&](std::size_t who, qint64 at) {
        if (at - heard[who] > silence)
            m_silent.emplace_back(heard[who], at);
        heard[who] = at;
    };
    for (const Event& event : capture.events()) {
        if (event.kind == Event::Command)
            m_commands.push_back(event.at);
        if (event.kind == Event::Status)
            hear(static_cast<std::size_t>(event.who), event.at);
    }
    for (std::size_t who = 0; who < heard.size(); ++who)
        hear(who, capture.end());
}

void TimeLine::setNow(qint64 at)
{
    m_now = at;
    update();
}

QRect TimeLine::track() const
{
    return rect().adjusted(touch / 2, 10, -touch / 2, -10);
}

double TimeLine::x(qint64 at) const
{
    const auto whole = double(std::max<qint64>(1, m_capture.end() - m_capture.begin()));
    return track().left() + double(at - m_capture.begin()) / whole * track().width();
}

void TimeLine::ask(const QMouseEvent* event)
{
    const double share =
        std::clamp((event->localPos().x() - track().left()) / std::max(1, track().width()), 0.0, 1.0);
    emit wanted(m_capture.begin() + std::llround(share * double(m_capture.end() - m_capture.begin())));
}

void TimeLine::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    const QRectF all = track();
    painter.fillRect(all, ground);
    painter.fillRect(QRectF(all.topLeft(), QPointF(x(m_now), all.bottom())), past);
    for (const auto& [from, to] : m_silent)
        painter.fillRect(QRectF(x(from), all.bottom() - 8, std::max(1.0, x(to) - x(from)), 8), missing);
    for (const qint64 at : m_commands)
        painter.fillRect(QRectF(x(at), all.top(), 1, 10), ink);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(ink, 2));
    painter.setBrush(Qt::white);
    painter.drawRoundedRect(QRectF(x(m_now) - 9, 3, 18, height() - 6), 5, 5);
}

ReplayWindow::ReplayWindow(const QString& fileName, const Capture& capture, Player& player,
                           const QString& program, const QStringList& arguments)
    : m_capture(capture)
    , m_player(player)
    , m_line(new TimeLine(capture, this))
    , m_time(new QLabel(this))
    , m_command(new QLabel(this))
    , m_speed(new QLabel(this))
    , m_moment(new QTimeEdit(this))
{
    setStyleSheet(QStringLiteral("* { font-size: 18px; }"));
    auto* const mirror = new MirrorWindow(program, arguments);
    const QSize picture = mirror->size();
    auto* const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(mirror, 1);
    layout->addWidget(makeBar());
    setWindowTitle(QStringLiteral("МИРТА: запись %1").arg(QFileInfo(fileName).fileName()));
    setWindowIcon(mirror->windowIcon());
    resize(picture);
    connect(m_line, &TimeLine::wanted, &m_player, &Player::jump);
    connect(&m_player, &Player::moved, this, &ReplayWindow::tellNow);
    tellNow();
}

QPushButton* ReplayWindow::button(const QString& text, const char* name, const std::function<void()>& action)
{
    auto* const made = new QPushButton(text, this);
    made->setObjectName(QLatin1String(name));
    made->setMinimumSize(touch, touch);
    made->setFocusPolicy(Qt::NoFocus);
    connect(made, &QPushButton::clicked, this, action);
    return made;
}

QWidget* ReplayWindow::makeBar()
{
    auto* const bar = new QWidget(this);
    auto* const rows = new QVBoxLayout(bar);
    rows->setContentsMargins(8, 4, 8, 4);
    rows->setSpacing(4);
    auto* const upper = new QHBoxLayout;
    auto* const lower = new QHBoxLayout;
    rows->addLayout(upper);
    rows->addLayout(lower);

    m_time->setStyleSheet(QStringLiteral("font-size: 22px; font-weight: bold;"));
    upper->addWidget(m_time);
    upper->addWidget(m_line, 1);

    const auto by = [this](qint64 microseconds) {
        return [this, microseconds] { m_player.jump(m_player.now() + microseconds); };
    };
    m_play = button({}, "pbPlay", [this] { m_player.playing() ? m_player.pause() : m_player.play(); });
    m_play->setMinimumWidth(120);
    lower->addWidget(button(QStringLiteral("−1 мин"), "pbMinuteBack", by(-60 * second)));
    lower->addWidget(button(QStringLiteral("−10 с"), "pbBack", by(-10 * second)));
    lower->addWidget(button(QStringLiteral("◀ Шаг"), "pbStepBack", [this] { m_player.step(false); }));
    lower->addWidget(m_play);
    lower->addWidget(button(QStringLiteral("Шаг ▶"), "pbStep", [this] { m_player.step(true); }));
    lower->addWidget(button(QStringLiteral("+10 с"), "pbOn", by(10 * second)));
    lower->addWidget(button(QStringLiteral("+1 мин"), "pbMinuteOn", by(60 * second)));
    lower->addSpacing(12);
    lower->addWidget(button(QStringLiteral("−"), "pbSlower", [this] { changeSpeed(-1); }));
    m_speed->setAlignment(Qt::AlignCenter);
    m_speed->setMinimumWidth(56);
    lower->addWidget(m_speed);
    lower->addWidget(button(QStringLiteral("+"), "pbFaster", [this] { changeSpeed(1); }));
    lower->addSpacing(12);
    m_moment->setDisplayFormat(QStringLiteral("HH:mm:ss"));
    m_moment->setButtonSymbols(QAbstractSpinBox::NoButtons);
    m_moment->setMinimumHeight(touch);
    m_moment->setTime(QDateTime::fromMSecsSinceEpoch(m_player.now() / 1000).time());
    lower->addWidget(m_moment);
    lower->addWidget(button(QStringLiteral("Перейти"), "pbGo", [this] {
        if (const auto at = m_capture.find(m_moment->time().toString(QStringLiteral("HH:mm:ss"))))
            m_player.jump(*at);
        else
            QMessageBox::information(this, windowTitle(), QStringLiteral("Этого времени в записи нет."));
    }));
    lower->addSpacing(12);
    m_command->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    lower->addWidget(m_command, 1);
    if (const QStringList remarks = m_capture.remarks(); !remarks.isEmpty()) {
        lower->addWidget(button(QStringLiteral("Замечания: %1").arg(remarks.size()), "pbRemarks", [=] {
            QMessageBox::information(this, windowTitle(), remarks.join(QStringLiteral(".\n")) + '.');
        }));
    }
    return bar;
}

void ReplayWindow::changeSpeed(int by)
{
    int at = 0; // the fastest that is not above the present one
    while (at + 1 < int(speeds.size()) && speeds[std::size_t(at) + 1] <= m_player.speed() * 1.001)
        ++at;
    m_player.setSpeed(speeds[std::size_t(std::clamp(at + by, 0, int(speeds.size()) - 1))]);
}

void ReplayWindow::tellNow()
{
    m_line->setNow(m_player.now());
    m_time->setText(QDateTime::fromMSecsSinceEpoch(m_player.now() / 1000)
                        .toString(QStringLiteral("dd.MM.yyyy  HH:mm:ss.zzz")));
    m_play->setText(m_player.playing() ? QStringLiteral("❚❚ Пауза") : QStringLiteral("▶ Пуск"));
    m_speed->setText(QStringLiteral("×%1").arg(m_player.speed()));
    const QString command = m_player.lastCommand();
    m_command->setText(command.isEmpty() ? QStringLiteral("Команд ещё не было")
                                         : QStringLiteral("Команда: ") + command);
}

} // namespace replay
