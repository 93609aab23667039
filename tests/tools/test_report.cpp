#include "contour.h"
#include "journey.h"
#include "tools/report/curves.h"
#include "tools/report/deviations.h"
#include "tools/report/reportwindow.h"

#include <QProcess>
#include <QPushButton>
#include <QTextCodec>
#include <QTreeWidget>

#include <qwt_plot.h>
#include <qwt_plot_zoneitem.h>

namespace {

const char* const away = "N1 $1\nN2 COORD(1)\nN3 G4 F0.2\nN4 COORD(2)\nWAIT\n1 @AXISMOVING?=TRUE\n"
                         "N5 G90 G01 x=40.00 y=30.00 z=20.00 F900.000\nWAIT\n1 @AXISMOVING?=FALSE\n"
                         "N6 G4 F0.5\nN7 COORD(0,2)\nN8 M30";

} // namespace

// The report on records that the console has written in front of the simulated installation: a weld with its
// long passport, a program of channel 1 with its short one, and the flight recorder of both.
class TestReport : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void asTheConsoleWroteThem();
    void otherEncodingsAndMarks();
    void cutAnywhere();
    void damagedWithin();
    void noRecords();
    void deviationsAreSpans();
    void onPaper();
    void byFinger();

private:
    static QByteArray outOfHand(const QByteArray& passport);
    QString write(const QString& name, const QByteArray& bytes) const
    {
        QFile file(m_dir.filePath(name));
        Q_ASSERT(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
        return file.fileName();
    }
    int report(const QStringList& arguments)
    {
        QProcess program;
        program.start(QFileInfo(PlantProcess::besideThisProgram()).path() + "/mirta-report", arguments);
        program.waitForFinished(60'000);
        m_said = QString::fromUtf8(program.readAllStandardError());
        return program.exitStatus() == QProcess::NormalExit ? program.exitCode() : -1;
    }
    static QStringList troubles(const RecordFile& record)
    {
        QStringList lines;
        for (const RecordFile::Trouble& trouble : record.troubles)
            lines << QString::number(trouble.line) + ": " + trouble.reason;
        return lines;
    }
    // What both have says the same; a NaN stands for nothing.
    static bool agree(const RecordFile& part, const RecordFile& whole)
    {
        for (int column = 0; column < part.columns.size(); ++column) {
            for (int i = 0; i < part.samples(); ++i) {
                const double value = part.columns[column][i];
                if (i >= whole.samples() || (!std::isnan(value) && value != whole.columns[column][i]))
                    return false;
            }
        }
        return true;
    }

    QTemporaryDir m_dir;
    QString m_long, m_short, m_flight; // file names
    QString m_lag;                     // of the weld with a beam that leaves its set value for a while
    QByteArray m_bytes[3];             // of them
    QString m_said;
};

void TestReport::initTestCase()
{
    Journey journey(1);
    journey.files().write("/home/oper/bin/contours/arc.save",
                          "arc\nXYZ\n-1 0 0\n-1 -1\n0 1\n600\n2\n20 20 0 2 1 2 20 \n20 40 20 0 \n3\n"
                          "+ 0.00 0.0 700 0.0 0.0 600.0 2 \n+ 10.00 25.0 700 0.0 0.0 600.0 2 \n"
                          "+ 31.42 0.0 700 0.0 0.0 600.0 2 \n");
    const QString trouble = journey.runLoggedIn([&] {
        Operator& hand = journey.hand;
        hand.switchOn(true);
        hand.setSpeed("LX", "3000");
        hand.tapTab("contour", 0);
        hand.tap("pbLoad");
        hand.tapItem("listWidget_prog", "arc");
        hand.tap("pbLoad");
        hand.waitText("length", "31.42");
        hand.setNumber("contourSpeed", "2400");
        hand.tapCell("twContour", 0, 0);
        hand.waitText("coordLY", "20.00");
        hand.waitIdle();
        hand.tapTab("contour", 1);
        hand.tap("pbGcode");
        hand.waitText("channel3State", "выполнение");
        hand.onScreen([] { Operator::console()->findChild<CONTOUR*>()->startPassport(); });
        hand.waitText("channel3State", "бездействие", 60'000);
        hand.waitIdle();
        journey.files().write("/programs/ch1/away.npg", away);
        hand.tapTab("contour", 2);
        hand.tap("pbPrgOpen_1");
        hand.tapItem("listWidget_prog", "away");
        hand.tap("pbLoad");
        hand.waitGone("listWidget_prog");
        hand.waitText("lbProgName1", "away");
        QThread::msleep(300); // the record of the weld ends within a tick; until then a start is refused
        hand.tap("pbRun");
        hand.waitText("channel1State", "выполнение");
        hand.waitIdle();
    });
    QVERIFY2(trouble.isEmpty(), qPrintable(trouble));
    const QString bin = site().path("/home/oper/bin");
    const QStringList passports = QDir(bin + "/passports").entryList(QDir::Files, QDir::Name);
    QCOMPARE(passports.size(), 2);
    QStringList all{bin + "/passports/" + passports[0], bin + "/passports/" + passports[1]};
    all << bin + "/dump/" + QDir(bin + "/dump").entryList(QDir::Files).value(0);
    const QString keep = qEnvironmentVariable("REPORT_KEEP", m_dir.path()); // for pictures of the guide
    for (int i = 0; i < 3; ++i) {
        QString* const names[] = {&m_long, &m_short, &m_flight};
        *names[i] = m_dir.filePath(QFileInfo(all[i]).fileName());
        QVERIFY(QFile::copy(all[i], *names[i]));
        QFile::copy(all[i], keep + "/" + QFileInfo(all[i]).fileName());
        QFile file(all[i]);
        QVERIFY(file.open(QIODevice::ReadOnly));
        m_bytes[i] = file.readAll();
    }
    QVERIFY(QDir(m_dir.path()).mkdir("lag"));
    m_lag = write("lag/" + QFileInfo(m_long).fileName(), outOfHand(m_bytes[0]));
}

// The marks of a beam 5 mA too strong, between the seconds 2 and 3.
QByteArray TestReport::outOfHand(const QByteArray& passport)
{
    QList<QByteArray> lines = passport.split('\n');
    for (QByteArray& line : lines) {
        QList<QByteArray> cells = line.split(';');
        if (cells.size() == 33 && cells[0].toDouble() >= 2 && cells[0].toDouble() <= 3) {
            cells[11] = QByteArray::number(cells[10].toDouble() + 5, 'f', 1);
            line = cells.join(';');
        }
    }
    return lines.join('\n');
}

void TestReport::asTheConsoleWroteThem()
{
    const RecordFile weld = readRecord(m_long);
    QCOMPARE(troubles(weld), QStringList());
    QCOMPARE(weld.kind, RecordFile::LongPassport);
    QCOMPARE(weld.program, QString("arc"));
    QVERIFY2(weld.welder.startsWith("Администратор"), qPrintable(weld.welder));
    QCOMPARE(weld.start.toString("yyyy-MM-dd-hh-mm-ss-") + "arc.csv", QFileInfo(m_long).fileName());
    QCOMPARE(weld.head[0], QString("Длина шва: 31.42 мм"));
    QCOMPARE(weld.contour.size(), 2);
    QCOMPARE(weld.technology.size(), 3);
    QVERIFY(weld.technology[1].startsWith("+ 10.00 25.0 700 600.0"));
    QCOMPARE(weld.programs.size(), 2);
    QVERIFY(weld.programs[1].title.endsWith("(канал 3)") && weld.programs[1].lines.first().contains("$3"));
    QCOMPARE(weld.titles.size(), 32);
    QVERIFY2(weld.samples() > 25, qPrintable(QString::number(weld.samples())));
    // Line by line as a spreadsheet sees it.
    const QList<QByteArray> lines =
        m_bytes[0].trimmed().split('\n').mid(m_bytes[0].trimmed().count('\n') + 1 - weld.samples());
    for (int i = 0; i < weld.samples(); ++i) {
        for (int column = 0; column < 32; ++column)
            QCOMPARE(weld.columns[column][i], lines[i].split(';')[column].toDouble());
    }
    const QVector<double>& set = *weld.column("Уст. I луча");
    const double most = *std::max_element(set.begin(), set.end());
    QVERIFY2(most > 15 && most <= 25, qPrintable(QString::number(most)));

    const RecordFile run = readRecord(m_short);
    QCOMPARE(troubles(run), QStringList());
    QCOMPARE(run.kind, RecordFile::ShortPassport);
    QCOMPARE(run.program, QString("arc")); // of the last weld, which the name of the file has
    QCOMPARE(run.programs[0].lines, QString(away).split('\n'));
    QCOMPARE(run.titles.mid(0, 3), QStringList({"Время", "Путь", "LX"}));
    QVERIFY(run.samples() > 5);
    QCOMPARE(run.columns[0][5], 0.5);
    QCOMPARE(run.column("LX")->last(), 40.0);

    const RecordFile flight = readRecord(m_flight);
    QCOMPARE(troubles(flight), QStringList());
    QCOMPARE(flight.samples(), m_bytes[2].size() / 44);
    QVERIFY(flight.start.isValid() && flight.duration() > weld.duration());
    QCOMPARE(flight.column("LX1")->last(), 40.0);
    QVERIFY(!flight.hasPath());
}

void TestReport::otherEncodingsAndMarks()
{
    for (const QString& file : {m_long, m_short}) {
        const RecordFile original = readRecord(file);
        QString text = QTextCodec::codecForName("Windows-1251")->toUnicode(m_bytes[file == m_short]);
        const int data = text.lastIndexOf("\"Время\"");
        const QString commas =
            text.left(data) + text.mid(data).replace('.', ',').replace("\"P пушк,\"", "\"P пушк.\"");
        const QByteArray variants[] = {text.toUtf8(), "\xEF\xBB\xBF" + text.replace("\n", "\r\n").toUtf8(),
                                       QTextCodec::codecForName("Windows-1251")->fromUnicode(commas)};
        for (const QByteArray& bytes : variants) {
            const RecordFile read = parsePassport(bytes, file);
            QCOMPARE(troubles(read), QStringList());
            QCOMPARE(read.columns, original.columns);
            QCOMPARE(read.welder + read.program, original.welder + original.program);
        }
    }
    QByteArray thousands = m_bytes[1];
    thousands.replace(thousands.lastIndexOf(";40.00;"), 7,
                      ";1\xA0"
                      "040,00;");
    QCOMPARE(parsePassport(thousands, m_short).column("LX")->last(), 1040.0);
}

// The power has gone: what was whole is there, and the cut is told.
void TestReport::cutAnywhere()
{
    for (int which = 0; which < 3; ++which) {
        const QString file = QStringList{m_long, m_short, m_flight}[which];
        const RecordFile whole = readRecord(file);
        for (int size = 0; size < m_bytes[which].size(); size += size < 3000 || which == 1 ? 1 : 7) {
            const QByteArray bytes = m_bytes[which].left(size);
            const RecordFile part = which < 2 ? parsePassport(bytes, file) : parseFlightRecord(bytes, file);
            QVERIFY2(agree(part, whole), qPrintable(QString("%1, %2 bytes").arg(file).arg(size)));
            const bool inside = which == 2 ? size % 44 : !bytes.endsWith(';') && !bytes.endsWith('\n');
            QVERIFY2(!inside || !part.troubles.isEmpty(), qPrintable(QString("%1: %2").arg(file).arg(size)));
            if (which == 2)
                QCOMPARE(part.samples(), size / 44);
        }
    }
    QCOMPARE(troubles(parsePassport(m_bytes[1] + "9.9;1.00;2", m_short)).size(), 2);
}

void TestReport::damagedWithin()
{
    const RecordFile whole = readRecord(m_short);
    const int at = m_bytes[1].indexOf(";0.3;") + 5;
    QByteArray bytes = m_bytes[1];
    const int line = bytes.left(at).count('\n') + 1;
    bytes.remove(at, bytes.indexOf(';', at) + 1 - at);
    RecordFile read = parsePassport(bytes, m_short);
    QCOMPARE(troubles(read), QStringList(QString("%1: замер 4: полей 9 вместо 10").arg(line)));
    QCOMPARE(read.samples(), whole.samples());
    QVERIFY(agree(read, whole) && std::isnan(read.columns[2][3]) &&
            read.columns[2][4] == whole.columns[2][4]);

    QList<QByteArray> lines = m_bytes[0].split('\n');
    const int last = lines.size() - 2;
    lines[last].replace(lines[last].indexOf(';') + 1, 4, "x.00");
    read = parsePassport(lines.join('\n'), m_long);
    QCOMPARE(troubles(read).size(), 1);
    QVERIFY2(
        troubles(read)[0].startsWith(QString("%1: замер %2: Путь = «x.00").arg(last + 1).arg(read.samples())),
        qPrintable(troubles(read)[0]));
    QByteArray back = m_bytes[2];
    back.replace(440, 4, QByteArray(4, 0));
    read = parseFlightRecord(back, m_flight);
    QCOMPARE(read.samples(), 10);
    QVERIFY(troubles(read)[0].startsWith("11: время 0 мс после"));
}

void TestReport::noRecords()
{
    for (const QByteArray& bytes :
         {QByteArray(), QByteArray("a;b\n1;2\n"), QByteArray(100, '\xFF'), QByteArray(50'000, '\0'),
          QByteArray("\0\0\0\1", 4), QByteArray("\"Дата: \n")}) {
        const RecordFile read = readRecord(write("foreign.csv", bytes));
        QVERIFY(bytes.size() == 50'000 || (read.kind == RecordFile::Foreign && read.samples() == 0));
        QVERIFY(bytes.size() == 50'000 || read.troubles.size() == 1);
    }
    QCOMPARE(troubles(readRecord(m_dir.path())), QStringList("0: это папка"));
    QFile::remove(m_dir.filePath("foreign.csv"));
}

void TestReport::deviationsAreSpans()
{
    RecordFile run = readRecord(m_long);
    QVector<double>& set = run.columns[run.titles.indexOf("Уст. I луча")];
    QVector<double>& actual = run.columns[run.titles.indexOf("I луча")];
    set.fill(20);
    actual.fill(20);
    for (int i = 5; i < 9; ++i)
        actual[i] = i == 7 ? 17.5 : 21.1; // 5 % are 1 mA
    actual[12] = 21;
    actual[14] = std::nan("");
    set[16] = 0;
    actual[16] = 0.1; // of its rounding
    QVector<Deviation> spans = deviations(run, 5);
    spans.erase(
        std::remove_if(spans.begin(), spans.end(), [](const Deviation& span) { return span.pair != 0; }),
        spans.end());
    QCOMPARE(spans.size(), 1); // neither exactly at the limit, nor beside a NaN, nor by the rounding of zero
    QCOMPARE(QVector<int>({spans[0].first, spans[0].last, spans[0].worst}), QVector<int>({5, 8, 7}));
}

void TestReport::onPaper()
{
    const QString pdf = m_dir.filePath("out.pdf");
    QCOMPARE(report({m_short, "--pdf", pdf}), 0);
    QVERIFY2(!m_said.contains("mirta-report:"), qPrintable(m_said));
    QFile file(pdf);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(file.readAll().startsWith("%PDF"));
    QCOMPARE(report({m_lag, m_short, m_flight, "--pdf", pdf}), 1);
    const QString cut = write("cut.csv", m_bytes[1].left(m_bytes[1].size() - 2));
    QCOMPARE(report({cut, "--pdf", pdf}), 1);
    QVERIFY2(m_said.contains("обрыв"), qPrintable(m_said));
    const QString empty = write("empty.csv", "");
    QCOMPARE(report({empty, "--pdf", pdf}), 2);
    QVERIFY(m_said.contains("файл пуст"));
    QCOMPARE(report({m_short, "--pdf", "/nowhere/out.pdf"}), 2);
    QCOMPARE(report({m_flight, "--path", "--pdf", pdf}), 2);
    QFile::remove(cut);
    QFile::remove(empty);
}

void TestReport::byFinger()
{
    ReportWindow window(0, false);
    window.resize(1600, 1000);
    window.open({m_dir.path()});
    window.show();
    auto* list = window.findChild<QTreeWidget*>("records");
    QCOMPARE(list->topLevelItemCount(), 3);
    QVERIFY(list->topLevelItem(0)->text(0) > list->topLevelItem(1)->text(0)); // the newest first
    window.open({m_lag});
    auto* charts = window.findChild<Charts*>();
    auto* plot = charts->findChild<QwtPlot*>();
    const double all = charts->to() - charts->from();
    QCOMPARE(all, readRecord(m_long).duration());
    QVERIFY(!plot->itemList(QwtPlotItem::Rtti_PlotZone).isEmpty());
    QCOMPARE(window.findChild<QTreeWidget*>("findings")->topLevelItemCount(), 1);
    QWidget* canvas = plot->canvas();
    static QTouchDevice* const screen = QTest::createTouchDevice();
    QTRY_VERIFY(canvas->width() > 500); // laid out
    const int width = canvas->width();
    const auto at = [&](double share) { return QPoint(int(width * share), 20); };
    QTest::touchEvent(canvas, screen).press(0, at(0.4), canvas).press(1, at(0.6), canvas);
    QTest::touchEvent(canvas, screen).move(0, at(0.3), canvas).move(1, at(0.7), canvas);
    QTest::touchEvent(canvas, screen).release(0, at(0.3), canvas).release(1, at(0.7), canvas);
    QVERIFY(qAbs((charts->to() - charts->from()) / all - 0.5) < 0.02);
    QVERIFY(qAbs(charts->from() / all - 0.25) < 0.02);
    QTest::touchEvent(canvas, screen).press(0, at(0.5), canvas);
    QTest::touchEvent(canvas, screen).move(0, at(0.7), canvas);
    QTest::touchEvent(canvas, screen).release(0, at(0.7), canvas);
    QVERIFY(qAbs(charts->from() / all - 0.15) < 0.02);
    QWheelEvent wheel(at(0.5), canvas->mapToGlobal(at(0.5)), {}, {0, -1200}, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(canvas, &wheel);
    QCOMPARE(charts->to() - charts->from(), all); // no further out than the whole
    window.open({m_short});
    QTest::mouseClick(window.findChild<QPushButton*>("pbPath"), Qt::LeftButton);
    const double path = readRecord(m_short).column("Путь")->last();
    QVERIFY2(path > 1 && charts->to() == path, qPrintable(QString("%1 %2").arg(path).arg(charts->to())));
}

QTEST_MAIN(TestReport)

#include "test_report.moc"
