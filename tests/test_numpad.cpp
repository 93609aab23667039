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
    void startValue_data();
    void startValue();
    void keyboard();
    void accessCode();
    void disabledKeysStillAnswerTheKeyboard();
    void cancelling();
    void standsAtThePointer();
};

void TestNumpad::typing_data()
{
    QTest::addColumn<QString>("keys");
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("value");

    QTest::newRow("nothing") << ""
                             << "" << 0.0;
    QTest::newRow("a number") << "12.5"
                              << "12.5" << 12.5;
    QTest::newRow("eighth digit refused") << "12345678"
                                          << "1234567" << 1234567.0;
    QTest::newRow("the point is a digit") << "123.4567"
                                          << "123.456" << 123.456;
    QTest::newRow("sign beside seven digits") << "s12345678"
                                              << "-1234567" << -1234567.0;
    QTest::newRow("point after six") << "123456.9"
                                     << "123456." << 123456.0;
    QTest::newRow("no point after seven") << "1234567."
                                          << "1234567" << 1234567.0;
    QTest::newRow("negative, point after six") << "s123456."
                                               << "-123456." << -123456.0;
    QTest::newRow("negative, no point after seven") << "s1234567."
                                                    << "-1234567" << -1234567.0;
    QTest::newRow("two points are no number") << "1.2.3"
                                              << "1.2.3" << 0.0;
    QTest::newRow("leading zero replaced") << "007"
                                           << "7" << 7.0;
    QTest::newRow("sign on nothing") << "s5"
                                     << "-5" << -5.0;
    QTest::newRow("sign alone is no number") << "s"
                                             << "-" << 0.0;
    QTest::newRow("sign on zero") << "0s"
                                  << "0" << 0.0;
    QTest::newRow("sign there") << "5s"
                                << "-5" << -5.0;
    QTest::newRow("sign there and back") << "5ss"
                                         << "5" << 5.0;
    QTest::newRow("delete the last digit") << "7d"
                                           << "0" << 0.0;
    QTest::newRow("delete the last digit of a negative") << "7sd"
                                                         << "0" << 0.0;
    QTest::newRow("delete on nothing") << "d"
                                       << "0" << 0.0;
    QTest::newRow("delete one of many") << "120d"
                                        << "12" << 12.0;
    QTest::newRow("clear") << "s12.5c"
                           << "0" << 0.0;
    QTest::newRow("all digits") << "98765cd43210"
                                << "43210" << 43210.0;
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

void TestNumpad::startValue_data()
{
    QTest::addColumn<float>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0.0F << "";
    QTest::newRow("negative") << -3.5F << "";
    QTest::newRow("plain") << 12.5F << "12.5";
    QTest::newRow("six digits") << 1234.5678F << "1234.57";
    QTest::newRow("large") << 2000000.0F << "2e+06";
    QTest::newRow("single precision") << 0.1F << "0.1";
}

void TestNumpad::startValue()
{
    QFETCH(float, value);
    QFETCH(QString, text);
    QCOMPARE(Pad(value).getValue(), text);
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
    Numpad pad(QStringLiteral("Пароль:"), nullptr, 0, true, true, true);
    const auto* line = pad.findChild<QLineEdit*>();
    QTest::keyClicks(&pad, QStringLiteral("305729"));
    QVERIFY(line->displayText() != QStringLiteral("305729"));
    QCOMPARE(line->displayText().size(), 6);
    QCOMPARE(line->font().pointSize(), 24);
    QVERIFY(!pad.findChild<QPushButton*>(QStringLiteral("pbDecimal"))->isEnabled());
    QVERIFY(!pad.findChild<QPushButton*>(QStringLiteral("pbSign"))->isEnabled());
    QTest::keyClick(&pad, Qt::Key_Enter);
    QCOMPARE(pad.value(), 305729.0);

    Pad plain(7);
    QCOMPARE(plain.findChild<QLineEdit*>()->displayText(), QStringLiteral("7"));
    QCOMPARE(plain.findChild<QLineEdit*>()->font().pointSize(), 30);
}

void TestNumpad::disabledKeysStillAnswerTheKeyboard()
{
    Numpad pad(QString(), nullptr, 0, true, true, false);
    QTest::mouseClick(pad.findChild<QPushButton*>(QStringLiteral("pbSign")), Qt::LeftButton);
    QCOMPARE(pad.getValue(), QString());
    QTest::keyClicks(&pad, QStringLiteral("1.5-"));
    QCOMPARE(pad.getValue(), QStringLiteral("-1.5"));
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

    // Keys for gloves, each whole on the pad and none over another.
    const QList<QPushButton*> keys = pad.findChildren<QPushButton*>();
    QCOMPARE(keys.size(), 15);
    for (const QPushButton* key : keys) {
        QVERIFY(key->width() >= 90 && key->height() >= 80);
        QVERIFY(pad.rect().contains(key->geometry()));
        for (const QPushButton* other : keys)
            QVERIFY(other == key || !other->geometry().intersects(key->geometry()));
    }
}

QTEST_MAIN(TestNumpad)
#include "test_numpad.moc"
