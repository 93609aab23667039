#pragma once

#include <QValidator>

class QWidget;

// The rules of the fields, told to the operator while he types by a tooltip at the field. A state of
// Invalid refuses the keystroke.
namespace Autorization {

class AbstractManager;

// Height that a field keeps free above it for the tooltip, px.
constexpr int tipStrip = 44;

// A validator whose tooltip appears at the top left corner of a widget (not owned).
class TippedValidator : public QValidator
{
public:
    explicit TippedValidator(QWidget* widget)
        : QValidator(nullptr)
        , m_widget(widget)
    {}

protected:
    State tell(const QString& tip, State state) const;
    State accept() const; // clears the tooltip

private:
    QWidget* m_widget;
};

class NameValidator : public QValidator
{
public:
    State validate(QString& text, int& position) const override;
};

class LoginValidator : public TippedValidator
{
public:
    using TippedValidator::TippedValidator;

    State validate(QString& text, int& position) const override;
};

// A login for a new account: none of the manager's accounts has it.
class NewLoginValidator : public TippedValidator
{
public:
    NewLoginValidator(QWidget* widget, const AbstractManager* manager)
        : TippedValidator(widget)
        , m_manager(manager)
    {}

    State validate(QString& text, int& position) const override;

private:
    const AbstractManager* m_manager;
};

class PasswordValidator : public TippedValidator
{
public:
    using TippedValidator::TippedValidator;

    State validate(QString& text, int& position) const override;
};

} // namespace Autorization
