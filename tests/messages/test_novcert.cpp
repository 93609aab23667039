#include "novcert.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtEndian>
#include <QtTest>

#include <csignal>
#include <cstring>

#include <sys/resource.h>

using namespace NovCertFormat3;

namespace {

struct Handler : AbstractErrorHandler
{
    void OnError(int code) override { codes << code; }
    QList<int> codes;
};

struct TestPlot : Plot
{
    using Plot::Plot;
    quint16 GetValue() const override { return value; }
    quint16 value = 0;
};

// Reads a file from the description of its format alone, front to back.
class Reader
{
public:
    explicit Reader(const QString& fileName)
    {
        QFile file(fileName);
        if (file.open(QIODevice::ReadOnly))
            m_bytes = file.readAll();
    }
    template <typename T>
    T number()
    {
        if (m_at + int(sizeof(T)) > m_bytes.size()) {
            m_short = true;
            return T();
        }
        const T value = qFromLittleEndian<T>(m_bytes.constData() + m_at);
        m_at += int(sizeof(T));
        return value;
    }
    QString text(int length)
    {
        m_short = m_short || m_at + length > m_bytes.size();
        m_at += length;
        return QString::fromUtf8(m_bytes.mid(m_at - length, length));
    }
    bool cutShort() const { return m_short; }
    int left() const { return m_bytes.size() - m_at; }

private:
    QByteArray m_bytes;
    int m_at = 0;
    bool m_short = false;
};

} // namespace

class TestNovCert : public QObject
{
    Q_OBJECT

private slots:
    void aReaderOfTheFormatFindsEverything();
    void startBeginsTheFileAnew();
    void anEmptyRecorderHasItsHeadOnly();
    void faultsAreTold();
};

void TestNovCert::aReaderOfTheFormatFindsEverything()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("run.cert");
    Handler handler;
    Writer writer(&handler, path, 0x01020304);
    InformationBlock welder("Сварщик", "Иванов");
    InformationBlock empty("", "");
    InformationBlock gone("gone", "gone");
    TestPlot beam("Ток луча", "мА", 0);
    beam.value = 0x1234;
    TestPlot path2("Путь", "мм", 2);
    TestPlot none("", "", 1);
    Graph set("уставка", QColor(1, 2, 255));
    Graph actual("факт", QColor(0, 128, 64));
    Graph way("s", Qt::black);
    beam.AddItem(&set);
    beam.AddItem(&actual);
    path2.AddItem(&way);
    writer.InformationBlocks().AddItem(&welder);
    writer.InformationBlocks().AddItem(&gone);
    writer.InformationBlocks().AddItem(&empty);
    writer.InformationBlocks().RemoveItem(&gone);
    for (Plot* plot : {&path2, &beam, &none}) // a count of graphs is never that of the plots behind
        writer.Plots().AddItem(plot);

    // Each sample is the number of the one before it.
    int told = 0;
    set.SetValue(-1.5F);
    connect(&writer, &Writer::OnUpdate, this, [&] { way.SetValue(float(++told)); });
    QElapsedTimer clock;
    clock.start();
    writer.Start();
    QTRY_VERIFY(told >= 5);
    QVERIFY(clock.elapsed() >= 450);
    writer.Stop();
    const int samples = told;
    QTest::qWait(250);
    QCOMPARE(told, samples);

    Reader file(path);
    QCOMPARE(int(file.number<quint8>()), 0x43);
    QCOMPARE(int(file.number<quint8>()), 0x4E);
    QCOMPARE(int(file.number<quint16>()), 100);
    QCOMPARE(file.number<quint32>(), 2U);
    QCOMPARE(file.number<quint32>(), 0x01020304U);
    const QPair<QString, QString> blocks[] = {{"Сварщик", "Иванов"}, {"", ""}};
    for (const auto& block : blocks) {
        const auto name = int(file.number<quint32>());
        const auto value = int(file.number<quint32>());
        QCOMPARE(file.text(name), block.first);
        QCOMPARE(file.text(value), block.second);
    }
    QStringList found;
    int graphs = 0;
    int following = 0;
    do {
        const int name = file.number<quint16>();
        const int unit = file.number<quint16>();
        const int kind = file.number<quint16>();
        const int count = file.number<quint16>();
        following = file.number<quint16>();
        found << file.text(name); // one after the other: each reads on
        found.last() += "|" + file.text(unit);
        found.last() += "|" + QString::number(kind);
        if (kind <= 1)
            found << QString::number(file.number<quint16>(), 16);
        for (int i = 0; i < count; ++i, ++graphs) {
            QStringList parts;
            for (int part = 0; part < 4; ++part)
                parts << QString::number(file.number<quint8>());
            found << parts.join(',') + " " + file.text(file.number<quint16>());
        }
    } while (following > 0 && !file.cutShort());
    QCOMPARE(found, QStringList({"Путь|мм|2", "0,0,0,0 s", "Ток луча|мА|0", "1234", "1,2,255,0 уставка",
                                 "0,128,64,0 факт", "||1", "0"}));
    QCOMPARE(file.left(), samples * graphs * 4);
    for (int i = 0; i < samples; ++i) {
        QCOMPARE(file.number<float>(), float(i));
        QCOMPARE(file.number<float>(), -1.5F);
        QCOMPARE(file.number<float>(), 0.0F);
    }
    QVERIFY(!file.cutShort());
    QVERIFY(handler.codes.isEmpty());
}

