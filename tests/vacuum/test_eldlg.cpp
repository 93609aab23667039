#include "eldlg.h"

#include "deathtest.h"
#include "lockview.h"
#include "statebutton.h"
#include "vacuumcontroller.h"
#include "widgets.h"

#include <QTableWidget>

namespace {

struct Row
{
    const char* name;
    const char* field; // of the datagram
};

// The devices as the installation's documents list them. The keys are those of the reasons for refusing to
// switch on and to switch off.
const struct
{
    const char* widget;
    const char* id;
    const char* name;
    char kind; // pump, valve, door
    const char* cmdOn;
    const char* cmdOff;
    const char* keysOn;
    const char* keysOff;
    QVector<Row> rows;
} devices[] = {
    // clang-format off
    {"NL1", "NL1", "Насос пластинчато-роторный\n2НВР-250Д", 'p', "NL1 ON", "NL1 OFF", "NL1:lockVP7 NL1:lockDisch", "NL1:lockVP2 NL1:lockNZ1",
     {{"Питание", "NL1Power"}, {"Перегрев", "NL1Thermal"}, {"Проток, л/мин", "Disch7"}, {"Температура ОЖ, °C", "Temp7"}}},
    {"NL2", "NL2", "Насос пластинчато-роторный\nSV-750B", 'p', "NL2 ON", "NL2 OFF", "NL2:lockVP6", "NL2:lockVP3 NL2:lockVP5 NL2:lockNZ2",
     {{"Питание", "NL2Power"}, {"Перегрев", "NL2Thermal"}}},
    {"NZ1", "NZ1", "Насос Рутса двухроторный\nНВД-600", 'p', "NZ1 ON", "NZ1 OFF", "NZ1:lockPress", "NZ1:lockVP2",
     {{"Питание", "NZ1Power"}, {"Перегрев", "NZ1Thermal"}}},
    {"NZ2", "NZ2", "Насос Рутса двухроторный\nWH-4400", 'p', "NZ2 ON", "NZ2 OFF", "NZ2:lockPress NZ2:lockDisch", "NZ2:lockVP3 NZ2:lockVP5",
     {{"Питание", "NZ2Power"}, {"Перегрев", "NZ2Thermal"}, {"Проток, л/мин", "Disch6"}, {"Температура ОЖ, °C", "Temp6"}}},
    {"NW2", "NW2", "Насос циркуляционный\nGrundfos CM3-2", 'p', "NW2 ON", "NW2 OFF", "", "",
     {{"Питание", "NW2Power"}, {"Проток, л/мин", "Disch1"}, {"Темп-ра ОЖ, °C", "Temp1"}}},
    {"ND1", "ND1", "Насос диффузионный\nНД-1000", 'p', "ND1 ON", "ND1 OFF", "ND1:lockPress ND1:lockVP2 ND1:lockNL1 ND1:lockDisch", "ND1:lockVP1",
     {{"Питание", "ND1Power"}, {"Перегрев", "ND1Thermal"}, {"Проток 1, л/мин", "Disch2"}, {"Температура ОЖ 1, °C", "Temp2"},
      {"Проток 2, л/мин", "Disch3"}, {"Температура ОЖ 2, °C", "Temp3"}, {"Проток 3, л/мин", "Disch4"},
      {"Температура ОЖ 3, °C", "Temp4"}, {"Проток 4, л/мин", "Disch5"}, {"Температура ОЖ 4, °C", "Temp5"}}},
    {"VP1", "VP1", "Затвор вакуумный\nЗВП-1000", 'v', "VP1 ON", "VP1 OFF", "VP1:lockPress VP1:lockND1", "", {}},
    {"VP2", "VP2", "Клапан угловой\nGDQ-J100B", 'v', "VP2 ON", "VP2 OFF", "VP2:lockPress", "VP2:lockND1", {}},
    {"VP3", "VP3", "Клапан плоский\nЗВПлП-250", 'v', "VP3 ON", "VP3 OFF", "VP3:lockPress", "", {}},
    {"VP4", "VP4", "Клапан вакуумный\nGDQ-J63B", 'v', "VP4 ON", "VP4 OFF", "VP4:lockDrives VP4:lockValve", "", {}},
    {"VP5", "VP5", "Клапан вакуумный\nGDQ-J63B", 'v', "VP5 ON", "VP5 OFF", "VP5:lockPress", "", {}},
    {"VP6", "VP6", "Клапан вакуумный\nGDQ-J25B", 'v', "VP6 ON", "VP6 OFF", "VP6:lockNL2", "", {}},
    {"VP7", "VP7", "Клапан вакуумный\nGDQ-J25B", 'v', "VP7 ON", "VP7 OFF", "VP7:lockNL1", "", {}},
    {"VP8", "VP8", "Клапан вакуумный\nGDQ-J25B", 'v', "VP8 ON", "VP8 OFF", "VP8:lockDrives VP8:lockValve", "", {}},
    {"Door", "Дверь", "Клапаны пневмо-электрические Camozzi", 'd', "DOOR UNPRESS", "DOOR PRESS", "DOOR:lockPress", "DOOR:lockState", {}},
    {"TMN", "ТМН", "Насос турбомолекулярный", 'p', "BKU(3,1)", "BKU(3,0)", "TMN:lockVPT TMN:lockPress", "", {}},
    {"VPT", "VPT", "Клапан напуска ТМН", 'v', "BKU(1,1)", "BKU(1,0)", "", "VPT:lockTMN", {}},
    {"VE1", "VE1", "Шибер", 'v', "BKU(2,1)", "BKU(2,0)", "VE1:lockShuk", "VE1:lockAcc", {}},
    // clang-format on
};

QStringList words(const char* text)
{
    return QString::fromUtf8(text).split(' ', Qt::SkipEmptyParts);
}

} // namespace

