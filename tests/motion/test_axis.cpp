#include "axis.h"
#include "drivecomm.h"
#include "fixedmove.h"
#include "selector.h"
#include "widgets.h"

#include "comparetext.h"
#include "drivecontroller.h"
#include "nextdialog.h"
#include "sitefixture.h"

#include <QSettings>
#include <QSignalSpy>

// One axis on a row of its own, against a controller that writes down what it is told.
class TestAxis : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_site = std::make_unique<SiteFixture>();
        m_controller = std::make_unique<DriveController>();
        m_link = std::make_unique<DriveTCPthread>();
        QVERIFY(m_link->connect(site().drive.host, site().drive.tcpPort, site().drive.udpPort));
        QVERIFY(m_controller->accept());
        m_wire.clear();
    }
    void cleanup()
    {
        m_axis.reset();
        m_row.reset();
        m_link.reset();
        m_controller.reset();
        m_site.reset();
    }

    void jog()
    {
        build("LX2");
        m_speed->setValue(12.9F, 0); // is cut off, not rounded
        QTest::mousePress(m_plus, Qt::LeftButton);
        QCOMPARE(commands(), "MOVE(LX2,12)");
        QTest::mouseRelease(m_plus, Qt::LeftButton);
        QCOMPARE(commands(), "MOVE(LX2,0)");
        QTest::mouseClick(m_minus, Qt::LeftButton);
        QCOMPARE(commands(), "MOVE(LX2,-12) MOVE(LX2,0)");
        const QString end = "[I]Завершено ручное перемещение по оси LX2";
        const QStringList told = {
            "[C]Выполнение ручного перемещение по оси LX2 в положительном направлении...", end,
            "[C]Выполнение ручного перемещение по оси LX2 в отрицательном направлении...", end};
        QCOMPARE(lines(), told);

        m_axis->onEndlessClicked(true);
        QTest::mouseClick(m_plus, Qt::LeftButton);
        QCOMPARE(commands(), "MOVE(LX2,12)");
        QCOMPARE(lines(), told.mid(0, 1));

        m_axis->onEndlessClicked(false);
        QVERIFY(m_link->disconnect());
        QTest::mouseClick(m_plus, Qt::LeftButton);
        QCOMPARE(lines(), told.mid(0, 2)); // the journal keeps what the operator did

        build("V", true);
        QTest::mouseClick(m_plus, Qt::LeftButton);
        QCOMPARE(lines().size(), 1);
    }

    void limitSwitches()
    {
        build("LY");
        m_speed->setValue(5, 0);
        const QSignalSpy plusTold(m_axis.get(), &Axis::epPlusChanged);

        // A switch that trips under the finger leaves the stop to the controller: the console sends one only
        // when the finger lifts.
        QTest::mousePress(m_plus, Qt::LeftButton);
        m_axis->onEpPlusChanged(true);
        QVERIFY(!m_plus->isEnabled() && m_minus->isEnabled() && m_axis->epPlus());
        QCOMPARE(commands(), "MOVE(LY,5)");
        QTest::mouseRelease(m_row->windowHandle(), Qt::LeftButton, {}, m_plus->geometry().center());
        QCOMPARE(commands(), "MOVE(LY,0)");

        // That way is closed, the other is free.
        QTest::mouseClick(m_plus, Qt::LeftButton);
        QCOMPARE(commands(), "");
        QTest::mouseClick(m_minus, Qt::LeftButton);
        QCOMPARE(commands(), "MOVE(LY,-5) MOVE(LY,0)");

        m_axis->onEpMinusChanged(true);
        m_axis->onEpPlusChanged(false);
        QVERIFY(m_plus->isEnabled() && !m_minus->isEnabled() && m_axis->epMinus() && !m_axis->epPlus());
        QCOMPARE(plusTold.size(), 2);
    }

    void checkableButtons()
    {
        build("B");
        m_speed->setValue(7, 0);
        m_plus->setCheckable(true);
        m_minus->setCheckable(true);
        connect(m_plus, &QPushButton::toggled, m_axis.get(), &Axis::onPlusToggled);
        connect(m_minus, &QPushButton::toggled, m_axis.get(), &Axis::onMinusToggled);
        for (const auto& [button, other] : {std::pair(m_plus, m_minus), {m_minus, m_plus}}) {
            button->toggle();
            QVERIFY(!other->isEnabled());
            button->toggle();
            QVERIFY(other->isEnabled());
        }
        QCOMPARE(commands(), "MOVE(B,7) MOVE(B,0) MOVE(B,-7) MOVE(B,0)");
        QCOMPARE(lines(), QStringList());
    }

    void speedIsKept()
    {
        build("U1");
        QCOMPARE(m_axis->speed(), 0);
        m_speed->setValue(33.7F, 1);
        build("U2"); // U1 ends
        QCOMPARE(m_axis->speed(), 0);
        QSettings settings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
        QCOMPARE(settings.value("U1/Speed").toString(), "33");
        build("U1");
        QCOMPARE(m_speed->text(), "33");
        m_axis.reset();
        settings.setValue("U1/Speed", "noise");
        settings.sync();
        build("U1");
        QCOMPARE(m_axis->speed(), 0);
    }

    // The borders between the classes of states, and those with a lamp of their own.
    void lampAndClass()
    {
        const struct
        {
            int code;
            const char* lamp;
            const char* mark;
        } rows[] = {{0xA0012, "yellow", "[I]"}, {0xA0100, "gray", "[I]"},   {0xA0101, "green", "[I]"},
                    {0xA0103, "green", "[I]"},  {0xA0104, "gray", "[I]"},   {0xDFFFF, "gray", "[I]"},
                    {0xE0000, "yellow", "[W]"}, {0xEFFFF, "yellow", "[W]"}, {0xF0000, "red", "[A]"},
                    {0x7FFFFFFF, "red", "[A]"}, {-1, "gray", "[I]"}};
        build("LX");
        const auto shows = [this](const char* lamp) {
            return m_lamp->pixmap(Qt::ReturnByValue).toImage() ==
                   QPixmap(QString(":/images/indicator_%1.png").arg(lamp)).toImage();
        };
        QVERIFY(shows("gray") && !shows("red"));
        for (const auto& [code, lamp, mark] : rows) {
            m_axis->onStateChanged(code == 0xA0101 ? 0xF2026 : 0xA0101);
            lines();
            m_axis->onStateChanged(code);
            const QStringList told = lines();
            QVERIFY2(shows(lamp) && told.size() == 1 && told[0].startsWith(QString(mark) + "Ось LX: "),
                     qPrintable(QString::number(unsigned(code), 16)));
            QCOMPARE(m_axis->state(), code);
        }
    }

    void parking()
    {
        build("D");
        QStringList order;
        connect(m_axis.get(), &Axis::parked, this, [&](bool on) { order += on ? "parked" : "released"; });
        connect(m_axis.get(), &Axis::stateChanged, this, [&] { order += "state"; });
        connect(m_axis.get(), &Axis::axisMessage, this, [&](const QString& line) { order += line; });
        for (int code : {0xC1600, 0xC1600, 0xF2026})
            m_axis->onStateChanged(code);
        QCOMPARE(order,
                 (QStringList{"parked", "state", "[I]Ось D: Парковка оси", "state", "[I]Ось D: Парковка оси",
                              "released", "state", "[A]Ось D: Низкое напряжение в секции питания привода"}));
    }

    void speedFromSelector()
    {
        build("A");
        const QSignalSpy told(m_axis.get(), &Axis::speedChanged);
        QString offered;
        const auto choose = [&](const char* entry) {
            whenOpen<Selector>([&, entry](Selector* popup) {
                offered.clear();
                for (int i = 1; i <= 6; ++i)
                    offered += popup->findChild<QLabel*>(QString("lblSpeed%1").arg(i))->text() + ' ';
                const auto* label = popup->findChild<QLabel*>(entry);
                QTest::mousePress(popup, Qt::LeftButton, {},
                                  label ? label->mapTo(popup, label->rect().center()) : QPoint(-5, -5));
            });
            QTest::mouseClick(m_speed, Qt::LeftButton);
        };
        for (const char* entry : {"lblSpeed4", "beside all"}) {
            choose(entry);
            QCOMPARE(m_speed->text(), "90");
            QCOMPARE(m_axis->speed(), 90);
            QCOMPARE(told.size(), 1);
        }
        QCOMPARE(offered, "9 18 36 90 180 360 ");
        QCOMPARE(told[0][0].toInt(), 90);
        QCOMPARE(lines(), QStringList("[I]Установлена скорость 90 мм/мин для оси A"));
    }

    // The dialog hears from the channel and the drives as long as it is open.
    void fixedMoveDialog()
    {
        build("LX");
        m_speed->setValue(120.9F, 0);
        QList<bool> enabled;
        whenOpen<FixedMove>([&](FixedMove* dialog) {
            auto* start = dialog->findChild<QPushButton*>("pbStart");
            enabled << start->isEnabled(); // channel 1 has told nothing yet
            emit m_link->changedChannelState1(1);
            enabled << start->isEnabled();
            emit m_link->changedDrivesOn(false);
            enabled << start->isEnabled();
            emit m_link->changedDrivesOn(true);
            QTest::mouseClick(start, Qt::LeftButton);
        });
        QTest::mouseClick(m_coord, Qt::LeftButton);
        QCOMPARE(enabled, (QList<bool>{false, true, false}));
        QCOMPARE(commands(), "EXEC_1(/programs/_fixed.npg)");
        QVERIFY(m_site->read("/programs/_fixed.npg").contains(" LX=0 F120\n"));
        QCOMPARE(lines(), (QStringList{"-[I]Открыто окно фиксированного перемещения по оси LX",
                                       "[C]Запущено фиксированное перемещение по оси LX в координату 0",
                                       "-[I]Закрыто окно фиксированного перемещения по оси LX"}));
    }

