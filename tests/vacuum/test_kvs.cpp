#include "deathtest.h"
#include "lockview.h"
#include "vacuumcontroller.h"
#include "widgets.h"

#include <QSettings>
#include <QSignalSpy>

namespace {

// The reasons that the controllers can give, from the interlock lists of the installation: field of the
// datagram, bit, key, and what the operator reads.
const struct
{
    const char* field;
    int bit;
    const char* key;
    const char* locked;
    const char* free;
} causes[] = {
    // clang-format off
    {"NL1LockOn", 0, "NL1:lockVP7", "Клапан VP7 не закрыт", "Клапан VP7 закрыт"},
    {"NL1LockOn", 1, "NL1:lockDisch", "Недостаточный проток ОЖ", "Проток ОЖ в норме"},
    {"NL1LockOff", 0, "NL1:lockVP2", "Клапан VP2 не закрыт", "Клапан VP2 закрыт"},
    {"NL1LockOff", 1, "NL1:lockNZ1", "Насос NZ1 не выключен", "Насос NZ1 выключен"},
    {"NL2LockOn", 0, "NL2:lockVP6", "Клапан VP6 не закрыт", "Клапан VP6 закрыт"},
    {"NL2LockOff", 0, "NL2:lockVP3", "Затвор VP3 не закрыт", "Затвор VP3 закрыт"},
    {"NL2LockOff", 1, "NL2:lockVP5", "Клапан VP5 не закрыт", "Клапан VP5 закрыт"},
    {"NL2LockOff", 2, "NL2:lockNZ2", "Насос NZ2 не выключен", "Насос NZ2 выключен"},
    {"NZ1LockOn", 0, "NZ1:lockPress", "Недостаточное давление в магистрали", "Давление в магистрали в норме"},
    {"NZ1LockOff", 0, "NZ1:lockVP2", "Клапан VP2 не закрыт", "Клапан VP2 закрыт"},
    {"NZ2LockOn", 0, "NZ2:lockPress", "Недостаточное давление в магистрали", "Давление в магистрали в норме"},
    {"NZ2LockOn", 1, "NZ2:lockDisch", "Недостаточный проток ОЖ", "Проток ОЖ в норме"},
    {"NZ2LockOff", 0, "NZ2:lockVP3", "Затвор VP3 не закрыт", "Затвор VP3 закрыт"},
    {"NZ2LockOff", 1, "NZ2:lockVP5", "Клапан VP5 не закрыт", "Клапан VP5 закрыт"},
    {"ND1LockOn", 0, "ND1:lockPress", "Недостаточное давление в насосе", "Давление в насосе в норме"},
    {"ND1LockOn", 1, "ND1:lockVP2", "Клапан VP2 не открыт", "Клапан VP2 открыт"},
    {"ND1LockOn", 2, "ND1:lockNL1", "Насос NL1 не включен", "Насос NL1 включен"},
    {"ND1LockOn", 3, "ND1:lockDisch", "Недостаточный проток ОЖ", "Проток ОЖ в норме"},
    {"ND1LockOff", 0, "ND1:lockVP1", "Затвор VP1 не закрыт", "Затвор VP1 закрыт"},
    {"VP1LockOn", 0, "VP1:lockPress", "Недостаточное давление в камере", "Давление в камере в норме"},
    {"VP1LockOn", 1, "VP1:lockND1", "Насос ND1 не включен", "Насос ND1 включен"},
    {"VP2LockOn", 0, "VP2:lockPress", "Давление в насосе и в магистрали не выравнено", "Давление в насосе и в магистрали в норме"},
    {"VP2LockOff", 0, "VP2:lockND1", "Насос ND1 не выключен", "Насос ND1 выключен"},
    {"VP3LockOn", 0, "VP3:lockPress", "Давление в камере и в магистрали не выравнено", "Давление в камере и в магистрали в норме"},
    {"VP4LockOn", 0, "VP4:lockDrives", "Приводы не выключены", "Приводы выключены"},
    {"VP4LockOn", 1, "VP4:lockValve", "Затвор VP1 и/или VP3 не закрыт", "Затворы VP1 и VP3 закрыты"},
    {"VP5LockOn", 0, "VP5:lockPress", "Давление в рубашке и в магистрали не выравнено", "Давление в рубашке и в магистрали в норме"},
    {"VP6LockOn", 0, "VP6:lockNL2", "Насос NL2 не выключен", "Насос NL2 выключен"},
    {"VP7LockOn", 0, "VP7:lockNL1", "Насос NL1 не выключен", "Насос NL1 выключен"},
    {"VP8LockOn", 0, "VP8:lockDrives", "Приводы не выключены", "Приводы выключены"},
    {"VP8LockOn", 1, "VP8:lockValve", "Затвор VP1 и/или VP3 не закрыт", "Затворы VP1 и VP3 закрыты"},
    {"DoorLockOn", 0, "DOOR:lockPress", "Нет атмосферы в камере", "Атмосфера в камере"},
    {"DoorLockOff", 0, "DOOR:lockState", "Дверь не закрыта", "Дверь закрыта"},
    {"StateLocks", 0, "VPT:lockTMN", "ТМН не выключен", ""},
    {"StateLocks", 1, "VE1:lockShuk", "Нет разрешения от ШУК", ""},
    {"StateLocks", 2, "VE1:lockAcc", "Ускоряющее не выключено", ""},
    {"StateLocks", 3, "TMN:lockVPT", "VPT не открыт", "VPT открыт"},
    {"StateLocks", 4, "TMN:lockPress", "Недостаточное давление", "Давление в норме"},
    // clang-format on
};

QStringList words(const char* list)
{
    return QString::fromUtf8(list).split(' ');
}

const QColor valid(0, 128, 255), invalid(255, 32, 0);

} // namespace

