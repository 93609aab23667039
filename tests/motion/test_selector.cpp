#include "drivecomm.h"
#include "fixedmove.h"
#include "selector.h"
#include "widgets.h"

#include "deathtest.h"
#include "plant/controller.h"
#include "sitefixture.h"

#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

#include <cmath>

// The two dialogs that hang on an axis's row: fixed move and speed selector.
class TestSelector : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void fixedMoveProgram_data();
    void fixedMoveProgram();
    void fixedMoveRemembers();
    void fixedMoveButton();
    void fixedMoveWithoutFolder();
    void typedCoordinate();

    void presetSpeeds();
    void highlightFollowsThePointer();
    void freeSpeed_data();
    void freeSpeed();
    void range();
    void staysOnThePanel();
    void sixValuesOrNone();

private:
    template <class T>
    static T* child(QWidget* dialog, const char* name)
    {
        return dialog->findChild<T*>(QString::fromLatin1(name));
    }
    std::unique_ptr<FixedMove> fixedMove(const QString& name, int speed, int channel)
    {
        return std::make_unique<FixedMove>(name, QStringLiteral("град"), &m_link, speed, channel,
                                           m_parent.get());
    }
    static const QList<float> speeds;

    std::unique_ptr<SiteFixture> m_site;
    std::unique_ptr<QWidget> m_parent;
    DriveTCPthread m_link; // closed
};

const QList<float> TestSelector::speeds{22.5F, 45, 90, 225, 450, 900};

void TestSelector::init()
{
    m_site = std::make_unique<SiteFixture>();
    m_parent = std::make_unique<QWidget>();
    m_parent->setGeometry(300, 200, 200, 60);
    m_parent->show();
    QVERIFY(QTest::qWaitForWindowActive(m_parent.get()));
}

void TestSelector::cleanup()
{
    m_parent.reset();
    m_site.reset();
}

void TestSelector::fixedMoveProgram_data()
{
    QTest::addColumn<QString>("axis");
    QTest::addColumn<int>("channel");
    QTest::addColumn<bool>("absolute");
    QTest::addColumn<double>("value");
    QTest::addColumn<QByteArray>("program");
    QTest::addColumn<QString>("line");
    const QString to = QStringLiteral("[C]Запущено фиксированное перемещение по оси %1 в координату %2");
    const QString by = QStringLiteral("[C]Запущено фиксированное перемещение по оси %1 на %2 град");

    const struct
    {
        const char* axis;
        int channel;
        const char* word;
    } axes[] = {{"LX", 1, "LX"}, {"LX2", 1, "LX2"}, {"LY", 1, "LY"},  {"A", 1, "A"},   {"B", 1, "B"},
                {"C", 1, "C"},   {"D", 1, "D"},     {"U1", 2, "U1"},  {"U2", 2, "U1"}, {"V", 2, "V"},
                {"X", 1, "X"},   {"Z", 1, "Y"},     {"PHI", 1, "PHI"}};
    for (const auto& axis : axes) {
        const QByteArray head = "N01 $" + QByteArray::number(axis.channel) +
                                (axis.axis == QByteArray("V") ? "\nN02 ARF()\nN03 " : "\nN03 ");
        const QByteArray word = QByteArray(" G01 ") + axis.word;
        QTest::addRow("%s to", axis.axis)
            << axis.axis << axis.channel << true << 12.5 << head + "G90" + word + "=12.5 F3000\nN05 M30\n"
            << to.arg(axis.axis, QStringLiteral("12.5"));
        QTest::addRow("%s by", axis.axis)
            << axis.axis << axis.channel << false << -7.0 << head + "G91" + word + "=-7 F3000\nN05 M30\n"
            << by.arg(axis.axis, QStringLiteral("-7"));
    }
    // Six significant digits of a single-precision number.
    QTest::newRow("six digits") << "LX" << 1 << true << 1234.5678
                                << QByteArray("N01 $1\nN03 G90 G01 LX=1234.57 F3000\nN05 M30\n")
                                << to.arg(QStringLiteral("LX"), QStringLiteral("1234.57"));
    QTest::newRow("a tenth") << "LX" << 1 << true << 0.1
                             << QByteArray("N01 $1\nN03 G90 G01 LX=0.1 F3000\nN05 M30\n")
                             << to.arg(QStringLiteral("LX"), QStringLiteral("0.1"));
}

