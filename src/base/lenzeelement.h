#pragma once

#include <QMutex>
#include <QObject>
#include <QString>

// One named reading of a vacuum controller: a whole number or a measured value. It keeps the last value and
// tells each change; the first value is always told, also when it equals the zero that stood there before.
// Values may be written and read on any thread. The signals come on the writer's thread, the one with the
// element itself first.
class LenzeElement : public QObject
{
    Q_OBJECT

public:
    enum Type {
        Number = 0, // whole number: a switch, a lock word
        Sensor = 1, // measured value, in the unit that the controller sends
    };
    Q_ENUM(Type)

    // `dec`: decimals with which the value is shown.
    LenzeElement(const QString& name, Type type, int dec, QObject* parent = nullptr);

    Type type() const { return m_type; }
    const QString& name() const { return m_name; }
    bool isVariable() const { return m_type != Number; }
    int dec() const { return m_dec; }
    int numberVal() const;   // 0 before the first value
    float sensorVal() const; // the same

public slots:
    void setNumberVal(int value);
    void setSensorVal(float value); // what is no number differs from itself and is told each time

signals:
    void numberValChanged(const LenzeElement* element, int value);
    void numberValChanged(int value);
    void sensorValChanged(const LenzeElement* element, float value);
    void sensorValChanged(float value);

private:
    mutable QMutex m_mutex; // guards the values and their flags
    const Type m_type;
    const QString m_name;
    float m_sensorVal = 0;
    int m_numberVal = 0;
    const int m_dec;
    bool m_numberSeen = false;
    bool m_sensorSeen = false;
};
