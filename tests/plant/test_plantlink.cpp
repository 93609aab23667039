#include "linkcontroller.h"
#include "plant/controller.h"
#include "plant/installation.h"
#include "trainer/plantprocess.h"

#include <QRegularExpression>
#include <QtTest>

#include <cstring>

using namespace plant;

namespace {

struct Plant : Installation
{
    static InstallationOptions atSpeed(double speed)
    {
        InstallationOptions options;
        options.speed = speed;
        return options;
    }
    explicit Plant(double speed = 1)
        : Installation(atSpeed(speed))
    {
        QVERIFY(start());
    }
};

// What a console does on the network, with its own sockets.
struct Console
{
    QTcpSocket tcp;
    QUdpSocket udp;
    QByteArray last; // datagram
    int datagrams = 0;
    int strange = 0; // with a signature that is not the controller's
    QByteArray answers;

    bool open(const Installation& plant, Controller controller = Controller::Drive)
    {
        const Ports ports = plant.ports(controller);
        if (udp.state() != QUdpSocket::BoundState &&
            !udp.bind(QHostAddress::LocalHost, ports.udp, QUdpSocket::ShareAddress))
            return false;
        tcp.abort();
        datagrams = 0;
        tcp.connectToHost(QHostAddress::LocalHost, ports.tcp);
        return tcp.waitForConnected(2000);
    }
    bool up() const { return tcp.state() == QTcpSocket::ConnectedState; }
    bool served(int times) // with so many datagrams since the connection
    {
        while (udp.hasPendingDatagrams()) {
            last.resize(static_cast<int>(udp.pendingDatagramSize()));
            udp.readDatagram(last.data(), last.size());
            ++datagrams;
            strange += !last.startsWith("\x50\x56");
        }
        return datagrams >= times;
    }
    StatusPack pack()
    {
        served(0);
        StatusPack value{};
        std::memcpy(&value, last.constData(), std::min<std::size_t>(sizeof value, last.size()));
        return value;
    }
    const QByteArray& hear() { return answers += tcp.readAll(); }
};

} // namespace

class TestPlantLink : public QObject
{
    Q_OBJECT

private slots:
    void everyInstructorLineIsAnswered()
    {
        const QString lines =
            "help > help [WORD]; help me > error:; status > door closed, vacuum on, key on, drives off; "
            "door ajar > error: door open|close; door open > error: the vacuum holds the door; "
            "vacuum > regime 4 done, 1500 s, PT1 1.0e+00, ; valve nl1 jam > error:; gauge pt7 good > error:; "
            "leak chamber -1 > error:; key > error: key on|off; breaker qf41 off > error:; "
            "trip LX A0013 > error:; trip PHI > error: PHI has no drive; "
            "axis LX 1e9 > error: beyond its hard switch; axis LX nan > error:; pult f4 x > error:; "
            "module 4 > error:; message 0 > error:; program 2 state > channel 2 idle; "
            "variable @RASTERON% > error: never written; link drop -1 > error:; "
            "frame kvk bad > error: no console is connected; frame bad > error: no console is connected; "
            "speed 1000 > ok; speed 1001 > error:; speed 0.05 > error:; speed 0 > ok; "
            "time > time ; observe > observed drive=; quit > ok; quit now > error:; "
            "dance > error: unknown word \"dance\"";
        Plant plant;
        QCOMPARE(plant.instruct("") + plant.instruct("# a remark"), QString());
        for (const QString& line : lines.split("; ")) {
            const QString got = plant.instruct(line.section(" > ", 0, 0));
            QVERIFY2(got.startsWith(line.section(" > ", 1)) && !got.contains('\n'), qPrintable(line));
        }
    }