void TestSelector::fixedMoveProgram()
{
    QFETCH(QString, axis);
    QFETCH(int, channel);
    QFETCH(bool, absolute);
    QFETCH(double, value);
    auto dialog = fixedMove(axis, 3000, channel);
    QSignalSpy told(dialog.get(), &FixedMove::message);
    QSignalSpy closed(dialog.get(), &QDialog::rejected);
    child<QRadioButton>(dialog.get(), absolute ? "rbAbsolute" : "rbRelative")->click();
    child<PoLabel>(dialog.get(), "lblCoord")->setValue(float(value), 2);
    QTest::mouseClick(child<QPushButton>(dialog.get(), "pbStart"), Qt::LeftButton);

    QTEST(m_site->read(QStringLiteral("/programs/_fixed.npg")), "program");
    QCOMPARE(told.size(), 1);
    QTEST(told[0][0].toString(), "line");
    QCOMPARE(told[0][1].toBool(), true);
    QCOMPARE(closed.size(), 1);

    // And the controller goes there.
    using namespace plant;
    MotionController controller(m_site->root());
    const auto pass = [&](double seconds) {
        for (double time = 0; time < seconds; time += 0.01)
            controller.step(0.01);
    };
    QCOMPARE(controller.command(QStringLiteral("DRIVE ON")), QString());
    pass(2);
    const bool isVirtual = axis == "X" || axis == "Z" || axis == "PHI";
    if (isVirtual)
        QCOMPARE(controller.command(QStringLiteral("TRANS ON")), QString());
    pass(0.1);
    const AxisId moved = *axisByName(axis == "U2" ? QStringLiteral("U1") : axis);
    const double start = controller.axes().position(moved);
    for (int time = 0; time < 2; ++time) { // a second absolute move stays where it is
        QCOMPARE(controller.command(QStringLiteral("EXEC_%1(/programs/_fixed.npg)").arg(channel)), QString());
        pass(30);
        QCOMPARE(controller.channelState(channel), ChannelState::Idle);
    }
    const double target = absolute ? value : start + 2 * value;
    const double place = axis == "V" && target < 0 ? target + 360 : target;
    QVERIFY2(std::abs(controller.axes().position(moved) - place) < 0.01,
             qPrintable(QString::number(controller.axes().position(moved))));
}

void TestSelector::fixedMoveRemembers()
{
    auto dialog = fixedMove(QStringLiteral("A"), 10, 1);
    QVERIFY(child<QRadioButton>(dialog.get(), "rbAbsolute")->isChecked());
    QCOMPARE(child<PoLabel>(dialog.get(), "lblCoord")->text(), QStringLiteral("0.00"));
    child<QRadioButton>(dialog.get(), "rbRelative")->click();
    child<PoLabel>(dialog.get(), "lblCoord")->setValue(2.25F, 2);
    QSignalSpy told(dialog.get(), &FixedMove::message);
    dialog.reset();
    QCOMPARE(told.size(), 1);
    QCOMPARE(told[0][0].toString(), QStringLiteral("[I]Закрыто окно фиксированного перемещения по оси A"));
    QCOMPARE(told[0][1].toBool(), false);

    dialog = fixedMove(QStringLiteral("A"), 10, 1);
    QVERIFY(child<QRadioButton>(dialog.get(), "rbRelative")->isChecked());
    QCOMPARE(child<PoLabel>(dialog.get(), "lblCoord")->value(), 2.25F);
    dialog = fixedMove(QStringLiteral("B"), 10, 1); // each axis for itself
    QVERIFY(child<QRadioButton>(dialog.get(), "rbAbsolute")->isChecked());
    dialog.reset();

    // Settings that somebody spoiled: no program may ever move to what is no number.
    for (const char* noise : {"nan", "inf", "1e300", "many"}) {
        QSettings(site().path(QStringLiteral("/home/oper/bin/settings.ini")), QSettings::IniFormat)
            .setValue(QStringLiteral("B/FM_Coord"), QString::fromLatin1(noise));
        dialog = fixedMove(QStringLiteral("B"), 10, 1);
        QCOMPARE(child<PoLabel>(dialog.get(), "lblCoord")->text(), QStringLiteral("0.00"));
        dialog.reset();
    }
}

