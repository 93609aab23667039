#include "gui.h"

#include "statebutton.h"
#include "touchmenu.h"
#include "ui_gui.h"
#include "widgets.h"

#include <QMenu>

#include <algorithm>
#include <iterator>

namespace {

const QString kEla = QStringLiteral("Ela"); // the beam unit reads such a wheel by itself
const QString kFreeText = QStringLiteral("Отключен");
const QString kRoom = QStringLiteral("     "); // for the finger, behind the entries of a menu
const QString kElaEntry = QStringLiteral("ЭЛА") + kRoom;
const QString kFreeEntry = QStringLiteral("Не использовать") + kRoom;

struct WheelAxis
{
    const char* name;
    const char* text;
    void (Gui::*changed)(int delta, int mult);
};

const WheelAxis kAxes[] = {
    {"LX", "Ось LX", &Gui::lirChangedX}, {"LY", "Ось LY", &Gui::lirChangedY},
    {"A", "Ось A", &Gui::lirChangedA},   {"B", "Ось B", &Gui::lirChangedB},
    {"C", "Ось C", &Gui::lirChangedC},   {"D", "Ось D", &Gui::lirChangedD},
    {"U", "Ось U", &Gui::lirChangedU},   {"V", "Ось V", &Gui::lirChangedV},
};

const WheelAxis* wheelAxis(const QString& name)
{
    const auto* const found = std::find_if(std::begin(kAxes), std::end(kAxes), [&](const WheelAxis& axis) {
        return name == QLatin1String(axis.name);
    });
    return found == std::end(kAxes) ? nullptr : found;
}

// What one detent of a wheel commands, in the controller's thousandths.
struct Multiplier
{
    const char* text;
    qint64 step;
};

const Multiplier kMultipliers[] = {{"x0.01", 10}, {"x0.05", 50}, {"x0.1", 100}, {"x1", 1000}};

// An index that no menu has written, from a spoiled settings file, stands for the finest step.
const Multiplier& multiplier(int index)
{
    return kMultipliers[index >= 0 && index < int(std::size(kMultipliers)) ? index : 0];
}

// The entries of a wheel's menu for the time that it is open, in letters for a finger.
class WheelMenu
{
public:
    QAction* add(const QString& text, bool chosen)
    {
        auto* action = new QAction(text, &m_owner);
        QFont font;
        font.setBold(true);
        font.setPixelSize(30);
        action->setFont(font);
        if (chosen)
            action->setIcon(QIcon(QStringLiteral(":/images/ok.png")));
        m_actions << action;
        return action;
    }

    void addSeparator()
    {
        auto* separator = new QAction(&m_owner);
        separator->setSeparator(true);
        m_actions << separator;
    }

    // The entry touched, null for none. Blocks until the operator answers.
    QAction* exec(const QWidget* label)
    {
        QMenu menu(label->window());
        menu.setObjectName(nameOf(label));
        menu.setStyleSheet(touchMenuLook());
        menu.addActions(m_actions);
        return menu.exec(QCursor::pos());
    }

    static QString nameOf(const QWidget* label) { return QStringLiteral("menu_") + label->objectName(); }

private:
    QObject m_owner;
    QList<QAction*> m_actions;
};

} // namespace

void Gui::onLirChanged(int channel, int delta)
{
    if (!isEnabled())
        return; // the key switch blocks the console
    QString name;
    switch (channel) {
    case 0:
        name = m_lirLeft;
        break;
    case 1:
        name = m_lirRight;
        break;
    case 2:
        if (m_pultOn)
            lirChangedPult(delta);
        return;
    case 3: // the card has no fourth channel today
        name = m_lirDist;
        break;
    default:
        break;
    }
    if (const WheelAxis* axis = wheelAxis(name))
        (this->*axis->changed)(delta, m_lirMult[name]);
}

void Gui::lirStep(const QString& axis, const QString& speedKey, int delta, int mult)
{
    m_drives.command(QStringLiteral("LIR(%1,%2,%3)")
                         .arg(axis)
                         .arg(multiplier(mult).step * delta)
                         .arg(m_maxSpeed[speedKey]));
}

void Gui::lirChangedPult(int delta)
{
    m_drives.command(QStringLiteral("HANDWHEEL(%1)").arg(delta * 100));
}

void Gui::on_lblLir1_clicked()
{
    lirMenu(QStringLiteral("'Левый'"), &m_lirLeft, ui->lblLir1, ui->lblLir1Use);
}

void Gui::on_lblLir2_clicked()
{
    lirMenu(QStringLiteral("'Правый'"), &m_lirRight, ui->lblLir2, ui->lblLir2Use);
}

void Gui::on_lblLir3_clicked()
{
    lirMenuEla(QStringLiteral("'Выносной'"), &m_lirDist, ui->lblLir3, ui->lblLir3Use);
}

