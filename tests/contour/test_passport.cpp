#include "contour.h"

#include "contourfixture.h"
#include "deathtest.h"

#include <QDateTime>
#include <QPlainTextEdit>
#include <QProcess>
#include <QSharedMemory>
#include <QTextCodec>
#include <QtTest>

#include <cstring>

namespace {

// A closed triangle of 12 mm run twice, with a raster, a comment and a row switched off below it.
const char closedWeld[] = "Seam\nXYZ\n-1 0 0\n3 -1\n1 2\n900\n3\n"
                          "0.00 0.00 0.00 1 0 0 0 \n3.00 0.00 0.00 1 0 0 0 \n0.00 4.00 0.00 1 0 0 0 \n5\n"
                          "+ 0.00 0.0 700 0.0 0.0 900.0 2 \n"
                          "+ 1.00 20.0 710 0.0 0.0 1200.0 1 2 10 20.5 45 100 0 -1.25 3 1\n"
                          "- Прихватки\n"
                          "+ 5.00 20.0 700 0.0 0.0 600.0 0 \n"
                          "+ 24.00 0.0 700 0.0 0.0 1200.0 2 \n";
const char openWeld[] = "Line\nXYZ\n-1 0 0\n2 -1\n0 1\n600\n2\n"
                        "0.00 0.00 0.00 1 0 0 0 \n5.00 0.00 0.00 0 \n2\n"
                        "+ 0.00 0.0 700 0.0 0.0 600.0 2 \n+ 5.00 0.0 700 0.0 0.0 600.0 2 \n";

QByteArray ansi(const QString& text)
{
    return QTextCodec::codecForName("Windows-1251")->fromUnicode(text);
}

QString number(double value, int decimals)
{
    return QLocale::system().toString(value, 'f', decimals).remove(QLocale::system().groupSeparator());
}

class Window : public ContourWindow
{
public:
    QString getUserName() const override { return QStringLiteral("Оператор Иванов"); }
    float pressure() const override { return 0.00125F; }
};

} // namespace

class TestPassport : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void shortForm();
    void aChannelThatNeverRoseLeavesTwoSamples();
    void longFormOfAClosedContour();
    void longFormOfAnOpenContour();
    void noFolderOrProgramNoRecord();
    void noSecondStartDuringARecord();
    void dataHaveTheCommaOfTheLocale();

private:
    void open(const char* weld);
    void set(const char* edit, const QString& text)
    {
        m_window->find<QPlainTextEdit>(edit)->setPlainText(text);
    }
    QStringList files() const { return QDir(m_folder).entryList(QDir::Files); }
    QByteArray content() const;
    // Date and time of the head, as the file's name has them.
    QString date() const { return m_start.toString("dd-MM-yyyy"); }
    QString time() const { return m_start.toString("hh:mm:ss"); }
    void takeName(const QString& program);

    std::unique_ptr<SiteFixture> m_site;
    std::unique_ptr<Window> m_window;
    CONTOUR* m_contour = nullptr;
    QString m_folder;
    QDateTime m_start;
};

void TestPassport::init()
{
    m_site = std::make_unique<SiteFixture>();
    m_folder = site().path("/home/oper/bin/passports");
}

void TestPassport::cleanup()
{
    m_window.reset();
    m_site.reset();
}

void TestPassport::open(const char* weld)
{
    QFile file(site().programDir() + "/contours/contour.save");
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(weld);
    file.close();
    m_window = std::make_unique<Window>();
    m_contour = m_window->open();
    m_contour->onUserChanged(0);
    m_window->axes = {{"LX", 1.5F},   {"LY", -2.25F}, {"A", 3},  {"B", 4},
                      {"C", 1234.5F}, {"D", 6},       {"U1", 7}, {"V", 359.99F}};
}

