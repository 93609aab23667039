#include "axisinfo.h"
#include "drivestate.h"
#include "guifixture.h"

#include <QLineEdit>
#include <QTimer>

// The details of an axis: what the dialog of each kind shows, what it locks, and what it sends.
class TestAxisDetail : public GuiFixture
{
    Q_OBJECT

private slots:
    void init() { begin(); }
    void cleanup() { end(); }
    void kinds();
    void followsTheDrive();
    void everyTextIsWhole();
    void limits();
    void parking();
    void clearsTheError();
    void reference_data();
    void reference();
    void secondAxis();
    void virtualAxes();

private:
    // Touches the button; `look` runs with the dialog open, which is closed after it.
    void open(const QString& button, const std::function<void()>& look);
    // The next keypad gets these keys, the sign last, and is then accepted.
    void typing(const QString& keys);
    QString text(const char* name) const { return m_info->findChild<QLabel*>(name)->text(); }
    template <class Widget = QPushButton>
    Widget* in(const char* name) const
    {
        return m_info->findChild<Widget*>(name);
    }
    void press(const char* name) { QTest::mouseClick(in<QWidget>(name), Qt::LeftButton); }
    bool lampRed(const char* name) const
    {
        return in<PoSprite>(name)->pixmap(Qt::ReturnByValue).toImage() ==
               QPixmap(QStringLiteral(":/images/indicator_red.png")).toImage();
    }

    AxisInfo* m_info = nullptr;
    QString m_offered;   // what the keypad showed at first
    QString m_asked;     // its title
    bool m_dots = false; // whether it hides what is typed
};

void TestAxisDetail::open(const QString& button, const std::function<void()>& look)
{
    bool opened = false;
    QTimer::singleShot(0, this, [&] {
        m_info = m_gui->findChild<AxisInfo*>();
        if (!m_info)
            return;
        opened = true;
        look();
        m_info->reject();
    });
    touch(button);
    QVERIFY2(opened, "no dialog");
}

void TestAxisDetail::typing(const QString& keys)
{
    QTimer::singleShot(0, this, [=] {
        auto* pad = QApplication::activeModalWidget()->findChild<QDialog*>(QStringLiteral("Numpad"));
        QVERIFY(pad);
        const auto* display = pad->findChild<QLineEdit*>();
        m_offered = display->text();
        m_asked = pad->window()->windowTitle();
        m_dots = display->echoMode() == QLineEdit::Password;
        QTest::keyClick(pad, Qt::Key_Delete);
        QTest::keyClicks(pad, keys);
        QTest::keyClick(pad, Qt::Key_Enter);
    });
}

void TestAxisDetail::kinds()
{
    for (const QString& name : QStringLiteral("LX LX2 LY A B C D U1 U2 V X Z PHI").split(' ')) {
        AxisInfo dialog(name, m_gui->drives(), w("pbInfoLX"));
        const auto shown = [&](const char* part) {
            return dialog.findChild<QWidget*>(part)->isVisibleTo(&dialog);
        };
        const bool second = name.endsWith('2');
        QVERIFY2(shown("frmPark") != second && shown("frmReference") != second, qPrintable(name));
        QVERIFY2(shown("pbSecondAxis") == (name == "LX" || name == "U1"), qPrintable(name));
        QCOMPARE(dialog.window()->windowTitle(), QStringLiteral("Ось ") + name);
    }
}

