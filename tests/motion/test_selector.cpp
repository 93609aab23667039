#include "drivecomm.h"
#include "fixedmove.h"
#include "selector.h"
#include "widgets.h"

#include "comparetext.h"
#include "deathtest.h"
#include "linkcontroller.h"
#include "nextdialog.h"
#include "sitefixture.h"

#include <QRadioButton>
#include <QSettings>
#include <QSignalSpy>

// The two dialogs that hang on an axis's row: fixed move and speed selector.
class TestSelector : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_site = std::make_unique<SiteFixture>();
        m_parent = std::make_unique<QWidget>();
        m_parent->setGeometry(300, 200, 200, 60);
        m_parent->show();
        QVERIFY(QTest::qWaitForWindowActive(m_parent.get()));
    }
    void cleanup()
    {
        m_parent.reset();
        m_site.reset();
    }

    void fixedMoveProgram()
    {
        const std::tuple<QString, int, const char*> axes[] = {
            {"LX", 1, "LX"}, {"LX2", 1, "LX2"}, {"LY", 1, "LY"},  {"A", 1, "A"},   {"B", 1, "B"},
            {"C", 1, "C"},   {"D", 1, "D"},     {"U1", 2, "U1"},  {"U2", 2, "U1"}, {"V", 2, "V"},
            {"X", 1, "X"},   {"Z", 1, "Y"},     {"PHI", 1, "PHI"}};
        for (const auto& [axis, channel, word] : axes) {
            for (bool absolute : {true, false}) {
                // Six significant digits of a single-precision number.
                const double value = !absolute ? -7 : axis == "LX" ? 1234.5678 : 12.5;
                const QString number = QString::number(value, 'g', 6);
                auto dialog = fixedMove(axis, 3000, channel);
                const QSignalSpy told(dialog.get(), &FixedMove::message);
                const QSignalSpy closed(dialog.get(), &QDialog::rejected);
                child<QRadioButton>(dialog.get(), absolute ? "rbAbsolute" : "rbRelative")->click();
                child<PoLabel>(dialog.get(), "lblCoord")->setValue(float(value), 2);
                QTest::mouseClick(child<QPushButton>(dialog.get(), "pbStart"), Qt::LeftButton);
                QCOMPARE(QString(m_site->read("/programs/_fixed.npg")),
                         QString("N01 $%1\n%2N03 %3 G01 %4=%5 F3000\nN05 M30\n")
                             .arg(QString::number(channel), axis == "V" ? "N02 ARF()\n" : "",
                                  absolute ? "G90" : "G91", word, number));
                const QVariantList line{
                    "[C]Запущено фиксированное перемещение по оси " + axis +
                        (absolute ? " в координату " + number : " на " + number + " град"),
                    true};
                QCOMPARE(told, QList<QVariantList>{line});
                QCOMPARE(closed.size(), 1);
            }
        }
    }

    void fixedMoveRemembers()
    {
        const auto shown = [this](const char* axis) {
            auto dialog = fixedMove(axis);
            return child<PoLabel>(dialog.get(), "lblCoord")->text() +
                   (child<QRadioButton>(dialog.get(), "rbAbsolute")->isChecked() ? " absolute" : " relative");
        };
        QCOMPARE(shown("A"), "0.00 absolute");
        auto dialog = fixedMove("A");
        child<QRadioButton>(dialog.get(), "rbRelative")->click();
        child<PoLabel>(dialog.get(), "lblCoord")->setValue(2.25F, 2);
        const QSignalSpy told(dialog.get(), &FixedMove::message);
        dialog.reset();
        QCOMPARE(told, (QList<QVariantList>{{"[I]Закрыто окно фиксированного перемещения по оси A", false}}));
        QCOMPARE(shown("A"), "2.25 relative");
        QCOMPARE(shown("B"), "0.00 absolute"); // each axis for itself

        // Settings that somebody spoiled: no program may ever move to what is no number.
        for (const char* noise : {"nan", "inf", "1e300", "many"}) {
            QSettings(site().path("/home/oper/bin/settings.ini"), QSettings::IniFormat)
                .setValue("B/FM_Coord", QString(noise));
            QCOMPARE(shown("B"), "0.00 absolute");
        }
    }

    void fixedMoveButton()
    {
        auto dialog = fixedMove("A");
        QCOMPARE(child<QLabel>(dialog.get(), "lblUnit")->text(), "град");
        auto* start = child<QPushButton>(dialog.get(), "pbStart");
        // The last word wins, whoever speaks.
        for (unsigned int state : {0U, 2U, 6U}) {
            dialog->onDriveState(true);
            QVERIFY(start->isEnabled());
            dialog->onChannelState(state);
            QVERIFY(!start->isEnabled());
        }
        dialog->onChannelState(1);
        QVERIFY(start->isEnabled());
        dialog->onDriveState(false);
        QVERIFY(!start->isEnabled());
        dialog->onChannelState(1);

        typeNext("12,345-");
        QTest::mouseClick(child<PoLabel>(dialog.get(), "lblCoord"), Qt::LeftButton);
        QCOMPARE(child<PoLabel>(dialog.get(), "lblCoord")->text(), "-12.35");
        typeNext("99", false);
        QTest::mouseClick(child<PoLabel>(dialog.get(), "lblCoord"), Qt::LeftButton);
        QCOMPARE(child<PoLabel>(dialog.get(), "lblCoord")->value(), -12.345F);

        // Without the folder no program, so no command: the closed link would have told of one.
        QVERIFY(QDir(site().path("/programs")).removeRecursively());
        const QSignalSpy told(dialog.get(), &FixedMove::message);
        DebugLines::collect();
        start->click();
        qInstallMessageHandler(nullptr);
        QCOMPARE(DebugLines::count("DriveTCPthread"), 0);
        QCOMPARE(told.size(), 2); // the press, and what came of it
        QCOMPARE(told[1][0].toString(), "[A]Файл /programs/_fixed.npg не записан, программа не запущена");
        QVERIFY(dialog->isHidden());
    }

    void presetSpeeds()
    {
        const int expected[] = {23, 45, 90, 225, 450, 900}; // what is shown is what is taken
        for (int i = 0; i < 6; ++i) {
            Selector selector("C", "град", speeds, "Своя", 0, m_parent.get());
            const QSignalSpy told(&selector, &Selector::message);
            QCOMPARE(QApplication::activePopupWidget(), &selector);
            QCOMPARE(selector.pos(), QPoint(300, 200 + 60 + 1));
            QTimer::singleShot(0, &selector, [&] { touch(&selector, QString("lblSpeed%1").arg(i + 1)); });
            QCOMPARE(selector.exec(), int(QDialog::Accepted));
            QCOMPARE(selector.value(), float(expected[i]));
            const QString line = QString("[I]Установлена скорость %1 град/мин для оси C").arg(expected[i]);
            QCOMPARE(told, (QList<QVariantList>{{line, true}}));
            QVERIFY(!QApplication::activePopupWidget());
        }
    }

    void highlightFollowsThePointer()
    {
        Selector selector("C", "град", speeds, "Своя", 0, m_parent.get());
        const auto lit = [&] {
            QStringList names;
            for (QLabel* label : selector.findChildren<QLabel*>()) {
                if (label->palette().color(QPalette::Window) == QColor(65, 121, 205))
                    names += label->objectName();
            }
            return names.join(' ');
        };
        for (const char* name : {"lblSpeed2", "lblSpeed3", "lblFree"}) {
            auto* label = child<QLabel>(&selector, name);
            QTest::mouseMove(selector.windowHandle(), label->mapTo(&selector, label->rect().center()));
            QTRY_COMPARE(lit(), QString(name));
        }
        QTest::mouseMove(selector.windowHandle(), QPoint(1, 1)); // the background
        QTRY_COMPARE(lit(), QString());

        // Leaving with a press beside the entries.
        const QSignalSpy left(&selector, &QDialog::rejected);
        QTest::mousePress(&selector, Qt::LeftButton, {}, QPoint(-50, 20));
        QCOMPARE(left.size(), 1);
        QVERIFY(selector.isHidden());
    }

    void freeSpeed()
    {
        const std::tuple<const char*, bool, float> rows[] = {
            {"12,5", true, 12.5F}, {"0", true, 0.1F}, {"901", true, 900.F}, {"5", false, 0.F}};
        for (const auto& [keys, enter, speed] : rows) {
            Selector selector("C", "град", speeds, "Своя", 0, m_parent.get());
            const QSignalSpy told(&selector, &Selector::message);
            QCOMPARE(child<QLabel>(&selector, "lblFree")->text(), "Своя");
            whenOpen<Numpad>([&, keys = keys, enter = enter](Numpad* pad) {
                QVERIFY2(!child<QPushButton>(pad, "pbSign")->isEnabled(), "no speed is negative");
                typeNext(keys, enter);
            });
            QTimer::singleShot(0, &selector, [&] { touch(&selector, "lblFree"); });
            QCOMPARE(selector.exec(), int(enter ? QDialog::Accepted : QDialog::Rejected));
            QCOMPARE(selector.value(), speed);
            QCOMPARE(told.size(), enter ? 1 : 0);
        }
    }

    void edges()
    {
        m_parent->setGeometry(1800, 1100, 100, 60);
        Selector selector("C", "град", speeds, QString(), 0, m_parent.get());
        QVERIFY(QRect(0, 0, panelWidth, panelHeight).contains(selector.geometry()));
        for (const auto& [value, kept] : {std::pair{-3.F, 1.F}, {4.F, 4.F}, {20.F, 10.F}}) {
            selector.range(1, 10, value);
            QCOMPARE(selector.value(), kept);
        }
        const QByteArray told =
            deathOf([&] { Selector("C", "град", speeds.mid(1), QString(), 0, m_parent.get()); });
        QVERIFY2(told.contains("ASSERT: \"nl.size() == 6\""), told.constData());
    }

private:
    template <class T>
    static T* child(QWidget* dialog, const char* name)
    {
        return dialog->findChild<T*>(name);
    }
    static void touch(Selector* selector, const QString& name)
    {
        const auto* label = selector->findChild<QLabel*>(name);
        QTest::mousePress(selector, Qt::LeftButton, {}, label->mapTo(selector, label->rect().center()));
    }
    std::unique_ptr<FixedMove> fixedMove(const QString& name, int speed = 10, int channel = 1)
    {
        return std::make_unique<FixedMove>(name, "град", &m_link, speed, channel, m_parent.get());
    }
    const QList<float> speeds{22.5F, 45, 90, 225, 450, 900};
    std::unique_ptr<SiteFixture> m_site;
    std::unique_ptr<QWidget> m_parent;
    DriveTCPthread m_link; // closed
};

QTEST_MAIN(TestSelector)
#include "test_selector.moc"
