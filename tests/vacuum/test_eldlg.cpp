#include "eldlg.h"

#include "deathtest.h"
#include "lockview.h"
#include "statebutton.h"
#include "vacuumcontroller.h"

#include <QSignalSpy>
#include <QTableWidget>

namespace {

// The stem of a device's pictures, its name in the journal, the bits that refuse to switch it on and off,
// each with a reason, and the fields of the datagram behind the rows of its table.
// clang-format off
const struct { const char* widget; const char* stem; const char* line;
               const char* bitsOn; const char* bitsOff; const char* readings; } devices[] = {
    {"NL1", "NL", "Форвакуумный насос NL1", "0 1", "0 1", "NL1Power NL1Thermal Disch7 Temp7"},
    {"NL2", "NL", "Форвакуумный насос NL2", "0", "0 1 2", "NL2Power NL2Thermal"},
    {"NZ1", "NZ", "Двухроторный насос NZ1", "0", "0", "NZ1Power NZ1Thermal"},
    {"NZ2", "NZ", "Двухроторный насос NZ2", "0 1", "0 1", "NZ2Power NZ2Thermal Disch6 Temp6"},
    {"ND1", "ND", "Диффузионный насос ND1", "0 1 2 3", "0",
     "ND1Power ND1Thermal Disch2 Temp2 Disch3 Temp3 Disch4 Temp4 Disch5 Temp5"},
    {"NW2", "NW2", "Повысительный насос NW2", "", "", "NW2Power Disch1 Temp1"},
    {"VP1", "VT", "Затвор VP1", "0 1", "", ""},
    {"VP2", "vv", "Клапан VP2", "0", "0", ""},
    {"VP3", "vv", "Затвор VP3", "0", "", ""},
    {"VP4", "vv", "Клапан напуска VP4", "0 1", "", ""},
    {"VP5", "vv", "Клапан VP5", "0", "", ""},
    {"VP6", "vh", "Клапан напуска VP6", "0", "", ""},
    {"VP7", "vh", "Клапан напуска VP7", "0", "", ""},
    {"VP8", "vv", "Клапан напуска VP8", "0 1", "", ""},
    {"Door", "", "", "0", "0", ""}, // moves, and has lines of its own
    {"TMN", "TMN", "Турбомолекулярный насос ТМН", "3 4", "", ""}, // these three share a word
    {"VPT", "vh", "Клапан напуска ТМН", "", "0", ""},
    {"VE1", "VE", "Шибер ТМН", "1", "2", ""},
};
// clang-format on

QStringList words(const char* text)
{
    return QString::fromUtf8(text).split(' ', Qt::SkipEmptyParts);
}

} // namespace

