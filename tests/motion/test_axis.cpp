#include "axis.h"
#include "drivecomm.h"
#include "fixedmove.h"
#include "selector.h"
#include "widgets.h"

#include "drivecontroller.h"
#include "sitefixture.h"

#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

// One axis on a row of its own, against a controller that writes down what it is told.
class TestAxis : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void jog_data();
    void jog();
    void jogOnClosedLink();
    void endlessJog();
    void limitSwitches();
    void checkableButtons();
    void speedIsKept();
    void lampAndClass();
    void parking();
    void speedFromSelector();
    void fixedMoveDialog();

private:
    void build(const QString& name, int maxSpeed = 3000, bool endless = false);
    // What the controller was told since the last call, one command after another.
    QStringList commands();
    QStringList lines();
    QSettings settings() const
    {
        return QSettings(site().path(QStringLiteral("/home/oper/bin/settings.ini")), QSettings::IniFormat);
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
    QPushButton* m_info = nullptr;
    std::unique_ptr<Axis> m_axis;
    std::unique_ptr<QSignalSpy> m_lines;
    QByteArray m_wire;
};

void TestAxis::init()
{
    m_site = std::make_unique<SiteFixture>();
    m_controller = std::make_unique<DriveController>();
    m_link = std::make_unique<DriveTCPthread>();
    QVERIFY(m_link->connect(site().drive.host, site().drive.tcpPort, site().drive.udpPort));
    QVERIFY(m_controller->accept());
    m_wire.clear();
}

void TestAxis::cleanup()
{
    m_axis.reset();
    m_row.reset();
    m_link.reset();
    m_controller.reset();
    m_site.reset();
}

void TestAxis::build(const QString& name, int maxSpeed, bool endless)
{
    m_axis.reset();
    m_row = std::make_unique<QWidget>();
    m_row->setGeometry(100, 100, 700, 80);
    m_lamp = new PoSprite(m_row.get());
    m_coord = new PoLabel(m_row.get());
    m_speed = new PoLabel(m_row.get());
    m_plus = new QPushButton(m_row.get());
    m_minus = new QPushButton(m_row.get());
    m_info = new QPushButton(m_row.get());
    int x = 0;
    for (QWidget* w : std::initializer_list<QWidget*>{m_lamp, m_coord, m_speed, m_plus, m_minus, m_info}) {
        w->setGeometry(x, 0, 100, 60);
        x += 110;
    }
    m_axis = std::make_unique<Axis>(name, QStringLiteral("мм"), 0, 1, maxSpeed, m_link.get(), m_lamp, m_coord,
                                    m_speed, m_plus, m_minus, m_info, endless, false);
    m_lines = std::make_unique<QSignalSpy>(m_axis.get(), &Axis::axisMessage);
    m_row->show();
    QVERIFY(QTest::qWaitForWindowActive(m_row.get()));
}

QStringList TestAxis::commands()
{
    // A last command tells that all before it have come.
    m_link->command(QStringLiteral("END"));
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
        return result.endsWith(QStringLiteral("END"));
    });
    if (came)
        result.removeLast();
    return result;
}

// The journal lines since the last call; those not shown in the list carry a minus sign.
QStringList TestAxis::lines()
{
    QStringList result;
    for (const QList<QVariant>& line : *m_lines)
        result += (line[1].toBool() ? QString() : QStringLiteral("-")) + line[0].toString();
    m_lines->clear();
    return result;
}

void TestAxis::jog_data()
{
    QTest::addColumn<float>("speed");
    QTest::addColumn<QString>("sent");
    QTest::newRow("whole") << 250.F << "250";
    QTest::newRow("cut off, not rounded") << 12.9F << "12";
    QTest::newRow("zero") << 0.F << "0";
}

void TestAxis::jog()
{
    QFETCH(float, speed);
    QFETCH(QString, sent);
    build(QStringLiteral("LX2"));
    m_speed->setValue(speed, 0);

    QTest::mousePress(m_plus, Qt::LeftButton);
    QCOMPARE(commands(), QStringList{QStringLiteral("MOVE(LX2,%1)").arg(sent)});
    QTest::mouseRelease(m_plus, Qt::LeftButton);
    QCOMPARE(commands(), QStringList{QStringLiteral("MOVE(LX2,0)")});
    QTest::mouseClick(m_minus, Qt::LeftButton);
    QCOMPARE(commands(),
             (QStringList{QStringLiteral("MOVE(LX2,-%1)").arg(sent), QStringLiteral("MOVE(LX2,0)")}));
    const QString end = QStringLiteral("[I]Завершено ручное перемещение по оси LX2");
    QCOMPARE(
        lines(),
        (QStringList{
            QStringLiteral("[C]Выполнение ручного перемещение по оси LX2 в положительном направлении..."),
            end,
            QStringLiteral("[C]Выполнение ручного перемещение по оси LX2 в отрицательном направлении..."),
            end}));
}

