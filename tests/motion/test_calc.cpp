#include "ratecalc.h"
#include "sitefixture.h"
#include "widgets.h"

#include <QPushButton>
#include <QSettings>
#include <QTimer>
#include <QtTest>

// The calculator of speeds.
class TestCalc : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void typed_data();
    void typed();
    void stepped_data();
    void stepped();
    void staysAsItWasLeft();

private:
    void open() { m_calc = std::make_unique<RateCalc>(m_parent.get()); }
    void keep(const char* key, const char* value) const
    {
        QSettings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat)
            .setValue(QString("RateCalc/") + key, QString(value));
    }
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

void TestCalc::init()
{
    m_site = std::make_unique<SiteFixture>();
    m_parent = std::make_unique<QWidget>();
    m_parent->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_parent.get()));
    open();
    QCOMPARE(shown(), QStringLiteral("600.0 20.0 360.0 100.0")); // what does not fit together stays so
}

void TestCalc::cleanup()
{
    m_calc.reset();
    m_parent.reset();
    m_site.reset();
}

void TestCalc::typed_data()
{
    QTest::addColumn<QString>("label");
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("result");
    const auto row = [](const char* label, const char* keys, const char* result) {
        QTest::addRow("%s %s", label, keys) << label << keys << result;
    };
    row("lblLinRate1", "600", "600.0 36.0 687.5 100.0");
    row("LinRate1", "600", "600.0 36.0 687.5 100.0");
    row("lblLinRate1", "9999", "2400.0 144.0 2750.2 100.0");
    row("lblLinRate1", "0", "1.0 0.1 1.1 100.0");
    row("lblLinRate2", "36", "600.0 36.0 687.5 100.0");
    row("lblLinRate2", "0", "16.7 1.0 19.1 100.0");
    row("LinRate2", "1001", "16666.7 1000.0 19098.6 100.0"); // a result is not clamped
    row("lblAngleRate", "360", "314.2 18.8 360.0 100.0");
    row("AngleRate", "1801", "1570.8 94.2 1800.0 100.0");
    row("lblAngleRate", "0", "0.0 0.0 0.0 100.0");
    row("lblDiam", "50", "157.1 9.4 360.0 50.0"); // the angular speed stays
    row("Diam", "6001", "18849.6 1131.0 360.0 6000.0");
    row("Diam", "0", "0.0 0.0 360.0 0.0");
}

void TestCalc::typed()
{
    QFETCH(QString, label);
    QFETCH(QString, keys);
    QTimer::singleShot(0, this, [&] {
        auto* pad = QApplication::activeModalWidget()->findChild<QDialog*>(QStringLiteral("Numpad"));
        QVERIFY(pad && pad->window()->windowTitle().startsWith(label.contains("Diam") ? "D, мм" : "V, "));
        QTest::keyClicks(pad, keys);
        QTest::keyClick(pad, Qt::Key_Enter);
    });
    touch(label);
    QTEST(shown(), "result");
}

void TestCalc::stepped_data()
{
    QTest::addColumn<QString>("kept"); // KEY=VALUE
    QTest::addColumn<QStringList>("buttons");
    QTest::addColumn<QString>("result");
    const auto row = [](const char* kept, const char* buttons, const char* result) {
        QTest::addRow("%s %s", kept, buttons) << kept << QString(buttons).split(' ') << result;
    };
    row("", "pbLinRate1Plus", "601.0 36.1 688.7 100.0");
    row("", "pbLinRate1Minus", "599.0 35.9 686.4 100.0");
    row("", "pbLinRate2Plus pbLinRate2Plus pbLinRate2Minus", "350.0 21.0 401.1 100.0");
    row("", "pbAngleRatePlus", "315.0 18.9 361.0 100.0");
    row("", "pbAngleRateMinus", "313.3 18.8 359.0 100.0");
    row("", "pbDiamPlus", "317.3 19.0 360.0 101.0");
    row("", "pbDiamMinus", "311.0 18.7 360.0 99.0");
    row("LinRate1=1.5", "pbLinRate1Minus", "1.0 0.1 1.1 100.0");
    row("LinRate2=999.5", "pbLinRate2Plus", "16666.7 1000.0 19098.6 100.0");
    row("AngleRate=0.5", "pbAngleRateMinus", "0.0 0.0 0.0 100.0");
    row("Diam=6000", "pbDiamPlus", "18849.6 1131.0 360.0 6000.0");
    // No part at all: what is no speed is shown as such, and a touch leads back from it.
    row("Diam=0", "pbLinRate1Plus", "601.0 36.1 inf 0.0");
    row("Diam=0", "pbLinRate1Plus pbDiamPlus", "inf inf inf 1.0");
    row("Diam=0", "pbLinRate1Plus pbDiamPlus pbAngleRateMinus", "15.7 0.9 1800.0 1.0");
    row("Diam=0", "pbLinRate1Plus pbDiamMinus pbLinRate1Minus", "1.0 0.1 inf 0.0");
}

void TestCalc::stepped()
{
    QFETCH(QString, kept);
    QFETCH(QStringList, buttons);
    m_calc.reset();
    if (!kept.isEmpty())
        keep(qPrintable(kept.section('=', 0, 0)), qPrintable(kept.section('=', 1)));
    open();
    for (const QString& button : qAsConst(buttons))
        touch(button);
    QTEST(shown(), "result");
}

void TestCalc::staysAsItWasLeft()
{
    touch("pbLinRate1Plus");
    const QString left = shown();
    m_calc.reset();
    open();
    QCOMPARE(shown(), left);
    m_calc.reset();
    for (const char* noise : {"inf", "nan"})
        keep(*noise == 'i' ? "LinRate1" : "Diam", noise);
    open();
    QCOMPARE(shown(), QStringLiteral("600.0 36.1 688.7 100.0"));
}

QTEST_MAIN(TestCalc)
#include "test_calc.moc"