// The panel in front of both controllers: what it makes of their telemetry.
class TestKvs : public PanelFixture
{
    Q_OBJECT

private slots:
    // The rows of a table share a panel: each link takes its time to end.
    void init()
    {
        if (!m_panel)
            begin();
    }
    void cleanup()
    {
        if (!QTest::currentDataTag())
            end();
    }
    void lockWords_data();
    void lockWords();
    void wordsWithoutReasons();
    void sharedWord();
    void readings();
    void elements();
    void pictures_data();
    void pictures();
    void journal_data();
    void journal();
    void statesThatDoNotExist();
    void pressures();
    void validity();
    void water_data();
    void water();
    void limitsFromSettings();
    void linksLostAndBack();
    void connectedBeforeAnyoneListens();

private:
    bool shows(const QString& sprite, const QString& image) const
    {
        const QPixmap expected(QStringLiteral(":/images/%1.png").arg(image));
        return !expected.isNull() &&
               w<PoSprite>(sprite)->pixmap(Qt::ReturnByValue).toImage() == expected.toImage();
    }
    void tell(const QString& field, double value)
    {
        const bool kvs = std::any_of(m_kvs->wire.fields.begin(), m_kvs->wire.fields.end(),
                                     [&](const vacuumwire::Field& f) { return f.name == field; });
        kvs ? tellKvs({{field, value}}) : tellKvk({{field, value}});
    }
};

void TestKvs::lockWords_data()
{
    QTest::addColumn<QString>("field");
    for (const auto& cause : causes) {
        const QString field = cause.field;
        if (cause.bit == 0 && field != "StateLocks")
            QTest::newRow(cause.field) << field;
    }
}

