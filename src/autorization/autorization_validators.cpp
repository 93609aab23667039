#include "autorization_validators.h"

#include "autorization_abstractmanager.h"

#include <QToolTip>
#include <QWidget>

#include <algorithm>

namespace Autorization {

namespace {

constexpr QPoint pointerRoom(2, 16); // px

bool isDigit(QChar c)
{
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

bool isDigitOrLatin(QChar c)
{
    return isDigit(c) || (c >= QLatin1Char('A') && c <= QLatin1Char('Z')) ||
           (c >= QLatin1Char('a') && c <= QLatin1Char('z'));
}

template <class Rule>
bool all(const QString& text, Rule rule)
{
    return std::all_of(text.begin(), text.end(), rule);
}

} // namespace

QValidator::State TippedValidator::tell(const QString& tip, State state) const
{
    // Above the corner, not over what is being typed; the toolkit adds room for a pointer below the place.
    const QPoint corner = m_widget->mapToGlobal(QPoint(0, 0));
    QToolTip::showText(corner - QPoint(pointerRoom.x(), pointerRoom.y() + tipStrip - 2), tip, m_widget);
    return state;
}

QValidator::State TippedValidator::accept() const
{
    QToolTip::hideText();
    return Acceptable;
}

QValidator::State NameValidator::validate(QString& text, int&) const
{
    if (text.size() < 3 || text.simplified().isEmpty())
        return Intermediate;
    QToolTip::hideText();
    return Acceptable;
}

QValidator::State LoginValidator::validate(QString& text, int&) const
{
    if (text.isEmpty())
        return tell(QStringLiteral("Поле 'Логин' не может быть пустым!"), Intermediate);
    if (!all(text, isDigitOrLatin))
        return tell(QStringLiteral("Допускается использовать только латинские буквы и цифры!"), Invalid);
    return accept();
}

QValidator::State NewLoginValidator::validate(QString& text, int&) const
{
    if (m_manager->findUser(text))
        return tell(QStringLiteral("Пользователь с именем \"%1\" уже существует!").arg(text), Intermediate);
    if (text.isEmpty())
        return tell(QStringLiteral("Поле 'Логин' не может быть пустым!"), Intermediate);
    if (!all(text, isDigitOrLatin))
        return tell(QStringLiteral("Допускается использовать только латинские буквы и цифры"), Invalid);
    if (text.size() < 3)
        return tell(QStringLiteral("Логин должен быть не короче 3 символов"), Intermediate);
    return accept();
}

QValidator::State PasswordValidator::validate(QString& text, int&) const
{
    if (text.isEmpty())
        return tell(QStringLiteral("Поле 'Пароль' не может быть пустым!"), Intermediate);
    if (!all(text, isDigit))
        return tell(QStringLiteral("Для пароля допускается использовать только цифры!"), Invalid);
    if (text.size() < 4)
        return tell(QStringLiteral("Пароль должен быть не короче 4 символов!"), Intermediate);
    return accept();
}

} // namespace Autorization
