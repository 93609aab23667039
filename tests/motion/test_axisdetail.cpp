#include "axisinfo.h"
#include "comparetext.h"
#include "drivestate.h"
#include "guifixture.h"
#include "nextdialog.h"

#include <QLineEdit>

// The details of an axis: what the dialog of each kind shows, what it locks, and what it sends.
class TestAxisDetail : public GuiFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }

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
            const struct
            {
                int code;
                const char* shown;
                bool reference, clear;
            } states[] = {{0xA0102, "a0102", false, true},
                          {0xA0103, "a0103", false, true},
                          {0xC1600, "c1600", true, false},
                          {-1, "ffffffff", true, true}};
            for (const auto& state : states) {
                tell({{"StateLY", state.code}});
                QCOMPARE(texts("lblStateCode"), state.shown);
                QCOMPARE(in("pbReference")->isEnabled(), state.reference);
                QCOMPARE(in("pbClearError")->isEnabled(), state.clear);
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

    void everyTextIsWhole()
    {
        open("pbInfoLX", [&] {
            const auto* label = in<QLabel>("lblDriveState");
            const QRect place = label->contentsRect().adjusted(8, 0, -8, 0);
            const QFontMetrics metrics(label->font());
            for (int code = 0xA0000; code <= 0xFFFFF; ++code) {
                const QString words = stateDesc(code);
                if (words != stateDesc(0))
                    QVERIFY2(place.contains(metrics.boundingRect(place, Qt::TextWordWrap, words)),
                             qPrintable(words));
            }
            in<PoLabel>("lblReferValue")->setValue(-214748.36F, 2); // the longest that a command can carry
            m_info->onStateChanged(-1);
            for (const auto* field : {in<QLabel>("lblReferValue"), in<QLabel>("lblStateCode")})
                QVERIFY2(QFontMetrics(field->font()).horizontalAdvance(field->text()) < field->width() - 4,
                         qPrintable(field->objectName()));
        });
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
        // The only way back stays open, and shows what is.
        open("pbInfoB", [&] {
            QCOMPARE(in<StateButton>("sbPark")->state(), StateButton::On);
            QVERIFY(!in("pbClearError")->isEnabled());
        });

        tell({{"StateU2", 0xF2026}});
        w<QPushButton>("pbInfoU2")->show();
        open("pbInfoU2", [&] { press("pbClearError"); });
        SENT("CLEAR_ERROR(U2)");
        QVERIFY(journal().contains("[I]Нажата кнопка 'Сброс ошибки оси'\n"));
        QVERIFY(list().filter("Нажата").isEmpty()); // what is pressed goes to the file only
    }

    void reference()
    {
        const struct
        {
            const char* value;
            const char* shown;
            const char* code;
            const char* answer;
            const char* sent;
        } rows[] = {
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
        for (const auto& row : rows) {
            tell({}); // the link lives
            bool asked = false;
            open("pbInfoV", [&] {
                QCOMPARE(texts("lblReferValue"), "0.00");
                type("lblReferValue", row.value, "Значение", "");
                QCOMPARE(texts("lblReferValue"), row.shown);
                QCOMPARE(takeCommands(), QStringList());
                typeNext(row.code, true, "Пароль:", [&] {
                    if (!*row.answer)
                        return;
                    whenOpen<Confirm>([&](Confirm* question) {
                        asked = true;
                        QCOMPARE(question->findChild<QLabel*>("lblText")->text(),
                                 "Выполнить референцирование оси?");
                        question->findChild<QPushButton*>(row.answer)->click();
                    });
                });
                press("pbReference");
            });
            QCOMPARE(asked, bool(*row.answer));
            QCOMPARE(takeCommands().join(' '), row.sent);
        }
        QCOMPARE(journal().count("[I]Нажата кнопка 'Референцирование оси'\n"), 5);
        QCOMPARE(list().filter("недопустимое значение").size(), 1);
        QVERIFY(list().filter("Нажата").isEmpty());
    }

    void secondAxis()
    {
        for (const auto& [button, row] : {std::pair{"pbInfoLX", "frmLX2"}, {"pbInfoU", "frmU2"}}) {
            QVERIFY(!w(row)->isVisible());
            open(button, [&, second = w(row)] {
                QCOMPARE(in("pbSecondAxis")->text(), "Показать\nдополн.\nось");
                press("pbSecondAxis");
                QCOMPARE(in("pbSecondAxis")->text(), "Скрыть\nдополн.\nось");
                QVERIFY(second->isVisible());
            });
            open(button, [&] { // it remembers
                QVERIFY(in("pbSecondAxis")->isChecked());
                QCOMPARE(in("pbSecondAxis")->text(), "Скрыть\nдополн.\nось");
                press("pbSecondAxis");
            });
            QVERIFY(!w(row)->isVisible());
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

QTEST_MAIN(TestAxisDetail)
#include "test_axisdetail.moc"
