#include "plant/controller.h"
#include "plant/controllerlink.h"
#include "plant/instructor.h"
#include "plant/vacuumsystem.h"

#include <QDir>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <cstring>

using namespace plant;

namespace {

constexpr double dt = 0.01;

// A controller with a folder for its programs and a clock that the test turns.
struct Machine
{
    QTemporaryDir root;
    MotionController c{root.path(), 7};
    VacuumSystem vacuum;
    ControllerLink link{portOf(c)}; // not listening
    Instructor instructor{c, vacuum, {&link, &link, &link}};
    QStringList log;

    Machine()
    {
        QDir(root.path()).mkpath(QStringLiteral("programs"));
        c.setLog([this](const QString& line) { log << line; });
    }
    void pass(double seconds)
    {
        for (int i = 0; i < std::lround(seconds / dt); ++i) {
            c.step(dt);
            c.stepMessages(dt);
        }
    }
    void on(bool transformed = false)
    {
        QCOMPARE(c.command(QStringLiteral("DRIVE ON")), QString());
        pass(1.5);
        QVERIFY(c.drivesOn());
        if (!transformed)
            return;
        QCOMPARE(c.command(QStringLiteral("TRANS ON")), QString());
        pass(dt);
        QVERIFY(c.axes().transformed());
    }
    // Empty when the controller did it.
    QString tell(const char* command) { return c.command(QLatin1String(command)); }
    // Steps parted by ";": the instructor's lines in small letters, commands of the console in capitals, and
    // "wait SECONDS". All must succeed.
    void play(const QString& steps)
    {
        for (const QString& step : steps.split(QStringLiteral("; "), Qt::SkipEmptyParts)) {
            if (step.startsWith(QLatin1String("wait ")))
                pass(step.mid(5).toDouble());
            else if (step.at(0).isUpper())
                QCOMPARE(c.command(step), QString());
            else
                QCOMPARE(instructor.execute(step), QStringLiteral("ok"));
        }
    }
    double at(AxisId axis) const { return c.axes().position(axis); }
    void program(const QString& name, const QString& text)
    {
        QFile file(root.filePath(QStringLiteral("programs/") + name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(text.toUtf8());
    }
    // Message numbers that stand in the datagram now.
    QList<std::uint32_t> messages() const
    {
        const StatusPack pack = c.status();
        QList<std::uint32_t> numbers;
        for (const std::uint32_t number : pack.message)
            if (number)
                numbers << number;
        return numbers;
    }
    template <class T>
    T field(int offset) const // as the console reads it
    {
        const StatusPack pack = c.status();
        T value;
        std::memcpy(&value, reinterpret_cast<const char*>(&pack) + offset, sizeof value);
        return value;
    }
};

} // namespace

class TestPlant : public QObject
{
    Q_OBJECT

private slots:
    void theDatagramCarriesEachValueAtItsOffset();
    void flagsStandAtTheirOffsets_data();
    void flagsStandAtTheirOffsets();
    void drivesGoOnOnlyWhenAllIsInOrder_data();
    void drivesGoOnOnlyWhenAllIsInOrder();
    void troubleTakesTheDrivesOff_data();
    void troubleTakesTheDrivesOff();
    void driveCodesFollowTheDrive();
    void aJogRunsUpBrakesAndStops();
    void limitsEndAJog();
    void pairsMoveTogether();
    void theEndlessAxisTurnsPastItsZero();
    void incrementsAddUp();
    void theRemotePanelTurnsItsOwnAxis();
    void aNewLimitIsToldAndHeld();
    void parkingAndReferencingNeedDrivesOff();
    void armSolvesEveryPoseOfItsRange();
    void virtualAxesMoveTheJoints();
    void aJointLimitEndsAVirtualMove();
    void programsComeFromTheRoot();
    void aWordMeansWhatTheCoordinateSystemSays_data();
    void aWordMeansWhatTheCoordinateSystemSays();
    void aProgramAndAHandNeverMoveTheSameAxis();
    void aProgramStopsAtASoftLimit();
    void programsWriteTheConsolesVariables();
    void messagesTakeTurnsAndGoOut();
    void noGarbageChangesAnything();
    void theSameSeedGivesTheSameRun();
};

void TestPlant::theDatagramCarriesEachValueAtItsOffset()
{
    Machine m;
    // A value of its own for each axis, so that no two offsets can be mixed up.
    for (int i = 0; i < driveCount; ++i)
        QCOMPARE(m.c.placeAxis(static_cast<AxisId>(i), 10 + i), QString());
    m.c.placeAxis(AxisId::LX2, 11);
    m.c.placeAxis(AxisId::U2, 18);
    for (int i = 0; i < driveCount; ++i)
        QCOMPARE(m.field<float>(28 + 4 * i), 10.0f + static_cast<float>(i));
    QCOMPARE(m.field<float>(76), 13.0f + 14.0f + 15.0f); // PHI = A + B + C
    const ArmPose pose = armForward({13, 14, 15});
    QVERIFY(std::abs(m.field<float>(68) - pose.x) < 1e-3);
    QVERIFY(std::abs(m.field<float>(72) - pose.z) < 1e-3);

    const char* const names[] = {"LX", "LY", "A", "B", "C", "D", "U1", "V", "X", "Z", "PHI"};
    for (int i = 0; i < coordCount; ++i) {
        const QString name = QLatin1String(names[i]);
        QCOMPARE(m.c.command(QStringLiteral("LIMIT_MAX(%1,%2.5)").arg(name).arg(50 + i)), QString());
        QCOMPARE(m.c.command(QStringLiteral("LIMIT_MIN(%1,-%2.5)").arg(name).arg(50 + i)), QString());
        QCOMPARE(m.field<float>(124 + 4 * i), -50.5f - static_cast<float>(i));
        QCOMPARE(m.field<float>(168 + 4 * i), 50.5f + static_cast<float>(i));
    }
    for (int i = 0; i < driveCount; ++i) {
        m.c.trip(static_cast<AxisId>(i), 0xF2018 + i);
        QCOMPARE(m.field<std::int32_t>(80 + 4 * i), 0xF2018 + i);
    }
    QCOMPARE(m.field<std::uint32_t>(120), 3u); // a fault on the arm
    QCOMPARE(m.field<std::uint16_t>(0), std::uint16_t(0x5650));
    for (int channel = 0; channel < 3; ++channel) {
        QCOMPARE(m.field<std::uint32_t>(4 + 4 * channel), 1u);
        QCOMPARE(m.field<std::uint32_t>(16 + 4 * channel), m.c.nc().mode(channel + 1));
    }
    m.c.raiseError(4711);
    QCOMPARE(m.field<std::uint32_t>(232), 4711u);
    m.c.setTransportModule(3);
    QCOMPARE(m.field<std::uint32_t>(240), 3u);
    m.c.setPult(2, 0);
    QCOMPARE(m.field<std::uint32_t>(252), 2u);
    m.c.setAlarm(AlarmButton::RightRope, true);
    QCOMPARE(m.field<std::uint32_t>(256), 8u);
    m.c.setLight(Light::Spiral, true);
    QCOMPARE(m.field<std::uint32_t>(248), 4u);
    m.c.setBreaker(Breaker::QF18, false);
    m.c.setBreaker(Breaker::QF33, false);
    QCOMPARE(m.field<std::uint32_t>(244), 0x7FFu & ~(1u << 10) & ~(1u << 2));
}

void TestPlant::flagsStandAtTheirOffsets_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<int>("before");
    QTest::addColumn<QString>("steps");
    const auto row = [](const QByteArray& name, int offset, int before, const QString& steps) {
        QTest::newRow(name) << offset << before << steps;
    };
    row("drives on", 282, 0, "DRIVE ON; wait 1.2");
    row("virtual axes", 283, 0, "DRIVE ON; wait 1.2; TRANS ON; wait 0.01");
    row("remote panel", 285, 0, "DRIVE ON; wait 1.2; PULT ON");
    row("key", 286, 1, "key off");
    row("drives lock", 287, 0, "door close");
    row("spiral lock", 288, 1, "door close; wait 4; vacuum on");
    row("spiral breaker", 291, 1, "breaker qf23 off");
    row("24 V breaker", 292, 1, "breaker qf28 off");
    row("phases", 293, 0, "phase off");
    const char* const names[] = {"LX", "LY", "A", "B", "C", "D", "U", "V", "X", "Z", "PHI"};
    for (int i = 0; i < coordCount; ++i) {
        const CoordTraits& range = traits(static_cast<Coord>(i));
        if (range.endless)
            continue;
        const QString place = QStringLiteral("axis %1 %2").arg(QLatin1String(names[i]));
        row(QByteArray(names[i]) + " lower", 260 + i, 0, place.arg(range.min));
        row(QByteArray(names[i]) + " upper", 271 + i, 0, place.arg(range.max));
    }
}

void TestPlant::flagsStandAtTheirOffsets()
{
    QFETCH(int, offset);
    QFETCH(int, before);
    QFETCH(QString, steps);
    Machine m;
    QCOMPARE(int(m.field<std::uint8_t>(offset)), before);
    m.play(steps);
    QCOMPARE(int(m.field<std::uint8_t>(offset)), 1 - before);
}

void TestPlant::drivesGoOnOnlyWhenAllIsInOrder_data()
{
    QTest::addColumn<QString>("spoil");
    QTest::addColumn<QString>("mend");
    QTest::newRow("key") << "key off"
                         << "key on";
    QTest::newRow("door") << "door close"
                          << "door open; wait 4";
    QTest::newRow("door closed, then vacuum") << "door close; wait 4"
                                              << "vacuum on";
    QTest::newRow("phases") << "phase off"
                            << "phase on";
    QTest::newRow("emergency button") << "emergency console on"
                                      << "emergency console off";
    QTest::newRow("rope") << "rope right on"
                          << "rope right off";
    QTest::newRow("24 V") << "breaker qf28 off"
                          << "breaker qf28 on";
    QTest::newRow("breaker of all") << "breaker qf18 off"
                                    << "breaker qf18 on";
    QTest::newRow("breaker of V, then V parked") << "breaker qf40 off"
                                                 << "PARK(V)";
    QTest::newRow("fault") << "trip C"
                           << "CLEAR_ERROR(C)";
}

void TestPlant::drivesGoOnOnlyWhenAllIsInOrder()
{
    QFETCH(QString, spoil);
    QFETCH(QString, mend);
    Machine m;
    m.play(spoil);
    QVERIFY(!m.tell("DRIVE ON").isEmpty());
    m.pass(2);
    QVERIFY(!m.c.drivesOn());
    m.play(mend);
    m.on();
}

void TestPlant::troubleTakesTheDrivesOff_data()
{
    QTest::addColumn<QString>("trouble");
    QTest::addColumn<int>("message"); // 0: none
    QTest::addColumn<int>("codeOfB");
    QTest::newRow("door") << "door close" << 104 << 0xA0013;
    QTest::newRow("rope") << "rope left on" << 103 << 0xA0013;
    QTest::newRow("fault") << "trip B F2018" << 0 << 0xF2018;
    QTest::newRow("overload") << "trip B F8060" << 124 << 0xF8060;
    QTest::newRow("own breaker") << "breaker qf35 off" << 0 << 0xF2026;
    QTest::newRow("main breaker") << "breaker qf18 off" << 0 << 0xF2026;
    QTest::newRow("24 V") << "breaker qf28 off" << 0 << 0;
    QTest::newRow("phases") << "phase off" << 0 << 0xA0013;
}

// Whatever takes the power takes motion, programs, the virtual axes and the remote panel with it.
void TestPlant::troubleTakesTheDrivesOff()
{
    QFETCH(QString, trouble);
    QFETCH(int, message);
    QFETCH(int, codeOfB);
    Machine m;
    m.on(true);
    m.tell("PULT ON");
    m.tell("MOVE(Z,600)");
    m.program(QStringLiteral("w.npg"), QStringLiteral("N1 $2\nN2 G4 F100\nN3 M30\n"));
    QCOMPARE(m.tell("EXEC_2(/programs/w.npg)"), QString());
    m.pass(0.5);
    QCOMPARE(m.c.channelState(2), ChannelState::Running);
    m.play(trouble);
    const double z = m.at(AxisId::Z);
    m.pass(0.9);
    QCOMPARE(m.at(AxisId::Z), z);
    QCOMPARE(m.c.channelState(2), ChannelState::Idle);
    const StatusPack pack = m.c.status();
    QCOMPARE(pack.drivesOn + pack.transOn + pack.pultOn, 0);
    QCOMPARE(pack.driveState[int(AxisId::B)], codeOfB);
    QCOMPARE(m.messages(), message ? QList<std::uint32_t>{std::uint32_t(message)} : QList<std::uint32_t>());
}

void TestPlant::driveCodesFollowTheDrive()
{
    Machine m;
    const auto code = [&](AxisId axis) { return m.c.status().driveState[int(axis)]; };
    QCOMPARE(m.tell("PARK(U1)"), QString());
    QCOMPARE(code(AxisId::LX1), 0xA0013);
    m.tell("DRIVE ON");
    m.pass(0.5);
    QCOMPARE(code(AxisId::LX1), 0xA0012);
    QVERIFY(!m.c.drivesOn());
    m.pass(1);
    QCOMPARE(code(AxisId::LX1), 0xA0102);
    QCOMPARE(code(AxisId::U1), 0xC1600);
    QCOMPARE(code(AxisId::U2), 0xC1600); // follows its partner
    m.tell("MOVE(LX,600)");
    m.pass(0.1);
    QCOMPARE(code(AxisId::LX1), 0xA0101);
    m.tell("MOVE(LX,0)");
    m.pass(1);
    QCOMPARE(code(AxisId::LX1), 0xA0102);
    QVERIFY(!m.tell("MOVE(U1,10)").isEmpty());

    // A warning is shown and stops nothing.
    m.c.trip(AxisId::A, 0xE2074);
    QVERIFY(m.c.drivesOn());
    QCOMPARE(code(AxisId::A), 0xE2074);
    QCOMPARE(m.c.status().virtualState, 4u);
    m.tell("CLEAR_ERROR(A)");
    QCOMPARE(code(AxisId::A), 0xC0500);
    m.pass(1);
    QCOMPARE(code(AxisId::A), 0xA0102);
    m.tell("DRIVE OFF");
    QVERIFY(!m.c.drivesOn());
    QCOMPARE(code(AxisId::A), 0xA0012);
    m.pass(1);
    QCOMPARE(code(AxisId::A), 0xA0013);

    // An undervoltage stays as long as its cause.
    m.on();
    m.c.setBreaker(Breaker::QF33, false);
    QVERIFY(!m.tell("CLEAR_ERROR(LY)").isEmpty());
    m.c.setBreaker(Breaker::QF33, true);
    QCOMPARE(m.tell("CLEAR_ERROR(LY)"), QString());
}

void TestPlant::aJogRunsUpBrakesAndStops()
{
    Machine m;
    QVERIFY(!m.tell("MOVE(LY,600)").isEmpty()); // drives are off
    m.on();
    QCOMPARE(m.tell("MOVE(LY,600)"), QString());
    m.pass(dt);
    QVERIFY(m.at(AxisId::LY) > 0 && m.at(AxisId::LY) < 0.05); // no jump to full speed
    m.pass(1);
    const double first = m.at(AxisId::LY);
    m.pass(1);
    QVERIFY(std::abs(m.at(AxisId::LY) - first - 10) < 0.01); // 600 mm/min
    QCOMPARE(m.tell("MOVE(LY,0)"), QString());
    m.pass(1);
    const double rest = m.at(AxisId::LY);
    m.pass(1);
    QCOMPARE(m.at(AxisId::LY), rest);
    m.tell("MOVE(LY,-1e9)"); // cut to what the axis can do
    m.pass(2);
    const double before = m.at(AxisId::LY);
    m.pass(1);
    QVERIFY(std::abs(before - m.at(AxisId::LY) - 50) < 0.01);
    m.tell("STOP_PRG");
    m.pass(1);
    QVERIFY(!m.c.axes().anyMoving());
}

void TestPlant::limitsEndAJog()
{
    Machine m;
    m.on();
    struct Case
    {
        AxisId axis;
        double start;
        int speed;
        int message;
    };
    const Case cases[] = {{AxisId::LX1, 1499, 3000, 131}, {AxisId::LY, -799.9, -600, 142},
                          {AxisId::A, 89, 360, 133},      {AxisId::B, -79, -720, 144},
                          {AxisId::C, 199, 900, 135},     {AxisId::D, 179, 100, 136},
                          {AxisId::U1, -99, -120, 147}};
    for (const Case& one : cases) {
        const Coord coord = traits(one.axis).coord;
        const QString name = QLatin1String(traits(one.axis).name);
        QCOMPARE(m.c.placeAxis(one.axis, one.start), QString());
        QCOMPARE(m.c.command(QStringLiteral("MOVE(%1,%2)").arg(name).arg(one.speed)), QString());
        for (int i = 0; i < 200 && m.c.axes().moving(one.axis); ++i) {
            m.pass(dt);
            QVERIFY(!m.c.axes().beyond(one.axis, m.at(one.axis))); // never past it
        }
        QVERIFY2(!m.c.axes().moving(one.axis), qPrintable(name));
        QCOMPARE(m.at(one.axis), one.speed > 0 ? traits(coord).max : traits(coord).min);
        QCOMPARE(m.messages(), QList<std::uint32_t>{std::uint32_t(one.message)});
        m.pass(1.1);
        // Pressed again at the limit: told again; the other way is free.
        m.c.command(QStringLiteral("MOVE(%1,%2)").arg(name).arg(one.speed));
        m.pass(0.1);
        QCOMPARE(m.messages(), QList<std::uint32_t>{std::uint32_t(one.message)});
        m.c.command(QStringLiteral("MOVE(%1,%2)").arg(name).arg(-one.speed));
        m.pass(0.3);
        QVERIFY(one.speed > 0 ? !m.c.axes().atMax(coord) : !m.c.axes().atMin(coord));
        m.tell("STOP_PRG");
        m.pass(1.1);
    }
}

void TestPlant::pairsMoveTogether()
{
    Machine m;
    m.on();
    m.tell("MOVE(LX,3000)");
    m.pass(1);
    m.tell("MOVE(LX,0)");
    m.pass(1);
    QVERIFY(m.at(AxisId::LX1) > 10);
    QCOMPARE(m.at(AxisId::LX2), m.at(AxisId::LX1));
    const double alone = m.at(AxisId::LX1);
    m.tell("MOVE(LX2,60)"); // aligns the second drive
    m.pass(1);
    m.tell("MOVE(LX2,0)");
    m.pass(1);
    QCOMPARE(m.at(AxisId::LX1), alone);
    const double offset = m.at(AxisId::LX2) - alone;
    QVERIFY(offset > 0.5);
    // The pair stops where the one ahead meets the limit that both share.
    m.c.placeAxis(AxisId::LX1, 1490);
    m.tell("MOVE(LX,3000)");
    m.pass(3);
    QCOMPARE(m.at(AxisId::LX2), 1500.0);
    QVERIFY(std::abs(m.at(AxisId::LX2) - m.at(AxisId::LX1) - offset) < 1e-3);
}

void TestPlant::theEndlessAxisTurnsPastItsZero()
{
    Machine m;
    m.on();
    m.c.placeAxis(AxisId::V, 350);
    m.tell("MOVE(V,2160)");
    m.pass(1);
    QVERIFY(m.at(AxisId::V) > 5 && m.at(AxisId::V) < 40);
    m.tell("MOVE(V,-2160)");
    m.pass(3);
    QVERIFY(m.at(AxisId::V) > 260 && m.at(AxisId::V) < 360);
    QVERIFY(m.messages().isEmpty());
}

void TestPlant::incrementsAddUp()
{
    Machine m;
    QVERIFY(!m.tell("LIR(LX,1000,3000)").isEmpty());
    m.on();
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(m.tell("LIR(LX,1000,3000)"), QString());
        m.pass(0.02);
    }
    QCOMPARE(m.tell("LIR(LX,-500,3000)"), QString());
    m.pass(2);
    QCOMPARE(m.at(AxisId::LX1), 4.5);
    QVERIFY(!m.tell("LIR(U,100,0)").isEmpty()); // no motion at speed 0
    m.c.placeAxis(AxisId::D, 179.5);
    m.tell("LIR(D,1000,900)");
    m.pass(2);
    QCOMPARE(m.at(AxisId::D), 180.0);
    QVERIFY(m.c.axes().atMax(Coord::D));
    // An increment taken back before the axis has turned leaves it where it is.
    m.tell("LIR(LY,100,3000)");
    m.tell("LIR(LY,-100,3000)");
    m.pass(1);
    QCOMPARE(m.at(AxisId::LY), 0.0);
    QVERIFY(!m.c.axes().anyMoving());
}