class TestElDlg : public PanelFixture
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        begin();
        tellKvs({}); // the first datagram tells of all devices
        tellKvk({});
    }
    void cleanupTestCase() { end(); }

    void everyDevice()
    {
        m_kvs->keepTelling(); // while it is the other one's turn
        m_kvk->keepTelling();
        for (const auto& d : devices) {
            m_widget = d.widget;
            QVERIFY(dialog() && !dialog()->isVisible() && dialog()->isWindow());
            states(d.stem, d.line);
            refusals(words(d.bitsOn), words(d.bitsOff));
            readings(words(d.readings));
            QVERIFY2(!QTest::currentTestFailed(), d.widget);
        }
    }

    // What the dialogs say beside it, of the first device, the last one and some between; and all that told
    // the refusals of the devices above.
    void texts()
    {
        const std::tuple<const char*, const char*, const char*> names[] = {
            {"NL1", "NL1", "Насос пластинчато-роторный\n2НВР-250Д"},
            {"VP3", "VP3", "Клапан плоский\nЗВПлП-250"},
            {"Door", "Дверь", "Клапаны пневмо-электрические Camozzi"},
            {"VE1", "VE1", "Шибер"}};
        for (const auto& [widget, id, name] : names) {
            m_widget = widget;
            QCOMPARE(part<QLabel>("lblId")->text(), id);
            QCOMPARE(part<QLabel>("lblName")->text(), name);
        }
        QCOMPARE(m_reasons.size(), 38);
        QCOMPARE(m_reasons.first() + m_reasons.last(), "Клапан VP7 не закрыт  Ускоряющее не выключено  ");
        QCOMPARE(m_reasons.count("Недостаточный проток ОЖ  "), 3);
        QCOMPARE(m_reasons.count("Затвор VP1 и/или VP3 не закрыт  "), 2);
    }

    void placeAndMovement()
    {
        m_widget = "NL1";
        const auto openAt = [&](const QPoint& pointer) {
            QCursor::setPos(pointer);
            dialog()->showDlg();
            return dialog()->pos();
        };
        const QPoint from = openAt({300, 400});
        QCOMPARE(from, QPoint(300, 400));
        const QPoint lowest(900 - dialog()->width(), 1000 - dialog()->height());
        QCOMPARE(openAt({899, 999}), lowest);
        QCOMPARE(openAt({10, 40}), QPoint(10, 100));

        // By the title, and only by the title.
        auto* title = part<QLabel>("lblId");
        const QPoint grip(30, 20);
        openAt(from);
        const auto drag = [&](QWidget* widget, const QPoint& by) {
            const QPoint start = widget->mapToGlobal(grip);
            QTest::mousePress(widget, Qt::LeftButton, {}, grip);
            QMouseEvent move(QEvent::MouseMove, dialog()->mapFromGlobal(start + by), start + by, Qt::NoButton,
                             Qt::LeftButton, {});
            QCoreApplication::sendEvent(QWidget::mouseGrabber() ? QWidget::mouseGrabber() : widget, &move);
            return dialog()->pos();
        };
        QCOMPARE(drag(title, {-40, 60}), from + QPoint(-40, 60));
        QTest::mouseRelease(dialog(), Qt::LeftButton);
        QVERIFY(!QWidget::mouseGrabber());
        QCOMPARE(drag(title, {2000, 2000}), lowest);
        QTest::mouseRelease(dialog(), Qt::LeftButton);
        QCOMPARE(drag(title, {-2000, -2000}), QPoint(0, 100));
        hide(); // in the middle of a movement
        QVERIFY(!QWidget::mouseGrabber());

        openAt(from);
        QCOMPARE(drag(part<QLabel>("lblName"), {50, 50}), from);
        QTest::mouseRelease(part<QLabel>("lblName"), Qt::LeftButton);
        hide();
    }

    void hidingByKeys()
    {
        for (const char* device : {"NL1", "VP4", "Door", "lblND1"}) // a pump's name opens its dialog, too
            touch(device);
        m_widget = "ND1";
        QVERIFY(dialog()->isVisible());
        takeLines();
        m_panel->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_panel.get()));
        QTest::keyClick(m_panel.get(), Qt::Key_H, Qt::ControlModifier);
        for (const DeviceDlg* d : m_panel->findChildren<DeviceDlg*>())
            QVERIFY(!d->isVisible());
        QCOMPARE(takeLines().join('|'),
                 "- [I]Нажата комбинация клавиш для скрытия диалогов элементов вакуумной системы");
    }

    // They are opened from outside the panel, too.
    void dialogOfTheBeamUnit()
    {
        Lock lock(false, {}, {});
        BkuDlg own(nullptr, "VPT", "модель", -1, &lock, &lock, {}, {}, "Вкл", "Выкл", {"a", "b", "c", "d"});
        const QSignalSpy heard(&own, &BkuDlg::signalCommandVPT);
        QCursor::setPos(1919, 1199);
        own.showDlg();
        QCOMPARE(own.pos(), QPoint(1920 - own.width(), 980 - own.height()));
        // Nothing is known of the device yet.
        QTest::mouseClick(own.findChild<QPushButton*>("sbSwitch"), Qt::LeftButton);
        QVERIFY(own.isVisible() && heard.isEmpty());
    }

    void badTablesEndTheProcess()
    {
        LenzeElement element("NL1:Power", LenzeElement::Number, 0);
        const auto make = [&](const QStringList& states, const QList<LenzeElement*>& elements) {
            return new KvsDlg(m_panel->kvs(), nullptr, {}, {}, 0, nullptr, nullptr, {}, {}, {}, {}, {}, {},
                              states, {"one"}, elements);
        };
        const QStringList four{"a", "b", "c", "d"};
        QVERIFY(deathOf([&] { make({"a", "b", "c"}, {&element}); }).contains("\"strStates.size() == 4\""));
        QVERIFY(deathOf([&] { make(four, {}); }).contains("\"strElements.size() == listElements.size()\""));
        const std::unique_ptr<KvsDlg> good(make(four, {&element}));
        QVERIFY(
            deathOf([&] { good->numberChanged(nullptr, 1); }).contains("\"i != m_mapElementRows.end()\""));
    }

