#include "comparetext.h"
#include "confirm.h"
#include "deathtest.h"
#include "nextdialog.h"
#include "repaintpace.h"
#include "sitefixture.h"
#include "styleloader.h"
#include "widgets.h"

#include <QDialog>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QSignalSpy>
#include <QStyleFactory>
#include <QtTest>

#include <ctime>

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

// Pixels that differ by a quarter of the range when seen without colour, on the ground of the panel.
int differing(const QString& one, const QString& other)
{
    const auto shape = [](const QString& name) {
        QImage ground(QPixmap(name).size(), QImage::Format_RGB32);
        ground.fill(QColor(255, 255, 192));
        QPainter(&ground).drawPixmap(0, 0, QPixmap(name));
        return ground;
    };
    const QImage a = shape(one);
    const QImage b = shape(other);
    int count = 0;
    for (int i = 0; i < a.width() * a.height(); ++i) {
        const QPoint at(i % a.width(), i / a.width());
        count += qAbs(qGray(a.pixel(at)) - qGray(b.pixel(at))) > 64;
    }
    return count;
}

} // namespace

class TestWidgets : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QApplication::setStyle(new MyWinStyle); }

    void lampShowsTheImageOfItsState()
    {
        PoSprite lamp;
        const QString gray = ":/images/indicator_gray.png";
        const QString green = ":/images/indicator_green.png";
        lamp.addPixmap(0, gray);
        lamp.addPixmap(1, green);
        const auto shows = [&](const QString& file) {
            return lamp.pixmap(Qt::ReturnByValue).toImage() == QPixmap(file).toImage();
        };
        lamp.changedState(1.9F);
        QVERIFY(shows(green) && !shows(gray));
        lamp.changedState(-0.9F);
        QVERIFY(shows(gray));
        lamp.addPixmap(0, green);
        lamp.setSprite(0);
        QVERIFY(shows(green));
        lamp.addPixmap(-1, ":/images/none.png"); // a missing file is an empty picture
        lamp.setSprite(-1);
        const QByteArray told = deathOf([&] { lamp.changedState(5); });
        QVERIFY2(told.contains("i != m_mapPixmaps.end()"), told);
    }

    void numbers()
    {
        const std::tuple<float, int, const char*> rows[] = {
            {-12.345F, 2, "-12.35"}, {0.00012F, 3, "1.2E-04"}, {101325.0F, 3, "1.0E+05"}};
        for (const auto& [value, decimals, text] : rows) {
            PoLabel label, live;
            label.setValue(value, decimals);
            QCOMPARE(label.text(), text);
            QCOMPARE(label.value(), value);
            live.setDepth(decimals);
            live.changedValue(value);
            QCOMPARE(live.text(), text);
        }
    }

    void aLostSensorTurnsPink()
    {
        PoLabel label;
        QPalette colours = label.palette();
        colours.setColor(QPalette::WindowText, Qt::yellow);
        colours.setColor(QPalette::Window, Qt::darkBlue);
        label.setPalette(colours);
        label.setValue(5, 0);
        const auto look = [&] {
            const QPalette palette = label.palette();
            return QList<QColor>{palette.color(QPalette::WindowText), palette.color(QPalette::Window)};
        };
        for (int i = 0; i < 2; ++i) { // the second loss must not take pink for the first colour
            label.changedValid(false);
            label.changedValid(false);
            QCOMPARE(look(), (QList<QColor>{Qt::black, QColor(255, 192, 192)}));
            label.resize(80, 30);
            QCOMPARE(label.grab().toImage().pixelColor(78, 1), QColor(255, 192, 192));
            QCOMPARE(label.text(), "5");
            label.changedValid(true);
            QCOMPARE(look(), (QList<QColor>{Qt::yellow, Qt::darkBlue}));
        }
    }

    void labelAsAButtonStepsAside()
    {
        QWidget panel;
        MyLabel label(&panel);
        label.move(10, 20);
        const QSignalSpy clicked(&label, &MyLabel::clicked);
        for (bool button : {false, true}) {
            label.setButton(button);
            QTest::mousePress(&label, Qt::LeftButton);
            QCOMPARE(label.pos(), button ? QPoint(11, 21) : QPoint(10, 20));
            QTest::mouseRelease(&label, Qt::LeftButton);
            QCOMPARE(label.pos(), QPoint(10, 20));
        }
        QTest::mousePress(&label, Qt::RightButton);
        QVERIFY(label.pos() == QPoint(10, 20) && clicked.size() == 2);

        // A press that opens a menu hears of the release before it returns.
        connect(&label, &MyLabel::clicked, &label, [&] { QTest::mouseRelease(&label, Qt::LeftButton); });
        QTest::mousePress(&label, Qt::LeftButton);
        QCOMPARE(label.pos(), QPoint(10, 20));
    }

    void frameAroundADialog()
    {
        QWidget parent;
        auto* dialog = new QDialog(&parent);
        dialog->resize(300, 200);
        auto* frame = new MyFrame("Ось X", 40, 50, 3, dialog, &parent, true, true);

        QCOMPARE(frame->geometry(), QRect(40, 50, 300 + 2 * (2 + 3), 200 + 56 + 2 * (2 + 3)));
        QCOMPARE(dialog->geometry(), QRect(5, 61, 300, 200));
        QVERIFY(dialog->window() == frame && dialog->isVisible() && frame->focusWidget() == dialog);
        QVERIFY(frame->windowFlags().testFlag(Qt::FramelessWindowHint));
        QCOMPARE(frame->windowModality(), Qt::WindowModal);

        const auto* close = frame->findChild<QPushButton*>("pbClose");
        QCOMPARE(close->size(), QSize(56, 56));
        QCOMPARE(close->mapTo(frame, QPoint(56, 0)), QPoint(frame->width() - 2, 2));
        QVERIFY(!close->icon().isNull());
        QCOMPARE(frame->findChild<QLabel*>("lblTitle")->font().pointSize(), 15);

        dialog->resize(400, 100); // rows of a dialog come and go
        QCOMPARE(frame->size(), QSize(410, 166));
        QCOMPARE(close->mapTo(frame, QPoint(56, 0)), QPoint(408, 2));
    }

    void framePlace()
    {
        // Wanted and taken by a frame of 100 by 100.
        const std::pair<QPoint, QPoint> places[] = {{{1821, 400}, {1819, 400}}, {{1820, 400}, {1820, 400}},
                                                    {{300, -5}, {300, 0}},      {{300, 1101}, {300, 1099}},
                                                    {{300, 1100}, {300, 1100}}, {{-20, 10}, {-20, 10}}};
        for (const auto& [wanted, place] : places) {
            QDialog dialog;
            dialog.setFixedSize(96, 40);
            auto* frame = new MyFrame(QString(), wanted.x(), wanted.y(), 0, &dialog, nullptr, false, false);
            QCOMPARE(frame->geometry(), QRect(place, QSize(100, 100)));
            QVERIFY(!frame->isVisible());
            QCOMPARE(frame->windowModality(), Qt::NonModal);
        }
    }

    void frameFollowsTheDialog()
    {
        QDialog dialog;
        dialog.resize(200, 100);
        auto* frame = new MyFrame(QString(), 0, 0, 0, &dialog, nullptr, true, false);
        for (int time = 0; time < 2; ++time) {
            QVERIFY(!frame->isVisible());
            dialog.show();
            QVERIFY(frame->isVisible() && dialog.isVisible());
            dialog.accept(); // no empty frame stays on the screen while the caller goes on
        }
        for (bool byButton : {true, false}) {
            QTimer::singleShot(0, frame, [&] { // by the window system's own way, too
                byButton ? frame->findChild<QPushButton*>("pbClose")->click() : void(frame->close());
            });
            QCOMPARE(dialog.exec(), int(QDialog::Rejected));
            QVERIFY(!frame->isVisible());
        }
    }

    void frameGoesWithTheDialog()
    {
        QPointer<MyFrame> frame;
        {
            QDialog dialog;
            frame = new MyFrame(QString(), 0, 0, 0, &dialog, nullptr, true, true);
        }
        QVERIFY(!frame || !frame->isVisible());
        QTRY_VERIFY(!frame);

        QPointer<QDialog> dialog; // the other way round: a window that goes takes all with it
        {
            QWidget window;
            dialog = new QDialog(&window);
            frame = new MyFrame(QString(), 0, 0, 0, dialog, &window, true, true);
        }
        QVERIFY(!frame && !dialog);

        // A field that has the focus while it goes.
        auto* child = new QDialog;
        new QLineEdit(child);
        frame = new MyFrame(QString(), 0, 0, 0, child, nullptr, true, true);
        QVERIFY(QTest::qWaitForWindowActive(frame));
        child->findChild<QLineEdit*>()->setFocus();
        delete frame;
    }

    void frameIsDraggedByItsTitle()
    {
        QDialog dialog;
        dialog.resize(300, 200);
        auto* frame = new MyFrame("Пароль:", 200, 300, 1, &dialog, nullptr, false, true);
        const auto mouse = [&](QEvent::Type type, QPoint global) {
            const bool move = type == QEvent::MouseMove;
            QMouseEvent event(type, frame->mapFromGlobal(global), global,
                              move ? Qt::NoButton : Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
            QApplication::sendEvent(frame, &event);
        };

        mouse(QEvent::MouseButtonPress, {250, 320});
        QCOMPARE(QWidget::mouseGrabber(), frame);
        mouse(QEvent::MouseMove, {260, 290});
        QCOMPARE(frame->pos(), QPoint(210, 270));
        mouse(QEvent::MouseButtonRelease, {260, 290});
        QVERIFY(!QWidget::mouseGrabber());
        mouse(QEvent::MouseMove, {0, 0});
        QCOMPARE(frame->pos(), QPoint(210, 270));

        // Below the title nothing is taken hold of; and a frame that closes lets go of the pointer.
        mouse(QEvent::MouseButtonPress, {211, 360});
        QVERIFY(!QWidget::mouseGrabber());
        mouse(QEvent::MouseButtonPress, {250, 290});
        QDialog question(frame); // comes by itself and must be answerable
        question.open();
        QVERIFY(!QWidget::mouseGrabber());
        question.close();
        mouse(QEvent::MouseButtonPress, {250, 290});
        QCOMPARE(QWidget::mouseGrabber(), frame);
        dialog.reject();
        QVERIFY(!QWidget::mouseGrabber());
    }

    void confirmStandsBelowItsParent()
    {
        QWidget window;
        window.setGeometry(100, 200, 600, 400);
        QWidget button(&window);
        button.setGeometry(30, 40, 110, 60);
        window.show();
        Confirm question("Подтверждение", "Удалить текущую точку из контура?", &button, 0);
        QVERIFY(question.window()->isVisible());
        QCOMPARE(question.window()->width(), 432 + 2 * (2 + 1));
        QCOMPARE(question.window()->pos(), button.mapToGlobal(QPoint(0, 61)));
    }

    void confirmAnswers()
    {
        const auto answer = [](const std::function<void(Confirm*)>& act) {
            QWidget parent;
            Confirm question("Подтверждение", "?", &parent, 1);
            QTimer::singleShot(0, &question, [&] {
                QTest::keyClick(&question, Qt::Key_Return); // a stray Enter answers nothing
                act(&question);
            });
            return question.exec() == QDialog::Accepted && !question.window()->isVisible();
        };
        QVERIFY(answer([](Confirm* question) { question->findChild<QPushButton*>("pbYes")->click(); }));
        QVERIFY(!answer([](Confirm* question) { question->findChild<QPushButton*>("pbNo")->click(); }));
        QVERIFY(!answer([](Confirm* question) { QTest::keyClick(question, Qt::Key_Escape); }));
        QVERIFY(!answer([](Confirm*) { QVERIFY(passTime(1000)); })); // no answer is no
    }

    void style()
    {
        QCOMPARE(MyWinStyle().pixelMetric(QStyle::PixelMetric(65)), 50); // the icons of a finger's size
        const QScopedPointer<QStyle> base(QStyleFactory::create("windows"));
        for (const auto metric : {QStyle::PixelMetric(64), QStyle::PixelMetric(66)})
            QCOMPARE(MyWinStyle().pixelMetric(metric), base->pixelMetric(metric));

        QDialog dialog; // of its own, without the window's palette
        QLabel label("Диаметр, мм", &dialog);
        label.setEnabled(false);
        const QColor paper = label.palette().color(QPalette::Window);
        QVERIFY(paper.lightness() - label.palette().color(QPalette::WindowText).lightness() > 110);
    }

    void aFaceShowsThroughItsShading()
    {
        const auto middle = [](QPushButton& button) { return button.grab().toImage().pixelColor(50, 30); };
        QPushButton plain, alarm;
        alarm.setObjectName("pbStop");
        for (QPushButton* button : {&plain, &alarm}) {
            button->resize(100, 60);
            button->setCheckable(true);
        }
        const QColor rest = middle(plain);
        const QColor stop = middle(alarm);
        QVERIFY(rest.blue() > rest.red() + 50 && stop.red() > 200 && stop.blue() < 80);

        plain.setChecked(true);
        const QColor on = middle(plain);
        QVERIFY(on.red() < 50 && on.green() > 150); // the accent
        plain.setChecked(false);

        alarm.setDown(true); // a finger on the stop leaves it red
        const QColor pressed = middle(alarm);
        QVERIFY(pressed.red() > 150 && pressed.blue() < 80 && pressed != stop);

        plain.setEnabled(false);
        const QColor off = middle(plain);
        QVERIFY(off.blue() - off.red() < (rest.blue() - rest.red()) / 2);
    }

    void paintsAtAPace()
    {
        struct Window : QLabel
        {
            void paintEvent(QPaintEvent* event) override
            {
                QLabel::paintEvent(event);
                painted += text();
                for (const std::clock_t start = std::clock(); std::clock() - start < cost;) {
                }
            }
            std::clock_t cost = 0; // of the processor
            QStringList painted;
        } window;
        new RepaintPace(&window);
        window.show();
        QTRY_VERIFY(!window.painted.isEmpty());
        QTest::qWait(2 * RepaintPace::periodMs);

        // What costs next to nothing does not wait, though three controllers speak at the same moment.
        window.painted.clear();
        const QStringList numbers{"1.00", "2.00", "3.00"};
        for (const QString& number : numbers) {
            window.setText(number);
            QCoreApplication::processEvents();
        }
        QCOMPARE(window.painted, numbers);

        window.cost = 4 * CLOCKS_PER_SEC / 1000;
        QTest::qWait(2 * RepaintPace::periodMs);
        window.painted.clear();
        QElapsedTimer time;
        time.start();
        for (int n = 0; time.elapsed() < 300; ++n) {
            window.setText(QString::number(n));
            QTest::qWait(1);
            if (n == 0)
                QVERIFY2(window.painted.size() == 1 || time.elapsed() > 10, "the first comes at once");
        }
        QVERIFY2(window.painted.size() <= int(time.elapsed()) / RepaintPace::periodMs + 2,
                 qPrintable(QString::number(window.painted.size())));
        QTRY_COMPARE(window.painted.last(), window.text()); // and the last is not lost

        // What may not wait is on the screen before the thread goes on.
        for (const char* alarm : {"fire", "smoke"}) {
            window.setText(alarm);
            RepaintPace::repaintNow(&window);
            QCOMPARE(window.painted.last(), window.text());
        }
    }

    void styleSheetIsReloadedByKey()
    {
        const QString path = StyleLoader::defaultStyleFile();
        QCOMPARE(path, m_site.root() + "/home/oper/bin/style.qss");
        const auto write = [&](const char* sheet) { m_site.write("/home/oper/bin/style.qss", sheet); };
        qApp->setStyleSheet("red {}");
        QTest::ignoreMessage(QtDebugMsg, qPrintable("Cannot open stylesheet file " + path));
        StyleLoader::attach(path, QKeySequence());
        QCOMPARE(qApp->styleSheet(), "red {}");

        write("blue {}");
        StyleLoader::attach(path, QKeySequence(Qt::CTRL | Qt::Key_F5));
        write("green {}");
        QWidget window;
        window.show();
        QTest::keyClick(&window, Qt::Key_F5);
        QCOMPARE(qApp->styleSheet(), "blue {}");
        QTest::keyClick(&window, Qt::Key_F5, Qt::ControlModifier);
        QCOMPARE(qApp->styleSheet(), "green {}");
        qApp->setStyleSheet(QString());
    }

    void numpadTyping()
    {
        const std::tuple<const char*, const char*, const char*, double> rows[] = {
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
        for (const auto& [what, keys, text, value] : rows) {
            Pad pad;
            pad.press(keys);
            QVERIFY2(pad.getValue() == text && pad.value() == 0, what); // no number before Enter
            pad.press("e");
            QVERIFY2(pad.value() == value && pad.result() == QDialog::Accepted, what);
        }
    }

    void numpadStartValue()
    {
        const std::pair<float, const char*> rows[] = {
            {0.0F, ""}, {-3.5F, ""}, {0.1F, "0.1"}, {1234.5678F, "1234.57"}, {2000000.0F, "2e+06"}};
        for (const auto& [value, text] : rows)
            QCOMPARE(Pad(value).display()->displayText(), text);
    }

    void numpadKeyboard()
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
        QCOMPARE(pad.value(), -8.0);
    }

    void numpadAccessCode()
    {
        Pad pad(0, true);
        QTest::keyClicks(&pad, "305729");
        QVERIFY(pad.display()->displayText() != "305729" && pad.display()->displayText().size() == 6);
        QVERIFY(pad.display()->font().pointSize() == 24 && Pad().display()->font().pointSize() == 30);
        pad.press(".s");
        QCOMPARE(pad.getValue(), "305729"); // both are off
        QTest::keyClicks(&pad, "-.");
        QCOMPARE(pad.getValue(), "-305729."); // on the keyboard they are not
        QTest::keyClick(&pad, Qt::Key_Enter);
        QCOMPARE(pad.value(), -305729.0);
    }

    void numpadStandsAtThePointerUntilCancelled()
    {
        QCursor::setPos(120, 130);
        Pad pad(4);
        QVERIFY(qobject_cast<MyFrame*>(pad.window()) && pad.window()->isVisible());
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

    // The images travel inside the program; a name that is missing there would leave a lamp dark.
    void everyImageIsThere()
    {
        const QString edges = " top_left top top_right left mid right bottom_left bottom bottom_right";
        const QStringList folders{"/ close ok no mirta icon-error-mini icon-info-mini icon-run-mini "
                                  "icon-warning-mini icon-basic-mini",
                                  "/indicator_ gray green yellow red",
                                  "/arrows/ left right down plus minus",
                                  "/numpad/ delete clear enter sign decimal",
                                  "/style/up_" + edges,
                                  "/style/down_" + edges};
        for (const QString& folder : folders) {
            const QStringList names = folder.split(' ');
            for (const QString& name : names.mid(1)) {
                for (const char* suffix : {".png", ""}) // axis lamps have none
                    QVERIFY2(!QPixmap(":/images" + names[0] + name + suffix).isNull(), qPrintable(name));
            }
        }
    }

    // Told apart by everyone, whatever the colour: lamps, and the vacuum panel's images by stem and state.
    void statesDiffer()
    {
        QStringList rows{"indicator gray green yellow red", "t 0 1 2"};
        for (const char* device : {"NP", "NW", "NL", "NZ", "ND", "NW2", "VT", "vv", "vh", "TMN", "VE"})
            rows << device + QString(" 0 1 23 4");
        for (const char* pipe :
             {"vpipe", "hpipe", "lbpipe", "ltpipe", "hlt", "rbpipe", "rtpipe", "vbt", "lpipe", "rpipe", "w"})
            rows << pipe + QString(" 0 1");
        for (const QString& row : qAsConst(rows)) {
            QStringList images = row.split(' ');
            const QString stem = images.takeFirst();
            for (QString& state : images)
                state = QString(":/images/%1_%2.png").arg(stem, state);
            const QSize size = QPixmap(images[0]).size();
            for (int i = 0; i < images.size(); ++i) {
                QVERIFY2(!size.isEmpty() && QPixmap(images[i]).size() == size, qPrintable(images[i]));
                for (int k = 0; k < i; ++k)
                    QVERIFY2(differing(images[k], images[i]) * 30 >= size.width() * size.height(),
                             qPrintable(images[k] + ' ' + images[i]));
            }
        }
    }

private:
    SiteFixture m_site;
};

QTEST_MAIN(TestWidgets)
#include "test_widgets.moc"
