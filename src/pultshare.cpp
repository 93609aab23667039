#include "pultshare.h"

#include "site.h"

#include <QSharedMemory>

#include <cstring>

namespace {

constexpr int kSize = 16; // bytes

} // namespace

PultShare::PultShare()
    : m_shared(new QSharedMemory(QStringLiteral("PULT_SHARE_KEY") + site().shmSuffix))
{
    // The second attempt to attach is for a panel that made the segment just now.
    if (!m_shared->attach() && !m_shared->create(kSize) && !m_shared->attach()) {
        qWarning("PultShare: no segment: %s", qPrintable(m_shared->errorString()));
        return;
    }
    if (m_shared->size() < kSize) {
        qWarning("PultShare: the segment has %d bytes instead of %d", m_shared->size(), kSize);
        return;
    }
    m_shared->lock();
    std::memset(m_shared->data(), 0, size_t(m_shared->size()));
    m_shared->unlock();
    m_data = static_cast<quint32*>(m_shared->data());
}

PultShare::~PultShare()
{
    delete m_shared;
}

void PultShare::setWord(Word index, quint32 value)
{
    if (!m_data)
        return;
    m_shared->lock();
    m_data[index] = value;
    m_shared->unlock();
}

quint32 PultShare::word(Word index) const
{
    if (!m_data)
        return 0;
    m_shared->lock();
    const quint32 value = m_data[index];
    m_shared->unlock();
    return value;
}