private:
    bool isAny(const char* names) const { return words(names).contains(m_widget); }
    bool ofBku() const { return isAny("TMN VPT VE1"); }
    QString stateField() const
    {
        return !ofBku() ? m_widget + "State" : m_widget == "VE1" ? QString("StateVE") : "State" + m_widget;
    }
    QString commandTo(int state) const
    {
        const int on = 1 - state % 2;
        if (ofBku())
            return QString("BKU(%1,%2)").arg(isAny("VPT") ? 1 : isAny("VE1") ? 2 : 3).arg(on);
        return m_widget == "Door" ? (on ? "DOOR UNPRESS" : "DOOR PRESS") : m_widget + (on ? " ON" : " OFF");
    }

    // Each has its picture, its line in the journal, and its words in the dialog, which is hidden meanwhile.
    void states(const QString& stem, const QString& line)
    {
        const bool pump = isAny("NL1 NL2 NZ1 NZ2 NW2 ND1 TMN");
        const bool door = m_widget == "Door";
        const QStringList states = words(pump ? "выключен включен выключается включается"
                                         : door ? "прижата отжата прижимается отжимается"
                                                : "закрыт открыт закрывается открывается");
        const QStringList buttons = words(pump   ? "Включить Выключить"
                                          : door ? "Отжать Прижать"
                                                 : "Открыть Закрыть");
        const char* const colours[] = {"160, 160, 160", "0, 255, 0", "255, 255, 0", "255, 255, 0"};
        const char* const pictures[] = {"_0", "_1", "_23", "_23"};
        const auto look = [&](const char* picture, const QString& told, const QString& state,
                              const char* colour, const QString& button) {
            QVERIFY2(door || shows(m_widget, stem + picture), picture);
            QVERIFY2(door || takeLines().join('|') == told, qPrintable(told));
            QCOMPARE(part<QLabel>("lblState")->text(), state);
            QCOMPARE(part<QLabel>("lblState")->styleSheet(),
                     QString("background-color: rgb(%1);").arg(colour));
            QCOMPARE(part<QLabel>("lblTitle")->text(), button);
        };
        QVERIFY(door || shows(m_widget, stem + "_0"));
        takeLines();
        for (int state : {3, 2, 1, 0}) {
            tell(stateField(), state);
            look(pictures[state], "[I]" + line + ' ' + states[state], '[' + states[state] + ']',
                 colours[state], buttons[state % 2]);
            QCOMPARE(press(), QStringList(commandTo(state)));
        }
        // In an error the button goes by how it stood before. Of what has no picture on the panel any unknown
        // number is an error; behind BKU a number below zero is no data, which leaves the picture.
        for (int before : {0, 1}) {
            for (int error : door ? QVector<int>{4, -1, INT_MAX, INT_MIN} : QVector<int>{4, -1}) {
                const bool noData = ofBku() && error < 0;
                tell(stateField(), before);
                takeLines();
                tell(stateField(), error);
                look(noData ? pictures[before] : "_4", noData ? "" : "[W]" + line + " - ошибка!", "[ошибка]",
                     "255, 0, 0", "Ошибка");
                QCOMPARE(press(), QStringList(commandTo(before)));
            }
        }
    }

    // Each direction by its own word: each bit has its reason, in this order, and one without a reason
    // refuses, too.
    void refusals(const QStringList& bitsOn, const QStringList& bitsOff)
    {
        for (int state : {0, 1}) {
            const QStringList& bits = state ? bitsOff : bitsOn;
            const QString word = ofBku() ? QString("StateLocks") : m_widget + (state ? "LockOff" : "LockOn");
            tell(stateField(), state);
            for (int bit = 0; bit < 6; ++bit) {
                tell(word, 1 << bit);
                const QString number = QString::number(bit);
                if (ofBku() ? bits.contains(number) : !bits.isEmpty())
                    isRefused(bits.size(), bits.indexOf(number));
                else
                    QCOMPARE(press(), QStringList(commandTo(state)));
            }
            tell(word, 0);
            QCOMPARE(press(), QStringList(commandTo(state)));
        }
    }
    void isRefused(int count, int reason)
    {
        QCOMPARE(press(true), QStringList());
        QVERIFY(dialog()->isVisible());
        const auto lines = part<QPushButton>("sbSwitch")->findChildren<LockView*>();
        QCOMPARE(lines.size(), count);
        for (int i = 0; i < count; ++i) {
            const QColor ground(i == reason ? Qt::red : Qt::green);
            QCOMPARE(lines[i]->palette().color(QPalette::Window), ground);
            const QString text = lines[i]->findChildren<QLabel*>().last()->text();
            QVERIFY(text.size() > 10 || ofBku()); // of these some have no words for what permits
            if (i == reason)
                m_reasons << text;
        }
        QTest::mouseRelease(part<QPushButton>("sbSwitch"), Qt::LeftButton);
        QVERIFY(part<QPushButton>("sbSwitch")->findChildren<LockView*>().isEmpty());
        hide();
    }

    void readings(const QStringList& fields)
    {
        auto* table = part<QTableWidget>("twElements");
        QCOMPARE(table->rowCount(), fields.size());
        QCOMPARE(table->isHidden(), fields.isEmpty());
        QCOMPARE(part<QFrame>("frmDelim")->isHidden(), fields.isEmpty());
        const QMap<QString, QString> names{
            {"Power", "Питание"}, {"Thermal", "Перегрев"}, {"Disch", "Проток"}, {"Temp", "Тем"}};
        for (int row = 0; row < fields.size(); ++row) {
            const bool sensor = vacuumwire::kvs().field(fields[row]).kind == vacuumwire::F;
            const QString quantity = sensor ? fields[row].chopped(1) : fields[row].mid(3);
            const QString name = table->item(row, 0)->text();
            // The four circuits of ND1 are the second to the fifth of the plant.
            const bool numbered = sensor && m_widget == "ND1";
            const QString number = QString(" %1,").arg(fields[row].right(1).toInt() - 1);
            QVERIFY2(name.startsWith(names[quantity]) && (!numbered || name.contains(number)),
                     qPrintable(name));
            tell(fields[row], sensor ? -12.36 - row : 3);
            QCOMPARE(table->item(row, 1)->text(), sensor ? QString::number(-12.36 - row, 'f', 1) : "Вкл.");
            tell(fields[row], 0);
            QCOMPARE(table->item(row, 1)->text(), sensor ? "0.0" : "Выкл.");
        }
        if (m_widget != "ND1") // which has the longest
            return;
        touch(m_widget);
        QCOMPARE(table->viewport()->height(), 18 * fields.size());
        const int longest = table->fontMetrics().horizontalAdvance("Температура ОЖ 4, °C");
        QVERIFY2(longest <= table->columnWidth(0) - 8, qPrintable(QString::number(longest)));
        for (const QFont& font : {table->font(), table->item(0, 1)->font()})
            QVERIFY(QFontInfo(font).pixelSize() >= 16); // legible from the machine
        hide();
    }

    DeviceDlg* dialog() const { return w(m_widget)->findChild<DeviceDlg*>(); }
    template <class Widget>
    Widget* part(const char* name) const
    {
        return dialog()->findChild<Widget*>(name);
    }
    void hide()
    {
        QTest::mouseClick(part<QPushButton>("pbHide"), Qt::LeftButton);
        QVERIFY(!dialog()->isVisible());
    }
    // What goes out when the dialog is opened and its button pressed; nothing else may have gone out before.
    QStringList press(bool refused = false)
    {
        const bool onKvk = ofBku() || isAny("VP4 VP8 Door");
        touch(m_widget);
        [&] { QVERIFY(dialog()->isVisible()); }();
        QTest::mousePress(part<QPushButton>("sbSwitch"), Qt::LeftButton);
        if (!refused)
            [&] { QVERIFY(!dialog()->isVisible()); }();
        onKvk ? m_panel->kvk()->command("mark") : m_panel->kvs()->command("mark");
        QStringList sent;
        while (!sent.contains("mark"))
            sent += (onKvk ? *m_kvk : *m_kvs).takeCommands(1);
        sent.removeLast();
        return sent;
    }

    QString m_widget;
    QStringList m_reasons; // of all refusals, in the words of the list
};

QTEST_MAIN(TestElDlg)
#include "test_eldlg.moc"
