#include "screen.h"

#include <QApplication>
#include <QEvent>
#include <QPainter>
#include <QScreen>
#include <QWidget>

#include <algorithm>
#include <qpa/qplatformscreen.h>
#include <qpa/qwindowsysteminterface.h>

namespace {

// A screen smaller than the panel would cut the console's window to its own size.
class WholeWindow : public QObject
{
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        auto* window = qobject_cast<QWidget*>(watched);
        if (event->type() == QEvent::Show && window && window->isFullScreen()) {
            QMetaObject::invokeMethod(
                window,
                [window] {
                    window->setWindowState(Qt::WindowNoState);
                    window->setGeometry(QRect(QPoint(), panelSize));
                },
                Qt::QueuedConnection);
        }
        return false;
    }
};

// The console's own window lies beneath its dialogs, whatever was shown last.
int floorOf(const QWidget* window)
{
    if (window == QApplication::activePopupWidget() || window->windowType() == Qt::ToolTip)
        return 3;
    if (window == QApplication::activeModalWidget())
        return 2;
    return window->width() < panelSize.width() ? 1 : 0;
}

} // namespace

bool screenHoldsPanel()
{
    // What the platform itself has, whatever takePanel has told the toolkit.
    const QSize real = QGuiApplication::primaryScreen()->handle()->geometry().size();
    return real.width() >= panelSize.width() && real.height() >= panelSize.height();
}

void takePanel(QObject* parent)
{
    if (screenHoldsPanel())
        return;
    qApp->installEventFilter(new WholeWindow(parent));
    QScreen* screen = QGuiApplication::primaryScreen();
    if (screen->geometry().width() >= panelSize.width())
        return;
    const QRect panel(QPoint(), panelSize);
    QWindowSystemInterface::handleScreenGeometryChange(screen, panel, panel);
}

QWidgetList windowsFromTop()
{
    QWidgetList windows;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->isVisible())
            windows << window;
    }
    std::stable_sort(windows.begin(), windows.end(),
                     [](const QWidget* a, const QWidget* b) { return floorOf(a) > floorOf(b); });
    return windows;
}

QWidget* windowAt(const QPoint& point)
{
    for (QWidget* window : windowsFromTop()) {
        if (window->geometry().contains(point) && !window->testAttribute(Qt::WA_TransparentForMouseEvents))
            return window;
    }
    return nullptr;
}

QWindow* keyWindow()
{
    QWidget* top = QApplication::activePopupWidget();
    if (!top)
        top = QApplication::activeModalWidget();
    if (!top)
        top = QApplication::activeWindow();
    return top ? top->windowHandle() : nullptr;
}

QImage screenImage()
{
    QImage image(panelSize, QImage::Format_RGB32);
    image.fill(Qt::black);
    QPainter painter(&image);
    const QWidgetList windows = windowsFromTop();
    for (auto window = windows.crbegin(); window != windows.crend(); ++window)
        (*window)->render(&painter, (*window)->pos());
    return image;
}
