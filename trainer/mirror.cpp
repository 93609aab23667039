#include "mirror.h"

#include "screen.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QUrl>
#include <QWindow>

#include <cstdio>
#include <cstring>
#include <qpa/qwindowsysteminterface.h>

namespace {

constexpr int framePeriod = 50;  // ms
constexpr int endTimeout = 3000; // ms
constexpr int pictureBytes = panelSize.width() * panelSize.height() * 4;

} // namespace

MirrorSource::MirrorSource(const QString& key, std::function<void(const QString&)> instruct, QObject* parent)
    : QObject(parent)
    , m_instruct(std::move(instruct))
    , m_picture(key)
    , m_input(
          // Posted: a touch may open a dialog, whose loop must find the reader free.
          [this](const QByteArray& line) {
              QMetaObject::invokeMethod(
                  this, [this, line] { take(line); }, Qt::QueuedConnection);
          },
          [] { // the window is gone
              QCoreApplication::exit(0);
              return false;
          })
{
    m_picture.attach();
    qApp->installEventFilter(this);
    connect(&m_period, &QTimer::timeout, this, &MirrorSource::show);
    m_period.start(framePeriod);
}

bool MirrorSource::eventFilter(QObject* watched, QEvent* event)
{
    if (watched->isWidgetType()) {
        const QEvent::Type type = event->type();
        m_changed |= type == QEvent::UpdateRequest || type == QEvent::Show || type == QEvent::Hide ||
                     type == QEvent::Move || type == QEvent::Resize;
    }
    return false;
}

void MirrorSource::show()
{
    if (!m_changed || !m_picture.data())
        return;
    m_changed = false;
    const QImage image = screenImage();
    m_picture.lock();
    std::memcpy(m_picture.data(), image.constBits(), pictureBytes);
    m_picture.unlock();
    std::puts("frame");
    std::fflush(stdout);
    m_changed = false; // rendering asks for updates itself
}

void MirrorSource::take(const QByteArray& line)
{
    const QList<QByteArray> words = line.split(' ');
    const QPoint at(words.value(1).toInt(), words.value(2).toInt());
    switch (line.isEmpty() ? '\0' : line.front()) {
    case 'd':
        touch(at, QEvent::MouseButtonPress);
        break;
    case 'u':
        touch(at, QEvent::MouseButtonRelease);
        break;
    case 'm':
        touch(at, QEvent::MouseMove);
        break;
    case 'k': {
        QWindow* window = keyWindow();
        if (!window)
            break;
        const QString text = QUrl::fromPercentEncoding(words.value(3));
        const Qt::KeyboardModifiers modifiers(words.value(2).toInt());
        for (const QEvent::Type type : {QEvent::KeyPress, QEvent::KeyRelease})
            QWindowSystemInterface::handleKeyEvent(window, type, at.x(), modifiers, text);
        break;
    }
    case 'i':
        m_instruct(QString::fromUtf8(line.mid(2)));
        break;
    default:
        qDebug("mirror: unknown line");
        break;
    }
}

void MirrorSource::touch(const QPoint& at, QEvent::Type type)
{
    const bool down = type == QEvent::MouseButtonPress;
    const bool held = m_touched != nullptr;
    QPointer<QWidget> window = held ? m_touched.data() : windowAt(at);
    m_touched = type == QEvent::MouseButtonRelease ? nullptr : down ? window.data() : m_touched.data();
    if (!window || !window->windowHandle())
        return;
    QCursor::setPos(at);
    const Qt::MouseButtons buttons =
        down || (held && type == QEvent::MouseMove) ? Qt::LeftButton : Qt::NoButton;
    QWindowSystemInterface::handleMouseEvent(window->windowHandle(), window->mapFromGlobal(at), at, buttons,
                                             type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, type);
}

