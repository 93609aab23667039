#include "consoleapp.h"
#include "drivecontroller.h"
#include "sitefixture.h"
#include "tools/replay/player.h"
#include "trainer/operator.h"
#include "trainer/plantprocess.h"
#include "trainer/sitefolder.h"
#include "vacuumwire.h"

#include <QApplication>
#include <QDateTime>
#include <QProcess>
#include <QStandardPaths>
#include <QTableWidget>
#include <QTextCodec>

#include <cfloat>

using namespace replay;

// What goes over the links, written by the simulated installation, shown again, and named in Wireshark.
class TestReplay : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase(); // an operator at work, under capture
    void theConsoleShowsTheMomentAgain();
    void capturesOfAllKindsSayTheSame();
    void whatIsMissingIsTold();
    void wiresharkNamesEveryField();

private:
    using Screen = QMap<QString, QString>;
    using Records = QVector<QByteArray>; // a packet each, behind the 16 bytes of its head

    Screen screen();
    void lookAtTheConstants();
    QString written(const Records& records, int linkType = 101, const QByteArray& link = {});
    QString remarksOf(const QString& file);

    QTemporaryDir m_folder;
    QString m_file = m_folder.filePath("live.pcap");
    Operator m_hand;
    Screen m_live; // what the console showed at m_moment
    qint64 m_moment = 0;
    Capture m_capture;
    Records m_records;
};

// Every label and button of the console: its text, ground and whether it can be touched. What no capture
// holds is left out: the clock, the beam unit, the speeds chosen by hand, the message of the second.
TestReplay::Screen TestReplay::screen()
{
    Screen state;
    m_hand.onScreen([&] {
        for (const QWidget* widget : Operator::console()->findChildren<QWidget*>()) {
            static const QRegularExpression own("^(qt_.*|lblTime|lblELA|speed.*|lblMessages|)$");
            const QString text = widget->property("text").toString();
            if (widget->isVisible() && !own.match(widget->objectName()).hasMatch())
                state[widget->objectName()] = text +
                                              widget->palette().color(widget->backgroundRole()).name() +
                                              (widget->isEnabled() ? "" : " disabled");
        }
    });
    return state;
}

void TestReplay::lookAtTheConstants()
{
    m_hand.tap("pbConstants");
    m_hand.waitFor("the constants", [] {
        const QWidget* dialog = QApplication::activeModalWidget();
        const auto* table = dialog ? dialog->findChild<QTableWidget*>("twConst") : nullptr;
        return table && table->rowCount() == 25;
    });
    m_hand.onScreen([] { QApplication::activeModalWidget()->close(); });
}

void TestReplay::initTestCase()
{
    SiteFixture files;
    laySiteFolder(files.root(), true);
    PlantProcess plant(
        {PlantProcess::besideThisProgram(), files.root(), 1, {}, site().shmSuffix, false, m_file});
    QString why;
    QVERIFY2(plant.start(&why), qPrintable(why));
    Site own = site();
    plant.setEndpoints(&own);
    setSite(own);
    const auto work = [&] {
        m_hand.logIn();
        for (const char* gauge : {"pt1", "pt2", "pt3", "pt4", "pt5", "pt6"})
            plant.instruct(QString("gauge %1 freeze").arg(gauge));
        m_hand.switchOn(false);
        m_hand.setSpeed("LX", "600");
        m_hand.jog("pbPlusLX", "LX", 5);
        lookAtTheConstants();
        plant.instruct("rope left on");
        QThread::msleep(2000);
        m_live = screen();
        m_moment = QDateTime::currentMSecsSinceEpoch() * 1000;
        QThread::msleep(300);
        plant.instruct("link kvs drop 2");
        m_hand.waitColour("lblKVS", Qt::red);
        m_hand.waitColour("lblKVS", Qt::green);
        QThread::msleep(500);
    };
    QCOMPARE(runScript([] { runConsole(); }, work), QString());
    QVERIFY(m_live.size() > 100);
    QVERIFY2(m_capture.read(m_file, &why), qPrintable(why));
    QCOMPARE(m_capture.remarks(), QStringList());

    QFile file(m_file);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    for (int at = 24; at < bytes.size(); at += m_records.last().size())
        m_records << bytes.mid(at, 16 + qFromLittleEndian<qint32>(bytes.constData() + at + 8));
}

