#include "touchmenu.h"

#include <QLabel>
#include <QMenu>
#include <QWidgetAction>

namespace {

const char* const menuLook = "QMenu { background: white; border: 2px solid #3c4a6b; font-size: 15pt; }"
                             "QMenu::item { min-height: 50px; padding: 0px 16px; color: black;"
                             " border-top: 1px solid #c4cbdb; }"
                             "QMenu::item:selected { background: #00d6ff; color: black; }";
const char* const titleLook = "background: #3c4a6b; color: white; font-size: 14pt; font-weight: bold;"
                              "padding: 8px 16px;";

} // namespace

QString touchMenuLook()
{
    return QLatin1String(menuLook);
}

int touchMenu(QWidget* button, const QString& title, const QStringList& entries)
{
    QMenu menu(title, button->window()); // the button may be disabled while the menu is open
    menu.setStyleSheet(touchMenuLook());
    auto* head = new QWidgetAction(&menu);
    auto* label = new QLabel(title);
    label->setStyleSheet(QLatin1String(titleLook));
    head->setDefaultWidget(label);
    head->setEnabled(false);
    menu.addAction(head);
    QList<QAction*> actions;
    for (const QString& entry : entries)
        actions << menu.addAction(entry);
    return actions.indexOf(menu.exec(button->mapToGlobal(QPoint(0, button->height()))));
}