class TestElDlg : public PanelFixture
{
    Q_OBJECT

private slots:
    void initTestCase() { begin(); }
    void cleanupTestCase() { end(); }

    void device_data();
    void device();
    void placeAndMovement();
    void hidingByKeys();
    void dialogsOfTheBeamUnit();
    void badTablesEndTheProcess();

private:
    // The field of the device under test goes to the controller that owns it.
    void tell(const QString& field, double value)
    {
        const auto owns = [&](const auto& f) { return f.name == field; };
        const auto& fields = vacuumwire::kvk().fields;
        if (std::any_of(fields.cbegin(), fields.cend(), owns))
            tellKvk({{field, value}});
        else
            tellKvs({{field, value}});
    }
    DeviceDlg* dialog() const { return w(m_widget)->findChild<DeviceDlg*>(); }
    template <class Widget>
    Widget* part(const char* name) const
    {
        return dialog()->findChild<Widget*>(QLatin1String(name));
    }
    void showsState(const QString& state, const QString& style, const QString& button)
    {
        QCOMPARE(part<QLabel>("lblState")->text(), state);
        QCOMPARE(part<QLabel>("lblState")->styleSheet(), style);
        QCOMPARE(part<QLabel>("lblTitle")->text(), button);
    }
    // What goes out when the dialog is opened and its button pressed; nothing else may have gone out before.
    QStringList press(bool refused = false)
    {
        VacuumController& owner = m_onKvk ? *m_kvk : *m_kvs;
        touch(m_widget);
        [&] { QVERIFY(dialog()->isVisible()); }();
        QTest::mousePress(part<QPushButton>("sbSwitch"), Qt::LeftButton);
        if (!refused)
            [&] { QVERIFY(!dialog()->isVisible()); }();
        m_onKvk ? m_panel->kvk()->command(QStringLiteral("mark"))
                : m_panel->kvs()->command(QStringLiteral("mark"));
        QStringList sent;
        while (!sent.contains(QStringLiteral("mark")))
            sent += owner.takeCommands(1);
        sent.removeLast();
        return sent;
    }
    void isRefused(const QStringList& keys)
    {
        QCOMPARE(press(true), QStringList());
        QVERIFY(dialog()->isVisible());
        QStringList shown;
        for (const LockView* view : part<QPushButton>("sbSwitch")->findChildren<LockView*>())
            shown += view->findChildren<QLabel*>().last()->text();
        QStringList expected;
        for (const QString& key : keys)
            expected += m_panel->lock(key)->text(m_panel->lock(key)->state()) + QStringLiteral("  ");
        QCOMPARE(shown, expected);
        QTest::mouseRelease(part<QPushButton>("sbSwitch"), Qt::LeftButton);
        QVERIFY(part<QPushButton>("sbSwitch")->findChildren<LockView*>().isEmpty());
        touchPart("pbHide");
    }
    void touchPart(const char* name)
    {
        QTest::mouseClick(part<QPushButton>(name), Qt::LeftButton);
        QVERIFY(!dialog()->isVisible());
    }