void TestPlant::theRemotePanelTurnsItsOwnAxis()
{
    Machine m;
    QVERIFY(!m.tell("PULT ON").isEmpty());
    m.on(true);
    QVERIFY(!m.tell("HANDWHEEL(1000)").isEmpty());
    m.tell("PULT ON");
    m.c.setPult(2, 2);
    QCOMPARE(m.tell("HANDWHEEL(1000)"), QString());
    m.c.setPult(3, 4);
    QCOMPARE(m.tell("HANDWHEEL(-2000)"), QString());
    m.c.setPult(3, 2);
    QVERIFY(!m.tell("HANDWHEEL(1000)").isEmpty()); // this place of the selector is empty
    m.pass(2);
    QCOMPARE(m.at(AxisId::Z), 1.0);
    QCOMPARE(m.at(AxisId::V), 358.0);
}

void TestPlant::aNewLimitIsToldAndHeld()
{
    Machine m;
    m.on();
    QCOMPARE(m.tell("LIMIT_MAX(U1,12.5)"), QString());
    QCOMPARE(m.tell("LIMIT_MIN(U2,-12.5)"), QString()); // shared by the pair
    QCOMPARE(m.tell("LIMIT_MAX(PHI,45.0)"), QString());
    m.pass(dt);
    QCOMPARE(m.messages(), (QList<std::uint32_t>{187, 167, 191}));
    m.tell("MOVE(U1,120)");
    m.pass(10);
    QCOMPARE(m.at(AxisId::U2), 12.5);
    for (const char* wrong :
         {"LIMIT_MAX(LX,1506)", "LIMIT_MIN(LX,-1506)", "LIMIT_MAX(LX,-1500)", "LIMIT_MIN(LX,1500)",
          "LIMIT_MAX(LX,nan)", "LIMIT_MAX(LX,inf)", "LIMIT_MAX(LX,)"})
        QVERIFY2(!m.tell(wrong).isEmpty(), wrong);
    QCOMPARE(m.c.axes().maxLimit(Coord::LX), 1500.0);
}

