#include "drivecomm.h"
#include "fixedmove.h"
#include "ratecalc.h"
#include "selector.h"
#include "widgets.h"

#include "comparetext.h"
#include "deathtest.h"
#include "linkcontroller.h"
#include "nextdialog.h"
#include "sitefixture.h"

#include <QRadioButton>
#include <QSettings>
#include <QSignalSpy>

// The dialogs that hang on an axis's row, fixed move and speed selector, and the calculator of speeds.
class TestSelector : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_site = std::make_unique<SiteFixture>();
        m_parent = std::make_unique<QWidget>();
        m_parent->setGeometry(300, 200, 200, 60);
        m_parent->show();
        QVERIFY(QTest::qWaitForWindowActive(m_parent.get()));
    }
    void cleanup()
    {
        m_calc.reset();
        m_parent.reset();
        m_site.reset();
    }

    void fixedMoveProgram()
    {
        // Axis, channel, whether absolute, coordinate, the program's lines between the first and the last.
        const std::tuple<QString, int, bool, float, const char*> rows[] = {
            {"LX", 1, true, 1234.5678F, "N03 G90 G01 LX=1234.57"}, // six significant digits
            {"LX2", 1, false, -7, "N03 G91 G01 LX2=-7"},
            {"U2", 2, true, 12.5F, "N03 G90 G01 U1=12.5"},
            {"V", 2, false, -7, "N02 ARF()\nN03 G91 G01 V=-7"},
            {"Z", 1, true, 12.5F, "N03 G90 G01 Y=12.5"},
            {"PHI", 1, true, 0, "N03 G90 G01 PHI=0"}};
        for (const auto& [axis, channel, absolute, value, program] : rows) {
            auto dialog = fixedMove(axis, 3000, channel);
            const QSignalSpy told(dialog.get(), &FixedMove::message);
            child<QRadioButton>(dialog, absolute ? "rbAbsolute" : "rbRelative")->click();
            child<PoLabel>(dialog, "lblCoord")->setValue(value, 2);
            QTest::mouseClick(child<QPushButton>(dialog, "pbStart"), Qt::LeftButton);
            QCOMPARE(QString(m_site->read("/programs/_fixed.npg")),
                     QString("N01 $%1\n%2 F3000\nN05 M30\n").arg(QString::number(channel), program));
            const QString number = QString(program).section('=', 1);
            const QString line = "[C]Запущено фиксированное перемещение по оси " + axis +
                                 (absolute ? " в координату " + number : " на " + number + " град");
            QCOMPARE(told, (QList<QVariantList>{{line, true}}));
            QVERIFY(dialog->isHidden());
        }
    }

    void fixedMoveRemembers()
    {
        const auto shown = [this](const char* axis) {
            auto dialog = fixedMove(axis);
            return child<PoLabel>(dialog, "lblCoord")->text() +
                   (child<QRadioButton>(dialog, "rbAbsolute")->isChecked() ? " absolute" : " relative");
        };
        QCOMPARE(shown("A"), "0.00 absolute");
        auto dialog = fixedMove("A");
        child<QRadioButton>(dialog, "rbRelative")->click();
        child<PoLabel>(dialog, "lblCoord")->setValue(2.25F, 2);
        const QSignalSpy told(dialog.get(), &FixedMove::message);
        dialog.reset();
        QCOMPARE(told, (QList<QVariantList>{{"[I]Закрыто окно фиксированного перемещения по оси A", false}}));
        QCOMPARE(shown("A"), "2.25 relative");
        QCOMPARE(shown("B"), "0.00 absolute"); // each axis for itself

        // Settings that somebody spoiled: no program may ever move to what is no number.
        for (const char* noise : {"nan", "inf", "1e300", "many"}) {
            QSettings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat)
                .setValue("B/FM_Coord", QString(noise));
            QCOMPARE(shown("B"), "0.00 absolute");
        }
    }

    void fixedMoveButton()
    {
        auto dialog = fixedMove("A");
        QCOMPARE(child<QLabel>(dialog, "lblUnit")->text(), "град");
        auto* coord = child<PoLabel>(dialog, "lblCoord");
        for (const bool enter : {true, false}) {
            typeNext(enter ? "12,345-" : "99", enter);
            QTest::mouseClick(coord, Qt::LeftButton);
            QCOMPARE(coord->text(), "-12.35");
            QCOMPARE(coord->value(), -12.345F);
        }

        // Without the folder no program, so no command: the closed link would have told of one.
        QVERIFY(QDir(site().path("/programs")).removeRecursively());
        const QSignalSpy told(dialog.get(), &FixedMove::message);
        DebugLines::collect();
        child<QPushButton>(dialog, "pbStart")->click();
        qInstallMessageHandler(nullptr);
        QCOMPARE(DebugLines::count("DriveTCPthread"), 0);
        QCOMPARE(told.size(), 2); // the press, and what came of it
        QCOMPARE(told[1][0].toString(), "[A]Файл /programs/_fixed.npg не записан, программа не запущена");
    }

    void presetSpeeds()
    {
        int number = 0;
        for (const int speed : {23, 45, 90, 225, 450, 900}) { // what is shown is what is taken
            Selector selector("C", "град", speeds, "Своя", 0, m_parent.get());
            QCOMPARE(QApplication::activePopupWidget(), &selector);
            QCOMPARE(selector.pos(), QPoint(300, 200 + 60 + 1));
            ++number;
            QTimer::singleShot(0, &selector, [&] { touch(&selector, QString("lblSpeed%1").arg(number)); });
            QCOMPARE(selector.exec(), int(QDialog::Accepted));
            QCOMPARE(selector.value(), float(speed));
            QVERIFY(!QApplication::activePopupWidget());
        }
    }

    void highlightFollowsThePointer()
    {
        Selector selector("C", "град", speeds, "Своя", 0, m_parent.get());
        const auto lit = [&] {
            QStringList names;
            for (QLabel* label : selector.findChildren<QLabel*>()) {
                if (label->palette().color(QPalette::Window) == QColor(65, 121, 205))
                    names += label->objectName();
            }
            return names.join(' ');
        };
        for (const char* name : {"lblSpeed2", "lblFree"}) {
            const auto* label = selector.findChild<QLabel*>(name);
            QTest::mouseMove(selector.windowHandle(), label->mapTo(&selector, label->rect().center()));
            QTRY_COMPARE(lit(), QString(name));
        }
        QTest::mouseMove(selector.windowHandle(), QPoint(1, 1)); // the background
        QTRY_COMPARE(lit(), QString());
    }

    void freeSpeed()
    {
        const std::tuple<const char*, bool, float> rows[] = {
            {"12,5", true, 12.5F}, {"0", true, 0.1F}, {"901", true, 900.F}, {"5", false, 0.F}};
        for (const auto& [keys, enter, speed] : rows) {
            Selector selector("C", "град", speeds, "Своя", 0, m_parent.get());
            const QSignalSpy told(&selector, &Selector::message);
            QCOMPARE(selector.findChild<QLabel*>("lblFree")->text(), "Своя");
            whenOpen<Numpad>([&, keys = keys, enter = enter](Numpad* pad) {
                QVERIFY2(!pad->findChild<QPushButton*>("pbSign")->isEnabled(), "no speed is negative");
                typeNext(keys, enter);
            });
            QTimer::singleShot(0, &selector, [&] { touch(&selector, "lblFree"); });
            QCOMPARE(selector.exec(), int(enter ? QDialog::Accepted : QDialog::Rejected));
            QCOMPARE(selector.value(), speed);
            QCOMPARE(told.size(), enter ? 1 : 0);
        }
    }

    void edges()
    {
        m_parent->setGeometry(1800, 1100, 100, 60);
        Selector selector("C", "град", speeds, QString(), 0, m_parent.get());
        QVERIFY(QRect(0, 0, panelWidth, panelHeight).contains(selector.geometry()));
        for (const auto& [value, kept] : {std::pair{-3.F, 1.F}, {4.F, 4.F}, {20.F, 10.F}}) {
            selector.range(1, 10, value);
            QCOMPARE(selector.value(), kept);
        }
        const QByteArray told =
            deathOf([&] { Selector("C", "град", speeds.mid(1), QString(), 0, m_parent.get()); });
        QVERIFY2(told.contains("ASSERT: \"nl.size() == 6\""), told.constData());
    }

    void calculatorTyped()
    {
        open();
        QCOMPARE(rates(), "600.0 20.0 360.0 100.0"); // what does not fit together stays so
        const std::tuple<const char*, const char*, const char*> rows[] = {
            {"lblLinRate1", "600", "600.0 36.0 687.5 100.0"},
            {"LinRate1", "9999", "2400.0 144.0 2750.2 100.0"},
            {"lblLinRate1", "0", "1.0 0.1 1.1 100.0"},
            {"lblLinRate2", "36", "600.0 36.0 687.5 100.0"},
            {"lblLinRate2", "0", "16.7 1.0 19.1 100.0"},
            {"LinRate2", "1001", "16666.7 1000.0 19098.6 100.0"}, // a result is not clamped
            {"lblAngleRate", "360", "314.2 18.8 360.0 100.0"},
            {"AngleRate", "1801", "1570.8 94.2 1800.0 100.0"},
            {"lblAngleRate", "0", "0.0 0.0 0.0 100.0"},
            {"AngleRate", "360", "314.2 18.8 360.0 100.0"},
            {"lblDiam", "50", "157.1 9.4 360.0 50.0"}, // the angular speed stays
            {"Diam", "6001", "18849.6 1131.0 360.0 6000.0"},
            {"Diam", "0", "0.0 0.0 360.0 0.0"},
        };
        for (const auto& [label, keys, result] : rows) {
            whenOpen<Numpad>([diameter = strstr(label, "Diam"), keys = keys](Numpad* pad) {
                QVERIFY(pad->window()->windowTitle().startsWith(diameter ? "D, мм" : "V, "));
                typeNext(keys);
            });
            press(label);
            QCOMPARE(rates(), result);
        }
    }

    void calculatorStepped()
    {
        // KEY=VALUE of the settings, touches, result.
        const std::tuple<QString, QString, const char*> rows[] = {
            {"", "LinRate1Plus", "601.0 36.1 688.7 100.0"},
            {"", "LinRate1Minus", "599.0 35.9 686.4 100.0"},
            {"", "LinRate2Plus LinRate2Plus LinRate2Minus", "350.0 21.0 401.1 100.0"},
            {"", "AngleRatePlus", "315.0 18.9 361.0 100.0"},
            {"", "AngleRateMinus", "313.3 18.8 359.0 100.0"},
            {"", "DiamPlus", "317.3 19.0 360.0 101.0"},
            {"", "DiamMinus", "311.0 18.7 360.0 99.0"},
            {"LinRate1=1.5", "LinRate1Minus", "1.0 0.1 1.1 100.0"},
            {"LinRate2=999.5", "LinRate2Plus", "16666.7 1000.0 19098.6 100.0"},
            {"AngleRate=0.5", "AngleRateMinus", "0.0 0.0 0.0 100.0"},
            {"Diam=6000", "DiamPlus", "18849.6 1131.0 360.0 6000.0"},
            // No part at all: what is no speed is shown as such, and a touch leads back from it.
            {"Diam=0", "LinRate1Plus", "601.0 36.1 inf 0.0"},
            {"Diam=0", "LinRate1Plus DiamPlus", "inf inf inf 1.0"},
            {"Diam=0", "LinRate1Plus DiamPlus AngleRateMinus", "15.7 0.9 1800.0 1.0"},
            {"Diam=0", "LinRate1Plus DiamMinus LinRate1Minus", "1.0 0.1 inf 0.0"},
            {"LinRate1=inf", "LinRate2Minus", "316.7 19.0 362.9 100.0"},
            {"Diam=nan", "DiamPlus", "317.3 19.0 360.0 101.0"},
        };
        for (const auto& [kept, buttons, result] : rows) {
            m_calc.reset();
            QSettings settings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
            settings.clear();
            settings.setValue("RateCalc/" + kept.section('=', 0, 0), kept.section('=', 1));
            settings.sync();
            open();
            for (const QString& button : buttons.split(' '))
                press("pb" + button);
            QCOMPARE(rates(), result);
        }
        const QString left = rates();
        m_calc.reset();
        open();
        QCOMPARE(rates(), left); // it stays as it was left
    }

