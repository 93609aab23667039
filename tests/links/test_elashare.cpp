#include "elashare.h"

#include "gui.h"
#include "plant/beamunit.h"
#include "plant/controller.h"
#include "sitefixture.h"

#include <QLabel>
#include <QtTest>

#include <cstring>

namespace {

// The other side of the segment: any program on this computer that has the key.
struct Writer
{
    Writer() { QVERIFY(shared.attach() || shared.create(512)); }
    char* data() { return static_cast<char*>(shared.data()); }
    void beat() { ++*reinterpret_cast<quint64*>(data()); }

    QSharedMemory shared{"ELA_SHM_KEY" + site().shmSuffix};
};

} // namespace

class TestElaShare : public QObject
{
    Q_OBJECT

private slots:
    void aliveMeansThatTheFirstWordHasChanged()
    {
        SiteFixture place;
        ElaSharedMemory share; // makes the segment
        Writer writer;
        writer.data()[511] = 7; // changes elsewhere are no heartbeat
        share.updateStatusEla();
        QVERIFY(!share.status());
        QCOMPARE(share.m_copy[63] >> 56, quint64(7));
        for (const auto& [first, alive] :
             {std::pair{1, true}, {1, false}, {2, true}, {0, true}, {0, false}}) {
            writer.data()[7] = char(first); // all 64 bits count
            share.updateStatusEla();
            QCOMPARE(share.status(), alive);
        }
    }

    void readsWhatTheBeamUnitWrites()
    {
        SiteFixture place;
        place.write("/programs/beam.npg",
                    "N1 $3\nN2 GAX(IR)\nN3 GAX(IW)\nN4 G0 IW=712\nN5 G0 IR=80.5\nWAIT\n"
                    "1 @RASTERTYPE%=4\n2 @RASTERAMPX=1.5\n3 @RASTERAMPY=-2.25\n4 @RASTERANGLE=45\n"
                    "5 @RASTERFREQ=250\n6 @RASTERSHIFTX=0.5\n7 @RASTERSHIFTY=-0.75\n8 @RASTERPARAM=3\n"
                    "9 @RASTERCW%=1\n10 @RASTERON%=1\nN6 G4 F100\nN7 M30\n");
        ElaSharedMemory share;
        plant::MotionController controller(place.root());
        plant::BeamUnit unit(controller, site().shmSuffix);
        QVERIFY(unit.speaks());
        unit.setGunPressure(2e-3);
        for (const char* command : {"DRIVE ON", "EXEC_3(/programs/beam.npg)"}) {
            QCOMPARE(controller.command(command), QString());
            for (int i = 0; i < 200; ++i)
                controller.step(0.01);
        }
        QCOMPARE(controller.channelState(3), plant::ChannelState::Running);
        unit.step(0.1);
        share.updateStatusEla();
        QVERIFY(share.status());

        const std::pair<ela::Real, float> reals[] = {{ela::GunPressure, 2e-3F},
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
                                                     {ela::RasterFreq, 250}};
        for (const auto& [offset, value] : reals)
            QVERIFY2(qAbs(share.value(offset) - value) < 1e-4F, qPrintable(QString::number(offset)));
        QCOMPARE(share.value(ela::RasterOn), 1);
        QCOMPARE(share.value(ela::RasterType), 4);
        QCOMPARE(share.value(ela::RasterRotation), 1);
    }

    void theLabelFollowsTheHeartbeat()
    {
        SiteFixture place;
        place.write("/home/oper/bin/users.bin", QByteArray("\xA0\xF4\0\0", 4));
        Writer writer;
        std::memset(writer.data(), '\x11', 512);
        Gui gui;
        QCOMPARE(QByteArray(writer.data(), 512), QByteArray(512, '\0'));
        const auto tick = [&gui] { // by hand, with no event between them
            gui.onTimeChanged();
            return gui.findChild<QLabel*>("lblELA")->palette().color(QPalette::Window);
        };
        const QColor red = tick();
        QVERIFY(red.red() > red.green());
        writer.beat();
        const QColor green = tick();
        QVERIFY(green.green() > green.red());
        for (int i = 0; i < 3; ++i) { // a writer slower than the tick flickers
            QCOMPARE(tick(), red);
            writer.beat();
            QCOMPARE(tick(), green);
        }
        QCOMPARE(tick(), red);
    }
};

QTEST_MAIN(TestElaShare)
#include "test_elashare.moc"