MirrorWindow::MirrorWindow(const QString& program, const QStringList& arguments)
    : m_memory(QStringLiteral("mirta_mirror_%1").arg(QCoreApplication::applicationPid()))
    , m_picture(panelSize, QImage::Format_RGB32)
{
    setWindowTitle(QStringLiteral("МИРТА"));
    setWindowIcon(QIcon(QStringLiteral(":/images/mirta.png")));
    setMouseTracking(true);
    m_picture.fill(Qt::black);
    const QSize room = QGuiApplication::primaryScreen()->availableSize();
    resize(panelSize.boundedTo(panelSize.scaled(room, Qt::KeepAspectRatio)));

    m_memory.create(pictureBytes);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    m_console.setProcessEnvironment(environment);
    m_console.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    connect(&m_console, &QProcess::readyReadStandardOutput, this, &MirrorWindow::readConsole);
    connect(&m_console, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), this,
            [](int code) { QCoreApplication::exit(code); });
    m_console.start(program, QStringList(arguments) << QStringLiteral("--mirror") << m_memory.key());
}

MirrorWindow::~MirrorWindow()
{
    disconnect(&m_console, nullptr, this, nullptr);
    m_console.closeWriteChannel(); // the console ends as by its own button
    if (m_console.state() != QProcess::NotRunning && !m_console.waitForFinished(endTimeout))
        m_console.kill();
    m_console.waitForFinished(endTimeout);
}

void MirrorWindow::instruct(const QString& line)
{
    send("i " + line.toUtf8());
}

void MirrorWindow::send(const QByteArray& line)
{
    m_console.write(line + '\n');
}

QRect MirrorWindow::place() const
{
    const QRect room = rect().adjusted(0, bandHeight(), 0, 0);
    QRect picture(QPoint(), panelSize.scaled(room.size(), Qt::KeepAspectRatio));
    picture.moveCenter(room.center());
    return picture;
}

void MirrorWindow::sendTouch(char what, const QPoint& at)
{
    const QRect picture = place();
    const int x = (at.x() - picture.x()) * panelSize.width() / qMax(1, picture.width());
    const int y = (at.y() - picture.y()) * panelSize.height() / qMax(1, picture.height());
    send(QByteArray(1, what) + ' ' + QByteArray::number(x) + ' ' + QByteArray::number(y));
}

void MirrorWindow::readConsole()
{
    bool frame = false;
    while (m_console.canReadLine()) {
        const QByteArray line = m_console.readLine().trimmed();
        frame = frame || line == "frame";
        if (line.startsWith("said "))
            emit said(QString::fromUtf8(line.mid(5)));
    }
    if (frame)
        takePicture();
}

void MirrorWindow::tell(const QString& text)
{
    m_told = text;
    update();
}

int MirrorWindow::bandHeight() const
{
    return m_told.isEmpty() ? 0 : qMax(48, height() / 12);
}

void MirrorWindow::takePicture()
{
    if (!m_memory.lock())
        return;
    std::memcpy(m_picture.bits(), m_memory.constData(), pictureBytes);
    m_memory.unlock();
    update();
}

void MirrorWindow::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.fillRect(rect(), Qt::black);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(place(), m_picture);
    if (m_told.isEmpty())
        return;
    const QRect band(0, 0, width(), bandHeight());
    painter.fillRect(band, QColor(255, 244, 190));
    QFont font = painter.font();
    font.setPixelSize(qMax(16, bandHeight() / 4));
    painter.setFont(font);
    painter.drawText(band.adjusted(12, 4, -12, -4), Qt::AlignVCenter | Qt::TextWordWrap, m_told);
}

void MirrorWindow::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        sendTouch('d', event->pos());
}

void MirrorWindow::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        sendTouch('u', event->pos());
}

void MirrorWindow::mouseMoveEvent(QMouseEvent* event)
{
    sendTouch('m', event->pos());
}

void MirrorWindow::keyPressEvent(QKeyEvent* event)
{
    send("k " + QByteArray::number(event->key()) + ' ' + QByteArray::number(int(event->modifiers())) + ' ' +
         QUrl::toPercentEncoding(event->text()));
}

void MirrorWindow::closeEvent(QCloseEvent* event)
{
    event->accept();
    QCoreApplication::exit(0);
}
