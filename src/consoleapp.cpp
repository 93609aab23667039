#include "consoleapp.h"

#include "endsignals.h"
#include "gui.h"
#include "repaintpace.h"
#include "singleinstance.h"
#include "styleloader.h"
#include "widgets.h"

#include <QApplication>

#include <cstdio>

int runConsole()
{
    if (!checkSingleInstance()) {
        std::fputs("poMIRTA already running\n", stderr);
        return -1;
    }
    EndSignals end; // before the window, whose construction may open boxes
    Gui gui;
    QObject::connect(&end, &EndSignals::asked, &gui, &Gui::onEndAsked);
    QApplication::setStyle(new MyWinStyle);
    StyleLoader::attach(StyleLoader::defaultStyleFile(), Qt::Key_F5); // the sheet stands on the style
    new RepaintPace(&gui);
    gui.setWindowTitle(QStringLiteral("Программа управления МИРТА"));
    if (!gui.autorizationAccepted())
        return 0;
    gui.show();
    return QApplication::exec();
}
