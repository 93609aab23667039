#include "sharedsegment.h"

#include <QMap>
#include <QSharedMemory>

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <utility>

namespace {

using namespace std::chrono_literals;

constexpr auto readingPatience = 20ms;
constexpr auto joiningPatience = 200ms; // leaving, too

using Words = QMap<int, quint32>; // by place

// Holds the lock of the segment. What stands at it is the thread of the segment, nobody else.
class Held
{
public:
    explicit Held(QSharedMemory& memory)
        : m_memory(memory)
    {
        m_memory.lock();
    }
    ~Held() { m_memory.unlock(); }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;

private:
    QSharedMemory& m_memory;
};

bool join(QSharedMemory& memory, const char* owner, int bytes)
{
    // The second attempt to attach is for a program that made the segment just now.
    if (!memory.attach() && !memory.create(bytes) && !memory.attach()) {
        qWarning("%s: no segment: %s", owner, qPrintable(memory.errorString()));
        return false;
    }
    if (memory.size() < bytes) {
        qWarning("%s: the segment has %d bytes instead of %d", owner, memory.size(), bytes);
        return false;
    }
    const Held held(memory);
    std::memset(memory.data(), 0, static_cast<size_t>(memory.size()));
    return true;
}

// Writes the words, and returns the first `bytes` of what the segment holds then.
QByteArray exchange(QSharedMemory& memory, const Words& words, int bytes)
{
    const Held held(memory);
    auto* const data = static_cast<char*>(memory.data());
    for (auto i = words.cbegin(); i != words.cend(); ++i)
        std::memcpy(data + i.key() * int(sizeof(quint32)), &i.value(), sizeof(quint32));
    return QByteArray(data, bytes);
}

} // namespace

// The work comes in numbered rounds, one after the other; the first one joins. A round that begins serves all
// that was asked until then.
struct SharedSegment::Desk
{
    Desk(const char* who, const QString& where, int size)
        : owner(who)
        , key(where)
        , bytes(size)
    {}

    const char* const owner;
    const QString key;
    const int bytes;

    std::mutex mutex; // guards what follows; nobody waits for a lock of another process under it
    std::condition_variable asked;
    std::condition_variable answered;
    quint64 wanted = 1;
    quint64 served = 0;
    quint64 overdue = 0; // the last round that somebody waited for in vain
    bool ending = false;
    bool left = false;
    Words words;
    QByteArray image; // of the last round; empty without a segment
};

SharedSegment::SharedSegment(const char* owner, const QString& key, int bytes)
    : m_desk(std::make_shared<Desk>(owner, key, bytes))
    , m_thread(&SharedSegment::serve, m_desk)
{
    Desk& desk = *m_desk;
    std::unique_lock<std::mutex> lock(desk.mutex);
    if (!desk.answered.wait_for(lock, joiningPatience, [&] { return desk.served >= 1; }))
        desk.overdue = 1;
}

SharedSegment::~SharedSegment()
{
    Desk& desk = *m_desk;
    std::unique_lock<std::mutex> lock(desk.mutex);
    desk.ending = true;
    desk.asked.notify_one();
    const bool left = desk.answered.wait_for(lock, joiningPatience, [&] { return desk.left; });
    lock.unlock();
    if (left)
        m_thread.join();
    else
        m_thread.detach();
}

bool SharedSegment::read(void* to)
{
    Desk& desk = *m_desk;
    std::unique_lock<std::mutex> lock(desk.mutex);
    const quint64 round = ++desk.wanted;
    desk.asked.notify_one();
    if (desk.served < desk.overdue)
        return false;
    if (!desk.answered.wait_for(lock, readingPatience, [&] { return desk.served >= round; })) {
        desk.overdue = round;
        return false;
    }
    if (desk.image.isEmpty())
        return false;
    std::memcpy(to, desk.image.constData(), static_cast<size_t>(desk.bytes));
    return true;
}

void SharedSegment::write(int place, quint32 word)
{
    const std::lock_guard<std::mutex> lock(m_desk->mutex);
    m_desk->words.insert(place, word);
    ++m_desk->wanted;
    m_desk->asked.notify_one();
}

void SharedSegment::serve(const std::shared_ptr<Desk>& desk)
{
    {
        QSharedMemory memory(desk->key);
        const bool joined = join(memory, desk->owner, desk->bytes);
        std::unique_lock<std::mutex> lock(desk->mutex);
        quint64 round = 1;
        while (round != desk->served) {
            const Words words = std::exchange(desk->words, {});
            lock.unlock();
            QByteArray image = joined ? exchange(memory, words, desk->bytes) : QByteArray();
            lock.lock();
            desk->image = std::move(image);
            desk->served = round;
            desk->answered.notify_all();
            desk->asked.wait(lock, [&] { return desk->ending || desk->wanted != desk->served; });
            round = desk->wanted;
        }
    } // leaves the segment, for which it needs the lock once more
    const std::lock_guard<std::mutex> lock(desk->mutex);
    desk->left = true;
    desk->answered.notify_all();
}
