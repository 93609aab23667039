#pragma once

#include "benchtools.h"

#include <QByteArray>

#include <condition_variable>
#include <mutex>
#include <thread>

// The far end of a TCP connection on loopback: a thread of its own that notes when bytes come. It takes one
// connection at a time and answers nothing.
class Wire
{
public:
    using Clock = std::chrono::steady_clock;

    Wire()
        : m_listener(socket(AF_INET, SOCK_STREAM, 0))
    {
        const sockaddr_in any = loopback(0);
        bind(m_listener, reinterpret_cast<const sockaddr*>(&any), sizeof any);
        listen(m_listener, 1);
        m_reader = std::thread([this] { read(); });
    }
    ~Wire()
    {
        shutdown(m_listener, SHUT_RDWR);
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            shutdown(m_peer, SHUT_RDWR);
        }
        m_reader.join();
        close(m_listener);
    }
    Wire(const Wire&) = delete;
    Wire& operator=(const Wire&) = delete;

    int port() const
    {
        sockaddr_in own{};
        socklen_t size = sizeof own;
        getsockname(m_listener, reinterpret_cast<sockaddr*>(&own), &size);
        return ntohs(own.sin_port);
    }
    // The end of the console's kind.
    int connected() const
    {
        const int out = socket(AF_INET, SOCK_STREAM, 0);
        const sockaddr_in to = loopback(port());
        return connect(out, reinterpret_cast<const sockaddr*>(&to), sizeof to) == 0 ? out : -1;
    }
    void forget()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bytes.clear();
    }
    // Whether `text` has come since forget(), within two seconds; then `when` tells its last byte's time.
    bool heard(const QByteArray& text, Clock::time_point* when)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        const bool came =
            m_came.wait_for(lock, std::chrono::seconds(2), [&] { return m_bytes.contains(text); });
        *when = m_last;
        return came;
    }

private:
    void read()
    {
        for (int peer = accept(m_listener, nullptr, nullptr); peer >= 0;
             peer = accept(m_listener, nullptr, nullptr)) {
            {
                const std::lock_guard<std::mutex> lock(m_mutex);
                m_peer = peer;
            }
            char bytes[1500];
            for (ssize_t got; (got = recv(peer, bytes, sizeof bytes, 0)) > 0;) {
                const Clock::time_point now = Clock::now();
                const std::lock_guard<std::mutex> lock(m_mutex);
                m_last = now;
                m_bytes.append(bytes, int(got));
                m_came.notify_all();
            }
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_peer = -1;
            close(peer);
        }
    }

    const int m_listener;
    std::mutex m_mutex;
    std::condition_variable m_came;
    QByteArray m_bytes;       // since forget()
    Clock::time_point m_last; // of bytes
    int m_peer = -1;
    std::thread m_reader;
};
