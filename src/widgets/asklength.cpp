#include "asklength.h"

#include "numpad.h"

std::optional<QString> lengthRefusal(const QString& title, float length)
{
    if (length >= leastLength && length <= mostLength)
        return {};
    return QStringLiteral("[A]Ошибка! %1: от %2 до %3!")
        .arg(title)
        .arg(double(leastLength))
        .arg(double(mostLength), 0, 'f', 0);
}

std::optional<float> askLength(const QString& title, QWidget* parent, float present,
                               const std::function<void(const QString&)>& refuse)
{
    Numpad numpad(title, parent, present, false, true, false);
    if (numpad.exec() != QDialog::Accepted)
        return {};
    const auto length = static_cast<float>(numpad.value());
    if (const auto refusal = lengthRefusal(title, length)) {
        refuse(*refusal);
        return {};
    }
    return length;
}
