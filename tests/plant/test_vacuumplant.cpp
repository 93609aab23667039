#include "plant/controller.h"
#include "plant/instructor.h"
#include "plant/vacuumsystem.h"

#include <QtTest>

#include <cmath>
#include <cstring>

using namespace plant;

namespace {

constexpr double dt = 0.01;

// Where the datagrams carry each device: from its state on, the words for on and for off.
struct Place
{
    const char* name;
    bool kvk;
    int state;
    int on;
    int off; // 0: the word shared by the units of BKU

    QString command(bool switchOn) const
    {
        const QString own = name;
        if (off == 0)
            return QString("BKU(%1,%2)").arg(own == "VPT" ? 1 : own == "VE1" ? 2 : 3).arg(int(switchOn));
        return own + (own == "DOOR" ? (switchOn ? " UNPRESS" : " PRESS") : (switchOn ? " ON" : " OFF"));
    }
};
const Place places[deviceCount] = {
    {"NL1", false, 4, 16, 20},     {"NL2", false, 28, 40, 44},    {"NZ1", false, 52, 64, 68},
    {"NZ2", false, 76, 88, 92},    {"ND1", false, 100, 112, 116}, {"NW2", false, 124, 136, 140},
    {"VP1", false, 148, 160, 164}, {"VP2", false, 168, 180, 184}, {"VP3", false, 188, 200, 204},
    {"VP4", true, 4, 16, 20},      {"VP5", false, 208, 220, 224}, {"VP6", false, 228, 240, 244},
    {"VP7", false, 248, 260, 264}, {"VP8", true, 24, 36, 40},     {"DOOR", true, 44, 56, 60},
    {"VPT", true, 108, 132, 0},    {"VE1", true, 112, 132, 0},    {"TMN", true, 116, 132, 0}};

// Lock words in the vacuum of a weld.
const char* const kWeldingWords = "NL1-3 NL2-6 NZ1-1 NZ2-2 ND1-1 VP2-1 VP4+2 VP6+1 VP7+1 VP8+2 DOOR+1 BKU=1";

// Both sides of the installation, a clock that the test turns, and the instructor.
struct Rig
{
    MotionController motion;
    VacuumSystem vacuum{5};
    ControllerLink link{portOf(motion)}; // not listening
    Instructor instructor{motion, vacuum, {&link, &link, &link}};
    QStringList log;

