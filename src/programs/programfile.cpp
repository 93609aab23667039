#include "programfile.h"

#include "filewriter.h"

QString startCommand(int channel, const QString& path)
{
    return QStringLiteral("EXEC_%1(%2)").arg(QString::number(channel), path);
}

std::optional<QString> writeProgramFile(const QString& path, const QString& text)
{
    constexpr QFileDevice::Permissions everyone(0x777); // user, group, others

    const auto trouble = writeFile(path, text.toLocal8Bit(), everyone);
    if (!trouble)
        return {};
    return trouble->line + QStringLiteral(", программа не запущена");
}