void TestPlant::parkingAndReferencingNeedDrivesOff()
{
    Machine m;
    m.on();
    for (const char* wrong : {"PARK(A)", "DEPARK(A)", "REFERENCE(A,15000)"})
        QVERIFY2(!m.tell(wrong).isEmpty(), wrong);
    m.tell("DRIVE OFF");
    m.pass(1);
    for (const char* wrong :
         {"PARK(LX2)", "PARK(X)", "REFERENCE(U2,0)", "REFERENCE(PHI,0)", "REFERENCE(A,1.5)"})
        QVERIFY2(!m.tell(wrong).isEmpty(), wrong);
    QCOMPARE(m.tell("REFERENCE(A,15000)"), QString());
    QCOMPARE(m.tell("REFERENCE(LX,-1)"), QString());
    QCOMPARE(m.tell("REFERENCE(V,900000)"), QString());
    m.pass(dt);
    QCOMPARE(m.at(AxisId::A), 1.5);
    QCOMPARE(m.at(AxisId::PHI), 1.5);
    QCOMPARE(m.at(AxisId::LX2), -0.0001);
    QCOMPARE(m.messages(), (QList<std::uint32_t>{204, 201, 210}));
    QCOMPARE(m.tell("PARK(B)"), QString());
    m.on();
    QVERIFY(!m.tell("TRANS ON").isEmpty()); // the arm needs all its joints
    m.tell("DRIVE OFF");
    QCOMPARE(m.tell("DEPARK(B)"), QString());
    m.on(true);
}

