#include "element.h"

#include <utility>

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace {

// Holds the mutex. Qt itself is built without the thread sanitizer, so a mutex that had to be waited for is
// invisible to it; there, the holder says what the mutex guarantees.
class Guard
{
public:
    explicit Guard(QMutex& mutex)
        : m_mutex(mutex)
    {
        m_mutex.lock();
#if defined(__SANITIZE_THREAD__)
        __tsan_acquire(&m_mutex);
#endif
    }
    ~Guard()
    {
#if defined(__SANITIZE_THREAD__)
        __tsan_release(&m_mutex);
#endif
        m_mutex.unlock();
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    QMutex& m_mutex;
};

} // namespace

Element::Element(Element::Type type, const QString& name, int dec, float min, float max)
    : m_type(type)
    , m_name(name)
    , m_dec(dec)
    , m_min(min)
    , m_max(max)
{
    Q_ASSERT(min <= max);
    qRegisterMetaType<const Element*>("const Element*");
}

int Element::size(Element::Type type)
{
    switch (type) {
    case CheckedFlagA:
    case CheckedFlagB:
        return 2;
    case CheckedNumberA:
    case CheckedNumberB:
        return 9;
    case FlagA:
    case FlagB:
        return 1;
    case Number:
        return 4;
    }
    return 0;
}

template <class T>
T Element::read(const Kept<T>& kept) const
{
    const Guard guard(m_mutex);
    return kept.value;
}

template <class T>
bool Element::store(Kept<T>& kept, T value)
{
    const Guard guard(m_mutex);
    const bool news = kept.value != value || !kept.told;
    std::swap(kept.value, value);
    kept.told = true;
    return news;
}

bool Element::valid() const
{
    return read(m_valid);
}

float Element::rawNumberVal() const
{
    return read(m_rawNumber);
}

float Element::numberVal() const
{
    return read(m_number);
}

bool Element::boolVal() const
{
    return read(m_bool);
}

QString Element::stringVal() const
{
    return read(m_string);
}

void Element::setValid(bool valid)
{
    if (store(m_valid, valid))
        tellValid(valid);
}

void Element::setRawNumberVal(float value)
{
    if (store(m_rawNumber, value))
        tellRawNumber(value);
}

void Element::setNumberVal(float value)
{
    const float clamped = qMin(qMax(m_min, value), m_max);
    if (store(m_number, clamped))
        tellNumber(clamped);
}

void Element::setBoolVal(bool value)
{
    if (store(m_bool, value))
        tellBool(value);
}

void Element::setStringVal(const QString& value)
{
    if (store(m_string, value))
        tellString(value);
}

void Element::tellValid(bool valid)
{
    emit validChanged(this, valid);
    emit validChanged(valid);
}

void Element::tellRawNumber(float value)
{
    emit rawNumberValChanged(this, value);
    emit rawNumberValChanged(value);
}

void Element::tellNumber(float value)
{
    emit numberValChanged(this, value);
    emit numberValChanged(value);
}

void Element::tellBool(bool value)
{
    emit boolValChanged(this, value);
    emit boolValChanged(value);
}

void Element::tellString(const QString& value)
{
    emit stringValChanged(this, value);
    emit stringValChanged(value);
}

void Element::setOffset(int offs)
{
    Q_ASSERT((m_offs < 0) || (m_offs == offs));
    m_offs = offs;
}
