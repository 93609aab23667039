#include "cncmessages.h"

#include "comparetext.h"

namespace {

const char* const drives[] = {"LX", "LY", "A", "B", "C", "D", "U", "V"};
const char* const virtuals[] = {"X", "Z", "PHI"};

} // namespace

class TestCncMessages : public QObject
{
    Q_OBJECT

private slots:
    // Each number with an axis, from the controller's list: where a kind begins for the drives and for the
    // virtual axes. Every other number up to 260 is an event without axis, or none.
    void everyNumber()
    {
        // First numbers of the drives and of the virtual axes, line, value.
        const std::tuple<uint, uint, const char*, const char*> kinds[] = {
            {121, 0,
             "[W]CML75: Перегрузка по току привода %1 - движение по оси и выполнение программы остановлено",
             ""},
            {131, 151, "[W]CML75: Сработал положительный программный конечник координаты %1", ""},
            {141, 156, "[W]CML75: Сработал отрицательный программный конечник координаты %1", ""},
            {161, 169,
             "[I]CML75: Изменено значение отрицательного программного конечника %1, новое значение ", "min"},
            {181, 189,
             "[I]CML75: Изменено значение положительного программного конечника %1, новое значение ", "max"},
            {201, 0, "[I]CML75: Выполнено референцирование оси %1, новая координата ", "coord"},
        };
        QMap<uint, QString> events = {
            {101, "[W]CML75: Отключение приводов: нет разрешения по датчику вакуума"},
            {102, "[W]CML75: Отключение приводов: команда от контроллера вакуумной системы"},
            {103, "[W]CML75: Отключение приводов: сработан аварийный сигнал (кнопка или трос)"},
            {104, "[W]CML75: Отключение приводов: дверь камеры закрывается"},
            {111, "[W]CML75: Невозможно запустить программу ЧПУ - приводы не включены"},
        };
        for (const auto& [first, firstVirtual, line, value] : kinds) {
            const auto add = [&, text = QString(line), asked = QString(value)](uint number,
                                                                               const QString& axis) {
                const QString told = QString("%1(%2) 0.00").arg(asked, axis == "U" ? "U1" : axis);
                events[number] = text.arg(axis) + (asked.isEmpty() ? QString() : told);
            };
            // The second drives of LX and U, which would be 202 and 209, are not referenced by themselves.
            const bool referenced = first == 201;
            for (uint i = 0; i < 8; ++i)
                add(first + i + (referenced ? uint(i > 0) + uint(i > 6) : 0), drives[i]);
            for (uint i = 0; firstVirtual && i < 3; ++i)
                add(firstVirtual + i, virtuals[i]);
        }
        QCOMPARE(events.size(), 5 + 8 * 6 + 3 * 4);
        for (uint number = 0; number <= 260; ++number) {
            QString asked;
            QString line = cncMessage(number, [&](CNCValue value, const QString& axis) {
                const char* const words[] = {"none", "min", "max", "coord"};
                asked = QString("%1(%2) ").arg(words[int(value)], axis);
                return 0.0;
            });
            line.insert(line.size() - 4, asked);
            QCOMPARE(line, events.value(number, QString("[A]CML75: Неизвестное сообщение (%1)").arg(number)));
        }
        const CNCValueOf never = [](CNCValue, const QString&) -> double { qFatal("no value in this line"); };
        QCOMPARE(cncMessage(0xFFFFFFFF, never), "[A]CML75: Неизвестное сообщение (4294967295)");

        for (const auto& [value, shown] :
             {std::pair(-12.345678, "-12.35"), {1e7, "10000000.00"}, {qQNaN(), "nan"}}) {
            const CNCValueOf coordinate = [told = value](CNCValue, const QString&) { return told; };
            QCOMPARE(cncMessage(208, coordinate).section(' ', -1), shown);
        }
    }
};

QTEST_GUILESS_MAIN(TestCncMessages)
#include "test_cncmessages.moc"