    explicit Rig(bool pumped)
    {
        motion.putDoor(false);
        instructor.execute(pumped ? "vacuum on" : "vacuum off");
        vacuum.setLog([this](const QString& line) { log << line; });
    }
    void pass(double seconds)
    {
        for (int i = 0; i < std::lround(seconds / dt); ++i) {
            motion.step(dt);
            vacuum.step(dt);
            couple(motion, vacuum);
        }
    }
    QString tell(const QString& command)
    {
        if (command.startsWith("DRIVE"))
            return motion.command(command);
        static const QRegularExpression kvk("\\A(VP4|VP8|DOOR|ALG|BKU|SET\\(KBK)");
        return kvk.match(command).hasMatch() ? vacuum.commandKvk(command) : vacuum.commandKvs(command);
    }
    // Steps parted by "; ": the instructor's lines in small letters, commands of the console in capitals, "!"
    // in front of what must be refused, "wait SECONDS", "VP6=3" for the state that the datagram must show,
    // and "kvs word 48=1" or "kvk byte 86=0" for anything else there.
    void play(const QString& steps)
    {
        for (const QString& step : steps.split("; ", Qt::SkipEmptyParts)) {
            const bool refused = step.startsWith('!');
            const QString text = step.mid(refused ? 1 : 0);
            const QStringList w = step.section('=', 0, 0).split(' ');
            if (w[0] == "wait")
                pass(w[1].toDouble());
            else if (w[0] == "kvs" || w[0] == "kvk")
                QCOMPARE(step, w.join(' ') + '=' + QString::number(number(w)));
            else if (const auto device = deviceByName(w[0]); device && step.contains('='))
                QCOMPARE(step, QString("%1=%2").arg(w[0]).arg(state(places[int(*device)])));
            else if (text.at(0).isUpper())
                QVERIFY2(tell(text).isEmpty() != refused, qPrintable(step));
            else
                QVERIFY2((instructor.execute(text) == "ok") != refused, qPrintable(step));
        }
    }
    std::uint32_t number(const QStringList& w) const
    {
        const bool kvk = w[0] == "kvk";
        const int at = w[2].toInt();
        return w[1] == "byte" ? field<std::uint8_t>(kvk, at) : field<std::uint32_t>(kvk, at);
    }
    // Until the regime has ended, an hour and a half at most; the seconds that it took.
    double run(std::uint32_t number)
    {
        if (!tell(QString("ALG(%1)").arg(number)).isEmpty())
            return -1;
        double time = 0;
        for (; kvk<std::uint32_t>(96) == 1 && time < 5400; time += 1)
            pass(1);
        return time;
    }
    // Both datagrams, KVS before KVK.
    QByteArray bytes() const
    {
        const KvsPack s = vacuum.kvsStatus();
        const KvkPack k = vacuum.kvkStatus();
        return QByteArray(reinterpret_cast<const char*>(&s), sizeof s) +
               QByteArray(reinterpret_cast<const char*>(&k), sizeof k);
    }
    template <class T>
    T field(bool ofKvk, int offset) const
    {
        T value;
        std::memcpy(&value, bytes().constData() + (ofKvk ? sizeof(KvsPack) : 0) + offset, sizeof value);
        return value;
    }
    template <class T>
    T kvk(int offset) const
    {
        return field<T>(true, offset);
    }
    int state(const Place& place) const { return field<int>(place.kvk, place.state); }
    double chamber() const { return kvk<double>(72); }
    // Lock words that are not 0: "NL1+2" forbids to switch on by its bit 1, "BKU=24" is the shared word.
    QStringList words() const
    {
        QStringList list;
        const auto add = [&](const QString& word, bool ofKvk, int offset) {
            if (const int value = field<int>(ofKvk, offset))
                list << word + QString::number(value);
        };
        for (const Place& place : places) {
            for (const bool on : {true, false}) {
                if (place.off)
                    add(QString(place.name) + (on ? '+' : '-'), place.kvk, on ? place.on : place.off);
            }
        }
        add("BKU=", true, 132);
        return list;
    }
};

} // namespace

class TestVacuumPlant : public QObject
{
    Q_OBJECT

private slots:
    void eachDeviceStandsAtItsOffset()
    {
        for (int i = 0; i < deviceCount; ++i) {
            Rig rig(false);
            rig.play("ALG(0)"); // setup watches nothing
            std::vector<int> expected;
            for (const Place& place : places)
                expected.push_back(rig.state(place));
            const auto device = deviceByName(QLatin1String(places[i].name));
            const bool on = device != Device::Door; // released in the air
            rig.vacuum.plant().command(*device, on);
            rig.pass(0.1);
            expected[std::size_t(i)] = on ? 3 : 2;
            for (int k = 0; k < deviceCount; ++k)
                QCOMPARE(rig.state(places[k]), expected[std::size_t(k)]);
            rig.pass(device == Device::ND1 ? 1500 : 100);
            QCOMPARE(rig.state(places[i]), on ? 1 : 0);
            if (!places[i].kvk && i < 6)
                QCOMPARE(rig.field<int>(false, places[i].state + 4), 1); // power
            else if (places[i].off) {
                QCOMPARE(rig.field<int>(places[i].kvk, places[i].state + 4), int(on)); // limits
                QCOMPARE(rig.field<int>(places[i].kvk, places[i].state + 8), int(!on));
            }
        }
    }