private:
    void open() { m_calc = std::make_unique<RateCalc>(m_parent.get()); }
    void press(const QString& name) const
    {
        QTest::mouseClick(m_calc->findChild<QWidget*>(name), Qt::LeftButton);
    }
    QString rates() const
    {
        QStringList texts;
        for (const char* name : {"lblLinRate1", "lblLinRate2", "lblAngleRate", "lblDiam"})
            texts << m_calc->findChild<QLabel*>(name)->text();
        return texts.join(' ');
    }
    template <class T>
    static T* child(const std::unique_ptr<FixedMove>& dialog, const char* name)
    {
        return dialog->findChild<T*>(name);
    }
    static void touch(Selector* selector, const QString& name)
    {
        const auto* label = selector->findChild<QLabel*>(name);
        QTest::mousePress(selector, Qt::LeftButton, {}, label->mapTo(selector, label->rect().center()));
    }
    std::unique_ptr<FixedMove> fixedMove(const QString& name, int speed = 10, int channel = 1)
    {
        return std::make_unique<FixedMove>(name, "град", &m_link, speed, channel, m_parent.get());
    }
    const QList<float> speeds{22.5F, 45, 90, 225, 450, 900};
    std::unique_ptr<SiteFixture> m_site;
    std::unique_ptr<QWidget> m_parent;
    std::unique_ptr<RateCalc> m_calc;
    DriveTCPthread m_link; // closed
};

QTEST_MAIN(TestSelector)
#include "test_selector.moc"