// Each bit alone sets its own reason; any bit forbids the command, one without a reason too.
void TestKvs::lockWords()
{
    QFETCH(QString, field);
    const int at = field.indexOf("Lock");
    const QString summary = field.left(at).toUpper() + ":" + field.mid(at);
    for (int bit : {0, 1, 2, 3, 17}) {
        tell(field, 1 << bit);
        QVERIFY(m_panel->lock(summary)->state());
        QCOMPARE(m_panel->element(summary)->numberVal(), 1 << bit);
        for (const auto& cause : causes) {
            const Lock* lock = m_panel->lock(cause.key);
            QCOMPARE(lock->state(), field == cause.field && bit == cause.bit);
            QCOMPARE(lock->text(true), QString::fromUtf8(cause.locked));
            QCOMPARE(lock->text(false), QString::fromUtf8(cause.free));
        }
    }
    tell(field, -1);
    tell(field, 0);
    for (const auto& cause : causes)
        QVERIFY(!m_panel->lock(cause.key)->state());
    QVERIFY(!m_panel->lock(summary)->state());
}

void TestKvs::wordsWithoutReasons()
{
    for (const char* word : {"NW2:LockOn", "NW2:LockOff", "VP1:LockOff", "VP3:LockOff", "VP4:LockOff",
                             "VP5:LockOff", "VP6:LockOff", "VP7:LockOff", "VP8:LockOff"}) {
        tell(QString(word).remove(':'), -1);
        QVERIFY(!m_panel->lock(word)->state());
        QCOMPARE(m_panel->element(word)->numberVal(), 0);
    }
    QVERIFY(deathOf([this] { m_panel->element("NW1:Power"); }).contains("i != m_Elements.end()"));
    QVERIFY(deathOf([this] { m_panel->lock("NL1"); }).contains("i != m_locks.end()"));
    QVERIFY(
        deathOf([this] { m_panel->addLock("NL1:LockOn", false, "", ""); }).contains("i == m_locks.end()"));
}

void TestKvs::sharedWord()
{
    for (uint word = 0; word < 64; ++word) {
        m_panel->changedLocksELA(word);
        const QList<bool> bits = {bool(word & 1), bool(word & 2), bool(word & 4), bool(word & 8),
                                  bool(word & 16)};
        for (const auto& cause : causes) {
            if (cause.field == QLatin1String("StateLocks"))
                QCOMPARE(m_panel->lock(cause.key)->state(), bits[cause.bit]);
        }
        const std::pair<const char*, bool> summaries[] = {
            {"VPT:LockOn", false},    {"VPT:LockOff", bits[0]},           {"VE1:LockOn", bits[1]},
            {"VE1:LockOff", bits[2]}, {"TMN:LockOn", bits[3] || bits[4]}, {"TMN:LockOff", false}};
        for (const auto& [key, locked] : summaries)
            QCOMPARE(m_panel->lock(key)->state(), locked);
    }
    m_panel->lock("VPT:LockOn")->setState(true);
    tell("StateLocks", 8);
    QVERIFY(!m_panel->lock("VPT:LockOn")->state());
    QVERIFY(m_panel->lock("TMN:LockOn")->state());
}

