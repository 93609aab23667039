#include "confirm.h"
#include "deathtest.h"
#include "lockview.h"
#include "statebutton.h"
#include "vacuumcontroller.h"

#include <QFontMetrics>
#include <QSettings>
#include <QSignalSpy>

namespace {

const QColor valid(0, 128, 255), invalid(255, 32, 0);
const QColor here(255, 255, 192), lost(255, 192, 192);

QStringList words(const char* list)
{
    return QString::fromUtf8(list).split(' ');
}

// What the label's letters cover, in the panel's pixels.
QRect written(const QLabel* label)
{
    const QRect inside = label->contentsRect();
    const QRect text = label->fontMetrics().boundingRect(inside, int(label->alignment()), label->text());
    return text.translated(label->pos());
}

// By the number of the regime; the first two are not asked for by name. On its button a name stands in two
// lines.
const std::pair<const char*, const char*> regimes[] = {{"sbVacAdjust", "Наладка"},
                                                       {"sbVacManual", "Ручное управление"},
                                                       {"sbVacPrepare", "Подготовка"},
                                                       {"sbVacForepump", "Форвакуумная откачка"},
                                                       {"sbVacPumping", "Откачка камеры"},
                                                       {"sbVacFilling", "Напуск в камеру"},
                                                       {"sbVacShutdown", "Завершение работы"}};

} // namespace

