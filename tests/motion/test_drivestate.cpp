#include "drivestate.h"

#include "comparetext.h"

namespace {

const QString linkFault = "Состояние привода неопределено - ошибка связи";

} // namespace

class TestDriveState : public QObject
{
    Q_OBJECT

private slots:
    // The ends of the table, of its classes, and some between.
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
    }

    // Every code that five digits can spell: no text is empty, mangled or attached to another class.
    void wholeTable()
    {
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

    void virtualAxes()
    {
        QCOMPARE(virtualStateDesc(0), "Питание всех приводов виртуальной оси выключено");
        QCOMPARE(virtualStateDesc(4), "Предупреждение на одном из приводов виртуальной оси");
        for (int state : {5, -1})
            QCOMPARE(virtualStateDesc(state), linkFault);
    }
};

QTEST_GUILESS_MAIN(TestDriveState)
#include "test_drivestate.moc"
