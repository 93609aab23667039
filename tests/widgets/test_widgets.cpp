#include "comparetext.h"
#include "confirm.h"
#include "deathtest.h"
#include "nextdialog.h"
#include "repaintpace.h"
#include "sitefixture.h"
#include "styleloader.h"
#include "widgets.h"

#include <QDialog>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QStyleFactory>
#include <QtTest>

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
        PoLabel pressure;
        pressure.setDepth(1);
        pressure.changedValue(200);
        pressure.setCoeff(0.0075F); // Pa to Torr
        QCOMPARE(pressure.text(), "1.5");
        QCOMPARE(pressure.value(), 200.0F);
        pressure.setCoeff(1);
        QCOMPARE(pressure.text(), "200.0");
    }

    void aLostSensorTurnsPink()
    {
        PoLabel label;
        QPalette colours = label.palette();
        colours.setColor(QPalette::WindowText, Qt::yellow);
        colours.setColor(QPalette::Window, Qt::darkBlue);
        label.setPalette(colours);
        label.setValue(5, 0);
        const auto text = [&] { return label.palette().color(QPalette::WindowText); };
        const auto ground = [&] { return label.palette().color(QPalette::Window); };

        for (int i = 0; i < 2; ++i) { // the second loss must not take pink for the first colour
            label.changedValid(false);
            label.changedValid(false);
            QCOMPARE(text(), QColor(Qt::black));
            QCOMPARE(ground(), QColor(255, 192, 192));
            label.resize(80, 30);
            QCOMPARE(label.grab().toImage().pixelColor(78, 1), QColor(255, 192, 192));
            QCOMPARE(label.text(), "5");
            label.changedValid(true);
            QCOMPARE(text(), QColor(Qt::yellow));
            QCOMPARE(ground(), QColor(Qt::darkBlue));
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
        QCOMPARE(label.pos(), QPoint(10, 20));
        QCOMPARE(clicked.size(), 2);

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

        QCOMPARE(MyFrame::title_height(), 56);
        QCOMPARE(frame->size(), QSize(300 + 2 * (2 + 3), 200 + 56 + 2 * (2 + 3)));
        QCOMPARE(frame->pos(), QPoint(40, 50));
        QCOMPARE(dialog->window(), frame);
        QCOMPARE(dialog->geometry(), QRect(5, 61, 300, 200));
        QVERIFY(dialog->isVisible());
        QVERIFY(frame->windowFlags().testFlag(Qt::FramelessWindowHint));
        QCOMPARE(frame->windowModality(), Qt::WindowModal);
        QCOMPARE(frame->focusWidget(), dialog);

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
            QTimer::singleShot(0, frame, [&] {
                if (byButton)
                    QTest::mouseClick(frame->findChild<QPushButton*>("pbClose"), Qt::LeftButton);
                else
                    frame->close(); // the window system's own way
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
        const QWidget* frame = question.window();
        QVERIFY(frame->isVisible());
        QCOMPARE(question.size(), QSize(432, 223));
        QCOMPARE(frame->width(), 432 + 2 * (2 + 1));
        QCOMPARE(frame->pos(), button.mapToGlobal(QPoint(0, 61)));
        QCOMPARE(question.findChild<QPushButton*>("pbYes")->geometry(), QRect(60, 130, 110, 60));
        QCOMPARE(question.findChild<QPushButton*>("pbNo")->geometry(), QRect(260, 130, 110, 60));
        QCOMPARE(question.findChild<QLabel*>("lblText")->font().pointSize(), 20);
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
        const auto press = [](const char* name) {
            return [=](Confirm* dialog) {
                QTest::mouseClick(dialog->findChild<QPushButton*>(name), Qt::LeftButton);
            };
        };
        QVERIFY(answer(press("pbYes")));
        QVERIFY(!answer(press("pbNo")));
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
        QVERIFY(rest.blue() > rest.red() + 50);
        const QColor stop = middle(alarm);
        QVERIFY(stop.red() > 200 && stop.blue() < 80);

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
            }
            QStringList painted;
        } window;
        new RepaintPace(&window);
        window.show();
        QTRY_VERIFY(!window.painted.isEmpty());
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
        QVERIFY2(window.painted.size() <= int(time.elapsed()) / RepaintPace::periodMs + 1,
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
        const auto write = [&](const QString& colour) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
            file.write(colour.toLatin1());
        };
        qApp->setStyleSheet("red {}");
        QTest::ignoreMessage(QtDebugMsg, qPrintable("Cannot open stylesheet file " + path));
        StyleLoader::attach(path, QKeySequence());
        QCOMPARE(qApp->styleSheet(), "red {}");

        write("blue {}");
        StyleLoader::attach(path, QKeySequence(Qt::CTRL | Qt::Key_F5));
        QCOMPARE(qApp->styleSheet(), "blue {}");
        write("green {}");
        QWidget window;
        window.show();
        QTest::keyClick(&window, Qt::Key_F5);
        QCOMPARE(qApp->styleSheet(), "blue {}");
        QTest::keyClick(&window, Qt::Key_F5, Qt::ControlModifier);
        QCOMPARE(qApp->styleSheet(), "green {}");
        qApp->setStyleSheet(QString());
    }

private:
    SiteFixture m_site;
};

QTEST_MAIN(TestWidgets)
#include "test_widgets.moc"