// Every reading of a datagram, all different, at its place.
void TestKvs::readings()
{
    int value = 0;
    for (const char* pump : {"NL1", "NL2", "NZ1", "NZ2", "ND1", "NW2"})
        m_kvs->put({{QString(pump) + "Power", ++value}, {QString(pump) + "Thermal", ++value}});
    for (const char* sensor : {"Disch", "Temp"}) {
        for (int i = 1; i <= 7; ++i)
            m_kvs->put({{sensor + QString::number(i), ++value + 0.5}});
    }
    tellKvs({{"TempOilND", 181.26}, {"TempCorpND", 44.04}});
    value = 0;
    for (const char* pump : {"NL1", "NL2", "NZ1", "NZ2", "ND1", "NW2"}) {
        QCOMPARE(m_panel->element(QString(pump) + ":Power")->numberVal(), ++value);
        ++value;
        if (qstrcmp(pump, "NW2") != 0)
            QCOMPARE(m_panel->element(QString(pump) + ":Thermal")->numberVal(), value);
    }
    for (const char* sensor : {"Discharge0", "Temp0"}) {
        for (int i = 1; i <= 7; ++i) {
            const LenzeElement* element = m_panel->element(sensor + QString::number(i));
            QCOMPARE(element->sensorVal(), float(++value) + 0.5F);
            QVERIFY(element->isVariable() && element->dec() == 1);
            const QString label = sensor[0] == 'D' ? "W%1disch" : "T%1temp";
            QCOMPARE(w<PoLabel>(label.arg(i))->text(), QString::number(value + 0.5, 'f', 1));
        }
    }
    QCOMPARE(w<PoLabel>("ND1temp")->text(), QStringLiteral("181.3"));
    QCOMPARE(w<PoLabel>("ND1CorpTemp")->text(), QStringLiteral("44.0"));
    QSignalSpy spiral(m_panel.get(), &KVS::signalChangedSpiralLock);
    QSignalSpy shutdown(m_panel.get(), &KVS::signalChangedShutdownLock);
    tellKvk({{"TMNFreq", 832.6}, {"SpiralLock", 1}});
    QCOMPARE(spiral.takeFirst()[0].toBool(), true);
    QCOMPARE(shutdown.takeFirst()[0].toBool(), false);
    QCOMPARE(w<PoLabel>("FreqTMN")->text(), QStringLiteral("833"));
}

// The first value is told although it equals the zero that stood there; after that changes only.
void TestKvs::elements()
{
    LenzeElement element("NL1:Power", LenzeElement::Number, 0);
    QStringList told;
    connect(&element, qOverload<const LenzeElement*, int>(&LenzeElement::numberValChanged), this,
            [&told](const LenzeElement* from, int value) { told << from->name() + QString::number(value); });
    QSignalSpy sensor(&element, qOverload<float>(&LenzeElement::sensorValChanged));
    for (int value : {0, 0, 3, 3, 0})
        element.setNumberVal(value);
    for (float value : {0.0F, 0.0F, 1.5F})
        element.setSensorVal(value);
    QCOMPARE(told, QStringList({"NL1:Power0", "NL1:Power3", "NL1:Power0"}));
    QCOMPARE(sensor.count(), 2);
}

void TestKvs::pictures_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("stem");
    const std::pair<const char*, const char*> stems[] = {{"NL1 NL2", "NL"}, {"NZ1 NZ2", "NZ"},
                                                         {"ND1", "ND"},     {"NW2", "NW2"},
                                                         {"VP1", "VT"},     {"VP2 VP3 VP4 VP5 VP8", "vv"},
                                                         {"VP6 VP7", "vh"}, {"VPT", "vh"},
                                                         {"TMN", "TMN"},    {"VE1", "VE"}};
    for (const auto& [sprites, stem] : stems) {
        for (const QString& sprite : words(sprites))
            QTest::newRow(qPrintable(sprite)) << sprite << stem;
    }
}

void TestKvs::pictures()
{
    QFETCH(QString, field);
    QFETCH(QString, stem);
    const QString sprite = field;
    if (field == "VPT" || field == "TMN")
        field.prepend("State");
    else
        field = field == "VE1" ? "StateVE" : field + "State";
    QVERIFY(shows(sprite, stem + "_0"));
    const char* const suffixes[] = {"_1", "_23", "_23", "_4", "_0"};
    for (int state : {1, 2, 3, 4, 0}) {
        tell(field, state);
        QVERIFY(shows(sprite, stem + suffixes[(state + 4) % 5]));
    }
    tell(field, -1); // no data: the three behind BKU keep what they show
    QVERIFY(shows(sprite, stem + (field.startsWith("State") ? "_0" : "_4")));
}