void TestNovCert::startBeginsTheFileAnew()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("run.cert");
    Handler handler;
    Writer writer(&handler, path, 100);
    TestPlot plot("a", "b", 7);
    Graph graph("c", Qt::red);
    plot.AddItem(&graph);
    writer.Plots().AddItem(&plot);
    writer.Start();
    const qint64 head = QFileInfo(path).size();
    QCOMPARE(head, qint64(12 + 10 + 2 + 6 + 1));
    QTRY_VERIFY(QFileInfo(path).size() >= head + 8);
    writer.Start();
    QCOMPARE(QFileInfo(path).size(), head);
    QVERIFY(writer.IsRunning());
}

void TestNovCert::anEmptyRecorderHasItsHeadOnly()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("run.cert");
    Handler handler;
    Writer writer(&handler, path, 7);
    QSignalSpy updates(&writer, &Writer::OnUpdate);
    writer.Start();
    QTRY_VERIFY(updates.size() >= 2);
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("\x43\x4E\x64\0\0\0\0\0\x07\0\0\0", 12));
}

void TestNovCert::faultsAreTold()
{
    QTemporaryDir folder;
    Handler handler;
    Writer nowhere(&handler, folder.filePath("missing/run.cert"), 100);
    nowhere.Start();
    QCOMPARE(handler.codes, QList<int>({0}));
    QVERIFY(!nowhere.IsRunning());

    Writer full(&handler, "/dev/full", 100);
    full.Start();
    QCOMPARE(handler.codes, QList<int>({0, 4}));
    QVERIFY(!full.IsRunning());

    // A disk with room for the head and half a sample.
    TestPlot plot("a", "b", 7);
    Graph graph("c", Qt::red);
    plot.AddItem(&graph);
    Writer writer(&handler, folder.filePath("run.cert"), 100);
    writer.Plots().AddItem(&plot);
    signal(SIGXFSZ, SIG_IGN);
    rlimit former{};
    getrlimit(RLIMIT_FSIZE, &former);
    rlimit narrow = former;
    narrow.rlim_cur = 31 + 2;
    setrlimit(RLIMIT_FSIZE, &narrow);
    writer.Start();
    const bool started = writer.IsRunning();
    QElapsedTimer clock;
    clock.start();
    while (writer.IsRunning() && clock.elapsed() < 5000)
        QTest::qWait(20);
    setrlimit(RLIMIT_FSIZE, &former);
    QVERIFY(started);
    QCOMPARE(handler.codes, QList<int>({0, 4, 5}));
}

QTEST_GUILESS_MAIN(TestNovCert)

#include "test_novcert.moc"