// The panel in front of both controllers: what it makes of their telemetry, and how it looks. That the lines
// of the drawing are closed is checked where it is laid out.
class TestKvs : public PanelFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void otherPictures()
    {
        const QSignalSpy spiral(m_panel.get(), &KVS::signalChangedSpiralLock);
        const QSignalSpy shutdown(m_panel.get(), &KVS::signalChangedShutdownLock);
        tellKvk({{"NP1Power", 1}, {"NW1Power", 1}, {"TMNFreq", 832.6}, {"SpiralLock", 1}});
        QVERIFY(shows("NP1", "NP_1") && shows("NW1", "NW_1"));
        QVERIFY(spiral.last()[0].toBool() && !shutdown.last()[0].toBool());
        QCOMPARE(w<PoLabel>("FreqTMN")->text(), "833");
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
        const QString pascal = "1.0E+01 2.0E+02 3.0E+03 4.0E+04 5.0E+05 6.0E-03";
        const QString torr = "7.5E-02 1.5E+00 2.3E+01 3.0E+02 3.8E+03 4.5E-05";
        const auto check = [&](bool millimetres) {
            QStringList shown;
            for (int i = 1; i <= 6; ++i) {
                shown << w<PoLabel>(QString("PT%1").arg(i))->text();
                QCOMPARE(w<PoLabel>(QString("lblPT%1u").arg(i))->text(), millimetres ? "мм.рт.ст." : "Па");
            }
            QCOMPARE(shown.join(' '), millimetres ? torr : pascal);
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
        const std::tuple<double, double, const char*> readings[] = {
            {0, -5, "w_0 0.0 t_1 -5.0"},   {2.9999, 29.99, "w_0 3.0 t_1 30.0"},
            {3, 30, "w_1 3.0 t_1 30.0"},   {3.0001, 30.01, "w_1 3.0 t_2 30.0"},
            {50, 50, "w_1 50.0 t_2 50.0"}, {50, 50.01, "w_1 50.0 t_0 50.0"}};
        const auto lamps = [this](int except) {
            QList<qint64> pictures;
            for (int i = 1; i <= 7; ++i) {
                for (const char* lamp : {"W", "T"}) {
                    if (i != except)
                        pictures
                            << w<PoSprite>(lamp + QString::number(i))->pixmap(Qt::ReturnByValue).cacheKey();
                }
            }
            return pictures;
        };
        tellKvs({}); // the first datagram lights all lamps
        for (int circuit = 1; circuit <= 7; ++circuit) {
            const QString number = QString::number(circuit);
            const QList<qint64> others = lamps(circuit);
            for (const auto& [flow, celsius, look] : readings) {
                tellKvs({{"Disch" + number, flow}, {"Temp" + number, celsius}});
                const QStringList all = words(look);
                QVERIFY2(shows("W" + number, all[0]) && shows("T" + number, all[2]), look);
                QCOMPARE(w<PoLabel>("W" + number + "disch")->text(), all[1]);
                QCOMPARE(w<PoLabel>("T" + number + "temp")->text(), all[3]);
            }
            QCOMPARE(lamps(circuit), others);
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
        const auto again = [this] { m_panel->addLock("NL1:LockOn", false, "", ""); };
        QVERIFY(deathOf(again).contains("i == m_locks.end()"));
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

    // A walk over the valves: what each step lights (+) and puts out (-), and nothing else changes. Of pipes
    // that several valves feed, some go dark with one valve while another is still open: the operators know
    // the picture that way.
    void pipes()
    {
        const char* const walk[] = {
            "VP1 1 +A0 A1 A2, VP1 0 -A0 A1 A2, VP4 2 +H0 H1 H2 H3 H4 H5", // on the way is not closed
            "VP4 0 -H0 H1 H2 H3 H4 H5, VP8 1 +J0 J1 J2 J3, VP8 0 -J0 J1 J2 J3",
            "VPT 1 +O0 O1 P0, VPT 0 -O0 O1 P0",
            "VP2 1 +B0 B1 B2 B3 B4 BC B5 B6, VP7 1 +C0 C1, VP2 0 -B0 B1 B2 B3 B4",
            "VP2 1 +B0 B1 B2 B3 B4, VP7 0 -C0 C1, VP2 0 -B0 B1 B2 B3 B4 BC B5 B6",
            "VP7 1 +C0 C1 BC B5 B6, VP7 0 -C0 C1 BC B5 B6",
            "VP3 1 +E0 E1 EF E2 E3 EG E4 E5 E6, VP6 1 +G0 G1, VP3 0 -E0 E1 EF E2 E3",
            "VP3 1 +E0 E1 EF E2 E3, VP5 1 +F0 F1 F2 F3, VP6 0 -G0 G1, VP3 0 -E0 E1",
            "VP6 1 +G0 G1, VP6 0 -G0 G1 E4 E5 E6 EG, VP6 1 +G0 G1 E4 E5 E6 EG",
            "VP5 0 -F0 F1 F2 F3 EF E2 E3 EG, VP6 0 -G0 G1 E4 E5 E6",
            "VP5 1 +F0 F1 F2 F3 EF E2 E3 EG E4 E5 E6, VP3 1 +E0 E1, VP5 0 -F0 F1 F2 F3",
            "VP3 0 -E0 E1 EF E2 E3 EG E4 E5 E6",
            "VP6 1 +G0 G1 E4 E5 E6 EG, VP6 0 -G0 G1 E4 E5 E6 EG"};
        // A pipe is lit when it does not show what it shows at first.
        QMap<QString, qint64> dark;
        for (const PoSprite* sprite : m_panel->findChildren<PoSprite*>()) {
            if (sprite->objectName().startsWith("pipe"))
                dark[sprite->objectName().mid(4)] = sprite->pixmap(Qt::ReturnByValue).cacheKey();
        }
        QCOMPARE(dark.size(), 41);
        QVERIFY(shows("pipeA0", "vpipe_0"));
        QStringList lit;
        for (const QString& step : QStringList(std::begin(walk), std::end(walk)).join(", ").split(", ")) {
            set(step.left(3), step.mid(4, 1).toInt());
            for (const QString& pipe : step.mid(7).split(' '))
                step[6] == '+' ? lit.append(pipe) : void(lit.removeOne(pipe));
            lit.sort();
            QStringList shown;
            for (auto i = dark.cbegin(); i != dark.cend(); ++i) {
                if (w<PoSprite>("pipe" + i.key())->pixmap(Qt::ReturnByValue).cacheKey() != i.value())
                    shown << i.key();
            }
            QCOMPARE(shown, lit);
        }
    }

    // The jacket's pipes, and the frame of the chamber: for this, on the way does not count.
    void jacketAndChamber()
    {
        for (int state : {0, 1, 2, 3, 4, 0}) {
            set("VP5", state);
            for (int i = 0; i <= 8; ++i)
                QCOMPARE(w(QString("pipeI%1").arg(i))->isHidden(), state == 0);
        }
        const QColor open(160, 255, 255), closed(214, 210, 208);
        set("VP2", 1);
        QCOMPARE(colour("frmChamber"), closed);
        for (const char* valve : {"VP1", "VP3", "VP4", "VP8"}) {
            for (int state : {0, 1, 2, 3, 0}) {
                set(valve, state);
                QCOMPARE(colour("frmChamber"), state == 1 ? open : closed);
            }
        }
    }

    // A picture larger than its place would be cut, a smaller one would leave a gap in the line.
    void picturesFillTheirPlaces()
    {
        const QList<PoSprite*> sprites = m_panel->findChildren<PoSprite*>();
        QCOMPARE(sprites.size(), 19 + 41 + 14 + 1); // devices, pipes, cooling water, door
        for (const PoSprite* sprite : sprites) {
            const QSize size = sprite->pixmap(Qt::ReturnByValue).size();
            const bool stretched = sprite->hasScaledContents() &&
                                   (size.width() == sprite->width() || size.height() == sprite->height());
            QVERIFY2(!size.isEmpty() && (size == sprite->size() || stretched),
                     qPrintable(sprite->objectName()));
        }
    }

    // With the longest readings, in both units: every text whole, and none on another or on a symbol.
    void textsStandClear()
    {
        for (auto show : {&KVS::onChangedPT1, &KVS::onChangedPT2, &KVS::onChangedPT3, &KVS::onChangedPT4,
                          &KVS::onChangedPT5})
            (m_panel.get()->*show)(8.8e-8);
        m_panel->onChangedPT6(8.8e-8F);
        for (auto show :
             {&KVS::changedT1, &KVS::changedT7, &KVS::onChangedND1Temp, &KVS::onChangedND1CorpTemp})
            (m_panel.get()->*show)(188.8F);
        for (auto show : {&KVS::changedW1, &KVS::changedW7})
            (m_panel.get()->*show)(88.8F);
        m_panel->changedTMNFreq(1888);
        for (int unit : {0, 1}) {
            m_panel->setPressUnit(unit);
            checkTexts();
        }
    }

    void pressedButton()
    {
        const QSignalSpy mode(m_panel.get(), &KVS::signalChangedMode);
        const QSignalSpy time(m_panel.get(), &KVS::signalChangedModeTime);
        const QSignalSpy state(m_panel.get(), &KVS::signalChangedModeState);
        for (uint number : {3U, 0U, 1U, 2U, 4U, 5U, 6U, 7U, 0U, 0xFFFFFFFFU}) {
            tellKvk({{"AlgNumber", number}, {"AlgTime", 100 + number % 8}, {"AlgRun", number % 3}});
            QCOMPARE(pressed(), number < 7 ? regimes[number].second : "");
            QCOMPARE(mode.last()[0].toUInt(), number);
            QCOMPARE(time.last()[0].toUInt(), 100 + number % 8);
            QCOMPARE(state.last()[0].toUInt(), number % 3);
        }
    }

    void questions()
    {
        for (int number = 2; number < 7; ++number) {
            const auto [button, name] = regimes[number];
            const QString question = QString("Запустить автоматический алгоритм '%1'?").arg(name);
            for (const char* answer : {"pbNo", "pbYes", ""}) {
                whenOpen<Confirm>([=](Confirm* dialog) {
                    QCOMPARE(dialog->findChild<QLabel*>("lblText")->text(), question);
                    QCOMPARE(dialog->window()->windowTitle(), "Подтверждение");
                    if (*answer)
                        QTest::mouseClick(dialog->findChild<QPushButton*>(answer), Qt::LeftButton);
                    else
                        QVERIFY(passTime(5000)); // nobody answers
                });
                touch(button);
            }
            touch("sbVacManual"); // is not asked for, and marks the end of what was sent
            QCOMPARE(m_kvk->takeCommands(2), (QStringList{QString("ALG(%1)").arg(number), "ALG(1)"}));
        }
        QVERIFY(takeLines().isEmpty() && pressed().isEmpty()); // both wait for the controller's report

        // The row changes under the open question; the yes still counts.
        whenOpen<Confirm>([this](Confirm* dialog) {
            tellKvk({{"AlgNumber", 4}});
            QCOMPARE(pressed(), "Откачка камеры");
            dialog->accept();
        });
        touch("sbVacPumping");
        QCOMPARE(m_kvk->takeCommands(1), QStringList("ALG(4)"));
    }

    void setupCode()
    {
        const QString wrong = "[W]Введён неправильный пароль для перехода в режим 'Наладка'";
        const QString right = "[I]Введён правильный пароль для перехода в режим 'Наладка'";
        const std::tuple<const char*, bool, QString> attempts[] = {
            {"305728", true, wrong}, {"", true, wrong}, {"305729", false, wrong}, {"305729", true, right}};
        for (const auto& [digits, enter, line] : attempts) {
            typeNext(digits, enter, "Пароль");
            touch("sbVacAdjust");
            QCOMPARE(takeLines(), QStringList(line));
        }
        QCOMPARE(m_kvk->takeCommands(1), QStringList("ALG(0)"));
    }

    void rights()
    {
        // Whether the door stands in the way of pumping is the controller's to say.
        m_panel->onDoorStateChanged(1);
        m_panel->onDoorPressChanged(0);
        takeLines();
        for (int group : {-1, 0, 1, 2, 3}) {
            m_panel->onUserChanged(group);
            for (const auto& [button, name] : regimes)
                QCOMPARE(w<StateButton>(button)->locked(), button == regimes[0].first && group >= 2);
        }
        QTest::mousePress(w("sbVacAdjust"), Qt::LeftButton);
        const auto reasons = w("sbVacAdjust")->findChildren<LockView*>();
        QCOMPARE(reasons.size(), 1);
        QCOMPARE(reasons[0]->findChildren<QLabel*>().last()->text(), "Нет прав на включение  ");
        QTest::mouseRelease(w("sbVacAdjust"), Qt::LeftButton);
        QVERIFY(takeLines().isEmpty()); // no keypad, so no word about a code
    }

    // The motion controller moves the picture up and down, the chamber controller to and fro.
    void door()
    {
        QCOMPARE(w("Door")->pos(), QPoint(42, 215));
        const std::tuple<int, int, bool, const char*> presses[] = {
            {1, 30, false, "[I]Дверь камеры отжата"},
            {2, 30, true, "[I]Дверь камеры прижимается"},
            {3, 30, true, "[I]Дверь камеры отжимается"},
            {4, 30, true, "[W]Ошибка прижима/отжима двери!"},
            {-1, 30, true, "[W]Ошибка прижима/отжима двери!"},
            {0, 42, true, "[I]Дверь камеры прижата"},
        };
        const std::tuple<uint, int, bool> places[] = {{0, 90, false}, {1, 340, true}, {2, 215, true}};
        tellKvk({{"DoorState", 3}});
        takeLines();
        for (const auto& [press, x, loose, line] : presses) {
            tellKvk({{"DoorState", press}});
            QCOMPARE(m_panel->lock("REGIME:LockDoorPress")->state(), loose);
            for (const auto& [state, y, locked] : places) {
                m_panel->onDoorStateChanged(state);
                QCOMPARE(w("Door")->pos(), QPoint(x, y));
                QCOMPARE(m_panel->lock("REGIME:LockDoorState")->state(), locked);
            }
            QCOMPARE(takeLines(), QStringList(line));
        }
    }

    void regimesStandInOneRow()
    {
        int right = -1;
        for (const auto& [name, title] : regimes) {
            const QWidget* button = w(name);
            QVERIFY(button->x() > right && button->y() == w("sbVacAdjust")->y() && button->height() >= 60);
            right = button->geometry().right();
            for (const QLabel* label : button->findChildren<QLabel*>())
                QVERIFY2(label->sizeHint().width() <= button->width() - 4, title);
        }
    }

private:
    // The titles of what is pressed on the row.
    QString pressed() const
    {
        QStringList titles;
        for (const auto& [button, name] : regimes) {
            if (w<StateButton>(button)->state() == StateButton::On)
                titles << w(button)->findChild<QLabel*>("lblTitle")->text().replace('\n', ' ');
        }
        return titles.join('|');
    }
    void set(const QString& valve, int state)
    {
        const QByteArray slot = valve == "VPT" ? "changedVPT" : "onChanged" + valve.toLatin1() + "State";
        QVERIFY(QMetaObject::invokeMethod(m_panel.get(), slot.constData(), Q_ARG(int, state)));
    }
    void checkTexts()
    {
        QVector<const QLabel*> labels;
        for (const QLabel* label : m_panel->findChildren<QLabel*>(QString(), Qt::FindDirectChildrenOnly)) {
            if (!label->text().isEmpty())
                labels << label;
        }
        QVERIFY(labels.size() > 70);
        for (int i = 0; i < labels.size(); ++i) {
            const QRect place = written(labels[i]);
            const QString name = labels[i]->objectName() + ' ';
            QVERIFY2(labels[i]->geometry().contains(place), qPrintable(name + labels[i]->text()));
            for (int k = 0; k < i; ++k)
                QVERIFY2(!place.intersects(written(labels[k])), qPrintable(name + labels[k]->objectName()));
            for (const PoSprite* sprite : m_panel->findChildren<PoSprite*>())
                QVERIFY2(!place.intersects(sprite->geometry()), qPrintable(name + sprite->objectName()));
        }
    }
};

QTEST_MAIN(TestKvs)
#include "test_kvs.moc"