    void measurementsAndFlagsStandAtTheirOffsets()
    {
        Rig rig(true);
        const VacuumPlant& p = rig.vacuum.plant();
        for (int i = 0; i < 3; ++i)
            QCOMPARE(rig.field<double>(false, 308 + 8 * i), p.reading(i + 1));
        QCOMPARE(rig.kvk<double>(64), p.reading(4));
        QCOMPARE(rig.kvk<double>(72), p.reading(5));
        QCOMPARE(rig.kvk<float>(136), float(p.reading(6)));
        QVERIFY(p.reading(5) < 1e-2 && p.reading(5) > 1e-3);
        QCOMPARE(rig.kvk<float>(140), 833.0F);
        QCOMPARE(rig.field<float>(false, 332), float(p.caseTemperature()));
        QCOMPARE(rig.field<float>(false, 336), 220.0F);
        for (int i = 0; i < circuitCount; ++i) {
            QCOMPARE(rig.field<float>(false, 340 + 4 * i), float(p.waterTemperature(i + 1)));
            QCOMPARE(rig.field<float>(false, 372 + 4 * i), float(p.flow(i + 1)));
        }
        rig.play("kvk word 88=4; kvk word 92=1500; kvk word 96=2; kvs word 280=4");
        // One flag each, as the instructor changes it.
        const QString flags =
            "kvs byte 292 gauge pt1 invalid; kvs byte 293 gauge pt2 invalid; kvs byte 294 gauge pt3 invalid; "
            "kvs byte 296 phase off; kvs byte 303 breaker qf28 off; kvk byte 80 gauge pt4 invalid; "
            "kvk byte 81 gauge pt5 invalid; kvk byte 82 air off; kvk byte 83 air off; kvk byte 104 gauge pt6 "
            "invalid";
        for (const QString& flag : flags.split("; "))
            Rig(true).play(
                QString("%1=1; %2; wait 0.01; %1=0").arg(flag.section(' ', 0, 2), flag.section(' ', 3)));
        rig.play("emergency pendant on; rope left on; wait 0.01; kvs byte 301=1; kvs byte 302=1");
    }

    // The words in a state of the plant, by what they differ from those of the state at the head, and that
    // each of them refuses its command.
    void lockWords()
    {
        const QStringList air = QString("NL1+2 NZ1+1 NZ2+3 ND1+15 VP1+3 BKU=24").split(' ');
        const QStringList welding = QString(kWeldingWords).split(' ');
        const std::tuple<bool, const char*, const char*, const char*> rows[] = {
            {false, "", "", ""},
            {false, "door open; wait 4", "", "DOOR-1"},
            {false, "VP6 ON; VP7 ON; wait 2", "NL1+2", "NL1+3 NL2+1"},
            {false, "VP4 ON; VP3 ON; wait 7", "", "NL2-1 NZ2-1 VP4+2 VP8+2"}, // the chamber bleeds
            {false, "NW2 ON; wait 9; NL1 ON; NL2 ON; wait 60", "NL1+2 NZ1+1 NZ2+3 ND1+15",
             "ND1+3 VP2+1 VP3+1 VP5+1 VP6+1 VP7+1"}, // the lines are pumped
            {false, "BKU(1,1); wait 3", "BKU=24", "BKU=16"},
            {true, "", "", ""},
            {true, "DRIVE ON; wait 2", "VP4+2 VP8+2", "VP4+3 VP8+3"},
            {true, "VP1 OFF; VP5 OFF; wait 13", "NL2-6 NZ2-2 ND1-1 VP4+2 VP8+2", "NL2-4"},
            {true, "BKU(3,0); wait 5", "", ""}, // TMN runs down
            {true, "water 7 off; wait 8", "", "NL1+2"},
            {true, "water 6 off; wait 8", "", "NZ2+2"},
            {true, "water 4 off; wait 8", "", "ND1+8"},
            {true, "gauge pt1 invalid", "", "NZ1+1 VP2+1"},
            {true, "gauge pt2 invalid", "", "ND1+1 VP2+1"},
            {true, "gauge pt3 invalid", "", "NZ2+1 VP3+1 VP5+1"},
            {true, "gauge pt4 invalid", "", "VP5+1"},
            {true, "gauge pt5 invalid", "", "VP1+1 VP3+1"},
            {true, "gauge pt6 invalid", "BKU=1", "BKU=17"},
            {true, "rope left on; wait 0.01", "BKU=1", "BKU=3"},
        };
        for (const auto& [pumped, steps, gone, come] : rows) {
            Rig rig(pumped);
            rig.play(steps);
            QStringList expected = pumped ? welding : air;
            for (const QString& word : QString(gone).split(' ', Qt::SkipEmptyParts))
                QVERIFY2(expected.removeOne(word), steps);
            expected += QString(come).split(' ', Qt::SkipEmptyParts);
            QStringList found = rig.words();
            found.sort();
            expected.sort();
            QVERIFY2(found == expected, qPrintable(steps + QString(": ") + found.join(' ')));
            for (const Place& place : places) {
                if (rig.kvk<int>(104)) // BKU hears nothing otherwise
                    wordsRefuse(rig, place);
            }
        }
    }