void TestPlant::armSolvesEveryPoseOfItsRange()
{
    const ArmPose zero = armForward({});
    QCOMPARE(zero.x, 0.0);
    QCOMPARE(zero.z, 0.0);
    const auto inLimits = [](Coord coord, double value) {
        return value > traits(coord).min && value < traits(coord).max;
    };
    for (double x = -300; x <= 300; x += 50)
        for (double z = -300; z <= 300; z += 50)
            for (double phi = -120; phi <= 120; phi += 15) {
                const auto joints = armInverse({x, z, phi});
                QVERIFY(joints.has_value());
                QVERIFY(inLimits(Coord::A, joints->a) && inLimits(Coord::B, joints->b) &&
                        inLimits(Coord::C, joints->c));
                const ArmPose back = armForward(*joints);
                QVERIFY(std::abs(back.x - x) < 1e-6 && std::abs(back.z - z) < 1e-6 &&
                        std::abs(back.phi - phi) < 1e-9);
            }
    for (double a = -90; a <= 90; a += 15)
        for (double b = -80; b <= 80; b += 10)
            for (double c = -200; c <= 200; c += 40) {
                const auto joints = armInverse(armForward({a, b, c}));
                QVERIFY(joints.has_value());
                QVERIFY(std::abs(joints->a - a) < 1e-6 && std::abs(joints->b - b) < 1e-6 &&
                        std::abs(joints->c - c) < 1e-6);
            }
    QVERIFY(!armInverse({0, -700, 0}));
}

