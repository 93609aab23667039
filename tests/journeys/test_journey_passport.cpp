#include "journey.h"

#include <QLabel>
#include <QRegularExpression>
#include <QTextCodec>

// The record of a program that an operator starts on the simulated installation, and the beam unit beside it.
class TestJourneyPassport : public QObject
{
    Q_OBJECT

private slots:
    void aProgramOfChannelOneIsRecorded();

private:
    static void checkSamples(const QByteArray& samples);
};

void TestJourneyPassport::aProgramOfChannelOneIsRecorded()
{
    Journey journey(1);
    Operator& hand = journey.hand;
    const QByteArray program = "N1 $1\nN2 COORD(1)\nN3 G4 F0.2\nN4 COORD(2)\n"
                               "N5 G90 G01 x=0.00 y=0.00 z=0.00 F600.000\nWAIT\n1 @AXISMOVING?=TRUE\n"
                               "N6 G90 G01 x=10.00 y=0.00 z=0.00 F600.000\nWAIT\n2 @AXISMOVING?=FALSE\n"
                               "N7 G4 F0.5\nN8 COORD(0,2)\nN9 M30";
    journey.files().write("/programs/ch1/record.npg", program);

    QString welder;
    const QString trouble = journey.runLoggedIn([&] {
        welder = hand.text("lblUserRight") + " " + hand.text("lblUserName");
        const auto waitLabel = [&hand](bool alive) {
            hand.waitFor("the label of the beam unit", [alive] {
                const auto* label = Operator::console()->findChild<QLabel*>("lblELA");
                const QColor colour = label->palette().color(QPalette::Window);
                return (colour.green() > colour.red()) == alive;
            });
        };
        waitLabel(true);
        journey.plant().instruct("beam off");
        waitLabel(false);
        journey.plant().instruct("beam on");
        waitLabel(true);

        hand.switchOn(true);
        hand.waitIdle();
        hand.tapTab("contour", 2);
        hand.tap("pbPrgOpen_1");
        hand.tapItem("listWidget_prog", "record");
        hand.tap("pbLoad");
        hand.waitText("lbProgName1", "record");
        hand.tap("pbRun");
        hand.waitText("channel1State", "выполнение");
        hand.waitIdle();
    });
    QCOMPARE(trouble, QString());

    const QStringList names = QDir(site().path("/home/oper/bin/passports")).entryList(QDir::Files);
    QCOMPARE(names.size(), 1);
    const auto name =
        QRegularExpression("^(\\d{4})-(\\d\\d)-(\\d\\d)-(\\d\\d-\\d\\d-\\d\\d)-(.*)\\.csv$").match(names[0]);
    QVERIFY2(name.hasMatch(), qPrintable(names[0]));
    const QString head =
        QString("\"_temp\"\n\"Дата: %1-%2-%3\"\n\"Сварщик: %4\"\n\"Время запуска: %5\"\n\n"
                "\"ПРОГРАММА ПЕРЕМЕЩЕНИЯ (канал 1)\"\n\"%6\";\n\n"
                "\"Время\";\"LX\";\"LY\";\"A\";\"B\";\"C\";\"D\";\"U1\";\"V\";\n")
            .arg(name.captured(3), name.captured(2), name.captured(1), welder,
                 name.captured(4).replace('-', ':'), QString(program).replace("\n", "\";\n\""));
    const QByteArray bytes = QTextCodec::codecForName("Windows-1251")->fromUnicode(head);
    const QByteArray record = journey.files().read("/home/oper/bin/passports/" + names[0]);
    QCOMPARE(record.left(bytes.size()), bytes);

    checkSamples(record.mid(bytes.size()));
}

// One line without an end: ten fields for each tenth of a second.
void TestJourneyPassport::checkSamples(const QByteArray& samples)
{
    const QList<QByteArray> fields = samples.split(';');
    QVERIFY(fields.last().isEmpty() && !samples.contains('\n'));
    QCOMPARE((fields.size() - 1) % 10, 0);
    const int count = (fields.size() - 1) / 10;
    QVERIFY2(count >= 8 && count <= 100, qPrintable(QString::number(count)));
    double path = 0;
    for (int i = 0; i < count; ++i) {
        QCOMPARE(fields[10 * i], QByteArray::number(i * 0.1, 'f', 1));
        for (int field = 10 * i + 1; field < 10 * i + 10; ++field)
            QCOMPARE(fields[field], QByteArray::number(fields[field].toDouble(), 'f', 2));
        QVERIFY(fields[10 * i + 1].toDouble() >= path);
        path = fields[10 * i + 1].toDouble();
    }
    // A second in motion at the 600 mm/min of the table, by the ticks that a busy machine leaves.
    QVERIFY2(path >= 3 && path <= 15, qPrintable(QString::number(path)));
    QCOMPARE(fields[10 * (count - 1) + 2], QByteArray("10.00"));
}

QTEST_MAIN(TestJourneyPassport)

#include "test_journey_passport.moc"