    // From the air to the weld, back to the air, and home.
    void aDayOfWork()
    {
        Rig rig(false);
        const auto takes = [&](std::uint32_t regime, double least, double most) { // s
            const double seconds = rig.run(regime);
            QVERIFY2(seconds > least && seconds < most, qPrintable(QString::number(seconds)));
            rig.play("kvk word 96=2");
        };
        rig.play("kvk byte 87=0"); // stopped
        takes(2, 900, 2400);
        rig.play("kvk byte 87=1; !ALG(3); DOOR PRESS; wait 6; ALG(3)"); // the door was released

        double last = rig.chamber();
        double rough = 0;
        for (; rig.kvk<std::uint32_t>(96) == 1; rough += 10) {
            rig.pass(10);
            QVERIFY2(rig.chamber() < last * 1.01, "the pressure falls all the time");
            last = rig.chamber();
        }
        QVERIFY2(rough > 400 && rough < 1500, qPrintable(QString::number(rough)));
        QVERIFY(rig.chamber() < 5.1 && rig.chamber() > 1);

        takes(4, 120, 1200);
        QVERIFY(rig.chamber() < 1.02e-2 && rig.kvk<float>(136) < 1e-2F);
        QCOMPARE(rig.words().join(' '), QString(kWeldingWords));
        rig.pass(3600); // walls dry
        QVERIFY(rig.chamber() < 3e-3);

        takes(5, 60, 600);
        rig.play("DOOR UNPRESS; wait 6; door open; wait 4; door close; wait 4; DOOR PRESS; wait 6");
        QVERIFY(rig.kvk<float>(136) < 1e-2F); // the gun stayed under vacuum
        takes(4, 600, 5400);                  // roughs by itself
        takes(6, 600, 3600);
        rig.play("kvk byte 87=0");
        for (const Place& place : places)
            QCOMPARE(rig.state(place), 0);
        QVERIFY(rig.field<double>(false, 308) > 9e4 && rig.chamber() < 10); // air in the lines
    }

    void drivesAndDoorFollowTheVacuum()
    {
        Rig rig(true);
        QVERIFY(!rig.motion.status().drivesLock);
        rig.play("kvk byte 86=0; DRIVE ON; wait 2; !door open"); // spirals
        QVERIFY(rig.motion.drivesOn());
        rig.play("leak chamber 20; wait 30; !DRIVE ON; kvk byte 86=1");
        QVERIFY(!rig.motion.drivesOn() && rig.motion.status().drivesLock);
        rig.play("leak chamber 0; vacuum off; door open; wait 4; DRIVE ON; wait 2");
        QVERIFY(rig.motion.drivesOn());
        // The shutter does not close before the high voltage is off.
        Rig beam(true);
        Surroundings now = beam.vacuum.plant().surroundings();
        now.accelerating = true;
        beam.vacuum.plant().setSurroundings(now);
        beam.play("kvk word 132=5; !BKU(2,0)");
        Rig(false).play("DOOR PRESS; wait 1; !door open");
    }