QByteArray TestPassport::content() const
{
    QFile file(m_folder + "/" + files().value(0));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TestPassport::takeName(const QString& program)
{
    QCOMPARE(files().size(), 1);
    const QString name = files().first();
    m_start = QDateTime::fromString(name.left(19), "yyyy-MM-dd-hh-mm-ss");
    const qint64 age = m_start.secsTo(QDateTime::currentDateTime());
    QVERIFY2(m_start.isValid() && age >= 0 && age < 60, qPrintable(name));
    QCOMPARE(name.mid(19), "-" + program + ".csv");
}

void TestPassport::shortForm()
{
    open(openWeld);
    set("teGcode", "N1 $1\nN2 G4 F\"1\"\nN3 M30");
    m_contour->onChannel1State(3);
    m_contour->onAxisMoving(true);
    m_window->press("pbRun");
    takeName("contour");
    const QString head = "\"_temp\"\n"
                         "\"Дата: " +
                         date() +
                         "\"\n"
                         "\"Сварщик: Оператор Иванов\"\n"
                         "\"Время запуска: " +
                         time() +
                         "\"\n"
                         "\n"
                         "\"ПРОГРАММА ПЕРЕМЕЩЕНИЯ (канал 1)\"\n"
                         "\"N1 $1\";\n\"N2 G4 F\"1\"\";\n\"N3 M30\";\n"
                         "\n"
                         "\"Время\";\"LX\";\"LY\";\"A\";\"B\";\"C\";\"D\";\"U1\";\"V\";\n";
    const auto sample = [](double time, double path) {
        return number(time, 1) + ";" + number(path, 2) + ";" + number(1.5, 2) + ";" + number(-2.25, 2) + ";" +
               number(3, 2) + ";" + number(4, 2) + ";" + number(1234.5, 2) + ";" + number(6, 2) + ";" +
               number(7, 2) + ";" + number(359.99, 2) + ";";
    };
    // The first sample is there at once.
    QCOMPARE(content(), ansi(head + sample(0, 0)));
    QCOMPARE(m_window->tech()->currentRow(), 0);

    // 1 mm with each sample, and no more than the seam's 5 mm.
    const auto soFar = [&](int count) {
        QString text = head;
        for (int i = 0; i < count; ++i)
            text += sample(i * 0.1, qMin(double(i), 5.0));
        return ansi(text);
    };
    QTRY_VERIFY(content().size() >= soFar(8).size());
    m_contour->onAxisMoving(false); // the path stands, the samples go on
    QTRY_VERIFY(content().size() >= soFar(10).size());
    m_contour->onChannel1State(1);
    QTRY_COMPARE(m_window->tech()->currentRow(), 1);
    const QByteArray whole = content();
    const int count = (whole.count(';') - ansi(head).count(';')) / 10;
    QCOMPARE(whole, soFar(count));
    // It is closed: time goes on, the file does not, and another one may begin.
    QTest::qWait(250);
    QCOMPARE(content(), whole);
    QVERIFY(QFile::remove(m_folder + "/" + files().first()));
    m_window->press("pbRun");
    QCOMPARE(files().size(), 1);
}

void TestPassport::aChannelThatNeverRoseLeavesTwoSamples()
{
    open(openWeld);
    set("teGcode", "");
    m_contour->onChannel1State(2);
    m_window->press("pbRun");
    QTRY_COMPARE(m_window->tech()->currentRow(), 1);
    const QByteArray data = content().mid(content().lastIndexOf('\n') + 1);
    QCOMPARE(data.count(';'), 20);
    QVERIFY(data.startsWith(ansi(number(0, 1) + ";" + number(0, 2) + ";")));
    QVERIFY(content().contains(ansi("(канал 1)\"\n\"\";\n\n"))); // an empty program is one empty line
}

void TestPassport::longFormOfAClosedContour()
{
    open(closedWeld);
    m_window->touchCell(m_window->tech(), 2, 0); // the comment switches off the row below it
    QSharedMemory beam("ELA_SHM_KEY" + site().shmSuffix);
    QVERIFY(beam.attach());
    const auto put = [&beam](int offset, auto value) {
        std::memcpy(static_cast<char*>(beam.data()) + offset, &value, sizeof value);
    };
    const std::pair<int, float> reals[] = {
        {268, 20.04F}, {236, 19.96F}, {132, 710.4F}, {128, 709.6F}, {144, -3}, {152, 4},
        {220, 1.2F},   {224, 85.5F},  {212, 50},     {216, 2.9F},   {368, 10}, {372, 20.5F},
        {384, 45},     {396, 100},    {388, 0},      {392, -1.25F}, {376, 3},  {52, 0.002F}};
    for (const auto& real : reals)
        put(real.first, real.second);
    put(364, qint32(2));
    put(380, qint32(1));
    put(320, qint32(1));

    m_window->press("pbGcode"); // a weld: what is recorded from now on has the long form
    set("teGcode", "N1 $1");
    set("teGcode_2", "N1 $2\nN2 M30");
    set("teGcode_3", "N1 $3");
    m_contour->onChannel3State(3);
    m_contour->onAxisMoving(true);
    QList<int> rows;
    connect(m_window->tech(), &QTableWidget::currentCellChanged, this, [&rows](int row) { rows << row; });
    m_window->shownName = "Шов";
    m_contour->startPassport();
    takeName("Шов");

    const QString head =
        "\"Шов\"\n"
        "\"Дата: " +
        date() +
        "\"\n"
        "\"Сварщик: Оператор Иванов\"\n"
        "\"Время запуска: " +
        time() + "\"\n" + "\"Длина прохода: " + number(12, 2) +
        " мм\"\n"
        "\"Число проходов: 2\"\n"
        "\"Скорость: 900.0 мм/мин\"\n"
        "\n"
        "\"Контур:\"\n"
        "\"0.00 0.00 0.00 Прямая \"\n"
        "\"3.00 0.00 0.00 Прямая \"\n"
        "\"0.00 4.00 0.00 Прямая \"\n"
        "\"Технология:\"\n"
        "\"+ 0.00 0.0 700 900.0 2 \";\n"
        "\"+ 1.00 20.0 710 1200.0 1 2 10 20.5 45 100 0 -1.25 3 1\";\n"
        "\"- Прихватки\";\n"
        "\"+ 5.00 20.0 700 600.0 0 \";\n"
        "\"+ 24.00 0.0 700 1200.0 2 \";\n"
        "\n"
        "\"ПРОГРАММА ПЕРЕМЕЩЕНИЯ (канал 1)\"\n\"N1 $1\";\n"
        "\"ПРОГРАММА ВРАЩЕНИЯ ДЕТАЛИ (канал 2)\"\n\"N1 $2\";\n\"N2 M30\";\n"
        "\n"
        "\"ПРОГРАММА СВАРКИ (канал 3)\"\n\"N1 $3\";\n"
        "\n"
        "\"Время\";\"Путь\";\"LX\";\"LY\";\"A\";\"B\";\"C\";\"D\";\"U1\";\"V\";"
        "\"Уст. I луча\";\"I луча\";\"Уст. I фок.\";\"I фок.\";\"I откл.X\";\"I откл.Y\";\"Ub бомб.\";"
        "\"Ib бомб.\";\"U уск.\";\"U зап.\";\"Тип ТР\";\"Ампл.X\";\"Ампл.Y\";\"Угол\";\"Час-та\";\"Смещ.X\";"
        "\"Смещ.Y\";\"Д.пар.\";\"По ч.с.\";\"ТР\";\"P пушк.\";\"P кам.\";\n"
        "\n";
    const auto lines = [&](int count) {
        QString text = head;
        for (int i = 0; i < count; ++i)
            text +=
                QString("%1.%2;%3.00;1.50;-2.25;3.00;4.00;1234.50;6.00;7.00;359.99;"
                        "20.0;20.0;710;710;-3;4;1.2;85.5;50.0;2.9;2;10.00;20.50;45;100;0.00;-1.25;3.00;1;1;"
                        "2.0e-03;1.2e-03;\n")
                    .arg(i / 10)
                    .arg(i % 10)
                    .arg(qMin(2 * i, 24)); // both passes, and no further
        return ansi(text);
    };
    QTRY_VERIFY(content().size() >= lines(15).size());
    // Over the comment and the row that is switched off.
    QCOMPARE(rows, QList<int>({0, 1, 4}));
    m_contour->onChannel1State(1); // which channel 3 outlives
    QTRY_VERIFY(content().size() >= lines(18).size());
    m_window->tech()->setCurrentCell(1, 0);
    m_contour->onChannel3State(1);
    QTRY_COMPARE(m_window->tech()->currentRow(), 4);
    QCOMPARE(content(), lines(content().count('\n') - ansi(head).count('\n')));
}

void TestPassport::longFormOfAnOpenContour()
{
    open(openWeld);
    m_window->press("pbGcode");
    set("teGcode", "N1 $1");
    set("teGcode_3", "N1 $3");
    m_contour->startPassport();
    const QByteArray file = content();
    QVERIFY(
        file.contains(ansi("\"\n\"Длина шва: " + number(5, 2) + " мм\"\n\"Скорость: 600.0 мм/мин\"\n\n")));
    QVERIFY(!file.contains(ansi("Число проходов")));
    QVERIFY(file.contains(ansi("\"N1 $1\";\n\n\"ПРОГРАММА СВАРКИ (канал 3)\"\n\"N1 $3\";\n\n")));
}

void TestPassport::noFolderOrProgramNoRecord()
{
    open(openWeld);
    QVERIFY(QDir(m_folder).removeRecursively());
    m_window->press("pbRun");
    m_window->press("pbRun"); // nothing is open that could be in the way
    QVERIFY(!QDir(m_folder).exists());

    QVERIFY(QDir().mkpath(m_folder));
    QVERIFY(QDir(site().path("/programs")).removeRecursively());
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression("^file not written"));
    m_window->press("pbRun"); // nothing was started that could be recorded
    QVERIFY(files().isEmpty());
}

