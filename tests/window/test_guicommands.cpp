#include "axis.h"
#include "contour.h"
#include "contourfixture.h"
#include "fixedmove.h"
#include "guifixture.h"
#include "kvs.h"
#include "lockview.h"
#include "mywinstyle.h"
#include "schema.h"
#include "selector.h"

#include <QLocale>
#include <QSignalSpy>
#include <QTableWidget>

// What the buttons of the window send to the machine, and what holds them back.
class TestGuiCommands : public GuiFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void buttons()
    {
        // Its button, a field of telemetry and its value before the touch.
        const std::tuple<const char*, const char*, int, const char*, const char*> rows[] = {
            {"sbDrives", "DrivesOn", 0, "DRIVE ON", "Включить питание приводов"},
            {"sbDrives", "DrivesOn", 1, "DRIVE OFF", "Выключить питание приводов"},
            {"sbTrans", "ChannelState1", 1, "TRANS ON", "Включить трансформацию приводов"},
            {"sbTrans", "TransOn", 1, "TRANS OFF", "Выключить трансформацию приводов"},
            {"pbStop", "TransOn", 0, "STOP_PRG", "СТОП"},
            {"sbDistPult", "PultOn", 0, "PULT ON", "Включить дистанционный пульт"},
            {"sbDistPult", "PultOn", 1, "PULT OFF", "Выключить дистанционный пульт"},
            {"sbLightSpiral", "LightState", 4, "SPIRAL OFF", "Включить освещение зоны сварки"}, // crosswise
            {"sbLightSpiral", "LightState", 3, "SPIRAL ON", "Выключить освещение зоны сварки"},
        };
        for (const auto& [button, field, value, command, line] : rows) {
            tell({{field, value}});
            touch(button);
            SENT(command);
            QVERIFY2(journal().contains(QString("[I]Нажата кнопка '%1'").arg(line)), line);
        }
        QVERIFY2(list().filter("Нажата").isEmpty(), "what the operator pressed goes to the file only");
    }

    void interlocks()
    {
        const auto* trans = w<StateButton>("sbTrans");
        QVERIFY(!Gui().findChild<StateButton*>("sbTrans")->isEnabled()); // no telemetry yet
        tell({{"DrivesLock", 1}});
        touch("sbDrives");
        touch("sbDistPult"); // drives are off
        m_gui->onChangedSpiralLock(true);
        touch("sbLightSpiral");
        QCOMPARE(takeCommands(), QStringList());
        tell({{"DrivesLock", 0}});
        touch("sbDrives");
        SENT("DRIVE ON");
        QCOMPARE(w<StateButton>("sbDrives")->state(), StateButton::Off);
        QVERIFY(!trans->isEnabled() && w<StateButton>("sbDistPult")->locked());
        tell({{"DrivesOn", 1}});
        QVERIFY(!trans->isEnabled() && !w<StateButton>("sbDistPult")->locked());
        for (const int state : {1, 3, 1}) {
            tell({{"ChannelState1", state}});
            QCOMPARE(trans->isEnabled(), state == 1);
        }
        tell({{"DrivesOn", 0}});
        QVERIFY(!trans->isEnabled());
    }

    void stopEndsEndlessRotation()
    {
        auto* endless = w<QPushButton>("pbEndlessV");
        w<PoLabel>("speedV")->setValue(100, 0);
        touch("pbEndlessV");
        QVERIFY(endless->isChecked());
        QCOMPARE(takeCommands(), QStringList());
        touch("pbPlusV");
        SENT("MOVE(V,100)");
        touch("pbStop");
        SENT("STOP_PRG");
        QVERIFY(!endless->isChecked());
        touch("pbPlusV");
        SENT("MOVE(V,100)", "MOVE(V,0)");

        touch("pbEndlessV");
        touch("pbEndlessV");
        SENT("MOVE(V,0)");
        QVERIFY(journal().contains("[I]Отжата кнопка 'Бесконечное вращение' на панели координаты V\n"));
    }

    void modesOfTheScreen()
    {
        tell({{"X", -12.345}});
        for (const bool virtualAxes : {false, true, false}) {
            tell({{"TransOn", virtualAxes}});
            for (const char* name : {"frmA", "frmB", "frmC", "pbInfoA", "pbInfoB", "pbInfoC"})
                QVERIFY2(w(name)->isVisible() != virtualAxes, name);
            QCOMPARE(w("frmVirtual")->isVisible(), virtualAxes);
            QCOMPARE(w("frmD")->geometry(), QRect(0, virtualAxes ? 185 : 425, 450, 75));
            QCOMPARE(w("pbInfoD")->y(), virtualAxes ? 195 : 435);
            QCOMPARE(w("frameManip")->height(), virtualAxes ? 525 : 500);
        }
        QCOMPARE(w<PoLabel>("coordX")->text(), QLocale::c().toString(-12.345F, 'f', 2));
        QCOMPARE(m_gui->coord("X"), -12.345F);

        QVERIFY(!w("frmLX2")->isVisible() && !w("frmU2")->isVisible()); // at the start
        for (const bool shown : {true, false}) {
            QSignalSpy told(m_gui.get(), &Gui::signalSecondXPanelShow);
            m_gui->showSecondLXAxis(shown);
            m_gui->showSecondUAxis(shown);
            QCOMPARE(told, (QList<QVariantList>{{shown}}));
            for (const char* name : {"frmLX2", "pbInfoLX2", "frmU2", "pbInfoU2"})
                QCOMPARE(w(name)->isVisible(), shown);
        }
        QVERIFY2(w("pbInfoLX")->visibleRegion() == QRegion(w("pbInfoLX")->rect()),
                 "the way back must stay free");
    }

    void virtualJog()
    {
        setVirtualMode();
        for (const QString& axis : QString("X Z PHI").split(' ')) {
            w<PoLabel>("speed" + axis)->setValue(12.34F, 0);
            for (const bool forward : {true, false}) {
                QWidget* button = w((forward ? "pbMinus" : "pbPlus") + axis);
                QTest::mousePress(button, Qt::LeftButton);
                SENT("MOVE(" + axis + (forward ? ",12.34)" : axis == "PHI" ? ",-12.3)" : ",-12.34)"));
                QCOMPARE(list().last(),
                         QString("Выполнение ручного перемещение по виртуальной оси %1 в %2 направлении...")
                             .arg(axis, forward ? "положительном" : "отрицательном"));
                QTest::mouseRelease(button, Qt::LeftButton);
                SENT(QString("MOVE(%1,0)").arg(axis));
                QCOMPARE(list().last(), "Завершено ручное перемещение по виртуальной оси " + axis);
            }
        }
    }

    void virtualFixedMove()
    {
        setVirtualMode();
        w<PoLabel>("speedZ")->setValue(3000.9F, 0);
        QString seen; // of the start button
        const auto open = [&](bool go) {
            QTimer::singleShot(0, this, [&, go] {
                auto* dialog = m_gui->findChild<FixedMove*>();
                QVERIFY(dialog);
                auto* start = dialog->findChild<QPushButton*>("pbStart");
                const auto look = [&] { seen += start->isEnabled() ? '1' : '0'; };
                look();
                if (go) {
                    for (const auto& word :
                         {std::pair{"ChannelState1", 3}, {"DrivesOn", 0}, {"ChannelState1", 1}}) {
                        tell({{word.first, word.second}});
                        look();
                    }
                    QTest::mouseClick(start, Qt::LeftButton);
                } else {
                    dialog->reject();
                }
            });
            touch("coordZ");
        };
        open(true);
        QCOMPARE(std::exchange(seen, {}), "1001"); // the last word wins
        SENT("EXEC_1(/programs/_fixed.npg)");
        QCOMPARE(m_site->read("/programs/_fixed.npg"),
                 QByteArray("N01 $1\nN03 G90 G01 Y=0 F3000\nN05 M30\n"));
        open(false); // drives are off
        tell({{"DrivesOn", 1}, {"ChannelState1", 3}});
        open(false);
        tell({{"ChannelState1", 4}}); // anything but a running program will do
        open(false);
        QCOMPARE(seen, "001");
        // Of these moves the journal knows the opening of the dialog alone.
        QCOMPARE(journal().count("фиксированно"), 4);
        QCOMPARE(journal().count("[I]Открыто окно фиксированного перемещения по оси Z\n"), 4);
    }

    void virtualSpeed()
    {
        setVirtualMode();
        for (const auto& [axis, most, quarter] :
             {std::tuple{"X", "3000", "750"}, {"Z", "3000", "750"}, {"PHI", "900", "225"}}) {
            QString last;
            QTimer::singleShot(0, this, [&] {
                auto* popup = m_gui->findChild<Selector*>();
                QVERIFY(popup);
                last = popup->findChild<QLabel*>("lblSpeed6")->text();
                const auto* entry = popup->findChild<QLabel*>("lblSpeed4");
                QTest::mousePress(popup, Qt::LeftButton, {}, entry->mapTo(popup, entry->rect().center()));
            });
            touch(QString("speed") + axis);
            QCOMPARE(last, QString(most));
            QCOMPARE(w<PoLabel>(QString("speed") + axis)->text(), QString(quarter));
        }
        QVERIFY(!journal().contains("Установлена скорость"));
    }

    void keySwitch()
    {
        tell({{"KeyAccess", 0}});
        m_gui->onAccessChanged(false); // told twice
        touch("pbStop");
        QCOMPARE(takeCommands(), QStringList());
        int notices = 0;
        for (const QLabel* label : m_gui->findChildren<QLabel*>())
            notices += label->text() == "Панель управления заблокирована";
        QCOMPARE(notices, 1);
        QVERIFY(QWidget::keyboardGrabber());
        tell({{"KeyAccess", 1}});
        QVERIFY(!QWidget::keyboardGrabber());
        touch("pbStop");
        SENT("STOP_PRG");
    }

    // A weld of three channels is started with a finger; another acts in the pause after channel 3, or in the
    // one after channel 2.
    void touchesOfARequiredPause()
    {
        const QString exec3 = "EXEC_3(/programs/_temp3.npg)", exec2 = "EXEC_2(/programs/_temp2.npg)",
                      exec1 = "EXEC_1(/programs/_temp1.npg)", stop = "STOP_PRG";
        const QStringList whole{exec3, exec2, exec1};
        const std::tuple<int, const char*, QStringList> rows[] = {
            {1, "pbGcode held", whole},
            {1, "pbPlusLX", whole},
            {1, "twContour", whole},
            {1, "Ctrl+Q", whole},
            {2, "pbGcode", whole},
            {1, "twContour navigates", {exec2, exec1}}, // a row, twice
            {1, "pbStop", {exec3, stop}},
            {2, "pbStop", {exec3, exec2, stop}},
            {1, "pbStop held", {exec3, stop}},
            {1, "pbPlusLX lifted", {exec3, "MOVE(LX,0)", exec2, exec1}},
        };
        for (const auto& [started, name, sent] : rows) {
            touchInAPause(started, name, sent);
            if (QTest::currentTestFailed())
                QFAIL(name);
            end();
            begin();
        }
    }

    void everyDriveReachesItsAxis()
    {
        // Its row of the window, the fields of telemetry that are its own, and those of the pair.
        const std::tuple<const char*, const char*, const char*, const char*, int> drives[] = {
            {"LX", "LX", "LX1", "LX", 3000}, {"LX2", "LX2", "LX2", "LX", 3000},
            {"LY", "LY", "LY", "LY", 3000},  {"A", "A", "A", "A", 360},
            {"B", "B", "B", "B", 720},       {"C", "C", "C", "C", 900},
            {"D", "D", "D", "D", 900},       {"U1", "U", "U1", "U", 120},
            {"U2", "U2", "U2", "U", 120},    {"V", "V", "V", "V", 2160},
        };
        float n = 0;
        tell({{"ChannelState1", 1}});
        m_gui->showSecondLXAxis(true);
        m_gui->showSecondUAxis(true);
        for (const auto& [name, row, own, shared, maxSpeed] : drives) {
            ++n;
            const Axis* axis = m_gui->axis(name);
            for (const bool minimum : {true, false}) {
                tell({{own, n + 0.25F},
                      {QByteArray("State") + own, 0xE0000 + n},
                      {QByteArray("MinLim") + shared, -n},
                      {QByteArray("MaxLim") + shared, 10 * n},
                      {QByteArray(shared) + "min", minimum},
                      {QByteArray(shared) + "max", !minimum}});
                QVERIFY2(axis->epMinus() == minimum && axis->epPlus() == !minimum, name);
            }
            QCOMPARE(axis->coord(), n + 0.25F);
            QCOMPARE(w<PoLabel>(QString("coord") + row)->value(), axis->coord());
            QCOMPARE(axis->state(), 0xE0000 + int(n));
            QVERIFY2(axis->minLimit() == -n && axis->maxLimit() == 10 * n && axis->maxSpeed() == maxSpeed,
                     name);

            Answers answers({Answers::button("pbStart")});
            touch(QString("coord") + row);
            const int channel = strchr("UV", name[0]) ? 2 : 1; // the part's turning has one of its own
            SENT(QString("EXEC_%1(/programs/_fixed.npg)").arg(channel));
        }
    }

    // The key switch is off, or the remote panel has the axes: just then somebody stands at the machine.
    void whatTellsAStateKeepsItsColours()
    {
        QApplication::setStyle(new MyWinStyle);
        tell({{"StateLX1", 0xF1234}, {"LX1", 12.5}, {"ChannelState1", 6}});
        emit w<KVS>("kvs")->kvs()->changedNL2State(4);
        emit w<KVS>("kvs")->kvs()->changedPT2Valid(false);
        const auto picture = [this](const char* name) { // without the frame
            return w(name)->grab(w(name)->rect().adjusted(2, 2, -2, -2)).toImage();
        };
        const char* const states[] = {"indLX",  "coordLX", "lblLX",         "NL2",
                                      "pipeA0", "PT2",     "channel1State", "lblCNC"};
        const char* const touched[] = {"pbPlusLX", "speedLX", "sbDrives", "lblLir1"};
        QMap<QString, QImage> before;
        for (const char* name : states)
            before[name] = picture(name);
        for (const char* name : touched)
            before[name] = picture(name);

        m_gui->onAccessChanged(false);
        for (const char* name : states)
            QVERIFY2(picture(name) == before[name], name);
        for (const char* name : touched)
            QVERIFY2(picture(name) != before[name], name);
        tell({{"ChannelState1", 1}}); // what changes meanwhile is not gray afterwards
        tell({{"ChannelState1", 6}});
        m_gui->onAccessChanged(true);
        QVERIFY(picture("channel1State") == before["channel1State"]);
    }