void TestAxis::jogOnClosedLink()
{
    build(QStringLiteral("A"));
    QVERIFY(m_link->disconnect());
    QTest::mouseClick(m_plus, Qt::LeftButton);
    QCOMPARE(lines().size(), 2); // the journal keeps what the operator did
}

void TestAxis::endlessJog()
{
    build(QStringLiteral("V"), 2160, true);
    m_speed->setValue(100, 0);
    QTest::mouseClick(m_plus, Qt::LeftButton);
    QCOMPARE(commands(), QStringList{QStringLiteral("MOVE(V,100)")});
    QCOMPARE(lines().size(), 1);

    m_axis->onEndlessClicked(false);
    QTest::mouseClick(m_minus, Qt::LeftButton);
    QCOMPARE(commands(), (QStringList{QStringLiteral("MOVE(V,-100)"), QStringLiteral("MOVE(V,0)")}));
}

void TestAxis::limitSwitches()
{
    build(QStringLiteral("LY"));
    m_speed->setValue(5, 0);
    QSignalSpy plusTold(m_axis.get(), &Axis::epPlusChanged);

    // A switch that trips under the finger leaves the stop to the controller: the console sends one only
    // when the finger lifts.
    QTest::mousePress(m_plus, Qt::LeftButton);
    m_axis->onEpPlusChanged(true);
    QVERIFY(!m_plus->isEnabled() && m_minus->isEnabled() && m_axis->epPlus());
    QCOMPARE(commands(), QStringList{QStringLiteral("MOVE(LY,5)")});
    QTest::mouseRelease(m_row->windowHandle(), Qt::LeftButton, {}, m_plus->geometry().center());
    QCOMPARE(commands(), QStringList{QStringLiteral("MOVE(LY,0)")});

    // That way is closed, the other is free.
    QTest::mouseClick(m_plus, Qt::LeftButton);
    QCOMPARE(commands(), QStringList());
    QTest::mouseClick(m_minus, Qt::LeftButton);
    QCOMPARE(commands().size(), 2);

    m_axis->onEpMinusChanged(true);
    m_axis->onEpPlusChanged(false);
    QVERIFY(m_plus->isEnabled() && !m_minus->isEnabled() && m_axis->epMinus() && !m_axis->epPlus());
    QCOMPARE(plusTold.size(), 2);
}

void TestAxis::checkableButtons()
{
    build(QStringLiteral("B"));
    m_speed->setValue(7, 0);
    m_plus->setCheckable(true);
    m_minus->setCheckable(true);
    connect(m_plus, &QPushButton::toggled, m_axis.get(), &Axis::onPlusToggled);
    connect(m_minus, &QPushButton::toggled, m_axis.get(), &Axis::onMinusToggled);

    m_plus->toggle();
    QVERIFY(!m_minus->isEnabled());
    m_plus->toggle();
    QVERIFY(m_minus->isEnabled());
    m_minus->toggle();
    QVERIFY(!m_plus->isEnabled());
    m_minus->toggle();
    QCOMPARE(commands(), (QStringList{QStringLiteral("MOVE(B,7)"), QStringLiteral("MOVE(B,0)"),
                                      QStringLiteral("MOVE(B,-7)"), QStringLiteral("MOVE(B,0)")}));
    QCOMPARE(lines(), QStringList());
}

void TestAxis::speedIsKept()
{
    build(QStringLiteral("U1"));
    QCOMPARE(m_axis->speed(), 0);
    m_speed->setValue(33.7F, 1);
    build(QStringLiteral("U2")); // U1 ends
    QCOMPARE(m_axis->speed(), 0);
    QCOMPARE(settings().value(QStringLiteral("U1/Speed")).toString(), QStringLiteral("33"));
    build(QStringLiteral("U1"));
    QCOMPARE(m_axis->speed(), 33);
    QCOMPARE(m_speed->text(), QStringLiteral("33"));
    m_axis.reset();

    settings().setValue(QStringLiteral("U1/Speed"), QStringLiteral("noise"));
    build(QStringLiteral("U1"));
    QCOMPARE(m_axis->speed(), 0);
}

void TestAxis::lampAndClass()
{
    const struct
    {
        int code;
        const char* lamp;
        const char* mark;
    } rows[] = {
        {0xA0100, "gray", "[I]"},   {0xA0101, "green", "[I]"},  {0xA0102, "green", "[I]"},
        {0xA0103, "green", "[I]"},  {0xA0104, "gray", "[I]"},   {0xA0012, "yellow", "[I]"},
        {0xA0013, "gray", "[I]"},   {0xC1600, "gray", "[I]"},   {0xDFFFF, "gray", "[I]"},
        {0xE0000, "yellow", "[W]"}, {0xEFFFF, "yellow", "[W]"}, {0xF0000, "red", "[A]"},
        {0xF2999, "red", "[A]"},    {0x7FFFFFFF, "red", "[A]"}, {-1, "gray", "[I]"},
        {0, "gray", "[I]"},
    };
    build(QStringLiteral("LX"));
    const auto shows = [this](const char* lamp) {
        return m_lamp->pixmap(Qt::ReturnByValue).toImage() ==
               QPixmap(QStringLiteral(":/images/indicator_%1.png").arg(lamp)).toImage();
    };
    QVERIFY(shows("gray") && !shows("red"));
    for (const auto& [code, lamp, mark] : rows) {
        m_axis->onStateChanged(code == 0xA0101 ? 0xF2026 : 0xA0101);
        lines();
        m_axis->onStateChanged(code);
        const QStringList told = lines();
        QVERIFY2(shows(lamp) && told.size() == 1 && told[0].startsWith(mark + QStringLiteral("Ось LX: ")),
                 qPrintable(QString::number(unsigned(code), 16)));
        QCOMPARE(m_axis->state(), code);
    }
}