void TestKvs::journal_data()
{
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("pump");
    const std::tuple<const char*, const char*, bool> rows[] = {
        {"NL1State", "Форвакуумный насос NL1", true},
        {"NL2State", "Форвакуумный насос NL2", true},
        {"NZ1State", "Двухроторный насос NZ1", true},
        {"NZ2State", "Двухроторный насос NZ2", true},
        {"ND1State", "Диффузионный насос ND1", true},
        {"NW2State", "Повысительный насос NW2", true},
        {"StateTMN", "Турбомолекулярный насос ТМН", true},
        {"VP1State", "Затвор VP1", false},
        {"VP2State", "Клапан VP2", false},
        {"VP3State", "Затвор VP3", false},
        {"VP4State", "Клапан напуска VP4", false},
        {"VP5State", "Клапан VP5", false},
        {"VP6State", "Клапан напуска VP6", false},
        {"VP7State", "Клапан напуска VP7", false},
        {"VP8State", "Клапан напуска VP8", false},
        {"StateVPT", "Клапан напуска ТМН", false},
        {"StateVE", "Шибер ТМН", false},
    };
    for (const auto& [field, name, pump] : rows)
        QTest::newRow(field) << field << QString::fromUtf8(name) << pump;
}

void TestKvs::journal()
{
    QFETCH(QString, field);
    QFETCH(QString, name);
    QFETCH(bool, pump);
    tell(field, 0);
    takeLines();
    for (int state : {1, 2, 3, 0, 4, -1})
        tell(field, state);
    QStringList expected = pump ? QStringList{"включен", "выключается", "включается", "выключен"}
                                : QStringList{"открыт", "закрывается", "открывается", "закрыт"};
    for (QString& line : expected)
        line = "[I]" + name + " " + line;
    expected << "[W]" + name + " - ошибка!";
    if (!field.startsWith("State")) // behind BKU no data is no error
        expected << "[W]" + name + " - ошибка!";
    QCOMPARE(takeLines(), expected);
}

void TestKvs::statesThatDoNotExist()
{
    for (const char* device : {"VP1", "ND1"}) {
        QVERIFY(deathOf([&] { w<PoSprite>(device)->changedState(5); }).contains("i != m_mapPixmaps.end()"));
    }
    for (void (KVS::*slot)(int) : {&KVS::changedVPT, &KVS::changedVE1, &KVS::changedTMN}) {
        (m_panel.get()->*slot)(-7);
        QVERIFY(!deathOf([&] { (m_panel.get()->*slot)(5); }).isEmpty());
    }
    tellKvk({{"NP1Power", 1}, {"NW1Power", 1}});
    QVERIFY(shows("NP1", "NP_1") && shows("NW1", "NW_1"));
}

void TestKvs::pressures()
{
    for (int touches = 0; touches < 2; ++touches) { // the form's text stays until there is a reading
        QCOMPARE(w<PoLabel>("PT3")->text(), QStringLiteral("1.0E+05"));
        touch("lblPT3u");
    }
    QSignalSpy unit(m_panel.get(), &KVS::onChangedPressUnit);
    QSignalSpy chamber(m_panel.get(), &KVS::changedChamberPressure);
    QSignalSpy gun(m_panel.get(), &KVS::changedGunPressure);
    const QStringList pascal = {"1.0E+01", "2.0E+02", "3.0E+03", "4.0E+04", "5.0E+05", "6.0E-03"};
    const QStringList torr = {"7.5E-02", "1.5E+00", "2.3E+01", "3.0E+02", "3.8E+03", "4.5E-05"};
    tellKvs({{"PT1", 10}, {"PT2", 200}, {"PT3", 3000}});
    tellKvk({{"PT4", 4e4}, {"PT5", 5e5}, {"PT6", 6e-3}});
    const auto check = [&](bool millimetres) {
        for (int i = 0; i < 6; ++i) {
            QCOMPARE(w<PoLabel>(QStringLiteral("PT%1").arg(i + 1))->text(), (millimetres ? torr : pascal)[i]);
            QCOMPARE(w<PoLabel>(QStringLiteral("lblPT%1u").arg(i + 1))->text(),
                     QString::fromUtf8(millimetres ? "мм.рт.ст." : "Па"));
        }
    };
    check(false);
    bool millimetres = false;
    for (int i = 1; i <= 6; ++i) {
        for (const char* label : {"PT%1", "lblPT%1u"}) {
            touch(QString(label).arg(i));
            millimetres = !millimetres;
            check(millimetres);
            QCOMPARE(unit.takeFirst()[0].toBool(), millimetres);
            QVERIFY(unit.isEmpty());
        }
    }
    touch("PT1");
    m_panel->setPressUnit(2); // no such unit
    check(true);
    const float coefficient = w<PoLabel>("PT6")->coeff();
    quint32 bits;
    memcpy(&bits, &coefficient, sizeof bits);
    QCOMPARE(bits, 0x3BF5C7E8U);
    QCOMPARE(chamber.last()[0].toDouble(), 5e5); // the window gets pascal, whatever is shown here
    QCOMPARE(gun.last()[0].toFloat(), 6e-3F);
}

