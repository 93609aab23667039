#include "numpad.h"
#include "widgets.h"

#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

namespace {

struct Pad : Numpad
{
    explicit Pad(float value = 0)
        : Numpad(QStringLiteral("Скорость"), nullptr, value, false, false, false)
    {}

    // Presses the keys as the operator would: 0 to 9, "." decimal, "s" sign, "d" delete, "c" clear.
    void press(const QString& keys)
    {
        for (QChar key : keys)
            QTest::mouseClick(this->key(nameOf(key)), Qt::LeftButton);
    }
    QPushButton* key(const QString& name) const { return findChild<QPushButton*>(name); }

private:
    static QString nameOf(QChar key)
    {
        switch (key.unicode()) {
        case '.':
            return QStringLiteral("pbDecimal");
        case 's':
            return QStringLiteral("pbSign");
        case 'd':
            return QStringLiteral("pbDelete");
        case 'c':
            return QStringLiteral("pbClear");
        default:
            return QStringLiteral("pb") + key;
        }
    }
};

} // namespace

class TestNumpad : public QObject
{
    Q_OBJECT

private slots:
    void typing_data();
    void typing();
    void startValue();
    void keyboard();
    void accessCode();
    void cancelling();
    void standsAtThePointer();
};

void TestNumpad::typing_data()
{
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("value");
    const auto row = [](const char* name, const char* keys, const char* text, double value) {
        QTest::newRow(name) << keys << text << value;
    };

    row("nothing", "", "", 0);
    row("eighth digit refused", "12345678", "1234567", 1234567);
    row("the point is a digit", "123.4567", "123.456", 123.456);
    row("sign beside seven digits", "s12345678", "-1234567", -1234567);
    row("no point after seven", "1234567.", "1234567", 1234567);
    row("negative, point after six", "s123456.", "-123456.", -123456);
    row("negative, no point after seven", "s1234567.", "-1234567", -1234567);
    row("two points are no number", "1.2.3", "1.2.3", 0);
    row("leading zero replaced", "007", "7", 7);
    row("sign on nothing", "s5", "-5", -5);
    row("sign alone is no number", "s", "-", 0);
    row("sign on zero", "0s", "0", 0);
    row("sign there and back", "5ss", "5", 5);
    row("delete the last digit", "7d", "0", 0);
    row("delete the last digit of a negative", "7sd", "0", 0);
    row("delete on nothing", "d", "0", 0);
    row("clear", "s12.5c", "0", 0);
    row("all digits", "98765cd43210", "43210", 43210);
}

void TestNumpad::typing()
{
    QFETCH(QString, keys);
    QFETCH(QString, text);
    QFETCH(double, value);

    Pad pad;
    pad.press(keys);
    QCOMPARE(pad.getValue(), text);
    QCOMPARE(pad.value(), 0.0); // no number before Enter
    QTest::mouseClick(pad.key(QStringLiteral("pbEnter")), Qt::LeftButton);
    QCOMPARE(pad.value(), value);
    QCOMPARE(pad.result(), int(QDialog::Accepted));
}

void TestNumpad::startValue()
{
    const std::pair<float, const char*> rows[] = {
        {0.0F, ""},   {-3.5F, ""}, {12.5F, "12.5"}, {1234.5678F, "1234.57"}, {2000000.0F, "2e+06"},
        {0.1F, "0.1"}};
    for (const auto& [value, text] : rows)
        QCOMPARE(Pad(value).getValue(), QString(text));
}

void TestNumpad::keyboard()
{
    Pad pad;
    QTest::keyClicks(&pad, QStringLiteral("1234567890"));
    QCOMPARE(pad.getValue(), QStringLiteral("1234567"));
    QTest::keyClick(&pad, Qt::Key_Delete);
    QTest::keyClicks(&pad, QStringLiteral("8,5"));
    QTest::keyClick(&pad, Qt::Key_Minus);
    QCOMPARE(pad.getValue(), QStringLiteral("-8.5"));
    QTest::keyClick(&pad, Qt::Key_Backspace);
    QTest::keyClick(&pad, Qt::Key_A);
    QTest::keyClick(&pad, Qt::Key_Space);
    QCOMPARE(pad.getValue(), QStringLiteral("-8."));
    QTest::keyClick(&pad, Qt::Key_Return);
    QCOMPARE(pad.result(), int(QDialog::Accepted));
    QCOMPARE(pad.value(), -8.0);
}

void TestNumpad::accessCode()
{
    Numpad pad(QStringLiteral("Пароль:"), nullptr, 0, false, false, true);
    const auto* line = pad.findChild<QLineEdit*>();
    QTest::keyClicks(&pad, QStringLiteral("305729"));
    QVERIFY(line->displayText() != QStringLiteral("305729"));
    QCOMPARE(line->displayText().size(), 6);
    QCOMPARE(line->font().pointSize(), 24);
    for (const char* name : {"pbDecimal", "pbSign"})
        QTest::mouseClick(pad.findChild<QPushButton*>(QLatin1String(name)), Qt::LeftButton);
    QCOMPARE(pad.getValue(), QStringLiteral("305729")); // both are off
    QTest::keyClicks(&pad, QStringLiteral("-."));
    QCOMPARE(pad.getValue(), QStringLiteral("-305729.")); // on the keyboard they are not
    QTest::keyClick(&pad, Qt::Key_Enter);
    QCOMPARE(pad.value(), -305729.0);

    Pad plain(7);
    QCOMPARE(plain.findChild<QLineEdit*>()->displayText(), QStringLiteral("7"));
    QCOMPARE(plain.findChild<QLineEdit*>()->font().pointSize(), 30);
}

void TestNumpad::cancelling()
{
    Pad pad(4);
    QTimer::singleShot(0, &pad, [&] {
        pad.press(QStringLiteral("2"));
        QTest::keyClick(&pad, Qt::Key_Escape);
    });
    QCOMPARE(pad.exec(), int(QDialog::Rejected));
    QCOMPARE(pad.value(), 0.0);
    QVERIFY(!pad.window()->isVisible()); // the title goes with the pad
}

void TestNumpad::standsAtThePointer()
{
    QCursor::setPos(120, 130);
    Pad pad;
    QVERIFY(qobject_cast<MyFrame*>(pad.window()));
    QVERIFY(pad.window()->isVisible());
    QCOMPARE(pad.window()->pos(), QPoint(120, 130));
    QCOMPARE(pad.window()->windowModality(), Qt::WindowModal);
}

QTEST_MAIN(TestNumpad)
#include "test_numpad.moc"