void TestPlant::virtualAxesMoveTheJoints()
{
    Machine m;
    QVERIFY(!m.tell("TRANS ON").isEmpty());
    m.on();
    QCOMPARE(m.c.status().virtualState, 1u);
    QVERIFY(!m.tell("MOVE(X,600)").isEmpty());
    m.tell("MOVE(A,60)");
    m.pass(1);
    m.tell("TRANS ON"); // waits for the jog to end
    m.pass(1);
    QVERIFY(m.c.axes().transformed());
    QCOMPARE(m.c.status().virtualState, 2u);
    QVERIFY(!m.tell("MOVE(A,60)").isEmpty());
    const double x = m.at(AxisId::X);
    const double phi = m.at(AxisId::PHI);
    const double a = m.at(AxisId::A);
    QVERIFY(x != 0 && phi > 0);
    m.tell("MOVE(Z,-1200)");
    m.pass(2);
    m.tell("MOVE(Z,0)");
    m.pass(1);
    QCOMPARE(m.at(AxisId::X), x);
    QCOMPARE(m.at(AxisId::PHI), phi);
    QVERIFY(std::abs(m.at(AxisId::A) - a) > 0.1);
    const ArmPose pose = armForward({m.at(AxisId::A), m.at(AxisId::B), m.at(AxisId::C)});
    QVERIFY(std::abs(pose.z - m.at(AxisId::Z)) < 0.01 && std::abs(pose.x - x) < 0.01);
    const double z = m.at(AxisId::Z);
    m.tell("TRANS OFF");
    m.pass(0.1);
    QVERIFY(!m.c.axes().transformed());
    QCOMPARE(m.at(AxisId::Z), z); // told outside of the mode too
    m.tell("MOVE(C,900)");
    m.pass(1);
    QVERIFY(m.at(AxisId::PHI) > phi + 10);
}

