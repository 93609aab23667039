#include "handwheels.h"
#include "remotepanel.h"
#include "statebutton.h"
#include "widgets.h"

#include <QApplication>
#include <QMenu>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

// What the wheels turn: their menus, steps and commands, and the panel that takes the third. The labels of
// the window stand in a window of the test's own.
class TestWheels : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void stepsOfTheAxes()
    {
        const QMap<QString, int> speeds{{"LX", 3000}, {"A", 360}}; // that of U stands under another name
        const std::pair<const char*, int> steps[] = {
            {"x0.01", 10}, {"x0.05", 50}, {"x0.1", 100}, {"x1", 1000}};
        for (const QString& axis : QString("LX LY A B C D U V").split(' ')) {
            choose(Handwheels::Left, QStringLiteral("Ось ") + axis);
            QCOMPARE(use(0), QStringLiteral("Ось %1\nx0.01").arg(axis));
            for (const auto& [step, distance] : steps) {
                choose(Handwheels::Left, step);
                QCOMPARE(use(0), QStringLiteral("Ось %1\n%2").arg(axis, step));
                said();
                m_wheels->turn(Handwheels::Left, -3);
                QCOMPARE(said(),
                         QStringLiteral("LIR(%1,%2,%3)").arg(axis).arg(-3 * distance).arg(speeds[axis]));
            }
        }
    }

    void menuOfAFreeWheel()
    {
        const QString axes("Ось LX|Ось LY|Ось A|Ось B|Ось C|Ось D|Ось U|Ось V|");
        QCOMPARE(choose(Handwheels::Left, "ЭЛА"), axes + "ЭЛА|-|* Не использовать|-");
        QCOMPARE(use(0), QStringLiteral("ЭЛА"));
        QVERIFY(m_wheels->isElas(Handwheels::Left) && !m_wheels->isElas(Handwheels::Right));
        const QString elas = axes + "* ЭЛА|-|Не использовать|-";
        QCOMPARE(choose(Handwheels::Left, QString()), elas); // left without a choice
        QCOMPARE(choose(Handwheels::Left, "Не использовать"), elas);
        QCOMPARE(use(0), QStringLiteral("Отключен"));

        QCOMPARE(choose(Handwheels::Remote, "ЭЛА"), QStringLiteral("ЭЛА|* Не использовать|-"));
        QCOMPARE(use(2), QStringLiteral("ЭЛА"));
        QCOMPARE(choose(Handwheels::Remote, "Не использовать"), QStringLiteral("* ЭЛА|Не использовать|-"));
        for (const auto wheel : {Handwheels::Left, Handwheels::Right, Handwheels::Remote})
            m_wheels->turn(wheel, 2);
        QCOMPARE(said(),
                 QStringLiteral("[I]Штурвал 'Левый' передан в ЭЛА|[I]Штурвал 'Левый' отключен|"
                                "[I]Штурвал 'Выносной' передан в ЭЛА|[I]Штурвал 'Выносной' отключен"));
    }

    void theStepBelongsToTheAxis()
    {
        choose(Handwheels::Right, "Ось A");
        choose(Handwheels::Right, "x0.1");
        const QString entries = choose(Handwheels::Right, "Ось D");
        QVERIFY(entries.contains(QStringLiteral("|* Ось A|")));
        QVERIFY(entries.endsWith(QStringLiteral("|-|x0.01|x0.05|* x0.1|x1")));
        QCOMPARE(use(1), QStringLiteral("Ось D\nx0.01")); // each axis with the step that it had
        choose(Handwheels::Right, "Ось A");
        QVERIFY(
            said().endsWith(QStringLiteral("На штурвал 'Правый' установлен параметр Ось A с шагом x0.1")));
        choose(Handwheels::Left, "Ось A");
        choose(Handwheels::Left, "x1");
        QCOMPARE(use(0), QStringLiteral("Ось A\nx1"));
        QCOMPARE(use(1), use(0)); // the screen tells the step that the wheel has
        m_wheels->turn(Handwheels::Right, 1);
        QVERIFY(said().endsWith(QStringLiteral("|LIR(A,1000,360)")));
    }

    void aStepThatNoMenuWrote()
    {
        const QTemporaryDir folder;
        QSettings settings(folder.filePath("settings.ini"), QSettings::IniFormat);
        for (const auto& [axis, step] : {std::pair{"A", 4}, {"B", -1}, {"C", 3}})
            settings.setValue(QStringLiteral("LIR/") + axis, step);
        m_wheels->load(settings);
        QStringList sent;
        for (const char* axis : {"A", "B", "C"}) {
            choose(Handwheels::Left, QStringLiteral("Ось ") + axis);
            m_wheels->turn(Handwheels::Left, 1);
            sent << m_said.last();
        }
        QCOMPARE(sent, (QStringList{"LIR(A,10,360)", "LIR(B,10,0)", "LIR(C,1000,0)"})); // the finest instead
        choose(Handwheels::Left, "x0.1");
        m_wheels->save(settings);
        QCOMPARE(settings.value("LIR/C").toInt(), 2);
        QCOMPARE(settings.value("LIR/V", -1).toInt(), 0); // written for every axis
    }

    // F1 leaves the drives' side as it was, whether the panel turns there or goes off there.
    void panelRegimes()
    {
        for (const uint regime : {1U, 2U, 3U, 4U}) {
            const bool takesTheDrives = regime == 2 || regime == 3;
            m_panel->setOn(false);
            m_panel->setRegime(2);
            QVERIFY(!m_regime->isVisible() && m_drives->isEnabled() && m_frame->isEnabled());
            m_panel->setRegime(regime);
            m_panel->setOn(true);
            QVERIFY(m_regime->text().startsWith(QStringLiteral("Режим пульта F%1:\n\nПоложение X - ось LX")
                                                    .arg(takesTheDrives ? regime : 1)));
            QVERIFY(m_regime->isVisible() && !m_frame->isEnabled() && m_button->state() == StateButton::On);
            for (const auto& then : {std::function<void()>([] {}),
                                     {[this] { m_panel->setRegime(1); }},
                                     {[this] { m_panel->setOn(false); }}}) {
                then();
                QCOMPARE(!m_drives->isEnabled(), takesTheDrives);
            }
        }
    }

    void panelTakesTheRemoteWheel()
    {
        const QString freed = QStringLiteral("[I]Штурвал 'Выносной' отключен");
        choose(Handwheels::Remote, "ЭЛА");
        said();
        m_panel->setOn(true);
        QCOMPARE(use(2), QStringLiteral("Отключен"));
        m_panel->setRegime(3);
        m_wheels->turnPanel(-4);
        m_panel->setOn(false);
        QCOMPARE(said(), freed + '|' + freed + "|HANDWHEEL(-400)"); // again at each change of the regime

        bool open = true;
        choose(Handwheels::Remote, "ЭЛА", [&] {
            m_panel->setOn(true);
            open = QApplication::activePopupWidget() != nullptr; // it would hold every touch
        });
        QVERIFY(!open && !m_wheels->isElas(Handwheels::Remote));
    }

    void aPressAndALinkThatComesBack()
    {
        m_panel->tell(true);
        said();
        m_panel->tell(true); // no news
        m_panel->press();
        QVERIFY(!m_panel->isOn());
        QCOMPARE(said(), QStringLiteral("[I]Нажата кнопка 'Выключить дистанционный пульт'|PULT OFF"));
        m_panel->tell(true); // the controller thinks otherwise
        QVERIFY(m_panel->isOn());
        QCOMPARE(said(), QStringLiteral("[I]Штурвал 'Выносной' отключен"));
    }

