// Walks the console's panels, tabs, dialogs, menus and popups in their states, measures all that they have on
// view (trainer/screencheck.h) and leaves sheets of pictures: screen FOLDER [all]
#include "alarmdialog.h"
#include "autorization_dialogs.h"
#include "contour.h"
#include "journallist.h"
#include "screenfixture.h"
#include "screenreport.h"
#include "systemoff.h"

#include <QLineEdit>
#include <QMessageBox>
#include <QScrollBar>

#include <cstdio>

namespace {

struct DriveText
{
    int code;
    const char* text;
};
constexpr DriveText driveTexts[] = {
#include "drivestates.inc"
};

class ConsoleStates : public ScreenFixture
{
public:
    ConsoleStates(const QString& folder, bool all)
        : m_folder(folder)
        , m_all(all)
        , m_report(folder, all)
    {}

    void walk()
    {
        auto* contour = m_gui->findChild<CONTOUR*>();
        group("start");
        logIn(-1);
        logIn(0);
        m_gui->show();
        m_gui->setGeometry(QRect(QPoint(), panelSize));
        settle();
        look(m_gui.get(), "links down");

        connectAll();
        tell({{"KeyAccess", 1}, {"DrivesPower", 1}, {"SpiralPower", 1}});
        settle();

        group("groups");
        for (int id : {2, 1, -1, 0}) {
            logIn(id);
            tabs(QString("group %1").arg(id));
        }
        for (const QString& name : leave)
            m_walk.touch(w(name), w(name)->rect().center(), "leave", 1);
        alone("alarm", [this] { AlarmDialog("Давление в камере выше допустимого", m_gui.get()); });
        alone("power-off", [this] { SystemOff(nullptr, m_gui.get()).exec(); });
        alone("users", [this] {
            Autorization::showBox(QMessageBox::Critical, m_gui.get(), "Система авторизации",
                                  "Файл \"/home/oper/bin/users.bin\" не найден");
        });

        group("tabs");
        for (int tab = 0; tab < contour->count(); ++tab) {
            contour->setCurrentIndex(tab);
            if (m_all || tab == 0)
                m_walk.touchAll(m_gui.get(), QString("tab %1").arg(tab), m_all && !tab ? 3 : 1);
            look(m_gui.get(), QString("tab %1").arg(tab));
        }
        contour->setCurrentIndex(0);
        setVirtualMode();
        for (int scheme = 0; m_all && scheme < 3; ++scheme) {
            group(QString("scheme %1").arg(scheme));
            newContour(scheme);
            m_walk.touchAll(contour->widget(0), "contour", 3);
            newContour(scheme);
            for (int time = 0; time < 3; ++time) {
                tellAll(10.0 * time, 0);
                touch("pbIns");
            }
            m_walk.touchAll(contour->widget(0), "points", 2);
            contour->setCurrentIndex(1);
            m_walk.touchAll(contour->widget(1), "technology", 3);
            contour->setCurrentIndex(0);
            tabs(QString("scheme %1").arg(scheme));
        }

        group("full");
        tellAll(-9999.99, 0xF2026);
        m_gui->setProgramName("Кольцо D1250.save", true);
        m_gui->onChangedPressUnit(true); // torr
        for (int state : {0, 1, 2, 3, 4}) {
            tellVacuum([state](const vacuumwire::Field& field) {
                if (field.name.contains("Lock"))
                    return field.kind == statuswire::B ? 1.0 : 31.0;
                if (field.name.endsWith("State"))
                    return double(state);
                return field.kind == statuswire::D      ? 1.0e5
                       : field.name.startsWith("Temp")  ? (state ? -99.9 : 999.9)
                       : field.name.startsWith("Disch") ? 99.9
                       : field.kind == statuswire::F    ? 9999.0
                                                        : double(state != 0);
            });
            look(m_gui.get(), QString("vacuum state %1").arg(state));
        }
        if (m_all)
            m_walk.touchAll(m_gui.get(), "full", 2);
        for (uint number = 0; number < 16; ++number) {
            tell({{"ChannelState1", number}, {"ChannelState2", number}, {"ChannelState3", number}});
            m_gui->onChangedPultRegime(number);
            m_gui->changedMode(number - 1);
            m_gui->changedModeState(number);
            m_report.measure(m_gui.get(), QString("channel state %1").arg(number));
        }
        messages();
        journalLines();
        look(m_gui.get(), "journal");

        group("locked");
        tell({{"KeyAccess", 0}});
        settle(20);
        look(m_gui.get(), "key switch");
        tabs("key switch");
        tell({{"KeyAccess", 1}});

        group("lost");
        loseAll();
        tabs("links lost");
        group({});
    }