void TestAxisDetail::followsTheDrive()
{
    tell({{"StateLY", 0xA0101}, {"LY", -12.34567}, {"MinLimLY", -800.26}, {"MaxLimLY", 100}, {"LYmin", 1}});
    w<PoLabel>("speedLY")->setValue(12.9F, 1);
    open("pbInfoLY", [&] {
        QCOMPARE(text("lblStateCode"), QStringLiteral("a0101"));
        QCOMPARE(text("lblDriveState"), QStringLiteral("Режим управления по скорости"));
        QCOMPARE(text("lblCoord"), QStringLiteral("-12.3457"));
        QCOMPARE(text("lblSpeed"), QStringLiteral("12"));
        QCOMPARE(text("lblSEPmin"), QStringLiteral("-800.3"));
        QCOMPARE(text("lblSEPmax"), QStringLiteral("100.0"));
        QVERIFY(lampRed("indEPmin") && !lampRed("indEPmax"));

        const struct
        {
            int code;
            const char* shown;
            bool reference, clear;
        } states[] = {{0xA0102, "a0102", false, true},
                      {0xA0103, "a0103", false, true},
                      {0xC1600, "c1600", true, false},
                      {0xF2999, "f2999", true, true},
                      {-1, "ffffffff", true, true}};
        for (const auto& state : states) {
            tell({{"StateLY", state.code}});
            QCOMPARE(text("lblStateCode"), QString(state.shown));
            QCOMPARE(in("pbReference")->isEnabled(), state.reference);
            QCOMPARE(in("pbClearError")->isEnabled(), state.clear);
        }
        QCOMPARE(text("lblDriveState"), QStringLiteral("Состояние привода неопределено - ошибка связи"));

        tell({{"LY", 1.5}, {"MaxLimLY", 7.7}, {"MinLimLY", -7.7}, {"LYmin", 0}, {"LYmax", 1}});
        QCOMPARE(text("lblCoord"), QStringLiteral("1.5000"));
        QCOMPARE(text("lblSEPmax"), QStringLiteral("7.7"));
        QCOMPARE(text("lblSEPmin"), QStringLiteral("-7.7"));
        QVERIFY(!lampRed("indEPmin") && lampRed("indEPmax"));
    });
    const QString log = journal();
    const int opened = log.indexOf("[I]Открыто окно дополнительных параметров оси LY\n");
    QVERIFY(opened >= 0 && log.indexOf("[I]Закрыто окно дополнительных параметров оси LY\n") > opened);
    QVERIFY(list().filter("дополнительных").isEmpty());
}

void TestAxisDetail::everyTextIsWhole()
{
    open("pbInfoLX", [&] {
        const auto* label = in<QLabel>("lblDriveState");
        const QRect place = label->contentsRect().adjusted(8, 0, -8, 0);
        const QFontMetrics metrics(label->font());
        const QString unknown = stateDesc(0);
        int known = 0;
        for (int code = 0xA0000; code <= 0xFFFFF; ++code) {
            const QString words = stateDesc(code);
            if (words == unknown)
                continue;
            ++known;
            QVERIFY2(place.contains(metrics.boundingRect(place, Qt::TextWordWrap, words)), qPrintable(words));
        }
        QVERIFY(known > 500);
        in<PoLabel>("lblReferValue")->setValue(-214748.36F, 2); // the longest that a command can carry
        m_info->onStateChanged(-1);
        for (const auto* field : {in<QLabel>("lblReferValue"), in<QLabel>("lblStateCode")})
            QVERIFY2(QFontMetrics(field->font()).horizontalAdvance(field->text()) < field->width() - 4,
                     qPrintable(field->objectName()));
    });
}

void TestAxisDetail::limits()
{
    tell({{"A", 45.125}, {"MaxLimA", 90}});
    open("pbInfoA", [&] {
        typing("100");
        press("lblSEPmax");
        QCOMPARE(m_offered, QStringLiteral("45.125")); // what stands on the label, in the keypad's form
        QCOMPARE(m_asked, QStringLiteral("Максимум"));
        SENT("LIMIT_MAX(A,100.0)");
        QCOMPARE(text("lblSEPmax"), QStringLiteral("90.0")); // the controller has not told yet
        typing("0.26-");
        press("lblSEPmin");
        QCOMPARE(m_asked, QStringLiteral("Минимум"));
        SENT("LIMIT_MIN(A,-0.3)");
        tell({{"MaxLimA", 100}});
        QCOMPARE(text("lblSEPmax"), QStringLiteral("100.0"));
    });
}

