#include "wheelcounters.h"

#include <QStringList>

#include <algorithm>

namespace {

constexpr int kCountsPerDetent = 4;
constexpr quint32 kCounterMask = 0xFFFFFF;
constexpr quint32 kErrorStatus = 0x01;
constexpr int kMostDetents = 10'000;

} // namespace

void WheelCounters::turn(Wheel wheel, int detents)
{
    m_counters[wheel].left += detents * kCountsPerDetent;
}

void WheelCounters::setBad(Wheel wheel, bool bad)
{
    m_counters[wheel].bad = bad;
}

int WheelCounters::read(int, quint32* word)
{
    if (*word < 1 || *word > m_counters.size())
        return -1;
    Counter& counter = m_counters[*word - 1];
    const int most = m_pace * kCountsPerDetent;
    const int counts = std::clamp(counter.left.load(), -most, most);
    counter.left -= counts;
    counter.value = (counter.value + quint32(counts)) & kCounterMask;
    ++m_readings;
    *word = (counter.bad ? kErrorStatus << 24 : 0) | counter.value;
    return 0;
}

std::optional<QString> wheelLine(WheelCounters* wheels, const QString& line)
{
    const QStringList words = line.toLower().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (words.isEmpty() || words[0] != QLatin1String("wheel"))
        return std::nullopt;
    static const QStringList names{QStringLiteral("left"), QStringLiteral("right"), QStringLiteral("remote")};
    const int wheel = words.size() == 3 ? names.indexOf(words[1]) : -1;
    if (wheel < 0)
        return QStringLiteral("error: wheel left|right|remote N|bad|good");
    const auto chosen = WheelCounters::Wheel(wheel);
    if (words[2] == QLatin1String("bad") || words[2] == QLatin1String("good")) {
        wheels->setBad(chosen, words[2] == QLatin1String("bad"));
        return QStringLiteral("ok");
    }
    bool number = false;
    const int detents = words[2].toInt(&number);
    if (!number || detents < -kMostDetents || detents > kMostDetents)
        return QStringLiteral("error: a wheel turns -%1 to %1 detents").arg(kMostDetents);
    wheels->turn(chosen, detents);
    return QStringLiteral("ok");
}
