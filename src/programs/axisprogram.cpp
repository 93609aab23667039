#include "axisprogram.h"

namespace {

// The axis's name in NC programs.
QString axisWord(const QString& name)
{
    if (name == QLatin1String("Z"))
        return QStringLiteral("Y");
    if (name == QLatin1String("U2"))
        return QStringLiteral("U1");
    return name;
}

} // namespace

QString moveCommand(const QString& axis, const QString& speed)
{
    return QStringLiteral("MOVE(%1,%2)").arg(axis, speed);
}

QString axisProgram(int channel, const QString& axis, bool absolute, const QString& value,
                    const QString& speed)
{
    QString text = QStringLiteral("N01 $%1\n").arg(channel);
    if (axis == QLatin1String("V")) // the last weld may have left its ratio
        text += QStringLiteral("N02 ARF()\n");
    text += QStringLiteral("N03 %1 G01 %2=%3 F%4\n")
                .arg(absolute ? QStringLiteral("G90") : QStringLiteral("G91"), axisWord(axis), value, speed);
    text += QStringLiteral("N05 M30\n");
    return text;
}
