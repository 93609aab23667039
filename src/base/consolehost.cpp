#include "consolehost.h"

#include <QWidget>

ConsoleHost* ConsoleHost::of(const QWidget* widget)
{
    for (QWidget* w = widget ? widget->parentWidget() : nullptr; w; w = w->parentWidget()) {
        if (auto* host = dynamic_cast<ConsoleHost*>(w))
            return host;
    }
    return nullptr;
}