void TestPlant::aJointLimitEndsAVirtualMove()
{
    Machine m;
    m.tell("LIMIT_MAX(B,5.0)");
    m.pass(1.1);
    m.on(true);
    m.tell("MOVE(Z,3000)"); // lifting bends the elbow
    m.pass(5);
    QVERIFY(!m.c.axes().anyMoving());
    QVERIFY(m.at(AxisId::B) <= 5 && m.at(AxisId::B) > 4.5);
    QVERIFY(m.at(AxisId::Z) > 10 && m.at(AxisId::Z) < 299);
    m.tell("MOVE(Z,-600)");
    m.pass(1);
    QVERIFY(m.at(AxisId::B) < 4.5);
}

void TestPlant::programsComeFromTheRoot()
{
    Machine m;
    m.program(QStringLiteral("go.npg"), QStringLiteral("N01 $1\nN03 G90 G01 LX=30.00 F3000\nN05 M30\n"));
    QVERIFY(!m.tell("EXEC_1(/programs/go.npg)").isEmpty());
    QCOMPARE(m.messages(), QList<std::uint32_t>{111});
    m.on();
    for (const char* wrong : {"EXEC_1(/programs/none.npg)", "EXEC_1(/programs/../programs/go.npg)",
                              "EXEC_1(/etc/passwd)", "EXEC_4(/programs/go.npg)", "EXEC_1()"})
        QVERIFY2(!m.tell(wrong).isEmpty(), wrong);
    QCOMPARE(m.field<std::uint32_t>(232), cncerror::noProgramFile);
    QCOMPARE(m.tell("EXEC_1(/programs/go.npg)"), QString());
    m.pass(0.1);
    QCOMPARE(m.field<std::uint32_t>(4), 3u);
    QVERIFY(!m.tell("EXEC_1(/programs/go.npg)").isEmpty()); // one at a time
    m.pass(2);
    QCOMPARE(m.at(AxisId::LX1), 30.0);
    QCOMPARE(m.at(AxisId::LX2), 30.0);
    QCOMPARE(m.c.channelState(1), ChannelState::Idle);

    m.program(QStringLiteral("bad.npg"), QStringLiteral("N1 $1\nN2 NONSENSE\nN3 M30\n"));
    m.tell("EXEC_1(/programs/bad.npg)");
    m.pass(0.1);
    QCOMPARE(m.c.channelState(1), ChannelState::Error);
    QCOMPARE(m.field<std::uint32_t>(232), cncerror::programStopped);
    m.tell("STOP_PRG");
    m.pass(0.1);
    QCOMPARE(m.c.channelState(1), ChannelState::Idle);
}