    void asManyAsWantOnlyLook()
    {
        Plant plant;
        const QString ports = plant.instruct("observe");
        QCOMPARE(plant.instruct("observe"), ports);
        const quint16 port = ports.section(QRegularExpression("drive=| "), 2, 2).toUShort();
        Console looker;
        QVERIFY(looker.udp.bind(QHostAddress::LocalHost, port));
        looker.tcp.connectToHost(QHostAddress::LocalHost, port);
        QVERIFY(looker.tcp.waitForConnected(2000));
        QTRY_VERIFY(looker.served(2));
        looker.tcp.write(frame("DRIVE ON"));
        QTRY_VERIFY(looker.tcp.bytesAvailable() > 4);
        QVERIFY(looker.tcp.readAll().mid(4).startsWith("REFUSED DRIVE ON: "));
        QVERIFY(plant.instruct("status").contains("drives off") &&
                plant.instruct("status").contains("no console"));
    }

    void aConsoleIsServed()
    {
        Plant plant(50);
        Console console;
        QVERIFY(console.open(plant));
        QTRY_VERIFY(console.served(3));
        QCOMPARE(console.last.size(), 296);
        QCOMPARE(console.strange, 0);

        // A command in pieces, then two in one segment.
        const QByteArray drive = frame("DRIVE ON");
        console.tcp.write(drive.left(3));
        console.tcp.flush();
        QTest::qWait(20);
        console.tcp.write(drive.mid(3));
        QTRY_VERIFY(console.pack().drivesOn);
        console.tcp.write(frame("MOVE(LX,600)") + frame("MOVE(LY,-600)"));
        QTRY_VERIFY(console.pack().position[0] > 1 && console.pack().position[2] < -1);
        console.tcp.write(frame("") + frame("MOVE(QQ,1)"));
        QTRY_VERIFY(console.hear().contains("REFUSED MOVE(QQ,1): no axis"));
        QVERIFY(console.answers.startsWith(frame("OK DRIVE ON")));
        QVERIFY(console.up());

        // A newer console takes over. When it is lost, its jogs stop.
        Console second;
        QVERIFY(second.open(plant));
        QTRY_VERIFY(!console.up());
        QTRY_VERIFY(second.served(2));
        second.tcp.write(frame("MOVE(LX,60)") + frame("MOVE(V,60)"));
        QTRY_VERIFY(second.pack().position[9] > 0.5f);
        second.tcp.abort();
        bool moving = true;
        QTRY_VERIFY((plant.inside([&](MotionController& c) { moving = c.axes().anyMoving(); }), !moving));
        QVERIFY(plant.status().drivesOn);
    }

    void garbageOnTheWireEndsOnlyTheConnection()
    {
        QByteArray noise;
        QRandomGenerator random(5);
        for (int i = 0; i < 200000; ++i)
            noise += static_cast<char>(random.generate());
        const std::tuple<const char*, QByteArray, bool> rows[] = {
            // whether it ends the connection
            {"text without a frame", "DRIVE ON", true},
            {"wrong signature", QByteArray("\x50\x57\x01\x00x", 5), true},
            {"sound, then garbage", frame("DRIVE ON") + "\xff\xff\xff\xff", true},
            {"half a head", "\x50\x56\x05", false},
            {"a body that never comes", "\x50\x56\xff\xff", false},
            {"no UTF-8", frame("\xff\xfe\x80\x00\x01"), false},
            {"longest", frame(QByteArray(0xFFFF, '(')), false},
            {"noise", noise, true}};
        for (const auto& [name, bytes, ends] : rows) {
            Plant plant(50);
            Console console;
            QVERIFY(console.open(plant));
            console.tcp.write(bytes);
            console.tcp.flush();
            if (ends)
                QTRY_VERIFY2(!console.up(), name);
            else
                QTRY_VERIFY2(console.served(3), name); // as before
            QVERIFY2(console.up() != ends, name);
            Console next;
            QVERIFY(next.open(plant));
            next.tcp.write(frame("DRIVE ON"));
            QTRY_VERIFY2(next.pack().drivesOn, name);
        }
    }

