#pragma once

#include <QMetaType>
#include <QMutex>
#include <QObject>
#include <QString>

// A named value of a controller. The telemetry thread writes it, anyone reads it; each change is announced in
// the thread that wrote it. The mutex is free again by then, so a slot may read the element at once.
//
// The first value ever set of each kind is announced too, even if it equals what stood there.
class Element : public QObject
{
    Q_OBJECT
public:
    // What the controller sends for the element. The letters part the two kinds that share a layout; what
    // they stand for is agreed with the unit.
    enum Type : int {
        CheckedFlagA = 0, // byte valid, byte value
        CheckedFlagB = 1,
        CheckedNumberA = 2, // byte valid, f32 scaled, f32 raw
        CheckedNumberB = 3,
        FlagA = 4, // byte value
        FlagB = 5,
        Number = 6, // f32 scaled
    };

    // `dec`: decimals for display. `min`, `max`: limits of the scaled value; asserts that they are in order.
    Element(Element::Type type, const QString& name, int dec, float min, float max);

    // In the data block: the bytes of an element of this type, 0 for a type that is not known here.
    static int size(Element::Type type);

    Type type() const { return m_type; }
    const QString& name() const { return m_name; }              // as the controller knows it
    int offset() const { return m_offs; }                       // in the data block, bytes; -1 until set
    bool isVariable() const { return m_type > CheckedNumberB; } // comes without a validity of its own
    int dec() const { return m_dec; }

    bool valid() const;
    float rawNumberVal() const;
    float numberVal() const;
    bool boolVal() const;
    QString stringVal() const;

    // Any thread.
    void setValid(bool valid);
    void setRawNumberVal(float value);
    void setNumberVal(float value); // kept within the limits; what is not a number becomes the lower one
    void setBoolVal(bool value);
    void setStringVal(const QString& value);

    void setOffset(int offs); // asserts that the element never moves

signals:
    void validChanged(const Element* sender, bool valid);
    void validChanged(bool valid);
    void rawNumberValChanged(const Element* sender, float value);
    void rawNumberValChanged(float value);
    void numberValChanged(const Element* sender, float value);
    void numberValChanged(float value);
    void boolValChanged(const Element* sender, bool value);
    void boolValChanged(bool value);
    void stringValChanged(const Element* sender, const QString& value);
    void stringValChanged(const QString& value);

private:
    template <class T>
    struct Kept
    {
        T value{};
        bool told = false;
    };

    template <class T>
    T read(const Kept<T>& kept) const;
    template <class T>
    bool store(Kept<T>& kept, T value); // true when it is to be told
    void tellValid(bool valid);
    void tellRawNumber(float value);
    void tellNumber(float value);
    void tellBool(bool value);
    void tellString(const QString& value);

    mutable QMutex m_mutex; // guards the five below
    Kept<bool> m_valid;
    Kept<float> m_rawNumber;
    Kept<float> m_number;
    Kept<bool> m_bool;
    Kept<QString> m_string;

    const Type m_type;
    const QString m_name;
    int m_offs = -1; // set before the telemetry starts
    const int m_dec;
    const float m_min;
    const float m_max;
};

Q_DECLARE_METATYPE(const Element*) // travels in queued signals
