#include "gui.h"

#include "settings.h"
#include "storedspeed.h"
#include "ui_gui.h"
#include "widgets.h"

namespace {

const char* const kMultipliers[] = {"LX", "LY", "A", "B", "C", "D", "U", "V"};
const char* const kSpeeds[] = {"LX", "LY", "A", "B", "C", "D", "U", "V", "X", "Z", "PHI"};

PoLabel* speedLabel(const QWidget* window, const QString& name)
{
    return window->findChild<PoLabel*>(QStringLiteral("speed") + name);
}

} // namespace

// A missing or unreadable file gives all zeros.
void Gui::loadIni()
{
    const Settings settings;
    for (const char* name : kMultipliers) {
        const QString axis = QLatin1String(name);
        m_lirMult[axis] = settings.value(QStringLiteral("LIR/") + axis, 0).toInt();
    }
    for (const char* name : kSpeeds) {
        const QString axis = QLatin1String(name);
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
    for (const char* name : kMultipliers) {
        const QString axis = QLatin1String(name);
        settings.setValue(QStringLiteral("LIR/") + axis, m_lirMult[axis]);
    }
    // Written as they are, with fractions; read back as whole numbers, so that every run begins with
    // speeds that can be read on their labels.
    for (const char* name : kSpeeds) {
        const QString axis = QLatin1String(name);
        settings.setValue(QStringLiteral("speed") + axis, speedLabel(this, axis)->value());
    }
}
