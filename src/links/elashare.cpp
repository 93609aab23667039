#include "elashare.h"

#include "site.h"

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
    : m_segment("ElaSharedMemory", QStringLiteral("ELA_SHM_KEY") + site().shmSuffix, sizeof(Block))
{}

void ElaSharedMemory::updateStatusEla()
{
    Block now;
    if (!m_segment.read(now.data())) {
        // Once may be chance: the unit is judged by a whole period of the caller.
        m_status = m_status && !m_missed;
        m_missed = true;
        return;
    }
    m_missed = false;
    m_status = m_copy[0] != now[0];
    m_copy = now;
}

float ElaSharedMemory::value(ela::Real offset) const
{
    return load<float>(m_copy, offset);
}

qint32 ElaSharedMemory::value(ela::Integer offset) const
{
    return load<qint32>(m_copy, offset);
}