private:
    void build(const QString& name, bool endless = false)
    {
        m_axis.reset();
        m_row = std::make_unique<QWidget>();
        m_row->setGeometry(100, 100, 700, 80);
        m_lamp = new PoSprite(m_row.get());
        m_coord = new PoLabel(m_row.get());
        m_speed = new PoLabel(m_row.get());
        m_plus = new QPushButton(m_row.get());
        m_minus = new QPushButton(m_row.get());
        auto* info = new QPushButton(m_row.get());
        int x = 0;
        for (QWidget* w : std::initializer_list<QWidget*>{m_lamp, m_coord, m_speed, m_plus, m_minus, info})
            w->setGeometry(110 * x++, 0, 100, 60);
        m_axis = std::make_unique<Axis>(name, "мм", 0, 1, 360, m_link.get(), m_lamp, m_coord, m_speed, m_plus,
                                        m_minus, info, endless, false);
        m_lines = std::make_unique<QSignalSpy>(m_axis.get(), &Axis::axisMessage);
        m_row->show();
        QVERIFY(QTest::qWaitForWindowActive(m_row.get()));
    }
    // What the controller was told since the last call.
    QString commands()
    {
        m_link->command("END"); // tells that all before it have come
        QStringList result;
        const bool came = QTest::qWaitFor([&] {
            m_wire += m_controller->peer->readAll();
            while (m_wire.size() >= 4) {
                const int length = qFromLittleEndian<quint16>(m_wire.constData() + 2);
                if (m_wire.size() < 4 + length)
                    break;
                result += QString::fromUtf8(m_wire.mid(4, length));
                m_wire.remove(0, 4 + length);
            }
            return result.endsWith("END");
        });
        if (came)
            result.removeLast();
        return result.join(' ');
    }
    // The journal lines since the last call; those not shown in the list carry a minus sign.
    QStringList lines()
    {
        QStringList result;
        for (const QList<QVariant>& line : *m_lines)
            result += (line[1].toBool() ? "" : "-") + line[0].toString();
        m_lines->clear();
        return result;
    }

    std::unique_ptr<SiteFixture> m_site;
    std::unique_ptr<DriveController> m_controller;
    std::unique_ptr<DriveTCPthread> m_link;
    std::unique_ptr<QWidget> m_row;
    PoSprite* m_lamp = nullptr;
    PoLabel* m_coord = nullptr;
    PoLabel* m_speed = nullptr;
    QPushButton* m_plus = nullptr;
    QPushButton* m_minus = nullptr;
    std::unique_ptr<Axis> m_axis;
    std::unique_ptr<QSignalSpy> m_lines;
    QByteArray m_wire;
};

QTEST_MAIN(TestAxis)
#include "test_axis.moc"