    void whatStopsARegime()
    {
        const std::tuple<bool, QString, double, QString> rows[] = {
            // within so many seconds
            {false, "DOOR PRESS; wait 6; valve vp3 jam; ALG(3)", 60, "VP3 has an error"},
            {true, "valve vp1 jam; ALG(5)", 60, "VP1 has an error"},
            {false, "air off; ALG(2)", 60, "VP2 has an error"},
            {false, "DOOR PRESS; wait 6; ALG(3); wait 60; pump nl2 stop", 5, "NL2 has an error"},
            {false, "DOOR PRESS; wait 6; leak chamber 9000; ALG(3)", 2000, "NZ2 on: not done in 1800 s"},
            {true, "ALG(1); water 3 off", 20, "ND1 has not enough cooling water"},
            {true, "pump nl1 stop", 20, "nothing pumps behind ND1"},
            {true, "VP1 OFF; wait 13; leak foreline 60", 60, "the pressure behind ND1 is too high"},
            {true, "leak chamber 2000", 20, "the pressure in the chamber is too high for the open VP1"},
            {true, "gauge pt5 invalid", 15, "the pressure in the chamber is too high for the open VP1"},
            {true, "gauge pt6 invalid; ALG(5)", 90, "VE1 closed: not done in 60 s"},
            {true, "SET(KBK:7,30); DRIVE ON; ALG(5)", 60, "the drives are not off"},
        };
        for (const auto& [pumped, steps, within, why] : rows) {
            Rig rig(pumped);
            rig.play(steps);
            for (double time = 0; time < within && rig.kvk<std::uint32_t>(88) != 0xFFFFFFFF; time += 1)
                rig.pass(1);
            QVERIFY2(rig.log.last().endsWith(why), qPrintable(steps + ": " + rig.log.last()));
            rig.play("kvk word 88=4294967295; kvk word 96=0; wait 60");
            const VacuumPlant& plant = rig.vacuum.plant();
            for (const char* valve : {"VP1", "VP3", "VP4", "VP5", "VP8", "VE1"}) {
                const Device device = *deviceByName(valve);
                QVERIFY2(plant.is(device, DeviceState::Off) || !plant.reachable(device) ||
                             steps.contains(QString(valve).toLower() + " jam"),
                         valve);
            }
            QVERIFY(!why.contains("ND1") || !plant.powered(Device::ND1)); // the oil is in danger
            // Mended, the plant is taken up again.
            rig.play("valve vp1 free; ALG(1); VP6 OFF; kvk word 88=1");
        }
    }

    void commandsThatAreRefused()
    {
        // After these steps, if any, these commands, parted by ";".
        const std::pair<const char*, const char*> rows[] = {
            {"door open; wait 4", "ALG(3)"},
            {"DOOR PRESS; wait 6", "ALG(4)"},        // without the hot pump
            {"ALG(2); wait 1", "VP6 ON;DOOR PRESS"}, // the regime has the devices
            {"gauge pt6 invalid", "BKU(1,1)"},
            {"", "ALG(7);ALG();NP1 ON;TMN ON;vp6 ON;VP6 ON ;VP4 OPEN;BKU(4,1);BKU(1,2);"
                 "SET(KBK:99,1);SET(KBK:1,nan);SET(KBC:5,-1);SET(KBC:5)"},
        };
        for (const auto& [steps, commands] : rows) {
            Rig rig(false);
            rig.play(steps);
            const QByteArray before = rig.bytes();
            for (const QString& command : QString(commands).split(';')) {
                QVERIFY2(!rig.tell(command).isEmpty(), qPrintable(command));
                QCOMPARE(rig.bytes(), before);
                QVERIFY(rig.log.last().contains("refused " + command));
            }
        }
        Rig rig(false);
        // Each controller knows its own devices and constants alone.
        QVERIFY(!rig.vacuum.commandKvs("VP4 ON").isEmpty());
        QVERIFY(!rig.vacuum.commandKvk("VP6 ON").isEmpty());
        QVERIFY(!rig.vacuum.commandKvk("SET(KBC:5,6)").isEmpty());
    }