void TestPlant::aWordMeansWhatTheCoordinateSystemSays_data()
{
    QTest::addColumn<QString>("block");
    QTest::addColumn<bool>("coord");
    QTest::addColumn<int>("axis");
    QTest::newRow("x of a seam") << "G90 G01 x=7.00 F3000" << true << int(AxisId::LX1);
    QTest::newRow("y of a seam") << "G90 G01 y=7.00 F3000" << true << int(AxisId::LY);
    QTest::newRow("z of a seam") << "G90 G01 z=7.00 F3000" << true << int(AxisId::Z);
    QTest::newRow("X of a fixed move") << "G90 G01 X=7 F3000" << false << int(AxisId::X);
    QTest::newRow("Y of a fixed move is Z") << "G90 G01 Y=7 F3000" << false << int(AxisId::Z);
    QTest::newRow("PHI") << "G90 G01 PHI=7 F900" << false << int(AxisId::PHI);
    QTest::newRow("LX2 alone") << "G90 G01 LX2=7 F3000" << false << int(AxisId::LX2);
    QTest::newRow("U1 on channel 1") << "G90 G01 U1=7.00 F120" << false << int(AxisId::U1);
    QTest::newRow("D relative") << "G91 G01 D=7 F900" << false << int(AxisId::D);
    QTest::newRow("V backwards past zero") << "G91 G01 V=-353 F2160" << false << int(AxisId::V);
}

void TestPlant::aWordMeansWhatTheCoordinateSystemSays()
{
    QFETCH(QString, block);
    QFETCH(bool, coord);
    QFETCH(int, axis);
    Machine m;
    m.on(true);
    const QString head = coord ? QStringLiteral("N2 COORD(1)\nN3 COORD(2)\n") : QString();
    const QString tail = coord ? QStringLiteral("N5 COORD(0,2)\n") : QString();
    m.program(QStringLiteral("p.npg"), QStringLiteral("N1 $1\n%1N4 %2\n%3N6 M30").arg(head, block, tail));
    QCOMPARE(m.tell("EXEC_1(/programs/p.npg)"), QString());
    m.pass(15);
    QVERIFY2(m.c.channelState(1) == ChannelState::Idle, qPrintable(m.log.join(QLatin1Char('\n'))));
    QCOMPARE(m.at(static_cast<AxisId>(axis)), 7.0);
    QStringList moved;
    for (const AxisId other : {AxisId::LX1, AxisId::LX2, AxisId::LY, AxisId::D, AxisId::U1, AxisId::V,
                               AxisId::X, AxisId::Z, AxisId::PHI})
        if (std::abs(m.at(other)) > 1e-3)
            moved << QLatin1String(traits(other).name);
    QCOMPARE(moved.size(), axis == int(AxisId::LX1) ? 2 : 1); // the carriage's drives go together
}

void TestPlant::aProgramAndAHandNeverMoveTheSameAxis()
{
    Machine m;
    m.on();
    m.program(QStringLiteral("long.npg"), QStringLiteral("N1 $1\nN2 G90 G01 LX=300 F600\nN3 M30\n"));
    m.tell("MOVE(LX,-3000)");
    m.tell("MOVE(V,360)");
    m.pass(1);
    m.tell("EXEC_1(/programs/long.npg)"); // waits until the jog has come to rest
    QCOMPARE(m.c.channelState(1), ChannelState::Loading);
    QVERIFY(m.c.axes().moving(AxisId::LX1));
    const double turned = m.at(AxisId::V);
    m.pass(1);
    QCOMPARE(m.c.channelState(1), ChannelState::Running);
    QVERIFY(m.at(AxisId::V) > turned + 5); // another channel's axis turns on
    for (const char* wrong :
         {"MOVE(LX,600)", "LIR(LX,100,3000)", "MOVE(LY,600)", "TRANS ON", "EXEC_1(/programs/long.npg)"})
        QVERIFY2(!m.tell(wrong).isEmpty(), wrong);
    QVERIFY(!m.c.placeAxis(AxisId::LX1, 0).isEmpty());
    m.tell("STOP_PRG");
    m.pass(1);
    QVERIFY(!m.c.axes().anyMoving());
    QCOMPARE(m.tell("MOVE(LX,600)"), QString());
}

void TestPlant::aProgramStopsAtASoftLimit()
{
    Machine m;
    m.on(true);
    m.tell("LIMIT_MAX(LX,20.0)");
    m.program(QStringLiteral("far.npg"), QStringLiteral("N1 $1\nN2 G90 G01 LX=30 F600\nN3 M30\n"));
    m.tell("EXEC_1(/programs/far.npg)");
    m.pass(0.2);
    QCOMPARE(m.c.channelState(1), ChannelState::Error);
    QVERIFY(m.messages().contains(131));
    QCOMPARE(m.at(AxisId::LX1), 0.0);
    m.tell("STOP_PRG");
    m.pass(2);

    // The end of this arc is allowed, its way is not: a half circle from 0 to 10 by way of 25.
    m.program(QStringLiteral("arc.npg"),
              QStringLiteral("N1 $1\nN2 COORD(2)\nN3 G17\n"
                             "N4 G90 G01 x=20.00 y=0.00 z=0.00 F3000\n"
                             "N5 G90 G3 x=20.00 y=40.00 R20.00 z=0.00 F3000\nN6 M30\n"));
    m.tell("EXEC_1(/programs/arc.npg)");
    m.pass(3);
    QVERIFY(m.c.channelState(1) != ChannelState::Running);
    QVERIFY(m.at(AxisId::LX1) <= 20.001);
    QVERIFY(m.at(AxisId::LY) < 39);
}