void TestSelector::fixedMoveButton()
{
    auto dialog = fixedMove(QStringLiteral("A"), 10, 1);
    auto* start = child<QPushButton>(dialog.get(), "pbStart");
    // The last word wins, whoever speaks.
    for (unsigned int state : {0U, 2U, 6U}) {
        dialog->onDriveState(true);
        dialog->onChannelState(state);
        QVERIFY(!start->isEnabled());
    }
    dialog->onDriveState(true);
    QVERIFY(start->isEnabled());
    dialog->onDriveState(false);
    QVERIFY(!start->isEnabled());
    dialog->onChannelState(1);
    QVERIFY(start->isEnabled());
}

void TestSelector::fixedMoveWithoutFolder()
{
    QVERIFY(QDir(site().path(QStringLiteral("/programs"))).removeRecursively());
    auto dialog = fixedMove(QStringLiteral("A"), 10, 1);
    QSignalSpy told(dialog.get(), &FixedMove::message);
    // No program, so no command: the closed link would have told of one.
    static QStringList debug;
    debug.clear();
    const QtMessageHandler former = qInstallMessageHandler(
        [](QtMsgType, const QMessageLogContext&, const QString& text) { debug += text; });
    child<QPushButton>(dialog.get(), "pbStart")->click();
    qInstallMessageHandler(former);
    QVERIFY(debug.filter(QStringLiteral("DriveTCPthread")).isEmpty());
    QCOMPARE(debug.filter(QStringLiteral("_fixed.npg")).size(), 1);
    QCOMPARE(told.size(), 2); // the press, and what came of it
    QCOMPARE(told[1][0].toString(),
             QStringLiteral("[A]Файл /programs/_fixed.npg не записан, программа не запущена"));
    QVERIFY(dialog->isHidden());
}

void TestSelector::typedCoordinate()
{
    auto dialog = fixedMove(QStringLiteral("A"), 10, 1);
    const auto type = [&](const QString& keys, Qt::Key last) {
        QTimer::singleShot(0, this, [=] {
            QWidget* pad = QApplication::activeModalWidget();
            QVERIFY(pad);
            pad = pad->findChild<QDialog*>();
            QTest::keyClicks(pad, keys);
            QTest::keyClick(pad, last);
        });
        QTest::mouseClick(child<PoLabel>(dialog.get(), "lblCoord"), Qt::LeftButton);
    };
    type(QStringLiteral("12.345-"), Qt::Key_Enter);
    QCOMPARE(child<PoLabel>(dialog.get(), "lblCoord")->text(), QStringLiteral("-12.35"));
    type(QStringLiteral("99"), Qt::Key_Escape);
    QCOMPARE(child<PoLabel>(dialog.get(), "lblCoord")->value(), -12.345F);
}

void TestSelector::presetSpeeds()
{
    const char* const names[] = {"lblSpeed1", "lblSpeed2", "lblSpeed3",
                                 "lblSpeed4", "lblSpeed5", "lblSpeed6"};
    const float expected[] = {23, 45, 90, 225, 450, 900}; // what is shown is what is taken
    for (int i = 0; i < 6; ++i) {
        Selector selector(QStringLiteral("C"), QStringLiteral("град"), speeds, QStringLiteral("Своя"), 0,
                          m_parent.get());
        QSignalSpy told(&selector, &Selector::message);
        QCOMPARE(QApplication::activePopupWidget(), &selector);
        QCOMPARE(selector.pos(), QPoint(300, 200 + 60 + 1));
        auto* label = child<QLabel>(&selector, names[i]);
        QTimer::singleShot(0, &selector, [&] {
            QTest::mousePress(&selector, Qt::LeftButton, {}, label->mapTo(&selector, label->rect().center()));
        });
        QCOMPARE(selector.exec(), int(QDialog::Accepted));
        QCOMPARE(selector.value(), expected[i]);
        QCOMPARE(told.size(), 1);
        QCOMPARE(told[0][0].toString(),
                 QStringLiteral("[I]Установлена скорость %1 град/мин для оси C").arg(double(expected[i])));
        QCOMPARE(told[0][1].toBool(), true);
        QVERIFY(!QApplication::activePopupWidget());
    }
}