void TestPassport::noSecondStartDuringARecord()
{
    open(openWeld);
    m_contour->onChannel1State(3);
    m_window->press("pbRun");
    const QByteArray record = content();
    m_window->press("pbRun");
    QCOMPARE(m_window->journal.last(),
             QStringLiteral("[A]Ошибка! Паспорт предыдущего пуска ещё не закрыт, пуск невозможен!"));
    QVERIFY(content().startsWith(record) && files().size() == 1);
    QVERIFY(deathOf([this] { m_contour->startPassport(); }).contains("!m_ppf.isOpen()"));
}

void TestPassport::dataHaveTheCommaOfTheLocale()
{
    if (QLocale::system().decimalPoint() == QLatin1Char(',')) {
        shortForm();
        QVERIFY(content().contains(";1234,50;"));
        return;
    }
    QProcess russian;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LC_ALL", "ru_RU.UTF-8");
    russian.setProcessEnvironment(environment);
    russian.setProcessChannelMode(QProcess::MergedChannels);
    russian.start(QCoreApplication::applicationFilePath(), {"dataHaveTheCommaOfTheLocale"});
    QVERIFY(russian.waitForFinished(60'000));
    const QByteArray said = russian.readAll();
    QVERIFY2(russian.exitStatus() == QProcess::NormalExit && russian.exitCode() == 0, said.constData());
}

QTEST_MAIN(TestPassport)

#include "test_passport.moc"
