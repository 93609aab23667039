#include "elashare.h"

#include "gui.h"
#include "plant/beamunit.h"
#include "plant/controller.h"
#include "sitefixture.h"

#include <QLabel>
#include <QSharedMemory>
#include <QtTest>

#include <cstring>

namespace {

// The other side of the segment: any program on this computer that has the key.
class Writer
{
public:
    Writer()
        : m_shared(QStringLiteral("ELA_SHM_KEY") + site().shmSuffix)
    {
        m_ready = m_shared.attach() || m_shared.create(512);
    }
    bool ready() const { return m_ready; }
    char* data() { return static_cast<char*>(m_shared.data()); }
    void fill(char byte) { std::memset(data(), byte, 512); }
    void beat() { ++*reinterpret_cast<quint64*>(data()); }

private:
    QSharedMemory m_shared;
    bool m_ready = false;
};

} // namespace

class TestElaShare : public QObject
{
    Q_OBJECT

private slots:
    void aliveMeansThatTheFirstWordHasChanged();
    void readsWhatTheBeamUnitWrites();
    void theLabelFollowsTheHeartbeat();
};

void TestElaShare::aliveMeansThatTheFirstWordHasChanged()
{
    SiteFixture place;
    ElaSharedMemory share; // makes the segment
    Writer writer;
    QVERIFY(writer.ready());
    writer.data()[511] = 7; // changes elsewhere are no heartbeat
    share.updateStatusEla();
    QVERIFY(!share.status());
    QCOMPARE(share.m_copy[63] >> 56, quint64(7));

    const struct
    {
        char first;
        bool alive;
    } steps[] = {{1, true}, {1, false}, {2, true}, {0, true}, {0, false}};
    for (const auto& step : steps) {
        writer.data()[7] = step.first; // all 64 bits count
        share.updateStatusEla();
        QCOMPARE(share.status(), step.alive);
    }
}

void TestElaShare::readsWhatTheBeamUnitWrites()
{
    SiteFixture place;
    QFile program(place.root() + "/programs/beam.npg");
    QVERIFY(program.open(QIODevice::WriteOnly));
    program.write("N1 $3\nN2 GAX(IR)\nN3 GAX(IW)\nN4 G0 IW=712\nN5 G0 IR=80.5\nWAIT\n"
                  "1 @RASTERTYPE%=4\n2 @RASTERAMPX=1.5\n3 @RASTERAMPY=-2.25\n4 @RASTERANGLE=45\n"
                  "5 @RASTERFREQ=250\n6 @RASTERSHIFTX=0.5\n7 @RASTERSHIFTY=-0.75\n8 @RASTERPARAM=3\n"
                  "9 @RASTERCW%=1\n10 @RASTERON%=1\nN6 G4 F100\nN7 M30\n");
    program.close();
    ElaSharedMemory share;
    plant::MotionController controller(place.root());
    plant::BeamUnit unit(controller, site().shmSuffix);
    QVERIFY(unit.speaks());
    unit.setGunPressure(2e-3);
    const auto pass = [&controller](int steps) {
        for (int i = 0; i < steps; ++i)
            controller.step(0.01);
    };
    QCOMPARE(controller.command(QStringLiteral("DRIVE ON")), QString());
    pass(200);
    QCOMPARE(controller.command(QStringLiteral("EXEC_3(/programs/beam.npg)")), QString());
    pass(200);
    QCOMPARE(controller.channelState(3), plant::ChannelState::Running);
    unit.step(0.1);
    share.updateStatusEla();
    QVERIFY(share.status());

    const struct
    {
        ela::Real offset;
        float value;
    } reals[] = {
        {ela::GunPressure, 2e-3F},
        {ela::FocusCurrent, 712},
        {ela::FocusCurrentSet, 712},
        {ela::DeflectionX, 0},
        {ela::DeflectionY, 0},
        {ela::AcceleratingVoltage, 50},
        {ela::LockingVoltage, 3 - 80.5F / 400},
        {ela::BombardmentVoltage, 1.2F},
        {ela::BombardmentCurrent, 85},
        {ela::BeamCurrent, 80.5F},
        {ela::BeamCurrentSet, 80.5F},
        {ela::RasterAmpX, 1.5F},
        {ela::RasterAmpY, -2.25F},
        {ela::RasterParam, 3},
        {ela::RasterAngle, 45},
        {ela::RasterShiftX, 0.5F},
        {ela::RasterShiftY, -0.75F},
        {ela::RasterFreq, 250},
    };
    for (const auto& real : reals)
        QVERIFY2(qAbs(share.value(real.offset) - real.value) < 1e-4F,
                 qPrintable(QString::number(real.offset)));
    QCOMPARE(share.value(ela::RasterOn), 1);
    QCOMPARE(share.value(ela::RasterType), 4);
    QCOMPARE(share.value(ela::RasterRotation), 1);
}

void TestElaShare::theLabelFollowsTheHeartbeat()
{
    SiteFixture place;
    QFile users(site().path("/home/oper/bin/users.bin"));
    QVERIFY(users.open(QIODevice::WriteOnly));
    users.write(QByteArray("\xA0\xF4\0\0", 4));
    users.close();
    Writer writer;
    QVERIFY(writer.ready());
    writer.fill('\x11');
    Gui gui;
    QCOMPARE(QByteArray(writer.data(), 512), QByteArray(512, '\0'));
    const auto colour = [&gui] {
        return gui.findChild<QLabel*>("lblELA")->palette().color(QPalette::Window);
    };
    // The ticks come by hand, with no event between them.
    gui.onTimeChanged();
    const QColor red = colour();
    QVERIFY(red.red() > red.green());
    writer.beat();
    gui.onTimeChanged();
    const QColor green = colour();
    QVERIFY(green.green() > green.red());
    for (int i = 0; i < 3; ++i) { // a writer slower than the tick flickers
        gui.onTimeChanged();
        QCOMPARE(colour(), red);
        writer.beat();
        gui.onTimeChanged();
        QCOMPARE(colour(), green);
    }
    gui.onTimeChanged();
    QCOMPARE(colour(), red);
}

QTEST_MAIN(TestElaShare)

#include "test_elashare.moc"