    QString m_widget;
    bool m_onKvk = false;
};

void TestElDlg::device_data()
{
    QTest::addColumn<int>("number");
    for (int i = 0; i < int(std::size(devices)); ++i)
        QTest::newRow(devices[i].widget) << i;
}

void TestElDlg::device()
{
    QFETCH(int, number);
    const auto& d = devices[number];
    m_widget = QLatin1String(d.widget);
    m_onKvk = words("VP4 VP8 Door TMN VPT VE1").contains(m_widget);
    const bool ofBku = words("TMN VPT VE1").contains(m_widget);
    const QString field = ofBku ? QStringLiteral("State") + m_widget.left(m_widget == "VE1" ? 2 : 3)
                                : m_widget + QStringLiteral("State");
    const QStringList states = d.kind == 'p' ? words("[выключен] [включен] [выключается] [включается]")
                               : d.kind == 'v' ? words("[закрыт] [открыт] [закрывается] [открывается]")
                                               : words("[прижата] [отжата] [прижимается] [отжимается]");
    const QStringList texts = d.kind == 'p'   ? words("Включить Выключить")
                              : d.kind == 'v' ? words("Открыть Закрыть")
                                              : words("Отжать Прижать");
    const QString commands[] = {QLatin1String(d.cmdOn), QLatin1String(d.cmdOff)};

    QVERIFY(dialog() && !dialog()->isVisible());
    QVERIFY(dialog()->isWindow());
    QCOMPARE(part<QLabel>("lblId")->text(), QString::fromUtf8(d.id));
    QCOMPARE(part<QLabel>("lblName")->text(), QString::fromUtf8(d.name));

    // The states, each told while the dialog is hidden.
    const char* const gray = "background-color: rgb(160, 160, 160);";
    const char* const yellow = "background-color: rgb(255, 255, 0);";
    const char* const styles[] = {gray, "background-color: rgb(0, 255, 0);", yellow, yellow};
    for (int state : {3, 2, 1, 0}) {
        tell(field, state);
        showsState(states[state], QLatin1String(styles[state]), texts[state % 2]);
        QCOMPARE(press(), QStringList(commands[state % 2]));
    }
    // In an error the button goes by how it stood before.
    for (int before : {0, 1}) {
        // Of what has no picture on the panel any unknown number is an error.
        for (int error :
             m_widget == "Door" ? QVector<int>{4, -1, 5, INT_MAX, INT_MIN} : QVector<int>{4, -1}) {
            tell(field, before);
            tell(field, error);
            showsState(QStringLiteral("[ошибка]"), QStringLiteral("background-color: rgb(255, 0, 0);"),
                       QStringLiteral("Ошибка"));
            QCOMPARE(press(), QStringList(commands[before]));
        }
    }

    // Refusals: each direction by its own word, for as long as the word is not zero.
    const QStringList keys[] = {words(d.keysOn), words(d.keysOff)};
    for (int direction : {0, 1}) {
        const QString word =
            ofBku ? QStringLiteral("StateLocks")
                  : m_widget + (direction == 0 ? QStringLiteral("LockOn") : QStringLiteral("LockOff"));
        for (int state : {direction, direction + 2}) {
            tell(field, state);
            tell(word, -1.0 + (ofBku ? 4294967296.0 : 0));
            if (keys[direction].isEmpty())
                QCOMPARE(press(), QStringList(commands[direction]));
            else
                isRefused(keys[direction]);
            tell(word, ofBku ? 0 : 1 << 20); // a reason without a name refuses, too
            if (!ofBku && !keys[direction].isEmpty())
                isRefused(keys[direction]);
            tell(word, 0);
            QCOMPARE(press(), QStringList(commands[direction]));
        }
    }

    // The readings.
    auto* table = part<QTableWidget>("twElements");
    QCOMPARE(table->rowCount(), d.rows.size());
    QCOMPARE(table->isHidden(), d.rows.isEmpty());
    QCOMPARE(part<QFrame>("frmDelim")->isHidden(), d.rows.isEmpty());
    for (int row = 0; row < d.rows.size(); ++row) {
        const QString name = QLatin1String(d.rows[row].field);
        const bool sensor = vacuumwire::kvs().field(name).kind == vacuumwire::F;
        QCOMPARE(table->item(row, 0)->text(), QString::fromUtf8(d.rows[row].name));
        tell(name, sensor ? -12.36 - row : 3);
        QCOMPARE(table->item(row, 1)->text(),
                 sensor ? QString::number(-12.36 - row, 'f', 1) : QStringLiteral("Вкл."));
        tell(name, 0);
        QCOMPARE(table->item(row, 1)->text(), sensor ? QStringLiteral("0.0") : QStringLiteral("Выкл."));
    }
    if (!d.rows.isEmpty()) {
        touch(m_widget);
        QCOMPARE(table->viewport()->height(), 18 * d.rows.size());
        const int longest = table->fontMetrics().horizontalAdvance(QStringLiteral("Температура ОЖ 4, °C"));
        QVERIFY2(longest <= table->columnWidth(0) - 8, qPrintable(QString::number(longest)));
        for (const QFont& font : {table->font(), table->item(0, 1)->font()})
            QVERIFY(QFontInfo(font).pixelSize() >= 16); // legible from the machine
        touchPart("pbHide");
    }
}

