// Walks the console's panels, tabs, dialogs, menus and popups in their states, measures all that they have on
// view (trainer/screencheck.h) and leaves sheets of pictures: screen FOLDER [all]
#include "trainer/screen.h"
#include "autorization_abstractmanager.h"
#include "autorization_userfile.h"
#include "contour.h"
#include "guifixture.h"
#include "journallist.h"
#include "trainer/screencheck.h"
#include "trainer/screenwalk.h"
#include "trainer/sitefolder.h"
#include "vacuumcontroller.h"

#include <QLineEdit>
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

// What the machine wants otherwise: rule and path as one pattern, and why.
struct Exception
{
    const char* pattern;
    const char* reason;
};
const Exception exceptions[] = {
    // Colours that mean a state, the same all over the machine and in its papers.
    {"^contrast .*/(lblCNC|lblKVS|lblKVK|lblELA|lblContour)$",
     "white on red is a lost link or a run without current"},
    {"^contrast .*/lblVacuumState$", "white on pink is the setup regime"},
    {"^contrast .*/(pbStop|pbStopGoPoint)$", "the red of a stop button; its letters are three times as high"},
    {"^contrast .*/sbShutdown/", "the same red switches the installation off"},
    {"^contrast .*/lwLog/", "red is an alarm's line, which has its picture in front as well"},
    {"^contrast .*/CMessageStack$", "pink letters on the fill of the message's kind"},
    {"^contrast Gui/QLabel$", "the notice of the key switch: white on red in letters of 30 px"},
    {"^small letters .*/lwLog/", "eight lines of the journal at a glance"},
    {"^small letters .*/lblState$", "the second line of a state button, under a title in 16 px"},
    {"^small letters .*/lblContour$", "two lines of a long name have room below the links"},
    {"^covered .*/lblGlDesk$", "the regime of the remote panel stands there while it holds the drives"},
    {"^covered Gui/(kvs|contour)/", "the notice of the key switch lies over the middle of what it locks"},
    {"^covered .*/(frmLY|pbInfoLY)", "the second drive of LX is shown in LY's row"},
    {"^targets too close .*/(frmLY|pbInfoLY)", "the same"},
    {"^targets too close Gui/kvs/PT", "a pressure and its unit answer a touch alike"},
    {"^targets too close Gui/kvs/(N|V)", "pictures of the mnemonic diagram meet where the pipes do"},
    {"^small target .*/lblND1$", "the pump's picture beside it answers alike"},
    {"^small target .*/QTableCornerButton$", "selects nothing: a touch there has no effect"},
    {"^elided .*/twUsers/", "its columns are as wide as the user leaves them"},
    {"^contrast .*/twTechTab/", "red is a row that the beam cannot follow"},
};

const QStringList mustSee{"pbStop", "lblCNC", "lblKVS", "lblKVK", "lblELA", "frErrorDiagnostic"};
// They leave the console or start another program.
const QStringList notTouched{"pbCloseProgram", "sbShutdown", "pbCalc", "pbManual"};
const QString longName = QStringLiteral("Преображенская Александра Константиновна");

class ConsoleStates : public GuiFixture
{
public:
    ConsoleStates(const QString& folder, bool all)
        : m_folder(folder)
        , m_all(all)
    {
        begin();
    }
    ~ConsoleStates()
    {
        m_beat.stop();
        m_kvs.reset();
        m_kvk.reset();
        end();
    }

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

        m_datagram = drivewire::drive().empty();
        m_controller->accept();
        m_kvs->accept();
        m_kvk->accept();
        m_kvs->keepTelling();
        m_kvk->keepTelling();
        connect(&m_beat, &QTimer::timeout, this, [this] { m_controller->datagram(m_datagram); });
        m_beat.start(200);
        tell({{"KeyAccess", 1}, {"DrivesPower", 1}, {"SpiralPower", 1}});
        settle();

        group("groups");
        for (int id : {2, 1, -1, 0}) {
            logIn(id);
            look(m_gui.get(), QString("group %1").arg(id));
        }

