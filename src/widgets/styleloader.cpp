#include "styleloader.h"

#include "site.h"

#include <QApplication>
#include <QDebug>
#include <QFile>
#include <QKeyEvent>

StyleLoader::StyleLoader(const QString& file, const QKeySequence& key, QObject* parent)
    : QObject(parent)
    , m_file(file)
    , m_key(key)
{}

void StyleLoader::attach(const QString& file, QKeySequence key)
{
    auto* loader = new StyleLoader(file, key, qApp);
    qApp->installEventFilter(loader);
    loader->setAppStyleSheet();
}

QString StyleLoader::defaultStyleFile()
{
    return site().programDir() + QStringLiteral("/style.qss");
}

void StyleLoader::setAppStyleSheet()
{
    QFile file(m_file);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qDebug().noquote().nospace() << "Cannot open stylesheet file " << m_file;
        return;
    }
    qApp->setStyleSheet(QString::fromUtf8(file.readAll()));
}

bool StyleLoader::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto* press = static_cast<QKeyEvent*>(event);
        if (!m_key.isEmpty() && QKeySequence(press->key() | int(press->modifiers())) == m_key) {
            setAppStyleSheet();
            return true; // once for a press, whatever widgets it would travel through
        }
    }
    return QObject::eventFilter(watched, event);
}