void TestElDlg::placeAndMovement()
{
    m_widget = QStringLiteral("NL1");
    const auto openAt = [&](const QPoint& pointer) {
        QCursor::setPos(pointer);
        dialog()->showDlg();
        return dialog()->pos();
    };
    openAt({0, 0});
    const QPoint lowest(900 - dialog()->width(), 1000 - dialog()->height());
    QCOMPARE(openAt({300, 400}), QPoint(300, 400));
    QCOMPARE(openAt({899, 999}), lowest);
    QCOMPARE(openAt({10, 40}), QPoint(10, 100));

    // By the title, and only by the title.
    auto* title = part<QLabel>("lblId");
    const QPoint grip(30, 20);
    const QPoint from = openAt({300, 400});
    const auto drag = [&](QWidget* widget, const QPoint& by) {
        const QPoint start = widget->mapToGlobal(grip);
        QTest::mousePress(widget, Qt::LeftButton, {}, grip);
        QMouseEvent move(QEvent::MouseMove, dialog()->mapFromGlobal(start + by), start + by, Qt::NoButton,
                         Qt::LeftButton, {});
        QCoreApplication::sendEvent(QWidget::mouseGrabber() ? QWidget::mouseGrabber() : widget, &move);
        return dialog()->pos();
    };
    QCOMPARE(drag(title, {-40, 60}), from + QPoint(-40, 60));
    QCOMPARE(QWidget::mouseGrabber(), dialog());
    QTest::mouseRelease(dialog(), Qt::LeftButton);
    QVERIFY(!QWidget::mouseGrabber());
    QCOMPARE(drag(title, {2000, 2000}), lowest);
    QTest::mouseRelease(dialog(), Qt::LeftButton);
    QCOMPARE(drag(title, {-2000, -2000}), QPoint(0, 100));
    touchPart("pbHide"); // in the middle of a movement
    QVERIFY(!QWidget::mouseGrabber());

    openAt({300, 400});
    QCOMPARE(drag(part<QLabel>("lblName"), {50, 50}), QPoint(300, 400));
    QTest::mouseRelease(part<QLabel>("lblName"), Qt::LeftButton);
    touchPart("pbHide");
}

