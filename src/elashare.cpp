#include "elashare.h"

#include "site.h"

#include <QSharedMemory>

#include <cstring>

namespace {

template <typename T>
T load(const std::array<quint64, 64>& block, int offset)
{
    T value;
    std::memcpy(&value, reinterpret_cast<const char*>(block.data()) + offset, sizeof value);
    return value;
}

} // namespace

ElaSharedMemory::ElaSharedMemory()
    : m_shared(std::make_unique<QSharedMemory>(QStringLiteral("ELA_SHM_KEY") + site().shmSuffix))
{
    // The second attempt to attach is for a beam unit that made the segment just now.
    if (!m_shared->attach() && !m_shared->create(sizeof(Block)) && !m_shared->attach()) {
        qWarning("ElaSharedMemory: no segment: %s", qPrintable(m_shared->errorString()));
        return;
    }
    if (m_shared->size() < int(sizeof(Block))) {
        qWarning("ElaSharedMemory: the segment has %d bytes only", m_shared->size());
        return;
    }
    m_data = m_shared->data();
    m_shared->lock();
    std::memset(m_data, 0, sizeof(Block));
    m_shared->unlock();
}

ElaSharedMemory::~ElaSharedMemory() = default;

void ElaSharedMemory::updateStatusEla()
{
    if (!m_data)
        return;
    m_shared->lock();
    quint64 heartbeat;
    std::memcpy(&heartbeat, m_data, sizeof heartbeat);
    m_status = m_copy[0] != heartbeat;
    std::memcpy(m_copy.data(), m_data, sizeof(Block));
    m_shared->unlock();
}

float ElaSharedMemory::value(ela::Real offset) const
{
    return load<float>(m_copy, offset);
}

qint32 ElaSharedMemory::value(ela::Integer offset) const
{
    return load<qint32>(m_copy, offset);
}
