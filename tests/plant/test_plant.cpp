#include "plant/controller.h"
#include "plant/controllerlink.h"
#include "plant/instructor.h"
#include "plant/vacuumsystem.h"

#include <QtTest>

#include <cmath>
#include <cstring>

using namespace plant;

namespace {

constexpr double dt = 0.01;
const char* const coordNames[coordCount] = {"LX", "LY", "A", "B", "C", "D", "U", "V", "X", "Z", "PHI"};

// A controller with a folder for its programs and a clock that the test turns.
struct Machine
{
    QTemporaryDir root;
    MotionController c{root.path(), 7};
    VacuumSystem vacuum;
    ControllerLink link{portOf(c)}; // not listening
    Instructor instructor{c, vacuum, {&link, &link, &link}};
    QMap<QString, double> marks;

    Machine() { QDir(root.path()).mkpath("programs"); }
    void pass(double seconds)
    {
        for (int i = 0; i < std::lround(seconds / dt); ++i) {
            c.step(dt);
            c.stepMessages(dt);
        }
    }
    // Steps parted by "; ". Instructor's lines in small letters and commands of the console in capitals; "!"
    // in front: it must be refused. "on", "virtual", "wait SECONDS", "file NAME TEXT" with "|" for line ends.
    // And what must hold: "AXIS=VALUE", "AXIS=FROM..TO", "mark AXIS" and later "moved AXIS FROM..TO",
    // "still", and what the datagram shows (see there). Returns the first step that failed, with what was
    // found instead; empty when all is well.
    QString play(const QString& steps)
    {
        for (const QString& step : steps.split("; ", Qt::SkipEmptyParts)) {
            const QString found = playStep(step);
            if (!found.isNull())
                return step + ": " + found;
        }
        return {};
    }
    QString playStep(const QString& step)
    {
        const QStringList w = step.split(' ');
        const auto is = [](bool held, const QString& found) { return held ? QString() : found + ' '; };
        const auto within = [&](const QString& range, double value) {
            const double from = range.section("..", 0, 0).toDouble();
            const double to = range.section("..", -1).toDouble();
            return is(value > from - 1e-9 && value < to + 1e-9, QString::number(value));
        };
        if (w[0] == "file") {
            QFile file(root.filePath("programs/" + w[1]));
            const QByteArray text = step.section(' ', 2).replace('|', '\n').toUtf8();
            return is(file.open(QIODevice::WriteOnly) && file.write(text) == text.size(), "not written");
        }
        if (w[0] == "wait")
            return pass(w[1].toDouble()), QString();
        if (w[0] == "on" || w[0] == "virtual")
            return play(w[0] == "on" ? "DRIVE ON; wait 1.5; flag 282 1"
                                     : "on; TRANS ON; wait 0.01; flag 283 1");
        if (w[0] == "mark")
            return marks[w[1]] = at(w[1]), QString();
        if (w[0] == "moved")
            return within(w[2], at(w[1]) - marks[w[1]]);
        if (w[0] == "still")
            return is(!c.axes().anyMoving(), "moves");
        if (const QString now = shown(w); !now.isNull())
            return is(now == w.last(), now);
        if (const int equals = step.indexOf('='); equals > 0) {
            const QString value = step.mid(equals + 1);
            return within(axisByName(value) ? QString::number(at(value), 'g', 17) : value,
                          at(step.left(equals)));
        }
        const bool refused = step.startsWith('!');
        const QString text = step.mid(refused ? 1 : 0);
        const QString answer = text.at(0).isUpper() ? c.command(text) : instructor.execute(text);
        return is((answer.isEmpty() || answer == "ok") != refused, "answer " + answer);
    }
    // "told NUMBERS" (messages that stand now), "error NUMBER", "code AXIS HEX", "channel N STATE", "arm
    // STATE", and "flag OFFSET VALUE" and "word OFFSET VALUE" for whatever else; null for a step of another
    // kind.
    QString shown(const QStringList& w) const
    {
        const auto word = [this](int offset) { return QString::number(field<std::uint32_t>(offset)); };
        if (w[0] == "flag")
            return QString::number(field<std::uint8_t>(w[1].toInt()));
        if (w[0] == "word")
            return word(w[1].toInt());
        if (w[0] == "error" || w[0] == "arm")
            return word(w[0] == "arm" ? 120 : 232);
        if (w[0] == "code")
            return QString::number(field<int>(80 + 4 * int(*axisByName(w[1]))), 16).toUpper();
        if (w[0] == "channel")
            return word(4 * w[1].toInt());
        if (w[0] != "told")
            return {};
        QStringList numbers;
        for (int offset = 212; offset < 228; offset += 4)
            numbers << word(offset);
        numbers.removeAll("0");
        return numbers.isEmpty() ? QString("") : numbers.join(',');
    }
    double at(const QString& axis) const { return c.axes().position(*axisByName(axis)); }
    template <class T>
    T field(int offset) const // as the console reads it
    {
        const StatusPack pack = c.status();
        T value;
        std::memcpy(&value, reinterpret_cast<const char*>(&pack) + offset, sizeof value);
        return value;
    }
};

const char* const stories[] = {
    "codes follow the drive: PARK(U1); code LX A0013; DRIVE ON; wait 0.5; code LX A0012; wait 1; code LX "
    "A0102; code U1 C1600; code U2 C1600; MOVE(LX,600); wait 0.1; code LX A0101; MOVE(LX,0); wait 1; code LX "
    "A0102; !MOVE(U1,10)",
    "a warning stops nothing: on; trip A E2074; code A E2074; arm 4; CLEAR_ERROR(A); code A C0500; wait 1; "
    "code A A0102; DRIVE OFF; code A A0012; wait 1; code A A0013",
    "an undervoltage stays as long as its cause: on; breaker qf33 off; !CLEAR_ERROR(LY); breaker qf33 on; "
    "CLEAR_ERROR(LY)",
    "a jog runs up, keeps its speed, brakes: !MOVE(LY,600); on; MOVE(LY,600); wait 0.01; LY=0.0001..0.05; "
    "wait 1; mark LY; wait 1; moved LY 9.99..10.01; MOVE(LY,0); wait 1; mark LY; wait 1; moved LY 0",
    "a jog is cut to what the axis can do: on; MOVE(LY,-1e9); wait 2; mark LY; wait 1; moved LY "
    "-50.01..-49.99; STOP_PRG; wait 1; still",
    "pairs move together: on; MOVE(LX,3000); wait 1; MOVE(LX,0); wait 1; LX=10..60; LX2=LX",
    "the second of a pair is aligned, the one ahead meets the limit: on; mark LX; MOVE(LX2,60); wait 1; "
    "MOVE(LX2,0); wait 1; moved LX 0; LX2=0.5..1.1; axis LX 1490; MOVE(LX,3000); wait 3; LX2=1500; "
    "LX=1498.9..1499.5",
    "the endless axis turns past its zero: on; axis V 350; MOVE(V,2160); wait 1; V=5..40; MOVE(V,-2160); "
    "wait 3; V=260..360; told ",
    "increments add up: !LIR(LX,1000,3000); on; LIR(LX,1000,3000); wait 0.02; LIR(LX,1000,3000); wait 0.02; "
    "LIR(LX,1000,3000); LIR(LX,-500,3000); wait 2; LX=2.5; !LIR(U,100,0); axis D 179.5; LIR(D,1000,900); "
    "wait 2; D=180",
    "an increment taken back at once: on; LIR(LY,100,3000); LIR(LY,-100,3000); wait 1; LY=0; still",
    "the remote panel turns its own axis: !PULT ON; virtual; !HANDWHEEL(1000); PULT ON; pult f2 z; "
    "HANDWHEEL(1000); pult f3 5; HANDWHEEL(-2000); pult f3 z; !HANDWHEEL(1000); wait 2; Z=1; V=358",
    "a new limit is told and held: on; LIMIT_MAX(U1,12.5); LIMIT_MIN(U2,-12.5); LIMIT_MAX(PHI,45.0); wait "
    "0.01; told 187,167,191; MOVE(U1,120); wait 10; U2=12.5",
    "limits that cannot be: !LIMIT_MAX(LX,1506); !LIMIT_MIN(LX,-1506); !LIMIT_MAX(LX,-1500); "
    "!LIMIT_MIN(LX,1500); !LIMIT_MAX(LX,nan); !LIMIT_MAX(LX,inf); !LIMIT_MAX(LX,)",
    "parking and referencing need drives off: on; !PARK(A); !DEPARK(A); !REFERENCE(A,15000); DRIVE OFF; wait "
    "1; !PARK(LX2); !PARK(X); !REFERENCE(U2,0); !REFERENCE(PHI,0); !REFERENCE(A,1.5); REFERENCE(A,15000); "
    "REFERENCE(LX,-1); REFERENCE(V,900000); wait 0.01; A=1.5; PHI=1.5; LX2=-0.0001; V=90; told 204,201,210",
    "the arm needs all its joints: PARK(B); on; !TRANS ON; DRIVE OFF; DEPARK(B); virtual",
    "virtual axes wait for the jog: !TRANS ON; on; arm 1; !MOVE(X,600); MOVE(A,60); wait 1; TRANS ON; arm 1; "
    "wait 1; arm 2; !MOVE(A,60)",
    "virtual axes move the joints: on; MOVE(A,60); wait 1; TRANS ON; wait 1; mark X; mark PHI; mark A; "
    "MOVE(Z,-1200); wait 2; MOVE(Z,0); wait 1; moved X 0; moved PHI 0; moved A 0.1..90; mark Z; TRANS OFF; "
    "wait 0.1; moved Z 0; mark PHI; MOVE(C,900); wait 1; moved PHI 10..16",
    "messages take turns and go out: message 1; message 2; message 3; message 4; message 5; message 6; told "
    "1,2,3,4; word 212 1; word 224 4; wait 0.9; told 1,2,3,4; wait 0.2; told 5,6; wait 1.1; told ; message "
    "6; told 6; word 220 6",
    "a joint limit ends a virtual move: LIMIT_MAX(B,5.0); wait 1.1; virtual; MOVE(Z,3000); wait 5; still; "
    "B=4.5..5; Z=10..299; MOVE(Z,-600); wait 1; B=0..4.5",
    "programs come from the root: file go.npg N01 $1|N03 G90 G01 LX=30.00 F3000|N05 M30; "
    "!EXEC_1(/programs/go.npg); told 111; on; !EXEC_1(/programs/none.npg); error 2001; "
    "!EXEC_1(/programs/../programs/go.npg); !EXEC_1(/etc/passwd); !EXEC_4(/programs/go.npg); !EXEC_1(); "
    "EXEC_1(/programs/go.npg); wait 0.1; channel 1 3; !EXEC_1(/programs/go.npg); wait 2; LX=30; LX2=30; "
    "channel 1 1",
    "a program that is none: on; file bad.npg N1 $1|N2 NONSENSE|N3 M30; EXEC_1(/programs/bad.npg); wait 0.1; "
    "channel 1 6; error 2002; STOP_PRG; wait 0.1; channel 1 1",
    "a program and a hand never move the same axis: on; file long.npg N1 $1|N2 G90 G01 LX=300 F600|N3 M30; "
    "MOVE(LX,-3000); MOVE(V,360); wait 1; EXEC_1(/programs/long.npg); channel 1 9; mark V; wait 1; channel 1 "
    "3; moved V 5..7; !MOVE(LX,600); !LIR(LX,100,3000); !MOVE(LY,600); !TRANS ON; "
    "!EXEC_1(/programs/long.npg); !axis LX 0; STOP_PRG; wait 1; still; MOVE(LX,600)",
    "a program stops at a soft limit: virtual; LIMIT_MAX(LX,20.0); wait 1.1; file far.npg N1 $1|N2 G90 G01 "
    "LX=30 F600|N3 M30; EXEC_1(/programs/far.npg); wait 0.2; channel 1 6; told 131; LX=0",
    "a program stops at the lower one: on; LIMIT_MIN(LY,-20.0); wait 1.1; file far.npg N1 $1|N2 G90 G01 "
    "LY=-20.5 F600|N3 M30; EXEC_1(/programs/far.npg); wait 0.2; channel 1 6; told 142; LY=0",
    "an arc whose crown lies beyond the limit: virtual; LIMIT_MAX(LX,20.0); file arc.npg N1 $1|N2 "
    "COORD(2)|N3 G17|N4 G90 G01 x=20.00 y=0.00 z=0.00 F3000|N5 G90 G3 x=20.00 y=40.00 R20.00 z=0.00 F3000|N6 "
    "M30; EXEC_1(/programs/arc.npg); wait 3; channel 1 6; LX=19..20.001; LY=0..39",
};

// On a machine of its own.
void holds(const QString& steps)
{
    const QString failed = Machine().play(steps);
    QVERIFY2(failed.isEmpty(), qPrintable(failed + "in: " + steps));
}

} // namespace

