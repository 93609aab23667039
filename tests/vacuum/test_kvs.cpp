#include "deathtest.h"
#include "lockview.h"
#include "vacuumcontroller.h"
#include "widgets.h"

#include <QSettings>
#include <QSignalSpy>

namespace {

const QColor valid(0, 128, 255), invalid(255, 32, 0);
const QColor here(255, 255, 192), lost(255, 192, 192);

QStringList words(const char* list)
{
    return QString::fromUtf8(list).split(' ');
}

} // namespace

// The panel in front of both controllers: what it makes of their telemetry.
class TestKvs : public PanelFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void otherPictures()
    {
        tellKvk({{"NP1Power", 1}, {"NW1Power", 1}});
        QVERIFY(shows("NP1", "NP_1") && shows("NW1", "NW_1"));
        // A state that no device has.
        QVERIFY(deathOf([&] { w<PoSprite>("VP1")->changedState(5); }).contains("i != m_mapPixmaps.end()"));
        for (void (KVS::*slot)(int) : {&KVS::changedVPT, &KVS::changedVE1, &KVS::changedTMN})
            QVERIFY(!deathOf([&] { (m_panel.get()->*slot)(5); }).isEmpty());
    }

    void pressures()
    {
        for (int touches = 0; touches < 2; ++touches) { // the form's text stays until there is a reading
            QCOMPARE(w<PoLabel>("PT3")->text(), "1.0E+05");
            touch("lblPT3u");
        }
        QSignalSpy unit(m_panel.get(), &KVS::onChangedPressUnit);
        const QSignalSpy chamber(m_panel.get(), &KVS::changedChamberPressure);
        const QSignalSpy gun(m_panel.get(), &KVS::changedGunPressure);
        tellKvs({{"PT1", 10}, {"PT2", 200}, {"PT3", 3000}});
        tellKvk({{"PT4", 4e4}, {"PT5", 5e5}, {"PT6", 6e-3}});
        const QStringList pascal = words("1.0E+01 2.0E+02 3.0E+03 4.0E+04 5.0E+05 6.0E-03");
        const QStringList torr = words("7.5E-02 1.5E+00 2.3E+01 3.0E+02 3.8E+03 4.5E-05");
        const auto check = [&](bool millimetres) {
            for (int i = 0; i < 6; ++i) {
                QCOMPARE(w<PoLabel>(QString("PT%1").arg(i + 1))->text(), (millimetres ? torr : pascal)[i]);
                QCOMPARE(w<PoLabel>(QString("lblPT%1u").arg(i + 1))->text(),
                         millimetres ? "мм.рт.ст." : "Па");
            }
        };
        check(false);
        bool millimetres = false;
        for (int i = 1; i <= 6; ++i) {
            for (const char* label : {"PT%1", "lblPT%1u"}) {
                touch(QString(label).arg(i));
                millimetres = !millimetres;
                check(millimetres);
                QCOMPARE(unit.takeFirst()[0].toBool(), millimetres);
                QVERIFY(unit.isEmpty());
            }
        }
        m_panel->setPressUnit(1);
        m_panel->setPressUnit(2); // no such unit
        check(true);
        QCOMPARE(w<PoLabel>("PT6")->coeff(), 0.0075006373F);
        QCOMPARE(chamber.last()[0].toDouble(), 5e5); // the window gets pascal, whatever is shown here
        QCOMPARE(gun.last()[0].toFloat(), 6e-3F);
    }

    void validity()
    {
        const QSignalSpy chamber(m_panel.get(), &KVS::changedChamberPressureValid);
        const QSignalSpy gun(m_panel.get(), &KVS::changedGunPressureValid);
        tellKvs({{"PT1Valid", 1}, {"PT2Valid", 1}, {"PT3Valid", 1}});
        tellKvk({{"PT4Valid", 1}, {"PT5Valid", 1}, {"BKUValid", 2}});
        takeLines();
        const QStringList fields = words("PT1Valid PT2Valid PT3Valid PT4Valid PT5Valid BKUValid");
        for (int i = 0; i < 6; ++i) {
            const auto shown = [&](const QColor& ground) {
                for (int gauge = 0; gauge < 6; ++gauge) {
                    for (const char* label : {"PT%1", "lblPT%1u"})
                        QCOMPARE(colour(QString(label).arg(gauge + 1)), gauge == i ? ground : valid);
                }
            };
            shown(valid);
            tell(fields[i], 0);
            shown(invalid);
            QCOMPARE(takeLines(),
                     QStringList(QString("[W]Нарушен обмен с датчиком вакуума PT%1!").arg(i + 1)));
            tell(fields[i], 1);
            QVERIFY(takeLines().isEmpty());
        }
        QCOMPARE(chamber.last()[0].toBool(), true);
        QCOMPARE(gun.last()[0].toInt(), 1);
        QCOMPARE(gun.first()[0].toInt(), 2);
    }

    // Each circuit at the edges of its lamps, beside six others.
    void water()
    {
        const std::tuple<double, const char*, int, double, const char*, int> readings[] = {
            {0, "0.0", 0, -5, "-5.0", 1},   {2.9999, "3.0", 0, 29.99, "30.0", 1},
            {3, "3.0", 1, 30, "30.0", 1},   {3.0001, "3.0", 1, 30.01, "30.0", 2},
            {50, "50.0", 1, 50, "50.0", 2}, {50, "50.0", 1, 50.01, "50.0", 0}};
        for (int circuit = 1; circuit <= 7; ++circuit) {
            const QString number = QString::number(circuit);
            const auto others = [&] {
                QList<qint64> pictures;
                for (int i = 1; i <= 7; ++i) {
                    for (const char* lamp : {"W", "T"}) {
                        if (i != circuit)
                            pictures << w<PoSprite>(lamp + QString::number(i))
                                            ->pixmap(Qt::ReturnByValue)
                                            .cacheKey();
                    }
                }
                return pictures;
            };
            const QList<qint64> before = others();
            for (const auto& [flow, flowText, flowLamp, celsius, celsiusText, celsiusLamp] : readings) {
                tellKvs({{"Disch" + number, flow}, {"Temp" + number, celsius}});
                QVERIFY(shows("W" + number, QString("w_%1").arg(flowLamp)));
                QVERIFY(shows("T" + number, QString("t_%1").arg(celsiusLamp)));
                QCOMPARE(w<PoLabel>("W" + number + "disch")->text(), flowText);
                QCOMPARE(w<PoLabel>("T" + number + "temp")->text(), celsiusText);
            }
            if (circuit > 1) // the first datagram lights all lamps
                QCOMPARE(others(), before);
        }
        tellKvs({{"TempOilND", 181.26}, {"TempCorpND", 44.04}});
        QCOMPARE(w<PoLabel>("ND1temp")->text(), "181.3");
        QCOMPARE(w<PoLabel>("ND1CorpTemp")->text(), "44.0");
    }

    void limitsFromSettings()
    {
        m_panel.reset();
        {
            QSettings settings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
            settings.setValue("Vacuum/TempWarning", 10.5);
            settings.setValue("Vacuum/TempError", "many");
            settings.setValue("Vacuum/MinDischW4", "1e3");
            settings.setValue("Vacuum/MinDischW5", "nan");
        }
        start();
        QCOMPARE(m_panel->getTemperatureState(10.5F), 1);
        QCOMPARE(m_panel->getTemperatureState(10.6F), 2);
        QCOMPARE(m_panel->getTemperatureState(50.1F), 0);
        tellKvs({{"Disch3", 2}, {"Disch4", 999}, {"Disch5", 2}, {"Disch6", 3}});
        QVERIFY(shows("W3", "w_0") && shows("W4", "w_0") && shows("W5", "w_0") && shows("W6", "w_1"));
    }

    void beamUnit()
    {
        const QSignalSpy spiral(m_panel.get(), &KVS::signalChangedSpiralLock);
        const QSignalSpy shutdown(m_panel.get(), &KVS::signalChangedShutdownLock);
        tellKvk({{"TMNFreq", 832.6}, {"SpiralLock", 1}});
        QCOMPARE(spiral.last()[0].toBool(), true);
        QCOMPARE(shutdown.last()[0].toBool(), false);
        QCOMPARE(w<PoLabel>("FreqTMN")->text(), "833");
    }

    // The first value is told although it equals the zero that stood there; after that changes only.
    void elements()
    {
        LenzeElement element("NL1:Power", LenzeElement::Number, 0);
        QStringList told;
        connect(&element, qOverload<const LenzeElement*, int>(&LenzeElement::numberValChanged), this,
                [&](const LenzeElement* from, int value) { told << from->name() + QString::number(value); });
        const QSignalSpy sensor(&element, qOverload<float>(&LenzeElement::sensorValChanged));
        for (int value : {0, 0, 3, 3, 0})
            element.setNumberVal(value);
        for (float value : {0.0F, 0.0F, 1.5F})
            element.setSensorVal(value);
        QCOMPARE(told, words("NL1:Power0 NL1:Power3 NL1:Power0"));
        QCOMPARE(sensor.count(), 2);

        tell("ND1LockOff", 6);
        QCOMPARE(m_panel->element("ND1:LockOff")->numberVal(), 6);
        QVERIFY(m_panel->element("Temp01")->isVariable());
        QVERIFY(deathOf([this] { m_panel->element("NW1:Power"); }).contains("i != m_Elements.end()"));
        QVERIFY(deathOf([this] { m_panel->lock("NL1"); }).contains("i != m_locks.end()"));
        QVERIFY(deathOf([this] {
                    m_panel->addLock("NL1:LockOn", false, "", "");
                }).contains("i == m_locks.end()"));
    }

    // Each link has its own colour, and what it told stays on view.
    void linksLostAndBack()
    {
        const auto colours = [this] {
            return QList<QColor>{m_panel->palette().color(QPalette::Window), colour("Chamber"),
                                 colour("Door")};
        };
        QCOMPARE(colours(), (QList<QColor>{here, here, here}));
        for (const char* painted : {"Chamber", "Door", "frmChamber"})
            QVERIFY(w(painted)->autoFillBackground());
        const QSignalSpy kvs(m_panel.get(), &KVS::onKVSConnected);
        const QSignalSpy kvk(m_panel.get(), &KVS::onKVKConnected);
        const QSignalSpy regime(m_panel.get(), &KVS::signalChangedMode);
        tellKvs({{"NL1State", 1}, {"PT1", 7}});
        tellKvk({{"VP4State", 1}, {"AlgNumber", 4}});
        for (VacuumController* controller : {m_kvs.get(), m_kvk.get()}) {
            takeLines();
            controller->send(frame("Готово"));
            QTRY_VERIFY(!m_lines.isEmpty() && m_lines.last().endsWith("Готово"));
            QVERIFY(m_lines.last().startsWith("- [")); // a line for the file
        }

        m_kvs->peer->close();
        QTRY_COMPARE(colours(), (QList<QColor>{lost, here, here}));
        m_kvk->peer->close();
        QTRY_COMPARE(colours(), (QList<QColor>{lost, lost, lost}));
        QVERIFY(shows("NL1", "NL_1") && shows("VP4", "vv_1"));
        QCOMPARE(w<PoLabel>("PT1")->text(), "7.0E+00");

        QElapsedTimer wait;
        wait.start();
        QTRY_VERIFY(m_kvs->server.hasPendingConnections() && m_kvk->server.hasPendingConnections());
        QVERIFY(wait.elapsed() > 500); // a second, less what the end of both links took
        QTRY_COMPARE(colours(), (QList<QColor>{here, here, here}));
        QCOMPARE(kvs.count(), 2);
        QCOMPARE(kvk.count(), 2);
        QVERIFY(m_kvs->accept() && m_kvk->accept());
        takeLines();
        tellKvs({});
        QVERIFY(takeLines().contains("[I]Форвакуумный насос NL1 включен")); // all is told anew
        tellKvk({});
        QCOMPARE(regime.count(), 1); // but not as a new start
    }

    void connectedBeforeAnyoneListens()
    {
        const QSignalSpy kvs(m_panel.get(), &KVS::onKVSConnected);
        const QSignalSpy kvk(m_panel.get(), &KVS::onKVKConnected);
        m_panel->onSystemStarted();
        QVERIFY(kvs.last()[0].toBool() && kvk.last()[0].toBool());
        m_kvk.reset();
        QTRY_COMPARE(colour("Door"), lost);
        m_panel->onSystemStarted();
        QVERIFY(kvs.last()[0].toBool() && !kvk.last()[0].toBool());
    }
};

QTEST_MAIN(TestKvs)
#include "test_kvs.moc"