        group("tabs");
        for (int tab = 0; tab < contour->count(); ++tab) {
            contour->setCurrentIndex(tab);
            if (m_all || tab == 0)
                m_walk.touchAll(m_gui.get(), QString("tab %1").arg(tab), m_all && !tab ? 3 : 1);
            look(m_gui.get(), QString("tab %1").arg(tab));
        }
        contour->setCurrentIndex(0);

        group("full");
        setVirtualMode();
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
            count(m_gui.get(), QString("channel state %1").arg(number));
        }
        messages();
        journalLines();
        look(m_gui.get(), "journal");

        group("locked");
        tell({{"KeyAccess", 0}});
        settle(20);
        look(m_gui.get(), "key switch");
        for (int tab = 0; tab < contour->count(); ++tab) {
            contour->setCurrentIndex(tab);
            look(m_gui.get(), QString("key switch, tab %1").arg(tab));
        }
        tell({{"KeyAccess", 1}});

        group("lost");
        m_beat.stop();
        m_controller->peer.reset();
        m_kvs->peer.reset();
        m_kvk->peer.reset();
        settle(300);
        look(m_gui.get(), "links lost");
        group({});
    }

    int report(double seconds)
    {
        for (std::size_t i = 0; i < std::size(exceptions); ++i) {
            if (m_all && !m_excused[int(i)]) {
                std::printf("an exception that excuses nothing: %s\n", exceptions[i].pattern);
                ++m_findings;
            }
        }
        std::printf("screen: %d windows, %d widgets, %d texts, %d touches, %d findings, %d named exceptions, "
                    "%.1f s\n",
                    m_windows, m_widgets, m_texts, m_walk.touches(), m_findings, int(std::size(exceptions)),
                    seconds);
        return m_findings ? 1 : 0;
    }