void TestSelector::highlightFollowsThePointer()
{
    Selector selector(QStringLiteral("C"), QStringLiteral("град"), speeds, QStringLiteral("Своя"), 0,
                      m_parent.get());
    const QColor accent(65, 121, 205);
    const auto lit = [&] {
        QStringList names;
        for (QLabel* label : selector.findChildren<QLabel*>()) {
            if (label->palette().color(QPalette::Window) == accent)
                names += label->objectName();
        }
        return names.join(' ');
    };
    for (const char* name : {"lblSpeed2", "lblSpeed3", "lblFree"}) {
        auto* label = child<QLabel>(&selector, name);
        QTest::mouseMove(selector.windowHandle(), label->mapTo(&selector, label->rect().center()));
        QTRY_COMPARE(lit(), QString::fromLatin1(name));
    }
    QTest::mouseMove(selector.windowHandle(), QPoint(1, 1)); // the background
    QTRY_COMPARE(lit(), QString());

    // Leaving with a press beside the entries.
    QSignalSpy left(&selector, &QDialog::rejected);
    QTest::mousePress(&selector, Qt::LeftButton, {}, QPoint(-50, 20));
    QCOMPARE(left.size(), 1);
    QVERIFY(selector.isHidden());
}

void TestSelector::freeSpeed_data()
{
    QTest::addColumn<QString>("keys");
    QTest::addColumn<bool>("enter");
    QTest::addColumn<float>("speed");
    QTest::newRow("within") << "12.5" << true << 12.5F;
    QTest::newRow("nothing") << "0" << true << 0.1F;
    QTest::newRow("too fast") << "901" << true << 900.F;
    QTest::newRow("left") << "5" << false << 0.F;
}

void TestSelector::freeSpeed()
{
    QFETCH(QString, keys);
    QFETCH(bool, enter);
    Selector selector(QStringLiteral("C"), QStringLiteral("град"), speeds, QStringLiteral("Своя"), 0,
                      m_parent.get());
    QSignalSpy told(&selector, &Selector::message);
    auto* label = child<QLabel>(&selector, "lblFree");
    QCOMPARE(label->text(), QStringLiteral("Своя"));
    bool sign = true;
    QTimer::singleShot(0, &selector, [&] {
        QTimer::singleShot(0, &selector, [&] {
            auto* pad = m_parent->findChild<QWidget*>(QStringLiteral("Numpad"));
            QVERIFY(pad);
            sign = child<QPushButton>(pad, "pbSign")->isEnabled();
            QTest::keyClicks(pad, keys);
            QTest::keyClick(pad, enter ? Qt::Key_Enter : Qt::Key_Escape);
        });
        QTest::mousePress(&selector, Qt::LeftButton, {}, label->mapTo(&selector, label->rect().center()));
    });
    QCOMPARE(selector.exec(), int(enter ? QDialog::Accepted : QDialog::Rejected));
    QVERIFY2(!sign, "no speed is negative");
    QTEST(selector.value(), "speed");
    QCOMPARE(told.size(), enter ? 1 : 0);
}

void TestSelector::range()
{
    Selector selector(QStringLiteral("C"), QStringLiteral("град"), speeds, QString(), 0, m_parent.get());
    for (const auto& [value, kept] : {std::pair{-3.F, 1.F}, {4.F, 4.F}, {20.F, 10.F}}) {
        selector.range(1, 10, value);
        QCOMPARE(selector.value(), kept);
    }
}

void TestSelector::staysOnThePanel()
{
    m_parent->setGeometry(1800, 1100, 100, 60);
    Selector selector(QStringLiteral("C"), QStringLiteral("град"), speeds, QString(), 0, m_parent.get());
    QVERIFY(QRect(0, 0, panelWidth, panelHeight).contains(selector.geometry()));
}

void TestSelector::sixValuesOrNone()
{
    QList<float> five = speeds;
    five.removeLast();
    const QByteArray told = deathOf(
        [&] { Selector(QStringLiteral("C"), QStringLiteral("град"), five, QString(), 0, m_parent.get()); });
    QVERIFY2(told.contains("ASSERT: \"nl.size() == 6\""), told.constData());
}

QTEST_MAIN(TestSelector)
#include "test_selector.moc"
