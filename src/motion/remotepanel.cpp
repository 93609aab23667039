#include "remotepanel.h"

#include "handwheels.h"
#include "statebutton.h"

#include <QLabel>

namespace {

QString regimeText(uint regime)
{
    switch (regime) {
    case 2:
        return QStringLiteral("Режим пульта F2:\n\n"
                              "Положение X - ось LX    Положение 4 - ось PHI\n"
                              "Положение Y - ось LY    Положение 5 - ось D\n"
                              "Положение Z - ось Z");
    case 3:
        return QStringLiteral("Режим пульта F3:\n\n"
                              "Положение X - ось LX    Положение 4 - ось U\n"
                              "Положение Y - ось LY    Положение 5 - ось V\n"
                              "Положение Z - резерв");
    default:
        return QStringLiteral("Режим пульта F1:\n\n"
                              "Положение X - ось LX    Положение 4 - ось B\n"
                              "Положение Y - ось LY    Положение 5 - ось C\n"
                              "Положение Z - ось A");
    }
}

} // namespace

RemotePanel::RemotePanel(const Widgets& widgets, Handwheels* wheels, QObject* parent)
    : QObject(parent)
    , m_widgets(widgets)
    , m_wheels(wheels)
{}

void RemotePanel::press()
{
    m_on = m_widgets.button->state() != StateButton::On;
    emit message(m_on ? QStringLiteral("[I]Нажата кнопка 'Включить дистанционный пульт'")
                      : QStringLiteral("[I]Нажата кнопка 'Выключить дистанционный пульт'"),
                 false);
    emit command(m_on ? QStringLiteral("PULT ON") : QStringLiteral("PULT OFF"));
}

// A press may have run ahead of the controller; then the same word is news.
void RemotePanel::tell(bool on)
{
    if (m_told == on && m_on == on)
        return;
    m_told = on;
    setOn(on);
}

void RemotePanel::setOn(bool on)
{
    m_on = on;
    m_widgets.button->setState(on);
    m_widgets.regime->setVisible(on);
    m_widgets.regime->setText(regimeText(m_regime));
    // F1 leaves the side as it was: a panel turned on from F2 or F3 to F1 goes on holding it.
    if (m_regime == 2 || m_regime == 3)
        m_widgets.drives->setDisabled(on);
    // The panel takes its wheel from the beam unit, and says so at each change of its regime.
    if (on)
        m_wheels->takeRemote();
    m_widgets.wheel->setDisabled(on);
}

void RemotePanel::setRegime(uint regime)
{
    m_regime = regime;
    setOn(m_on);
}