void TestAxisDetail::parking()
{
    auto* row = w("frmB");
    tell({{"StateB", 0xA0012}, {"DrivesOn", 1}});
    open("pbInfoB", [&] {
        auto* park = in<StateButton>("sbPark");
        const auto* state = park->findChild<QLabel*>("lblState");
        QCOMPARE(park->findChild<QLabel*>("lblTitle")->text(), QStringLiteral("Ось B"));
        QCOMPARE(state->text(), QStringLiteral("[распаркована]"));
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
        QCOMPARE(state->text(), QStringLiteral("[запаркована]"));
        QVERIFY(!row->isEnabled());
        press("sbPark");
        SENT("DEPARK(B)");
        tell({{"DrivesOn", 1}});
        QVERIFY(park->locked());
    });
    QCOMPARE(journal().count("[I]Нажата кнопка 'Парковка оси'\n"), 2);
    QVERIFY(list().filter("Нажата").isEmpty());

    // The only way back stays open, and shows what is.
    open("pbInfoB", [&] {
        QCOMPARE(in<StateButton>("sbPark")->state(), StateButton::On);
        QVERIFY(!in("pbClearError")->isEnabled());
    });
}

void TestAxisDetail::clearsTheError()
{
    tell({{"StateU2", 0xF2026}});
    w<QPushButton>("pbInfoU2")->show();
    open("pbInfoU2", [&] { press("pbClearError"); });
    SENT("CLEAR_ERROR(U2)");
    QVERIFY(journal().contains("[I]Нажата кнопка 'Сброс ошибки оси'\n"));
    QVERIFY(list().filter("Нажата").isEmpty());
}

void TestAxisDetail::reference_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("sent");
    const auto row = [](const char* name, const char* value, const char* code, const char* answer,
                        const char* sent) { QTest::newRow(name) << value << code << answer << sent; };
    row("whole", "1.5", "305729", "pbYes", "REFERENCE(V,15000)");
    // The nearest single of -0.0001 times 10000 rounds to -1; -0.00029 gives -2.9, which is cut off.
    row("single precision", "0.0001-", "305729", "pbYes", "REFERENCE(V,-1)");
    row("towards zero", "0.00029-", "305729", "pbYes", "REFERENCE(V,-2)");
    // 24 bits: 41943.1 is held as 41943.1015625, and its ten-thousandfold in steps of 32.
    row("few digits left", "41943.1", "305729", "pbYes", "REFERENCE(V,419431008)");
    row("no number that fits", "300000", "305729", "pbYes", "");
    row("wrong code", "1", "305728", "", "");
    row("refused", "1", "305729", "pbNo", "");
}

void TestAxisDetail::reference()
{
    QFETCH(QString, value);
    QFETCH(QString, code);
    QFETCH(QString, answer);
    QFETCH(QString, sent);
    open("pbInfoV", [&] {
        QCOMPARE(text("lblReferValue"), QStringLiteral("0.00"));
        typing(value);
        press("lblReferValue");
        QVERIFY(m_offered.isEmpty() && m_asked == QStringLiteral("Значение") && !m_dots);
        const double typed = value.endsWith('-') ? -value.chopped(1).toDouble() : value.toDouble();
        QCOMPARE(text("lblReferValue"), QString::number(typed, 'f', 2));
        QCOMPARE(takeCommands(), QStringList());
        typing(code);
        bool asked = false;
        QTimer answering;
        connect(&answering, &QTimer::timeout, this, [&] {
            auto* question = m_info->window()->findChild<Confirm*>();
            if (!question)
                return;
            answering.stop();
            asked = true;
            QCOMPARE(question->findChild<QLabel*>("lblText")->text(),
                     QStringLiteral("Выполнить референцирование оси?"));
            question->findChild<QPushButton*>(answer)->click();
        });
        answering.start(5);
        press("pbReference");
        QVERIFY(m_dots && m_asked == QStringLiteral("Пароль:"));
        QCOMPARE(asked, !answer.isEmpty());
    });
    QCOMPARE(takeCommands(), sent.isEmpty() ? QStringList() : QStringList{sent});
    QCOMPARE(journal().count("[I]Нажата кнопка 'Референцирование оси'\n"), answer == "pbYes" ? 1 : 0);
    QCOMPARE(list().filter("недопустимое значение").size(), value == "300000" ? 1 : 0);
    QVERIFY(list().filter("Нажата").isEmpty()); // what is pressed goes to the file only
}