void TestReplay::theConsoleShowsTheMomentAgain()
{
    SiteFixture files;
    laySiteFolder(files.root(), true);
    // No connection tells its end here: silence alone says that a controller is gone.
    Records open;
    constexpr int protocol = 16 + 9;
    constexpr int flags = 16 + 20 + 13;
    for (const QByteArray& record : qAsConst(m_records)) {
        if (record[protocol] != 6 || !(record[flags] & 1))
            open << record;
    }
    Capture capture;
    QString why;
    QVERIFY(capture.read(written(open), &why));
    Player player(capture);
    QVERIFY2(player.listen(&why), qPrintable(why));
    Site own = site();
    player.setEndpoints(&own);
    setSite(own);
    player.jump(m_moment);
    const auto waitMoment = [&] {
        Screen now;
        QElapsedTimer timer;
        for (timer.start(); now != m_live && timer.elapsed() < 5000;)
            now = screen();
        for (const QString& name : m_live.keys())
            Hand::expect(now[name] == m_live[name], name + ": " + m_live[name] + " is " + now[name]);
    };
    const auto look = [&] {
        m_hand.logIn();
        waitMoment();
        m_hand.tap("sbDistPult"); // goes nowhere
        lookAtTheConstants();
        QThread::msleep(1500); // longer than a link lives in silence
        waitMoment();
        m_hand.onScreen([&] { player.setSpeed(2), player.play(); });
        m_hand.waitColour("lblKVS", Qt::red);
        m_hand.waitColour("lblKVS", Qt::green);
        m_hand.waitFor("the end", [&] { return !player.playing() && player.now() == capture.end(); });
        m_hand.onScreen([&] { player.jump(m_moment); });
        waitMoment();
        m_hand.onScreen([&] { player.step(true); });
        Hand::expect(player.now() > m_moment && player.now() < m_moment + 60'000, "a step on");
        m_hand.onScreen([&] { player.step(false); });
        Hand::expect(player.now() <= m_moment && player.lastCommand().endsWith("ZOOMMER"), "a step back");
    };
    QCOMPARE(runScript([] { runConsole(); }, look), QString());
    QCOMPARE(*m_capture.find(clockText(m_moment).left(8)), m_moment / 1'000'000 * 1'000'000);
    QVERIFY(!m_capture.find("25:00:00") && !m_capture.find(clockText(m_capture.end() + 2'000'000)));
}

// A capture of the records, each packet behind the head of a link.
QString TestReplay::written(const Records& records, int linkType, const QByteArray& link)
{
    QFile source(m_file);
    QFile file(m_folder.filePath("other.pcap"));
    if (!source.open(QIODevice::ReadOnly) || !file.open(QIODevice::WriteOnly))
        return {};
    file.write(source.read(20));
    file.write(QByteArray(1, char(linkType)) + char(linkType >> 8) + QByteArray(2, '\0'));
    for (QByteArray record : records) {
        for (char* const size : {record.data() + 8, record.data() + 12})
            qToLittleEndian(qFromLittleEndian<qint32>(size) + link.size(), size);
        file.write(record.insert(16, link));
    }
    return file.fileName();
}

QString TestReplay::remarksOf(const QString& file)
{
    Capture capture;
    QString why;
    return capture.read(file, &why) ? capture.remarks().join("; ") : why;
}

static QStringList told(const Capture& capture, bool withStatus = true)
{
    QStringList lines;
    for (const Event& event : capture.events()) {
        if (withStatus || event.kind != Event::Status)
            lines << QString("%1 %2 %3 ").arg(event.at).arg(int(event.who)).arg(event.kind) +
                         event.bytes.toHex();
    }
    return lines;
}

void TestReplay::capturesOfAllKindsSayTheSame()
{
    const QByteArray macs(12, 'm');
    const QByteArray ipv4 = QByteArray::fromHex("0800");
    const QByteArray vlan = QByteArray::fromHex("81000005");
    QString why;
    for (const auto& [type, link] : {std::pair{1, macs + ipv4},
                                     {1, macs + QByteArray::fromHex("88a80005") + vlan + ipv4},
                                     {113, QByteArray(14, 'm') + ipv4},
                                     {276, ipv4 + QByteArray(18, 'm')}}) {
        Capture capture;
        QVERIFY2(capture.read(written(m_records, type, link), &why), qPrintable(why));
        QCOMPARE(told(capture), told(m_capture));
        QCOMPARE(capture.remarks(), QStringList());
    }
}

void TestReplay::whatIsMissingIsTold()
{
    const auto firstOf = [&](int size) {
        const auto fits = [&](const QByteArray& record) { return record.size() == size; };
        return int(std::find_if(m_records.cbegin(), m_records.cend(), fits) - m_records.cbegin());
    };
    Records twice;
    for (const QByteArray& record : qAsConst(m_records))
        twice << record << record;
    Capture capture;
    QString why;
    QVERIFY(capture.read(written(twice), &why));
    QCOMPARE(told(capture, false), told(m_capture, false));

    // The first half of the constants, which do not fit into one packet.
    Records holed = m_records;
    holed.remove(firstOf(16 + 40 + 1460));
    QVERIFY(capture.read(written(holed), &why));
    QVERIFY(capture.remarks().join(' ').startsWith("разрывы в потоке TCP, текст утерян: 1, "));
    QCOMPARE(told(capture).size(), told(m_capture).size() - 1);

    // A datagram of KVS that was cut short, has another signature, came in parts, or before its time.
    for (const auto& [at, byte, size, remark] : {std::tuple{8, 100, 116, "датаграммы, записанные не целиком"},
                                                 {16 + 28, 0, 448, "датаграммы чужого размера"},
                                                 {16 + 6, 0x20, 448, "части IP-пакетов"},
                                                 {3, 0, 448, "часы компьютера шли назад"}}) {
        Records changed = m_records;
        QByteArray& datagram = changed[firstOf(16 + 28 + 404)];
        datagram.truncate(size);
        datagram[at] = char(byte);
        if (size < 448)
            datagram[9] = 0;
        QVERIFY2(remarksOf(written(changed)).startsWith(remark), remark);
    }
    // A file that ends anywhere, one that holds nothing, none at all, one that is too much.
    const QString file = written(m_records);
    for (const int cut : {1, 10, 100, 1000})
        QVERIFY(QFile(file).resize(QFileInfo(file).size() - cut) &&
                remarksOf(file).startsWith("файл обрывается"));
    QVERIFY(QFile(file).resize(24) && remarksOf(file).contains("нет обмена"));
    QVERIFY(QFile(file).resize(0) && remarksOf(file).contains("это не запись"));
    QVERIFY(remarksOf(QCoreApplication::applicationFilePath()).contains("это не запись"));
    QVERIFY(capture.read(m_file, &why, 10'000) && capture.end() < m_capture.end());
    QVERIFY(capture.remarks().join(' ').contains("не помещается"));
}

// A number in the form in which tshark shows it.
static QString shown(const char* at, statuswire::Kind kind)
{
    if (kind == statuswire::F)
        return QString::asprintf("%.*g", FLT_DIG, double(qFromLittleEndian<float>(at)));
    if (kind == statuswire::D)
        return QString::asprintf("%.*g", DBL_DIG, qFromLittleEndian<double>(at));
    if (kind == statuswire::I)
        return QString::number(qFromLittleEndian<qint32>(at));
    return QString::number(kind == statuswire::B ? quint8(*at) : qFromLittleEndian<quint32>(at));
}

// What an event holds: of a datagram each field, how wide it is, where it stands, its value.
static QStringList named(const Event& event)
{
    if (event.kind == Event::Command)
        return {"command " + event.bytes};
    if (event.kind == Event::Frame && event.bytes.startsWith('\x50'))
        return {"text " + event.bytes.mid(4)};
    QStringList lines;
    for (int at = 4; event.kind == Event::Frame && at < event.bytes.size(); at += 92) {
        const char* const record = event.bytes.constData() + at;
        lines << "constant.id " + shown(record, statuswire::I)
              << "constant.value " + shown(record + 4, statuswire::F)
              << "constant.text " + QTextCodec::codecForName("Windows-1251")->toUnicode(record + 8);
    }
    const statuswire::Wire* const wires[] = {&drivewire::drive(), &vacuumwire::kvs(), &vacuumwire::kvk()};
    const char* const protos[] = {"cml75", "kvs", "kvk"};
    for (const auto& field : wires[int(event.who)]->fields) {
        if (event.kind == Event::Status)
            lines << QString("%1.%2 %3 %4 ")
                             .arg(protos[int(event.who)], field.name)
                             .arg(field.width())
                             .arg(field.offset) +
                         shown(event.bytes.constData() + field.offset, field.kind);
    }
    return lines;
}

void TestReplay::wiresharkNamesEveryField()
{
    QCOMPARE(QProcess::execute("sh", {MIRTA_WIRESHARK "/make.sh", "--check"}), 0);
    if (QStandardPaths::findExecutable("tshark").isEmpty())
        QSKIP("tshark is not here: what Wireshark shows is not proved (./check installs it)");
    QProcess tshark;
    tshark.start("tshark", {"-X", "lua_script:" MIRTA_WIRESHARK "/mirta.lua", "-r", m_file, "-T", "pdml"});
    QVERIFY(tshark.waitForFinished(120'000) && tshark.exitCode() == 0);
    static const QRegularExpression field(
        "<field name=\"(mirta|cml75|kvs|kvk)\\.([\\w.]+)\" showname=\"[^\"]*\" "
        "size=\"(\\d+)\" pos=\"(\\d+)\" show=\"([^\"]*)\"");
    QStringList seen;
    for (const QByteArray& line : tshark.readAllStandardOutput().split('\n')) {
        const QStringList part = field.match(QString::fromUtf8(line)).capturedTexts();
        if (part.isEmpty() || part[2] == "signature" || part[2] == "length" || part[2] == "constant")
            continue;
        const QString place = QString(" %1 %2").arg(part[3]).arg(part[4].toInt() - 28);
        const bool code = part[5].startsWith("0x");
        seen << (part[1] == "mirta" ? part[2] : part[1] + '.' + part[2] + place) + ' ' +
                    (code ? QString::number(part[5].toUInt(nullptr, 0)) : part[5]);
    }
    QStringList expected;
    for (const Event& event : m_capture.events())
        expected << named(event);
    for (int i = 0; i < std::max(seen.size(), expected.size()); ++i)
        QCOMPARE(seen.value(i), expected.value(i));
}

QTEST_MAIN(TestReplay)
#include "test_replay.moc"
