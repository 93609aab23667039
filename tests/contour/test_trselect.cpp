#include "trselect.h"

#include "contourfixture.h"
#include "widgets.h"

#include <limits>

// The raster dialog on its own: its numbers, their bounds and what it hands over.
class TestTRSelect : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void steps();
    void typedNumber();
    void typeFromTheMenu();
    void choices();
    void settingsComeBack();
    void noisySettingsAreBounded();
    void targetsAreLargeEnough();

private:
    QAbstractButton* button(const QString& name) const
    {
        auto* found = m_dialog->findChild<QAbstractButton*>(name);
        Q_ASSERT_X(found, "button", qPrintable(name));
        return found;
    }
    QString shown(const QString& name) const { return m_dialog->findChild<QLabel*>(name)->text(); }

    std::unique_ptr<SiteFixture> m_site;
    std::unique_ptr<QWidget> m_parent;
    std::unique_ptr<TRSelect> m_dialog;
};

void TestTRSelect::init()
{
    m_site = std::make_unique<SiteFixture>();
    m_parent = std::make_unique<QWidget>();
    m_dialog = std::make_unique<TRSelect>(m_parent.get());
}

void TestTRSelect::cleanup()
{
    m_dialog.reset();
    m_parent.reset();
    m_site.reset();
}

void TestTRSelect::steps()
{
    struct
    {
        const char *label, *up, *down; // after three steps up from zero, and four down from there
    } const rows[] = {{"TRamplX", "0.30", "-0.10"},  {"TRamplY", "0.30", "-0.10"},
                      {"TRangle", "3", "0"},         {"TRfreq", "3.0", "0.0"},
                      {"TRshiftX", "0.30", "-0.10"}, {"TRshiftY", "0.30", "-0.10"},
                      {"TRparam0", "3", "-1"}};
    for (const auto& row : rows) {
        for (int i = 0; i < 3; ++i)
            button(QString(row.label) + "Plus")->click();
        QCOMPARE(shown(row.label), QString(row.up));
        for (int i = 0; i < 4; ++i)
            button(QString(row.label) + "Minus")->click();
        QCOMPARE(shown(row.label), QString(row.down));
    }
}

void TestTRSelect::typedNumber()
{
    const char* const rows[][3] = {{"TRamplX", "12.345", "12.35"}, {"TRshiftY", "100.5", "100.00"},
                                   {"TRangle", "361", "360"},      {"TRfreq", "1000", "1000.0"},
                                   {"TRfreq", "1001", "1000.0"},   {"TRparam0", "101", "100"}};
    for (const auto& [label, typed, taken] : rows) {
        Answers answers({Answers::number(typed)});
        QTest::mouseClick(m_dialog->findChild<QLabel*>(label), Qt::LeftButton);
        QVERIFY(answers.allGiven());
        QCOMPARE(shown(label), QString(taken));
    }
}

void TestTRSelect::typeFromTheMenu()
{
    const QStringList names = TRSelect::typeNames();
    QCOMPARE(names.size(), 18);
    QCOMPARE(shown(QStringLiteral("TRamplX")), QStringLiteral("0.00"));
    for (int type : {17, 0, 9}) {
        Answers answers({Answers::entry(type)});
        button(QStringLiteral("TRtype"))->click();
        QCOMPARE(m_dialog->type(), type);
        QCOMPARE(button(QStringLiteral("TRtype"))->text(), names[type]);
    }
    Answers answers({Answers::entry(-1)});
    button(QStringLiteral("TRtype"))->click();
    QCOMPARE(m_dialog->type(), 9);
}

void TestTRSelect::choices()
{
    const std::pair<const char*, int> choices[] = {{"pbOn", 1}, {"pbOff", 2}, {"pbClear", 0}};
    for (const auto& [name, choice] : choices) {
        TRSelect dialog(m_parent.get());
        dialog.findChild<QAbstractButton*>(name)->click();
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QCOMPARE(int(dialog.choice()), choice);
    }
}

void TestTRSelect::settingsComeBack()
{
    Raster raster{Raster::On, 12, -99.99f, 0.01f, 359, 0, 5.5f, -5.5f, -7, 1};
    m_dialog->setRaster(raster);
    const Raster back = m_dialog->raster();
    QCOMPARE(TRSelect::summary(back), QStringLiteral("Звезда №2; -99.99x0.01; 359; 0; 5.50x-5.50; -7; 1"));
    QCOMPARE(back.ampX, raster.ampX);

    raster.kind = Raster::Off; // a raster that is not on starts from nothing
    m_dialog->setRaster(raster);
    QCOMPARE(TRSelect::summary(m_dialog->raster()),
             QStringLiteral("Точка; 0.00x0.00; 0; 0; 0.00x0.00; 0; 0"));
}

void TestTRSelect::noisySettingsAreBounded()
{
    const Raster raster{Raster::On, 99, std::numeric_limits<float>::quiet_NaN(), 1e30f, -5, 2'000'000'000};
    m_dialog->setRaster(raster);
    QCOMPARE(TRSelect::summary(m_dialog->raster()),
             QStringLiteral("; 0.00x100.00; 0; 1000; 0.00x0.00; 0; 0"));
}

void TestTRSelect::targetsAreLargeEnough()
{
    for (const QAbstractButton* target : m_dialog->findChildren<QAbstractButton*>()) {
        QVERIFY2(target->height() >= 56 && target->width() >= 56, qPrintable(target->objectName()));
        const QSize text = target->fontMetrics().size(0, target->text());
        QVERIFY2(text.width() < target->width() && text.height() < target->height(),
                 qPrintable(target->objectName()));
    }
}

QTEST_MAIN(TestTRSelect)

#include "test_trselect.moc"
