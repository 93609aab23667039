#include "drivestate.h"

#include <QtTest>

class TestDriveState : public QObject
{
    Q_OBJECT

private slots:
    void texts_data();
    void texts();
    void wholeTable();
    void virtualAxes();
};

namespace {

const QString linkFault = QStringLiteral("Состояние привода неопределено - ошибка связи");

} // namespace

void TestDriveState::texts_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("text");
    const struct
    {
        int code;
        const char* text;
    } rows[] = {
        {0xA0000, "Communication phase 0"},
        {0xA0012, "Готовность привода и силовой части"},
        {0xA0013, "Готов к подаче питания"},
        {0xA0101, "Режим управления по скорости"},
        {0xA0103, "Режим позиционирования: энкодер 2"},
        {0xA0104, "Position mode lagless: return  encoder 1"}, // the blank is double
        {0xC0285, "Некорректный тип двигателя в настройках привода (параметр P-0-4014)"},
        {0xC0300, "Выполнение задания абсолютного положения по оси..."},
        {0xC1600, "Парковка оси"},
        {0xC5602, "Axis blocked"},
        {0xE2026, "Низкое напряжение в секции питания привода"},
        {0xE8043, "Сработал датчик положительного конечного положения"},
        {0xF2026, "Низкое напряжение в секции питания привода"},
        {0xF2101, "File system structure error on the memory card"},
        {0xF8022, "Энкодер 1: некорректный сигнал энкодера (м.б. сброшено в фазе 2)"},
        {0xF8122, "Секция управления привода повреждена"},
    };
    for (const auto& row : rows)
        QTest::addRow("%X", row.code) << row.code << QString::fromUtf8(row.text);
    // Listed as a link fault, next to listed codes, of a known class, and nothing at all.
    for (int code :
         {0xC0297, 0xF9004, 0xA0014, 0xF2999, 0xA0102 + 0x100000, 0, -1, 0x7fffffff, -0x7fffffff - 1})
        QTest::addRow("fault %X", unsigned(code)) << code << linkFault;
}

void TestDriveState::texts()
{
    QFETCH(int, code);
    QTEST(stateDesc(code), "text");
}

void TestDriveState::wholeTable()
{
    // Every code that five digits can spell: no text is empty, mangled or attached to another class.
    QMap<int, int> known;
    for (int code = 0; code <= 0x100000; ++code) {
        const QString text = stateDesc(code);
        QVERIFY(!text.isEmpty() && text == text.trimmed() && !text.contains(QChar::ReplacementCharacter));
        if (text != linkFault)
            ++known[code >> 16];
    }
    // 602 codes, twelve of them telling of a link fault on purpose.
    QCOMPARE(known, (QMap<int, int>{{0xA, 72}, {0xC, 295 - 6}, {0xE, 80 - 3}, {0xF, 155 - 3}}));
}

void TestDriveState::virtualAxes()
{
    QCOMPARE(virtualStateDesc(0), QStringLiteral("Питание всех приводов виртуальной оси выключено"));
    QCOMPARE(virtualStateDesc(2), QStringLiteral("Виртуальная ось включена"));
    QCOMPARE(virtualStateDesc(4), QStringLiteral("Предупреждение на одном из приводов виртуальной оси"));
    for (int state : {5, -1, 0x7fffffff})
        QCOMPARE(virtualStateDesc(state), linkFault);
}

QTEST_GUILESS_MAIN(TestDriveState)
#include "test_drivestate.moc"
