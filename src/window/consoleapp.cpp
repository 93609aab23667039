#include "consoleapp.h"

#include "endsignals.h"
#include "gui.h"
#include "repaintpace.h"
#include "singleinstance.h"
#include "styleloader.h"
#include "widgets.h"

#include <QApplication>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace {

// When the screen goes away, as it may at the end of a session before any signal is heard, the toolkit ends
// the process where it stands. The window lives on to the end of the exit handlers.
class LastWindow
{
public:
    explicit LastWindow(Gui* window)
    {
        static const int registered = std::atexit([] {
            if (s_window)
                std::exchange(s_window, nullptr)->saveWork();
        });
        Q_UNUSED(registered);
        s_window = window;
    }
    ~LastWindow() { s_window = nullptr; }

private:
    static inline Gui* s_window = nullptr;
};

} // namespace

int runConsole()
{
    if (!checkSingleInstance()) {
        std::fputs("poMIRTA already running\n", stderr);
        return -1;
    }
    EndSignals end; // before the window, whose construction may open boxes
    Gui gui;
    const LastWindow last(&gui);
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