void TestAxis::parking()
{
    build(QStringLiteral("D"));
    QStringList order;
    connect(m_axis.get(), &Axis::parked, this, [&](bool on) { order += on ? "parked" : "released"; });
    connect(m_axis.get(), &Axis::stateChanged, this, [&] { order += "state"; });
    connect(m_axis.get(), &Axis::axisMessage, this, [&](const QString& line) { order += line; });
    m_axis->onStateChanged(0xC1600);
    m_axis->onStateChanged(0xC1600);
    m_axis->onStateChanged(0xF2026);
    QCOMPARE(order,
             (QStringList{"parked", "state", "[I]Ось D: Парковка оси", "state", "[I]Ось D: Парковка оси",
                          "released", "state", "[A]Ось D: Низкое напряжение в секции питания привода"}));

    m_axis->onPark(true);
    m_axis->onPark(false);
    m_axis->onClearError();
    QCOMPARE(commands(), (QStringList{"PARK(D)", "DEPARK(D)", "CLEAR_ERROR(D)"}));
}

void TestAxis::speedFromSelector()
{
    build(QStringLiteral("A"), 360);
    QSignalSpy told(m_axis.get(), &Axis::speedChanged);
    QStringList offered;
    const auto choose = [&](int entry) {
        QTimer::singleShot(0, this, [&, entry] {
            auto* popup = qobject_cast<Selector*>(QApplication::activePopupWidget());
            QVERIFY(popup);
            offered.clear();
            QPoint place(-5, -5);
            for (int i = 1; i <= 6; ++i) {
                auto* label = popup->findChild<QLabel*>(QStringLiteral("lblSpeed%1").arg(i));
                offered += label->text();
                if (i == entry)
                    place = label->mapTo(popup, label->rect().center());
            }
            QTest::mousePress(popup, Qt::LeftButton, {}, place);
        });
        QTest::mouseClick(m_speed, Qt::LeftButton);
    };
    choose(4);
    QCOMPARE(offered.join(' '), QStringLiteral("9 18 36 90 180 360"));
    QCOMPARE(m_speed->text(), QStringLiteral("90"));
    QCOMPARE(m_axis->speed(), 90);
    QCOMPARE(told.size(), 1);
    QCOMPARE(told[0][0].toInt(), 90);
    QCOMPARE(lines(), QStringList{QStringLiteral("[I]Установлена скорость 90 мм/мин для оси A")});

    choose(0); // a press outside
    QCOMPARE(m_axis->speed(), 90);
    QCOMPARE(told.size(), 1);
    QVERIFY(!QApplication::activePopupWidget());
}

void TestAxis::fixedMoveDialog()
{
    build(QStringLiteral("LX"));
    m_speed->setValue(120.9F, 0);
    bool enabledAtFirst = true;
    bool enabledByDrives = false;
    QTimer::singleShot(0, this, [&] {
        auto* dialog = m_coord->window()->findChild<FixedMove*>();
        QVERIFY(dialog);
        auto* start = dialog->findChild<QPushButton*>(QStringLiteral("pbStart"));
        enabledAtFirst = start->isEnabled(); // channel 1 has told nothing yet
        emit m_link->changedChannelState1(1);
        emit m_link->changedDrivesOn(false);
        enabledByDrives = !start->isEnabled();
        emit m_link->changedDrivesOn(true);
        enabledByDrives &= start->isEnabled();
        QTest::mouseClick(start, Qt::LeftButton);
    });
    QTest::mouseClick(m_coord, Qt::LeftButton);
    QVERIFY(!enabledAtFirst);
    QVERIFY(enabledByDrives);
    QCOMPARE(commands(), QStringList{QStringLiteral("EXEC_1(/programs/_fixed.npg)")});
    QCOMPARE(m_site->read(QStringLiteral("/programs/_fixed.npg")),
             QByteArray("N01 $1\nN03 G90 G01 LX=0 F120\nN05 M30\n"));
    QCOMPARE(lines(),
             (QStringList{QStringLiteral("-[I]Открыто окно фиксированного перемещения по оси LX"),
                          QStringLiteral("[C]Запущено фиксированное перемещение по оси LX в координату 0"),
                          QStringLiteral("-[I]Закрыто окно фиксированного перемещения по оси LX")}));
}

QTEST_MAIN(TestAxis)
#include "test_axis.moc"
