#include "gui.h"

#include "settings.h"
#include "storedspeed.h"
#include "ui_gui.h"
#include "widgets.h"

namespace {

// Of the rows with a speed: those of the pairs begin with that of the first.
QStringList speedRows()
{
    return Handwheels::axes() + QStringList{QStringLiteral("X"), QStringLiteral("Z"), QStringLiteral("PHI")};
}

PoLabel* speedLabel(const QWidget* window, const QString& name)
{
    return window->findChild<PoLabel*>(QStringLiteral("speed") + name);
}

} // namespace

// A missing or unreadable file gives all zeros.
void Gui::loadIni()
{
    const Settings settings;
    m_wheels->load(settings);
    for (const QString& axis : speedRows()) {
        const float speed = storedSpeed(float(settings.value(QStringLiteral("speed") + axis, 0).toInt()));
        speedLabel(this, axis)->setValue(speed, 0);
        // The two axes of a pair begin with one speed.
        if (PoLabel* second = speedLabel(this, axis + QLatin1Char('2')))
            second->setValue(speed, 0);
    }
}

void Gui::saveIni()
{
    Settings settings;
    m_wheels->save(settings);
    // Written as they are, with fractions; read back as whole numbers, so that every run begins with
    // speeds that can be read on their labels.
    for (const QString& axis : speedRows()) {
        settings.setValue(QStringLiteral("speed") + axis, speedLabel(this, axis)->value());
    }
}