private:
    void begin()
    {
        m_site = std::make_unique<SiteFixture>();
        laySiteFolder(m_site->root(), true);
        layUsers();
        m_controller = std::make_unique<DriveController>();
        m_kvs = std::make_unique<VacuumController>(vacuumwire::kvs(), site().kvs);
        m_kvk = std::make_unique<VacuumController>(vacuumwire::kvk(), site().kvk);
        m_gui = std::make_unique<Gui>();
        m_gui->setWindowState(Qt::WindowNoState);
        m_gui->setGeometry(QRect(QPoint(), panelSize));
        QApplication::setStyle(new MyWinStyle);
        m_walk.stays(m_gui.get());
    }

    void layUsers()
    {
        QFile file(site().path("/home/oper/bin/users.bin"));
        file.open(QIODevice::WriteOnly);
        Autorization::writeUserCount(file, 20);
        for (int i = 0; i < 20; ++i)
            Autorization::writeUser(file, {QString("preobrazhen%1").arg(i), longName,
                                           Autorization::passwordDigest("12345678"), i % 3});
    }

    void logIn(int id)
    {
        QTimer watch;
        connect(&watch, &QTimer::timeout, this, [&] {
            QWidget* dialog = QApplication::activeModalWidget();
            auto* login = dialog ? dialog->findChild<QLineEdit*>("leLogin") : nullptr;
            if (id < 0 || !login)
                return void(m_walk.visitNew("login", 1));
            login->setText(QString("preobrazhen%1").arg(id));
            dialog->findChild<QLineEdit*>("lePassword")->setText("12345678");
            QTest::mouseClick(dialog->findChild<QWidget*>("pbEnter"), Qt::LeftButton);
        });
        watch.start(20);
        emit m_gui->signalUserChange(m_gui->autorizationAccepted() ? id : -1);
    }

    // Every number of the drives' datagram, and every word of it.
    void tellAll(double number, double word)
    {
        for (const auto& field : drivewire::drive().fields) {
            if (field.kind == statuswire::F)
                drivewire::drive().put(m_datagram, field.name, number);
            else if (field.name.startsWith("State"))
                drivewire::drive().put(m_datagram, field.name, word);
        }
        tell({});
    }

    void tellVacuum(const std::function<double(const vacuumwire::Field&)>& value)
    {
        for (VacuumController* controller : {m_kvs.get(), m_kvk.get()}) {
            for (const vacuumwire::Field& field : controller->wire.fields)
                controller->wire.put(controller->pack, field, value(field));
            controller->datagram(controller->pack);
        }
        settle();
    }

    void settle(int ms = 60) { QTest::qWait(ms); }

    // Ends the group of states before and its sheet.
    void group(const QString& name)
    {
        m_sheet.save(m_folder + '/' + m_group + ".png");
        m_walk.forget();
        m_group = name;
    }

    void look(QWidget* window, const QString& state)
    {
        ++m_windows;
        count(window, state);
        for (const ScreenFinding& finding : coveredByWindows(m_gui.get(), mustSee))
            note(finding, state, m_gui.get());
        m_sheet.add(state, screenImage());
    }

    void note(const ScreenFinding& finding, const QString& state, QWidget* window)
    {
        const QString name = finding.rule + ' ' + finding.path;
        const QString key =
            name + (finding.rule == "clipped" ? finding.what : finding.what.section(':', 0, 0));
        if (m_told.contains(key))
            return;
        m_told.insert(key);
        for (std::size_t i = 0; i < std::size(exceptions); ++i) {
            if (QRegularExpression(exceptions[i].pattern).match(name).hasMatch()) {
                ++m_excused[int(i)];
                return;
            }
        }
        const QString crop = QString("%1/finding-%2.png").arg(m_folder).arg(++m_findings, 3, 10, QChar('0'));
        window->grab(finding.place.adjusted(-40, -40, 40, 40) & window->rect()).save(crop);
        std::printf("%s: %s: %s\n    [%s] %s\n", qPrintable(finding.rule), qPrintable(finding.path),
                    qPrintable(finding.what), qPrintable(state), qPrintable(crop));
    }

    void count(QWidget* part, const QString& state)
    {
        const ScreenMeasure measure = measureScreen(part);
        m_widgets += measure.widgets;
        m_texts += measure.texts;
        for (const ScreenFinding& finding : measure.findings)
            note(finding, state, part->window());
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
            count(list, "journal");
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
            count(label, QString("drive %1").arg(text.code, 0, 16));
        }
    }

    // Each message of the stack, alone and newest.
    void messages()
    {
        for (const char* word :
             {"AlarmState", "DoorState", "TrModuleState", "DrivePowerState", "LightState", "PhaseAlarm"}) {
            for (int bit = 0; bit < 16; ++bit) {
                tell({{word, 1 << bit}});
                count(w("frErrorDiagnostic"), QString("%1 %2").arg(word).arg(bit));
            }
            tell({{word, 0}});
        }
    }

    QString m_folder;
    bool m_all;
    std::unique_ptr<VacuumController> m_kvs;
    std::unique_ptr<VacuumController> m_kvk;
    QTimer m_beat;
    ScreenWalk m_walk{[this](QWidget* window, const QString& road) {
                          look(window, road);
                          driveTextsOf(window);
                      },
                      notTouched};
    ContactSheet m_sheet;
    bool m_driveTexts = false; // measured
    QSet<QString> m_told;
    QVector<int> m_excused = QVector<int>(int(std::size(exceptions)), 0);
    QString m_group;
    int m_windows = 0;
    int m_widgets = 0;
    int m_texts = 0;
    int m_findings = 0;
};

} // namespace

int main(int argc, char* argv[])
{
    QApplication app(argc, argv);
    QElapsedTimer timer;
    timer.start();
    takePanel(&app);
    const QString folder = QString::fromLocal8Bit(argc > 1 ? argv[1] : "screen");
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
    ConsoleStates walk(folder, argc > 2);
    walk.walk();
    return walk.report(double(timer.elapsed()) / 1000);
}
