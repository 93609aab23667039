#include "lenzeelement.h"

#include <QMutexLocker>

#include <utility>

namespace {

// Stores the value; true when it has to be told.
template <class Value>
bool store(QMutex& mutex, Value& stored, bool& seen, Value value)
{
    const QMutexLocker guard(&mutex);
    const bool told = !std::exchange(seen, true) || stored != value;
    stored = value;
    return told;
}

} // namespace

LenzeElement::LenzeElement(const QString& name, Type type, int dec, QObject* parent)
    : QObject(parent)
    , m_type(type)
    , m_name(name)
    , m_dec(dec)
{}

int LenzeElement::numberVal() const
{
    const QMutexLocker guard(&m_mutex);
    return m_numberVal;
}

float LenzeElement::sensorVal() const
{
    const QMutexLocker guard(&m_mutex);
    return m_sensorVal;
}

void LenzeElement::setNumberVal(int value)
{
    if (!store(m_mutex, m_numberVal, m_numberSeen, value))
        return;
    emit numberValChanged(this, value);
    emit numberValChanged(value);
}

void LenzeElement::setSensorVal(float value)
{
    if (!store(m_mutex, m_sensorVal, m_sensorSeen, value))
        return;
    emit sensorValChanged(this, value);
    emit sensorValChanged(value);
}
