#include "handwheels.h"

#include "touchmenu.h"
#include "widgets.h"

#include <QMenu>
#include <QSettings>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

const QString kEla = QStringLiteral("Ela");    // in the place of an axis
const QString kRoom = QStringLiteral("     "); // for the finger, behind the entries of a menu

// By wheel, as the journal names them.
const char* const kWheels[] = {"'Левый'", "'Правый'", "'Выносной'"};

const char* const kAxes[] = {"LX", "LY", "A", "B", "C", "D", "U", "V"};

bool isAxis(const QString& name)
{
    return std::find(std::begin(kAxes), std::end(kAxes), name) != std::end(kAxes);
}

QString axisText(const QString& name)
{
    return QStringLiteral("Ось ") + name;
}

// What one detent of a wheel commands, in the controller's thousandths.
struct Multiplier
{
    const char* text;
    qint64 step;
};

const Multiplier kMultipliers[] = {{"x0.01", 10}, {"x0.05", 50}, {"x0.1", 100}, {"x1", 1000}};

// An index that no menu has written, from a spoiled settings file, stands for the finest step.
const Multiplier& stepOf(int index)
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

Handwheels::Handwheels(const std::array<Labels, 3>& labels, std::function<int(const QString&)> maxSpeed,
                       QObject* parent)
    : QObject(parent)
    , m_wheels{{{labels[Left], {}}, {labels[Right], {}}, {labels[Remote], {}}}}
    , m_maxSpeed(std::move(maxSpeed))
{}

QStringList Handwheels::axes()
{
    return {std::begin(kAxes), std::end(kAxes)};
}

void Handwheels::turn(Wheel wheel, int detents)
{
    const QString& axis = m_wheels[wheel].turns;
    if (isAxis(axis))
        step(axis, detents, m_multipliers.value(axis));
}

// The maximum of the pair U stands under "U1", so the speed sent for it is 0: the controller's programs have
// never seen another.
void Handwheels::step(const QString& axis, int detents, int multiplier)
{
    emit command(QStringLiteral("LIR(%1,%2,%3)")
                     .arg(axis)
                     .arg(stepOf(multiplier).step * detents)
                     .arg(m_maxSpeed(axis)));
}

void Handwheels::turnPanel(int detents)
{
    emit command(QStringLiteral("HANDWHEEL(%1)").arg(detents * 100));
}

void Handwheels::openMenu(Wheel wheel)
{
    QString& turns = m_wheels[wheel].turns;
    const bool takesAxis = wheel != Remote;
    WheelMenu menu;
    QMap<QAction*, QString> axisEntries;
    for (const QString& axis : takesAxis ? axes() : QStringList())
        axisEntries.insert(menu.add(axisText(axis) + kRoom, turns == axis), axis);
    QAction* ela = menu.add(QStringLiteral("ЭЛА") + kRoom, turns == kEla);
    if (takesAxis)
        menu.addSeparator();
    QAction* unused = menu.add(QStringLiteral("Не использовать") + kRoom, turns.isEmpty());
    menu.addSeparator();
    QMap<QAction*, int> steps;
    if (isAxis(turns)) {
        const Multiplier* present = &stepOf(m_multipliers.value(turns));
        for (int i = 0; i < int(std::size(kMultipliers)); ++i)
            steps.insert(menu.add(QLatin1String(kMultipliers[i].text), present == &kMultipliers[i]), i);
    }

    QAction* chosen = menu.exec(m_wheels[wheel].labels.menu);
    if (!chosen)
        return;
    if (chosen == unused) {
        free(wheel);
    } else if (chosen == ela) {
        giveToEla(wheel);
    } else {
        if (axisEntries.contains(chosen))
            turns = axisEntries.value(chosen);
        else
            m_multipliers[turns] = steps.value(chosen);
        showAxes();
        emit message(QStringLiteral("[I]На штурвал %1 установлен параметр %2 с шагом %3")
                         .arg(QString::fromUtf8(kWheels[wheel]), axisText(turns),
                              QLatin1String(stepOf(m_multipliers.value(turns)).text)),
                     true);
    }
}

void Handwheels::takeRemote()
{
    const PoLabel* label = m_wheels[Remote].labels.menu;
    for (QMenu* menu : label->window()->findChildren<QMenu*>(WheelMenu::nameOf(label)))
        menu->close();
    free(Remote);
}

void Handwheels::free(Wheel wheel)
{
    m_wheels[wheel].labels.use->setText(QStringLiteral("Отключен"));
    m_wheels[wheel].turns.clear();
    emit message(QStringLiteral("[I]Штурвал %1 отключен").arg(QString::fromUtf8(kWheels[wheel])), true);
}

void Handwheels::giveToEla(Wheel wheel)
{
    m_wheels[wheel].labels.use->setText(QStringLiteral("ЭЛА"));
    m_wheels[wheel].turns = kEla;
    emit message(QStringLiteral("[I]Штурвал %1 передан в ЭЛА").arg(QString::fromUtf8(kWheels[wheel])), true);
}

bool Handwheels::isElas(Wheel wheel) const
{
    return m_wheels[wheel].turns == kEla;
}

void Handwheels::showAxes()
{
    for (const State& wheel : m_wheels) {
        if (isAxis(wheel.turns))
            wheel.labels.use->setText(axisText(wheel.turns) + QLatin1Char('\n') +
                                      QLatin1String(stepOf(m_multipliers.value(wheel.turns)).text));
    }
}

void Handwheels::load(const QSettings& settings)
{
    for (const QString& axis : axes())
        m_multipliers[axis] = settings.value(QStringLiteral("LIR/") + axis, 0).toInt();
}

void Handwheels::save(QSettings& settings) const
{
    for (const QString& axis : axes())
        settings.setValue(QStringLiteral("LIR/") + axis, m_multipliers.value(axis));
}