void TestKvs::validity()
{
    QSignalSpy chamber(m_panel.get(), &KVS::changedChamberPressureValid);
    QSignalSpy gun(m_panel.get(), &KVS::changedGunPressureValid);
    tellKvs({{"PT1Valid", 1}, {"PT2Valid", 1}, {"PT3Valid", 1}});
    tellKvk({{"PT4Valid", 1}, {"PT5Valid", 1}, {"BKUValid", 2}});
    takeLines();
    const char* const fields[] = {"PT1Valid", "PT2Valid", "PT3Valid", "PT4Valid", "PT5Valid", "BKUValid"};
    for (int i = 0; i < 6; ++i) {
        for (const char* label : {"PT%1", "lblPT%1u"})
            QCOMPARE(colour(QString(label).arg(i + 1)), valid);
        tell(fields[i], 0);
        for (const char* label : {"PT%1", "lblPT%1u"})
            QCOMPARE(colour(QString(label).arg(i + 1)), invalid);
        QCOMPARE(takeLines(),
                 QStringList(QStringLiteral("[W]Нарушен обмен с датчиком вакуума PT%1!").arg(i + 1)));
        QCOMPARE(colour(QStringLiteral("PT%1").arg((i + 1) % 6 + 1)), valid);
        tell(fields[i], 1);
        QVERIFY(takeLines().isEmpty());
    }
    QCOMPARE(chamber.last()[0].toBool(), true);
    QCOMPARE(gun.last()[0].toInt(), 1);
    QCOMPARE(gun.first()[0].toInt(), 2);
}

void TestKvs::water_data()
{
    QTest::addColumn<double>("flow");
    QTest::addColumn<double>("celsius");
    QTest::addColumn<int>("w");
    QTest::addColumn<int>("t");
    QTest::newRow("none") << 0.0 << -5.0 << 0 << 1;
    QTest::newRow("below the limits") << 2.9999 << 29.99 << 0 << 1;
    QTest::newRow("at the limits") << 3.0 << 30.0 << 1 << 1;
    QTest::newRow("warm") << 3.0001 << 30.01 << 1 << 2;
    QTest::newRow("at the upper limit") << 50.0 << 50.0 << 1 << 2;
    QTest::newRow("hot") << 50.0 << 50.01 << 1 << 0;
}

void TestKvs::water()
{
    QFETCH(double, flow);
    QFETCH(double, celsius);
    QFETCH(int, w);
    QFETCH(int, t);
    for (int i = 1; i <= 7; ++i) {
        const QString number = QString::number(i);
        // The other six stand at the other end of the scale.
        for (int other = 1; other <= 7; ++other)
            m_kvs->put({{"Disch" + QString::number(other), w ? 0 : 90},
                        {"Temp" + QString::number(other), t == 1 ? 90 : 0}});
        tellKvs({{"Disch" + number, flow}, {"Temp" + number, celsius}});
        for (int other = 1; other <= 7; ++other) {
            QVERIFY(shows("W" + QString::number(other), QStringLiteral("w_%1").arg(other == i ? w : 1 - w)));
            QVERIFY(shows("T" + QString::number(other), QStringLiteral("t_%1").arg(other == i ? t
                                                                                   : t == 1   ? 0
                                                                                              : 1)));
        }
    }
}

