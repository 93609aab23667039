#include "axis.h"
#include "axisinfo.h"
#include "comparetext.h"
#include "drivestate.h"
#include "fixedmove.h"
#include "guifixture.h"
#include "nextdialog.h"
#include "selector.h"

#include <QLineEdit>
#include <QSettings>
#include <QSignalSpy>

namespace {

const QString linkFault = "Состояние привода неопределено - ошибка связи";

} // namespace

// An axis: its row in the window, its details as the dialog of each kind shows, locks and sends them, and the
// words for the states of its drive.
class TestAxis : public GuiFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

    void jog()
    {
        w<PoLabel>("speedLX")->setValue(12.9F, 0); // is cut off, not rounded
        QTest::mousePress(w("pbPlusLX"), Qt::LeftButton);
        SENT("MOVE(LX,12)");
        QTest::mouseRelease(w("pbPlusLX"), Qt::LeftButton);
        SENT("MOVE(LX,0)");
        touch("pbMinusLX");
        SENT("MOVE(LX,-12)", "MOVE(LX,0)");
        const QString told = "[C]Выполнение ручного перемещение по оси LX в %1 направлении...\n"
                             "[I]Завершено ручное перемещение по оси LX\n";
        QVERIFY(journal().contains(told.arg("положительном") + told.arg("отрицательном")));
        QCOMPARE(list().filter("ручно").size(), 4);

        // A limit switch closes its way and leaves the other free.
        tell({{"LXmax", 1}});
        QVERIFY(!w("pbPlusLX")->isEnabled() && w("pbMinusLX")->isEnabled());
        touch("pbPlusLX");
        touch("pbMinusLX");
        SENT("MOVE(LX,-12)", "MOVE(LX,0)");
        tell({{"LXmin", 1}, {"LXmax", 0}});
        QVERIFY(w("pbPlusLX")->isEnabled() && !w("pbMinusLX")->isEnabled());
    }

    void checkableButtons()
    {
        w<PoLabel>("speedB")->setValue(7, 0);
        auto* plus = w<QPushButton>("pbPlusB");
        auto* minus = w<QPushButton>("pbMinusB");
        connect(plus, &QPushButton::toggled, m_gui->axis("B"), &Axis::onPlusToggled);
        connect(minus, &QPushButton::toggled, m_gui->axis("B"), &Axis::onMinusToggled);
        for (QPushButton* button : {plus, minus})
            button->setCheckable(true);
        for (const auto& [button, other] : {std::pair(plus, minus), {minus, plus}}) {
            button->toggle();
            QVERIFY(!other->isEnabled());
            button->toggle();
            QVERIFY(other->isEnabled());
        }
        SENT("MOVE(B,7)", "MOVE(B,0)", "MOVE(B,-7)", "MOVE(B,0)");
        QVERIFY(!journal().contains("ручно"));
    }

    // By each axis for itself; the window keeps the speeds of its rows besides.
    void speedIsKept()
    {
        auto* label = w<PoLabel>("speedU");
        const auto axis = [&](const char* name) {
            return std::make_unique<Axis>(name, "мм", 0, 1, 360, m_gui->drives(), w<PoSprite>("indU"),
                                          w<PoLabel>("coordU"), label, w<QPushButton>("pbPlusU"),
                                          w<QPushButton>("pbMinusU"), w<QPushButton>("pbInfoU"), false,
                                          false);
        };
        auto first = axis("T1");
        QCOMPARE(first->speed(), 0);
        label->setValue(33.7F, 1);
        first.reset();
        QCOMPARE(axis("T2")->speed(), 0);
        QSettings settings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
        QCOMPARE(settings.value("T1/Speed").toString(), "33");
        QCOMPARE(axis("T1")->speed(), 33);
        settings.setValue("T1/Speed", "noise");
        settings.sync();
        QCOMPARE(axis("T1")->speed(), 0);
    }

    // The borders between the classes of states, and those with a lamp of their own.
    void lampAndClass()
    {
        const std::tuple<int, const char*, const char*> rows[] = {
            {0xA0012, "yellow", "[I]"}, {0xA0100, "gray", "[I]"},   {0xA0101, "green", "[I]"},
            {0xA0103, "green", "[I]"},  {0xA0104, "gray", "[I]"},   {0xDFFFF, "gray", "[I]"},
            {0xE0000, "yellow", "[W]"}, {0xEFFFF, "yellow", "[W]"}, {0xF0000, "red", "[A]"},
            {0x7FFFFFFF, "red", "[A]"}, {-1, "gray", "[I]"}};
        QSignalSpy told(m_gui->axis("LX"), &Axis::axisMessage);
        for (const auto& [code, lamp, mark] : rows) {
            m_gui->axis("LX")->onStateChanged(code == 0xA0101 ? 0xF2026 : 0xA0101);
            told.clear();
            m_gui->axis("LX")->onStateChanged(code);
            QVERIFY2(w<PoSprite>("indLX")->pixmap(Qt::ReturnByValue).toImage() ==
                         QPixmap(QString(":/images/indicator_%1.png").arg(lamp)).toImage(),
                     lamp);
            const QString line = QString(mark) + "Ось LX: " + stateDesc(code);
            QCOMPARE(told, (QList<QVariantList>{{line, true}}));
        }
    }

    void speedFromSelector()
    {
        QString offered;
        for (const char* entry : {"lblSpeed4", "beside all"}) {
            whenOpen<Selector>([&, entry](Selector* popup) {
                offered.clear();
                for (int i = 1; i <= 6; ++i)
                    offered += popup->findChild<QLabel*>(QString("lblSpeed%1").arg(i))->text() + ' ';
                const auto* label = popup->findChild<QLabel*>(entry);
                QTest::mousePress(popup, Qt::LeftButton, {},
                                  label ? label->mapTo(popup, label->rect().center()) : QPoint(-5, -5));
            });
            touch("speedA");
            QCOMPARE(w<PoLabel>("speedA")->text(), "90");
            QCOMPARE(journal().count("[I]Установлена скорость 90 град/мин для оси A\n"), 1);
        }
        QCOMPARE(offered, "9 18 36 90 180 360 ");
    }

    // The dialog hears from the channel and the drives as long as it is open.
    void fixedMoveDialog()
    {
        w<PoLabel>("speedLX")->setValue(120.9F, 0);
        QString enabled;
        whenOpen<FixedMove>([&](FixedMove* dialog) {
            auto* start = dialog->findChild<QPushButton*>("pbStart");
            const auto look = [&] { enabled += start->isEnabled() ? '1' : '0'; };
            look(); // channel 1 is not ready yet
            tell({{"ChannelState1", 1}});
            look();
            tell({{"DrivesOn", 1}});
            tell({{"DrivesOn", 0}});
            look();
            tell({{"DrivesOn", 1}});
            QTest::mouseClick(start, Qt::LeftButton);
        });
        touch("coordLX");
        QCOMPARE(enabled, "010");
        SENT("EXEC_1(/programs/_fixed.npg)");
        QVERIFY(m_site->read("/programs/_fixed.npg").contains(" LX=0 F120\n"));
        QString log = journal();
        for (const char* line : {"[I]Открыто окно фиксированного перемещения по оси LX\n",
                                 "[C]Запущено фиксированное перемещение по оси LX в координату 0\n",
                                 "[I]Закрыто окно фиксированного перемещения по оси LX\n"}) {
            QVERIFY2(log.contains(line), line);
            log = log.section(line, 1);
        }
        QCOMPARE(list().filter("фиксированно").size(), 1);
    }

    // The ends of the table of states, of its classes, and some between.
    void texts()
    {
        const std::pair<int, const char*> rows[] = {
            {0xA0000, "Communication phase 0"},
            {0xA0012, "Готовность привода и силовой части"},
            {0xA0104, "Position mode lagless: return  encoder 1"}, // the blank is double
            {0xC1600, "Парковка оси"},
            {0xE8043, "Сработал датчик положительного конечного положения"},
            {0xF2026, "Низкое напряжение в секции питания привода"},
            {0xF8122, "Секция управления привода повреждена"}};
        for (const auto& [code, text] : rows)
            QCOMPARE(stateDesc(code), text);
        // Listed as a link fault, next to listed codes, of a known class, and nothing at all.
        for (int code : {0xC0297, 0xA0014, 0xF2999, 0xA0102 + 0x100000, 0, -1, 0x7fffffff, -0x7fffffff - 1})
            QCOMPARE(stateDesc(code), linkFault);
        QCOMPARE(virtualStateDesc(0), "Питание всех приводов виртуальной оси выключено");
        QCOMPARE(virtualStateDesc(4), "Предупреждение на одном из приводов виртуальной оси");
        for (int state : {5, -1})
            QCOMPARE(virtualStateDesc(state), linkFault);
    }

    void kinds()
    {
        for (const QString& name : QString("LX LX2 LY A B C D U1 U2 V X Z PHI").split(' ')) {
            AxisInfo dialog(name, m_gui->drives(), w("pbInfoLX"));
            const auto shown = [&](const char* part) {
                return dialog.findChild<QWidget*>(part)->isVisibleTo(&dialog);
            };
            const bool second = name.endsWith('2');
            QVERIFY2(shown("frmPark") != second && shown("frmReference") != second, qPrintable(name));
            QVERIFY2(shown("pbSecondAxis") == (name == "LX" || name == "U1"), qPrintable(name));
            QCOMPARE(dialog.window()->windowTitle(), "Ось " + name);
        }
    }

    void followsTheDrive()
    {
        tell({{"StateLY", 0xA0101},
              {"LY", -12.34567},
              {"MinLimLY", -800.26},
              {"MaxLimLY", 100},
              {"LYmin", 1}});
        w<PoLabel>("speedLY")->setValue(12.9F, 1);
        open("pbInfoLY", [&] {
            QCOMPARE(texts("lblStateCode lblDriveState"), "a0101|Режим управления по скорости");
            QCOMPARE(texts("lblCoord lblSpeed lblSEPmin lblSEPmax"), "-12.3457|12|-800.3|100.0");
            QVERIFY(lampRed("indEPmin") && !lampRed("indEPmax"));
            const std::tuple<int, const char*, bool, bool> states[] = {{0xA0102, "a0102", false, true},
                                                                       {0xA0103, "a0103", false, true},
                                                                       {0xC1600, "c1600", true, false},
                                                                       {-1, "ffffffff", true, true}};
            for (const auto& [code, shown, reference, clear] : states) {
                tell({{"StateLY", code}});
                QCOMPARE(texts("lblStateCode"), shown);
                QCOMPARE(in("pbReference")->isEnabled(), reference);
                QCOMPARE(in("pbClearError")->isEnabled(), clear);
            }
            QCOMPARE(texts("lblDriveState"), "Состояние привода неопределено - ошибка связи");
            tell({{"LY", 1.5}, {"MaxLimLY", 7.7}, {"MinLimLY", -7.7}, {"LYmin", 0}, {"LYmax", 1}});
            QCOMPARE(texts("lblCoord lblSEPmin lblSEPmax"), "1.5000|-7.7|7.7");
            QVERIFY(!lampRed("indEPmin") && lampRed("indEPmax"));
        });
        const QString log = journal();
        const int opened = log.indexOf("[I]Открыто окно дополнительных параметров оси LY\n");
        QVERIFY(opened >= 0 && log.indexOf("[I]Закрыто окно дополнительных параметров оси LY\n") > opened);
        QVERIFY(list().filter("дополнительных").isEmpty());
    }

    // Every code that five digits can spell: no text is empty, mangled, attached to another class or cut.
    void everyTextIsWhole()
    {
        QMap<int, int> known;
        open("pbInfoLX", [&] {
            const auto* label = in<QLabel>("lblDriveState");
            const QRect place = label->contentsRect().adjusted(8, 0, -8, 0);
            const QFontMetrics metrics(label->font());
            for (int code = 0; code <= 0x100000; ++code) {
                const QString words = stateDesc(code);
                QVERIFY(!words.isEmpty() && words == words.trimmed() &&
                        !words.contains(QChar::ReplacementCharacter));
                if (words == linkFault)
                    continue;
                ++known[code >> 16];
                QVERIFY2(place.contains(metrics.boundingRect(place, Qt::TextWordWrap, words)),
                         qPrintable(words));
            }
            in<PoLabel>("lblReferValue")->setValue(-214748.36F, 2); // the longest that a command can carry
            m_info->onStateChanged(-1);
            for (const auto* field : {in<QLabel>("lblReferValue"), in<QLabel>("lblStateCode")})
                QVERIFY2(QFontMetrics(field->font()).horizontalAdvance(field->text()) < field->width() - 4,
                         qPrintable(field->objectName()));
        });
        // 602 codes, twelve of them telling of a link fault on purpose.
        QCOMPARE(known, (QMap<int, int>{{0xA, 72}, {0xC, 295 - 6}, {0xE, 80 - 3}, {0xF, 155 - 3}}));
    }

    void limits()
    {
        tell({{"A", 45.125}, {"MaxLimA", 90}});
        open("pbInfoA", [&] {
            type("lblSEPmax", "c100", "Максимум", "45.125"); // offers what stands on the label
            SENT("LIMIT_MAX(A,100.0)");
            QCOMPARE(texts("lblSEPmax"), "90.0"); // the controller has not told yet
            type("lblSEPmin", "c0,26-", "Минимум", "45.125");
            SENT("LIMIT_MIN(A,-0.3)");
            tell({{"MaxLimA", 100}});
            QCOMPARE(texts("lblSEPmax"), "100.0");
        });
    }

    void parking()
    {
        tell({{"StateB", 0xA0012}, {"DrivesOn", 1}});
        open("pbInfoB", [&] {
            auto* park = in<StateButton>("sbPark");
            const auto* state = park->findChild<QLabel*>("lblState");
            QCOMPARE(park->findChild<QLabel*>("lblTitle")->text(), "Ось B");
            QCOMPARE(state->text(), "[распаркована]");
            QVERIFY(park->locked());
            press("sbPark");
            QCOMPARE(takeCommands(), QStringList());

            tell({{"DrivesOn", 0}, {"StateB", 0xA0013}});
            QVERIFY(!park->locked());
            press("sbPark");
            SENT("PARK(B)");
            QCOMPARE(park->state(), StateButton::Off); // until the drive tells
            tell({{"StateB", 0xC1600}});
            QCOMPARE(park->state(), StateButton::On);
            QCOMPARE(state->text(), "[запаркована]");
            QVERIFY(!w("frmB")->isEnabled());
            press("sbPark");
            SENT("DEPARK(B)");
            tell({{"DrivesOn", 1}});
            QVERIFY(park->locked());
        });
        QCOMPARE(journal().count("[I]Нажата кнопка 'Парковка оси'\n"), 2);
        open("pbInfoB", [&] { // the only way back stays open, and shows what is
            QCOMPARE(in<StateButton>("sbPark")->state(), StateButton::On);
            QVERIFY(!in("pbClearError")->isEnabled());
            tell({{"StateB", 0xF2026}});
            QCOMPARE(in<StateButton>("sbPark")->state(), StateButton::Off);
        });
        QVERIFY(w("frmB")->isEnabled());

        tell({{"StateU2", 0xF2026}});
        w<QPushButton>("pbInfoU2")->show();
        open("pbInfoU2", [&] { press("pbClearError"); });
        SENT("CLEAR_ERROR(U2)");
        QVERIFY(journal().contains("[I]Нажата кнопка 'Сброс ошибки оси'\n"));
        QVERIFY(list().filter("Нажата").isEmpty()); // what is pressed goes to the file only
    }

    void reference()
    {
        // What is typed and shown, the code, the answer to the question, and what is sent.
        const std::tuple<const char*, const char*, const char*, const char*, const char*> rows[] = {
            {"1,5", "1.50", "305729", "pbYes", "REFERENCE(V,15000)"},
            // The nearest single of -0.0001 times 10000 rounds to -1; -0.00029 gives -2.9, which is cut off.
            {"0,0001-", "-0.00", "305729", "pbYes", "REFERENCE(V,-1)"},
            {"0,00029-", "-0.00", "305729", "pbYes", "REFERENCE(V,-2)"},
            // 24 bits: 41943.1 is held as 41943.1015625, and its ten-thousandfold in steps of 32.
            {"41943,1", "41943.10", "305729", "pbYes", "REFERENCE(V,419431008)"},
            {"300000", "300000.00", "305729", "pbYes", ""}, // no number that fits
            {"1", "1.00", "305728", "", ""},
            {"1", "1.00", "305729", "pbNo", ""},
        };
        for (const auto& [value, shown, code, answer, sent] : rows) {
            tell({}); // the link lives
            bool asked = false;
            open("pbInfoV", [&, value = value, shown = shown, code = code, answer = answer] {
                QCOMPARE(texts("lblReferValue"), "0.00");
                type("lblReferValue", value, "Значение", "");
                QCOMPARE(texts("lblReferValue"), shown);
                QCOMPARE(takeCommands(), QStringList());
                typeNext(code, true, "Пароль:", [&, answer] {
                    if (!*answer)
                        return;
                    whenOpen<Confirm>([&, answer](Confirm* question) {
                        asked = true;
                        QCOMPARE(question->findChild<QLabel*>("lblText")->text(),
                                 "Выполнить референцирование оси?");
                        question->findChild<QPushButton*>(answer)->click();
                    });
                });
                press("pbReference");
            });
            QCOMPARE(asked, bool(*answer));
            QCOMPARE(takeCommands().join(' '), sent);
        }
        QCOMPARE(journal().count("[I]Нажата кнопка 'Референцирование оси'\n"), 5);
        QCOMPARE(list().filter("недопустимое значение").size(), 1);
        QVERIFY(list().filter("Нажата").isEmpty());
    }

    void secondAxis()
    {
        for (const auto& [button, row] : {std::pair{"pbInfoLX", "frmLX2"}, {"pbInfoU", "frmU2"}}) {
            QVERIFY(!w(row)->isVisible());
            for (const bool shown : {false, true}) { // it remembers
                open(button, [&, shown] {
                    const auto text = [](bool hides) {
                        return QString(hides ? "Скрыть" : "Показать") + "\nдополн.\nось";
                    };
                    QCOMPARE(in("pbSecondAxis")->text(), text(shown));
                    QCOMPARE(in("pbSecondAxis")->isChecked(), shown);
                    press("pbSecondAxis");
                    QCOMPARE(in("pbSecondAxis")->text(), text(!shown));
                });
                QCOMPARE(w(row)->isVisible(), !shown);
            }
        }
    }

    void virtualAxes()
    {
        setVirtualMode();
        tell({{"VirtualState", 3}, {"X", 1.25}, {"Z", -2.5}, {"PHI", 30}, {"Zmax", 1}, {"PHImin", 1}});
        for (const QString name : {"X", "Z", "PHI"}) {
            const QByteArray min = "MinLim" + name.toLatin1();
            const QByteArray max = "MaxLim" + name.toLatin1();
            tell({{min, -100}, {max, 100}, {"VirtualState", 3}});
            w<PoLabel>("speed" + name)->setValue(250.7F, 1);
            open("pbInfo" + name, [&] {
                const QString at = QString::number(double(m_gui->coord(name)), 'f', 4);
                const QString fixed = "3|Ошибка на одном из приводов виртуальной оси|250|" + at;
                QCOMPARE(texts("lblStateCode lblDriveState lblSpeed lblCoord"), fixed);
                QCOMPARE(lampRed("indEPmax"), name == "Z");
                QCOMPARE(lampRed("indEPmin"), name == "PHI");
                // Of what changes now, only the limits of Z and PHI are followed. (The lower one of PHI has
                // other values here: it marks the datagrams.)
                const bool followed = name != "X";
                const QString lower = texts("lblSEPmin");
                QCOMPARE(lower == "-100.0", name != "PHI");
                tell({{min, -200}, {max, 200}, {"VirtualState", 2}, {name.toLatin1(), 99}});
                QCOMPARE(texts("lblSEPmax"), followed ? "200.0" : "100.0");
                QCOMPARE(texts("lblSEPmin") != lower, followed);
                QCOMPARE(texts("lblStateCode lblDriveState lblSpeed lblCoord"), fixed);
                type("lblSEPmin", "c50");
            });
            SENT("LIMIT_MIN(" + name + ",50.0)");
        }
    }

