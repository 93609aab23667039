#pragma once

#include <QByteArray>
#include <QSocketNotifier>

#include <functional>
#include <utility>

#include <unistd.h>

// The lines that come on standard input, as the event loop finds them. One object in a process.
class InputLines
{
public:
    // `take` gets each line without its line feed. `ended` is asked when the input has ended, and again in
    // each event loop until it returns true.
    explicit InputLines(
        std::function<void(const QByteArray& line)> take, std::function<bool()> ended = [] { return true; })
        : m_take(std::move(take))
        , m_ended(std::move(ended))
        , m_notifier(STDIN_FILENO, QSocketNotifier::Read)
    {
        QObject::connect(&m_notifier, &QSocketNotifier::activated, [this] { readInput(); });
    }

private:
    void readInput()
    {
        char buffer[4096];
        const auto size = ::read(STDIN_FILENO, buffer, sizeof buffer);
        if (size <= 0) {
            m_notifier.setEnabled(!m_ended());
            return;
        }
        m_input.append(buffer, static_cast<int>(size));
        for (int end = m_input.indexOf('\n'); end >= 0; end = m_input.indexOf('\n')) {
            const QByteArray line = m_input.left(end);
            m_input.remove(0, end + 1);
            m_take(line);
        }
    }

    std::function<void(const QByteArray&)> m_take;
    std::function<bool()> m_ended;
    QSocketNotifier m_notifier;
    QByteArray m_input; // the line that is still on its way
};
