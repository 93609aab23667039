#include "proof.h"
#include "proofpicture.h"
#include "proofwindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QJsonDocument>

#include <algorithm>
#include <cstdio>

namespace {

int refuse(const QString& text)
{
    std::fprintf(stderr, "mirta-proof: %s\n", text.toLocal8Bit().constData());
    return 2;
}

void addOptions(QCommandLineParser* parser)
{
    parser->setApplicationDescription(QStringLiteral(
        "Проверка сварки до включения луча.\n"
        "Код возврата: 0 — замечаний нет, 1 — есть замечания, 2 — файл не прочитан или не записан."));
    parser->addPositionalArgument(QStringLiteral("FILE.save"),
                                  QStringLiteral("Контур, сохранённый пультом."));
    parser->addOptions({
        {{"h", "help"}, QStringLiteral("Эта справка.")},
        {"pdf", QStringLiteral("Картинка и таблицы на листах A4."), "OUT"},
        {"png", QStringLiteral("Картинка."), "OUT"},
        {"json", QStringLiteral("Все сведения в JSON вместо таблиц.")},
        {"limits", QStringLiteral("Пределы установки из файла."), "FILE"},
        {"window", QStringLiteral("Окно с движком вдоль шва.")},
    });
}

int prove(const QCommandLineParser& parser)
{
    if (parser.positionalArguments().size() != 1)
        return refuse(QStringLiteral("нужен один файл .save (подробно: mirta-proof --help)"));
    const QString file = parser.positionalArguments().first();
    QString error;
    MachineLimits limits;
    if (parser.isSet("limits") && !limits.read(parser.value("limits"), &error))
        return refuse(parser.value("limits") + ": " + error);
    SavedWeld weld;
    if (!readWeld(file, &weld, &error))
        return refuse(file + ": " + error);
    const Proof proof = proveWeld(weld, limits);
    const QByteArray told =
        parser.isSet("json") ? QJsonDocument(proofJson(proof)).toJson() : proofText(proof).toUtf8();
    std::fwrite(told.constData(), 1, std::size_t(told.size()), stdout);
    if (parser.isSet("png") && !writeProofPng(parser.value("png"), proof))
        return refuse(parser.value("png") + QStringLiteral(": не записан"));
    if (parser.isSet("pdf") && !writeProofPdf(parser.value("pdf"), proof))
        return refuse(parser.value("pdf") + QStringLiteral(": не записан"));
    if (parser.isSet("window")) {
        ProofWindow window(proof);
        window.show();
        QApplication::exec();
    }
    return proof.fine() ? 0 : 1;
}

} // namespace

int main(int argc, char* argv[])
{
    // A proof in a terminal needs no screen.
    const bool window =
        std::any_of(argv + 1, argv + argc, [](const char* word) { return qstrcmp(word, "--window") == 0; });
    if (!window && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    app.setApplicationName(QStringLiteral("mirta-proof"));
    QCommandLineParser parser;
    addOptions(&parser);
    if (!parser.parse(app.arguments()))
        return refuse(QStringLiteral("непонятный ключ: %1 (подробно: mirta-proof --help)")
                          .arg(parser.unknownOptionNames().value(0, parser.errorText())));
    if (parser.isSet("help")) {
        const QString help = parser.helpText()
                                 .replace(QLatin1String("Usage:"), QStringLiteral("Вызов:"))
                                 .replace(QLatin1String("[options]"), QStringLiteral("[ключи]"))
                                 .replace(QLatin1String("Options:"), QStringLiteral("Ключи:"))
                                 .replace(QLatin1String("Arguments:"), QStringLiteral("Файл:"));
        std::fputs(qPrintable(help), stdout);
        return 0;
    }
    return prove(parser);
}
