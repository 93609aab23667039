#pragma once

#include <QMutex>
#include <QStringList>
#include <QtGlobal>

// Keeps what the console sends to the motion controller, from its own debug output.
class CommandLog
{
public:
    CommandLog()
    {
        lines().clear();
        s_former = qInstallMessageHandler(take);
    }
    ~CommandLog() { qInstallMessageHandler(s_former); }
    CommandLog(const CommandLog&) = delete;
    CommandLog& operator=(const CommandLog&) = delete;

    // The commands so far, in order.
    static QStringList commands()
    {
        const QMutexLocker lock(&mutex());
        return lines();
    }

    static void clear()
    {
        const QMutexLocker lock(&mutex());
        lines().clear();
    }

    // How many of them begin so.
    static int count(const QString& beginning)
    {
        int n = 0;
        for (const QString& command : commands())
            n += command.startsWith(beginning);
        return n;
    }

private:
    static void take(QtMsgType type, const QMessageLogContext& context, const QString& text)
    {
        static const QString mark = QStringLiteral("DriveTCPthread: > \"");
        if (text.startsWith(mark)) {
            const QMutexLocker lock(&mutex());
            lines() << text.mid(mark.size()).chopped(1);
        }
        if (s_former && type != QtDebugMsg)
            s_former(type, context, text);
    }

    static QMutex& mutex()
    {
        static QMutex instance;
        return instance;
    }
    static QStringList& lines()
    {
        static QStringList instance;
        return instance;
    }
    static inline QtMessageHandler s_former = nullptr;
};
