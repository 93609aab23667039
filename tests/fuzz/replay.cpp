// Without libFuzzer: gives a target its kept inputs, and then for some seconds what comes of them when a
// seeded hand mangles them. The input under way stands in the file "fuzz-TARGET", which is still there when
// one ends the process: fuzz TARGET SECONDS FILE|FOLDER...
#include "fuzz.h"

#include <QApplication>
#include <QElapsedTimer>

namespace {

constexpr unsigned patience = 20; // s for an input, on a computer that does much else

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    fuzzCheck(argc > 3, "usage: fuzz TARGET SECONDS FILE|FOLDER...");
    const auto target = fuzzTarget(argv[1]);
    QFile underWay(QStringLiteral("fuzz-") + argv[1]);
    const auto give = [&](const QByteArray& input) {
        fuzzCheck(underWay.open(QIODevice::WriteOnly) && underWay.write(input) == input.size(), "no file");
        underWay.close();
        alarm(patience);
        fuzzTake(*target, input);
    };
    QVector<QByteArray> kept;
    const auto keep = [&](const QString& path) {
        QFile file(path);
        if (file.open(QIODevice::ReadOnly))
            kept << file.readAll();
    };
    for (const QString& path : app.arguments().mid(3)) {
        keep(path);
        for (QDirIterator i(path, QDir::Files); i.hasNext();)
            keep(i.next());
    }
    fuzzCheck(!kept.isEmpty(), "there is no input");
    for (const QByteArray& input : qAsConst(kept))
        give(input);
    std::mt19937 random(1); // the same each time: a fault that is told today is told tomorrow
    const auto any = [&]() -> const QByteArray& { return kept.at(int(random() % unsigned(kept.size()))); };
    QElapsedTimer clock;
    int mangled = 0;
    for (clock.start(); clock.elapsed() < app.arguments()[2].toInt() * 1000LL; ++mangled) {
        QByteArray input = any();
        for (int times = 1 + int(random() % 6); times > 0; --times)
            input = fuzzMangled(input, any(), random);
        give(random() % 200 == 0 ? fuzzSwollen(input, random) : input);
    }
    underWay.remove();
    std::printf("fuzz %s: %d kept, %d mangled\n", argv[1], kept.size(), mangled);
    return 0;
}