void TestElDlg::hidingByKeys()
{
    for (const char* device : {"NL1", "VP4", "Door"})
        touch(QLatin1String(device));
    takeLines();
    m_panel->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(m_panel.get()));
    QTest::keyClick(m_panel.get(), Qt::Key_H, Qt::ControlModifier);
    for (const DeviceDlg* d : m_panel->findChildren<DeviceDlg*>())
        QVERIFY(!d->isVisible());
    QCOMPARE(takeLines(),
             QStringList(QStringLiteral(
                 "- [I]Нажата комбинация клавиш для скрытия диалогов элементов вакуумной системы")));
}

void TestElDlg::dialogsOfTheBeamUnit()
{
    Lock lock(false, {}, {});
    for (const QString& id : {QStringLiteral("ТМН"), QStringLiteral("VPT"), QStringLiteral("VE1")}) {
        BkuDlg own(nullptr, id, QStringLiteral("модель"), -1, &lock, &lock, {}, {}, QStringLiteral("Вкл"),
                   QStringLiteral("Выкл"), {"a", "b", "c", "d"});
        QStringList heard;
        connect(&own, &BkuDlg::signalCommandTMN, [&](bool on) { heard += on ? "ТМН on" : "ТМН off"; });
        connect(&own, &BkuDlg::signalCommandVPT, [&](bool on) { heard += on ? "VPT on" : "VPT off"; });
        connect(&own, &BkuDlg::signalCommandVE, [&](bool on) { heard += on ? "VE1 on" : "VE1 off"; });
        QCursor::setPos(1919, 1199);
        own.showDlg();
        QCOMPARE(own.pos(), QPoint(1920 - own.width(), 980 - own.height()));

        auto* button = own.findChild<QPushButton*>(QStringLiteral("sbSwitch"));
        QTest::mouseClick(button, Qt::LeftButton); // nothing is known of the device yet
        QVERIFY(own.isVisible() && heard.isEmpty());
        for (int state : {0, 1, 2, 3, 4, 1, 77}) {
            own.onStateChanged(state);
            own.showDlg();
            QTest::mouseClick(button, Qt::LeftButton);
            QVERIFY(!own.isVisible());
        }
        QStringList expected;
        for (const char* way : {" on", " off", " on", " off", " off", " off", " off"})
            expected += id + QLatin1String(way);
        QCOMPARE(heard, expected);
    }
}

void TestElDlg::badTablesEndTheProcess()
{
    LenzeElement element(QStringLiteral("NL1:Power"), LenzeElement::Number, 0);
    const auto make = [&](const QStringList& states, const QList<LenzeElement*>& elements) {
        return new KvsDlg(m_panel->kvs(), nullptr, {}, {}, 0, nullptr, nullptr, {}, {}, {}, {}, {}, {},
                          states, {"one"}, elements);
    };
    const QStringList four{"a", "b", "c", "d"};
    QVERIFY(deathOf([&] { make({"a", "b", "c"}, {&element}); }).contains("\"strStates.size() == 4\""));
    QVERIFY(deathOf([&] { make(four, {}); }).contains("\"strElements.size() == listElements.size()\""));
    const std::unique_ptr<KvsDlg> good(make(four, {&element}));
    QVERIFY(deathOf([&] { good->numberChanged(nullptr, 1); }).contains("\"i != m_mapElementRows.end()\""));
}

QTEST_MAIN(TestElDlg)
#include "test_eldlg.moc"
