#include "comparetext.h"
#include "numpad.h"
#include "widgets.h"

#include <QLineEdit>
#include <QPushButton>
#include <QtTest>

namespace {

struct Pad : Numpad
{
    explicit Pad(float value = 0, bool password = false)
        : Numpad("Скорость", nullptr, value, false, false, password)
    {}
    // Presses the keys as the operator would: 0 to 9, "." decimal, "s" sign, "d" delete, "c" clear, "e"
    // enter.
    void press(const QString& keys)
    {
        const QMap<QChar, QString> names{
            {'.', "Decimal"}, {'s', "Sign"}, {'d', "Delete"}, {'c', "Clear"}, {'e', "Enter"}};
        for (QChar key : keys)
            QTest::mouseClick(findChild<QPushButton*>("pb" + names.value(key, key)), Qt::LeftButton);
    }
    const QLineEdit* display() const { return findChild<QLineEdit*>(); }
};

} // namespace

class TestNumpad : public QObject
{
    Q_OBJECT

private slots:
    void typing()
    {
        const struct
        {
            const char* what;
            const char* keys;
            const char* text;
            double value;
        } rows[] = {
            {"nothing", "", "", 0},
            {"eighth digit refused", "12345678", "1234567", 1234567},
            {"the point is a digit", "123.4567", "123.456", 123.456},
            {"sign beside seven digits", "s12345678", "-1234567", -1234567},
            {"no point after seven", "1234567.", "1234567", 1234567},
            {"negative, point after six", "s123456.", "-123456.", -123456},
            {"negative, no point after seven", "s1234567.", "-1234567", -1234567},
            {"two points are no number", "1.2.3", "1.2.3", 0},
            {"leading zero replaced", "007", "7", 7},
            {"sign alone is no number", "s", "-", 0},
            {"sign on zero", "0s", "0", 0},
            {"sign there and back", "5ss", "5", 5},
            {"delete the last digit of a negative", "7sd", "0", 0},
            {"delete on nothing", "d", "0", 0},
            {"clear", "s12.5c", "0", 0},
            {"all digits", "98765cd43210", "43210", 43210},
        };
        for (const auto& row : rows) {
            Pad pad;
            pad.press(row.keys);
            QVERIFY2(pad.getValue() == row.text, row.what);
            QCOMPARE(pad.value(), 0.0); // no number before Enter
            pad.press("e");
            QVERIFY2(pad.value() == row.value, row.what);
            QCOMPARE(pad.result(), int(QDialog::Accepted));
        }
    }

    void startValue()
    {
        const std::pair<float, const char*> rows[] = {
            {0.0F, ""}, {-3.5F, ""}, {0.1F, "0.1"}, {1234.5678F, "1234.57"}, {2000000.0F, "2e+06"}};
        for (const auto& [value, text] : rows)
            QCOMPARE(Pad(value).display()->displayText(), text);
    }

    void keyboard()
    {
        Pad pad;
        QTest::keyClicks(&pad, "1234567890");
        QCOMPARE(pad.getValue(), "1234567");
        QTest::keyClick(&pad, Qt::Key_Delete);
        QTest::keyClicks(&pad, "8,5-");
        QCOMPARE(pad.getValue(), "-8.5");
        for (const Qt::Key key : {Qt::Key_Backspace, Qt::Key_A, Qt::Key_Space})
            QTest::keyClick(&pad, key);
        QCOMPARE(pad.getValue(), "-8.");
        QTest::keyClick(&pad, Qt::Key_Return);
        QCOMPARE(pad.result(), int(QDialog::Accepted));
        QCOMPARE(pad.value(), -8.0);
    }

    void accessCode()
    {
        Pad pad(0, true);
        QTest::keyClicks(&pad, "305729");
        QVERIFY(pad.display()->displayText() != "305729");
        QCOMPARE(pad.display()->displayText().size(), 6);
        QCOMPARE(pad.display()->font().pointSize(), 24);
        QCOMPARE(Pad().display()->font().pointSize(), 30);
        pad.press(".s");
        QCOMPARE(pad.getValue(), "305729"); // both are off
        QTest::keyClicks(&pad, "-.");
        QCOMPARE(pad.getValue(), "-305729."); // on the keyboard they are not
        QTest::keyClick(&pad, Qt::Key_Enter);
        QCOMPARE(pad.value(), -305729.0);
    }

    void standsAtThePointerUntilCancelled()
    {
        QCursor::setPos(120, 130);
        Pad pad(4);
        QVERIFY(qobject_cast<MyFrame*>(pad.window()));
        QVERIFY(pad.window()->isVisible());
        QCOMPARE(pad.window()->pos(), QPoint(120, 130));
        QCOMPARE(pad.window()->windowModality(), Qt::WindowModal);
        QTimer::singleShot(0, &pad, [&] {
            pad.press("2");
            QTest::keyClick(&pad, Qt::Key_Escape);
        });
        QCOMPARE(pad.exec(), int(QDialog::Rejected));
        QCOMPARE(pad.value(), 0.0);
        QVERIFY(!pad.window()->isVisible()); // the title goes with the pad
    }
};

QTEST_MAIN(TestNumpad)
#include "test_numpad.moc"
