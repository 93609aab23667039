#include "fulldisk.h"
#include "novcert.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

using namespace NovCertFormat3;

namespace {

struct TestPlot : Plot
{
    using Plot::Plot;
    quint16 GetValue() const override { return value; }
    quint16 value = 0;
};

// A little-endian number of that many bytes.
QByteArray le(quint32 value, int bytes)
{
    QByteArray all(4, '\0');
    qToLittleEndian(value, all.data());
    return all.left(bytes);
}
QByteArray le(float value)
{
    quint32 bits;
    memcpy(&bits, &value, sizeof bits);
    return le(bits, 4);
}
// Two words for each text of a block, behind them the texts; of a plot likewise.
QByteArray texts(int width, const QByteArray& one, const QByteArray& other, const QByteArray& between = {})
{
    return le(quint32(one.size()), width) + le(quint32(other.size()), width) + between + one + other;
}

} // namespace

class TestNovCert : public QObject, AbstractErrorHandler
{
    Q_OBJECT

private slots:
    void init() { codes.clear(); }

    // Byte for byte, from the description of the format.
    void aReaderOfTheFormatFindsEverything()
    {
        Writer writer(this, path, 0x01020304);
        InformationBlock welder("Сварщик", "Иванов");
        InformationBlock empty("", "");
        InformationBlock gone("gone", "gone");
        for (InformationBlock* block : {&welder, &gone, &empty})
            writer.InformationBlocks().AddItem(block);
        writer.InformationBlocks().RemoveItem(&gone);
        TestPlot way("Путь", "мм", 2);
        TestPlot beam("Ток луча", "мА", 0);
        TestPlot none("", "", 1);
        beam.value = 0x1234;
        Graph set("уставка", QColor(1, 2, 255));
        Graph actual("факт", QColor(0, 128, 64));
        Graph path2("s", Qt::black);
        beam.AddItem(&set);
        beam.AddItem(&actual);
        way.AddItem(&path2);
        for (Plot* plot : {&way, &beam, &none}) // a count of graphs is never that of the plots behind
            writer.Plots().AddItem(plot);

        // Each sample is the number of the one before it.
        int told = 0;
        set.SetValue(-1.5F);
        connect(&writer, &Writer::OnUpdate, this, [&] { path2.SetValue(float(++told)); });
        QElapsedTimer clock;
        clock.start();
        writer.Start();
        QTRY_VERIFY(told >= 5);
        QVERIFY(clock.elapsed() >= 450);
        writer.Stop();
        const int samples = told;
        QTest::qWait(250);
        QCOMPARE(told, samples);

        const auto plot = [](const char* name, const char* unit, int kind, int graphs, int following) {
            return texts(2, name, unit, le(kind, 2) + le(graphs, 2) + le(following, 2));
        };
        const auto graph = [](const char* colour, const QByteArray& name) {
            return QByteArray::fromHex(colour) + le(quint32(name.size()), 2) + name;
        };
        QByteArray expected = QByteArray::fromHex("434e64000200000004030201") +
                              texts(4, "Сварщик", "Иванов") + texts(4, "", "") + plot("Путь", "мм", 2, 1, 2) +
                              graph("00000000", "s") + plot("Ток луча", "мА", 0, 2, 1) + le(0x1234, 2) +
                              graph("0102ff00", "уставка") + graph("00804000", "факт") +
                              plot("", "", 1, 0, 0) + le(0, 2);
        for (int i = 0; i < samples; ++i)
            expected += le(float(i)) + le(-1.5F) + le(0.0F);
        QCOMPARE(content(), expected);
        QVERIFY(codes.isEmpty());
    }

    void startBeginsTheFileAnew()
    {
        Writer writer(this, path, 100);
        TestPlot plot("a", "b", 7);
        Graph graph("c", Qt::red);
        plot.AddItem(&graph);
        writer.Plots().AddItem(&plot);
        writer.Start();
        const int head = content().size();
        QCOMPARE(head, 12 + 10 + 2 + 6 + 1);
        QTRY_VERIFY(content().size() >= head + 8);
        writer.Start();
        QCOMPARE(content().size(), head);
        QVERIFY(writer.IsRunning());
        writer.Stop();

        // A disk with room for the head and half a sample.
        const FullDisk full(31 + 2);
        writer.Start();
        QVERIFY(writer.IsRunning());
        QTRY_VERIFY(!writer.IsRunning());
        QCOMPARE(codes, QList<int>{5});
    }

    void emptyOrNoFile()
    {
        {
            Writer writer(this, path, 7);
            const QSignalSpy updates(&writer, &Writer::OnUpdate);
            writer.Start();
            QTRY_VERIFY(updates.size() >= 2);
            QCOMPARE(content(), QByteArray::fromHex("434e64000000000007000000"));
        }
        for (const auto& [place, code] :
             {std::pair(folder.filePath("missing/run.cert"), 0), {"/dev/full", 4}}) {
            Writer writer(this, place, 100);
            writer.Start();
            QCOMPARE(codes, QList<int>{code});
            QVERIFY(!writer.IsRunning());
            codes.clear();
        }
    }

private:
    void OnError(int code) override { codes << code; }
    QByteArray content() const
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    const QTemporaryDir folder;
    const QString path = folder.filePath("run.cert");
    QList<int> codes;
};

QTEST_GUILESS_MAIN(TestNovCert)
#include "test_novcert.moc"
