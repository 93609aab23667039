#pragma once

#include "plant/inputlines.h"

#include <QEvent>
#include <QImage>
#include <QPointer>
#include <QProcess>
#include <QSharedMemory>
#include <QTimer>
#include <QWidget>

#include <functional>

// A window that shows the console scaled to any screen. The console itself runs in a process of its own
// without a display, at the panel's full size; its picture travels through a shared segment of 32-bit
// pixels, touches and keys travel back as lines on its standard input:
//
//   d X Y | u X Y | m X Y     finger down, up, moved; pixels of the panel
//   k CODE MODIFIERS TEXT     a key, Qt's numbers, the text percent-encoded
//   i LINE                    a line of the instructor
//
// and on its standard output "frame" tells that the segment holds a new picture, "said LINE" what the
// installation has said.

// In the process of the console.
class MirrorSource : public QObject
{
    Q_OBJECT

public:
    // Attaches to the segment `key`. Lines of the instructor go to `instruct`.
    MirrorSource(const QString& key, std::function<void(const QString&)> instruct, QObject* parent = nullptr);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void show();
    void take(const QByteArray& line);
    void touch(const QPoint& at, QEvent::Type type);

    std::function<void(const QString&)> m_instruct;
    QSharedMemory m_picture;
    QTimer m_period;
    bool m_changed = true;
    QPointer<QWidget> m_touched; // holds the finger from its press to its lifting
    InputLines m_input;
};

// In the process with the screen.
class MirrorWindow : public QWidget
{
    Q_OBJECT

public:
    // Starts `program` with `arguments` and the key of the segment, and ends when it ends.
    MirrorWindow(const QString& program, const QStringList& arguments);
    ~MirrorWindow() override;

    // One line of the instructor.
    void instruct(const QString& line);

    // Stands above the picture from now on; nothing for an empty text.
    void tell(const QString& text);

signals:
    void said(const QString& line); // by the installation, when the console's process passes it on

protected:
    void paintEvent(QPaintEvent*) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void send(const QByteArray& line);
    void sendTouch(char what, const QPoint& at);
    void readConsole();
    void takePicture();
    int bandHeight() const; // of what the trainee is told
    QRect place() const;    // of the picture in this window

    QSharedMemory m_memory;
    QProcess m_console;
    QImage m_picture;
    QString m_told;
};
