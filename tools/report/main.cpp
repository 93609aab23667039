#include "mywinstyle.h"
#include "reportpdf.h"
#include "reportwindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>

namespace {

enum Exit { Fine, Finding, Trouble };

int fail(const QString& why)
{
    std::fprintf(stderr, "mirta-report: %s\n", qPrintable(why));
    return Trouble;
}

// All that can be read goes on paper; what cannot is told.
int print(const QStringList& paths, View view, const QString& pdf)
{
    bool foreign = false;
    bool finding = false;
    for (const QString& file : recordsOf(paths)) {
        const RecordFile run = readRecord(file);
        for (const QString& line : run.troubleLines())
            fail(file + QStringLiteral(": ") + line);
        foreign |= run.kind == RecordFile::Foreign;
        finding |= !run.troubles.isEmpty() || !deviations(run, view.percent).isEmpty();
        if (run.kind != RecordFile::Foreign)
            view.runs << run;
    }
    if (view.runs.isEmpty())
        return fail(QStringLiteral("нет ни одной записи, отчёт не записан"));
    if (view.overPath && !view.hasPath())
        return fail(QStringLiteral("ни в одной записи нет пути, отчёт не записан"));
    QString why;
    if (!writeReport(pdf, view, &why))
        return fail(QStringLiteral("%1 не записан: %2").arg(pdf, why));
    return foreign ? Trouble : finding ? Finding : Fine;
}

} // namespace

int main(int argc, char* argv[])
{
    const bool silent = std::any_of(argv, argv + argc, [](const char* argument) {
        return !qstrncmp(argument, "--pdf", 5) || !qstrcmp(argument, "--help");
    });
    if (silent && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen"); // no window, so no screen is needed
    QApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("mirta-report"));
    QApplication::setStyle(new MyWinStyle);

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Показывает паспорта сварки и файлы самописца, печатает отчёт.\n"
        "Код возврата: 0 — в порядке, 1 — есть отклонения или замечания к файлу, 2 — ошибка."));
    parser.addPositionalArgument(
        "FILE", QStringLiteral("Паспорта (*.csv), файлы самописца (*.dump) или папки."), "FILE...");
    parser.addOptions({{{"h", "help"}, QStringLiteral("Эта справка.")},
                       {"pdf", QStringLiteral("Записать отчёт в файл, окна не показывать."), "OUT"},
                       {"tolerance", QStringLiteral("Допуск, % уставки (5)."), "N", "5"},
                       {"path", QStringLiteral("Кривые по пути, а не по времени.")}});
    if (!parser.parse(app.arguments()))
        return fail(parser.errorText());
    if (parser.isSet("help"))
        parser.showHelp(Fine);
    const QStringList paths = parser.positionalArguments();
    bool good = false;
    View view;
    view.percent = parser.value("tolerance").replace(QLatin1Char(','), QLatin1Char('.')).toDouble(&good);
    view.overPath = parser.isSet("path");
    if (!good || !(view.percent >= 0 && view.percent <= 100))
        return fail(QStringLiteral("допуск — число от 0 до 100"));
    if (parser.isSet("pdf") && paths.isEmpty())
        return fail(QStringLiteral("не указан ни один файл"));
    if (parser.isSet("pdf"))
        return print(paths, view, parser.value("pdf"));

    ReportWindow window(view.percent, view.overPath);
    window.open(paths);
    window.resize(1800, 1000);
    window.show();
    return QApplication::exec();
}
