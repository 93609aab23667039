#include "pultshare.h"

#include "site.h"

#include <array>

PultShare::PultShare()
    : m_segment("PultShare", QStringLiteral("PULT_SHARE_KEY") + site().shmSuffix,
                wordCount * int(sizeof(quint32)))
{}

quint32 PultShare::word(Word index)
{
    std::array<quint32, wordCount> words{};
    m_segment.read(words.data());
    return words[index];
}
