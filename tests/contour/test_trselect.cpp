#include "trselect.h"

#include "contourfixture.h"

#include <limits>

// The raster dialog on its own: its numbers, their bounds and what it hands over.
class TestTRSelect : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_dialog = std::make_unique<TRSelect>(&m_parent); }

    void numbers()
    {
        struct
        {
            const char *label, *up, *down; // after three steps up from zero, and four down from there
            const char *typed, *taken;
        } const rows[] = {{"TRamplX", "0.30", "-0.10", "12.345", "12.35"},
                          {"TRamplY", "0.30", "-0.10", "-101", "-100.00"},
                          {"TRangle", "3", "0", "361", "360"},
                          {"TRfreq", "3.0", "0.0", "1001", "1000.0"},
                          {"TRshiftX", "0.30", "-0.10", "-100.5", "-100.00"},
                          {"TRshiftY", "0.30", "-0.10", "100.5", "100.00"},
                          {"TRparam0", "3", "-1", "101", "100"}};
        for (const auto& row : rows) {
            for (int i = 0; i < 3; ++i)
                button(QString(row.label) + "Plus")->click();
            QCOMPARE(label(row.label)->text(), row.up);
            for (int i = 0; i < 4; ++i)
                button(QString(row.label) + "Minus")->click();
            QCOMPARE(label(row.label)->text(), row.down);
            Answers answers({Answers::number(row.typed)});
            QTest::mouseClick(label(row.label), Qt::LeftButton);
            QVERIFY(answers.allGiven());
            QCOMPARE(label(row.label)->text(), row.taken);
        }
    }

    void typeFromTheMenu()
    {
        const QStringList names = TRSelect::typeNames();
        QCOMPARE(names.size(), 18);
        QCOMPARE(label("TRamplX")->text(), "0.00");
        for (const int entry : {17, 0, 9, -1}) {
            const int type = entry < 0 ? 9 : entry;
            Answers answers({Answers::entry(entry)});
            button("TRtype")->click();
            QCOMPARE(m_dialog->type(), type);
            QCOMPARE(button("TRtype")->text(), names[type]);
        }
    }

    void choices()
    {
        const std::pair<const char*, int> choices[] = {{"pbOn", 1}, {"pbOff", 2}, {"pbClear", 0}};
        for (const auto& [name, choice] : choices) {
            init();
            button(name)->click();
            QCOMPARE(m_dialog->result(), int(QDialog::Accepted));
            QCOMPARE(int(m_dialog->choice()), choice);
        }
    }

    void settingsComeBack()
    {
        Raster raster{Raster::On, 12, -99.99f, 0.01f, 359, 0, 5.5f, -5.5f, -7, 1};
        const auto back = [&] {
            m_dialog->setRaster(raster);
            return TRSelect::summary(m_dialog->raster());
        };
        QCOMPARE(back(), "Звезда №2; -99.99x0.01; 359; 0; 5.50x-5.50; -7; 1");
        QCOMPARE(m_dialog->raster().ampX, raster.ampX);
        raster.kind = Raster::Off; // a raster that is not on starts from nothing
        QCOMPARE(back(), "Точка; 0.00x0.00; 0; 0; 0.00x0.00; 0; 0");
        raster = {Raster::On, 99, std::numeric_limits<float>::quiet_NaN(), 1e30f, -5, 2'000'000'000};
        QCOMPARE(back(), "; 0.00x100.00; 0; 1000; 0.00x0.00; 0; 0");
    }

    void targetsAreLargeEnough()
    {
        for (const QAbstractButton* target : m_dialog->findChildren<QAbstractButton*>()) {
            QVERIFY2(target->height() >= 56 && target->width() >= 56, qPrintable(target->objectName()));
            const QSize text = target->fontMetrics().size(0, target->text());
            QVERIFY2(text.width() < target->width() && text.height() < target->height(),
                     qPrintable(target->objectName()));
        }
    }

private:
    QAbstractButton* button(const QString& name) const { return m_dialog->findChild<QAbstractButton*>(name); }
    QLabel* label(const char* name) const { return m_dialog->findChild<QLabel*>(name); }

    SiteFixture m_site;
    QWidget m_parent;
    std::unique_ptr<TRSelect> m_dialog;
};

QTEST_MAIN(TestTRSelect)

#include "test_trselect.moc"