void TestKvs::limitsFromSettings()
{
    m_panel.reset();
    {
        QSettings settings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat);
        settings.setValue("Vacuum/TempWarning", 10.5);
        settings.setValue("Vacuum/TempError", "many");
        settings.setValue("Vacuum/MinDischW4", "1e3");
        settings.setValue("Vacuum/MinDischW5", "nan");
    }
    start();
    QCOMPARE(m_panel->getTemperatureState(10.5F), 1);
    QCOMPARE(m_panel->getTemperatureState(10.6F), 2);
    QCOMPARE(m_panel->getTemperatureState(50.1F), 0);
    for (int i = 3; i <= 5; ++i)
        m_kvs->put({{"Disch" + QString::number(i), i == 4 ? 999 : 2}});
    tellKvs({});
    for (int i = 3; i <= 5; ++i)
        QVERIFY(shows("W" + QString::number(i), "w_0"));
}

// Each link has its own colour, and what it told stays on view.
void TestKvs::linksLostAndBack()
{
    const QColor here(255, 255, 192), lost(255, 192, 192);
    const auto colours = [this] {
        return QList<QColor>{m_panel->palette().color(QPalette::Window), colour("Chamber"), colour("Door")};
    };
    QCOMPARE(colours(), (QList<QColor>{here, here, here}));
    QSignalSpy kvs(m_panel.get(), &KVS::onKVSConnected);
    QSignalSpy kvk(m_panel.get(), &KVS::onKVKConnected);
    tellKvs({{"NL1State", 1}, {"PT1", 7}});
    const QSignalSpy regime(m_panel.get(), &KVS::signalChangedMode);
    tellKvk({{"VP4State", 1}, {"AlgNumber", 4}});
    m_kvk->send(frame("Готово"));
    QTRY_VERIFY(!m_lines.isEmpty() && m_lines.last().endsWith("Готово"));
    QVERIFY(m_lines.last().startsWith("- [")); // a line for the file

    m_kvs->peer->close();
    QTRY_COMPARE(colours(), (QList<QColor>{lost, here, here}));
    m_kvk->peer->close();
    QTRY_COMPARE(colours(), (QList<QColor>{lost, lost, lost}));
    QVERIFY(shows("NL1", "NL_1") && shows("VP4", "vv_1"));
    QCOMPARE(w<PoLabel>("PT1")->text(), QStringLiteral("7.0E+00"));

    QElapsedTimer wait;
    wait.start();
    QTRY_VERIFY(m_kvs->server.hasPendingConnections() && m_kvk->server.hasPendingConnections());
    QVERIFY(wait.elapsed() > 500); // a second, less what the end of both links took
    QTRY_COMPARE(colours(), (QList<QColor>{here, here, here}));
    QCOMPARE(kvs.count(), 2);
    QCOMPARE(kvk.count(), 2);
    QVERIFY(m_kvs->accept() && m_kvk->accept());
    takeLines();
    tellKvs({});
    QVERIFY(takeLines().contains(QStringLiteral("[I]Форвакуумный насос NL1 включен"))); // all is told anew
    tellKvk({});
    QCOMPARE(regime.count(), 1); // but not as a new start
}

void TestKvs::connectedBeforeAnyoneListens()
{
    m_kvk.reset();
    QTRY_COMPARE(colour("Door"), QColor(255, 192, 192));
    QSignalSpy kvs(m_panel.get(), &KVS::onKVSConnected);
    QSignalSpy kvk(m_panel.get(), &KVS::onKVKConnected);
    m_panel->onSystemStarted();
    QCOMPARE(kvs.takeLast()[0].toBool(), true);
    QCOMPARE(kvk.takeLast()[0].toBool(), false);
}

QTEST_MAIN(TestKvs)
#include "test_kvs.moc"