private:
    // Touches the button; `look` runs with the dialog open, which is closed after it.
    void open(const QString& button, const std::function<void()>& look)
    {
        bool opened = false;
        whenOpen<AxisInfo>([&](AxisInfo* dialog) {
            opened = true;
            m_info = dialog;
            look();
            dialog->reject();
        });
        touch(button);
        QVERIFY2(opened, "no dialog");
    }
    // Types on the keypad of a label, which offers a number at first.
    void type(const char* label, const QString& keys, const QString& title = {},
              const char* offered = nullptr)
    {
        whenOpen<Numpad>([=](Numpad* pad) {
            if (offered)
                QCOMPARE(pad->getValue(), offered);
            QCOMPARE(pad->findChild<QLineEdit*>()->echoMode(), QLineEdit::Normal);
            typeNext(keys, true, title);
        });
        press(label);
    }
    QString texts(const char* names) const
    {
        QStringList all;
        for (const QString& name : QString(names).split(' '))
            all << m_info->findChild<QLabel*>(name)->text();
        return all.join('|');
    }
    template <class Widget = QPushButton>
    Widget* in(const char* name) const
    {
        return m_info->findChild<Widget*>(name);
    }
    void press(const char* name) { QTest::mouseClick(in<QWidget>(name), Qt::LeftButton); }
    bool lampRed(const char* name) const
    {
        return in<PoSprite>(name)->pixmap(Qt::ReturnByValue).toImage() ==
               QPixmap(":/images/indicator_red.png").toImage();
    }

    AxisInfo* m_info = nullptr;
};

QTEST_MAIN(TestAxis)
#include "test_axis.moc"