    void devicesInMotionAndTheirFaults()
    {
        Rig rig(false);
        rig.play("VP3 ON; wait 2; VP3=3; VP3 OFF; wait 1; VP3=2; wait 1.1; VP3=0"); // back as fast as it went
        rig.play("valve vp6 jam; VP6 ON; wait 1; VP6=3; wait 3; VP6=4; valve vp6 free; wait 2; VP6=1");
        rig.play("VP6 OFF; wait 2; NL2 ON; wait 9; pump nl2 stop; wait 1; NL2=4; kvs word 48=1"); // its error
        rig.play("NL2 ON; wait 1; NL2=4; pump nl2 mend; NL2 ON; wait 20; NL2=1");

        Rig hot(true);
        hot.play(
            "gauge pt3 freeze; leak roughing 5; water 6 off; wait 120; NZ2=4; kvs word 84=1"); // overheated
        QVERIFY(hot.field<double>(false, 324) < 1);                                            // frozen
        hot.play("gauge pt3 good; wait 0.01");
        QVERIFY(hot.field<double>(false, 324) > 1);
        hot.play("gauge pt6 invalid; wait 0.01; TMN=-1"); // no data
    }

    void constantsAreChangedAndTold()
    {
        Rig rig(true);
        rig.play("SET(KBK:3,0.0020000); wait 0.01");
        QVERIFY(rig.motion.status().drivesLock);
        rig.play("SET(KBC:17,7.5000000); kvs word 16=2"); // NL1 has not enough water now
        for (const auto& [port, signature] :
             {std::pair{rig.vacuum.kvsPort(), 0x5652}, std::pair{rig.vacuum.kvkPort(), 0x5651}}) {
            const Frame frame = port.answer("CONST").value();
            QCOMPARE(int(frame.signature), signature);
            QVERIFY(frame.body.size() > 0 && frame.body.size() % 92 == 0);
            for (int at = 0; at < frame.body.size(); at += 92) {
                const QByteArray text = frame.body.mid(at + 8, 84);
                QCOMPARE(text.at(83), '\0');
                QVERIFY(QTextCodec::codecForName("CP1251")
                            ->toUnicode(text.constData())
                            .contains(QRegularExpression("\\A[А-Я][а-яёА-ЯA-Z0-9 ().,/°-]+\\z")));
            }
        }
        ConstantRecord record;
        const QByteArray table = rig.vacuum.kvsPort().answer("CONST").value().body;
        std::memcpy(&record, table.constData() + 16 * 92, sizeof record);
        QVERIFY(record.id == 17 && record.value == 7.5F);
    }

private:
    static void wordsRefuse(Rig& rig, const Place& place)
    {
        const QString name = place.name;
        for (const bool on : {true, false}) {
            const int mine = name == "VPT" ? (on ? 0 : 1) : name == "VE1" ? (on ? 2 : 4) : on ? 24 : 0;
            const int word = rig.field<int>(place.kvk, on ? place.on : place.off);
            const bool locked = place.off ? word != 0 : (rig.kvk<int>(132) & mine) != 0;
            const int before = rig.state(place);
            QVERIFY2(rig.tell(place.command(on)).isEmpty() != locked, place.name);
            if (locked)
                QCOMPARE(rig.state(place), before);
            else
                rig.vacuum.plant().command(*deviceByName(name), before & 1);
        }
    }
};

QTEST_GUILESS_MAIN(TestVacuumPlant)
#include "test_vacuumplant.moc"