    void theLinkFailsOnRequest()
    {
        Plant plant;
        Console console;
        QVERIFY(console.open(plant));
        QTRY_VERIFY(console.served(1));

        QCOMPARE(plant.instruct("frame bad"), "ok");
        QTRY_COMPARE((console.served(0), console.strange), 1);
        QVERIFY(console.up());

        QCOMPARE(plant.instruct("link silence 0.4"), "ok");
        console.served(0);
        console.datagrams = 0;
        QTest::qWait(200);
        QVERIFY(!console.served(2) && console.up()); // one may have been on its way
        QTRY_VERIFY(console.served(4));

        QCOMPARE(plant.instruct("frame badtcp"), "ok");
        QTRY_VERIFY(!console.hear().isEmpty());
        QVERIFY(!console.answers.startsWith("\x50\x56"));

        QCOMPARE(plant.instruct("link drop 0.3"), "ok");
        QTRY_VERIFY(!console.up());
        QVERIFY(!console.open(plant));
        QTRY_VERIFY(console.open(plant));
        QTRY_VERIFY(console.served(3));
    }

    void theVacuumControllersHaveLinksOfTheirOwn()
    {
        Plant plant;
        // Its name, the size of its datagram, a command, and the signature of its packet of constants.
        for (const auto& [controller, name, size, command, constants] :
             {std::tuple{Controller::Kvs, "kvs", 404, "NW2 ON", "\x52\x56"},
              {Controller::Kvk, "kvk", 144, "ALG(1)", "\x51\x56"}}) {
            Console console;
            QVERIFY(console.open(plant, controller));
            QTRY_VERIFY(console.served(3));
            QCOMPARE(console.last.size(), size);
            QCOMPARE(console.strange, 0);
            console.tcp.write(frame(command) + frame("DRIVE ON") + frame("CONST"));
            const QByteArray expected =
                frame(QByteArray("OK ") + command) + frame("REFUSED DRIVE ON: unknown command") + constants;
            QTRY_VERIFY(console.hear().startsWith(expected));
            QCOMPARE(plant.instruct(QString("link %1 drop 0.3").arg(name)), "ok");
            QTRY_VERIFY(!console.up());
            QVERIFY(!console.open(plant, controller));
            QTRY_VERIFY(console.open(plant, controller));
        }
    }

    void theProgramRunsAScriptAndAnswersOnItsInput()
    {
        QTemporaryDir root;
        QFile script(root.filePath("lesson"));
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("# first lesson\nkey off\nwait 0.1\naxis LX 25\nnonsense\n");
        script.close();
        QProcess process;
        process.start(PlantProcess::besideThisProgram(), {"--root", root.path(), "--free-ports", "--air",
                                                          "--script", script.fileName(), "--quit-on-eof"});
        QVERIFY(process.waitForReadyRead(5000));
        const QByteArray ready = process.readLine();
        const QString form("\\Aplant ready( (kv[sk]-)?tcp=[1-9]\\d+ (kv[sk]-)?udp=[1-9]\\d+){3}\\n\\z");
        QVERIFY2(QString(ready).contains(QRegularExpression(form)), ready.constData());
        QByteArray errors;
        QTRY_VERIFY((errors += process.readAllStandardError()).contains("nonsense: error:"));
        process.write("status\n\ndance\n");
        QByteArray answers;
        QTRY_COMPARE((answers += process.readAllStandardOutput()).count('\n'), 2);
        QVERIFY(answers.startsWith("door open, vacuum off, key off") && answers.contains("LX 25.00"));
        process.closeWriteChannel();
        QVERIFY(process.waitForFinished(5000) && process.exitCode() == 0);

        // A wrong number is refused, a signal ends it in order.
        QCOMPARE(QProcess::execute(PlantProcess::besideThisProgram(), {"--speed", "0"}), 2);
        process.start(PlantProcess::besideThisProgram(), {"--free-ports"});
        QVERIFY(process.waitForReadyRead(5000));
        process.terminate();
        QVERIFY(process.waitForFinished(5000) && process.exitCode() == 0);
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    }
};

QTEST_GUILESS_MAIN(TestPlantLink)
#include "test_plantlink.moc"