    int report(double seconds) { return m_report.end(m_walk.touches(), seconds); }

private:
    void tabs(const QString& state)
    {
        auto* contour = m_gui->findChild<CONTOUR*>();
        for (int tab = 0; tab < contour->count(); ++tab) {
            contour->setCurrentIndex(tab);
            if (m_all || tab < 2)
                look(m_gui.get(), QString("%1, tab %2").arg(state).arg(tab));
        }
        contour->setCurrentIndex(0);
    }

    // What a touch has opened, with all that it can hold.
    void opened(QWidget* window, const QString& road) override
    {
        if (window->findChild<QWidget*>("twConst")) {
            for (VacuumController* controller : {m_kvs.get(), m_kvk.get()})
                controller->sendConstants({{1, -1.23457e-10f, longText}, {999, 9999.99f, "t"}});
            settle();
        }
        look(window, road);
        driveTextsOf(window);
        auto* number = window->findChild<QLineEdit*>("leValue");
        if (!number)
            return;
        number->setText("-8888888");
        m_report.measure(window, road + ", longest number");
        number->clear();
        if (number->echoMode() == QLineEdit::Password && !m_codes.contains(road)) {
            m_codes.insert(road);
            number->setText(road.contains("pbChange") ? "730592" : "305729");
            QTest::mouseClick(window->findChild<QWidget*>("pbEnter"), Qt::LeftButton);
        }
    }

    // Ends the group of states before and its sheet.
    void group(const QString& name)
    {
        m_sheet.save(m_folder + '/' + m_group + ".png");
        m_walk.forget();
        m_group = name;
    }

    void look(QWidget* window, const QString& state)
    {
        m_report.look(window, state, m_gui.get());
        m_sheet.add(state, screenImage());
    }

    void journalLines()
    {
        auto* list = w<JournalList>("lwLog");
        for (uint number = 1; number < 400; ++number)
            m_gui->prgMessage(m_gui->CNCMessage(number), true);
        for (const DriveText& text : driveTexts)
            m_gui->prgMessage(QString("[A]Привод U2: %1").arg(QString::fromUtf8(text.text)), true);
        m_gui->prgMessage("[I]Регистрация пользователя - Администратор " + longName, true);
        for (int at = list->verticalScrollBar()->maximum(); at >= 0; at -= list->viewport()->height() / 2) {
            list->verticalScrollBar()->setValue(at);
            m_report.measure(list, "journal");
        }
        list->scrollToBottom();
    }

    // The dialog of an axis tells the state of its drive in words.
    void driveTextsOf(QWidget* window)
    {
        auto* label = window->findChild<QLabel*>("lblDriveState");
        QWidget* dialog = label;
        while (dialog && !dialog->inherits("AxisInfo"))
            dialog = dialog->parentWidget();
        if (!dialog || m_driveTexts)
            return;
        m_driveTexts = true;
        for (const DriveText& text : driveTexts) {
            QMetaObject::invokeMethod(dialog, "onStateChanged", Q_ARG(int, text.code));
            m_report.measure(label, QString("drive %1").arg(text.code, 0, 16));
        }
    }

    // Each message of the stack, alone and newest.
    void messages()
    {
        for (const char* word :
             {"AlarmState", "DoorState", "TrModuleState", "DrivePowerState", "LightState", "PhaseAlarm"}) {
            for (int bit = 0; bit < 16; ++bit) {
                tell({{word, 1 << bit}});
                m_report.measure(w("frErrorDiagnostic"), QString("%1 %2").arg(word).arg(bit));
            }
            tell({{word, 0}});
        }
        tell({{"AlarmState", 0xFFFF}, {"DoorState", 0xFFFF}, {"TrModuleState", 0xFFFF}});
        look(m_gui.get(), "all messages");
    }

    QString m_folder;
    bool m_all;
    QSet<QString> m_codes; // roads on which the right one was given
    ContactSheet m_sheet;
    bool m_driveTexts = false; // measured
    QString m_group;
    ScreenReport m_report;
};

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QElapsedTimer timer;
    timer.start();
    qputenv("PATH", ""); // the desktop's own programs stay closed
    takePanel(&app);
    const QString folder = QString::fromLocal8Bit(argc > 1 ? argv[1] : "screen");
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
    ConsoleStates walk(folder, argc > 2);
    walk.walk();
    return walk.report(double(timer.elapsed()) / 1000);
}
