#include "passport.h"

#include "deathtest.h"
#include "sitefixture.h"

#include <QSharedMemory>
#include <QTextCodec>
#include <QtTest>

#include <cstring>

namespace {

// Numbers of the system have a comma here, and blanks between the thousands where nobody forbids them.
const bool russian = qputenv("LC_ALL", "ru_RU.UTF-8");

QByteArray ansi(const QString& text)
{
    return QTextCodec::codecForName("Windows-1251")->fromUnicode(text);
}

TechRow techRow(float path, float speed, bool on = true)
{
    return {false, false, on, path, 0, 0, 0, 0, speed, {}};
}

} // namespace

// The record by itself: what it is given and what then stands in its file.
class TestPassport : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_site = std::make_unique<SiteFixture>();
        m_record = std::make_unique<Passport>();
        const QStringList programs{"N1 $1\nN2 G4 F\"1\"\nN3 M30", "", "N1 $3"};
        m_head = {QDateTime({2031, 2, 3}, {14, 5, 6}),
                  "Шов 1",
                  "Оператор Иванов",
                  programs,
                  false,
                  0,
                  1,
                  0,
                  {},
                  {}};
        m_moment = {true, true, 5, {1.5F, -2.25F, 3, 4, 1234.5F, 6, 7, 359.99F}, 0.00125F, 0, {}};
    }
    void cleanup()
    {
        m_record.reset();
        m_site.reset();
    }

    void shortForm()
    {
        QVERIFY(m_record->open(m_head, 600));
        QString file = "\"_temp\"\n\"Дата: 03-02-2031\"\n\"Сварщик: Оператор Иванов\"\n"
                       "\"Время запуска: 14:05:06\"\n\n"
                       "\"ПРОГРАММА ПЕРЕМЕЩЕНИЯ (канал 1)\"\n"
                       "\"N1 $1\";\n\"N2 G4 F\"1\"\";\n\"N3 M30\";\n\n"
                       "\"Время\";\"LX\";\"LY\";\"A\";\"B\";\"C\";\"D\";\"U1\";\"V\";\n";
        QCOMPARE(content(), ansi(file));
        for (int i = 0; i < 12; ++i) {
            m_moment.moving = i < 4 || i > 5; // the path stands meanwhile, the samples go on
            m_moment.runs = i > 0 && i < 11;  // the first sample ends nothing
            QCOMPARE(m_record->sample(m_moment, i > 0), i < 11);
            QVERIFY(!m_record->follow(m_moment));
            // 1 mm with each sample in motion, and no more than the 5 mm of the seam.
            const int path = i < 4 ? i : i < 6 ? 3 : qMin(i - 2, 5);
            file += QString("%1,%2;%3,00;1,50;-2,25;3,00;4,00;1234,50;6,00;7,00;359,99;")
                        .arg(i / 10)
                        .arg(i % 10)
                        .arg(path);
            QCOMPARE(content(), ansi(file));
        }
        QVERIFY(!m_record->isOpen());
        m_head.programs[0].clear(); // one empty line
        QVERIFY(m_record->open(m_head, 600));
        m_record->sample(m_moment, false);
        QVERIFY(content().contains(ansi("(канал 1)\"\n\"\";\n\n")));
        QVERIFY(content().contains("\"V\";\n0,0;0,00;1,50;")); // from 0 again
    }

    // A closed contour of 12 mm run twice, with a row switched off beneath a comment.
    void longForm()
    {
        publishBeam();
        m_head.programs = QStringList{"N1 $1", "N1 $2\nN2 M30", "N1 $3"};
        m_head.closed = true;
        m_head.length = 12;
        m_head.passes = 2;
        m_head.weldSpeed = 900;
        m_head.contour = QStringList{"0.00 0.00 0.00 Прямая ", "3.00 0.00 0.00 Прямая "};
        m_head.technology = QStringList{"+ 0.00 0.0 700 900.0 2 ", "- Прихватки"};
        TechRow comment = techRow(0, 0, false);
        comment.comment = true;
        const QVector<TechRow> rows{techRow(0, 900), techRow(1, 1200), comment, techRow(5, 600, false),
                                    techRow(24, 1200)};
        m_moment.way = 24;
        m_moment.techRows = rows.size();
        m_moment.techRow = [&rows](int row) { return rows.at(row); };

        m_record->setForm(Passport::Long);
        QVERIFY(m_record->open(m_head, rows.first().speed));
        m_record->setForm(Passport::Short); // of the next one
        QCOMPARE(m_record->form(), Passport::Long);
        QString file =
            "\"Шов 1\"\n\"Дата: 03-02-2031\"\n\"Сварщик: Оператор Иванов\"\n\"Время запуска: 14:05:06\"\n"
            "\"Длина прохода: 12,00 мм\"\n\"Число проходов: 2\"\n\"Скорость: 900.0 мм/мин\"\n\n"
            "\"Контур:\"\n\"0.00 0.00 0.00 Прямая \"\n\"3.00 0.00 0.00 Прямая \"\n"
            "\"Технология:\"\n\"+ 0.00 0.0 700 900.0 2 \";\n\"- Прихватки\";\n\n"
            "\"ПРОГРАММА ПЕРЕМЕЩЕНИЯ (канал 1)\"\n\"N1 $1\";\n"
            "\"ПРОГРАММА ВРАЩЕНИЯ ДЕТАЛИ (канал 2)\"\n\"N1 $2\";\n\"N2 M30\";\n\n"
            "\"ПРОГРАММА СВАРКИ (канал 3)\"\n\"N1 $3\";\n\n"
            "\"Время\";\"Путь\";\"LX\";\"LY\";\"A\";\"B\";\"C\";\"D\";\"U1\";\"V\";"
            "\"Уст. I луча\";\"I луча\";\"Уст. I фок.\";\"I фок.\";\"I откл.X\";\"I откл.Y\";\"Ub бомб.\";"
            "\"Ib бомб.\";\"U уск.\";\"U зап.\";\"Тип "
            "ТР\";\"Ампл.X\";\"Ампл.Y\";\"Угол\";\"Час-та\";\"Смещ.X\";"
            "\"Смещ.Y\";\"Д.пар.\";\"По ч.с.\";\"ТР\";\"P пушк.\";\"P кам.\";\n\n";
        for (int i = 0; i < 16; ++i) {
            m_moment.runs = i < 15;
            QCOMPARE(m_record->sample(m_moment, i > 0), i < 15);
            file +=
                QString("%1,%2;%3,00;1,50;-2,25;3,00;4,00;1234,50;6,00;7,00;359,99;"
                        "20,0;20,0;710;710;-3;4;1,2;85,5;50,0;2,9;2;10,00;20,50;45;100;0,00;-1,25;3,00;1;1;"
                        "2,0e-03;1,2e-03;\n")
                    .arg(i / 10)
                    .arg(i % 10)
                    .arg(qMin(2 * i, 24)); // both passes, and no further
            // Over the comment and the row that is switched off, to the last row and not beyond.
            m_moment.moving = false;
            QVERIFY(!m_record->follow(m_moment));
            m_moment.moving = true;
            const std::optional<int> row = m_record->follow(m_moment);
            QCOMPARE(row.value_or(-1), i < 12 ? 1 : i == 12 ? 4 : -1);
        }
        QCOMPARE(content(), ansi(file));
    }

    void oneRecordAtATime()
    {
        QDir folder(site().path("/home/oper/bin/passports"));
        QVERIFY(folder.removeRecursively());
        m_record->setForm(Passport::Long);
        QVERIFY(!m_record->open(m_head, 600));
        QVERIFY(folder.mkpath("."));
        m_head.length = 5;                    // of an open contour whose part does not turn
        QVERIFY(m_record->open(m_head, 600)); // nothing is open that could be in the way
        QVERIFY(content().contains(ansi(":06\"\n\"Длина шва: 5,00 мм\"\n\"Скорость: 0.0 мм/мин\"\n\n")));
        QVERIFY(content().contains(ansi("\"N3 M30\";\n\n\"ПРОГРАММА СВАРКИ (канал 3)\"\n\"N1 $3\";\n\n")));
        QVERIFY(deathOf([this] { m_record->open(m_head, 600); }).contains("!m_ppf.isOpen()"));
    }

private:
    static void publishBeam()
    {
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
    }

    QByteArray content() const
    {
        return m_site->read("/home/oper/bin/passports/2031-02-03-14-05-06-Шов 1.csv");
    }

    std::unique_ptr<SiteFixture> m_site;
    std::unique_ptr<Passport> m_record;
    Passport::Head m_head;
    Passport::Moment m_moment;
};

QTEST_GUILESS_MAIN(TestPassport)

#include "test_passport.moc"
