#include "comparetext.h"
#include "nextdialog.h"
#include "ratecalc.h"
#include "sitefixture.h"
#include "widgets.h"

#include <QSettings>

// The calculator of speeds.
class TestCalc : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_site = std::make_unique<SiteFixture>();
        m_parent = std::make_unique<QWidget>();
        m_parent->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_parent.get()));
        open();
        QCOMPARE(shown(), "600.0 20.0 360.0 100.0"); // what does not fit together stays so
    }
    void cleanup()
    {
        m_calc.reset();
        m_parent.reset();
        m_site.reset();
    }

    void typed()
    {
        const struct
        {
            const char* label;
            const char* keys;
            const char* result;
        } rows[] = {
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
        for (const auto& row : rows) {
            whenOpen<Numpad>([&row](Numpad* pad) {
                QVERIFY(pad->window()->windowTitle().startsWith(QString(row.label).contains("Diam") ? "D, мм"
                                                                                                    : "V, "));
                typeNext(row.keys);
            });
            touch(row.label);
            QCOMPARE(shown(), row.result);
        }
    }

    void stepped()
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
                touch("pb" + button);
            QCOMPARE(shown(), result);
        }
        const QString left = shown();
        m_calc.reset();
        open();
        QCOMPARE(shown(), left); // it stays as it was left
    }

private:
    void open() { m_calc = std::make_unique<RateCalc>(m_parent.get()); }
    void touch(const QString& name) const
    {
        QTest::mouseClick(m_calc->findChild<QWidget*>(name), Qt::LeftButton);
    }
    QString shown() const
    {
        QStringList texts;
        for (const char* name : {"lblLinRate1", "lblLinRate2", "lblAngleRate", "lblDiam"})
            texts << m_calc->findChild<QLabel*>(name)->text();
        return texts.join(' ');
    }

    std::unique_ptr<SiteFixture> m_site;
    std::unique_ptr<QWidget> m_parent;
    std::unique_ptr<RateCalc> m_calc;
};

QTEST_MAIN(TestCalc)
#include "test_calc.moc"