private:
    // Three channels, and pauses that a finger can meet.
    void ringWithAStop()
    {
        Site slow = site();
        slow.pauses.beforeContour = slow.pauses.beforeManipulator = slow.pauses.navigation =
            std::chrono::milliseconds(200);
        setSite(slow);
        auto* contour = w<CONTOUR>("contour");
        contour->init(new SchemaCircle(100, 2));
        for (float angle : {0.0F, 90.0F})
            contour->addPoint({angle, 0, 0, 0});
        contour->addComment("Технол.останов");
        tell({{"DrivesOn", 1}});
    }

    // In the second row of a table, else in the middle.
    void finger(const QString& widget, bool down)
    {
        auto* table = m_gui->findChild<QTableWidget*>(widget);
        QPoint place =
            table ? table->viewport()->mapTo(table, table->visualItemRect(table->item(1, 0)).center())
                  : w(widget)->rect().center();
        place = w(widget)->mapTo(m_gui.get(), place);
        QWindow* window = m_gui->windowHandle();
        down ? QTest::mousePress(window, Qt::LeftButton, {}, place)
             : QTest::mouseRelease(window, Qt::LeftButton, {}, place);
    }

    // The finger comes when so many channels are started.
    void touchInAPause(int started, const QString& name, const QStringList& sent)
    {
        ringWithAStop();
        w<CONTOUR>("contour")->setCurrentIndex(name.startsWith("twContour") ? 0 : 1);
        const QString touched = name.section(' ', 0, 0);
        if (touched == "pbPlusLX" && name != touched) {
            finger(touched, true);
            SENT("MOVE(LX,0)"); // its speed is 0
        }
        QTimer watch;
        connect(&watch, &QTimer::timeout, this, [&] {
            if (commands().filter("EXEC").size() < started)
                return;
            watch.stop();
            if (name == "Ctrl+Q")
                return QTest::keyClick(m_gui->windowHandle(), Qt::Key_Q, Qt::ControlModifier);
            if (!name.endsWith("lifted"))
                finger(touched, true);
            if (!name.endsWith("held") && !name.endsWith("navigates"))
                finger(touched, false);
        });
        watch.start(5);
        if (name.endsWith("navigates")) {
            finger(touched, true);
            finger(touched, false);
        } else {
            w<QPushButton>("pbGcode")->click();
        }
        if (touched != name)
            finger(touched, false); // lifted when all is over
        QTRY_COMPARE(commands(), sent);
        takeCommands();
        const bool stopped = touched == "pbStop";
        QCOMPARE(list().contains(QString("Пуск прерван, канал %1 не запущен").arg(sent.size() == 2 ? 2 : 1)),
                 stopped);
        QVERIFY(!journal().contains("Выполнен выход"));
        // What was not started does not go on.
        QCOMPARE(text("pbGcode"), stopped || name.endsWith("navigates") ? "ПУСК" : "ДАЛЕЕ");

        touch("sbDistPult"); // afterwards the hand is heard again
        SENT("PULT ON");
    }
};

QTEST_MAIN(TestGuiCommands)
#include "test_guicommands.moc"
