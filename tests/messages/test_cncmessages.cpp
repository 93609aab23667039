#include "cncmessages.h"

#include <QtTest>

class TestCncMessages : public QObject
{
    Q_OBJECT

private slots:
    void everyNumber();
    void rounding();
};

namespace {

// The events as the controller's list gives them: text before the axis, axis, text after it, and the value
// that ends the line.
QMap<uint, QString> listOfEvents()
{
    QMap<uint, QString> events = {
        {101, QStringLiteral("[W]CML75: Отключение приводов: нет разрешения по датчику вакуума")},
        {102, QStringLiteral("[W]CML75: Отключение приводов: команда от контроллера вакуумной системы")},
        {103, QStringLiteral("[W]CML75: Отключение приводов: сработан аварийный сигнал (кнопка или трос)")},
        {104, QStringLiteral("[W]CML75: Отключение приводов: дверь камеры закрывается")},
        {111, QStringLiteral("[W]CML75: Невозможно запустить программу ЧПУ - приводы не включены")},
    };
    const QStringList numbers = {
        "LX 121 131 141 161 181 201", "LY 122 132 142 162 182 203", "A 123 133 143 163 183 204",
        "B 124 134 144 164 184 205",  "C 125 135 145 165 185 206",  "D 126 136 146 166 186 207",
        "U 127 137 147 167 187 208",  "V 128 138 148 168 188 210",  "X 0 151 156 169 189 0",
        "Z 0 152 157 170 190 0",      "PHI 0 153 158 171 191 0",
    };
    for (const QString& row : numbers) {
        const QStringList words = row.split(' ');
        const QString axis = words[0];
        const QString asked = axis == "U" ? QStringLiteral("U1") : axis;
        const QString lines[] = {
            "[W]CML75: Перегрузка по току привода " + axis +
                " - движение по оси и выполнение программы остановлено",
            "[W]CML75: Сработал положительный программный конечник координаты " + axis,
            "[W]CML75: Сработал отрицательный программный конечник координаты " + axis,
            "[I]CML75: Изменено значение отрицательного программного конечника " + axis +
                ", новое значение min(" + asked + ")",
            "[I]CML75: Изменено значение положительного программного конечника " + axis +
                ", новое значение max(" + asked + ")",
            "[I]CML75: Выполнено референцирование оси " + axis + ", новая координата coord(" + asked + ")",
        };
        for (int i = 0; i < 6; ++i) {
            if (const uint number = words[i + 1].toUInt())
                events.insert(number, lines[i]);
        }
    }
    return events;
}

} // namespace

void TestCncMessages::everyNumber()
{
    const QMap<uint, QString> events = listOfEvents();
    QCOMPARE(events.size(), 5 + 8 * 6 + 3 * 4);
    for (uint number = 0; number <= 260; ++number) {
        QString question;
        const QString line = cncMessage(number, [&](CNCValue value, const QString& axis) {
            const char* words[] = {"none", "min", "max", "coord"};
            question = QStringLiteral("%1(%2)").arg(words[int(value)], axis);
            return 0.0;
        });
        QString expected =
            events.value(number, QStringLiteral("[A]CML75: Неизвестное сообщение (%1)").arg(number));
        if (!question.isEmpty())
            expected.replace(question, QStringLiteral("0.00"));
        QCOMPARE(line, expected);
    }
    const CNCValueOf never = [](CNCValue, const QString&) -> double { qFatal("no value in this line"); };
    QCOMPARE(cncMessage(0xFFFFFFFF, never), QStringLiteral("[A]CML75: Неизвестное сообщение (4294967295)"));
}

void TestCncMessages::rounding()
{
    const auto with = [](double value) {
        return cncMessage(208, [value](CNCValue, const QString&) { return value; }).section(' ', -1);
    };
    QCOMPARE(with(-12.345678), QStringLiteral("-12.35"));
    QCOMPARE(with(1e7), QStringLiteral("10000000.00"));
    QCOMPARE(with(qQNaN()), QStringLiteral("nan"));
}

QTEST_GUILESS_MAIN(TestCncMessages)
#include "test_cncmessages.moc"