void Gui::lirMenu(const QString& name, QString* parameter, PoLabel* label, QLabel* use)
{
    WheelMenu menu;
    QMap<QAction*, QString> axes;
    for (const WheelAxis& axis : kAxes) {
        const QString key = QLatin1String(axis.name);
        axes.insert(menu.add(QString::fromUtf8(axis.text) + kRoom, *parameter == key), key);
    }
    QAction* ela = menu.add(kElaEntry, *parameter == kEla);
    menu.addSeparator();
    QAction* unused = menu.add(kFreeEntry, parameter->isEmpty());
    menu.addSeparator();
    QMap<QAction*, int> multipliers;
    if (!parameter->isEmpty() && *parameter != kEla) {
        const Multiplier* present = &multiplier(m_lirMult[*parameter]);
        for (int i = 0; i < int(std::size(kMultipliers)); ++i)
            multipliers.insert(menu.add(QLatin1String(kMultipliers[i].text), present == &kMultipliers[i]), i);
    }

    QAction* chosen = menu.exec(label);
    if (!chosen)
        return;
    if (chosen == unused) {
        freeWheel(name, parameter, use);
    } else if (chosen == ela) {
        giveWheelToEla(name, parameter, use);
    } else {
        if (axes.contains(chosen))
            *parameter = axes.value(chosen);
        else
            m_lirMult[*parameter] = multipliers.value(chosen);
        // The step belongs to the axis: the other wheel on it turns with the same one.
        showWheel(m_lirLeft, ui->lblLir1Use);
        showWheel(m_lirRight, ui->lblLir2Use);
        prgMessage(QStringLiteral("[I]На штурвал %1 установлен параметр %2 с шагом %3")
                       .arg(name, QString::fromUtf8(wheelAxis(*parameter)->text),
                            QLatin1String(multiplier(m_lirMult[*parameter]).text)),
                   true);
    }
}

void Gui::lirMenuEla(const QString& name, QString* parameter, PoLabel* label, QLabel* use)
{
    WheelMenu menu;
    QAction* ela = menu.add(kElaEntry, *parameter == kEla);
    QAction* unused = menu.add(kFreeEntry, *parameter != kEla);
    menu.addSeparator();
    QAction* chosen = menu.exec(label);
    if (chosen == unused)
        freeWheel(name, parameter, use);
    else if (chosen == ela)
        giveWheelToEla(name, parameter, use);
}

void Gui::freeWheel(const QString& name, QString* parameter, QLabel* use)
{
    use->setText(kFreeText);
    parameter->clear();
    prgMessage(QStringLiteral("[I]Штурвал %1 отключен").arg(name), true);
}

void Gui::giveWheelToEla(const QString& name, QString* parameter, QLabel* use)
{
    use->setText(QStringLiteral("ЭЛА"));
    *parameter = kEla;
    prgMessage(QStringLiteral("[I]Штурвал %1 передан в ЭЛА").arg(name), true);
}

void Gui::showWheel(const QString& parameter, QLabel* use)
{
    if (const WheelAxis* axis = wheelAxis(parameter))
        use->setText(QString::fromUtf8(axis->text) + QLatin1Char('\n') +
                     QLatin1String(multiplier(m_lirMult[parameter]).text));
}

void Gui::shareWheels()
{
    m_pultShare.setFuncLeftEncoder(m_lirLeft == kEla);
    m_pultShare.setFuncRightEncoder(m_lirRight == kEla);
    m_pultShare.setFuncDistEncoder(m_lirDist == kEla);
    m_pultShare.setBlockGui(!isEnabled());
}

void Gui::onChangedPultState(bool state)
{
    m_pultOn = state;
    ui->sbDistPult->setState(state);
    ui->pultRegime->setVisible(state);
    switch (m_pultRegime) {
    case 2:
        ui->pultRegime->setText(QStringLiteral("Режим пульта F2:\n\n"
                                               "Положение X - ось LX    Положение 4 - ось PHI\n"
                                               "Положение Y - ось LY    Положение 5 - ось D\n"
                                               "Положение Z - ось Z"));
        break;
    case 3:
        ui->pultRegime->setText(QStringLiteral("Режим пульта F3:\n\n"
                                               "Положение X - ось LX    Положение 4 - ось U\n"
                                               "Положение Y - ось LY    Положение 5 - ось V\n"
                                               "Положение Z - резерв"));
        break;
    default:
        ui->pultRegime->setText(QStringLiteral("Режим пульта F1:\n\n"
                                               "Положение X - ось LX    Положение 4 - ось B\n"
                                               "Положение Y - ось LY    Положение 5 - ось C\n"
                                               "Положение Z - ось A"));
    }
    // F1 leaves the frame as it was: a panel turned on from F2 or F3 to F1 goes on holding it.
    if (m_pultRegime == 2 || m_pultRegime == 3)
        ui->frmDrives->setDisabled(state);
    // The panel takes its wheel from the beam unit, and says so at each change of its regime.
    if (state) {
        // What its menu still offers is no longer to be had.
        for (QMenu* menu : findChildren<QMenu*>(WheelMenu::nameOf(ui->lblLir3)))
            menu->close();
        freeWheel(QStringLiteral("'Выносной'"), &m_lirDist, ui->lblLir3Use);
    }
    ui->frmLir3->setDisabled(state);
}

void Gui::onChangedPultRegime(uint regime)
{
    m_pultRegime = regime;
    onChangedPultState(m_pultOn);
}