void TestPlant::programsWriteTheConsolesVariables()
{
    Machine m;
    m.on();
    m.program(QStringLiteral("v.npg"),
              QStringLiteral("N1 $3\nN2 GAX(IR)\nN3 G0 IR=12.5\nWAIT\n1 @1=17\n2 @AXISMOVING?=TRUE\n"
                             "3 @RASTERAMPX=1.25\nN4 G4 F1.0\n4 @AXISMOVING?=FALSE\nN5 M30\n"));
    QCOMPARE(m.tell("EXEC_3(/programs/v.npg)"), QString());
    m.pass(0.5);
    QCOMPARE(m.field<std::uint32_t>(228), 17u);
    QCOMPARE(int(m.field<std::uint8_t>(284)), 1);
    QCOMPARE(m.c.beamCurrent(), 12.5);
    QCOMPARE(m.c.variable(QStringLiteral("@RASTERAMPX")), QStringLiteral("1.25"));
    m.pass(1);
    QCOMPARE(int(m.field<std::uint8_t>(284)), 0);

    m.program(QStringLiteral("v.npg"), QStringLiteral("N1 $3\nN2 G0 IR=801\nN3 M30\n"));
    m.tell("EXEC_3(/programs/v.npg)");
    m.pass(0.2);
    QCOMPARE(m.c.channelState(3), ChannelState::Error);
    QCOMPARE(m.c.beamCurrent(), 12.5);
}

void TestPlant::messagesTakeTurnsAndGoOut()
{
    Machine m;
    for (std::uint32_t number = 1; number <= 6; ++number)
        m.c.raiseMessage(number);
    for (int i = 0; i < 4; ++i)
        QCOMPARE(m.field<std::uint32_t>(212 + 4 * i), std::uint32_t(i + 1));
    m.c.stepMessages(0.9);
    QCOMPARE(m.messages(), (QList<std::uint32_t>{1, 2, 3, 4}));
    m.c.stepMessages(0.2); // a second is over: the slots are free for those that waited
    QCOMPARE(m.messages(), (QList<std::uint32_t>{5, 6}));
    m.c.stepMessages(1.1);
    QCOMPARE(m.messages(), QList<std::uint32_t>());
    m.c.raiseMessage(6); // the same number once more
    QCOMPARE(m.messages(), QList<std::uint32_t>{6});
    QCOMPARE(m.field<std::uint32_t>(220), 6u); // the third slot is next in turn
}

void TestPlant::noGarbageChangesAnything()
{
    Machine m;
    m.on(true);
    m.pass(2);
    const QStringList words = {"MOVE",  "(",     ")",         ",",         "LX",
                               "ZZ",    "1e400", "-",         "EXEC_1",    "DRIVE ",
                               "TRANS", " ON",   "nan",       "\n",        QString(QChar(0)),
                               "PARK",  "()",    "0x10",      "ы",         "move",
                               "V ",    "3000",  "LIMIT_MAX", "REFERENCE", "99999999999999999999",
                               "%s"};
    const StatusPack before = m.c.status();
    QRandomGenerator random(42);
    int tried = 0;
    for (int i = 0; i < 20000; ++i) {
        QString text;
        for (int n = random.bounded(6); n >= 0; --n)
            text += words.at(random.bounded(words.size()));
        static const QRegularExpression sound(
            QStringLiteral("\\A(TRANS ON|DRIVE ON|MOVE\\((LX|V),(3000|-?3000)\\))\\z"));
        if (sound.match(text).hasMatch())
            continue;
        ++tried;
        QVERIFY2(!m.c.command(text).isEmpty(), qPrintable(text));
    }
    QVERIFY(tried > 19000);
    QVERIFY(!m.c.command(QString(100000, QLatin1Char('('))).isEmpty());
    m.pass(0.1);
    const StatusPack after = m.c.status();
    QCOMPARE(std::memcmp(&before, &after, sizeof before), 0);
}

void TestPlant::theSameSeedGivesTheSameRun()
{
    const auto run = [](std::uint32_t seed) {
        MotionController c({}, seed);
        QByteArray trace;
        c.command(QStringLiteral("DRIVE ON"));
        for (int i = 0; i < 200; ++i) {
            if (i == 130)
                c.command(QStringLiteral("MOVE(LX,1000)"));
            c.step(dt);
            const StatusPack pack = c.status();
            trace.append(reinterpret_cast<const char*>(&pack), sizeof pack);
        }
        return trace;
    };
    QCOMPARE(run(3), run(3));
    QVERIFY(run(3) != run(4));
}

QTEST_GUILESS_MAIN(TestPlant)

#include "test_plant.moc"