private:
    // Touches the entry in the menu of a wheel; returns what the menu shows, a ticked entry with "* " in
    // front, a separator as "-". Nothing is touched for an empty entry. `before` runs while the menu is open.
    QString choose(
        Handwheels::Wheel wheel, const QString& entry, const std::function<void()>& before = [] {})
    {
        QStringList entries;
        QTimer::singleShot(0, this, [&] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            QVERIFY(menu);
            QAction* wanted = nullptr;
            for (QAction* action : menu->actions()) {
                const QString text = action->text().trimmed();
                entries << (action->isSeparator() ? "-" : action->icon().isNull() ? text : "* " + text);
                if (!entry.isEmpty() && text == entry)
                    wanted = action;
            }
            before();
            if (wanted && menu->isVisible())
                QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(wanted).center());
            menu->close();
        });
        m_wheels->openMenu(wheel);
        return entries.join('|');
    }
    QString use(int wheel) const { return m_use[wheel]->text(); }
    QString said() { return std::exchange(m_said, {}).join('|'); } // lines and commands since the last time

    std::unique_ptr<QWidget> m_window;
    QLabel* m_use[3];
    QWidget *m_drives, *m_frame;
    QLabel* m_regime;
    StateButton* m_button;
    Handwheels* m_wheels;
    RemotePanel* m_panel;
    QStringList m_said;
};

void TestWheels::init()
{
    m_window = std::make_unique<QWidget>();
    QWidget* const window = m_window.get();
    std::array<Handwheels::Labels, 3> labels;
    for (int i = 0; i < 3; ++i) {
        labels[i] = {new PoLabel(window), m_use[i] = new QLabel(window)};
        labels[i].menu->setObjectName(QStringLiteral("lblLir%1").arg(i + 1));
    }
    m_drives = new QWidget(window);
    m_frame = new QWidget(window);
    m_regime = new QLabel(window);
    m_button = new StateButton(window);
    m_button->init("", false, "", "", "", "", "", true);
    m_window->show();
    const QMap<QString, int> speeds{{"LX", 3000}, {"A", 360}, {"U1", 120}};
    const auto maxSpeed = [speeds](const QString& axis) { return speeds.value(axis); };
    m_wheels = new Handwheels(labels, maxSpeed, window);
    m_panel = new RemotePanel({m_button, m_regime, m_drives, m_frame}, m_wheels, window);
    const auto hear = [this](const QString& text) { m_said << text; };
    connect(m_wheels, &Handwheels::message, this, hear);
    connect(m_wheels, &Handwheels::command, this, hear);
    connect(m_panel, &RemotePanel::message, this, hear);
    connect(m_panel, &RemotePanel::command, this, hear);
    m_said.clear();
}

QTEST_MAIN(TestWheels)
#include "test_wheels.moc"