void TestAxisDetail::secondAxis()
{
    for (const auto& [button, row] : {std::pair{"pbInfoLX", "frmLX2"}, {"pbInfoU", "frmU2"}}) {
        QVERIFY(!w(row)->isVisible());
        open(button, [&, second = w(row)] {
            QCOMPARE(in("pbSecondAxis")->text(), QStringLiteral("Показать\nдополн.\nось"));
            press("pbSecondAxis");
            QCOMPARE(in("pbSecondAxis")->text(), QStringLiteral("Скрыть\nдополн.\nось"));
            QVERIFY(second->isVisible());
        });
        open(button, [&] { // it remembers
            QVERIFY(in("pbSecondAxis")->isChecked());
            QCOMPARE(in("pbSecondAxis")->text(), QStringLiteral("Скрыть\nдополн.\nось"));
            press("pbSecondAxis");
        });
        QVERIFY(!w(row)->isVisible());
    }
}

void TestAxisDetail::virtualAxes()
{
    setVirtualMode();
    tell({{"VirtualState", 3}, {"X", 1.25}, {"Z", -2.5}, {"PHI", 30}, {"Zmax", 1}, {"PHImin", 1}});
    for (const char* name : {"X", "Z", "PHI"}) {
        const QByteArray min = QByteArray("MinLim") + name;
        const QByteArray max = QByteArray("MaxLim") + name;
        tell({{min, -100}, {max, 100}, {"VirtualState", 3}});
        w<PoLabel>(QStringLiteral("speed") + name)->setValue(250.7F, 1);
        open(QStringLiteral("pbInfo") + name, [&] {
            QCOMPARE(text("lblStateCode"), QStringLiteral("3"));
            QCOMPARE(text("lblDriveState"), QStringLiteral("Ошибка на одном из приводов виртуальной оси"));
            const float at = m_gui->coord(name);
            QCOMPARE(text("lblCoord"), QString::number(double(at), 'f', 4));
            QCOMPARE(text("lblSpeed"), QStringLiteral("250"));
            QCOMPARE(lampRed("indEPmax"), !qstrcmp(name, "Z"));
            QCOMPARE(lampRed("indEPmin"), !qstrcmp(name, "PHI"));
            // Of what changes now, only the limits of Z and PHI are followed. (The lower one of PHI has other
            // values here: it marks the datagrams.)
            const bool followed = qstrcmp(name, "X");
            const QString lower = text("lblSEPmin");
            QCOMPARE(lower == QStringLiteral("-100.0"), qstrcmp(name, "PHI") != 0);
            tell({{min, -200}, {max, 200}, {"VirtualState", 2}, {name, 99}});
            QCOMPARE(text("lblSEPmax"), followed ? QStringLiteral("200.0") : QStringLiteral("100.0"));
            QCOMPARE(text("lblSEPmin") != lower, followed);
            QCOMPARE(text("lblStateCode"), QStringLiteral("3"));
            QCOMPARE(text("lblCoord"), QString::number(double(at), 'f', 4));
            typing("50");
            press("lblSEPmin");
        });
        SENT(QStringLiteral("LIMIT_MIN(%1,50.0)").arg(name));
    }
}

QTEST_MAIN(TestAxisDetail)
#include "test_axisdetail.moc"
