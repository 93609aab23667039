#pragma once

#include <QObject>
#include <QVector>

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>

// What an object tells before those whom it concerns listen, kept to be told once more: of some signals the
// last word, of others each. All on the sender's thread, which outlives this object.
template <class Sender>
class Retelling
{
public:
    explicit Retelling(Sender* sender)
        : m_sender(sender)
        , m_ear(std::make_unique<QObject>())
    {}

    template <class... Values>
    void keepLast(void (Sender::*signal)(Values...))
    {
        keep(signal, true);
    }
    template <class... Values>
    void keepEach(void (Sender::*signal)(Values...))
    {
        keep(signal, false);
    }

    // In the order in which it was told. From now on nothing is kept; a second call tells nothing.
    void tellAgain()
    {
        m_ear.reset();
        for (const Told& told : std::exchange(m_told, {}))
            told.again();
    }

private:
    struct Told
    {
        int signal;
        std::function<void()> again;
    };

    template <class... Values>
    void keep(void (Sender::*signal)(Values...), bool last)
    {
        const int number = m_signals++;
        QObject::connect(m_sender, signal, m_ear.get(), [=](Values... values) {
            if (last) {
                m_told.erase(std::remove_if(m_told.begin(), m_told.end(),
                                            [number](const Told& told) { return told.signal == number; }),
                             m_told.end());
            }
            m_told.append({number, [=] { emit(m_sender->*signal)(values...); }});
        });
    }

    Sender* m_sender;
    std::unique_ptr<QObject> m_ear; // holds the connections
    QVector<Told> m_told;
    int m_signals = 0;
};