class TestPlant : public QObject
{
    Q_OBJECT

private slots:
    void theDatagramCarriesEachValueAtItsOffset()
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

        for (int i = 0; i < coordCount; ++i) {
            const QString limits("LIMIT_MAX(%1,%2.5); LIMIT_MIN(%1,-%2.5)");
            QCOMPARE(m.play(limits.arg(i == 6 ? "U1" : coordNames[i]).arg(50 + i)), QString());
            QCOMPARE(m.field<float>(124 + 4 * i), -50.5f - static_cast<float>(i));
            QCOMPARE(m.field<float>(168 + 4 * i), 50.5f + static_cast<float>(i));
        }
        for (int i = 0; i < driveCount; ++i) {
            m.c.trip(static_cast<AxisId>(i), 0xF2018 + i);
            QCOMPARE(m.field<std::int32_t>(80 + 4 * i), 0xF2018 + i);
        }
        QCOMPARE(m.field<std::uint16_t>(0), std::uint16_t(0x5650));
        m.c.raiseError(4711);
        m.c.setLight(Light::Spiral, true);
        // A fault on the arm; the channels' states and modes; and what the instructor changes.
        QCOMPARE(m.play("arm 3; channel 1 1; channel 2 1; channel 3 1; word 16 1; word 20 1; word 24 1; "
                        "error 4711; module 3; word 240 3; pult f2 x; word 252 2; rope right on; word 256 8; "
                        "word 248 4; breaker qf18 off; breaker qf33 off; word 244 1019"),
                 QString());
    }

    void flagsStandAtTheirOffsets()
    {
        QStringList flags = {"282 0 DRIVE ON; wait 1.2",
                             "283 0 DRIVE ON; wait 1.2; TRANS ON; wait 0.01",
                             "285 0 DRIVE ON; wait 1.2; PULT ON",
                             "286 1 key off",
                             "287 0 door close",                    // drives lock
                             "288 1 door close; wait 4; vacuum on", // spiral lock
                             "291 1 breaker qf23 off",
                             "292 1 breaker qf28 off",
                             "293 0 phase off"};
        for (int i = 0; i < coordCount; ++i) {
            const CoordTraits& range = traits(static_cast<Coord>(i));
            for (const bool upper : {false, true}) {
                if (!range.endless)
                    flags << QString("%1 0 axis %2 %3")
                                 .arg((upper ? 271 : 260) + i)
                                 .arg(coordNames[i])
                                 .arg(upper ? range.max : range.min);
            }
        }
        for (const QString& flag : qAsConst(flags)) {
            const QString offset = flag.left(3);
            const int before = flag.midRef(4, 1).toInt();
            holds(QString("flag %1 %2; %3; flag %1 %4")
                      .arg(offset)
                      .arg(before)
                      .arg(flag.mid(6))
                      .arg(1 - before));
        }
    }

    void drivesGoOnOnlyWhenAllIsInOrder()
    {
        const QString troubles =
            "key off > key on | door close > door open; wait 4 | door close; wait 4 > vacuum on | "
            "phase off > phase on | emergency console on > emergency console off | "
            "rope right on > rope right off | breaker qf28 off > breaker qf28 on | "
            "breaker qf18 off > breaker qf18 on | breaker qf40 off > PARK(V) | trip C > CLEAR_ERROR(C)";
        for (const QString& trouble : troubles.split(" | "))
            holds(QString(trouble).replace(" > ", "; !DRIVE ON; wait 2; flag 282 0; ") + "; on");
    }

    // Whatever takes the power takes motion, programs, the virtual axes and the remote panel with it.
    void troubleTakesTheDrivesOff()
    {
        // The trouble, the code of B, a message if any.
        for (const auto& [trouble, code, told] : {std::tuple{"door close", "A0013", "104"},
                                                  {"rope left on", "A0013", "103"},
                                                  {"trip B F2018", "F2018", ""},
                                                  {"trip B F8060", "F8060", "124"},
                                                  {"breaker qf35 off", "F2026", ""},
                                                  {"breaker qf18 off", "F2026", ""},
                                                  {"breaker qf28 off", "0", ""},
                                                  {"phase off", "A0013", ""}})
            holds(QString("virtual; PULT ON; MOVE(Z,600); file w.npg N1 $2|N2 G4 F100|N3 M30; "
                          "EXEC_2(/programs/w.npg); wait 0.5; channel 2 3; %1; mark Z; wait 0.9; moved Z 0; "
                          "channel 2 1; flag 282 0; flag 283 0; flag 285 0; code B %2; told %3")
                      .arg(trouble, code, told));
    }

    void storiesOfTheController()
    {
        for (const char* story : stories)
            holds(QString(story).section(": ", 1));
    }

    // Never past it; pressed again it is told again, and the other way is free.
    void limitsEndAJog()
    {
        const std::tuple<AxisId, double, int, int> cases[] = {
            // start, speed, message
            {AxisId::LX1, 1499, 3000, 131}, {AxisId::LY, -799.9, -600, 142}, {AxisId::A, 89, 360, 133},
            {AxisId::B, -79, -720, 144},    {AxisId::C, 199, 900, 135},      {AxisId::D, 179, 100, 136},
            {AxisId::U1, -99, -120, 147}};
        for (const auto& [axis, start, speed, message] : cases) {
            Machine m;
            const AxisTraits& own = traits(axis);
            const double end = speed > 0 ? traits(own.coord).max : traits(own.coord).min;
            const QString jog = QString("MOVE(%1,%2)").arg(own.name).arg(speed);
            QCOMPARE(m.play(QString("on; axis %1 %2; ").arg(own.name).arg(start) + jog), QString());
            for (int i = 0; i < 200 && m.c.axes().moving(axis); ++i) {
                m.pass(dt);
                QVERIFY(!m.c.axes().beyond(axis, m.c.axes().position(axis)));
            }
            QCOMPARE(m.play(QString("still; %1=%2; told %3; wait 1.1; %4; wait 0.1; told %3; "
                                    "MOVE(%1,%5); wait 0.3")
                                .arg(own.name)
                                .arg(end)
                                .arg(message)
                                .arg(jog)
                                .arg(-speed)),
                     QString());
            QVERIFY(std::abs(m.c.axes().position(axis) - end) > 0.1);
        }
    }

    void armSolvesEveryPoseOfItsRange()
    {
        QCOMPARE(armForward({}).x, 0.0);
        QCOMPARE(armForward({}).z, 0.0);
        QVERIFY(!armInverse({0, -700, 0}));
        QRandomGenerator random(3);
        const auto within = [&](double range) { return range * (2 * random.generateDouble() - 1); };
        const auto inside = [](Coord coord, double value) {
            return value > traits(coord).min && value < traits(coord).max;
        };
        for (int i = 0; i < 5000; ++i) {
            const ArmPose pose{within(300), within(300), within(120)};
            const auto joints = armInverse(pose);
            QVERIFY(joints && inside(Coord::A, joints->a) && inside(Coord::B, joints->b) &&
                    inside(Coord::C, joints->c));
            const ArmPose back = armForward(*joints);
            QVERIFY(std::hypot(back.x - pose.x, back.z - pose.z, back.phi - pose.phi) < 1e-6);
            const ArmJoints any{within(90), within(80), within(200)};
            const auto same = armInverse(armForward(any));
            QVERIFY(same && std::hypot(same->a - any.a, same->b - any.b, same->c - any.c) < 1e-6);
        }
    }

    void noGarbageChangesAnything()
    {
        Machine m;
        QCOMPARE(m.play("virtual; wait 2"), QString());
        const QStringList words =
            QString("MOVE~(~)~,~LX~ZZ~1e400~-~EXEC_1~DRIVE ~TRANS~ ON~nan~\n~PARK~()~0x10~ы~move~V ~3000~"
                    "LIMIT_MAX~REFERENCE~99999999999999999999~%s")
                .split('~') +
            QStringList(QChar(0));
        const StatusPack before = m.c.status();
        QRandomGenerator random(42);
        int tried = 0;
        for (int i = 0; i < 20000; ++i) {
            QString text;
            for (int n = random.bounded(6); n >= 0; --n)
                text += words.at(random.bounded(words.size()));
            static const QRegularExpression sound("\\A(TRANS ON|DRIVE ON|MOVE\\((LX|V),(3000|-?3000)\\))\\z");
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
};

QTEST_GUILESS_MAIN(TestPlant)
#include "test_plant.moc"
